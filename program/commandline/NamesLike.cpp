#include "program/commandline/NamesLike.h"

#include <algorithm>
#include <numeric>
#include <tuple>

#include "program/commandline/Terminal.h"

namespace commandline {

namespace {

constexpr std::size_t kLongest = 200;  // longer names are not compared
constexpr std::size_t kMost = 3;

// Number of single-character edits between two names (Wagner and Fischer, 1974), over bytes.
std::size_t EditDistance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t change =
          diagonal + (std::tolower(a[i - 1]) != std::tolower(b[j - 1]) ? 1 : 0);
      diagonal = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, change});
    }
  }
  return row[b.size()];
}

// How far apart two names are, more than anything where they are not close.
std::size_t Distance(const std::string& name, const std::string& known) {
  constexpr std::size_t kFar = 1000;
  if (name.empty() || name.size() > kLongest || known.size() > kLongest) return kFar;
  const std::size_t edits = EditDistance(name, known);
  const bool close = edits <= std::max<std::size_t>(2, name.size() / 3) && edits < name.size();
  return close || known.find(name) != std::string::npos ? edits : kFar;
}

}  // namespace

std::vector<std::string> NamesLike(const std::string& name, const std::vector<std::string>& known) {
  // The beginning of a name counts most
  std::vector<std::tuple<bool, std::size_t, std::string>> near;
  for (const std::string& other : known) {
    if (const std::size_t distance = Distance(name, other); distance < kLongest) {
      near.emplace_back(!other.starts_with(name), distance, other);
    }
  }
  std::sort(near.begin(), near.end());
  std::vector<std::string> names;
  for (std::size_t i = 0; i < near.size() && i < kMost; ++i) names.push_back(std::get<2>(near[i]));
  return names;
}

std::string DidYouMean(const std::string& name, const std::vector<std::string>& known) {
  std::string text;
  for (const std::string& near : NamesLike(name, known)) {
    text += (text.empty() ? " Did you mean \"" : "\" or \"") + Shown(near);
  }
  return text.empty() ? text : text + "\"?";
}

}  // namespace commandline
