// ExportPlaces: where the files of one export go. Every file of an element is named after the
// document and the element, "<document> <element>"; neither name's own dots count as a suffix. A
// value. Main thread.
#pragma once

#include "source/Stagemarks/Host.h"

namespace stagemarks {

class ExportPlaces {
 public:
  // The names come from `doc`; `elementFolders`: each element's files lie in a folder of their own
  // below `target`.
  ExportPlaces(const BaseDocument& doc, const Filename& target, Bool elementFolders);

  // Below these: the element's scene file, its cache folder and, in its layout, its textures.
  Filename Folder(const String& element) const;
  Filename SceneFile(const String& element) const;
  Filename TextureFolder(const String& element) const;
  Filename CacheFolder(const String& element) const;
  Filename CacheFile(const String& element) const;

  // Where the host keeps the scene's own illumination cache: read, never written.
  Filename SceneCacheFile(const Filename& documentPath) const;

 private:
  String BaseName(const String& element) const;

  Filename target_;
  String document_;  // its name without suffix
  Bool elementFolders_;
};

}  // namespace stagemarks
