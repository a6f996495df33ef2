// The state questions a grid asks of any dataset (filtered, searched,
// defaults) and SetVeskFilter, on members of the family over the embedded
// engine, on the in-memory member and on datasets outside the family.
#include "filter/filterstate.h"

#include "data/veskvirt.h"
#include "filter/listfilts.h"
#include "platform/ui/scriptedui.h"
#include "tests/support/kitfixture.h"

namespace {

String Ids(TDataSet* q) {
  String ids;
  for (q->First(); !q->Eof(); q->Next()) ids += (ids.IsEmpty() ? u"" : u",") + q->FieldByName(u"ID")->AsString();
  return ids;
}

class FilterStateTest : public KitDbTest {
 protected:
  // An in-memory member with ID and NAME, rows 1 "Apple", 2 "Bread".
  TVeskVirt* Virt() {
    auto* v = new TVeskVirt(owner_.get());
    v->AddField(u"ID", ftInteger);
    v->AddField(u"NAME", ftString, 20);
    v->Open();
    for (auto [id, name] : {std::pair{1, u"Apple"}, std::pair{2, u"Bread"}}) {
      v->Append();
      v->FieldByName(u"ID")->SetValue(id);
      v->FieldByName(u"NAME")->SetValue(String(name));
      v->Post();
    }
    return v;
  }

  TScriptedUserInterface ui;
  TUserInterfaceScope scope{ui};
};

TEST_F(FilterStateTest, ADatasetIsFilteredByAnyOfItsFiveSources) {
  TVeskODACQuery* q = ComposedGoods();
  EXPECT_FALSE(GetFiltered(q));
  // The generated condition: VeskFilter and FilterText both.
  q->SetFilterCmdSetExpr(u"PRICE=>3");
  EXPECT_TRUE(GetFiltered(q));
  q->SetFilterCmdClear(false);
  EXPECT_FALSE(GetFiltered(q));
  // A condition put into VeskFilter by hand.
  q->SetVeskFilter(u"ID > 1");
  EXPECT_TRUE(GetFiltered(q));
  q->SetVeskFilter(String());
  EXPECT_FALSE(GetFiltered(q));
  // FilterText alone, as a generation leaves it before the reopen.
  q->ListFilts()->SetFilterText(u"((PRICE>3))");
  EXPECT_TRUE(GetFiltered(q));
  q->ListFilts()->SetFilterText(String());
  // The client lists.
  q->addSF(q->FieldByName(u"NAME"), u"ap", 1, false);
  EXPECT_TRUE(GetFiltered(q));
  q->removeSF(u"NAME");
  EXPECT_FALSE(GetFiltered(q));
  // The client Filter text, whether or not Filtered is on.
  q->SetFilter(u"ID > 2");
  EXPECT_TRUE(GetFiltered(q));
  // Outside the family only Filter speaks.
  TVirtualTable plain(nullptr);
  plain.AddField(u"ID", ftInteger);
  EXPECT_FALSE(GetFiltered(&plain));
  plain.SetFilter(u"ID = 1");
  EXPECT_TRUE(GetFiltered(&plain));
  EXPECT_FALSE(GetFiltered(static_cast<TDataSet*>(nullptr)));
}

TEST_F(FilterStateTest, TheInMemoryMemberHasOnlyFilterAndTheLists) {
  TVeskVirt* v = Virt();
  EXPECT_FALSE(GetFiltered(v));
  EXPECT_EQ(v->FindFilterList(), nullptr);
  v->addSF(v->FieldByName(u"NAME"), u"br", 1, false);
  EXPECT_TRUE(GetFiltered(v));
  EXPECT_TRUE(GetFiltered(v->FieldByName(u"NAME")));
  EXPECT_FALSE(GetFiltered(v->FieldByName(u"ID")));
  v->freeFilters(false);
  EXPECT_FALSE(GetFiltered(v));
  v->SetFilter(u"ID = 2");
  EXPECT_TRUE(GetFiltered(v));
}

TEST_F(FilterStateTest, AFieldIsFilteredByItsListsOrItsRowOfTheFilterList) {
  TVeskODACQuery* q = ComposedGoods(u"G");
  EXPECT_FALSE(GetFiltered(q->FieldByName(u"PRICE")));
  // The row is found behind the alias. (The reopen makes the fields anew.)
  q->SetFilterCmdSetExpr(u"PRICE=<4");
  EXPECT_TRUE(GetFiltered(q->FieldByName(u"PRICE")));
  TField* name = q->FieldByName(u"NAME");
  EXPECT_FALSE(GetFiltered(name));
  q->addSF(name, u"a", 1, false);
  EXPECT_TRUE(GetFiltered(name));
  EXPECT_FALSE(GetFiltered(static_cast<TField*>(nullptr)));
  TStringField loose(nullptr);
  loose.SetFieldName(u"PRICE");
  EXPECT_FALSE(GetFiltered(&loose));
}

TEST_F(FilterStateTest, ALookupFilterMarksTheLookupColumnAndItsKey) {
  Exec(u"CREATE TABLE ORDERS (ID NUMBER(9), GOODS_ID NUMBER(9))");
  Exec(u"INSERT INTO ORDERS VALUES (10, 1), (20, 2), (30, 3)");
  TVeskODACQuery* goods = OpenGoods(u"qLk");
  TVeskODACQuery* q = NewQuery(u"qOrders");
  q->SQL()->SetText(u"SELECT ID, GOODS_ID FROM ORDERS ORDER BY ID");
  auto add = [q](TField* field, const char16_t* name, TFieldKind kind) {
    return AddPersistentField(q, field, name, kind);
  };
  add(new TIntegerField(q), u"ID", fkData);
  TField* key = add(new TIntegerField(q), u"GOODS_ID", fkData);
  TField* shown = AddLookupField(q, u"GOODS_NAME", u"GOODS_ID", goods, u"ID", u"NAME");
  q->Open();
  EXPECT_FALSE(GetFiltered(shown));
  EXPECT_TRUE(q->setFilter(shown, u"apr", false, nullptr));
  EXPECT_EQ(Ids(q), u"20");
  EXPECT_TRUE(GetFiltered(shown));
  EXPECT_TRUE(GetFiltered(key));
  EXPECT_FALSE(GetFiltered(q->FieldByName(u"ID")));
  EXPECT_TRUE(GetFiltered(q));
  // A closed dataset has no filtered field, whatever its lists hold.
  q->Close();
  q->addSF(key, u"2", 0, true);
  EXPECT_TRUE(GetFiltered(q));
  EXPECT_FALSE(GetFiltered(key));
}

TEST_F(FilterStateTest, SearchedAfterTheFirstSearchOnEveryMember) {
  TVeskODACQuery* q = ComposedGoods();
  TVeskVirt* v = Virt();
  for (TDataSet* ds : {static_cast<TDataSet*>(q), static_cast<TDataSet*>(v)}) {
    EXPECT_FALSE(GetSearched(ds));
    ui.ExpectInputQuery(u"NAME:", u"br");
    SetPropInteger(ds, u"SearchCmdFirst", ds->FieldByName(u"NAME")->Index());
    EXPECT_TRUE(GetSearched(ds));
    EXPECT_EQ(ds->FieldByName(u"NAME")->AsString(), u"Bread");
  }
  // A miss counts as a search too: the next one repeats it.
  ui.ExpectInputQuery(u"ID:", u"99");
  SetPropInteger(q, u"SearchCmdFirst", q->FieldByName(u"ID")->Index());
  EXPECT_EQ(q->SearchMiss().Name, u"ID");
  EXPECT_TRUE(GetSearched(q));
  TVirtualTable plain(nullptr);
  EXPECT_FALSE(GetSearched(&plain));
  EXPECT_EQ(ui.Verify(), u"");
}

TEST_F(FilterStateTest, DefaultValuesReadAsACaptionText) {
  TVeskODACQuery* q = ComposedGoods();
  EXPECT_EQ(GetDefValue(q), u"");
  q->setDefFV(q->FieldByName(u"NAME"), false);
  q->setDefFV(q->FieldByName(u"QTY"), false);
  EXPECT_EQ(GetDefValue(q), u"NAME=Apple; QTY=10");
  // A second default of the same field replaces the first in its place.
  q->Next();
  q->setDefFV(q->FieldByName(u"NAME"), false);
  EXPECT_EQ(GetDefValue(q), u"NAME=Apricot; QTY=10");
  SetPropInteger(q, u"DefValCmdClear", 0);
  EXPECT_EQ(GetDefValue(q), u"");
  TVirtualTable plain(nullptr);
  EXPECT_EQ(GetDefValue(&plain), u"");
}

TEST_F(FilterStateTest, SetVeskFilterGivesTheTextThatFreeFiltersRestores) {
  TVeskODACQuery* q = OpenGoods();
  q->SetFilter(u"ID < 5");
  q->SetFiltered(true);
  // The first client filter takes the application's text as the one to
  // come back to.
  q->setFilter(q->FieldByName(u"QTY"), u"5", false, nullptr);
  EXPECT_EQ(Ids(q), u"2");
  SetVeskFilter(q, u"ID > 2");
  EXPECT_EQ(q->Filter(), u"ID > 2");
  EXPECT_EQ(Ids(q), u"3,4,5");
  q->setFilter(q->FieldByName(u"QTY"), u"1", false, nullptr);
  EXPECT_EQ(Ids(q), u"5");
  q->freeFilters(false);
  EXPECT_EQ(q->Filter(), u"ID > 2");
  EXPECT_EQ(Ids(q), u"3,4,5");
  // Outside the family it is only the Filter text.
  TVirtualTable plain(nullptr);
  SetVeskFilter(&plain, u"ID = 1");
  EXPECT_EQ(plain.Filter(), u"ID = 1");
}

}  // namespace
