#include "data/sqltext.h"

#include <gtest/gtest.h>

#include "platform/rtl/stringlist.h"

namespace {

TEST(RemoveCommentsTest, BlockAndLineComments) {
  EXPECT_EQ(Vesk::RemoveComments(u"select /* x */ 1", false), u"select  1");
  EXPECT_EQ(Vesk::RemoveComments(u"a -- b\nc", false), u"a \nc");
  EXPECT_EQ(Vesk::RemoveComments(u"a -- b\r\nc", false), u"a \r\nc");  // the CR stays with its LF
  EXPECT_EQ(Vesk::RemoveComments(u"a -- b", false), u"a ");
  EXPECT_EQ(Vesk::RemoveComments(u"keep /* open to the end", false), u"keep ");
  EXPECT_EQ(Vesk::RemoveComments(u"", false), u"");
  EXPECT_EQ(Vesk::RemoveComments(u"no comments", false), u"no comments");
}

TEST(RemoveCommentsTest, FirstCommentWinsLineOnlyWhenStrictlyEarlier) {
  // "/*" begins before "--": the block comment counts and swallows the dashes.
  EXPECT_EQ(Vesk::RemoveComments(u"x /* -- */ y", false), u"x  y");
  // "--" begins first: the rest of the line goes, the block opener with it.
  EXPECT_EQ(Vesk::RemoveComments(u"x -- /* y\nz */ w", false), u"x \nz */ w");
  // The closer is searched from the opener itself: "/*/" closes at once.
  EXPECT_EQ(Vesk::RemoveComments(u"a/*/b", false), u"ab");
}

TEST(RemoveCommentsTest, LiteralsAreNotSpecial) {
  EXPECT_EQ(Vesk::RemoveComments(u"select '--' from dual", false), u"select '");
}

TEST(RemoveCommentsTest, FlattenJoinsTrimmedLines) {
  EXPECT_EQ(Vesk::RemoveComments(u"select a, -- first\n   b\r\n\r\n  from t /* x */\n", true),
            u"select a, b from t");
}

TEST(PlainTextTest, JoinsNonEmptyTrimmedLines) {
  EXPECT_EQ(PlainText(u"  a  \r\n\n b\rc \n\n"), u"a b c");
  EXPECT_EQ(PlainText(u"\r\n \n"), u"");
  EXPECT_EQ(PlainText(u"one"), u"one");
}

TEST(TextIncrementTest, DigitsOnly) {
  EXPECT_EQ(TextIncrement(u"A1", 0), u"A2");  // mode 0 means digits
  EXPECT_EQ(TextIncrement(u"99", tiDigits), u"00");
  EXPECT_EQ(TextIncrement(u"A9", tiDigits), u"A0");
  EXPECT_EQ(TextIncrement(u"1-9", tiDigits), u"2-0");
  EXPECT_EQ(TextIncrement(u"ABC", tiDigits), u"ABC");
  EXPECT_EQ(TextIncrement(u"", tiDigits), u"");
  EXPECT_EQ(TextIncrement(u"DOC-0199/", tiDigits), u"DOC-0200/");
}

TEST(TextIncrementTest, LettersAndBoth) {
  EXPECT_EQ(TextIncrement(u"AZ", tiLetters), u"BA");
  EXPECT_EQ(TextIncrement(u"az9", tiLetters), u"ba9");
  EXPECT_EQ(TextIncrement(u"zz", tiLetters), u"aa");
  EXPECT_EQ(TextIncrement(u"A9", tiDigits | tiLetters), u"B0");
  EXPECT_EQ(TextIncrement(u"Z9", tiDigits | tiLetters), u"A0");
}

TEST(TextIncrementTest, AlphanumericSequence) {
  EXPECT_EQ(TextIncrement(u"19", tiAlphanumeric), u"1A");  // "9" becomes "A" with no carry
  EXPECT_EQ(TextIncrement(u"1Z", tiAlphanumeric), u"20");
  EXPECT_EQ(TextIncrement(u"1z", tiAlphanumeric), u"20");  // lower case falls back to "0" too
  EXPECT_EQ(TextIncrement(u"ZZ", tiAlphanumeric), u"00");
  EXPECT_EQ(TextIncrement(u"a8", tiAlphanumeric | tiDigits), u"a9");  // bit 4 overrides
}

std::vector<std::pair<String, int>> Tokens(const String& text) {
  TStringList list;
  ParseFormula(&list, text);
  std::vector<std::pair<String, int>> out;
  for (int i = 0; i < list.Count(); ++i) out.emplace_back(list.Strings(i), FormulaTokenClass(&list, i));
  EXPECT_EQ(MakeFormula(&list), text);
  return out;
}

TEST(ParseFormulaTest, WordsOthersAndQuotes) {
  using T = std::vector<std::pair<String, int>>;
  EXPECT_EQ(Tokens(u"SUM(A_1)+$X"),
            (T{{u"SUM", tcWord}, {u"(", tcOther}, {u"A_1", tcWord}, {u")+", tcOther}, {u"$X", tcWord}}));
  // A string is not one token: the word inside stays replaceable.
  EXPECT_EQ(Tokens(u"'ab c'"),
            (T{{u"'", tcQuoted}, {u"ab", tcWord}, {u" ", tcOther}, {u"c", tcWord}, {u"'", tcQuoted}}));
  EXPECT_EQ(Tokens(u"x=''"), (T{{u"x", tcWord}, {u"=", tcOther}, {u"''", tcQuoted}}));
  EXPECT_EQ(Tokens(u"\"\""), (T{{u"\"\"", tcQuoted}}));
  EXPECT_EQ(Tokens(u"Ș1"), (T{{u"Ș", tcOther}, {u"1", tcWord}}));  // only ASCII letters are word characters
  EXPECT_TRUE(Tokens(u"").empty());
}

TEST(ParseFormulaTest, EmptyListMakesEmptyText) {
  TStringList list;
  list.Add(u"old");
  ParseFormula(&list, u"");
  EXPECT_EQ(list.Count(), 0);
  EXPECT_EQ(MakeFormula(&list), u"");
}

TEST(ParamSQLTest, OneLineIsStoredUnderTheKey) {
  TStringList params, lines;
  lines.Add(u"  select * from t  ");
  SetParamSQL(&params, &lines, u"SQL");
  EXPECT_EQ(params.Text(), u"SQL=select * from t\n");
  TStringList back;
  GetParamSQL(&params, &back, u"SQL");
  EXPECT_EQ(back.Count(), 1);
  EXPECT_EQ(back.Strings(0), u"select * from t");
}

TEST(ParamSQLTest, SeveralLinesAreNumberedWithoutGaps) {
  TStringList params;
  params.Add(u"SQL=stale");
  params.Add(u"SQL7=stale too");
  params.Add(u"OTHER=keep");
  SetParamSQLText(&params, u"SQL", u"  select a\n\n   from t\n where x = 1\n");
  EXPECT_EQ(params.Values(u"SQL"), u"");
  EXPECT_EQ(params.Values(u"SQL7"), u"");
  EXPECT_EQ(params.Values(u"SQL0"), u"select a");
  EXPECT_EQ(params.Values(u"SQL1"), u"from t");
  EXPECT_EQ(params.Values(u"SQL2"), u"where x = 1");
  EXPECT_EQ(params.Values(u"OTHER"), u"keep");
  EXPECT_EQ(GetParamSQLText(&params, u"SQL"), u"select a\nfrom t\nwhere x = 1\n");
}

TEST(ParamSQLTest, GetStopsAtTheFirstGap) {
  TStringList params;
  params.Add(u"Q0=a");
  params.Add(u"Q1=b");
  params.Add(u"Q3=d");
  TStringList lines;
  GetParamSQL(&params, &lines, u"Q");
  EXPECT_EQ(lines.Count(), 2);
}

TEST(ParamSQLTest, EmptyListLeavesNoLineOfTheKey) {
  TStringList params, lines;
  params.Add(u"K=x");
  params.Add(u"K0=y");
  SetParamSQL(&params, &lines, u"K");
  EXPECT_EQ(params.Count(), 0);
}

TEST(ParamSQLTest, ClearMatchesNumbersThatPrintBackTheSame) {
  TStringList params;
  for (const char16_t* line : {u"K=a", u"K12=b", u"K007=c", u"K1234=d", u"KX=e", u"k5=f", u"KEY=g"})
    params.Add(line);
  ClearParamSQL(&params, u"K");
  EXPECT_EQ(params.CommaText(), u"K007=c,KX=e,KEY=g");  // "k5" goes too: names compare in upper case

  TStringList lower;
  lower.Add(u"k1=x");
  lower.Add(u"k=y");
  ClearParamSQL(&lower, u"k");  // a lower-case key only removes its own line
  EXPECT_EQ(lower.CommaText(), u"k1=x");
}

}  // namespace
