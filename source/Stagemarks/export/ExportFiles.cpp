#include "source/Stagemarks/export/ExportFiles.h"

#include <string>
#include <unordered_map>

#include "source/Stagemarks/keys/FileNames.h"

namespace stagemarks {

namespace {

Filename WithSuffix(const String& name, const CHAR* suffix) {
  return Filename(name + "." + suffix);
}

constexpr LONG kGlobalTexturePaths = 10;

}  // namespace

ExportPlaces::ExportPlaces(const BaseDocument& doc, const Filename& target, Bool elementFolders)
    : target_(target), elementFolders_(elementFolders) {
  Filename name = doc.GetDocumentName();
  name.ClearSuffix();
  document_ = name.GetString();
}

Filename ExportPlaces::Folder(const String& element) const {
  return elementFolders_ ? target_ + Filename(BaseName(element)) : target_;
}

Filename ExportPlaces::SceneFile(const String& element) const {
  return Folder(element) + WithSuffix(BaseName(element), kSceneSuffix);
}

Filename ExportPlaces::TextureFolder(const String& element) const {
  return Folder(element) + Filename(kTextureFolder);
}

Filename ExportPlaces::CacheFolder(const String& element) const {
  return Folder(element) + Filename(kCacheFolderWritten);
}

Filename ExportPlaces::CacheFile(const String& element) const {
  return CacheFolder(element) + WithSuffix(BaseName(element), kCacheSuffix);
}

Filename ExportPlaces::SceneCacheFile(const Filename& documentPath) const {
  return documentPath + Filename(kCacheFolderRead) + WithSuffix(document_, kCacheSuffix);
}

String ExportPlaces::BaseName(const String& element) const { return document_ + " " + element; }

TextureGathering::TextureGathering(const BaseDocument& doc) {
  const BaseContainer found = doc.GetAllTextures(nullptr);
  for (LONG i = 0, id = 0; (id = found.GetIndexId(i)) != NOTOK; ++i) {
    if (found.GetType(id) == DA_FILENAME) textures_.push_back(found.GetFilename(id));
  }
  places_.push_back(doc.GetDocumentPath() + Filename(kTextureFolder));
  for (LONG i = 0; i < kGlobalTexturePaths; ++i) places_.push_back(GetGlobalTexturePath(i));
}

// A file is copied again only where another one of the same name was copied over it meanwhile.
void TextureGathering::CopyInto(const Filename& folder) const {
  if (!GeFExist(folder, TRUE)) GeFCreateDir(folder);
  if (!GeFExist(folder, TRUE)) return;
  std::unordered_map<std::string, std::string> copied;  // source by target
  for (const Filename& texture : textures_) {
    const Filename source = Locate(texture);
    if (!source.Content()) continue;
    const Filename target = folder + texture.GetFile();
    std::string& last = copied[target.GetString().ToUtf8()];
    const std::string path = source.GetString().ToUtf8();
    if (last != path && GeFCopyFile(source, target, 1)) last = path;
  }
}

Filename TextureGathering::Locate(const Filename& texture) const {
  if (GeFExist(texture, FALSE)) return texture;
  for (const Filename& place : places_) {
    Filename candidate = place + texture;
    if (GeFExist(candidate, FALSE)) return candidate;
  }
  return Filename();
}

}  // namespace stagemarks
