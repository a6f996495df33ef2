// The family's updater on the embedded engine: autonomous write statements
// that outlive a rolled-back session, statements left alone without the
// switch, and record refreshes that are skipped or wrapped in the
// summaries' hooks.
#include <gtest/gtest.h>

#include <filesystem>

#include "data/veskupdater.h"
#include "drivers/sqlite/sqlitedriver.h"
#include "tests/support/kitfixture.h"

namespace {

const String kAutonomousUpdate =
    u"declare PRAGMA AUTONOMOUS_TRANSACTION;begin update t set a=1;commit;end;";

TEST(MakeAutonomous, WrapsOneStatementWithOrWithoutItsSemicolon) {
  EXPECT_EQ(MakeAutonomous(u"update t set a=1"), kAutonomousUpdate);
  EXPECT_EQ(MakeAutonomous(u"update t set a=1;"), kAutonomousUpdate);
  EXPECT_EQ(MakeAutonomous(u"update t set a=1 \r\n"), kAutonomousUpdate);
}

TEST(MakeAutonomous, LeavesBlankTextAsItIs) {
  EXPECT_EQ(MakeAutonomous(String()), String());
  EXPECT_EQ(MakeAutonomous(u"  \r\n "), String(u"  \r\n "));
}

// A TVeskODACQuery that counts the record-refresh hooks.
class TCountingQuery : public TVeskODACQuery {
 public:
  using TVeskODACQuery::TVeskODACQuery;
  void DoBeforeRefreshRecord() override {
    ++before;
    TVeskODACQuery::DoBeforeRefreshRecord();
  }
  void DoAfterRefreshRecord() override {
    ++after;
    TVeskODACQuery::DoAfterRefreshRecord();
  }
  int before = 0, after = 0;
};

class VeskUpdaterTest : public KitDbTest {};

TEST_F(VeskUpdaterTest, EachOdacMemberHasItsOwnUpdater) {
  TVeskODACQuery* q = NewQuery();
  auto* updater = dynamic_cast<TVeskODACQueryUpdater*>(q->Updater());
  ASSERT_NE(updater, nullptr);
  EXPECT_EQ(updater->Owner(), q);
}

TEST_F(VeskUpdaterTest, StatementsStandAsWrittenWithoutTheSwitch) {
  TVeskODACQuery* q = NewQuery();
  q->SQLRefresh()->SetText(u"WHERE ID = :ID");
  TDADataSetUpdater* u = q->Updater();
  EXPECT_EQ(u->GetUpdateStatement(stInsert), TrimRight(q->SQLInsert()->Text()));
  EXPECT_EQ(u->GetUpdateStatement(stUpdate), TrimRight(q->SQLUpdate()->Text()));
  EXPECT_EQ(u->GetUpdateStatement(stDelete), TrimRight(q->SQLDelete()->Text()));
  EXPECT_EQ(u->GetUpdateStatement(stRefresh), String(u"WHERE ID = :ID"));
}

TEST_F(VeskUpdaterTest, WritesBecomeAutonomousUnderTheSwitchButRefreshAndLockDoNot) {
  TVeskODACQuery* q = NewQuery();
  q->SQLRefresh()->SetText(u"WHERE ID = :ID");
  q->SQLLock()->SetText(u"SELECT * FROM GOODS WHERE ID = :OLD_ID FOR UPDATE");
  q->SetTrnsVeskAutonomous(true);
  TDADataSetUpdater* u = q->Updater();
  EXPECT_EQ(u->GetUpdateStatement(stInsert), MakeAutonomous(q->SQLInsert()->Text()));
  EXPECT_EQ(u->GetUpdateStatement(stUpdate), MakeAutonomous(q->SQLUpdate()->Text()));
  EXPECT_EQ(u->GetUpdateStatement(stDelete), MakeAutonomous(q->SQLDelete()->Text()));
  EXPECT_EQ(u->GetUpdateStatement(stRefresh), String(u"WHERE ID = :ID"));
  EXPECT_EQ(u->GetUpdateStatement(stLock), String(u"SELECT * FROM GOODS WHERE ID = :OLD_ID FOR UPDATE"));
  q->SQLUpdate()->Clear();
  EXPECT_EQ(u->GetUpdateStatement(stUpdate), String());
}

TEST_F(VeskUpdaterTest, SkippedRefreshReadsNothingAndRunsNoHook) {
  auto* q = new TCountingQuery(owner_.get());
  q->SetSession(session_);
  q->SQL()->SetText(u"SELECT * FROM GOODS ORDER BY ID");
  q->SQLRefresh()->SetText(u"WHERE ID = :ID");
  q->Open();
  Exec(u"UPDATE GOODS SET NAME = 'Green apple' WHERE ID = 1");

  q->SetSkipRefreshRecord(true);
  q->RefreshRecord();
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), String(u"Apple"));
  EXPECT_EQ(q->before + q->after, 0);

  q->SetSkipRefreshRecord(false);
  q->RefreshRecord();
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), String(u"Green apple"));
  EXPECT_EQ(q->before, 1);
  EXPECT_EQ(q->after, 1);
}

// A file database: the autonomous statement runs on a connection of its own
// and commits there, so the session's rollback cannot take it back.
class VeskUpdaterFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    RegisterSQLiteDriver();
    path_ = std::filesystem::temp_directory_path() /
            ("kelmar_updater_" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) + "_" +
             ::testing::UnitTest::GetInstance()->current_test_info()->name() + ".db");
    std::filesystem::remove(path_);
    owner_ = std::make_unique<TComponent>(nullptr);
    session_ = new TOraSession(owner_.get());
    session_->SetServer(String(path_.string()));
    session_->Connect();
    Run(u"CREATE TABLE GOODS (ID INTEGER PRIMARY KEY, NAME VARCHAR2(40))");
    Run(u"INSERT INTO GOODS VALUES (1, 'Apple')");
    Run(u"INSERT INTO GOODS VALUES (2, 'Bread')");
    q_ = new TVeskODACQuery(owner_.get());
    q_->SetName(u"qGoods");
    q_->SetSession(session_);
    q_->SQL()->SetText(u"SELECT * FROM GOODS ORDER BY ID");
    q_->SQLInsert()->SetText(u"INSERT INTO GOODS (ID, NAME) VALUES (:ID, :NAME)");
    q_->SQLUpdate()->SetText(u"UPDATE GOODS SET NAME = :NAME WHERE ID = :OLD_ID");
    q_->SQLDelete()->SetText(u"DELETE FROM GOODS WHERE ID = :OLD_ID");
    q_->Open();
  }
  void TearDown() override {
    owner_.reset();
    std::filesystem::remove(path_);
  }
  void Run(const String& sql) {
    TDbStatus status = session_->Connection()->ExecuteDirect(sql);
    ASSERT_TRUE(status.IsOk()) << status.Message();
  }
  String Names() {
    TOraQuery q(nullptr);
    q.SetSession(session_);
    q.SQL()->SetText(u"SELECT NAME FROM GOODS ORDER BY ID");
    q.Open();
    String names;
    for (; !q.Eof(); q.Next()) names += q.Fields()->Fields(0)->AsString() + u";";
    return names;
  }
  // Edits, inserts and deletes in one transaction, then rolls it back.
  void WriteAndRollBack() {
    session_->StartTransaction();
    q_->Edit();
    q_->FieldByName(u"NAME")->SetAsString(u"Apricot");
    q_->Post();
    q_->Append();
    q_->FieldByName(u"ID")->SetAsInteger(3);
    q_->FieldByName(u"NAME")->SetAsString(u"Cheese");
    q_->Post();
    ASSERT_TRUE(q_->Locate(u"ID", Variant(2), TLocateOptions()));
    q_->Delete();
    session_->Rollback();
  }

  std::filesystem::path path_;
  std::unique_ptr<TComponent> owner_;
  TOraSession* session_ = nullptr;
  TVeskODACQuery* q_ = nullptr;
};

TEST_F(VeskUpdaterFileTest, AutonomousWritesSurviveTheSessionsRollback) {
  q_->SetTrnsVeskAutonomous(true);
  WriteAndRollBack();
  EXPECT_EQ(Names(), String(u"Apricot;Cheese;"));
}

TEST_F(VeskUpdaterFileTest, PlainWritesAreRolledBack) {
  WriteAndRollBack();
  EXPECT_EQ(Names(), String(u"Apple;Bread;"));
}

}  // namespace
