#include "platform/rtl/filer.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

#include "platform/rtl/collection.h"
#include "platform/rtl/stringlist.h"
#include "platform/rtl/variant.h"

KELMAR_PUBLISH(TFiler) {}
KELMAR_PUBLISH(TWriter) {}
KELMAR_PUBLISH(TReader) {}

namespace {

constexpr char kSignature[4] = {'T', 'P', 'F', '0'};
// Deeper nesting than any design has; a garbage stream stops here instead
// of exhausting the stack.
constexpr int kMaxDepth = 100;

// ---- Component state -------------------------------------------------------

// csReading and csWriting have no public setter on TComponent; a pointer to
// its protected SetState, formed through a derived class, reaches it.
struct ComponentState : TComponent {
  static void Set(TComponent* c, TComponentStateFlag flag, bool on) { (c->*&ComponentState::SetState)(flag, on); }
};

// ---- Little-endian numbers -------------------------------------------------

void PutLE(TStream* s, uint64_t value, int size) {
  uint8_t bytes[8];
  for (int i = 0; i < size; ++i) bytes[i] = static_cast<uint8_t>(value >> (8 * i));
  s->WriteBuffer(bytes, size);
}

uint64_t GetLE(TStream* s, int size) {
  uint8_t bytes[8];
  s->ReadBuffer(bytes, size);
  uint64_t value = 0;
  for (int i = size - 1; i >= 0; --i) value = (value << 8) | bytes[i];
  return value;
}

template <class T>
T GetSigned(TStream* s) {
  return static_cast<T>(GetLE(s, sizeof(T)));
}

// ---- The 10-byte x87 extended format ---------------------------------------
// 64-bit significand with an explicit integer bit, then sign and a 15-bit
// exponent biased by 16383: value = significand * 2^(exponent - 16383 - 63).

constexpr int kExtendedBias = 16383 + 63;

void PutExtended(TStream* s, double value) {
  const uint64_t bits = std::bit_cast<uint64_t>(value);
  const uint16_t sign = static_cast<uint16_t>((bits >> 63) << 15);
  const int exponent = static_cast<int>((bits >> 52) & 0x7FF);
  const uint64_t fraction = bits & ((uint64_t{1} << 52) - 1);
  uint64_t significand = 0;
  int biased = 0;
  if (exponent == 0x7FF) {  // infinities and NaNs
    significand = (uint64_t{1} << 63) | (fraction << 11);
    biased = 0x7FFF;
  } else if (exponent != 0) {
    significand = ((uint64_t{1} << 52) | fraction) << 11;
    biased = exponent - 1075 - 11 + kExtendedBias;
  } else if (fraction != 0) {  // a subnormal double is a normal extended
    const int shift = std::countl_zero(fraction);
    significand = fraction << shift;
    biased = -1074 - shift + kExtendedBias;
  }
  PutLE(s, significand, 8);
  PutLE(s, sign | static_cast<uint16_t>(biased), 2);
}

double GetExtended(TStream* s) {
  const uint64_t significand = GetLE(s, 8);
  const uint16_t head = static_cast<uint16_t>(GetLE(s, 2));
  const double sign = (head & 0x8000) ? -1.0 : 1.0;
  const int biased = head & 0x7FFF;
  if (biased == 0x7FFF) {
    if ((significand << 1) == 0) return sign * std::numeric_limits<double>::infinity();
    // A NaN keeps the top of its payload, so that a double comes back whole.
    uint64_t fraction = (significand >> 11) & ((uint64_t{1} << 52) - 1);
    if (fraction == 0) fraction = uint64_t{1} << 51;
    return std::bit_cast<double>((uint64_t{head & 0x8000u} << 48) | (uint64_t{0x7FF} << 52) | fraction);
  }
  if (significand == 0) return sign * 0.0;
  // Extended denormals have the exponent of the smallest normal.
  const int exponent = (biased == 0 ? 1 : biased) - kExtendedBias;
  return sign * std::ldexp(static_cast<double>(significand), exponent);
}

// ---- Helpers ---------------------------------------------------------------

bool IsAscii(const String& s) {
  return std::all_of(s.view().begin(), s.view().end(), [](char16_t c) { return c < 0x80; });
}

bool IsIntegerTag(TValueType t) { return t == vaInt8 || t == vaInt16 || t == vaInt32 || t == vaInt64; }

bool IsTextTag(TValueType t) { return t == vaString || t == vaLString || t == vaUTF8String || t == vaWString; }

bool IsOrdinalKind(TTypeKind k) {
  return k == tkInteger || k == tkInt64 || k == tkChar || k == tkWChar || k == tkEnumeration || k == tkSet;
}

bool IsTextKind(TTypeKind k) { return k == tkString || k == tkLString || k == tkWString || k == tkUString; }

// Marks a component as being written for the length of a scope.
class WritingScope {
 public:
  explicit WritingScope(TComponent* c) : c_(c) { ComponentState::Set(c_, csWriting, true); }
  ~WritingScope() { ComponentState::Set(c_, csWriting, false); }
  WritingScope(const WritingScope&) = delete;
  WritingScope& operator=(const WritingScope&) = delete;

 private:
  TComponent* c_;
};

// An error already told with the property it arose in; outer properties
// pass it on rather than name themselves again. Still an EReadError.
class EPropertyReadError : public EReadError {
 public:
  using EReadError::EReadError;
};

String ObjectPath(const TPersistent* instance) {
  String path = instance->GetNamePath();
  return path.IsEmpty() ? instance->ClassName() : path;
}

// "Panel1.Edit1" from the root down; the root itself by its own name.
TComponent* FindByPath(TComponent* root, const String& path) {
  if (path.IsEmpty()) return nullptr;
  TComponent* c = root;
  int start = 1;
  for (int i = 1; i <= path.Length() + 1; ++i) {
    if (i <= path.Length() && path[i] != u'.') continue;
    c = c->FindComponent(path.SubString(start, i - start));
    if (!c) break;
    start = i + 1;
  }
  if (!c && SameText(path, root->Name())) return root;
  return c;
}

std::vector<String> SplitPath(const String& path) {
  std::vector<String> parts;
  int start = 1;
  for (int i = 1; i <= path.Length() + 1; ++i) {
    if (i <= path.Length() && path[i] != u'.') continue;
    parts.push_back(path.SubString(start, i - start));
    start = i + 1;
  }
  return parts;
}

}  // namespace

// ---- TWriter ---------------------------------------------------------------

void TWriter::WriteSignature() { Stream()->WriteBuffer(kSignature, sizeof kSignature); }

void TWriter::WriteRootComponent(TComponent* Root) {
  SetRoot(Root);
  WriteSignature();
  WriteComponent(Root);
}

void TWriter::WriteComponent(TComponent* Component) {
  const bool ownRoot = Root() == nullptr;
  if (ownRoot) SetRoot(Component);
  try {
    WritingScope scope(Component);
    WriteStr(Component->ClassName());
    WriteStr(Component->Name());
    WriteProperties(Component);
    WriteListEnd();
    for (int i = 0; i < Component->ComponentCount(); ++i) {
      TComponent* child = Component->Components(i);
      if (!child->Name().IsEmpty()) WriteComponent(child);
    }
    WriteListEnd();
  } catch (...) {
    if (ownRoot) SetRoot(nullptr);
    throw;
  }
  if (ownRoot) SetRoot(nullptr);
}

void TWriter::WriteProperties(TPersistent* Instance) {
  if (std::find(writing_.begin(), writing_.end(), Instance) != writing_.end()) return;  // a cycle of sub-objects
  writing_.push_back(Instance);
  try {
    for (const TPropInfo* info : GetPropList(Instance)) WriteProperty(Instance, *info, String());
  } catch (...) {
    writing_.pop_back();
    throw;
  }
  writing_.pop_back();
}

void TWriter::WriteProperty(TPersistent* Instance, const TPropInfo& Info, const String& Prefix) {
  if (!Info.Readable() || !Info.Writable() || Info.Kind == tkMethod) return;
  if (auto* stored = dynamic_cast<const TStoredProperties*>(Instance); stored && !stored->IsPropertyStored(Info)) return;
  // The header carries a component's name.
  if (Prefix.IsEmpty() && SameText(Info.Name, u"Name") && dynamic_cast<TComponent*>(Instance)) return;
  const String path = Prefix + Info.Name;
  if (IsOrdinalKind(Info.Kind)) {
    const int64_t value = GetOrdProp(Instance, Info);
    if (Info.Default && *Info.Default == value) return;
    WriteStr(path);
    const bool named = value >= 0 && static_cast<size_t>(value) < Info.Names.size();
    if (Info.Kind == tkEnumeration && named) {
      WriteIdent(Info.Names[static_cast<size_t>(value)]);
    } else if (Info.Kind == tkSet && static_cast<uint64_t>(value) >> std::min<size_t>(Info.Names.size(), 63) == 0) {
      std::vector<String> names;
      for (size_t i = 0; i < Info.Names.size(); ++i)
        if (static_cast<uint64_t>(value) & (uint64_t{1} << i)) names.push_back(Info.Names[i]);
      WriteSet(names);
    } else if (Info.Kind == tkChar || Info.Kind == tkWChar) {
      WriteString(String(1, static_cast<char16_t>(value)));
    } else {
      WriteInteger(value);  // integers, and elements without names
    }
    return;
  }
  switch (Info.Kind) {
    case tkFloat: {
      const double value = std::get<double>(Info.Get(Instance));
      if (value == 0) return;
      WriteStr(path);
      WriteFloat(value);
      return;
    }
    case tkVariant: {
      const Variant value = GetPropValue(Instance, Info);
      if (value.IsEmpty()) return;
      WriteStr(path);
      WriteVariant(value);
      return;
    }
    case tkClass: WriteObjectProperty(std::get<TObject*>(Info.Get(Instance)), path); return;
    default:
      if (IsTextKind(Info.Kind)) {
        const String value = std::get<String>(Info.Get(Instance));
        if (value.IsEmpty()) return;
        WriteStr(path);
        WriteString(value);
      }
      return;
  }
}

void TWriter::WriteObjectProperty(TObject* Value, const String& Path) {
  if (!Value) return;
  if (auto* component = dynamic_cast<TComponent*>(Value)) {
    const String name = ReferenceName(component);
    if (name.IsEmpty()) return;
    WriteStr(Path);
    WriteIdent(name);
  } else if (auto* collection = dynamic_cast<TCollection*>(Value)) {
    WriteStr(Path);
    WriteCollection(collection);
  } else if (auto* strings = dynamic_cast<TStrings*>(Value)) {
    if (strings->Count() == 0) return;
    WriteStr(Path + u".Strings");
    WriteListBegin();
    for (int i = 0; i < strings->Count(); ++i) WriteString(strings->Strings(i));
    WriteListEnd();
  } else if (auto* persistent = dynamic_cast<TPersistent*>(Value)) {
    if (std::find(writing_.begin(), writing_.end(), persistent) != writing_.end()) return;
    writing_.push_back(persistent);
    try {
      for (const TPropInfo* info : GetPropList(persistent)) WriteProperty(persistent, *info, Path + u".");
    } catch (...) {
      writing_.pop_back();
      throw;
    }
    writing_.pop_back();
  }
}

String TWriter::ReferenceName(TComponent* Value) const {
  TComponent* root = Root();
  if (!root || Value->Name().IsEmpty()) return String();
  if (Value == root) return root->Name();
  String path = Value->Name();
  TComponent* owner = Value->Owner();
  for (; owner && owner != root; owner = owner->Owner()) {
    if (owner->Name().IsEmpty()) return String();
    path = owner->Name() + u"." + path;
  }
  return owner ? path : String();  // outside the tree: no name would find it
}

void TWriter::WriteCollection(TCollection* Value) {
  WriteValue(vaCollection);
  for (int i = 0; i < Value->Count(); ++i) {
    WriteListBegin();
    WriteProperties(Value->Items(i));
    WriteListEnd();
  }
  WriteListEnd();
}

void TWriter::WriteValue(TValueType Value) { PutLE(Stream(), Value, 1); }

void TWriter::WriteInteger(int64_t Value) {
  if (Value >= INT8_MIN && Value <= INT8_MAX) {
    WriteValue(vaInt8);
    PutLE(Stream(), static_cast<uint64_t>(Value), 1);
  } else if (Value >= INT16_MIN && Value <= INT16_MAX) {
    WriteValue(vaInt16);
    PutLE(Stream(), static_cast<uint64_t>(Value), 2);
  } else if (Value >= INT32_MIN && Value <= INT32_MAX) {
    WriteValue(vaInt32);
    PutLE(Stream(), static_cast<uint64_t>(Value), 4);
  } else {
    WriteValue(vaInt64);
    PutLE(Stream(), static_cast<uint64_t>(Value), 8);
  }
}

void TWriter::WriteBoolean(bool Value) { WriteValue(Value ? vaTrue : vaFalse); }

void TWriter::WriteFloat(double Value) {
  WriteValue(vaExtended);
  PutExtended(Stream(), Value);
}

void TWriter::WriteDouble(double Value) {
  WriteValue(vaDouble);
  PutLE(Stream(), std::bit_cast<uint64_t>(Value), 8);
}

void TWriter::WriteCurrency(Currency Value) {
  WriteValue(vaCurrency);
  PutLE(Stream(), static_cast<uint64_t>(Value.Val), 8);
}

void TWriter::WriteDate(TDateTime Value) {
  WriteValue(vaDate);
  PutLE(Stream(), std::bit_cast<uint64_t>(Value.Val), 8);
}

void TWriter::WriteString(const String& Value) {
  auto writeLength = [this](size_t n) {
    if (n > static_cast<size_t>(INT32_MAX)) throw EWriteError(u"Text too long for a component stream");
    PutLE(Stream(), n, 4);
  };
  if (IsAscii(Value)) {
    const std::string bytes = Value.ToUtf8();
    if (bytes.size() <= 255) {
      WriteValue(vaString);
      PutLE(Stream(), bytes.size(), 1);
    } else {
      WriteValue(vaLString);
      writeLength(bytes.size());
    }
    Stream()->WriteBuffer(bytes.data(), static_cast<int64_t>(bytes.size()));
    return;
  }
  const std::string utf8 = Value.ToUtf8();
  if (String::FromUtf8(utf8) == Value) {
    WriteValue(vaUTF8String);
    writeLength(utf8.size());
    Stream()->WriteBuffer(utf8.data(), static_cast<int64_t>(utf8.size()));
    return;
  }
  // Lone surrogates have no UTF-8 form; UTF-16 keeps them.
  WriteValue(vaWString);
  writeLength(static_cast<size_t>(Value.Length()));
  for (char16_t c : Value.view()) PutLE(Stream(), c, 2);
}

void TWriter::WriteIdent(const String& Value) {
  if (SameText(Value, u"False")) WriteValue(vaFalse);
  else if (SameText(Value, u"True")) WriteValue(vaTrue);
  else if (SameText(Value, u"nil")) WriteValue(vaNil);
  else if (SameText(Value, u"Null")) WriteValue(vaNull);
  else {
    WriteValue(vaIdent);
    WriteStr(Value);
  }
}

void TWriter::WriteSet(const std::vector<String>& Names) {
  WriteValue(vaSet);
  for (const String& name : Names) WriteStr(name);
  WriteStr(String());
}

void TWriter::WriteVariant(const Variant& Value) {
  if (Value.IsArray()) {
    WriteListBegin();
    for (int i = VarArrayLowBound(Value, 1); i <= VarArrayHighBound(Value, 1); ++i) {
      const Variant item = Value.GetElement(i);
      if (item.IsNull()) WriteValue(vaNil);
      else WriteVariant(item);
    }
    WriteListEnd();
    return;
  }
  switch (Value.VarType()) {
    case varEmpty: WriteValue(vaNil); return;
    case varNull: WriteValue(vaNull); return;
    case varBoolean: WriteBoolean(Value.AsBoolean()); return;
    case varShortInt:
    case varByte:
    case varSmallint:
    case varWord:
    case varInteger:
    case varLongWord:
    case varInt64:
    case varUInt64: WriteInteger(Value.AsInt64()); return;
    case varSingle:
    case varDouble: WriteFloat(Value.AsFloat()); return;
    case varCurrency: WriteCurrency(Value.AsCurrency()); return;
    case varDate: WriteDate(Value.AsDateTime()); return;
    default:
      if (VarIsStr(Value)) return WriteString(Value.AsString());
      throw EWriteError(u"A Variant of type " + VarTypeAsText(Value.VarType()) + u" cannot be streamed");
  }
}

void TWriter::WriteStr(const String& Value) {
  const std::string bytes = Value.ToUtf8();
  if (bytes.size() > 255) throw EWriteError(u"Name too long for a component stream: " + Value.SubString(1, 40));
  PutLE(Stream(), bytes.size(), 1);
  Stream()->WriteBuffer(bytes.data(), static_cast<int64_t>(bytes.size()));
}

// ---- TReader ---------------------------------------------------------------

class TReader::DepthGuard {
 public:
  explicit DepthGuard(TReader& reader) : reader_(reader) {
    if (reader_.depth_ >= kMaxDepth) throw EReadError(u"Invalid stream format");
    ++reader_.depth_;
  }
  ~DepthGuard() { --reader_.depth_; }
  DepthGuard(const DepthGuard&) = delete;
  DepthGuard& operator=(const DepthGuard&) = delete;

 private:
  TReader& reader_;
};

void TReader::PropValueError() { throw EReadError(u"Invalid property value"); }

void TReader::ReadSignature() {
  char bytes[4];
  Stream()->ReadBuffer(bytes, 4);
  if (std::memcmp(bytes, kSignature, 4) != 0) throw EReadError(u"Invalid stream format");
}

void TReader::ReadPrefix() {
  const uint8_t byte = static_cast<uint8_t>(NextValue());
  if ((byte & 0xF0) != 0xF0) return;
  ReadValue();
  constexpr uint8_t ffChildPos = 2;
  if (byte & ffChildPos) ReadInt64();
}

TComponent* TReader::ReadRootComponent(TComponent* Root) {
  loaded_.clear();
  created_.clear();
  fixups_.clear();
  collections_.clear();
  depth_ = 0;
  ReadSignature();
  ReadPrefix();
  const String className = ReadStr();
  const String name = ReadStr();
  const bool created = Root == nullptr;
  if (created) {
    Root = FindClass(className)->CreateComponent(nullptr);
    if (!Root) throw EReadError(u"Class " + className + u" cannot be created from a stream");
  }
  SetRoot(Root);
  try {
    BeginReading(Root);
    Root->SetName(name);
    ReadData(Root);
    ResolveFixups();
  } catch (...) {
    fixups_.clear();
    if (created) {
      SetRoot(nullptr);
      delete Root;
    } else {
      for (TComponent* c : loaded_) {
        if (std::find(created_.begin(), created_.end(), c) != created_.end()) continue;
        ComponentState::Set(c, csReading, false);
        ComponentState::Set(c, csLoading, false);
      }
      // Latest first: whatever a component made in this read owns was made after it.
      for (auto it = created_.rbegin(); it != created_.rend(); ++it) delete *it;
    }
    loaded_.clear();
    created_.clear();
    throw;
  }
  created_.clear();
  std::vector<TComponent*> loaded;
  loaded.swap(loaded_);
  for (TComponent* c : loaded) c->Loaded();
  return Root;
}

void TReader::BeginReading(TComponent* Component) {
  Component->BeginLoading();
  ComponentState::Set(Component, csReading, true);
  if (std::find(loaded_.begin(), loaded_.end(), Component) == loaded_.end()) loaded_.push_back(Component);
}

TComponent* TReader::ReadComponent(TComponent* Owner) {
  DepthGuard guard(*this);
  ReadPrefix();
  const String className = ReadStr();
  const String name = ReadStr();
  TComponent* component = Owner->FindComponent(name);
  if (!component) {
    component = FindClass(className)->CreateComponent(Owner);
    if (!component) throw EReadError(u"Class " + className + u" cannot be created from a stream");
    created_.push_back(component);
    component->SetName(name);
  }
  BeginReading(component);
  ReadData(component);
  return component;
}

void TReader::ReadData(TComponent* Component) {
  while (!EndOfList()) ReadProperty(Component);
  ReadListEnd();
  while (!EndOfList()) ReadComponent(Component);
  ReadListEnd();
  ComponentState::Set(Component, csReading, false);
}

void TReader::ReadProperty(TPersistent* Instance) {
  const String path = ReadStr();
  if (path.IsEmpty()) throw EReadError(u"Invalid stream format");
  try {
    // "Font.Size": walk the sub-objects; components are references, not
    // parts, and are not walked into.
    const std::vector<String> parts = SplitPath(path);
    TPersistent* target = Instance;
    for (size_t i = 0; i + 1 < parts.size() && target; ++i) {
      const TPropInfo* info = target->ClassType()->FindProperty(parts[i]);
      TObject* sub = info && info->Kind == tkClass && info->Readable() ? std::get<TObject*>(info->Get(target)) : nullptr;
      target = dynamic_cast<TComponent*>(sub) ? nullptr : dynamic_cast<TPersistent*>(sub);
    }
    if (!target) return SkipValue();
    auto* strings = dynamic_cast<TStrings*>(target);
    if (strings && parts.size() > 1 && SameText(parts.back(), u"Strings")) return ReadStrings(strings);
    const TPropInfo* info = target->ClassType()->FindProperty(parts.back());
    if (!info) return SkipValue();
    ReadPropValue(target, *info);
  } catch (const EPropertyReadError&) {
    throw;
  } catch (const EAbort&) {
    throw;
  } catch (const Exception& e) {
    throw EPropertyReadError(u"Error reading " + ObjectPath(Instance) + u"." + path + u": " + e.Message);
  }
}

void TReader::ReadPropValue(TPersistent* Instance, const TPropInfo& Info) {
  if (Info.Kind == tkClass) return ReadObjectValue(Instance, Info);
  if (!Info.Writable() || Info.Kind == tkMethod) return SkipValue();
  const TValueType next = NextValue();
  Variant value;
  if (Info.Kind == tkFloat) {
    value = ReadFloat();
  } else if (IsTextKind(Info.Kind)) {
    value = ReadString();
  } else if (Info.Kind == tkVariant) {
    value = ReadVariant();
  } else if (!IsOrdinalKind(Info.Kind)) {
    return SkipValue();
  } else if (IsIntegerTag(next)) {
    value = ReadInt64();
  } else if (Info.IsBoolean() && (next == vaFalse || next == vaTrue)) {
    value = ReadBoolean();
  } else if (Info.Kind == tkEnumeration && next == vaIdent) {
    value = ReadIdent();
  } else if (Info.Kind == tkSet && next == vaSet) {
    String text = u"[";
    for (const String& name : ReadSet()) text += (text.Length() > 1 ? u"," : u"") + name;
    value = text + u"]";
  } else if ((Info.Kind == tkChar || Info.Kind == tkWChar) && IsTextTag(next)) {
    value = ReadString();
  } else {
    PropValueError();
  }
  SetPropValue(Instance, Info, value);
}

void TReader::ReadObjectValue(TPersistent* Instance, const TPropInfo& Info) {
  switch (NextValue()) {
    case vaCollection: {
      auto* collection = Info.Readable() ? dynamic_cast<TCollection*>(std::get<TObject*>(Info.Get(Instance))) : nullptr;
      if (!collection) PropValueError();
      return ReadCollection(collection);
    }
    case vaNil:
      ReadValue();
      if (Info.Writable()) Info.Set(Instance, static_cast<TObject*>(nullptr));
      return;
    case vaIdent: {
      TClass declared = Info.PropClass ? Info.PropClass() : nullptr;
      if (!declared || !declared->InheritsFrom(TComponent::StaticClass())) PropValueError();
      String name = ReadIdent();
      if (Info.Writable()) fixups_.push_back({Instance, &Info, std::move(name), collections_});
      return;
    }
    default: PropValueError();
  }
}

void TReader::ReadStrings(TStrings* Strings) {
  ReadListBegin();
  Strings->BeginUpdate();
  try {
    Strings->Clear();
    while (!EndOfList()) Strings->Add(ReadString());
  } catch (...) {
    Strings->EndUpdate();
    throw;
  }
  Strings->EndUpdate();
  ReadListEnd();
}

void TReader::ReadCollection(TCollection* Collection) {
  if (ReadValue() != vaCollection) PropValueError();
  DepthGuard guard(*this);
  // Clearing deletes the items, so references waiting to be set in them go.
  std::erase_if(fixups_, [Collection](const Fixup& f) {
    return std::find(f.Within.begin(), f.Within.end(), Collection) != f.Within.end();
  });
  collections_.push_back(Collection);
  Collection->BeginUpdate();
  try {
    Collection->Clear();
    while (!EndOfList()) {
      if (IsIntegerTag(NextValue())) ReadInt64();  // the historical order number
      TCollectionItem* item = Collection->Add();
      ReadListBegin();
      while (!EndOfList()) ReadProperty(item);
      ReadListEnd();
    }
    ReadListEnd();
  } catch (...) {
    collections_.pop_back();
    Collection->EndUpdate();
    throw;
  }
  collections_.pop_back();
  Collection->EndUpdate();
}

void TReader::ResolveFixups() {
  std::vector<Fixup> fixups;
  fixups.swap(fixups_);
  for (const Fixup& f : fixups)
    if (TComponent* target = FindByPath(Root(), f.Name)) f.Info->Set(f.Instance, static_cast<TObject*>(target));
}

// ---- Values ----

TValueType TReader::NextValue() {
  const TValueType value = ReadValue();
  Stream()->Seek(-1, soCurrent);
  return value;
}

TValueType TReader::ReadValue() { return static_cast<TValueType>(GetLE(Stream(), 1)); }

void TReader::ReadListBegin() {
  if (ReadValue() != vaList) PropValueError();
}

void TReader::ReadListEnd() {
  if (ReadValue() != vaNull) PropValueError();
}

int64_t TReader::ReadInt64() {
  switch (ReadValue()) {
    case vaInt8: return GetSigned<int8_t>(Stream());
    case vaInt16: return GetSigned<int16_t>(Stream());
    case vaInt32: return GetSigned<int32_t>(Stream());
    case vaInt64: return GetSigned<int64_t>(Stream());
    default: PropValueError();
  }
}

int TReader::ReadInteger() {
  const int64_t value = ReadInt64();
  if (value < INT32_MIN || value > INT32_MAX) PropValueError();
  return static_cast<int>(value);
}

bool TReader::ReadBoolean() {
  switch (ReadValue()) {
    case vaFalse: return false;
    case vaTrue: return true;
    default: PropValueError();
  }
}

double TReader::ReadFloat() {
  if (IsIntegerTag(NextValue())) return static_cast<double>(ReadInt64());
  switch (ReadValue()) {
    case vaExtended: return GetExtended(Stream());
    case vaDouble:
    case vaDate: return std::bit_cast<double>(GetLE(Stream(), 8));
    case vaSingle: return std::bit_cast<float>(static_cast<uint32_t>(GetLE(Stream(), 4)));
    case vaCurrency: return Currency::FromVal(GetSigned<int64_t>(Stream())).ToDouble();
    default: PropValueError();
  }
}

String TReader::ReadString() {
  const TValueType tag = ReadValue();
  int64_t count = 0;
  switch (tag) {
    case vaString: count = static_cast<int64_t>(GetLE(Stream(), 1)); break;
    case vaLString:
    case vaUTF8String: count = ReadLength(); break;
    case vaWString: {
      const int64_t chars = ReadLength();
      if (chars > (Stream()->Size() - Stream()->Position()) / 2) throw EReadError(u"Stream read error");
      std::u16string text(static_cast<size_t>(chars), u'\0');
      for (char16_t& c : text) c = static_cast<char16_t>(GetLE(Stream(), 2));
      return String(std::move(text));
    }
    default: PropValueError();
  }
  std::string bytes(static_cast<size_t>(count), '\0');
  ReadBytes(bytes.data(), count);
  // The short and long kinds hold 8-bit text of the system code page.
  return tag == vaUTF8String ? String::FromUtf8(bytes) : AnsiToString(bytes);
}

String TReader::ReadIdent() {
  switch (ReadValue()) {
    case vaIdent: return ReadStr();
    case vaFalse: return u"False";
    case vaTrue: return u"True";
    case vaNil: return u"nil";
    case vaNull: return u"Null";
    default: PropValueError();
  }
}

std::vector<String> TReader::ReadSet() {
  if (ReadValue() != vaSet) PropValueError();
  std::vector<String> names;
  for (String name = ReadStr(); !name.IsEmpty(); name = ReadStr()) names.push_back(name);
  return names;
}

Variant TReader::ReadVariant() {
  const TValueType next = NextValue();
  if (IsIntegerTag(next)) {
    const int64_t value = ReadInt64();
    if (next == vaInt64) return value;
    return static_cast<int>(value);
  }
  if (IsTextTag(next)) return ReadString();
  switch (next) {
    case vaExtended:
    case vaDouble:
    case vaSingle: return ReadFloat();
    case vaCurrency: ReadValue(); return Currency::FromVal(GetSigned<int64_t>(Stream()));
    case vaDate: ReadValue(); return TDateTime(std::bit_cast<double>(GetLE(Stream(), 8)));
    case vaFalse:
    case vaTrue: return ReadBoolean();
    case vaNil: ReadValue(); return Variant();
    case vaNull: ReadValue(); return Null();
    case vaList: {
      DepthGuard guard(*this);
      ReadValue();
      std::vector<Variant> items;
      while (!EndOfList()) items.push_back(ReadVariant());
      ReadListEnd();
      return VarArrayOf(items);
    }
    default: PropValueError();
  }
}

void TReader::SkipValue() {
  switch (ReadValue()) {
    case vaNull:
    case vaFalse:
    case vaTrue:
    case vaNil: return;
    case vaList: {
      DepthGuard guard(*this);
      while (!EndOfList()) SkipValue();
      return ReadListEnd();
    }
    case vaInt8: return SkipBytes(1);
    case vaInt16: return SkipBytes(2);
    case vaInt32:
    case vaSingle: return SkipBytes(4);
    case vaInt64:
    case vaDouble:
    case vaCurrency:
    case vaDate: return SkipBytes(8);
    case vaExtended: return SkipBytes(10);
    case vaString:
    case vaIdent: return SkipBytes(static_cast<int64_t>(GetLE(Stream(), 1)));
    case vaBinary:
    case vaLString:
    case vaUTF8String: return SkipBytes(ReadLength());
    case vaWString: return SkipBytes(ReadLength() * 2);
    case vaSet:
      while (!ReadStr().IsEmpty()) {
      }
      return;
    case vaCollection: {
      DepthGuard guard(*this);
      while (!EndOfList()) {
        if (IsIntegerTag(NextValue())) ReadInt64();
        ReadListBegin();
        while (!EndOfList()) {
          ReadStr();
          SkipValue();
        }
        ReadListEnd();
      }
      return ReadListEnd();
    }
    default: PropValueError();
  }
}

String TReader::ReadStr() {
  const int64_t count = static_cast<int64_t>(GetLE(Stream(), 1));
  char bytes[255];
  ReadBytes(bytes, count);
  return String::FromUtf8(std::string_view(bytes, static_cast<size_t>(count)));
}

int64_t TReader::ReadLength() {
  const int64_t count = GetSigned<int32_t>(Stream());
  if (count < 0 || count > Stream()->Size() - Stream()->Position()) throw EReadError(u"Stream read error");
  return count;
}

void TReader::SkipBytes(int64_t Count) {
  if (Count > Stream()->Size() - Stream()->Position()) throw EReadError(u"Stream read error");
  Stream()->Seek(Count, soCurrent);
}

void TReader::ReadBytes(void* Buffer, int64_t Count) { Stream()->ReadBuffer(Buffer, Count); }

// ---- Whole streams ---------------------------------------------------------

void WriteComponentToStream(TStream* Stream, TComponent* Component) {
  TWriter writer(Stream);
  writer.WriteRootComponent(Component);
}

TComponent* ReadComponentFromStream(TStream* Stream, TComponent* Instance) {
  TReader reader(Stream);
  return reader.ReadRootComponent(Instance);
}

void WriteCollectionToStream(TStream* Stream, TCollection* Collection, const String& WrapperClass,
                             const String& PropName) {
  TWriter writer(Stream);
  writer.WriteSignature();
  writer.WriteStr(WrapperClass);
  writer.WriteStr(String());
  writer.WriteStr(PropName);
  writer.WriteCollection(Collection);
  writer.WriteListEnd();  // the wrapper's properties
  writer.WriteListEnd();  // its children
}

namespace {

void ReadWrappedCollection(TReader& reader, TCollection* Collection) {
  reader.ReadSignature();
  reader.ReadPrefix();
  reader.ReadStr();  // the wrapper's class and name
  reader.ReadStr();
  bool found = false;
  while (!reader.EndOfList()) {
    if (reader.ReadStr().IsEmpty()) throw EReadError(u"Invalid stream format");
    if (!found && reader.NextValue() == vaCollection) {
      reader.ReadCollection(Collection);
      found = true;
    } else {
      reader.SkipValue();
    }
  }
  reader.ReadListEnd();
  if (!reader.EndOfList()) throw EReadError(u"Invalid stream format");  // a wrapper has no children
  reader.ReadListEnd();
  if (!found) Collection->Clear();
}

}  // namespace

void ReadCollectionFromStream(TStream* Stream, TCollection* Collection) {
  TMemoryStream before;
  TWriter(&before).WriteCollection(Collection);
  try {
    TReader reader(Stream);
    ReadWrappedCollection(reader, Collection);
  } catch (...) {
    before.SetPosition(0);
    try {
      TReader(&before).ReadCollection(Collection);
    } catch (...) {
      // The first error is the one to report; the copy was our own writing.
    }
    throw;
  }
}
