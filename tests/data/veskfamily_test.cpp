// The members of the dataset family on the embedded engine: what each one
// publishes and lacks, the guard and the guarded commands on each, SQL
// composition where a member has it, the table member's lookup search and
// ditto, and the navigator binding.
#include <gtest/gtest.h>

#include <type_traits>

#include "data/oranavigator.h"
#include "data/veskfamily.h"
#include "data/veskodacsmartquerylib.h"
#include "data/veskutil.h"
#include "grid/gridpropcmp.h"
#include "platform/db/datasource.h"
#include "tests/support/kitfixture.h"

namespace {

// ---- The published surface -------------------------------------------------------------------

// How a property of the table of groups is written and read back by name.
enum TPropKind { pkText, pkBool, pkInt, pkEnum, pkMethod, pkObject, pkCommand, pkReadOnly };

struct TProp {
  const char16_t* Name;
  TPropKind Kind;
};

const std::vector<TProp> kCommon = {
    {u"VeskMode", pkBool}, {u"VeskCom", pkEnum}, {u"VeskModeNotAbort", pkBool}, {u"VeskModePostAuto", pkBool},
    {u"Ze5EnableScrollBeforePost", pkBool}, {u"VeskRememberPos", pkBool}, {u"VeskKeyFields", pkText},
    {u"VeskSQLServer", pkBool}, {u"VeskNav", pkObject}, {u"TblBegEdit", pkMethod}, {u"TblEndEdit", pkMethod},
    {u"OnInLog", pkMethod}, {u"OnVeskFilterRecord", pkMethod}, {u"VeskExtSearch", pkMethod},
    {u"VeskExtFilter", pkMethod}, {u"VeskExtFilterFree", pkMethod}, {u"VeskSQLChanged", pkMethod},
    {u"XTTStatusBar", pkObject}, {u"XTTShowSummary", pkBool}, {u"XTTSummary", pkObject},
    {u"OnXTTChangeSum", pkMethod}, {u"SearchCmdFirst", pkCommand}, {u"SearchCmdNext", pkCommand},
    {u"DefValCmdSet", pkCommand}, {u"DefValCmdSetCurr", pkCommand}, {u"DefValCmdClear", pkCommand},
    {u"PrevRecCmdCopy", pkCommand}};
const std::vector<TProp> kComposition = {
    {u"VeskTableLive", pkText}, {u"VeskAlias", pkText}, {u"VeskGroupField", pkText}, {u"VeskFilter", pkText},
    {u"VeskFilterSYS", pkText}, {u"VeskSQL1", pkObject}, {u"VeskSimpleRefresh", pkBool},
    {u"VeskEditRefreshNotNeed", pkBool}, {u"VeskParamsNotCPLAfterInsert", pkBool}, {u"FilterCmdShow", pkCommand},
    {u"FilterCmdSetExpr", pkCommand}, {u"FilterCmdClear", pkCommand}};
const std::vector<TProp> kSession = {
    {u"VeskNotReadOnly", pkBool}, {u"TransVeskAutoStart", pkBool}, {u"TransVeskAutoEnd", pkBool},
    {u"TransVeskAutoEndCheck", pkBool}, {u"TrnsVeskAutonomous", pkBool}, {u"Version", pkInt},
    {u"VeskXsessionEnableIntegers", pkEnum}, {u"VeskXSingleRowQuery", pkBool}, {u"EnableAutoConnect", pkBool},
    {u"VeskMasterRefresh", pkBool}, {u"ShowDBMSOutput", pkBool}, {u"SkipRefreshRecord", pkBool}};
const std::vector<TProp> kLocate = {{u"OnVESKLocateEvent", pkMethod}, {u"OnVESKLookupEvent", pkMethod}};
const std::vector<TProp> kOracle = {{u"ObjectView", pkBool}};
const std::vector<TProp> kSmart = {{u"SQLPrepare", pkObject}, {u"PropText", pkText},
                                   {u"EditProps", pkCommand}, {u"EditPropsCmp", pkObject},
                                   {u"EditPropsResult", pkReadOnly}, {u"VeskRepairFields", pkBool}};

struct TSurface {
  const char16_t* ClassName;
  bool Composition, Session, Locate, Smart, Oracle;
};

// The table of groups, member by member; Oracle: an ODAC base class.
const TSurface kSurfaces[] = {
    {u"TVeskODACQuery", true, true, true, false, true},
    {u"TVeskODACSmartQuery", true, true, true, true, true},
    {u"TVeskODACTableQuery", true, true, true, false, true},
    {u"TVeskODACNNTab", false, false, false, false, true},
    {u"TVeskODACProc", false, false, false, false, true},
    {u"TVeskQuery1", true, false, false, false, false},
    {u"TVeskTable1", false, false, false, false, false},
    {u"TVeskVirt", false, false, true, false, false},
};

// An event of the property's own type, so that the protocol takes it.
TMethod EventFor(const String& name) {
  if (name == u"TblBegEdit" || name == u"TblEndEdit") return TMyEvent2([] {}).ToMethod();
  if (name == u"OnInLog") return TLogEvent([](TObject*, const String&, const String&) {}).ToMethod();
  if (name == u"OnVeskFilterRecord") return TFilterRecordEvent([](TDataSet*, bool&) {}).ToMethod();
  if (name == u"VeskSQLChanged") return TVeskSQLChangedEvent([](TObject*, int) {}).ToMethod();
  if (name == u"OnVESKLocateEvent")
    return TVESKLocateEvent([](const String&, const Variant&, int) { return true; }).ToMethod();
  if (name == u"OnVESKLookupEvent")
    return TVESKLookupEvent([](const String&, const Variant&, const String&) { return Variant(); }).ToMethod();
  return TNotifyEvent([](TObject*) {}).ToMethod();
}

// A property the member has: published, of its kind, and a write by name
// is read back by name.
void ExpectHeld(TComponent* m, const TProp& p) {
  SCOPED_TRACE(String(p.Name).ToUtf8());
  const TPropInfo* info = GetPropInfo(m, p.Name);
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->Writable(), p.Kind != pkReadOnly);
  EXPECT_EQ(info->Readable(), p.Kind != pkCommand);
  switch (p.Kind) {
    case pkText:
      if (String(p.Name) == u"PropText") {
        SetPropString(m, p.Name, u"SQ.STbl=GOODS\nSQ.SMode=1\n");
        EXPECT_EQ(GetPropString(m, u"VeskTableLive"), u"GOODS");
        EXPECT_TRUE(GetPropBool(m, u"VeskMode"));
        EXPECT_GT(GetPropString(m, p.Name).Pos(u"SQ.STbl=GOODS\n"), 0);
      } else {
        SetPropString(m, p.Name, u"X_" + String(p.Name));
        EXPECT_EQ(GetPropString(m, p.Name, u"none"), u"X_" + String(p.Name));
      }
      break;
    case pkBool:
      EXPECT_TRUE(info->IsBoolean());
      SetPropBool(m, p.Name, true);
      EXPECT_TRUE(GetPropBool(m, p.Name, false));
      SetPropBool(m, p.Name, false);
      EXPECT_FALSE(GetPropBool(m, p.Name, true));
      break;
    case pkInt:
      SetPropInteger(m, p.Name, 7);
      EXPECT_EQ(GetPropInteger(m, p.Name, -1), 7);
      break;
    case pkEnum:
      EXPECT_TRUE(IsPropType(m, p.Name, tkEnumeration));
      SetPropEnum(m, p.Name, 2);
      EXPECT_EQ(GetPropEnum(m, p.Name, -1), 2);
      break;
    case pkMethod: {
      const TMethod event = EventFor(p.Name);
      SetPropMethod(m, p.Name, event);
      EXPECT_TRUE(GetPropMethod(m, p.Name) == event);
      SetPropMethod(m, p.Name, TMethod());
      EXPECT_FALSE(GetPropMethod(m, p.Name).Assigned());
      break;
    }
    case pkObject:
      EXPECT_TRUE(IsPropType(m, p.Name, tkClass));
      break;
    case pkCommand:
    case pkReadOnly:
      break;
  }
}

// A property the member lacks: not published, and whatever is written by
// name vanishes.
void ExpectAbsent(TComponent* m, const TProp& p) {
  SCOPED_TRACE(String(p.Name).ToUtf8());
  EXPECT_FALSE(IsPublishedProp(m, p.Name));
  SetPropString(m, p.Name, u"x");
  SetPropBool(m, p.Name, true);
  SetPropInteger(m, p.Name, 7);
  SetPropMethod(m, p.Name, EventFor(p.Name));
  EXPECT_EQ(GetPropString(m, p.Name, u"none"), u"none");
  EXPECT_FALSE(GetPropBool(m, p.Name, false));
  EXPECT_EQ(GetPropInteger(m, p.Name, -1), -1);
  EXPECT_FALSE(GetPropMethod(m, p.Name).Assigned());
  EXPECT_EQ(GetPropObject(m, p.Name), nullptr);
}

// The groups that are methods rather than properties.
template <class T>
concept HasComposition = requires(T& t) {
  t.RefreshQuery();
  t.FillDetailFieldsFromMaster(nullptr);
};
template <class T>
concept HasSessionGroup = requires(T& t) { t.CheckLockMode(); };
template <class T>
concept HasCFunc = requires(T& t) { t.sgCFunc(vfSum, String(), String()); };
template <class T>
concept HasTableAdditions = requires(T& t, Variant& key) {
  t.runLookUpSQL(nullptr, String(), false, key);
  t.setTDitto(nullptr);
};
static_assert(HasComposition<TVeskODACTableQuery> && HasSessionGroup<TVeskODACTableQuery> &&
              HasCFunc<TVeskODACTableQuery> && TVeskODACTableQuery::TTraits::Updater);
static_assert(!HasComposition<TVeskODACNNTab> && !HasSessionGroup<TVeskODACNNTab> && !HasCFunc<TVeskODACNNTab> &&
              !TVeskODACNNTab::TTraits::Updater);
static_assert(!HasComposition<TVeskODACProc> && !HasSessionGroup<TVeskODACProc> && !HasCFunc<TVeskODACProc>);
static_assert(HasComposition<TVeskQuery1> && !HasSessionGroup<TVeskQuery1> && !HasCFunc<TVeskQuery1>);
static_assert(!HasComposition<TVeskTable1> && !HasSessionGroup<TVeskTable1> && HasCFunc<TVeskTable1> &&
              HasTableAdditions<TVeskTable1>);
static_assert(!HasComposition<TVeskVirt> && !HasSessionGroup<TVeskVirt> && !HasCFunc<TVeskVirt>);
static_assert(HasComposition<TVeskODACSmartQuery> && HasSessionGroup<TVeskODACSmartQuery> &&
              HasCFunc<TVeskODACSmartQuery> && TVeskODACSmartQuery::TTraits::Updater);
static_assert(HasComposition<TVeskODACQuery> && HasSessionGroup<TVeskODACQuery> && HasCFunc<TVeskODACQuery> &&
              TVeskODACQuery::TTraits::Updater);
static_assert(!HasTableAdditions<TVeskODACTableQuery> && !HasTableAdditions<TVeskVirt> &&
              !HasTableAdditions<TVeskODACSmartQuery>);

TEST(VeskFamilyTest, EveryRowOfTheTableOfGroupsHoldsByName) {
  TComponent owner(nullptr);
  for (const TSurface& s : kSurfaces) {
    SCOPED_TRACE(String(s.ClassName).ToUtf8());
    TClass cls = GetClass(s.ClassName);
    ASSERT_NE(cls, nullptr);
    TComponent* m = cls->CreateComponent(&owner);
    ASSERT_NE(m, nullptr);
    EXPECT_EQ(m->ClassName(), String(s.ClassName));
    EXPECT_TRUE(m->InheritsFrom(TDataSet::StaticClass()));
    auto check = [&](const std::vector<TProp>& group, bool has) {
      for (const TProp& p : group) has ? ExpectHeld(m, p) : ExpectAbsent(m, p);
    };
    check(kCommon, true);
    check(kComposition, s.Composition);
    check(kSession, s.Session);
    check(kLocate, s.Locate);
    check(kSmart, s.Smart);
    check(kOracle, s.Oracle);
    // A "," in the key list becomes ";" on every member.
    SetPropString(m, u"VeskKeyFields", u"ID,CODE");
    EXPECT_EQ(GetPropString(m, u"VeskKeyFields"), u"ID;CODE");
    // The filter commands reach the composition where there is one.
    if (s.Composition) {
      SetPropString(m, u"VeskFilter", u"ID = 1");
      SetPropBool(m, u"FilterCmdClear", false);
      EXPECT_EQ(GetPropString(m, u"VeskFilter", u"none"), u"");
    }
  }
}

TEST_F(KitDbTest, LocateAndLookupEventsSetByNameDecideAndMayCallTheOrdinaryOnes) {
  TVeskODACQuery* q = OpenGoods();
  int locates = 0, lookups = 0;
  // Each handler counts the call and hands it to the dataset, whose nested
  // call is the ordinary search.
  TVESKLocateEvent locate = [&](const String& keys, const Variant& values, int) {
    ++locates;
    return q->Locate(keys, values, TLocateOptions());
  };
  TVESKLookupEvent lookup = [&](const String& keys, const Variant& values, const String& result) {
    ++lookups;
    return Variant(u"<" + VarToStr(q->Lookup(keys, values, result)) + u">");
  };
  SetPropMethod(q, u"OnVESKLocateEvent", locate.ToMethod());
  SetPropMethod(q, u"OnVESKLookupEvent", lookup.ToMethod());
  EXPECT_TRUE(q->Locate(u"ID", 2, TLocateOptions()));
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"Apricot");
  EXPECT_FALSE(q->Locate(u"ID", 99, TLocateOptions()));
  EXPECT_EQ(locates, 2);
  EXPECT_EQ(VarToStr(q->Lookup(u"ID", 3, u"NAME")), u"<Butter>");
  EXPECT_EQ(lookups, 1);
  // A handler that fails leaves the dataset able to use its event again.
  TVESKLocateEvent failing = [&](const String&, const Variant&, int) -> bool {
    ++locates;
    throw Exception(u"no search now");
  };
  q->OnVESKLocateEvent = failing;
  EXPECT_THROW(q->Locate(u"ID", 1, TLocateOptions()), Exception);
  q->OnVESKLocateEvent = locate;
  EXPECT_TRUE(q->Locate(u"ID", 1, TLocateOptions()));
  EXPECT_EQ(locates, 4);
}

TEST(VeskFamilyTest, ObjectPropertiesTakeTheirObjectsByName) {
  TComponent owner(nullptr);
  auto* q = new TVeskODACSmartQuery(&owner);
  auto* nav = new TOraNavigator(&owner);
  SetPropObject(q, u"VeskNav", nav);
  EXPECT_EQ(q->VeskNav(), nav);
  TStringList text;
  text.SetText(u"SELECT 1 FROM DUAL");
  SetPropObject(q, u"VeskSQL1", &text);
  EXPECT_EQ(q->VeskSQL1()->Text(), u"SELECT 1 FROM DUAL\n");
  EXPECT_NE(GetPropObject(q, u"VeskSQL1"), &text);  // the list is copied, not borrowed
  text.SetText(u"ALTER SESSION SET NLS_DATE_FORMAT='DD.MM.YYYY'");
  SetPropObject(q, u"SQLPrepare", &text);
  EXPECT_EQ(static_cast<TStrings*>(GetPropObject(q, u"SQLPrepare"))->Text(), text.Text());
  auto* cmp = new TComponent(&owner);
  SetPropObject(q, u"EditPropsCmp", cmp);
  EXPECT_EQ(GetPropObject(q, u"EditPropsCmp"), cmp);
  delete cmp;
  EXPECT_EQ(q->EditPropsCmp(), nullptr);
  delete nav;
  EXPECT_EQ(q->VeskNav(), nullptr);
}

TEST(VeskFamilyTest, EditPropsRunsTheRegisteredEditorAndKeepsItsResult) {
  TComponent owner(nullptr);
  auto* q = new TVeskODACSmartQuery(&owner);
  auto* cmp = new TComponent(&owner);
  q->SetEditPropsCmp(cmp);
  SetPropBool(q, u"EditProps", true);
  EXPECT_EQ(GetPropInteger(q, u"EditPropsResult", -1), 0);  // no editor: nothing shown
  static TVeskODACSmartQuery* seenQuery = nullptr;
  static TComponent* seenOwner = nullptr;
  const TEditQueryFormProc before = RegisterEditQueryForm([](TVeskODACSmartQuery* query, TComponent* from) {
    seenQuery = query;
    seenOwner = from;
    return 5;
  });
  SetPropBool(q, u"EditProps", false);
  RegisterEditQueryForm(before);
  EXPECT_EQ(GetPropInteger(q, u"EditPropsResult", -1), 5);
  EXPECT_EQ(seenQuery, q);
  EXPECT_EQ(seenOwner, cmp);
  // The result cannot be written.
  SetPropInteger(q, u"EditPropsResult", 9);
  EXPECT_EQ(q->EditPropsResult(), 5);
}

TEST(VeskFamilyTest, TheBaseClassOfEachMember) {
  EXPECT_TRUE(TVeskODACTableQuery::StaticClass()->InheritsFrom(TOraTable::StaticClass()));
  EXPECT_TRUE(TVeskODACNNTab::StaticClass()->InheritsFrom(TOraNestedTable::StaticClass()));
  EXPECT_TRUE(TVeskODACProc::StaticClass()->InheritsFrom(TOraStoredProc::StaticClass()));
  EXPECT_TRUE(TVeskQuery1::StaticClass()->InheritsFrom(TQuery::StaticClass()));
  EXPECT_TRUE(TVeskTable1::StaticClass()->InheritsFrom(TTable::StaticClass()));
  EXPECT_TRUE(TVeskVirt::StaticClass()->InheritsFrom(TVirtualTable::StaticClass()));
}

// ---- The guard and the guarded commands, member by member ------------------------------------

template <class M>
class FamilyGuardTest : public KitDbTest {
 protected:
  static constexpr bool kVirtual = std::is_same_v<M, TVeskVirt>;

  // The member over GOODS, open, able to write, ordered by ID.
  M* Make() {
    auto* m = new M(owner_.get());
    m->SetName(u"mGoods");
    if constexpr (kVirtual) {
      TOraQuery source(nullptr);
      source.SetSession(session_);
      source.SQL()->SetText(u"SELECT ID, NAME, QTY FROM GOODS ORDER BY ID");
      source.Open();
      m->LoadFromDataSet(&source);
    } else {
      m->SetSession(session_);
      if constexpr (std::is_base_of_v<TOraTable, M>) {
        m->SetTableName(u"GOODS");
        m->SetKeyFields(u"ID");
        m->SetOrderFields(u"ID");
        // Edit and delete write by themselves; an insert needs its statement.
        m->SQLInsert()->SetText(u"INSERT INTO GOODS (ID, NAME) VALUES (:ID, :NAME)");
      } else if constexpr (std::is_base_of_v<TTable, M>) {
        m->SetTableName(u"GOODS");
        m->SetIndexFieldNames(u"ID");
      } else {
        m->SQL()->SetText(u"SELECT * FROM GOODS ORDER BY ID");
        m->SQLInsert()->SetText(u"INSERT INTO GOODS (ID, CODE, NAME, PRICE, QTY) VALUES (:ID, :CODE, :NAME, :PRICE, :QTY)");
        m->SQLUpdate()->SetText(
            u"UPDATE GOODS SET CODE = :CODE, NAME = :NAME, PRICE = :PRICE, QTY = :QTY WHERE ID = :OLD_ID");
        m->SQLDelete()->SetText(u"DELETE FROM GOODS WHERE ID = :OLD_ID");
      }
    }
    m->Open();
    return m;
  }
  // The name of record `id` where the member keeps it, the table or the
  // member itself when it has no server; "<null>" when there is none.
  String StoredName(M* m, int id) {
    if constexpr (kVirtual) {
      return m->Locate(u"ID", id, TLocateOptions()) ? m->FieldByName(u"NAME")->AsString() : String(u"<null>");
    } else {
      return Value(u"SELECT NAME FROM GOODS WHERE ID = " + IntToStr(id));
    }
  }
  int StoredCount(M* m) {
    if constexpr (kVirtual) return m->RecordCount();
    else return StrToInt(Value(u"SELECT COUNT(*) FROM GOODS"));
  }
};

using Members = ::testing::Types<TVeskODACQuery, TVeskODACSmartQuery, TVeskODACTableQuery, TVeskODACNNTab,
                                 TVeskODACProc, TVeskQuery1, TVeskTable1, TVeskVirt>;
TYPED_TEST_SUITE(FamilyGuardTest, Members);

TYPED_TEST(FamilyGuardTest, NothingImplicitHappensUnderTheGuard) {
  TypeParam* m = this->Make();
  ASSERT_EQ(m->RecordCount(), 5);
  m->SetVeskMode(true);
  EXPECT_THROW(m->Edit(), EAbort);
  EXPECT_EQ(m->State(), dsBrowse);
  EXPECT_THROW(m->Insert(), EAbort);
  EXPECT_EQ(m->State(), dsBrowse);
  EXPECT_EQ(m->VeskCom(), dsgInactive);
  // Without the guard the same edit goes through.
  m->SetVeskMode(false);
  m->Edit();
  EXPECT_EQ(m->State(), dsEdit);
  m->Cancel();
}

TYPED_TEST(FamilyGuardTest, GuardedCommandsDeclareAndAct) {
  TypeParam* m = this->Make();
  m->SetVeskMode(true);
  int began = 0, ended = 0;
  m->TblBegEdit = [&] { ++began; };
  m->TblEndEdit = [&] { ++ended; };

  m->First();
  __EDIT(m);
  EXPECT_EQ(m->State(), dsEdit);
  EXPECT_TRUE(m->TbliSEdit());
  m->FieldByName(u"NAME")->SetAsString(u"Guarded apple");
  __POST(m);
  EXPECT_EQ(m->State(), dsBrowse);
  EXPECT_EQ(m->VeskCom(), dsgInactive);
  EXPECT_FALSE(m->TbliSEdit());
  EXPECT_EQ(this->StoredName(m, 1), u"Guarded apple");

  // __POST outside an edit leaves VeskCom alone.
  m->SetVeskCom(dsgEdit);
  __POST(m);
  EXPECT_EQ(m->VeskCom(), dsgEdit);
  m->SetVeskCom(dsgInactive);

  __APPEND(m);
  EXPECT_EQ(m->State(), dsInsert);
  m->FieldByName(u"ID")->SetAsInteger(9);
  m->FieldByName(u"NAME")->SetAsString(u"Fig");
  __POST(m);
  EXPECT_EQ(this->StoredCount(m), 6);
  EXPECT_EQ(this->StoredName(m, 9), u"Fig");

  __INSERT(m);
  EXPECT_EQ(m->State(), dsInsert);
  __CANCEL(m);
  EXPECT_EQ(m->State(), dsBrowse);
  EXPECT_EQ(m->VeskCom(), dsgInactive);
  EXPECT_EQ(this->StoredCount(m), 6);

  ASSERT_TRUE(m->Locate(u"ID", 9, TLocateOptions()));
  __DELETE(m);
  EXPECT_EQ(this->StoredCount(m), 5);
  EXPECT_EQ(this->StoredName(m, 9), u"<null>");
  EXPECT_EQ(began, 3);
  EXPECT_EQ(ended, 4);
}

TYPED_TEST(FamilyGuardTest, TheStateCheckDecidesImplicitChanges) {
  TypeParam* m = this->Make();
  m->SetVeskMode(true);
  auto* store = new TGridPropCmp(this->owner_.get());
  store->SetStartUpInit(true);
  TVeskState asked = dsgInactive;
  bool allow = false;
  store->OnStateChangeImplicit = [&](TDataSet* DataSet, TVeskState Requested, TVeskState, TDataSetState) {
    EXPECT_EQ(DataSet, m);
    asked = Requested;
    return allow;
  };
  EXPECT_THROW(m->Edit(), EAbort);
  EXPECT_EQ(asked, dsgEdit);
  allow = true;
  m->Edit();
  EXPECT_EQ(m->State(), dsEdit);
  EXPECT_EQ(m->VeskCom(), dsgEdit);
  m->FieldByName(u"NAME")->SetAsString(u"Asked");
  m->Post();
  EXPECT_EQ(asked, dsgPost);
  EXPECT_EQ(this->StoredName(m, 1), u"Asked");
  store->SetStartUpInit(false);
}

// ---- Composition on the members that have it -------------------------------------------------

template <class M>
class FamilyCompositionTest : public KitDbTest {};
using Composers = ::testing::Types<TVeskODACSmartQuery, TVeskODACTableQuery, TVeskQuery1>;
TYPED_TEST_SUITE(FamilyCompositionTest, Composers);

TYPED_TEST(FamilyCompositionTest, ComposesFiltersAndSortAndReopens) {
  auto* m = new TypeParam(this->owner_.get());
  m->SetSession(this->session_);
  int changes = 0;
  m->VeskSQLChanged = [&](TObject*, int) { ++changes; };
  m->SetVeskTableLive(u"GOODS");
  m->SetVeskFilterSYS(u"QTY > 1");
  m->SetVeskGroupField(u"NAME DESC");
  EXPECT_EQ(m->SQL()->Text(), u"SELECT GOODS.* FROM GOODS\nWHERE\n(QTY > 1)\nORDER BY NAME DESC\n");
  m->Open();
  EXPECT_EQ(m->RecordCount(), 3);
  EXPECT_EQ(m->FieldByName(u"NAME")->AsString(), u"Butter");

  // The user's condition by name reopens the open dataset.
  SetPropString(m, u"VeskFilter", u"PRICE < 3");
  EXPECT_TRUE(m->Active());
  EXPECT_EQ(m->RecordCount(), 1);
  EXPECT_EQ(m->FieldByName(u"NAME")->AsString(), u"Apple");
  EXPECT_EQ(m->SQL()->Text(), u"SELECT GOODS.* FROM GOODS\nWHERE\n(PRICE < 3)\nAND\n(QTY > 1)\nORDER BY NAME DESC\n");

  // Clearing the filters by command keeps the fixed condition.
  SetPropBool(m, u"FilterCmdClear", false);
  EXPECT_EQ(m->VeskFilter(), u"");
  EXPECT_EQ(m->RecordCount(), 3);
  EXPECT_EQ(changes, 5);

  // An alias over a whole base statement.
  m->SetVeskTableLive(String());
  TStringList base;
  base.SetText(u"SELECT * FROM GOODS WHERE CODE LIKE 'A%'");
  m->SetVeskAlias(u"G");
  m->SetVeskSQL1(&base);
  EXPECT_EQ(m->RecordCount(), 2);
  EXPECT_EQ(m->SQL()->Strings(0), u"SELECT G.* FROM(SELECT * FROM GOODS WHERE CODE LIKE 'A%'");
}

TYPED_TEST(FamilyCompositionTest, RefreshAfterWritesComesBackToTheRecord) {
  auto* m = new TypeParam(this->owner_.get());
  m->SetSession(this->session_);
  m->SetVeskTableLive(u"GOODS");
  m->SetVeskGroupField(u"ID");
  m->SQLUpdate()->SetText(u"UPDATE GOODS SET NAME = :NAME WHERE ID = :OLD_ID");
  m->SetVeskSQLServer(true);
  m->SetVeskKeyFields(u"ID");
  m->Open();
  ASSERT_TRUE(m->Locate(u"ID", 3, TLocateOptions()));
  __EDIT(m);
  m->FieldByName(u"NAME")->SetAsString(u"Ghee");
  __POST(m);
  EXPECT_EQ(m->FieldByName(u"ID")->AsInteger(), 3);
  EXPECT_EQ(m->FieldByName(u"NAME")->AsString(), u"Ghee");
  EXPECT_EQ(this->Value(u"SELECT NAME FROM GOODS WHERE ID = 3"), u"Ghee");
}

// ---- The table member's own additions -----------------------------------------------------------

class VeskTable1Test : public KitDbTest {
 protected:
  void SetUp() override {
    KitDbTest::SetUp();
    goods_ = new TTable(owner_.get());
    goods_->SetSession(session_);
    goods_->SetTableName(u"GOODS");
    goods_->SetIndexFieldNames(u"ID");
    goods_->Open();
    lookup_ = new TStringField(owner_.get());
    lookup_->SetFieldName(u"GOODS_NAME");
    lookup_->SetFieldKind(fkLookup);
    lookup_->SetKeyFields(u"GOODS_CODE");
    lookup_->SetLookupDataSet(goods_);
    lookup_->SetLookupKeyFields(u"CODE");
    lookup_->SetLookupResultField(u"NAME");
    table_ = new TVeskTable1(owner_.get());
    table_->SetSession(session_);
    table_->SetTableName(u"GOODS");
    table_->SetIndexFieldNames(u"ID");
  }
  TTable* goods_ = nullptr;
  TStringField* lookup_ = nullptr;
  TVeskTable1* table_ = nullptr;
};

TEST_F(VeskTable1Test, LookUpStatementText) {
  EXPECT_EQ(TVeskTable1::LookUpSQL(lookup_, u"br", false),
            u"SELECT * FROM GOODS\nWHERE (UPPER(NAME) LIKE 'BR%'OR UPPER(CODE) LIKE 'BR%')\nORDER BY CODE");
  EXPECT_EQ(TVeskTable1::LookUpSQL(lookup_, u"Br", true),
            u"SELECT * FROM GOODS\nWHERE (NAME LIKE 'Br%'OR CODE LIKE 'Br%')\nORDER BY CODE");
  // A quote in the text stays inside the literal.
  EXPECT_EQ(TVeskTable1::LookUpSQL(lookup_, u"o'b", true),
            u"SELECT * FROM GOODS\nWHERE (NAME LIKE 'o''b%'OR CODE LIKE 'o''b%')\nORDER BY CODE");
  TStringField plain(nullptr);
  EXPECT_EQ(TVeskTable1::LookUpSQL(&plain, u"x", false), u"");
  EXPECT_EQ(TVeskTable1::LookUpSQL(nullptr, u"x", false), u"");
}

TEST_F(VeskTable1Test, LookUpLocatesTheFirstRowFound) {
  Variant key;
  // "b" begins Butter and Bread, and the codes B01 and B02: the first by code.
  ASSERT_TRUE(table_->runLookUpSQL(lookup_, u"b", false, key));
  EXPECT_EQ(VarToStr(key), u"B01");
  EXPECT_EQ(goods_->FieldByName(u"NAME")->AsString(), u"Butter");
  // By the key column alone.
  ASSERT_TRUE(table_->runLookUpSQL(lookup_, u"c0", false, key));
  EXPECT_EQ(VarToStr(key), u"C01");
  EXPECT_EQ(goods_->FieldByName(u"NAME")->AsString(), u"Cheese");
  // Nothing found: the lookup table stays where it was.
  EXPECT_FALSE(table_->runLookUpSQL(lookup_, u"o'b", false, key));
  EXPECT_TRUE(VarIsNull(key));
  EXPECT_EQ(goods_->FieldByName(u"NAME")->AsString(), u"Cheese");
}

TEST_F(VeskTable1Test, DittoCopiesTheRecordBefore) {
  table_->Open();
  table_->Next();
  __EDIT(table_);
  table_->setTDitto(table_->FieldByName(u"NAME"));
  EXPECT_EQ(table_->FieldByName(u"NAME")->AsString(), u"Apple");
  __POST(table_);
  EXPECT_EQ(Value(u"SELECT NAME FROM GOODS WHERE ID = 2"), u"Apple");
  // In browse state nothing is copied.
  table_->Next();
  table_->setTDitto(table_->FieldByName(u"NAME"));
  EXPECT_EQ(table_->FieldByName(u"NAME")->AsString(), u"Butter");
}

TEST_F(VeskTable1Test, ServerAggregate) {
  table_->Open();
  EXPECT_EQ(table_->sgCFunc(vfSum, u"QTY", String()), u"23");
  EXPECT_EQ(table_->sgCFunc(vfMax, u"QTY", u"CODE LIKE 'B%'"), u"7");
}

// ---- The navigator ---------------------------------------------------------------------------

TEST_F(KitDbTest, ManageNavigatorBindsTheStoresNavigatorAndTheDatasetsOwn) {
  TVeskODACQuery* q1 = OpenGoods(u"q1");
  TVeskODACQuery* q2 = OpenGoods(u"q2");
  auto* s1 = new TDataSource(owner_.get());
  s1->SetDataSet(q1);
  auto* s2 = new TDataSource(owner_.get());
  s2->SetDataSet(q2);
  auto* gridA = new TComponent(owner_.get());
  auto* gridB = new TComponent(owner_.get());

  // Without a store only the dataset's own navigator follows.
  auto* own = new TOraNavigator(owner_.get());
  q2->SetVeskNav(own);
  ManageNavigator(s2, true);
  EXPECT_EQ(own->DataSource(), s2);

  auto* store = new TGridPropCmp(owner_.get());
  store->SetStartUpInit(true);
  auto* shared = new TOraNavigator(owner_.get());
  store->SetOraNavigator(shared);

  ManageNavigator(s1, gridA, true);
  EXPECT_EQ(shared->DataSource(), s1);
  // Another control leaving s1 does not take it from gridA.
  ManageNavigator(s1, gridB, false);
  EXPECT_EQ(shared->DataSource(), s1);
  // Leaving a source the navigator does not hold changes nothing.
  ManageNavigator(s2, gridA, false);
  EXPECT_EQ(shared->DataSource(), s1);
  ManageNavigator(s1, gridA, false);
  EXPECT_EQ(shared->DataSource(), nullptr);

  ManageNavigator(s2, gridB, true);
  EXPECT_EQ(shared->DataSource(), s2);
  EXPECT_EQ(own->DataSource(), s2);
  // A dataset whose own navigator is the store's binds it only once.
  q1->SetVeskNav(shared);
  ManageNavigator(s1, gridA, false);
  EXPECT_EQ(shared->DataSource(), s2);

  // Null sources and sources without a dataset are ignored.
  auto* empty = new TDataSource(owner_.get());
  ManageNavigator(empty, gridA, true);
  ManageNavigator(nullptr, gridA, true);
  EXPECT_EQ(shared->DataSource(), s2);
  store->SetStartUpInit(false);
}

}  // namespace
