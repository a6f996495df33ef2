// Defaults for new records and the text a failed search leaves behind, on
// the list functions and through the dataset's commands and inserts.
#include <gtest/gtest.h>

#include "data/veskdefaults.h"
#include "tests/support/kitfixture.h"
#include "tests/support/kitui.h"

namespace {

int FieldIndex(TDataSet* ds, const String& name) { return ds->Fields()->IndexOf(ds->FieldByName(name)); }

TEST_F(KitDbTest, DefaultOfAFieldWithAnOriginAsksOnce) {
  TVeskODACQuery* q = OpenGoods();
  q->FieldByName(u"CODE")->SetOrigin(u"NAME");
  TVeskDefaultList list;
  TKitScriptedUI ui;
  ui.ExpectInput(u"Default value:", u"Typed");
  SetFieldDefault(list, q->FieldByName(u"CODE"), true);
  EXPECT_EQ(ui.Verify(), u"");
  EXPECT_EQ(ui.ShownTexts().Pos(u"Default value:"), 1);
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(list[0].Name, u"NAME");
  EXPECT_EQ(list[0].Value, Variant(u"Typed"));
  EXPECT_EQ(list[1].Name, u"CODE");
  EXPECT_EQ(list[1].Value, Variant(u"A01"));
  // A cancel stores nothing; the same name (any case) is overwritten.
  ui.ExpectInput(u"QTY:", u"", false);
  SetFieldDefault(list, q->FieldByName(u"QTY"), true);
  EXPECT_EQ(ui.Verify(), u"");
  EXPECT_EQ(list.size(), 2u);
  q->Next();
  SetFieldDefault(list, q->FieldByName(u"NAME"), false);
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(list[0].Value, Variant(u"Apricot"));
  EXPECT_EQ(FieldDefault(list, q->FieldByName(u"name")), Variant(u"Apricot"));
  EXPECT_TRUE(VarIsEmpty(FieldDefault(list, q->FieldByName(u"QTY"))));
  EXPECT_TRUE(VarIsEmpty(FieldDefault(list, nullptr)));
}

TEST_F(KitDbTest, AFieldThatIsItsOwnOriginIsAskedOnceAndKeepsTheAnswer) {
  TVeskODACQuery* q = OpenGoods();
  q->FieldByName(u"CODE")->SetOrigin(u"CODE");
  TVeskDefaultList list;
  TKitScriptedUI ui;
  ui.ExpectInput(u"CODE:", u"Q1");
  SetFieldDefault(list, q->FieldByName(u"CODE"), true);
  EXPECT_EQ(ui.Verify(), u"");
  ASSERT_EQ(list.size(), 1u);
  EXPECT_EQ(list[0].Value, Variant(u"Q1"));
}

TEST_F(KitDbTest, DefaultsOfCalculatedAndLookupFieldsGoToTheirSources) {
  TVeskODACQuery* q = NewQuery();
  q->SQL()->SetText(u"SELECT ID, NAME, QTY FROM GOODS ORDER BY ID");
  auto add = [q](TField* field, const String& name, TFieldKind kind) {
    return AddPersistentField(q, field, name, kind);
  };
  add(new TIntegerField(q), u"ID", fkData);
  add(new TStringField(q), u"NAME", fkData);
  add(new TIntegerField(q), u"QTY", fkData);
  TField* calc = add(new TStringField(q), u"CLC_NAME", fkCalculated);
  calc->SetOrigin(u"NAME");
  TField* bare = add(new TStringField(q), u"CLC_BARE", fkCalculated);
  TField* lookup = add(new TStringField(q), u"LK", fkLookup);
  lookup->SetKeyFields(u"QTY");
  q->Open();
  TVeskDefaultList list;
  SetFieldDefault(list, calc, false);
  SetFieldDefault(list, lookup, false);
  SetFieldDefault(list, bare, false);  // no origin: nothing
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(list[0].Name, u"NAME");
  EXPECT_EQ(list[0].Value, Variant(u"Apple"));
  EXPECT_EQ(list[1].Name, u"QTY");
  EXPECT_EQ(list[1].Value, Variant(10));
  EXPECT_EQ(DefaultValueName(lookup), u"QTY");
  EXPECT_EQ(FieldDefault(list, lookup), Variant(10));
  EXPECT_EQ(FieldDefault(list, calc), Variant(u"Apple"));
  EXPECT_EQ(FieldDefault(list, q->FieldByName(u"NAME")), Variant(u"Apple"));
}

TEST_F(KitDbTest, DefaultsSetByCommandFillEveryNewRecordUntilCleared) {
  TVeskODACQuery* q = OpenGoods();
  q->Locate(u"ID", 3, TLocateOptions());
  TKitScriptedUI ui;
  ui.ExpectInput(u"Default value:", u"42");
  SetPropInteger(q, kDefValCmdSet, FieldIndex(q, u"QTY"));
  EXPECT_EQ(ui.Verify(), u"");
  SetPropInteger(q, kDefValCmdSetCurr, FieldIndex(q, u"PRICE"));
  EXPECT_EQ(q->getDefFV(q->FieldByName(u"QTY")), Variant(u"42"));
  EXPECT_DOUBLE_EQ(q->getDefFV(q->FieldByName(u"PRICE")).AsFloat(), 3.1);

  q->Append();
  EXPECT_EQ(q->FieldByName(u"QTY")->AsInteger(), 42);
  EXPECT_DOUBLE_EQ(q->FieldByName(u"PRICE")->AsFloat(), 3.1);
  q->FieldByName(u"ID")->SetAsInteger(6);
  q->FieldByName(u"CODE")->SetAsString(u"D01");
  q->Post();
  EXPECT_EQ(Value(u"SELECT QTY || '/' || PRICE FROM GOODS WHERE ID = 6"), u"42/3.1");

  // A field that can no longer be modified is skipped; the rest still fill.
  q->FieldByName(u"PRICE")->SetReadOnly(true);
  q->Insert();
  EXPECT_TRUE(q->FieldByName(u"PRICE")->IsNull());
  EXPECT_EQ(q->FieldByName(u"QTY")->AsInteger(), 42);
  q->Cancel();
  q->FieldByName(u"PRICE")->SetReadOnly(false);

  SetPropInteger(q, kDefValCmdClear, 0);
  EXPECT_TRUE(q->DefaultValues().empty());
  EXPECT_TRUE(VarIsEmpty(q->getDefFV(q->FieldByName(u"QTY"))));
  q->Insert();
  EXPECT_TRUE(q->FieldByName(u"QTY")->IsNull());
  q->Cancel();
  // An index outside the fields does nothing.
  SetPropInteger(q, kDefValCmdSetCurr, 99);
  EXPECT_TRUE(q->DefaultValues().empty());
}

TEST_F(KitDbTest, DefaultsLiveUntilTheDatasetClosesButNotThroughItsOwnRecompose) {
  TVeskODACQuery* q = NewQuery();
  q->SetVeskTableLive(u"GOODS");
  q->Open();
  q->setDefFV(q->FieldByName(u"NAME"), false);
  ASSERT_EQ(q->DefaultValues().size(), 1u);
  q->SetVeskFilter(u"ID > 1");  // closes and reopens by itself
  ASSERT_TRUE(q->Active());
  EXPECT_EQ(q->getDefFV(q->FieldByName(u"NAME")), Variant(u"Apple"));
  q->Close();
  EXPECT_TRUE(q->DefaultValues().empty());
}

// ---- The search-miss slot -----------------------------------------------------------

TEST_F(KitDbTest, AMissTypesItselfIntoOneNewRecordEvenThroughReadOnly) {
  TVeskODACQuery* q = OpenGoods();
  q->FieldByName(u"CODE")->SetReadOnly(true);
  q->SetSearchMiss(u"CODE", u"Z9");
  q->Append();
  EXPECT_EQ(q->FieldByName(u"CODE")->AsString(), u"Z9");
  EXPECT_TRUE(q->FieldByName(u"CODE")->ReadOnly());
  EXPECT_EQ(q->SearchMiss().Name, u"");
  q->Cancel();
  q->Append();
  EXPECT_TRUE(q->FieldByName(u"CODE")->IsNull());
  q->Cancel();

  // A miss on a field the dataset lacks is dropped quietly.
  TVeskSearchMiss miss{u"NOPE", u"x"};
  q->Append();
  ApplySearchMiss(q, miss);
  EXPECT_EQ(miss.Name, u"");
  q->Cancel();
}

TEST_F(KitDbTest, AFailedSearchSeedsTheNextInsertUntilEditOpenOrRefresh) {
  TVeskODACQuery* q = OpenGoods();
  TKitScriptedUI ui;
  ui.ExpectInput(u"CODE", u"Z77");
  SetPropInteger(q, kSearchCmdFirst, FieldIndex(q, u"CODE"));
  EXPECT_EQ(ui.Verify(), u"");
  EXPECT_EQ(q->SearchMiss().Name, u"CODE");
  EXPECT_EQ(q->SearchMiss().Value, u"Z77");
  q->Insert();
  EXPECT_EQ(q->FieldByName(u"CODE")->AsString(), u"Z77");
  q->Cancel();

  q->SetSearchMiss(u"CODE", u"Z78");
  q->Refresh();
  EXPECT_EQ(q->SearchMiss().Name, u"");
  q->Insert();
  EXPECT_TRUE(q->FieldByName(u"CODE")->IsNull());
  q->Cancel();

  q->SetSearchMiss(u"CODE", u"Z79");
  q->Edit();
  q->Cancel();
  EXPECT_EQ(q->SearchMiss().Name, u"");

  q->SetSearchMiss(u"CODE", u"Z80");
  q->Close();
  q->Open();
  EXPECT_EQ(q->SearchMiss().Name, u"");
}

}  // namespace
