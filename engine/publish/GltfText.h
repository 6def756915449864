// Text for the long lists of a glTF file (JSON), which are written straight away instead of through
// a tree of values: a hundred thousand nodes have a million numbers. Pure functions, any thread.
#pragma once

#include <array>
#include <charconv>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace engine {

// The shortest text that reads back as the same number, which must be one; -0 becomes 0.
inline void AppendNumber(std::string& to, double number) {
  std::array<char, 32> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number + 0.0);
  to.append(digits.data(), end.ptr);
}

inline void AppendCount(std::string& to, std::size_t count) {
  std::array<char, 24> digits;
  to.append(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), count).ptr);
}

// `,"key":[a,b,c]` for numbers, without the comma at the beginning of an object.
template <class Numbers>
void AppendNumbers(std::string& to, std::string_view key, const Numbers& numbers) {
  to.append(to.empty() || to.back() == '{' ? "\"" : ",\"").append(key).append("\":[");
  for (const auto number : numbers) {
    if constexpr (std::is_floating_point_v<decltype(+number)>)
      AppendNumber(to, number);
    else
      AppendCount(to, number);
    to += ',';
  }
  to.back() = ']';
}

// Appends the extras of an imported file (engine/scene/Extras.h) as the next member; text that is
// not JSON is left out.
inline void AppendExtras(std::string& to, const std::string& extras) {
  if (!extras.empty() && nlohmann::json::accept(extras)) to.append(",\"extras\":").append(extras);
}

// In quotation marks; bytes that are no UTF-8 are replaced.
inline std::string Quoted(const std::string& text) {
  return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace engine
