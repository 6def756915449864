#include "engine/render/TextureSearch.h"

#include <algorithm>
#include <unordered_set>

#include "engine/scene/EmbeddedFiles.h"
#include "engine/scene/ShaderWalk.h"
#include "host/Application.h"

namespace engine {

namespace {

constexpr host::LONG kGlobalTexturePaths = 10;

std::string BaseName(const std::string& path) { return path.substr(path.find_last_of('/') + 1); }

// Collects places, each once.
class Places {
 public:
  void Add(const std::string& folder, const std::string& file) {
    if (folder.empty() || folder.front() != '/' || file.empty()) return;
    Add((folder == "/" ? "" : folder) + "/" + file);
  }
  void Add(std::string path) {
    if (std::find(paths_.begin(), paths_.end(), path) == paths_.end())
      paths_.push_back(std::move(path));
  }
  // By the name where it is relative, and by its last part.
  void AddEither(const std::string& folder, const std::string& name) {
    if (name.front() != '/') Add(folder, name);
    Add(folder, BaseName(name));
  }
  std::vector<std::string> Take() { return std::move(paths_); }

 private:
  std::vector<std::string> paths_;
};

// "/old/shot/maps/wood.png" may be "maps/wood.png" beside a scene that was moved.
void AddEnds(const std::string& folder, const std::string& name, Places& places) {
  for (std::size_t at = name.find('/'); at != std::string::npos; at = name.find('/', at + 1))
    places.Add(folder, name.substr(at + 1));
}

}  // namespace

std::vector<std::string> TexturePlaces(const std::string& name, const std::string& documentFolder) {
  std::string given = name;
  std::replace(given.begin(), given.end(), '\\', '/');
  if (given.empty()) return {};
  Places places;
  if (given.front() == '/') places.Add(given);
  places.AddEither(documentFolder, given);
  if (!documentFolder.empty())
    places.AddEither(documentFolder + "/" + kTextureFolders.front(), given);
  for (host::LONG i = 0; i < kGlobalTexturePaths; ++i) {
    places.AddEither(host::GetGlobalTexturePath(i).GetString().ToUtf8(), given);
  }
  if (documentFolder.empty()) return places.Take();
  AddEnds(documentFolder, given, places);
  for (const char* usual : kTextureFolders) places.AddEither(documentFolder + "/" + usual, given);
  return places.Take();
}

std::string FindTexture(FileSystem& files, const std::string& name,
                        const std::string& documentFolder) {
  for (std::string& place : TexturePlaces(name, documentFolder)) {
    if (files.Kind(place) == FileKind::File) return std::move(place);
  }
  return "";
}

std::vector<std::string> TextureNames(const host::BaseDocument& doc) {
  const host::BaseContainer all = doc.GetAllTextures(nullptr);
  std::unordered_set<std::string> seen;
  std::vector<std::string> names;
  for (host::LONG i = 0; i < all.GetCount(); ++i) {
    std::string name = all.GetIndexData(i).GetFilename().GetString().ToUtf8();
    if (seen.insert(name).second) names.push_back(std::move(name));
  }
  return names;
}

bool IsTextureThere(FileSystem& files, const host::BaseDocument& doc, const std::string& name) {
  return FindEmbeddedFile(doc, name) != nullptr ||
         !FindTexture(files, name, doc.GetDocumentPath().GetString().ToUtf8()).empty();
}

std::vector<std::string> MissingTextures(FileSystem& files, const host::BaseDocument& doc) {
  std::vector<std::string> names = TextureNames(doc);
  std::erase_if(names, [&](const std::string& name) { return IsTextureThere(files, doc, name); });
  return names;
}

}  // namespace engine
