// Notes: what an import lost or mended, each kind once with how often it happened, in the order of
// first mention.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace engine {

// Notes that more than one reader makes.
inline constexpr const char* kVertexColorsLeftOut = "Vertex colors are left out, meshes";
inline constexpr const char* kSkinsAtRest = "Skinned meshes are shown at rest";
inline constexpr const char* kAnimationsLeftOut =
    "Animations are left out, the scene is shown at rest";

// A sentence as the class below makes it: what, and how often, 0 where it is not counted.
struct CountedNote {
  std::string what;
  std::size_t times = 0;
};
inline CountedNote AsCounted(const std::string& sentence) {
  constexpr std::size_t kMostDigits = 18;
  const std::size_t colon = sentence.rfind(": ");
  if (colon == std::string::npos || sentence.back() != '.') return {sentence, 0};
  const std::string number = sentence.substr(colon + 2, sentence.size() - colon - 3);
  const bool isNumber = !number.empty() && number.size() <= kMostDigits &&
                        number.find_first_not_of("0123456789") == std::string::npos;
  return isNumber ? CountedNote{sentence.substr(0, colon), std::stoull(number)}
                  : CountedNote{sentence, 0};
}

class Notes {
 public:
  // A sentence of its own. The same one again counts nothing.
  void Add(const std::string& sentence) {
    if (Find(sentence) == entries_.end()) entries_.emplace_back(sentence, 0);
  }
  // `what` goes before the number of its occurrences: "Vertex colors are left out: 3".
  void Count(std::string_view what, std::size_t times = 1) {
    if (times == 0) return;
    const auto found = Find(what);
    if (found == entries_.end()) {
      entries_.emplace_back(std::string(what), times);
    } else {
      found->second += times;
    }
  }
  std::vector<std::string> Sentences() const {
    std::vector<std::string> sentences;
    for (const auto& [text, times] : entries_) {
      sentences.push_back(times == 0 ? text : text + ": " + std::to_string(times) + ".");
    }
    return sentences;
  }

 private:
  using Entry = std::pair<std::string, std::size_t>;
  // The kinds are few.
  std::vector<Entry>::iterator Find(std::string_view text) {
    return std::find_if(entries_.begin(), entries_.end(),
                        [&](const Entry& entry) { return entry.first == text; });
  }
  std::vector<Entry> entries_;
};

}  // namespace engine
