#include "engine/render/PageAllocator.h"

#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <mutex>
#include <utility>

namespace engine {

namespace {

constexpr std::size_t kPage = 4 << 10;

std::size_t Whole(std::size_t bytes) { return (bytes + kPage - 1) / kPage * kPage; }

struct Block {
  void* pages = nullptr;
  std::size_t bytes = 0;
};

// Blocks that were given back, for use again. Has nothing to destroy, so that it outlives all
// that may still hold an array at the end of the process.
struct Kept {
  std::mutex lock;
  std::array<Block, 32> blocks;
  std::size_t bytes = 0;
};
constinit Kept kept;

void Unmap(void* pages, std::size_t bytes) {
  if (bytes > 0) munmap(pages, bytes);
}

// New pages; null where there are no more.
void* Map(std::size_t bytes) {
  void* const pages =
      mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  return pages == MAP_FAILED ? nullptr : pages;
}

// The smallest kept block that is large enough, unless most of it would be left over; null where
// there is none.
void* TakeKept(std::size_t bytes) {
  const std::lock_guard hold(kept.lock);
  Block* best = nullptr;
  for (Block& block : kept.blocks) {
    const bool fits = block.bytes >= bytes && block.bytes / 2 <= bytes;
    if (fits && (!best || block.bytes < best->bytes)) best = &block;
  }
  if (!best) return nullptr;
  const Block taken = std::exchange(*best, {});
  kept.bytes -= taken.bytes;
  Unmap(static_cast<char*>(taken.pages) + bytes, taken.bytes - bytes);
  return taken.pages;
}

void ReleaseKept() {
  const std::lock_guard hold(kept.lock);
  for (Block& block : kept.blocks) {
    const Block given = std::exchange(block, {});
    Unmap(given.pages, given.bytes);
  }
  kept.bytes = 0;
}

bool Keep(void* pages, std::size_t bytes) {
  const std::lock_guard hold(kept.lock);
  if (kept.bytes + bytes > kMostKeptPageBytes) return false;
  const auto free = std::ranges::find(kept.blocks, nullptr, &Block::pages);
  if (free == kept.blocks.end()) return false;
  (void)madvise(pages, bytes, MADV_FREE);
  *free = {pages, bytes};
  kept.bytes += bytes;
  return true;
}

}  // namespace

void* TakePages(std::size_t bytes) {
  bytes = Whole(bytes);
  void* pages = TakeKept(bytes);
  if (!pages) pages = Map(bytes);
  if (!pages) {
    ReleaseKept();
    pages = Map(bytes);
  }
  if (!pages) throw std::bad_alloc();
  return pages;
}

void GivePagesBack(void* pages, std::size_t bytes) noexcept {
  bytes = Whole(bytes);
  if (!Keep(pages, bytes)) Unmap(pages, bytes);
}

std::size_t KeptPageBytes() {
  const std::lock_guard hold(kept.lock);
  return kept.bytes;
}

}  // namespace engine
