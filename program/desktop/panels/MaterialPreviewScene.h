// MaterialPreviewScene: a tiny document with a ball that has one material, for a picture of the
// material. It has a copy of the material and shares textures with the document. Owned by whoever
// makes it; main thread.
#pragma once

#include "engine/render/Renderer.h"
#include "engine/scene/Ownership.h"

namespace desktop {

class MaterialPreviewScene {
 public:
  // `material` is one of `doc`.
  MaterialPreviewScene(const host::BaseDocument& doc, host::BaseMaterial& material);

  const host::BaseDocument& Document() const { return *doc_; }
  // A camera that sees the ball from side to side in a square picture.
  static engine::PictureCamera Camera();

 private:
  engine::OwnedDocument doc_;
};

}  // namespace desktop
