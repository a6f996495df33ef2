#include <gtest/gtest.h>

#include "platform/db/bdedataset.h"
#include "platform/db/datasource.h"
#include "tests/support/dbfixture.h"

namespace {

class SqlDataSetTest : public DbTest {
 protected:
  void SetUp() override {
    DbTest::SetUp();
    Exec(u"CREATE TABLE items (id NUMBER(10) PRIMARY KEY, name VARCHAR2(20) NOT NULL, qty NUMBER(10) DEFAULT 5, "
         u"made DATE)");
    Exec(u"CREATE SEQUENCE items_seq START WITH 100");
    for (int i = 1; i <= 60; ++i)
      Exec(u"INSERT INTO items (id, name, qty, made) VALUES (" + IntToStr(i) + u", 'item " + IntToStr(i) + u"', " +
           IntToStr(i * 10) + u", TO_DATE('2024-01-02', 'YYYY-MM-DD'))");
  }
  TOraQuery* Items(int fetchRows = 25) {
    TOraQuery* q = Query(u"SELECT id, name, qty, made FROM items ORDER BY id");
    q->SetFetchRows(fetchRows);
    q->SQLInsert()->SetText(u"INSERT INTO items (id, name, qty) VALUES (items_seq.NEXTVAL, :NAME, :QTY) RETURNING id INTO :ID");
    q->SQLUpdate()->SetText(u"UPDATE items SET id = :ID, name = :NAME, qty = :QTY WHERE id = :OLD_ID");
    q->SQLDelete()->SetText(u"DELETE FROM items WHERE id = :OLD_ID");
    q->SQLRefresh()->SetText(u"WHERE id = :ID");
    return q;
  }
  static int Id(TDataSet* ds) { return ds->FieldByName(u"ID")->AsInteger(); }
};

TEST_F(SqlDataSetTest, FieldsComeFromTheStatementColumns) {
  TOraQuery* q = Items();
  q->Open();
  ASSERT_EQ(q->FieldCount(), 4);
  EXPECT_NE(dynamic_cast<TIntegerField*>(q->FieldByName(u"ID")), nullptr) << q->FieldByName(u"ID")->ClassName();
  EXPECT_NE(dynamic_cast<TStringField*>(q->FieldByName(u"NAME")), nullptr);
  EXPECT_NE(dynamic_cast<TDateTimeField*>(q->FieldByName(u"MADE")), nullptr) << q->FieldByName(u"MADE")->ClassName();
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"item 1");
  EXPECT_EQ(q->FieldByName(u"MADE")->AsDateTime(), EncodeDate(2024, 1, 2));
  TOraQuery* e = Query(u"SELECT COUNT(*) n, MAX(name) m, 1.5 * 2 f FROM items");
  e->Open();
  EXPECT_EQ(e->FieldByName(u"N")->AsInteger(), 60);
  EXPECT_EQ(e->FieldByName(u"M")->AsString(), u"item 9");
  EXPECT_DOUBLE_EQ(e->FieldByName(u"F")->AsFloat(), 3.0);
}

TEST_F(SqlDataSetTest, RowsAreFetchedOnDemandInBlocks) {
  TOraQuery* q = Items(10);
  q->Open();
  EXPECT_EQ(q->ViewCount(), 10);
  q->MoveBy(9);
  EXPECT_EQ(q->ViewCount(), 10);
  q->Next();
  EXPECT_EQ(q->ViewCount(), 20);
  EXPECT_EQ(Id(q), 11);
  EXPECT_EQ(q->RecordCount(), 60);
  EXPECT_EQ(q->ViewCount(), 60);
  EXPECT_EQ(Id(q), 11);
  q->Close();
  q->Open();
  q->Last();
  EXPECT_EQ(Id(q), 60);
  EXPECT_TRUE(q->Eof());
}

TEST_F(SqlDataSetTest, BookmarksHoldAcrossFetchBlocks) {
  TOraQuery* q = Items(7);
  q->Open();
  q->MoveBy(4);
  TBookmark early = q->GetBookmark();
  q->MoveBy(30);
  TBookmark late = q->GetBookmark();
  EXPECT_EQ(Id(q), 35);
  q->GotoBookmark(early);
  EXPECT_EQ(Id(q), 5);
  q->Last();
  q->GotoBookmark(late);
  EXPECT_EQ(Id(q), 35);
  EXPECT_LT(q->CompareBookmarks(early, late), 0);
}

TEST_F(SqlDataSetTest, LocateFetchesAsFarAsItNeeds) {
  TOraQuery* q = Items(10);
  q->Open();
  EXPECT_TRUE(q->Locate(u"NAME", Variant(u"ITEM 42"), TLocateOptions() << loCaseInsensitive));
  EXPECT_EQ(Id(q), 42);
  EXPECT_LT(q->ViewCount(), 60);
  EXPECT_EQ(q->Lookup(u"ID", Variant(59), u"QTY").AsInteger(), 590);
  EXPECT_EQ(Id(q), 42);
}

TEST_F(SqlDataSetTest, UniDirectionalKeepsOnlyTheCurrentBlock) {
  TOraQuery* q = Items(8);
  q->SetUniDirectional(true);
  q->Open();
  int count = 0, sum = 0;
  for (; !q->Eof(); q->Next()) {
    ++count;
    sum += Id(q);
    EXPECT_LE(q->ViewCount(), 8);
  }
  EXPECT_EQ(count, 60);
  EXPECT_EQ(sum, 60 * 61 / 2);
  EXPECT_EQ(Id(q), 60);
  EXPECT_THROW(q->First(), EDatabaseError);
}

TEST_F(SqlDataSetTest, ParametersAndMacrosAreParsedFromSql) {
  TOraQuery* q = Query(u"SELECT * FROM items WHERE id <= :MAXID &MORE ORDER BY id");
  ASSERT_EQ(q->ParamCount(), 1);
  ASSERT_EQ(q->MacroCount(), 1);
  q->ParamByName(u"maxid")->SetAsInteger(3);
  q->MacroByName(u"MORE")->SetValue(u"AND qty > 10");
  EXPECT_EQ(q->GetFinalSQL(), u"SELECT * FROM items WHERE id <= :MAXID AND qty > 10 ORDER BY id");
  q->Open();
  EXPECT_EQ(q->RecordCount(), 2);
  q->SQL()->SetText(u"SELECT * FROM items WHERE id <= :MAXID AND id >= :MINID");
  EXPECT_FALSE(q->Active());
  EXPECT_EQ(q->ParamByName(u"MAXID")->AsInteger(), 3);
  EXPECT_TRUE(q->ParamByName(u"MINID")->IsNull());
  EXPECT_EQ(q->MacroCount(), 0);
  EXPECT_THROW(q->ParamByName(u"GONE"), EDatabaseError);
  q->ParamByName(u"MINID")->SetAsInteger(2);
  q->Open();
  EXPECT_EQ(q->RecordCount(), 2);
  q->Close();
  q->SetFilterSQL(u"qty = :Q");
  q->ParamByName(u"Q")->SetAsInteger(30);
  q->Open();
  EXPECT_EQ(q->RecordCount(), 1);
  EXPECT_EQ(Id(q), 3);
}

TEST_F(SqlDataSetTest, PostingRunsTheWriteStatementsWithOldValuesAndReturning) {
  TOraQuery* q = Items();
  q->Open();
  q->Append();
  q->FieldByName(u"NAME")->SetAsString(u"new one");
  q->FieldByName(u"QTY")->SetAsInteger(7);
  q->Post();
  EXPECT_EQ(Id(q), 100);
  EXPECT_EQ(Value(u"SELECT name FROM items WHERE id = 100"), u"new one");

  q->First();
  q->Edit();
  q->FieldByName(u"ID")->SetAsInteger(1000);
  q->FieldByName(u"NAME")->SetAsString(u"renamed");
  q->Post();
  EXPECT_EQ(Value(u"SELECT name FROM items WHERE id = 1000"), u"renamed");
  EXPECT_EQ(Value(u"SELECT COUNT(*) FROM items WHERE id = 1"), u"0");

  q->Next();
  q->Delete();
  EXPECT_EQ(Value(u"SELECT COUNT(*) FROM items WHERE id = 2"), u"0");
  EXPECT_EQ(Id(q), 3);
  EXPECT_EQ(q->RecordCount(), 60);
}

TEST_F(SqlDataSetTest, RefreshRecordReadsTheRecordAgain) {
  TOraQuery* q = Items();
  q->Open();
  q->MoveBy(2);
  Exec(u"UPDATE items SET name = 'changed', qty = NULL WHERE id = 3");
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"item 3");
  q->RefreshRecord();
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"changed");
  EXPECT_TRUE(q->FieldByName(u"QTY")->IsNull());
  EXPECT_EQ(Id(q), 3);
  Exec(u"DELETE FROM items WHERE id = 3");
  EXPECT_THROW(q->RefreshRecord(), EDatabaseError);
}

TEST_F(SqlDataSetTest, RefreshOptionsReadWhatTheEngineFilledIn) {
  TOraQuery* q = Items();
  q->SetRefreshOptions(TRefreshOptions() << roAfterInsert);
  q->SQLInsert()->SetText(u"INSERT INTO items (id, name) VALUES (items_seq.NEXTVAL, :NAME) RETURNING id INTO :ID");
  q->Open();
  q->Append();
  q->FieldByName(u"NAME")->SetAsString(u"defaulted");
  q->Post();
  EXPECT_EQ(q->FieldByName(u"QTY")->AsInteger(), 5);
}

TEST_F(SqlDataSetTest, EditCanLockAndReReadTheRecordFirst) {
  Exec(u"CREATE TABLE locks (item_id NUMBER(10))");
  TOraQuery* q = Items();
  q->SQLLock()->SetText(u"INSERT INTO locks VALUES (:ID)");
  q->Open();
  q->Edit();
  q->Cancel();
  EXPECT_EQ(Value(u"SELECT COUNT(*) FROM locks"), u"0");
  q->SetLockMode(lmPessimistic);
  q->SetRefreshOptions(TRefreshOptions() << roBeforeEdit);
  Exec(u"UPDATE items SET name = 'seen by edit' WHERE id = 1");
  q->Edit();
  EXPECT_EQ(Value(u"SELECT item_id FROM locks"), u"1");
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"seen by edit");
  EXPECT_EQ(q->FieldByName(u"NAME")->OldValue().AsString(), u"seen by edit");
  q->Cancel();
}

TEST_F(SqlDataSetTest, DMLRefreshReadsTheWrittenRecordBack) {
  Exec(u"CREATE TABLE notes (id NUMBER(10) PRIMARY KEY, txt VARCHAR2(20), len NUMBER(10))");
  Exec(u"INSERT INTO notes VALUES (1, 'abc', 3)");
  TOraQuery* q = Query(u"SELECT * FROM notes");
  q->SQLUpdate()->SetText(u"UPDATE notes SET txt = :TXT, len = LENGTH(:TXT) WHERE id = :OLD_ID");
  q->SQLRefresh()->SetText(u"SELECT len FROM notes WHERE id = :ID");
  q->Open();
  q->Edit();
  q->FieldByName(u"TXT")->SetAsString(u"abcdef");
  q->Post();
  EXPECT_EQ(q->FieldByName(u"LEN")->AsInteger(), 3);
  q->SetDMLRefresh(true);
  q->Edit();
  q->FieldByName(u"TXT")->SetAsString(u"ab");
  q->Post();
  EXPECT_EQ(q->FieldByName(u"LEN")->AsInteger(), 2);
}

TEST_F(SqlDataSetTest, InactiveMacrosAndTheStatementGetter) {
  TOraQuery* q = Items();
  q->SQL()->SetText(u"SELECT * FROM items &WHERE");
  q->MacroByName(u"WHERE")->SetValue(u"WHERE id = 7");
  q->MacroByName(u"WHERE")->SetActive(false);
  EXPECT_EQ(q->GetFinalSQL(), u"SELECT * FROM items");
  q->MacroByName(u"WHERE")->SetActive(true);
  q->Open();
  EXPECT_EQ(q->RecordCount(), 1);
  EXPECT_EQ(q->UpdateSQL(stInsert), q->SQLInsert());
  EXPECT_EQ(q->UpdateSQL(5), q->SQLRefresh());
  EXPECT_EQ(q->UpdateSQL(0), nullptr);
  EXPECT_EQ(q->UpdateSQL(6), nullptr);
  EXPECT_TRUE(IsPropType(q, u"SQL", tkClass));
  EXPECT_EQ(GetPropInteger(q, u"FetchRows"), 25);
}

TEST_F(SqlDataSetTest, AFailedPostLeavesTheRecordInEditWithItsValues) {
  TOraQuery* q = Items();
  q->SQLInsert()->SetText(u"INSERT INTO items (id, name, qty) VALUES (:ID, :NAME, :QTY)");
  q->Open();
  q->Append();
  q->FieldByName(u"ID")->SetAsInteger(5);
  q->FieldByName(u"NAME")->SetAsString(u"duplicate");
  try {
    q->Post();
    FAIL();
  } catch (const EOraError& e) {
    EXPECT_EQ(e.ClassName(), u"EOraError");
    EXPECT_EQ(e.ErrorCode, 1);
    EXPECT_EQ(e.Message.SubString(1, 11), u"ORA-00001: ");
  }
  EXPECT_EQ(q->State(), dsInsert);
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"duplicate");
  q->FieldByName(u"ID")->SetAsInteger(500);
  q->Post();
  EXPECT_EQ(Value(u"SELECT name FROM items WHERE id = 500"), u"duplicate");
}

TEST_F(SqlDataSetTest, PostingWithoutTheStatementIsAClearError) {
  TOraQuery* q = Query(u"SELECT * FROM items");
  q->Open();
  q->Edit();
  q->FieldByName(u"NAME")->SetAsString(u"x");
  try {
    q->Post();
    FAIL();
  } catch (const EDatabaseError& e) {
    EXPECT_EQ(e.Message, u"SQLUpdate is empty: the record cannot be updated");
  }
  EXPECT_EQ(q->State(), dsEdit);
  q->Cancel();
  EXPECT_THROW(q->Delete(), EDatabaseError);
  EXPECT_EQ(q->RecordCount(), 60);
  EXPECT_EQ(Value(u"SELECT name FROM items WHERE id = 1"), u"item 1");
}

TEST_F(SqlDataSetTest, EngineErrorsKeepTheirOraPrefix) {
  TOraQuery* q = Query(u"SELECT * FROM nowhere");
  try {
    q->Open();
    FAIL();
  } catch (const EOraError& e) {
    EXPECT_EQ(e.ErrorCode, 942);
    EXPECT_EQ(e.Message.SubString(1, 10), u"ORA-00942:");
  }
  EXPECT_FALSE(q->Active());
  q->SQL()->SetText(u"SELECT nope FROM items");
  EXPECT_THROW(q->Open(), EOraError);
  q->SQL()->SetText(u"UPDATE items SET qty = 0 WHERE id = 1");
  EXPECT_THROW(q->Open(), EDatabaseError);
  q->ExecSQL();
  EXPECT_EQ(q->RowsAffected(), 1);
}

TEST_F(SqlDataSetTest, ADetailReopensWhenTheMasterMoves) {
  Exec(u"CREATE TABLE parts (item_id NUMBER(10), part VARCHAR2(10))");
  Exec(u"INSERT INTO parts VALUES (1, 'a')");
  Exec(u"INSERT INTO parts VALUES (1, 'b')");
  Exec(u"INSERT INTO parts VALUES (2, 'c')");
  TOraQuery* master = Items();
  TDataSource source(nullptr);
  source.SetDataSet(master);
  TOraQuery* detail = Query(u"SELECT * FROM parts WHERE item_id = :ID ORDER BY part");
  detail->SetDataSource(&source);
  master->Open();
  detail->Open();
  EXPECT_EQ(detail->RecordCount(), 2);
  master->Next();
  EXPECT_EQ(detail->RecordCount(), 1);
  EXPECT_EQ(detail->FieldByName(u"PART")->AsString(), u"c");
  master->Next();
  EXPECT_TRUE(detail->IsEmpty());
  master->First();
  EXPECT_EQ(detail->RecordCount(), 2);
  detail->SetDataSource(nullptr);
  master->Next();
  EXPECT_EQ(detail->RecordCount(), 2);
}

TEST_F(SqlDataSetTest, TransactionsAndTheClosedSession) {
  TOraQuery* q = Items();
  q->Open();
  session_->StartTransaction();
  EXPECT_TRUE(session_->InTransaction());
  q->Delete();
  EXPECT_EQ(Value(u"SELECT COUNT(*) FROM items"), u"59");
  session_->Rollback();
  EXPECT_EQ(Value(u"SELECT COUNT(*) FROM items"), u"60");
  EXPECT_THROW(session_->SetServer(u"other.db"), EDatabaseError);
  session_->Disconnect();
  EXPECT_FALSE(q->Active());
  try {
    session_->StartTransaction();
    FAIL();
  } catch (const EDatabaseError& e) {
    EXPECT_EQ(e.Message, u"Session is not connected");
  }
}

TEST_F(SqlDataSetTest, TablesWriteThroughStatementsOfTheirOwn) {
  TOraTable table(nullptr);
  table.SetSession(session_);
  table.SetTableName(u"items");
  table.SetKeyFields(u"ID");
  table.SetOrderFields(u"ID");
  table.Open();
  EXPECT_EQ(table.RecordCount(), 60);
  table.Edit();
  table.FieldByName(u"QTY")->SetAsInteger(-1);
  table.Post();
  EXPECT_EQ(Value(u"SELECT qty FROM items WHERE id = 1"), u"-1");
  table.Append();
  table.FieldByName(u"ID")->SetAsInteger(61);
  table.FieldByName(u"NAME")->SetAsString(u"appended");
  table.Post();
  EXPECT_EQ(Value(u"SELECT name FROM items WHERE id = 61"), u"appended");

  TTable bde(nullptr);
  bde.SetSession(session_);
  bde.SetTableName(u"items");
  bde.SetIndexFieldNames(u"ID");
  bde.Open();
  bde.Delete();
  EXPECT_EQ(Value(u"SELECT COUNT(*) FROM items WHERE id = 1"), u"0");
  TQuery query(nullptr);
  query.SetSession(session_);
  query.SQL()->SetText(u"SELECT COUNT(*) FROM items WHERE qty > :Q");
  query.ParamByName(u"Q")->SetAsInteger(500);
  query.Open();
  EXPECT_EQ(query.Fields()->Fields(0)->AsInteger(), 10);
}

TEST_F(SqlDataSetTest, StoredProceduresAreCallbacksOfTheSession) {
  session_->RegisterProcedure(u"add_one", [](TOraParams& p) {
    p.ParamByName(u"Y")->SetAsInteger(p.ParamByName(u"X")->AsInteger() + 1);
  });
  TOraStoredProc proc(nullptr);
  proc.SetSession(session_);
  proc.SetStoredProcName(u"ADD_ONE");
  proc.Params()->CreateParam(ftInteger, u"X", ptInput)->SetAsInteger(41);
  proc.Params()->CreateParam(ftInteger, u"Y", ptOutput);
  proc.ExecProc();
  EXPECT_EQ(proc.ParamByName(u"Y")->AsInteger(), 42);
  proc.SetStoredProcName(u"missing");
  try {
    proc.ExecProc();
    FAIL();
  } catch (const EOraError& e) {
    EXPECT_EQ(e.Message, u"ORA-06550: PLS-00201: identifier 'MISSING' must be declared");
  }
}

class FaultTest : public FaultDbTest {
 protected:
  void SetUp() override {
    FaultDbTest::SetUp();
    Exec(u"CREATE TABLE t (id NUMBER(10) PRIMARY KEY, v VARCHAR2(10))");
    for (int i = 1; i <= 30; ++i) Exec(u"INSERT INTO t VALUES (" + IntToStr(i) + u", 'v" + IntToStr(i) + u"')");
  }
};

TEST_F(FaultTest, AFailingFetchRaisesAndKeepsWhatWasRead) {
  TOraQuery* q = Query(u"SELECT * FROM t ORDER BY id");
  q->SetFetchRows(10);
  q->Open();
  TFaultPlan::Current().Countdown = 0;
  try {
    q->Last();
    FAIL();
  } catch (const EOraError& e) {
    EXPECT_EQ(e.Message, u"ORA-03113: end-of-file on communication channel");
  }
  EXPECT_TRUE(q->Active());
  EXPECT_EQ(q->ViewCount(), 10);
  EXPECT_EQ(q->FieldByName(u"ID")->AsInteger(), 1);
}

TEST_F(FaultTest, AnInjectedErrorOnUpdateLeavesTheEditInPlace) {
  TOraQuery* q = Query(u"SELECT * FROM t ORDER BY id");
  q->SQLUpdate()->SetText(u"UPDATE t SET v = :V WHERE id = :OLD_ID");
  q->Open();
  q->Edit();
  q->FieldByName(u"V")->SetAsString(u"edited");
  TFaultPlan::Current().Matching = u"UPDATE t";
  TFaultPlan::Current().OraCode = 54;
  TFaultPlan::Current().Text = u"resource busy and acquire with NOWAIT specified";
  try {
    q->Post();
    FAIL();
  } catch (const EOraError& e) {
    EXPECT_EQ(e.ErrorCode, 54);
    EXPECT_EQ(e.Message.SubString(1, 10), u"ORA-00054:");
  }
  EXPECT_EQ(q->State(), dsEdit);
  EXPECT_EQ(q->FieldByName(u"V")->AsString(), u"edited");
  TFaultPlan::Current().Reset();
  q->Post();
  EXPECT_EQ(Value(u"SELECT v FROM t WHERE id = 1"), u"edited");
}

TEST_F(FaultTest, EveryOperationThatFailsDuringOpenLeavesTheDataSetClosed) {
  for (int step = 0; step < 3; ++step) {
    TFaultPlan::Current().Reset();
    TFaultPlan::Current().Countdown = step;
    TOraQuery* q = Query(u"SELECT * FROM t");
    EXPECT_THROW(q->Open(), EOraError) << step;
    EXPECT_FALSE(q->Active()) << step;
    EXPECT_EQ(q->FieldCount(), 0) << step;
  }
}

}  // namespace
