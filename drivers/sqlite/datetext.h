// Dates as the engine stores them: the text "YYYY-MM-DD HH:MM:SS", which
// orders and compares like the dates it holds. The port carries dates as
// TDateTime days since 1899-12-30; this is the one place that converts.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

struct TCivilTime {
  int Year = 1899, Month = 12, Day = 30;
  int Hour = 0, Minute = 0, Second = 0;
};

// Days since 1899-12-30 of a civil date (proleptic Gregorian calendar).
int64_t DaysFromCivil(int year, int month, int day);
bool IsValidCivil(const TCivilTime& t);
int DaysInMonth(int year, int month);

// TDateTime days, rounded to whole seconds. A negative value keeps its time
// of day as a positive fraction, as the historical TDateTime does.
double CivilToDays(const TCivilTime& t);
TCivilTime DaysToCivil(double days);

// Exactly "YYYY-MM-DD HH:MM:SS" (19 characters), or "YYYY-MM-DD" alone.
bool ParseStoredDate(std::string_view text, TCivilTime& t);
// True when the text has the stored shape; cheap enough to call per value.
inline bool LooksLikeStoredDate(std::string_view s) {
  return s.size() == 19 && s[4] == '-' && s[7] == '-' && s[10] == ' ' && s[13] == ':' && s[16] == ':';
}
std::string FormatStoredDate(const TCivilTime& t);
inline std::string FormatStoredDate(double days) { return FormatStoredDate(DaysToCivil(days)); }
// Parses the stored text straight to days; false for anything else.
bool StoredDateToDays(std::string_view text, double& days);
