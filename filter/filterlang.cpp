#include "filter/filterlang.h"

#include "platform/rtl/exceptions.h"
#include "platform/rtl/sysutils.h"
#include "platform/ui/dialogs.h"

namespace {

bool IsOneOf(WideChar c, std::u16string_view set) { return set.find(c) != std::u16string_view::npos; }

// How numbers and dates differ in the item scan.
struct TScanStyle {
  const char16_t* Method;       // for messages: "ReFloat"
  const char16_t* Kind;         // for messages: "float"
  std::u16string_view SecondOperators;  // what may follow the first operator
  const char16_t* Quote;        // around each token
  const char16_t* Or;           // the connector of a blank
};

const TScanStyle kFloatStyle{u"ReFloat", u"float", u">=", u"", u" OR  "};
const TScanStyle kDateStyle{u"ReDate", u"date", u"=", u"'", u" OR "};

String MessagePrefix(const TScanStyle& style) { return String(u"TFilterForm::") + style.Method + u"() - "; }

// "(field IS NULL)" and "(field IS NOT NULL)", whatever case was typed.
bool IsNullTest(const String& normalised, const String& field, String& condition) {
  const String upper = normalised.UpperCase();
  if (upper != u"IS NULL" && upper != u"IS NOT NULL") return false;
  condition = u"(" + field + u" " + upper + u")";
  return true;
}

// Copies the number token that starts at j to t; returns the position
// behind it.
int CopyNumber(const String& s, int j, String& t) {
  while (j <= s.Length() && TFilterValueLanguage::IsNumber(s[j])) t += s[j++];
  return j;
}

// The items of a valid number or date value: i is where an item starts,
// j where the last one ended. A comma item leaves j where it was, so two
// commas in a row would send i back to the same place for ever; that is
// the one case where i makes no progress, and it raises.
String ScanItems(const String& s, const String& field, const TScanStyle& style) {
  String t;
  int i = 1, j = 1;
  while (i <= s.Length()) {
    const int start = i;
    const WideChar c = s[i];
    if (IsOneOf(c, u" ><=")) {
      t += u"(" + field + c;
      j = i + 1;
      // Range-checked: an operator at the end has nothing behind it.
      if (IsOneOf(s[j], style.SecondOperators)) t += s[j++];
      t += style.Quote;
      j = CopyNumber(s, j, t);
      t += String(style.Quote) + u")";
    } else if (TFilterValueLanguage::IsNumber(c)) {
      t += u"(" + field + u" = " + style.Quote + c;
      j = CopyNumber(s, i + 1, t);
      t += String(style.Quote) + u")";
    }
    i = j;
    if (j <= s.Length() && s[j] == u' ') {
      t += style.Or;
      ++i;
    } else if (j <= s.Length() && s[j] == u',') {
      t += u" AND ";
      ++i;
    }
    if (i <= start) throw Exception(MessagePrefix(style) + u"Two commas in a row: '" + s + u"'");
  }
  return t;
}

// A valid value goes through the scan; an invalid one is shown to the user
// and goes on as the condition itself.
String ScanOrRefuse(const String& s, const String& field, const TScanStyle& style) {
  if (!TFilterValueLanguage::IsValidFloat(s)) {
    ShowMessage(MessagePrefix(style) + u"Incorrect " + style.Kind + u" value: '" + s + u"'");
    return s;
  }
  return ScanItems(s, field, style);
}

}  // namespace

TFilterValueLanguage::TFilterValueLanguage() { SetUpper(true); }

void TFilterValueLanguage::SetUpper(bool upper) {
  UpperPrefix = upper ? u"UPPER(" : u"";
  UpperSuffix = upper ? u")" : u"";
}

bool TFilterValueLanguage::IsNumber(WideChar c) { return IsOneOf(c, u"1234567890.+-"); }

bool TFilterValueLanguage::IsSimbol(WideChar c) { return IsOneOf(c, u" ><=,"); }

bool TFilterValueLanguage::IsValidFloat(const String& value) {
  for (WideChar c : value.view())
    if (!IsSimbol(c) && !IsNumber(c)) return false;
  return true;
}

String TFilterValueLanguage::RemoveUnused(const String& value) {
  const String s = value.Trim();
  String r;
  for (int i = 1; i <= s.Length(); ++i) {
    r += s[i];
    // The look ahead is range-checked and also runs behind the last
    // character: a value ending in a comma or an operator raises here.
    if (IsSimbol(s[i]))
      while (s[i + 1] == u' ') ++i;
  }
  return StringReplace(r, u" ,", u",", TReplaceFlags{rfReplaceAll});
}

String TFilterValueLanguage::ReFloat(const String& value, const String& field) const {
  const String s = RemoveUnused(value);
  if (s.SubString(1, 6).UpperCase() == u"SELECT") return field + u" IN(" + s + u")";
  String condition;
  if (IsNullTest(s, field, condition)) return condition;
  return ScanOrRefuse(s, field, kFloatStyle);
}

String TFilterValueLanguage::ReDate(const String& value, const String& field) const {
  const String s = RemoveUnused(value);
  String condition;
  if (IsNullTest(s, field, condition)) return condition;
  return ScanOrRefuse(s, field, kDateStyle);
}

String TFilterValueLanguage::ReString(const String& value, const String& field) const {
  const String s = RemoveUnused(value);
  String condition;
  if (IsNullTest(s, field, condition)) return condition;
  const String column = UpperPrefix + field + UpperSuffix;
  switch (TextOption) {
    case toExact:
      // The raw value: blanks around it are part of the compare.
      return u"( " + column + u" = " + UpperPrefix + u"'" + value + u"'" + UpperSuffix + u" )";
    case toInside:
    case toBegins: {
      String t;
      int i = 1;
      while (i <= s.Length()) {
        t += u"( " + column + u" LIKE " + UpperPrefix + u"'";
        if (TextOption == toInside) t += u"%";
        while (i <= s.Length() && s[i] != u' ' && s[i] != u',') t += s[i++];
        t += u"%'" + UpperSuffix + u")";
        if (i >= s.Length()) break;
        t += s[i] == u' ' ? u" OR " : u" AND ";
        ++i;
      }
      return t;
    }
    case toSmart: {
      String t = u"( ZE$G$CMP.INTEXT(ZE$G$CMP.PREP(" + field + u"),(SELECT ZE$G$CMP.PREP('" + s + u"')FROM DUAL)";
      if (NumberChecked) t += u",(SELECT ZE$G$CMP.NUM('" + s + u"')FROM DUAL)";
      return t + u")>=" + FloatToStr(LimitPosition * 0.1) + u" )";
    }
    default:
      return s.UpperCase();
  }
}
