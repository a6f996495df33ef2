#include "drivers/sqlite/oraformat.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "platform/rtl/sysutils.h"

namespace {

constexpr const char* kMonths[12] = {"JANUARY", "FEBRUARY", "MARCH",     "APRIL",   "MAY",      "JUNE",
                                     "JULY",    "AUGUST",   "SEPTEMBER", "OCTOBER", "NOVEMBER", "DECEMBER"};
constexpr const char* kDays[7] = {"SUNDAY", "MONDAY", "TUESDAY", "WEDNESDAY", "THURSDAY", "FRIDAY", "SATURDAY"};

constexpr int kNotMatching = 1861;   // literal does not match format string
constexpr int kBadFormat = 1821;     // date format not recognized
constexpr int kNotNumeric = 1858;    // a non-numeric character was found where a numeric was expected
constexpr int kInputLeft = 1830;     // date format picture ends before converting entire input string

char Up(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsAlnum(char c) { return IsDigit(c) || (Up(c) >= 'A' && Up(c) <= 'Z') || static_cast<unsigned char>(c) >= 0x80; }

// The elements of a date format, longest first so that "MONTH" is not "MON".
constexpr std::string_view kElements[] = {"SYYYY", "YYYY", "RRRR", "MONTH", "HH24", "HH12", "A.M.", "P.M.", "YYY",
                                          "MON",   "DDD",  "DAY",  "YY",    "RR",   "MM",   "DD",   "DY",   "HH",
                                          "MI",    "SS",   "AM",   "PM",    "FM",   "Q",    "D",    "Y"};

// The element of `format` at `at`, or empty for a literal character.
std::string_view ElementAt(std::string_view format, size_t at) {
  for (std::string_view e : kElements) {
    if (format.size() - at < e.size()) continue;
    bool same = true;
    for (size_t i = 0; i < e.size() && same; ++i) same = Up(format[at + i]) == e[i];
    if (same) return e;
  }
  return {};
}

// Reads up to `width` digits (at least one).
bool ReadDigits(std::string_view text, size_t& at, size_t width, int& value) {
  const size_t start = at;
  value = 0;
  while (at < text.size() && at - start < width && IsDigit(text[at])) value = value * 10 + (text[at++] - '0');
  return at > start;
}

bool ReadName(std::string_view text, size_t& at, const char* const* names, int count, bool abbreviated, int& index) {
  for (int n = 0; n < count; ++n) {
    const std::string_view name(names[n]);
    for (size_t length : {name.size(), size_t{3}}) {
      if (abbreviated && length != 3) continue;
      if (text.size() - at < length) continue;
      bool same = true;
      for (size_t i = 0; i < length && same; ++i) same = Up(text[at + i]) == name[i];
      if (same) {
        at += length;
        index = n;
        return true;
      }
    }
  }
  return false;
}

// Upper, lower or capitalised after the case of the element as written.
std::string CaseLike(std::string_view written, std::string_view upper) {
  std::string out(upper);
  const bool lower = !written.empty() && written[0] >= 'a' && written[0] <= 'z';
  const bool capital = !lower && written.size() > 1 && written[1] >= 'a' && written[1] <= 'z';
  for (size_t i = 0; i < out.size(); ++i)
    if ((lower || (capital && i > 0)) && out[i] >= 'A' && out[i] <= 'Z') out[i] = static_cast<char>(out[i] - 'A' + 'a');
  return out;
}

int DateFormat(std::string_view text, std::string_view format, TCivilTime& t) {
  size_t at = 0;
  bool pm = false, meridian = false;
  for (size_t f = 0; f < format.size();) {
    while (at < text.size() && text[at] == ' ' && format[f] != ' ') ++at;
    const std::string_view e = ElementAt(format, f);
    if (e.empty()) {
      const char c = format[f++];
      if (c == '"') {  // quoted literal text
        while (f < format.size() && format[f] != '"') {
          if (at < text.size() && Up(text[at]) == Up(format[f])) ++at;
          ++f;
        }
        ++f;
        continue;
      }
      if (IsAlnum(c)) return kBadFormat;
      if (at < text.size() && !IsAlnum(text[at])) ++at;  // any punctuation matches punctuation
      continue;
    }
    f += e.size();
    if (at >= text.size()) {
      if (e == "FM") continue;
      break;  // missing trailing elements keep their defaults
    }
    int v = 0;
    if (e == "YYYY" || e == "SYYYY" || e == "RRRR") {
      if (!ReadDigits(text, at, 4, v)) return kNotNumeric;
      t.Year = v < 100 && e == "RRRR" ? (v < 50 ? 2000 + v : 1900 + v) : v;
    } else if (e == "YY" || e == "RR") {
      const size_t start = at;
      if (!ReadDigits(text, at, 4, v)) return kNotNumeric;
      t.Year = at - start > 2 ? v : (e == "RR" && v >= 50 ? 1900 + v : 2000 + v);
    } else if (e == "MM") {
      if (!ReadDigits(text, at, 2, t.Month)) return kNotNumeric;
    } else if (e == "MON" || e == "MONTH") {
      if (!ReadName(text, at, kMonths, 12, e == "MON", v)) return 1843;
      t.Month = v + 1;
    } else if (e == "DD") {
      if (!ReadDigits(text, at, 2, t.Day)) return kNotNumeric;
    } else if (e == "HH24" || e == "HH" || e == "HH12") {
      if (!ReadDigits(text, at, 2, t.Hour)) return kNotNumeric;
      if (e != "HH24" && (t.Hour < 1 || t.Hour > 12)) return 1849;
    } else if (e == "MI") {
      if (!ReadDigits(text, at, 2, t.Minute)) return kNotNumeric;
    } else if (e == "SS") {
      if (!ReadDigits(text, at, 2, t.Second)) return kNotNumeric;
    } else if (e == "AM" || e == "PM" || e == "A.M." || e == "P.M.") {
      meridian = true;
      if (text.size() - at < 2) return kNotMatching;
      pm = Up(text[at]) == 'P';
      if ((Up(text[at]) != 'A' && !pm) || Up(text[at + 1]) != (e.size() == 2 ? 'M' : '.')) return kNotMatching;
      at += e.size() == 2 || text.size() - at < 4 ? 2 : 4;
    } else if (e != "FM") {
      return kBadFormat;
    }
  }
  while (at < text.size() && text[at] == ' ') ++at;
  if (at < text.size()) return kInputLeft;
  if (meridian) t.Hour = t.Hour % 12 + (pm ? 12 : 0);
  if (t.Year < 1 || t.Year > 9999) return 1841;
  if (t.Month < 1 || t.Month > 12) return 1843;
  if (t.Day < 1 || t.Day > DaysInMonth(t.Year, t.Month)) return 1847;
  if (t.Hour < 0 || t.Hour > 23) return 1850;
  if (t.Minute < 0 || t.Minute > 59) return 1851;
  if (t.Second < 0 || t.Second > 59) return 1852;
  return 0;
}

void Pad(std::string& out, int value, int width) {
  char text[16];
  std::snprintf(text, sizeof text, "%0*d", width, value);
  out += text;
}

// The decimal digits of |value| rounded to `decimals`: integer and fraction.
void Decimals(double value, int decimals, std::string& whole, std::string& fraction) {
  const TFloatRec rec = FloatToDecimalFixed(std::fabs(DecimalRound(value, decimals, false)), decimals);
  whole.clear();
  fraction.clear();
  const int exponent = rec.Exponent;
  for (int i = 0; i < exponent; ++i) whole += i < static_cast<int>(rec.Digits.size()) ? rec.Digits[i] : '0';
  for (int i = 0; i < decimals; ++i) {
    const int index = exponent + i;
    fraction += index >= 0 && index < static_cast<int>(rec.Digits.size()) ? rec.Digits[index] : '0';
  }
}

}  // namespace

int ParseOraDate(std::string_view text, std::string_view format, TCivilTime& t) {
  t = TCivilTime();
  t.Day = 1;
  if (!format.empty()) return DateFormat(text, format, t);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  if (ParseStoredDate(text, t)) return 0;
  t = TCivilTime();
  return DateFormat(text, "DD.MM.YYYY HH24:MI:SS", t);
}

int FormatOraDate(const TCivilTime& t, std::string_view format, std::string& out) {
  if (format.empty()) format = "DD.MM.YYYY";
  out.clear();
  const int weekday = static_cast<int>(((DaysFromCivil(t.Year, t.Month, t.Day) - 1) % 7 + 7) % 7);  // 0 Sunday
  bool fill = true;  // FM switches off the padding of names
  for (size_t f = 0; f < format.size();) {
    const std::string_view e = ElementAt(format, f);
    const std::string_view written = format.substr(f, e.size());
    if (e.empty()) {
      const char c = format[f++];
      if (c == '"') {
        while (f < format.size() && format[f] != '"') out += format[f++];
        ++f;
      } else if (IsAlnum(c)) {
        return kBadFormat;
      } else {
        out += c;
      }
      continue;
    }
    f += e.size();
    if (e == "YYYY" || e == "SYYYY" || e == "RRRR") Pad(out, t.Year, 4);
    else if (e == "YYY") Pad(out, t.Year % 1000, 3);
    else if (e == "YY" || e == "RR") Pad(out, t.Year % 100, 2);
    else if (e == "Y") Pad(out, t.Year % 10, 1);
    else if (e == "MM") Pad(out, t.Month, 2);
    else if (e == "DD") Pad(out, t.Day, 2);
    else if (e == "DDD") Pad(out, static_cast<int>(DaysFromCivil(t.Year, t.Month, t.Day) - DaysFromCivil(t.Year, 1, 1) + 1), 3);
    else if (e == "D") Pad(out, weekday + 1, 1);
    else if (e == "Q") Pad(out, (t.Month - 1) / 3 + 1, 1);
    else if (e == "HH24") Pad(out, t.Hour, 2);
    else if (e == "HH" || e == "HH12") Pad(out, t.Hour % 12 == 0 ? 12 : t.Hour % 12, 2);
    else if (e == "MI") Pad(out, t.Minute, 2);
    else if (e == "SS") Pad(out, t.Second, 2);
    else if (e == "AM" || e == "PM") out += CaseLike(written, t.Hour < 12 ? "AM" : "PM");
    else if (e == "A.M." || e == "P.M.") out += CaseLike(written, t.Hour < 12 ? "A.M." : "P.M.");
    else if (e == "MON") out += CaseLike(written, std::string_view(kMonths[t.Month - 1]).substr(0, 3));
    else if (e == "DY") out += CaseLike(written, std::string_view(kDays[weekday]).substr(0, 3));
    else if (e == "MONTH" || e == "DAY") {
      std::string name = CaseLike(written, e == "MONTH" ? kMonths[t.Month - 1] : kDays[weekday]);
      if (fill) name.resize(9, ' ');
      out += name;
    } else if (e == "FM") {
      fill = !fill;
    }
  }
  return 0;
}

int FormatOraNumber(double value, std::string_view format, std::string& out) {
  out.clear();
  bool fm = false;
  if (format.size() >= 2 && Up(format[0]) == 'F' && Up(format[1]) == 'M') {
    fm = true;
    format.remove_prefix(2);
  }
  int intPositions = 0, fracPositions = 0, firstZero = -1;
  bool point = false;
  for (size_t i = 0; i < format.size(); ++i) {
    const char c = Up(format[i]);
    if (c == '9' || c == '0') {
      if (point) ++fracPositions;
      else {
        if (c == '0' && firstZero < 0) firstZero = intPositions;
        ++intPositions;
      }
    } else if ((c == '.' || c == 'D') && !point) {
      point = true;
    } else if (!((c == ',' || c == 'G') && !point)) {
      return 1481;  // invalid number format model
    }
  }
  std::string whole, fraction;
  Decimals(value, fracPositions, whole, fraction);
  const bool negative = value < 0 && (whole.find_first_not_of('0') != std::string::npos ||
                                      fraction.find_first_not_of('0') != std::string::npos);
  if (static_cast<int>(whole.size()) > intPositions || !std::isfinite(value)) {
    out.assign(format.size() + 1, '#');
    return 0;
  }
  // Zeros are printed from the first '0' of the mask, or in the last place
  // of a mask without a fraction when the integer part is zero.
  const int digitsFrom = intPositions - static_cast<int>(whole.size());
  int zerosFrom = firstZero >= 0 ? firstZero : intPositions;
  if (whole.empty() && fracPositions == 0 && zerosFrom == intPositions) zerosFrom = intPositions - 1;
  std::string body;
  int position = 0;
  bool started = false;
  for (size_t i = 0; i < format.size(); ++i) {
    const char c = Up(format[i]);
    if (c == '9' || c == '0') {
      if (position < intPositions || !point) {
        if (position >= digitsFrom) body += whole[position - digitsFrom], started = true;
        else if (position >= zerosFrom) body += '0', started = true;
        else body += ' ';
        ++position;
      } else {
        body += fraction[position - intPositions];
        ++position;
      }
    } else if (c == ',' || c == 'G') {
      body += started ? ',' : ' ';
    } else {
      body += '.';
      position = intPositions;
    }
  }
  // The sign stands just before the first printed character.
  const size_t first = body.find_first_not_of(' ');
  const char sign = negative ? '-' : ' ';
  if (first == std::string::npos) body = " " + body + sign;
  else body = body.substr(0, first) + sign + body.substr(first);
  if (body.size() > format.size() + 1) body.erase(0, body.size() - format.size() - 1);
  if (fm) {
    const size_t from = body.find_first_not_of(' ');
    body = from == std::string::npos ? std::string() : body.substr(from);
  }
  out = body;
  return 0;
}

double DecimalRound(double value, int decimals, bool truncate) {
  if (!std::isfinite(value) || value == 0) return value;
  const TFloatRec rec = FloatToDecimal(std::fabs(value), 15);
  std::string digits = rec.Digits;
  int exponent = rec.Exponent;
  const int keep = exponent + decimals;
  if (keep < 0 || (keep == 0 && (truncate || digits.empty() || digits[0] < '5'))) return 0;
  if (keep == 0) {
    digits = "1";
    ++exponent;
  } else if (keep < static_cast<int>(digits.size())) {
    const bool up = !truncate && digits[static_cast<size_t>(keep)] >= '5';
    digits.resize(static_cast<size_t>(keep));
    for (int i = keep - 1; up && i >= 0; --i) {
      if (digits[static_cast<size_t>(i)] < '9') {
        ++digits[static_cast<size_t>(i)];
        break;
      }
      digits[static_cast<size_t>(i)] = '0';
      if (i == 0) {
        digits.insert(digits.begin(), '1');
        ++exponent;
      }
    }
  }
  const std::string text = "0." + digits + "e" + std::to_string(exponent);
  const double result = std::strtod(text.c_str(), nullptr);
  return value < 0 ? -result : result;
}

std::string OraNumberText(double value) {
  if (std::isfinite(value) && value == std::trunc(value) && std::fabs(value) < 1e15) {
    char text[32];
    std::snprintf(text, sizeof text, "%.0f", value);
    return text;
  }
  char text[40];
  std::snprintf(text, sizeof text, "%.15g", value);
  std::string s = text;
  if (s.rfind("0.", 0) == 0) s.erase(0, 1);
  else if (s.rfind("-0.", 0) == 0) s.erase(1, 1);
  return s;
}

bool ParseOraNumber(std::string_view text, TOraNumber& number, bool groups) {
  std::string s;
  bool integer = true;
  size_t i = 0;
  while (i < text.size() && (text[i] == ' ' || text[i] == '\t')) ++i;
  size_t end = text.size();
  while (end > i && (text[end - 1] == ' ' || text[end - 1] == '\t')) --end;
  if (i < end && (text[i] == '+' || text[i] == '-')) s += text[i++];
  bool digits = false, point = false;
  for (; i < end; ++i) {
    const char c = text[i];
    if (IsDigit(c)) {
      s += c;
      digits = true;
    } else if (c == '.' && !point) {
      s += c;
      point = true;
      integer = false;
    } else if (c == ',' && groups && !point) {
      continue;
    } else {
      break;
    }
  }
  if (!digits) return false;
  if (i < end && (text[i] == 'e' || text[i] == 'E')) {
    s += text[i++];
    integer = false;
    if (i < end && (text[i] == '+' || text[i] == '-')) s += text[i++];
    const size_t start = i;
    while (i < end && IsDigit(text[i])) s += text[i++];
    if (i == start) return false;
  }
  if (i != end) return false;
  errno = 0;
  if (integer) {
    const long long v = std::strtoll(s.c_str(), nullptr, 10);
    if (errno == 0) {
      number = {true, v, static_cast<double>(v)};
      return true;
    }
  }
  const double d = std::strtod(s.c_str(), nullptr);
  if (!std::isfinite(d)) return false;
  number = {false, 0, d};
  return true;
}
