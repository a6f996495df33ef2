#include "data/sqlparams.h"

#include <gtest/gtest.h>

#include <functional>

#include "platform/db/memdataset.h"
#include "platform/rtl/stringlist.h"
#include "tests/support/dbfixture.h"

namespace {

class SqlParamsTest : public DbTest {
 protected:
  void SetUp() override {
    DbTest::SetUp();
    Exec(u"CREATE TABLE items (id NUMBER(10) PRIMARY KEY, name VARCHAR2(20), qty NUMBER(10))");
    Exec(u"CREATE SEQUENCE items_seq START WITH 100");
    Exec(u"INSERT INTO items VALUES (1, 'one', 10)");
    Exec(u"INSERT INTO items VALUES (2, 'two', 20)");
    Exec(u"INSERT INTO items VALUES (3, 'three', 30)");
  }
  static String Names(TDataSet* ds) {
    String out;
    for (ds->First(); !ds->Eof(); ds->Next()) out += ds->FieldByName(u"NAME")->AsString() + u";";
    return out;
  }
};

// ---- Messages ----------------------------------------------------------------------

using Binder = void (*)(TDataSet*, TStrings*);

String MessageOf(Binder bind, TDataSet* query, TStrings* params) {
  try {
    bind(query, params);
  } catch (const Exception& e) {
    return e.Message;
  }
  return u"<no error>";
}

TEST_F(SqlParamsTest, EveryMessage) {
  TStringList list;
  TVirtualTable virt(nullptr);
  virt.SetName(u"Virt1");
  TOraQuery* q = Query(u"SELECT * FROM items");
  const struct {
    Binder bind;
    const char16_t* name;
  } binders[] = {{&SetupParams, u"SetupParams"}, {&SetupMacros, u"SetupMacros"}, {&ReplaceMacros, u"ReplaceMacros"}};
  for (const auto& b : binders) {
    const String prefix = String(b.name) + u": ";
    EXPECT_EQ(MessageOf(b.bind, nullptr, &list), prefix + u"Parameter AQuery is not specified");
    EXPECT_EQ(MessageOf(b.bind, &virt, &list), prefix + u"Virt1 is not TOraDataSet");
    EXPECT_EQ(MessageOf(b.bind, q, nullptr), prefix + u"Parameter AParams is not specified");
  }
  TVirtualTable unnamed(nullptr);
  EXPECT_EQ(MessageOf(&SetupParams, &unnamed, &list), u"SetupParams:  is not TOraDataSet");
  EXPECT_EQ(list.Count(), 0);
  EXPECT_EQ(q->SQL()->Text(), u"SELECT * FROM items\n");
}

// ---- Parameters ----------------------------------------------------------------------

TEST_F(SqlParamsTest, InputsReadTheListAndMissingNamesAreAdded) {
  TOraQuery* q = Query(u"SELECT name FROM items WHERE qty >= :LOW AND qty <= :HIGH ORDER BY id");
  q->ParamByName(u"HIGH")->SetAsInteger(25);
  TStringList list;
  list.SetText(u"low=15\nOTHER=x");
  SetupParams(q, &list);
  EXPECT_EQ(q->ParamByName(u"LOW")->AsString(), u"15");
  EXPECT_EQ(q->ParamByName(u"HIGH")->AsInteger(), 25);  // not in the list: left as it was
  EXPECT_EQ(list.Text(), u"low=15\nOTHER=x\nHIGH=\n");
  q->Open();
  EXPECT_EQ(Names(q), u"two;");

  // Now the list names HIGH with an empty value: the parameter becomes empty.
  list.SetValues(u"LOW", u"5");
  q->Close();
  SetupParams(q, &list);
  EXPECT_EQ(q->ParamByName(u"LOW")->AsString(), u"5");
  EXPECT_TRUE(q->ParamByName(u"HIGH")->IsNull() || q->ParamByName(u"HIGH")->AsString().IsEmpty());
}

TEST_F(SqlParamsTest, OutputsComeBackIntoTheList) {
  TOraQuery* q = Query(u"INSERT INTO items (id, name, qty) VALUES (items_seq.NEXTVAL, :NAME, :QTY) "
                       u"RETURNING id, qty INTO :NEW_ID, :NEW_QTY");
  q->ParamByName(u"NEW_ID")->SetParamType(ptOutput);
  q->ParamByName(u"NEW_QTY")->SetParamType(ptInputOutput);
  TStringList list;
  list.SetText(u"NAME=four\nQTY=40\nNEW_ID=stale");
  SetupParams(q, &list);
  EXPECT_EQ(list.IndexOfName(u"NEW_ID"), -1);  // a null output writes an empty value, which drops the line
  q->ExecSQL();
  SetupParams(q, &list);
  EXPECT_EQ(list.Values(u"NEW_ID"), u"100");
  EXPECT_EQ(list.Values(u"NEW_QTY"), u"40");
  EXPECT_EQ(list.Values(u"NAME"), u"four");
  EXPECT_EQ(Value(u"SELECT name FROM items WHERE id = 100"), u"four");
}

// ---- Macros ----------------------------------------------------------------------------

TEST_F(SqlParamsTest, MacrosTakeTheirTextFromTheList) {
  TOraQuery* q = Query(u"SELECT name FROM items &WHERE ORDER BY &ORD");
  TStringList list;
  list.SetText(u"ORD=id DESC");
  SetupMacros(q, &list);
  EXPECT_EQ(list.Text(), u"ORD=id DESC\nWHERE=\n");
  q->Open();
  EXPECT_EQ(Names(q), u"three;two;one;");
  q->Close();
  list.SetValues(u"WHERE", u"WHERE qty > 10");
  SetupMacros(q, &list);
  q->Open();
  EXPECT_EQ(Names(q), u"three;two;");
  EXPECT_EQ(q->SQL()->Text(), u"SELECT name FROM items &WHERE ORDER BY &ORD\n");  // the text keeps its macros
}

TEST_F(SqlParamsTest, ReplaceMacrosWritesTheLongerNameFirst) {
  TOraQuery* q = Query(u"SELECT &AB FROM items WHERE id = &A OR id = &a");
  ASSERT_EQ(q->MacroCount(), 2);
  TStringList list;
  list.SetText(u"A=2\nAB=name");
  ReplaceMacros(q, &list);
  EXPECT_EQ(q->SQL()->Text(), u"SELECT name FROM items WHERE id = 2 OR id = 2\n");
  EXPECT_EQ(q->MacroCount(), 0);
  q->Open();
  EXPECT_EQ(Names(q), u"two;");
}

TEST_F(SqlParamsTest, AMacroTheListLacksVanishesFromTheText) {
  TOraQuery* q = Query(u"SELECT name FROM items &COND ORDER BY id");
  TStringList list;
  ReplaceMacros(q, &list);
  EXPECT_EQ(list.Text(), u"COND=\n");
  EXPECT_EQ(q->SQL()->Text(), u"SELECT name FROM items  ORDER BY id\n");
  q->Open();
  EXPECT_EQ(Names(q), u"one;two;three;");
}

}  // namespace
