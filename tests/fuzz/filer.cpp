// Fuzz target of the component stream reader: any bytes either load or
// raise an Exception; what loads writes a stream that reads back to the same
// bytes; a failed read leaves an existing root and a collection as they were.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

#include "platform/rtl/collection.h"
#include "platform/rtl/filer.h"
#include "platform/rtl/stringlist.h"
#include "platform/rtl/variant.h"

namespace {

enum TFuzzKind { fkOne, fkTwo, fkThree };

}  // namespace

KELMAR_ENUM(TFuzzKind, u"fkOne", u"fkTwo", u"fkThree");

namespace {

class TFuzzPart : public TPersistent {
  KELMAR_CLASS(TFuzzPart, TPersistent)
 public:
  int Size = 8;
  String Face;
};

class TFuzzItem : public TCollectionItem {
  KELMAR_CLASS(TFuzzItem, TCollectionItem)
 public:
  using TCollectionItem::TCollectionItem;
  String Caption;
  int Width = 64;
  TFuzzKind Kind = fkOne;
  TComponent* Peer = nullptr;
};

// A component with a property of every kind the stream carries.
class TFuzzNode : public TComponent {
  KELMAR_CLASS(TFuzzNode, TComponent)
 public:
  explicit TFuzzNode(TComponent* owner) : TComponent(owner), items_(this) {}
  TFuzzPart* Part() const { return &part_; }
  void SetPart(TFuzzPart*) {}
  TTypedCollection<TFuzzItem, TOwnedCollection>* Items() const { return &items_; }
  void SetItems(TTypedCollection<TFuzzItem, TOwnedCollection>*) {}
  TStringList* Lines() const { return &lines_; }
  void SetLines(TStringList*) {}

  String Caption;
  int Count = 0;
  int64_t Big = 0;
  double Ratio = 0;
  bool Active = false;
  TFuzzKind Kind = fkOne;
  Set<TFuzzKind> Kinds;
  WideChar Letter = u'a';
  Variant Value;
  TComponent* Peer = nullptr;

 private:
  mutable TFuzzPart part_;
  mutable TTypedCollection<TFuzzItem, TOwnedCollection> items_;
  mutable TStringList lines_;
};

}  // namespace

KELMAR_PUBLISH(TFuzzPart) {
  r.Prop(u"Size", &TFuzzPart::Size).Default = 8;
  r.Prop(u"Face", &TFuzzPart::Face);
}

KELMAR_PUBLISH(TFuzzItem) {
  r.Prop(u"Caption", &TFuzzItem::Caption);
  r.Prop(u"Width", &TFuzzItem::Width).Default = 64;
  r.Prop(u"Kind", &TFuzzItem::Kind).Default = fkOne;
  r.Prop(u"Peer", &TFuzzItem::Peer);
}

KELMAR_PUBLISH(TFuzzNode) {
  r.Prop(u"Caption", &TFuzzNode::Caption);
  r.Prop(u"Count", &TFuzzNode::Count);
  r.Prop(u"Big", &TFuzzNode::Big).Default = 0;
  r.Prop(u"Ratio", &TFuzzNode::Ratio);
  r.Prop(u"Active", &TFuzzNode::Active).Default = 0;
  r.Prop(u"Kind", &TFuzzNode::Kind).Default = fkOne;
  r.Prop(u"Kinds", &TFuzzNode::Kinds).Default = 0;
  r.Prop(u"Letter", &TFuzzNode::Letter).Default = u'a';
  r.Prop(u"Value", &TFuzzNode::Value);
  r.Prop(u"Part", &TFuzzNode::Part, &TFuzzNode::SetPart);
  r.Prop(u"Items", &TFuzzNode::Items, &TFuzzNode::SetItems);
  r.Prop(u"Lines", &TFuzzNode::Lines, &TFuzzNode::SetLines);
  r.Prop(u"Peer", &TFuzzNode::Peer);
}

namespace {

void Check(bool condition) {
  if (!condition) std::abort();
}

std::vector<uint8_t> Written(TComponent* c) {
  TBytesStream s;
  TWriter(&s).WriteRootComponent(c);
  return s.Bytes();
}

std::vector<uint8_t> Written(TCollection* c) {
  TBytesStream s;
  WriteCollectionToStream(&s, c, u"TColumnsWrapper", u"Columns");
  return s.Bytes();
}

void ReadAsNewRoot(const std::vector<uint8_t>& bytes) {
  TBytesStream in(bytes);
  std::unique_ptr<TComponent> root;
  try {
    root.reset(ReadComponentFromStream(&in));
  } catch (const Exception&) {
    return;
  }
  const std::vector<uint8_t> first = Written(root.get());
  TBytesStream again(first);
  std::unique_ptr<TComponent> copy(ReadComponentFromStream(&again));
  Check(Written(copy.get()) == first);
}

void ReadIntoExistingRoot(const std::vector<uint8_t>& bytes) {
  TFuzzNode root(nullptr);
  auto* kept = new TFuzzNode(&root);
  kept->SetName(u"Kept");
  TBytesStream in(bytes);
  try {
    ReadComponentFromStream(&in, &root);
  } catch (const Exception&) {
    Check(root.ComponentCount() == 1 && root.Components(0) == kept);
    for (TComponent* c : {static_cast<TComponent*>(&root), static_cast<TComponent*>(kept)})
      Check(!c->ComponentState().Contains(csLoading) && !c->ComponentState().Contains(csReading));
  }
}

void ReadCollection(const std::vector<uint8_t>& bytes) {
  TFuzzNode holder(nullptr);
  holder.Items()->Add()->Caption = u"first";
  holder.Items()->Add()->Width = 3;
  const std::vector<uint8_t> before = Written(holder.Items());
  TBytesStream in(bytes);
  try {
    ReadCollectionFromStream(&in, holder.Items());
  } catch (const Exception&) {
    Check(Written(holder.Items()) == before);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool registered = (RegisterClass(TFuzzNode::StaticClass()), true);
  (void)registered;
  const std::vector<uint8_t> bytes(data, data + size);
  ReadAsNewRoot(bytes);
  ReadIntoExistingRoot(bytes);
  ReadCollection(bytes);
  return 0;
}
