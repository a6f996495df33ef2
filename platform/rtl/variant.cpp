#include "platform/rtl/variant.h"

#include <atomic>
#include <bit>
#include <cmath>
#include <ostream>
#include <vector>

#include "platform/rtl/sysutils.h"

// ---- Currency ----------------------------------------------------------------

namespace {

constexpr int64_t kCurrencyScale = 10000;
constexpr int64_t kMaxCurrencyUnits = INT64_MAX / kCurrencyScale;

// Divides rounding half away from zero.
__int128 DivRound(__int128 num, __int128 den) {
  __int128 q = num / den, r = num % den;
  if (r < 0) r = -r;
  if (2 * r >= (den < 0 ? -den : den)) q += (num < 0) != (den < 0) ? -1 : 1;
  return q;
}

int64_t CheckedCurrency(__int128 val) {
  if (val > INT64_MAX || val < INT64_MIN) throw ERangeError(u"Currency value out of range");
  return static_cast<int64_t>(val);
}

}  // namespace

int64_t Currency::FromUnits(int64_t units) {
  if (units > kMaxCurrencyUnits || units < -kMaxCurrencyUnits) Overflow();
  return units * kCurrencyScale;
}

int64_t Currency::FromDouble(double value) {
  // Rounded half away from zero; the bound is 2^63, so the result fits.
  const double scaled = value * static_cast<double>(kCurrencyScale);
  if (!(std::fabs(scaled) < 9223372036854775808.0)) Overflow();
  return std::llround(scaled);
}

void Currency::Overflow() { throw ERangeError(u"Currency value out of range"); }

Currency& Currency::operator+=(Currency b) {
  Val = CheckedCurrency(static_cast<__int128>(Val) + b.Val);
  return *this;
}

Currency& Currency::operator-=(Currency b) {
  Val = CheckedCurrency(static_cast<__int128>(Val) - b.Val);
  return *this;
}

Currency operator-(Currency a) { return Currency::FromVal(CheckedCurrency(-static_cast<__int128>(a.Val))); }

Currency operator*(Currency a, Currency b) {
  return Currency::FromVal(CheckedCurrency(DivRound(static_cast<__int128>(a.Val) * b.Val, kCurrencyScale)));
}

Currency operator/(Currency a, Currency b) {
  if (b.Val == 0) throw EZeroDivide(u"Division by zero");
  return Currency::FromVal(CheckedCurrency(DivRound(static_cast<__int128>(a.Val) * kCurrencyScale, b.Val)));
}

String CurrToStr(Currency value) {
  const bool negative = value.Val < 0;
  // Negating through unsigned keeps INT64_MIN defined.
  const uint64_t magnitude = negative ? 0 - static_cast<uint64_t>(value.Val) : static_cast<uint64_t>(value.Val);
  std::u16string out = negative ? u"-" : u"";
  out.append(UIntToStr(magnitude / kCurrencyScale).view());
  uint64_t frac = magnitude % kCurrencyScale;
  if (frac) {
    std::u16string digits;
    for (int i = 0; i < 4; ++i, frac /= 10) digits.insert(digits.begin(), static_cast<char16_t>(u'0' + frac % 10));
    while (digits.back() == u'0') digits.pop_back();
    out += FormatSettings.DecimalSeparator;
    out += digits;
  }
  return String(std::move(out));
}

std::ostream& operator<<(std::ostream& os, Currency value) { return os << CurrToStr(value); }
void PrintTo(Currency value, std::ostream* os) { *os << CurrToStr(value); }

// ---- Type names ----------------------------------------------------------------

String VarTypeAsText(TVarType type) {
  const char16_t* name;
  switch (type & varTypeMask) {
    case varEmpty: name = u"Empty"; break;
    case varNull: name = u"Null"; break;
    case varSmallint: name = u"Smallint"; break;
    case varInteger: name = u"Integer"; break;
    case varSingle: name = u"Single"; break;
    case varDouble: name = u"Double"; break;
    case varCurrency: name = u"Currency"; break;
    case varDate: name = u"Date"; break;
    case varOleStr: name = u"OleStr"; break;
    case varDispatch: name = u"Dispatch"; break;
    case varError: name = u"Error"; break;
    case varBoolean: name = u"Boolean"; break;
    case varVariant: name = u"Variant"; break;
    case varUnknown: name = u"Unknown"; break;
    case varShortInt: name = u"ShortInt"; break;
    case varByte: name = u"Byte"; break;
    case varWord: name = u"Word"; break;
    case varLongWord: name = u"LongWord"; break;
    case varInt64: name = u"Int64"; break;
    case varUInt64: name = u"UInt64"; break;
    case varString: name = u"String"; break;
    case varUString: name = u"UnicodeString"; break;
    default: name = u"Unknown"; break;
  }
  return (type & varArray) ? u"Array " + String(name) : String(name);
}

// ---- Representation ------------------------------------------------------------

struct Variant::StringRep {
  explicit StringRep(String v) : value(std::move(v)) {}
  std::atomic<int> refs{1};
  String value;
};

struct Variant::ArrayRep {
  std::atomic<int> refs{1};
  int low = 0;
  TVarType elementType = varVariant;
  std::vector<Variant> items;
};

// The internals the free functions of this file work on.
struct VariantAccess {
  static TVarType Tag(const Variant& v) { return v.type_; }
  static bool IsText(const Variant& v) { return v.type_ == varUString; }
  static const String& Text(const Variant& v) { return v.u_.s->value; }
  static bool Bool(const Variant& v) { return v.u_.b; }
  static int32_t Int(const Variant& v) { return v.u_.i; }
  static int64_t Int64(const Variant& v) { return v.u_.i64; }
  static double Dbl(const Variant& v) { return v.u_.d; }
  static const Variant::ArrayRep& Array(const Variant& v) { return v.Array(); }
  static Variant::ArrayRep& MutableArray(Variant& v) { return v.MutableArray(); }
  static Variant MakeArray(int low, TVarType elementType, std::vector<Variant> items) {
    Variant v;
    v.type_ = varArray;
    v.u_.a = new Variant::ArrayRep;
    v.u_.a->low = low;
    v.u_.a->elementType = elementType;
    v.u_.a->items = std::move(items);
    return v;
  }
};

namespace {

using VA = VariantAccess;

bool IsIntegral(TVarType t) { return t == varBoolean || t == varInteger || t == varInt64; }

// The value of an integral kind, Boolean true being -1.
int64_t IntegralValue(const Variant& v) {
  switch (VA::Tag(v)) {
    case varBoolean: return VA::Bool(v) ? -1 : 0;
    case varInteger: return VA::Int(v);
    default: return VA::Int64(v);
  }
}

[[noreturn]] void RaiseCast(TVarType from, TVarType to) {
  throw EVariantTypeCastError(u"Could not convert variant of type (" + VarTypeAsText(from) + u") into type (" +
                              VarTypeAsText(to) + u")");
}

[[noreturn]] void RaiseOverflow(TVarType from, TVarType to) {
  throw EVariantOverflowError(u"Overflow while converting variant of type (" + VarTypeAsText(from) +
                              u") into type (" + VarTypeAsText(to) + u")");
}

[[noreturn]] void RaiseInvalidOp() { throw EVariantInvalidOpError(u"Invalid variant operation"); }

// Rounds half to even, as the historical conversions to integers do.
bool RoundToInt64(double x, int64_t& out) {
  if (!std::isfinite(x)) return false;
  const double f = std::floor(x);
  const double diff = x - f;
  double r = f;
  if (diff > 0.5 || (diff == 0.5 && std::fmod(f, 2.0) != 0)) r = f + 1;
  if (r < -9223372036854775808.0 || r >= 9223372036854775808.0) return false;
  out = static_cast<int64_t>(r);
  return true;
}

int64_t CurrencyToInt64(int64_t val) {
  int64_t q = val / kCurrencyScale, r = val % kCurrencyScale;
  const int64_t half = kCurrencyScale / 2;
  if (r > half || (r == half && (q & 1))) ++q;
  else if (r < -half || (r == -half && (q & 1))) --q;
  return q;
}

// Any scalar as Int64, rounding; errors name `target`.
int64_t ToInt64(const Variant& v, TVarType target) {
  const TVarType t = VA::Tag(v);
  int64_t result = 0;
  switch (t) {
    case varEmpty: return 0;
    case varBoolean:
    case varInteger:
    case varInt64: return IntegralValue(v);
    case varCurrency: return CurrencyToInt64(VA::Int64(v));
    case varDouble:
    case varDate:
      if (!RoundToInt64(VA::Dbl(v), result)) RaiseOverflow(t, target);
      return result;
    case varUString: {
      if (TryStrToInt64(VA::Text(v), result)) return result;
      double d;
      if (!TryStrToFloat(VA::Text(v), d)) RaiseCast(t, target);
      if (!RoundToInt64(d, result)) RaiseOverflow(t, target);
      return result;
    }
    default: RaiseCast(v.VarType(), target);
  }
}

int64_t ToRangedInt(const Variant& v, TVarType target, int64_t lo, int64_t hi) {
  const int64_t r = ToInt64(v, target);
  if (r < lo || r > hi) RaiseOverflow(v.VarType(), target);
  return r;
}

double ToDouble(const Variant& v, TVarType target) {
  const TVarType t = VA::Tag(v);
  switch (t) {
    case varEmpty: return 0;
    case varBoolean:
    case varInteger:
    case varInt64: return static_cast<double>(IntegralValue(v));
    case varCurrency: return Currency::FromVal(VA::Int64(v)).ToDouble();
    case varDouble:
    case varDate: return VA::Dbl(v);
    case varUString: {
      double d;
      if (!TryStrToFloat(VA::Text(v), d)) RaiseCast(t, target);
      return d;
    }
    default: RaiseCast(v.VarType(), target);
  }
}

// Text as a number: an Int64 when it is an integer, a Double otherwise.
Variant TextToNumber(const Variant& v) {
  int64_t i;
  if (TryStrToInt64(VA::Text(v), i)) return Variant(i);
  return Variant(ToDouble(v, varDouble));
}

// Maps a three-way comparison to the relationship.
template <class T>
TVariantRelationship Relate(T a, T b) {
  if (a < b) return vrLessThan;
  if (b < a) return vrGreaterThan;
  if (a == b) return vrEqual;
  return vrNotEqual;  // NaN
}

// Integers and currency exactly, in ten-thousandths.
__int128 ScaledValue(const Variant& v) {
  if (VA::Tag(v) == varCurrency) return VA::Int64(v);
  return static_cast<__int128>(IntegralValue(v)) * kCurrencyScale;
}

TVariantRelationship CompareNumbers(const Variant& a, const Variant& b) {
  const TVarType ta = VA::Tag(a), tb = VA::Tag(b);
  if (IsIntegral(ta) && IsIntegral(tb)) return Relate(IntegralValue(a), IntegralValue(b));
  if ((IsIntegral(ta) || ta == varCurrency) && (IsIntegral(tb) || tb == varCurrency))
    return Relate(ScaledValue(a), ScaledValue(b));
  return Relate(ToDouble(a, varDouble), ToDouble(b, varDouble));
}

// Text compared with a value of another kind becomes that kind.
Variant TextLike(const Variant& text, const Variant& other) {
  switch (VA::Tag(other)) {
    case varDate: {
      TDateTime dt;
      if (!TryStrToDateTime(VA::Text(text), dt)) RaiseCast(varUString, varDate);
      return Variant(dt);
    }
    case varBoolean: {
      bool b;
      if (!TryStrToBool(VA::Text(text), b)) RaiseCast(varUString, varBoolean);
      return Variant(b);
    }
    default: return TextToNumber(text);
  }
}

}  // namespace

// ---- Lifetime --------------------------------------------------------------------

Variant::Variant(const String& value) : type_(varUString) { u_.s = new StringRep(value); }
Variant::Variant(String&& value) : type_(varUString) { u_.s = new StringRep(std::move(value)); }
Variant::Variant(const char16_t* value) : Variant(String(value)) {}
Variant::Variant(const char* utf8) : Variant(String(utf8)) {}

Variant::Variant(const Variant& other) noexcept : type_(other.type_), u_(other.u_) {
  if (type_ == varUString) u_.s->refs.fetch_add(1, std::memory_order_relaxed);
  else if (type_ == varArray) u_.a->refs.fetch_add(1, std::memory_order_relaxed);
}

Variant& Variant::operator=(const Variant& other) noexcept {
  if (this != &other) {
    Variant copy(other);
    *this = std::move(copy);
  }
  return *this;
}

Variant& Variant::operator=(Variant&& other) noexcept {
  if (this != &other) {
    Release();
    type_ = other.type_;
    u_ = other.u_;
    other.type_ = varEmpty;
  }
  return *this;
}

void Variant::Release() noexcept {
  if (type_ == varUString) {
    if (u_.s->refs.fetch_sub(1, std::memory_order_acq_rel) == 1) delete u_.s;
  } else if (type_ == varArray) {
    if (u_.a->refs.fetch_sub(1, std::memory_order_acq_rel) == 1) delete u_.a;
  }
  type_ = varEmpty;
}

void Variant::Clear() noexcept { Release(); }

Variant Variant::Null() noexcept {
  Variant v;
  v.type_ = varNull;
  return v;
}

TVarType Variant::VarType() const noexcept { return type_ == varArray ? varArray | u_.a->elementType : type_; }

void Variant::RaiseUnsignedOverflow() { RaiseOverflow(varUInt64, varInt64); }
void Variant::RaiseNarrowOverflow() const { RaiseOverflow(VarType(), varInteger); }

// ---- Conversions -----------------------------------------------------------------

bool Variant::AsBoolean() const {
  switch (type_) {
    case varEmpty: return false;
    case varBoolean: return u_.b;
    case varInteger: return u_.i != 0;
    case varInt64:
    case varCurrency: return u_.i64 != 0;
    case varDouble:
    case varDate: return u_.d != 0;
    case varUString: {
      bool b;
      if (!TryStrToBool(u_.s->value, b)) RaiseCast(type_, varBoolean);
      return b;
    }
    default: RaiseCast(VarType(), varBoolean);
  }
}

int Variant::AsInteger() const { return static_cast<int>(ToRangedInt(*this, varInteger, INT32_MIN, INT32_MAX)); }
int64_t Variant::AsInt64() const { return ToInt64(*this, varInt64); }
double Variant::AsFloat() const { return ToDouble(*this, varDouble); }

Currency Variant::AsCurrency() const {
  switch (type_) {
    case varCurrency: return Currency::FromVal(u_.i64);
    case varBoolean:
    case varInteger:
    case varInt64: {
      const int64_t units = IntegralValue(*this);
      if (units > kMaxCurrencyUnits || units < -kMaxCurrencyUnits) RaiseOverflow(type_, varCurrency);
      return Currency(units);
    }
    default: {
      const double d = ToDouble(*this, varCurrency);
      try {
        return Currency(d);
      } catch (const ERangeError&) {
        RaiseOverflow(type_, varCurrency);
      }
    }
  }
}

TDateTime Variant::AsDateTime() const {
  if (type_ == varUString) {
    TDateTime dt;
    if (!TryStrToDateTime(u_.s->value, dt)) RaiseCast(type_, varDate);
    return dt;
  }
  return ToDouble(*this, varDate);
}

String Variant::AsString() const {
  switch (type_) {
    case varEmpty: return String();
    case varBoolean: return u_.b ? u"True" : u"False";
    case varInteger: return IntToStr(u_.i);
    case varInt64: return IntToStr(u_.i64);
    case varDouble: return FloatToStr(u_.d);
    case varCurrency: return CurrToStr(Currency::FromVal(u_.i64));
    case varDate: return DateTimeToStr(u_.d);
    case varUString: return u_.s->value;
    default: RaiseCast(VarType(), varUString);
  }
}

bool VarIsOrdinal(const Variant& v) noexcept { return IsIntegral(VA::Tag(v)); }
bool VarIsFloat(const Variant& v) noexcept { return VA::Tag(v) == varDouble || VA::Tag(v) == varCurrency; }
bool VarIsNumeric(const Variant& v) noexcept { return VarIsOrdinal(v) || VarIsFloat(v); }
bool VarIsStr(const Variant& v) noexcept { return VA::IsText(v); }
bool VarIsType(const Variant& v, TVarType type) noexcept { return v.VarType() == type; }

String VarToStrDef(const Variant& v, const String& def) { return v.IsNull() ? def : v.AsString(); }
String VarToStr(const Variant& v) { return VarToStrDef(v, String()); }
TDateTime VarToDateTime(const Variant& v) { return v.AsDateTime(); }

Variant VarAsType(const Variant& v, TVarType type) {
  if (type & varArray) {
    if (v.VarType() != type) RaiseCast(v.VarType(), type);
    return v;
  }
  switch (type) {
    case varEmpty: return Variant();
    case varNull: return Variant::Null();
    case varVariant: return v;
    case varSmallint: return Variant(static_cast<int>(ToRangedInt(v, type, INT16_MIN, INT16_MAX)));
    case varShortInt: return Variant(static_cast<int>(ToRangedInt(v, type, INT8_MIN, INT8_MAX)));
    case varByte: return Variant(static_cast<int>(ToRangedInt(v, type, 0, UINT8_MAX)));
    case varWord: return Variant(static_cast<int>(ToRangedInt(v, type, 0, UINT16_MAX)));
    case varInteger: return Variant(v.AsInteger());
    case varLongWord: return Variant(ToRangedInt(v, type, 0, UINT32_MAX));
    case varInt64: return Variant(v.AsInt64());
    case varUInt64: return Variant(ToRangedInt(v, type, 0, INT64_MAX));
    case varSingle: return Variant(static_cast<double>(static_cast<float>(ToDouble(v, type))));
    case varDouble: return Variant(v.AsFloat());
    case varCurrency: return Variant(v.AsCurrency());
    case varDate: return Variant(v.AsDateTime());
    case varBoolean: return Variant(v.AsBoolean());
    case varOleStr:
    case varString:
    case varUString:
      if (v.IsNull()) RaiseCast(varNull, type);
      return Variant(v.AsString());
    default: throw EVariantInvalidArgError(u"Invalid variant type");
  }
}

// ---- Comparison ------------------------------------------------------------------

TVariantRelationship VarCompareValue(const Variant& a, const Variant& b) {
  if (a.IsEmpty()) return b.IsEmpty() ? vrEqual : vrNotEqual;
  if (a.IsNull()) return b.IsNull() ? vrEqual : vrNotEqual;
  if (b.IsEmpty() || b.IsNull()) return vrNotEqual;
  if (a.IsArray() || b.IsArray()) RaiseInvalidOp();
  const bool ta = VA::IsText(a), tb = VA::IsText(b);
  if (ta && tb) return Relate(CompareStr(VA::Text(a), VA::Text(b)), 0);
  if (ta) return CompareNumbers(TextLike(a, b), b);
  if (tb) return CompareNumbers(a, TextLike(b, a));
  return CompareNumbers(a, b);
}

size_t Variant::Hash() const noexcept {
  // Numbers hash by the double the comparison would use, so that 1, 1.0,
  // Currency 1 and Int64 1 meet; integral currency goes through the integer
  // to keep its double exact.
  auto hashDouble = [](double d) {
    if (d == 0) d = 0;  // -0.0
    return std::hash<uint64_t>()(std::bit_cast<uint64_t>(d));
  };
  switch (type_) {
    case varEmpty: return 0x9e3779b9u;
    case varNull: return 0x7f4a7c15u;
    case varBoolean:
    case varInteger:
    case varInt64: return hashDouble(static_cast<double>(IntegralValue(*this)));
    case varCurrency:
      return hashDouble(u_.i64 % kCurrencyScale == 0 ? static_cast<double>(u_.i64 / kCurrencyScale)
                                                      : Currency::FromVal(u_.i64).ToDouble());
    case varDouble:
    case varDate: return hashDouble(u_.d);
    case varUString: return std::hash<String>()(u_.s->value);
    default: {
      size_t h = 0x51ed270bu;
      for (const Variant& item : u_.a->items) h = h * 31 + item.Hash();
      return h;
    }
  }
}

// ---- Arithmetic ------------------------------------------------------------------

namespace {

enum class ArithOp { Add, Sub, Mul, Div };

// Empty is Integer 0, Boolean an Integer, text a number.
Variant AsNumber(const Variant& v) {
  switch (VA::Tag(v)) {
    case varEmpty: return Variant(0);
    case varBoolean: return Variant(VA::Bool(v) ? -1 : 0);
    case varUString: return TextToNumber(v);
    default: return v;
  }
}

[[noreturn]] void RaiseDivision(bool zeroByZero) {
  if (zeroByZero) throw EInvalidOp(u"Invalid floating point operation");
  throw EZeroDivide(u"Floating point division by zero");
}

double DoubleArith(double x, double y, ArithOp op) {
  switch (op) {
    case ArithOp::Add: return x + y;
    case ArithOp::Sub: return x - y;
    case ArithOp::Mul: return x * y;
    default:
      if (y == 0) RaiseDivision(x == 0);
      return x / y;
  }
}

Variant IntegerArith(const Variant& a, const Variant& b, ArithOp op) {
  const int64_t x = IntegralValue(a), y = IntegralValue(b);
  if (op == ArithOp::Div) return Variant(DoubleArith(static_cast<double>(x), static_cast<double>(y), op));
  int64_t r;
  bool overflow;
  switch (op) {
    case ArithOp::Add: overflow = __builtin_add_overflow(x, y, &r); break;
    case ArithOp::Sub: overflow = __builtin_sub_overflow(x, y, &r); break;
    default: overflow = __builtin_mul_overflow(x, y, &r); break;
  }
  if (overflow) return Variant(DoubleArith(static_cast<double>(x), static_cast<double>(y), op));
  const bool narrow = VA::Tag(a) != varInt64 && VA::Tag(b) != varInt64;
  if (narrow && r >= INT32_MIN && r <= INT32_MAX) return Variant(static_cast<int>(r));
  return Variant(r);
}

Variant CurrencyArith(const Variant& a, const Variant& b, ArithOp op) {
  const Currency x = a.AsCurrency(), y = b.AsCurrency();
  switch (op) {
    case ArithOp::Add: return Variant(x + y);
    case ArithOp::Sub: return Variant(x - y);
    case ArithOp::Mul: return Variant(x * y);
    default:
      if (y.Val == 0) RaiseDivision(x.Val == 0);
      return Variant(x / y);
  }
}

Variant Arith(const Variant& a, const Variant& b, ArithOp op) {
  if (a.IsArray() || b.IsArray()) RaiseInvalidOp();
  if (a.IsNull() || b.IsNull()) return Variant::Null();
  const bool textA = VA::IsText(a) || a.IsEmpty(), textB = VA::IsText(b) || b.IsEmpty();
  if (op == ArithOp::Add && textA && textB && (VA::IsText(a) || VA::IsText(b))) return Variant(a.AsString() + b.AsString());
  const Variant x = AsNumber(a), y = AsNumber(b);
  const TVarType tx = VA::Tag(x), ty = VA::Tag(y);
  if (tx == varDate || ty == varDate) {
    const double r = DoubleArith(x.AsFloat(), y.AsFloat(), op);
    const bool dateResult = (op == ArithOp::Add) || (op == ArithOp::Sub && !(tx == varDate && ty == varDate));
    return dateResult ? Variant(TDateTime(r)) : Variant(r);
  }
  if (tx == varDouble || ty == varDouble) return Variant(DoubleArith(x.AsFloat(), y.AsFloat(), op));
  if (tx == varCurrency || ty == varCurrency) return CurrencyArith(x, y, op);
  return IntegerArith(x, y, op);
}

}  // namespace

Variant& Variant::operator+=(const Variant& b) { return *this = Arith(*this, b, ArithOp::Add); }
Variant& Variant::operator-=(const Variant& b) { return *this = Arith(*this, b, ArithOp::Sub); }
Variant& Variant::operator*=(const Variant& b) { return *this = Arith(*this, b, ArithOp::Mul); }
Variant& Variant::operator/=(const Variant& b) { return *this = Arith(*this, b, ArithOp::Div); }

Variant Variant::operator-() const {
  if (IsArray()) RaiseInvalidOp();
  if (IsNull()) return *this;
  return Arith(Variant(0), *this, ArithOp::Sub);
}

// ---- Arrays ----------------------------------------------------------------------

namespace {

constexpr int64_t kMaxArrayLength = int64_t{1} << 26;

bool ValidElementType(TVarType t) {
  switch (t) {
    case varVariant:
    case varSmallint:
    case varInteger:
    case varSingle:
    case varDouble:
    case varCurrency:
    case varDate:
    case varOleStr:
    case varBoolean:
    case varShortInt:
    case varByte:
    case varWord:
    case varLongWord:
    case varInt64:
    case varUInt64:
    case varString:
    case varUString: return true;
    default: return false;
  }
}

Variant ElementZero(TVarType elementType) {
  return elementType == varVariant ? Variant() : VarAsType(Variant(), elementType);
}

[[noreturn]] void RaiseBadIndex() { throw EVariantBadIndexError(u"Variant or safe array index out of bounds"); }

void CheckDim(const Variant& v, int dim) {
  if (!v.IsArray()) throw EVariantNotAnArrayError(u"Variant is not an array");
  if (dim != 1) RaiseBadIndex();
}

}  // namespace

const Variant::ArrayRep& Variant::Array() const {
  if (type_ != varArray) throw EVariantNotAnArrayError(u"Variant is not an array");
  return *u_.a;
}

Variant::ArrayRep& Variant::MutableArray() {
  const ArrayRep& shared = Array();
  if (shared.refs.load(std::memory_order_acquire) > 1) {
    Variant copy = VariantAccess::MakeArray(shared.low, shared.elementType, shared.items);
    *this = std::move(copy);
  }
  return *u_.a;
}

Variant VarArrayCreate(int lowBound, int highBound, TVarType elementType) {
  const int64_t count = int64_t{highBound} - lowBound + 1;
  if (count < 0 || count > kMaxArrayLength || !ValidElementType(elementType))
    throw EVariantInvalidArgError(u"Invalid argument");
  return VA::MakeArray(lowBound, elementType,
                       std::vector<Variant>(static_cast<size_t>(count), ElementZero(elementType)));
}

Variant VarArrayOf(std::initializer_list<Variant> items) {
  return VA::MakeArray(0, varVariant, std::vector<Variant>(items));
}

Variant VarArrayOf(std::span<const Variant> items) {
  return VA::MakeArray(0, varVariant, std::vector<Variant>(items.begin(), items.end()));
}

int VarArrayDimCount(const Variant& v) { return v.IsArray() ? 1 : 0; }

int VarArrayLowBound(const Variant& v, int dim) {
  CheckDim(v, dim);
  return VA::Array(v).low;
}

int VarArrayHighBound(const Variant& v, int dim) {
  CheckDim(v, dim);
  const auto& rep = VA::Array(v);
  return rep.low + static_cast<int>(rep.items.size()) - 1;
}

void VarArrayRedim(Variant& v, int highBound) {
  CheckDim(v, 1);
  auto& rep = VA::MutableArray(v);
  const int64_t count = int64_t{highBound} - rep.low + 1;
  if (count < 0 || count > kMaxArrayLength) throw EVariantInvalidArgError(u"Invalid argument");
  rep.items.resize(static_cast<size_t>(count), ElementZero(rep.elementType));
}

const Variant& Variant::operator[](int index) const {
  const ArrayRep& rep = Array();
  const int64_t at = int64_t{index} - rep.low;
  if (at < 0 || at >= static_cast<int64_t>(rep.items.size())) RaiseBadIndex();
  return rep.items[static_cast<size_t>(at)];
}

Variant& Variant::operator[](int index) {
  static_cast<const Variant&>(*this)[index];  // checks the index before a copy on write
  ArrayRep& rep = MutableArray();
  return rep.items[static_cast<size_t>(int64_t{index} - rep.low)];
}

Variant Variant::GetElement(int index) const { return (*this)[index]; }

void Variant::PutElement(int index, const Variant& value) {
  const TVarType elementType = Array().elementType;
  Variant converted = elementType == varVariant ? value : VarAsType(value, elementType);
  (*this)[index] = std::move(converted);
}

// ---- Printing --------------------------------------------------------------------

void PrintTo(const Variant& v, std::ostream* os) {
  switch (VA::Tag(v)) {
    case varEmpty: *os << "Empty"; return;
    case varNull: *os << "Null"; return;
    case varUString: *os << "UnicodeString \"" << VA::Text(v) << '"'; return;
    case varDate: *os << "Date " << DateTimeToISO(VA::Dbl(v)); return;
    case varArray: {
      *os << VarTypeAsText(v.VarType()) << " [";
      const auto& rep = VA::Array(v);
      for (size_t i = 0; i < rep.items.size(); ++i) {
        if (i) *os << ", ";
        PrintTo(rep.items[i], os);
      }
      *os << ']';
      return;
    }
    default: *os << VarTypeAsText(v.VarType()) << ' ' << v.AsString(); return;
  }
}

std::ostream& operator<<(std::ostream& os, const Variant& v) {
  PrintTo(v, &os);
  return os;
}
