#include "grid/gridpropcmp.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "platform/db/datasource.h"

namespace {

class GridPropCmpTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(GetGridPropCmp(), nullptr) << "a test left an active store"; }
  void TearDown() override { TGridPropCmp::SetPointer(nullptr); }
  std::unique_ptr<TGridPropCmp> Make() { return std::make_unique<TGridPropCmp>(nullptr); }
};

TEST_F(GridPropCmpTest, WithoutAStoreEverythingIsAllowed) {
  EXPECT_TRUE(TGridPropCmp::IsAdminMode());
  EXPECT_FALSE(TGridPropCmp::IsReadOnly());
  EXPECT_FALSE(TGridPropCmp::IsFlat());
  EXPECT_EQ(TGridPropCmp::DotInContChar(), u'.');
  TGridPropCmp::ClearDBMSOutput(nullptr);  // nobody to tell
  TGridPropCmp::ShowDBMSOutput(nullptr);
}

TEST_F(GridPropCmpTest, StartUpInitMakesTheActiveStore) {
  auto a = Make(), b = Make();
  a->SetStartUpInit(true);
  EXPECT_EQ(GetGridPropCmp(), a.get());
  EXPECT_EQ(TGridPropCmp::GetPointer(), a.get());
  EXPECT_TRUE(a->StartUpInit());
  EXPECT_FALSE(b->StartUpInit());
  b->SetStartUpInit(true);
  EXPECT_EQ(GetGridPropCmp(), b.get());
  EXPECT_FALSE(a->StartUpInit());
  // Writing false clears the active store, whichever it is.
  a->SetStartUpInit(false);
  EXPECT_EQ(GetGridPropCmp(), nullptr);
}

TEST_F(GridPropCmpTest, TheSwitchesReadTheActiveStore) {
  auto store = Make();
  store->SetAdminMode(false);
  store->SetReadOnly(true);
  store->SetFlat(true);
  store->SetUseDotInContChar(u',');
  EXPECT_TRUE(TGridPropCmp::IsAdminMode());  // not active yet
  store->SetStartUpInit(true);
  EXPECT_FALSE(TGridPropCmp::IsAdminMode());
  EXPECT_TRUE(TGridPropCmp::IsReadOnly());
  EXPECT_TRUE(TGridPropCmp::IsFlat());
  EXPECT_EQ(TGridPropCmp::DotInContChar(), u'.');  // the character counts only when on
  store->SetUseDotInCont(true);
  EXPECT_EQ(TGridPropCmp::DotInContChar(), u',');
  store->SetAdminMode(true);
  store->SetReadOnly(false);
  EXPECT_TRUE(TGridPropCmp::IsAdminMode());
  EXPECT_FALSE(TGridPropCmp::IsReadOnly());
}

TEST_F(GridPropCmpTest, AnyWriteOfDefaultMakesTheDefaultStore) {
  auto a = Make(), b = Make();
  a->SetDefault(false);
  EXPECT_TRUE(a->Default());
  EXPECT_EQ(TGridPropCmp::DefaultStore(), a.get());
  SetPropBool(b.get(), u"Default", true);
  EXPECT_EQ(TGridPropCmp::DefaultStore(), b.get());
  EXPECT_FALSE(a->Default());
  EXPECT_EQ(GetGridPropCmp(), nullptr);  // the default is not the active store
  b.reset();
  EXPECT_EQ(TGridPropCmp::DefaultStore(), nullptr);
}

TEST_F(GridPropCmpTest, AStoreThatGoesClearsTheActivePointer) {
  auto a = Make(), b = Make();
  a->SetStartUpInit(true);
  b.reset();
  EXPECT_EQ(GetGridPropCmp(), a.get());
  a.reset();
  EXPECT_EQ(GetGridPropCmp(), nullptr);
  EXPECT_TRUE(TGridPropCmp::IsAdminMode());
}

TEST_F(GridPropCmpTest, DbmsOutputHooksFireOnTheActiveStore) {
  auto store = Make();
  std::vector<TObject*> cleared, shown;
  store->OnClearDBMSOutput = [&](TObject* s) { cleared.push_back(s); };
  store->OnShowDBMSOutput = [&](TObject* s) { shown.push_back(s); };
  TObject sender;
  TGridPropCmp::ClearDBMSOutput(&sender);
  EXPECT_TRUE(cleared.empty());  // not active
  store->SetStartUpInit(true);
  TGridPropCmp::ClearDBMSOutput(&sender);
  TGridPropCmp::ShowDBMSOutput(&sender);
  TGridPropCmp::ShowDBMSOutput(nullptr);
  EXPECT_EQ(cleared, std::vector<TObject*>{&sender});
  EXPECT_EQ(shown, (std::vector<TObject*>{&sender, nullptr}));
  store->OnShowDBMSOutput = nullptr;
  TGridPropCmp::ShowDBMSOutput(&sender);
  EXPECT_EQ(shown.size(), 2u);
}

TEST_F(GridPropCmpTest, StateChangeImplicitCarriesTheFourArguments) {
  auto store = Make();
  TDataSet ds(nullptr);
  TDataSet* seenSet = nullptr;
  TVeskState seenRequested = dsgInactive, seenCom = dsgInactive;
  TDataSetState seenState = dsInactive;
  store->OnStateChangeImplicit = [&](TDataSet* d, TVeskState requested, TVeskState com, TDataSetState state) {
    seenSet = d;
    seenRequested = requested;
    seenCom = com;
    seenState = state;
    return requested != dsgPost;
  };
  EXPECT_TRUE(store->OnStateChangeImplicit(&ds, dsgEdit, dsgInsert, dsBrowse));
  EXPECT_EQ(seenSet, &ds);
  EXPECT_EQ(seenRequested, dsgEdit);
  EXPECT_EQ(seenCom, dsgInsert);
  EXPECT_EQ(seenState, dsBrowse);
  EXPECT_FALSE(store->OnStateChangeImplicit(&ds, dsgPost, dsgEdit, dsEdit));
  // Reached by name, as the grid family reaches it.
  TStateChangeImplicitEvent byName =
      TStateChangeImplicitEvent::FromMethod(GetPropMethod(store.get(), u"OnStateChangeImplicit"));
  EXPECT_TRUE(byName == store->OnStateChangeImplicit);
}

TEST_F(GridPropCmpTest, PublishedPropertiesAndDefaults) {
  auto store = Make();
  EXPECT_EQ(store->HighlightRowMode(), hrmShadow);
  EXPECT_EQ(GetPropEnum(store.get(), u"HighlightRowMode", -1), 1);
  EXPECT_FALSE(store->AdminMode());
  EXPECT_FALSE(store->ReadOnly());
  EXPECT_EQ(store->UseDotInContChar(), u'.');
  for (const char16_t* name :
       {u"OraSession", u"UserID", u"TableName", u"Default", u"StartUpInit", u"AdminMode", u"ReadOnly", u"Flat",
        u"DisableNumberSearch", u"HighlightRowMode", u"HighlightEdit", u"HighlightEditColor",
        u"UseDefaultDisplayFormat", u"UseDotInCont", u"UseDotInContChar", u"OraNavigator", u"Params",
        u"OnStateChangeImplicit", u"OnDblClick", u"OnInsertClick", u"OnKeyDown", u"OnDataExportToExcel",
        u"OnDataImportFromExcel", u"OnXPopUpCmpLoad", u"OnClearDBMSOutput", u"OnShowDBMSOutput",
        u"OnSelectFromList", u"OnXVeskEditClick", u"OnGridLoseFocus"})
    EXPECT_TRUE(IsPublishedProp(store.get(), name)) << String(name);
  SetPropInteger(store.get(), u"UserID", 42);
  SetPropString(store.get(), u"TableName", u"XGRIDPROP");
  SetPropBool(store.get(), u"StartUpInit", true);
  EXPECT_EQ(store->UserID(), 42);
  EXPECT_EQ(store->TableName(), u"XGRIDPROP");
  EXPECT_EQ(GetGridPropCmp(), store.get());
  store->Params()->SetText(u"DisableGridMenu=1\nOther=x");
  TStringList copy;
  copy.SetText(u"DisableGridMenu=0");
  store->SetParams(&copy);
  EXPECT_EQ(store->Params()->Values(u"DisableGridMenu"), u"0");
  EXPECT_EQ(store->Params()->Count(), 1);
}

TEST_F(GridPropCmpTest, PeersAreLetGoWhenTheyGo) {
  auto store = Make();
  auto* session = new TOraSession(nullptr);
  auto* navigator = new TOraNavigator(nullptr);
  store->SetOraSession(session);
  store->SetOraNavigator(navigator);
  EXPECT_EQ(GetPropObject(store.get(), u"OraSession"), session);
  delete session;
  EXPECT_EQ(store->OraSession(), nullptr);
  EXPECT_EQ(store->OraNavigator(), navigator);
  delete navigator;
  EXPECT_EQ(store->OraNavigator(), nullptr);
}

}  // namespace
