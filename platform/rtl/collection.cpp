#include "platform/rtl/collection.h"

#include "platform/rtl/sysutils.h"

// ---- TCollectionItem -------------------------------------------------------

KELMAR_PUBLISH(TCollectionItem) {}

TCollectionItem::TCollectionItem(TCollection* Collection) { SetCollection(Collection); }

TCollectionItem::~TCollectionItem() { SetCollection(nullptr); }

void TCollectionItem::SetCollection(TCollection* Value) {
  if (Value == collection_) return;
  if (collection_) collection_->RemoveItem(this);
  if (Value) Value->InsertItem(this);
}

int TCollectionItem::Index() const { return collection_ ? collection_->items_.IndexOf(this) : -1; }

void TCollectionItem::SetIndex(int Value) {
  int current = Index();
  if (current < 0 || current == Value) return;
  collection_->items_.Move(current, Value);
  Changed(true);
}

String TCollectionItem::DisplayName() const { return ClassName(); }

void TCollectionItem::SetDisplayName(const String&) { Changed(false); }

String TCollectionItem::GetNamePath() const {
  if (!collection_) return ClassName();
  return collection_->GetNamePath() + u"[" + IntToStr(Index()) + u"]";
}

void TCollectionItem::Changed(bool AllItems) {
  if (collection_ && collection_->updateCount_ == 0) collection_->Update(AllItems ? nullptr : this);
}

TPersistent* TCollectionItem::GetOwner() const { return collection_; }

// ---- TCollection -----------------------------------------------------------

KELMAR_PUBLISH(TCollection) {}
KELMAR_PUBLISH(TOwnedCollection) {}

TCollection::TCollection(TCollectionItemClass ItemClass) : itemClass_(ItemClass) {
  if (!itemClass_.Create) throw EInvalidOperation(u"A collection needs an item class");
}

TCollection::~TCollection() {
  destroying_ = true;
  while (Count() > 0) delete Items(Count() - 1);
}

void TCollection::InsertItem(TCollectionItem* Item) {
  items_.Add(Item);
  Item->collection_ = this;
  Item->id_ = nextID_++;
  if (!adding_) Added(Item);
}

void TCollection::Added(TCollectionItem* Item) {
  Notify(Item, cnAdded);
  Changed();
}

void TCollection::RemoveItem(TCollectionItem* Item) {
  if (!destroying_) Notify(Item, cnExtracting);
  items_.Remove(Item);
  Item->collection_ = nullptr;
  if (!destroying_) Changed();
}

TCollectionItem* TCollection::Add() {
  adding_ = true;
  TCollectionItem* item;
  try {
    item = itemClass_.Create(this);
  } catch (...) {
    adding_ = false;
    throw;
  }
  adding_ = false;
  Added(item);
  return item;
}

TCollectionItem* TCollection::Insert(int Index) {
  if (Index < 0 || Index > Count()) throw EListError(u"List index out of bounds (" + IntToStr(Index) + u")");
  TCollectionItem* item = Add();
  item->SetIndex(Index);
  return item;
}

void TCollection::Delete(int Index) {
  TCollectionItem* item = Items(Index);
  Notify(item, cnDeleting);
  delete item;
}

void TCollection::Clear() {
  if (Count() == 0) return;
  BeginUpdate();
  try {
    while (Count() > 0) delete Items(Count() - 1);
  } catch (...) {
    EndUpdate();
    throw;
  }
  EndUpdate();
}

TCollectionItem* TCollection::FindItemID(int ID) const {
  for (int i = 0; i < Count(); ++i)
    if (Items(i)->ID() == ID) return Items(i);
  return nullptr;
}

void TCollection::BeginUpdate() { ++updateCount_; }

void TCollection::EndUpdate() {
  if (updateCount_ == 0) return;
  if (--updateCount_ == 0) Changed();
}

void TCollection::Changed() {
  if (updateCount_ == 0) Update(nullptr);
}

void TCollection::Assign(TPersistent* Source) {
  auto* source = dynamic_cast<TCollection*>(Source);
  if (!source) {
    inherited::Assign(Source);
    return;
  }
  if (source == this) return;
  BeginUpdate();
  try {
    Clear();
    for (int i = 0; i < source->Count(); ++i) Add()->Assign(source->Items(i));
  } catch (...) {
    EndUpdate();
    throw;
  }
  EndUpdate();
}

// The owner's published property that holds this collection.
String TCollection::PropName() const {
  const TPersistent* owner = GetOwner();
  for (const TPropInfo* info : GetPropList(owner)) {
    if (info->Kind != tkClass || !info->Readable()) continue;
    TPropValue value = info->Get(owner);
    if (auto* object = std::get_if<TObject*>(&value); object && *object == this) return info->Name;
  }
  return String();
}

String TCollection::GetNamePath() const {
  const TPersistent* owner = GetOwner();
  if (!owner) return ClassName();
  String ownerPath = owner->GetNamePath();
  String prop = PropName();
  if (ownerPath.IsEmpty() || prop.IsEmpty()) return ClassName();
  return ownerPath + u"." + prop;
}
