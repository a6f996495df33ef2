#include "tests/support/kitfixture.h"

#include "drivers/sqlite/sqlitedriver.h"

void KitDbTest::SetUp() {
  RegisterSQLiteDriver();
  owner_ = std::make_unique<TComponent>(nullptr);
  owner_->SetName(u"fmTest");
  session_ = new TOraSession(owner_.get());
  session_->SetServer(u":memory:");
  session_->Connect();
  Exec(u"CREATE TABLE GOODS (ID INTEGER PRIMARY KEY, CODE VARCHAR2(10), NAME VARCHAR2(40), PRICE NUMBER(10,2), "
       u"QTY INTEGER)");
  Exec(u"INSERT INTO GOODS VALUES (1, 'A01', 'Apple', 2.5, 10)");
  Exec(u"INSERT INTO GOODS VALUES (2, 'A02', 'Apricot', 4, 5)");
  Exec(u"INSERT INTO GOODS VALUES (3, 'B01', 'Butter', 3.1, 7)");
  Exec(u"INSERT INTO GOODS VALUES (4, 'B02', 'Bread', 1.2, NULL)");
  Exec(u"INSERT INTO GOODS VALUES (5, 'C01', 'Cheese', 9.75, 1)");
}

void KitDbTest::TearDown() { owner_.reset(); }

void KitDbTest::Exec(const String& sql) {
  TDbStatus status = session_->Connection()->ExecuteDirect(sql);
  ASSERT_TRUE(status.IsOk()) << status.Message() << " in " << sql;
}

String KitDbTest::Value(const String& sql) {
  TOraQuery q(nullptr);
  q.SetSession(session_);
  q.SQL()->SetText(sql);
  q.Open();
  return q.IsEmpty() || q.Fields()->Fields(0)->IsNull() ? String(u"<null>") : q.Fields()->Fields(0)->AsString();
}

TVeskODACQuery* KitDbTest::NewQuery(const String& name) {
  auto* q = new TVeskODACQuery(owner_.get());
  q->SetName(name);
  q->SetSession(session_);
  q->SQLInsert()->SetText(u"INSERT INTO GOODS (ID, CODE, NAME, PRICE, QTY) VALUES (:ID, :CODE, :NAME, :PRICE, :QTY)");
  q->SQLUpdate()->SetText(u"UPDATE GOODS SET CODE = :CODE, NAME = :NAME, PRICE = :PRICE, QTY = :QTY WHERE ID = :OLD_ID");
  q->SQLDelete()->SetText(u"DELETE FROM GOODS WHERE ID = :OLD_ID");
  return q;
}

TVeskODACQuery* KitDbTest::OpenGoods(const String& name) {
  TVeskODACQuery* q = NewQuery(name);
  q->SQL()->SetText(u"SELECT * FROM GOODS ORDER BY ID");
  q->Open();
  return q;
}

TVeskODACQuery* KitDbTest::ComposedGoods(const String& alias) {
  TVeskODACQuery* q = NewQuery();
  q->SetVeskAlias(alias);
  q->SetVeskTableLive(u"GOODS");
  q->SetVeskGroupField(alias.IsEmpty() ? u"ID" : alias + u".ID");
  q->Open();
  return q;
}
