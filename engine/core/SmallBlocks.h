// SmallBlocks: the memory of container bodies of the smallest size, kept for the next one. A
// recording builds and drops one such body for every object of a scene. Each thread keeps a few of
// its own, without locks; a block may be given back on another thread than it was taken on.
#pragma once

#include <cstddef>

#include "engine/core/ContainerBody.h"

namespace engine {

class SmallBlocks {
 public:
  static constexpr std::size_t kBytes = sizeof(ContainerBody) + kFirstEntries * sizeof(Entry);

  static void* Take() {
    Stock& stock = stock_;
    if (!stock.first) return ::operator new(kBytes);
    Block* block = stock.first;
    stock.first = block->next;
    --stock.count;
    return block;
  }
  static void Give(void* memory) {
    Stock& stock = stock_;
    if (stock.count >= stock.limit && !Open(stock)) {
      ::operator delete(memory);
      return;
    }
    stock.first = new (memory) Block{stock.first};
    ++stock.count;
  }

 private:
  struct Block {
    Block* next;
  };
  // Without a constructor or destructor, so that reaching it costs no check.
  struct Stock {
    Block* first;
    std::size_t count;
    std::size_t limit;  // 0 before the first block is kept and after the thread has emptied it
    bool closed;
  };
  struct Closing;

  // Prepares a stock that was never used; false where there is no room.
  static bool Open(Stock& stock);

#if defined(__SANITIZE_ADDRESS__)
  static constexpr std::size_t kLimit = 0;  // the sanitizer watches blocks that are truly freed
#else
  static constexpr std::size_t kLimit = 256;
#endif
  [[gnu::tls_model("initial-exec")]] static thread_local constinit Stock stock_;
};

}  // namespace engine
