#include "drivers/sqlite/datetext.h"

#include <cmath>
#include <cstdio>

namespace {

// Civil-date arithmetic after H. Hinnant's days_from_civil / civil_from_days.
constexpr int64_t kUnixToTDateTime = 25569;  // 1970-01-01 is day 25569

int64_t UnixDaysFromCivil(int64_t y, unsigned m, unsigned d) {
  y -= m <= 2;
  const int64_t era = (y >= 0 ? y : y - 399) / 400;
  const unsigned yoe = static_cast<unsigned>(y - era * 400);
  const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + static_cast<int64_t>(doe) - 719468;
}

void CivilFromUnixDays(int64_t z, TCivilTime& t) {
  z += 719468;
  const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const unsigned doe = static_cast<unsigned>(z - era * 146097);
  const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const unsigned mp = (5 * doy + 2) / 153;
  const unsigned d = doy - (153 * mp + 2) / 5 + 1;
  const unsigned m = mp < 10 ? mp + 3 : mp - 9;
  t.Year = static_cast<int>(static_cast<int64_t>(yoe) + era * 400 + (m <= 2));
  t.Month = static_cast<int>(m);
  t.Day = static_cast<int>(d);
}

bool Digits(std::string_view s, size_t at, size_t count, int& value) {
  value = 0;
  for (size_t i = at; i < at + count; ++i) {
    if (i >= s.size() || s[i] < '0' || s[i] > '9') return false;
    value = value * 10 + (s[i] - '0');
  }
  return true;
}

}  // namespace

int64_t DaysFromCivil(int year, int month, int day) {
  return UnixDaysFromCivil(year, static_cast<unsigned>(month), static_cast<unsigned>(day)) + kUnixToTDateTime;
}

int DaysInMonth(int year, int month) {
  static const int days[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (month < 1 || month > 12) return 0;
  const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
  return month == 2 && leap ? 29 : days[month - 1];
}

bool IsValidCivil(const TCivilTime& t) {
  return t.Year >= 1 && t.Year <= 9999 && t.Month >= 1 && t.Month <= 12 && t.Day >= 1 &&
         t.Day <= DaysInMonth(t.Year, t.Month) && t.Hour >= 0 && t.Hour < 24 && t.Minute >= 0 && t.Minute < 60 &&
         t.Second >= 0 && t.Second < 60;
}

double CivilToDays(const TCivilTime& t) {
  const double date = static_cast<double>(DaysFromCivil(t.Year, t.Month, t.Day));
  const double time = (t.Hour * 3600 + t.Minute * 60 + t.Second) / 86400.0;
  return date >= 0 ? date + time : date - time;
}

TCivilTime DaysToCivil(double days) {
  TCivilTime t;
  if (!std::isfinite(days) || std::fabs(days) > 4e6) return t;  // far outside years 1..9999
  double whole = std::trunc(days);
  int64_t seconds = std::llround(std::fabs(days - whole) * 86400.0);
  if (seconds >= 86400) {  // rounding carried into the next day
    seconds -= 86400;
    whole += days >= 0 ? 1 : -1;
  }
  CivilFromUnixDays(static_cast<int64_t>(whole) - kUnixToTDateTime, t);
  t.Hour = static_cast<int>(seconds / 3600);
  t.Minute = static_cast<int>(seconds / 60 % 60);
  t.Second = static_cast<int>(seconds % 60);
  return t;
}

bool ParseStoredDate(std::string_view s, TCivilTime& t) {
  if (s.size() != 10 && s.size() != 19) return false;
  if (s[4] != '-' || s[7] != '-') return false;
  t = TCivilTime();
  if (!Digits(s, 0, 4, t.Year) || !Digits(s, 5, 2, t.Month) || !Digits(s, 8, 2, t.Day)) return false;
  if (s.size() == 19) {
    if (s[10] != ' ' || s[13] != ':' || s[16] != ':') return false;
    if (!Digits(s, 11, 2, t.Hour) || !Digits(s, 14, 2, t.Minute) || !Digits(s, 17, 2, t.Second)) return false;
  }
  return IsValidCivil(t);
}

std::string FormatStoredDate(const TCivilTime& t) {
  char text[40];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", t.Year, t.Month, t.Day, t.Hour, t.Minute,
                t.Second);
  return text;
}

namespace {

// The 19-character layout in straight-line code, as every fetched date
// cell has it: no intermediate civil time, one pass over the digits, the
// date counted from 0001-01-01 by a table of month starts. The century and
// the year within it come apart from the digits, so the leap-year rules
// need no division by 100 or 400. The caller has checked the separators.
bool FixedStoredDateToDays(std::string_view s, double& days) {
  unsigned bad = 0;
  auto two = [&](size_t i) {
    const unsigned high = static_cast<unsigned>(static_cast<unsigned char>(s[i])) - unsigned{'0'};
    const unsigned low = static_cast<unsigned>(static_cast<unsigned char>(s[i + 1])) - unsigned{'0'};
    bad |= static_cast<unsigned>(high > 9) | static_cast<unsigned>(low > 9);
    return high * 10 + low;
  };
  const unsigned century = two(0), yearOf = two(2), month = two(5), day = two(8);
  const unsigned hour = two(11), minute = two(14), second = two(17);
  const unsigned year = century * 100 + yearOf;
  if (bad || year == 0 || month - 1 > 11 || day == 0 || hour > 23 || minute > 59 || second > 59) [[unlikely]]
    return false;
  // Bitwise rather than short-circuit logic below: dates of a column vary
  // without a pattern, and mispredicted branches would cost more than the
  // arithmetic.
  const unsigned leap = ((yearOf == 0 ? century : yearOf) & 3) == 0;
  static constexpr unsigned kLength[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  static constexpr unsigned kBefore[12] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
  if (day > kLength[month - 1] + (leap & (month == 2))) [[unlikely]]
    return false;
  // Whole years and centuries before this year, for the leap days they hold.
  const unsigned y = year - 1;
  const unsigned centuries = century - (yearOf == 0);
  const unsigned ordinal = y * 365 + y / 4 - centuries + centuries / 4 + kBefore[month - 1] +
                           (leap & (month > 2)) + day - 1;
  constexpr int64_t kFirstDay = -693593;  // 0001-01-01
  const int64_t date = kFirstDay + ordinal;
  const double time = static_cast<double>(hour * 3600 + minute * 60 + second) / 86400.0;
  days = date >= 0 ? static_cast<double>(date) + time : static_cast<double>(date) - time;
  return true;
}

}  // namespace

bool StoredDateToDays(std::string_view text, double& days) {
  if (LooksLikeStoredDate(text)) return FixedStoredDateToDays(text, days);
  TCivilTime t;
  if (!ParseStoredDate(text, t)) return false;
  days = CivilToDays(t);
  return true;
}
