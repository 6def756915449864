// Victim: a program of its own that works without a pause, keeps copies of what it did as the
// desktop does, and is killed. It is this very program, told by its environment what to be. Main
// thread.
#pragma once

#include <optional>
#include <string>

namespace desk {

class Victim {
 public:
  // `folder`: what it keeps goes there; made.
  explicit Victim(std::string folder);
  // Starts it and kills it when it has told of that many acts, 99 at most. How many of them were
  // kept by then.
  int KillAfter(int acts) const;

 private:
  std::string folder_;
};

// For main: works until it is killed, where this program was started for that; else nothing.
std::optional<int> WorkAsVictim();

}  // namespace desk
