#include "platform/rtl/datetime.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <ostream>

namespace {

constexpr int64_t kMSecsPerDay = 86400000;
// Day numbers of 0001-01-01 and 9999-12-31.
constexpr int64_t kMinDay = -693593;
constexpr int64_t kMaxDay = 2958465;

// Day number (days since 1899-12-30) of a proleptic Gregorian date.
int64_t DayFromCivil(int year, int month, int day) {
  const int y = year - (month <= 2 ? 1 : 0);
  const int era = (y >= 0 ? y : y - 399) / 400;
  const int yoe = y - era * 400;
  const int doy = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
  const int doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return int64_t{era} * 146097 + doe - 719468 + static_cast<int64_t>(UnixDateDelta);
}

void CivilFromDay(int64_t dayNumber, int& year, int& month, int& day) {
  const int64_t z = dayNumber - static_cast<int64_t>(UnixDateDelta) + 719468;
  const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const int64_t doe = z - era * 146097;
  const int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const int64_t mp = (5 * doy + 2) / 153;
  day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  year = static_cast<int>(yoe + era * 400 + (month <= 2 ? 1 : 0));
}

// A moment rounded to the millisecond: the day number and the milliseconds
// since midnight (counted forward also for negative days).
struct TStamp {
  bool Valid = false;
  int64_t Day = 0;
  int64_t MSec = 0;
};

TStamp ToStamp(double dt) {
  TStamp st;
  if (!std::isfinite(dt) || dt < kMinDay - 1 || dt > kMaxDay + 1) return st;
  const int64_t ms = std::llround(dt * MSecsPerDay);
  st.Day = ms / kMSecsPerDay;
  st.MSec = (ms < 0 ? -ms : ms) % kMSecsPerDay;
  st.Valid = st.Day >= kMinDay && st.Day <= kMaxDay;
  return st;
}

// Joins a day number and a time of day by the sign convention of TDateTime.
double Compose(double date, double time) { return date < 0 ? date - time : date + time; }

bool ValidDate(int year, int month, int day) {
  return year >= 1 && year <= 9999 && month >= 1 && month <= 12 && day >= 1 && day <= DaysInAMonth(year, month);
}

}  // namespace

std::ostream& operator<<(std::ostream& os, TDateTime dt) { return os << DateTimeToISO(dt); }

void PrintTo(TDateTime dt, std::ostream* os) {
  char buf[32];
  std::snprintf(buf, sizeof buf, " (%.17g)", dt.Val);
  *os << DateTimeToISO(dt) << buf;
}

// ---- Encoding and decoding --------------------------------------------------

bool TryEncodeDate(int year, int month, int day, TDateTime& value) {
  if (!ValidDate(year, month, day)) return false;
  value = static_cast<double>(DayFromCivil(year, month, day));
  return true;
}

TDateTime EncodeDate(int year, int month, int day) {
  TDateTime result;
  if (!TryEncodeDate(year, month, day, result)) throw EConvertError(u"Invalid argument to date encode");
  return result;
}

bool TryEncodeTime(int hour, int min, int sec, int msec, TDateTime& value) {
  if (hour < 0 || hour > 23 || min < 0 || min > 59 || sec < 0 || sec > 59 || msec < 0 || msec > 999) return false;
  value = static_cast<double>(((int64_t{hour} * 60 + min) * 60 + sec) * 1000 + msec) / MSecsPerDay;
  return true;
}

TDateTime EncodeTime(int hour, int min, int sec, int msec) {
  TDateTime result;
  if (!TryEncodeTime(hour, min, sec, msec, result)) throw EConvertError(u"Invalid argument to time encode");
  return result;
}

TDateTime EncodeDateTime(int year, int month, int day, int hour, int min, int sec, int msec) {
  return Compose(EncodeDate(year, month, day), EncodeTime(hour, min, sec, msec));
}

void DecodeDate(TDateTime dt, int& year, int& month, int& day) {
  const TStamp st = ToStamp(dt);
  if (!st.Valid) {
    year = month = day = 0;
    return;
  }
  CivilFromDay(st.Day, year, month, day);
}

void DecodeTime(TDateTime dt, int& hour, int& min, int& sec, int& msec) {
  const TStamp st = ToStamp(dt);
  const int64_t ms = st.Valid ? st.MSec : 0;
  hour = static_cast<int>(ms / 3600000);
  min = static_cast<int>(ms / 60000 % 60);
  sec = static_cast<int>(ms / 1000 % 60);
  msec = static_cast<int>(ms % 1000);
}

void DecodeDateTime(TDateTime dt, int& year, int& month, int& day, int& hour, int& min, int& sec, int& msec) {
  DecodeDate(dt, year, month, day);
  DecodeTime(dt, hour, min, sec, msec);
}

// ---- The clock ---------------------------------------------------------------

TDateTime Now() {
  using namespace std::chrono;
  const auto now = system_clock::now();
  const std::time_t t = system_clock::to_time_t(now);
  const int ms = static_cast<int>(duration_cast<milliseconds>(now.time_since_epoch()).count() % 1000);
  std::tm local{};
  localtime_r(&t, &local);
  return EncodeDateTime(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min,
                        local.tm_sec, ms < 0 ? 0 : ms);
}

TDateTime Date() { return DateOf(Now()); }
TDateTime Time() { return TimeOf(Now()); }
int CurrentYear() { return YearOf(Now()); }

// ---- Calendar --------------------------------------------------------------

bool IsLeapYear(int year) { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

int DaysInAMonth(int year, int month) {
  static const int days[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (month < 1 || month > 12) return 0;
  return month == 2 && IsLeapYear(year) ? 29 : days[month - 1];
}

int DaysInMonth(TDateTime dt) { return DaysInAMonth(YearOf(dt), MonthOf(dt)); }

int DayOfWeek(TDateTime dt) {
  const TStamp st = ToStamp(dt);
  // Day 0, 1899-12-30, was a Saturday.
  return static_cast<int>(((st.Day % 7) + 7 + 6) % 7) + 1;
}

TDateTime IncMonth(TDateTime dt, int months) {
  int y, m, d;
  DecodeDate(dt, y, m, d);
  if (y == 0) throw EConvertError(u"Invalid argument to date encode");
  const int64_t total = int64_t{y} * 12 + (m - 1) + months;
  const int64_t ny = total >= 0 ? total / 12 : (total - 11) / 12;
  const int nm = static_cast<int>(total - ny * 12) + 1;
  if (ny < 1 || ny > 9999) throw EConvertError(u"Invalid argument to date encode");
  const int year = static_cast<int>(ny);
  const int day = std::min(d, DaysInAMonth(year, nm));
  return Compose(EncodeDate(year, nm, day), TimeOf(dt));
}

TDateTime IncYear(TDateTime dt, int years) { return IncMonth(dt, years * 12); }
TDateTime IncDay(TDateTime dt, int days) { return dt + days; }

int YearOf(TDateTime dt) {
  int y, m, d;
  DecodeDate(dt, y, m, d);
  return y;
}

int MonthOf(TDateTime dt) {
  int y, m, d;
  DecodeDate(dt, y, m, d);
  return m;
}

int DayOf(TDateTime dt) {
  int y, m, d;
  DecodeDate(dt, y, m, d);
  return d;
}

TDateTime DateOf(TDateTime dt) {
  const TStamp st = ToStamp(dt);
  return static_cast<double>(st.Day);
}

TDateTime TimeOf(TDateTime dt) {
  const TStamp st = ToStamp(dt);
  return static_cast<double>(st.MSec) / MSecsPerDay;
}

TDateTime StartOfTheMonth(TDateTime dt) {
  int y, m, d;
  DecodeDate(dt, y, m, d);
  return EncodeDate(y, m, 1);
}

TDateTime EndOfTheMonth(TDateTime dt) {
  int y, m, d;
  DecodeDate(dt, y, m, d);
  return Compose(EncodeDate(y, m, DaysInAMonth(y, m)), EncodeTime(23, 59, 59, 999));
}

TDateTime StartOfTheYear(TDateTime dt) { return EncodeDate(YearOf(dt), 1, 1); }

TDateTime EndOfTheYear(TDateTime dt) { return Compose(EncodeDate(YearOf(dt), 12, 31), EncodeTime(23, 59, 59, 999)); }

int DaysBetween(TDateTime a, TDateTime b) {
  // A half millisecond of slack, so that whole days computed in floating
  // point count as whole.
  return static_cast<int>(std::trunc(std::fabs(a.Val - b.Val) + 0.5 / MSecsPerDay));
}

// ---- FormatDateTime --------------------------------------------------------

namespace {

inline char16_t Upper(char16_t c) { return c >= u'a' && c <= u'z' ? static_cast<char16_t>(c - 32) : c; }

bool StartsWithText(std::u16string_view s, size_t at, std::u16string_view what) {
  if (at + what.size() > s.size()) return false;
  for (size_t i = 0; i < what.size(); ++i)
    if (Upper(s[at + i]) != Upper(what[i])) return false;
  return true;
}

class DateTimeWriter {
 public:
  DateTimeWriter(TDateTime dt, const TFormatSettings& settings) : fs_(settings) {
    DecodeDateTime(dt, year_, month_, day_, hour_, min_, sec_, msec_);
    const TStamp st = ToStamp(dt);
    dayOfWeek_ = static_cast<int>(((st.Day % 7) + 7 + 6) % 7);  // 0 = Sunday
  }

  void Write(std::u16string_view f, int depth) {
    // Nested formats (ddddd inside c inside the settings) stop at two levels,
    // so settings that name themselves cannot recurse without end.
    if (depth > 2) return;
    char16_t lastToken = 0;
    size_t i = 0;
    const size_t n = f.size();
    while (i < n) {
      const char16_t starter = f[i];
      char16_t token = Upper(starter);
      if (token >= u'A' && token <= u'Z') {
        if (token == u'M' && lastToken == u'H') token = u'N';
        lastToken = token;
      }
      size_t run = 1;
      while (i + run < n && f[i + run] == starter) ++run;
      switch (token) {
        case u'Y':
          i += run;
          if (run <= 2) Number(year_ % 100, 2);
          else Number(year_, 4);
          break;
        case u'M':
          i += run;
          if (run <= 2) Number(month_, static_cast<int>(run));
          else if (month_ >= 1) Text(run == 3 ? fs_.ShortMonthNames[month_ - 1] : fs_.LongMonthNames[month_ - 1]);
          break;
        case u'N':
          i += run;
          Number(min_, run > 2 ? 2 : static_cast<int>(run));
          break;
        case u'D':
          i += run;
          if (run <= 2) Number(day_, static_cast<int>(run));
          else if (run == 3) Text(fs_.ShortDayNames[dayOfWeek_]);
          else if (run == 4) Text(fs_.LongDayNames[dayOfWeek_]);
          else if (run == 5) Write(fs_.ShortDateFormat.view(), depth + 1);
          else Write(fs_.LongDateFormat.view(), depth + 1);
          break;
        case u'H': {
          i += run;
          int h = hour_;
          if (TwelveHourClockFollows(f, i)) h = h == 0 ? 12 : h > 12 ? h - 12 : h;
          Number(h, run > 2 ? 2 : static_cast<int>(run));
          break;
        }
        case u'S':
          i += run;
          Number(sec_, run > 2 ? 2 : static_cast<int>(run));
          break;
        case u'Z':
          i += run;
          Number(msec_, run <= 2 ? 1 : 3);
          break;
        case u'T':
          i += run;
          Write(run == 1 ? fs_.ShortTimeFormat.view() : fs_.LongTimeFormat.view(), depth + 1);
          break;
        case u'C':
          i += run;
          Write(fs_.ShortDateFormat.view(), depth + 1);
          if (hour_ || min_ || sec_ || msec_) {
            out_ += u' ';
            Write(fs_.LongTimeFormat.view(), depth + 1);
          }
          break;
        case u'A':
          i = AmPm(f, i);
          break;
        case u'/':
          out_ += fs_.DateSeparator;
          ++i;
          break;
        case u':':
          out_ += fs_.TimeSeparator;
          ++i;
          break;
        case u'\'':
        case u'"': {
          size_t end = f.find(starter, i + 1);
          if (end == std::u16string_view::npos) end = n;
          out_.append(f.substr(i + 1, end - i - 1));
          i = end < n ? end + 1 : n;
          break;
        }
        default:
          out_ += starter;
          ++i;
          break;
      }
    }
  }

  String Result() { return String(std::move(out_)); }

 private:
  void Number(int value, int minDigits) {
    char buf[16];
    std::snprintf(buf, sizeof buf, "%0*d", minDigits, value);
    for (const char* p = buf; *p; ++p) out_ += static_cast<char16_t>(*p);
  }
  void Text(const String& s) { out_.append(s.view()); }

  // An am/pm marker before the next h turns the hour just read to the
  // 12-hour clock.
  static bool TwelveHourClockFollows(std::u16string_view f, size_t from) {
    bool quoted = false;
    for (size_t p = from; p < f.size(); ++p) {
      const char16_t c = f[p];
      if (c == u'\'' || c == u'"') quoted = !quoted;
      if (quoted) continue;
      if (c == u'A' || c == u'a')
        return StartsWithText(f, p, u"AM/PM") || StartsWithText(f, p, u"A/P") || StartsWithText(f, p, u"AMPM");
      if (c == u'H' || c == u'h') return false;
    }
    return false;
  }

  // Writes the marker at f[i]; returns the position after it.
  size_t AmPm(std::u16string_view f, size_t i) {
    const bool pm = hour_ >= 12;
    if (StartsWithText(f, i, u"AM/PM")) {
      out_.append(f.substr(pm ? i + 3 : i, 2));  // keeps the case of the pattern
      return i + 5;
    }
    if (StartsWithText(f, i, u"A/P")) {
      out_ += f[pm ? i + 2 : i];
      return i + 3;
    }
    if (StartsWithText(f, i, u"AMPM")) {
      Text(pm ? fs_.TimePMString : fs_.TimeAMString);
      return i + 4;
    }
    if (StartsWithText(f, i, u"AAAA")) {
      Text(fs_.LongDayNames[dayOfWeek_]);
      return i + 4;
    }
    if (StartsWithText(f, i, u"AAA")) {
      Text(fs_.ShortDayNames[dayOfWeek_]);
      return i + 3;
    }
    out_ += f[i];
    return i + 1;
  }

  const TFormatSettings& fs_;
  int year_, month_, day_, hour_, min_, sec_, msec_, dayOfWeek_;
  std::u16string out_;
};

}  // namespace

String FormatDateTime(const String& format, TDateTime dt) { return FormatDateTime(format, dt, FormatSettings); }

String FormatDateTime(const String& format, TDateTime dt, const TFormatSettings& settings) {
  DateTimeWriter w(dt, settings);
  w.Write(format.view(), 0);
  return w.Result();
}

String DateToStr(TDateTime dt) { return FormatDateTime(u"ddddd", dt); }
String TimeToStr(TDateTime dt) { return FormatDateTime(u"tt", dt); }
String DateTimeToStr(TDateTime dt) { return FormatDateTime(u"c", dt); }

// ---- Reading dates and times -------------------------------------------------

namespace {

// A cursor over the text being read, with the scanning steps of the
// historical date reader.
class DateTimeScanner {
 public:
  DateTimeScanner(std::u16string_view s, const TFormatSettings& settings) : s_(s), fs_(settings) {}

  bool AtEnd() const { return pos_ >= s_.size(); }

  void Blanks() {
    while (pos_ < s_.size() && (s_[pos_] == u' ' || s_[pos_] == u'\t')) ++pos_;
  }

  bool Char(char16_t c) {
    Blanks();
    if (pos_ < s_.size() && s_[pos_] == c) {
      ++pos_;
      return true;
    }
    return false;
  }

  bool Text(std::u16string_view what) {
    Blanks();
    if (what.empty() || !StartsWithText(s_, pos_, what)) return false;
    pos_ += what.size();
    return true;
  }

  // Up to nine digits; `digits` gets how many there were.
  bool Number(int& value, int& digits) {
    Blanks();
    int v = 0;
    digits = 0;
    while (pos_ < s_.size() && s_[pos_] >= u'0' && s_[pos_] <= u'9') {
      if (digits == 9) return false;
      v = v * 10 + (s_[pos_++] - u'0');
      ++digits;
    }
    if (digits == 0) return false;
    value = v;
    return true;
  }

  bool Date(TDateTime& value) {
    enum { doMDY, doDMY, doYMD } order = doMDY;
    for (char16_t c : fs_.ShortDateFormat.view()) {
      const char16_t u = Upper(c);
      if (u == u'Y' || u == u'E') order = doYMD;
      else if (u == u'M') order = doMDY;
      else if (u == u'D') order = doDMY;
      else continue;
      break;
    }
    int n1, n2, n3, l1, l2, l3;
    if (!(Number(n1, l1) && Char(fs_.DateSeparator) && Number(n2, l2))) return false;
    int y, m, d;
    if (Char(fs_.DateSeparator)) {
      if (!Number(n3, l3)) return false;
      int yearDigits;
      switch (order) {
        case doMDY: y = n3, yearDigits = l3, m = n1, d = n2; break;
        case doDMY: y = n3, yearDigits = l3, m = n2, d = n1; break;
        default: y = n1, yearDigits = l1, m = n2, d = n3; break;
      }
      if (y <= 99 && yearDigits <= 2) y = WindowYear(y);
    } else {
      y = CurrentYear();
      if (order == doDMY) d = n1, m = n2;
      else m = n1, d = n2;
    }
    Char(fs_.DateSeparator);  // a trailing separator is allowed
    Blanks();
    return TryEncodeDate(y, m, d, value);
  }

  bool Time(TDateTime& value) {
    int baseHour = AmPm();
    int hour, min = 0, sec = 0, msec = 0, digits;
    if (!Number(hour, digits)) return false;
    if (Char(fs_.TimeSeparator)) {
      if (!Number(min, digits)) return false;
      if (Char(fs_.TimeSeparator)) {
        if (!Number(sec, digits)) return false;
        if (Char(fs_.DecimalSeparator) && !Fraction(msec)) return false;
      }
    }
    if (baseHour < 0) baseHour = AmPm();
    if (baseHour >= 0) {
      if (hour == 0 || hour > 12) return false;
      if (hour == 12) hour = 0;
      hour += baseHour;
    }
    Blanks();
    return TryEncodeTime(hour, min, sec, msec, value);
  }

 private:
  // 0 after an AM marker, 12 after a PM marker, -1 when there is none.
  int AmPm() {
    if (Text(fs_.TimeAMString.view()) || Text(u"AM")) return 0;
    if (Text(fs_.TimePMString.view()) || Text(u"PM")) return 12;
    return -1;
  }

  // Fractions of a second as digits after the separator: ".5" is 500 ms.
  bool Fraction(int& msec) {
    int scale = 100, digits = 0;
    msec = 0;
    while (pos_ < s_.size() && s_[pos_] >= u'0' && s_[pos_] <= u'9') {
      if (scale > 0) msec += (s_[pos_] - u'0') * scale;
      scale /= 10;
      ++pos_;
      ++digits;
    }
    return digits > 0;
  }

  int WindowYear(int y) const {
    const int centuryBase = CurrentYear() - fs_.TwoDigitYearCenturyWindow;
    y += centuryBase / 100 * 100;
    if (fs_.TwoDigitYearCenturyWindow > 0 && y < centuryBase) y += 100;
    return y;
  }

  std::u16string_view s_;
  const TFormatSettings& fs_;
  size_t pos_ = 0;
};

[[noreturn]] void RaiseNotValid(const String& s, const char16_t* what) {
  throw EConvertError(u"'" + s + u"' is not a valid " + what);
}

}  // namespace

bool TryStrToDate(const String& s, TDateTime& value) { return TryStrToDate(s, value, FormatSettings); }
bool TryStrToTime(const String& s, TDateTime& value) { return TryStrToTime(s, value, FormatSettings); }
bool TryStrToDateTime(const String& s, TDateTime& value) { return TryStrToDateTime(s, value, FormatSettings); }

bool TryStrToDate(const String& s, TDateTime& value, const TFormatSettings& settings) {
  DateTimeScanner scan(s.view(), settings);
  TDateTime d;
  if (!scan.Date(d) || !scan.AtEnd()) return false;
  value = d;
  return true;
}

bool TryStrToTime(const String& s, TDateTime& value, const TFormatSettings& settings) {
  DateTimeScanner scan(s.view(), settings);
  TDateTime t;
  if (!scan.Time(t) || !scan.AtEnd()) return false;
  value = t;
  return true;
}

bool TryStrToDateTime(const String& s, TDateTime& value, const TFormatSettings& settings) {
  DateTimeScanner scan(s.view(), settings);
  TDateTime d, t;
  if (scan.Date(d) && (scan.AtEnd() || (scan.Time(t) && scan.AtEnd()))) {
    value = Compose(d, t);
    return true;
  }
  return TryStrToTime(s, value, settings);
}

TDateTime StrToDate(const String& s) {
  TDateTime v;
  if (!TryStrToDate(s, v)) RaiseNotValid(s, u"date");
  return v;
}

TDateTime StrToTime(const String& s) {
  TDateTime v;
  if (!TryStrToTime(s, v)) RaiseNotValid(s, u"time");
  return v;
}

TDateTime StrToDateTime(const String& s) {
  TDateTime v;
  if (!TryStrToDateTime(s, v)) RaiseNotValid(s, u"date and time");
  return v;
}

TDateTime StrToDateDef(const String& s, TDateTime def) {
  TDateTime v;
  return TryStrToDate(s, v) ? v : def;
}

TDateTime StrToDateTimeDef(const String& s, TDateTime def) {
  TDateTime v;
  return TryStrToDateTime(s, v) ? v : def;
}

// ---- ISO text --------------------------------------------------------------

String DateToISO(TDateTime dt) {
  int y, m, d;
  DecodeDate(dt, y, m, d);
  char buf[32];
  std::snprintf(buf, sizeof buf, "%04d-%02d-%02d", y, m, d);
  return String(buf);
}

String DateTimeToISO(TDateTime dt) {
  int y, m, d, h, n, s, z;
  DecodeDateTime(dt, y, m, d, h, n, s, z);
  char buf[48];
  if (z) std::snprintf(buf, sizeof buf, "%04d-%02d-%02d %02d:%02d:%02d.%03d", y, m, d, h, n, s, z);
  else std::snprintf(buf, sizeof buf, "%04d-%02d-%02d %02d:%02d:%02d", y, m, d, h, n, s);
  return String(buf);
}

namespace {

// Exactly `count` digits at `pos`.
bool FixedDigits(std::u16string_view s, size_t& pos, size_t count, int& value) {
  if (pos + count > s.size()) return false;
  value = 0;
  for (size_t i = 0; i < count; ++i) {
    const char16_t c = s[pos + i];
    if (c < u'0' || c > u'9') return false;
    value = value * 10 + (c - u'0');
  }
  pos += count;
  return true;
}

bool Expect(std::u16string_view s, size_t& pos, char16_t c) {
  if (pos >= s.size() || s[pos] != c) return false;
  ++pos;
  return true;
}

// "hh:nn[:ss[.fff...]]" up to the end of the text.
bool IsoTime(std::u16string_view s, size_t pos, TDateTime& value) {
  int h, n, sec = 0, ms = 0;
  if (!FixedDigits(s, pos, 2, h) || !Expect(s, pos, u':') || !FixedDigits(s, pos, 2, n)) return false;
  if (Expect(s, pos, u':')) {
    if (!FixedDigits(s, pos, 2, sec)) return false;
    if (Expect(s, pos, u'.')) {
      int scale = 100;
      size_t digits = 0;
      while (pos < s.size() && s[pos] >= u'0' && s[pos] <= u'9') {
        ms += (s[pos++] - u'0') * scale;
        scale /= 10;
        ++digits;
      }
      if (digits == 0) return false;
    }
  }
  return pos == s.size() && TryEncodeTime(h, n, sec, ms, value);
}

}  // namespace

bool TryISOToDateTime(const String& text, TDateTime& value) {
  const String trimmed = Trim(text);
  std::u16string_view s = trimmed.view();
  size_t pos = 0;
  int y, m, d;
  if (!(FixedDigits(s, pos, 4, y) && Expect(s, pos, u'-') && FixedDigits(s, pos, 2, m) && Expect(s, pos, u'-') &&
        FixedDigits(s, pos, 2, d)))
    return IsoTime(s, 0, value);
  TDateTime date, time;
  if (!TryEncodeDate(y, m, d, date)) return false;
  if (pos < s.size()) {
    if (s[pos] != u' ' && s[pos] != u'T') return false;
    if (!IsoTime(s, pos + 1, time)) return false;
  }
  value = Compose(date, time);
  return true;
}

TDateTime ISOToDateTime(const String& s) {
  TDateTime v;
  if (!TryISOToDateTime(s, v)) RaiseNotValid(s, u"date and time");
  return v;
}
