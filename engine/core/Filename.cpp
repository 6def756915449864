#include "host/Filename.h"

#include <algorithm>

namespace host {

namespace {

constexpr std::string_view kSeparators = "/\\";
constexpr std::string_view kSeparator = "/";

Bool IsSeparator(char c) { return kSeparators.find(c) != std::string_view::npos; }

// Offset of the file part.
std::size_t FileOffset(std::string_view path) {
  const std::size_t last = path.find_last_of(kSeparators);
  return last == std::string_view::npos ? 0 : last + 1;
}

// Offset of the last dot of the file part, the size of the path where there is none.
std::size_t SuffixOffset(std::string_view path) {
  const std::size_t dot = path.rfind('.');
  return dot == std::string_view::npos || dot < FileOffset(path) ? path.size() : dot;
}

std::string Join(std::string_view folder, std::string_view rest) {
  if (folder.empty()) return std::string(rest);
  const std::size_t used = folder.find_last_not_of(kSeparators);
  const std::size_t end = used == std::string_view::npos ? 0 : used + 1;
  rest.remove_prefix(std::min(rest.find_first_not_of(kSeparators), rest.size()));
  // The separator that the folder brings itself is kept as it is written.
  const std::string_view separator = end < folder.size() ? folder.substr(end, 1) : kSeparator;
  return std::string(folder.substr(0, end)).append(separator).append(rest);
}

Bool SameIgnoringCase(std::string_view a, std::string_view b) {
  const auto lower = [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [&](char x, char y) { return lower(x) == lower(y); });
}

// Offset of the next character behind `at`, where the separators of a run count as its first one.
std::size_t NextCollapsed(std::string_view path, std::size_t at) {
  const bool inRun = IsSeparator(path[at]);
  do {
    ++at;
  } while (inRun && at < path.size() && IsSeparator(path[at]));
  return at;
}

Filename FromText(std::string_view text) { return Filename(String(text)); }

}  // namespace

Filename Filename::GetFile() const { return Filename(GetFileString()); }

String Filename::GetFileString() const {
  return String(path_.View().substr(FileOffset(path_.View())));
}

void Filename::SetFile(const Filename& file) { *this = GetDirectory() + file; }

Filename Filename::GetDirectory() const {
  const std::string_view path = path_.View();
  const std::size_t file = FileOffset(path);
  return FromText(path.substr(0, file <= 1 ? file : file - 1));
}

void Filename::SetDirectory(const Filename& directory) { *this = directory + GetFile(); }

String Filename::GetSuffix() const {
  const std::string_view path = path_.View();
  const std::size_t dot = SuffixOffset(path);
  return dot < path.size() ? String(path.substr(dot + 1)) : String();
}

void Filename::SetSuffix(const String& suffix) {
  ClearSuffix();
  if (suffix.Content()) path_ += String(".") + suffix;
}

void Filename::ClearSuffix() { path_ = String(path_.View().substr(0, SuffixOffset(path_.View()))); }

Bool Filename::CheckSuffix(const String& suffix) const {
  return SameIgnoringCase(GetSuffix().View(), suffix.View());
}

Filename operator+(const Filename& a, const Filename& b) {
  return FromText(Join(a.path_.View(), b.path_.View()));
}

Filename& Filename::operator+=(const Filename& other) { return *this = *this + other; }

Bool Filename::operator==(const Filename& other) const {
  const std::string_view a = path_.View();
  const std::string_view b = other.path_.View();
  std::size_t i = 0;
  std::size_t j = 0;
  while (i < a.size() && j < b.size() && a[i] == b[j]) {
    i = NextCollapsed(a, i);
    j = NextCollapsed(b, j);
  }
  return i == a.size() && j == b.size();
}

}  // namespace host
