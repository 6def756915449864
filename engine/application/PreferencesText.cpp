#include "engine/application/PreferencesText.h"

#include <charconv>
#include <cstdint>
#include <vector>

#include "engine/core/ContainerAccess.h"

namespace engine {
namespace {

using host::BaseContainer;
using host::GeData;
using host::LONG;
using host::Real;

constexpr std::string_view kTitle = "stagemarks preferences ";
constexpr int kVersion = 1;
constexpr std::string_view kChecksum = "checksum ";
constexpr std::size_t kDeepest = 1000;

template <class T>
std::string Number(T value) {
  char digits[40];
  return std::string(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

std::string Hexadecimal(std::uint64_t value, std::size_t width) {
  std::string text(width, '0');
  for (auto digit = text.rbegin(); digit != text.rend(); ++digit, value >>= 4)
    *digit = "0123456789abcdef"[value & 15];
  return text;
}

// http://www.isthe.com/chongo/tech/comp/fnv, FNV-1a with 64 bits.
std::string Checksum(std::string_view bytes) {
  std::uint64_t sum = 14695981039346656037ULL;
  for (const char byte : bytes) sum = (sum ^ static_cast<unsigned char>(byte)) * 1099511628211ULL;
  return Hexadecimal(sum, 16);
}

std::string Escaped(std::string_view text) {
  std::string escaped;
  for (const char byte : text) {
    const auto code = static_cast<unsigned char>(byte);
    const bool plain = code >= 32 && code != 127 && byte != '%';
    if (plain) {
      escaped += byte;
    } else {
      escaped.append("%").append(Hexadecimal(code, 2));
    }
  }
  return escaped;
}

std::string Line(const char* kind, LONG key, const std::string& value) {
  std::string line = kind;
  line.append(" ").append(Number(key));
  if (!value.empty()) line.append(" ").append(value);
  return line.append("\n");
}

std::string Reals(std::initializer_list<Real> numbers) {
  std::string text;
  for (const Real number : numbers) text += (text.empty() ? "" : " ") + Number(number);
  return text;
}

// One entry as a line; of a container the line that opens it.
std::string LineOf(LONG key, const GeData& value) {
  switch (value.GetType()) {
    case host::DA_LONG:
      return Line("long", key, Number(value.GetLong()));
    case host::DA_REAL:
      return Line("real", key, Number(value.GetReal()));
    case host::DA_STRING:
      return Line("string", key, Escaped(value.GetString().View()));
    case host::DA_FILENAME:
      return Line("filename", key, Escaped(value.GetFilename().GetString().View()));
    case host::DA_ALIASLINK:
      return Line("link", key, Number(LinkOf(value)));
    case host::DA_CONTAINER:
      return Line("container", key, Number(value.GetContainer().GetId()));
    case host::DA_TIME:
      return Line("time", key,
                  Reals({value.GetTime().GetNumerator(), value.GetTime().GetDenominator()}));
    case host::DA_VECTOR:
      return Line("vector", key,
                  Reals({value.GetVector().x, value.GetVector().y, value.GetVector().z}));
    default:
      return Line("nil", key, "");
  }
}

// Containers inside containers are kept on a stack of our own: how deep they go is the plug-in's
// choice. False when they go deeper than they may be read.
bool WriteContainer(LONG key, const BaseContainer& top, std::string& text) {
  struct Level {
    BaseContainer container;
    LONG next;
  };
  text += LineOf(key, GeData(top));
  std::vector<Level> levels{{top, 0}};
  while (!levels.empty()) {
    Level& level = levels.back();
    if (level.next == level.container.GetCount()) {
      text += "end\n";
      levels.pop_back();
      continue;
    }
    const LONG index = level.next++;
    const GeData value = level.container.GetIndexData(index);
    text += LineOf(level.container.GetIndexId(index), value);
    if (value.GetType() != host::DA_CONTAINER) continue;
    if (levels.size() == kDeepest) return false;
    levels.push_back({value.GetContainer(), 0});
  }
  return true;
}

class Reader {
 public:
  explicit Reader(std::string_view text) : text_(text) {}

  Result<ReadPreferencesAnswer> Read() {
    ReadPreferencesAnswer answer;
    int version = 0;
    if (!TakePrefix(kTitle) || !TakeNumber(version) || !TakeLineEnd())
      return Status::Failure("the first line is not ours");
    if (version > kVersion) {
      answer.laterVersion = true;
      return answer;
    }
    if (version != kVersion || !CheckSum()) return Status::Failure("the checksum does not fit");
    while (!text_.empty()) {
      if (!ReadEntry(answer))
        return Status::Failure("line " + Number(line_) + " cannot be understood");
    }
    if (!levels_.empty()) return Status::Failure("a container has no end");
    return answer;
  }

 private:
  struct Level {
    LONG key;
    BaseContainer container;
  };

  // Compares the last line with the sum of what precedes it and takes it off.
  bool CheckSum() {
    constexpr std::size_t kLength = kChecksum.size() + 17;
    if (text_.size() < kLength) return false;
    const std::string_view last = text_.substr(text_.size() - kLength);
    const std::string_view before(whole_.data(), whole_.size() - kLength);
    text_.remove_suffix(kLength);
    return last == std::string(kChecksum) + Checksum(before) + "\n";
  }

  bool TakePrefix(std::string_view prefix) {
    if (text_.substr(0, prefix.size()) != prefix) return false;
    text_.remove_prefix(prefix.size());
    return true;
  }

  bool TakeLineEnd() {
    ++line_;
    return TakePrefix("\n");
  }

  template <class T>
  bool TakeNumber(T& number) {
    const auto [end, error] = std::from_chars(text_.data(), text_.data() + text_.size(), number);
    if (error != std::errc()) return false;
    text_.remove_prefix(static_cast<std::size_t>(end - text_.data()));
    return true;
  }

  template <class T>
  bool TakeField(T& number) {
    return TakePrefix(" ") && TakeNumber(number);
  }

  bool TakeText(std::string& text) {
    TakePrefix(" ");
    while (!text_.empty() && text_.front() != '\n') {
      char byte = text_.front();
      text_.remove_prefix(1);
      if (byte == '%' && !TakeEscape(byte)) return false;
      text += byte;
    }
    return true;
  }

  bool TakeEscape(char& byte) {
    unsigned code = 0;
    const std::string_view digits = text_.substr(0, 2);
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), code, 16);
    if (error != std::errc() || end != digits.data() + 2) return false;
    byte = static_cast<char>(code);
    text_.remove_prefix(2);
    return true;
  }

  bool ReadEntry(ReadPreferencesAnswer& answer) {
    if (TakePrefix("end")) return TakeLineEnd() && EndContainer(answer);
    if (TakePrefix("container")) return BeginContainer() && TakeLineEnd();
    LONG key = 0;
    const std::string_view kind = text_.substr(0, text_.find(' '));
    GeData value;
    if (levels_.empty() || !TakePrefix(kind) || !TakeField(key) || !ReadValue(kind, value) ||
        !TakeLineEnd())
      return false;
    levels_.back().container.SetData(key, value);
    return true;
  }

  bool BeginContainer() {
    LONG key = 0;
    LONG id = 0;
    if (levels_.size() >= kDeepest || !TakeField(key) || !TakeField(id)) return false;
    levels_.push_back({key, BaseContainer(id)});
    return true;
  }

  bool EndContainer(ReadPreferencesAnswer& answer) {
    if (levels_.empty()) return false;
    const Level level = std::move(levels_.back());
    levels_.pop_back();
    if (levels_.empty()) {
      answer.containers[level.key] = level.container;
    } else {
      levels_.back().container.SetContainer(level.key, level.container);
    }
    return true;
  }

  bool ReadValue(std::string_view kind, GeData& value) {
    if (kind == "nil") return true;
    if (kind == "long") return ReadLong(value);
    if (kind == "link") return ReadLink(value);
    if (kind == "string" || kind == "filename") return ReadText(kind == "filename", value);
    return ReadReals(kind, value);
  }

  bool ReadLong(GeData& value) {
    LONG number = 0;
    if (!TakeField(number)) return false;
    value = GeData(number);
    return true;
  }

  bool ReadLink(GeData& value) {
    NodeId target = 0;
    if (!TakeField(target)) return false;
    value = LinkValue(target);
    return true;
  }

  bool ReadText(bool filename, GeData& value) {
    std::string text;
    if (!TakeText(text)) return false;
    const host::String string{std::string_view(text)};
    value = filename ? GeData(host::Filename(string)) : GeData(string);
    return true;
  }

  bool ReadReals(std::string_view kind, GeData& value) {
    Real a = 0;
    Real b = 0;
    Real c = 0;
    if (!TakeField(a)) return false;
    if (kind == "real") return value = GeData(a), true;
    if (!TakeField(b)) return false;
    if (kind == "time") return value = GeData(host::BaseTime(a, b)), true;
    if (kind != "vector" || !TakeField(c)) return false;
    return value = GeData(host::Vector(a, b, c)), true;
  }

  std::string_view text_;  // still to be read
  const std::string_view whole_ = text_;
  std::size_t line_ = 1;
  std::vector<Level> levels_;
};

}  // namespace

Result<std::string> WritePreferences(const std::map<LONG, BaseContainer>& containers) {
  std::string text = std::string(kTitle) + Number(kVersion) + "\n";
  for (const auto& [id, container] : containers) {
    if (!WriteContainer(id, container, text))
      return Status::Failure("The preferences hold containers nested too deep to be kept.");
  }
  return text + std::string(kChecksum) + Checksum(text) + "\n";
}

Result<ReadPreferencesAnswer> ReadPreferences(std::string_view text) { return Reader(text).Read(); }

}  // namespace engine
