#include "platform/ui/thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>

#include "platform/rtl/exceptions.h"
#include "platform/ui/forms.h"

namespace {

class TWorker : public TThread {
 public:
  std::function<void(TWorker&)> body;
  void Execute() override { body(*this); }
  using TThread::Terminated;
};

}  // namespace

TEST(ThreadTest, SynchronizeRunsOnTheMainThreadWhileWaiting) {
  bool onMain = false;
  int counter = 0;
  TWorker w;
  w.body = [&](TWorker& self) {
    for (int i = 0; i < 3; ++i) self.Synchronize([&] {
        onMain = IsMainThread();
        ++counter;
      });
    self.SetReturnValue(7);
  };
  w.Start();
  EXPECT_EQ(w.WaitFor(), 7);
  EXPECT_TRUE(onMain);
  EXPECT_EQ(counter, 3);
  EXPECT_TRUE(w.Finished());
}

TEST(ThreadTest, TerminateIsSeenByTheWorker) {
  std::atomic<int> loops{0};
  TWorker w;
  w.body = [&](TWorker& self) {
    while (!self.Terminated()) {
      ++loops;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  };
  w.Start();
  while (loops.load() == 0) std::this_thread::yield();
  w.Terminate();
  w.WaitFor();
  EXPECT_TRUE(w.Terminated());
}

TEST(ThreadTest, ExceptionsAreKeptAndSynchronizedOnesComeBack) {
  TWorker w;
  bool caughtInWorker = false;
  w.body = [&](TWorker& self) {
    try {
      self.Synchronize([] { throw EConvertError(u"in main"); });
    } catch (const EConvertError&) {
      caughtInWorker = true;
    }
    throw EInOutError(u"worker failed");
  };
  w.Start();
  w.WaitFor();
  EXPECT_TRUE(caughtInWorker);
  ASSERT_TRUE(w.FatalException());
  EXPECT_THROW(std::rethrow_exception(w.FatalException()), EInOutError);
}

TEST(ThreadTest, QueuedMethodsRunInProcessMessagesAndOnTerminateFires) {
  std::atomic<bool> queued{false};
  int ran = 0;
  int terminated = 0;
  TWorker w;
  w.OnTerminate = [&](TObject*) { ++terminated; };
  w.body = [&](TWorker&) {
    TThread::Queue([&] { ++ran; });
    queued = true;
  };
  w.Start();
  while (!queued.load()) std::this_thread::yield();
  Application->ProcessMessages();
  EXPECT_EQ(ran, 1);
  w.WaitFor();
  EXPECT_EQ(terminated, 1);
}

TEST(ThreadTest, FreeOnTerminateDeletesOnTheMainThread) {
  static std::atomic<int> alive{0};
  struct TSelfFreeing : TThread {
    TSelfFreeing() { ++alive; }
    ~TSelfFreeing() override { --alive; }
    void Execute() override {}
  };
  auto* t = new TSelfFreeing;
  t->SetFreeOnTerminate(true);
  t->Start();
  for (int i = 0; i < 2000 && alive.load() != 0; ++i) {
    Application->ProcessMessages();
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  EXPECT_EQ(alive.load(), 0);
}

TEST(ThreadTest, AThreadNeverStartedWaitsForNothing) {
  TWorker w;
  w.body = [](TWorker&) {};
  EXPECT_TRUE(w.Suspended());
  EXPECT_EQ(w.WaitFor(), 0);
}

TEST(ThreadTest, SendMessageFromAWorkerRunsOnTheMainThread) {
  struct TAnswer : TWinControl {
    using TWinControl::TWinControl;
    bool onMain = false;
    void WndProc(TMessage& m) override {
      if (m.Msg == WM_USER) {
        onMain = IsMainThread();
        m.Result = static_cast<LRESULT>(m.WParam) * 2;
        return;
      }
      TWinControl::WndProc(m);
    }
  };
  TAnswer target(nullptr);
  LRESULT answer = 0;
  TWorker w;
  w.body = [&](TWorker&) { answer = SendMessage(target.Handle(), WM_USER, 21, 0); };
  w.Start();
  w.WaitFor();
  EXPECT_EQ(answer, 42);
  EXPECT_TRUE(target.onMain);
}
