#include "source/Stagemarks/export/ExportPlaces.h"

#include "source/Stagemarks/keys/FileNames.h"

namespace stagemarks {

namespace {

Filename WithSuffix(const String& name, const CHAR* suffix) {
  return Filename(name + "." + suffix);
}

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

}  // namespace stagemarks
