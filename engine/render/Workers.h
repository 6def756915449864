// Workers: the same work on several threads at once. Any thread may call; it takes part itself.
#pragma once

#include <algorithm>
#include <atomic>
#include <system_error>
#include <thread>
#include <vector>

namespace engine {

// 0 asks for one for each core.
inline unsigned CoreCount(unsigned asked) {
  return asked > 0 ? asked : std::max(1U, std::thread::hardware_concurrency());
}

// Runs `work(isCaller)` on that many threads, the calling one among them; fewer when the system has
// no more. What the caller's own share throws comes out when the others have ended.
template <class Work>
void OnThreads(unsigned count, const Work& work) {
  std::vector<std::jthread> others;
  try {
    for (unsigned i = 1; i < count; ++i) others.emplace_back([&work] { work(false); });
  } catch (const std::system_error&) {
    // The others take the whole work over.
  }
  work(true);
}

}  // namespace engine
