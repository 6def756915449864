#include "engine/core/SmallBlocks.h"

#include <utility>

namespace engine {

thread_local constinit SmallBlocks::Stock SmallBlocks::stock_ = {nullptr, 0, 0, false};

// Empties the stock at the end of its thread. Blocks given back later are freed at once.
struct SmallBlocks::Closing {
  Closing() {}
  ~Closing() {
    Stock& stock = stock_;
    stock.limit = 0;
    stock.closed = true;
    while (stock.first) ::operator delete(std::exchange(stock.first, stock.first->next));
  }
};

bool SmallBlocks::Open(Stock& stock) {
  if (stock.closed || stock.limit > 0 || kLimit == 0) return false;
  static thread_local const Closing closing;
  stock.limit = kLimit;
  return true;
}

}  // namespace engine
