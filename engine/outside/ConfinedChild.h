// ConfinedChild: one run of a program as a child of this one, with limits and with nothing of this
// process but its environment: no descriptors, no signals, the working folder "/". The child never
// outlives this object. One thread at a time.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "engine/core/Result.h"
#include "engine/outside/Confinement.h"

namespace engine {

// Exit status of a child whose program could not be run, as shells have it.
inline constexpr int kCannotRun = 127;

class ConfinedChild {
 public:
  struct End {
    bool bySignal;
    int number;  // the signal, or the exit status
  };

  ConfinedChild() = default;
  ConfinedChild(const ConfinedChild&) = delete;
  ConfinedChild& operator=(const ConfinedChild&) = delete;
  ~ConfinedChild();

  // Whether it is ended with the thread that starts it, or goes on until it hears that nobody talks
  // to it any more.
  enum class Life { OfThread, OfTalk };

  // Starts `program`, a full path, with these words behind it; the last word that it gets is the
  // number of the descriptor that it talks on. Exit status kCannotRun later means that it could
  // not be run. What is said of a failure begins with `what`, as "The importer".
  Status Start(const std::string& what, const std::string& program,
               const std::vector<std::string>& words, const ProcessLimits& limits, Life life);
  // A socket to the child, -1 when it was not started: what it sends is read here, and what it is
  // told is written.
  int Talk() const { return talk_; }
  void Kill();
  // Whether it is over; its end is still to be waited for.
  bool HasEnded() const;
  // Blocks until it is over. Once.
  End Wait();

 private:
  pid_t child_ = -1;
  int talk_ = -1;
};

}  // namespace engine
