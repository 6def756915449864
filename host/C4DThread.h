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
  // True once the thread was asked to end or the C4DThread's own test says so. Cheap and safe on
  // any thread; ask it in each round of a loop that may take longer than a moment.
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
  // On the thread, or inside of Start for mode 0. Touches only what nobody else does meanwhile: a
  // copied document, not the one on the screen. An exception on a thread of its own ends that and
  // is told in the host's ledger; in mode 0 it reaches who called Start.
  virtual void Main() = 0;
  // A reason of one's own to stop, asked by every TestBreak on whatever thread that runs; the base
  // has none.
  virtual Bool TestDBreak();
  // There for the host's signature: the stand-in shows it nowhere.
  virtual const CHAR* GetThreadName() = 0;

  // Mode 0: Main has run when this returns. False when it runs already. False also when the system
  // has no thread left. `priority` changes nothing. A finished one may be started again.
  Bool Start(LONG mode, LONG priority);
  // Asks Main to stop, and with `wait` waits for it. On a finished thread: nothing.
  void End(Bool wait = TRUE);
  // Waits for Main; on a finished thread: nothing. From within Main itself: nothing. `checkEvents`
  // is there for the host's signature.
  void Wait(Bool checkEvents);
  Bool IsRunning() const;
  Bool TestBreak();
  // The handle to pass to long operations; owned by this.
  BaseThread* Get() const;

 private:
  std::unique_ptr<engine::ThreadBody> body_;
};

// Asks every running thread to stop and waits for all of them. Called before plug-ins are unloaded.
// From within a thread it only asks.
void StopAllThreads();

}  // namespace host
