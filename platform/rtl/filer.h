// The binary component stream ("TPF0"): components, their published
// properties and their children, as the historical framework stores designs.
//
// A stream is the four bytes "TPF0" and one component:
//
//   component  = class name, name (short strings), properties, vaNull,
//                children (components), vaNull
//   property   = name (short string; "Font.Size" for a property of a
//                sub-object), value
//   value      = a TValueType byte and its data, little-endian
//   short string = a length byte and that many bytes of UTF-8
//
// What the writer stores, property by property (readable and writable ones
// only; events and the Name, which the header carries, never):
//   integers     the smallest of vaInt8/16/32/64 that holds the value, unless
//                it equals the property's Default
//   enumerations vaIdent with the element name; booleans vaFalse/vaTrue
//   sets         vaSet, the element names, an empty name
//                (enumerations and sets whose values have no names: integers)
//   characters   text of one character
//   floats       vaExtended (10-byte x87 extended), unless 0
//   text         vaString when ASCII and at most 255 characters, vaLString
//                when ASCII and longer, vaUTF8String otherwise (vaWString
//                for text with unpaired surrogates); unless empty
//   Variants     by their type (see TWriter::WriteVariant), unless Unassigned
//   objects      a TCollection as vaCollection, each item a vaList of its
//                properties; a TStrings as "Prop.Strings", a vaList of
//                strings; another TPersistent as its own properties under
//                "Prop."; a component in the written tree as vaIdent with its
//                name ("Panel1.Edit1" below the root's own components);
//                nothing for null or for components outside the tree
// Children are the named components a component owns; unnamed ones are its
// inner parts and are not written.
//
// The reader creates children by class name (RegisterClass/GetClass) with
// the component they are listed under as owner, and reuses an owned
// component of that name when there is one. It skips properties it does
// not know, tolerates the historical prefix byte before a class name and
// the order number before a collection item, and resolves component
// references after the whole root is read (a name not found leaves the
// property alone). Every component read has csLoading and csReading while
// it is read; Loaded() is called on each, in reading order, at the end.
// Bad data raises EReadError ("Stream read error" for a stream that ends
// early, "Invalid property value" for a value of the wrong kind, "Invalid
// stream format" for the rest; within a property the message names it:
// "Error reading Form1.Width: Invalid property value"), or EClassNotFound
// for an unregistered class; the components made by a failed read are
// deleted again.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/rtl/classes.h"
#include "platform/rtl/streams.h"

class Currency;
class TCollection;
class TDateTime;
class TStrings;
class Variant;

// Tags of the values, with the historical numbering.
enum TValueType : uint8_t {
  vaNull, vaList, vaInt8, vaInt16, vaInt32, vaExtended, vaString, vaIdent, vaFalse, vaTrue,
  vaBinary, vaSet, vaLString, vaNil, vaCollection, vaSingle, vaCurrency, vaDate, vaWString,
  vaInt64, vaUTF8String, vaDouble
};

// What the writer and the reader share: the stream (not owned; it must
// outlive the filer) and the root whose tree names the component references.
class TFiler : public TObject {
  KELMAR_CLASS(TFiler, TObject)
 public:
  explicit TFiler(TStream* Stream) : stream_(Stream) {}
  TStream* Stream() const { return stream_; }
  TComponent* Root() const { return root_; }
  void SetRoot(TComponent* Value) { root_ = Value; }

 private:
  TStream* stream_;
  TComponent* root_ = nullptr;
};

// An object that decides which of its properties a stream keeps, as the
// historical "stored" clauses did (a grid column keeps only the values
// assigned to it, not those it takes from its field).
class TStoredProperties {
 public:
  virtual bool IsPropertyStored(const TPropInfo& Prop) const = 0;

 protected:
  ~TStoredProperties() = default;
};

class TWriter : public TFiler {
  KELMAR_CLASS(TWriter, TFiler)
 public:
  explicit TWriter(TStream* Stream) : TFiler(Stream) {}

  // "TPF0" and Root with its tree.
  void WriteRootComponent(TComponent* Root);
  void WriteSignature();
  // A component: header, properties, children. References are named
  // relative to Root(), or to the component itself when no root is set.
  void WriteComponent(TComponent* Component);
  // The stored properties of Instance as name/value pairs, without the
  // closing vaNull.
  void WriteProperties(TPersistent* Instance);
  // vaCollection, the items, vaNull.
  void WriteCollection(TCollection* Value);

  // ---- Values ----
  void WriteValue(TValueType Value);
  void WriteListBegin() { WriteValue(vaList); }
  void WriteListEnd() { WriteValue(vaNull); }
  void WriteInteger(int64_t Value);
  void WriteBoolean(bool Value);
  // vaExtended.
  void WriteFloat(double Value);
  void WriteDouble(double Value);
  void WriteCurrency(Currency Value);
  void WriteDate(TDateTime Value);
  void WriteString(const String& Value);
  // vaIdent, or vaFalse/vaTrue/vaNil/vaNull for those words.
  void WriteIdent(const String& Value);
  // The element names of a set, then the empty name.
  void WriteSet(const std::vector<String>& Names);
  // Empty vaNil, Null vaNull, integers, Booleans, Double vaExtended,
  // Currency, dates and text as above; an array as a vaList of its elements,
  // where a Null element is written as vaNil (vaNull would end the list).
  void WriteVariant(const Variant& Value);
  // A short string without a tag; raises EWriteError past 255 bytes.
  void WriteStr(const String& Value);

 private:
  void WriteProperty(TPersistent* Instance, const TPropInfo& Info, const String& Prefix);
  void WriteObjectProperty(TObject* Value, const String& Path);
  String ReferenceName(TComponent* Value) const;

  std::vector<const TObject*> writing_;  // objects whose properties are being written
};

class TReader : public TFiler {
  KELMAR_CLASS(TReader, TFiler)
 public:
  explicit TReader(TStream* Stream) : TFiler(Stream) {}

  // Reads "TPF0" and a component into Root, or into a new component of the
  // stream's class (owner null; the caller owns it) when Root is null.
  // Returns the root.
  TComponent* ReadRootComponent(TComponent* Root);
  // Raises EReadError "Invalid stream format" when "TPF0" is not next.
  void ReadSignature();
  // Skips the historical prefix of a component header (the flags byte
  // $F0..$FF and, with ffChildPos, a child position) when there is one.
  void ReadPrefix();
  // One name/value pair into Instance; an unknown name skips the value.
  // Component references are set by ReadRootComponent, once all is read.
  void ReadProperty(TPersistent* Instance);
  // vaCollection, then the items into Collection, which is cleared first.
  void ReadCollection(TCollection* Collection);

  // ---- Values ----
  // The next tag, without moving.
  TValueType NextValue();
  TValueType ReadValue();
  bool EndOfList() { return NextValue() == vaNull; }
  void ReadListBegin();
  void ReadListEnd();
  // Raise EReadError "Invalid property value" when the next value is of
  // another kind; ReadInteger also for a value outside 32 bits.
  int ReadInteger();
  int64_t ReadInt64();
  bool ReadBoolean();
  // Any of the float tags, or an integer.
  double ReadFloat();
  // Any of the text tags.
  String ReadString();
  // vaIdent, or the words of vaFalse/vaTrue/vaNil/vaNull.
  String ReadIdent();
  // vaSet and the element names.
  std::vector<String> ReadSet();
  Variant ReadVariant();
  // Skips one value of any kind.
  void SkipValue();
  // A short string without a tag.
  String ReadStr();

 private:
  struct Fixup {
    TPersistent* Instance;
    const TPropInfo* Info;
    String Name;
    std::vector<TCollection*> Within;  // collections the instance lives in
  };
  class DepthGuard;

  // A component header and body, owned by Owner; Owner's component of that
  // name is reused when there is one.
  TComponent* ReadComponent(TComponent* Owner);
  void BeginReading(TComponent* Component);
  void ReadData(TComponent* Component);
  void ReadPropValue(TPersistent* Instance, const TPropInfo& Info);
  void ReadObjectValue(TPersistent* Instance, const TPropInfo& Info);
  void ReadStrings(TStrings* Strings);
  void ResolveFixups();
  void SkipBytes(int64_t Count);
  int64_t ReadLength();
  void ReadBytes(void* Buffer, int64_t Count);
  [[noreturn]] static void PropValueError();

  std::vector<TComponent*> loaded_;   // in reading order, for Loaded()
  std::vector<TComponent*> created_;  // made by this read, deleted if it fails
  std::vector<Fixup> fixups_;
  std::vector<TCollection*> collections_;  // being read, outermost first
  int depth_ = 0;
};

// ---- Whole streams ---------------------------------------------------------

// Writes "TPF0" and Component with its tree at the stream's position.
void WriteComponentToStream(TStream* Stream, TComponent* Component);
// Reads a component from the stream's position into Instance, or, when
// Instance is null, into a new component of the stream's class, which the
// caller owns. Returns the component read.
TComponent* ReadComponentFromStream(TStream* Stream, TComponent* Instance = nullptr);

// A collection alone travels as the historical framework stored it: inside
// a wrapper component whose published property holds it. The stream is
// that of a component of class WrapperClass with an empty name and the one
// property PropName, so the grid's columns are written as
//
//   WriteCollectionToStream(stream, columns, u"TColumnsWrapper", u"Columns");
//
// The wrapper class need not exist here.
void WriteCollectionToStream(TStream* Stream, TCollection* Collection, const String& WrapperClass,
                             const String& PropName);
// Reads such a stream into Collection (cleared first), whatever the
// wrapper's class and property names; other properties of the wrapper are
// skipped. Component references in the items stay unset: there is no root
// to find them in. On bad data Collection is restored to what it held before
// and the error raised.
void ReadCollectionFromStream(TStream* Stream, TCollection* Collection);
