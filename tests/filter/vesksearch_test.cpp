#include "filter/vesksearch.h"

#include <gtest/gtest.h>

#include <memory>

#include "platform/db/fields.h"
#include "platform/db/memdataset.h"
#include "platform/ui/controls.h"
#include "platform/ui/scriptedui.h"

namespace {

class SearchLocate : public ::testing::Test {
 protected:
  void SetUp() override {
    table_ = std::make_unique<TVirtualTable>(nullptr);
    table_->AddField(u"ID", ftInteger);
    table_->AddField(u"NAME", ftString, 20);
    table_->Open();
    const char16_t* names[] = {u"Apple", u"Apricot", u"Bread", u"Butter", u"Cheese"};
    for (int i = 0; i < 5; ++i) {
      table_->Append();
      table_->FieldByName(u"ID")->SetValue(i + 1);
      table_->FieldByName(u"NAME")->SetValue(names[i]);
      table_->Post();
    }
    table_->First();
  }
  void TearDown() override { EXPECT_EQ(ui_.Verify(), u""); }
  int Id() const { return table_->FieldByName(u"ID")->AsInteger(); }
  TField* Name() const { return table_->FieldByName(u"NAME"); }

  TScriptedUserInterface ui_;
  TUserInterfaceScope scope_{ui_};
  std::unique_ptr<TVirtualTable> table_;
  TVeskSearchState state_;
  TVeskSearchHooks hooks_;
};

TEST_F(SearchLocate, TypedTextFindsByPrefixAndRemembers) {
  EXPECT_TRUE(VeskSearchLocate(table_.get(), state_, hooks_, Name(), u"bu", 0, nullptr));
  EXPECT_EQ(Id(), 4);
  EXPECT_EQ(state_.LastField, u"NAME");
  EXPECT_EQ(state_.LastValue, u"bu");
  EXPECT_EQ(state_.MissField, u"");
}

TEST_F(SearchLocate, RepeatAsksAndMovesOnFromTheCurrentRecord) {
  ASSERT_TRUE(VeskSearchLocate(table_.get(), state_, hooks_, Name(), u"a", 0, nullptr));
  EXPECT_EQ(Id(), 1);
  ui_.ExpectInputQuery(u"NAME:", u"a");
  EXPECT_TRUE(VeskSearchLocate(table_.get(), state_, hooks_, nullptr, String(), 1, nullptr));
  EXPECT_EQ(Id(), 2);
  ui_.ExpectInputQuery(u"NAME:", u"a");
  EXPECT_FALSE(VeskSearchLocate(table_.get(), state_, hooks_, nullptr, String(), 1, nullptr));
  EXPECT_EQ(Id(), 2);
  EXPECT_EQ(state_.MissField, u"NAME");
  EXPECT_EQ(state_.MissValue, u"a");
}

TEST_F(SearchLocate, CancelledQuestionAndVanishedField) {
  ui_.ExpectInputQuery(u"NAME:", u"", false);
  EXPECT_FALSE(VeskSearchLocate(table_.get(), state_, hooks_, Name(), String(), 0, nullptr));
  state_.LastField = u"GONE";
  EXPECT_TRUE(VeskSearchLocate(table_.get(), state_, hooks_, nullptr, u"x", 0, nullptr));
}

TEST_F(SearchLocate, NumbersFallBackToTheGeneralSearchOverText) {
  hooks_.Options = TLocateOptions();
  EXPECT_TRUE(VeskSearchLocate(table_.get(), state_, hooks_, table_->FieldByName(u"ID"), u"3", 0, nullptr));
  EXPECT_EQ(Id(), 3);
  EXPECT_FALSE(VeskSearchLocate(table_.get(), state_, hooks_, table_->FieldByName(u"ID"), u"9", 0, nullptr));
  EXPECT_EQ(state_.MissValue, u"9");
}

TEST_F(SearchLocate, GridDialogChoosesTextAndMatch) {
  TWinControl grid(nullptr);
  bool cancel = false;
  hooks_.GridDialog = [&](TComponent* shownFor, TField* selected, String& text, bool& partial, bool&) {
    EXPECT_EQ(shownFor, &grid);
    EXPECT_EQ(selected, Name());
    text = u"Bread";
    partial = false;
    return !cancel;
  };
  EXPECT_TRUE(VeskSearchLocate(table_.get(), state_, hooks_, Name(), String(), 1, &grid));
  EXPECT_EQ(Id(), 3);
  EXPECT_EQ(state_.LastValue, u"Bread");
  // Whole match: "Bread" behind the current record is not there.
  EXPECT_FALSE(VeskSearchLocate(table_.get(), state_, hooks_, Name(), String(), 1, &grid));
  EXPECT_EQ(Id(), 3);
  cancel = true;
  EXPECT_TRUE(VeskSearchLocate(table_.get(), state_, hooks_, Name(), String(), 1, &grid));
}

TEST_F(SearchLocate, CalculatedFieldsGoToTheApplicationOrTheFieldReadingSearch) {
  TField* name = Name();
  name->SetFieldKind(fkCalculated);
  int external = 0;
  hooks_.ExtSearch = [&](TObject* sender) {
    EXPECT_EQ(sender, table_.get());
    ++external;
  };
  EXPECT_TRUE(VeskSearchLocate(table_.get(), state_, hooks_, name, u"x", 0, nullptr));
  EXPECT_EQ(external, 1);
  EXPECT_EQ(state_.LastField, u"NAME");
  hooks_.ExtSearch = nullptr;
  String keys;
  bool forward = true;
  TLocateOptions seen;
  hooks_.LocateCalc = [&](const String& k, const Variant& v, TLocateOptions o, bool f) {
    keys = k;
    forward = f;
    seen = o;
    return VarToStr(v) == u"Bread";
  };
  int misses = 0;
  hooks_.Miss = [&](const String& field, const String& value) {
    ++misses;
    EXPECT_EQ(field, u"NAME");
    EXPECT_EQ(value, u"Cake");
  };
  EXPECT_TRUE(VeskSearchLocate(table_.get(), state_, hooks_, name, u"Bread", 0, nullptr));
  EXPECT_EQ(keys, u"NAME");
  EXPECT_FALSE(forward);
  EXPECT_TRUE(seen.Contains(loPartialKey));
  EXPECT_EQ(misses, 0);
  EXPECT_FALSE(VeskSearchLocate(table_.get(), state_, hooks_, name, u"Cake", 0, nullptr));
  EXPECT_EQ(misses, 1);
  EXPECT_EQ(state_.MissValue, u"Cake");
}

TEST_F(SearchLocate, TheCodeChoiceSearchesTheKeyFieldTheDatasetHas) {
  TWinControl grid(nullptr);
  String answer = u"3";
  hooks_.GridDialog = [&](TComponent*, TField*, String& text, bool& partial, bool& byCode) {
    text = answer;
    partial = false;
    byCode = true;
    return true;
  };
  Name()->SetKeyFields(u"ID");
  EXPECT_TRUE(VeskSearchLocate(table_.get(), state_, hooks_, Name(), String(), 0, &grid));
  EXPECT_EQ(Id(), 3);
  EXPECT_EQ(state_.LastField, u"ID");
  // A key the dataset lacks leaves the selected field.
  Name()->SetKeyFields(u"GONE");
  answer = u"Cheese";
  EXPECT_TRUE(VeskSearchLocate(table_.get(), state_, hooks_, Name(), String(), 0, &grid));
  EXPECT_EQ(Id(), 5);
  EXPECT_EQ(state_.LastField, u"NAME");
}

TEST_F(SearchLocate, LookupFieldsRefuseWhileLookupsFilter) {
  hooks_.LookupFilterCount = 1;
  TField* name = Name();
  name->SetFieldKind(fkLookup);
  ui_.ExpectShowMessage(u"Can't do this with enabled lookUp filters\nRemove them and try agan");
  EXPECT_FALSE(VeskSearchLocate(table_.get(), state_, hooks_, name, u"x", 0, nullptr));
  EXPECT_EQ(state_.MissField, u"");
}

}  // namespace
