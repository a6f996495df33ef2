#include "platform/rtl/sysutils.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

TEST(TextTest, PosAndPosEx) {
  EXPECT_EQ(Pos(u"b", u"abcb"), 2);
  EXPECT_EQ(Pos(u"", u"abc"), 0);
  EXPECT_EQ(Pos(u"zz", u"abc"), 0);
  EXPECT_EQ(PosEx(u"b", u"abcb", 3), 4);
  EXPECT_EQ(PosEx(u"b", u"abcb", 5), 0);
  EXPECT_EQ(PosEx(u"b", u"abcb", 0), 0);
  EXPECT_EQ(String(u"hello").Pos(u"llo"), 3);
}

TEST(TextTest, TrimRemovesBlanksAndControls) {
  EXPECT_EQ(Trim(u" \t\r\nab c\x01 "), u"ab c");
  EXPECT_EQ(TrimLeft(u"  a "), u"a ");
  EXPECT_EQ(TrimRight(u"  a \n"), u"  a");
  EXPECT_EQ(Trim(u"   "), u"");
  EXPECT_EQ(Trim(u"\u00A0x"), u"\u00A0x");  // no-break space is not trimmed
}

TEST(TextTest, CaseMappingIsUnicodeAware) {
  EXPECT_EQ(UpperCase(u"ștefan țară îi âă"), u"ȘTEFAN ȚARĂ ÎI ÂĂ");
  EXPECT_EQ(LowerCase(u"ЁЛКА Привет"), u"ёлка привет");
  EXPECT_EQ(UpperCase(u"straße"), u"STRAßE");  // one-to-one mapping keeps length
  EXPECT_EQ(UpperCase(u"𐐨"), u"𐐀");            // outside the BMP
  EXPECT_EQ(UpCase(u'ș'), u'Ș');
}

TEST(TextTest, CompareTextIgnoresCaseAcrossScripts) {
  EXPECT_EQ(CompareText(u"Abc", u"aBC"), 0);
  EXPECT_TRUE(SameText(u"ȘTEFAN", u"ștefan"));
  EXPECT_TRUE(SameText(u"Ёлка", u"ёЛКА"));
  EXPECT_FALSE(SameText(u"abc", u"abcd"));
  EXPECT_LT(CompareText(u"abc", u"ABD"), 0);
  EXPECT_GT(CompareText(u"b", u"A"), 0);
  EXPECT_LT(CompareText(u"ab", u"abc"), 0);
  EXPECT_LT(CompareStr(u"B", u"a"), 0);
}

TEST(TextTest, StringReplaceFlags) {
  EXPECT_EQ(StringReplace(u"a-b-c", u"-", u"+", {}), u"a+b-c");
  EXPECT_EQ(StringReplace(u"a-b-c", u"-", u"+", {rfReplaceAll}), u"a+b+c");
  EXPECT_EQ(StringReplace(u"Ab ab AB", u"ab", u"x", {rfReplaceAll}), u"Ab x AB");
  EXPECT_EQ(StringReplace(u"Ab ab AB", u"ab", u"x", {rfReplaceAll, rfIgnoreCase}), u"x x x");
  EXPECT_EQ(StringReplace(u"ȘȘ șș", u"ș", u"s", {rfReplaceAll, rfIgnoreCase}), u"ss ss");
  EXPECT_EQ(StringReplace(u"aaa", u"aa", u"a", {rfReplaceAll}), u"aa");  // no re-scan of output
  EXPECT_EQ(StringReplace(u"abc", u"", u"x", {rfReplaceAll}), u"abc");
}

TEST(TextTest, QuotingAndFileNames) {
  EXPECT_EQ(QuotedStr(u"O'Hara"), u"'O''Hara'");
  EXPECT_EQ(AnsiDequotedStr(u"'O''Hara'", u'\''), u"O'Hara");
  EXPECT_EQ(AnsiDequotedStr(u"'open", u'\''), u"'open");
  EXPECT_EQ(ExtractFileName(u"/a/b/c.qry"), u"c.qry");
  EXPECT_EQ(ExtractFilePath(u"/a/b/c.qry"), u"/a/b/");
  EXPECT_EQ(ExtractFileExt(u"/a.b/c"), u"");
  EXPECT_EQ(ExtractFileExt(u"c.tar.gz"), u".gz");
  EXPECT_EQ(ChangeFileExt(u"/a/c.qry", u".dzn"), u"/a/c.dzn");
  EXPECT_EQ(ChangeFileExt(u"/a.d/c", u".dzn"), u"/a.d/c.dzn");
  EXPECT_EQ(IncludeTrailingPathDelimiter(u"/tmp"), u"/tmp/");
}

TEST(NumberTest, StrToIntAcceptsHistoricalForms) {
  EXPECT_EQ(StrToInt(u"42"), 42);
  EXPECT_EQ(StrToInt(u"  -7"), -7);
  EXPECT_EQ(StrToInt(u"+7"), 7);
  EXPECT_EQ(StrToInt(u"$1F"), 31);
  EXPECT_EQ(StrToInt(u"0x10"), 16);
  EXPECT_EQ(StrToInt(u"$FFFFFFFF"), -1);
  EXPECT_EQ(StrToInt(u"-2147483648"), INT32_MIN);
  EXPECT_EQ(StrToInt64(u"9223372036854775807"), INT64_MAX);
  EXPECT_EQ(StrToInt64(u"-9223372036854775808"), INT64_MIN);
}

TEST(NumberTest, StrToIntRejectsBadText) {
  for (const char16_t* bad : {u"", u" ", u"12 ", u"1.5", u"abc", u"2147483648", u"-2147483649", u"$", u"0x",
                              u"$100000000", u"--1", u"1e3"}) {
    int v = 123;
    EXPECT_FALSE(TryStrToInt(bad, v)) << String(bad);
    EXPECT_EQ(v, 123);
    EXPECT_EQ(StrToIntDef(bad, -9), -9);
  }
  try {
    StrToInt(u"x1");
    FAIL();
  } catch (const EConvertError& e) {
    EXPECT_EQ(e.Message, u"'x1' is not a valid integer value");
  }
  int64_t big;
  EXPECT_FALSE(TryStrToInt64(u"9223372036854775808", big));
}

TEST(NumberTest, TryStrToFloatFollowsDecimalSeparator) {
  double v = 0;
  EXPECT_TRUE(TryStrToFloat(u" 1.5 ", v));
  EXPECT_DOUBLE_EQ(v, 1.5);
  EXPECT_TRUE(TryStrToFloat(u"-.5", v));
  EXPECT_DOUBLE_EQ(v, -0.5);
  EXPECT_TRUE(TryStrToFloat(u"2.", v));
  EXPECT_TRUE(TryStrToFloat(u"1e3", v));
  EXPECT_DOUBLE_EQ(v, 1000);
  EXPECT_TRUE(TryStrToFloat(u"+1.25E-2", v));
  EXPECT_DOUBLE_EQ(v, 0.0125);
  for (const char16_t* bad : {u"", u".", u"1,5", u"1e", u"e3", u"1.2.3", u"1 000", u"nan", u"1e999"})
    EXPECT_FALSE(TryStrToFloat(bad, v)) << String(bad);

  TFormatSettings comma = FormatSettings;
  comma.DecimalSeparator = u',';
  EXPECT_TRUE(TryStrToFloat(u"1,5", v, comma));
  EXPECT_DOUBLE_EQ(v, 1.5);
  EXPECT_FALSE(TryStrToFloat(u"1.5", v, comma));
  EXPECT_THROW(StrToFloat(u"abc"), EConvertError);
}

TEST(NumberTest, FloatToStrUsesFifteenDigitsGeneralForm) {
  EXPECT_EQ(FloatToStr(0), u"0");
  EXPECT_EQ(FloatToStr(-0.0), u"0");
  EXPECT_EQ(FloatToStr(1.5), u"1.5");
  EXPECT_EQ(FloatToStr(0.1 + 0.2), u"0.3");
  EXPECT_EQ(FloatToStr(100), u"100");
  EXPECT_EQ(FloatToStr(-12.25), u"-12.25");
  EXPECT_EQ(FloatToStr(0.0001), u"0.0001");
  EXPECT_EQ(FloatToStr(0.00001), u"1E-5");
  EXPECT_EQ(FloatToStr(1.5e-7), u"1.5E-7");
  EXPECT_EQ(FloatToStr(123456789012345.0), u"123456789012345");
  EXPECT_EQ(FloatToStr(1e15), u"1E15");
  EXPECT_EQ(FloatToStr(1e20), u"1E20");
  EXPECT_EQ(FloatToStr(2.0 / 3.0), u"0.666666666666667");
  EXPECT_EQ(FloatToStr(std::numeric_limits<double>::infinity()), u"INF");
  EXPECT_EQ(FloatToStr(-std::numeric_limits<double>::infinity()), u"-INF");
  EXPECT_EQ(FloatToStr(std::nan("")), u"NAN");
  TFormatSettings comma = FormatSettings;
  comma.DecimalSeparator = u',';
  EXPECT_EQ(FloatToStr(0.7, comma), u"0,7");
}

TEST(NumberTest, FixedFormatsRoundHalfAwayFromZero) {
  EXPECT_EQ(FloatToStrF(0.125, ffFixed, 15, 2), u"0.13");
  EXPECT_EQ(FloatToStrF(-0.125, ffFixed, 15, 2), u"-0.13");
  EXPECT_EQ(FloatToStrF(2.5, ffFixed, 15, 0), u"3");
  EXPECT_EQ(FloatToStrF(0.5, ffFixed, 15, 0), u"1");
  EXPECT_EQ(FloatToStrF(0.05, ffFixed, 15, 1), u"0.1");
  EXPECT_EQ(FloatToStrF(0.004, ffFixed, 15, 1), u"0.0");
  EXPECT_EQ(FloatToStrF(-0.001, ffFixed, 15, 2), u"0.00");  // no negative zero
  EXPECT_EQ(FloatToStrF(-0.0, ffFixed, 15, 2), u"0.00");
  EXPECT_EQ(FloatToStrF(9.999, ffFixed, 15, 2), u"10.00");
  EXPECT_EQ(FloatToStrF(1234567.891, ffNumber, 15, 2), u"1,234,567.89");
  EXPECT_EQ(FloatToStrF(-999.5, ffNumber, 15, 0), u"-1,000");
  EXPECT_EQ(FloatToStrF(1234.5, ffExponent, 4, 2), u"1.235E+03");
  EXPECT_EQ(FloatToStrF(-1.5, ffCurrency, 15, 2), u"-$1.50");
}

TEST(NumberTest, BoolsAndHex) {
  EXPECT_TRUE(StrToBool(u"true"));
  EXPECT_FALSE(StrToBool(u"0"));
  EXPECT_TRUE(StrToBool(u"-1"));
  EXPECT_THROW(StrToBool(u"maybe"), EConvertError);
  EXPECT_EQ(BoolToStr(true), u"-1");
  EXPECT_EQ(BoolToStr(false, true), u"False");
  EXPECT_EQ(IntToHex(255, 4), u"00FF");
  EXPECT_EQ(IntToStr(int64_t{-9000000000}), u"-9000000000");
}

class CodePageTest : public ::testing::Test {
 protected:
  void TearDown() override { SetSystemCodePage(65001); }
};

TEST_F(CodePageTest, WindowsCodePagesRoundTrip) {
  const String cyrillic = u"Ёлка привет";
  std::string cp1251 = EncodeCodePage(cyrillic, 1251);
  EXPECT_EQ(cp1251.size(), 11u);
  EXPECT_EQ(static_cast<unsigned char>(cp1251[0]), 0xA8);  // Ё
  EXPECT_EQ(DecodeCodePage(cp1251, 1251), cyrillic);

  // windows-1250 has the cedilla forms of s and t, as Romanian text of that era used.
  const String romanian = u"Ştefan şi Ţară îşi";
  EXPECT_EQ(DecodeCodePage(EncodeCodePage(romanian, 1250), 1250), romanian);
  EXPECT_EQ(DecodeCodePage(EncodeCodePage(u"Crème brûlée", 1252), 1252), u"Crème brûlée");
}

TEST_F(CodePageTest, UnmappableCharactersBecomeQuestionMarks) {
  EXPECT_EQ(EncodeCodePage(u"aЖb", 1252), "a?b");
}

TEST_F(CodePageTest, SystemCodePageDrivesAnsiConversions) {
  EXPECT_EQ(SystemCodePage(), 65001);
  EXPECT_EQ(StringToAnsi(u"ё"), "\xD1\x91");
  SetSystemCodePage(1251);
  EXPECT_EQ(StringToAnsi(u"ё"), "\xB8");
  EXPECT_EQ(AnsiToString("\xB8"), u"ё");
  EXPECT_THROW(SetSystemCodePage(4242), EEncodingError);
  EXPECT_EQ(SystemCodePage(), 1251);
}

}  // namespace
