// The operators of the language that take memory, replaced by some that count. For one source of a
// program.
#pragma once

#include <cstdlib>
#include <new>

#include "tests/support/CountedMemory.h"

[[gnu::noinline]] void* operator new(std::size_t bytes) {
  if (tests::takingsLeft >= 0 && tests::takingsLeft-- == 0) throw std::bad_alloc();
  void* memory = std::malloc(bytes > 0 ? bytes : 1);
  if (!memory) throw std::bad_alloc();
  tests::blocksHeld.fetch_add(1, std::memory_order_relaxed);
  return memory;
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  if (memory) tests::blocksHeld.fetch_sub(1, std::memory_order_relaxed);
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
  operator delete(memory);
}
