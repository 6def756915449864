#include "engine/scene/ValueText.h"

#include <charconv>

namespace engine {

using host::GeData;

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
      return "time " + RealText(value.GetTime().GetNumerator()) + "/" + RealText(value.GetTime().GetDenominator());
    case host::DA_STRING:
      return Quoted(value.GetString());
    case host::DA_FILENAME:
      return "file " + Quoted(value.GetFilename().GetString());
    case host::DA_ALIASLINK:
      return "link " + links(LinkOf(value));
    case host::DA_CONTAINER: {
      const host::BaseContainer container = value.GetContainer();
      return "container " + std::to_string(container.GetId()) + " of " + std::to_string(container.GetCount());
    }
    default:
      return "type " + std::to_string(value.GetType());
  }
}

namespace {

void AppendBelow(const host::BaseContainer& data, const std::string& path, const LinkNames& links, std::string& out) {
  ForEachEntry(data, [&](host::LONG key, const GeData& value) {
    const std::string here = path + std::to_string(key);
    out += here + " = " + ValueText(value, links) + "\n";
    if (value.GetType() == host::DA_CONTAINER) AppendBelow(value.GetContainer(), here + "/", links, out);
  });
}

}  // namespace

void AppendContainer(const host::BaseContainer& data, const std::string& prefix, const LinkNames& links, std::string& out) {
  AppendBelow(data, prefix + " ", links, out);
}

}  // namespace engine
