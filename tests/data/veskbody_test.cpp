// The family body over other bases: an in-memory table with only the
// locate group, and an Oracle table with every group. What a member lacks
// exists neither in C++ nor by name.
#include <gtest/gtest.h>

#include "data/veskbodyimpl.h"
#include "data/veskutil.h"
#include "tests/support/kitfixture.h"
#include "tests/support/kitui.h"

namespace {

struct TVirtTraits : TVeskNoGroups {
  static constexpr bool LocateLookup = true;
};
using TVirtBody = TVeskBody<TVirtualTable, TVirtTraits>;

class TTestVeskVirt : public TVirtBody {
  KELMAR_CLASS(TTestVeskVirt, TVirtBody)
 public:
  explicit TTestVeskVirt(TComponent* AOwner) : TVirtBody(AOwner) {}
};

struct TTableTraits : TVeskNoGroups {
  static constexpr bool SqlComposition = true;
  static constexpr bool SessionGroup = true;
  static constexpr bool LocateLookup = true;
  static constexpr bool CFunc = true;
  static constexpr bool Updater = true;
};
using TTableBody = TVeskBody<TOraTable, TTableTraits>;

class TTestVeskTable : public TTableBody {
  KELMAR_CLASS(TTestVeskTable, TTableBody)
 public:
  explicit TTestVeskTable(TComponent* AOwner) : TTableBody(AOwner) {}
};

}  // namespace

KELMAR_PUBLISH(TTestVeskVirt) { PublishVeskBody(r); }
KELMAR_PUBLISH(TTestVeskTable) { PublishVeskBody(r); }

namespace {

template <class T>
concept HasComposition = requires(T& t) { t.VeskTableLive(); };
template <class T>
concept HasSessionGroup = requires(T& t) { t.TransVeskAutoStart(); };
template <class T>
concept HasCFunc = requires(T& t) { t.sgCFunc(vfSum, String(), String()); };
static_assert(!HasComposition<TTestVeskVirt> && !HasSessionGroup<TTestVeskVirt> && !HasCFunc<TTestVeskVirt>);
static_assert(HasComposition<TTestVeskTable> && HasSessionGroup<TTestVeskTable> && HasCFunc<TTestVeskTable>);

class VirtTest : public ::testing::Test {
 protected:
  void SetUp() override {
    owner_ = std::make_unique<TComponent>(nullptr);
    v_ = new TTestVeskVirt(owner_.get());
    v_->SetName(u"vt");
    v_->AddField(u"ID", ftInteger);
    v_->AddField(u"NAME", ftString, 20);
    v_->Open();
    for (auto [id, name] : {std::pair{1, u"one"}, std::pair{2, u"two"}, std::pair{3, u"three"}}) {
      v_->Append();
      v_->FieldByName(u"ID")->SetAsInteger(id);
      v_->FieldByName(u"NAME")->SetAsString(name);
      v_->Post();
    }
  }
  std::unique_ptr<TComponent> owner_;
  TTestVeskVirt* v_ = nullptr;
};

TEST_F(VirtTest, LacksTheSqlAndSessionGroupsByName) {
  for (const char16_t* name : {u"VeskTableLive", u"VeskAlias", u"VeskFilter", u"VeskFilterSYS", u"VeskSQL1",
                               u"VeskGroupField", u"FilterCmdShow", u"FilterCmdSetExpr", u"FilterCmdClear",
                               u"TransVeskAutoStart", u"VeskXSingleRowQuery", u"EnableAutoConnect",
                               u"VeskNotReadOnly", u"ShowDBMSOutput", u"SkipRefreshRecord", u"Version"})
    EXPECT_FALSE(IsPublishedProp(v_, name)) << String(name);
  for (const char16_t* name : {u"VeskMode", u"VeskCom", u"VeskKeyFields", u"VeskSQLServer", u"XTTSummary",
                               u"OnVESKLocateEvent", u"OnVESKLookupEvent", u"SearchCmdFirst", u"DefValCmdSet",
                               u"PrevRecCmdCopy", u"VeskSQLChanged"})
    EXPECT_TRUE(IsPublishedProp(v_, name)) << String(name);
  // Writes to what it lacks fall on the floor; reads give the default.
  SetPropString(v_, u"VeskFilter", u"ID = 1");
  SetPropBool(v_, u"FilterCmdClear", false);
  EXPECT_EQ(GetPropString(v_, u"VeskFilter", u"none"), u"none");
  EXPECT_EQ(v_->RecordCount(), 3);
  EXPECT_TRUE(v_->InheritsFrom(TVirtualTable::StaticClass()));
}

TEST_F(VirtTest, KeepsTheGuardAndTheDeclarations) {
  v_->SetVeskMode(true);
  EXPECT_THROW(v_->Edit(), EAbort);
  __EDIT(v_);
  v_->FieldByName(u"NAME")->SetAsString(u"uno");
  __POST(v_);
  EXPECT_EQ(v_->VeskCom(), dsgInactive);
  EXPECT_EQ(v_->FieldByName(u"NAME")->AsString(), u"uno");
  __APPEND(v_);
  EXPECT_TRUE(v_->TbliSEdit());
  __CANCEL(v_);
  EXPECT_EQ(v_->RecordCount(), 3);
}

TEST_F(VirtTest, DefaultsLocateEventAndSummaries) {
  SetPropInteger(v_, kDefValCmdSetCurr, 1);
  v_->Append();
  EXPECT_EQ(v_->FieldByName(u"NAME")->AsString(), u"three");
  v_->Cancel();
  EXPECT_TRUE(v_->Locate(u"NAME", u"two", TLocateOptions()));
  v_->OnVESKLocateEvent = [](const String&, const Variant&, int options) { return options == 1; };
  EXPECT_TRUE(v_->Locate(u"NAME", u"x", TLocateOptions{loCaseInsensitive}));
  EXPECT_FALSE(v_->Locate(u"NAME", u"two", TLocateOptions()));

  TStatusBar* bar = NewStatusBar(owner_.get());
  v_->XTTSummary()->SetAsText(u"ID=0");
  v_->SetXTTStatusBar(bar);
  v_->SetXTTShowSummary(true);
  EXPECT_EQ(PanelTexts(bar), u"6");
  // Closing a table without SQL drops its defaults all the same.
  v_->Close();
  EXPECT_TRUE(v_->DefaultValues().empty());
}

TEST_F(KitDbTest, TableMemberEditsWithoutStatementsButInsertNeedsOne) {
  auto* t = new TTestVeskTable(owner_.get());
  t->SetSession(session_);
  t->SetTableName(u"GOODS");
  t->SetKeyFields(u"ID");
  t->SetOrderFields(u"ID");
  t->Open();
  t->Edit();
  t->FieldByName(u"NAME")->SetAsString(u"Table apple");
  t->Post();
  EXPECT_EQ(Value(u"SELECT NAME FROM GOODS WHERE ID = 1"), u"Table apple");
  EXPECT_THROW(t->Insert(), EAbort);
  t->Delete();
  EXPECT_EQ(Value(u"SELECT COUNT(*) FROM GOODS"), u"4");
  EXPECT_EQ(t->sgCFunc(vfSum, u"QTY", String()), u"13");
  EXPECT_TRUE(IsPublishedProp(t, u"VeskTableLive"));
  EXPECT_TRUE(IsPublishedProp(t, u"TransVeskAutoStart"));
}

TEST_F(KitDbTest, TableMemberComposesWhenItHasNoTableName) {
  auto* t = new TTestVeskTable(owner_.get());
  t->SetSession(session_);
  t->SetVeskTableLive(u"GOODS");
  t->SetVeskFilterSYS(u"QTY > 5");
  t->Open();
  EXPECT_EQ(t->RecordCount(), 2);
}

}  // namespace
