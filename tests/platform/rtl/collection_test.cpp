#include "platform/rtl/collection.h"

#include <gtest/gtest.h>

#include "platform/rtl/sysutils.h"

// An item as a grid's column would be.
class TTestColumn : public TCollectionItem {
  KELMAR_CLASS(TTestColumn, TCollectionItem)
 public:
  explicit TTestColumn(TCollection* collection) : TCollectionItem(collection) {}
  String Caption;
  int Width = 64;

  String DisplayName() const override { return Caption.IsEmpty() ? TCollectionItem::DisplayName() : Caption; }
  void SetWidth(int value) {
    Width = value;
    Changed(false);
  }
  void Assign(TPersistent* source) override {
    if (auto* other = dynamic_cast<TTestColumn*>(source)) {
      Caption = other->Caption;
      Width = other->Width;
      Changed(false);
      return;
    }
    TCollectionItem::Assign(source);
  }
};
KELMAR_PUBLISH(TTestColumn) {}

class TOtherItem : public TCollectionItem {
  KELMAR_CLASS(TOtherItem, TCollectionItem)
 public:
  using TCollectionItem::TCollectionItem;
};
KELMAR_PUBLISH(TOtherItem) {}

// Records what the collection tells its descendants.
class TRecordingColumns : public TTypedCollection<TTestColumn> {
 public:
  TRecordingColumns() = default;
  std::vector<std::string> Log;

 protected:
  void Update(TCollectionItem* item) override {
    Log.push_back(item ? "update " + static_cast<TTestColumn*>(item)->Caption.ToUtf8() : "update all");
  }
  void Notify(TCollectionItem* item, TCollectionNotification action) override {
    static const char* names[] = {"added", "extracting", "deleting"};
    Log.push_back(std::string(names[action]) + " #" + std::to_string(item->ID()));
  }
};

// An owner that publishes its collection.
class TTestGrid : public TComponent {
  KELMAR_CLASS(TTestGrid, TComponent)
 public:
  explicit TTestGrid(TComponent* owner) : TComponent(owner), columns_(this) {}
  TTypedCollection<TTestColumn, TOwnedCollection>* Columns() const { return &columns_; }

 private:
  mutable TTypedCollection<TTestColumn, TOwnedCollection> columns_;
};
KELMAR_PUBLISH(TTestGrid) {
  r.Prop(u"Columns", &TTestGrid::Columns, nullptr);
}

namespace {

std::vector<String> Captions(const TTypedCollection<TTestColumn>& c) {
  std::vector<String> out;
  for (int i = 0; i < c.Count(); ++i) out.push_back(c.Items(i)->Caption);
  return out;
}

template <class Columns>
TTestColumn* AddColumn(Columns& c, const char16_t* caption) {
  TTestColumn* column = c.Add();
  column->Caption = caption;
  return column;
}

TEST(CollectionTest, AddInsertDeleteAndIds) {
  TTypedCollection<TTestColumn> columns;
  TTestColumn* a = AddColumn(columns, u"a");
  TTestColumn* b = AddColumn(columns, u"b");
  TTestColumn* z = columns.Insert(0);
  z->Caption = u"z";
  EXPECT_EQ(Captions(columns), (std::vector<String>{u"z", u"a", u"b"}));
  EXPECT_EQ(a->ID(), 0);
  EXPECT_EQ(z->ID(), 2);
  EXPECT_EQ(a->Collection(), &columns);
  EXPECT_EQ(b->Index(), 2);
  columns.Delete(1);
  EXPECT_EQ(columns.FindItemID(0), nullptr);
  EXPECT_EQ(columns.FindItemID(1), b);
  EXPECT_EQ(AddColumn(columns, u"c")->ID(), 3);  // IDs are never reused
  EXPECT_THROW(columns.Items(3), EListError);
  EXPECT_THROW(columns.Insert(5), EListError);
  EXPECT_EQ(columns.Count(), 3);
  columns.Clear();
  EXPECT_EQ(columns.Count(), 0);
}

TEST(CollectionTest, DeletingAnItemRemovesItAndItemsMoveBetweenCollections) {
  TTypedCollection<TTestColumn> first, second;
  TTestColumn* a = AddColumn(first, u"a");
  AddColumn(first, u"b");
  delete first.Items(1);
  EXPECT_EQ(first.Count(), 1);
  a->SetCollection(&second);
  EXPECT_EQ(first.Count(), 0);
  EXPECT_EQ(second.Items(0), a);
  a->SetCollection(nullptr);
  EXPECT_EQ(a->Index(), -1);
  EXPECT_EQ(second.Count(), 0);
  delete a;
}

TEST(CollectionTest, SetIndexMovesTheItem) {
  TTypedCollection<TTestColumn> columns;
  for (const char16_t* c : {u"a", u"b", u"c", u"d"}) AddColumn(columns, c);
  columns.Items(0)->SetIndex(2);
  EXPECT_EQ(Captions(columns), (std::vector<String>{u"b", u"c", u"a", u"d"}));
  columns.Items(3)->SetIndex(0);
  EXPECT_EQ(Captions(columns), (std::vector<String>{u"d", u"b", u"c", u"a"}));
  EXPECT_THROW(columns.Items(0)->SetIndex(4), EListError);
  EXPECT_EQ(Captions(columns), (std::vector<String>{u"d", u"b", u"c", u"a"}));
}

TEST(CollectionNotifyTest, NotifyAndUpdateFollowEachChange) {
  TRecordingColumns columns;
  TTestColumn* a = columns.Add();  // announced once the item is whole
  a->Caption = u"a";
  a->SetWidth(10);
  TTestColumn* b = columns.Add();
  b->Caption = u"b";
  b->SetIndex(0);
  columns.Delete(1);
  EXPECT_EQ(columns.Log, (std::vector<std::string>{"added #0", "update all", "update a", "added #1", "update all",
                                                   "update all", "deleting #0", "extracting #0", "update all"}));
}

TEST(CollectionNotifyTest, UpdateBracketsCallUpdateOnceWithNull) {
  TRecordingColumns columns;
  columns.BeginUpdate();
  columns.BeginUpdate();
  columns.Add()->SetWidth(1);
  columns.Add();
  columns.EndUpdate();
  columns.Items(0)->SetIndex(1);
  std::vector<std::string> updates;
  for (const auto& line : columns.Log)
    if (line.rfind("update", 0) == 0) updates.push_back(line);
  EXPECT_TRUE(updates.empty());
  columns.EndUpdate();
  EXPECT_EQ(columns.Log.back(), "update all");
  columns.Log.clear();
  columns.Clear();  // two items, one update
  EXPECT_EQ(columns.Log, (std::vector<std::string>{"extracting #0", "extracting #1", "update all"}));
}

TEST(CollectionAssignTest, AssignCopiesItemByItemThroughTheirAssign) {
  TTypedCollection<TTestColumn> source, target;
  AddColumn(source, u"x")->Width = 5;
  AddColumn(source, u"y")->Width = 7;
  AddColumn(target, u"old");
  target.Assign(&source);
  EXPECT_EQ(Captions(target), (std::vector<String>{u"x", u"y"}));
  EXPECT_EQ(target.Items(1)->Width, 7);
  EXPECT_NE(target.Items(0), source.Items(0));

  TCollection others(TCollection::Of<TOtherItem>());
  others.Add();
  EXPECT_THROW(target.Assign(&others), EConvertError);  // the items refuse each other
  EXPECT_EQ(others.Items(0)->ClassName(), u"TOtherItem");
}

TEST(CollectionNamesTest, NamePathsAndDisplayNames) {
  TTestGrid grid(nullptr);
  grid.SetName(u"Grid1");
  TTestColumn* column = grid.Columns()->Add();
  AddColumn(*grid.Columns(), u"second");
  EXPECT_EQ(grid.Columns()->Owner(), &grid);
  EXPECT_EQ(grid.Columns()->GetNamePath(), u"Grid1.Columns");
  EXPECT_EQ(grid.Columns()->Items(1)->GetNamePath(), u"Grid1.Columns[1]");
  EXPECT_EQ(column->DisplayName(), u"TTestColumn");
  EXPECT_EQ(grid.Columns()->Items(1)->DisplayName(), u"second");

  TTypedCollection<TTestColumn> loose;
  EXPECT_EQ(loose.GetNamePath(), u"TCollection");
  EXPECT_EQ(loose.Add()->GetNamePath(), u"TCollection[0]");
}

}  // namespace
