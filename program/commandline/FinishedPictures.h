// FinishedPictures: pictures that `render` made before, found through the manifests beside them,
// for whoever would else render the same again. A picture counts only when its own record, and the
// hash of its bytes, say that it is what the manifest tells. Works on a session it does not own.
// Main thread.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "program/commandline/PictureOrders.h"
#include "program/pictures/PictureManifest.h"

namespace commandline {

class FinishedPictures {
 public:
  explicit FinishedPictures(Session& session) : session_(session) {}

  // Adds the pictures of the manifest in a folder, an absolute path; without a manifest, none.
  void LookIn(const std::string& folder);
  // A picture of that scene and state, made with one of these settings, that has the shape of
  // `size` and is no smaller, scaled down to it; of several the smallest. Nothing where there is
  // none.
  std::optional<engine::Image> Find(const PictureRecord& wanted,
                                    const std::vector<std::string>& settings,
                                    const PictureSize& size);

 private:
  std::optional<engine::Image> Read(const pictures::ManifestLine& line);

  Session& session_;
  std::multimap<std::string, pictures::ManifestLine> found_;  // by the hash of the state
};

}  // namespace commandline
