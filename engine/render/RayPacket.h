// RayPacket: what belongs to rays that are traced together, because they begin or end close to each
// other and pass through the same parts of the scene. Not all of a packet's rays need be asked for:
// Lanes says which. Values; any thread.
#pragma once

#include <array>
#include <bit>
#include <cstddef>

#include "engine/render/RayCamera.h"

namespace engine {

inline constexpr std::size_t kPacketSize = 8;

// One value for each ray of a packet.
template <class T>
using PerRay = std::array<T, kPacketSize>;

// Some of the rays of a packet.
class Lanes {
 public:
  static Lanes First(std::size_t count) {
    Lanes lanes;
    lanes.bits_ = (1U << count) - 1;
    return lanes;
  }

  explicit operator bool() const { return bits_ != 0; }
  int Count() const { return std::popcount(bits_); }
  bool Has(std::size_t ray) const { return (bits_ >> ray & 1U) != 0; }
  void Add(std::size_t ray) { bits_ |= 1U << ray; }
  void Remove(std::size_t ray) { bits_ &= ~(1U << ray); }

  // Goes through those that there were at the start.
  class Iterator {
   public:
    explicit Iterator(unsigned rest) : rest_(rest) {}
    std::size_t operator*() const { return static_cast<std::size_t>(std::countr_zero(rest_)); }
    Iterator& operator++() {
      rest_ &= rest_ - 1;
      return *this;
    }
    bool operator!=(const Iterator& other) const { return rest_ != other.rest_; }

   private:
    unsigned rest_;
  };
  Iterator begin() const { return Iterator(bits_); }
  Iterator end() const { return Iterator(0); }

 private:
  unsigned bits_ = 0;
};

}  // namespace engine
