#include "source/Stagemarks/previews/PreviewFile.h"

#include <string_view>

#include "source/Stagemarks/keys/FileNames.h"

namespace stagemarks {

namespace {

// False when the path holds parts that change nothing about where it leads.
Bool IsPlainPath(std::string_view path) {
  while (true) {
    const std::size_t end = path.find_first_of("/\\");
    const std::string_view part = path.substr(0, end);
    if (part.empty() || part == ".") return FALSE;
    if (end == std::string_view::npos) return TRUE;
    path.remove_prefix(end + 1);
  }
}

}  // namespace

Filename PreviewFile(const Filename& folder, const String& name) {
  const String file = name + "." + kPreviewSuffix;
  return IsPlainPath(file.View()) ? folder + Filename(file) : Filename();
}

}  // namespace stagemarks
