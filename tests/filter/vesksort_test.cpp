#include "filter/vesksort.h"

#include <gtest/gtest.h>

#include <memory>

#include "platform/db/fields.h"
#include "platform/db/memdataset.h"
#include "platform/rtl/stringlist.h"
#include "tests/support/kitfixture.h"

// An in-memory table with the kit's editing mode, published as the kit's
// virtual table publishes it.
class TModeTable : public TVirtualTable {
  KELMAR_CLASS(TModeTable, TVirtualTable)
 public:
  explicit TModeTable(TComponent* AOwner) : TVirtualTable(AOwner) {}
  bool VeskMode() const { return veskMode_; }
  void SetVeskMode(bool v) { veskMode_ = v; }

 private:
  bool veskMode_ = false;
};

KELMAR_PUBLISH(TModeTable) { r.Prop(u"VeskMode", &TModeTable::VeskMode, &TModeTable::SetVeskMode); }

namespace {

String Column(TDataSet* ds, const String& field) {
  String out;
  for (ds->First(); !ds->Eof(); ds->Next())
    out += (out.IsEmpty() ? u"" : u",") + (ds->FieldByName(field)->IsNull() ? String(u"-") : ds->FieldByName(field)->AsString());
  return out;
}

class SortInMemory : public ::testing::Test {
 protected:
  void SetUp() override {
    table_ = std::make_unique<TModeTable>(nullptr);
    table_->AddField(u"ID", ftInteger);
    table_->AddField(u"NAME", ftString, 20);
    table_->AddField(u"PRICE", ftFloat);
    table_->Open();
    Add(1, u"Cheese", 9.75);
    Add(2, u"apple", Variant::Null());
    Add(3, u"Bread", 1.2);
    Add(4, u"Apple", 2.5);
    Add(5, u"Bread", 10);
  }
  void Add(int id, const String& name, const Variant& price) {
    table_->Append();
    table_->FieldByName(u"ID")->SetValue(id);
    table_->FieldByName(u"NAME")->SetValue(name);
    table_->FieldByName(u"PRICE")->SetValue(price);
    table_->Post();
  }
  std::unique_ptr<TModeTable> table_;
};

TEST_F(SortInMemory, OrdersTextOrdinallyAndKeepsTies) {
  VeskSort(table_.get(), u"NAME", false);
  EXPECT_EQ(Column(table_.get(), u"ID"), u"4,3,5,1,2");
  VeskSort(table_.get(), u"NAME", true);
  EXPECT_EQ(Column(table_.get(), u"NAME"), u"apple,Cheese,Bread,Bread,Apple");
  EXPECT_EQ(table_->RecordCount(), 5);
}

TEST_F(SortInMemory, NumbersWithNullsFirstAndEveryFieldTravels) {
  VeskSort(table_.get(), u"PRICE", false);
  EXPECT_EQ(Column(table_.get(), u"PRICE"), u"-,1.2,2.5,9.75,10");
  EXPECT_EQ(Column(table_.get(), u"ID"), u"2,3,4,1,5");
  EXPECT_EQ(Column(table_.get(), u"NAME"), u"apple,Bread,Apple,Cheese,Bread");
}

TEST_F(SortInMemory, StaysOnTheSortValueOfTheCurrentRecord) {
  ASSERT_TRUE(table_->Locate(u"ID", 1, TLocateOptions()));
  VeskSort(table_.get(), u"PRICE", true);
  EXPECT_EQ(table_->FieldByName(u"ID")->AsInteger(), 1);
  EXPECT_EQ(table_->RecNo(), 2);
}

TEST_F(SortInMemory, WritesWithTheModeOffAndRestoresIt) {
  table_->SetVeskMode(true);
  int postsInMode = 0;
  table_->BeforePost = [&](TDataSet*) { postsInMode += table_->VeskMode() ? 1 : 0; };
  VeskSort(table_.get(), u"ID", true);
  EXPECT_EQ(postsInMode, 0);
  EXPECT_TRUE(table_->VeskMode());
  EXPECT_EQ(Column(table_.get(), u"ID"), u"5,4,3,2,1");
}

TEST_F(SortInMemory, AFailedRewriteLosesNothing) {
  int posts = 0;
  table_->BeforePost = [&](TDataSet*) {
    if (++posts == 3) throw EDatabaseError(u"disk full");
  };
  table_->SetVeskMode(true);
  EXPECT_THROW(VeskSort(table_.get(), u"NAME", false), EDatabaseError);
  EXPECT_EQ(table_->State(), dsBrowse);
  EXPECT_EQ(Column(table_.get(), u"ID"), u"1,2,3,4,5");
  EXPECT_EQ(Column(table_.get(), u"PRICE"), u"9.75,-,1.2,2.5,10");
  EXPECT_TRUE(table_->VeskMode());
  EXPECT_FALSE(table_->ControlsDisabled());
}

TEST_F(SortInMemory, TooFewRecordsOrAnUnknownField) {
  EXPECT_THROW(VeskSort(table_.get(), u"NOPE", false), EDatabaseError);
  EXPECT_EQ(Column(table_.get(), u"ID"), u"1,2,3,4,5");
  table_->Clear();
  Add(7, u"x", 1);
  VeskSort(table_.get(), u"NOPE", false);  // one record: nothing is done, nothing is checked
  EXPECT_EQ(Column(table_.get(), u"ID"), u"7");
  VeskSort(static_cast<TDataSet*>(nullptr), u"ID", false);
}

class SortOnDatabase : public KitDbTest {};

TEST_F(SortOnDatabase, RewritesTheTableInATransaction) {
  TVeskODACQuery* q = OpenGoods();
  VeskSort(q, u"PRICE", true);
  EXPECT_EQ(Column(q, u"ID"), u"5,2,3,1,4");
  EXPECT_FALSE(session_->InTransaction());
  EXPECT_EQ(Value(u"SELECT COUNT(*) FROM GOODS"), u"5");
  EXPECT_EQ(Value(u"SELECT NAME FROM GOODS WHERE ID = 4"), u"Bread");
}

TEST_F(SortOnDatabase, AFailureRollsBackAndShowsTheRowsAgain) {
  TVeskODACQuery* q = OpenGoods();
  int posts = 0;
  q->BeforePost = [&](TDataSet*) {
    if (++posts == 2) throw EDatabaseError(u"ORA-00001: unique constraint violated");
  };
  EXPECT_THROW(VeskSort(q, u"NAME", false), EDatabaseError);
  EXPECT_FALSE(session_->InTransaction());
  EXPECT_EQ(Value(u"SELECT COUNT(*) FROM GOODS"), u"5");
  EXPECT_TRUE(q->Active());
  EXPECT_EQ(Column(q, u"ID"), u"1,2,3,4,5");
}

TEST_F(SortOnDatabase, AnOpenTransactionIsLeftAlone) {
  TVeskODACQuery* q = OpenGoods();
  session_->StartTransaction();
  EXPECT_THROW(VeskSort(q, u"NAME", true), EDatabaseError);
  EXPECT_TRUE(session_->InTransaction());
  session_->Rollback();
  EXPECT_EQ(Column(q, u"ID"), u"1,2,3,4,5");
}

class ListApply : public SortInMemory {};

TEST_F(ListApply, PostsOnlyWhenTheListAsks) {
  TStringList list;
  list.Add(u"Other=1");
  table_->Edit();
  table_->FieldByName(u"NAME")->SetValue(u"Edam");
  ListApplyToDataSet(table_.get(), &list);
  EXPECT_EQ(table_->State(), dsEdit);

  list.Add(u"AutoPost=1");
  ListApplyToDataSet(table_.get(), &list);
  EXPECT_EQ(table_->State(), dsBrowse);
  EXPECT_EQ(table_->FieldByName(u"NAME")->AsString(), u"Edam");

  TStringList again;
  again.Add(u"AutoPostEdit=1");
  table_->Insert();
  table_->FieldByName(u"ID")->SetValue(9);
  ListApplyToDataSet(table_.get(), &again);
  EXPECT_EQ(table_->State(), dsEdit);
  EXPECT_EQ(table_->RecordCount(), 6);
  table_->Cancel();

  // In browse, or with an empty list, nothing happens.
  ListApplyToDataSet(table_.get(), &again);
  EXPECT_EQ(table_->State(), dsBrowse);
  TStringList empty;
  table_->Edit();
  ListApplyToDataSet(table_.get(), &empty);
  EXPECT_EQ(table_->State(), dsEdit);
  table_->Cancel();
}

}  // namespace
