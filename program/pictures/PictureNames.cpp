#include "program/pictures/PictureNames.h"

#include <clocale>
#include <cwchar>
#include <cwctype>
#include <filesystem>
#include <map>

#include "engine/core/Utf8.h"

namespace pictures {

using engine::Status;

namespace {

constexpr std::size_t kMostNameBytes = 120;
constexpr const char* kPlaceholders = "{scene}, {state}, {camera} and {frame}";

std::string FourDigits(int number) {
  std::string digits = std::to_string(number < 0 ? -static_cast<long>(number) : number);
  if (digits.size() < 4) digits.insert(0, 4 - digits.size(), '0');
  return (number < 0 ? "-" : "") + digits;
}

// Calls `text` with what stands between placeholders and `name` with what they name.
template <class Text, class Name>
void Walk(const std::string& pattern, const Text& text, const Name& name) {
  std::size_t at = 0;
  while (at < pattern.size()) {
    const std::size_t open = pattern.find('{', at);
    const std::size_t close = open == std::string::npos ? open : pattern.find('}', open);
    text(pattern.substr(at, close == std::string::npos ? close : open - at));
    if (close == std::string::npos) return;
    name(pattern.substr(open + 1, close - open - 1));
    at = close + 1;
  }
}

std::string LowerSuffix(const std::string& path) {
  std::string suffix = std::filesystem::path(path).extension().string();
  for (char& letter : suffix)
    letter = static_cast<char>(letter >= 'A' && letter <= 'Z' ? letter - 'A' + 'a' : letter);
  return suffix;
}

}  // namespace

Status CheckPattern(const std::string& pattern) {
  std::string unknown;
  Walk(
      pattern, [](const std::string&) {},
      [&](const std::string& name) {
        const bool known =
            name == "scene" || name == "state" || name == "camera" || name == "frame";
        if (!known) unknown = "{" + name + "}";
      });
  const std::size_t open = pattern.rfind('{');
  if (open != std::string::npos && pattern.find('}', open) == std::string::npos) {
    return Status::Failure("\"" + pattern.substr(open) + "\" has a { without its }. There are " +
                           kPlaceholders + ".");
  }
  if (!unknown.empty())
    return Status::Failure(unknown + " is no placeholder. There are " + kPlaceholders + ".");
  const std::string suffix = LowerSuffix(pattern);
  if (suffix == ".png" || suffix == ".tif" || suffix == ".tiff") return {};
  return Status::Failure("\"" + pattern +
                         "\" names no picture: the name must end in .png or .tif.");
}

std::string FillPattern(const std::string& pattern, const PictureFacts& facts) {
  const std::map<std::string, std::string> values = {{"scene", facts.scene},
                                                     {"state", facts.state},
                                                     {"camera", facts.camera},
                                                     {"frame", FourDigits(facts.frame)}};
  std::string filled;
  Walk(
      pattern, [&](const std::string& text) { filled += text; },
      [&](const std::string& name) {
        const auto value = values.find(name);
        filled += value == values.end() ? "{" + name + "}" : SafeFileName(value->second);
      });
  return filled;
}

std::string SafeFileName(const std::string& text) {
  std::string safe;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t bytes = engine::CharacterBytes(text, at);
    if (safe.size() + bytes > kMostNameBytes) break;
    const auto byte = static_cast<unsigned char>(text[at]);
    // Those that a path or another system's file names cannot hold.
    const bool refused = byte < 0x20 || byte == 0x7F ||
                         std::string_view("/\\:*?\"<>|").find(text[at]) != std::string_view::npos;
    safe += refused ? "_" : text.substr(at, bytes);
    at += bytes;
  }
  if (!safe.empty() && safe.front() == '.') safe.front() = '_';
  return safe.empty() ? "_" : safe;
}

bool IsTiffName(const std::string& path) { return LowerSuffix(path) != ".png"; }

engine::Result<std::string> EncodePicture(const engine::Image& picture, const std::string& path) {
  return IsTiffName(path) ? engine::EncodeTiff(picture) : engine::EncodePng(picture);
}

// Letters as small ones wherever the system's tables of Unicode know them; bytes that are no text
// stay as they are.
std::string FoldedCase(const std::string& text) {
  static const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  if (!unicode) return text;
  const locale_t former = uselocale(unicode);
  std::string folded;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t bytes = engine::CharacterBytes(text, at);
    std::mbstate_t state{};
    wchar_t wide = 0;
    char small[16];
    std::size_t count = std::mbrtowc(&wide, text.data() + at, bytes, &state);
    if (count == bytes)
      count = std::wcrtomb(
          small, static_cast<wchar_t>(std::towlower(static_cast<std::wint_t>(wide))), &state);
    const bool known = count > 0 && count <= sizeof small;
    folded += known ? std::string(small, count) : text.substr(at, bytes);
    at += bytes;
  }
  uselocale(former);
  return folded;
}

std::optional<std::pair<std::size_t, std::size_t>> FindClash(
    const std::vector<std::string>& paths) {
  std::map<std::string, std::size_t> seen;
  for (std::size_t i = 0; i < paths.size(); ++i) {
    const auto [first, isNew] = seen.try_emplace(FoldedCase(paths[i]), i);
    if (!isNew) return std::pair{first->second, i};
  }
  return std::nullopt;
}

}  // namespace pictures
