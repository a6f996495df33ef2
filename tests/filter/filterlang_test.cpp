#include "filter/filterlang.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "platform/rtl/exceptions.h"
#include "platform/rtl/stringlist.h"
#include "platform/rtl/sysutils.h"
#include "platform/ui/scriptedui.h"

namespace {

// ---- Golden files ---------------------------------------------------------------

// One line of a golden file, cut at its tabs; a cell "(empty)" is "".
struct TGoldenCase {
  int Line;
  std::vector<String> Cells;
};

std::vector<String> SplitAtTabs(const String& line) {
  std::vector<String> cells;
  std::u16string_view rest = line.view();
  for (;;) {
    const size_t tab = rest.find(u'\t');
    const std::u16string_view cell = rest.substr(0, tab);
    cells.push_back(cell == u"(empty)" ? String() : String(cell));
    if (tab == std::u16string_view::npos) return cells;
    rest.remove_prefix(tab + 1);
  }
}

// The cases of a file, each with `minCells` to `maxCells` cells.
std::vector<TGoldenCase> ReadGolden(const char* name, size_t minCells, size_t maxCells) {
  TStringList file;
  file.LoadFromFile(String(KELMAR_GOLDEN) + u"/" + name, TEncoding::UTF8);
  std::vector<TGoldenCase> cases;
  for (int i = 0; i < file.Count(); ++i) {
    const String line = file.Strings(i);
    if (line.IsEmpty() || line[1] == u'#') continue;
    std::vector<String> cells = SplitAtTabs(line);
    EXPECT_TRUE(cells.size() >= minCells && cells.size() <= maxCells) << name << ":" << i + 1 << ": " << line;
    if (cells.size() < minCells) continue;
    cells.resize(maxCells);
    cases.push_back({i + 1, std::move(cells)});
  }
  return cases;
}

// What a call gave, as the golden files write it: the condition, or the
// error that left it.
String Outcome(const std::function<String()>& call) {
  try {
    return call();
  } catch (const ERangeError&) {
    return u"raises ERangeError";
  } catch (const Exception& e) {
    return u"raises " + e.ClassName() + u": " + e.Message;
  } catch (const EUnexpectedDialog& e) {
    return u"unexpected dialogue: " + String(e.what());
  }
}

// Runs a generator on a golden case and checks its condition and the
// message box it shows, if any.
void CheckCase(const char* file, const TGoldenCase& g, const String& expected, const String& message,
               const std::function<String()>& call) {
  TScriptedUserInterface ui;
  TUserInterfaceScope scope(ui);
  if (!message.IsEmpty()) ui.ExpectShowMessage(message);
  const String where = String(file) + u":" + IntToStr(g.Line);
  EXPECT_EQ(Outcome(call), expected) << where;
  EXPECT_EQ(ui.Verify(), u"") << where;
  if (!message.IsEmpty() && ui.Shown().size() == 1) {
    EXPECT_EQ(ui.Shown()[0].Kind, dkShowMessage) << where;
    EXPECT_EQ(ui.Shown()[0].Text, message) << where;
  }
}

TEST(FilterLanguageGoldenTest, RemoveUnused) {
  const std::vector<TGoldenCase> cases = ReadGolden("removeunused.txt", 2, 2);
  ASSERT_GE(cases.size(), 14u);
  for (const TGoldenCase& g : cases)
    CheckCase("removeunused.txt", g, g.Cells[1], String(),
              [&] { return TFilterValueLanguage::RemoveUnused(g.Cells[0]); });
}

TEST(FilterLanguageGoldenTest, ReFloat) {
  const std::vector<TGoldenCase> cases = ReadGolden("refloat.txt", 3, 4);
  ASSERT_GE(cases.size(), 50u);
  TFilterValueLanguage language;
  for (const TGoldenCase& g : cases)
    CheckCase("refloat.txt", g, g.Cells[2], g.Cells[3], [&] { return language.ReFloat(g.Cells[1], g.Cells[0]); });
}

TEST(FilterLanguageGoldenTest, ReDate) {
  const std::vector<TGoldenCase> cases = ReadGolden("redate.txt", 3, 4);
  ASSERT_GE(cases.size(), 25u);
  TFilterValueLanguage language;
  for (const TGoldenCase& g : cases)
    CheckCase("redate.txt", g, g.Cells[2], g.Cells[3], [&] { return language.ReDate(g.Cells[1], g.Cells[0]); });
}

TEST(FilterLanguageGoldenTest, ReString) {
  const std::vector<TGoldenCase> cases = ReadGolden("restring.txt", 7, 7);
  ASSERT_GE(cases.size(), 35u);
  for (const TGoldenCase& g : cases) {
    TFilterValueLanguage language;
    language.TextOption = StrToInt(g.Cells[0]);
    ASSERT_TRUE(g.Cells[1] == u"ignore" || g.Cells[1] == u"sensitive") << "restring.txt:" << g.Line;
    language.SetUpper(g.Cells[1] == u"ignore");
    language.NumberChecked = g.Cells[2] == u"1";
    language.LimitPosition = StrToInt(g.Cells[3]);
    CheckCase("restring.txt", g, g.Cells[6], String(), [&] { return language.ReString(g.Cells[5], g.Cells[4]); });
  }
}

// ---- Characters and state -------------------------------------------------------

TEST(FilterLanguageTest, CharacterClassesAreExactlyTheirSets) {
  String numbers, symbols;
  for (int code = 0; code <= 0xFFFF; ++code) {
    const WideChar c = static_cast<WideChar>(code);
    if (TFilterValueLanguage::IsNumber(c)) numbers += c;
    if (TFilterValueLanguage::IsSimbol(c)) symbols += c;
  }
  EXPECT_EQ(numbers, u"+-.0123456789");
  EXPECT_EQ(symbols, u" ,<=>");
}

TEST(FilterLanguageTest, ValidFloatAcceptsOnlyNumberAndSymbolCharacters) {
  EXPECT_TRUE(TFilterValueLanguage::IsValidFloat(u""));
  EXPECT_TRUE(TFilterValueLanguage::IsValidFloat(u">=1.5,<=-2 +3 <>4"));
  EXPECT_FALSE(TFilterValueLanguage::IsValidFloat(u"1e5"));
  EXPECT_FALSE(TFilterValueLanguage::IsValidFloat(u"1\t2"));
  EXPECT_FALSE(TFilterValueLanguage::IsValidFloat(u"1/2"));
  EXPECT_FALSE(TFilterValueLanguage::IsValidFloat(u"\uFF11"));  // a full-width digit
}

TEST(FilterLanguageTest, NormalisingSkipsBlanksOnlyAndKeepsInnerTabs) {
  EXPECT_EQ(TFilterValueLanguage::RemoveUnused(u"\t a\t\tb \r\n"), u"a\t\tb");
  EXPECT_EQ(TFilterValueLanguage::RemoveUnused(u", \t5"), u",\t5");
}

TEST(FilterLanguageTest, StartsIgnoringCaseAndSetUpperSwitchesPrefixAndSuffix) {
  TFilterValueLanguage language;
  EXPECT_EQ(language.UpperPrefix, u"UPPER(");
  EXPECT_EQ(language.UpperSuffix, u")");
  language.TextOption = TFilterValueLanguage::toExact;
  EXPECT_EQ(language.ReString(u"a", u"F"), u"( UPPER(F) = UPPER('a') )");
  language.SetUpper(false);
  EXPECT_EQ(language.UpperPrefix, u"");
  EXPECT_EQ(language.UpperSuffix, u"");
  EXPECT_EQ(language.ReString(u"a", u"F"), u"( F = 'a' )");
  language.SetUpper(true);
  EXPECT_EQ(language.ReString(u"a", u"F"), u"( UPPER(F) = UPPER('a') )");
}

TEST(FilterLanguageTest, NumbersAndDatesIgnoreTheCaseSetting) {
  TFilterValueLanguage language;
  language.SetUpper(true);
  EXPECT_EQ(language.ReFloat(u"5", u"F"), u"(F = 5)");
  EXPECT_EQ(language.ReDate(u"5", u"F"), u"(F = '5')");
}

TEST(FilterLanguageTest, SmartLimitUsesTheProcessDecimalSeparator) {
  const WideChar saved = FormatSettings.DecimalSeparator;
  FormatSettings.DecimalSeparator = u',';
  TFilterValueLanguage language;
  language.TextOption = TFilterValueLanguage::toSmart;
  language.NumberChecked = false;
  language.LimitPosition = 7;
  const String result = language.ReString(u"ab", u"F");
  FormatSettings.DecimalSeparator = saved;
  EXPECT_EQ(result, u"( ZE$G$CMP.INTEXT(ZE$G$CMP.PREP(F),(SELECT ZE$G$CMP.PREP('ab')FROM DUAL))>=0,7 )");
}

// ---- Errors and size ------------------------------------------------------------

TEST(FilterLanguageTest, TwoCommasRaiseOnlyForNumbersAndDates) {
  TScriptedUserInterface ui;
  TUserInterfaceScope scope(ui);
  TFilterValueLanguage language;
  EXPECT_THROW(language.ReFloat(u"1,,2", u"F"), Exception);
  EXPECT_THROW(language.ReDate(u"1,,2", u"F"), Exception);
  language.TextOption = TFilterValueLanguage::toBegins;
  language.SetUpper(false);
  EXPECT_EQ(language.ReString(u"1,,2", u"F"), u"( F LIKE '1%') AND ( F LIKE '%') AND ( F LIKE '2%')");
  // A refused value is shown and returned before any scan.
  ui.ExpectShowMessage(u"Incorrect float value");
  EXPECT_EQ(language.ReFloat(u"x,,y", u"F"), u"x,,y");
  EXPECT_EQ(ui.Verify(), u"");
}

TEST(FilterLanguageTest, ARangeErrorLeavesTheStateAsItWas) {
  TFilterValueLanguage language;
  language.TextOption = TFilterValueLanguage::toInside;
  EXPECT_THROW(language.ReString(u"ab ,", u"F"), ERangeError);
  EXPECT_EQ(language.ReString(u"ab", u"F"), u"( UPPER(F) LIKE UPPER('%ab%'))");
}

TEST(FilterLanguageTest, LongValuesGiveOneConditionPerItem) {
  constexpr int kItems = 20000;
  String value;
  for (int i = 0; i < kItems; ++i) value += String(i == 0 ? u"" : i % 2 ? u"  " : u" , ") + IntToStr(i);
  TFilterValueLanguage language;
  const String numbers = language.ReFloat(value, u"F");
  const String dates = language.ReDate(value, u"F");
  language.TextOption = TFilterValueLanguage::toInside;
  const String texts = language.ReString(value, u"F");
  auto count = [](const String& text, std::u16string_view what) {
    int n = 0;
    for (size_t at = text.view().find(what); at != std::u16string_view::npos; at = text.view().find(what, at + 1))
      ++n;
    return n;
  };
  EXPECT_EQ(count(numbers, u"(F = "), kItems);
  EXPECT_EQ(count(numbers, u" OR  "), kItems / 2);
  EXPECT_EQ(count(numbers, u" AND "), kItems / 2 - 1);
  EXPECT_EQ(count(dates, u"(F = '"), kItems);
  EXPECT_EQ(count(texts, u" LIKE "), kItems);
}

}  // namespace
