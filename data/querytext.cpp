#include "data/querytext.h"

#include "data/sqltext.h"
#include "platform/rtl/inifiles.h"
#include "platform/rtl/sysutils.h"

namespace QueryText {

namespace {

constexpr const char16_t* kPropsSection = u"Props";
constexpr const char16_t* kSummarySection = u"XTT";
constexpr const char16_t* kSummaryKey = u"SQ.XTT";

// A short key holds one line: a line break in a value would end the key
// and start a stray line, so it travels as a blank.
String OneLine(const String& value) {
  const TReplaceFlags all{rfReplaceAll};
  return StringReplace(StringReplace(StringReplace(value, u"\r\n", u" ", all), u"\r", u" ", all), u"\n", u" ", all);
}

bool IsBlank(const String& line) { return Trim(line).IsEmpty(); }

String SectionName(const String& DocName, const char16_t* suffix) { return DocName + u"." + suffix; }

String SectionHead(const String& DocName, const char16_t* suffix) {
  return u"[" + SectionName(DocName, suffix) + u"]\n";
}

String StatementSection(const TStrings& lines, const String& DocName, const char16_t* suffix) {
  String body;
  for (int i = 0; i < lines.Count(); ++i)
    if (!IsBlank(lines.Strings(i))) body += OneLine(lines.Strings(i)) + u"\n";
  return body.IsEmpty() ? body : SectionHead(DocName, suffix) + body + u"\n";
}

}  // namespace

String WriteDocument(const TDefinition& Def, const String& DocName) {
  String text;
  for (int i = 0; i < kStatementCount; ++i)
    text += StatementSection(Def.Statements[i], DocName, kStatements[i].Key[qfDocument]);
  text += SectionHead(DocName, kPropsSection);
  for (TTextPart part : kTextOrder[qfDocument])
    if (!Def.Texts[part].IsEmpty())
      text += String(kTexts[part].Key[qfDocument]) + u"=" + OneLine(Def.Texts[part]) + u"\n";
  for (int i : kSwitchOrder[qfDocument])
    if (Def.Switches[i]) text += String(kSwitches[i].Key[qfDocument]) + u"=1\n";
  text += u"\n";
  if (!Def.Summary.IsEmpty()) text += SectionHead(DocName, kSummarySection) + Def.Summary + u"\n";
  return text;
}

void ReadDocument(const String& Text, const String& DocName, TDefinition& Def) {
  TMemIniFile ini;
  {
    TStringList source;
    source.SetText(Text);
    ini.SetStrings(&source);
  }
  for (int i = 0; i < kStatementCount; ++i)
    ini.ReadSectionValues(SectionName(DocName, kStatements[i].Key[qfDocument]), &Def.Statements[i]);
  TStringList props;
  ini.ReadSectionValues(SectionName(DocName, kPropsSection), &props);
  for (int i = 0; i < kTextCount; ++i) Def.Texts[i] = props.Values(kTexts[i].Key[qfDocument]);
  for (int i = 0; i < kSwitchCount; ++i) Def.Switches[i] = props.Values(kSwitches[i].Key[qfDocument]) == u"1";
  TStringList summary;
  ini.ReadSectionValues(SectionName(DocName, kSummarySection), &summary);
  Def.Summary = summary.Text();
}

void WriteList(TDefinition& Def, TStrings* List) {
  for (int i = 0; i < kStatementCount; ++i) SetParamSQL(List, &Def.Statements[i], kStatements[i].Key[qfList]);
  for (TTextPart part : kTextOrder[qfList])
    if (!Def.Texts[part].IsEmpty()) List->SetValues(kTexts[part].Key[qfList], OneLine(Def.Texts[part]));
  for (int i : kSwitchOrder[qfList])
    if (Def.Switches[i]) List->SetValues(kSwitches[i].Key[qfList], u"1");
  SetParamSQLText(List, kSummaryKey, Def.Summary);
}

void ReadList(TStrings* List, TDefinition& Def) {
  for (int i = 0; i < kStatementCount; ++i) GetParamSQL(List, &Def.Statements[i], kStatements[i].Key[qfList]);
  for (int i = 0; i < kTextCount; ++i) Def.Texts[i] = List->Values(kTexts[i].Key[qfList]);
  for (int i = 0; i < kSwitchCount; ++i) Def.Switches[i] = List->Values(kSwitches[i].Key[qfList]) == u"1";
  Def.Summary = GetParamSQLText(List, kSummaryKey);
}

}  // namespace QueryText
