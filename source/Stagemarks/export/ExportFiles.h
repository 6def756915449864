// The files of one export: ExportPlaces tells where they go, TextureGathering copies the textures
// that an export in a project layout needs. Main thread.
#pragma once

#include <vector>

#include "source/Stagemarks/Host.h"

namespace stagemarks {

// Every file of an element is named after the document and the element, "<document> <element>";
// neither name's own dots count as a suffix. A value.
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

// The document, which it does not own, is asked for its textures once; which file stands behind a
// name is looked up anew for each folder, because files copied before may be found.
class TextureGathering {
 public:
  explicit TextureGathering(const BaseDocument& doc);
  // Makes the folder where it is missing. A folder that cannot be made, a texture found nowhere and
  // a failed copy are passed over in silence; existing files are replaced.
  void CopyInto(const Filename& folder) const;

 private:
  // The file under the name that the scene gives it, else below the document's texture folder, else
  // below the global texture paths in their order; empty when there is none.
  Filename Locate(const Filename& texture) const;

  std::vector<Filename> textures_;
  std::vector<Filename> places_;  // folders that are looked through
};

}  // namespace stagemarks
