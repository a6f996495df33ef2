#include "platform/rtl/format.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>

namespace {

class FormatTest : public ::testing::Test {
 protected:
  void TearDown() override { FormatSettings = saved_; }
  TFormatSettings saved_ = FormatSettings;
};

std::string ConvertMessage(const std::function<void()>& fn) {
  try {
    fn();
  } catch (const EConvertError& e) {
    return e.Message.ToUtf8();
  }
  return "no exception";
}

TEST_F(FormatTest, Integers) {
  EXPECT_EQ(Format(u"%d", 42), u"42");
  EXPECT_EQ(Format(u"%d", -42), u"-42");
  EXPECT_EQ(Format(u"[%5d]", 42), u"[   42]");
  EXPECT_EQ(Format(u"[%-5d]", 42), u"[42   ]");
  EXPECT_EQ(Format(u"%02d:%02d", 7, 30), u"07:30");
  EXPECT_EQ(Format(u"%03d", -5), u"-05");
  EXPECT_EQ(Format(u"%.3d", 5), u"005");
  EXPECT_EQ(Format(u"%.3d", -5), u"-005");
  EXPECT_EQ(Format(u"[%6.3d]", 5), u"[   005]");
  EXPECT_EQ(Format(u"%d", INT64_MIN), u"-9223372036854775808");
  EXPECT_EQ(Format(u"%lu %ld %lld %hd", 1UL, 2L, 3LL, 4), u"1 2 3 4");
  EXPECT_EQ(Format(u"%D", 9), u"9");
}

TEST_F(FormatTest, UnsignedAndHex) {
  EXPECT_EQ(Format(u"%u", -1), u"4294967295");
  EXPECT_EQ(Format(u"%u", int64_t{-1}), u"18446744073709551615");
  EXPECT_EQ(Format(u"%u", UINT64_MAX), u"18446744073709551615");
  EXPECT_EQ(Format(u"%x", 255), u"FF");
  EXPECT_EQ(Format(u"%x", -1), u"FFFFFFFF");
  EXPECT_EQ(Format(u"%02x", 5), u"05");
  EXPECT_EQ(Format(u"%.4x", 255), u"00FF");
  EXPECT_EQ(Format(u"%d", 4000000000u), u"4000000000");
}

TEST_F(FormatTest, FloatsRoundHalfAwayFromZero) {
  EXPECT_EQ(Format(u"%f", 1.0), u"1.00");
  EXPECT_EQ(Format(u"%.2f", 0.125), u"0.13");
  EXPECT_EQ(Format(u"%.2f", -0.125), u"-0.13");
  EXPECT_EQ(Format(u"%.0f", 2.5), u"3");
  EXPECT_EQ(Format(u"%.0f", -2.5), u"-3");
  EXPECT_EQ(Format(u"%.0f", 0.5), u"1");
  EXPECT_EQ(Format(u"%.2f", -0.001), u"0.00");
  EXPECT_EQ(Format(u"%.2f", -0.0), u"0.00");
  EXPECT_EQ(Format(u"%.3f", 2.0005), u"2.001");  // 2.0005 is just above the tie in binary
  EXPECT_EQ(Format(u"%8.2f|", 3.14159), u"    3.14|");
  EXPECT_EQ(Format(u"%08.2f", -3.14159), u"-0003.14");
  EXPECT_EQ(Format(u"%n", 1234567.891), u"1,234,567.89");
  EXPECT_EQ(Format(u"%.0n", -1234567.5), u"-1,234,568");
  EXPECT_EQ(Format(u"%m", 1234.5), u"$1,234.50");
  EXPECT_EQ(Format(u"%e", 1.5), u"1.50000000000000E+000");
  EXPECT_EQ(Format(u"%.3e", -12345.0), u"-1.23E+004");
  EXPECT_EQ(Format(u"%g", 0.5), u"0.5");
  EXPECT_EQ(Format(u"%f", TDateTime(1.5)), u"1.50");
  FormatSettings.DecimalSeparator = u',';
  FormatSettings.ThousandSeparator = u' ';
  EXPECT_EQ(Format(u"%.2f", 0.125), u"0,13");
  EXPECT_EQ(Format(u"%n", 1234.5), u"1 234,50");
}

TEST_F(FormatTest, Text) {
  const String name = u"Kelmar";
  EXPECT_EQ(Format(u"Hello, %s!", name), u"Hello, Kelmar!");
  EXPECT_EQ(Format(u"[%8s]", u"ab"), u"[      ab]");
  EXPECT_EQ(Format(u"[%-8s]", "ab"), u"[ab      ]");
  EXPECT_EQ(Format(u"%.3s", name), u"Kel");
  EXPECT_EQ(Format(u"%s", std::string("utf-8 \xc8\x9b")), u"utf-8 ț");
  EXPECT_EQ(Format(u"%s", name + u" 2"), u"Kelmar 2");
  EXPECT_EQ(Format(u"%s|%s", static_cast<const char16_t*>(nullptr), static_cast<const char*>(nullptr)), u"|");
  EXPECT_EQ(Format(u"100%% of %s", u"it"), u"100% of it");
  EXPECT_EQ(Format(u"no specifiers"), u"no specifiers");
}

TEST_F(FormatTest, VariantsConvertToWhatTheSpecifierNeeds) {
  EXPECT_EQ(Format(u"%s", Variant(42)), u"42");
  EXPECT_EQ(Format(u"%s", Null()), u"");
  EXPECT_EQ(Format(u"%d", Variant(int64_t{7})), u"7");
  EXPECT_EQ(Format(u"%d", Variant(u"12")), u"12");
  EXPECT_EQ(Format(u"%x", Variant(-1)), u"FFFFFFFF");
  EXPECT_EQ(Format(u"%.1f", Variant(u"2.25")), u"2.3");
  EXPECT_EQ(Format(u"%.2f", Variant(Currency(1.5))), u"1.50");
  const Variant field = 3.14159;
  EXPECT_EQ(Format(u"%.2f", field), u"3.14");
  EXPECT_THROW(Format(u"%d", Variant(1.5)), EConvertError);
  EXPECT_THROW(Format(u"%d", Null()), EConvertError);
  EXPECT_THROW(Format(u"%f", Null()), EConvertError);
  EXPECT_THROW(Format(u"%f", Variant(u"abc")), EConvertError);
  EXPECT_THROW(Format(u"%s", VarArrayOf({1})), EConvertError);
}

TEST_F(FormatTest, IndexesAndStars) {
  EXPECT_EQ(Format(u"%1:s %0:s", u"a", u"b"), u"b a");
  EXPECT_EQ(Format(u"%1:s %s %0:s", u"a", u"b", u"c"), u"b c a");
  EXPECT_EQ(Format(u"%0:s-%0:s", u"x"), u"x-x");
  EXPECT_EQ(Format(u"[%*d]", 5, 42), u"[   42]");
  EXPECT_EQ(Format(u"[%-*d]", 4, 7), u"[7   ]");
  EXPECT_EQ(Format(u"%.*f", 3, 1.0), u"1.000");
  EXPECT_EQ(Format(u"%*.*f", 7, 1, 2.25), u"    2.3");
  EXPECT_EQ(Format(u"%*:s", 1, u"a"), u"a");  // '*' as the index reads argument 0 (=1)
  EXPECT_EQ(Format(u"%d-%d", {1, 2}), u"1-2");
}

TEST_F(FormatTest, MismatchesAndBrokenFormatsRaise) {
  EXPECT_EQ(ConvertMessage([] { Format(u"%d", 1.5); }), "Format '%d' invalid or incompatible with argument");
  EXPECT_EQ(ConvertMessage([] { Format(u"%f", 1); }), "Format '%f' invalid or incompatible with argument");
  EXPECT_EQ(ConvertMessage([] { Format(u"%s", 1); }), "Format '%s' invalid or incompatible with argument");
  EXPECT_EQ(ConvertMessage([] { Format(u"%d %d", 1); }), "No argument for format '%d %d'");
  EXPECT_EQ(ConvertMessage([] { Format(u"%d"); }), "No argument for format '%d'");
  EXPECT_EQ(ConvertMessage([] { Format(u"%3:d", 1); }), "No argument for format '%3:d'");
  // The quoted format stops at 31 characters.
  EXPECT_EQ(ConvertMessage([] { Format(u"A rather long text with one %q specifier", 1); }),
            "Format 'A rather long text with one %q ' invalid or incompatible with argument");
  for (const char16_t* bad : {u"%", u"50%", u"%5", u"%-", u"%.", u"%q", u"%l", u"%1:", u"%999999d", u"%.999999f"})
    EXPECT_THROW(Format(bad, 1), EConvertError) << String(bad);
  EXPECT_THROW(Format(u"%*d", 1.5, 1), EConvertError);
  EXPECT_THROW(Format(u"%p", 1), EConvertError);
}

TEST_F(FormatTest, Pointers) {
  int x = 0;
  const String text = Format(u"%p", &x);
  EXPECT_EQ(text.Length(), 16);
  EXPECT_EQ(text, Format(u"%.16x", static_cast<uint64_t>(reinterpret_cast<uintptr_t>(&x))));
  EXPECT_EQ(Format(u"%p", static_cast<void*>(nullptr)), u"0000000000000000");
}

TEST_F(FormatTest, FormatFloatPatternsOfTheHistoricalTable) {
  struct Row {
    const char16_t* pattern;
    const char16_t* positive;  // 1234
    const char16_t* negative;  // -1234
    const char16_t* half;      // 0.5
    const char16_t* zero;      // 0
  };
  const Row rows[] = {
      {u"", u"1234", u"-1234", u"0.5", u"0"},
      {u"0", u"1234", u"-1234", u"1", u"0"},
      {u"0.00", u"1234.00", u"-1234.00", u"0.50", u"0.00"},
      {u"#.##", u"1234", u"-1234", u".5", u""},
      {u"#,##0.00", u"1,234.00", u"-1,234.00", u"0.50", u"0.00"},
      {u"#,##0.00;(#,##0.00)", u"1,234.00", u"(1,234.00)", u"0.50", u"0.00"},
      {u"#,##0.00;;Zero", u"1,234.00", u"-1,234.00", u"0.50", u"Zero"},
      {u"0.000E+00", u"1.234E+03", u"-1.234E+03", u"5.000E-01", u"0.000E+00"},
      {u"#.###E-0", u"1.234E3", u"-1.234E3", u"5E-1", u"0E0"},
  };
  for (const Row& r : rows) {
    EXPECT_EQ(FormatFloat(r.pattern, 1234), r.positive) << String(r.pattern);
    EXPECT_EQ(FormatFloat(r.pattern, -1234), r.negative) << String(r.pattern);
    EXPECT_EQ(FormatFloat(r.pattern, 0.5), r.half) << String(r.pattern);
    EXPECT_EQ(FormatFloat(r.pattern, 0), r.zero) << String(r.pattern);
  }
}

TEST_F(FormatTest, FormatFloatRoundingAndPlaceholders) {
  EXPECT_EQ(FormatFloat(u"0.00", 0.125), u"0.13");
  EXPECT_EQ(FormatFloat(u"0", 2.5), u"3");
  EXPECT_EQ(FormatFloat(u"0", -2.5), u"-3");
  EXPECT_EQ(FormatFloat(u"00.00", 5.125), u"05.13");
  EXPECT_EQ(FormatFloat(u"0.###", 1.5), u"1.5");
  EXPECT_EQ(FormatFloat(u"0.###", 1), u"1");
  EXPECT_EQ(FormatFloat(u"0.0##", 2.12345), u"2.123");
  EXPECT_EQ(FormatFloat(u"0.0##", 2), u"2.0");
  EXPECT_EQ(FormatFloat(u"#,##0", 1234567), u"1,234,567");
  EXPECT_EQ(FormatFloat(u"#,##0", 999.5), u"1,000");
  EXPECT_EQ(FormatFloat(u"0000", 12), u"0012");
  EXPECT_EQ(FormatFloat(u"000-000", 123456), u"123-456");
  EXPECT_EQ(FormatFloat(u".00", 12.5), u"12.50");
  EXPECT_EQ(FormatFloat(u"0.00E+00", 12345), u"1.23E+04");
  EXPECT_EQ(FormatFloat(u"0.0e-0", 0.00012), u"1.2e-4");
  EXPECT_EQ(FormatFloat(u"0.00", 1e20), u"1E20");
  EXPECT_EQ(FormatFloat(u"0.00", std::nan("")), u"NAN");
}

TEST_F(FormatTest, FormatFloatSignsAndSections) {
  EXPECT_EQ(FormatFloat(u"0.00", -0.001), u"0.00");  // no negative zero
  EXPECT_EQ(FormatFloat(u"0.00", -0.0), u"0.00");
  EXPECT_EQ(FormatFloat(u"0.00;(0.00);'zero'", -0.001), u"zero");
  EXPECT_EQ(FormatFloat(u"0.00;(0.00)", -0.001), u"0.00");
  EXPECT_EQ(FormatFloat(u"0;;", -3), u"-3");
  EXPECT_EQ(FormatFloat(u"\"$\"#,##0.00", 1234.5), u"$1,234.50");
  EXPECT_EQ(FormatFloat(u"'a;b' 0", 7), u"a;b 7");
  EXPECT_EQ(FormatFloat(u"0 'open", 7), u"7 open");
  EXPECT_EQ(FormatFloat(u"0 \"kg\";0 \"kg less\"", -4), u"4 kg less");
  FormatSettings.DecimalSeparator = u',';
  FormatSettings.ThousandSeparator = u'.';
  EXPECT_EQ(FormatFloat(u"#,##0.00", 1234567.125), u"1.234.567,13");
}

TEST_F(FormatTest, FormatCurrUsesTheExactValue) {
  // 1.005 as a double lies below the tie; as a Currency it is exact.
  EXPECT_EQ(FormatFloat(u"0.00", 1.005), u"1.00");
  EXPECT_EQ(FormatCurr(u"0.00", Currency::FromVal(10050)), u"1.01");
  EXPECT_EQ(FormatCurr(u"#,##0.00", Currency::FromVal(INT64_MAX)), u"922,337,203,685,477.58");
  EXPECT_EQ(FormatCurr(u"#,##0.00", Currency::FromVal(INT64_MIN)), u"-922,337,203,685,477.58");
  EXPECT_EQ(FormatCurr(u"0.0000", Currency::FromVal(-1)), u"-0.0001");
  EXPECT_EQ(FormatCurr(u"0.00", Currency::FromVal(-1)), u"0.00");
  EXPECT_EQ(FormatCurr(u"0.00E+0", Currency(98765)), u"9.88E+4");
  EXPECT_EQ(FormatCurr(u"", Currency(2.5)), u"2.5");
}

}  // namespace
