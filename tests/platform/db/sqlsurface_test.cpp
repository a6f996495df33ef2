// SQL datasets on the embedded engine: the text re-parsed as it is edited,
// the statement lists, re-reading records, and the clear failures.
#include <gtest/gtest.h>

#include "platform/db/datasource.h"
#include "tests/support/dbfixture.h"

namespace {

class SqlSurfaceTest : public DbTest {
 protected:
  void SetUp() override {
    DbTest::SetUp();
    Exec(u"CREATE TABLE docs (id NUMBER(10) PRIMARY KEY, title VARCHAR2(30), qty NUMBER(10), doc_date DATE, "
         u"stamp NUMBER(10) DEFAULT 0)");
    for (int i = 1; i <= 6; ++i)
      Exec(u"INSERT INTO docs (id, title, qty, doc_date) VALUES (" + IntToStr(i) + u", 'doc " + IntToStr(i) +
           u"', " + IntToStr(i * 10) + u", TO_DATE('0" + IntToStr(i) + u".03.2024', 'DD.MM.YYYY'))");
  }
  static int Id(TDataSet* ds) { return ds->FieldByName(u"ID")->AsInteger(); }
};

TEST_F(SqlSurfaceTest, EditingTheTextReparsesAndKeepsValuesOfNamesThatStay) {
  TOraQuery* q = Query(u"SELECT * FROM docs");
  TStrings* sql = q->SQL();
  sql->Add(u"WHERE qty >= :MinQty -- :NotAParam");
  ASSERT_EQ(q->ParamCount(), 1);
  q->ParamByName(u"MINQTY")->SetAsInteger(30);
  sql->Add(u"AND title <> ':nor_this' AND qty <= :maxqty AND qty <> :MINQTY + 5");
  ASSERT_EQ(q->ParamCount(), 2) << "one parameter per name, whatever its case";
  EXPECT_EQ(q->Params()->Items(0)->Name(), u"MinQty");
  EXPECT_EQ(q->ParamByName(u"minqty")->AsInteger(), 30);
  EXPECT_TRUE(q->ParamByName(u"MAXQTY")->IsNull());
  q->ParamByName(u"MAXQTY")->SetAsInteger(50);
  sql->Add(u"&ORDER");
  EXPECT_EQ(q->MacroCount(), 1);
  q->MacroByName(u"order")->SetValue(u"ORDER BY id DESC");
  // A change elsewhere in the text keeps every value.
  sql->SetStrings(0, u"SELECT id, title, qty FROM docs");
  EXPECT_EQ(q->ParamByName(u"MINQTY")->AsInteger(), 30);
  EXPECT_EQ(q->ParamByName(u"MAXQTY")->AsInteger(), 50);
  EXPECT_EQ(q->MacroByName(u"ORDER")->Value(), u"ORDER BY id DESC");
  q->Open();
  EXPECT_EQ(q->RecordCount(), 3);
  EXPECT_EQ(Id(q), 5);
  EXPECT_EQ(q->FieldCount(), 3);
  // Changing the text closes the dataset; a name that goes takes its value along.
  sql->Delete(1);
  sql->SetStrings(1, u"WHERE qty <= :MAXQTY &ORDER");
  EXPECT_FALSE(q->Active());
  ASSERT_EQ(q->ParamCount(), 1);
  EXPECT_EQ(q->FindParam(u"MINQTY"), nullptr);
  EXPECT_EQ(q->ParamByName(u"MAXQTY")->AsInteger(), 50);
  sql->Add(u"AND qty >= :MINQTY");
  EXPECT_TRUE(q->ParamByName(u"MINQTY")->IsNull());
  try {
    q->ParamByName(u"QTY");
    FAIL() << "a parameter that is not in the text was found";
  } catch (const EDatabaseError& e) {
    EXPECT_EQ(e.Message, u"Parameter 'QTY' not found");
  }
  EXPECT_THROW(q->MacroByName(u"WHERE"), EDatabaseError);
}

TEST_F(SqlSurfaceTest, EachStatementKindHasItsOwnList) {
  TOraQuery* q = Query(u"SELECT * FROM docs");
  TStrings* lists[] = {q->SQLInsert(), q->SQLUpdate(), q->SQLDelete(), q->SQLLock(), q->SQLRefresh()};
  for (int kind = 1; kind <= 5; ++kind) {
    ASSERT_EQ(q->UpdateSQL(kind), lists[kind - 1]) << kind;
    q->UpdateSQL(kind)->SetText(u"statement " + IntToStr(kind));
  }
  for (int kind = 1; kind <= 5; ++kind)
    EXPECT_EQ(Trim(lists[kind - 1]->Text()), u"statement " + IntToStr(kind)) << kind;
  EXPECT_EQ(q->UpdateSQL(0), nullptr);
  EXPECT_EQ(q->UpdateSQL(-1), nullptr);
  EXPECT_EQ(q->UpdateSQL(6), nullptr);
  // The statement lists are not the query: editing them leaves it open.
  q->SQLRefresh()->Clear();
  q->Open();
  q->SQLUpdate()->SetText(u"UPDATE docs SET title = :TITLE WHERE id = :OLD_ID");
  EXPECT_TRUE(q->Active());
}

TEST_F(SqlSurfaceTest, RefreshRecordAppendsAWhereClauseToTheBaseStatement) {
  TOraQuery* q = Query(u"SELECT id, title, qty FROM docs WHERE qty > :MINQTY ORDER BY id DESC");
  q->ParamByName(u"MINQTY")->SetAsInteger(20);
  q->SQLRefresh()->SetText(u"  \r\n where id = :ID");
  q->Open();
  ASSERT_EQ(Id(q), 6);
  q->Next();
  Exec(u"UPDATE docs SET title = 'changed', qty = 55 WHERE id = 5");
  Exec(u"UPDATE docs SET title = 'also changed' WHERE id = 6");
  q->RefreshRecord();
  EXPECT_EQ(Id(q), 5);
  EXPECT_EQ(q->FieldByName(u"TITLE")->AsString(), u"changed");
  EXPECT_EQ(q->FieldByName(u"QTY")->AsInteger(), 55);
  q->Prior();
  EXPECT_EQ(q->FieldByName(u"TITLE")->AsString(), u"doc 6") << "only the current record is read again";
  // The base statement's own condition still holds: a record that left it
  // cannot be refreshed.
  Exec(u"UPDATE docs SET qty = 1 WHERE id = 6");
  try {
    q->RefreshRecord();
    FAIL() << "a record outside the query was refreshed";
  } catch (const EDatabaseError& e) {
    EXPECT_EQ(e.Message, u"Refresh failed. Found 0 records");
  }
  EXPECT_EQ(q->FieldByName(u"TITLE")->AsString(), u"doc 6");
  // A whole statement is run as written, and fills the fields it returns.
  q->SQLRefresh()->SetText(u"SELECT qty FROM docs WHERE id = :ID");
  q->RefreshRecord();
  EXPECT_EQ(q->FieldByName(u"QTY")->AsInteger(), 1);
  EXPECT_EQ(q->FieldByName(u"TITLE")->AsString(), u"doc 6");
  q->SQLRefresh()->Clear();
  try {
    q->RefreshRecord();
    FAIL() << "refreshed without a statement";
  } catch (const EDatabaseError& e) {
    EXPECT_EQ(e.Message, u"SQLRefresh is empty: the record cannot be refreshed");
  }
}

TEST_F(SqlSurfaceTest, RefreshAfterUpdateReadsWhatTheEngineWrote) {
  TOraQuery* q = Query(u"SELECT * FROM docs ORDER BY id");
  // The statement counts the updates itself: the record cannot know.
  q->SQLUpdate()->SetText(u"UPDATE docs SET title = :TITLE, stamp = stamp + 1 WHERE id = :OLD_ID");
  q->SQLRefresh()->SetText(u"WHERE id = :ID");
  q->Open();
  q->Edit();
  q->FieldByName(u"TITLE")->SetAsString(u"first");
  q->Post();
  EXPECT_EQ(q->FieldByName(u"STAMP")->AsInteger(), 0) << "not read back without the option";
  q->SetRefreshOptions(TRefreshOptions() << roAfterUpdate);
  q->Edit();
  q->FieldByName(u"TITLE")->SetAsString(u"second");
  q->Post();
  EXPECT_EQ(q->FieldByName(u"STAMP")->AsInteger(), 2);
  EXPECT_EQ(q->FieldByName(u"TITLE")->AsString(), u"second");
  EXPECT_EQ(q->State(), dsBrowse);
}

TEST_F(SqlSurfaceTest, DateArithmeticGivesDateFieldsAndDays) {
  TOraQuery* q = Query(u"SELECT id, doc_date + 7 AS due, doc_date - TO_DATE('01.03.2024', 'DD.MM.YYYY') AS age, "
                       u"doc_date + 1/24 AS hour_on FROM docs WHERE doc_date - 1 >= TO_DATE('03.03.2024', "
                       u"'DD.MM.YYYY') ORDER BY id");
  q->Open();
  EXPECT_EQ(q->RecordCount(), 3);
  EXPECT_EQ(Id(q), 4);
  TField* due = q->FieldByName(u"DUE");
  EXPECT_TRUE(due->DataType() == ftDateTime || due->DataType() == ftDate) << due->DataType();
  EXPECT_EQ(due->AsDateTime(), EncodeDate(2024, 3, 11));
  EXPECT_DOUBLE_EQ(q->FieldByName(u"AGE")->AsFloat(), 3.0);
  EXPECT_NEAR(q->FieldByName(u"HOUR_ON")->AsDateTime().Val, EncodeDate(2024, 3, 4).Val + 1.0 / 24, 1e-9);
  q->Last();
  EXPECT_EQ(due->AsDateTime(), EncodeDate(2024, 3, 13));
  // A parameter date moves the same way.
  TOraQuery* p = Query(u"SELECT COUNT(*) FROM docs WHERE doc_date BETWEEN :D - 2 AND :D + 1");
  p->ParamByName(u"D")->SetAsDateTime(EncodeDate(2024, 3, 4));
  p->Open();
  EXPECT_EQ(p->Fields()->Fields(0)->AsInteger(), 4);
}

TEST_F(SqlSurfaceTest, BadNamesAndValuesFailClearly) {
  TOraQuery* q = Query(u"SELECT * FROM docs ORDER BY id");
  q->SetName(u"Docs");
  q->Open();
  try {
    q->FieldByName(u"NOPE");
    FAIL();
  } catch (const EDatabaseError& e) {
    EXPECT_EQ(e.Message, u"Docs: Field 'NOPE' not found");
  }
  q->Edit();
  TField* date = q->FieldByName(u"DOC_DATE");
  TField* qty = q->FieldByName(u"QTY");
  EXPECT_THROW(date->SetAsString(u"not a date"), EDatabaseError);
  EXPECT_THROW(qty->SetAsString(u"12abc"), EDatabaseError);
  EXPECT_EQ(date->AsDateTime(), EncodeDate(2024, 3, 1));
  EXPECT_EQ(qty->AsInteger(), 10);
  EXPECT_THROW(q->FieldByName(u"TITLE")->AsFloat(), EConvertError);
  q->Cancel();
  // A statement the engine refuses names the Oracle error.
  q->Close();
  q->SQL()->SetText(u"SELECT title + 1 FROM docs");
  try {
    q->Open();
    FAIL();
  } catch (const EOraError& e) {
    EXPECT_EQ(e.ErrorCode, 1722);
  }
  EXPECT_FALSE(q->Active());
}

// What copying a value from the record before does: a link reads the
// previous record while the current one is edited, and a calculation that
// fails there leaves the edit and the position as they were.
TEST_F(SqlSurfaceTest, ALinkReadsTheRecordBeforeAnEditedOneAndComesBack) {
  TOraQuery* q = Query(u"SELECT id, title FROM docs ORDER BY id");
  auto add = [q](TField* f, const String& name, TFieldKind kind) {
    f->SetFieldName(name);
    f->SetFieldKind(kind);
    f->SetDataSet(q);
  };
  add(new TIntegerField(q), u"ID", fkData);
  add(new TStringField(q), u"TITLE", fkData);
  add(new TStringField(q), u"CLC", fkCalculated);
  TField* title = q->FieldByName(u"TITLE");
  TField* calc = q->FieldByName(u"CLC");
  bool armed = false;
  q->OnCalcFields = [&armed](TDataSet* ds) {
    const String name = ds->FieldByName(u"TITLE")->AsString();
    if (armed && name == u"doc 1") throw Exception(u"cannot calculate");
    ds->FieldByName(u"CLC")->SetAsString(name + u"!");
  };
  q->Open();
  ASSERT_TRUE(q->Locate(u"ID", 2, TLocateOptions()));
  q->Edit();
  title->SetAsString(u"edited");
  TDataSource source(nullptr);
  source.SetDataSet(q);
  TDataLink link;
  link.SetBufferCount(2);
  link.SetDataSource(&source);
  ASSERT_EQ(link.ActiveRecord(), 1);
  link.SetActiveRecord(0);
  EXPECT_EQ(title->AsString(), u"doc 1");
  EXPECT_EQ(calc->AsString(), u"doc 1!");
  armed = true;
  link.SetActiveRecord(1);
  EXPECT_EQ(calc->AsString(), u"edited!");
  link.SetActiveRecord(0);
  EXPECT_THROW(calc->Value(), Exception);
  link.SetActiveRecord(1);
  EXPECT_EQ(q->State(), dsEdit);
  EXPECT_EQ(title->AsString(), u"edited");
  EXPECT_EQ(calc->AsString(), u"edited!");
  link.SetDataSource(nullptr);
  q->Cancel();
  EXPECT_EQ(title->AsString(), u"doc 2");
  EXPECT_EQ(calc->AsString(), u"doc 2!");
}

}  // namespace
