// GltfAccessors: the numbers of a glTF file: all component types, normalized or not, interleaved,
// sparse. A GltfNumbers is where they lie, with its bounds checked; its bytes belong to the file,
// or to what unpacked them. What cannot be read throws UnreadableFile. Lives in the child.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "engine/import/GltfFile.h"

namespace engine {

// Component types, by their numbers in the file.
enum class GltfKind : unsigned {
  Byte = 5120,
  UnsignedByte = 5121,
  Short = 5122,
  UnsignedShort = 5123,
  UnsignedInt = 5125,
  Float = 5126
};

struct GltfNumbers {
  GltfKind kind = GltfKind::Float;
  bool isNormalized = false;
  unsigned components = 1;
  std::size_t count = 0;   // elements
  std::string_view bytes;  // from the first element on; empty: all zero
  std::size_t stride = 0;  // bytes from one element to the next
  // Elements that differ, in any order: their positions, and their values without gaps.
  std::vector<std::uint32_t> places;
  std::string_view values;
};

// Bytes of one number.
std::size_t BytesOf(GltfKind kind);
// Kind, components and count of an accessor; its bytes are not read.
GltfNumbers DescribeNumbers(const GltfFile& file, std::size_t accessor);
// An accessor with its bytes. Every element lies within them.
GltfNumbers FindNumbers(GltfFile& file, std::size_t accessor);

// Writes `width` numbers of each of `count` elements from `first` on to `out`, one element after
// the other; normalized ones as 0..1 or -1..1. The elements must exist and have that width.
void ReadFloats(const GltfNumbers& numbers, std::size_t first, std::size_t count, unsigned width,
                float* out);
void ReadWholes(const GltfNumbers& numbers, std::size_t first, std::size_t count, unsigned width,
                std::uint32_t* out);

}  // namespace engine
