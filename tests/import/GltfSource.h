// Source: a glTF file in the making, for tests that write small ones.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace tests {

using Json = nlohmann::json;

inline constexpr int kByte = 5120, kUnsignedByte = 5121, kShort = 5122, kUnsignedShort = 5123;
inline constexpr int kUnsignedInt = 5125, kFloat = 5126;

template <class T>
std::string Packed(const std::vector<double>& numbers) {
  std::string bytes;
  for (const double number : numbers) {
    const T value = static_cast<T>(number);
    bytes.append(reinterpret_cast<const char*>(&value), sizeof(T));
  }
  return bytes;
}

inline std::string Packed(int kind, const std::vector<double>& numbers) {
  switch (kind) {
    case kByte:
      return Packed<std::int8_t>(numbers);
    case kUnsignedByte:
      return Packed<std::uint8_t>(numbers);
    case kShort:
      return Packed<std::int16_t>(numbers);
    case kUnsignedShort:
      return Packed<std::uint16_t>(numbers);
    case kUnsignedInt:
      return Packed<std::uint32_t>(numbers);
    default:
      return Packed<float>(numbers);
  }
}

// A file in the making: its JSON, and one buffer that lies beside it.
struct Source {
  Json json = {{"asset", {{"version", "2.0"}}},
               {"scenes", {{{"nodes", {0}}}}},
               {"nodes", {{{"name", "N"}, {"mesh", 0}}}},
               {"bufferViews", Json::array()},
               {"accessors", Json::array()}};
  std::string bytes;

  int View(const std::string& data, int stride = 0) {
    Json view = {{"buffer", 0}, {"byteOffset", bytes.size()}, {"byteLength", data.size()}};
    if (stride > 0) view["byteStride"] = stride;
    json["bufferViews"].push_back(view);
    bytes += data;
    return static_cast<int>(json["bufferViews"].size()) - 1;
  }
  int Accessor(int kind, const char* type, int count, int view, bool isNormalized = false) {
    json["accessors"].push_back({{"componentType", kind},
                                 {"type", type},
                                 {"count", count},
                                 {"bufferView", view},
                                 {"normalized", isNormalized}});
    return static_cast<int>(json["accessors"].size()) - 1;
  }
  int Numbers(int kind, const char* type, int count, const std::vector<double>& numbers,
              bool isNormalized = false) {
    return Accessor(kind, type, count, View(Packed(kind, numbers)), isNormalized);
  }
  // A mesh of one part with these points, three numbers each.
  Json& Mesh(const std::vector<double>& points) {
    const int position = Numbers(kFloat, "VEC3", static_cast<int>(points.size() / 3), points);
    json["meshes"].push_back({{"primitives", {{{"attributes", {{"POSITION", position}}}}}}});
    return json["meshes"].back()["primitives"][0];
  }
};

// A triangle whose corners are told apart by their places.
inline const std::vector<double> kTriangle = {0, 0, 0, 1, 0, 0, 0, 1, 0};

}  // namespace tests
