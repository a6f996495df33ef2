// TVeskODACQuery on real tables: SQL composition, opening and its errors,
// Resync's Oracle errors, single-row mode, server aggregates, the session's
// say on opening and modifying, and the published surface.
#include <gtest/gtest.h>

#include <vector>

#include "data/veskui.h"
#include "data/veskutil.h"
#include "filter/listfilts.h"
#include "filter/veskorasession.h"
#include "filter/xttsum.h"
#include "platform/db/datasource.h"
#include "tests/support/kitfixture.h"
#include "tests/support/kitui.h"

namespace {

// ---- Composition ------------------------------------------------------------------

TEST_F(KitDbTest, ComposesTheStatementFromEveryPart) {
  TVeskODACQuery* q = NewQuery();
  std::vector<int> changes;
  q->VeskSQLChanged = [&](TObject* sender, int what) {
    EXPECT_EQ(sender, q);
    changes.push_back(what);
  };
  q->SetVeskTableLive(u"GOODS");
  EXPECT_EQ(q->SQL()->Text(), u"SELECT GOODS.* FROM GOODS\n");
  q->SetVeskFilter(u"PRICE > 3");
  EXPECT_EQ(q->SQL()->Text(), u"SELECT GOODS.* FROM GOODS\nWHERE\n(PRICE > 3)\n");
  q->SetVeskFilterSYS(u"QTY IS NOT NULL");
  EXPECT_EQ(q->SQL()->Text(), u"SELECT GOODS.* FROM GOODS\nWHERE\n(PRICE > 3)\nAND\n(QTY IS NOT NULL)\n");
  q->SetVeskGroupField(u"NAME DESC");
  EXPECT_EQ(q->SQL()->Text(),
            u"SELECT GOODS.* FROM GOODS\nWHERE\n(PRICE > 3)\nAND\n(QTY IS NOT NULL)\nORDER BY NAME DESC\n");
  q->SetVeskFilter(String());
  EXPECT_EQ(q->SQL()->Text(), u"SELECT GOODS.* FROM GOODS\nWHERE\n(QTY IS NOT NULL)\nORDER BY NAME DESC\n");
  q->SetVeskAlias(u"G");
  q->SobratiVseVESKParams();
  EXPECT_EQ(q->SQL()->Text(), u"SELECT G.* FROM GOODS G\nWHERE\n(QTY IS NOT NULL)\nORDER BY NAME DESC\n");
  EXPECT_EQ(changes, (std::vector<int>{vscTableLive, vscFilter, vscFilterSYS, vscGroupField, vscFilter}));

  q->Open();
  std::vector<String> names;
  for (; !q->Eof(); q->Next()) names.push_back(q->FieldByName(u"NAME")->AsString());
  EXPECT_EQ(names, (std::vector<String>{u"Cheese", u"Butter", u"Apricot", u"Apple"}));
}

TEST_F(KitDbTest, ComposesFromAWholeBaseStatement) {
  TVeskODACQuery* q = NewQuery();
  int last = -1;
  q->VeskSQLChanged = [&](TObject*, int what) { last = what; };
  TStringList base;
  base.SetText(u"SELECT ID, NAME\nFROM GOODS");
  q->SetVeskSQL1(&base);
  EXPECT_EQ(last, vscSQL1);
  EXPECT_EQ(q->SQL()->Text(), u"SELECT ID, NAME\nFROM GOODS\n");
  q->SetVeskAlias(u"B");
  q->SetVeskFilter(u"B.ID > 3");
  EXPECT_EQ(q->SQL()->Text(), u"SELECT B.* FROM(SELECT ID, NAME\nFROM GOODS\n) B\nWHERE\n(B.ID > 3)\n");
  q->Open();
  EXPECT_EQ(q->RecordCount(), 2);
  EXPECT_EQ(q->FieldCount(), 2);
}

TEST_F(KitDbTest, ComposesLookupColumnsFromTheLookupTables) {
  Exec(u"CREATE TABLE PARTNERS (PID INTEGER, PNAME VARCHAR2(20))");
  Exec(u"INSERT INTO PARTNERS VALUES (1, 'Acme')");
  TVeskODACQuery* partners = NewQuery(u"qPartners");
  partners->SetVeskTableLive(u"PARTNERS");
  auto* plain = new TOraQuery(owner_.get());  // not a table of the family: no column

  TVeskODACQuery* q = NewQuery();
  auto* withTable = new TIntegerField(q);
  withTable->SetFieldName(u"PARTNER");
  withTable->SetKeyFields(u"QTY");
  withTable->SetLookupKeyFields(u"PID");
  withTable->SetLookupResultField(u"PNAME");
  withTable->SetLookupDataSet(partners);
  withTable->SetDataSet(q);
  auto* withoutTable = new TIntegerField(q);
  withoutTable->SetFieldName(u"OTHER");
  withoutTable->SetLookupDataSet(plain);
  withoutTable->SetDataSet(q);
  q->SetVeskAlias(u"G");
  q->SetVeskTableLive(u"GOODS");
  EXPECT_EQ(q->SQL()->Text(),
            u"SELECT G.*, ( select PNAME FROM PARTNERS WHERE PARTNERS.PID=QTY) as PARTNER_LK FROM GOODS G\n");
}

TEST_F(KitDbTest, HandWrittenStatementsAreLeftAlone) {
  // A fresh dataset keeps a statement written by hand.
  TVeskODACQuery* fresh = NewQuery(u"qFresh");
  fresh->SQL()->SetText(u"SELECT CODE FROM GOODS");
  fresh->SetVeskTableLive(u"GOODS");
  EXPECT_EQ(fresh->SQL()->Text(), u"SELECT CODE FROM GOODS\n");
  // So does a closed one with fields and no table or base statement.
  TVeskODACQuery* q = OpenGoods();
  q->Close();
  auto* field = new TStringField(q);
  field->SetFieldName(u"NAME");
  field->SetDataSet(q);
  q->SetVeskFilter(u"ID = 1");
  EXPECT_EQ(q->SQL()->Text(), u"SELECT * FROM GOODS ORDER BY ID\n");
  EXPECT_EQ(q->VeskFilter(), u"ID = 1");
}

TEST_F(KitDbTest, WritingAConditionReopensAndKeepsDefaultsWhileCloseDropsThem) {
  TVeskODACQuery* q = NewQuery();
  q->SetVeskTableLive(u"GOODS");
  q->Open();
  q->setDefFV(q->FieldByName(u"QTY"), false);
  q->SetVeskFilter(u"CODE LIKE 'B%'");
  EXPECT_TRUE(q->Active());
  EXPECT_EQ(q->RecordCount(), 2);
  EXPECT_EQ(q->DefaultValues().size(), 1u);
  q->Close();
  EXPECT_TRUE(q->DefaultValues().empty());
}

TEST_F(KitDbTest, ACloseDropsTheServerFilterOfAServerDataset) {
  TVeskODACQuery* q = NewQuery();
  q->SetVeskSQLServer(true);
  q->SetVeskTableLive(u"GOODS");
  q->SetVeskFilter(u"ID = 2");
  q->Open();
  q->ListFilts()->SetFieldExpr(u"NAME", u"Apr");
  q->Close();
  EXPECT_EQ(q->VeskFilter(), u"");
  EXPECT_EQ(q->SQL()->Text(), u"SELECT GOODS.* FROM GOODS\n");
  EXPECT_EQ(q->ListFilts()->GetFieldExpr(u"NAME"), u"");
}

TEST_F(KitDbTest, AFailedReopenReachesTheCallerWithTheFinalStatement) {
  TVeskODACQuery* q = NewQuery();
  q->SetVeskTableLive(u"GOODS");
  q->Open();
  try {
    q->SetVeskFilter(u"NOSUCH = 1");
    FAIL() << "the reopen must fail";
  } catch (const EOraError& e) {
    EXPECT_EQ(e.Message.Pos(u"Error EOraError opening DataSet fmTest.qGoods:\n\nORA-00904"), 1) << e.Message;
    const String tail = u"\nSQL text:\n" + q->GetFinalSQL();
    EXPECT_EQ(e.Message.SubString(e.Message.Length() - tail.Length() + 1, tail.Length()), tail) << e.Message;
  }
  EXPECT_FALSE(q->Active());
  EXPECT_EQ(q->SQL()->Text(), u"SELECT GOODS.* FROM GOODS\nWHERE\n(NOSUCH = 1)\n");
}

TEST_F(KitDbTest, OpenErrorNamesAnUnnamedDataset) {
  auto* q = new TVeskODACQuery(nullptr);
  std::unique_ptr<TVeskODACQuery> owned(q);
  q->SetSession(session_);
  q->SQL()->SetText(u"SELECT * FROM MISSING");
  try {
    q->Open();
    FAIL();
  } catch (const Exception& e) {
    EXPECT_EQ(e.Message.Pos(u"Error EOraError opening DataSet <no name>:\n\nORA-00942"), 1) << e.Message;
    EXPECT_GT(e.Message.Pos(u"\nSQL text:\nSELECT * FROM MISSING"), 0) << e.Message;
  }
}

TEST_F(KitDbTest, AReopenThatLeavesTheDatasetClosedBringsTheOldTextBack) {
  auto* session = new TVeskOraSession(owner_.get());
  session->SetServer(u":memory:");
  session->Connect();
  TVeskODACQuery* q = NewQuery();
  q->SetSession(session);
  q->SQL()->SetText(u"SELECT 1 AS ONE FROM DUAL");
  q->Open();
  // The session goes away while the composer has the dataset closed.
  q->AfterClose = [session](TDataSet*) { session->Disconnect(); };
  q->SetVeskTableLive(u"GOODS");
  EXPECT_FALSE(q->Active());
  EXPECT_EQ(q->SQL()->Text(), u"SELECT 1 AS ONE FROM DUAL\n");
  EXPECT_EQ(q->VeskTableLive(), u"GOODS");
}

TEST_F(KitDbTest, OpeningOnAClosedKitSessionDoesNothingUnlessAllowed) {
  auto* session = new TVeskOraSession(owner_.get());
  session->SetServer(u":memory:");
  TVeskODACQuery* q = NewQuery();
  q->SetSession(session);
  q->SQL()->SetText(u"SELECT 1 AS ONE FROM DUAL");
  int afterOpen = 0;
  q->AfterOpen = [&](TDataSet*) { ++afterOpen; };
  q->Open();
  EXPECT_FALSE(q->Active());
  EXPECT_FALSE(session->Connected());
  EXPECT_EQ(afterOpen, 0);
  q->SetEnableAutoConnect(true);
  q->Open();
  EXPECT_TRUE(q->Active());
  EXPECT_TRUE(session->Connected());
  EXPECT_EQ(afterOpen, 1);
}

TEST_F(KitDbTest, OpenTakesTheDefaultSessionWhenNoneIsSet) {
  TVeskODACQuery* q = NewQuery();
  q->SetSession(nullptr);
  q->SQL()->SetText(u"SELECT 1 AS ONE FROM DUAL");
  q->Open();
  EXPECT_EQ(q->Session(), DefaultSession());
}

TEST_F(KitDbTest, OpenAppliesTheStatementsOwnDesignAndRefillsTheFilterList) {
  TVeskODACQuery* q = NewQuery();
  q->SQL()->SetText(u"SELECT ID, NAME FROM GOODS /*\n.Captions=Number,Title\n.Widths=0,25\n*/");
  q->Open();
  EXPECT_EQ(q->FieldByName(u"NAME")->DisplayLabel(), u"Title");
  EXPECT_FALSE(q->FieldByName(u"ID")->Visible());
  EXPECT_EQ(q->FieldByName(u"NAME")->DisplayWidth(), 25);
  EXPECT_EQ(q->ListFilts()->Count(), 2);
  EXPECT_EQ(q->ListFilts()->GetFieldIndex(u"NAME"), 1);
  // The filter code clears the refill flag around its own reopens.
  q->ListFilts()->SetFieldExpr(u"NAME", u"Ap");
  q->SetRefillListFilts(false);
  q->Close();
  q->Open();
  EXPECT_EQ(q->ListFilts()->GetFieldExpr(u"NAME"), u"Ap");
}

// ---- Resync ---------------------------------------------------------------------------

// A control that wants more rows every time the dataset changes, as a grid
// grown taller does.
class TGreedyLink : public TDataLink {
 public:
  int Wanted = 1;

 protected:
  void DataSetChanged() override {
    if (DataSet()) DataSet()->FetchUntil(Wanted);
  }
};

TEST_F(KitDbTest, ResyncReopensOnALostCursorAndStillReports) {
  TVeskODACQuery* q = NewQuery();
  q->SQL()->SetText(u"SELECT * FROM GOODS ORDER BY ID");
  q->SetFetchRows(2);
  auto* source = new TDataSource(owner_.get());
  source->SetDataSet(q);
  TGreedyLink link;
  link.SetDataSource(source);
  q->Open();
  // A rollback loses the open cursor: the engine answers ORA-01002.
  session_->StartTransaction();
  session_->Rollback();
  link.Wanted = 5;
  try {
    q->Resync(TResyncMode());
    FAIL() << "the lost cursor must be reported";
  } catch (const Exception& e) {
    EXPECT_EQ(e.Message.Pos(u"Error in qGoods.Resync():\nORA-01002"), 1) << e.Message;
  }
  EXPECT_TRUE(q->Active());
  EXPECT_EQ(q->RecordCount(), 5);
}

TEST_F(KitDbTest, ResyncPassesAnInvalidNumberInSilence) {
  Exec(u"CREATE TABLE CODES (ID INTEGER, V VARCHAR2(10))");
  Exec(u"INSERT INTO CODES VALUES (1, '10')");
  Exec(u"INSERT INTO CODES VALUES (2, '20')");
  Exec(u"INSERT INTO CODES VALUES (3, 'x30')");
  TVeskODACQuery* q = NewQuery();
  q->SQL()->SetText(u"SELECT ID, TO_NUMBER(V) AS N FROM CODES");
  q->SetFetchRows(1);
  auto* source = new TDataSource(owner_.get());
  source->SetDataSet(q);
  TGreedyLink link;
  link.SetDataSource(source);
  q->Open();
  link.Wanted = 3;
  EXPECT_NO_THROW(q->Resync(TResyncMode()));
  EXPECT_EQ(q->ViewCount(), 2);  // the third row is where the number failed
  // Any other error is reported with the component's name.
  link.Wanted = 10;
  session_->StartTransaction();
  session_->Rollback();
  EXPECT_THROW(q->Resync(TResyncMode()), Exception);
}

// ---- Single-row mode ------------------------------------------------------------------

TEST_F(KitDbTest, SingleRowLocateQueriesTheRowSought) {
  TVeskODACQuery* q = NewQuery();
  q->SQL()->SetText(u"SELECT * FROM GOODS");
  q->SetVeskXSingleRowQuery(true);
  q->Open();
  EXPECT_TRUE(q->Locate(u"ID", 3, TLocateOptions()));
  EXPECT_EQ(q->FilterSQL(), u"ID = :p__ID ");
  EXPECT_EQ(q->RecordCount(), 1);
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"Butter");
  // The same condition runs again with the new value.
  EXPECT_TRUE(q->Locate(u"ID", 5, TLocateOptions()));
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"Cheese");
  EXPECT_TRUE(q->Locate(u"CODE,NAME", VarArrayOf({u"A02", u"Apricot"}), TLocateOptions()));
  EXPECT_EQ(q->FilterSQL(), u"CODE = :p__CODE and NAME = :p__NAME ");
  EXPECT_EQ(q->FieldByName(u"ID")->AsInteger(), 2);
  EXPECT_FALSE(q->Locate(u"ID", 42, TLocateOptions()));
  // An empty cursor answers false before anything is asked.
  EXPECT_FALSE(q->Locate(u"ID", 1, TLocateOptions()));
}

TEST_F(KitDbTest, SingleRowRejectsKeysAndValuesOfDifferentCounts) {
  TVeskODACQuery* q = NewQuery();
  q->SQL()->SetText(u"SELECT * FROM GOODS");
  q->SetVeskXSingleRowQuery(true);
  try {
    q->PrepareXSingleRowQuery(u"ID;CODE", 1);
    FAIL();
  } catch (const Exception& e) {
    EXPECT_EQ(e.ClassName(), u"Exception");
    EXPECT_EQ(e.Message, u"Количество параметров не соответствует количеству условий");
  }
}

TEST_F(KitDbTest, SingleRowLookupKeepsACache) {
  TVeskODACQuery* q = NewQuery();
  q->SQL()->SetText(u"SELECT * FROM GOODS");
  q->SetVeskXSingleRowQuery(true);
  EXPECT_EQ(q->Lookup(u"CODE", u"B02", u"NAME"), Variant(u"Bread"));
  EXPECT_EQ(q->LookupCache()->Text(), u"B02=Bread\n");
  // The cache answers without the server.
  Exec(u"UPDATE GOODS SET NAME = 'Rye bread' WHERE CODE = 'B02'");
  EXPECT_EQ(q->Lookup(u"CODE", u"B02", u"NAME"), Variant(u"Bread"));
  EXPECT_TRUE(VarIsNull(q->Lookup(u"CODE", Null(), u"NAME")));
  EXPECT_TRUE(VarIsNull(q->Lookup(u"CODE", u"ZZZ", u"NAME")));
  EXPECT_EQ(q->LookupCache()->Count(), 1);
}

TEST_F(KitDbTest, SingleRowLookupCacheIsDroppedPastAThousandLines) {
  Exec(u"CREATE TABLE NUMS (N INTEGER, T VARCHAR2(10))");
  session_->StartTransaction();
  for (int i = 1; i <= 1002; ++i) Exec(u"INSERT INTO NUMS VALUES (" + IntToStr(i) + u", 't" + IntToStr(i) + u"')");
  session_->Commit();
  TVeskODACQuery* q = NewQuery();
  q->SQL()->SetText(u"SELECT * FROM NUMS");
  q->SetVeskXSingleRowQuery(true);
  for (int i = 1; i <= 1001; ++i) q->Lookup(u"N", i, u"T");
  EXPECT_EQ(q->LookupCache()->Count(), 1001);
  EXPECT_EQ(q->Lookup(u"N", 1002, u"T"), Variant(u"t1002"));
  EXPECT_EQ(q->LookupCache()->Text(), u"1002=t1002\n");
}

TEST_F(KitDbTest, LocateAndLookupEventsReplaceTheSearch) {
  TVeskODACQuery* q = OpenGoods();
  String seen;
  q->OnVESKLocateEvent = [&](const String& keys, const Variant& values, int options) {
    seen = keys + u"=" + VarToStr(values) + u"/" + IntToStr(options);
    return false;
  };
  q->OnVESKLookupEvent = [](const String&, const Variant&, const String&) { return Variant(u"from event"); };
  EXPECT_FALSE(q->Locate(u"ID", 2, TLocateOptions{loCaseInsensitive, loPartialKey}));
  EXPECT_EQ(seen, u"ID=2/11");
  EXPECT_EQ(q->Lookup(u"ID", 2, u"NAME"), Variant(u"from event"));
  // An empty dataset answers before the event.
  seen = String();
  q->Close();
  q->SQL()->SetText(u"SELECT * FROM GOODS WHERE ID < 0");
  q->Open();
  EXPECT_FALSE(q->Locate(u"ID", 2, TLocateOptions()));
  EXPECT_EQ(seen, u"");
}

// ---- Aggregates -----------------------------------------------------------------------

TEST_F(KitDbTest, ServerAggregatesOverTheStatement) {
  TVeskODACQuery* q = NewQuery();
  q->SQL()->SetText(u"SELECT * FROM GOODS WHERE PRICE < :LIMIT");
  q->ParamByName(u"LIMIT")->SetValue(5);
  q->Open();
  EXPECT_EQ(q->sgCFunc(vfSum, u"QTY", String()), u"22");
  EXPECT_EQ(q->sgCFunc(vfMin, u"PRICE", String()), u"1.2");
  EXPECT_EQ(q->sgCFunc(vfMax, u"NAME", String()), u"Butter");
  EXPECT_EQ(q->sgCFunc(vfAvg, u"QTY", u"QTY > 6"), u"8.5");
  // A client filter serves as the condition when none is given.
  q->SetFilter(u"QTY > 6");
  q->SetFiltered(true);
  EXPECT_EQ(q->sgCFunc(vfSum, u"QTY", String()), u"17");
  EXPECT_EQ(q->sgCFunc(vfSum, u"QTY", u"ID = 2"), u"5");
}

// ---- The session's say -----------------------------------------------------------------

TEST_F(KitDbTest, TheKitSessionDecidesWhetherDataMayChange) {
  auto* session = new TVeskOraSession(owner_.get());
  session->SetServer(u":memory:");
  session->Connect();
  TVeskODACQuery* q = NewQuery();
  q->SetSession(session);
  q->SQL()->SetText(u"SELECT 1 AS ONE FROM DUAL");
  q->Open();
  EXPECT_TRUE(q->CanModify());
  TObject* asked = nullptr;
  session->OnVESKReadOnlyMode = [&](TObject* sender) {
    asked = sender;
    return true;
  };
  EXPECT_FALSE(q->CanModify());
  EXPECT_EQ(asked, q);
  q->SetVeskNotReadOnly(true);
  EXPECT_TRUE(q->CanModify());
}

// ---- Refresh and position ---------------------------------------------------------------

TEST_F(KitDbTest, ServerDatasetRefreshesAfterPostAndComesBackByKey) {
  TVeskODACQuery* q = NewQuery();
  q->SetVeskSQLServer(true);
  q->SetVeskKeyFields(u"ID");
  q->SetVeskTableLive(u"GOODS");
  q->SetVeskGroupField(u"ID");
  q->Open();
  q->Locate(u"ID", 3, TLocateOptions());
  Exec(u"UPDATE GOODS SET NAME = 'Changed elsewhere' WHERE ID = 5");
  __EDIT(q);
  q->FieldByName(u"QTY")->SetAsInteger(70);
  __POST(q);
  EXPECT_EQ(q->FieldByName(u"ID")->AsInteger(), 3);
  q->Last();
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"Changed elsewhere");
  // Without a key the refresh ends on the last record.
  q->SetVeskKeyFields(String());
  q->First();
  q->RefreshQuery();
  EXPECT_EQ(q->FieldByName(u"ID")->AsInteger(), 5);
}

TEST_F(KitDbTest, RememberPosComesBackAfterRefresh) {
  TVeskODACQuery* q = OpenGoods();
  q->SetVeskRememberPos(true);
  q->SetVeskKeyFields(u"CODE,NAME");
  EXPECT_EQ(q->VeskKeyFields(), u"CODE;NAME");
  q->Locate(u"ID", 4, TLocateOptions());
  Exec(u"DELETE FROM GOODS WHERE ID = 1");
  q->Refresh();
  EXPECT_EQ(q->FieldByName(u"ID")->AsInteger(), 4);
  EXPECT_EQ(q->RecNo(), 3);
}

TEST_F(KitDbTest, SimpleRefreshRereadsOnlyTheRecord) {
  TVeskODACQuery* q = OpenGoods();
  q->SQLRefresh()->SetText(u"SELECT * FROM GOODS WHERE ID = :ID");
  q->SetVeskSimpleRefresh(true);
  Exec(u"UPDATE GOODS SET NAME = 'New' WHERE ID IN (1, 2)");
  q->RefreshQuery();
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"New");
  q->Next();
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"Apricot");
}

TEST_F(KitDbTest, MasterRecordIsRereadAfterTheDetailWrites) {
  Exec(u"CREATE TABLE LINES (LID INTEGER, DOC_ID INTEGER, AMOUNT NUMBER)");
  Exec(u"INSERT INTO LINES VALUES (1, 1, 10)");
  TVeskODACQuery* master = OpenGoods(u"qMaster");
  master->SQLRefresh()->SetText(u"SELECT * FROM GOODS WHERE ID = :ID");
  auto* source = new TDataSource(owner_.get());
  source->SetDataSet(master);
  TVeskODACQuery* detail = NewQuery(u"qLines");
  detail->SQL()->SetText(u"SELECT * FROM LINES WHERE DOC_ID = :ID");
  detail->SQLInsert()->SetText(u"INSERT INTO LINES (LID, DOC_ID, AMOUNT) VALUES (:LID, :DOC_ID, :AMOUNT)");
  detail->SQLUpdate()->SetText(u"UPDATE LINES SET AMOUNT = :AMOUNT WHERE LID = :OLD_LID");
  detail->SetDataSource(source);
  detail->SetVeskMasterRefresh(true);
  detail->Open();
  // A trigger would do this on the server; here it happens behind our back.
  Exec(u"UPDATE GOODS SET QTY = 11 WHERE ID = 1");
  __APPEND(detail);
  EXPECT_EQ(detail->FieldByName(u"DOC_ID")->AsInteger(), 1);  // taken from the master
  detail->FieldByName(u"LID")->SetAsInteger(2);
  detail->FieldByName(u"AMOUNT")->SetAsFloat(5);
  __POST(detail);
  EXPECT_EQ(Value(u"SELECT DOC_ID FROM LINES WHERE LID = 2"), u"1");
  EXPECT_EQ(master->FieldByName(u"QTY")->AsInteger(), 11);
  // The detail may opt out of the master's values.
  detail->SetVeskParamsNotCPLAfterInsert(true);
  __APPEND(detail);
  EXPECT_TRUE(detail->FieldByName(u"DOC_ID")->IsNull());
  __CANCEL(detail);
}

// ---- Summaries -----------------------------------------------------------------------

TEST_F(KitDbTest, SummariesFollowOpenPostRefreshAndClose) {
  TStatusBar* bar = NewStatusBar(owner_.get());
  TVeskODACQuery* q = NewQuery();
  q->SQL()->SetText(u"SELECT * FROM GOODS ORDER BY ID");
  q->SQLRefresh()->SetText(u"SELECT * FROM GOODS WHERE ID = :ID");
  q->XTTSummary()->SetAsText(u"PRICE\nQTY=0,count\n");
  q->SetXTTStatusBar(bar);
  int changes = 0;
  q->OnXTTChangeSum = [&](TObject* sender) { changes += sender == q; };
  q->SetXTTShowSummary(true);
  q->Open();
  EXPECT_EQ(PanelTexts(bar), u"20.55|5");
  EXPECT_EQ(changes, 1);
  __EDIT(q);
  q->FieldByName(u"PRICE")->SetAsFloat(10);
  __POST(q);
  EXPECT_EQ(PanelTexts(bar), u"28.05|5");
  __DELETE(q);
  EXPECT_EQ(PanelTexts(bar), u"18.05|4");
  // A record refresh moves the totals by the record alone.
  Exec(u"UPDATE GOODS SET PRICE = 5 WHERE ID = 2");
  q->RefreshRecord();
  q->XTTDisplaySummaries();
  EXPECT_EQ(PanelTexts(bar), u"19.05|4");
  // Unless the record is not re-read at all.
  q->SetSkipRefreshRecord(true);
  Exec(u"UPDATE GOODS SET PRICE = 6 WHERE ID = 2");
  q->RefreshRecord();
  q->XTTDisplaySummaries();
  EXPECT_EQ(PanelTexts(bar), u"19.05|4");
  q->Close();
  EXPECT_EQ(PanelTexts(bar), u"|");
}

TEST_F(KitDbTest, SummariesOffBlankTheBarAndTheScanLeavesThePositionAndGuardAlone) {
  TStatusBar* bar = NewStatusBar(owner_.get());
  TVeskODACQuery* q = OpenGoods();
  q->Locate(u"ID", 3, TLocateOptions());
  q->SetVeskMode(true);
  q->XTTSummary()->SetAsText(u"QTY=,max");
  q->SetXTTStatusBar(bar);
  q->TblToEdit(true);  // a scroll now would ask the guard, which has no handler
  q->SetXTTShowSummary(true);
  EXPECT_EQ(PanelTexts(bar), u"10.00");
  EXPECT_EQ(q->FieldByName(u"ID")->AsInteger(), 3);
  EXPECT_TRUE(q->TbliSEdit());
  q->SetXTTShowSummary(false);
  EXPECT_EQ(PanelTexts(bar), u"");
  delete StatusBarComponent(bar);
  EXPECT_EQ(q->XTTStatusBar(), nullptr);
}

// ---- Commands and the published surface ---------------------------------------------------

TEST_F(KitDbTest, CommandsArriveAsPropertyWrites) {
  TVeskODACQuery* q = NewQuery();
  q->SetVeskTableLive(u"GOODS");
  q->SetVeskGroupField(u"ID");
  q->Open();
  q->Locate(u"ID", 2, TLocateOptions());
  TDataSet* ds = q;
  SetPropInteger(ds, kDefValCmdSetCurr, q->FieldByName(u"QTY")->Index());
  ASSERT_EQ(q->DefaultValues().size(), 1u);
  EXPECT_EQ(q->DefaultValues()[0].Name, u"QTY");
  __APPEND(q);
  EXPECT_EQ(q->FieldByName(u"QTY")->AsInteger(), 5);
  __CANCEL(q);
  SetPropInteger(ds, kDefValCmdClear, 0);
  EXPECT_TRUE(q->DefaultValues().empty());
  SetPropInteger(ds, kDefValCmdSet, -1);  // no such field
  EXPECT_TRUE(q->DefaultValues().empty());

  q->SetVeskFilter(u"ID > 1");
  SetPropBool(ds, kFilterCmdClear, true);  // keep: the condition stays
  EXPECT_EQ(q->VeskFilter(), u"ID > 1");
  SetPropBool(ds, kFilterCmdClear, false);
  EXPECT_EQ(q->VeskFilter(), u"");
  EXPECT_EQ(q->RecordCount(), 5);
}

TEST_F(KitDbTest, SearchCommandsAskFindAndLeaveAMissForTheNextInsert) {
  TVeskODACQuery* q = OpenGoods();
  TKitScriptedUI ui;
  ui.ExpectInput(u"NAME:", u"bu");
  SetPropInteger(q, kSearchCmdFirst, q->FieldByName(u"NAME")->Index());
  EXPECT_EQ(q->FieldByName(u"ID")->AsInteger(), 3);
  EXPECT_EQ(q->LastSearchField(), u"NAME");
  ui.ExpectInput(u"Search:", u"b");
  SetPropInteger(q, kSearchCmdNext, 0);
  EXPECT_EQ(q->FieldByName(u"ID")->AsInteger(), 4);
  ui.ExpectInput(u"CODE:", u"X99");
  SetPropInteger(q, kSearchCmdFirst, q->FieldByName(u"CODE")->Index());
  EXPECT_EQ(q->SearchMiss().Name, u"CODE");
  EXPECT_EQ(ui.Verify(), u"");
  q->Insert();
  EXPECT_EQ(q->FieldByName(u"CODE")->AsString(), u"X99");
  EXPECT_EQ(q->SearchMiss().Name, u"");
  q->Cancel();
}

TEST_F(KitDbTest, PreviousRecordCopyCommand) {
  TVeskODACQuery* q = OpenGoods();
  q->Locate(u"ID", 3, TLocateOptions());
  q->Edit();
  SetPropInteger(q, kPrevRecCmdCopy, q->FieldByName(u"NAME")->Index());
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"Apricot");
  q->Post();
  EXPECT_EQ(Value(u"SELECT NAME FROM GOODS WHERE ID = 3"), u"Apricot");
}

TEST_F(KitDbTest, AFilteredDatasetAppendsBehindItsLastRecord) {
  TVeskODACQuery* q = OpenGoods();
  q->SetFilter(u"QTY > 4");
  q->SetFiltered(true);
  ASSERT_EQ(q->FieldByName(u"ID")->AsInteger(), 1);
  q->Append();
  q->Cancel();
  EXPECT_EQ(q->FieldByName(u"ID")->AsInteger(), 3);
}

TEST_F(KitDbTest, ClientFilterHookHasTheLastWord) {
  TVeskODACQuery* q = OpenGoods();
  q->OnVeskFilterRecord = [](TDataSet* ds, bool& accept) { accept = ds->FieldByName(u"PRICE")->AsFloat() > 3; };
  q->SetFiltered(true);
  EXPECT_EQ(q->RecordCount(), 3);
  SetPropBool(q, kFilterCmdClear, false);
  EXPECT_FALSE(q->Filtered());
  EXPECT_EQ(q->RecordCount(), 5);
}

TEST_F(KitDbTest, PublishesEveryPropertyOfTheReferenceDataset) {
  TVeskODACQuery* q = NewQuery();
  for (const char16_t* name :
       {u"VeskMode", u"VeskCom", u"VeskModeNotAbort", u"VeskModePostAuto", u"Ze5EnableScrollBeforePost",
        u"VeskRememberPos", u"VeskKeyFields", u"VeskTableLive", u"VeskAlias", u"VeskGroupField", u"VeskFilter",
        u"VeskFilterSYS", u"VeskSQL1", u"VeskSimpleRefresh", u"VeskEditRefreshNotNeed",
        u"VeskParamsNotCPLAfterInsert", u"VeskNotReadOnly", u"VeskSQLServer", u"VeskMasterRefresh",
        u"TransVeskAutoStart", u"TransVeskAutoEnd", u"TransVeskAutoEndCheck", u"TrnsVeskAutonomous", u"Version",
        u"VeskXsessionEnableIntegers", u"VeskXSingleRowQuery", u"EnableAutoConnect", u"ShowDBMSOutput",
        u"SkipRefreshRecord", u"VeskNav", u"XTTStatusBar", u"XTTShowSummary", u"XTTSummary", u"OnXTTChangeSum",
        u"OnVeskFilterRecord", u"TblBegEdit", u"TblEndEdit", u"OnInLog", u"VeskExtSearch", u"VeskExtFilter",
        u"VeskExtFilterFree", u"VeskSQLChanged", u"OnVESKLocateEvent", u"OnVESKLookupEvent", u"FilterCmdShow",
        u"FilterCmdSetExpr", u"FilterCmdClear", u"SearchCmdFirst", u"SearchCmdNext", u"DefValCmdSet",
        u"DefValCmdSetCurr", u"DefValCmdClear", u"PrevRecCmdCopy"})
    EXPECT_TRUE(IsPublishedProp(q, name)) << String(name);
  EXPECT_EQ(q->ClassName(), u"TVeskODACQuery");
  EXPECT_TRUE(q->InheritsFrom(TOraQuery::StaticClass()));

  SetPropEnum(q, u"VeskCom", dsgDelete);
  EXPECT_EQ(q->VeskCom(), dsgDelete);
  SetPropString(q, u"VeskKeyFields", u"A,B");
  EXPECT_EQ(GetPropString(q, u"VeskKeyFields"), u"A;B");
  SetPropEnum(q, u"VeskXsessionEnableIntegers", odacEIDisable);
  EXPECT_EQ(q->VeskXsessionEnableIntegers(), odacEIDisable);
  // The status bar reference takes bars only.
  TStatusBar* bar = NewStatusBar(owner_.get());
  SetPropObject(q, u"XTTStatusBar", session_);
  EXPECT_EQ(q->XTTStatusBar(), nullptr);
  SetPropObject(q, u"XTTStatusBar", StatusBarComponent(bar));
  EXPECT_EQ(q->XTTStatusBar(), bar);
  // Commands read as nothing.
  EXPECT_EQ(GetPropValue(q, u"FilterCmdShow").VarType(), varEmpty);
  // VeskSQL1 is made on first read.
  EXPECT_NE(GetPropObject(q, u"VeskSQL1"), nullptr);
}

TEST_F(KitDbTest, DataSetNameAndAliasedFieldsForMessages) {
  TVeskODACQuery* q = OpenGoods();
  EXPECT_EQ(GetDataSetName(q), u"fmTest.qGoods");
  EXPECT_EQ(FindFieldIgnoreAlias(q, u"G.NAME"), nullptr);
  q->SetVeskAlias(u"G");
  EXPECT_EQ(FindFieldIgnoreAlias(q, u"g.NAME"), q->FieldByName(u"NAME"));
  EXPECT_EQ(FindFieldIgnoreAlias(q, u"NAME"), q->FieldByName(u"NAME"));
  EXPECT_EQ(FindFieldIgnoreAlias(q, u"H.NAME"), nullptr);
  EXPECT_EQ(FindFieldIgnoreAlias(q, u".NAME"), nullptr);
  EXPECT_EQ(FindFieldIgnoreAlias(q, String()), nullptr);
  EXPECT_EQ(FindFieldIgnoreAlias(nullptr, u"NAME"), nullptr);
}

}  // namespace
