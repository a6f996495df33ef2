// The free functions that drive any dataset: guarded commands on datasets
// with and without the guard, the master refresh chain, names for
// messages, and the loading of controls when a dataset opens.
#include <gtest/gtest.h>

#include "data/oranavigator.h"
#include "data/veskutil.h"
#include "platform/db/datasource.h"
#include "tests/support/kitfixture.h"

namespace {

TEST_F(KitDbTest, GuardedCommandsWorkOnAPlainDataset) {
  TOraQuery* q = new TOraQuery(owner_.get());
  q->SetSession(session_);
  q->SQL()->SetText(u"SELECT * FROM GOODS ORDER BY ID");
  q->SQLUpdate()->SetText(u"UPDATE GOODS SET NAME = :NAME WHERE ID = :OLD_ID");
  q->SQLDelete()->SetText(u"DELETE FROM GOODS WHERE ID = :OLD_ID");
  q->Open();
  SetVeskCom(q, dsgEdit);  // no such property: nothing happens
  __EDIT(q);
  EXPECT_EQ(q->State(), dsEdit);
  __EDIT(q);  // already editing: nothing
  q->FieldByName(u"NAME")->SetAsString(u"Plain");
  __POST(q);
  EXPECT_EQ(Value(u"SELECT NAME FROM GOODS WHERE ID = 1"), u"Plain");
  __DELETE(q);
  EXPECT_EQ(Value(u"SELECT COUNT(*) FROM GOODS"), u"4");
}

TEST_F(KitDbTest, SetVeskComWritesTheDeclarationByName) {
  TVeskODACQuery* q = NewQuery();
  SetVeskCom(q, dsgFilter);
  EXPECT_EQ(q->VeskCom(), dsgFilter);
}

TEST_F(KitDbTest, MasterRefreshGoesUpwardWhileMastersAskForIt) {
  Exec(u"CREATE TABLE DOCS (DID INTEGER, GOOD_ID INTEGER, NOTE VARCHAR2(10))");
  Exec(u"INSERT INTO DOCS VALUES (1, 1, 'first')");
  Exec(u"CREATE TABLE LINES (LID INTEGER, DID INTEGER)");
  Exec(u"INSERT INTO LINES VALUES (1, 1)");
  TVeskODACQuery* top = OpenGoods(u"qTop");
  top->SQLRefresh()->SetText(u"SELECT * FROM GOODS WHERE ID = :ID");
  auto* topSource = new TDataSource(owner_.get());
  topSource->SetDataSet(top);
  TVeskODACQuery* docs = NewQuery(u"qDocs");
  docs->SQL()->SetText(u"SELECT * FROM DOCS WHERE GOOD_ID = :ID");
  docs->SQLRefresh()->SetText(u"SELECT * FROM DOCS WHERE DID = :DID");
  docs->SetDataSource(topSource);
  docs->Open();
  auto* docsSource = new TDataSource(owner_.get());
  docsSource->SetDataSet(docs);
  TVeskODACQuery* lines = NewQuery(u"qLines");
  lines->SQL()->SetText(u"SELECT * FROM LINES WHERE DID = :DID");
  lines->SetDataSource(docsSource);
  lines->Open();

  Exec(u"UPDATE DOCS SET NOTE = 'changed'");
  Exec(u"UPDATE GOODS SET NAME = 'changed' WHERE ID = 1");
  MasterRefresh(lines);  // docs does not ask to go on
  EXPECT_EQ(docs->FieldByName(u"NOTE")->AsString(), u"changed");
  EXPECT_EQ(top->FieldByName(u"NAME")->AsString(), u"Apple");
  docs->SetVeskMasterRefresh(true);
  MasterRefresh(lines);
  EXPECT_EQ(top->FieldByName(u"NAME")->AsString(), u"changed");
  // A master in edit is left alone.
  Exec(u"UPDATE DOCS SET NOTE = 'again'");
  docs->SQLUpdate()->SetText(u"UPDATE DOCS SET NOTE = :NOTE WHERE DID = :OLD_DID");
  docs->Edit();
  MasterRefresh(lines);
  EXPECT_EQ(docs->FieldByName(u"NOTE")->AsString(), u"changed");
  docs->Cancel();
  MasterRefresh(top);  // no master at all
}

TEST_F(KitDbTest, DataSetNamesForMessages) {
  TVeskODACQuery* named = NewQuery(u"qNamed");
  EXPECT_EQ(GetDataSetName(named), u"fmTest.qNamed");
  auto* unnamed = new TOraQuery(owner_.get());
  EXPECT_EQ(GetDataSetName(unnamed), u"fmTest.<no name>");
  TOraQuery loose(nullptr);
  loose.SetName(u"qLoose");
  EXPECT_EQ(GetDataSetName(&loose), u"qLoose");
  TComponent anonymousOwner(nullptr);
  auto* inside = new TOraQuery(&anonymousOwner);
  inside->SetName(u"qInside");
  EXPECT_EQ(GetDataSetName(inside), u"qInside");
}

// A setting control's link: loads when its dataset opens.
class TLoadingLink : public TDataLink, public TVeskOpenAware {
 public:
  int Loads = 0;
  String Seen;
  void DataSourceOpened() override {
    ++Loads;
    Seen = DataSet()->FieldByName(u"NAME")->AsString();
  }
};

TEST_F(KitDbTest, OpeningLoadsTheControlsThatAskForIt) {
  TVeskODACQuery* q = NewQuery();
  q->SQL()->SetText(u"SELECT * FROM GOODS ORDER BY ID");
  auto* first = new TDataSource(owner_.get());
  first->SetDataSet(q);
  auto* second = new TDataSource(owner_.get());
  second->SetDataSet(q);
  TLoadingLink a, b;
  TDataLink plain;
  a.SetDataSource(first);
  b.SetDataSource(second);
  plain.SetDataSource(second);
  q->Open();
  EXPECT_EQ(a.Loads, 1);
  EXPECT_EQ(b.Loads, 1);
  EXPECT_EQ(a.Seen, u"Apple");
  DataSourceOpen(nullptr);
  DataSourceOpen(first);
  EXPECT_EQ(a.Loads, 2);
}

TEST_F(KitDbTest, NavigatorActsThroughItsVisibleButtons) {
  TVeskODACQuery* q = OpenGoods();
  auto* source = new TDataSource(owner_.get());
  source->SetDataSet(q);
  auto* nav = new TOraNavigator(owner_.get());
  nav->BtnClick(nbLast);  // no data source yet
  nav->SetDataSource(source);
  nav->BtnClick(nbLast);
  EXPECT_EQ(q->FieldByName(u"ID")->AsInteger(), 5);
  nav->BtnClick(nbPrior);
  EXPECT_EQ(q->FieldByName(u"ID")->AsInteger(), 4);
  nav->SetVisibleButtons(TButtonSet{nbNext});
  nav->BtnClick(nbFirst);
  EXPECT_EQ(q->FieldByName(u"ID")->AsInteger(), 4);
  EXPECT_EQ(VarToStr(GetPropValue(nav, u"VisibleButtons")), u"[nbNext]");
  delete source;
  EXPECT_EQ(nav->DataSource(), nullptr);
}

}  // namespace
