// TextureGathering: copies the textures of a document into texture folders, as an export in a
// project layout needs them. The document is asked for its textures once; which file stands behind
// a name is looked up anew for each folder, because files copied before may be found. It does not
// own the document. Main thread.
#pragma once

#include <vector>

#include "source/Stagemarks/Host.h"

namespace stagemarks {

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
