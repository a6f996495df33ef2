#include "platform/ui/thread.h"

#include <chrono>
#include <deque>
#include <memory>

#include "platform/rtl/typinfo.h"

namespace {

const std::thread::id mainThreadId = std::this_thread::get_id();

// A method a worker hands to the main thread. Waiters keep theirs on the
// stack and sleep on Done; queued ones are owned by the queue.
struct TSyncRequest {
  TThreadMethod Method;
  bool Waited = false;
  bool Done = false;
  std::exception_ptr Error;
};

struct TSyncQueue {
  std::mutex Lock;
  std::condition_variable Changed;
  std::deque<TSyncRequest*> Requests;
};

TSyncQueue& SyncQueue() {
  static TSyncQueue queue;
  return queue;
}

}  // namespace

bool IsMainThread() { return std::this_thread::get_id() == mainThreadId; }

bool CheckSynchronize() {
  if (!IsMainThread()) return false;
  TSyncQueue& q = SyncQueue();
  std::deque<TSyncRequest*> batch;
  {
    std::lock_guard<std::mutex> lock(q.Lock);
    batch.swap(q.Requests);
  }
  for (TSyncRequest* r : batch) {
    std::exception_ptr error;
    try {
      r->Method();
    } catch (...) {
      error = std::current_exception();
    }
    if (r->Waited) {
      std::lock_guard<std::mutex> lock(q.Lock);
      r->Error = error;
      r->Done = true;
    } else {
      delete r;
    }
  }
  if (!batch.empty()) q.Changed.notify_all();
  return !batch.empty();
}

KELMAR_PUBLISH(TThread) {}

TThread::~TThread() {
  if (thread_.joinable()) {
    Terminate();
    if (thread_.get_id() == std::this_thread::get_id()) thread_.detach();
    else WaitFor();
  }
}

void TThread::Start() {
  if (started_.exchange(true)) return;
  thread_ = std::thread([this] { Run(); });
}

void TThread::Run() {
  try {
    Execute();
  } catch (...) {
    fatal_ = std::current_exception();
  }
  try {
    DoTerminate();
  } catch (...) {
    if (!fatal_) fatal_ = std::current_exception();
  }
  bool freeSelf = freeOnTerminate_;
  {
    std::lock_guard<std::mutex> lock(SyncQueue().Lock);
    finished_ = true;
  }
  SyncQueue().Changed.notify_all();
  if (freeSelf) Queue([this] { delete this; });
}

void TThread::DoTerminate() {
  if (OnTerminate) Synchronize([this] { OnTerminate(this); });
}

int TThread::WaitFor() {
  if (!started_) return returnValue_;
  if (IsMainThread()) {
    TSyncQueue& q = SyncQueue();
    while (true) {
      CheckSynchronize();
      std::unique_lock<std::mutex> lock(q.Lock);
      if (finished_) break;
      q.Changed.wait_for(lock, std::chrono::milliseconds(5), [&] { return finished_ || !q.Requests.empty(); });
    }
  }
  if (thread_.joinable() && thread_.get_id() != std::this_thread::get_id()) thread_.join();
  return returnValue_;
}

void TThread::Synchronize(const TThreadMethod& Method) { Synchronize(this, Method); }

void TThread::Synchronize(TThread*, const TThreadMethod& Method) {
  if (IsMainThread()) {
    Method();
    return;
  }
  TSyncQueue& q = SyncQueue();
  TSyncRequest request;
  request.Method = Method;
  request.Waited = true;
  std::unique_lock<std::mutex> lock(q.Lock);
  q.Requests.push_back(&request);
  q.Changed.notify_all();
  q.Changed.wait(lock, [&] { return request.Done; });
  if (request.Error) std::rethrow_exception(request.Error);
}

void TThread::Queue(const TThreadMethod& Method) {
  if (IsMainThread()) {
    Method();
    return;
  }
  auto request = std::make_unique<TSyncRequest>();
  request->Method = Method;
  TSyncQueue& q = SyncQueue();
  {
    std::lock_guard<std::mutex> lock(q.Lock);
    q.Requests.push_back(request.release());
  }
  q.Changed.notify_all();
}
