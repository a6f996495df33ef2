#include "platform/rtl/ustring.h"

#include <gtest/gtest.h>

#include "platform/rtl/exceptions.h"
#include "platform/rtl/sysutils.h"

namespace {

TEST(UnicodeStringTest, IndexIsOneBasedAndRangeChecked) {
  String s = u"abc";
  EXPECT_EQ(s[1], u'a');
  EXPECT_EQ(s[3], u'c');
  EXPECT_THROW(s[0], ERangeError);
  EXPECT_THROW(s[4], ERangeError);
  EXPECT_THROW(String()[1], ERangeError);
  s[2] = u'X';
  EXPECT_EQ(s, u"aXc");
  try {
    (void)s[9];
    FAIL();
  } catch (const Exception& e) {
    EXPECT_EQ(e.ClassName(), u"ERangeError");
  }
}

TEST(UnicodeStringTest, SubStringClampsLikeCopy) {
  String s = u"Kelmar";
  EXPECT_EQ(s.SubString(1, 3), u"Kel");
  EXPECT_EQ(s.SubString(0, 3), u"Kel");  // index below 1 counts as 1
  EXPECT_EQ(s.SubString(-5, 2), u"Ke");
  EXPECT_EQ(s.SubString(4, 100), u"mar");
  EXPECT_EQ(s.SubString(7, 1), u"");
  EXPECT_EQ(s.SubString(2, 0), u"");
  EXPECT_EQ(s.SubString(2, -1), u"");
  EXPECT_EQ(Copy(s, 6, 1), u"r");
}

TEST(UnicodeStringTest, InsertAndDeleteStayInBounds) {
  String s = u"abc";
  s.Insert(u"X", 2);
  EXPECT_EQ(s, u"aXbc");
  s.Insert(u"Z", 99);
  EXPECT_EQ(s, u"aXbcZ");
  s.Insert(u"<", 0);
  EXPECT_EQ(s, u"<aXbcZ");
  s.Delete(2, 2);
  EXPECT_EQ(s, u"<bcZ");
  s.Delete(3, 100);
  EXPECT_EQ(s, u"<b");
  s.Delete(0, 1).Delete(9, 1);
  EXPECT_EQ(s, u"<b");
}

TEST(UnicodeStringTest, Utf8RoundTripsRomanianCyrillicAndAstral) {
  const char* text = "ăâîșț ĂÂÎȘȚ ёлка Ёлка 😀";
  String s(text);
  EXPECT_EQ(s.ToUtf8(), text);
  EXPECT_EQ(s.Length(), 24);  // the emoji takes two code units
  EXPECT_EQ(String(L"ёлка"), String("ёлка"));
}

TEST(UnicodeStringTest, BadUtf8BecomesReplacementCharacters) {
  // a lone continuation byte, a cut-off sequence, an overlong form
  String s = String::FromUtf8(std::string("a\x80" "b\xE2\x82" "\xC0\xAF", 7));
  EXPECT_EQ(s, u"a\uFFFDb\uFFFD\uFFFD\uFFFD\uFFFD");
  EXPECT_EQ(String::FromUtf8(std::string("\xF4\x90\x80\x80", 4)), u"\uFFFD\uFFFD\uFFFD\uFFFD");  // past U+10FFFF
  // a lone surrogate has no UTF-8 form
  EXPECT_EQ(String(u"x\xD800y").ToUtf8(), "x\xEF\xBF\xBDy");
}

TEST(UnicodeStringTest, ComparisonIsOrdinal) {
  EXPECT_LT(String(u"B"), String(u"a"));
  EXPECT_LT(String(u"a"), String(u"ab"));
  EXPECT_EQ(String(u"x") + u"y" + 'z', u"xyz");
  EXPECT_TRUE(String().IsEmpty());
}

TEST(UnicodeStringTest, DelimiterSearch) {
  String path = u"C:\\dir/sub\\file.txt";
  EXPECT_EQ(path.LastDelimiter(u"\\/"), 11);
  EXPECT_TRUE(path.IsDelimiter(u":", 2));
  EXPECT_FALSE(path.IsDelimiter(u":", 99));
  EXPECT_EQ(String(u"abc").LastDelimiter(u"x"), 0);
}

}  // namespace
