#include "filter/veskorasession.h"

#include <gtest/gtest.h>

#include "platform/db/dadataset.h"
#include "platform/db/fields.h"
#include "tests/support/dbfixture.h"

namespace {

// The writer of design streams sets csWriting while it reads the
// properties; the test sets it the same way.
class TStreamedSession : public TVeskOraSession {
 public:
  using TVeskOraSession::TVeskOraSession;
  void SetWriting(bool on) { SetState(csWriting, on); }
};

class VeskOraSessionTest : public ::testing::Test {
 protected:
  void SetUp() override {
    RegisterTestDrivers();
    owner_ = std::make_unique<TComponent>(nullptr);
    session_ = new TStreamedSession(owner_.get());
    session_->SetName(u"Session1");
    session_->SetServer(u":memory:");
  }
  std::unique_ptr<TComponent> owner_;
  TStreamedSession* session_ = nullptr;
};

TEST_F(VeskOraSessionTest, ReadOnlyModeIsTheHandlersAnswer) {
  TObject asker;
  EXPECT_FALSE(session_->GetVESKReadOnlyMode(&asker));
  TObject* seen = nullptr;
  bool answer = true;
  session_->OnVESKReadOnlyMode = [&](TObject* sender) {
    seen = sender;
    return answer;
  };
  EXPECT_TRUE(session_->GetVESKReadOnlyMode(&asker));
  EXPECT_EQ(seen, &asker);
  answer = false;
  EXPECT_FALSE(session_->GetVESKReadOnlyMode(nullptr));
  EXPECT_EQ(seen, nullptr);
}

TEST_F(VeskOraSessionTest, PublishedForTheByNameProtocol) {
  EXPECT_FALSE(GetPropBool(session_, u"EnableAutoConnect", true));
  EXPECT_FALSE(GetPropBool(session_, u"EnforceSaveConnect", true));
  SetPropBool(session_, u"EnableAutoConnect", true);
  SetPropBool(session_, u"EnforceSaveConnect", true);
  EXPECT_TRUE(session_->EnableAutoConnect());
  EXPECT_TRUE(session_->EnforceSaveConnect());
  EXPECT_TRUE(IsPropType(session_, u"OnVESKReadOnlyMode", tkMethod));
  TVESKReadOnlyMode handler = [](TObject*) { return true; };
  SetPropMethod(session_, u"OnVESKReadOnlyMode", handler.ToMethod());
  EXPECT_TRUE(session_->GetVESKReadOnlyMode(nullptr));
  // A plain session has none of it.
  TOraSession plain(nullptr);
  EXPECT_TRUE(GetPropBool(&plain, u"EnableAutoConnect", true));
}

TEST_F(VeskOraSessionTest, DesignedConnectionIsNotWrittenUnlessAllowed) {
  session_->Connect();
  session_->SetWriting(true);
  EXPECT_TRUE(session_->Connected());  // at run time the writer sees the state
  EXPECT_TRUE(GetPropBool(session_, u"Connected"));
  session_->SetDesigning(true);
  EXPECT_FALSE(session_->Connected());
  EXPECT_FALSE(GetPropBool(session_, u"Connected", true));
  session_->SetEnableAutoConnect(true);
  EXPECT_TRUE(session_->Connected());
  session_->SetEnableAutoConnect(false);
  session_->SetWriting(false);
  EXPECT_TRUE(session_->Connected());  // designing alone changes nothing
  session_->Disconnect();
  session_->SetWriting(true);
  session_->SetEnableAutoConnect(true);
  EXPECT_FALSE(session_->Connected());  // and a closed session stays closed
}

// The first column of the statement's one row, as text.
String ScalarOf(TOraSession* session, const String& sql) {
  TOraQuery q(nullptr);
  q.SetSession(session);
  q.SQL()->SetText(sql);
  q.Open();
  return q.Fields()->Fields(0)->AsString();
}

TEST_F(VeskOraSessionTest, ConnectAddsTheSimilarityPackage) {
  session_->Connect();
  EXPECT_EQ(ScalarOf(session_, u"SELECT ZE$G$CMP.PREP('  Hello,  World!') FROM DUAL"), u"hello world");
  EXPECT_EQ(ScalarOf(session_, u"SELECT ZE$G$CMP.INTEXT('abcdef', 'ba', NULL) FROM DUAL"), u"1");
  // again after a reconnect, which starts a new engine connection
  session_->Disconnect();
  session_->Connect();
  EXPECT_EQ(ScalarOf(session_, u"SELECT ZE$G$CMP.NUM('a1b22') FROM DUAL"), u"122");

  TOraSession plain(owner_.get());
  plain.SetServer(u":memory:");
  plain.Connect();
  EXPECT_THROW(ScalarOf(&plain, u"SELECT ZE$G$CMP.PREP('x') FROM DUAL"), EDatabaseError);
}

TEST_F(VeskOraSessionTest, AnApplicationsOwnFunctionRegisteredAfterConnectWins) {
  session_->AfterConnect = [this](TObject*) {
    session_->RegisterFunction(u"PREP", 1, [](std::span<const TDbValue>) { return TDbValue::TextValue(u"mine"); });
  };
  session_->Connect();
  EXPECT_EQ(ScalarOf(session_, u"SELECT ZE$G$CMP.PREP('x') FROM DUAL"), u"mine");
}

}  // namespace
