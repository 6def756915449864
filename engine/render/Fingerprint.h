// Fingerprint: a number that tells whether two scenes look alike. What is shared is told by its
// address, so that it holds while one of the scenes lives. A value; any thread.
#pragma once

#include <bit>

#include "engine/render/ScenePicture.h"

namespace engine {

class Fingerprint {
 public:
  void Add(const Instance& instance);
  void Add(const SurfaceLook& look);
  void Add(const TextureWish& wish);
  void Add(const LightSource& light);
  std::uint64_t Value() const { return value_; }

 private:
  void Word(std::uint64_t word) {
    value_ = (std::rotl(value_, 23) ^ word) * 0x9e3779b97f4a7c15U;
    value_ ^= value_ >> 29;
  }
  void Number(double number) { Word(std::bit_cast<std::uint64_t>(number)); }
  void Color(Vec color) {
    for (const float part : {color.x, color.y, color.z}) Number(part);
  }

  std::uint64_t value_ = 0x2545f4914f6cdd1dU;
};

}  // namespace engine
