// The binary component stream, "TPF0": objects written by their published
// properties, as the historical framework streamed forms and columns.
//
// Layout: the signature "TPF0"; then a component as its class name and its
// name (short strings: a length byte and 8-bit text), its properties, a
// zero byte, its children (none are written here), a zero byte. A property
// is its name (a short string) and a value: a value-type byte followed by
// the data. Integers take the smallest of Int8, Int16, Int32 (Int64 past
// that), little-endian; booleans are vaFalse and vaTrue; enumerations and
// component references vaIdent; sets vaSet with names ending in an empty
// one; floats vaExtended (10 bytes); text vaString, vaLString or, when not
// plain ASCII, vaUTF8String. A TStrings property "X" is written as
// "X.Strings", a list of strings; a collection as vaCollection of vaList
// items, each its properties and a zero byte; other persistent objects as
// their properties under "X.Name". Events are not written.
//
// What is written: readable and writable properties whose value differs
// from their Default (an empty text counts as default), unless the object
// narrows it through TStoredProperties. The reader skips properties it
// does not know or cannot take, and raises EReadError, without reading past
// the end, on a stream that is not well formed.
#pragma once

#include <cstdint>
#include <string>

#include "platform/rtl/classes.h"
#include "platform/rtl/collection.h"
#include "platform/rtl/streams.h"
#include "platform/rtl/typinfo.h"

enum TValueType : uint8_t {
  vaNull, vaList, vaInt8, vaInt16, vaInt32, vaExtended, vaString, vaIdent, vaFalse, vaTrue, vaBinary, vaSet,
  vaLString, vaNil, vaCollection, vaSingle, vaCurrency, vaDate, vaWString, vaInt64, vaUTF8String, vaDouble
};

// An object that decides which of its properties a stream keeps, as the
// historical "stored" clauses did.
class TStoredProperties {
 public:
  virtual bool IsPropertyStored(const TPropInfo& Prop) const = 0;

 protected:
  ~TStoredProperties() = default;
};

class TWriter {
 public:
  explicit TWriter(TStream* stream) : stream_(stream) {}

  void WriteSignature();
  // Class name, name, properties and the two end markers.
  void WriteComponent(TComponent* component);
  // The published properties of an object, each under prefix + name.
  void WriteProperties(TPersistent* object, const String& prefix = String());
  void WriteCollection(TCollection* collection);

  void WriteValueType(TValueType type);
  void WriteInteger(int64_t value);
  void WriteBoolean(bool value) { WriteValueType(value ? vaTrue : vaFalse); }
  void WriteString(const String& value);
  void WriteWideString(const String& value);
  void WriteIdent(const String& ident);
  void WriteFloat(double value);
  // A length byte and at most 255 bytes of 8-bit text.
  void WriteStr(const String& value);
  void WriteListBegin() { WriteValueType(vaList); }
  void WriteListEnd() { WriteValueType(vaNull); }

 private:
  void WriteProperty(TPersistent* object, const TPropInfo& prop, const String& prefix);
  void WriteBytes(const void* data, size_t count) { stream_->WriteBuffer(data, static_cast<int64_t>(count)); }
  TStream* stream_;
};

class TReader {
 public:
  explicit TReader(TStream* stream) : stream_(stream) {}

  // Raises EReadError "Invalid stream format" without the signature.
  void ReadSignature();
  // Reads a component's header and properties into `component` (its class
  // name must be the one read, or `checkClass` false); children are
  // skipped.
  // Returns the class name read.
  String ReadComponent(TComponent* component, bool checkClass = true);
  // Properties up to the end marker, each set on `object` when it has one
  // by that name (a dotted name reaches a sub-object); the rest skipped.
  void ReadProperties(TPersistent* object);
  void ReadCollection(TCollection* collection);

  TValueType ReadValueType();
  TValueType NextValue();
  int64_t ReadInteger();
  bool ReadBoolean();
  String ReadString();
  String ReadIdent();
  double ReadFloat();
  String ReadStr();
  bool EndOfList();  // true at a vaNull, which it consumes
  void SkipValue();
  // The length and bytes that follow vaBinary.
  void ReadBinary(std::string& bytes);

 private:
  void ReadProperty(TPersistent* object, const String& path);
  // Filer flags, class name and name; returns the class name.
  String ReadHeader();
  void SkipComponent(int depth);
  void ReadBytes(void* data, size_t count);
  uint8_t ReadByte();
  int64_t ReadIntegerOf(TValueType type);
  String ReadStringOf(TValueType type);
  TStream* stream_;
};

// The whole stream of one component: signature and component.
void WriteComponentToStream(TStream* stream, TComponent* component);
// Reads such a stream into an existing component.
void ReadComponentFromStream(TStream* stream, TComponent* component, bool checkClass = true);
