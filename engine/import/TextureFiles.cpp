#include "engine/import/TextureFiles.h"

#include <strings.h>

#include <algorithm>
#include <filesystem>
#include <unordered_map>

#include "engine/scene/EmbeddedFiles.h"
#include "engine/scene/ShaderWalk.h"
#include "host/BaseMaterial.h"

namespace engine {
namespace {

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  const char lower = static_cast<char>(c | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// Percent-encoding of addresses (RFC 3986, section 2.1); what is none stays.
std::string Decoded(const std::string& text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool complete = text[i] == '%' && i + 2 < text.size();
    const int high = complete ? HexDigit(text[i + 1]) : -1;
    const int low = complete ? HexDigit(text[i + 2]) : -1;
    const bool encoded = high >= 0 && low >= 0 && high + low > 0;
    result.push_back(encoded ? static_cast<char>(16 * high + low) : text[i]);
    if (encoded) i += 2;
  }
  return result;
}

// Slashes only, without the scheme of an address.
std::string Cleaned(std::string text) {
  std::replace(text.begin(), text.end(), '\\', '/');
  if (text.rfind("file://", 0) == 0) text.erase(0, 7);
  return text;
}

std::string BareName(const std::string& path) { return path.substr(path.rfind('/') + 1); }

// Looks for texture files of one scene; every folder is listed once.
class TextureSearch {
 public:
  TextureSearch(FileSystem& files, const std::string& scene)
      : files_(files), folder_(scene.substr(0, scene.rfind('/') + 1)) {}

  // The full path, or empty.
  const std::string& Find(const std::string& written) {
    const auto [entry, isNew] = found_.try_emplace(written);
    if (isNew) entry->second = Search(Cleaned(written));
    return entry->second;
  }

 private:
  std::string Search(const std::string& written) {
    for (const std::string& text : {written, Decoded(written)}) {
      std::string direct = AsWritten(text);
      if (!direct.empty()) return direct;
      std::string near = ByName(BareName(text));
      if (!near.empty()) return near;
    }
    return {};
  }

  std::string AsWritten(const std::string& text) const {
    if (text.empty() || text.find('\0') != std::string::npos) return {};
    const std::string path = std::filesystem::path(text.front() == '/' ? text : folder_ + text)
                                 .lexically_normal()
                                 .string();
    return files_.Kind(path) == FileKind::File ? path : std::string();
  }

  std::string ByName(const std::string& name) {
    if (name.empty()) return {};
    std::string found = ByNameIn(folder_, name);
    for (std::size_t i = 0; i < kTextureFolders.size() && found.empty(); ++i) {
      found = ByNameIn(folder_ + kTextureFolders[i] + "/", name);
    }
    return found;
  }

  std::string ByNameIn(const std::string& folder, const std::string& name) {
    for (const std::string& file : FilesOf(folder)) {
      if (::strcasecmp(file.c_str(), name.c_str()) == 0) return folder + file;
    }
    return {};
  }

  const std::vector<std::string>& FilesOf(const std::string& folder) {
    const auto [entry, isNew] = listed_.try_emplace(folder);
    if (!isNew || files_.Kind(folder) != FileKind::Folder) return entry->second;
    Result<std::vector<std::string>> files = files_.ListFiles(folder);
    if (files) entry->second = files.Take();
    return entry->second;
  }

  FileSystem& files_;
  std::string folder_;
  std::unordered_map<std::string, std::string> found_;
  std::unordered_map<std::string, std::vector<std::string>> listed_;
};

}  // namespace

std::vector<std::string> ResolveTextures(FileSystem& files, host::BaseDocument& doc,
                                         const std::string& scene) {
  TextureSearch search(files, scene);
  std::vector<std::string> notes;
  ForEachBitmapShader(doc, [&](host::BaseShader& shader) {
    const std::string written = BitmapFileOf(shader);
    if (written.empty() || FindEmbeddedFile(doc, written) != nullptr) return;
    const std::string& path = search.Find(written);
    if (!path.empty()) return SetBitmapFile(shader, path);
    const std::string note = "The texture \"" + written + "\" was not found.";
    if (std::find(notes.begin(), notes.end(), note) == notes.end()) notes.push_back(note);
  });
  return notes;
}

}  // namespace engine
