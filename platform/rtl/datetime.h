// TDateTime and the date and time routines of the runtime.
//
// A TDateTime is a double: whole days since 1899-12-30, the fraction being
// the time of day. For dates before 1899-12-30 the fraction still counts
// forward from midnight (-1.25 is 1899-12-29 06:00), as the historical
// framework has it. Texts are read and written by FormatSettings.
#pragma once

#include <concepts>
#include <cstdint>
#include <iosfwd>
#include <type_traits>

#include "platform/rtl/sysutils.h"

class TDateTime {
 public:
  constexpr TDateTime() = default;
  // A template so that no other class converting to double (Variant) makes
  // `TDateTime d(v)` ambiguous.
  template <class T>
    requires std::is_arithmetic_v<T>
  constexpr TDateTime(T days) : Val(static_cast<double>(days)) {}

  constexpr operator double() const { return Val; }

  // Days and fractions of days; the difference of two dates is a span in
  // days, a plain double.
  template <class T>
    requires std::is_arithmetic_v<T>
  constexpr TDateTime& operator+=(T days) { Val += static_cast<double>(days); return *this; }
  template <class T>
    requires std::is_arithmetic_v<T>
  constexpr TDateTime& operator-=(T days) { Val -= static_cast<double>(days); return *this; }
  template <class T>
    requires std::is_arithmetic_v<T>
  friend constexpr TDateTime operator+(TDateTime a, T days) { return a += days; }
  template <class T>
    requires std::is_arithmetic_v<T>
  friend constexpr TDateTime operator+(T days, TDateTime a) { return a += days; }
  template <class T>
    requires std::is_arithmetic_v<T>
  friend constexpr TDateTime operator-(TDateTime a, T days) { return a -= days; }
  friend constexpr double operator-(TDateTime a, TDateTime b) { return a.Val - b.Val; }
  // Comparison goes through the conversion to double, so a date compares
  // with a number as well as with another date.

  double Val = 0;
};

// Streams the DateTimeToISO text; test failures also show the number.
std::ostream& operator<<(std::ostream& os, TDateTime dt);
void PrintTo(TDateTime dt, std::ostream* os);

constexpr double HoursPerDay = 24;
constexpr double MinsPerDay = 24 * 60;
constexpr double SecsPerDay = 24 * 60 * 60;
constexpr double MSecsPerDay = 24 * 60 * 60 * 1000.0;
// TDateTime of 1970-01-01.
constexpr double UnixDateDelta = 25569;

// ---- Encoding and decoding --------------------------------------------------

// Years 1..9999. EncodeDate raises EConvertError "Invalid argument to date
// encode", EncodeTime "Invalid argument to time encode".
TDateTime EncodeDate(int year, int month, int day);
TDateTime EncodeTime(int hour, int min, int sec, int msec);
bool TryEncodeDate(int year, int month, int day, TDateTime& value);
bool TryEncodeTime(int hour, int min, int sec, int msec, TDateTime& value);
TDateTime EncodeDateTime(int year, int month, int day, int hour, int min, int sec, int msec);
// Values are rounded to the millisecond first, so 23:59:59.9999 decodes as
// the next day. Dates before 0001-01-01 decode as zeros.
void DecodeDate(TDateTime dt, int& year, int& month, int& day);
void DecodeTime(TDateTime dt, int& hour, int& min, int& sec, int& msec);
void DecodeDateTime(TDateTime dt, int& year, int& month, int& day, int& hour, int& min, int& sec, int& msec);

// ---- The clock ---------------------------------------------------------------

// Local time.
TDateTime Now();
TDateTime Date();
TDateTime Time();
int CurrentYear();

// ---- Calendar --------------------------------------------------------------

bool IsLeapYear(int year);
int DaysInAMonth(int year, int month);
int DaysInMonth(TDateTime dt);
// 1 = Sunday ... 7 = Saturday.
int DayOfWeek(TDateTime dt);
// Moves by whole months, keeping the time; the day is cut to the length of
// the target month (31 January + 1 month is 28 or 29 February).
TDateTime IncMonth(TDateTime dt, int months = 1);
TDateTime IncYear(TDateTime dt, int years = 1);
TDateTime IncDay(TDateTime dt, int days = 1);
int YearOf(TDateTime dt);
int MonthOf(TDateTime dt);
int DayOf(TDateTime dt);
TDateTime DateOf(TDateTime dt);
TDateTime TimeOf(TDateTime dt);
TDateTime StartOfTheMonth(TDateTime dt);
// The last millisecond of the month.
TDateTime EndOfTheMonth(TDateTime dt);
TDateTime StartOfTheYear(TDateTime dt);
TDateTime EndOfTheYear(TDateTime dt);
// Whole days between two moments, regardless of order.
int DaysBetween(TDateTime a, TDateTime b);

// ---- Text --------------------------------------------------------------------

// Patterns: d dd ddd dddd ddddd (short date) dddddd (long date), m mm mmm
// mmmm (minutes right after an h), yy yyyy, h hh, n nn, s ss, z zzz, t (short
// time) tt (long time), am/pm a/p ampm (12-hour clock for the h before), c
// (short date, then long time unless midnight), / and : (separators), '...'
// and "..." literals. Everything else is copied.
String FormatDateTime(const String& format, TDateTime dt);
String FormatDateTime(const String& format, TDateTime dt, const TFormatSettings& settings);
String DateToStr(TDateTime dt);
String TimeToStr(TDateTime dt);
String DateTimeToStr(TDateTime dt);

// Reads dates in the order of d, m and y in ShortDateFormat, separated by
// DateSeparator; a missing year is this year, a year of one or two digits
// falls in the TwoDigitYearCenturyWindow. Times are h:n[:s[.z]] with
// TimeSeparator and an optional AM/PM. Errors: EConvertError "'x' is not a
// valid date" / "... valid date and time" / "... valid time".
TDateTime StrToDate(const String& s);
TDateTime StrToTime(const String& s);
TDateTime StrToDateTime(const String& s);
TDateTime StrToDateDef(const String& s, TDateTime def);
TDateTime StrToDateTimeDef(const String& s, TDateTime def);
bool TryStrToDate(const String& s, TDateTime& value);
bool TryStrToTime(const String& s, TDateTime& value);
bool TryStrToDateTime(const String& s, TDateTime& value);
bool TryStrToDate(const String& s, TDateTime& value, const TFormatSettings& settings);
bool TryStrToTime(const String& s, TDateTime& value, const TFormatSettings& settings);
bool TryStrToDateTime(const String& s, TDateTime& value, const TFormatSettings& settings);

// The SQL text form: "yyyy-mm-dd hh:nn:ss", with ".zzz" added only when
// there are milliseconds, so values survive a round trip.
String DateTimeToISO(TDateTime dt);
String DateToISO(TDateTime dt);
// Reads "yyyy-mm-dd", optionally followed by a blank or "T" and
// "hh:nn[:ss[.fff]]", or a time alone; raises EConvertError "'x' is not a
// valid date and time".
TDateTime ISOToDateTime(const String& s);
bool TryISOToDateTime(const String& s, TDateTime& value);
