// KeyIndex: finds keys in no order, by open addressing. It answers the slot under which a key was
// last put; keys that left their container are not taken out, so the container checks what it is
// told. Counted, and changed only by a single owner.
#pragma once

#include <cstdint>
#include <vector>

#include "engine/core/SharedReference.h"
#include "host/Types.h"

namespace engine {

class KeyIndex {
 public:
  static constexpr std::uint32_t kNone = UINT32_MAX;

  SharedCount owners;

  KeyIndex() = default;
  // A copy with one owner.
  KeyIndex(const KeyIndex& other) : places_(other.places_), used_(other.used_) {}
  KeyIndex& operator=(const KeyIndex&) = delete;
  static void End(KeyIndex* index) { delete index; }

  // kNone where the key was never put.
  std::uint32_t Find(host::LONG key) const;
  // `slot` is anything but kNone.
  void Put(host::LONG key, std::uint32_t slot);
  void Reserve(std::size_t keys);
  // Keys put so far, those that left the container included.
  std::size_t Used() const { return used_; }
  std::size_t Bytes() const { return sizeof(*this) + places_.capacity() * sizeof(Place); }

 private:
  struct Place {
    host::LONG key = 0;
    std::uint32_t slot = kNone;
  };
  std::size_t PlaceOf(host::LONG key) const;
  void Resize(std::size_t places);

  std::vector<Place> places_;  // a power of two, at most two thirds used
  std::size_t used_ = 0;
};

}  // namespace engine
