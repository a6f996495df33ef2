#include "filter/vesklocate.h"

#include <gtest/gtest.h>

#include <memory>

#include "platform/db/bdedataset.h"
#include "platform/db/fields.h"
#include "platform/db/memdataset.h"
#include "platform/rtl/stringlist.h"
#include "platform/ui/forms.h"
#include "platform/ui/scriptedui.h"
#include "tests/support/kitfixture.h"

namespace {

// ID, NAME, PRICE; the rows are in ascending NAME order.
class GeneralLocate : public ::testing::Test {
 protected:
  void SetUp() override {
    table_ = std::make_unique<TVirtualTable>(nullptr);
    table_->AddField(u"ID", ftInteger);
    table_->AddField(u"NAME", ftString, 20);
    table_->AddField(u"PRICE", ftFloat);
    table_->Open();
    Add(1, u"Apple", 2.5);
    Add(2, u"Apricot", 4);
    Add(3, u"Bread", Variant::Null());
    Add(4, u"butter", 3.1);
    Add(5, u"Cheese", 9.75);
    table_->First();
  }
  void Add(int id, const String& name, const Variant& price) {
    table_->Append();
    table_->FieldByName(u"ID")->SetValue(id);
    table_->FieldByName(u"NAME")->SetValue(name);
    table_->FieldByName(u"PRICE")->SetValue(price);
    table_->Post();
  }
  int Id() const { return table_->FieldByName(u"ID")->AsInteger(); }
  void GoTo(int id) { ASSERT_TRUE(table_->Locate(u"ID", id, TLocateOptions())); }

  std::unique_ptr<TVirtualTable> table_;
};

TEST_F(GeneralLocate, TextOptionsOnStringFields) {
  EXPECT_FALSE(Locate(table_.get(), u"NAME", u"BUTTER", TVeskLocateOption()));
  EXPECT_TRUE(Locate(table_.get(), u"NAME", u"BUTTER", TVeskLocateOption{vloCaseInsensitive}));
  EXPECT_EQ(Id(), 4);
  EXPECT_TRUE(Locate(table_.get(), u"NAME", u"Apr", TVeskLocateOption{vloPartialKey}));
  EXPECT_EQ(Id(), 2);
  EXPECT_FALSE(Locate(table_.get(), u"NAME", u"apr", TVeskLocateOption{vloPartialKey}));
  EXPECT_TRUE(Locate(table_.get(), u"NAME", u"ch", TLocateOptions{loCaseInsensitive, loPartialKey}));
  EXPECT_EQ(Id(), 5);
  // A value longer than the field text compares whole, so it fails.
  EXPECT_FALSE(Locate(table_.get(), u"NAME", u"Apples", TVeskLocateOption{vloPartialKey}));
  // Without text options the field must equal the value.
  EXPECT_FALSE(Locate(table_.get(), u"NAME", u"App", TVeskLocateOption()));
}

TEST_F(GeneralLocate, MissGoesBackAndNullsMatchNullsOnly) {
  GoTo(3);
  EXPECT_FALSE(Locate(table_.get(), u"NAME", u"Zucchini", TVeskLocateOption{vloCaseInsensitive}));
  EXPECT_EQ(Id(), 3);
  GoTo(1);
  EXPECT_TRUE(Locate(table_.get(), u"PRICE", Variant::Null(), TVeskLocateOption()));
  EXPECT_EQ(Id(), 3);
  EXPECT_TRUE(Locate(table_.get(), u"PRICE", 3.1, TVeskLocateOption()));
  EXPECT_EQ(Id(), 4);
}

TEST_F(GeneralLocate, SeveralFieldsTakeAnArray) {
  TStringList names;
  names.Add(u" NAME ");
  names.Add(u"ID");
  EXPECT_TRUE(Locate(table_.get(), &names, VarArrayOf({u"b", 4}), TVeskLocateOption{vloPartialKey}));
  EXPECT_EQ(Id(), 4);
  EXPECT_FALSE(Locate(table_.get(), u"NAME;ID", VarArrayOf({u"Bread", 4}), TVeskLocateOption()));
  EXPECT_TRUE(Locate(table_.get(), u"NAME,ID", VarArrayOf({u"Bread", 3}), TVeskLocateOption()));
  EXPECT_EQ(Id(), 3);
  EXPECT_THROW(Locate(table_.get(), u"NAME;ID", u"Bread", TVeskLocateOption()), EDatabaseError);
  EXPECT_THROW(Locate(table_.get(), u"NAME;ID", VarArrayOf({u"Bread"}), TVeskLocateOption()), EDatabaseError);
  EXPECT_THROW(Locate(table_.get(), u"NOPE", 1, TVeskLocateOption()), EDatabaseError);
}

TEST_F(GeneralLocate, FromNextFindsTheFollowingMatch) {
  EXPECT_TRUE(Locate(table_.get(), u"NAME", u"a", TVeskLocateOption{vloCaseInsensitive, vloPartialKey}));
  EXPECT_EQ(Id(), 1);
  EXPECT_TRUE(Locate(table_.get(), u"NAME", u"a",
                     TVeskLocateOption{vloCaseInsensitive, vloPartialKey, vloFromNext}));
  EXPECT_EQ(Id(), 2);
  EXPECT_FALSE(Locate(table_.get(), u"NAME", u"a",
                      TVeskLocateOption{vloCaseInsensitive, vloPartialKey, vloFromNext}));
  EXPECT_EQ(Id(), 2);
}

TEST_F(GeneralLocate, OrderedDataStopsWhereTheKeyIsPassed) {
  GoTo(5);
  EXPECT_FALSE(Locate(table_.get(), u"ID", 0, TVeskLocateOption{vloOrdered}));
  // The first ID already passes 0: Prior from the first record stays there.
  EXPECT_EQ(Id(), 1);
  GoTo(5);
  EXPECT_FALSE(Locate(table_.get(), u"NAME", u"Ba", TVeskLocateOption{vloOrdered}));
  // "Bread" passes "Ba": the search steps back to the record before it.
  EXPECT_EQ(Id(), 2);
  EXPECT_TRUE(Locate(table_.get(), u"ID", 4, TVeskLocateOption{vloOrdered}));
  EXPECT_EQ(Id(), 4);
}

TEST_F(GeneralLocate, EmptyOrNamelessFindsNothing) {
  TStringList none;
  EXPECT_FALSE(Locate(table_.get(), &none, 1, TVeskLocateOption()));
  table_->Clear();
  EXPECT_FALSE(Locate(table_.get(), u"ID", 1, TVeskLocateOption()));
}

TEST_F(GeneralLocate, PendingInputStopsTheScan) {
  TScriptedUserInterface ui;
  ui.InputPendingAfter(2);
  GoTo(3);
  table_->First();
  bool found;
  {
    TUserInterfaceScope scope(ui);
    found = Locate(table_.get(), u"ID", 5, TVeskLocateOption());
  }
  EXPECT_FALSE(found);
  EXPECT_EQ(ui.InputQuestions(), 3);  // asked on the first three records, stopped at the third
  EXPECT_EQ(ui.InputDiscards(), 1);
  EXPECT_EQ(Id(), 1);  // back where it began
  EXPECT_FALSE(UserInputMessage());  // the headless default has no queue
}

TEST_F(GeneralLocate, ControlsAndCursorComeBack) {
  TCursor before = Screen->Cursor();
  EXPECT_FALSE(Locate(table_.get(), u"ID", 9, TVeskLocateOption()));
  EXPECT_FALSE(table_->ControlsDisabled());
  EXPECT_EQ(Screen->Cursor(), before);
  table_->DisableControls();
  EXPECT_TRUE(Locate(table_.get(), u"ID", 2, TVeskLocateOption()));
  EXPECT_TRUE(table_->ControlsDisabled());
  table_->EnableControls();
  EXPECT_FALSE(table_->ControlsDisabled());
}

class QLocate : public KitDbTest {};

TEST_F(QLocate, UsesTheLeadingValuesOnTheIndexFields) {
  TTable table(nullptr);
  table.SetSession(session_);
  table.SetTableName(u"GOODS");
  table.SetIndexFieldNames(u"CODE;NAME");
  table.Open();
  EXPECT_TRUE(qlocate(&table, u"B02"));
  EXPECT_EQ(table.FieldByName(u"ID")->AsInteger(), 4);
  EXPECT_TRUE(qlocate(&table, u"B01", u"Butter"));
  EXPECT_EQ(table.FieldByName(u"ID")->AsInteger(), 3);
  EXPECT_FALSE(qlocate(&table, u"B01", u"Bread"));
  // More values than index fields, or none at all, find nothing.
  EXPECT_FALSE(qlocate(&table, u"B01", u"Butter", 3));
  EXPECT_FALSE(qlocate(&table, Variant()));
  // A value after an unset one is not taken.
  EXPECT_TRUE(qlocate(&table, u"C01", Variant(), u"ignored"));
  EXPECT_EQ(table.FieldByName(u"ID")->AsInteger(), 5);
}

}  // namespace
