#include "filter/veskorasession.h"

#include <gtest/gtest.h>

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

}  // namespace
