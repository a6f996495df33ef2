// Variant: the dynamically typed value of the runtime (field values,
// parameter values, key values of Locate), with the kinds, the type codes,
// and the conversion and comparison rules of the historical framework.
//
// A Variant is a 16-byte tagged union. Scalars live inline; strings and
// arrays live on the heap, shared between copies (an array is copied when a
// shared one is written to), so copying any Variant is cheap.
//
// Conversions. `int n = v;`, `String s = v;`, `double d = v;`,
// `TDateTime t = v;`, `bool b = v;` work as the kit writes them: the
// conversion operator is implicit but a template limited to the value types
// below, and Variant brings its own comparison and arithmetic operators, so
// an expression such as `v == 5` or `v + 1` never turns into an ambiguous or
// lossy builtin operation. Calls overloaded on several of these types
// (`IntToStr(v)`) are ambiguous by design: name the type with AsInteger()
// and friends. The rules:
// - Empty is 0, "", false and day 0.
// - Null raises EVariantTypeCastError "Could not convert variant of type
//   (Null) into type (Double)"; use VarToStr or VarIsNull first.
// - Text converts to a number as the number reader reads it, or raises the
//   same error naming (UnicodeString); "True"/"False" convert to bool.
// - Boolean true is -1 in numeric contexts and "True" as text.
// - Doubles and dates go to integers by rounding half to even, as the
//   historical framework does; out of range raises EVariantOverflowError.
// - Doubles become text through FloatToStr, dates through DateTimeToStr.
#pragma once

#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <iosfwd>
#include <limits>
#include <span>
#include <type_traits>

#include "platform/rtl/datetime.h"
#include "platform/rtl/exceptions.h"
#include "platform/rtl/ustring.h"

KELMAR_EXCEPTION(EVariantOverflowError, EVariantError);
KELMAR_EXCEPTION(EVariantInvalidOpError, EVariantError);
KELMAR_EXCEPTION(EVariantNotAnArrayError, EVariantError);

// ---- Currency ----------------------------------------------------------------

// A fixed-point number: a 64-bit integer of ten-thousandths. Doubles are
// rounded half away from zero to four decimals; values outside about
// +-922337203685477 raise ERangeError.
class Currency {
 public:
  constexpr Currency() = default;
  template <std::integral T>
    requires(!std::same_as<T, bool>)
  Currency(T units) : Val(FromUnits(ToInt64(units))) {}
  template <std::floating_point T>
  Currency(T value) : Val(FromDouble(static_cast<double>(value))) {}

  static constexpr Currency FromVal(int64_t val) {
    Currency c;
    c.Val = val;
    return c;
  }
  double ToDouble() const { return static_cast<double>(Val) / 10000.0; }

  Currency& operator+=(Currency b);
  Currency& operator-=(Currency b);
  friend Currency operator+(Currency a, Currency b) { return a += b; }
  friend Currency operator-(Currency a, Currency b) { return a -= b; }
  friend Currency operator-(Currency a);
  // Products and quotients are rounded half away from zero to 1/10000.
  friend Currency operator*(Currency a, Currency b);
  friend Currency operator/(Currency a, Currency b);  // raises EZeroDivide

  friend constexpr bool operator==(Currency a, Currency b) = default;
  friend constexpr auto operator<=>(Currency a, Currency b) = default;

  int64_t Val = 0;

 private:
  template <class T>
  static int64_t ToInt64(T units) {
    if constexpr (std::is_unsigned_v<T> && sizeof(T) >= sizeof(int64_t))
      if (units > static_cast<T>(INT64_MAX)) Overflow();
    return static_cast<int64_t>(units);
  }
  static int64_t FromUnits(int64_t units);
  static int64_t FromDouble(double value);
  [[noreturn]] static void Overflow();
};

// Up to four decimals, no trailing zeros, FormatSettings.DecimalSeparator:
// "1.5", "-0.0001", "12".
String CurrToStr(Currency value);
std::ostream& operator<<(std::ostream& os, Currency value);
void PrintTo(Currency value, std::ostream* os);

// ---- Type codes ----------------------------------------------------------------

using TVarType = uint16_t;

constexpr TVarType varEmpty = 0x0000;
constexpr TVarType varNull = 0x0001;
constexpr TVarType varSmallint = 0x0002;
constexpr TVarType varInteger = 0x0003;
constexpr TVarType varSingle = 0x0004;
constexpr TVarType varDouble = 0x0005;
constexpr TVarType varCurrency = 0x0006;
constexpr TVarType varDate = 0x0007;
constexpr TVarType varOleStr = 0x0008;
constexpr TVarType varDispatch = 0x0009;
constexpr TVarType varError = 0x000A;
constexpr TVarType varBoolean = 0x000B;
constexpr TVarType varVariant = 0x000C;
constexpr TVarType varUnknown = 0x000D;
constexpr TVarType varShortInt = 0x0010;
constexpr TVarType varByte = 0x0011;
constexpr TVarType varWord = 0x0012;
constexpr TVarType varLongWord = 0x0013;
constexpr TVarType varInt64 = 0x0014;
constexpr TVarType varUInt64 = 0x0015;
constexpr TVarType varString = 0x0100;
constexpr TVarType varUString = 0x0102;
constexpr TVarType varTypeMask = 0x0FFF;
constexpr TVarType varArray = 0x2000;
constexpr TVarType varByRef = 0x4000;

// "Integer", "Double", "UnicodeString", "Null", "Array Variant"...: the
// names the conversion errors use.
String VarTypeAsText(TVarType type);

enum TVariantRelationship { vrEqual, vrLessThan, vrGreaterThan, vrNotEqual };

// ---- Variant -------------------------------------------------------------------

class Variant;
TVariantRelationship VarCompareValue(const Variant& a, const Variant& b);

namespace variant_detail {
template <class T>
concept Operand = !std::same_as<std::remove_cvref_t<T>, Variant> && std::is_constructible_v<Variant, const T&>;

inline std::partial_ordering ToOrdering(TVariantRelationship r) {
  switch (r) {
    case vrEqual: return std::partial_ordering::equivalent;
    case vrLessThan: return std::partial_ordering::less;
    case vrGreaterThan: return std::partial_ordering::greater;
    default: return std::partial_ordering::unordered;
  }
}
// Types a Variant converts to implicitly: numbers (not characters), text,
// dates and currency.
template <class T>
concept Target = (std::is_arithmetic_v<T> && !std::same_as<T, char> && !std::same_as<T, char8_t> &&
                  !std::same_as<T, char16_t> && !std::same_as<T, char32_t> && !std::same_as<T, wchar_t>) ||
                 std::same_as<T, String> || std::same_as<T, TDateTime> || std::same_as<T, Currency>;
// Integers other than bool and the character types, for the generic
// constructor.
template <class T>
concept Integer = std::integral<T> && Target<T> && !std::same_as<T, bool>;
}  // namespace variant_detail

class Variant {
 public:
  // Unassigned (varEmpty).
  Variant() noexcept : type_(varEmpty) { u_.i64 = 0; }
  Variant(bool value) noexcept : type_(varBoolean) { u_.i64 = 0; u_.b = value; }
  Variant(int value) noexcept : type_(varInteger) { u_.i64 = 0; u_.i = value; }
  Variant(int64_t value) noexcept : type_(varInt64) { u_.i64 = value; }
  // Other integer types: Integer when every value fits 32 bits, Int64
  // otherwise; unsigned 64-bit values above the Int64 range raise.
  template <variant_detail::Integer T>
  Variant(T value) : Variant(FromInteger(value)) {}
  Variant(double value) noexcept : type_(varDouble) { u_.d = value; }
  Variant(Currency value) noexcept : type_(varCurrency) { u_.i64 = value.Val; }
  Variant(TDateTime value) noexcept : type_(varDate) { u_.d = value.Val; }
  Variant(const String& value);
  Variant(String&& value);
  Variant(const char16_t* value);
  Variant(const char* utf8);
  // A pointer would otherwise become a Boolean.
  template <class T>
  Variant(T*) = delete;
  Variant(std::nullptr_t) = delete;

  Variant(const Variant& other) noexcept;
  Variant(Variant&& other) noexcept : type_(other.type_), u_(other.u_) { other.type_ = varEmpty; }
  Variant& operator=(const Variant& other) noexcept;
  Variant& operator=(Variant&& other) noexcept;
  ~Variant() { Release(); }

  static Variant Null() noexcept;
  static Variant Unassigned() noexcept { return Variant(); }

  // The type code: varInteger, varUString, varArray | varVariant...
  TVarType VarType() const noexcept;
  bool IsEmpty() const noexcept { return type_ == varEmpty; }
  bool IsNull() const noexcept { return type_ == varNull; }
  bool IsArray() const noexcept { return type_ == varArray; }
  // Back to Unassigned.
  void Clear() noexcept;

  // Named conversions, by the rules at the top of this file.
  bool AsBoolean() const;
  int AsInteger() const;
  int64_t AsInt64() const;
  double AsFloat() const;
  Currency AsCurrency() const;
  TDateTime AsDateTime() const;
  String AsString() const;

  template <variant_detail::Target T>
  operator T() const {
    if constexpr (std::same_as<T, bool>) return AsBoolean();
    else if constexpr (std::is_floating_point_v<T>) return static_cast<T>(AsFloat());
    else if constexpr (std::same_as<T, int>) return AsInteger();
    else if constexpr (std::is_integral_v<T>) return NarrowInteger<T>();
    else if constexpr (std::same_as<T, String>) return AsString();
    else if constexpr (std::same_as<T, TDateTime>) return AsDateTime();
    else return AsCurrency();
  }

  // Elements of an array. Indexes run from the low bound to the high bound;
  // outside them EVariantBadIndexError, on a non-array
  // EVariantNotAnArrayError. PutElement converts the value to the element
  // type of a typed array.
  Variant GetElement(int index) const;
  void PutElement(int index, const Variant& value);
  const Variant& operator[](int index) const;
  Variant& operator[](int index);

  // Equal values hash equally within numbers (of any kind) and within
  // strings; a numeric string that equals a number hashes differently.
  size_t Hash() const noexcept;

  // Arithmetic of the historical framework: Null with anything is Null,
  // Empty counts as 0 (or "" beside text), string + string concatenates,
  // other text converts to a number, integers widen to Int64 and then to
  // Double rather than overflow, a date plus or minus a number is a date and
  // the difference of two dates a Double. Division by zero raises EZeroDivide
  // (EInvalidOp for 0/0). Arrays raise EVariantInvalidOpError.
  Variant& operator+=(const Variant& b);
  Variant& operator-=(const Variant& b);
  Variant& operator*=(const Variant& b);
  Variant& operator/=(const Variant& b);
  Variant operator-() const;

  // Operators are hidden friends: found only when a Variant takes part, so
  // that comparisons of plain numbers and enumerations elsewhere are never
  // tempted into converting both sides.
  // Equality and order by VarCompareValue: Null is neither less nor greater
  // than anything, and equal only to Null.
  friend bool operator==(const Variant& a, const Variant& b) { return VarCompareValue(a, b) == vrEqual; }
  friend std::partial_ordering operator<=>(const Variant& a, const Variant& b) {
    return variant_detail::ToOrdering(VarCompareValue(a, b));
  }
  template <variant_detail::Operand T>
  friend bool operator==(const Variant& a, const T& b) { return a == Variant(b); }
  template <variant_detail::Operand T>
  friend std::partial_ordering operator<=>(const Variant& a, const T& b) { return a <=> Variant(b); }

  friend Variant operator+(Variant a, const Variant& b) { return a += b; }
  friend Variant operator-(Variant a, const Variant& b) { return a -= b; }
  friend Variant operator*(Variant a, const Variant& b) { return a *= b; }
  friend Variant operator/(Variant a, const Variant& b) { return a /= b; }
  template <variant_detail::Operand T>
  friend Variant operator+(const Variant& a, const T& b) { return a + Variant(b); }
  template <variant_detail::Operand T>
  friend Variant operator+(const T& a, const Variant& b) { return Variant(a) + b; }
  template <variant_detail::Operand T>
  friend Variant operator-(const Variant& a, const T& b) { return a - Variant(b); }
  template <variant_detail::Operand T>
  friend Variant operator-(const T& a, const Variant& b) { return Variant(a) - b; }
  template <variant_detail::Operand T>
  friend Variant operator*(const Variant& a, const T& b) { return a * Variant(b); }
  template <variant_detail::Operand T>
  friend Variant operator*(const T& a, const Variant& b) { return Variant(a) * b; }
  template <variant_detail::Operand T>
  friend Variant operator/(const Variant& a, const T& b) { return a / Variant(b); }
  template <variant_detail::Operand T>
  friend Variant operator/(const T& a, const Variant& b) { return Variant(a) / b; }

 private:
  friend struct VariantAccess;
  struct StringRep;
  struct ArrayRep;

  template <class T>
  static Variant FromInteger(T value) {
    if constexpr (std::is_signed_v<T> ? sizeof(T) <= sizeof(int) : sizeof(T) < sizeof(int)) {
      return Variant(static_cast<int>(value));
    } else {
      if constexpr (std::is_unsigned_v<T> && sizeof(T) >= sizeof(int64_t))
        if (value > static_cast<T>(INT64_MAX)) RaiseUnsignedOverflow();
      return Variant(static_cast<int64_t>(value));
    }
  }
  template <class T>
  T NarrowInteger() const {
    const int64_t v = AsInt64();
    if constexpr (std::is_unsigned_v<T>) {
      if (v < 0 || static_cast<uint64_t>(v) > std::numeric_limits<T>::max()) RaiseNarrowOverflow();
    } else {
      if (v < std::numeric_limits<T>::min() || v > std::numeric_limits<T>::max()) RaiseNarrowOverflow();
    }
    return static_cast<T>(v);
  }
  [[noreturn]] static void RaiseUnsignedOverflow();
  [[noreturn]] void RaiseNarrowOverflow() const;
  void Release() noexcept;
  ArrayRep& MutableArray();
  const ArrayRep& Array() const;

  TVarType type_;  // varArray alone for arrays; the element type is in the rep
  union {
    bool b;
    int32_t i;
    int64_t i64;  // Int64, and Currency's ten-thousandths
    double d;     // Double and Date
    StringRep* s;
    ArrayRep* a;
  } u_;
};

static_assert(sizeof(Variant) == 16);

// The historical factories: `Variant v = Null();`.
inline Variant Null() noexcept { return Variant::Null(); }
inline Variant Unassigned() noexcept { return Variant(); }

// ---- Inspection --------------------------------------------------------------

inline TVarType VarType(const Variant& v) noexcept { return v.VarType(); }
inline bool VarIsNull(const Variant& v) noexcept { return v.IsNull(); }
inline bool VarIsEmpty(const Variant& v) noexcept { return v.IsEmpty(); }
inline bool VarIsClear(const Variant& v) noexcept { return v.IsEmpty(); }
inline bool VarIsArray(const Variant& v) noexcept { return v.IsArray(); }
// Booleans and integers.
bool VarIsOrdinal(const Variant& v) noexcept;
// Double and Currency (a date is not a float).
bool VarIsFloat(const Variant& v) noexcept;
// Ordinal or float.
bool VarIsNumeric(const Variant& v) noexcept;
bool VarIsStr(const Variant& v) noexcept;
bool VarIsType(const Variant& v, TVarType type) noexcept;

// ---- Conversion ----------------------------------------------------------------

// Null and Empty give "" (VarToStrDef: Null gives the default, Empty "");
// anything else converts as String(v).
String VarToStr(const Variant& v);
String VarToStrDef(const Variant& v, const String& def);
inline String VarToWideStr(const Variant& v) { return VarToStr(v); }
TDateTime VarToDateTime(const Variant& v);
// Converts to the kind of a type code: varNull and varEmpty give those,
// varSmallint, varShortInt, varByte and varWord give a range-checked
// Integer, varLongWord and varUInt64 an Int64, varSingle a Double rounded
// to single precision, varOleStr and varString a UnicodeString.
Variant VarAsType(const Variant& v, TVarType type);

// ---- Comparison ----------------------------------------------------------------

// Empty equals only Empty and Null only Null; either against anything else
// is vrNotEqual. Strings compare ordinally. A string against a number or a
// date is converted to that kind first, raising EVariantTypeCastError on bad
// text. Numbers compare by value across kinds, exactly between integers and
// currency. Arrays raise EVariantInvalidOpError.
TVariantRelationship VarCompareValue(const Variant& a, const Variant& b);
inline bool VarSameValue(const Variant& a, const Variant& b) { return VarCompareValue(a, b) == vrEqual; }

// ---- Arrays --------------------------------------------------------------------

// One-dimensional arrays. VarArrayCreate fills an untyped (varVariant) array
// with Unassigned and a typed one with that type's zero.
Variant VarArrayCreate(int lowBound, int highBound, TVarType elementType = varVariant);
Variant VarArrayOf(std::initializer_list<Variant> items);
Variant VarArrayOf(std::span<const Variant> items);
// The dimension must be 1; anything else raises EVariantBadIndexError.
int VarArrayDimCount(const Variant& v);
int VarArrayLowBound(const Variant& v, int dim);
int VarArrayHighBound(const Variant& v, int dim);
// Keeps the elements up to the new high bound and fills new ones.
void VarArrayRedim(Variant& v, int highBound);

// Prints the kind and the value: Integer 5, UnicodeString "abc", Null.
void PrintTo(const Variant& v, std::ostream* os);
std::ostream& operator<<(std::ostream& os, const Variant& v);

template <>
struct std::hash<Variant> {
  size_t operator()(const Variant& v) const noexcept { return v.Hash(); }
};
