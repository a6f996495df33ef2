#include "platform/ui/filer.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <vector>

#include "platform/rtl/stringlist.h"
#include "platform/rtl/sysutils.h"

namespace {

constexpr char kSignature[4] = {'T', 'P', 'F', '0'};
constexpr int kMaxDepth = 64;

bool IsAscii(const String& s) {
  for (char16_t c : s.view())
    if (c >= 128) return false;
  return true;
}

// Double to and from the 10-byte extended format, little-endian.
void ToExtended(double value, uint8_t out[10]) {
  uint64_t bits = std::bit_cast<uint64_t>(value);
  uint16_t sign = static_cast<uint16_t>(bits >> 63);
  int exp = static_cast<int>((bits >> 52) & 0x7FF);
  uint64_t frac = bits & ((uint64_t{1} << 52) - 1);
  uint64_t mantissa = 0;
  int extExp = 0;
  if (exp == 0x7FF) {
    extExp = 0x7FFF;
    mantissa = (uint64_t{1} << 63) | (frac << 11);
  } else if (exp == 0 && frac == 0) {
    extExp = 0;
  } else if (exp == 0) {
    // Subnormal: normalise into the explicit integer bit.
    mantissa = frac << 11;
    extExp = 1 - 1023 + 16383;
    while (!(mantissa & (uint64_t{1} << 63))) {
      mantissa <<= 1;
      --extExp;
    }
  } else {
    extExp = exp - 1023 + 16383;
    mantissa = (uint64_t{1} << 63) | (frac << 11);
  }
  for (int i = 0; i < 8; ++i) out[i] = static_cast<uint8_t>(mantissa >> (8 * i));
  uint16_t se = static_cast<uint16_t>((sign << 15) | extExp);
  out[8] = static_cast<uint8_t>(se & 0xFF);
  out[9] = static_cast<uint8_t>(se >> 8);
}

double FromExtended(const uint8_t in[10]) {
  uint64_t mantissa = 0;
  for (int i = 0; i < 8; ++i) mantissa |= static_cast<uint64_t>(in[i]) << (8 * i);
  uint16_t se = static_cast<uint16_t>(in[8] | (in[9] << 8));
  bool negative = se & 0x8000;
  int exp = se & 0x7FFF;
  double v;
  if (exp == 0x7FFF) v = (mantissa << 1) ? std::nan("") : INFINITY;
  else if (exp == 0 && mantissa == 0) v = 0;
  else v = std::ldexp(static_cast<double>(mantissa), exp - 16383 - 63);
  return negative ? -v : v;
}

// A value read before it is known where it goes.
struct TValue {
  TValueType Type = vaNull;
  int64_t Int = 0;
  double Float = 0;
  String Text;
  std::vector<String> Names;  // a set
};

bool IsTextKind(TTypeKind k) { return k == tkUString || k == tkString || k == tkLString || k == tkWString; }

int64_t Ordinal(const TPropValue& v) { return std::holds_alternative<int64_t>(v) ? std::get<int64_t>(v) : 0; }

}  // namespace

// ---- TWriter -------------------------------------------------------------------------

void TWriter::WriteSignature() { WriteBytes(kSignature, 4); }

void TWriter::WriteValueType(TValueType type) {
  uint8_t b = type;
  WriteBytes(&b, 1);
}

void TWriter::WriteInteger(int64_t value) {
  if (value >= INT8_MIN && value <= INT8_MAX) {
    WriteValueType(vaInt8);
    int8_t v = static_cast<int8_t>(value);
    WriteBytes(&v, 1);
  } else if (value >= INT16_MIN && value <= INT16_MAX) {
    WriteValueType(vaInt16);
    uint16_t v = static_cast<uint16_t>(value);
    uint8_t b[2] = {static_cast<uint8_t>(v), static_cast<uint8_t>(v >> 8)};
    WriteBytes(b, 2);
  } else if (value >= INT32_MIN && value <= INT32_MAX) {
    WriteValueType(vaInt32);
    uint32_t v = static_cast<uint32_t>(value);
    uint8_t b[4];
    for (int i = 0; i < 4; ++i) b[i] = static_cast<uint8_t>(v >> (8 * i));
    WriteBytes(b, 4);
  } else {
    WriteValueType(vaInt64);
    uint64_t v = static_cast<uint64_t>(value);
    uint8_t b[8];
    for (int i = 0; i < 8; ++i) b[i] = static_cast<uint8_t>(v >> (8 * i));
    WriteBytes(b, 8);
  }
}

namespace {
void WriteInt32(TStream* s, uint32_t v) {
  uint8_t b[4];
  for (int i = 0; i < 4; ++i) b[i] = static_cast<uint8_t>(v >> (8 * i));
  s->WriteBuffer(b, 4);
}
}  // namespace

void TWriter::WriteString(const String& value) {
  if (!IsAscii(value)) {
    std::string utf8 = value.ToUtf8();
    WriteValueType(vaUTF8String);
    WriteInt32(stream_, static_cast<uint32_t>(utf8.size()));
    WriteBytes(utf8.data(), utf8.size());
    return;
  }
  std::string bytes = value.ToUtf8();
  if (bytes.size() <= 255) {
    WriteValueType(vaString);
    uint8_t n = static_cast<uint8_t>(bytes.size());
    WriteBytes(&n, 1);
  } else {
    WriteValueType(vaLString);
    WriteInt32(stream_, static_cast<uint32_t>(bytes.size()));
  }
  WriteBytes(bytes.data(), bytes.size());
}

void TWriter::WriteWideString(const String& value) {
  WriteValueType(vaWString);
  WriteInt32(stream_, static_cast<uint32_t>(value.Length()));
  for (char16_t c : value.view()) {
    uint8_t b[2] = {static_cast<uint8_t>(c), static_cast<uint8_t>(c >> 8)};
    WriteBytes(b, 2);
  }
}

void TWriter::WriteIdent(const String& ident) {
  if (SameText(ident, u"False")) WriteValueType(vaFalse);
  else if (SameText(ident, u"True")) WriteValueType(vaTrue);
  else if (SameText(ident, u"nil")) WriteValueType(vaNil);
  else if (SameText(ident, u"Null")) WriteValueType(vaNull);
  else {
    WriteValueType(vaIdent);
    WriteStr(ident);
  }
}

void TWriter::WriteFloat(double value) {
  WriteValueType(vaExtended);
  uint8_t b[10];
  ToExtended(value, b);
  WriteBytes(b, 10);
}

void TWriter::WriteStr(const String& value) {
  std::string bytes = StringToAnsi(value);
  if (bytes.size() > 255) bytes.resize(255);
  uint8_t n = static_cast<uint8_t>(bytes.size());
  WriteBytes(&n, 1);
  WriteBytes(bytes.data(), bytes.size());
}

void TWriter::WriteCollection(TCollection* collection) {
  WriteValueType(vaCollection);
  for (int i = 0; i < collection->Count(); ++i) {
    WriteListBegin();
    WriteProperties(collection->Items(i));
    WriteListEnd();
  }
  WriteListEnd();
}

void TWriter::WriteProperties(TPersistent* object, const String& prefix) {
  for (const TPropInfo* prop : GetPropList(object)) WriteProperty(object, *prop, prefix);
}

void TWriter::WriteProperty(TPersistent* object, const TPropInfo& prop, const String& prefix) {
  if (!prop.Readable() || prop.Kind == tkMethod) return;
  if (auto* stored = dynamic_cast<TStoredProperties*>(object); stored && !stored->IsPropertyStored(prop)) return;
  String name = prefix + prop.Name;
  TPropValue value = prop.Get(object);
  if (prop.Kind == tkClass) {
    TObject* sub = std::holds_alternative<TObject*>(value) ? std::get<TObject*>(value) : nullptr;
    if (!sub) return;
    if (auto* strings = dynamic_cast<TStrings*>(sub)) {
      if (strings->Count() == 0) return;
      WriteStr(name + u".Strings");
      WriteListBegin();
      for (int i = 0; i < strings->Count(); ++i) WriteString(strings->Strings(i));
      WriteListEnd();
    } else if (auto* collection = dynamic_cast<TCollection*>(sub)) {
      WriteStr(name);
      WriteCollection(collection);
    } else if (auto* component = dynamic_cast<TComponent*>(sub)) {
      // A reference to a peer, by name.
      if (!prop.Writable() || component->Name().IsEmpty()) return;
      WriteStr(name);
      WriteIdent(component->Name());
    } else if (auto* persistent = dynamic_cast<TPersistent*>(sub)) {
      WriteProperties(persistent, name + u".");
    }
    return;
  }
  if (!prop.Writable()) return;
  switch (prop.Kind) {
    case tkInteger: case tkInt64: case tkEnumeration: case tkSet: case tkChar: case tkWChar: {
      int64_t v = Ordinal(value);
      if (prop.Default && *prop.Default == v) return;
      if (!prop.Default && prop.Kind != tkInteger && prop.Kind != tkInt64 && v == 0) return;
      WriteStr(name);
      if (prop.Kind == tkEnumeration) {
        if (prop.IsBoolean()) WriteBoolean(v != 0);
        else WriteIdent(GetEnumName(prop, v));
      } else if (prop.Kind == tkSet) {
        WriteValueType(vaSet);
        for (int bit = 0; bit < 64; ++bit)
          if (v & (int64_t{1} << bit)) WriteStr(GetEnumName(prop, bit));
        WriteStr(String());
      } else if (prop.Kind == tkChar || prop.Kind == tkWChar) {
        WriteWideString(String(static_cast<WideChar>(v)));
      } else {
        WriteInteger(v);
      }
      return;
    }
    case tkFloat: {
      double v = std::holds_alternative<double>(value) ? std::get<double>(value) : 0;
      if (v == 0) return;
      WriteStr(name);
      WriteFloat(v);
      return;
    }
    default:
      if (IsTextKind(prop.Kind)) {
        const String* s = std::get_if<String>(&value);
        if (!s || s->IsEmpty()) return;
        WriteStr(name);
        WriteString(*s);
      }
  }
}

void TWriter::WriteComponent(TComponent* component) {
  WriteStr(component->ClassName());
  WriteStr(component->Name());
  WriteProperties(component);
  WriteListEnd();  // properties
  WriteListEnd();  // children
}

// ---- TReader -------------------------------------------------------------------------

void TReader::ReadBytes(void* data, size_t count) {
  if (count == 0) return;
  if (stream_->Read(data, static_cast<int64_t>(count)) != static_cast<int64_t>(count))
    throw EReadError(u"Stream read error: the component stream ends too early");
}

uint8_t TReader::ReadByte() {
  uint8_t b = 0;
  ReadBytes(&b, 1);
  return b;
}

void TReader::ReadSignature() {
  char sig[4] = {};
  if (stream_->Read(sig, 4) != 4 || std::memcmp(sig, kSignature, 4) != 0)
    throw EReadError(u"Invalid stream format: no TPF0 signature");
}

TValueType TReader::ReadValueType() {
  uint8_t b = ReadByte();
  if (b > vaDouble) throw EReadError(u"Invalid property value type " + IntToStr(static_cast<int>(b)));
  return static_cast<TValueType>(b);
}

TValueType TReader::NextValue() {
  TValueType t = ReadValueType();
  stream_->Seek(-1, soCurrent);
  return t;
}

bool TReader::EndOfList() {
  if (NextValue() != vaNull) return false;
  ReadValueType();
  return true;
}

int64_t TReader::ReadIntegerOf(TValueType type) {
  auto little = [this](int bytes) {
    uint8_t b[8] = {};
    ReadBytes(b, static_cast<size_t>(bytes));
    uint64_t v = 0;
    for (int i = 0; i < bytes; ++i) v |= static_cast<uint64_t>(b[i]) << (8 * i);
    return v;
  };
  switch (type) {
    case vaInt8: return static_cast<int8_t>(little(1));
    case vaInt16: return static_cast<int16_t>(little(2));
    case vaInt32: return static_cast<int32_t>(little(4));
    case vaInt64: return static_cast<int64_t>(little(8));
    default: throw EReadError(u"Invalid property value: an integer was expected");
  }
}

int64_t TReader::ReadInteger() { return ReadIntegerOf(ReadValueType()); }

bool TReader::ReadBoolean() {
  TValueType t = ReadValueType();
  if (t != vaTrue && t != vaFalse) throw EReadError(u"Invalid property value: a boolean was expected");
  return t == vaTrue;
}

String TReader::ReadStr() {
  uint8_t n = ReadByte();
  std::string bytes(n, '\0');
  ReadBytes(bytes.data(), n);
  return AnsiToString(bytes);
}

String TReader::ReadStringOf(TValueType type) {
  auto length = [this] {
    int64_t n = static_cast<int32_t>(ReadIntegerOf(vaInt32));
    // A length beyond what the stream holds is a damaged stream, not a
    // reason to allocate it.
    if (n < 0 || n > stream_->Size() - stream_->Position())
      throw EReadError(u"Invalid property value: a string runs past the end of the stream");
    return static_cast<size_t>(n);
  };
  switch (type) {
    case vaString: {
      size_t n = ReadByte();
      std::string b(n, '\0');
      ReadBytes(b.data(), n);
      return AnsiToString(b);
    }
    case vaLString: case vaUTF8String: {
      size_t n = length();
      std::string b(n, '\0');
      ReadBytes(b.data(), n);
      return type == vaUTF8String ? String::FromUtf8(b) : AnsiToString(b);
    }
    case vaWString: {
      size_t n = length();
      if (n * 2 > static_cast<size_t>(stream_->Size() - stream_->Position()))
        throw EReadError(u"Invalid property value: a string runs past the end of the stream");
      std::u16string s(n, u'\0');
      for (size_t i = 0; i < n; ++i) {
        uint8_t b[2];
        ReadBytes(b, 2);
        s[i] = static_cast<char16_t>(b[0] | (b[1] << 8));
      }
      return String(std::move(s));
    }
    default: throw EReadError(u"Invalid property value: a string was expected");
  }
}

String TReader::ReadString() { return ReadStringOf(ReadValueType()); }

String TReader::ReadIdent() {
  switch (ReadValueType()) {
    case vaIdent: return ReadStr();
    case vaFalse: return u"False";
    case vaTrue: return u"True";
    case vaNil: return u"nil";
    case vaNull: return u"Null";
    default:
      throw EReadError(u"Invalid property value: an identifier was expected");
  }
}

double TReader::ReadFloat() {
  TValueType t = ReadValueType();
  if (t == vaExtended) {
    uint8_t b[10];
    ReadBytes(b, 10);
    return FromExtended(b);
  }
  if (t == vaDouble || t == vaDate) {
    uint8_t b[8];
    ReadBytes(b, 8);
    uint64_t bits = 0;
    for (int i = 0; i < 8; ++i) bits |= static_cast<uint64_t>(b[i]) << (8 * i);
    return std::bit_cast<double>(bits);
  }
  if (t == vaSingle) {
    uint8_t b[4];
    ReadBytes(b, 4);
    uint32_t bits = static_cast<uint32_t>(b[0] | (b[1] << 8) | (b[2] << 16)) | (static_cast<uint32_t>(b[3]) << 24);
    return std::bit_cast<float>(bits);
  }
  if (t == vaCurrency) {
    return static_cast<double>(ReadIntegerOf(vaInt64)) / 10000.0;
  }
  return static_cast<double>(ReadIntegerOf(t));
}

namespace {
// Reads one value of any type, nested lists and collections skipped.
class TSkipper {
 public:
  TSkipper(TReader& reader) : r_(reader) {}
  void Skip(int depth) {
    if (depth > kMaxDepth) throw EReadError(u"Invalid stream format: values nested too deep");
    TValueType t = r_.NextValue();
    switch (t) {
      case vaList:
        r_.ReadValueType();
        while (!r_.EndOfList()) Skip(depth + 1);
        return;
      case vaCollection:
        r_.ReadValueType();
        while (!r_.EndOfList()) {
          TValueType item = r_.NextValue();
          if (item == vaInt8 || item == vaInt16 || item == vaInt32) r_.ReadInteger();  // an order value
          if (r_.ReadValueType() != vaList) throw EReadError(u"Invalid stream format: a collection item was expected");
          while (!r_.EndOfList()) {
            r_.ReadStr();
            Skip(depth + 1);
          }
        }
        return;
      case vaSet:
        r_.ReadValueType();
        while (!r_.ReadStr().IsEmpty()) {
        }
        return;
      case vaBinary: {
        r_.ReadValueType();
        std::string bytes;
        r_.ReadBinary(bytes);
        return;
      }
      default:
        Value(r_);
    }
  }
  static TValue Value(TReader& r) {
    TValue v;
    v.Type = r.NextValue();
    switch (v.Type) {
      case vaInt8: case vaInt16: case vaInt32: case vaInt64: v.Int = r.ReadInteger(); break;
      case vaExtended: case vaDouble: case vaSingle: case vaCurrency: case vaDate: v.Float = r.ReadFloat(); break;
      case vaString: case vaLString: case vaWString: case vaUTF8String: v.Text = r.ReadString(); break;
      case vaIdent: case vaFalse: case vaTrue: case vaNil: case vaNull: v.Text = r.ReadIdent(); break;
      case vaSet:
        r.ReadValueType();
        for (String s = r.ReadStr(); !s.IsEmpty(); s = r.ReadStr()) v.Names.push_back(s);
        break;
      default: throw EReadError(u"Invalid stream format: unexpected value type " + IntToStr(static_cast<int>(v.Type)));
    }
    return v;
  }

 private:
  TReader& r_;
};
}  // namespace

void TReader::SkipValue() { TSkipper(*this).Skip(0); }

void TReader::ReadCollection(TCollection* collection) {
  if (ReadValueType() != vaCollection) throw EReadError(u"Invalid stream format: a collection was expected");
  collection->BeginUpdate();
  try {
    collection->Clear();
    while (!EndOfList()) {
      TValueType t = NextValue();
      if (t == vaInt8 || t == vaInt16 || t == vaInt32) ReadInteger();  // an order value
      if (ReadValueType() != vaList) throw EReadError(u"Invalid stream format: a collection item was expected");
      ReadProperties(collection->Add());
    }
  } catch (...) {
    collection->EndUpdate();
    throw;
  }
  collection->EndUpdate();
}

void TReader::ReadProperties(TPersistent* object) {
  while (!EndOfList()) ReadProperty(object, ReadStr());
}

void TReader::ReadProperty(TPersistent* object, const String& path) {
  // Walk the dotted path to the object that has the last name.
  TPersistent* target = object;
  String name = path;
  for (int dot = name.Pos(u"."); dot > 0 && target; dot = name.Pos(u".")) {
    String head = name.SubString(1, dot - 1);
    name = name.SubString(dot + 1, name.Length());
    const TPropInfo* p = GetPropInfo(target, head);
    TObject* sub = p && p->Kind == tkClass && p->Readable() ? GetPropObject(target, head) : nullptr;
    target = dynamic_cast<TPersistent*>(sub);
  }
  if (auto* strings = dynamic_cast<TStrings*>(target); strings && SameText(name, u"Strings") && NextValue() == vaList) {
    ReadValueType();
    strings->BeginUpdate();
    strings->Clear();
    while (!EndOfList()) strings->Add(ReadString());
    strings->EndUpdate();
    return;
  }
  const TPropInfo* prop = target ? GetPropInfo(target, name) : nullptr;
  if (!prop) {
    SkipValue();
    return;
  }
  TValueType next = NextValue();
  if (next == vaCollection) {
    auto* collection = prop->Kind == tkClass ? dynamic_cast<TCollection*>(GetPropObject(target, name)) : nullptr;
    if (collection) ReadCollection(collection);
    else SkipValue();
    return;
  }
  if (next == vaList) {
    SkipValue();
    return;
  }
  TValue v = TSkipper::Value(*this);
  if (!prop->Writable()) return;
  bool isInt = v.Type == vaInt8 || v.Type == vaInt16 || v.Type == vaInt32 || v.Type == vaInt64;
  bool isText = v.Type == vaString || v.Type == vaLString || v.Type == vaWString || v.Type == vaUTF8String;
  switch (prop->Kind) {
    case tkInteger: case tkInt64:
      if (isInt) prop->Set(target, v.Int);
      return;
    case tkChar: case tkWChar:
      if (isText && v.Text.Length() == 1) prop->Set(target, static_cast<int64_t>(v.Text[1]));
      else if (isInt) prop->Set(target, v.Int);
      return;
    case tkEnumeration:
      if (v.Type == vaTrue || v.Type == vaFalse || v.Type == vaIdent) {
        int e = GetEnumValue(*prop, v.Text);
        if (e >= 0) prop->Set(target, static_cast<int64_t>(e));
      } else if (isInt) {
        prop->Set(target, v.Int);
      }
      return;
    case tkSet:
      if (v.Type == vaSet) {
        int64_t mask = 0;
        for (const String& n : v.Names)
          if (int e = GetEnumValue(*prop, n); e >= 0 && e < 64) mask |= int64_t{1} << e;
        prop->Set(target, mask);
      }
      return;
    case tkFloat:
      if (isInt) prop->Set(target, static_cast<double>(v.Int));
      else if (!isText && v.Type != vaIdent && v.Type != vaSet) prop->Set(target, v.Float);
      return;
    default:
      if (IsTextKind(prop->Kind) && isText) prop->Set(target, v.Text);
      // Component references and the rest cannot be resolved here.
      return;
  }
}

void TReader::ReadBinary(std::string& bytes) {
  int64_t n = static_cast<int32_t>(ReadIntegerOf(vaInt32));
  if (n < 0 || n > stream_->Size() - stream_->Position())
    throw EReadError(u"Invalid property value: binary data runs past the end of the stream");
  bytes.assign(static_cast<size_t>(n), '\0');
  ReadBytes(bytes.data(), bytes.size());
}

String TReader::ReadHeader() {
  uint8_t first = ReadByte();
  if ((first & 0xF0) == 0xF0) {
    // Filer flags of an inherited or positioned child; bit 1: an index follows.
    if (first & 0x02) ReadInteger();
  } else {
    stream_->Seek(-1, soCurrent);
  }
  String className = ReadStr();
  ReadStr();  // the component's name: the caller's component keeps its own
  return className;
}

void TReader::SkipComponent(int depth) {
  if (depth > kMaxDepth) throw EReadError(u"Invalid stream format: components nested too deep");
  ReadHeader();
  while (!EndOfList()) {
    ReadStr();
    SkipValue();
  }
  while (!EndOfList()) SkipComponent(depth + 1);
}

String TReader::ReadComponent(TComponent* component, bool checkClass) {
  String className = ReadHeader();
  if (checkClass && !SameText(className, component->ClassName()))
    throw EReadError(u"Invalid stream format: " + className + u" found where " + component->ClassName() +
                     u" was expected");
  ReadProperties(component);
  while (!EndOfList()) SkipComponent(1);
  return className;
}

void WriteComponentToStream(TStream* stream, TComponent* component) {
  TWriter writer(stream);
  writer.WriteSignature();
  writer.WriteComponent(component);
}

void ReadComponentFromStream(TStream* stream, TComponent* component, bool checkClass) {
  TReader reader(stream);
  reader.ReadSignature();
  reader.ReadComponent(component, checkClass);
}
