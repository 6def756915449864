#include "engine/core/KeyIndex.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace engine {

namespace {

// Mixes with an address that differs from run to run, so that no file can be made to collide
// everywhere.
std::size_t Scatter(host::LONG key) {
  static const char salt = 0;
  std::uint64_t mixed = static_cast<std::uint32_t>(key) ^ reinterpret_cast<std::uintptr_t>(&salt);
  mixed = (mixed ^ (mixed >> 32)) * 0x9E3779B97F4A7C15U;
  mixed = (mixed ^ (mixed >> 29)) * 0xBF58476D1CE4E5B9U;
  return mixed ^ (mixed >> 32);
}

}  // namespace

// The place that holds the key, or the free one where it belongs.
std::size_t KeyIndex::PlaceOf(host::LONG key) const {
  const std::size_t mask = places_.size() - 1;
  std::size_t at = Scatter(key) & mask;
  while (places_[at].slot != kNone && places_[at].key != key) at = (at + 1) & mask;
  return at;
}

std::uint32_t KeyIndex::Find(host::LONG key) const {
  return places_.empty() ? kNone : places_[PlaceOf(key)].slot;
}

void KeyIndex::Put(host::LONG key, std::uint32_t slot) {
  Reserve(used_ + 1);
  Place& place = places_[PlaceOf(key)];
  if (place.slot == kNone) ++used_;
  place = {key, slot};
}

void KeyIndex::Reserve(std::size_t keys) {
  const std::size_t needed = std::bit_ceil(keys + keys / 2 + 1);
  if (needed > places_.size()) Resize(needed);
}

void KeyIndex::Resize(std::size_t places) {
  const std::vector<Place> before = std::exchange(places_, std::vector<Place>(places));
  for (const Place& place : before) {
    if (place.slot != kNone) places_[PlaceOf(place.key)] = place;
  }
}

}  // namespace engine
