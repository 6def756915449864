#include "engine/application/Preferences.h"

#include <charconv>
#include <limits>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/core/ContainerContents.h"
#include "engine/core/Utf8.h"
#include "engine/scenefile/FileAsRead.h"

// The file is a line "stagemarks preferences 2 <hash of the rest, 16 hexadecimal digits>", then
// JSON: a list with an entry for each plug-in. An entry is [key, kind, value]:
//
//   [1026486, "container", {"id": 7, "entries": [...]}]    keyed by plug-in ID at the top
//   [10061, "long", 1]
//   [10, "real", 0.713]              "inf", "-inf", "nan" for what JSON has no number for
//   [11, "vector", [0, 1, 2]]
//   [12, "time", [25, 30]]           numerator, denominator
//   [13, "string", "Any text"]       a list of bytes where they are no UTF-8
//   [14, "filename", "/a/b.c4d"]     the same
//   [15, "link", 16777216]           identity of the target, 0 for none
//   [16, "nil", null]
//
// Files of version 1, which had a format of their own, are read and written anew as version 2 with
// the next change.

namespace engine {
namespace {

using host::BaseContainer;
using host::GeData;
using host::LONG;
using host::Real;
using nlohmann::json;
using Containers = std::map<LONG, BaseContainer>;

constexpr std::uint64_t kMostBytes = 64 << 20;
constexpr std::string_view kTitle = "stagemarks preferences ";
constexpr int kVersion = 2;
constexpr int kFormerVersion = 1;
// Reading and writing recurse.
constexpr std::size_t kDeepest = 1000;
constexpr const char* kChecksumMismatch = "the checksum does not fit";
constexpr std::pair<const char*, Real> kNoNumbers[] = {
    {"inf", std::numeric_limits<Real>::infinity()},
    {"-inf", -std::numeric_limits<Real>::infinity()},
    {"nan", std::numeric_limits<Real>::quiet_NaN()}};

std::string Hexadecimal(std::uint64_t value) {
  std::string text(16, '0');
  for (auto digit = text.rbegin(); digit != text.rend(); ++digit, value >>= 4)
    *digit = "0123456789abcdef"[value & 15];
  return text;
}

std::string Checksum(std::string_view bytes) { return Hexadecimal(HashOfContent({&bytes, 1})); }

// --- Writing.

json JsonOfReal(Real number) {
  if (number != number) return "nan";
  const bool isFinite = number - number == 0;
  return isFinite ? json(number) : json(number > 0 ? "inf" : "-inf");
}

bool IsUtf8(std::string_view text) {
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t bytes = CharacterBytes(text, at);
    if (bytes == 1 && static_cast<unsigned char>(text[at]) >= 128) return false;
    at += bytes;
  }
  return true;
}

json JsonOfText(const host::String& string) {
  const std::string text = string.ToUtf8();
  if (IsUtf8(text)) return text;
  json bytes = json::array();
  for (const char byte : text) bytes.push_back(static_cast<unsigned char>(byte));
  return bytes;
}

// An entry of anything but a container.
json JsonOf(LONG key, const GeData& value) {
  switch (value.GetType()) {
    case host::DA_LONG:
      return {key, "long", value.GetLong()};
    case host::DA_REAL:
      return {key, "real", JsonOfReal(value.GetReal())};
    case host::DA_STRING:
      return {key, "string", JsonOfText(value.GetString())};
    case host::DA_FILENAME:
      return {key, "filename", JsonOfText(value.GetFilename().GetString())};
    case host::DA_ALIASLINK:
      return {key, "link", LinkOf(value)};
    case host::DA_TIME:
      return {key,
              "time",
              {JsonOfReal(value.GetTime().GetNumerator()),
               JsonOfReal(value.GetTime().GetDenominator())}};
    case host::DA_VECTOR:
      return {key,
              "vector",
              {JsonOfReal(value.GetVector().x), JsonOfReal(value.GetVector().y),
               JsonOfReal(value.GetVector().z)}};
    default:
      return {key, "nil", nullptr};
  }
}

// Adds the entry of a container; false where containers in it go deeper than they may be read.
bool AddContainer(LONG key, const BaseContainer& container, std::size_t depth, json& to) {
  if (depth == kDeepest) return false;
  json entries = json::array();
  for (LONG i = 0; i < container.GetCount(); ++i) {
    const GeData value = container.GetIndexData(i);
    const LONG inside = container.GetIndexId(i);
    if (value.GetType() != host::DA_CONTAINER) {
      entries.push_back(JsonOf(inside, value));
    } else if (!AddContainer(inside, value.GetContainer(), depth + 1, entries)) {
      return false;
    }
  }
  json entry = {key, "container", {{"id", container.GetId()}}};
  entry[2]["entries"] = std::move(entries);
  to.push_back(std::move(entry));
  return true;
}

Result<std::string> TextOf(const Containers& containers) {
  json all = json::array();
  for (const auto& [id, container] : containers) {
    if (!AddContainer(id, container, 0, all))
      return Status::Failure("The preferences hold containers nested too deep to be kept.");
  }
  const std::string body = all.dump(1) + "\n";
  return std::string(kTitle) + std::to_string(kVersion) + " " + Checksum(body) + "\n" + body;
}

// --- Reading. What is not as it was written throws.

Real RealOf(const json& value) {
  if (!value.is_string()) return value.get<Real>();
  for (const auto& [name, number] : kNoNumbers) {
    if (value == name) return number;
  }
  throw std::invalid_argument("no number");
}

host::String TextOf(const json& value) {
  if (value.is_string()) return host::String(std::string_view(value.get_ref<const std::string&>()));
  std::string bytes;
  for (const json& byte : value) bytes += static_cast<char>(byte.get<unsigned char>());
  return host::String(std::string_view(bytes));
}

GeData ValueOf(const std::string& kind, const json& value) {
  if (kind == "long") return GeData(value.get<LONG>());
  if (kind == "real") return GeData(RealOf(value));
  if (kind == "string") return GeData(TextOf(value));
  if (kind == "filename") return GeData(host::Filename(TextOf(value)));
  if (kind == "link") return LinkValue(value.get<NodeId>());
  if (kind == "time") return GeData(host::BaseTime(RealOf(value.at(0)), RealOf(value.at(1))));
  if (kind == "vector")
    return GeData(host::Vector(RealOf(value.at(0)), RealOf(value.at(1)), RealOf(value.at(2))));
  if (kind == "nil") return GeData();
  throw std::invalid_argument("unknown kind");
}

BaseContainer ContainerOf(const json& value, std::size_t depth) {
  if (depth == kDeepest) throw std::invalid_argument("nested too deep");
  BaseContainer container(value.at("id").get<LONG>());
  for (const json& entry : value.at("entries")) {
    const LONG key = entry.at(0).get<LONG>();
    const auto& kind = entry.at(1).get_ref<const std::string&>();
    if (kind == "container") {
      container.SetContainer(key, ContainerOf(entry.at(2), depth + 1));
    } else {
      container.SetData(key, ValueOf(kind, entry.at(2)));
    }
  }
  return container;
}

Result<Containers> ContainersOf(std::string_view body) {
  try {
    Containers containers;
    const json all = json::parse(body);
    for (const json& entry : all) containers[entry.at(0).get<LONG>()] = ContainerOf(entry.at(2), 0);
    return containers;
  } catch (const std::exception&) {
    return Status::Failure("an entry cannot be understood");
  }
}

// --- Reading version 1. After the first line, entries of a line each: kind, key, value; of a
// container its own ID, then its entries and "end". Texts have bytes below 32, '%' and 127 as %XX.
// At the end "checksum" with the 64-bit FNV-1a sum, in 16 hexadecimal digits, of all bytes before
// that line (http://www.isthe.com/chongo/tech/comp/fnv).

constexpr std::string_view kChecksum = "checksum ";

std::string FormerChecksum(std::string_view bytes) {
  std::uint64_t sum = 14695981039346656037ULL;
  for (const char byte : bytes) sum = (sum ^ static_cast<unsigned char>(byte)) * 1099511628211ULL;
  return Hexadecimal(sum);
}

class FormerReader {
 public:
  // `whole`: the file; `entries`: the same without its first line.
  FormerReader(std::string_view whole, std::string_view entries) : text_(entries), whole_(whole) {}

  Result<Containers> Read() {
    if (!CheckSum()) return Status::Failure(kChecksumMismatch);
    while (!text_.empty()) {
      if (!ReadEntry())
        return Status::Failure("line " + std::to_string(line_) + " cannot be understood");
    }
    if (!levels_.empty()) return Status::Failure("a container has no end");
    return std::move(containers_);
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
    return last == std::string(kChecksum) + FormerChecksum(before) + "\n";
  }

  bool TakePrefix(std::string_view prefix) {
    if (text_.substr(0, prefix.size()) != prefix) return false;
    text_.remove_prefix(prefix.size());
    return true;
  }

  bool TakeLineEnd() {
    if (!TakePrefix("\n")) return false;
    ++line_;
    return true;
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

  bool ReadEntry() {
    if (TakePrefix("end")) return EndContainer() && TakeLineEnd();
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

  bool EndContainer() {
    if (levels_.empty()) return false;
    const Level level = std::move(levels_.back());
    levels_.pop_back();
    if (levels_.empty()) {
      containers_[level.key] = level.container;
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
  const std::string_view whole_;
  std::size_t line_ = 2;
  std::vector<Level> levels_;
  Containers containers_;
};

struct FileRead {
  bool laterVersion = false;  // then nothing else is known
  Containers containers;
};

// Fails, saying why, for what this program did not write.
Result<FileRead> ReadFileText(std::string_view text) {
  std::string_view rest = text;
  int version = 0;
  const auto takeVersion = [&] {
    if (!rest.starts_with(kTitle)) return false;
    rest.remove_prefix(kTitle.size());
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), version);
    rest.remove_prefix(static_cast<std::size_t>(end - rest.data()));
    return error == std::errc() && !rest.empty() && (rest[0] == '\n' || rest[0] == ' ');
  };
  if (!takeVersion()) return Status::Failure("the first line is not ours");
  if (version > kVersion) return FileRead{true, {}};
  const std::size_t line = rest.find('\n');
  if (line == std::string_view::npos) return Status::Failure(kChecksumMismatch);
  const std::string_view body = rest.substr(line + 1);
  const bool isFormer = version == kFormerVersion && line == 0;
  if (!isFormer && (version != kVersion || rest.substr(0, line) != " " + Checksum(body)))
    return Status::Failure(kChecksumMismatch);
  Result<Containers> read = isFormer ? FormerReader(text, body).Read() : ContainersOf(body);
  if (!read) return read.GetStatus();
  return FileRead{false, read.Take()};
}

}  // namespace

const host::BaseContainer* Preferences::Get(host::LONG id) {
  if (!read_) {
    const Status status = Read();
    if (!status) ledger_.AddNote(File(), status.Message());
  }
  const auto it = stored_.find(id);
  return it == stored_.end() ? nullptr : &it->second;
}

Status Preferences::Set(host::LONG id, host::BaseContainer data, bool merge) {
  Status status = Read();
  if (!status) ledger_.Add({Operation::ReplaceFile, File(), "", false, status.Message()});
  host::BaseContainer& stored = stored_[id];
  if (merge) {
    stored.MergeContainer(data);
  } else {
    stored = std::move(data);
  }
  session_[id] = stored;
  if (status) status = files_.MakeFolders(folder_);
  if (!status) return status;
  const Result<std::string> text = TextOf(stored_);
  // A person may keep such files elsewhere, with a link here.
  files_.Follow(File());
  if (text) return files_.ReplaceFile(File(), text.Value());
  // Cannot be kept: it is forgotten, so that it does not stand in the way of what is set next.
  session_.erase(id);
  read_ = false;
  return text.GetStatus();
}

std::string Preferences::File() const { return folder_.empty() ? "" : folder_ + "/preferences"; }

Status Preferences::Read() {
  read_ = true;
  Status status;
  const std::string path = File();
  if (files_.Kind(path) == FileKind::Missing) {
    stored_.clear();
  } else {
    const Result<std::string> text = files_.ReadFile(path, kMostBytes);
    if (!text) return text.GetStatus();
    Result<FileRead> answer = ReadFileText(text.Value());
    stored_.clear();
    if (!answer) {
      status = KeepAside(answer.Message());
    } else if (answer.Value().laterVersion) {
      status = Status::Failure("The preferences \"" + path +
                               "\" are of a later version of this program; they stay as they are.");
    } else {
      stored_ = std::move(answer.Value().containers);
    }
  }
  // Settings of this session count more than those that another program has written since under the
  // same ID.
  for (const auto& [id, data] : session_) stored_[id] = data;
  return status;
}

// Copied first and removed then: where there is no room for the copy, the only one stays.
Status Preferences::KeepAside(const std::string& reason) {
  const std::string aside = File() + ".damaged";
  Status kept = files_.CopyFile(File(), aside, true);
  if (kept) kept = files_.RemoveFile(File());
  if (!kept) return kept;
  ledger_.AddNote(File(), "The preferences were damaged (" + reason +
                              "); the defaults apply, the old file is \"" + aside + "\".");
  return kept;
}

}  // namespace engine
