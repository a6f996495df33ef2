// Positions by key values, defaults for new records, the search-miss slot,
// detail fields from the master, and the copy from the record before.
#include <gtest/gtest.h>

#include "data/veskpos.h"
#include "platform/db/datasource.h"
#include "tests/support/kitfixture.h"
#include "tests/support/kitui.h"

namespace {

TEST(BreakApart, SkipsEmptyPartsAndAlwaysCutsAtTilde) {
  std::vector<String> parts;
  EXPECT_EQ(breakApart(u"A;;B", parts, u";"), 2);
  EXPECT_EQ(parts, (std::vector<String>{u"A", u"B"}));
  EXPECT_EQ(breakApart(u"A~B", parts, String()), 2);
  EXPECT_EQ(breakApart(u";", parts, u";"), 0);
  EXPECT_EQ(breakApart(u"x,y;z", parts, u",;"), 3);
  EXPECT_EQ(parts.back(), u"z");
  String many;
  for (int i = 0; i < 300; ++i) many += u"p;";
  EXPECT_EQ(breakApart(many, parts, u";"), 255);
}

TEST_F(KitDbTest, KeyValuesSkipMissingFields) {
  TVeskODACQuery* q = OpenGoods();
  String keys;
  Variant values;
  ReadKeyValues(q, u"CODE;NOPE", keys, values);
  EXPECT_EQ(keys, u"CODE");
  EXPECT_EQ(values, Variant(u"A01"));
  ReadKeyValues(q, u"ID;NAME", keys, values);
  EXPECT_EQ(keys, u"ID;NAME");
  ASSERT_TRUE(VarIsArray(values));
  EXPECT_EQ(values.GetElement(1), Variant(u"Apple"));
  ReadKeyValues(q, String(), keys, values);
  EXPECT_EQ(keys, u"");
  EXPECT_TRUE(VarIsEmpty(values));
}

TEST_F(KitDbTest, DefaultOfAFieldWithAnOriginAsksOnce) {
  TVeskODACQuery* q = OpenGoods();
  q->FieldByName(u"CODE")->SetOrigin(u"NAME");
  TVeskDefaultList list;
  TKitScriptedUI ui;
  ui.ExpectInput(u"Default value:", u"Typed");
  SetFieldDefault(list, q->FieldByName(u"CODE"), true);
  EXPECT_EQ(ui.Verify(), u"");
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(list[0].Name, u"NAME");
  EXPECT_EQ(list[0].Value, Variant(u"Typed"));
  EXPECT_EQ(list[1].Name, u"CODE");
  EXPECT_EQ(list[1].Value, Variant(u"A01"));
  // A cancel stores nothing; the same name (any case) is overwritten.
  ui.ExpectInput(u"QTY:", u"", false);
  SetFieldDefault(list, q->FieldByName(u"QTY"), true);
  EXPECT_EQ(list.size(), 2u);
  q->Next();
  q->FieldByName(u"NAME")->SetDisplayLabel(u"Name");
  SetFieldDefault(list, q->FieldByName(u"NAME"), false);
  EXPECT_EQ(list[0].Value, Variant(u"Apricot"));
}

TEST_F(KitDbTest, DefaultsOfCalculatedAndLookupFieldsGoToTheirSources) {
  TVeskODACQuery* q = NewQuery();
  q->SQL()->SetText(u"SELECT ID, NAME, QTY FROM GOODS ORDER BY ID");
  auto add = [q](TField* field, const String& name, TFieldKind kind) {
    field->SetFieldName(name);
    field->SetFieldKind(kind);
    field->SetDataSet(q);
    return field;
  };
  add(new TIntegerField(q), u"ID", fkData);
  add(new TStringField(q), u"NAME", fkData);
  add(new TIntegerField(q), u"QTY", fkData);
  TField* calc = add(new TStringField(q), u"CLC_NAME", fkCalculated);
  calc->SetOrigin(u"NAME");
  TField* lookup = add(new TStringField(q), u"LK", fkLookup);
  lookup->SetKeyFields(u"QTY");
  q->Open();
  TVeskDefaultList list;
  SetFieldDefault(list, calc, false);
  SetFieldDefault(list, lookup, false);
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(list[0].Name, u"NAME");
  EXPECT_EQ(list[0].Value, Variant(u"Apple"));
  EXPECT_EQ(list[1].Name, u"QTY");
  EXPECT_EQ(list[1].Value, Variant(10));
}

TEST_F(KitDbTest, DefaultsAndTheMissFillANewRecordEvenThroughReadOnly) {
  TVeskODACQuery* q = OpenGoods();
  TVeskDefaultList list{{u"PRICE", 7.5}, {u"NOPE", 1}};
  q->FieldByName(u"CODE")->SetReadOnly(true);
  TVeskSearchMiss miss{u"CODE", u"Z9"};
  q->Append();
  ApplyDefaultValues(q, list);
  ApplySearchMiss(q, miss);
  EXPECT_EQ(q->FieldByName(u"PRICE")->AsFloat(), 7.5);
  EXPECT_EQ(q->FieldByName(u"CODE")->AsString(), u"Z9");
  EXPECT_TRUE(q->FieldByName(u"CODE")->ReadOnly());
  EXPECT_EQ(miss.Name, u"");
  q->Cancel();
}

TEST_F(KitDbTest, DetailFieldsComeFromTheMastersLinkingParameters) {
  Exec(u"CREATE TABLE LINES (LID INTEGER, DOC_ID INTEGER, QTY INTEGER, NOTE VARCHAR2(10))");
  TVeskODACQuery* master = OpenGoods(u"qMaster");
  master->Locate(u"ID", 2, TLocateOptions());
  auto* source = new TDataSource(owner_.get());
  source->SetDataSet(master);
  auto* detail = new TOraQuery(owner_.get());
  detail->SetSession(session_);
  detail->SQL()->SetText(u"SELECT * FROM LINES\nWHERE DOC_ID =\n  :ID AND QTY = :QTY AND NOTE = :NOTE");
  detail->ParamByName(u"NOTE")->SetValue(u"from param");
  detail->Open();
  detail->FieldByName(u"DOC_ID")->SetReadOnly(true);
  detail->Insert();
  FillDetailFields(detail, source);
  EXPECT_EQ(detail->FieldByName(u"DOC_ID")->AsInteger(), 2);  // compared with :ID in the text
  EXPECT_EQ(detail->FieldByName(u"QTY")->AsInteger(), 5);     // same name as the parameter
  EXPECT_EQ(detail->FieldByName(u"NOTE")->AsString(), u"from param");  // the master has no NOTE
  EXPECT_TRUE(detail->FieldByName(u"DOC_ID")->ReadOnly());
  detail->Cancel();
  FillDetailFields(detail, nullptr);  // nothing to do, nothing raised
}

TEST_F(KitDbTest, CopiesTheRecordBeforeWithItsCompanion) {
  TVeskODACQuery* q = OpenGoods();
  q->FieldByName(u"NAME")->SetKeyFields(u"CODE");
  q->Edit();
  getDitto(q->FieldByName(u"NAME"), nullptr);  // the first record has nothing before it
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"Apple");
  q->Cancel();
  q->Locate(u"ID", 4, TLocateOptions());
  q->Edit();
  getDitto(q->FieldByName(u"NAME"), nullptr);
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"Butter");
  EXPECT_EQ(q->FieldByName(u"CODE")->AsString(), u"B01");
  q->Post();
  EXPECT_EQ(Value(u"SELECT NAME || CODE FROM GOODS WHERE ID = 4"), u"ButterB01");
  // Outside edit nothing is copied; a read-only field is left alone.
  getDitto(q->FieldByName(u"QTY"), nullptr);
  EXPECT_TRUE(q->FieldByName(u"QTY")->IsNull());
  q->Edit();
  q->FieldByName(u"QTY")->SetReadOnly(true);
  getDitto(q->FieldByName(u"QTY"), nullptr);
  EXPECT_TRUE(q->FieldByName(u"QTY")->IsNull());
  q->Cancel();
}

}  // namespace
