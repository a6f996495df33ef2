// TThread: a worker that reaches the forms only through Synchronize.
//
// Synchronize from a worker queues the method and waits until the main
// thread runs it, in Application->ProcessMessages() or in WaitFor called on
// the main thread. Called on the main thread, it runs the method at once.
// An exception raised by Execute is kept in FatalException; one raised by
// a synchronised method is raised again in the worker.
//
// A thread starts with Start(): C++ cannot run the virtual Execute before
// the derived constructor has finished, so a class that wants to run at
// once calls Start() as the last step of its own constructor.
//
// Ownership: the creator deletes the thread object (after WaitFor), unless
// FreeOnTerminate is set, in which case the main thread deletes it when it
// has finished. Deleting a running thread terminates it and waits.
#pragma once

#include <atomic>
#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>

#include "platform/rtl/events.h"
#include "platform/rtl/object.h"

using TThreadMethod = std::function<void()>;

// Runs the methods that workers are waiting on; true when any ran. Main
// thread only.
bool CheckSynchronize();
bool IsMainThread();

class TThread : public TObject {
  KELMAR_CLASS(TThread, TObject)
 public:
  TThread() = default;
  TThread(const TThread&) = delete;
  TThread& operator=(const TThread&) = delete;
  ~TThread() override;

  // Starts Execute on a new thread; a second call does nothing.
  void Start();
  void Resume() { Start(); }
  bool Suspended() const { return !started_; }
  void Terminate() { terminated_ = true; }
  bool Terminated() const { return terminated_; }
  bool Finished() const { return finished_; }
  // Waits for Execute to end (serving Synchronize requests when called on
  // the main thread) and returns ReturnValue.
  int WaitFor();
  int ReturnValue() const { return returnValue_; }
  void SetReturnValue(int v) { returnValue_ = v; }
  bool FreeOnTerminate() const { return freeOnTerminate_; }
  void SetFreeOnTerminate(bool v) { freeOnTerminate_ = v; }
  std::exception_ptr FatalException() const { return fatal_; }

  // Runs the method on the main thread and waits for it.
  void Synchronize(const TThreadMethod& Method);
  static void Synchronize(TThread* Thread, const TThreadMethod& Method);
  // Runs the method on the main thread later, without waiting.
  static void Queue(const TThreadMethod& Method);

  // Fired on the main thread after Execute has ended.
  TNotifyEvent OnTerminate;

 protected:
  virtual void Execute() = 0;
  virtual void DoTerminate();

 private:
  void Run();

  std::thread thread_;
  std::atomic<bool> started_{false};
  std::atomic<bool> terminated_{false};
  std::atomic<bool> finished_{false};
  std::atomic<int> returnValue_{0};
  bool freeOnTerminate_ = false;
  std::exception_ptr fatal_;
};
