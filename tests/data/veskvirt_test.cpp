// The kit's virtual table over rows read from the embedded engine: what it
// publishes and what it lacks, its open, the client-only filters, Locate
// and Lookup with their events, the search command, and the client sort.
#include "data/veskvirt.h"

#include <gtest/gtest.h>

#include <vector>

#include "data/veskfamily.h"
#include "filter/vesklocate.h"
#include "filter/vesksort.h"
#include "platform/db/datasource.h"
#include "platform/db/fields.h"
#include "platform/ui/dbgrids.h"
#include "platform/ui/forms.h"
#include "platform/ui/scriptedui.h"
#include "tests/support/kitfixture.h"

namespace {

// ---- What it has and what it lacks ----------------------------------------------------------

const char16_t* const kPresent[] = {
    u"VeskCom",          u"VeskKeyFields",     u"VeskMode",          u"VeskModeNotAbort", u"VeskModePostAuto",
    u"VeskRememberPos",  u"VeskSQLServer",     u"VeskNav",           u"Ze5EnableScrollBeforePost",
    u"OnVeskFilterRecord", u"TblBegEdit",      u"TblEndEdit",        u"OnInLog",          u"VeskExtSearch",
    u"VeskExtFilter",    u"VeskExtFilterFree", u"VeskSQLChanged",    u"XTTStatusBar",     u"XTTShowSummary",
    u"XTTSummary",       u"OnXTTChangeSum",    u"OnVESKLocateEvent", u"OnVESKLookupEvent", u"SearchCmdFirst",
    u"SearchCmdNext",    u"DefValCmdSet",      u"DefValCmdSetCurr",  u"DefValCmdClear",   u"PrevRecCmdCopy"};

const char16_t* const kAbsentBool[] = {
    u"EnableAutoConnect",  u"VeskEditRefreshNotNeed", u"VeskMasterRefresh",     u"VeskNotReadOnly",
    u"VeskParamsNotCPLAfterInsert", u"VeskSimpleRefresh", u"VeskXSingleRowQuery", u"ShowDBMSOutput",
    u"SkipRefreshRecord",  u"TransVeskAutoEnd",       u"TransVeskAutoEndCheck", u"TransVeskAutoStart",
    u"TrnsVeskAutonomous", u"FilterCmdClear"};
const char16_t* const kAbsentText[] = {u"FilterCmdSetExpr", u"FilterCmdShow", u"VeskAlias",    u"VeskFilter",
                                       u"VeskFilterSYS",    u"VeskGroupField", u"VeskTableLive"};
const char16_t* const kAbsentOther[] = {u"VeskSQL1", u"Version", u"VeskXsessionEnableIntegers"};

// Nothing that speaks SQL, no session group, no filter list.
template <class T>
concept HasComposition = requires(T& t) { t.VeskFilter(); };
template <class T>
concept HasFilterList = requires(T& t) { t.ListFilts(); };
template <class T>
concept HasFilterCommands = requires(T& t) { t.DoFilterCmdShow(String()); };
template <class T>
concept HasSingleRow = requires(T& t) { t.PrepareXSingleRowQuery(String(), Variant()); };
template <class T>
concept HasServerAggregate = requires(T& t) { t.sgCFunc(vfSum, String(), String()); };
template <class T>
concept HasLocateEvents = requires(T& t) {
  t.OnVESKLocateEvent;
  t.OnVESKLookupEvent;
};
static_assert(!HasComposition<TVeskVirt> && !HasFilterList<TVeskVirt> && !HasFilterCommands<TVeskVirt>);
static_assert(!HasSingleRow<TVeskVirt> && !HasServerAggregate<TVeskVirt> && HasLocateEvents<TVeskVirt>);

TEST(VeskVirtSurface, PublishesWhatItKeepsAndNothingThatSpeaksSQL) {
  TVeskVirt virt(nullptr);
  for (const char16_t* name : kPresent) EXPECT_TRUE(IsPublishedProp(&virt, name)) << String(name).ToUtf8();
  for (const char16_t* name : kAbsentBool) EXPECT_FALSE(IsPublishedProp(&virt, name)) << String(name).ToUtf8();
  for (const char16_t* name : kAbsentText) EXPECT_FALSE(IsPublishedProp(&virt, name)) << String(name).ToUtf8();
  for (const char16_t* name : kAbsentOther) EXPECT_FALSE(IsPublishedProp(&virt, name)) << String(name).ToUtf8();
  EXPECT_TRUE(virt.InheritsFrom(TVirtualTable::StaticClass()));
  EXPECT_EQ(GetClass(u"TVeskVirt"), TVeskVirt::StaticClass());
}

TEST(VeskVirtSurface, WritesToWhatItLacksVanish) {
  TVeskVirt virt(nullptr);
  for (const char16_t* name : kAbsentBool) {
    SetPropBool(&virt, name, true);
    EXPECT_FALSE(GetPropBool(&virt, name, false)) << String(name).ToUtf8();
  }
  for (const char16_t* name : kAbsentText) {
    SetPropString(&virt, name, u"ID=1");
    EXPECT_EQ(GetPropString(&virt, name, u"none"), u"none") << String(name).ToUtf8();
  }
  SetPropInteger(&virt, u"Version", 7);
  EXPECT_EQ(GetPropInteger(&virt, u"Version", -1), -1);
  // What it keeps takes the write.
  SetPropBool(&virt, u"VeskMode", true);
  EXPECT_TRUE(virt.VeskMode());
  SetPropString(&virt, u"VeskKeyFields", u"ID,CODE");
  EXPECT_EQ(virt.VeskKeyFields(), u"ID;CODE");
}

// ---- Over rows of the engine ------------------------------------------------------------------

// ORDERS rows, loaded into a TVeskVirt with a lookup of the goods' name and
// a calculated field:
//   ID GOODS_ID NOTE          PRICE
//   10 1        first lot     5.5
//   20 2        Second LOT    1.25
//   30 3        apple pie     9
//   40 4        (null)        (null)
//   50 9        (null)        3
class VeskVirtTest : public KitDbTest {
 protected:
  void SetUp() override {
    KitDbTest::SetUp();
    Exec(u"CREATE TABLE ORDERS (ID NUMBER(9), GOODS_ID NUMBER(9), NOTE VARCHAR2(40), PRICE NUMBER(10,2))");
    Exec(u"INSERT INTO ORDERS VALUES (10, 1, 'first lot', 5.5), (20, 2, 'Second LOT', 1.25), "
         u"(30, 3, 'apple pie', 9), (40, 4, NULL, NULL), (50, 9, NULL, 3)");
    goods_ = OpenGoods(u"qLk");
    virt_ = new TVeskVirt(owner_.get());
    virt_->SetName(u"vOrders");
    Add(new TIntegerField(virt_), u"ID", fkData);
    Add(new TIntegerField(virt_), u"GOODS_ID", fkData);
    Add(new TStringField(virt_), u"NOTE", fkData)->SetSize(40);
    Add(new TFloatField(virt_), u"PRICE", fkData);
    name_ = Add(new TStringField(virt_), u"GOODS_NAME", fkLookup);
    name_->SetKeyFields(u"GOODS_ID");
    name_->SetLookupDataSet(goods_);
    name_->SetLookupKeyFields(u"ID");
    name_->SetLookupResultField(u"NAME");
    calc_ = Add(new TStringField(virt_), u"CLC_NOTE", fkCalculated);
    virt_->OnCalcFields = [this](TDataSet*) { calc_->SetAsString(u"#" + virt_->FieldByName(u"NOTE")->AsString()); };
    TOraQuery source(nullptr);
    source.SetSession(session_);
    source.SQL()->SetText(u"SELECT ID, GOODS_ID, NOTE, PRICE FROM ORDERS ORDER BY ID");
    ASSERT_EQ(virt_->LoadFromDataSet(&source), 5);
  }
  TField* Add(TField* field, const String& name, TFieldKind kind) {
    return AddPersistentField(virt_, field, name, kind);
  }
  TField* F(const String& name) { return virt_->FieldByName(name); }
  // The IDs of the visible rows, in order.
  std::vector<int> Ids() {
    std::vector<int> ids;
    for (virt_->First(); !virt_->Eof(); virt_->Next()) ids.push_back(F(u"ID")->AsInteger());
    return ids;
  }
  using V = std::vector<int>;

  TVeskODACQuery* goods_ = nullptr;
  TVeskVirt* virt_ = nullptr;
  TField* name_ = nullptr;
  TField* calc_ = nullptr;
  TScriptedUserInterface ui_;
  TUserInterfaceScope scope_{ui_};
};

TEST_F(VeskVirtTest, HoldsTheRowsReadFromTheEngineAcrossAReopen) {
  EXPECT_EQ(Ids(), (V{10, 20, 30, 40, 50}));
  ASSERT_TRUE(virt_->Locate(u"ID", 30, TLocateOptions()));
  EXPECT_EQ(F(u"NOTE")->AsString(), u"apple pie");
  EXPECT_EQ(name_->AsString(), u"Butter");
  EXPECT_EQ(calc_->AsString(), u"#apple pie");
  EXPECT_DOUBLE_EQ(F(u"PRICE")->AsFloat(), 9.0);
  virt_->Close();
  virt_->Open();
  EXPECT_EQ(Ids(), (V{10, 20, 30, 40, 50}));
  EXPECT_EQ(ui_.Verify(), u"");
}

TEST_F(VeskVirtTest, OpenSetsUpTheFieldsAndForgetsAFailedSearch) {
  virt_->Close();
  // A companion made at run time takes its Origin from the field it shows.
  calc_->SetOrigin(String());
  virt_->Open();
  EXPECT_EQ(calc_->Origin(), u"NOTE");
  // The field a failed search left for the next insert is forgotten.
  EXPECT_FALSE(virt_->locate(F(u"NOTE"), u"no such note", false));
  EXPECT_EQ(virt_->SearchMiss().Name, u"NOTE");
  virt_->Close();
  virt_->Open();
  EXPECT_EQ(virt_->SearchMiss().Name, u"");
  EXPECT_EQ(ui_.Verify(), u"");
}

TEST_F(VeskVirtTest, LocateAndLookupRunInMemoryWithoutEvents) {
  EXPECT_TRUE(virt_->Locate(u"NOTE", u"SECOND", TLocateOptions{loCaseInsensitive, loPartialKey}));
  EXPECT_EQ(F(u"ID")->AsInteger(), 20);
  EXPECT_FALSE(virt_->Locate(u"NOTE", u"SECOND", TLocateOptions{loPartialKey}));
  EXPECT_TRUE(virt_->Locate(u"GOODS_ID;PRICE", VarArrayOf({9, 3}), TLocateOptions()));
  EXPECT_EQ(F(u"ID")->AsInteger(), 50);
  EXPECT_EQ(virt_->Lookup(u"ID", 30, u"NOTE").AsString(), u"apple pie");
  EXPECT_TRUE(virt_->Lookup(u"ID", 99, u"NOTE").IsNull());
  // The kit's general search walks the same rows.
  EXPECT_TRUE(Locate(virt_, u"NOTE", u"first", TVeskLocateOption{vloPartialKey}));
  EXPECT_EQ(F(u"ID")->AsInteger(), 10);
  EXPECT_TRUE(Locate(virt_, u"GOODS_NAME", u"bread", TVeskLocateOption{vloCaseInsensitive}));
  EXPECT_EQ(F(u"ID")->AsInteger(), 40);
}

TEST_F(VeskVirtTest, TheEventsDecideLocateAndLookup) {
  std::vector<int> codes;
  String keys;
  virt_->OnVESKLocateEvent = [&](const String& KeyFields, const Variant& KeyValues, int Options) {
    codes.push_back(Options);
    keys = KeyFields + u"=" + VarToStr(KeyValues);
    return KeyValues.AsString() == u"yes";
  };
  virt_->OnVESKLookupEvent = [&](const String& KeyFields, const Variant&, const String& ResultFields) {
    return Variant(KeyFields + u"->" + ResultFields);
  };
  EXPECT_TRUE(virt_->Locate(u"NOTE", u"yes", TLocateOptions()));
  EXPECT_EQ(keys, u"NOTE=yes");
  // The event is the whole answer: the rows are not searched.
  EXPECT_FALSE(virt_->Locate(u"NOTE", u"apple pie", TLocateOptions{loCaseInsensitive}));
  virt_->Locate(u"NOTE", u"x", TLocateOptions{loPartialKey});
  virt_->Locate(u"NOTE", u"x", TLocateOptions{loCaseInsensitive, loPartialKey});
  EXPECT_EQ(codes, (V{0, 1, 10, 11}));
  EXPECT_EQ(virt_->Lookup(u"ID", 30, u"NOTE").AsString(), u"ID->NOTE");
  // An empty table answers false before the event is asked.
  virt_->Clear();
  EXPECT_FALSE(virt_->Locate(u"NOTE", u"yes", TLocateOptions()));
  EXPECT_EQ(codes.size(), 4u);
}

TEST_F(VeskVirtTest, ASearchOnAnEmptyTableIsFalseWithNoDialogue) {
  virt_->Clear();
  EXPECT_FALSE(virt_->locate(F(u"NOTE"), u"apple", false));
  EXPECT_FALSE(Locate(virt_, u"NOTE", u"apple", TVeskLocateOption{vloPartialKey}));
  EXPECT_EQ(ui_.Verify(), u"");
  EXPECT_TRUE(ui_.Shown().empty());
}

TEST_F(VeskVirtTest, TheSearchCommandAsksAndFinds) {
  ui_.ExpectInputQuery(u"Search:", u"APPLE");
  SetPropInteger(virt_, u"SearchCmdFirst", F(u"NOTE")->Index());
  EXPECT_EQ(F(u"ID")->AsInteger(), 30);
  EXPECT_EQ(virt_->LastSearchField(), u"NOTE");
  EXPECT_EQ(virt_->LastSearchValue(), u"APPLE");
  EXPECT_EQ(ui_.Verify(), u"");
}

// ---- Client-only filters ----------------------------------------------------------------------

TEST_F(VeskVirtTest, TextFieldsFilterByTheSearchFieldList) {
  EXPECT_TRUE(virt_->setFilter(F(u"NOTE"), u"lot", false, nullptr));
  EXPECT_EQ(Ids(), (V{10, 20}));
  EXPECT_EQ(virt_->getSF(u"NOTE"), u"lot");
  EXPECT_EQ(GetSF(virt_, u"NOTE"), u"lot");
  EXPECT_EQ(virt_->Filter(), u"");
  EXPECT_TRUE(virt_->Filtered());
  // An empty value takes the field's condition away again.
  EXPECT_TRUE(virt_->setFilter(F(u"NOTE"), String(), false, nullptr));
  EXPECT_EQ(virt_->GetIndexSF(u"NOTE"), -1);
  EXPECT_EQ(Ids(), (V{10, 20, 30, 40, 50}));
  EXPECT_EQ(ui_.Verify(), u"");
}

TEST_F(VeskVirtTest, OtherDataFieldsFilterByTheFilterText) {
  EXPECT_TRUE(virt_->setFilter(F(u"ID"), u"20", false, nullptr));
  EXPECT_EQ(Ids(), (V{20}));
  EXPECT_NE(virt_->Filter().Pos(u"20"), 0);
  EXPECT_EQ(virt_->GetIndexSF(u"ID"), -1);
  virt_->freeFilters(false);
  EXPECT_TRUE(virt_->setFilter(F(u"GOODS_ID"), u"1,9", true, nullptr));
  EXPECT_EQ(Ids(), (V{10, 50}));
}

TEST_F(VeskVirtTest, ServerSwitchLeavesTheRouteOnTheClient) {
  virt_->SetVeskSQLServer(true);
  EXPECT_TRUE(virt_->setFilter(F(u"ID"), u"20", false, nullptr));
  EXPECT_EQ(Ids(), (V{20}));
  EXPECT_TRUE(ui_.Shown().empty());
}

TEST_F(VeskVirtTest, AFailingFilterBringsTheOldOneBack) {
  virt_->SetFilter(u"ID > 10");
  virt_->OnVeskFilterRecord = [](TDataSet*, bool&) { throw EDatabaseError(u"the record test failed"); };
  try {
    virt_->setFilter(F(u"NOTE"), u"lot", false, nullptr);
    FAIL() << "the failing record test went unnoticed";
  } catch (const Exception& e) {
    EXPECT_EQ(e.Message, u"Invalid filter: \nthe record test failed\nRestored old filter: ID > 10");
  }
  EXPECT_EQ(virt_->Filter(), u"ID > 10");
  EXPECT_FALSE(virt_->Filtered());
  EXPECT_EQ(Ids(), (V{10, 20, 30, 40, 50}));
}

TEST_F(VeskVirtTest, LookupFieldsFilterByTheLookupList) {
  EXPECT_TRUE(virt_->setFilter(name_, u"apr", false, nullptr));
  EXPECT_EQ(Ids(), (V{20}));
  EXPECT_EQ(virt_->getLF(u"GOODS_ID"), u"apr");
  EXPECT_EQ(GetLF(virt_, u"GOODS_ID"), u"apr");
  EXPECT_TRUE(virt_->setFilter(name_, String(), false, nullptr));
  EXPECT_EQ(Ids(), (V{10, 20, 30, 40, 50}));
}

TEST_F(VeskVirtTest, CalculatedFieldsLeaveTheFilterToTheApplication) {
  int asked = 0;
  virt_->VeskExtFilter = [&](TObject* sender) {
    EXPECT_EQ(sender, virt_);
    ++asked;
  };
  virt_->SetFilter(u"ID > 10");
  EXPECT_TRUE(virt_->setFilter(calc_, u"#apple", false, nullptr));
  EXPECT_EQ(asked, 1);
  EXPECT_EQ(virt_->Filter(), u"ID > 10");
  EXPECT_EQ(virt_->FilterLists().CountSF(), 0);
}

TEST_F(VeskVirtTest, FreeFiltersRestoresTheOwnFilterAndKeepsNoServerState) {
  virt_->SetFilter(u"ID > 10");
  virt_->SetFiltered(true);
  int freed = 0;
  virt_->VeskExtFilterFree = [&](TObject*) { ++freed; };
  ASSERT_TRUE(virt_->setFilter(F(u"NOTE"), u"e", false, nullptr));
  ASSERT_TRUE(virt_->setFilter(name_, u"b", false, nullptr));
  ASSERT_TRUE(virt_->setFilter(F(u"PRICE"), u"9", false, nullptr));
  EXPECT_EQ(Ids(), (V{30}));
  // Keep: the lists go, the filter text stays.
  virt_->freeFilters(true);
  EXPECT_EQ(virt_->FilterLists().CountSF() + virt_->FilterLists().CountLF(), 0);
  EXPECT_EQ(freed, 0);
  EXPECT_NE(virt_->Filter(), u"ID > 10");
  virt_->freeFilters(false);
  EXPECT_EQ(virt_->Filter(), u"ID > 10");
  EXPECT_TRUE(virt_->Filtered());
  EXPECT_EQ(freed, 1);
  EXPECT_EQ(Ids(), (V{20, 30, 40, 50}));
}

TEST_F(VeskVirtTest, ACloseDropsTheKitsFilters) {
  ASSERT_TRUE(virt_->setFilter(F(u"NOTE"), u"lot", false, nullptr));
  ASSERT_TRUE(virt_->setFilter(F(u"ID"), u"10", false, nullptr));
  virt_->Close();
  virt_->Open();
  EXPECT_EQ(virt_->FilterLists().CountSF(), 0);
  EXPECT_EQ(virt_->Filter(), u"");
  EXPECT_EQ(Ids(), (V{10, 20, 30, 40, 50}));
  // The next condition starts afresh instead of joining the old text.
  ASSERT_TRUE(virt_->setFilter(F(u"ID"), u"40", false, nullptr));
  EXPECT_EQ(Ids(), (V{40}));
}

// The grid's filter with no value asks through the registered client
// dialogue; the find/filter form never opens, as there is no filter list.
bool PickPie(TClientFilterQuery& query) {
  query.Field = query.DataSet->FieldByName(u"NOTE");
  query.Value = u"PIE";
  return true;
}
bool CancelPick(TClientFilterQuery&) { return false; }

TEST_F(VeskVirtTest, AGridFilterWithNoValueAsksTheClientDialogue) {
  TComponent grid(nullptr);
  TClientFilterDialogue previous = RegisterClientFilterDialogue(&CancelPick);
  EXPECT_TRUE(virt_->setFilter(F(u"ID"), String(), true, &grid));
  EXPECT_EQ(Ids(), (V{10, 20, 30, 40, 50}));
  RegisterClientFilterDialogue(&PickPie);
  EXPECT_TRUE(virt_->setFilter(F(u"ID"), String(), true, &grid));
  RegisterClientFilterDialogue(previous);
  EXPECT_EQ(Ids(), (V{30}));
  EXPECT_EQ(virt_->getSF(u"NOTE"), u"PIE");
  EXPECT_EQ(ui_.Verify(), u"");
  EXPECT_TRUE(ui_.Shown().empty());
}

TEST_F(VeskVirtTest, TheFilterCommandsOfQueriesDoNothingHere) {
  ASSERT_TRUE(virt_->setFilter(F(u"NOTE"), u"lot", false, nullptr));
  SetPropString(virt_, u"FilterCmdShow", u"NOTE");
  SetPropString(virt_, u"FilterCmdSetExpr", u"ID=30");
  SetPropBool(virt_, u"FilterCmdClear", false);
  EXPECT_EQ(Ids(), (V{10, 20}));
  EXPECT_EQ(virt_->getSF(u"NOTE"), u"lot");
  EXPECT_TRUE(ui_.Shown().empty());
}

// ---- The client sort ------------------------------------------------------------------------

TEST_F(VeskVirtTest, SortsWithTheGuardOnWithoutAskingAndTheModeReturns) {
  virt_->SetVeskMode(true);
  ASSERT_TRUE(virt_->Locate(u"ID", 10, TLocateOptions()));
  VeskSort(virt_, u"PRICE", false);
  EXPECT_TRUE(virt_->VeskMode());
  EXPECT_EQ(virt_->VeskCom(), dsgInactive);
  EXPECT_EQ(Ids(), (V{40, 20, 50, 10, 30}));
  VeskSort(virt_, u"NOTE", true);
  // Texts by their code units, nulls first; the reverse keeps no tie order.
  EXPECT_EQ(Ids(), (V{10, 30, 20, 50, 40}));
  // Every field travels with its row; lookups and calculations follow.
  ASSERT_TRUE(virt_->Locate(u"ID", 30, TLocateOptions()));
  EXPECT_EQ(F(u"GOODS_ID")->AsInteger(), 3);
  EXPECT_EQ(name_->AsString(), u"Butter");
  EXPECT_EQ(calc_->AsString(), u"#apple pie");
  // The guard still holds after the sort.
  EXPECT_THROW(virt_->Edit(), EAbort);
  EXPECT_EQ(ui_.Verify(), u"");
}

TEST_F(VeskVirtTest, SortingAFilteredTableKeepsTheHiddenRows) {
  ASSERT_TRUE(virt_->setFilter(F(u"NOTE"), u"lot", false, nullptr));
  ASSERT_EQ(Ids(), (V{10, 20}));
  VeskSort(virt_, u"PRICE", false);
  EXPECT_EQ(Ids(), (V{20, 10}));
  EXPECT_TRUE(virt_->Filtered());
  virt_->freeFilters(false);
  EXPECT_EQ(Ids(), (V{40, 20, 50, 10, 30}));
}

TEST_F(VeskVirtTest, SortingComputesTheSummariesOnce) {
  int computed = 0;
  virt_->OnXTTChangeSum = [&](TObject*) { ++computed; };
  virt_->SetXTTShowSummary(true);
  ASSERT_EQ(computed, 1);
  VeskSort(virt_, u"PRICE", true);
  EXPECT_EQ(computed, 2);
  EXPECT_TRUE(virt_->XTTShowSummary());
  EXPECT_EQ(Ids(), (V{30, 10, 50, 20, 40}));
}

TEST_F(VeskVirtTest, SortingThroughAGridKeepsItsColumn) {
  TForm form(nullptr);
  TDataSource source(nullptr);
  source.SetDataSet(virt_);
  auto* grid = new TDBGrid(&form);
  grid->SetParent(&form);
  grid->SetDataSource(&source);
  grid->SetSelectedIndex(3);
  ASSERT_TRUE(virt_->Locate(u"ID", 50, TLocateOptions()));
  VeskSort(grid, u"PRICE", true);
  EXPECT_EQ(grid->SelectedIndex(), 3);
  EXPECT_EQ(F(u"ID")->AsInteger(), 50);
  EXPECT_EQ(Ids(), (V{30, 10, 50, 20, 40}));
  grid->SetDataSource(nullptr);
}

}  // namespace
