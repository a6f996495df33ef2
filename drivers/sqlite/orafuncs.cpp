#include "drivers/sqlite/orafuncs.h"

#include <sqlite3.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <string_view>

#include "drivers/sqlite/columntype.h"
#include "drivers/sqlite/datetext.h"
#include "drivers/sqlite/oraerrors.h"
#include "drivers/sqlite/oraformat.h"
#include "drivers/sqlite/sqlitevalue.h"
#include "drivers/sqlite/sqlshim.h"
#include "platform/rtl/exceptions.h"
#include "platform/rtl/sysutils.h"

namespace {

using TArgs = sqlite3_value**;

void Fail(sqlite3_context* c, int ora, std::string_view text) {
  const std::string message = OraText(ora, text);
  sqlite3_result_error(c, message.c_str(), static_cast<int>(message.size()));
}

const char* FormatErrorText(int code) {
  switch (code) {
    case 1821: return "date format not recognized";
    case 1830: return "date format picture ends before converting entire input string";
    case 1841: return "(full) year must be between -4713 and +9999, and not be 0";
    case 1843: return "not a valid month";
    case 1847: return "day of month must be between 1 and last day of month";
    case 1849: return "hour must be between 1 and 12";
    case 1850: return "hour must be between 0 and 23";
    case 1851: return "minutes must be between 0 and 59";
    case 1852: return "seconds must be between 0 and 59";
    case 1858: return "a non-numeric character was found where a numeric was expected";
    case 1481: return "invalid number format model";
    default: return "literal does not match format string";
  }
}

bool IsNull(sqlite3_value* v) { return sqlite3_value_type(v) == SQLITE_NULL; }
bool AnyNull(int n, TArgs a) {
  for (int i = 0; i < n; ++i)
    if (IsNull(a[i])) return true;
  return false;
}

std::string_view Text(sqlite3_value* v) {
  const char* text = reinterpret_cast<const char*>(sqlite3_value_text(v));
  return std::string_view(text ? text : "", static_cast<size_t>(sqlite3_value_bytes(v)));
}

void ResultText(sqlite3_context* c, std::string_view s) {
  sqlite3_result_text(c, s.data(), static_cast<int>(s.size()), SQLITE_TRANSIENT);
}

// A number argument; text is read as TO_NUMBER reads it. Reports ORA-01722
// and returns false for text that is no number.
bool Number(sqlite3_context* c, sqlite3_value* v, TOraNumber& n) {
  switch (sqlite3_value_type(v)) {
    case SQLITE_INTEGER:
      n = {true, sqlite3_value_int64(v), static_cast<double>(sqlite3_value_int64(v))};
      return true;
    case SQLITE_FLOAT:
      n = {false, 0, sqlite3_value_double(v)};
      return true;
    default:
      if (ParseOraNumber(Text(v), n)) return true;
      Fail(c, 1722, "invalid number");
      return false;
  }
}

// Whole numbers come back as integers, as Oracle's NUMBER prints them.
void ResultNumber(sqlite3_context* c, double d) {
  if (std::isfinite(d) && d == std::trunc(d) && std::fabs(d) < 9e15)
    sqlite3_result_int64(c, static_cast<int64_t>(d));
  else
    sqlite3_result_double(c, d);
}

bool DateArg(sqlite3_value* v, TCivilTime& t) {
  return sqlite3_value_type(v) == SQLITE_TEXT && ParseStoredDate(Text(v), t);
}

void ResultDate(sqlite3_context* c, const TCivilTime& t) { ResultText(c, FormatStoredDate(t)); }

// ---- UTF-8 characters ------------------------------------------------------

bool IsContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

size_t CharCount(std::string_view s) {
  size_t n = 0;
  for (char c : s) n += !IsContinuation(c);
  return n;
}

// Byte offset of the character with 0-based index `k`; the size when past the end.
size_t ByteOfChar(std::string_view s, size_t k) {
  for (size_t i = 0; i < s.size(); ++i) {
    if (IsContinuation(s[i])) continue;
    if (k-- == 0) return i;
  }
  return s.size();
}

std::string_view CharSlice(std::string_view s, size_t from, size_t count) {
  const size_t begin = ByteOfChar(s, from);
  const std::string_view rest = s.substr(begin);
  return rest.substr(0, ByteOfChar(rest, count));
}

// ---- Null handling and choice ----------------------------------------------

void Nvl(sqlite3_context* c, int, TArgs a) { sqlite3_result_value(c, IsNull(a[0]) ? a[1] : a[0]); }
void Nvl2(sqlite3_context* c, int, TArgs a) { sqlite3_result_value(c, IsNull(a[0]) ? a[2] : a[1]); }

// Oracle's DECODE: a NULL search value matches a NULL, and a number is
// compared with the number a text reads as.
bool SameValue(sqlite3_value* x, sqlite3_value* y) {
  if (IsNull(x) || IsNull(y)) return IsNull(x) && IsNull(y);
  const auto numeric = [](sqlite3_value* v) {
    const int type = sqlite3_value_type(v);
    return type == SQLITE_INTEGER || type == SQLITE_FLOAT;
  };
  if (!numeric(x)) return Text(x) == Text(y);
  if (numeric(y)) return sqlite3_value_double(x) == sqlite3_value_double(y);
  TOraNumber other;
  return ParseOraNumber(Text(y), other) && sqlite3_value_double(x) == other.Float;
}

void Decode(sqlite3_context* c, int n, TArgs a) {
  if (n < 3) return Fail(c, 938, "not enough arguments for function");
  for (int i = 1; i + 1 < n; i += 2)
    if (SameValue(a[0], a[i])) return sqlite3_result_value(c, a[i + 1]);
  if (n % 2 == 0) return sqlite3_result_value(c, a[n - 1]);
  sqlite3_result_null(c);
}

// Numbers compare as numbers when the first argument is one, text as text.
void Extreme(sqlite3_context* c, int n, TArgs a, bool greatest) {
  if (n < 1) return Fail(c, 938, "not enough arguments for function");
  if (AnyNull(n, a)) return sqlite3_result_null(c);
  const int t0 = sqlite3_value_type(a[0]);
  int best = 0;
  if (t0 == SQLITE_INTEGER || t0 == SQLITE_FLOAT) {
    TOraNumber bestValue, v;
    if (!Number(c, a[0], bestValue)) return;
    for (int i = 1; i < n; ++i) {
      if (!Number(c, a[i], v)) return;
      if (greatest ? v.Float > bestValue.Float : v.Float < bestValue.Float) bestValue = v, best = i;
    }
  } else {
    for (int i = 1; i < n; ++i) {
      const int order = Text(a[i]).compare(Text(a[best]));
      if (greatest ? order > 0 : order < 0) best = i;
    }
  }
  sqlite3_result_value(c, a[best]);
}
void Greatest(sqlite3_context* c, int n, TArgs a) { Extreme(c, n, a, true); }
void Least(sqlite3_context* c, int n, TArgs a) { Extreme(c, n, a, false); }

// ---- Conversions -----------------------------------------------------------

void ToDate(sqlite3_context* c, int n, TArgs a) {
  if (AnyNull(n, a)) return sqlite3_result_null(c);
  TCivilTime t;
  const int code = ParseOraDate(Text(a[0]), n > 1 ? Text(a[1]) : std::string_view(), t);
  if (code != 0) return Fail(c, code, FormatErrorText(code));
  ResultDate(c, t);
}

void ToChar(sqlite3_context* c, int n, TArgs a) {
  if (AnyNull(n, a)) return sqlite3_result_null(c);
  const std::string_view format = n > 1 ? Text(a[1]) : std::string_view();
  std::string out;
  TCivilTime t;
  if (DateArg(a[0], t)) {
    const int code = FormatOraDate(t, format, out);
    if (code != 0) return Fail(c, code, FormatErrorText(code));
    return ResultText(c, out);
  }
  const int type = sqlite3_value_type(a[0]);
  if (format.empty()) {
    if (type == SQLITE_INTEGER) return ResultText(c, std::to_string(sqlite3_value_int64(a[0])));
    if (type == SQLITE_FLOAT) return ResultText(c, OraNumberText(sqlite3_value_double(a[0])));
    return sqlite3_result_value(c, a[0]);
  }
  TOraNumber number;
  if (!Number(c, a[0], number)) return;
  const int code = FormatOraNumber(number.Float, format, out);
  if (code != 0) return Fail(c, code, FormatErrorText(code));
  ResultText(c, out);
}

void ToNumber(sqlite3_context* c, int n, TArgs a) {
  if (IsNull(a[0])) return sqlite3_result_null(c);
  const int type = sqlite3_value_type(a[0]);
  if (type == SQLITE_INTEGER || type == SQLITE_FLOAT) return sqlite3_result_value(c, a[0]);
  const std::string_view format = n > 1 ? Text(a[1]) : std::string_view();
  const bool groups = format.find(',') != std::string_view::npos || format.find('G') != std::string_view::npos ||
                      format.find('g') != std::string_view::npos;
  TOraNumber number;
  if (!ParseOraNumber(Text(a[0]), number, groups)) return Fail(c, 1722, "invalid number");
  if (number.IsInteger) return sqlite3_result_int64(c, number.Int);
  sqlite3_result_double(c, number.Float);
}

// ---- Text ------------------------------------------------------------------

void MapCase(sqlite3_context* c, sqlite3_value* v, bool upper) {
  if (IsNull(v)) return sqlite3_result_null(c);
  const std::string_view s = Text(v);
  bool ascii = true;
  for (char ch : s) ascii = ascii && static_cast<unsigned char>(ch) < 0x80;
  if (ascii) {
    std::string out(s);
    for (char& ch : out) {
      if (upper && ch >= 'a' && ch <= 'z') ch = static_cast<char>(ch - 'a' + 'A');
      if (!upper && ch >= 'A' && ch <= 'Z') ch = static_cast<char>(ch - 'A' + 'a');
    }
    return ResultText(c, out);
  }
  const String text = String::FromUtf8(s);
  ResultText(c, (upper ? UpperCase(text) : LowerCase(text)).ToUtf8());
}
void Upper(sqlite3_context* c, int, TArgs a) { MapCase(c, a[0], true); }
void Lower(sqlite3_context* c, int, TArgs a) { MapCase(c, a[0], false); }

void Pad(sqlite3_context* c, int n, TArgs a, bool left) {
  if (AnyNull(n, a)) return sqlite3_result_null(c);
  TOraNumber width;
  if (!Number(c, a[1], width)) return;
  const std::string_view s = Text(a[0]);
  const std::string_view pad = n > 2 ? Text(a[2]) : std::string_view(" ");
  const double w = std::trunc(width.Float);
  if (w < 1 || pad.empty()) return sqlite3_result_null(c);
  if (w > 1e6) return Fail(c, 1489, "result of string concatenation is too long");
  const size_t target = static_cast<size_t>(w), length = CharCount(s);
  if (length >= target) return ResultText(c, CharSlice(s, 0, target));
  std::string fill;
  const size_t padLength = CharCount(pad);
  for (size_t i = 0; i < target - length; ++i) fill += CharSlice(pad, i % padLength, 1);
  ResultText(c, left ? fill + std::string(s) : std::string(s) + fill);
}
void Lpad(sqlite3_context* c, int n, TArgs a) { Pad(c, n, a, true); }
void Rpad(sqlite3_context* c, int n, TArgs a) { Pad(c, n, a, false); }

// INSTR(s, sub [, position [, occurrence]]); a negative position searches
// backwards from that many characters before the end.
void Instr(sqlite3_context* c, int n, TArgs a) {
  if (AnyNull(n, a)) return sqlite3_result_null(c);
  TOraNumber pos{true, 1, 1}, occ{true, 1, 1};
  if ((n > 2 && !Number(c, a[2], pos)) || (n > 3 && !Number(c, a[3], occ))) return;
  const std::string_view s = Text(a[0]), sub = Text(a[1]);
  if (sub.empty()) return sqlite3_result_null(c);
  const double p = std::trunc(pos.Float), o = std::trunc(occ.Float);
  if (o < 1) return Fail(c, 1428, "argument is out of range");
  const double length = static_cast<double>(CharCount(s));
  if (p == 0 || std::fabs(p) > length) return sqlite3_result_int64(c, 0);
  size_t found = std::string_view::npos;
  int count = 0;
  if (p > 0) {
    size_t from = ByteOfChar(s, static_cast<size_t>(p) - 1);
    while (count < o && (found = s.find(sub, from)) != std::string_view::npos) {
      ++count;
      from = found + 1;
    }
  } else {
    size_t from = ByteOfChar(s, static_cast<size_t>(length + p));
    while (count < o && (found = s.rfind(sub, from)) != std::string_view::npos) {
      ++count;
      if (found == 0) break;
      from = found - 1;
    }
  }
  if (count < o || found == std::string_view::npos) return sqlite3_result_int64(c, 0);
  sqlite3_result_int64(c, static_cast<int64_t>(CharCount(s.substr(0, found)) + 1));
}

// SUBSTR as Oracle has it: position 0 counts as 1, a negative one counts
// from the end, and an empty result is NULL.
void Substr(sqlite3_context* c, int n, TArgs a) {
  if (AnyNull(n, a)) return sqlite3_result_null(c);
  TOraNumber pos, count;
  if (!Number(c, a[1], pos) || (n > 2 && !Number(c, a[2], count))) return;
  const std::string_view s = Text(a[0]);
  const double length = static_cast<double>(CharCount(s));
  double p = std::trunc(pos.Float);
  if (p == 0) p = 1;
  if (p < 0) p = length + p + 1;
  if (p < 1 || p > length) return sqlite3_result_null(c);
  double take = length - p + 1;
  if (n > 2) take = std::min(take, std::trunc(count.Float));
  if (take < 1) return sqlite3_result_null(c);
  ResultText(c, CharSlice(s, static_cast<size_t>(p) - 1, static_cast<size_t>(take)));
}

void Chr(sqlite3_context* c, int, TArgs a) {
  TOraNumber n;
  if (IsNull(a[0])) return sqlite3_result_null(c);
  if (!Number(c, a[0], n)) return;
  const double code = std::trunc(n.Float);
  if (code < 0 || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return sqlite3_result_null(c);
  const uint32_t u = static_cast<uint32_t>(code);
  std::string out;
  if (u < 0x80) {
    out += static_cast<char>(u);
  } else if (u < 0x800) {
    out += static_cast<char>(0xC0 | (u >> 6));
    out += static_cast<char>(0x80 | (u & 0x3F));
  } else if (u < 0x10000) {
    out += static_cast<char>(0xE0 | (u >> 12));
    out += static_cast<char>(0x80 | ((u >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (u & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (u >> 18));
    out += static_cast<char>(0x80 | ((u >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((u >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (u & 0x3F));
  }
  ResultText(c, out);
}

// ---- Numbers and dates -----------------------------------------------------

int Decimals(sqlite3_context* c, int n, TArgs a, bool& ok) {
  TOraNumber d{true, 0, 0};
  ok = n < 2 || Number(c, a[1], d);
  return static_cast<int>(std::max(-30.0, std::min(30.0, std::trunc(d.Float))));
}

// TRUNC/ROUND of a date to the unit that `format` names.
int DateUnit(sqlite3_context* c, int n, TArgs a, TCivilTime& t, bool round) {
  std::string unit = n > 1 ? FoldName(Text(a[1])) : "DD";
  if (round && unit == "DD") {  // noon and later is the next day
    const double days = CivilToDays(t) + 0.5;
    t = DaysToCivil(std::floor(days + 1e-9));
  } else if (round) {
    Fail(c, 1821, "date format not recognized");
    return 1;
  }
  t.Hour = unit == "HH" || unit == "HH24" || unit == "HH12" || unit == "MI" ? t.Hour : 0;
  t.Minute = unit == "MI" ? t.Minute : 0;
  t.Second = 0;
  if (unit == "DD" || unit == "DDD" || unit == "J" || unit == "HH" || unit == "HH24" || unit == "HH12" || unit == "MI")
    return 0;
  t.Day = 1;
  if (unit == "MM" || unit == "MON" || unit == "MONTH" || unit == "RM") return 0;
  if (unit == "Q") {
    t.Month = (t.Month - 1) / 3 * 3 + 1;
    return 0;
  }
  t.Month = 1;
  if (unit == "YYYY" || unit == "YYY" || unit == "YY" || unit == "Y" || unit == "YEAR" || unit == "SYYYY" ||
      unit == "RRRR" || unit == "RR")
    return 0;
  Fail(c, 1821, "date format not recognized");
  return 1;
}

void RoundOrTrunc(sqlite3_context* c, int n, TArgs a, bool round) {
  if (AnyNull(n, a)) return sqlite3_result_null(c);
  TCivilTime t;
  if (DateArg(a[0], t)) {
    if (DateUnit(c, n, a, t, round) == 0) ResultDate(c, t);
    return;
  }
  TOraNumber x;
  bool ok = true;
  if (!Number(c, a[0], x)) return;
  const int decimals = Decimals(c, n, a, ok);
  if (!ok) return;
  if (x.IsInteger && decimals >= 0) return sqlite3_result_int64(c, x.Int);
  ResultNumber(c, DecimalRound(x.Float, decimals, !round));
}
void Trunc(sqlite3_context* c, int n, TArgs a) { RoundOrTrunc(c, n, a, false); }
void Round(sqlite3_context* c, int n, TArgs a) { RoundOrTrunc(c, n, a, true); }

void AddMonths(sqlite3_context* c, int, TArgs a) {
  if (AnyNull(2, a)) return sqlite3_result_null(c);
  TCivilTime t;
  TOraNumber months;
  if (!DateArg(a[0], t)) return Fail(c, 1861, "literal does not match format string");
  if (!Number(c, a[1], months)) return;
  const bool lastDay = t.Day == DaysInMonth(t.Year, t.Month);
  const int64_t index = int64_t{t.Year} * 12 + (t.Month - 1) + static_cast<int64_t>(std::trunc(months.Float));
  if (index < 12 || index >= 12 * 10000) return Fail(c, 1841, FormatErrorText(1841));
  t.Year = static_cast<int>(index / 12);
  t.Month = static_cast<int>(index % 12) + 1;
  const int days = DaysInMonth(t.Year, t.Month);
  t.Day = lastDay || t.Day > days ? days : t.Day;
  ResultDate(c, t);
}

void Mod(sqlite3_context* c, int, TArgs a) {
  if (AnyNull(2, a)) return sqlite3_result_null(c);
  TOraNumber x, y;
  if (!Number(c, a[0], x) || !Number(c, a[1], y)) return;
  if (x.IsInteger && y.IsInteger) {
    if (y.Int == 0) return sqlite3_result_int64(c, x.Int);
    return sqlite3_result_int64(c, y.Int == -1 ? 0 : x.Int % y.Int);
  }
  ResultNumber(c, y.Float == 0 ? x.Float : std::fmod(x.Float, y.Float));
}

template <double (*F)(double)>
void Unary(sqlite3_context* c, int, TArgs a) {
  TOraNumber x;
  if (IsNull(a[0])) return sqlite3_result_null(c);
  if (!Number(c, a[0], x)) return;
  if (x.IsInteger) return sqlite3_result_int64(c, x.Int);
  ResultNumber(c, F(x.Float));
}
double Floor(double x) { return std::floor(x); }
double Ceil(double x) { return std::ceil(x); }

void Sign(sqlite3_context* c, int, TArgs a) {
  TOraNumber x;
  if (IsNull(a[0])) return sqlite3_result_null(c);
  if (!Number(c, a[0], x)) return;
  sqlite3_result_int64(c, x.Float > 0 ? 1 : x.Float < 0 ? -1 : 0);
}

void Power(sqlite3_context* c, int, TArgs a) {
  if (AnyNull(2, a)) return sqlite3_result_null(c);
  TOraNumber x, y;
  if (!Number(c, a[0], x) || !Number(c, a[1], y)) return;
  if (x.Float < 0 && y.Float != std::trunc(y.Float)) return Fail(c, 1428, "argument is out of range");
  ResultNumber(c, std::pow(x.Float, y.Float));
}

// ---- Date arithmetic -------------------------------------------------------
//
// The shim turns every binary + and - into kelmar_add / kelmar_sub, since
// dates are stored as text and the engine's own operators would read
// "2015-02-01 ..." as the number 2015. A date plus or minus a number of
// days is a date; a date minus a date is the days between them.

constexpr int64_t kSecondsPerDay = 86400;

struct TArithOperand {
  bool IsDate = false;
  int64_t Seconds = 0;  // since 1899-12-30, for dates
  TOraNumber Number;
};

bool ArithOperand(sqlite3_context* c, sqlite3_value* v, TArithOperand& x) {
  TCivilTime t;
  switch (sqlite3_value_type(v)) {
    case SQLITE_INTEGER:
    case SQLITE_FLOAT:
      return Number(c, v, x.Number);
    case SQLITE_TEXT:
      if (ParseStoredDate(Text(v), t)) {
        x.IsDate = true;
        x.Seconds = DaysFromCivil(t.Year, t.Month, t.Day) * kSecondsPerDay + t.Hour * 3600 + t.Minute * 60 + t.Second;
        return true;
      }
      return Number(c, v, x.Number);
    default:
      Fail(c, 932, "inconsistent datatypes: expected NUMBER got BLOB");
      return false;
  }
}

// date + days: whole seconds, as Oracle's DATE keeps them.
void ResultShiftedDate(sqlite3_context* c, int64_t seconds, double days) {
  if (!std::isfinite(days) || std::fabs(days) > 4e6) return Fail(c, 1841, FormatErrorText(1841));
  seconds += std::llround(days * kSecondsPerDay);
  int64_t day = seconds / kSecondsPerDay, rest = seconds % kSecondsPerDay;
  if (rest < 0) {
    rest += kSecondsPerDay;
    --day;
  }
  TCivilTime t = DaysToCivil(static_cast<double>(day));
  t.Hour = static_cast<int>(rest / 3600);
  t.Minute = static_cast<int>(rest / 60 % 60);
  t.Second = static_cast<int>(rest % 60);
  if (!IsValidCivil(t)) return Fail(c, 1841, FormatErrorText(1841));
  ResultDate(c, t);
}

void ResultSum(sqlite3_context* c, const TOraNumber& x, const TOraNumber& y, bool subtract) {
  int64_t sum = 0;
  if (x.IsInteger && y.IsInteger &&
      !(subtract ? __builtin_sub_overflow(x.Int, y.Int, &sum) : __builtin_add_overflow(x.Int, y.Int, &sum)))
    return sqlite3_result_int64(c, sum);
  sqlite3_result_double(c, subtract ? x.Float - y.Float : x.Float + y.Float);
}

void Arithmetic(sqlite3_context* c, TArgs a, bool subtract) {
  if (AnyNull(2, a)) return sqlite3_result_null(c);
  TArithOperand x, y;
  if (!ArithOperand(c, a[0], x) || !ArithOperand(c, a[1], y)) return;
  if (!x.IsDate && !y.IsDate) return ResultSum(c, x.Number, y.Number, subtract);
  if (x.IsDate && y.IsDate) {
    if (!subtract) return Fail(c, 975, "date + date not allowed");
    return sqlite3_result_double(c, static_cast<double>(x.Seconds - y.Seconds) / kSecondsPerDay);
  }
  if (x.IsDate) return ResultShiftedDate(c, x.Seconds, subtract ? -y.Number.Float : y.Number.Float);
  if (subtract) return Fail(c, 932, "inconsistent datatypes: expected NUMBER got DATE");
  ResultShiftedDate(c, y.Seconds, x.Number.Float);
}
void Add(sqlite3_context* c, int, TArgs a) { Arithmetic(c, a, false); }
// kelmar_num(x): x itself, when it is a number; products and signs refuse
// dates and text that is no number.
bool NumberOnly(sqlite3_context* c, sqlite3_value* v, TOraNumber& n) {
  TArithOperand x;
  if (!ArithOperand(c, v, x)) return false;
  if (x.IsDate) {
    Fail(c, 932, "inconsistent datatypes: expected NUMBER got DATE");
    return false;
  }
  n = x.Number;
  return true;
}
void NumberOperand(sqlite3_context* c, int, TArgs a) {
  TOraNumber x;
  if (IsNull(a[0])) return sqlite3_result_null(c);
  if (NumberOnly(c, a[0], x)) sqlite3_result_value(c, a[0]);
}
// kelmar_divisor(x): the same, and not zero.
void Divisor(sqlite3_context* c, int, TArgs a) {
  TOraNumber x;
  if (IsNull(a[0])) return sqlite3_result_null(c);
  if (!NumberOnly(c, a[0], x)) return;
  if (x.IsInteger ? x.Int == 0 : x.Float == 0) return Fail(c, 1476, "divisor is equal to zero");
  sqlite3_result_value(c, a[0]);
}
void Subtract(sqlite3_context* c, int, TArgs a) { Arithmetic(c, a, true); }

// ---- Session ---------------------------------------------------------------

TShimSession* SessionOf(sqlite3_context* c) { return static_cast<TShimSession*>(sqlite3_user_data(c)); }

void SysContext(sqlite3_context* c, int, TArgs a) {
  if (AnyNull(2, a)) return sqlite3_result_null(c);
  const std::string space = FoldName(Text(a[0])), key = FoldName(Text(a[1]));
  if (space == "USERENV" && (key == "SESSION_USER" || key == "CURRENT_USER" || key == "CURRENT_SCHEMA" ||
                             key == "SESSION_SCHEMA"))
    return ResultText(c, SessionOf(c)->User);
  sqlite3_result_null(c);
}

void NextVal(sqlite3_context* c, int, TArgs a) {
  const std::string name(Text(a[0]));
  sqlite3* db = sqlite3_context_db_handle(c);
  sqlite3_stmt* s = nullptr;
  const std::string sql = std::string("UPDATE ") + kSequenceTable +
                          " SET next_value = next_value + increment WHERE name = ?1 RETURNING next_value - increment";
  if (sqlite3_prepare_v2(db, sql.c_str(), -1, &s, nullptr) != SQLITE_OK) {
    sqlite3_finalize(s);
    return Fail(c, 2289, "sequence does not exist (" + name + ")");
  }
  sqlite3_bind_text(s, 1, name.data(), static_cast<int>(name.size()), SQLITE_STATIC);
  int rc = sqlite3_step(s);
  const bool found = rc == SQLITE_ROW;
  const int64_t value = found ? sqlite3_column_int64(s, 0) : 0;
  while (rc == SQLITE_ROW) rc = sqlite3_step(s);
  sqlite3_finalize(s);
  if (rc != SQLITE_DONE) {
    const TDbStatus status = MapSqliteError(db, rc);
    return Fail(c, status.OraCode, status.Text.ToUtf8());
  }
  if (!found) return Fail(c, 2289, "sequence does not exist (" + name + ")");
  SessionOf(c)->CurrVal[name] = value;
  sqlite3_result_int64(c, value);
}

void CurrVal(sqlite3_context* c, int, TArgs a) {
  const std::string name(Text(a[0]));
  const auto& values = SessionOf(c)->CurrVal;
  const auto it = values.find(name);
  if (it == values.end()) return Fail(c, 8002, "sequence " + name + ".CURRVAL is not yet defined in this session");
  sqlite3_result_int64(c, it->second);
}

// kelmar_datelit(column, 'DD.MM.YYYY'): the literal as a stored date when
// the column holds one, the literal itself otherwise.
void DateLiteral(sqlite3_context* c, int, TArgs a) {
  TCivilTime t;
  if (sqlite3_value_type(a[0]) == SQLITE_TEXT && ParseStoredDate(Text(a[0]), t) &&
      ParseOraDate(Text(a[1]), std::string_view(), t) == 0)
    return ResultDate(c, t);
  sqlite3_result_value(c, a[1]);
}

// kelmar_coltype(declared type, 'TYPE' | 'LENGTH' | 'PRECISION' | 'SCALE')
void ColumnType(sqlite3_context* c, int, TArgs a) {
  const TOraColumnType t = ParseColumnType(Text(a[0]));
  const std::string part = FoldName(Text(a[1]));
  if (part == "TYPE") return t.Name.empty() ? sqlite3_result_null(c) : ResultText(c, t.Name);
  const int value = part == "LENGTH" ? t.Length : part == "PRECISION" ? t.Precision : t.Scale;
  if (value < 0 || t.Name.empty()) return sqlite3_result_null(c);
  sqlite3_result_int64(c, value);
}

// kelmar_synonym(view sql, 1 | 2): owner or table of "/* synonym OWNER|TABLE */".
void SynonymPart(sqlite3_context* c, int, TArgs a) {
  const std::string_view sql = Text(a[0]);
  const size_t at = sql.rfind("/* synonym ");
  const size_t end = sql.rfind(" */");
  if (at == std::string_view::npos || end == std::string_view::npos || end < at + 11) return sqlite3_result_null(c);
  const std::string_view body = sql.substr(at + 11, end - at - 11);
  const size_t bar = body.find('|');
  if (bar == std::string_view::npos) return sqlite3_result_null(c);
  ResultText(c, sqlite3_value_int(a[1]) == 1 ? body.substr(0, bar) : body.substr(bar + 1));
}

struct TFunctionDef {
  const char* Name;
  int Args;
  bool Pure;
  void (*Call)(sqlite3_context*, int, TArgs);
};

constexpr TFunctionDef kFunctions[] = {
    {"NVL", 2, true, Nvl},           {"NVL2", 3, true, Nvl2},          {"DECODE", -1, true, Decode},
    {"GREATEST", -1, true, Greatest}, {"LEAST", -1, true, Least},      {"TO_DATE", 1, true, ToDate},
    {"TO_DATE", 2, true, ToDate},    {"TO_CHAR", 1, true, ToChar},     {"TO_CHAR", 2, true, ToChar},
    {"TO_NUMBER", 1, true, ToNumber}, {"TO_NUMBER", 2, true, ToNumber}, {"UPPER", 1, true, Upper},
    {"LOWER", 1, true, Lower},       {"LPAD", 2, true, Lpad},          {"LPAD", 3, true, Lpad},
    {"RPAD", 2, true, Rpad},         {"RPAD", 3, true, Rpad},          {"INSTR", 2, true, Instr},
    {"INSTR", 3, true, Instr},       {"INSTR", 4, true, Instr},        {"SUBSTR", 2, true, Substr},
    {"SUBSTR", 3, true, Substr},     {"CHR", 1, true, Chr},            {"TRUNC", 1, true, Trunc},
    {"TRUNC", 2, true, Trunc},       {"ROUND", 1, true, Round},        {"ROUND", 2, true, Round},
    {"ADD_MONTHS", 2, true, AddMonths}, {"MOD", 2, true, Mod},         {"FLOOR", 1, true, Unary<Floor>},
    {"CEIL", 1, true, Unary<Ceil>},  {"SIGN", 1, true, Sign},          {"POWER", 2, true, Power},
    {"SYS_CONTEXT", 2, true, SysContext}, {"kelmar_nextval", 1, false, NextVal},
    {"kelmar_currval", 1, false, CurrVal}, {"kelmar_datelit", 2, true, DateLiteral},
    {"kelmar_coltype", 2, true, ColumnType}, {"kelmar_synonym", 2, true, SynonymPart},
    {"kelmar_add", 2, true, Add},    {"kelmar_sub", 2, true, Subtract}, {"kelmar_divisor", 1, true, Divisor},
    {"kelmar_num", 1, true, NumberOperand},
};

// ---- Functions of the application -----------------------------------------

void CallDbFunction(sqlite3_context* c, int n, TArgs a) {
  const auto& function = *static_cast<TDbFunction*>(sqlite3_user_data(c));
  try {
    std::vector<TDbValue> args;
    args.reserve(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i) args.push_back(DbValueFromSqlite(a[i]));
    ResultDbValue(c, function(args));
  } catch (const Exception& e) {
    Fail(c, 20000, e.Message.ToUtf8());
  } catch (const std::exception& e) {
    Fail(c, 20000, e.what());
  }
}

}  // namespace

void RegisterOracleFunctions(sqlite3* db, TShimSession* session) {
  for (const TFunctionDef& f : kFunctions) {
    const int flags = SQLITE_UTF8 | (f.Pure ? SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS : 0);
    sqlite3_create_function_v2(db, f.Name, f.Args, flags, session, f.Call, nullptr, nullptr, nullptr);
  }
}

TDbStatus RegisterDbFunction(sqlite3* db, const String& name, int argCount, const TDbFunction& function) {
  std::string bare = name.ToUtf8();
  const size_t dot = bare.rfind('.');
  if (dot != std::string::npos) bare.erase(0, dot + 1);
  auto* holder = new TDbFunction(function);
  const int rc = sqlite3_create_function_v2(
      db, bare.c_str(), argCount, SQLITE_UTF8 | SQLITE_INNOCUOUS, holder, CallDbFunction, nullptr, nullptr,
      [](void* p) { delete static_cast<TDbFunction*>(p); });
  return rc == SQLITE_OK ? TDbStatus::Ok() : MapSqliteError(db, rc);
}
