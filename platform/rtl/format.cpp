#include "platform/rtl/format.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "platform/rtl/sysutils.h"

// ---- Format ----------------------------------------------------------------------

namespace {

// Widths and precisions beyond this are taken for a broken format rather
// than a request for megabytes of blanks.
constexpr int kMaxWidth = 65535;

[[noreturn]] void RaiseFormat(const String& format, const char16_t* message) {
  // The historical text quotes the format cut at 31 characters.
  throw EConvertError(String(message) + u" '" + format.SubString(1, 31) + u"'");
}

[[noreturn]] void RaiseInvalid(const String& format) {
  throw EConvertError(u"Format '" + format.SubString(1, 31) + u"' invalid or incompatible with argument");
}

String Ascii(const std::string& s) { return String(s); }

// A specifier being expanded: the text of the whole format for messages, the
// arguments and the position in them.
class Formatter {
 public:
  Formatter(const String& format, std::span<const FormatArg> args) : format_(format), args_(args) {}

  String Run() {
    std::u16string_view f = format_.view();
    size_t i = 0;
    while (i < f.size()) {
      const size_t pct = f.find(u'%', i);
      if (pct == std::u16string_view::npos) {
        out_.append(f.substr(i));
        break;
      }
      out_.append(f.substr(i, pct - i));
      i = Specifier(f, pct + 1);
    }
    return String(std::move(out_));
  }

 private:
  struct Directive {
    bool left = false;
    bool zeroPad = false;
    int width = 0;
    int precision = -1;
    char16_t type = 0;
  };

  // Reads the specifier after a '%'; returns the position after it.
  size_t Specifier(std::u16string_view f, size_t i) {
    if (i < f.size() && f[i] == u'%') {
      out_ += u'%';
      return i + 1;
    }
    Directive dir;
    // An index is a number or '*' followed by ':'.
    {
      size_t j = i;
      std::optional<int> n = Number(f, j, false);
      if (n && j < f.size() && f[j] == u':') {
        next_ = *n;
        i = j + 1;
      }
    }
    if (i < f.size() && f[i] == u'-') dir.left = true, ++i;
    if (i < f.size() && f[i] == u'0') dir.zeroPad = true;
    if (std::optional<int> w = Number(f, i, true)) dir.width = *w;
    if (i < f.size() && f[i] == u'.') {
      ++i;
      dir.precision = Number(f, i, true).value_or(0);
    }
    while (i < f.size() && (f[i] == u'l' || f[i] == u'h' || f[i] == u'L')) ++i;
    if (i >= f.size()) RaiseInvalid(format_);
    dir.type = f[i] >= u'A' && f[i] <= u'Z' ? static_cast<char16_t>(f[i] + 32) : f[i];
    Emit(dir);
    return i + 1;
  }

  // Digits or '*' (an integer argument); nothing there gives no value.
  std::optional<int> Number(std::u16string_view f, size_t& i, bool consumeStar) {
    if (i < f.size() && f[i] == u'*') {
      if (!consumeStar) {
        // An index given by '*' is recognised only before ':'.
        if (i + 1 < f.size() && f[i + 1] == u':') {
          ++i;
          return static_cast<int>(StarValue());
        }
        return std::nullopt;
      }
      ++i;
      const int64_t v = StarValue();
      return static_cast<int>(v < 0 ? 0 : v);
    }
    if (i >= f.size() || f[i] < u'0' || f[i] > u'9') return std::nullopt;
    int64_t v = 0;
    while (i < f.size() && f[i] >= u'0' && f[i] <= u'9') {
      v = v * 10 + (f[i++] - u'0');
      if (v > kMaxWidth) RaiseInvalid(format_);
    }
    return static_cast<int>(v);
  }

  int64_t StarValue() {
    const FormatArg& a = Take();
    int64_t v;
    if (a.Kind() == FormatArg::fkInteger || a.Kind() == FormatArg::fkInt64) v = a.Int();
    else if (a.Kind() == FormatArg::fkUInt64 && a.UInt() <= static_cast<uint64_t>(kMaxWidth)) v = static_cast<int64_t>(a.UInt());
    else if (a.Kind() == FormatArg::fkVariant && VarIsOrdinal(a.VariantValue())) v = a.VariantValue().AsInt64();
    else RaiseInvalid(format_);
    if (v > kMaxWidth) RaiseInvalid(format_);
    return v;
  }

  const FormatArg& Take() {
    if (next_ < 0 || static_cast<size_t>(next_) >= args_.size()) RaiseFormat(format_, u"No argument for format");
    return args_[static_cast<size_t>(next_++)];
  }

  void Emit(const Directive& dir) {
    String body;
    bool numeric = true;
    switch (dir.type) {
      case u'd': body = Decimal(Take(), dir.precision); break;
      case u'u': body = Unsigned(Take(), dir.precision, 10); break;
      case u'x': body = Unsigned(Take(), dir.precision, 16); break;
      case u'e':
      case u'f':
      case u'g':
      case u'n':
      case u'm': body = Float(Take(), dir); break;
      case u's': body = Text(Take(), dir.precision), numeric = false; break;
      case u'p': body = PointerText(Take()), numeric = false; break;
      default: RaiseInvalid(format_);
    }
    Pad(body, dir, numeric && dir.zeroPad && !(dir.precision >= 0 && (dir.type == u'd' || dir.type == u'u' || dir.type == u'x')));
  }

  void Pad(const String& body, const Directive& dir, bool zeros) {
    const int fill = dir.width - body.Length();
    if (fill <= 0) {
      out_.append(body.view());
    } else if (dir.left) {
      out_.append(body.view());
      out_.append(static_cast<size_t>(fill), u' ');
    } else if (zeros) {
      std::u16string_view b = body.view();
      const size_t sign = !b.empty() && (b[0] == u'-' || b[0] == u'+') ? 1 : 0;
      out_.append(b.substr(0, sign));
      out_.append(static_cast<size_t>(fill), u'0');
      out_.append(b.substr(sign));
    } else {
      out_.append(static_cast<size_t>(fill), u' ');
      out_.append(body.view());
    }
  }

  // The integer of an argument for d, u and x; `wrap32` tells that it was
  // a 32-bit int, which u and x show as 32 bits.
  bool IntegerOf(const FormatArg& a, int64_t& value, bool& wrap32, bool& isUnsigned) {
    wrap32 = isUnsigned = false;
    switch (a.Kind()) {
      case FormatArg::fkInteger: wrap32 = true; value = a.Int(); return true;
      case FormatArg::fkInt64: value = a.Int(); return true;
      case FormatArg::fkUInt64: isUnsigned = true; value = static_cast<int64_t>(a.UInt()); return true;
      case FormatArg::fkVariant: {
        // Integers, and text that reads as one; a float is as wrong here as
        // a double argument.
        const Variant& v = a.VariantValue();
        wrap32 = VarType(v) == varInteger || VarType(v) == varBoolean;
        if (VarIsOrdinal(v)) return value = v.AsInt64(), true;
        return VarIsStr(v) && TryStrToInt64(v.AsString(), value);
      }
      default: return false;
    }
  }

  static String MinDigits(std::string digits, int precision) {
    if (precision > static_cast<int>(digits.size())) digits.insert(0, static_cast<size_t>(precision) - digits.size(), '0');
    return Ascii(digits);
  }

  String Decimal(const FormatArg& a, int precision) {
    int64_t v;
    bool wrap32, isUnsigned;
    if (!IntegerOf(a, v, wrap32, isUnsigned)) RaiseInvalid(format_);
    if (isUnsigned) return MinDigits(std::to_string(static_cast<uint64_t>(v)), precision);
    const uint64_t magnitude = v < 0 ? 0 - static_cast<uint64_t>(v) : static_cast<uint64_t>(v);
    String digits = MinDigits(std::to_string(magnitude), precision);
    return v < 0 ? u"-" + digits : digits;
  }

  String Unsigned(const FormatArg& a, int precision, int base) {
    int64_t v;
    bool wrap32, isUnsigned;
    if (!IntegerOf(a, v, wrap32, isUnsigned)) RaiseInvalid(format_);
    uint64_t u = static_cast<uint64_t>(v);
    if (wrap32) u &= 0xFFFFFFFFu;
    char buf[24];
    std::snprintf(buf, sizeof buf, base == 16 ? "%llX" : "%llu", static_cast<unsigned long long>(u));
    return MinDigits(buf, precision);
  }

  String Float(const FormatArg& a, const Directive& dir) {
    double v;
    if (a.Kind() == FormatArg::fkFloat) {
      v = a.Float();
    } else if (a.Kind() == FormatArg::fkVariant && !a.VariantValue().IsNull() && !a.VariantValue().IsArray()) {
      try {
        v = a.VariantValue().AsFloat();
      } catch (const EVariantError&) {
        RaiseInvalid(format_);
      }
    } else {
      RaiseInvalid(format_);
    }
    const int p = dir.precision;
    switch (dir.type) {
      case u'e': return FloatToStrF(v, ffExponent, p < 0 ? 15 : p, 3);
      case u'g': return FloatToStrF(v, ffGeneral, p < 0 ? 15 : p, 3);
      case u'f': return FloatToStrF(v, ffFixed, 18, p < 0 ? 2 : p);
      case u'n': return FloatToStrF(v, ffNumber, 18, p < 0 ? 2 : p);
      default: return FloatToStrF(v, ffCurrency, 18, p < 0 ? FormatSettings.CurrencyDecimals : p);
    }
  }

  String Text(const FormatArg& a, int precision) {
    String s;
    if (a.Kind() == FormatArg::fkString || a.Kind() == FormatArg::fkWideText) {
      s = a.Text();
    } else if (a.Kind() == FormatArg::fkVariant && !a.VariantValue().IsArray()) {
      s = VarToStr(a.VariantValue());
    } else {
      RaiseInvalid(format_);
    }
    if (precision >= 0 && precision < s.Length()) s.SetLength(precision);
    return s;
  }

  String PointerText(const FormatArg& a) {
    if (a.Kind() != FormatArg::fkPointer) RaiseInvalid(format_);
    char buf[24];
    std::snprintf(buf, sizeof buf, "%016llX",
                  static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(a.Pointer())));
    return Ascii(buf);
  }

  const String& format_;
  std::span<const FormatArg> args_;
  int next_ = 0;
  std::u16string out_;
};

}  // namespace

String FormatList(const String& format, std::span<const FormatArg> args) { return Formatter(format, args).Run(); }

// ---- FormatFloat -----------------------------------------------------------------

namespace {

// The value being formatted: a double, or a Currency kept exact.
class DecimalValue {
 public:
  explicit DecimalValue(double d) : isCurrency_(false), d_(d + 0.0) {}
  explicit DecimalValue(Currency c) : isCurrency_(true), d_(0), cy_(c) {}

  int Sign() const {
    if (isCurrency_) return cy_.Val < 0 ? -1 : cy_.Val > 0;
    return d_ < 0 ? -1 : d_ > 0;
  }
  bool IsSpecial() const { return !isCurrency_ && !std::isfinite(d_); }
  String General() const { return isCurrency_ ? CurrToStr(cy_) : FloatToStr(d_); }

  // Rounded half away from zero to `decimals` places.
  TFloatRec Fixed(int decimals) const {
    if (!isCurrency_) return FloatToDecimalFixed(d_, decimals);
    TFloatRec rec = CurrencyDigits();
    Round(rec, rec.Exponent + decimals);
    return rec;
  }
  // Rounded to `precision` significant digits.
  TFloatRec Significant(int precision) const {
    if (!isCurrency_) return FloatToDecimal(d_, precision);
    TFloatRec rec = CurrencyDigits();
    Round(rec, precision);
    return rec;
  }

 private:
  TFloatRec CurrencyDigits() const {
    TFloatRec rec;
    rec.Negative = cy_.Val < 0;
    const uint64_t magnitude = rec.Negative ? 0 - static_cast<uint64_t>(cy_.Val) : static_cast<uint64_t>(cy_.Val);
    if (magnitude == 0) return rec;
    rec.Digits = std::to_string(magnitude);
    rec.Exponent = static_cast<int>(rec.Digits.size()) - 4;
    return rec;
  }

  // Keeps `keep` leading digits, rounding half away from zero; trailing
  // zeros go, and a value that rounds away entirely is zero.
  static void Round(TFloatRec& rec, int keep) {
    if (keep < 0) {
      rec.Digits.clear();
    } else if (static_cast<size_t>(keep) < rec.Digits.size()) {
      const bool up = rec.Digits[static_cast<size_t>(keep)] >= '5';
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
    if (rec.Digits.empty()) rec = TFloatRec();
  }

  bool isCurrency_;
  double d_;
  Currency cy_;
};

// What a section of a pattern asks for.
struct SectionLayout {
  int intPlaceholders = 0;  // '0' and '#' left of the point
  int intZeros = 0;         // from the first '0' to the point: digits always shown
  int decPlaceholders = 0;
  int decZeros = 0;         // up to the last '0' right of the point
  bool thousands = false;
  bool scientific = false;
  bool hasPlaceholders = false;
};

bool IsExponentAt(std::u16string_view s, size_t i) {
  return (s[i] == u'E' || s[i] == u'e') && i + 1 < s.size() && (s[i + 1] == u'+' || s[i + 1] == u'-');
}

// Skips a quoted literal starting at s[i]; returns the position after it.
size_t SkipQuoted(std::u16string_view s, size_t i) {
  const size_t end = s.find(s[i], i + 1);
  return end == std::u16string_view::npos ? s.size() : end + 1;
}

SectionLayout Analyze(std::u16string_view s) {
  SectionLayout l;
  bool afterPoint = false;
  int firstZero = -1;
  for (size_t i = 0; i < s.size();) {
    const char16_t c = s[i];
    if (c == u'\'' || c == u'"') {
      i = SkipQuoted(s, i);
      continue;
    }
    if (IsExponentAt(s, i) && !l.scientific) {
      l.scientific = true;
      i += 2;
      while (i < s.size() && s[i] == u'0') ++i;
      continue;
    }
    if (c == u'0' || c == u'#') {
      l.hasPlaceholders = true;
      if (afterPoint) {
        ++l.decPlaceholders;
        if (c == u'0') l.decZeros = l.decPlaceholders;
      } else {
        if (c == u'0' && firstZero < 0) firstZero = l.intPlaceholders;
        ++l.intPlaceholders;
      }
    } else if (c == u'.') {
      afterPoint = true;
      l.hasPlaceholders = true;
    } else if (c == u',' && !afterPoint) {
      l.thousands = true;
    }
    ++i;
  }
  l.intZeros = firstZero < 0 ? 0 : l.intPlaceholders - firstZero;
  return l;
}

// Writes one section with the digits of a rounded value.
class SectionWriter {
 public:
  SectionWriter(const SectionLayout& layout, const TFloatRec& rec, const TFormatSettings& fs)
      : l_(layout), fs_(fs) {
    const int n = static_cast<int>(rec.Digits.size());
    auto digitAt = [&](int k) { return k >= 0 && k < n ? rec.Digits[static_cast<size_t>(k)] : '0'; };
    int intCount;
    if (l_.scientific) {
      intCount = l_.intPlaceholders;
      exponent_ = n == 0 ? 0 : rec.Exponent - intCount;
    } else {
      intCount = std::max(rec.Exponent, 0);
    }
    for (int k = 0; k < intCount; ++k) int_ += digitAt(k);
    if (static_cast<int>(int_.size()) < l_.intZeros) int_.insert(0, static_cast<size_t>(l_.intZeros) - int_.size(), '0');
    const int fracStart = l_.scientific ? intCount : rec.Exponent;
    for (int k = fracStart; k < n; ++k) frac_ += digitAt(k);
    if (static_cast<int>(frac_.size()) > l_.decPlaceholders) frac_.resize(static_cast<size_t>(l_.decPlaceholders));
    while (static_cast<int>(frac_.size()) > l_.decZeros && frac_.back() == '0') frac_.pop_back();
    if (static_cast<int>(frac_.size()) < l_.decZeros) frac_.append(static_cast<size_t>(l_.decZeros) - frac_.size(), '0');
  }

  std::u16string Write(std::u16string_view s) {
    bool afterPoint = false, exponentDone = false;
    int intIndex = 0, decIndex = 0;
    for (size_t i = 0; i < s.size();) {
      const char16_t c = s[i];
      if (c == u'\'' || c == u'"') {
        const size_t end = s.find(c, i + 1);
        const size_t stop = end == std::u16string_view::npos ? s.size() : end;
        out_.append(s.substr(i + 1, stop - i - 1));
        i = stop + 1;
        continue;
      }
      if (IsExponentAt(s, i) && l_.scientific && !exponentDone) {
        if (!afterPoint) FlushInteger();
        i = Exponent(s, i);
        exponentDone = true;
        continue;
      }
      if ((c == u'0' || c == u'#') && !afterPoint) {
        IntegerDigit(intIndex++);
      } else if ((c == u'0' || c == u'#') && afterPoint) {
        if (decIndex < static_cast<int>(frac_.size())) out_ += static_cast<char16_t>(frac_[static_cast<size_t>(decIndex)]);
        ++decIndex;
      } else if (c == u'.') {
        if (!afterPoint) {
          FlushInteger();
          afterPoint = true;
          if (!frac_.empty()) out_ += fs_.DecimalSeparator;
        }
      } else if (c != u',') {
        out_ += c;
      }
      ++i;
    }
    FlushInteger();
    return std::move(out_);
  }

 private:
  // Placeholder `k` of the integer part; the first takes any digits the
  // placeholders have no room for.
  void IntegerDigit(int k) {
    const int len = static_cast<int>(int_.size());
    const int from = k == 0 ? 0 : len - l_.intPlaceholders + k;
    const int to = len - l_.intPlaceholders + k;  // inclusive
    for (int j = std::max(from, 0); j <= to && j < len; ++j) Digit(j);
    if (k == l_.intPlaceholders - 1) intWritten_ = true;
  }

  // Writes what the integer part still holds where the layout has no
  // placeholders for it (a pattern like ".00").
  void FlushInteger() {
    if (intWritten_) return;
    intWritten_ = true;
    if (l_.intPlaceholders == 0)
      for (int j = 0; j < static_cast<int>(int_.size()); ++j) Digit(j);
  }

  void Digit(int j) {
    out_ += static_cast<char16_t>(int_[static_cast<size_t>(j)]);
    const int remaining = static_cast<int>(int_.size()) - 1 - j;
    if (l_.thousands && !l_.scientific && remaining > 0 && remaining % 3 == 0) out_ += fs_.ThousandSeparator;
  }

  size_t Exponent(std::u16string_view s, size_t i) {
    out_ += s[i];
    const bool plus = s[i + 1] == u'+';
    i += 2;
    size_t minDigits = 0;
    while (i < s.size() && s[i] == u'0') ++i, ++minDigits;
    if (exponent_ < 0) out_ += u'-';
    else if (plus) out_ += u'+';
    std::string digits = std::to_string(exponent_ < 0 ? -exponent_ : exponent_);
    if (digits.size() < minDigits) digits.insert(0, minDigits - digits.size(), '0');
    for (char d : digits) out_ += static_cast<char16_t>(d);
    return i;
  }

  const SectionLayout& l_;
  const TFormatSettings& fs_;
  std::string int_, frac_;
  int exponent_ = 0;
  bool intWritten_ = false;
  std::u16string out_;
};

// Splits at ';' outside quotes, three sections at most.
std::vector<std::u16string_view> Sections(std::u16string_view pattern) {
  std::vector<std::u16string_view> out;
  size_t start = 0;
  for (size_t i = 0; i < pattern.size();) {
    const char16_t c = pattern[i];
    if (c == u'\'' || c == u'"') {
      i = SkipQuoted(pattern, i);
    } else if (c == u';') {
      out.push_back(pattern.substr(start, i - start));
      if (out.size() == 3) return out;
      start = ++i;
    } else {
      ++i;
    }
  }
  out.push_back(pattern.substr(start));
  return out;
}

TFloatRec Rounded(const DecimalValue& value, const SectionLayout& layout) {
  if (layout.scientific) return value.Significant(std::clamp(layout.intPlaceholders + layout.decPlaceholders, 1, 18));
  return value.Fixed(std::min(layout.decPlaceholders, 18));
}

String FormatPattern(const String& pattern, const DecimalValue& value, const TFormatSettings& fs) {
  if (pattern.IsEmpty() || value.IsSpecial()) return value.General();
  const std::vector<std::u16string_view> sections = Sections(pattern.view());
  const auto present = [&](size_t k) { return sections.size() > k && !sections[k].empty(); };
  size_t index = 0;
  if (value.Sign() < 0 && present(1)) index = 1;
  else if (value.Sign() == 0 && present(2)) index = 2;
  SectionLayout layout = Analyze(sections[index]);
  TFloatRec rec = Rounded(value, layout);
  if (!layout.scientific && rec.Exponent > 18) return value.General();
  if (rec.Digits.empty() && index != 2) {
    // Rounded to nothing: the zero section, or the first one without sign.
    index = present(2) ? 2 : 0;
    layout = Analyze(sections[index]);
    rec = TFloatRec();
  }
  std::u16string text = SectionWriter(layout, rec, fs).Write(sections[index]);
  if (index == 0 && value.Sign() < 0 && !rec.Digits.empty() && layout.hasPlaceholders) text.insert(0, 1, u'-');
  return String(std::move(text));
}

}  // namespace

String FormatFloat(const String& pattern, double value) { return FormatFloat(pattern, value, FormatSettings); }

String FormatFloat(const String& pattern, double value, const TFormatSettings& settings) {
  return FormatPattern(pattern, DecimalValue(value), settings);
}

String FormatCurr(const String& pattern, Currency value) { return FormatCurr(pattern, value, FormatSettings); }

String FormatCurr(const String& pattern, Currency value, const TFormatSettings& settings) {
  return FormatPattern(pattern, DecimalValue(value), settings);
}
