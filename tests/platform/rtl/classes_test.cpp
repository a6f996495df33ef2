#include "platform/rtl/classes.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::vector<std::string>* g_log = nullptr;

// Records its destruction and the removals it hears of.
class TProbe : public TComponent {
  KELMAR_CLASS(TProbe, TComponent)
 public:
  TProbe(TComponent* owner, std::string tag) : TComponent(owner), tag_(std::move(tag)) {}
  ~TProbe() override {
    if (g_log) g_log->push_back("delete " + tag_);
  }
  TComponent* Peer = nullptr;
  void Watch(TComponent* peer) {
    Peer = peer;
    if (peer) peer->FreeNotification(this);
  }

 protected:
  void Notification(TComponent* c, TOperation op) override {
    TComponent::Notification(c, op);
    if (op == opRemove && c == Peer) {
      Peer = nullptr;
      if (g_log) g_log->push_back(tag_ + " lost peer");
    }
  }

 private:
  std::string tag_;
};

class TPoint2 : public TPersistent {
  KELMAR_CLASS(TPoint2, TPersistent)
 public:
  int X = 0, Y = 0;
  void Assign(TPersistent* source) override {
    if (auto* p = dynamic_cast<TPoint2*>(source)) {
      X = p->X;
      Y = p->Y;
      return;
    }
    TPersistent::Assign(source);
  }
};

class TOther : public TPersistent {
  KELMAR_CLASS(TOther, TPersistent)
};

}  // namespace

KELMAR_PUBLISH(TProbe) {}
KELMAR_PUBLISH(TPoint2) {}
KELMAR_PUBLISH(TOther) {}

namespace {

class ComponentTest : public ::testing::Test {
 protected:
  void SetUp() override { g_log = &log; }
  void TearDown() override { g_log = nullptr; }
  std::vector<std::string> log;
};

TEST_F(ComponentTest, OwnerDeletesWhatItOwnsLastFirst) {
  auto* owner = new TProbe(nullptr, "owner");
  new TProbe(owner, "a");
  auto* b = new TProbe(owner, "b");
  EXPECT_EQ(owner->ComponentCount(), 2);
  EXPECT_EQ(b->ComponentIndex(), 1);
  EXPECT_EQ(b->Owner(), owner);
  delete owner;
  EXPECT_EQ(log, (std::vector<std::string>{"delete owner", "delete b", "delete a"}));
}

TEST_F(ComponentTest, DeletingAChildRemovesItFromItsOwner) {
  TProbe owner(nullptr, "owner");
  auto* a = new TProbe(&owner, "a");
  new TProbe(&owner, "b");
  delete a;
  ASSERT_EQ(owner.ComponentCount(), 1);
  EXPECT_EQ(owner.Components(0)->ComponentIndex(), 0);
  EXPECT_THROW(owner.Components(5), EListError);
}

TEST_F(ComponentTest, FreeNotificationClearsPeerReferences) {
  TProbe watcher(nullptr, "watcher");
  auto* peer = new TProbe(nullptr, "peer");
  watcher.Watch(peer);
  delete peer;
  EXPECT_EQ(watcher.Peer, nullptr);
  EXPECT_EQ(log, (std::vector<std::string>{"delete peer", "watcher lost peer"}));
}

TEST_F(ComponentTest, WatcherDeletedFirstIsForgottenByThePeer) {
  TProbe peer(nullptr, "peer");
  auto* watcher = new TProbe(nullptr, "watcher");
  watcher->Watch(&peer);
  delete watcher;
  log.clear();
  // The peer must not call back into the deleted watcher; ASan would see it.
  EXPECT_NO_THROW(peer.FreeNotification(nullptr));
  EXPECT_TRUE(log.empty());
}

TEST_F(ComponentTest, SiblingsHearOfRemovalThroughTheirOwner) {
  TProbe form(nullptr, "form");
  auto* grid = new TProbe(&form, "grid");
  auto* source = new TProbe(&form, "source");
  grid->Peer = source;  // a plain reference, no FreeNotification
  delete source;
  EXPECT_EQ(grid->Peer, nullptr);
}

TEST_F(ComponentTest, NamesAreIdentifiersUniqueWithinTheOwner) {
  TComponent form(nullptr);
  auto* a = new TComponent(&form);
  auto* b = new TComponent(&form);
  a->SetName(u"Edit1");
  EXPECT_THROW(b->SetName(u"edit1"), EComponentError);
  EXPECT_THROW(b->SetName(u"1abc"), EComponentError);
  EXPECT_THROW(b->SetName(u"a b"), EComponentError);
  EXPECT_EQ(b->Name(), u"");
  b->SetName(u"Edit2");
  EXPECT_EQ(form.FindComponent(u"EDIT2"), b);
  EXPECT_EQ(form.FindComponent(u"Edit3"), nullptr);
  EXPECT_EQ(GetPropString(a, u"Name"), u"Edit1");
}

TEST_F(ComponentTest, OwnershipMovesAndDesigningPropagates) {
  TComponent first(nullptr), second(nullptr);
  second.SetDesigning(true);
  auto* c = new TComponent(&first);
  EXPECT_FALSE(c->ComponentState().Contains(csDesigning));
  second.InsertComponent(c);
  EXPECT_EQ(first.ComponentCount(), 0);
  EXPECT_EQ(c->Owner(), &second);
  EXPECT_TRUE(c->ComponentState().Contains(csDesigning));
  c->BeginLoading();
  EXPECT_TRUE(c->ComponentState().Contains(csLoading));
  c->Loaded();
  EXPECT_FALSE(c->ComponentState().Contains(csLoading));
}

TEST(PersistentTest, AssignCopiesOrRaisesWithClassNames) {
  TPoint2 a, b;
  a.X = 3;
  a.Y = 4;
  b.Assign(&a);
  EXPECT_EQ(b.X, 3);
  EXPECT_EQ(b.Y, 4);
  TOther other;
  try {
    b.Assign(&other);
    FAIL();
  } catch (const EConvertError& e) {
    EXPECT_EQ(e.Message, u"Cannot assign a TOther to a TPoint2");
  }
  try {
    b.Assign(nullptr);
    FAIL();
  } catch (const EConvertError& e) {
    EXPECT_EQ(e.Message, u"Cannot assign a nil to a TPoint2");
  }
}

TEST(ExceptionTest, ClassNamesAndMessages) {
  try {
    Abort();
  } catch (const Exception& e) {
    EXPECT_EQ(e.ClassName(), u"EAbort");
  }
  ERangeError r(u"Range check error");
  const Exception& base = r;
  EXPECT_EQ(base.ClassName(), u"ERangeError");
  EXPECT_STREQ(EDatabaseError(u"ORA-00942: сбой").what(), "ORA-00942: сбой");
  EXPECT_TRUE(dynamic_cast<const EIntError*>(&base));
}

}  // namespace
