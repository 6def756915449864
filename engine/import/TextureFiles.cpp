#include "engine/import/TextureFiles.h"

#include <strings.h>

#include <algorithm>
#include <filesystem>
#include <unordered_map>

#include "engine/import/PercentCode.h"
#include "engine/scene/EmbeddedFiles.h"
#include "engine/scene/ShaderWalk.h"
#include "host/BaseMaterial.h"

namespace engine {
namespace {

// Slashes only, without the scheme of an address.
std::string Cleaned(const std::string& written) {
  std::string text = WithSlashes(written);
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
    for (const std::string& text : {written, PercentDecoded(written)}) {
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
    if (name.empty() || name.find('\0') != std::string::npos) return {};
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
