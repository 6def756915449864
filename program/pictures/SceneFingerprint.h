// SceneFingerprint: a number for how a scene looks apart from what Stagemarks record, so that
// loading one leaves it as it is: objects with their places, geometry and parameters, materials and
// textures by name. Another number means that pictures of the states are older than the scene; a
// mesh is told by its size and a sample of its points. Stays from run to run. One thread that may
// read the document, which must neither change nor go meanwhile.
#pragma once

#include <cstdint>

#include "host/BaseDocument.h"

namespace pictures {

class SceneFingerprint {
 public:
  explicit SceneFingerprint(const host::BaseDocument& doc);

  // Reads the next `elements` elements; false when all are done.
  bool Advance(std::size_t elements);
  // Valid after the last step; never 0.
  std::uint64_t Value() const { return value_ | 1; }

 private:
  void Mix(std::uint64_t number) {
    value_ = (value_ ^ number) * 0x9E3779B97F4A7C15u;
    value_ ^= value_ >> 32;
  }
  void MixNode(const host::GeListNode& node);
  void MixObject(const host::BaseObject& object);
  void MixParameters(const host::BaseContainer& parameters);
  void MixText(std::string_view text);

  const host::BaseDocument& doc_;
  const host::GeListNode* next_;
  std::uint64_t value_ = 0xCBF29CE484222325u;
};

std::uint64_t FingerprintOf(const host::BaseDocument& doc);

}  // namespace pictures
