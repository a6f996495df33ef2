#include "data/querydoc.h"

#include "data/querytext.h"
#include "filter/xttsum.h"
#include "platform/db/dataset.h"
#include "platform/rtl/sysutils.h"
#include "platform/rtl/typinfo.h"

using namespace QueryText;

namespace {

TStrings* StatementOf(TDataSet* Query, const char16_t* Property) {
  return static_cast<TStrings*>(GetPropObject(Query, Property, TStrings::StaticClass()));
}

XTTTSummaryCollection* SummaryOf(TDataSet* Query) {
  return static_cast<XTTTSummaryCollection*>(
      GetPropObject(Query, u"XTTSummary", XTTTSummaryCollection::StaticClass()));
}

const TPropInfo* RefreshOptionsOf(const TDataSet* Query) {
  const TPropInfo* info = GetPropInfo(Query, kRefreshOptions);
  return info && info->Kind == tkSet ? info : nullptr;
}

bool ReadSwitch(const TDataSet* Query, const TSwitchKey& key) {
  if (!key.Option) return GetPropBool(Query, key.Property);
  const TPropInfo* info = RefreshOptionsOf(Query);
  if (!info || !info->Readable()) return false;
  const int bit = GetEnumValue(*info, key.Option);
  return bit >= 0 && ((GetOrdProp(Query, *info) >> bit) & 1) != 0;
}

// The three refresh options make a new set from nothing, written at once.
void WriteRefreshOptions(TDataSet* Query, const TDefinition& def) {
  const TPropInfo* info = RefreshOptionsOf(Query);
  if (!info || !info->Writable()) return;
  int64_t mask = 0;
  for (int i = 0; i < kSwitchCount; ++i) {
    if (!kSwitches[i].Option || !def.Switches[i]) continue;
    const int bit = GetEnumValue(*info, kSwitches[i].Option);
    if (bit >= 0) mask |= int64_t{1} << bit;
  }
  SetOrdProp(Query, *info, mask);
}

void WriteSwitches(TDataSet* Query, const TDefinition& def, TForm form) {
  bool optionsDone = false;
  for (int i : kSwitchOrder[form]) {
    if (!kSwitches[i].Option) {
      SetPropBool(Query, kSwitches[i].Property, def.Switches[i]);
    } else if (!optionsDone) {
      WriteRefreshOptions(Query, def);
      optionsDone = true;
    }
  }
}

void TakeFrom(TDataSet* Query, TDefinition& def) {
  for (int i = 0; i < kStatementCount; ++i)
    if (TStrings* lines = StatementOf(Query, kStatements[i].Property)) def.Statements[i].Assign(lines);
  for (int i = 0; i < kTextCount; ++i) def.Texts[i] = GetPropString(Query, kTexts[i].Property);
  for (int i = 0; i < kSwitchCount; ++i) def.Switches[i] = ReadSwitch(Query, kSwitches[i]);
  if (XTTTSummaryCollection* summary = SummaryOf(Query)) def.Summary = summary->GetAsText();
}

// Closes the dataset, puts the definition in, keeps it openable, and opens
// it again when it was open. The composer runs with each text key and may
// rebuild the statement just set.
void ApplyTo(TDataSet* Query, TDefinition& def, TForm form) {
  const bool wasActive = Query->Active();
  if (wasActive) Query->Close();
  // Texts go into the lists themselves: the composer is for the keys below.
  for (int i = 0; i < kStatementCount; ++i)
    if (TStrings* lines = StatementOf(Query, kStatements[i].Property)) lines->Assign(&def.Statements[i]);
  for (TTextPart part : kTextOrder[form]) SetPropString(Query, kTexts[part].Property, def.Texts[part]);
  WriteSwitches(Query, def, form);
  if (XTTTSummaryCollection* summary = SummaryOf(Query)) summary->SetAsText(def.Summary);
  if (TStrings* sql = StatementOf(Query, u"SQL"); sql && Trim(sql->Text()).IsEmpty())
    sql->SetText(kQueryDocFallbackSQL);
  if (wasActive) Query->Open();
}

}  // namespace

String GetVeskQueryText(TDataSet* Query, const String& DocName) {
  TDefinition def;
  TakeFrom(Query, def);
  return WriteDocument(def, DocName);
}

void SetVeskQueryText(TDataSet* Query, const String& DocName, const String& Text) {
  TDefinition def;
  ReadDocument(Text, DocName, def);
  ApplyTo(Query, def, qfDocument);
}

void SaveProps(TDataSet* Query, TStrings* List) {
  TDefinition def;
  TakeFrom(Query, def);
  WriteList(def, List);
}

void LoadProps(TDataSet* Query, TStrings* List) {
  TDefinition def;
  ReadList(List, def);
  ApplyTo(Query, def, qfList);
}

String GetPropText(TDataSet* Query) {
  TStringList list;
  SaveProps(Query, &list);
  return list.Text();
}

void SetPropText(TDataSet* Query, const String& Text) {
  TStringList list;
  list.SetText(Text);
  LoadProps(Query, &list);
}
