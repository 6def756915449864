#include "engine/import/GltfJson.h"

#include <cmath>
#include <cstdint>
#include <string_view>

namespace engine {
namespace {

const Json kNone;
// Whole numbers are exact up to here, whatever way they are written.
constexpr double kMostWhole = 9007199254740992.0;

[[noreturn]] void RefuseKind(const char* key, const char* kind) {
  throw UnreadableFile(std::string("\"") + key + "\" is not " + kind + ".");
}

// Some programs write 3.0 for 3.
std::size_t WholeNumber(const Json& value, const char* key) {
  if (value.is_number_unsigned()) {
    const auto number = value.get<std::uint64_t>();
    if (number < kNowhere) return static_cast<std::size_t>(number);
  }
  // Signed integers are below 0 here: the parser makes all others unsigned.
  const double number = value.is_number_float() ? value.get<double>() : -1;
  if (!(number >= 0 && number <= kMostWhole) || number != std::floor(number))
    RefuseKind(key, "a whole number from 0 on");
  return static_cast<std::size_t>(number);
}

double FiniteNumber(const Json& value, const char* key) {
  if (!value.is_number()) RefuseKind(key, "a number");
  return value.get<double>();
}

}  // namespace

const Json& Member(const Json& value, const char* key) {
  const auto* const members = value.get_ptr<const Json::object_t*>();
  if (members == nullptr) return kNone;
  const auto found = members->find(std::string_view(key));
  return found == members->end() ? kNone : found->second;
}

const Json& At(const Json& list, std::size_t index) {
  return list.is_array() && index < list.size() ? list[index] : kNone;
}

std::size_t SizeOf(const Json& list) { return list.is_array() ? list.size() : 0; }

double Number(const Json& value, const char* key, double preset) {
  const Json& member = Member(value, key);
  return member.is_null() ? preset : FiniteNumber(member, key);
}

bool Truth(const Json& value, const char* key, bool preset) {
  const Json& member = Member(value, key);
  if (member.is_null()) return preset;
  if (!member.is_boolean()) RefuseKind(key, "true or false");
  return member.get<bool>();
}

std::string Text(const Json& value, const char* key) {
  const Json& member = Member(value, key);
  if (member.is_null()) return {};
  if (!member.is_string()) RefuseKind(key, "a text");
  return member.get<std::string>();
}

std::size_t Index(const Json& value, const char* key, std::size_t preset) {
  const Json& member = Member(value, key);
  return member.is_null() ? preset : WholeNumber(member, key);
}

const Json& List(const Json& value, const char* key) {
  const Json& member = Member(value, key);
  if (!member.is_null() && !member.is_array()) RefuseKind(key, "a list");
  return member;
}

const Json& Object(const Json& value, const char* key) {
  const Json& member = Member(value, key);
  if (!member.is_null() && !member.is_object()) RefuseKind(key, "an object");
  return member;
}

const Json& Extension(const Json& value, const char* name) {
  return Object(Object(value, "extensions"), name);
}

const Json& Element(const Json& list, std::size_t index, const char* what) {
  if (index == kNowhere) return kNone;
  if (index >= SizeOf(list) || !list[index].is_object())
    throw UnreadableFile("entry " + std::to_string(index) + " of \"" + what + "\" does not exist.");
  return list[index];
}

double NumberAt(const Json& list, std::size_t index, const char* what) {
  return FiniteNumber(At(list, index), what);
}

std::size_t IndexAt(const Json& list, std::size_t index, const char* what) {
  return WholeNumber(At(list, index), what);
}

}  // namespace engine
