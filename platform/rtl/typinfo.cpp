#include "platform/rtl/typinfo.h"

#include <limits>

#include "platform/rtl/variant.h"

namespace {

const TPropInfo* Find(const TObject* obj, const String& name) {
  return obj ? obj->ClassType()->FindProperty(name) : nullptr;
}

// The property, when it exists, is readable and is of one of the kinds.
const TPropInfo* Readable(const TObject* obj, const String& name, std::initializer_list<TTypeKind> kinds) {
  const TPropInfo* p = Find(obj, name);
  if (!p || !p->Readable()) return nullptr;
  for (TTypeKind k : kinds)
    if (p->Kind == k) return p;
  return nullptr;
}

const TPropInfo* Writable(const TObject* obj, const String& name, std::initializer_list<TTypeKind> kinds) {
  const TPropInfo* p = Find(obj, name);
  if (!p || !p->Writable()) return nullptr;
  for (TTypeKind k : kinds)
    if (p->Kind == k) return p;
  return nullptr;
}

constexpr std::initializer_list<TTypeKind> kOrdinal = {tkInteger, tkChar, tkEnumeration, tkSet, tkWChar, tkInt64};

}  // namespace

const TPropInfo* GetPropInfo(const TObject* obj, const String& name) { return Find(obj, name); }

bool IsPublishedProp(const TObject* obj, const String& name) { return Find(obj, name) != nullptr; }

bool IsPropType(const TObject* obj, const String& name, TTypeKind kind) {
  const TPropInfo* p = Find(obj, name);
  return p && p->Kind == kind;
}

const std::vector<const TPropInfo*>& GetPropList(const TObject* obj) {
  static const std::vector<const TPropInfo*> none;
  return obj ? obj->ClassType()->Properties() : none;
}

String GetPropString(const TObject* obj, const String& name, const String& def) {
  const TPropInfo* p = Readable(obj, name, {tkUString});
  return p ? std::get<String>(p->Get(obj)) : def;
}

void SetPropString(TObject* obj, const String& name, const String& value) {
  if (const TPropInfo* p = Writable(obj, name, {tkUString})) p->Set(obj, value);
}

bool GetPropBool(const TObject* obj, const String& name, bool def) {
  const TPropInfo* p = Readable(obj, name, {tkEnumeration});
  return p && p->IsBoolean() ? std::get<int64_t>(p->Get(obj)) != 0 : def;
}

void SetPropBool(TObject* obj, const String& name, bool value) {
  const TPropInfo* p = Writable(obj, name, {tkEnumeration});
  if (p && p->IsBoolean()) p->Set(obj, int64_t{value});
}

int GetPropEnum(const TObject* obj, const String& name, int def) {
  const TPropInfo* p = Readable(obj, name, {tkEnumeration});
  return p ? static_cast<int>(std::get<int64_t>(p->Get(obj))) : def;
}

void SetPropEnum(TObject* obj, const String& name, int value) {
  if (const TPropInfo* p = Writable(obj, name, {tkEnumeration})) p->Set(obj, int64_t{value});
}

int GetPropInteger(const TObject* obj, const String& name, int def) {
  const TPropInfo* p = Readable(obj, name, {tkInteger});
  return p ? static_cast<int>(std::get<int64_t>(p->Get(obj))) : def;
}

void SetPropInteger(TObject* obj, const String& name, int value) {
  if (const TPropInfo* p = Writable(obj, name, {tkInteger})) p->Set(obj, int64_t{value});
}

double GetPropFloat(const TObject* obj, const String& name, double def) {
  const TPropInfo* p = Readable(obj, name, {tkFloat});
  return p ? std::get<double>(p->Get(obj)) : def;
}

void SetPropFloat(TObject* obj, const String& name, double value) {
  if (const TPropInfo* p = Writable(obj, name, {tkFloat})) p->Set(obj, value);
}

TObject* GetPropObject(const TObject* obj, const String& name, TClass cls, TObject* def) {
  const TPropInfo* p = Readable(obj, name, {tkClass});
  if (!p) return def;
  TObject* value = std::get<TObject*>(p->Get(obj));
  if (value && cls && !value->InheritsFrom(cls)) return def;
  return value;
}

void SetPropObject(TObject* obj, const String& name, TObject* value) {
  if (const TPropInfo* p = Writable(obj, name, {tkClass})) p->Set(obj, value);
}

TMethod GetPropMethod(const TObject* obj, const String& name) { return GetPropMethod(obj, name, TMethod()); }

TMethod GetPropMethod(const TObject* obj, const String& name, const TMethod& def) {
  const TPropInfo* p = Readable(obj, name, {tkMethod});
  return p ? std::get<TMethod>(p->Get(obj)) : def;
}

void SetPropMethod(TObject* obj, const String& name, const TMethod& value) {
  if (const TPropInfo* p = Writable(obj, name, {tkMethod})) p->Set(obj, value);
}

int64_t GetOrdProp(const TObject* obj, const TPropInfo& info) {
  for (TTypeKind k : kOrdinal)
    if (info.Kind == k && info.Readable()) return std::get<int64_t>(info.Get(obj));
  return 0;
}

void SetOrdProp(TObject* obj, const TPropInfo& info, int64_t value) {
  for (TTypeKind k : kOrdinal)
    if (info.Kind == k && info.Writable()) return info.Set(obj, value);
}

String GetEnumName(const TPropInfo& info, int64_t value) {
  if (value >= 0 && static_cast<size_t>(value) < info.Names.size()) return info.Names[static_cast<size_t>(value)];
  return IntToStr(value);
}

int GetEnumValue(const TPropInfo& info, const String& name) {
  for (size_t i = 0; i < info.Names.size(); ++i)
    if (SameText(info.Names[i], name)) return static_cast<int>(i);
  return -1;
}

String GetSetProp(const TObject* obj, const TPropInfo& info) {
  uint64_t mask = static_cast<uint64_t>(GetOrdProp(obj, info));
  String out = u"[";
  bool first = true;
  for (int i = 0; i < 64; ++i) {
    if (!(mask & (uint64_t{1} << i))) continue;
    if (!first) out += u',';
    out += GetEnumName(info, i);
    first = false;
  }
  return out + u"]";
}

void SetSetProp(TObject* obj, const TPropInfo& info, const String& text) {
  String body = Trim(text);
  if (body.Length() >= 2 && body[1] == u'[' && body[body.Length()] == u']') body = body.SubString(2, body.Length() - 2);
  uint64_t mask = 0;
  int start = 1;
  for (int i = 1; i <= body.Length() + 1; ++i) {
    if (i <= body.Length() && body[i] != u',') continue;
    String item = Trim(body.SubString(start, i - start));
    start = i + 1;
    if (item.IsEmpty()) continue;
    int v = GetEnumValue(info, item);
    if (v < 0) throw EPropertyError(u"Invalid property value: " + item);
    mask |= uint64_t{1} << v;
  }
  SetOrdProp(obj, info, static_cast<int64_t>(mask));
}

// ---- Properties as Variants ------------------------------------------------

TVariantValue kelmar_detail::BoxVariant(const Variant& value) {
  if (value.IsEmpty()) return {};
  return {std::make_shared<const Variant>(value)};
}

const Variant& kelmar_detail::UnboxVariant(const TVariantValue& value) {
  static const Variant unassigned;
  return value.Value ? *value.Value : unassigned;
}

namespace {

[[noreturn]] void InvalidValue(const Variant& value) {
  String text = value.IsArray() ? String(u"(Array)") : value.IsNull() ? String(u"Null") : VarToStr(value);
  throw EPropertyError(u"Invalid property value: " + text);
}

// Runs a Variant conversion; its failure becomes the property's error.
template <class F>
auto Converted(const Variant& value, F convert) {
  try {
    return convert();
  } catch (const EVariantError&) {
    InvalidValue(value);
  } catch (const EConvertError&) {
    InvalidValue(value);
  }
}

int64_t EnumOrdinal(const TPropInfo& info, const Variant& value) {
  if (VarIsStr(value)) {
    int byName = GetEnumValue(info, VarToStr(value));
    if (byName >= 0) return byName;
  }
  int64_t n = Converted(value, [&] { return value.AsInt64(); });
  if (!info.Names.empty() && (n < 0 || static_cast<size_t>(n) >= info.Names.size())) InvalidValue(value);
  return n;
}

int64_t CharCode(const Variant& value) {
  if (!VarIsStr(value)) return Converted(value, [&] { return value.AsInteger(); });
  String text = VarToStr(value);
  if (text.Length() > 1) InvalidValue(value);
  return text.IsEmpty() ? 0 : text[1];
}

}  // namespace

Variant GetPropValue(const TObject* obj, const String& name) {
  const TPropInfo* p = Find(obj, name);
  return p ? GetPropValue(obj, *p) : Variant();
}

Variant GetPropValue(const TObject* obj, const TPropInfo& info) {
  if (!obj || !info.Readable()) return Variant();
  switch (info.Kind) {
    case tkInteger:
    case tkInt64:
    case tkChar:
    case tkWChar: {
      int64_t n = GetOrdProp(obj, info);
      if (n >= std::numeric_limits<int>::min() && n <= std::numeric_limits<int>::max()) return static_cast<int>(n);
      return n;
    }
    case tkEnumeration: {
      int64_t n = GetOrdProp(obj, info);
      if (info.IsBoolean()) return n != 0;
      if (n >= 0 && static_cast<size_t>(n) < info.Names.size()) return String(info.Names[static_cast<size_t>(n)]);
      return n;
    }
    case tkSet: return GetSetProp(obj, info);
    case tkFloat: return std::get<double>(info.Get(obj));
    case tkString:
    case tkLString:
    case tkWString:
    case tkUString: return std::get<String>(info.Get(obj));
    case tkVariant: return kelmar_detail::UnboxVariant(std::get<TVariantValue>(info.Get(obj)));
    default: return Variant();
  }
}

void SetPropValue(TObject* obj, const String& name, const Variant& value) {
  if (const TPropInfo* p = Find(obj, name)) SetPropValue(obj, *p, value);
}

void SetPropValue(TObject* obj, const TPropInfo& info, const Variant& value) {
  if (!obj || !info.Writable()) return;
  switch (info.Kind) {
    case tkInteger: info.Set(obj, int64_t{Converted(value, [&] { return value.AsInteger(); })}); break;
    case tkInt64: info.Set(obj, Converted(value, [&] { return value.AsInt64(); })); break;
    case tkChar:
    case tkWChar: info.Set(obj, CharCode(value)); break;
    case tkEnumeration:
      if (info.IsBoolean()) info.Set(obj, int64_t{Converted(value, [&] { return value.AsBoolean(); })});
      else info.Set(obj, EnumOrdinal(info, value));
      break;
    case tkSet:
      if (VarIsStr(value)) SetSetProp(obj, info, VarToStr(value));
      else info.Set(obj, Converted(value, [&] { return value.AsInt64(); }));
      break;
    case tkFloat: info.Set(obj, Converted(value, [&] { return value.AsFloat(); })); break;
    case tkString:
    case tkLString:
    case tkWString:
    case tkUString: info.Set(obj, Converted(value, [&] { return VarToStr(value); })); break;
    case tkVariant: info.Set(obj, kelmar_detail::BoxVariant(value)); break;
    default: break;
  }
}
