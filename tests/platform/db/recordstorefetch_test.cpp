// SQL datasets filling their record store block by block: values of every
// kind, nulls, and rows whose values do not have the column's declared type.
#include <gtest/gtest.h>

#include "tests/support/dbfixture.h"

namespace {

class StoreFetchTest : public DbTest {
 protected:
  void SetUp() override {
    DbTest::SetUp();
    Exec(u"CREATE TABLE t (id NUMBER(10), name VARCHAR2(30), amount FLOAT, made DATE, qty NUMBER(10), pic BLOB)");
    for (int i = 1; i <= 23; ++i) {
      // Every third row has nulls; names are ASCII and not by turns.
      const String name = i % 2 ? u"name " + IntToStr(i) : u"Ștefan Ёж " + IntToStr(i);
      if (i % 3 == 0)
        Exec(u"INSERT INTO t (id) VALUES (" + IntToStr(i) + u")");
      else
        Exec(u"INSERT INTO t VALUES (" + IntToStr(i) + u", '" + name + u"', " + IntToStr(i) + u" * 0.5, " +
             u"TO_DATE('2020-01-" + IntToStr(i) + u"', 'YYYY-MM-DD'), " + IntToStr(i * 10) + u", X'0102')");
    }
  }
  // Reads every record and checks it against what was inserted.
  void CheckAll(TOraQuery* q, int expected) {
    int seen = 0;
    for (; !q->Eof(); q->Next()) {
      const int i = q->FieldByName(u"ID")->AsInteger();
      EXPECT_EQ(i, ++seen);
      SCOPED_TRACE(i);
      if (i % 3 == 0) {
        for (const char16_t* name : {u"NAME", u"AMOUNT", u"MADE", u"QTY", u"PIC"})
          EXPECT_TRUE(q->FieldByName(name)->IsNull()) << String(name).ToUtf8();
        continue;
      }
      EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), i % 2 ? u"name " + IntToStr(i) : u"Ștefan Ёж " + IntToStr(i));
      EXPECT_DOUBLE_EQ(q->FieldByName(u"AMOUNT")->AsFloat(), i * 0.5);
      EXPECT_EQ(q->FieldByName(u"MADE")->AsDateTime(), EncodeDate(2020, 1, i));
      EXPECT_EQ(q->FieldByName(u"QTY")->AsInteger(), i * 10);
      EXPECT_EQ(q->FieldByName(u"PIC")->AsString().Length(), 2);
    }
    EXPECT_EQ(seen, expected);
  }
};

TEST_F(StoreFetchTest, EveryBlockSizeGivesTheSameRecords) {
  for (int rows : {1, 2, 5, 22, 23, 24, 100}) {
    SCOPED_TRACE(rows);
    TOraQuery* q = Query(u"SELECT id, name, amount, made, qty, pic FROM t ORDER BY id");
    q->SetFetchRows(rows);
    q->Open();
    EXPECT_EQ(q->ViewCount(), std::min(rows, 23));  // on demand, one block at a time
    CheckAll(q, 23);
    EXPECT_EQ(q->RecordCount(), 23);
    // Bookmarks name the same records after everything is fetched.
    q->First();
    q->MoveBy(rows < 23 ? rows : 4);
    TBookmark mark = q->GetBookmark();
    const int id = q->FieldByName(u"ID")->AsInteger();
    q->Last();
    q->GotoBookmark(mark);
    EXPECT_EQ(q->FieldByName(u"ID")->AsInteger(), id);
  }
}

TEST_F(StoreFetchTest, UniDirectionalHoldsOneBlockAtATime) {
  TOraQuery* q = Query(u"SELECT id, name, amount, made, qty, pic FROM t ORDER BY id");
  q->SetFetchRows(4);
  q->SetUniDirectional(true);
  q->Open();
  CheckAll(q, 23);
  EXPECT_LE(q->ViewCount(), 4);
}

// The row read ahead to learn an expression's type is the first record,
// before the blocks that follow it.
TEST_F(StoreFetchTest, TheRowReadToTypeAnExpressionComesFirst) {
  for (int rows : {1, 2, 3}) {
    TOraQuery* q = Query(u"SELECT id, id * 2 AS twice FROM t WHERE id <= 7 ORDER BY id");
    q->SetFetchRows(rows);
    q->Open();
    int expect = 1;
    for (; !q->Eof(); q->Next(), ++expect) {
      EXPECT_EQ(q->FieldByName(u"ID")->AsInteger(), expect) << rows;
      EXPECT_EQ(q->FieldByName(u"TWICE")->AsInteger(), expect * 2) << rows;
    }
    EXPECT_EQ(expect, 8) << rows;
  }
}

// SQLite keeps whatever a row gives: each value lands in the field's type,
// converted where it can be, null where it cannot.
TEST_F(StoreFetchTest, ValuesOfAnotherTypeAreConvertedPerRow) {
  Exec(u"CREATE TABLE loose (id NUMBER(10), n NUMBER(10), name VARCHAR2(10), f FLOAT, d DATE)");
  Exec(u"INSERT INTO loose VALUES (1, 5, 'text', 1.5, '2020-01-02 00:00:00')");
  Exec(u"INSERT INTO loose SELECT 2, ' 17 ', 12, '2.5', 3.0 FROM dual");
  Exec(u"INSERT INTO loose SELECT 3, 'abc', 1.25, 'abc', 'abc' FROM dual");
  Exec(u"INSERT INTO loose SELECT 4, 7.6, X'4142', 8, 45000 FROM dual");
  TOraQuery* q = Query(u"SELECT n, name, f, d FROM loose ORDER BY id");
  q->SetFetchRows(3);
  q->Open();
  TField* n = q->FieldByName(u"N");
  TField* name = q->FieldByName(u"NAME");
  TField* f = q->FieldByName(u"F");
  TField* d = q->FieldByName(u"D");
  EXPECT_EQ(n->AsInteger(), 5);
  EXPECT_EQ(name->AsString(), u"text");
  EXPECT_DOUBLE_EQ(f->AsFloat(), 1.5);
  EXPECT_EQ(d->AsDateTime(), EncodeDate(2020, 1, 2));
  q->Next();
  EXPECT_EQ(n->AsInteger(), 17);
  EXPECT_EQ(name->AsString(), u"12");
  EXPECT_DOUBLE_EQ(f->AsFloat(), 2.5);
  EXPECT_DOUBLE_EQ(d->AsFloat(), 3.0);
  q->Next();
  EXPECT_TRUE(n->IsNull());
  EXPECT_EQ(name->AsString(), u"1.25");
  EXPECT_TRUE(f->IsNull());
  EXPECT_FALSE(d->IsNull());  // text that is no date reads as day 0
  EXPECT_DOUBLE_EQ(d->AsFloat(), 0);
  q->Next();  // the second block
  EXPECT_EQ(n->AsInteger(), 8);
  EXPECT_EQ(name->AsString(), u"AB");
  EXPECT_DOUBLE_EQ(f->AsFloat(), 8);
  EXPECT_DOUBLE_EQ(d->AsFloat(), 45000);
  q->Next();
  EXPECT_TRUE(q->Eof());
}

TEST_F(StoreFetchTest, EditsAndRefreshesWorkOnFetchedBlocks) {
  TOraQuery* q = Query(u"SELECT id, name FROM t ORDER BY id");
  q->SetFetchRows(5);
  q->SQLUpdate()->SetText(u"UPDATE t SET name = :NAME WHERE id = :OLD_ID");
  q->SQLRefresh()->SetText(u"WHERE id = :ID");
  q->Open();
  q->MoveBy(6);  // into the second block
  ASSERT_EQ(q->FieldByName(u"ID")->AsInteger(), 7);
  q->Edit();
  q->FieldByName(u"NAME")->SetAsString(u"Ново");
  q->Cancel();
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"name 7");
  q->Edit();
  q->FieldByName(u"NAME")->SetAsString(u"Ново");
  q->Post();
  EXPECT_EQ(Value(u"SELECT name FROM t WHERE id = 7"), u"Ново");
  Exec(u"UPDATE t SET name = 'from outside' WHERE id = 7");
  q->RefreshRecord();
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"from outside");
  q->Next();
  EXPECT_EQ(q->FieldByName(u"ID")->AsInteger(), 8);
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"Ștefan Ёж 8");
}

class StoreFetchFaultTest : public FaultDbTest {};

// A failing fetch raises the engine's error and keeps the records held.
TEST_F(StoreFetchFaultTest, AFailingBlockKeepsTheRecordsBeforeIt) {
  Exec(u"CREATE TABLE n (id NUMBER(10))");
  for (int i = 1; i <= 9; ++i) Exec(u"INSERT INTO n VALUES (" + IntToStr(i) + u")");
  TOraQuery* q = Query(u"SELECT id FROM n ORDER BY id");
  q->SetFetchRows(4);
  q->Open();
  TFaultPlan::Current().Countdown = 0;
  q->MoveBy(3);
  EXPECT_EQ(q->FieldByName(u"ID")->AsInteger(), 4);
  try {
    q->Next();
    FAIL() << "the fetch should fail";
  } catch (const EDatabaseError& e) {
    EXPECT_EQ(e.Message.SubString(1, 9), u"ORA-03113");
  }
  EXPECT_EQ(q->ViewCount(), 4);
  EXPECT_EQ(q->FieldByName(u"ID")->AsInteger(), 4);
}

}  // namespace
