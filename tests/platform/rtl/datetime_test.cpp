#include "platform/rtl/datetime.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>

namespace {

// Tests that change the process-wide settings put them back.
class DateTimeTest : public ::testing::Test {
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

TEST(DateEncoding, KnownDayNumbers) {
  EXPECT_EQ(EncodeDate(1899, 12, 30).Val, 0);
  EXPECT_EQ(EncodeDate(1900, 1, 1).Val, 2);
  EXPECT_EQ(EncodeDate(2000, 1, 1).Val, 36526);
  EXPECT_EQ(EncodeDate(1970, 1, 1).Val, UnixDateDelta);
  EXPECT_EQ(EncodeDate(1, 1, 1).Val, -693593);
  EXPECT_EQ(EncodeDate(9999, 12, 31).Val, 2958465);
  EXPECT_EQ(EncodeTime(12, 0, 0, 0).Val, 0.5);
  EXPECT_EQ(EncodeTime(6, 0, 0, 0).Val, 0.25);
}

TEST(DateEncoding, InvalidPartsRaise) {
  EXPECT_EQ(ConvertMessage([] { EncodeDate(2023, 2, 29); }), "Invalid argument to date encode");
  const int bad[][3] = {{2024, 13, 1}, {2024, 0, 1}, {2024, 4, 31}, {0, 1, 1}, {10000, 1, 1}, {1900, 2, 29}, {2024, 1, 0}};
  for (const auto& d : bad) {
    TDateTime out = 123;
    EXPECT_FALSE(TryEncodeDate(d[0], d[1], d[2], out)) << d[0] << "-" << d[1] << "-" << d[2];
    EXPECT_EQ(out.Val, 123);
    EXPECT_THROW(EncodeDate(d[0], d[1], d[2]), EConvertError);
  }
  EXPECT_EQ(ConvertMessage([] { EncodeTime(24, 0, 0, 0); }), "Invalid argument to time encode");
  EXPECT_THROW(EncodeTime(1, 60, 0, 0), EConvertError);
  EXPECT_THROW(EncodeTime(1, 0, 0, 1000), EConvertError);
}

TEST(DateEncoding, EveryDayRoundTripsAcrossLeapYearsAndMonthEnds) {
  TDateTime expected = EncodeDate(1896, 1, 1);
  for (int y = 1896; y <= 2104; ++y)
    for (int m = 1; m <= 12; ++m)
      for (int d = 1; d <= DaysInAMonth(y, m); ++d) {
        const TDateTime dt = EncodeDate(y, m, d);
        ASSERT_EQ(dt.Val, expected.Val) << y << "-" << m << "-" << d;
        int yy, mm, dd;
        DecodeDate(EncodeDateTime(y, m, d, 18, 0, 0, 0), yy, mm, dd);
        ASSERT_TRUE(yy == y && mm == m && dd == d) << y << "-" << m << "-" << d;
        expected += 1;
      }
  EXPECT_TRUE(IsLeapYear(2000) && IsLeapYear(2024) && !IsLeapYear(1900) && !IsLeapYear(2100));
  EXPECT_EQ(DaysInAMonth(2024, 2), 29);
  EXPECT_EQ(DaysInAMonth(2100, 2), 28);
  EXPECT_EQ(DaysInMonth(EncodeDate(2023, 2, 10)), 28);
}

TEST(DateEncoding, TimesBeforeTheEpochCountForwardFromMidnight) {
  int y, m, d, h, n, s, z;
  DecodeDateTime(-1.25, y, m, d, h, n, s, z);
  EXPECT_TRUE(y == 1899 && m == 12 && d == 29 && h == 6 && n == 0) << y << m << d << h;
  EXPECT_EQ(EncodeDateTime(1899, 12, 29, 6, 0, 0, 0).Val, -1.25);
  DecodeDateTime(-0.5, y, m, d, h, n, s, z);
  EXPECT_TRUE(y == 1899 && m == 12 && d == 30 && h == 12);
}

TEST(DateEncoding, DecodingRoundsToTheMillisecond) {
  int y, m, d, h, n, s, z;
  DecodeDateTime(EncodeDate(2024, 12, 31) + 1 - 1e-10, y, m, d, h, n, s, z);
  EXPECT_TRUE(y == 2025 && m == 1 && d == 1 && h == 0 && n == 0 && s == 0 && z == 0);
  DecodeTime(EncodeTime(13, 45, 30, 999), h, n, s, z);
  EXPECT_TRUE(h == 13 && n == 45 && s == 30 && z == 999);
  DecodeDate(1e300, y, m, d);
  EXPECT_TRUE(y == 0 && m == 0 && d == 0);
  DecodeDate(std::nan(""), y, m, d);
  EXPECT_EQ(y, 0);
}

TEST(Calendar, DayOfWeekAndMonthArithmetic) {
  EXPECT_EQ(DayOfWeek(EncodeDate(1899, 12, 30)), 7);  // Saturday
  EXPECT_EQ(DayOfWeek(EncodeDate(2024, 1, 7)), 1);    // Sunday
  EXPECT_EQ(DayOfWeek(EncodeDate(2024, 1, 1)), 2);
  EXPECT_EQ(DayOfWeek(EncodeDate(1800, 1, 1)), 4);    // Wednesday, before day 0
  EXPECT_EQ(IncMonth(EncodeDate(2024, 1, 31)), EncodeDate(2024, 2, 29));
  EXPECT_EQ(IncMonth(EncodeDate(2023, 1, 31)), EncodeDate(2023, 2, 28));
  EXPECT_EQ(IncMonth(EncodeDate(2024, 3, 31), -1), EncodeDate(2024, 2, 29));
  EXPECT_EQ(IncMonth(EncodeDate(2024, 1, 15), -13), EncodeDate(2022, 12, 15));
  EXPECT_EQ(IncMonth(EncodeDate(2024, 11, 30), 3), EncodeDate(2025, 2, 28));
  EXPECT_EQ(IncYear(EncodeDate(2024, 2, 29)), EncodeDate(2025, 2, 28));
  EXPECT_EQ(IncMonth(EncodeDateTime(2024, 1, 31, 18, 30, 0, 0)), EncodeDateTime(2024, 2, 29, 18, 30, 0, 0));
  EXPECT_THROW(IncMonth(EncodeDate(9999, 12, 1)), EConvertError);
  EXPECT_EQ(IncDay(EncodeDate(2024, 2, 28), 2), EncodeDate(2024, 3, 1));
  EXPECT_EQ(DaysBetween(EncodeDate(2024, 3, 1), EncodeDate(2024, 2, 1)), 29);
  EXPECT_EQ(DaysBetween(EncodeDate(2024, 2, 1), EncodeDateTime(2024, 2, 2, 23, 0, 0, 0)), 1);
}

TEST(Calendar, PartsAndBoundaries) {
  const TDateTime dt = EncodeDateTime(2024, 2, 14, 10, 20, 30, 400);
  EXPECT_EQ(YearOf(dt), 2024);
  EXPECT_EQ(MonthOf(dt), 2);
  EXPECT_EQ(DayOf(dt), 14);
  EXPECT_EQ(DateOf(dt), EncodeDate(2024, 2, 14));
  EXPECT_NEAR(TimeOf(dt).Val, EncodeTime(10, 20, 30, 400).Val, 1e-12);
  EXPECT_EQ(StartOfTheMonth(dt), EncodeDate(2024, 2, 1));
  EXPECT_EQ(FormatDateTime(u"yyyy-mm-dd hh:nn:ss.zzz", EndOfTheMonth(dt)), u"2024-02-29 23:59:59.999");
  EXPECT_EQ(StartOfTheYear(dt), EncodeDate(2024, 1, 1));
  EXPECT_EQ(FormatDateTime(u"yyyy-mm-dd hh:nn:ss.zzz", EndOfTheYear(dt)), u"2024-12-31 23:59:59.999");
  const TDateTime today = Date();
  EXPECT_EQ(today, DateOf(today));
  EXPECT_GE(YearOf(today), 2024);
  const double sinceMidnight = Now() - today;  // a day at most, should midnight pass in between
  EXPECT_GE(sinceMidnight, 0.0);
  EXPECT_LT(sinceMidnight, 2.0);
  EXPECT_GE(Time().Val, 0.0);
  EXPECT_LT(Time().Val, 1.0);
}

TEST_F(DateTimeTest, FormatTokensTheKitUses) {
  const TDateTime dt = EncodeDateTime(2024, 3, 5, 7, 8, 9, 45);
  EXPECT_EQ(FormatDateTime(u"dd.mm.yyyy", dt), u"05.03.2024");
  EXPECT_EQ(FormatDateTime(u"hh:nn:ss", dt), u"07:08:09");
  EXPECT_EQ(FormatDateTime(u"dd.mm.yyyy hh:nn:ss", dt), u"05.03.2024 07:08:09");
  EXPECT_EQ(FormatDateTime(u"yyyy-mm-dd", dt), u"2024-03-05");
  EXPECT_EQ(FormatDateTime(u"yyyy_mm_dd_hh_nn_ss", dt), u"2024_03_05_07_08_09");
}

TEST_F(DateTimeTest, FormatEveryToken) {
  const TDateTime dt = EncodeDateTime(2024, 3, 5, 7, 8, 9, 45);  // a Tuesday
  EXPECT_EQ(FormatDateTime(u"d/m/yy", dt), u"5.3.24");
  EXPECT_EQ(FormatDateTime(u"ddd dddd", dt), u"Tue Tuesday");
  EXPECT_EQ(FormatDateTime(u"mmm mmmm", dt), u"Mar March");
  EXPECT_EQ(FormatDateTime(u"y yyy", dt), u"24 2024");
  EXPECT_EQ(FormatDateTime(u"h:n:s", dt), u"7:8:9");
  EXPECT_EQ(FormatDateTime(u"z zzz", dt), u"45 045");
  EXPECT_EQ(FormatDateTime(u"hh:mm", dt), u"07:08");   // m after h is minutes
  EXPECT_EQ(FormatDateTime(u"hh mm", dt), u"07 08");
  EXPECT_EQ(FormatDateTime(u"mm hh", dt), u"03 07");
  EXPECT_EQ(FormatDateTime(u"ddddd", dt), u"05.03.2024");
  EXPECT_EQ(FormatDateTime(u"dddddd", dt), u"5 March 2024");
  EXPECT_EQ(FormatDateTime(u"t", dt), u"07:08");
  EXPECT_EQ(FormatDateTime(u"tt", dt), u"07:08:09");
  EXPECT_EQ(FormatDateTime(u"c", dt), u"05.03.2024 07:08:09");
  EXPECT_EQ(FormatDateTime(u"c", EncodeDate(2024, 3, 5)), u"05.03.2024");
  EXPECT_EQ(FormatDateTime(u"'day' d \"of\" mmmm", dt), u"day 5 of March");
  EXPECT_EQ(FormatDateTime(u"DD.MM.YYYY HH:NN", dt), u"05.03.2024 07:08");
  EXPECT_EQ(FormatDateTime(u"dd 'unterminated", dt), u"05 unterminated");
  EXPECT_EQ(FormatDateTime(u"[dd] #", dt), u"[05] #");
  EXPECT_EQ(FormatDateTime(u"", dt), u"");
}

TEST_F(DateTimeTest, FormatTwelveHourClock) {
  const TDateTime midnight = EncodeDateTime(2024, 1, 1, 0, 5, 0, 0);
  const TDateTime afternoon = EncodeDateTime(2024, 1, 1, 13, 5, 0, 0);
  const TDateTime noon = EncodeDateTime(2024, 1, 1, 12, 0, 0, 0);
  EXPECT_EQ(FormatDateTime(u"h:nn am/pm", midnight), u"12:05 am");
  EXPECT_EQ(FormatDateTime(u"h:nn AM/PM", afternoon), u"1:05 PM");
  EXPECT_EQ(FormatDateTime(u"h:nn am/pm", noon), u"12:00 pm");
  EXPECT_EQ(FormatDateTime(u"hh a/p", afternoon), u"01 p");
  EXPECT_EQ(FormatDateTime(u"h ampm", afternoon), u"1 PM");
  EXPECT_EQ(FormatDateTime(u"h ampm", midnight), u"12 AM");
  // No marker after the hour: the 24-hour clock.
  EXPECT_EQ(FormatDateTime(u"h:nn", afternoon), u"13:05");
  EXPECT_EQ(FormatDateTime(u"h 'am/pm'", afternoon), u"13 am/pm");
}

TEST_F(DateTimeTest, FormatFollowsTheSettings) {
  FormatSettings.DateSeparator = u'/';
  FormatSettings.TimeSeparator = u'-';
  FormatSettings.ShortDateFormat = u"mm/dd/yyyy";
  const TDateTime dt = EncodeDateTime(2024, 3, 5, 7, 8, 9, 0);
  EXPECT_EQ(FormatDateTime(u"dd/mm hh:nn", dt), u"05/03 07-08");
  EXPECT_EQ(DateToStr(dt), u"03/05/2024");
  EXPECT_EQ(TimeToStr(dt), u"07-08-09");
  EXPECT_EQ(DateTimeToStr(dt), u"03/05/2024 07-08-09");
  // Settings that name themselves do not recurse without end.
  FormatSettings.ShortDateFormat = u"c";
  EXPECT_NO_THROW(DateToStr(dt));
}

TEST_F(DateTimeTest, DateTimeToStrOmitsMidnight) {
  EXPECT_EQ(DateTimeToStr(EncodeDate(2024, 2, 29)), u"29.02.2024");
  EXPECT_EQ(DateTimeToStr(EncodeDateTime(2024, 2, 29, 0, 0, 1, 0)), u"29.02.2024 00:00:01");
  EXPECT_EQ(DateToStr(EncodeDateTime(2024, 2, 29, 10, 0, 0, 0)), u"29.02.2024");
}

TEST_F(DateTimeTest, ReadDatesInTheOrderOfTheShortFormat) {
  EXPECT_EQ(StrToDate(u"31.01.2024"), EncodeDate(2024, 1, 31));
  EXPECT_EQ(StrToDate(u" 1.2.2024 "), EncodeDate(2024, 2, 1));
  EXPECT_EQ(StrToDate(u"29.02.2024"), EncodeDate(2024, 2, 29));
  EXPECT_EQ(StrToDate(u"5.6"), EncodeDate(CurrentYear(), 6, 5));
  FormatSettings.ShortDateFormat = u"mm/dd/yyyy";
  FormatSettings.DateSeparator = u'/';
  EXPECT_EQ(StrToDate(u"01/31/2024"), EncodeDate(2024, 1, 31));
  FormatSettings.ShortDateFormat = u"yyyy-mm-dd";
  FormatSettings.DateSeparator = u'-';
  EXPECT_EQ(StrToDate(u"2024-01-31"), EncodeDate(2024, 1, 31));
}

TEST_F(DateTimeTest, TwoDigitYearsFallInTheWindow) {
  FormatSettings.TwoDigitYearCenturyWindow = 0;
  const int century = CurrentYear() / 100 * 100;
  EXPECT_EQ(StrToDate(u"01.02.95"), EncodeDate(century + 95, 2, 1));
  FormatSettings.TwoDigitYearCenturyWindow = 50;
  const int base = CurrentYear() - 50;
  for (int yy : {0, 49, 50, 75, 99}) {
    int year = base / 100 * 100 + yy;
    if (year < base) year += 100;
    const String text = u"01.02." + String(std::to_string(100 + yy).substr(1));
    EXPECT_EQ(StrToDate(text), EncodeDate(year, 2, 1)) << text;
  }
  // Three digits are a year as written.
  EXPECT_EQ(StrToDate(u"01.02.095"), EncodeDate(95, 2, 1));
}

TEST_F(DateTimeTest, BadDatesRaiseWithTheText) {
  EXPECT_EQ(ConvertMessage([] { StrToDate(u"31.02.2024"); }), "'31.02.2024' is not a valid date");
  for (const char16_t* bad : {u"", u"abc", u"1.2.3.4", u"31.01.2024x", u"31..2024", u"12345678901.1.2024", u"29.02.2023"}) {
    TDateTime out = 5;
    EXPECT_FALSE(TryStrToDate(bad, out)) << String(bad);
    EXPECT_EQ(out.Val, 5);
    EXPECT_THROW(StrToDate(bad), EConvertError);
  }
  EXPECT_EQ(StrToDateDef(u"x", 7).Val, 7);
}

TEST_F(DateTimeTest, ReadTimes) {
  EXPECT_EQ(StrToTime(u"12:30"), EncodeTime(12, 30, 0, 0));
  EXPECT_EQ(StrToTime(u"1:02:03"), EncodeTime(1, 2, 3, 0));
  EXPECT_EQ(StrToTime(u"10:20:30.5"), EncodeTime(10, 20, 30, 500));
  EXPECT_EQ(StrToTime(u"12 AM"), EncodeTime(0, 0, 0, 0));
  EXPECT_EQ(StrToTime(u"1:15 pm"), EncodeTime(13, 15, 0, 0));
  EXPECT_EQ(StrToTime(u"PM 2:00"), EncodeTime(14, 0, 0, 0));
  EXPECT_EQ(ConvertMessage([] { StrToTime(u"25:00"); }), "'25:00' is not a valid time");
  EXPECT_THROW(StrToTime(u"13:00 PM"), EConvertError);
  EXPECT_THROW(StrToTime(u"10:"), EConvertError);
  EXPECT_THROW(StrToTime(u"10:61"), EConvertError);
}

TEST_F(DateTimeTest, ReadDatesWithTimes) {
  EXPECT_EQ(StrToDateTime(u"31.01.2024 13:45:10"), EncodeDateTime(2024, 1, 31, 13, 45, 10, 0));
  EXPECT_EQ(StrToDateTime(u"31.01.2024"), EncodeDate(2024, 1, 31));
  EXPECT_EQ(StrToDateTime(u"31.01.2024 1:05 PM"), EncodeDateTime(2024, 1, 31, 13, 5, 0, 0));
  EXPECT_EQ(StrToDateTime(u"13:45"), EncodeTime(13, 45, 0, 0));
  EXPECT_EQ(StrToDateTime(u"29.12.1899 06:00"), -1.25);
  EXPECT_EQ(ConvertMessage([] { StrToDateTime(u"31.01.2024 25:00"); }),
            "'31.01.2024 25:00' is not a valid date and time");
  EXPECT_THROW(StrToDateTime(u"31.01.2024 10:00 tomorrow"), EConvertError);
  EXPECT_EQ(StrToDateTimeDef(u"", 3).Val, 3);
  // What DateTimeToStr writes reads back.
  const TDateTime dt = EncodeDateTime(2024, 12, 31, 23, 59, 58, 0);
  EXPECT_EQ(StrToDateTime(DateTimeToStr(dt)), dt);
}

TEST(IsoText, RoundTripsAndForms) {
  const TDateTime dt = EncodeDateTime(2024, 2, 29, 23, 59, 58, 0);
  EXPECT_EQ(DateTimeToISO(dt), u"2024-02-29 23:59:58");
  EXPECT_EQ(DateToISO(dt), u"2024-02-29");
  EXPECT_EQ(ISOToDateTime(DateTimeToISO(dt)), dt);
  const TDateTime withMs = EncodeDateTime(2024, 1, 31, 0, 0, 0, 7);
  EXPECT_EQ(DateTimeToISO(withMs), u"2024-01-31 00:00:00.007");
  EXPECT_EQ(ISOToDateTime(DateTimeToISO(withMs)), withMs);
  EXPECT_EQ(DateTimeToISO(-1.25), u"1899-12-29 06:00:00");
  EXPECT_EQ(ISOToDateTime(u"1899-12-29 06:00:00"), -1.25);
  EXPECT_EQ(ISOToDateTime(u"2024-01-31"), EncodeDate(2024, 1, 31));
  EXPECT_EQ(ISOToDateTime(u"2024-01-31T10:20"), EncodeDateTime(2024, 1, 31, 10, 20, 0, 0));
  EXPECT_EQ(ISOToDateTime(u"2024-01-31 10:20:30.1239"), EncodeDateTime(2024, 1, 31, 10, 20, 30, 123));
  EXPECT_EQ(ISOToDateTime(u"10:20:30"), EncodeTime(10, 20, 30, 0));
  for (const char16_t* bad : {u"2024-02-30", u"2024-1-5", u"2024-01-05 10", u"2024-01-05x", u"", u"2024-01-05 10:20:",
                              u"2024-01-05 10:20:30.", u"24:00"}) {
    TDateTime out = 9;
    EXPECT_FALSE(TryISOToDateTime(bad, out)) << String(bad);
    EXPECT_EQ(out.Val, 9);
  }
  EXPECT_EQ(ConvertMessage([] { ISOToDateTime(u"2024-13-01"); }), "'2024-13-01' is not a valid date and time");
}

TEST(DateTimeType, ArithmeticAndComparison) {
  TDateTime dt = EncodeDate(2024, 2, 28);
  dt += 1;
  EXPECT_EQ(dt, EncodeDate(2024, 2, 29));
  EXPECT_EQ(dt - 1, EncodeDate(2024, 2, 28));
  EXPECT_EQ(2 + dt, EncodeDate(2024, 3, 2));
  const double span = EncodeDate(2024, 3, 1) - EncodeDate(2024, 2, 1);
  EXPECT_EQ(span, 29);
  EXPECT_TRUE(EncodeDate(2024, 1, 1) < EncodeDate(2024, 1, 2));
  EXPECT_TRUE(dt > 45000);
  EXPECT_EQ(::testing::PrintToString(EncodeDate(2024, 1, 2)), "2024-01-02 00:00:00 (45293)");
}

}  // namespace
