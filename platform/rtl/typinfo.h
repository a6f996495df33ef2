// Published properties and the by-name protocol.
//
// Each class lists its published properties in a table (KELMAR_PUBLISH);
// tables chain to the parent's. Callers that do not know an object's class
// read and write its properties by name. A property that is missing, or of
// another kind, is never an error: getters give the default and setters do
// nothing. Properties with a setter and no getter are write-only commands.
#pragma once

#include <concepts>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <type_traits>
#include <variant>
#include <vector>

#include "platform/rtl/events.h"
#include "platform/rtl/object.h"
#include "platform/rtl/sets.h"
#include "platform/rtl/sysutils.h"

class Variant;

// Kinds with the historical numbering. Booleans are enumerations whose type
// is named "Boolean"; text is tkUString.
enum TTypeKind {
  tkUnknown, tkInteger, tkChar, tkEnumeration, tkFloat, tkString, tkSet, tkClass, tkMethod,
  tkWChar, tkLString, tkWString, tkVariant, tkArray, tkRecord, tkInterface, tkInt64,
  tkDynArray, tkUString, tkClassRef, tkPointer, tkProcedure
};

// A tkVariant property's value in transit. Boxed, so that this header needs
// no variant.h (whose operators would reach every file that includes it).
struct TVariantValue {
  std::shared_ptr<const Variant> Value;  // null: Unassigned
};

// The value of a property in transit: ordinal kinds (integers, enumerations,
// booleans, sets as a bit mask, characters) travel as int64_t.
using TPropValue = std::variant<int64_t, double, String, TObject*, TMethod, TVariantValue>;

struct TPropInfo {
  String Name;
  TTypeKind Kind = tkUnknown;
  String TypeName;                          // empty for tkClass: see PropClass
  TClass (*PropClass)() = nullptr;          // tkClass: the declared class
  std::span<const char16_t* const> Names;   // tkEnumeration, tkSet: element names
  std::optional<int64_t> Default;           // ordinal default, for writers of streams
  std::function<TPropValue(const TObject*)> Get;
  std::function<void(TObject*, const TPropValue&)> Set;

  bool Readable() const { return static_cast<bool>(Get); }
  bool Writable() const { return static_cast<bool>(Set); }
  bool IsBoolean() const { return Kind == tkEnumeration && TypeName == u"Boolean"; }
};

// ---- Enumeration names -----------------------------------------------------

// KELMAR_ENUM(TFoo, u"a", u"b") after an enumeration's declaration gives its
// published properties the element names, for streams and listings.
template <class E>
struct TEnumTypeInfo {
  static constexpr const char16_t* Name = u"";
  static std::span<const char16_t* const> Names() { return {}; }
};

#define KELMAR_ENUM(E, ...)                                                 \
  template <>                                                               \
  struct TEnumTypeInfo<E> {                                                 \
    static constexpr const char16_t* Name = u"" #E;                         \
    static std::span<const char16_t* const> Names() {                       \
      static constexpr const char16_t* names[] = {__VA_ARGS__};             \
      return names;                                                         \
    }                                                                       \
  }

// Name of an element, or its number when unnamed.
String GetEnumName(const TPropInfo& info, int64_t value);
// Value of a named element (case-insensitive), -1 when absent.
int GetEnumValue(const TPropInfo& info, const String& name);

// ---- The protocol ----------------------------------------------------------

const TPropInfo* GetPropInfo(const TObject* obj, const String& name);
bool IsPublishedProp(const TObject* obj, const String& name);
bool IsPropType(const TObject* obj, const String& name, TTypeKind kind);
// All published properties in order, ancestors first.
const std::vector<const TPropInfo*>& GetPropList(const TObject* obj);

String GetPropString(const TObject* obj, const String& name, const String& def = String());
void SetPropString(TObject* obj, const String& name, const String& value);
bool GetPropBool(const TObject* obj, const String& name, bool def = false);
void SetPropBool(TObject* obj, const String& name, bool value);
int GetPropEnum(const TObject* obj, const String& name, int def = 0);
void SetPropEnum(TObject* obj, const String& name, int value);
int GetPropInteger(const TObject* obj, const String& name, int def = 0);
void SetPropInteger(TObject* obj, const String& name, int value);
double GetPropFloat(const TObject* obj, const String& name, double def = 0);
void SetPropFloat(TObject* obj, const String& name, double value);
// The getter also tests the value's class against `cls` (null: any class).
TObject* GetPropObject(const TObject* obj, const String& name, TClass cls = nullptr, TObject* def = nullptr);
// Does nothing when `value` is not of the property's declared class.
void SetPropObject(TObject* obj, const String& name, TObject* value);
TMethod GetPropMethod(const TObject* obj, const String& name);
TMethod GetPropMethod(const TObject* obj, const String& name, const TMethod& def);
// Does nothing when the method's signature is not the property's.
void SetPropMethod(TObject* obj, const String& name, const TMethod& value);

// Any readable property as a Variant: integers and characters as integers,
// Booleans as Boolean, enumerations by element name (by number when the
// value has no name), sets as "[a,b]", floats, text and Variants as they
// are. Objects, events, write-only and missing properties give Unassigned.
Variant GetPropValue(const TObject* obj, const String& name);
Variant GetPropValue(const TObject* obj, const TPropInfo& info);
// Sets any writable property of those kinds from a Variant, converting as
// Variants convert: text to numbers, element names or "[a,b]" to
// enumerations and sets, anything to text (Null to ""). Raises
// EPropertyError "Invalid property value: x" when the value cannot be
// converted; missing, read-only, object and event properties are left alone.
void SetPropValue(TObject* obj, const String& name, const Variant& value);
void SetPropValue(TObject* obj, const TPropInfo& info, const Variant& value);

// Ordinal access for any ordinal kind (integers, enumerations, sets).
int64_t GetOrdProp(const TObject* obj, const TPropInfo& info);
void SetOrdProp(TObject* obj, const TPropInfo& info, int64_t value);
// Sets as text, "[a,b]".
String GetSetProp(const TObject* obj, const TPropInfo& info);
void SetSetProp(TObject* obj, const TPropInfo& info, const String& text);

// ---- Building the tables ---------------------------------------------------

namespace kelmar_detail {

TVariantValue BoxVariant(const Variant& value);
const Variant& UnboxVariant(const TVariantValue& value);

template <class T>
struct IsSet : std::false_type {};
template <class E>
struct IsSet<Set<E>> : std::true_type {
  using Element = E;
};
template <class T>
struct IsEvent : std::false_type {};
template <class S>
struct IsEvent<TEvent<S>> : std::true_type {};

// How a C++ type travels through the protocol.
template <class V>
struct PropTraits {
  static void Describe(TPropInfo& info) {
    using T = std::remove_cvref_t<V>;
    if constexpr (std::is_same_v<T, bool>) {
      static constexpr const char16_t* names[] = {u"False", u"True"};
      info.Kind = tkEnumeration;
      info.TypeName = u"Boolean";
      info.Names = names;
    } else if constexpr (std::is_same_v<T, WideChar>) {
      info.Kind = tkWChar;
      info.TypeName = u"WideChar";
    } else if constexpr (std::is_same_v<T, int64_t> || std::is_same_v<T, uint64_t>) {
      info.Kind = tkInt64;
      info.TypeName = u"Int64";
    } else if constexpr (std::is_integral_v<T>) {
      info.Kind = tkInteger;
      info.TypeName = u"Integer";
    } else if constexpr (std::is_enum_v<T>) {
      info.Kind = tkEnumeration;
      info.TypeName = TEnumTypeInfo<T>::Name;
      info.Names = TEnumTypeInfo<T>::Names();
    } else if constexpr (IsSet<T>::value) {
      using E = typename IsSet<T>::Element;
      info.Kind = tkSet;
      info.TypeName = String(TEnumTypeInfo<E>::Name) + u"s";
      info.Names = TEnumTypeInfo<E>::Names();
    } else if constexpr (std::is_floating_point_v<T>) {
      info.Kind = tkFloat;
      info.TypeName = u"Double";
    } else if constexpr (std::is_same_v<T, String>) {
      info.Kind = tkUString;
      info.TypeName = u"UnicodeString";
    } else if constexpr (std::is_same_v<T, Variant>) {
      info.Kind = tkVariant;
      info.TypeName = u"Variant";
    } else if constexpr (IsEvent<T>::value) {
      info.Kind = tkMethod;
      info.TypeName = u"TMethod";
    } else if constexpr (std::is_pointer_v<T> && std::is_base_of_v<TObject, std::remove_pointer_t<T>>) {
      using C = std::remove_pointer_t<T>;
      // The class is resolved late: two classes may refer to each other.
      info.Kind = tkClass;
      info.PropClass = [] { return C::StaticClass(); };
    } else {
      static_assert(sizeof(T) == 0, "this type cannot be published");
    }
  }

  static TPropValue Wrap(const V& v) {
    using T = std::remove_cvref_t<V>;
    if constexpr (IsSet<T>::value) return static_cast<int64_t>(v.Mask());
    else if constexpr (std::is_integral_v<T> || std::is_enum_v<T>) return static_cast<int64_t>(v);
    else if constexpr (std::is_floating_point_v<T>) return static_cast<double>(v);
    else if constexpr (std::is_same_v<T, String>) return v;
    else if constexpr (std::is_same_v<T, Variant>) return BoxVariant(v);
    else if constexpr (IsEvent<T>::value) return v.ToMethod();
    else return static_cast<TObject*>(v);
  }

  // False when the value cannot be taken (wrong kind, class or signature).
  static bool Unwrap(const TPropValue& in, std::remove_cvref_t<V>& out) {
    using T = std::remove_cvref_t<V>;
    if constexpr (IsSet<T>::value) {
      if (!std::holds_alternative<int64_t>(in)) return false;
      out = T::FromMask(static_cast<uint64_t>(std::get<int64_t>(in)));
    } else if constexpr (std::is_integral_v<T> || std::is_enum_v<T>) {
      if (!std::holds_alternative<int64_t>(in)) return false;
      out = static_cast<T>(std::get<int64_t>(in));
    } else if constexpr (std::is_floating_point_v<T>) {
      if (const double* d = std::get_if<double>(&in)) out = static_cast<T>(*d);
      else if (const int64_t* i = std::get_if<int64_t>(&in)) out = static_cast<T>(*i);
      else return false;
    } else if constexpr (std::is_same_v<T, String>) {
      if (!std::holds_alternative<String>(in)) return false;
      out = std::get<String>(in);
    } else if constexpr (std::is_same_v<T, Variant>) {
      const TVariantValue* box = std::get_if<TVariantValue>(&in);
      if (!box) return false;
      out = UnboxVariant(*box);
    } else if constexpr (IsEvent<T>::value) {
      if (!std::holds_alternative<TMethod>(in)) return false;
      const TMethod& m = std::get<TMethod>(in);
      if (!T::Accepts(m)) return false;
      out = T::FromMethod(m);
    } else {
      if (!std::holds_alternative<TObject*>(in)) return false;
      TObject* o = std::get<TObject*>(in);
      using C = std::remove_pointer_t<T>;
      if (o && !o->InheritsFrom(C::StaticClass())) return false;
      out = static_cast<T>(o);
    }
    return true;
  }
};

template <class M>
struct MemberValue;
template <class C, class R>
struct MemberValue<R (C::*)() const> {
  using type = std::remove_cvref_t<R>;
};
template <class C, class R>
struct MemberValue<R (C::*)()> {
  using type = std::remove_cvref_t<R>;
};
template <class C, class R>
struct MemberValue<R (C::*)() const noexcept> {
  using type = std::remove_cvref_t<R>;
};
template <class C, class A>
struct MemberValue<void (C::*)(A)> {
  using type = std::remove_cvref_t<A>;
};
template <class C, class A>
struct MemberValue<void (C::*)(A) noexcept> {
  using type = std::remove_cvref_t<A>;
};
template <class C, class V>
  requires(!std::is_function_v<V>)
struct MemberValue<V C::*> {
  using type = std::remove_cvref_t<V>;
};

}  // namespace kelmar_detail

// Builds one class's table; handed to the body of KELMAR_PUBLISH as `r`.
// A getter is a const member function or a data member; a setter a member
// function taking the value or a data member; either may be nullptr.
template <class T>
class TPublisher {
 public:
  explicit TPublisher(TClassInfo& info) : info_(info) {}

  template <class G, class S>
  TPropInfo& Prop(const char16_t* name, G getter, S setter) {
    using V = typename ValueOf<G, S>::type;
    using Traits = kelmar_detail::PropTraits<V>;
    TPropInfo& info = info_.AddProperty(name);
    Traits::Describe(info);
    if constexpr (!std::is_null_pointer_v<G>) {
      info.Get = [getter](const TObject* obj) -> TPropValue {
        T* self = const_cast<T*>(static_cast<const T*>(obj));
        return Traits::Wrap(std::invoke(getter, self));
      };
    }
    if constexpr (!std::is_null_pointer_v<S>) {
      info.Set = [setter](TObject* obj, const TPropValue& value) {
        V v{};
        if (!Traits::Unwrap(value, v)) return;
        T* self = static_cast<T*>(obj);
        if constexpr (std::is_member_object_pointer_v<S>) self->*setter = std::move(v);
        else (self->*setter)(std::move(v));
      };
    }
    return info;
  }

  // A data member read and written directly (events, plain settings).
  template <class M>
    requires std::is_member_object_pointer_v<M>
  TPropInfo& Prop(const char16_t* name, M member) {
    return Prop(name, member, member);
  }

  // A write-only command property.
  template <class S>
  TPropInfo& Command(const char16_t* name, S setter) {
    return Prop(name, nullptr, setter);
  }

 private:
  template <class G, class S>
  struct ValueOf {
    using type = typename kelmar_detail::MemberValue<std::conditional_t<std::is_null_pointer_v<G>, S, G>>::type;
  };
  TClassInfo& info_;
};

namespace kelmar_detail {
template <class T>
void RunPublish(TClassInfo& info) {
  TPublisher<T> r(info);
  T::Publish(r);
}
template <class T>
TClassInfo::FactoryFn FactoryFor() {
  if constexpr (std::is_constructible_v<T, TComponent*> && !std::is_abstract_v<T>)
    return [](TComponent* owner) -> TComponent* { return new T(owner); };
  else
    return nullptr;
}
}  // namespace kelmar_detail

// Defines Class::StaticClass() and opens the body of its property table.
#define KELMAR_PUBLISH(Class)                                                                \
  TClass Class::StaticClass() {                                                             \
    static const TClassInfo info(u"" #Class, Class::inherited::StaticClass(),                \
                                 &kelmar_detail::RunPublish<Class>,                          \
                                 kelmar_detail::FactoryFor<Class>());                        \
    return &info;                                                                            \
  }                                                                                          \
  void Class::Publish([[maybe_unused]] TPublisher<Class>& r)
