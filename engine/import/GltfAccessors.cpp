// glTF 2.0, section 3.6.2, and KHR_mesh_quantization.
#include "engine/import/GltfAccessors.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <type_traits>

namespace engine {
namespace {

// Numbers that no buffer holds are zeros; a file of a few bytes can ask for any number of them.
constexpr std::size_t kMostZeros = std::size_t{64} << 20;

GltfKind KindOf(const Json& accessor) {
  const std::size_t code = Index(accessor, "componentType", 0);
  // There is no signed 32-bit kind.
  const bool known = code >= 5120 && code <= 5126 && code != 5124;
  if (!known)
    throw UnreadableFile("numbers of the component type " + std::to_string(code) +
                         " are not known.");
  return static_cast<GltfKind>(code);
}

unsigned ComponentsOf(const Json& accessor) {
  const std::string type = Text(accessor, "type");
  for (const auto& [name, components] :
       {std::pair("SCALAR", 1U), std::pair("VEC2", 2U), std::pair("VEC3", 3U),
        std::pair("VEC4", 4U), std::pair("MAT2", 4U), std::pair("MAT3", 9U),
        std::pair("MAT4", 16U)}) {
    if (type == name) return components;
  }
  throw UnreadableFile("numbers of the type \"" + type + "\" are not known.");
}

[[noreturn]] void RefuseShort(std::size_t accessor) {
  throw UnreadableFile("accessor " + std::to_string(accessor) + " goes beyond its buffer view.");
}

// The bytes of a view from the offset on. Throws where `count` elements of `size` bytes do not fit.
std::string_view Part(std::string_view view, std::size_t offset, std::size_t count,
                      std::size_t stride, std::size_t size, std::size_t accessor) {
  if (count == 0) return {};
  if (offset > view.size() || size > view.size() - offset) RefuseShort(accessor);
  // The last element need not be followed by a whole stride.
  const std::size_t room = view.size() - offset - size;
  if (stride == 0 || (count - 1) > room / stride) RefuseShort(accessor);
  return view.substr(offset);
}

// Calls `visit` with a zero of the C++ type of that kind. The loops behind it are compiled for each
// kind, instead of asking for the kind of every number.
template <class Visit>
void ForKind(GltfKind kind, Visit visit) {
  switch (kind) {
    case GltfKind::Byte:
      return visit(std::int8_t{});
    case GltfKind::UnsignedByte:
      return visit(std::uint8_t{});
    case GltfKind::Short:
      return visit(std::int16_t{});
    case GltfKind::UnsignedShort:
      return visit(std::uint16_t{});
    case GltfKind::UnsignedInt:
      return visit(std::uint32_t{});
    case GltfKind::Float:
      return visit(float{});
  }
}

template <class T>
float Decoded(T value, bool isNormalized) {
  if constexpr (std::is_floating_point_v<T>) {
    return value;
  } else {
    if (!isNormalized) return static_cast<float>(value);
    const double most = std::numeric_limits<T>::max();
    // The lowest signed number has no counterpart and counts as -1, too.
    return static_cast<float>(std::max(static_cast<double>(value) / most, -1.0));
  }
}

template <class T>
std::uint32_t Whole(T value) {
  if constexpr (std::is_floating_point_v<T>) {
    // The largest float below 2^32; whatever is no index becomes one that no mesh has.
    return value >= 0 && value < 4294967040.0F ? static_cast<std::uint32_t>(value)
                                               : std::numeric_limits<std::uint32_t>::max();
  } else {
    return static_cast<std::uint32_t>(value);
  }
}

template <class T, class Out, class Convert>
void Copy(const char* from, std::size_t stride, std::size_t count, unsigned width, Out* out,
          Convert convert) {
  for (std::size_t i = 0; i < count; ++i, from += stride) {
    for (unsigned c = 0; c < width; ++c) {
      T value;
      // Bytes of a file are aligned to nothing.
      std::memcpy(&value, from + c * sizeof(T), sizeof(T));
      *out++ = convert(value);
    }
  }
}

template <class Out, class Convert>
void Read(const GltfNumbers& numbers, std::size_t first, std::size_t count, unsigned width,
          Out* out, Convert convert) {
  ForKind(numbers.kind, [&](auto example) {
    using T = decltype(example);
    if (numbers.bytes.empty()) {
      std::fill(out, out + count * width, Out{});
    } else {
      Copy<T>(numbers.bytes.data() + first * numbers.stride, numbers.stride, count, width, out,
              convert);
    }
    const std::size_t size = numbers.components * sizeof(T);
    for (std::size_t i = 0; i < numbers.places.size(); ++i) {
      // Places beyond what is asked for are passed over, and so are those that there are not.
      const std::size_t place = numbers.places[i];
      if (place < first || place - first >= count) continue;
      Copy<T>(numbers.values.data() + i * size, size, 1, width, out + (place - first) * width,
              convert);
    }
  });
}

void AddSparse(GltfFile& file, const Json& sparse, std::size_t accessor, GltfNumbers& numbers) {
  const Json& indices = Object(sparse, "indices");
  const Json& values = Object(sparse, "values");
  GltfNumbers places;
  places.kind = KindOf(indices);
  places.count = Index(sparse, "count", 0);
  places.stride = BytesOf(places.kind);
  places.bytes = Part(file.View(Index(indices, "bufferView", 0)), Index(indices, "byteOffset", 0),
                      places.count, places.stride, places.stride, accessor);
  const std::size_t size = numbers.components * BytesOf(numbers.kind);
  numbers.values = Part(file.View(Index(values, "bufferView", 0)), Index(values, "byteOffset", 0),
                        places.count, size, size, accessor);
  numbers.places.resize(places.count);
  ReadWholes(places, 0, places.count, 1, numbers.places.data());
}

}  // namespace

std::size_t BytesOf(GltfKind kind) {
  std::size_t bytes = 0;
  ForKind(kind, [&](auto example) { bytes = sizeof(example); });
  return bytes;
}

GltfNumbers DescribeNumbers(const GltfFile& file, std::size_t accessor) {
  if (accessor == kNowhere) throw UnreadableFile("an accessor is not named.");
  const Json& entry = file.Entry("accessors", accessor);
  GltfNumbers numbers;
  numbers.kind = KindOf(entry);
  numbers.isNormalized = Truth(entry, "normalized", false);
  numbers.components = ComponentsOf(entry);
  numbers.count = Index(entry, "count", 0);
  // Points are numbered with 32 bits.
  if (numbers.count > std::numeric_limits<std::uint32_t>::max())
    throw UnreadableFile("accessor " + std::to_string(accessor) + " has too many elements.");
  return numbers;
}

GltfNumbers FindNumbers(GltfFile& file, std::size_t accessor) {
  GltfNumbers numbers = DescribeNumbers(file, accessor);
  const Json& entry = file.Entry("accessors", accessor);
  const std::size_t size = numbers.components * BytesOf(numbers.kind);
  const std::size_t index = Index(entry, "bufferView");
  if (index != kNowhere) {
    const std::size_t stride = Index(file.Entry("bufferViews", index), "byteStride", 0);
    numbers.stride = stride > 0 ? stride : size;
    numbers.bytes = Part(file.View(index), Index(entry, "byteOffset", 0), numbers.count,
                         numbers.stride, size, accessor);
  } else if (numbers.count > kMostZeros / size) {
    throw UnreadableFile("accessor " + std::to_string(accessor) +
                         " has more elements than it gives numbers for.");
  }
  const Json& sparse = Object(entry, "sparse");
  if (!sparse.is_null()) AddSparse(file, sparse, accessor, numbers);
  return numbers;
}

void ReadFloats(const GltfNumbers& numbers, std::size_t first, std::size_t count, unsigned width,
                float* out) {
  const bool isNormalized = numbers.isNormalized;
  Read(numbers, first, count, width, out,
       [isNormalized](auto value) { return Decoded(value, isNormalized); });
}

void ReadWholes(const GltfNumbers& numbers, std::size_t first, std::size_t count, unsigned width,
                std::uint32_t* out) {
  Read(numbers, first, count, width, out, [](auto value) { return Whole(value); });
}

}  // namespace engine
