// Workers: the same work on several threads at once. Any thread may call; it takes part itself.
#pragma once

#include <algorithm>
#include <atomic>
#include <exception>
#include <new>
#include <thread>
#include <vector>

namespace engine {

// 0 asks for one for each core.
inline unsigned CoreCount(unsigned asked) {
  return asked > 0 ? asked : std::max(1U, std::thread::hardware_concurrency());
}

// Runs `work(isCaller)` on that many threads, the calling one among them; fewer when the system has
// no more. What the caller's own share throws comes out when the others have ended; so does
// std::bad_alloc where memory was too short for another's share.
template <class Work>
void OnThreads(unsigned count, const Work& work) {
  std::atomic<bool> isShort{false};
  const auto share = [&] {
    try {
      work(false);
    } catch (const std::bad_alloc&) {
      isShort = true;
    }
  };
  {
    std::vector<std::jthread> others;
    try {
      for (unsigned i = 1; i < count; ++i) others.emplace_back(share);
    } catch (const std::exception&) {
      // No more threads, or no memory for them: those that run take the whole work over.
    }
    work(true);
  }
  if (isShort) throw std::bad_alloc();
}

}  // namespace engine
