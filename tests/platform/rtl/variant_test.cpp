#include "platform/rtl/variant.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <unordered_set>

namespace {

// Runs `fn` and returns the message of the EVariantTypeCastError it raises.
template <class Fn>
std::string CastMessage(Fn fn) {
  try {
    fn();
  } catch (const EVariantTypeCastError& e) {
    return e.Message.ToUtf8();
  }
  return "no exception";
}

TEST(VariantKinds, ConstructorsGiveTheHistoricalTypeCodes) {
  EXPECT_EQ(VarType(Variant()), 0);
  EXPECT_EQ(VarType(Null()), 1);
  EXPECT_EQ(VarType(Variant(5)), 3);
  EXPECT_EQ(VarType(Variant(1.5)), 5);
  EXPECT_EQ(VarType(Variant(Currency(2))), 6);
  EXPECT_EQ(VarType(Variant(EncodeDate(2024, 1, 1))), 7);
  EXPECT_EQ(VarType(Variant(true)), 11);
  EXPECT_EQ(VarType(Variant(int64_t{5})), 20);
  EXPECT_EQ(VarType(Variant(u"x")), 0x102);
  EXPECT_EQ(VarType(Variant("x")), varUString);
  EXPECT_EQ(VarType(VarArrayOf({1, 2})), 0x2000 | 12);
  // Other integer types pick the narrowest kind that holds every value.
  EXPECT_EQ(VarType(Variant(short{3})), varInteger);
  EXPECT_EQ(VarType(Variant(3u)), varInt64);
  EXPECT_EQ(VarType(Variant(3LL)), varInt64);
  EXPECT_THROW(Variant(uint64_t{1} << 63), EVariantOverflowError);
  EXPECT_EQ(sizeof(Variant), 16u);
}

TEST(VariantKinds, Predicates) {
  const Variant empty, null = Null(), n = 5, d = 2.5, c = Currency(1), b = true, s = u"5", a = VarArrayOf({1});
  EXPECT_TRUE(VarIsEmpty(empty) && VarIsClear(empty) && !VarIsNull(empty));
  EXPECT_TRUE(VarIsNull(null) && !VarIsEmpty(null));
  EXPECT_TRUE(VarIsNumeric(n) && VarIsNumeric(d) && VarIsNumeric(c) && VarIsNumeric(b));
  EXPECT_FALSE(VarIsNumeric(s) || VarIsNumeric(null) || VarIsNumeric(Variant(EncodeDate(2024, 1, 1))));
  EXPECT_TRUE(VarIsOrdinal(b) && !VarIsOrdinal(d));
  EXPECT_TRUE(VarIsFloat(c) && VarIsFloat(d) && !VarIsFloat(n));
  EXPECT_TRUE(VarIsStr(s) && !VarIsStr(n));
  EXPECT_TRUE(VarIsArray(a) && !VarIsArray(s));
  EXPECT_TRUE(VarIsType(n, varInteger));
  Variant cleared = s;
  cleared.Clear();
  EXPECT_TRUE(VarIsEmpty(cleared));
}

TEST(VariantConversion, ToText) {
  EXPECT_EQ(VarToStr(Variant(42)), u"42");
  EXPECT_EQ(VarToStr(Variant(int64_t{-9000000000})), u"-9000000000");
  EXPECT_EQ(VarToStr(Variant(0.1)), u"0.1");
  EXPECT_EQ(VarToStr(Variant(1e20)), u"1E20");
  EXPECT_EQ(VarToStr(Variant(true)), u"True");
  EXPECT_EQ(VarToStr(Variant(false)), u"False");
  EXPECT_EQ(VarToStr(Variant(Currency(1.5))), u"1.5");
  EXPECT_EQ(VarToStr(Variant(Currency::FromVal(-1))), u"-0.0001");
  EXPECT_EQ(VarToStr(Variant(EncodeDate(2024, 2, 29))), u"29.02.2024");
  EXPECT_EQ(VarToStr(Variant(EncodeDateTime(2024, 2, 29, 13, 5, 9, 0))), u"29.02.2024 13:05:09");
  EXPECT_EQ(VarToStr(Null()), u"");
  EXPECT_EQ(VarToStr(Variant()), u"");
  // The default stands for Null only; Empty is "" as always.
  EXPECT_EQ(VarToStrDef(Null(), u"-"), u"-");
  EXPECT_EQ(VarToStrDef(Variant(), u"-"), u"");
  EXPECT_EQ(VarToStrDef(Variant(7), u"-"), u"7");
}

TEST(VariantConversion, ImplicitTargetsReadAsTheKitWritesThem) {
  const Variant v = u"12";
  int n = v;
  double d = v;
  String s = Variant(3.25);
  TDateTime t = Variant(2.5);
  Currency c = Variant(u"1.23456");
  bool b = Variant(u"true");
  int64_t big = Variant(u"9000000000");
  EXPECT_EQ(n, 12);
  EXPECT_EQ(d, 12.0);
  EXPECT_EQ(s, u"3.25");
  EXPECT_EQ(t.Val, 2.5);
  EXPECT_EQ(c.Val, 12346);
  EXPECT_TRUE(b);
  EXPECT_EQ(big, 9000000000);
  // Direct initialisation picks the Variant conversion, not an element type.
  String s2(Variant(7));
  TDateTime t2(Variant(1.0));
  EXPECT_EQ(s2, u"7");
  EXPECT_EQ(t2.Val, 1.0);
}

TEST(VariantConversion, EmptyIsZeroAndBooleanIsMinusOne) {
  const Variant empty;
  EXPECT_EQ(empty.AsInteger(), 0);
  EXPECT_EQ(empty.AsFloat(), 0.0);
  EXPECT_EQ(empty.AsString(), u"");
  EXPECT_FALSE(empty.AsBoolean());
  EXPECT_EQ(Variant(true).AsInteger(), -1);
  EXPECT_EQ(Variant(true).AsFloat(), -1.0);
  EXPECT_TRUE(Variant(u"False") == Variant(false));
  EXPECT_TRUE(Variant(u"-1").AsBoolean());
  EXPECT_FALSE(Variant(0.0).AsBoolean());
}

TEST(VariantConversion, NullAndBadTextRaiseWithTheHistoricalText) {
  EXPECT_EQ(CastMessage([] { Null().AsFloat(); }), "Could not convert variant of type (Null) into type (Double)");
  EXPECT_EQ(CastMessage([] { int n = Null(); (void)n; }),
            "Could not convert variant of type (Null) into type (Integer)");
  EXPECT_EQ(CastMessage([] { String s = Null(); (void)s; }),
            "Could not convert variant of type (Null) into type (UnicodeString)");
  EXPECT_EQ(CastMessage([] { Variant(u"abc").AsFloat(); }),
            "Could not convert variant of type (UnicodeString) into type (Double)");
  EXPECT_EQ(CastMessage([] { Variant(u"abc").AsInteger(); }),
            "Could not convert variant of type (UnicodeString) into type (Integer)");
  EXPECT_EQ(CastMessage([] { Variant(u"maybe").AsBoolean(); }),
            "Could not convert variant of type (UnicodeString) into type (Boolean)");
  EXPECT_EQ(CastMessage([] { Variant(u"31.02.2024").AsDateTime(); }),
            "Could not convert variant of type (UnicodeString) into type (Date)");
  EXPECT_EQ(CastMessage([] { VarArrayOf({1}).AsString(); }),
            "Could not convert variant of type (Array Variant) into type (UnicodeString)");
  EXPECT_THROW((void)static_cast<bool>(Null()), EVariantTypeCastError);
}

TEST(VariantConversion, FloatsToIntegersRoundHalfToEvenAndCheckRange) {
  EXPECT_EQ(Variant(2.5).AsInteger(), 2);
  EXPECT_EQ(Variant(3.5).AsInteger(), 4);
  EXPECT_EQ(Variant(-2.5).AsInteger(), -2);
  EXPECT_EQ(Variant(2.6).AsInteger(), 3);
  EXPECT_EQ(Variant(Currency(2.5)).AsInteger(), 2);
  EXPECT_EQ(Variant(Currency(-3.5)).AsInteger(), -4);
  EXPECT_EQ(Variant(u"7.5").AsInteger(), 8);
  EXPECT_THROW(Variant(3e9).AsInteger(), EVariantOverflowError);
  EXPECT_EQ(Variant(3e9).AsInt64(), 3000000000);
  EXPECT_THROW(Variant(1e300).AsInt64(), EVariantOverflowError);
  EXPECT_THROW(Variant(int64_t{1} << 40).AsInteger(), EVariantOverflowError);
  EXPECT_THROW({ short s = Variant(40000); (void)s; }, EVariantOverflowError);
  EXPECT_THROW({ unsigned u = Variant(-1); (void)u; }, EVariantOverflowError);
}

TEST(VariantConversion, VarAsType) {
  EXPECT_EQ(VarType(VarAsType(Variant(u"42"), varInteger)), varInteger);
  EXPECT_EQ(VarAsType(Variant(u"42"), varInteger).AsInteger(), 42);
  EXPECT_EQ(VarAsType(Variant(42), varUString), Variant(u"42"));
  EXPECT_EQ(VarType(VarAsType(Variant(42), varOleStr)), varUString);
  EXPECT_EQ(VarType(VarAsType(Variant(1), varDate)), varDate);
  EXPECT_TRUE(VarIsNull(VarAsType(Variant(1), varNull)));
  EXPECT_TRUE(VarIsEmpty(VarAsType(Variant(1), varEmpty)));
  EXPECT_EQ(VarAsType(Variant(0.1), varSingle).AsFloat(), static_cast<double>(0.1f));
  EXPECT_EQ(VarAsType(Variant(), varUString), Variant(u""));
  EXPECT_THROW(VarAsType(Variant(40000), varSmallint), EVariantOverflowError);
  EXPECT_THROW(VarAsType(Variant(-1), varByte), EVariantOverflowError);
  EXPECT_THROW(VarAsType(Null(), varInteger), EVariantTypeCastError);
  EXPECT_THROW(VarAsType(Null(), varUString), EVariantTypeCastError);
  EXPECT_THROW(VarAsType(Variant(1), 0x77), EVariantInvalidArgError);
}

TEST(VariantCompare, EmptyAndNullEqualOnlyThemselves) {
  EXPECT_EQ(VarCompareValue(Variant(), Variant()), vrEqual);
  EXPECT_EQ(VarCompareValue(Null(), Null()), vrEqual);
  EXPECT_EQ(VarCompareValue(Variant(), Null()), vrNotEqual);
  EXPECT_EQ(VarCompareValue(Null(), Variant()), vrNotEqual);
  EXPECT_EQ(VarCompareValue(Variant(), Variant(0)), vrNotEqual);
  EXPECT_EQ(VarCompareValue(Variant(), Variant(u"")), vrNotEqual);
  EXPECT_EQ(VarCompareValue(Null(), Variant(0)), vrNotEqual);
  EXPECT_EQ(VarCompareValue(Variant(u"abc"), Null()), vrNotEqual);
  // Null is neither below nor above anything.
  const Variant null = Null();
  EXPECT_FALSE(null < 1);
  EXPECT_FALSE(null > 1);
  EXPECT_FALSE(null <= 1);
  EXPECT_FALSE(null == 0);
  EXPECT_TRUE(null != 0);
  EXPECT_TRUE(null == Null());
}

TEST(VariantCompare, NumbersCompareByValueAcrossKinds) {
  const Variant one[] = {Variant(1), Variant(1.0), Variant(Currency(1)), Variant(int64_t{1})};
  for (const Variant& a : one)
    for (const Variant& b : one) {
      EXPECT_EQ(VarCompareValue(a, b), vrEqual) << ::testing::PrintToString(a) << " vs " << ::testing::PrintToString(b);
      EXPECT_EQ(a.Hash(), b.Hash());
    }
  EXPECT_TRUE(Variant(true) == -1);
  EXPECT_EQ(VarCompareValue(Variant(2), Variant(2.5)), vrLessThan);
  EXPECT_EQ(VarCompareValue(Variant(Currency(2.5)), Variant(2)), vrGreaterThan);
  EXPECT_EQ(VarCompareValue(Variant(EncodeDate(2024, 1, 2)), Variant(EncodeDate(2024, 1, 1))), vrGreaterThan);
  EXPECT_EQ(VarCompareValue(Variant(std::nan("")), Variant(1.0)), vrNotEqual);
  // Int64 and currency compare exactly where doubles would not tell them apart.
  const int64_t big = (int64_t{1} << 53) + 1;
  EXPECT_EQ(VarCompareValue(Variant(big), Variant(big - 1)), vrGreaterThan);
  EXPECT_EQ(VarCompareValue(Variant(Currency::FromVal(900719925474099300)), Variant(int64_t{90071992547409})),
            vrGreaterThan);
  std::unordered_set<Variant> set = {Variant(1), Variant(1.0), Variant(Currency(1)), Variant(int64_t{1}), Variant(2)};
  EXPECT_EQ(set.size(), 2u);
}

TEST(VariantCompare, TextOrdinallyOrAsTheOtherKind) {
  EXPECT_EQ(VarCompareValue(Variant(u"10"), Variant(u"9")), vrLessThan);  // ordinal
  EXPECT_EQ(VarCompareValue(Variant(u"10"), Variant(9)), vrGreaterThan);  // numeric
  EXPECT_EQ(VarCompareValue(Variant(9.5), Variant(u"10")), vrLessThan);
  EXPECT_EQ(VarCompareValue(Variant(u"a"), Variant(u"B")), vrGreaterThan);
  EXPECT_EQ(VarCompareValue(Variant(u"abc"), Variant(u"abc")), vrEqual);
  EXPECT_EQ(VarCompareValue(Variant(u"ab"), Variant(u"abc")), vrLessThan);
  EXPECT_EQ(VarCompareValue(Variant(u"True"), Variant(true)), vrEqual);
  EXPECT_EQ(VarCompareValue(Variant(u"01.02.2024"), Variant(EncodeDate(2024, 2, 1))), vrEqual);
  EXPECT_TRUE(Variant(u"5") == 5);
  EXPECT_TRUE(5 == Variant(u"5"));
  EXPECT_TRUE(Variant(u"x") == u"x");
  EXPECT_TRUE(String(u"x") == Variant(u"x"));
  EXPECT_THROW(VarCompareValue(Variant(u"abc"), Variant(1)), EVariantTypeCastError);
  EXPECT_THROW((void)(Variant(u"abc") == 1), EVariantTypeCastError);
  EXPECT_THROW(VarCompareValue(VarArrayOf({1}), VarArrayOf({1})), EVariantInvalidOpError);
}

TEST(VariantArithmetic, NumbersWidenInsteadOfOverflowing) {
  EXPECT_EQ(VarType(Variant(2) + 3), varInteger);
  EXPECT_EQ(Variant(2) + 3, 5);
  const Variant wide = Variant(INT32_MAX) + 1;
  EXPECT_EQ(VarType(wide), varInt64);
  EXPECT_EQ(wide.AsInt64(), int64_t{INT32_MAX} + 1);
  EXPECT_EQ(VarType(Variant(INT64_MAX) + 1), varDouble);
  EXPECT_EQ(VarType(-Variant(INT32_MIN)), varInt64);
  EXPECT_EQ(VarType(Variant(7) / 2), varDouble);
  EXPECT_EQ(Variant(7) / 2, 3.5);
  EXPECT_EQ(VarType(Variant(1) + 0.5), varDouble);
  EXPECT_EQ(VarType(Variant(Currency(0.1)) + 2), varCurrency);
  EXPECT_EQ((Variant(Currency(0.1)) + Currency(0.2)).AsCurrency(), Currency(0.3));
  EXPECT_EQ((Variant(Currency(1.5)) * Currency(1.5)).AsCurrency().Val, 22500);
  EXPECT_EQ(Variant(true) + Variant(true), -2);
}

TEST(VariantArithmetic, TextNullEmptyAndDates) {
  EXPECT_EQ(Variant(u"ab") + Variant(u"cd"), u"abcd");
  EXPECT_EQ(Variant(u"ab") + Variant(), u"ab");
  EXPECT_EQ(Variant(u"1.5") + 2, 3.5);
  EXPECT_EQ(Variant(u"2") * Variant(u"3"), 6);
  EXPECT_THROW(Variant(u"x") + 1, EVariantTypeCastError);
  EXPECT_TRUE(VarIsNull(Null() + 1));
  EXPECT_TRUE(VarIsNull(Variant(u"a") + Null()));
  EXPECT_TRUE(VarIsNull(-Null()));
  EXPECT_EQ(Variant() + 5, 5);
  const TDateTime day = EncodeDate(2024, 2, 28);
  const Variant next = Variant(day) + 1;
  EXPECT_EQ(VarType(next), varDate);
  EXPECT_EQ(next.AsDateTime(), EncodeDate(2024, 2, 29));
  const Variant span = Variant(EncodeDate(2024, 3, 1)) - Variant(day);
  EXPECT_EQ(VarType(span), varDouble);
  EXPECT_EQ(span, 2);
  EXPECT_THROW(VarArrayOf({1}) + 1, EVariantInvalidOpError);
}

TEST(VariantArithmetic, SummingMixedFieldValues) {
  Variant sum;
  const Variant values[] = {Variant(1), Null(), Variant(2.5), Variant(Currency(0.25)), Variant(int64_t{10})};
  for (const Variant& v : values)
    if (!VarIsNull(v)) sum += v;
  EXPECT_EQ(VarType(sum), varDouble);
  EXPECT_EQ(sum, 13.75);
}

TEST(VariantArithmetic, DivisionByZeroRaises) {
  EXPECT_THROW(Variant(1) / 0, EZeroDivide);
  EXPECT_THROW(Variant(1.5) / 0.0, EZeroDivide);
  EXPECT_THROW(Variant(0) / 0, EInvalidOp);
  EXPECT_THROW(Variant(Currency(1)) / Currency(0), EZeroDivide);
}

TEST(VariantArrays, BoundsAndElements) {
  Variant a = VarArrayOf({1, u"two", Null()});
  EXPECT_EQ(VarArrayDimCount(a), 1);
  EXPECT_EQ(VarArrayLowBound(a, 1), 0);
  EXPECT_EQ(VarArrayHighBound(a, 1), 2);
  EXPECT_EQ(a[1], u"two");
  EXPECT_TRUE(VarIsNull(a.GetElement(2)));
  a[0] = 10;
  a.PutElement(2, 3.5);
  EXPECT_EQ(a[0], 10);
  EXPECT_EQ(a[2], 3.5);
  EXPECT_THROW(a[3], EVariantBadIndexError);
  EXPECT_THROW(a.GetElement(-1), EVariantBadIndexError);
  EXPECT_THROW(VarArrayHighBound(a, 2), EVariantBadIndexError);
  EXPECT_THROW(VarArrayHighBound(Variant(1), 1), EVariantNotAnArrayError);
  EXPECT_THROW(Variant(1)[0], EVariantNotAnArrayError);
  EXPECT_EQ(VarArrayDimCount(Variant(1)), 0);
}

TEST(VariantArrays, CreatedArraysAreTypedAndBounded) {
  Variant a = VarArrayCreate(1, 3, varInteger);
  EXPECT_EQ(VarType(a), varArray | varInteger);
  EXPECT_EQ(VarArrayLowBound(a, 1), 1);
  EXPECT_EQ(VarArrayHighBound(a, 1), 3);
  EXPECT_EQ(VarType(a[1]), varInteger);
  a.PutElement(3, u"42");
  EXPECT_EQ(VarType(a[3]), varInteger);
  EXPECT_EQ(a[3], 42);
  EXPECT_THROW(a.PutElement(2, u"x"), EVariantTypeCastError);
  EXPECT_THROW(a[0], EVariantBadIndexError);
  Variant u = VarArrayCreate(0, 1);
  EXPECT_TRUE(VarIsEmpty(u[0]));
  EXPECT_EQ(VarArrayHighBound(VarArrayCreate(0, -1), 1), -1);  // empty
  EXPECT_THROW(VarArrayCreate(5, 2), EVariantInvalidArgError);
  EXPECT_THROW(VarArrayCreate(0, 1, varNull), EVariantInvalidArgError);
  VarArrayRedim(a, 5);
  EXPECT_EQ(VarArrayHighBound(a, 1), 5);
  EXPECT_EQ(a[3], 42);
  EXPECT_EQ(a[5], 0);
}

TEST(VariantArrays, CopiesAreIndependent) {
  Variant a = VarArrayOf({1, 2});
  const Variant copy = a;
  a[0] = 100;
  a.PutElement(1, u"x");
  EXPECT_EQ(copy[0], 1);
  EXPECT_EQ(copy[1], 2);
  EXPECT_EQ(a[0], 100);
  Variant nested = VarArrayOf({a, 3});
  EXPECT_EQ(nested[0][0], 100);
}

TEST(VariantLifetime, CopyMoveAndSelfAssignment) {
  Variant s = String(u"shared text");
  Variant t = s;
  t = t;
  EXPECT_EQ(t, u"shared text");
  Variant moved = std::move(t);
  EXPECT_TRUE(VarIsEmpty(t));  // a moved-from Variant is Unassigned
  EXPECT_EQ(moved, s);
  s = 5;
  EXPECT_EQ(moved, u"shared text");
  moved = Null();
  EXPECT_TRUE(VarIsNull(moved));
}

TEST(VariantPrinting, ShowsKindAndValue) {
  EXPECT_EQ(::testing::PrintToString(Variant(5)), "Integer 5");
  EXPECT_EQ(::testing::PrintToString(Variant(u"a")), "UnicodeString \"a\"");
  EXPECT_EQ(::testing::PrintToString(Null()), "Null");
  EXPECT_EQ(::testing::PrintToString(VarArrayOf({1, Variant()})), "Array Variant [Integer 1, Empty]");
  std::ostringstream os;
  os << Variant(EncodeDate(2024, 5, 6));
  EXPECT_EQ(os.str(), "Date 2024-05-06 00:00:00");
}

TEST(CurrencyType, RoundingAndLimits) {
  EXPECT_EQ(Currency(1.23456).Val, 12346);
  EXPECT_EQ(Currency(0.00005).Val, 1);  // half away from zero
  EXPECT_EQ(Currency(-2.5).Val, -25000);
  EXPECT_EQ(Currency(7).Val, 70000);
  EXPECT_EQ((Currency::FromVal(1) * Currency(0.5)).Val, 1);  // 0.00005 rounds away from zero
  EXPECT_EQ((Currency::FromVal(-1) * Currency(0.5)).Val, -1);
  EXPECT_EQ((Currency(1) / Currency(3)).Val, 3333);
  EXPECT_EQ((Currency(2) / Currency(3)).Val, 6667);
  EXPECT_THROW(Currency(1e18), ERangeError);
  EXPECT_THROW(Currency(922337203685477.6), ERangeError);  // just past the range
  EXPECT_THROW(Currency(std::nan("")), ERangeError);
  EXPECT_THROW(Currency(UINT64_MAX), ERangeError);
  EXPECT_THROW(Variant(1e300).AsCurrency(), EVariantOverflowError);
  EXPECT_THROW(Currency(int64_t{1} << 62), ERangeError);
  EXPECT_THROW(Currency::FromVal(INT64_MAX) + Currency::FromVal(1), ERangeError);
  EXPECT_EQ(CurrToStr(Currency::FromVal(INT64_MIN)), u"-922337203685477.5808");
  EXPECT_EQ(CurrToStr(Currency(12)), u"12");
  EXPECT_EQ(CurrToStr(Currency(0.5)), u"0.5");
}

}  // namespace
