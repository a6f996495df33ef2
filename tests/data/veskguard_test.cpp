// The edit guard of the dataset family, its declarations, the table-in-edit
// flag and the transactions that follow the record, on real tables.
#include <gtest/gtest.h>

#include <vector>

#include "data/oranavigator.h"
#include "data/veskutil.h"
#include "grid/gridpropcmp.h"
#include "tests/support/kitfixture.h"
#include "tests/support/kitui.h"

namespace {

struct GuardCall {
  TDataSet* DataSet;
  TVeskState Requested;
  TVeskState VeskCom;
  TDataSetState State;
};

// A session with an active TGridPropCmp whose OnStateChangeImplicit
// records what it is asked and answers `allow_`.
class GuardTest : public KitDbTest {
 protected:
  void SetUp() override {
    KitDbTest::SetUp();
    store_ = new TGridPropCmp(owner_.get());
    store_->SetStartUpInit(true);
    store_->OnStateChangeImplicit = [this](TDataSet* ds, TVeskState requested, TVeskState com, TDataSetState state) {
      calls_.push_back({ds, requested, com, state});
      return allow_;
    };
    q_ = OpenGoods();
    q_->SetVeskMode(true);
    q_->TblBegEdit = [this] { ++begins_; };
    q_->TblEndEdit = [this] { ++ends_; };
  }

  TGridPropCmp* store_ = nullptr;
  TVeskODACQuery* q_ = nullptr;
  std::vector<GuardCall> calls_;
  bool allow_ = true;
  int begins_ = 0, ends_ = 0;
};

TEST_F(KitDbTest, GuardWithoutStoreAbortsImplicitEditAndKeepsBrowse) {
  TVeskODACQuery* q = OpenGoods();
  q->SetVeskMode(true);
  EXPECT_THROW(q->Edit(), EAbort);
  EXPECT_EQ(q->State(), dsBrowse);
  EXPECT_EQ(q->VeskCom(), dsgInactive);
  // Without the guard the same edit goes through.
  q->SetVeskMode(false);
  q->Edit();
  EXPECT_EQ(q->State(), dsEdit);
}

TEST_F(KitDbTest, GuardWithStoreButNoHandlerAborts) {
  auto* store = new TGridPropCmp(owner_.get());
  store->SetStartUpInit(true);
  TVeskODACQuery* q = OpenGoods();
  q->SetVeskMode(true);
  EXPECT_THROW(q->Insert(), EAbort);
  EXPECT_EQ(q->State(), dsBrowse);
}

TEST_F(GuardTest, ImplicitEditAsksTheHandlerWithItsArguments) {
  allow_ = false;
  EXPECT_THROW(q_->Edit(), EAbort);
  ASSERT_EQ(calls_.size(), 1u);
  EXPECT_EQ(calls_[0].DataSet, q_);
  EXPECT_EQ(calls_[0].Requested, dsgEdit);
  EXPECT_EQ(calls_[0].VeskCom, dsgInactive);
  EXPECT_EQ(calls_[0].State, dsBrowse);
  EXPECT_EQ(q_->State(), dsBrowse);
  EXPECT_FALSE(q_->TbliSEdit());
  EXPECT_EQ(begins_, 0);

  allow_ = true;
  q_->Edit();
  EXPECT_EQ(q_->State(), dsEdit);
  EXPECT_EQ(q_->VeskCom(), dsgEdit);
  EXPECT_TRUE(q_->TbliSEdit());
  EXPECT_EQ(begins_, 1);
}

TEST_F(GuardTest, DeclaredEditAndPostNeedNoHandlerAndWriteTheRow) {
  __EDIT(q_);
  EXPECT_TRUE(calls_.empty());
  EXPECT_EQ(q_->VeskCom(), dsgEdit);
  EXPECT_TRUE(q_->TbliSEdit());
  q_->FieldByName(u"NAME")->SetAsString(u"Green apple");
  __POST(q_);
  EXPECT_TRUE(calls_.empty());
  EXPECT_EQ(q_->State(), dsBrowse);
  EXPECT_EQ(q_->VeskCom(), dsgInactive);
  EXPECT_FALSE(q_->TbliSEdit());
  EXPECT_EQ(begins_, 1);
  EXPECT_EQ(ends_, 1);
  EXPECT_EQ(Value(u"SELECT NAME FROM GOODS WHERE ID = 1"), u"Green apple");
}

TEST_F(GuardTest, UndeclaredPostIsAskedAndARefusalKeepsTheEdit) {
  __EDIT(q_);
  q_->FieldByName(u"QTY")->SetAsInteger(99);
  allow_ = false;
  EXPECT_THROW(q_->Post(), EAbort);
  ASSERT_EQ(calls_.size(), 1u);
  EXPECT_EQ(calls_[0].Requested, dsgPost);
  EXPECT_EQ(calls_[0].VeskCom, dsgEdit);
  EXPECT_EQ(calls_[0].State, dsEdit);
  EXPECT_EQ(q_->State(), dsEdit);
  EXPECT_EQ(Value(u"SELECT QTY FROM GOODS WHERE ID = 1"), u"10");
}

TEST_F(GuardTest, NotAbortLetsEditThroughAndPostAutoAlsoPostAndCancel) {
  q_->SetVeskModeNotAbort(true);
  q_->Edit();
  EXPECT_TRUE(calls_.empty());
  EXPECT_EQ(q_->VeskCom(), dsgEdit);
  q_->Post();  // post is still asked without VeskModePostAuto
  ASSERT_EQ(calls_.size(), 1u);
  EXPECT_EQ(calls_[0].Requested, dsgPost);

  q_->SetVeskModePostAuto(true);
  q_->Edit();
  q_->Cancel();
  q_->Edit();
  q_->Post();
  EXPECT_EQ(calls_.size(), 1u);
}

TEST_F(GuardTest, ScrollOutOfAnOpenRecordAsksPostOrCancel) {
  __EDIT(q_);
  allow_ = false;
  EXPECT_THROW(q_->Next(), EAbort);
  ASSERT_EQ(calls_.size(), 1u);
  EXPECT_EQ(calls_[0].Requested, dsgCancel);  // nothing modified yet

  q_->FieldByName(u"QTY")->SetAsInteger(3);
  EXPECT_THROW(q_->Next(), EAbort);
  ASSERT_EQ(calls_.size(), 2u);
  EXPECT_EQ(calls_[1].Requested, dsgPost);
  EXPECT_EQ(q_->State(), dsEdit);
}

TEST_F(GuardTest, ScrollBeforePostIsLetThroughWhenEnabled) {
  __EDIT(q_);
  q_->SetVeskCom(dsgPost);
  q_->SetZe5EnableScrollBeforePost(true);
  allow_ = false;
  q_->FieldByName(u"QTY")->SetAsInteger(4);
  q_->Next();  // posts the record on the way, declared
  EXPECT_TRUE(calls_.empty());
  EXPECT_EQ(q_->FieldByName(u"ID")->AsInteger(), 2);
  EXPECT_EQ(Value(u"SELECT QTY FROM GOODS WHERE ID = 1"), u"4");
}

TEST_F(GuardTest, InsertIsDeclaredThenBecomesAnEditWhenTheGridScrolls) {
  __INSERT(q_);
  EXPECT_TRUE(calls_.empty());
  EXPECT_EQ(q_->State(), dsInsert);
  EXPECT_TRUE(q_->TbliSEdit());
  // The scroll that ends the insert turns the declaration into an edit.
  EXPECT_EQ(q_->VeskCom(), dsgEdit);
  q_->Cancel();
  ASSERT_EQ(calls_.size(), 1u);
  EXPECT_EQ(calls_[0].Requested, dsgCancel);
  EXPECT_FALSE(q_->TbliSEdit());
}

TEST_F(GuardTest, ImplicitInsertIsAskedAndAppendPostsANewRow) {
  q_->Insert();
  ASSERT_EQ(calls_.size(), 1u);
  EXPECT_EQ(calls_[0].Requested, dsgInsert);
  q_->Cancel();
  calls_.clear();

  __APPEND(q_);
  q_->FieldByName(u"ID")->SetAsInteger(6);
  q_->FieldByName(u"CODE")->SetAsString(u"D01");
  q_->FieldByName(u"NAME")->SetAsString(u"Dates");
  __POST(q_);
  EXPECT_TRUE(calls_.empty());
  EXPECT_EQ(Value(u"SELECT NAME FROM GOODS WHERE ID = 6"), u"Dates");
}

TEST_F(GuardTest, DeleteIsNeverAskedAndEndsTheEdit) {
  __DELETE(q_);
  EXPECT_TRUE(calls_.empty());
  EXPECT_EQ(Value(u"SELECT COUNT(*) FROM GOODS"), u"4");
  EXPECT_EQ(ends_, 1);
  q_->SetVeskCom(dsgInactive);
  q_->Delete();
  EXPECT_TRUE(calls_.empty());
  EXPECT_EQ(Value(u"SELECT COUNT(*) FROM GOODS"), u"3");
}

TEST_F(GuardTest, MissingWriteStatementsAbortWhateverTheGuard) {
  q_->SetVeskMode(false);
  q_->SQLUpdate()->Clear();
  EXPECT_THROW(q_->Edit(), EAbort);
  q_->SQLDelete()->Clear();
  EXPECT_THROW(q_->Delete(), EAbort);
  q_->SQLInsert()->Clear();
  EXPECT_THROW(q_->Insert(), EAbort);
  EXPECT_EQ(q_->State(), dsBrowse);
  EXPECT_EQ(Value(u"SELECT COUNT(*) FROM GOODS"), u"5");
}

TEST_F(GuardTest, GlobalReadOnlyAbortsUnlessTheDatasetIsExempt) {
  store_->SetReadOnly(true);
  EXPECT_THROW(__EDIT(q_), EAbort);
  EXPECT_THROW(__INSERT(q_), EAbort);
  EXPECT_THROW(__DELETE(q_), EAbort);
  q_->SetVeskNotReadOnly(true);
  __EDIT(q_);
  EXPECT_EQ(q_->State(), dsEdit);
}

TEST_F(GuardTest, PostWithoutDeclarationInBrowseDoesNothing) {
  q_->SetVeskCom(dsgFilter);
  __POST(q_);
  __CANCEL(q_);
  EXPECT_EQ(q_->VeskCom(), dsgFilter);
  EXPECT_TRUE(calls_.empty());
}

TEST_F(GuardTest, EditOfAnEmptyDatasetInserts) {
  TVeskODACQuery* empty = NewQuery(u"qEmpty");
  empty->SetVeskMode(true);
  empty->SetVeskTableLive(u"GOODS");
  empty->SetVeskFilter(u"ID < 0");
  empty->Open();
  __EDIT(empty);
  EXPECT_EQ(empty->State(), dsInsert);
  EXPECT_TRUE(calls_.empty());
}

TEST_F(GuardTest, TransactionsStartWithTheEditAndEndWithPostOrCancel) {
  q_->SetTransVeskAutoStart(true);
  __EDIT(q_);
  EXPECT_TRUE(session_->InTransaction());
  q_->FieldByName(u"NAME")->SetAsString(u"Kept");
  __POST(q_);
  // Without auto end the transaction stays open after the post.
  EXPECT_TRUE(session_->InTransaction());

  q_->SetTransVeskAutoEnd(true);
  q_->Next();
  __EDIT(q_);
  __CANCEL(q_);
  // The cancel rolled back the whole transaction, the first post with it.
  EXPECT_FALSE(session_->InTransaction());
  EXPECT_EQ(Value(u"SELECT NAME FROM GOODS WHERE ID = 1"), u"Apple");
}

TEST_F(GuardTest, AutoEndCommitsPostAndDeleteForReal) {
  q_->SetTransVeskAutoStart(true);
  q_->SetTransVeskAutoEnd(true);
  __EDIT(q_);
  q_->FieldByName(u"NAME")->SetAsString(u"Committed");
  __POST(q_);
  EXPECT_FALSE(session_->InTransaction());
  session_->StartTransaction();
  session_->Rollback();
  EXPECT_EQ(Value(u"SELECT NAME FROM GOODS WHERE ID = 1"), u"Committed");
  __DELETE(q_);
  EXPECT_FALSE(session_->InTransaction());
  session_->StartTransaction();
  session_->Rollback();
  EXPECT_EQ(Value(u"SELECT COUNT(*) FROM GOODS"), u"4");
}

TEST_F(GuardTest, CancelInATransactionAsksFirst) {
  q_->SetTransVeskAutoStart(true);
  q_->SetTransVeskAutoEndCheck(true);
  TKitScriptedUI ui;
  ui.ExpectYesNo(u"Cancel all last changes?", false);
  __EDIT(q_);
  EXPECT_THROW(__CANCEL(q_), EAbort);
  EXPECT_EQ(q_->State(), dsEdit);
  ui.ExpectYesNo(u"ORACLE Session Control!", true);
  __CANCEL(q_);
  EXPECT_EQ(q_->State(), dsBrowse);
  EXPECT_EQ(ui.Verify(), u"");
  EXPECT_EQ(ui.ShownTexts(), u"ORACLE Session Control!\nCancel all last changes?\n"
                             u"ORACLE Session Control!\nCancel all last changes?\n");
}

TEST_F(GuardTest, PessimisticLockWithoutStatementIsDroppedForAutonomousWrites) {
  q_->SetLockMode(lmPessimistic);
  __EDIT(q_);
  __CANCEL(q_);
  EXPECT_EQ(q_->LockMode(), lmPessimistic);
  q_->SetTrnsVeskAutonomous(true);
  __EDIT(q_);
  EXPECT_EQ(q_->LockMode(), lmNone);
}

TEST_F(GuardTest, DbmsOutputIsClearedBeforeAndShownAfterWrites) {
  String log;
  store_->OnClearDBMSOutput = [&](TObject* sender) { log += sender == q_ ? u"clear " : u"? "; };
  store_->OnShowDBMSOutput = [&](TObject* sender) { log += sender == q_ ? u"show " : u"? "; };
  __EDIT(q_);
  __POST(q_);
  EXPECT_EQ(log, u"");
  q_->SetShowDBMSOutput(true);
  __EDIT(q_);
  __POST(q_);
  __DELETE(q_);
  __EDIT(q_);
  __CANCEL(q_);
  EXPECT_EQ(log, u"clear show clear show show ");
}

TEST_F(GuardTest, TblToEditTakesTheMovingButtonsOffTheNavigator) {
  auto* nav = new TOraNavigator(owner_.get());
  q_->SetVeskNav(nav);
  EXPECT_TRUE(q_->TblToEdit(true));
  EXPECT_EQ(nav->VisibleButtons(), (TButtonSet{nbInsert, nbDelete, nbEdit, nbPost, nbCancel, nbRefresh}));
  nav->SetVisibleButtons(TButtonSet{nbFirst, nbPost});
  EXPECT_FALSE(q_->TblToEdit(false));
  EXPECT_EQ(nav->VisibleButtons(), TButtonSet{nbPost});
  // Unchanged flag, or the guard off: the navigator is left alone.
  nav->SetVisibleButtons(TButtonSet{nbFirst});
  q_->TblToEdit(false);
  q_->SetVeskMode(false);
  EXPECT_FALSE(q_->TblToEdit(true));
  EXPECT_EQ(nav->VisibleButtons(), TButtonSet{nbFirst});
  delete nav;
  EXPECT_EQ(q_->VeskNav(), nullptr);
}

}  // namespace
