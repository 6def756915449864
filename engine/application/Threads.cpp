// C4DThread: running a piece of work here or on a thread of its own, asking it to stop and waiting
// for it.
#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <set>
#include <thread>

#include "engine/outside/Services.h"
#include "host/C4DThread.h"

namespace engine {

struct ThreadBody {
  explicit ThreadBody(host::C4DThread& givenOwner) : owner(givenOwner) { handle.body_ = this; }

  static bool AskedToStop(const host::BaseThread& thread) {
    return thread.body_ != nullptr && (thread.body_->stop || thread.body_->owner.TestDBreak());
  }

  host::C4DThread& owner;
  host::BaseThread handle;
  std::thread thread;
  std::thread::id runsOn;  // guarded by RunningThreads
  std::atomic<bool> stop{false};
  std::atomic<bool> failed{false};
};

namespace {

// The bodies whose Main runs now, in whatever thread. One lock for all: threads are few and long.
class RunningThreads {
 public:
  static RunningThreads& Get() {
    static RunningThreads threads;
    return threads;
  }

  // False when it runs already.
  bool Enter(ThreadBody& body) {
    const std::lock_guard lock(mutex_);
    return running_.insert(&body).second;
  }

  void Begin(ThreadBody& body) {
    const std::lock_guard lock(mutex_);
    body.runsOn = std::this_thread::get_id();
  }

  void Leave(ThreadBody& body) {
    const std::lock_guard lock(mutex_);
    body.runsOn = {};
    running_.erase(&body);
    finished_.notify_all();
  }

  bool Holds(const ThreadBody& body) {
    const std::lock_guard lock(mutex_);
    return running_.count(const_cast<ThreadBody*>(&body)) > 0;
  }

  // Waits until it has left; false, at once, when called from inside it.
  bool Wait(ThreadBody& body) {
    std::unique_lock lock(mutex_);
    if (body.runsOn == std::this_thread::get_id()) return false;
    finished_.wait(lock, [&] { return running_.count(&body) == 0; });
    return true;
  }

  // From inside a thread of ours it asks only: two that wait for each other would never end.
  void StopAll() {
    std::unique_lock lock(mutex_);
    const auto mine = [](const ThreadBody* body) {
      return body->runsOn == std::this_thread::get_id();
    };
    const bool waits = std::none_of(running_.begin(), running_.end(), mine);
    finished_.wait(lock, [&] {
      for (ThreadBody* body : running_) body->stop = true;
      return !waits || running_.empty();
    });
  }

 private:
  std::mutex mutex_;
  std::condition_variable finished_;
  std::set<ThreadBody*> running_;
};

// It has left also when Main throws: who waits for it would wait for ever.
void Run(ThreadBody& body) {
  struct Stay {
    explicit Stay(ThreadBody& given) : body(given) { RunningThreads::Get().Begin(body); }
    Stay(const Stay&) = delete;
    Stay& operator=(const Stay&) = delete;
    ~Stay() { RunningThreads::Get().Leave(body); }
    ThreadBody& body;
  };
  const Stay stay(body);
  body.owner.Main();
}

// On a thread of its own, where nobody else could catch it.
void RunBeside(ThreadBody& body) {
  try {
    Run(body);
  } catch (...) {
    body.failed = true;
  }
}

void Join(ThreadBody& body) {
  if (body.thread.joinable()) body.thread.join();
  if (body.failed.exchange(false))
    PublishedServices().ledger.Add({Operation::Note, "thread", "", false,
                                    "Work beside the scene failed, probably for lack of memory."});
}

}  // namespace
}  // namespace engine

namespace host {

using engine::RunningThreads;

Bool BaseThread::TestBreak() { return engine::ThreadBody::AskedToStop(*this); }

C4DThread::C4DThread() : body_(std::make_unique<engine::ThreadBody>(*this)) {}
C4DThread::~C4DThread() { End(TRUE); }

Bool C4DThread::TestDBreak() { return FALSE; }

Bool C4DThread::Start(LONG mode, LONG) {
  if (!RunningThreads::Get().Enter(*body_)) return FALSE;
  // The former run is over, but its thread may still be there to be joined.
  engine::Join(*body_);
  body_->stop = false;
  if (mode == 0) {
    engine::Run(*body_);
  } else {
    try {
      body_->thread = std::thread([body = body_.get()] { engine::RunBeside(*body); });
    } catch (const std::exception&) {
      RunningThreads::Get().Leave(*body_);  // the system has no thread for it, or no memory
      return FALSE;
    }
  }
  return TRUE;
}

void C4DThread::End(Bool wait) {
  body_->stop = true;
  if (wait) Wait(FALSE);
}

void C4DThread::Wait(Bool) {
  // From inside itself it would wait for ever.
  if (RunningThreads::Get().Wait(*body_)) engine::Join(*body_);
}

Bool C4DThread::IsRunning() const { return RunningThreads::Get().Holds(*body_); }
Bool C4DThread::TestBreak() { return engine::ThreadBody::AskedToStop(body_->handle); }
BaseThread* C4DThread::Get() const { return &body_->handle; }

void StopAllThreads() { RunningThreads::Get().StopAll(); }

}  // namespace host
