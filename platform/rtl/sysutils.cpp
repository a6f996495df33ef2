#include "platform/rtl/sysutils.h"

#include <unicode/uchar.h>
#include <unicode/ucnv.h>
#include <unicode/utf16.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>

TFormatSettings FormatSettings;

// ---- Text ------------------------------------------------------------------

int Pos(const String& sub, const String& s) { return PosEx(sub, s, 1); }

int PosEx(const String& sub, const String& s, int offset) {
  if (sub.IsEmpty() || offset < 1 || offset > s.Length()) return 0;
  size_t at = s.view().find(sub.view(), static_cast<size_t>(offset - 1));
  return at == std::u16string_view::npos ? 0 : static_cast<int>(at) + 1;
}

String Copy(const String& s, int index, int count) { return s.SubString(index, count); }

String TrimLeft(const String& s) {
  std::u16string_view v = s.view();
  size_t b = 0;
  while (b < v.size() && v[b] <= u' ') ++b;
  return String(v.substr(b));
}

String TrimRight(const String& s) {
  std::u16string_view v = s.view();
  size_t e = v.size();
  while (e > 0 && v[e - 1] <= u' ') --e;
  return String(v.substr(0, e));
}

String Trim(const String& s) {
  std::u16string_view v = s.view();
  size_t b = 0, e = v.size();
  while (b < e && v[b] <= u' ') ++b;
  while (e > b && v[e - 1] <= u' ') --e;
  return String(v.substr(b, e - b));
}

namespace {

// Simple (one to one) case mapping by code point, as the platform's own
// upper-casing does: lengths never change, so positions stay valid.
template <class Map>
String MapCase(const String& s, Map map) {
  std::u16string out(s.u16());
  const int32_t n = static_cast<int32_t>(out.size());
  for (int32_t i = 0; i < n;) {
    char16_t u = out[static_cast<size_t>(i)];
    if (u < 0x80) {
      out[static_cast<size_t>(i)] = static_cast<char16_t>(map(u));
      ++i;
      continue;
    }
    int32_t start = i;
    UChar32 c;
    U16_NEXT(out.data(), i, n, c);
    UChar32 m = map(c);
    if (U16_LENGTH(m) == i - start) {
      int32_t at = start;
      U16_APPEND_UNSAFE(out.data(), at, m);
    }
  }
  return String(std::move(out));
}

inline char16_t AsciiUpper(char16_t c) { return c >= u'a' && c <= u'z' ? static_cast<char16_t>(c - 32) : c; }

inline UChar32 Fold(UChar32 c) {
  if (c < 0x80) return AsciiUpper(static_cast<char16_t>(c));
  return u_toupper(u_tolower(c));
}

}  // namespace

String UpperCase(const String& s) { return MapCase(s, [](UChar32 c) { return u_toupper(c); }); }
String LowerCase(const String& s) { return MapCase(s, [](UChar32 c) { return u_tolower(c); }); }
WideChar UpCase(WideChar c) {
  UChar32 m = u_toupper(c);
  return m <= 0xFFFF ? static_cast<WideChar>(m) : c;
}

int CompareText(const String& a, const String& b) {
  std::u16string_view x = a.view(), y = b.view();
  const size_t n = std::min(x.size(), y.size());
  for (size_t i = 0; i < n; ++i) {
    UChar32 cx = Fold(x[i]), cy = Fold(y[i]);
    if (cx != cy) return cx < cy ? -1 : 1;
  }
  if (x.size() == y.size()) return 0;
  return x.size() < y.size() ? -1 : 1;
}

bool SameText(const String& a, const String& b) { return a.Length() == b.Length() && CompareText(a, b) == 0; }

int CompareStr(const String& a, const String& b) {
  int r = a.view().compare(b.view());
  return r < 0 ? -1 : r > 0 ? 1 : 0;
}

bool SameStr(const String& a, const String& b) { return a == b; }

String StringReplace(const String& s, const String& oldPattern, const String& newPattern, TReplaceFlags flags) {
  if (oldPattern.IsEmpty()) return s;
  const bool ignoreCase = flags.Contains(rfIgnoreCase);
  // Simple case mapping keeps lengths, so positions found in the upper-cased
  // copy are positions in the original.
  const String hay = ignoreCase ? UpperCase(s) : s;
  const String needle = ignoreCase ? UpperCase(oldPattern) : oldPattern;
  std::u16string out;
  size_t from = 0;
  std::u16string_view src = s.view();
  while (true) {
    size_t at = hay.view().find(needle.view(), from);
    if (at == std::u16string_view::npos) break;
    out.append(src.substr(from, at - from));
    out.append(newPattern.view());
    from = at + needle.view().size();
    if (!flags.Contains(rfReplaceAll)) break;
  }
  out.append(src.substr(from));
  return String(std::move(out));
}

String QuotedStr(const String& s, WideChar quote) {
  std::u16string out;
  out.reserve(s.view().size() + 2);
  out += quote;
  for (char16_t c : s.view()) {
    out += c;
    if (c == quote) out += quote;
  }
  out += quote;
  return String(std::move(out));
}

String AnsiDequotedStr(const String& s, WideChar quote) {
  std::u16string_view v = s.view();
  if (v.size() < 1 || v[0] != quote) return s;
  std::u16string out;
  size_t i = 1;
  while (i < v.size()) {
    if (v[i] == quote) {
      if (i + 1 < v.size() && v[i + 1] == quote) {
        out += quote;
        i += 2;
        continue;
      }
      return String(std::move(out));
    }
    out += v[i++];
  }
  return s;  // no closing quote: not a quoted text
}

String StringOfChar(WideChar c, int count) { return String(count, c); }

int LastDelimiter(const String& delimiters, const String& s) {
  size_t at = s.view().find_last_of(delimiters.view());
  return at == std::u16string_view::npos ? 0 : static_cast<int>(at) + 1;
}

bool IsDelimiter(const String& delimiters, const String& s, int index) {
  if (index < 1 || index > s.Length()) return false;
  return delimiters.view().find(s.view()[static_cast<size_t>(index - 1)]) != std::u16string_view::npos;
}

namespace {
const String kPathDelimiters = u"/\\";
}

String IncludeTrailingPathDelimiter(const String& path) {
  if (!path.IsEmpty() && IsDelimiter(kPathDelimiters, path, path.Length())) return path;
  return path + u"/";
}

String ExtractFileName(const String& path) { return path.SubString(LastDelimiter(kPathDelimiters, path) + 1, path.Length()); }

String ExtractFilePath(const String& path) { return path.SubString(1, LastDelimiter(kPathDelimiters, path)); }

String ExtractFileExt(const String& path) {
  int dot = LastDelimiter(u"./\\", path);
  if (dot > 0 && path[dot] == u'.') return path.SubString(dot, path.Length());
  return String();
}

String ChangeFileExt(const String& path, const String& ext) {
  int dot = LastDelimiter(u"./\\", path);
  if (dot == 0 || path[dot] != u'.') dot = path.Length() + 1;
  return path.SubString(1, dot - 1) + ext;
}

// ---- Numbers ---------------------------------------------------------------

String IntToStr(int value) { return IntToStr(static_cast<int64_t>(value)); }
String IntToStr(int64_t value) { return String(std::to_string(value)); }
String UIntToStr(uint64_t value) { return String(std::to_string(value)); }

String IntToHex(int64_t value, int digits) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%0*llX", digits < 0 ? 0 : digits > 16 ? 16 : digits,
                static_cast<unsigned long long>(value));
  return String(buf);
}

namespace {

// The integer reader behind StrToInt: blanks before, a sign, decimal digits
// or hexadecimal after "$"/"0x", nothing after.
bool ParseInt64(const String& s, int64_t& value, bool int32) {
  std::u16string_view v = s.view();
  size_t i = 0;
  while (i < v.size() && (v[i] == u' ' || v[i] == u'\t')) ++i;
  bool negative = false;
  if (i < v.size() && (v[i] == u'-' || v[i] == u'+')) negative = v[i++] == u'-';
  unsigned base = 10;
  if (i < v.size() && v[i] == u'$') {
    base = 16;
    ++i;
  } else if (i + 1 < v.size() && v[i] == u'0' && (v[i + 1] == u'x' || v[i + 1] == u'X')) {
    base = 16;
    i += 2;
  }
  if (i >= v.size()) return false;
  uint64_t acc = 0;
  for (; i < v.size(); ++i) {
    char16_t c = v[i];
    unsigned d;
    if (c >= u'0' && c <= u'9') d = c - u'0';
    else if (base == 16 && c >= u'a' && c <= u'f') d = c - u'a' + 10;
    else if (base == 16 && c >= u'A' && c <= u'F') d = c - u'A' + 10;
    else return false;
    if (acc > (UINT64_MAX - d) / base) return false;
    acc = acc * base + d;
  }
  // Hexadecimal may fill the whole unsigned width ("$FFFFFFFF" is -1).
  const uint64_t hexMax = int32 ? UINT32_MAX : UINT64_MAX;
  const uint64_t posMax = int32 ? INT32_MAX : INT64_MAX;
  if (base == 16 && acc > posMax) {
    if (acc > hexMax) return false;
    int64_t wrapped = int32 ? static_cast<int32_t>(static_cast<uint32_t>(acc)) : static_cast<int64_t>(acc);
    value = negative ? static_cast<int64_t>(0 - static_cast<uint64_t>(wrapped)) : wrapped;
    return true;
  }
  if (acc > posMax + (negative ? 1 : 0)) return false;
  value = negative ? static_cast<int64_t>(0 - acc) : static_cast<int64_t>(acc);
  return true;
}

[[noreturn]] void RaiseNotInteger(const String& s) { throw EConvertError(u"'" + s + u"' is not a valid integer value"); }

}  // namespace

bool TryStrToInt(const String& s, int& value) {
  int64_t v;
  if (!ParseInt64(s, v, true)) return false;
  value = static_cast<int>(v);
  return true;
}

int StrToInt(const String& s) {
  int v;
  if (!TryStrToInt(s, v)) RaiseNotInteger(s);
  return v;
}

int StrToIntDef(const String& s, int def) {
  int v;
  return TryStrToInt(s, v) ? v : def;
}

bool TryStrToInt64(const String& s, int64_t& value) { return ParseInt64(s, value, false); }

int64_t StrToInt64(const String& s) {
  int64_t v;
  if (!TryStrToInt64(s, v)) RaiseNotInteger(s);
  return v;
}

int64_t StrToInt64Def(const String& s, int64_t def) {
  int64_t v;
  return TryStrToInt64(s, v) ? v : def;
}

bool TryStrToFloat(const String& s, double& value) { return TryStrToFloat(s, value, FormatSettings); }

bool TryStrToFloat(const String& s, double& value, const TFormatSettings& settings) {
  std::u16string_view v = s.view();
  size_t b = 0, e = v.size();
  while (b < e && v[b] == u' ') ++b;
  while (e > b && v[e - 1] == u' ') --e;
  std::string ascii;
  ascii.reserve(e - b);
  size_t i = b;
  if (i < e && (v[i] == u'+' || v[i] == u'-')) ascii += static_cast<char>(v[i++]);
  size_t digits = 0;
  while (i < e && v[i] >= u'0' && v[i] <= u'9') ascii += static_cast<char>(v[i++]), ++digits;
  if (i < e && v[i] == settings.DecimalSeparator) {
    ascii += '.';
    ++i;
    while (i < e && v[i] >= u'0' && v[i] <= u'9') ascii += static_cast<char>(v[i++]), ++digits;
  }
  if (digits == 0) return false;
  if (i < e && (v[i] == u'e' || v[i] == u'E')) {
    ascii += 'e';
    ++i;
    if (i < e && (v[i] == u'+' || v[i] == u'-')) ascii += static_cast<char>(v[i++]);
    size_t expDigits = 0;
    while (i < e && v[i] >= u'0' && v[i] <= u'9') ascii += static_cast<char>(v[i++]), ++expDigits;
    if (expDigits == 0) return false;
  }
  if (i != e) return false;
  const char* first = ascii.data();
  if (*first == '+') ++first;
  double result = 0;
  auto [ptr, ec] = std::from_chars(first, ascii.data() + ascii.size(), result);
  if (ec != std::errc() || ptr != ascii.data() + ascii.size() || !std::isfinite(result)) return false;
  value = result;
  return true;
}

double StrToFloat(const String& s) {
  double v;
  if (!TryStrToFloat(s, v)) throw EConvertError(u"'" + s + u"' is not a valid floating point value");
  return v;
}

double StrToFloatDef(const String& s, double def) {
  double v;
  return TryStrToFloat(s, v) ? v : def;
}

namespace {

// Exact decimal expansion with 40 significant digits; far more than a double
// holds, so a tie found here is a true tie of the binary value.
TFloatRec ExactDigits(double value) {
  TFloatRec rec;
  if (std::isnan(value) || std::isinf(value)) {
    rec.Special = true;
    rec.Negative = std::signbit(value) && !std::isnan(value);
    rec.Digits = std::isnan(value) ? "NAN" : "INF";
    return rec;
  }
  if (value == 0) return rec;  // never a negative zero
  rec.Negative = std::signbit(value);
  char buf[80];
  std::snprintf(buf, sizeof buf, "%.40e", std::fabs(value));
  // d.dddd...e+XX
  std::string digits;
  const char* p = buf;
  for (; *p && *p != 'e'; ++p)
    if (*p >= '0' && *p <= '9') digits += *p;
  int exp10 = std::atoi(p + 1);
  rec.Digits = digits;
  rec.Exponent = exp10 + 1;
  return rec;
}

// Keeps `keep` leading digits, rounding half away from zero.
void RoundDigits(TFloatRec& rec, int keep) {
  if (rec.Special) return;
  if (keep < 0) {
    rec.Digits.clear();
  } else if (static_cast<size_t>(keep) < rec.Digits.size()) {
    bool up = rec.Digits[static_cast<size_t>(keep)] >= '5';
    rec.Digits.resize(static_cast<size_t>(keep));
    if (up) {
      int i = keep - 1;
      while (i >= 0 && rec.Digits[static_cast<size_t>(i)] == '9') rec.Digits[static_cast<size_t>(i--)] = '0';
      if (i >= 0) {
        ++rec.Digits[static_cast<size_t>(i)];
      } else {
        rec.Digits.insert(rec.Digits.begin(), '1');
        ++rec.Exponent;
      }
    }
  }
  while (!rec.Digits.empty() && rec.Digits.back() == '0') rec.Digits.pop_back();
  if (rec.Digits.empty()) {
    rec.Negative = false;
    rec.Exponent = 0;
  }
}

}  // namespace

TFloatRec FloatToDecimal(double value, int precision) {
  TFloatRec rec = ExactDigits(value);
  RoundDigits(rec, precision);
  return rec;
}

TFloatRec FloatToDecimalFixed(double value, int decimals) {
  TFloatRec rec = ExactDigits(value);
  if (!rec.Digits.empty()) {
    // A digit exactly at the rounding position counts (0.5 at no decimals).
    int keep = rec.Exponent + decimals;
    if (keep < 0) {
      rec.Digits.clear();
      RoundDigits(rec, 0);
    } else if (keep == 0) {
      bool up = rec.Digits[0] >= '5';
      rec.Digits = up ? "1" : "";
      if (up) ++rec.Exponent;
      RoundDigits(rec, 1);
    } else {
      RoundDigits(rec, keep);
    }
  }
  return rec;
}

namespace {

String SpecialText(const TFloatRec& rec) { return String(rec.Negative ? "-" + rec.Digits : rec.Digits); }

// Digits in fixed notation with exactly `decimals` decimals (-1: as many as
// there are) and optional thousand grouping.
std::u16string FixedText(const TFloatRec& rec, int decimals, WideChar decimalSep, WideChar thousandSep) {
  std::u16string intPart, frac;
  const int n = static_cast<int>(rec.Digits.size());
  if (rec.Exponent <= 0) {
    intPart = u"0";
  } else {
    for (int i = 0; i < rec.Exponent; ++i) intPart += static_cast<char16_t>(i < n ? rec.Digits[static_cast<size_t>(i)] : '0');
  }
  for (int i = rec.Exponent < 0 ? rec.Exponent : 0; i < 0; ++i) frac += u'0';
  for (int i = std::max(rec.Exponent, 0); i < n; ++i) frac += static_cast<char16_t>(rec.Digits[static_cast<size_t>(i)]);
  if (decimals >= 0) {
    if (static_cast<int>(frac.size()) > decimals) frac.resize(static_cast<size_t>(decimals));
    while (static_cast<int>(frac.size()) < decimals) frac += u'0';
  }
  if (thousandSep) {
    std::u16string grouped;
    const int len = static_cast<int>(intPart.size());
    for (int i = 0; i < len; ++i) {
      if (i > 0 && (len - i) % 3 == 0) grouped += thousandSep;
      grouped += intPart[static_cast<size_t>(i)];
    }
    intPart = grouped;
  }
  std::u16string out = rec.Negative ? u"-" : u"";
  out += intPart;
  if (!frac.empty()) {
    out += decimalSep;
    out += frac;
  }
  return out;
}

std::u16string ExponentText(const TFloatRec& rec, int mantissaDigits, int minExpDigits, bool plusSign,
                            WideChar decimalSep) {
  std::u16string out = rec.Negative ? u"-" : u"";
  std::string d = rec.Digits.empty() ? "0" : rec.Digits;
  if (mantissaDigits > 0) {
    while (static_cast<int>(d.size()) < mantissaDigits) d += '0';
  }
  out += static_cast<char16_t>(d[0]);
  if (d.size() > 1) {
    out += decimalSep;
    for (size_t i = 1; i < d.size(); ++i) out += static_cast<char16_t>(d[i]);
  }
  int e = rec.Digits.empty() ? 0 : rec.Exponent - 1;
  out += u'E';
  if (e < 0) out += u'-';
  else if (plusSign) out += u'+';
  std::string digits = std::to_string(e < 0 ? -e : e);
  while (static_cast<int>(digits.size()) < minExpDigits) digits.insert(digits.begin(), '0');
  for (char c : digits) out += static_cast<char16_t>(c);
  return out;
}

}  // namespace

String FloatToStr(double value) { return FloatToStr(value, FormatSettings); }

String FloatToStr(double value, const TFormatSettings& settings) {
  return FloatToStrF(value, ffGeneral, 15, 0, settings);
}

String FloatToStrF(double value, TFloatFormat format, int precision, int digits) {
  return FloatToStrF(value, format, precision, digits, FormatSettings);
}

String FloatToStrF(double value, TFloatFormat format, int precision, int digits, const TFormatSettings& settings) {
  if (precision < 1) precision = 1;
  if (precision > 18) precision = 18;
  TFloatRec rec = FloatToDecimal(value, precision);
  if (rec.Special) return SpecialText(rec);
  switch (format) {
    case ffGeneral:
      if (rec.Digits.empty()) return u"0";
      if (rec.Exponent > precision || rec.Exponent < -3)
        return String(ExponentText(rec, 0, digits, false, settings.DecimalSeparator));
      return String(FixedText(rec, -1, settings.DecimalSeparator, 0));
    case ffExponent:
      return String(ExponentText(rec, precision, digits, true, settings.DecimalSeparator));
    case ffFixed:
    case ffNumber:
    case ffCurrency: {
      if (rec.Exponent > precision)
        return String(ExponentText(rec, 0, 0, false, settings.DecimalSeparator));
      if (digits < 0) digits = 0;
      if (digits > 18) digits = 18;
      TFloatRec fixed = FloatToDecimalFixed(value, digits);
      if (static_cast<int>(fixed.Digits.size()) > precision) fixed = rec;
      WideChar sep = format == ffFixed ? 0 : settings.ThousandSeparator;
      if (format != ffCurrency) return String(FixedText(fixed, digits, settings.DecimalSeparator, sep));
      bool negative = fixed.Negative;
      fixed.Negative = false;
      String number(FixedText(fixed, digits, settings.DecimalSeparator, sep));
      return (negative ? u"-" : u"") + settings.CurrencyString + number;
    }
  }
  return u"0";
}

bool TryStrToBool(const String& s, bool& value) {
  if (SameText(s, u"True")) return value = true, true;
  if (SameText(s, u"False")) return value = false, true;
  double d;
  if (TryStrToFloat(s, d)) return value = d != 0, true;
  return false;
}

bool StrToBool(const String& s) {
  bool v;
  if (!TryStrToBool(s, v)) throw EConvertError(u"'" + s + u"' is not a valid boolean value");
  return v;
}

String BoolToStr(bool value, bool useBoolStrs) {
  if (useBoolStrs) return value ? u"True" : u"False";
  return value ? u"-1" : u"0";
}

// ---- Code pages ------------------------------------------------------------

namespace {

int g_systemCodePage = 65001;

const char* ConverterName(int codePage) {
  switch (codePage) {
    case 65001: return "UTF-8";
    case 1250: return "windows-1250";
    case 1251: return "windows-1251";
    case 1252: return "windows-1252";
    case 1253: return "windows-1253";
    case 1254: return "windows-1254";
    case 1255: return "windows-1255";
    case 1256: return "windows-1256";
    case 1257: return "windows-1257";
    case 1258: return "windows-1258";
    case 866: return "ibm-866";
    case 20866: return "KOI8-R";
    case 21866: return "KOI8-U";
    case 28591: return "ISO-8859-1";
    case 28592: return "ISO-8859-2";
    case 28595: return "ISO-8859-5";
    case 20127: return "US-ASCII";
    default: return nullptr;
  }
}

struct ConverterCloser {
  void operator()(UConverter* c) const { ucnv_close(c); }
};
using Converter = std::unique_ptr<UConverter, ConverterCloser>;

Converter OpenConverter(int codePage) {
  const char* name = ConverterName(codePage);
  if (!name) throw EEncodingError(u"No mapping for the Unicode character exists in the target multi-byte code page " + IntToStr(codePage));
  UErrorCode err = U_ZERO_ERROR;
  Converter conv(ucnv_open(name, &err));
  if (U_FAILURE(err)) throw EEncodingError(u"Code page " + IntToStr(codePage) + u" is not available");
  err = U_ZERO_ERROR;
  ucnv_setSubstChars(conv.get(), "?", 1, &err);
  return conv;
}

}  // namespace

int SystemCodePage() { return g_systemCodePage; }

void SetSystemCodePage(int codePage) {
  OpenConverter(codePage);  // raises for an unknown page
  g_systemCodePage = codePage;
}

String AnsiToString(std::string_view bytes) { return DecodeCodePage(bytes, g_systemCodePage); }
std::string StringToAnsi(const String& s) { return EncodeCodePage(s, g_systemCodePage); }

String DecodeCodePage(std::string_view bytes, int codePage) {
  if (codePage == 65001) return String::FromUtf8(bytes);
  Converter conv = OpenConverter(codePage);
  std::u16string out(bytes.size() + 1, u'\0');
  UErrorCode err = U_ZERO_ERROR;
  int32_t n = ucnv_toUChars(conv.get(), out.data(), static_cast<int32_t>(out.size()), bytes.data(),
                            static_cast<int32_t>(bytes.size()), &err);
  if (U_FAILURE(err)) throw EEncodingError(u"Cannot decode text in code page " + IntToStr(codePage));
  out.resize(static_cast<size_t>(n));
  return String(std::move(out));
}

std::string EncodeCodePage(const String& s, int codePage) {
  if (codePage == 65001) return s.ToUtf8();
  Converter conv = OpenConverter(codePage);
  UErrorCode err = U_ZERO_ERROR;
  std::string out(static_cast<size_t>(s.Length()) * 4 + 1, '\0');
  int32_t n = ucnv_fromUChars(conv.get(), out.data(), static_cast<int32_t>(out.size()), s.c_str(), s.Length(), &err);
  if (U_FAILURE(err)) throw EEncodingError(u"Cannot encode text in code page " + IntToStr(codePage));
  out.resize(static_cast<size_t>(n));
  return out;
}
