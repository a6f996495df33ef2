// The DML generator over the embedded engine's dictionary: the rows it
// reads, the texts it writes (character for character), its messages, and
// the statements run for real by a dataset against the same table.
#include <gtest/gtest.h>

#include "data/dmlgen.h"
#include "platform/ui/scriptedui.h"
#include "tests/support/kitfixture.h"

namespace {

class DMLGenTest : public KitDbTest {
 protected:
  void SetUp() override {
    KitDbTest::SetUp();
    gen_.SetSession(session_);
    gen_.SetSelectTable(u"GOODS");
    gen_.SetDMLTable(u"GOODS");
    gen_.SetKeyFields(u"ID");
  }
  // The rows of VT as "SelField|DMLField|is_key" lines.
  String Rows() {
    String text;
    TVirtualTable* vt = gen_.VT();
    for (vt->First(); !vt->Eof(); vt->Next())
      text += vt->FieldByName(u"SelField")->AsString() + u"|" + vt->FieldByName(u"DMLField")->AsString() + u"|" +
              vt->FieldByName(u"is_key")->AsString() + u"\n";
    return text;
  }
  // Sets a field of the VT row whose SelField is `selField`.
  void SetRow(const String& selField, const String& field, const String& value) {
    TVirtualTable* vt = gen_.VT();
    ASSERT_TRUE(vt->Locate(u"SelField", Variant(selField), TLocateOptions())) << selField;
    vt->Edit();
    vt->FieldByName(field)->SetAsString(value);
    vt->Post();
  }
  // Generates, expecting an exception with exactly `message`.
  void ExpectFailure(const String& message) {
    try {
      gen_.Generate();
      ADD_FAILURE() << "no exception, expected " << message;
    } catch (const Exception& e) {
      EXPECT_EQ(e.Message, message);
    }
  }
  // A query over GOODS writing through the generated statements.
  TVeskODACQuery* GeneratedQuery() {
    TVeskODACQuery* q = NewQuery(u"qGen");
    q->SQL()->SetText(u"SELECT * FROM GOODS ORDER BY ID");
    q->SQLInsert()->SetText(gen_.Statement(stInsert));
    q->SQLUpdate()->SetText(gen_.Statement(stUpdate));
    q->SQLDelete()->SetText(gen_.Statement(stDelete));
    q->SQLLock()->SetText(gen_.Statement(stLock));
    q->SQLRefresh()->SetText(gen_.Statement(stRefresh));
    return q;
  }

  TDMLGenerator gen_;
};

TEST_F(DMLGenTest, ReadsTheColumnsWithKeysAndTheRowidRow) {
  gen_.GetTableFields();
  EXPECT_EQ(Rows(), String(u":ID|ID|1\n:CODE|CODE|\n:NAME|NAME|\n:PRICE|PRICE|\n:QTY|QTY|\n:ROWID||\n"));
  EXPECT_EQ(gen_.SelFieldPickList()->CommaText(), String(u":ID,:CODE,:NAME,:PRICE,:QTY,:ROWID"));
  EXPECT_EQ(gen_.DMLFieldPickList()->CommaText(), String(u"ID,CODE,NAME,PRICE,QTY,ROWID"));

  // The last key name is fed from the sequence; the dictionary is read
  // again, so the rows do not pile up.
  gen_.SetKeyFields(u"code, id");
  gen_.cbGenerateKeyValue = true;
  gen_.GetTableFields();
  EXPECT_EQ(Rows(), String(u":ID|ID|2\n:CODE|CODE|1\n:NAME|NAME|\n:PRICE|PRICE|\n:QTY|QTY|\n:ROWID||\n"));
}

TEST_F(DMLGenTest, DocumentKeysHelperColumnsAndAViewToSelectFrom) {
  Exec(u"CREATE TABLE DOCS (COD INTEGER, NRDOC_A INTEGER, NAME VARCHAR2(20), CLCNAME VARCHAR2(20))");
  Exec(u"CREATE TABLE LINES (ID INTEGER, COD INTEGER)");
  Exec(u"CREATE VIEW V_GOODS AS SELECT ID, NAME, PRICE * 2 AS DBL FROM GOODS");
  gen_.SetKeyFields(String());
  gen_.SetSelectTable(u"DOCS");
  gen_.SetDMLTable(u"docs");
  gen_.GetTableFields();
  EXPECT_EQ(Rows(), String(u":COD|COD|1\n:NRDOC_A|NRDOC_A|1\n:NAME|NAME|\n:CLCNAME||\n:ROWID||\n"));

  gen_.SetSelectTable(u"LINES");
  gen_.SetDMLTable(u"LINES");
  gen_.GetTableFields();
  EXPECT_EQ(Rows(), String(u":ID|ID|\n:COD|COD|\n:ROWID||\n"));  // COD is a key only in first place

  gen_.SetSelectTable(u"V_GOODS");
  gen_.SetDMLTable(u"GOODS");
  gen_.GetTableFields();
  EXPECT_EQ(Rows(), String(u":ID|ID|\n:NAME|NAME|\n:DBL||\n:ROWID||\n"));
  EXPECT_EQ(gen_.DMLFieldPickList()->CommaText(), String(u"ID,CODE,NAME,PRICE,QTY,ROWID"));
}

TEST_F(DMLGenTest, WritesTheFiveStatementsAndTheKeyList) {
  gen_.cbSQL = true;
  gen_.cbLock = true;
  gen_.GetTableFields();
  ASSERT_TRUE(gen_.Generate());
  EXPECT_EQ(gen_.SQLText(), String(u"SELECT * FROM \r GOODS"));
  EXPECT_EQ(gen_.Statement(stInsert),
            String(u"INSERT INTO GOODS\r  (ID, CODE, NAME, PRICE, QTY)\rVALUES\r   (:ID, :CODE, :NAME, :PRICE, :QTY)"));
  EXPECT_EQ(gen_.Statement(stUpdate),
            String(u"UPDATE GOODS\rSET\r   ID = :ID,\r   CODE = :CODE,\r   NAME = :NAME,\r   PRICE = :PRICE,\r   "
                   u"QTY = :QTY\rWHERE\r   ID = :OLD_ID"));
  EXPECT_EQ(gen_.Statement(stDelete), String(u"DELETE FROM GOODS\rWHERE\r   ID = :ID"));
  EXPECT_EQ(gen_.Statement(stLock), String(u"SELECT * FROM \r GOODS"));
  EXPECT_EQ(gen_.Statement(stRefresh), String(u"WHERE\r   ID = :ID"));
  EXPECT_EQ(gen_.KeyFields(), String(u"ID"));
}

TEST_F(DMLGenTest, QuotesNamesReturnsValuesAndWrapsTheSequence) {
  gen_.cbQuoteFields = true;
  gen_.cbUseReturning = true;
  gen_.cbGenerateKeyValue = true;
  gen_.cbDelete = false;
  gen_.cbRefresh = false;
  gen_.GetTableFields();
  SetRow(u":PRICE", u"SelField", u"0");  // a value that is not a parameter stands as it is
  ASSERT_TRUE(gen_.Generate());
  EXPECT_EQ(gen_.Statement(stInsert),
            String(u"BEGIN\nSELECT ID_TMDB_CM.NEXTVAL INTO :ID FROM DUAL;\n"
                   u"INSERT INTO GOODS\r  (\"ID\", \"CODE\", \"NAME\", \"PRICE\", \"QTY\")\rVALUES\r   "
                   u"(:\"ID\", :\"CODE\", :\"NAME\", 0, :\"QTY\")RETURNING\r   \"ID\", \"CODE\", \"NAME\", \"PRICE\", "
                   u"\"QTY\" \rINTO\r   :\"ID\", :\"CODE\", :\"NAME\", 0, :\"QTY\";\nEND;"));
  EXPECT_EQ(gen_.Statement(stUpdate),
            String(u"UPDATE GOODS\rSET\r   \"ID\" = :\"ID\",\r   \"CODE\" = :\"CODE\",\r   \"NAME\" = :\"NAME\",\r   "
                   u"\"PRICE\" = 0,\r   \"QTY\" = :\"QTY\"\rWHERE\r   \"ID\" = :\"OLD_ID\"RETURNING\r   \"ID\", "
                   u"\"CODE\", \"NAME\", \"PRICE\", \"QTY\" \rINTO\r   :\"ID\", :\"CODE\", :\"NAME\", 0, :\"QTY\""));
  EXPECT_EQ(gen_.Statement(stDelete), String());
  EXPECT_EQ(gen_.Statement(stRefresh), String());
}

TEST_F(DMLGenTest, EverySequenceKeyGetsItsLineAndOtherwiseTheLastKey) {
  gen_.cbGenerateKeyValue = true;
  gen_.cbUpdate = gen_.cbDelete = gen_.cbRefresh = false;
  gen_.GetTableFields();
  SetRow(u":CODE", u"is_key", u"7");
  ASSERT_TRUE(gen_.Generate());
  EXPECT_EQ(gen_.Statement(stInsert).Pos(u"BEGIN\nSELECT ID_TMDB_CM.NEXTVAL INTO :ID FROM DUAL;\n"
                                         u"SELECT ID_TMDB_CM.NEXTVAL INTO :CODE FROM DUAL;\nINSERT INTO GOODS"),
            1);
  EXPECT_EQ(gen_.KeyFields(), String(u"ID;CODE"));

  SetRow(u":ID", u"is_key", u"1");
  SetRow(u":CODE", u"is_key", u"1");
  ASSERT_TRUE(gen_.Generate());
  EXPECT_EQ(gen_.Statement(stInsert).Pos(u"BEGIN\nSELECT ID_TMDB_CM.NEXTVAL INTO :CODE FROM DUAL;\nINSERT"), 1);
}

TEST_F(DMLGenTest, WithoutKeysTheWhereIsEmptyAndTheBlockIsNotMade) {
  gen_.SetKeyFields(String());
  gen_.cbGenerateKeyValue = true;
  gen_.GetTableFields();
  ASSERT_TRUE(gen_.Generate());
  EXPECT_EQ(gen_.Statement(stDelete), String(u"DELETE FROM GOODS\r"));
  EXPECT_EQ(gen_.Statement(stRefresh), String());
  EXPECT_EQ(gen_.Statement(stInsert).Pos(u"INSERT INTO GOODS"), 1);
  EXPECT_EQ(gen_.KeyFields(), String());
}

TEST_F(DMLGenTest, RowidKeyComparesTheOldRowid) {
  gen_.GetTableFields();
  SetRow(u":ID", u"is_key", String());
  SetRow(u":ROWID", u"is_key", u"1");
  SetRow(u":ROWID", u"DMLField", u"ROWID");
  ASSERT_TRUE(gen_.Generate());
  EXPECT_EQ(gen_.Statement(stDelete), String(u"DELETE FROM GOODS\rWHERE\r   ROWID = :OLD_ROWID "));
  EXPECT_EQ(gen_.Statement(stRefresh), String(u"WHERE\r   ROWID = :OLD_ROWID "));
  EXPECT_EQ(gen_.Statement(stUpdate),
            String(u"UPDATE GOODS\rSET\r   ID = :ID,\r   CODE = :CODE,\r   NAME = :NAME,\r   PRICE = :PRICE,\r   "
                   u"QTY = :QTY,\r   ROWID = :ROWID\rWHERE\r   ROWID = :OLD_ROWID"));
  gen_.cbQuoteFields = true;
  ASSERT_TRUE(gen_.Generate());
  EXPECT_EQ(gen_.Statement(stDelete), String(u"DELETE FROM GOODS\rWHERE\r   \"ROWID\" = :OLD_ROWID "));
  String update = gen_.Statement(stUpdate);
  EXPECT_EQ(update.SubString(update.Length() - 31, 32), String(u"\rWHERE\r   \"ROWID\" = :\"OLD_ROWID\""));
  EXPECT_EQ(gen_.KeyFields(), String(u"ROWID"));
}

TEST_F(DMLGenTest, WithEveryBoxOffOnlyTheKeyListChanges) {
  gen_.cbInsert = gen_.cbUpdate = gen_.cbDelete = gen_.cbRefresh = false;
  gen_.SetSQLText(u"SELECT ID FROM GOODS");
  gen_.SetKeyFields(u"id,code");
  gen_.GetTableFields();
  ASSERT_TRUE(gen_.Generate());
  EXPECT_EQ(gen_.SQLText(), String(u"SELECT ID FROM GOODS"));
  for (TStatementType kind : {stInsert, stUpdate, stDelete, stLock, stRefresh})
    EXPECT_EQ(gen_.Statement(kind), String()) << int(kind);
  EXPECT_EQ(gen_.KeyFields(), String(u"ID;CODE"));
}

TEST_F(DMLGenTest, WithoutFieldsItAsksForThemAndChangesNothing) {
  TScriptedUserInterface ui;
  TUserInterfaceScope scope(ui);
  ui.ExpectShowMessage(u"Press \"Get Table Fields\" first!");
  gen_.cbSQL = true;
  gen_.SetSQLText(u"SELECT 1 FROM DUAL");
  EXPECT_FALSE(gen_.Generate());
  EXPECT_EQ(ui.Verify(), String());
  EXPECT_EQ(gen_.SQLText(), String(u"SELECT 1 FROM DUAL"));
  EXPECT_EQ(gen_.KeyFields(), String(u"ID"));
}

TEST_F(DMLGenTest, WrongRowsRaiseTheirMessagesAndKeepWhatWasWritten) {
  gen_.GetTableFields();
  SetRow(u":CODE", u"SelField", String());
  ExpectFailure(u"CODE  - DMLField is not empty \n but SelField Is Empty");
  EXPECT_EQ(gen_.Statement(stInsert), String());
  gen_.cbInsert = false;
  ExpectFailure(u"CODE - is not empty \n but SelField Is Empty");

  gen_.cbInsert = true;
  gen_.GetTableFields();
  SetRow(u":ROWID", u"is_key", u"1");  // a key with no column to compare
  ExpectFailure(u"Incorrect key  - DMLField is Empty ");
  EXPECT_EQ(gen_.Statement(stInsert).Pos(u"INSERT INTO GOODS"), 1);  // written before the update failed
  EXPECT_EQ(gen_.Statement(stUpdate), String());

  gen_.cbUpdate = gen_.cbDelete = gen_.cbRefresh = false;
  ExpectFailure(u"Incorrect key - DMLField is Empty ");  // the key list
  gen_.cbGenerateKeyValue = true;
  ExpectFailure(u"Incorrect key - DMLField is Empty ");  // the sequence block
  EXPECT_EQ(gen_.Statement(stInsert), String());

  gen_.cbGenerateKeyValue = false;
  gen_.cbDelete = true;
  SetRow(u":ROWID", u"SelField", String());
  ExpectFailure(u"Incorrect key  - SelField is Empty ");
}

TEST_F(DMLGenTest, GeneratedStatementsWriteAndRefreshTheTable) {
  gen_.cbLock = true;
  gen_.GetTableFields();
  ASSERT_TRUE(gen_.Generate());
  TVeskODACQuery* q = GeneratedQuery();
  q->SetLockMode(lmPessimistic);
  q->Open();

  q->Append();
  q->FieldByName(u"ID")->SetAsInteger(6);
  q->FieldByName(u"CODE")->SetAsString(u"D01");
  q->FieldByName(u"NAME")->SetAsString(u"Dates");
  q->Post();
  EXPECT_EQ(Value(u"SELECT NAME FROM GOODS WHERE ID = 6"), String(u"Dates"));

  ASSERT_TRUE(q->Locate(u"ID", Variant(2), TLocateOptions()));
  q->Edit();
  q->FieldByName(u"ID")->SetAsInteger(20);
  q->FieldByName(u"PRICE")->SetAsFloat(4.5);
  q->Post();
  EXPECT_EQ(Value(u"SELECT PRICE FROM GOODS WHERE ID = 20"), String(u"4.5"));
  EXPECT_EQ(Value(u"SELECT COUNT(*) FROM GOODS WHERE ID = 2"), String(u"0"));

  ASSERT_TRUE(q->Locate(u"ID", Variant(3), TLocateOptions()));
  q->Delete();
  EXPECT_EQ(Value(u"SELECT COUNT(*) FROM GOODS WHERE ID = 3"), String(u"0"));

  ASSERT_TRUE(q->Locate(u"ID", Variant(1), TLocateOptions()));
  Exec(u"UPDATE GOODS SET NAME = 'Green apple' WHERE ID = 1");
  q->RefreshRecord();
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), String(u"Green apple"));
}

TEST_F(DMLGenTest, SequenceBlockFeedsTheKeyOfANewRecord) {
  Exec(u"CREATE SEQUENCE ID_TMDB_CM START WITH 100");
  gen_.cbGenerateKeyValue = true;
  gen_.cbUseReturning = true;
  gen_.GetTableFields();
  ASSERT_TRUE(gen_.Generate());
  TVeskODACQuery* q = GeneratedQuery();
  q->Open();
  q->Append();
  q->FieldByName(u"CODE")->SetAsString(u"E01");
  q->FieldByName(u"NAME")->SetAsString(u"Eggs");
  q->Post();
  EXPECT_EQ(q->FieldByName(u"ID")->AsInteger(), 100);
  EXPECT_EQ(Value(u"SELECT NAME FROM GOODS WHERE ID = 100"), String(u"Eggs"));
  q->Append();
  q->FieldByName(u"NAME")->SetAsString(u"Figs");
  q->Post();
  EXPECT_EQ(Value(u"SELECT NAME FROM GOODS WHERE ID = 101"), String(u"Figs"));
}

}  // namespace
