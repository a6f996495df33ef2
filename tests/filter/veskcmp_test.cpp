#include "filter/veskcmp.h"

#include <gtest/gtest.h>

#include <cmath>

#include "platform/db/dadataset.h"
#include "platform/rtl/stringlist.h"
#include "tests/support/kitfixture.h"

namespace {

TEST(VeskCmpPrep, LowersAndSqueezesSeparators) {
  EXPECT_EQ(VeskCmpPrep(u"  Hello,  World!! "), u"hello world");
  EXPECT_EQ(VeskCmpPrep(u"A-1/B_2"), u"a 1 b 2");
  EXPECT_EQ(VeskCmpPrep(u"\u041F\u0440\u0438\u0432\u0435\u0442, \u041C\u0418\u0420 \u0401\u043B\u043A\u0430"),
            u"\u043F\u0440\u0438\u0432\u0435\u0442 \u043C\u0438\u0440 \u0451\u043B\u043A\u0430");
  // Letters outside the alphabet separate words.
  EXPECT_EQ(VeskCmpPrep(u"caf\u00E9au lait"), u"caf au lait");
  // Lower case comes first: the Kelvin sign and the dotted capital I lower
  // into the alphabet and are kept.
  EXPECT_EQ(VeskCmpPrep(u"5\u212A \u0130D"), u"5k id");
  EXPECT_EQ(VeskCmpPrep(u" ,.;"), u"");
  EXPECT_EQ(VeskCmpPrep(u""), u"");
}

TEST(VeskCmpPrep, RemovesWholeStopWordsOnly) {
  TStringList stop;
  stop.Add(u"the");
  stop.Add(u"and");
  EXPECT_EQ(VeskCmpPrep(u"The cat and the dog", &stop), u"cat dog");
  // "theme" and "andes" hold the words without being them.
  EXPECT_EQ(VeskCmpPrep(u"theme of the andes", &stop), u"theme of andes");
  EXPECT_EQ(VeskCmpPrep(u"cat the", &stop), u"cat");
  EXPECT_EQ(VeskCmpPrep(u"the the the", &stop), u"");
  // The words are taken as written: the text is lower case by then.
  TStringList upper;
  upper.Add(u"THE");
  EXPECT_EQ(VeskCmpPrep(u"the cat", &upper), u"the cat");
  TStringList empty;
  empty.Add(u"");
  EXPECT_EQ(VeskCmpPrep(u"a b", &empty), u"a b");
}

TEST(VeskCmpNum, KeepsDigitsInOrder) {
  EXPECT_EQ(VeskCmpNum(u"item 12-b/34"), u"1234");
  EXPECT_EQ(VeskCmpNum(u"none"), u"");
}

TEST(VeskCmpValue, CountsSharedGrams) {
  EXPECT_DOUBLE_EQ(VeskCmpValue(u"a", u"a"), 1.0);
  EXPECT_DOUBLE_EQ(VeskCmpValue(u"ab", u"ba"), 4.0 / 6.0);
  // 0 of 2 triples, 2 of 4 pairs, 4 of 6 singles.
  EXPECT_DOUBLE_EQ(VeskCmpValue(u"abc", u"abd"), 0.5);
  EXPECT_DOUBLE_EQ(VeskCmpValue(u"", u"abc"), 0.0);
  EXPECT_DOUBLE_EQ(VeskCmpValue(u"xyz", u"abc"), 0.0);
  // Repeated grams count each time: "aa" has two singles, both found.
  EXPECT_DOUBLE_EQ(VeskCmpValue(u"aa", u"a"), 1.0);
}

TEST(VeskCmpValue, IsSymmetricAndBounded) {
  const char16_t* texts[] = {u"apple pie", u"applied", u"pineapple", u"a", u"zz top", u"\u0451\u0436"};
  for (const char16_t* a : texts)
    for (const char16_t* b : texts) {
      const double ab = VeskCmpValue(a, b);
      EXPECT_DOUBLE_EQ(ab, VeskCmpValue(b, a));
      EXPECT_GE(ab, 0.0);
      EXPECT_LE(ab, 1.0);
    }
  // Long texts, past the grams kept on the stack: each side finds 59 of
  // 238 triples (" ab"), 119 of 239 pairs and 180 of 240 singles.
  String longA, longB;
  for (int i = 0; i < 60; ++i) {
    longA += u"abc ";
    longB += u"abd ";
  }
  EXPECT_DOUBLE_EQ(VeskCmpValue(longA, longB), 716.0 / 1434.0);
}

TEST(VeskCmpIn, SharesOfThePattern) {
  EXPECT_DOUBLE_EQ(VeskCmpIn(u"abcdef", u"xy", u""), 0.0);
  // Two-character patterns count single characters only.
  EXPECT_DOUBLE_EQ(VeskCmpIn(u"abcdef", u"ba", u""), 1.0);
  // 3 of 3 singles, 1 of 2 pairs, 0 of 1 triple.
  EXPECT_DOUBLE_EQ(VeskCmpIn(u"abc def", u"abd", u""), 4.0 / 6.0);
  // A two-character text takes pairs but no triples: 3 of 3, 1 of 2.
  EXPECT_DOUBLE_EQ(VeskCmpIn(u"ab", u"aba", u""), 4.0 / 5.0);
  EXPECT_DOUBLE_EQ(VeskCmpIn(u"", u"abc", u""), 0.0);
  EXPECT_DOUBLE_EQ(VeskCmpIn(u"abc", u"", u""), 0.0);
}

TEST(VeskCmpIn, NumberMustStandAmongTheDigits) {
  EXPECT_DOUBLE_EQ(VeskCmpIn(u"item 12 34", u"item", u"1234"), 1.0);
  EXPECT_DOUBLE_EQ(VeskCmpIn(u"item 12 34", u"item", u"23"), 1.0);
  EXPECT_DOUBLE_EQ(VeskCmpIn(u"item 12 34", u"item", u"13"), 0.0);
  EXPECT_DOUBLE_EQ(VeskCmpIn(u"item", u"item", u"1"), 0.0);
}

class SimilarityOnEngine : public KitDbTest {
 protected:
  void SetUp() override {
    KitDbTest::SetUp();
    RegisterSimilarityFunctions(session_);
  }
  // The IDs of GOODS rows that meet the condition, in order, as "1,3".
  String Ids(const String& condition) {
    TOraQuery q(nullptr);
    q.SetSession(session_);
    q.SQL()->SetText(u"SELECT ID FROM GOODS WHERE " + condition + u" ORDER BY ID");
    q.Open();
    String ids;
    for (; !q.Eof(); q.Next()) ids += (ids.IsEmpty() ? u"" : u",") + q.Fields()->Fields(0)->AsString();
    return ids;
  }
};

TEST_F(SimilarityOnEngine, PackageFunctionsAnswerInSql) {
  EXPECT_EQ(Value(u"SELECT ZE$G$CMP.PREP('  Hello,  World!') FROM DUAL"), u"hello world");
  EXPECT_EQ(Value(u"SELECT ZE$G$CMP.NUM('a1b22') FROM DUAL"), u"122");
  EXPECT_EQ(Value(u"SELECT ZE$G$CMP.PREP(',;') FROM DUAL"), u"<null>");
  EXPECT_EQ(Value(u"SELECT ZE$G$CMP.PREP(NULL) FROM DUAL"), u"<null>");
  EXPECT_EQ(Value(u"SELECT ZE$G$CMP.INTEXT('abcdef', 'xy') FROM DUAL"), u"0");
  EXPECT_EQ(Value(u"SELECT ZE$G$CMP.INTEXT('abcdef', 'ba', NULL) FROM DUAL"), u"1");
}

TEST_F(SimilarityOnEngine, SmartCompareConditionFindsRows) {
  // The condition as the filter language writes it, number unchecked.
  EXPECT_EQ(Ids(u"( ZE$G$CMP.INTEXT(ZE$G$CMP.PREP(NAME),(SELECT ZE$G$CMP.PREP('APLE!')FROM DUAL))>=0.7 )"),
            u"1");
  EXPECT_EQ(Ids(u"( ZE$G$CMP.INTEXT(ZE$G$CMP.PREP(NAME),(SELECT ZE$G$CMP.PREP('zzz')FROM DUAL))>=0.1 )"), u"");
  // Number checked: the digits "01" must stand among the code's digits.
  const String withNumber =
      u"( ZE$G$CMP.INTEXT(ZE$G$CMP.PREP(CODE),(SELECT ZE$G$CMP.PREP('a01')FROM DUAL),"
      u"(SELECT ZE$G$CMP.NUM('a01')FROM DUAL))>=";
  EXPECT_EQ(Ids(withNumber + u"0.5 )"), u"1,3,5");
  EXPECT_EQ(Ids(withNumber + u"0.6 )"), u"1");
  EXPECT_EQ(Ids(withNumber + u"1 )"), u"1");
}

TEST_F(SimilarityOnEngine, NullFieldsAreNeverSimilar) {
  Exec(u"INSERT INTO GOODS VALUES (6, NULL, NULL, 1, 1)");
  EXPECT_EQ(Ids(u"( ZE$G$CMP.INTEXT(ZE$G$CMP.PREP(NAME),(SELECT ZE$G$CMP.PREP('bread')FROM DUAL))>=0.3 )"),
            u"4");
}

}  // namespace
