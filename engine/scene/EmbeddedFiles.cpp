#include "engine/scene/EmbeddedFiles.h"

#include <algorithm>

#include "engine/core/Utf8.h"
#include "engine/scene/DocumentBody.h"

namespace engine {
namespace {

// Half of what file systems allow, which leaves room for a number and for what others add to names.
// The characters are those that no name may have on one of the usual systems.
constexpr std::size_t kNameBytes = 120;
constexpr std::string_view kReserved = ":*?\"<>|";

bool IsPlain(char c) {
  return static_cast<unsigned char>(c) >= 0x20 && c != 0x7f &&
         kReserved.find(c) == std::string_view::npos;
}

// Position of the suffix's dot, or the end. What is longer than nine characters is taken for a part
// of the name.
std::size_t SuffixAt(const std::string& name) {
  const std::size_t dot = name.rfind('.');
  return dot == std::string::npos || dot == 0 || dot + 1 == name.size() || name.size() - dot > 10
             ? name.size()
             : dot;
}

EmbeddedFiles::const_iterator Find(const EmbeddedFiles& files, std::string_view name) {
  return std::find_if(files.begin(), files.end(),
                      [&](const EmbeddedFile& file) { return file.name == name; });
}

// The document's own list, split from those of its copies. The bytes stay shared.
EmbeddedFiles& Own(host::BaseDocument& doc) {
  auto files = std::make_shared<EmbeddedFiles>(EmbeddedFilesOf(doc));
  BodyOf(doc).embedded = files;
  return *files;
}

}  // namespace

const EmbeddedFiles& EmbeddedFilesOf(const host::BaseDocument& doc) {
  static const EmbeddedFiles none;
  const auto& files = BodyOf(doc).embedded;
  return files ? *files : none;
}

const std::string* FindEmbeddedFile(const host::BaseDocument& doc, std::string_view name) {
  const EmbeddedFiles& files = EmbeddedFilesOf(doc);
  const auto found = Find(files, name);
  return found == files.end() ? nullptr : found->bytes.get();
}

void SetEmbeddedFiles(host::BaseDocument& doc, EmbeddedFiles files) {
  BodyOf(doc).embedded = std::make_shared<const EmbeddedFiles>(std::move(files));
}

std::string AddEmbeddedFile(host::BaseDocument& doc, std::string_view wish, std::string bytes) {
  EmbeddedFiles& files = Own(doc);
  const std::string safe = SafeFileName(wish);
  std::string name = safe;
  for (unsigned number = 2; Find(files, name) != files.end(); ++number)
    name = NumberedFileName(safe, number);
  files.push_back({name, std::make_shared<const std::string>(std::move(bytes))});
  return name;
}

bool RenameEmbeddedFile(host::BaseDocument& doc, std::string_view name, std::string_view to) {
  const EmbeddedFiles& now = EmbeddedFilesOf(doc);
  const auto found = Find(now, name);
  if (found == now.end() || Find(now, to) != now.end() || SafeFileName(to) != to) return false;
  const auto position = found - now.begin();
  Own(doc)[static_cast<std::size_t>(position)].name = to;
  return true;
}

std::string SafeFileName(std::string_view path) {
  const std::size_t separator = path.find_last_of("/\\");
  std::string name(separator == std::string_view::npos ? path : path.substr(separator + 1));
  std::replace_if(
      name.begin(), name.end(), [](char c) { return !IsPlain(c); }, '_');
  const std::size_t dot = SuffixAt(name);
  const std::string suffix = name.substr(dot);
  name.resize(dot);
  CutTo(name, kNameBytes - suffix.size());
  // No hidden file, and neither "." nor "..".
  const std::size_t start = name.find_first_not_of(". ");
  name = start == std::string::npos ? "texture" : name.substr(start);
  return name + suffix;
}

std::string NumberedFileName(const std::string& name, unsigned number) {
  std::string result = name;
  return result.insert(SuffixAt(name), "-" + std::to_string(number));
}

}  // namespace engine
