// TCollection: an owned, ordered list of items of one class, as grids keep
// their columns. Items know their collection; deleting an item removes it.
//
// The item class is given as a TCollectionItemClass, made with
// TCollection::Of<TMyItem>(). TTypedCollection<TMyItem> gives Add() and
// Items() typed for the item class:
//
//   class TColumns : public TTypedCollection<TColumn, TOwnedCollection> {...};
//   TColumn* c = columns->Add();
#pragma once

#include "platform/rtl/classes.h"
#include "platform/rtl/list.h"

class TCollection;

class TCollectionItem : public TPersistent {
  KELMAR_CLASS(TCollectionItem, TPersistent)
 public:
  // Joins Collection (when not null) at its end.
  explicit TCollectionItem(TCollection* Collection);
  TCollectionItem(const TCollectionItem&) = delete;
  TCollectionItem& operator=(const TCollectionItem&) = delete;
  // Leaves the collection.
  ~TCollectionItem() override;

  TCollection* Collection() const { return collection_; }
  // Moves the item to the end of another collection (or out, for null).
  void SetCollection(TCollection* Value);
  // Unique within the collection, never reused.
  int ID() const { return id_; }
  // -1 outside a collection.
  int Index() const;
  // Moves the item; raises EListError for an index out of range.
  virtual void SetIndex(int Value);
  // The class name unless a descendant names its items.
  virtual String DisplayName() const;
  virtual void SetDisplayName(const String& Value);
  // "Owner.Property[index]"
  String GetNamePath() const override;

 protected:
  // Tells the collection: Update(this), or Update(nullptr) when AllItems.
  void Changed(bool AllItems);
  TPersistent* GetOwner() const override;

 private:
  friend class TCollection;
  TCollection* collection_ = nullptr;
  int id_ = 0;
};

// How a collection makes its items.
struct TCollectionItemClass {
  TClass Class = nullptr;
  TCollectionItem* (*Create)(TCollection* Collection) = nullptr;
};

enum TCollectionNotification { cnAdded, cnExtracting, cnDeleting };

class TCollection : public TPersistent {
  KELMAR_CLASS(TCollection, TPersistent)
 public:
  template <class T>
    requires std::is_base_of_v<TCollectionItem, T>
  static TCollectionItemClass Of() {
    return {T::StaticClass(), [](TCollection* c) -> TCollectionItem* { return new T(c); }};
  }

  explicit TCollection(TCollectionItemClass ItemClass);
  TCollection(const TCollection&) = delete;
  TCollection& operator=(const TCollection&) = delete;
  // Deletes the items without notifications.
  ~TCollection() override;

  TClass ItemClass() const { return itemClass_.Class; }
  int Count() const { return items_.Count(); }
  // Raises EListError "List index out of bounds (N)".
  TCollectionItem* Items(int Index) const { return static_cast<TCollectionItem*>(items_.Items(Index)); }
  // Assigns Value to the item at Index.
  void SetItems(int Index, TCollectionItem* Value) { Items(Index)->Assign(Value); }

  TCollectionItem* Add();
  TCollectionItem* Insert(int Index);
  void Delete(int Index);
  void Clear();
  // Null when no item has that ID.
  TCollectionItem* FindItemID(int ID) const;

  // Counted; the last EndUpdate calls Update(nullptr).
  void BeginUpdate();
  void EndUpdate();
  int UpdateCount() const { return updateCount_; }

  // Clears and adds an item for each of Source's, assigned from it: the
  // items' own Assign decides what they accept.
  void Assign(TPersistent* Source) override;
  // "Owner.Property" when an owner publishes the collection, otherwise the
  // class name.
  String GetNamePath() const override;

 protected:
  // After a change outside an update bracket: the changed item, or null
  // when several changed.
  virtual void Update([[maybe_unused]] TCollectionItem* Item) {}
  // When an item has joined, is leaving, or is about to be deleted. An
  // item made by Add() is announced once built; one made directly with
  // `new TItem(collection)` is announced from TCollectionItem's
  // constructor, before its own class's part is built.
  virtual void Notify([[maybe_unused]] TCollectionItem* Item, [[maybe_unused]] TCollectionNotification Action) {}
  void Changed();

 private:
  friend class TCollectionItem;
  void InsertItem(TCollectionItem* Item);
  void RemoveItem(TCollectionItem* Item);
  void Added(TCollectionItem* Item);
  String PropName() const;

  TCollectionItemClass itemClass_;
  TList items_;
  int nextID_ = 0;
  int updateCount_ = 0;
  bool adding_ = false;      // Add() tells of the item once it is built
  bool destroying_ = false;
};

// A collection with an owner, which it names in GetNamePath and gives as
// GetOwner.
class TOwnedCollection : public TCollection {
  KELMAR_CLASS(TOwnedCollection, TCollection)
 public:
  TOwnedCollection(TPersistent* AOwner, TCollectionItemClass ItemClass)
      : TCollection(ItemClass), owner_(AOwner) {}
  TPersistent* Owner() const { return owner_; }

 protected:
  TPersistent* GetOwner() const override { return owner_; }

 private:
  TPersistent* owner_;
};

// Typed access for a collection of TItem; Base is TCollection or
// TOwnedCollection (or a descendant), built with the item class appended
// to its arguments.
template <class TItem, class Base = TCollection>
  requires std::is_base_of_v<TCollectionItem, TItem>
class TTypedCollection : public Base {
 public:
  template <class... A>
  explicit TTypedCollection(A&&... args) : Base(std::forward<A>(args)..., TCollection::Of<TItem>()) {}

  TItem* Add() { return static_cast<TItem*>(Base::Add()); }
  TItem* Insert(int Index) { return static_cast<TItem*>(Base::Insert(Index)); }
  TItem* Items(int Index) const { return static_cast<TItem*>(Base::Items(Index)); }
  TItem* FindItemID(int ID) const { return static_cast<TItem*>(Base::FindItemID(ID)); }
};
