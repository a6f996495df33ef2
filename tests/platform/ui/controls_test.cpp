#include "platform/ui/controls.h"

#include "platform/ui/extctrls.h"
#include "platform/ui/input.h"
#include "tests/platform/ui/uifixture.h"

using Log = std::vector<std::string>;

namespace {

// Answers WM_USER with wParam + lParam and logs every message it sees.
class TEcho : public TWinControl {
 public:
  TEcho(TComponent* owner, Log* log) : TWinControl(owner), log_(log) {}
  void WndProc(TMessage& m) override {
    if (m.Msg >= WM_USER) {
      log_->push_back("msg " + std::to_string(m.Msg - WM_USER) + " " + std::to_string(m.WParam));
      m.Result = static_cast<LRESULT>(m.WParam) + m.LParam;
      return;
    }
    TWinControl::WndProc(m);
  }

 private:
  Log* log_;
};

}  // namespace

class MessagesTest : public UiTest {};

TEST_F(MessagesTest, SendMessageIsSynchronousAndReturnsTheResult) {
  auto* echo = Add<TEcho>(&log);
  EXPECT_EQ(SendMessage(echo->Handle(), WM_USER, 40, 2), 42);
  EXPECT_EQ(echo->Perform(WM_USER + 1, 5, 5), 10);
  EXPECT_EQ(log, (Log{"msg 0 40", "msg 1 5"}));
  EXPECT_EQ(FindControl(echo->Handle()), echo);
}

TEST_F(MessagesTest, UnknownHandlesAnswerNothing) {
  EXPECT_EQ(SendMessage(0, WM_USER, 1, 1), 0);
  EXPECT_EQ(SendMessage(0xFFFFFFF, WM_USER, 1, 1), 0);
  EXPECT_FALSE(PostMessage(0, WM_USER, 1, 1));
}

TEST_F(MessagesTest, PostedMessagesArriveInOrderOnlyInProcessMessages) {
  auto* echo = Add<TEcho>(&log);
  EXPECT_TRUE(PostMessage(echo->Handle(), WM_USER, 1, 0));
  EXPECT_TRUE(PostMessage(echo->Handle(), WM_USER, 2, 0));
  EXPECT_TRUE(log.empty());
  EXPECT_EQ(PostedMessageCount(), 2);
  Application->ProcessMessages();
  EXPECT_EQ(log, (Log{"msg 0 1", "msg 0 2"}));
  EXPECT_EQ(PostedMessageCount(), 0);
}

TEST_F(MessagesTest, MessagesPostedWhileDeliveringArriveInTheSameCall) {
  auto* echo = Add<TEcho>(&log);
  echo->OnClick = nullptr;
  PostMessage(echo->Handle(), WM_USER, 1, 0);
  auto* relay = Add<TEcho>(&log);
  // The relay's handler posts on to the echo.
  relay->WindowProc = [&, relay](TMessage& m) {
    if (m.Msg == WM_USER + 7) PostMessage(echo->Handle(), WM_USER, 9, 0);
    else relay->WndProc(m);
  };
  PostMessage(relay->Handle(), WM_USER + 7, 0, 0);
  Application->ProcessMessages();
  EXPECT_EQ(log, (Log{"msg 0 1", "msg 0 9"}));
}

TEST_F(MessagesTest, MessagesToADeletedControlAreDropped) {
  auto* echo = Add<TEcho>(&log);
  HWND h = echo->Handle();
  PostMessage(h, WM_USER, 1, 0);
  delete echo;
  EXPECT_EQ(FindControl(h), nullptr);
  Application->ProcessMessages();
  EXPECT_TRUE(log.empty());
  EXPECT_EQ(PostedMessageCount(), 0);
}

TEST_F(MessagesTest, AReplacedWindowProcCanChainToTheSavedOne) {
  auto* echo = Add<TEcho>(&log);
  TWndMethod saved = echo->WindowProc;
  echo->WindowProc = [&](TMessage& m) {
    if (m.Msg == WM_USER + 3) {
      m.Result = -1;  // swallowed
      return;
    }
    saved(m);
  };
  EXPECT_EQ(echo->Perform(WM_USER + 3, 1, 1), -1);
  EXPECT_EQ(echo->Perform(WM_USER, 1, 1), 2);
  EXPECT_EQ(log, (Log{"msg 0 1"}));
}

TEST_F(MessagesTest, KeyboardMessagesReachTheHandlers) {
  auto* rec = Add<TRecorder>(&log);
  TMessage m{WM_KEYDOWN, VK_DOWN, 0, 0};
  rec->Dispatch(m);
  rec->Perform(WM_CHAR, u'x', 0);
  EXPECT_EQ(log, (Log{"down 28", "press x"}));
}

class FocusTest : public UiTest {};

TEST_F(FocusTest, EnterAndExitRunThroughTheParentsInOrder) {
  auto* left = Add<TPanel>();
  auto* right = Add<TPanel>();
  auto* a = new TRecorder(form, &log, "a");
  a->SetParent(left);
  auto* b = new TRecorder(form, &log, "b");
  b->SetParent(right);
  auto* c = new TRecorder(form, &log, "c");
  c->SetParent(right);
  left->OnEnter = [&](TObject*) { log.push_back("left:enter"); };
  left->OnExit = [&](TObject*) { log.push_back("left:exit"); };
  right->OnEnter = [&](TObject*) { log.push_back("right:enter"); };
  right->OnExit = [&](TObject*) { log.push_back("right:exit"); };
  a->SetFocus();
  log.clear();
  b->SetFocus();
  EXPECT_EQ(log, (Log{"a:exit", "left:exit", "right:enter", "b:enter"}));
  log.clear();
  c->SetFocus();  // same panel: the panel hears nothing
  EXPECT_EQ(log, (Log{"b:exit", "c:enter"}));
  EXPECT_EQ(Screen->ActiveControl(), c);
  EXPECT_EQ(form->ActiveControl(), c);
  EXPECT_TRUE(c->Focused());
  EXPECT_FALSE(b->Focused());
}

TEST_F(FocusTest, AnExitHandlerCanKeepTheFocus) {
  auto* a = Add<TRecorder>(&log, "a");
  auto* b = Add<TRecorder>(&log, "b");
  a->SetFocus();
  a->OnExit = [&](TObject*) { a->SetFocus(); };
  log.clear();
  b->SetFocus();
  EXPECT_TRUE(a->Focused());
  EXPECT_EQ(log, (Log{"a:exit"}));
}

TEST_F(FocusTest, FocusMessagesCarryTheOtherHandle) {
  auto* a = Add<TRecorder>(&log, "a");
  auto* b = Add<TRecorder>(&log, "b");
  a->SetFocus();
  std::vector<std::pair<UINT, WPARAM>> seen;
  auto spy = [&seen](TWinControl* c) {
    TWndMethod saved = c->WindowProc;
    c->WindowProc = [&seen, saved](TMessage& m) {
      if (m.Msg == WM_SETFOCUS || m.Msg == WM_KILLFOCUS) seen.push_back({m.Msg, m.WParam});
      saved(m);
    };
  };
  spy(a);
  spy(b);
  b->SetFocus();
  ASSERT_EQ(seen.size(), 2u);
  EXPECT_EQ(seen[0], std::make_pair(WM_KILLFOCUS, static_cast<WPARAM>(b->Handle())));
  EXPECT_EQ(seen[1], std::make_pair(WM_SETFOCUS, static_cast<WPARAM>(a->Handle())));
}

TEST_F(FocusTest, HiddenOrDisabledControlsCannotTakeTheFocus) {
  auto* a = Add<TRecorder>(&log);
  a->SetEnabled(false);
  EXPECT_FALSE(a->CanFocus());
  EXPECT_THROW(a->SetFocus(), EInvalidOperation);
  a->SetEnabled(true);
  auto* panel = Add<TPanel>();
  a->SetParent(panel);
  panel->Hide();
  EXPECT_FALSE(a->CanFocus());
  panel->Show();
  a->SetFocus();
  panel->Hide();  // hiding takes the focus away
  EXPECT_EQ(Screen->ActiveControl(), nullptr);
}

TEST_F(FocusTest, DeletingTheFocusedControlForgetsIt) {
  auto* a = Add<TRecorder>(&log);
  a->SetFocus();
  delete a;
  EXPECT_EQ(Screen->ActiveControl(), nullptr);
  EXPECT_EQ(form->ActiveControl(), nullptr);
}

TEST_F(FocusTest, ParentDeletesItsChildren) {
  auto* panel = Add<TPanel>();
  auto* a = new TRecorder(form, &log);
  a->SetParent(panel);
  a->SetName(u"Child");
  EXPECT_EQ(form->FindChildControl(u"child"), a);
  delete panel;
  EXPECT_EQ(form->FindComponent(u"Child"), nullptr);
}

TEST_F(FocusTest, TabOrderFollowsSetTabOrder) {
  auto* a = Add<TRecorder>(&log, "a");
  auto* b = Add<TRecorder>(&log, "b");
  auto* c = Add<TRecorder>(&log, "c");
  EXPECT_EQ(c->TabOrder(), 2);
  c->SetTabOrder(0);
  EXPECT_EQ(c->TabOrder(), 0);
  EXPECT_EQ(a->TabOrder(), 1);
  EXPECT_EQ(form->FindNextControl(c, true, true, false), a);
  EXPECT_EQ(form->FindNextControl(b, true, true, false), c);  // wraps
  b->SetTabStop(false);
  EXPECT_EQ(form->FindNextControl(a, true, true, false), c);
}

class MouseTest : public UiTest {};

TEST_F(MouseTest, ClickGivesCoordinatesThenClickAndFocuses) {
  auto* a = Add<TRecorder>(&log);
  MouseClick(a, 12, 7);
  EXPECT_EQ(log, (Log{"enter", "mousedown 12,7", "click"}));
  EXPECT_TRUE(a->Focused());
}

TEST_F(MouseTest, DoubleClickAsWindowsSendsIt) {
  auto* a = Add<TRecorder>(&log);
  a->SetFocus();
  log.clear();
  MouseDoubleClick(a, 3, 4);
  EXPECT_EQ(log, (Log{"mousedown 3,4", "click", "mousedown 3,4 double", "dblclick"}));
}

TEST_F(MouseTest, MouseMoveCarriesShiftAndPosition) {
  auto* a = Add<TRecorder>(&log);
  TShiftState seen;
  int x = 0, y = 0;
  a->OnMouseMove = [&](TObject*, TShiftState s, int X, int Y) { seen = s; x = X; y = Y; };
  MouseMoveTo(a, -5, 300, {ssShift, ssLeft});
  EXPECT_EQ(seen, (TShiftState{ssShift, ssLeft}));
  EXPECT_EQ(x, -5);
  EXPECT_EQ(y, 300);
}
