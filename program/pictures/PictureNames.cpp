#include "program/pictures/PictureNames.h"

#include <algorithm>
#include <filesystem>
#include <map>

#include "engine/core/Utf8.h"
#include "engine/outside/FoldedName.h"

namespace pictures {

using engine::Result;
using engine::Status;

namespace {

// Most file systems hold 255 bytes in a name; a pattern may fill in two of these and a number.
constexpr std::size_t kMostNameBytes = 120;
constexpr const char* kPlaceholders =
    "{scene}, {state}, {camera}, {size}, {frame}, {date} and {index}";

// A number with at least so many digits.
std::string Digits(long number, std::size_t least) {
  std::string digits = std::to_string(number < 0 ? -number : number);
  if (digits.size() < least) digits.insert(0, least - digits.size(), '0');
  return (number < 0 ? "-" : "") + digits;
}

// One stretch of a pattern: a text, or what stands between braces. `how` is ":" where nothing
// stands behind the colon, which is told from no colon at all.
struct PatternPart {
  bool isName = false;
  std::string text = {};
  std::string how = {};  // behind the colon of a name
};

// One pass. A doubled brace is a letter; a single one must be closed, and the message shows the
// pattern from the fault on.
Result<std::vector<PatternPart>> PartsOf(const std::string& pattern) {
  using Parts = Result<std::vector<PatternPart>>;
  std::vector<PatternPart> parts(1);
  for (std::size_t at = 0; at < pattern.size(); ++at) {
    const char letter = pattern[at];
    const bool isBrace = letter == '{' || letter == '}';
    if (!isBrace || pattern.compare(at, 2, std::string(2, letter)) == 0) {
      parts.back().text += letter;
      at += isBrace ? 1 : 0;
      continue;
    }
    const std::size_t close = letter == '{' ? pattern.find('}', at) : std::string::npos;
    if (close == std::string::npos) {
      return Parts::Failure(
          "\"" + (letter == '{' ? pattern.substr(at) : pattern.substr(0, at + 1)) + "\" has a " +
          letter + " without its " + (letter == '{' ? "}" : "{") + ". Write " +
          std::string(2, letter) + " for a brace in a name. There are " + kPlaceholders + ".");
    }
    const std::string inside = pattern.substr(at + 1, close - at - 1);
    const std::size_t colon = std::min(inside.find(':'), inside.size());
    parts.push_back({true, inside.substr(0, colon),
                     colon < inside.size() ? inside.substr(colon + 1) : std::string()});
    if (colon < inside.size() && parts.back().how.empty()) parts.back().how = ":";
    parts.emplace_back();
    at = close;
  }
  return parts;
}

bool IsText(const std::string& name) {
  return name == "scene" || name == "state" || name == "camera" || name == "size" || name == "date";
}
bool IsNumber(const std::string& name) { return name == "frame" || name == "index"; }

// "04": so many digits at least.
bool IsWidth(const std::string& how) {
  return how.size() == 2 && how[0] == '0' && how[1] >= '1' && how[1] <= '9';
}

Status CheckPart(const PatternPart& part) {
  const std::string whole =
      "{" + part.text + (part.how.empty() ? "" : ":" + (part.how == ":" ? "" : part.how)) + "}";
  if (!IsText(part.text) && !IsNumber(part.text))
    return Status::Failure(whole + " is no placeholder. There are " + kPlaceholders + ".");
  if (part.how.empty() || (IsNumber(part.text) ? IsWidth(part.how) : part.how == "safe")) return {};
  return Status::Failure(whole + " is no placeholder. Behind a colon " +
                         (IsNumber(part.text)
                              ? "a number wants how many digits, as {" + part.text + ":03}."
                              : "a name may have the word safe, as {" + part.text + ":safe}."));
}

// By ASCII letters and not by the locale, in which "TIFF" may have a dotless i.
std::string LowerSuffix(const std::string& path) {
  std::string suffix = std::filesystem::path(path).extension().string();
  for (char& letter : suffix)
    letter = static_cast<char>(letter >= 'A' && letter <= 'Z' ? letter - 'A' + 'a' : letter);
  return suffix;
}

bool IsPlain(char letter) {
  return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') ||
         (letter >= '0' && letter <= '9') || letter == '-' || letter == '_' || letter == '.';
}

// One "_" for each character that is not plain.
std::string OnlyPlain(const std::string& text) {
  std::string plain;
  for (std::size_t at = 0; at < text.size(); at += engine::CharacterBytes(text, at))
    plain += IsPlain(text[at]) ? text[at] : '_';
  return plain;
}

// Numbers need nothing made safe; every text does, since names of scenes, cameras and states may
// hold slashes.
std::string ValueOf(const PatternPart& part, const PictureFacts& facts) {
  const std::size_t width = part.how.empty() ? 0 : static_cast<std::size_t>(part.how[1] - '0');
  if (part.text == "frame") return Digits(facts.frame, part.how.empty() ? 4 : width);
  if (part.text == "index") return Digits(static_cast<long>(facts.index), width);
  if (part.text == "size") return std::to_string(facts.width) + "x" + std::to_string(facts.height);
  const std::string& text = part.text == "scene"    ? facts.scene
                            : part.text == "state"  ? facts.state
                            : part.text == "camera" ? facts.camera
                                                    : facts.date;
  return SafeFileName(part.how.empty() ? text : OnlyPlain(text));
}

// Whether the character, well-formed or a single byte, must not stand in a file name.
bool IsRefused(std::string_view character) {
  const auto byte = static_cast<unsigned char>(character[0]);
  if (character.size() == 1) {
    return byte < 0x20 || byte >= 0x7F ||
           std::string_view("/\\:*?\"<>|").find(character[0]) != std::string_view::npos;
  }
  // U+0080 to U+009F; U+200E, U+200F, U+2028 to U+202E; U+2066 to U+2069.
  const auto second = static_cast<unsigned char>(character[1]);
  if (byte == 0xC2) return second < 0xA0;
  if (byte != 0xE2 || character.size() != 3) return false;
  const auto third = static_cast<unsigned char>(character[2]);
  return (second == 0x80 && (third == 0x8E || third == 0x8F || (third >= 0xA8 && third <= 0xAE))) ||
         (second == 0x81 && third >= 0xA6 && third <= 0xA9);
}

// Names that another system takes for a device, whatever their suffix.
bool IsDevice(const std::string& name) {
  std::string stem = name.substr(0, name.find('.'));
  for (char& letter : stem)
    letter = static_cast<char>(letter >= 'a' && letter <= 'z' ? letter - 'a' + 'A' : letter);
  if (stem == "CON" || stem == "PRN" || stem == "AUX" || stem == "NUL") return true;
  return stem.size() == 4 && (stem.starts_with("COM") || stem.starts_with("LPT")) &&
         stem[3] >= '1' && stem[3] <= '9';
}

constexpr std::pair<PictureKind, const char*> kKinds[] = {
    {PictureKind::Png, "png"}, {PictureKind::Tiff, "tif"}, {PictureKind::Exr, "exr"}};

}  // namespace

std::optional<PictureKind> KindOfWord(const std::string& word) {
  for (const auto& [kind, name] : kKinds) {
    if (word == name) return kind;
  }
  return std::nullopt;
}

const char* WordOf(PictureKind kind) {
  return std::find_if(std::begin(kKinds), std::end(kKinds),
                      [&](const auto& row) { return row.first == kind; })
      ->second;
}

std::optional<PictureKind> KindOfName(const std::string& path) {
  const std::string suffix = LowerSuffix(path);
  if (suffix == ".tiff") return PictureKind::Tiff;
  return suffix.empty() ? std::nullopt : KindOfWord(suffix.substr(1));
}

Status CheckPattern(const std::string& pattern) {
  const auto parts = PartsOf(pattern);
  if (!parts) return parts.GetStatus();
  for (const PatternPart& part : parts.Value()) {
    if (!part.isName) continue;
    if (Status known = CheckPart(part); !known) return known;
  }
  if (KindOfName(pattern)) return {};
  return Status::Failure("\"" + pattern +
                         "\" names no picture: the name must end in .png or .tif or .exr.");
}

bool HasPlaceholder(const std::string& pattern, const std::string& name) {
  const auto parts = PartsOf(pattern);
  return parts && std::ranges::any_of(parts.Value(), [&](const PatternPart& part) {
           return part.isName && part.text == name;
         });
}

std::string FillPattern(const std::string& pattern, const PictureFacts& facts) {
  const auto parts = PartsOf(pattern);
  if (!parts) return pattern;
  std::string filled;
  for (const PatternPart& part : parts.Value())
    filled += part.isName ? ValueOf(part, facts) : part.text;
  return filled;
}

// Cut between characters, never inside one. The first and last letters are mended after the cut,
// which may have made another one the last.
std::string SafeFileName(const std::string& text) {
  std::string safe;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t bytes = engine::CharacterBytes(text, at);
    if (safe.size() + bytes > kMostNameBytes) break;
    const std::string_view character = std::string_view(text).substr(at, bytes);
    safe += IsRefused(character) ? std::string_view("_") : character;
    at += bytes;
  }
  if (safe.empty()) return "_";
  if (safe.front() == '.' || safe.front() == '-') safe.front() = '_';
  if (safe.back() == '.' || safe.back() == ' ') safe.back() = '_';
  return IsDevice(safe) ? "_" + safe : safe;
}

engine::Result<std::string> EncodePicture(const engine::Image& picture, const std::string& path,
                                          const std::string& note) {
  switch (KindOfName(path).value_or(PictureKind::Tiff)) {
    case PictureKind::Png:
      return engine::EncodePng(picture);
    case PictureKind::Exr:
      return engine::EncodeExr(picture, note);
    default:
      return engine::EncodeTiff(picture);
  }
}

// O(n log n); the first clash in the order given.
std::optional<std::pair<std::size_t, std::size_t>> FindClash(
    const std::vector<std::string>& paths) {
  std::map<std::string, std::size_t> seen;
  for (std::size_t i = 0; i < paths.size(); ++i) {
    const auto [first, isNew] = seen.try_emplace(engine::FoldedName(paths[i]), i);
    if (!isNew) return std::pair{first->second, i};
  }
  return std::nullopt;
}

}  // namespace pictures
