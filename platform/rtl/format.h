// Format and FormatFloat: the text formatting routines of the historical
// framework.
//
// Format(u"%s has %d rows", name, count) takes its arguments as FormatArg,
// built implicitly from integers, doubles, text, pointers and Variants, and
// understands
//
//   "%" [index ":"] ["-"] ["0"] [width] ["." precision] [l|ll|h] type
//
// with the types d (integer), u (unsigned), x (upper-case hexadecimal),
// e (scientific, 15 significant digits), f (fixed, 2 decimals), g (general),
// n (fixed with thousand separators), m (money), s (text), p (pointer) and
// "%%". A "*" takes width, precision or index from the next argument. The
// precision of d, u and x is the minimum number of digits; a width written
// with a leading 0 pads numbers with zeros after the sign (C style, "%02d").
// After an index the following specifiers go on from the argument after it.
// Decimals round half away from zero (0.125 at two decimals is "0.13"), with
// FormatSettings' separators. Variants convert to what the specifier needs
// (Null prints "" for %s and is an error otherwise).
//
// A specifier the argument does not suit raises EConvertError "Format '%d'
// invalid or incompatible with argument" (the format text, cut at 31
// characters); a missing argument raises EConvertError "No argument for
// format '...'".
#pragma once

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <type_traits>

#include "platform/rtl/datetime.h"
#include "platform/rtl/ustring.h"
#include "platform/rtl/variant.h"

// One argument of Format. It refers to the text or Variant it was built from
// (those outlive the call), and keeps its own copy of temporaries and of
// converted narrow text.
class FormatArg {
 public:
  enum TKind : uint8_t { fkInteger, fkInt64, fkUInt64, fkFloat, fkString, fkWideText, fkPointer, fkVariant };

  FormatArg(int v) : kind_(fkInteger) { pay_.i = v; }
  // Other integers: signed ones as Int64, unsigned ones as unsigned.
  template <variant_detail::Integer T>
  FormatArg(T v) {
    if constexpr (std::is_signed_v<T>) {
      kind_ = fkInt64;
      pay_.i = static_cast<int64_t>(v);
    } else {
      kind_ = fkUInt64;
      pay_.u = static_cast<uint64_t>(v);
    }
  }
  FormatArg(double v) : kind_(fkFloat) { pay_.d = v; }
  FormatArg(TDateTime v) : kind_(fkFloat) { pay_.d = v.Val; }
  FormatArg(const String& s) : kind_(fkString) { pay_.s = &s; }
  FormatArg(String&& s) : kind_(fkString), ownedText_(std::move(s)) { pay_.s = &ownedText_; }
  FormatArg(const Variant& v) : kind_(fkVariant) { pay_.v = &v; }
  FormatArg(Variant&& v) : kind_(fkVariant), ownedVariant_(std::move(v)) { pay_.v = &ownedVariant_; }
  // char16_t and char pointers are text (char as UTF-8), others pointers.
  template <class T>
  FormatArg(T* p) {
    using C = std::remove_cv_t<T>;
    if constexpr (std::same_as<C, char16_t>) {
      kind_ = fkWideText;
      pay_.w = p ? p : u"";
    } else if constexpr (std::same_as<C, char>) {
      kind_ = fkString;
      ownedText_ = String(p ? p : "");
      pay_.s = &ownedText_;
    } else {
      kind_ = fkPointer;
      pay_.p = p;
    }
  }
  // A bool would print as 1; say what is meant.
  FormatArg(bool) = delete;
  FormatArg(const FormatArg&) = delete;
  FormatArg& operator=(const FormatArg&) = delete;

  TKind Kind() const { return kind_; }
  int64_t Int() const { return pay_.i; }
  uint64_t UInt() const { return pay_.u; }
  double Float() const { return pay_.d; }
  const void* Pointer() const { return pay_.p; }
  const Variant& VariantValue() const { return *pay_.v; }
  // fkString and fkWideText.
  String Text() const { return kind_ == fkString ? *pay_.s : String(pay_.w); }

 private:
  TKind kind_;
  union {
    int64_t i;
    uint64_t u;
    double d;
    const void* p;
    const String* s;
    const char16_t* w;
    const Variant* v;
  } pay_;
  String ownedText_;
  Variant ownedVariant_;
};

String FormatList(const String& format, std::span<const FormatArg> args);

template <class... Args>
String Format(const String& format, const Args&... args) {
  if constexpr (sizeof...(Args) == 0) {
    return FormatList(format, {});
  } else {
    const FormatArg list[] = {FormatArg(args)...};
    return FormatList(format, list);
  }
}

// The historical call shape: Format(u"%d-%d", {a, b}).
inline String Format(const String& format, std::initializer_list<FormatArg> args) {
  return FormatList(format, std::span<const FormatArg>(args.begin(), args.size()));
}

// Patterns: "0" a digit, "#" a digit when there is one, "." the decimal
// separator, "," thousand separators anywhere left of the point, "E+",
// "E-", "e+", "e-" scientific with that many exponent zeros, '...' and
// "..." literals; up to three sections "positive;negative;zero" (the zero
// section also serves values that round to zero, an empty negative section
// means the first with a minus). An empty pattern gives FloatToStr.
String FormatFloat(const String& pattern, double value);
String FormatFloat(const String& pattern, double value, const TFormatSettings& settings);
// The same over the exact decimal value of a Currency.
String FormatCurr(const String& pattern, Currency value);
String FormatCurr(const String& pattern, Currency value, const TFormatSettings& settings);
