// TVeskODACSmartQuery: a full member of the family over TSmartQuery, with
// its preparation text, its property text, the editor command and the
// refresh options.
#include <gtest/gtest.h>

#include "data/veskodacsmartquerylib.h"
#include "data/veskupdater.h"
#include "platform/rtl/typinfo.h"
#include "tests/support/kitfixture.h"

namespace {

class SmartQueryTest : public KitDbTest {
 protected:
  TVeskODACSmartQuery* NewSmart(const String& name = u"sqGoods") {
    auto* q = new TVeskODACSmartQuery(owner_.get());
    q->SetName(name);
    q->SetSession(session_);
    return q;
  }
};

TEST_F(SmartQueryTest, ComposesGuardsAndWritesAsTheFamilyDoes) {
  TVeskODACSmartQuery* q = NewSmart();
  q->SQLUpdate()->SetText(u"UPDATE GOODS SET NAME = :NAME WHERE ID = :OLD_ID");
  q->SetVeskTableLive(u"GOODS");
  q->Open();
  EXPECT_EQ(q->RecordCount(), 5);
  q->SetVeskFilter(u"PRICE > 3");
  EXPECT_EQ(q->RecordCount(), 3);
  EXPECT_NE(dynamic_cast<TVeskODACSmartQueryUpdater*>(q->Updater()), nullptr);

  q->SetVeskMode(true);
  EXPECT_THROW(q->Edit(), EAbort);  // undeclared, and no property store to ask
  EXPECT_EQ(q->State(), dsBrowse);
  q->SetVeskCom(dsgEdit);
  q->Edit();
  q->FieldByName(u"NAME")->SetAsString(u"Pear");
  q->SetVeskCom(dsgPost);
  q->Post();
  EXPECT_EQ(Value(u"SELECT COUNT(*) FROM GOODS WHERE NAME = 'Pear'"), String(u"1"));
}

TEST_F(SmartQueryTest, AdditionsArePublished) {
  TVeskODACSmartQuery* q = NewSmart();
  auto* prepare = dynamic_cast<TStrings*>(GetPropObject(q, u"SQLPrepare"));
  ASSERT_NE(prepare, nullptr);
  EXPECT_EQ(prepare, q->SQLPrepare());
  SetPropBool(q, u"VeskRepairFields", true);
  EXPECT_TRUE(q->VeskRepairFields());
  EXPECT_TRUE(IsPublishedProp(q, u"EditProps"));
  EXPECT_TRUE(IsPublishedProp(q, u"EditPropsCmp"));
  EXPECT_TRUE(IsPublishedProp(q, u"EditPropsResult"));
  EXPECT_TRUE(IsPublishedProp(q, u"TrnsVeskAutonomous"));
  EXPECT_TRUE(IsPublishedProp(q, u"FilterCmdShow"));
}

TEST_F(SmartQueryTest, PropTextCarriesTheWholeDefinitionToAnotherQuery) {
  TVeskODACSmartQuery* a = NewSmart(u"a");
  a->SQL()->SetText(u"SELECT * FROM GOODS\nWHERE QTY > 0");
  a->SQLPrepare()->SetText(u"BEGIN prepare_goods; END;");
  a->SQLDelete()->SetText(u"DELETE FROM GOODS WHERE ID = :OLD_ID");
  a->SetVeskKeyFields(u"ID");
  a->SetVeskMode(true);
  String text = GetPropString(a, u"PropText");
  EXPECT_NE(text.Pos(u"SQ.SQLP"), 0);

  TVeskODACSmartQuery* b = NewSmart(u"b");
  SetPropString(b, u"PropText", text);
  EXPECT_EQ(b->SQL()->Text(), a->SQL()->Text());
  EXPECT_EQ(b->SQLPrepare()->Text(), a->SQLPrepare()->Text());
  EXPECT_EQ(b->SQLDelete()->Text(), a->SQLDelete()->Text());
  EXPECT_EQ(b->VeskKeyFields(), String(u"ID"));
  EXPECT_TRUE(b->VeskMode());
  EXPECT_EQ(b->PropText(), text);
}

// A registered editor, noting what it was opened with.
struct TEditorCall {
  TVeskODACSmartQuery* query = nullptr;
  TComponent* owner = nullptr;
  int calls = 0;
};
TEditorCall gEditorCall;

int RecordingEditor(TVeskODACSmartQuery* Query, TComponent* Owner) {
  gEditorCall.query = Query;
  gEditorCall.owner = Owner;
  ++gEditorCall.calls;
  return 3;
}

class EditPropsTest : public SmartQueryTest {
 protected:
  void SetUp() override {
    SmartQueryTest::SetUp();
    gEditorCall = TEditorCall();
    before_ = RegisterEditQueryForm(nullptr);
  }
  void TearDown() override {
    RegisterEditQueryForm(before_);
    SmartQueryTest::TearDown();
  }
  TEditQueryFormProc before_ = nullptr;
};

TEST_F(EditPropsTest, WithoutAnEditorTheCommandShowsNothingAndLeavesTheQuery) {
  TVeskODACSmartQuery* q = NewSmart();
  q->SQL()->SetText(u"SELECT * FROM GOODS");
  SetPropBool(q, u"EditProps", true);
  EXPECT_EQ(q->EditPropsResult(), 0);
  EXPECT_EQ(q->SQL()->Text(), String(u"SELECT * FROM GOODS\n"));
  EXPECT_EQ(gEditorCall.calls, 0);
}

TEST_F(EditPropsTest, TheCommandOpensTheRegisteredEditorFromEditPropsCmp) {
  TVeskODACSmartQuery* q = NewSmart();
  auto* grid = new TComponent(owner_.get());
  SetPropObject(q, u"EditPropsCmp", grid);
  ASSERT_EQ(q->EditPropsCmp(), grid);
  RegisterEditQueryForm(&RecordingEditor);
  SetPropBool(q, u"EditProps", false);  // any write runs it
  EXPECT_EQ(gEditorCall.calls, 1);
  EXPECT_EQ(gEditorCall.query, q);
  EXPECT_EQ(gEditorCall.owner, grid);
  EXPECT_EQ(GetPropInteger(q, u"EditPropsResult"), 3);

  delete grid;
  EXPECT_EQ(q->EditPropsCmp(), nullptr);
  q->SetEditProps(true);
  EXPECT_EQ(gEditorCall.owner, nullptr);
}

TEST_F(SmartQueryTest, FullRefreshFollowsTheRefreshOptions) {
  TVeskODACSmartQuery* q = NewSmart();
  q->SetRefreshOptions(TRefreshOptions{roAfterInsert});
  EXPECT_TRUE(q->FullRefresh());
  EXPECT_TRUE(q->RefreshOptions().Contains(roAfterInsert));
  SetPropValue(q, u"RefreshOptions", Variant(u"[]"));
  EXPECT_FALSE(q->FullRefresh());
  EXPECT_TRUE(q->RefreshOptions().Empty());
  SetPropValue(q, u"RefreshOptions", Variant(u"[roBeforeEdit]"));
  EXPECT_TRUE(q->FullRefresh());
}

TEST_F(SmartQueryTest, RefreshedRecordAfterAPostComesFromTheServer) {
  TVeskODACSmartQuery* q = NewSmart();
  q->SQL()->SetText(u"SELECT ID, NAME, PRICE * 2 AS DOUBLE_PRICE FROM GOODS ORDER BY ID");
  q->SQLUpdate()->SetText(u"UPDATE GOODS SET PRICE = 10 WHERE ID = :OLD_ID");
  q->SQLRefresh()->SetText(u"WHERE ID = :ID");
  q->SetRefreshOptions(TRefreshOptions{roAfterUpdate});
  q->Open();
  q->Edit();
  q->FieldByName(u"NAME")->SetAsString(u"Apple");
  q->Post();
  EXPECT_EQ(q->FieldByName(u"DOUBLE_PRICE")->AsFloat(), 20.0);
}

}  // namespace
