#include "engine/scene/ValueText.h"

#include <charconv>
#include <vector>

namespace engine {

using host::GeData;

// The shortest digits that read back as the same number, whatever the language of the system.
std::string RealText(host::Real value) {
  char digits[40];
  const auto end = std::to_chars(digits, digits + sizeof digits, value);
  return std::string(digits, end.ptr);
}

std::string VectorText(const host::Vector& value) {
  return "(" + RealText(value.x) + ", " + RealText(value.y) + ", " + RealText(value.z) + ")";
}

std::string Quoted(const host::String& text) {
  static constexpr char kHex[] = "0123456789abcdef";
  std::string out = "\"";
  for (const char c : text.View()) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20) {
      out += {'\\', 'x', kHex[byte >> 4], kHex[byte & 15]};
      continue;
    }
    if (c == '"' || c == '\\') out += '\\';
    out += c;
  }
  return out + "\"";
}

std::string ValueText(const GeData& value, const LinkNames& links) {
  switch (value.GetType()) {
    case host::DA_NIL:
      return "nil";
    case host::DA_LONG:
      return std::to_string(value.GetLong());
    case host::DA_REAL:
      return "real " + RealText(value.GetReal());
    case host::DA_VECTOR:
      return VectorText(value.GetVector());
    case host::DA_TIME:
      return "time " + RealText(value.GetTime().GetNumerator()) + "/" +
             RealText(value.GetTime().GetDenominator());
    case host::DA_STRING:
      return Quoted(value.GetString());
    case host::DA_FILENAME:
      return "file " + Quoted(value.GetFilename().GetString());
    case host::DA_ALIASLINK:
      return "link " + links(LinkOf(value));
    case host::DA_CONTAINER: {
      const host::BaseContainer container = value.GetContainer();
      return "container " + std::to_string(container.GetId()) + " of " +
             std::to_string(container.GetCount());
    }
    default:
      return "type " + std::to_string(value.GetType());
  }
}

namespace {

// Levels whose keys are written out. Below them a line tells how many levels further down it is:
// written out, the paths of a long chain would grow with its square.
constexpr std::size_t kLevelsInPath = 32;

struct Level {
  host::BaseContainer data;
  std::string path;
  host::LONG next = 0;
};

// The prefix of the keys one level below the last one.
std::string PathBelow(const std::vector<Level>& levels, const std::string& here) {
  if (levels.size() < kLevelsInPath) return here + "/";
  return levels[kLevelsInPath - 1].path + "+" + std::to_string(levels.size() - kLevelsInPath + 1) +
         "/";
}

}  // namespace

// Without recursion: containers nest as deep as a file likes.
void WriteContainer(const host::BaseContainer& data, const std::string& prefix,
                    const LinkNames& links, LineWriter& out) {
  std::vector<Level> levels;
  levels.push_back({data, prefix + " "});
  while (!levels.empty() && !out.Stopped()) {
    Level& level = levels.back();
    if (level.next == level.data.GetCount()) {
      levels.pop_back();
      continue;
    }
    const std::string here = level.path + std::to_string(level.data.GetIndexId(level.next));
    const GeData value = level.data.GetIndexData(level.next++);
    out.Line(here + " = " + ValueText(value, links));
    if (value.GetType() == host::DA_CONTAINER)
      levels.push_back({value.GetContainer(), PathBelow(levels, here)});
  }
}

}  // namespace engine
