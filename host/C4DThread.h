// C4DThread: a piece of work with a name that can be asked to stop. The caller owns it. Mode 0 runs
// Main inside Start; other modes run it on a thread of its own.
#pragma once

#include <memory>

#include "host/Types.h"

namespace engine {
struct ThreadBody;
}

namespace host {

class BaseDocument;

// Handle that a long operation polls to learn whether it shall stop. Owned by its C4DThread.
class BaseThread {
 public:
  // True once the thread was asked to end or the C4DThread's own test says so.
  Bool TestBreak();

 private:
  friend struct engine::ThreadBody;
  engine::ThreadBody* body_ = nullptr;
};

class C4DThread {
 public:
  C4DThread();
  C4DThread(const C4DThread&) = delete;
  C4DThread& operator=(const C4DThread&) = delete;
  // Ends the thread and waits for it. A derived class must have called End(true) before its members
  // go.
  virtual ~C4DThread();
  virtual void Main() = 0;
  virtual Bool TestDBreak();
  virtual const CHAR* GetThreadName() = 0;

  // Mode 0: Main has run when this returns. False when it runs already.
  Bool Start(LONG mode, LONG priority);
  // Asks Main to stop, and with `wait` waits for it. On a finished thread: nothing.
  void End(Bool wait = TRUE);
  // Waits for Main; on a finished thread: nothing.
  void Wait(Bool checkEvents);
  Bool IsRunning() const;
  Bool TestBreak();
  // The handle to pass to long operations; owned by this.
  BaseThread* Get() const;

 private:
  std::unique_ptr<engine::ThreadBody> body_;
};

// Asks every running thread to stop and waits for all of them.
void StopAllThreads();

}  // namespace host
