// Stored date text: the straight-line reader of the 19-character layout
// against the general reader (ParseStoredDate, CivilToDays) over many
// dates, good and bad, and against known day numbers.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "drivers/sqlite/datetext.h"

namespace {

std::string Stored(int year, int month, int day, int hour, int minute, int second) {
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", year, month, day, hour, minute, second);
  return text;
}

// The general reader's verdict and value for the same text.
bool General(const std::string& text, double& days) {
  TCivilTime t;
  if (!ParseStoredDate(text, t)) return false;
  days = CivilToDays(t);
  return true;
}

// Both readers agree on acceptance and, when accepted, on the exact value.
void ExpectSameAsGeneral(const std::string& text) {
  double general = -1e300, fast = -1e300;
  const bool generalOk = General(text, general);
  const bool fastOk = StoredDateToDays(text, fast);
  EXPECT_EQ(fastOk, generalOk) << text;
  if (fastOk && generalOk) {
    EXPECT_EQ(fast, general) << text;
  }
}

}  // namespace

TEST(StoredDateText, KnownDayNumbers) {
  struct Case {
    const char* text;
    double days;
  } cases[] = {
      {"1899-12-30 00:00:00", 0},
      {"1899-12-31 00:00:00", 1},
      {"1900-01-01 00:00:00", 2},
      {"1900-03-01 00:00:00", 61},  // 1900 has no 29 February
      {"2000-03-01 00:00:00", 36586},  // 2000 has one
      {"2000-02-29 12:00:00", 36585.5},
      {"1970-01-01 06:00:00", 25569.25},
      {"1899-12-29 06:00:00", -1.25},  // before day 0 the time still counts forward
      {"0001-01-01 00:00:00", -693593},
      {"9999-12-31 00:00:00", 2958465},
  };
  for (const Case& c : cases) {
    double days = -1;
    ASSERT_TRUE(StoredDateToDays(c.text, days)) << c.text;
    EXPECT_EQ(days, c.days) << c.text;
  }
  double days = 0;
  ASSERT_TRUE(StoredDateToDays("9999-12-31 23:59:59", days));
  EXPECT_NEAR(days, 2958465 + 86399.0 / 86400.0, 1e-9);
}

TEST(StoredDateText, EveryDayOfTheLeapYearBoundariesMatchesTheGeneralReader) {
  // Every day, including one past each month's end, of the years where the
  // leap rules turn: century years, years divisible by 400, the first and
  // last years of the range.
  const int years[] = {1, 2, 3, 4, 5, 99, 100, 101, 399, 400, 401, 1599, 1600, 1601, 1700, 1800, 1899,
                       1900, 1901, 1996, 1999, 2000, 2001, 2023, 2024, 2100, 2400, 9996, 9999};
  int spin = 0;
  for (int year : years)
    for (int month = 1; month <= 12; ++month)
      for (int day = 1; day <= DaysInMonth(year, month) + 1; ++day) {
        ++spin;
        ExpectSameAsGeneral(Stored(year, month, day, spin % 24, spin * 7 % 60, spin * 13 % 60));
      }
}

TEST(StoredDateText, EveryYearsMonthEndsMatchTheGeneralReader) {
  for (int year = 1; year <= 9999; ++year)
    for (int month = 1; month <= 12; ++month) {
      const int last = DaysInMonth(year, month);
      ExpectSameAsGeneral(Stored(year, month, 1, 0, 0, 0));
      ExpectSameAsGeneral(Stored(year, month, last, 23, 59, 59));
      ExpectSameAsGeneral(Stored(year, month, last + 1, 12, 0, 0));
    }
}

TEST(StoredDateText, FieldsOutOfRangeAreRefused) {
  const char* bad[] = {
      "0000-01-01 00:00:00", "2024-00-10 00:00:00", "2024-13-10 00:00:00", "2024-01-00 00:00:00",
      "2024-01-32 00:00:00", "2023-02-29 00:00:00", "1900-02-29 00:00:00", "2024-04-31 00:00:00",
      "2024-01-10 24:00:00", "2024-01-10 00:60:00", "2024-01-10 00:00:60", "2024-99-99 99:99:99",
  };
  for (const char* text : bad) {
    double days = 123;
    EXPECT_FALSE(StoredDateToDays(text, days)) << text;
    EXPECT_EQ(days, 123) << "a refused text leaves the value alone: " << text;
    ExpectSameAsGeneral(text);
  }
}

TEST(StoredDateText, EveryOneCharacterDamageMatchesTheGeneralReader) {
  // Each position of a few good dates replaced by characters around the
  // digits and separators, by blanks, a zero byte and a high byte.
  const std::string goods[] = {"2024-02-29 23:59:59", "1999-12-31 00:00:00", "0001-01-01 00:00:00"};
  const char replacements[] = {'/', '0' - 1, '0', '1', '2', '9', '9' + 1, ':', ' ', '-', 'a', '\0', '\xff'};
  int refused = 0;
  for (const std::string& good : goods) {
    ExpectSameAsGeneral(good);
    for (size_t i = 0; i < good.size(); ++i)
      for (char r : replacements) {
        std::string text = good;
        text[i] = r;
        double days;
        if (!StoredDateToDays(text, days)) ++refused;
        ExpectSameAsGeneral(text);
      }
  }
  EXPECT_GT(refused, 200);  // most damage is caught, not read as another date
}

TEST(StoredDateText, OtherShapesGoToTheGeneralReader) {
  double days = 0;
  ASSERT_TRUE(StoredDateToDays("2000-02-29", days));
  double full = 0;
  ASSERT_TRUE(StoredDateToDays("2000-02-29 00:00:00", full));
  EXPECT_EQ(days, full);
  for (const char* text : {"", "2000-02-29 00:00", "2000-02-29T00:00:00", "2000-02-29 00:00:00 ", " 2000-02-29",
                           "29.02.2000 00:00:00", "2000-2-29 00:00:00"}) {
    EXPECT_FALSE(StoredDateToDays(text, days)) << text;
    ExpectSameAsGeneral(text);
  }
}

TEST(StoredDateText, ReadDaysFormatBackToTheSameText) {
  std::vector<std::string> texts = {"0001-01-01 00:00:00", "1899-12-29 06:00:00", "1899-12-30 00:00:00",
                                    "2000-02-29 12:34:56", "9999-12-31 23:59:59"};
  for (int i = 0; i < 2000; ++i)
    texts.push_back(Stored(1 + i * 4999 % 9999, 1 + i % 12, 1 + i * 7 % 28, i % 24, i * 11 % 60, i * 17 % 60));
  for (const std::string& text : texts) {
    double days = 0;
    ASSERT_TRUE(StoredDateToDays(text, days)) << text;
    EXPECT_EQ(FormatStoredDate(days), text);
  }
}
