// Values copied into the record being edited: ditto from the record before
// through a data link, duplication of a record, and a detail's fields
// from its master, with the master re-read after the detail posts.
#include <gtest/gtest.h>

#include "data/veskcopy.h"
#include "data/veskutil.h"
#include "platform/db/datasource.h"
#include "tests/support/kitfixture.h"

namespace {

// A grid's view of the dataset: a window of several records.
class TWindowLink : public TDataLink {
 public:
  int changes = 0;

 protected:
  void DataSetChanged() override { ++changes; }
};

TEST_F(KitDbTest, DittoCopiesTheRecordBeforeWithItsCompanion) {
  TVeskODACQuery* q = OpenGoods();
  q->FieldByName(u"NAME")->SetKeyFields(u"CODE");
  q->Edit();
  q->getDitto(q->FieldByName(u"NAME"));  // the first record has nothing before it
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"Apple");
  EXPECT_EQ(q->FieldByName(u"CODE")->AsString(), u"A01");
  q->Cancel();
  q->Locate(u"ID", 4, TLocateOptions());
  q->Edit();
  q->getDitto(q->FieldByName(u"NAME"));
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"Butter");
  EXPECT_EQ(q->FieldByName(u"CODE")->AsString(), u"B01");
  EXPECT_EQ(q->FieldByName(u"ID")->AsInteger(), 4);
  q->Post();
  EXPECT_EQ(Value(u"SELECT NAME || CODE FROM GOODS WHERE ID = 4"), u"ButterB01");
  EXPECT_EQ(Value(u"SELECT NAME || CODE FROM GOODS WHERE ID = 3"), u"ButterB01");

  // Outside edit nothing is copied; a read-only field, or a read-only
  // companion, is left alone.
  q->getDitto(q->FieldByName(u"QTY"));
  EXPECT_TRUE(q->FieldByName(u"QTY")->IsNull());
  q->Edit();
  q->FieldByName(u"QTY")->SetReadOnly(true);
  q->getDitto(q->FieldByName(u"QTY"));
  EXPECT_TRUE(q->FieldByName(u"QTY")->IsNull());
  q->Next();  // posts; now on Cheese
  q->Edit();
  q->FieldByName(u"CODE")->SetReadOnly(true);
  q->getDitto(q->FieldByName(u"NAME"));
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"Butter");
  EXPECT_EQ(q->FieldByName(u"CODE")->AsString(), u"C01");
  q->Cancel();
}

TEST_F(KitDbTest, DittoReadsThroughItsOwnLinkAndLeavesTheGridsWindowAlone) {
  TVeskODACQuery* q = OpenGoods();
  auto* source = new TDataSource(owner_.get());
  source->SetDataSet(q);
  TWindowLink grid;
  grid.SetBufferCount(4);
  grid.SetDataSource(source);
  q->Locate(u"ID", 5, TLocateOptions());
  const int gridRecord = grid.ActiveRecord();
  q->Edit();
  q->FieldByName(u"QTY")->SetOrigin(u"PRICE");  // the companion by Origin
  q->getDitto(q->FieldByName(u"QTY"), source);
  EXPECT_EQ(q->FieldByName(u"QTY")->AsString(), u"");  // Bread's QTY is null
  EXPECT_DOUBLE_EQ(q->FieldByName(u"PRICE")->AsFloat(), 1.2);
  EXPECT_EQ(q->RecNo(), 5);
  EXPECT_EQ(grid.ActiveRecord(), gridRecord);
  EXPECT_EQ(source->DataLinks().size(), 1u);  // the temporary link is gone
  q->Cancel();

  // By command, through the dataset's first source.
  q->Locate(u"ID", 2, TLocateOptions());
  q->Edit();
  SetPropInteger(q, kPrevRecCmdCopy, q->Fields()->IndexOf(q->FieldByName(u"NAME")));
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"Apple");
  q->Cancel();

  // A source over another dataset is no way to this one's record before.
  TVeskODACQuery* other = OpenGoods(u"qOther");
  auto* otherSource = new TDataSource(owner_.get());
  otherSource->SetDataSet(other);
  other->Last();
  other->Edit();
  q->Edit();
  CopyDataFromPrev(otherSource, q->FieldByName(u"NAME"));
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"Apricot");
  q->Cancel();
  other->Cancel();
}

TEST_F(KitDbTest, DittoIntoANewRecordTakesTheRecordBeforeIt) {
  TVeskODACQuery* q = OpenGoods();
  q->Locate(u"ID", 3, TLocateOptions());
  q->Insert();  // stands between Apricot and Butter
  q->getDitto(q->FieldByName(u"NAME"));
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"Apricot");
  q->Cancel();
  q->Append();
  q->getDitto(q->FieldByName(u"NAME"));
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"Cheese");
  q->Cancel();
}

TEST_F(KitDbTest, DittoPutsTheRecordBackWhenReadingTheOneBeforeFails) {
  TVeskODACQuery* q = NewQuery();
  q->SQL()->SetText(u"SELECT ID, NAME FROM GOODS ORDER BY ID");
  auto add = [q](TField* field, const String& name, TFieldKind kind) {
    return AddPersistentField(q, field, name, kind);
  };
  add(new TIntegerField(q), u"ID", fkData);
  add(new TStringField(q), u"NAME", fkData);
  TField* calc = add(new TStringField(q), u"CLC", fkCalculated);
  bool armed = false;
  q->OnCalcFields = [&armed](TDataSet* ds) {
    const String name = ds->FieldByName(u"NAME")->AsString();
    if (armed && name == u"Apple") throw Exception(u"cannot calculate Apple");
    ds->FieldByName(u"CLC")->SetAsString(name + u"!");
  };
  q->Open();
  q->Locate(u"ID", 2, TLocateOptions());
  q->Edit();
  armed = true;
  EXPECT_THROW(q->getDitto(calc), Exception);
  // The fields read the current record again, and no link is left behind.
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"Apricot");
  EXPECT_EQ(calc->AsString(), u"Apricot!");
  EXPECT_TRUE(q->DataSources().empty());
  q->Cancel();
}

// ---- Duplication ------------------------------------------------------------------

TEST_F(KitDbTest, DuplicateRecordRefusesDuringAnEdit) {
  TVeskODACQuery* q = OpenGoods();
  q->Edit();
  q->FieldByName(u"NAME")->SetAsString(u"Changed");
  EXPECT_FALSE(q->duplicateRecord(true, String()));
  EXPECT_EQ(q->State(), dsEdit);
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"Changed");
  EXPECT_EQ(q->RecordCount(), 5);
  EXPECT_EQ(q->VeskCom(), dsgInactive);  // not declared for an insert
  q->Cancel();
}

TEST_F(KitDbTest, DuplicateRecordPutsTheCopyBehindTheOriginal) {
  TVeskODACQuery* q = OpenGoods();
  q->SetVeskMode(true);  // the declared insert passes the guard
  q->Locate(u"ID", 2, TLocateOptions());
  ASSERT_TRUE(q->duplicateRecord(false, u"ID;code"));
  EXPECT_EQ(q->State(), dsInsert);
  EXPECT_EQ(q->RecNo(), 3);
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"Apricot");
  EXPECT_EQ(q->FieldByName(u"QTY")->AsInteger(), 5);
  EXPECT_TRUE(q->FieldByName(u"ID")->IsNull());
  EXPECT_TRUE(q->FieldByName(u"CODE")->IsNull());
  q->FieldByName(u"ID")->SetAsInteger(7);
  q->FieldByName(u"CODE")->SetAsString(u"A03");
  SetVeskCom(q, dsgPost);
  q->Post();
  EXPECT_EQ(Value(u"SELECT CODE || NAME || PRICE || '/' || QTY FROM GOODS WHERE ID = 7"), u"A03Apricot4/5");
  q->Prior();
  EXPECT_EQ(q->FieldByName(u"ID")->AsInteger(), 2);

  // From the last record the copy still comes behind it.
  q->Last();
  ASSERT_TRUE(q->duplicateRecord(false, u"ID"));
  EXPECT_EQ(q->RecNo(), 7);
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"Cheese");
  EXPECT_EQ(q->FieldByName(u"CODE")->AsString(), u"C01");
  SetVeskCom(q, dsgCancel);
  q->Cancel();

  // Appending copies the last record.
  q->First();
  ASSERT_TRUE(q->duplicateRecord(true, u"ID"));
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"Cheese");
  SetVeskCom(q, dsgCancel);
  q->Cancel();
  EXPECT_EQ(q->RecordCount(), 6);
}

TEST_F(KitDbTest, DuplicateRecordTakesAKeyListOfAnyLength) {
  TVeskODACQuery* q = OpenGoods();
  String keys;
  for (int i = 0; i < 40; ++i) keys += u"SOME_LONG_COLUMN_" + IntToStr(i) + u";";
  keys += u"ID;QTY";
  ASSERT_GT(keys.Length(), 600);
  q->Locate(u"ID", 3, TLocateOptions());
  ASSERT_TRUE(q->duplicateRecord(false, keys));
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"Butter");
  EXPECT_EQ(q->FieldByName(u"CODE")->AsString(), u"B01");
  EXPECT_TRUE(q->FieldByName(u"QTY")->IsNull());  // named at the far end
  EXPECT_TRUE(q->FieldByName(u"ID")->IsNull());
  q->Cancel();
}

TEST_F(KitDbTest, DuplicateRecordOfAnyDatasetAppendsAndPosts) {
  TVeskODACQuery* q = OpenGoods();
  q->SetVeskKeyFields(u"id,code");
  q->Locate(u"ID", 5, TLocateOptions());
  q->FieldByName(u"NAME")->SetReadOnly(true);
  DuplicateRecord(q, false);
  EXPECT_EQ(q->State(), dsBrowse);
  EXPECT_TRUE(q->FieldByName(u"NAME")->ReadOnly());
  EXPECT_EQ(Value(u"SELECT COUNT(*) FROM GOODS WHERE NAME = 'Cheese' AND CODE IS NULL AND QTY = 1"), u"1");
  EXPECT_EQ(Value(u"SELECT COUNT(*) FROM GOODS"), u"6");

  // Staying in edit leaves the copy open for changes.
  q->First();
  DuplicateRecord(q, true);
  EXPECT_EQ(q->State(), dsInsert);
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"Apple");
  q->Cancel();
  EXPECT_EQ(Value(u"SELECT COUNT(*) FROM GOODS"), u"6");
}

TEST_F(KitDbTest, DuplicateRecordWithoutKeyFieldsCopiesEveryField) {
  Exec(u"CREATE TABLE MOVES (DOC VARCHAR2(10), GOODS_ID INTEGER, QTY INTEGER)");
  Exec(u"INSERT INTO MOVES VALUES ('D1', 3, 12)");
  auto* q = new TVeskODACQuery(owner_.get());
  q->SetSession(session_);
  q->SQLInsert()->SetText(u"INSERT INTO MOVES (DOC, GOODS_ID, QTY) VALUES (:DOC, :GOODS_ID, :QTY)");
  q->SQL()->SetText(u"SELECT * FROM MOVES");
  q->Open();
  DuplicateRecord(q, false);
  EXPECT_EQ(Value(u"SELECT COUNT(*) FROM MOVES WHERE DOC = 'D1' AND GOODS_ID = 3 AND QTY = 12"), u"2");
}

TEST_F(KitDbTest, DuplicateRecordKeepsTheKeyOfALookupWhoseTextRepeats) {
  Exec(u"CREATE TABLE PARTNERS (ID INTEGER, NAME VARCHAR2(20))");
  Exec(u"INSERT INTO PARTNERS VALUES (1, 'Acme')");
  Exec(u"INSERT INTO PARTNERS VALUES (2, 'Acme')");
  Exec(u"CREATE TABLE ORDERS (NUM INTEGER, PARTNER_ID INTEGER)");
  Exec(u"INSERT INTO ORDERS VALUES (10, 2)");
  auto* partners = new TOraQuery(owner_.get());
  partners->SetSession(session_);
  partners->SQL()->SetText(u"SELECT * FROM PARTNERS ORDER BY ID");
  partners->Open();
  auto* q = new TVeskODACQuery(owner_.get());
  q->SetSession(session_);
  q->SQL()->SetText(u"SELECT * FROM ORDERS");
  q->SQLInsert()->SetText(u"INSERT INTO ORDERS (NUM, PARTNER_ID) VALUES (:NUM, :PARTNER_ID)");
  auto add = [q](TField* field, const String& name, TFieldKind kind) {
    return AddPersistentField(q, field, name, kind);
  };
  add(new TIntegerField(q), u"NUM", fkData);
  add(new TIntegerField(q), u"PARTNER_ID", fkData);
  TField* name = add(new TStringField(q), u"PARTNER", fkLookup);
  name->SetKeyFields(u"PARTNER_ID");
  name->SetLookupDataSet(partners);
  name->SetLookupKeyFields(u"ID");
  name->SetLookupResultField(u"NAME");
  q->Open();
  ASSERT_EQ(q->FieldByName(u"PARTNER")->AsString(), u"Acme");
  DuplicateRecord(q, true);
  EXPECT_EQ(q->FieldByName(u"PARTNER_ID")->AsInteger(), 2);
  EXPECT_EQ(q->FieldByName(u"PARTNER")->AsString(), u"Acme");
  q->Post();
  EXPECT_EQ(Value(u"SELECT COUNT(*) FROM ORDERS WHERE NUM = 10 AND PARTNER_ID = 2"), u"2");
}

// ---- Detail from master -------------------------------------------------------------

class DocsTest : public KitDbTest {
 protected:
  void SetUp() override {
    KitDbTest::SetUp();
    Exec(u"CREATE TABLE DOCS (ID INTEGER PRIMARY KEY, DOC_NO VARCHAR2(12), TOTAL NUMBER(12,2))");
    Exec(u"CREATE TABLE DOC_LINES (LINE_ID INTEGER PRIMARY KEY, DOC_ID INTEGER NOT NULL, KIND VARCHAR2(5), "
         u"QTY INTEGER, PRICE NUMBER(10,2))");
    Exec(u"INSERT INTO DOCS VALUES (1, 'F-001', 10)");
    Exec(u"INSERT INTO DOCS VALUES (2, 'F-002', 0)");
    Exec(u"INSERT INTO DOC_LINES VALUES (1, 1, 'G', 2, 5)");

    docs_ = new TVeskODACQuery(owner_.get());
    docs_->SetName(u"qDocs");
    docs_->SetSession(session_);
    docs_->SQL()->SetText(u"SELECT * FROM DOCS ORDER BY ID");
    docs_->SQLRefresh()->SetText(u"SELECT * FROM DOCS WHERE ID = :ID");
    docs_->Open();
    source_ = new TDataSource(owner_.get());
    source_->SetDataSet(docs_);
  }

  // The lines of the master's document.
  TVeskODACQuery* OpenLines(const String& sql) {
    auto* lines = new TVeskODACQuery(owner_.get());
    lines->SetName(u"qLines");
    lines->SetSession(session_);
    lines->SQL()->SetText(sql);
    // The server keeps the document's total as its lines are written.
    lines->SQLInsert()->SetText(
        u"BEGIN\n"
        u"  INSERT INTO DOC_LINES (DOC_ID, KIND, QTY, PRICE) VALUES (:DOC_ID, :KIND, :QTY, :PRICE);\n"
        u"  UPDATE DOCS SET TOTAL = (SELECT SUM(QTY * PRICE) FROM DOC_LINES WHERE DOC_ID = :DOC_ID)\n"
        u"   WHERE ID = :DOC_ID;\n"
        u"END;");
    lines->SetDataSource(source_);
    lines->Open();
    return lines;
  }

  TVeskODACQuery* docs_ = nullptr;
  TDataSource* source_ = nullptr;
};

TEST_F(DocsTest, ANewLineTakesItsDocumentAndTheDocumentIsReRead) {
  TVeskODACQuery* lines = OpenLines(u"SELECT * FROM DOC_LINES WHERE DOC_ID = :ID ORDER BY LINE_ID");
  docs_->Locate(u"ID", 2, TLocateOptions());
  EXPECT_EQ(lines->RecordCount(), 0);
  lines->SetVeskMasterRefresh(true);
  lines->Insert();
  EXPECT_EQ(lines->FieldByName(u"DOC_ID")->AsInteger(), 2);
  lines->FieldByName(u"QTY")->SetAsInteger(3);
  lines->FieldByName(u"PRICE")->SetAsFloat(7);
  lines->Post();
  EXPECT_EQ(Value(u"SELECT TOTAL FROM DOCS WHERE ID = 2"), u"21");
  EXPECT_DOUBLE_EQ(docs_->FieldByName(u"TOTAL")->AsFloat(), 21);  // re-read after the post
  EXPECT_EQ(docs_->FieldByName(u"ID")->AsInteger(), 2);

  // Without the master refresh the document shows what it read.
  lines->SetVeskMasterRefresh(false);
  lines->Insert();
  lines->FieldByName(u"QTY")->SetAsInteger(1);
  lines->FieldByName(u"PRICE")->SetAsFloat(4);
  lines->Post();
  EXPECT_EQ(Value(u"SELECT TOTAL FROM DOCS WHERE ID = 2"), u"25");
  EXPECT_DOUBLE_EQ(docs_->FieldByName(u"TOTAL")->AsFloat(), 21);
}

TEST_F(DocsTest, TheLinkingFieldIsFoundInTheStatementAndCanBeSwitchedOff) {
  TVeskODACQuery* lines = OpenLines(u"SELECT * FROM DOC_LINES\nWHERE KIND = :IDX AND DOC_ID=\n\t:ID\nORDER BY 1");
  lines->ParamByName(u"IDX")->SetValue(u"G");
  lines->Close();
  lines->Open();
  ASSERT_EQ(lines->RecordCount(), 1);
  lines->FieldByName(u"DOC_ID")->SetReadOnly(true);
  lines->Insert();
  // ":ID" inside ":IDX" is passed over; the parameter the master lacks
  // gives its own value.
  EXPECT_EQ(lines->FieldByName(u"DOC_ID")->AsInteger(), 1);
  EXPECT_EQ(lines->FieldByName(u"KIND")->AsString(), u"G");
  EXPECT_TRUE(lines->FieldByName(u"DOC_ID")->ReadOnly());
  lines->Cancel();

  lines->SetVeskParamsNotCPLAfterInsert(true);
  lines->Insert();
  EXPECT_TRUE(lines->FieldByName(u"DOC_ID")->IsNull());
  EXPECT_TRUE(lines->FieldByName(u"KIND")->IsNull());
  // Called by hand it fills the same fields; without a source nothing.
  lines->FillDetailFieldsFromMaster(nullptr);
  EXPECT_TRUE(lines->FieldByName(u"DOC_ID")->IsNull());
  lines->FillDetailFieldsFromMaster(source_);
  EXPECT_EQ(lines->FieldByName(u"DOC_ID")->AsInteger(), 1);
  lines->Cancel();
}

TEST_F(DocsTest, AParameterThatIsNotComparedFillsNothing) {
  // ":ID)" is not a place the search takes, and "LIKE" is not "=".
  TVeskODACQuery* lines =
      OpenLines(u"SELECT * FROM DOC_LINES WHERE (DOC_ID = :ID) AND KIND LIKE :K ORDER BY 1");
  lines->Insert();
  EXPECT_TRUE(lines->FieldByName(u"DOC_ID")->IsNull());
  EXPECT_TRUE(lines->FieldByName(u"KIND")->IsNull());
  lines->Cancel();
}

}  // namespace
