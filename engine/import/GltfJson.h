// GltfJson: members of a glTF file's JSON by name and kind. A member that is missing gives a
// preset; one of another kind than the format says makes the file unreadable, by name. Lives in the
// child.
#pragma once

#include <array>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

namespace engine {

using Json = nlohmann::json;

// Why a file cannot be read, as the end of a sentence for a person: "buffer 2 is missing".
class UnreadableFile : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);

// The member of an object as it is; null where it is missing or `value` is no object.
const Json& Member(const Json& value, const char* key);
// An element of an array; null where there is none.
const Json& At(const Json& list, std::size_t index);
std::size_t SizeOf(const Json& list);

double Number(const Json& value, const char* key, double preset);
bool Truth(const Json& value, const char* key, bool preset);
std::string Text(const Json& value, const char* key);
// A whole number from 0 on: an index, a length, a code.
std::size_t Index(const Json& value, const char* key, std::size_t preset = kNowhere);
// An array or an object, null where it is missing.
const Json& List(const Json& value, const char* key);
const Json& Object(const Json& value, const char* key);
const Json& Extension(const Json& value, const char* name);

// An index that is an element of a list, or a list's number: null where `index` is kNowhere; the
// message names `what` where there is no such element.
const Json& Element(const Json& list, std::size_t index, const char* what);
double NumberAt(const Json& list, std::size_t index, const char* what);
std::size_t IndexAt(const Json& list, std::size_t index, const char* what);

// The first numbers of a list, `preset` where the list is missing or shorter.
template <std::size_t N>
std::array<double, N> Numbers(const Json& value, const char* key, std::array<double, N> preset) {
  const Json& list = List(value, key);
  for (std::size_t i = 0; i < N && i < SizeOf(list); ++i) preset[i] = NumberAt(list, i, key);
  return preset;
}

}  // namespace engine
