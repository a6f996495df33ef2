#include "data/querydoc.h"

#include <gtest/gtest.h>

#include <fstream>
#include <initializer_list>
#include <sstream>
#include <string>

#include "filter/xttsum.h"
#include "platform/db/memdataset.h"
#include "platform/rtl/stringlist.h"
#include "platform/rtl/typinfo.h"
#include "tests/support/kitfixture.h"

namespace {

String Golden(const char* name) {
  std::ifstream file(std::string(KELMAR_GOLDEN) + "/querydoc/" + name, std::ios::binary);
  EXPECT_TRUE(file.good()) << "missing golden file " << name;
  std::stringstream bytes;
  bytes << file.rdbuf();
  return String::FromUtf8(bytes.str());
}

void ExpectGolden(const String& actual, const char* name) {
  EXPECT_EQ(actual, Golden(name)) << name;
}

constexpr std::initializer_list<const char16_t*> kStatementProps = {
    u"SQL", u"SQLInsert", u"SQLUpdate", u"SQLDelete", u"SQLLock", u"SQLRefresh", u"SQLPrepare", u"VeskSQL1"};
constexpr std::initializer_list<const char16_t*> kTextProps = {u"VeskTableLive", u"VeskFilterSYS", u"VeskGroupField",
                                                                u"VeskKeyFields", u"VeskFilter",    u"VeskAlias"};
constexpr std::initializer_list<const char16_t*> kBoolProps = {
    u"VeskMode",          u"VeskEditRefreshNotNeed", u"DMLRefresh",        u"VeskModeNotAbort",
    u"VeskModePostAuto",  u"VeskParamsNotCPLAfterInsert", u"XTTShowSummary", u"VeskSimpleRefresh",
    u"VeskMasterRefresh", u"ShowDBMSOutput"};

TStrings* Statement(TDataSet* q, const char16_t* name) {
  return static_cast<TStrings*>(GetPropObject(q, name, TStrings::StaticClass()));
}

// What a document can set, read back by name, one line per value.
String State(TDataSet* q) {
  String out;
  for (const char16_t* name : kStatementProps)
    if (TStrings* lines = Statement(q, name))
      for (int i = 0; i < lines->Count(); ++i) out += String(name) + u": " + lines->Strings(i) + u"\n";
  for (const char16_t* name : kTextProps) out += String(name) + u"=" + GetPropString(q, name) + u"\n";
  for (const char16_t* name : kBoolProps) out += String(name) + u"=" + (GetPropBool(q, name) ? u"1" : u"0") + u"\n";
  if (const TPropInfo* options = GetPropInfo(q, u"RefreshOptions"))
    out += u"RefreshOptions=" + GetSetProp(q, *options) + u"\n";
  if (auto* summary = static_cast<XTTTSummaryCollection*>(GetPropObject(q, u"XTTSummary")))
  {
    TStringList items;
    items.SetText(summary->GetAsText());
    for (int i = 0; i < items.Count(); ++i) out += u"XTT: " + items.Strings(i) + u"\n";
  }
  return out;
}

class QueryDocTest : public KitDbTest {
 protected:
  // A dataset with every part of a document set; the statement is written
  // by hand after the composition so that it stays as given.
  TVeskODACQuery* FullQuery() {
    TVeskODACQuery* q = NewQuery(u"qFull");
    q->SetVeskTableLive(u"GOODS");
    q->SetVeskFilterSYS(u"PRICE > 1");
    q->SetVeskGroupField(u"NAME");
    q->SetVeskKeyFields(u"ID");
    q->VeskSQL1()->SetText(u"SELECT * FROM GOODS WHERE QTY IS NOT NULL");
    q->SetVeskFilter(u"NAME LIKE 'A%'");
    q->SQL()->SetText(u"SELECT G.*\n\nFROM GOODS G\n   \nWHERE PRICE > 3\nORDER BY G.ID");
    // The reader takes the blanks off the first "=" of a line: these have
    // none to lose, so that the document comes back as written.
    q->SQLUpdate()->SetText(u"UPDATE GOODS SET CODE=:CODE, NAME = :NAME, PRICE = :PRICE WHERE ID = :OLD_ID");
    q->SQLDelete()->SetText(u"DELETE FROM GOODS WHERE ID=:OLD_ID");
    q->SQLLock()->SetText(u"SELECT * FROM GOODS WHERE ID=:OLD_ID FOR UPDATE");
    q->SQLRefresh()->SetText(u"WHERE ID=:ID");
    q->SetVeskMode(true);
    q->SetRefreshOptions(TRefreshOptions{roAfterInsert});
    q->SetDMLRefresh(true);
    q->SetVeskModePostAuto(true);
    q->SetVeskParamsNotCPLAfterInsert(true);
    q->SetXTTShowSummary(true);
    q->SetVeskMasterRefresh(true);
    q->SetShowDBMSOutput(true);
    q->XTTSummary()->SetAsText(u"PRICE\nQTY=0,3\n");
    return q;
  }
};

// ---- Golden documents ----------------------------------------------------------

TEST_F(QueryDocTest, ReadsEveryToleranceOfTheIniReader) {
  TVeskODACQuery* q = NewQuery();
  SetVeskQueryText(q, u"Goods", Golden("tolerant.qry"));
  ExpectGolden(State(q), "tolerant.state");
  // What is left runs as it stands.
  q->Open();
  EXPECT_EQ(q->RecordCount(), 1);
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"Apple");
}

TEST_F(QueryDocTest, WritesTheGoldenDocumentAndPropertyList) {
  TVeskODACQuery* q = FullQuery();
  ExpectGolden(GetVeskQueryText(q, u"Goods"), "full.qry");
  ExpectGolden(GetPropText(q), "full.props");
}

TEST_F(QueryDocTest, GoldenDocumentAndListSetTheSameState) {
  TVeskODACQuery* fromDoc = NewQuery(u"qDoc");
  SetVeskQueryText(fromDoc, u"Goods", Golden("full.qry"));
  TVeskODACQuery* fromList = NewQuery(u"qList");
  SetPropText(fromList, Golden("full.props"));
  ExpectGolden(State(fromDoc), "full.state");
  ExpectGolden(State(fromList), "full.state");
}

// ---- Round trips ---------------------------------------------------------------

TEST_F(QueryDocTest, DocumentDatasetDocumentIsStable) {
  const String first = GetVeskQueryText(FullQuery(), u"Goods");
  TVeskODACQuery* copy = NewQuery(u"qCopy");
  SetVeskQueryText(copy, u"Goods", first);
  EXPECT_EQ(GetVeskQueryText(copy, u"Goods"), first);
  // The name is the caller's: the same definition under another name.
  const String renamed = GetVeskQueryText(copy, u"Other");
  TVeskODACQuery* again = NewQuery(u"qAgain");
  SetVeskQueryText(again, u"Other", renamed);
  EXPECT_EQ(State(again), State(copy));
}

TEST_F(QueryDocTest, ListDatasetListIsStable) {
  TStringList first;
  SaveProps(FullQuery(), &first);
  TVeskODACQuery* copy = NewQuery(u"qCopy");
  LoadProps(copy, &first);
  TStringList second;
  SaveProps(copy, &second);
  EXPECT_EQ(second.Text(), first.Text());
}

TEST_F(QueryDocTest, ListAndDocumentCarryTheSameDefinition) {
  TVeskODACQuery* source = FullQuery();
  TVeskODACQuery* viaList = NewQuery(u"qList");
  SetPropText(viaList, GetPropText(source));
  TVeskODACQuery* viaDoc = NewQuery(u"qDoc");
  SetVeskQueryText(viaDoc, u"Q", GetVeskQueryText(source, u"Q"));
  EXPECT_EQ(State(viaList), State(viaDoc));
}

TEST_F(QueryDocTest, ReadingReopensAnOpenDatasetOnTheNewStatement) {
  TVeskODACQuery* q = OpenGoods();
  ASSERT_EQ(q->RecordCount(), 5);
  SetVeskQueryText(q, u"Goods", u"[Goods.SQL]\nSELECT * FROM GOODS WHERE QTY > 5\n");
  EXPECT_TRUE(q->Active());
  EXPECT_EQ(q->RecordCount(), 2);
  SetPropText(q, u"SQ.SQL0=SELECT * FROM GOODS\nSQ.SQL1=WHERE ID = 4\n");
  EXPECT_TRUE(q->Active());
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"Bread");
}

TEST_F(QueryDocTest, ABadStatementShowsUpOnlyOnTheReopen) {
  TVeskODACQuery* closed = NewQuery(u"qClosed");
  EXPECT_NO_THROW(SetVeskQueryText(closed, u"D", u"[D.SQL]\nSELECT * FROM NO_SUCH_TABLE\n"));
  EXPECT_EQ(closed->SQL()->Text(), u"SELECT * FROM NO_SUCH_TABLE\n");

  TVeskODACQuery* open = OpenGoods(u"qOpen");
  try {
    SetVeskQueryText(open, u"D", u"[D.SQL]\nSELECT * FROM NO_SUCH_TABLE\n");
    FAIL() << "the reopen did not fail";
  } catch (const Exception& e) {
    EXPECT_TRUE(e.Message.Pos(u"opening DataSet") > 0) << e.Message;
    EXPECT_TRUE(e.Message.Pos(u"NO_SUCH_TABLE") > 0) << e.Message;
  }
  EXPECT_FALSE(open->Active());
  EXPECT_EQ(open->SQL()->Text(), u"SELECT * FROM NO_SUCH_TABLE\n");
}

TEST_F(QueryDocTest, TableLiveWithoutStatementComposesIt) {
  TVeskODACQuery* q = NewQuery();
  SetVeskQueryText(q, u"G", u"[G.Props]\nVeskTableLive=GOODS\nVeskFilterSYS=QTY > 5\nVeskGroupField=NAME\n");
  EXPECT_EQ(q->VeskTableLive(), u"GOODS");
  EXPECT_TRUE(q->SQL()->Text().Pos(u"FROM GOODS") > 0) << q->SQL()->Text();
  q->Open();
  EXPECT_EQ(q->RecordCount(), 2);
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"Apple");
}

// ---- The fall-back ----------------------------------------------------------------

TEST_F(QueryDocTest, ADocumentOfAnotherNameLeavesTheDatasetOnDual) {
  TVeskODACQuery* q = OpenGoods();
  q->SQLLock()->SetText(u"SELECT 1 FROM DUAL");
  SetVeskQueryText(q, u"Goods", u"[Stock.SQL]\nSELECT * FROM STOCK\n[Stock.Props]\nVeskMode=1\n");
  for (const char16_t* name : {u"SQLInsert", u"SQLUpdate", u"SQLDelete", u"SQLLock", u"SQLRefresh", u"VeskSQL1"})
    EXPECT_EQ(Statement(q, name)->Count(), 0) << String(name);
  EXPECT_EQ(q->SQL()->Text(), u"SELECT * FROM DUAL\n");
  EXPECT_FALSE(q->VeskMode());
  // The fall-back keeps the dataset openable: it was open, and it is.
  EXPECT_TRUE(q->Active());
  EXPECT_EQ(q->RecordCount(), 1);
}

TEST_F(QueryDocTest, BlankStatementsFallBackInBothForms) {
  TVeskODACQuery* q = NewQuery();
  SetVeskQueryText(q, u"G", u"[G.SQL]\n   \n;SELECT 1\n");
  EXPECT_EQ(q->SQL()->Text(), u"SELECT * FROM DUAL\n");
  q->SQL()->SetText(u"SELECT * FROM GOODS");
  SetPropText(q, u"SQ.SQLI=INSERT INTO GOODS (ID) VALUES (:ID)\n");
  EXPECT_EQ(q->SQL()->Text(), u"SELECT * FROM DUAL\n");
  EXPECT_EQ(q->SQLInsert()->Text(), u"INSERT INTO GOODS (ID) VALUES (:ID)\n");
}

// ---- Writing -------------------------------------------------------------------------

TEST_F(QueryDocTest, AnEmptyDatasetWritesOnlyThePropsHead) {
  TVeskODACQuery* q = new TVeskODACQuery(owner_.get());
  EXPECT_EQ(GetVeskQueryText(q, u"Empty"), u"[Empty.Props]\n\n");
  EXPECT_EQ(GetPropText(q), u"");
}

TEST_F(QueryDocTest, LossesOfTheFormatAreThoseOfTheReader) {
  TVeskODACQuery* q = NewQuery();
  q->SQL()->SetText(u"SELECT *\n;not a comment in SQL\n\n   FROM GOODS\n  WHERE NAME = 'Apple'");
  const String doc = GetVeskQueryText(q, u"G");
  // Written as it stands but for the blank line.
  EXPECT_TRUE(doc.Pos(u"[G.SQL]\nSELECT *\n;not a comment in SQL\n   FROM GOODS\n  WHERE NAME = 'Apple'\n\n") == 1)
      << doc;
  SetVeskQueryText(q, u"G", doc);
  EXPECT_EQ(q->SQL()->Text(), u"SELECT *\nFROM GOODS\nWHERE NAME='Apple'\n");
}

TEST_F(QueryDocTest, LineBreaksInAShortKeyTravelAsBlanks) {
  auto* q = new TVeskODACQuery(owner_.get());
  q->SetVeskFilterSYS(u"QTY > 1\r\nAND PRICE < 5\n[G.SQL]");
  const String doc = GetVeskQueryText(q, u"G");
  EXPECT_TRUE(doc.Pos(u"VeskFilterSYS=QTY > 1 AND PRICE < 5 [G.SQL]\n") > 0) << doc;
  EXPECT_EQ(GetPropText(q), u"SQ.SFilt=QTY > 1 AND PRICE < 5 [G.SQL]\n");
  TVeskODACQuery* copy = NewQuery(u"qCopy");
  SetVeskQueryText(copy, u"G", doc);
  EXPECT_EQ(copy->VeskFilterSYS(), u"QTY > 1 AND PRICE < 5 [G.SQL]");
}

// ---- The property list ------------------------------------------------------------

TEST_F(QueryDocTest, SavingIntoAUsedListKeepsStaleShortKeys) {
  auto* q = new TVeskODACQuery(owner_.get());
  q->SQL()->SetText(u"SELECT *\nFROM GOODS\nWHERE ID > 0");
  q->SetVeskKeyFields(u"ID");
  q->SetVeskMode(true);
  TStringList list;
  list.Add(u"Other=kept");
  SaveProps(q, &list);
  EXPECT_EQ(list.Values(u"SQ.SQL2"), u"WHERE ID > 0");

  q->SQL()->SetText(u"SELECT * FROM GOODS");
  q->SetVeskKeyFields(u"");
  q->SetVeskMode(false);
  SaveProps(q, &list);
  EXPECT_EQ(list.Text(), u"Other=kept\nSQ.SKeys=ID\nSQ.SMode=1\nSQ.SQL=SELECT * FROM GOODS\n");
}

TEST_F(QueryDocTest, ListValuesAreTakenAsTheyStand) {
  TVeskODACQuery* q = NewQuery();
  SetPropText(q, u"SQ.SMode= 1\nSQ.SMNA=1\nSQ.SMPA=true\nSQ.STbl=\nSQ.SKeys=ID,CODE\nSQ.SSQL0=SELECT 1\nSQ.SSQL2=gap\n"
                 u"SQ.XTT=PRICE=1\nSQ.ROBE=1\n");
  EXPECT_FALSE(q->VeskMode());
  EXPECT_TRUE(q->VeskModeNotAbort());
  EXPECT_FALSE(q->VeskModePostAuto());
  EXPECT_EQ(q->VeskKeyFields(), u"ID;CODE");
  EXPECT_EQ(q->VeskSQL1()->Text(), u"SELECT 1\n");
  EXPECT_EQ(q->XTTSummary()->GetAsText(), u"PRICE=1\n");
  EXPECT_EQ(q->RefreshOptions(), TRefreshOptions{roBeforeEdit});
}

TEST_F(QueryDocTest, SaveAndLoadLeaveTheUsersFilterAlone) {
  TVeskODACQuery* q = NewQuery();
  q->SetVeskTableLive(u"GOODS");
  q->SetVeskFilter(u"QTY > 5");
  const String composed = q->SQL()->Text();
  TStringList list;
  SaveProps(q, &list);
  EXPECT_EQ(list.IndexOfName(u"VeskFilter"), -1);
  LoadProps(q, &list);
  EXPECT_EQ(q->VeskFilter(), u"QTY > 5");
  EXPECT_EQ(q->SQL()->Text(), composed);
  q->Open();
  EXPECT_EQ(q->RecordCount(), 2);
}

TEST_F(QueryDocTest, RefreshOptionsAreANewSetEachTime) {
  TVeskODACQuery* q = NewQuery();
  q->SetRefreshOptions(TRefreshOptions{roAfterInsert, roAfterUpdate, roBeforeEdit});
  SetVeskQueryText(q, u"G", u"[G.Props]\nRefreshAfterUpdate=1\n");
  EXPECT_EQ(q->RefreshOptions(), TRefreshOptions{roAfterUpdate});
  TStringList empty;
  LoadProps(q, &empty);
  EXPECT_EQ(q->RefreshOptions(), TRefreshOptions());
}

// ---- Datasets outside the family --------------------------------------------------

TEST_F(QueryDocTest, APlainQueryCarriesOnlyWhatItHas) {
  auto* plain = new TOraQuery(owner_.get());
  plain->SetSession(session_);
  plain->SQL()->SetText(u"SELECT * FROM GOODS");
  plain->SQLDelete()->SetText(u"DELETE FROM GOODS WHERE ID = :OLD_ID");
  plain->SetDMLRefresh(true);
  plain->SetRefreshOptions(TRefreshOptions{roBeforeEdit});
  ExpectGolden(GetVeskQueryText(plain, u"P"), "plain.qry");
  EXPECT_EQ(GetPropText(plain), u"SQ.SQL=SELECT * FROM GOODS\nSQ.SQLD=DELETE FROM GOODS WHERE ID = :OLD_ID\n"
                                u"SQ.ROBE=1\nSQ.DMLR=1\n");

  // The family's keys fall on the floor; what it has is applied.
  plain->Open();
  SetVeskQueryText(plain, u"Goods", Golden("full.qry"));
  EXPECT_TRUE(plain->Active());
  EXPECT_EQ(plain->RecordCount(), 3);
  EXPECT_EQ(plain->SQLLock()->Text(), u"SELECT * FROM GOODS WHERE ID=:OLD_ID FOR UPDATE\n");
  EXPECT_EQ(plain->RefreshOptions(), TRefreshOptions{roAfterInsert});
  EXPECT_TRUE(plain->DMLRefresh());
  SetVeskQueryText(plain, u"Other", Golden("full.qry"));
  EXPECT_EQ(plain->SQLDelete()->Count(), 0);
  EXPECT_FALSE(plain->DMLRefresh());
  EXPECT_EQ(plain->SQL()->Text(), u"SELECT * FROM DUAL\n");
  EXPECT_TRUE(plain->Active());
}

TEST_F(QueryDocTest, ADatasetWithoutStatementsIsLeftAsItIs) {
  auto* table = new TVirtualTable(owner_.get());
  EXPECT_EQ(GetVeskQueryText(table, u"V"), u"[V.Props]\n\n");
  EXPECT_EQ(GetPropText(table), u"");
  EXPECT_NO_THROW(SetVeskQueryText(table, u"Goods", Golden("full.qry")));
  EXPECT_NO_THROW(SetPropText(table, Golden("full.props")));
  EXPECT_FALSE(table->Active());
}

TEST_F(QueryDocTest, ObjectViewTravelsInBothForms) {
  auto* q = new TVeskODACQuery(owner_.get());
  q->SetObjectView(true);
  q->SetVeskMode(true);
  const String doc = GetVeskQueryText(q, u"G");
  EXPECT_GT(doc.Pos(u"[G.Props]\nVeskMode=1\nObjectView=1\n"), 0) << doc.ToUtf8();
  EXPECT_EQ(GetPropText(q), u"SQ.SMode=1\nSQ.ObjV=1\n");
  TVeskODACQuery* copy = NewQuery(u"qCopy");
  SetVeskQueryText(copy, u"G", doc);
  EXPECT_TRUE(copy->ObjectView());
  SetPropText(copy, u"SQ.ObjV=true");
  EXPECT_FALSE(copy->ObjectView());
  SetPropText(copy, u"SQ.ObjV=1");
  EXPECT_TRUE(copy->ObjectView());
}

// ---- Bad input ----------------------------------------------------------------------

TEST_F(QueryDocTest, AnyTextIsReadWithoutHarm) {
  TVeskODACQuery* q = NewQuery();
  std::u16string binary;
  for (int i = 0; i < 4096; ++i) binary.push_back(static_cast<char16_t>((i * 7919) % 0xD800));
  EXPECT_NO_THROW(SetVeskQueryText(q, u"G", String(binary)));
  EXPECT_NO_THROW(SetPropText(q, String(binary)));
  EXPECT_EQ(q->SQL()->Text(), u"SELECT * FROM DUAL\n");

  const String longLine = StringOfChar(u'x', 10 * 1024 * 1024);
  SetVeskQueryText(q, u"G", u"[G.SQL]\nSELECT '" + longLine + u"' FROM DUAL\n[G.Props]\n" + longLine + u"\n");
  EXPECT_EQ(q->SQL()->Count(), 1);
  EXPECT_EQ(q->SQL()->Strings(0).Length(), longLine.Length() + 19);
  SetPropText(q, u"SQ.STbl=" + longLine + u"\n" + longLine);
  EXPECT_EQ(q->VeskTableLive(), longLine);

  SetVeskQueryText(q, u"G", u"[G.SQL\nSELECT 1\n[G.Props]\n=\n==1\nVeskMode\n[]\n[G.XTT]\n=\n,,,\n");
  EXPECT_FALSE(q->VeskMode());
}

}  // namespace
