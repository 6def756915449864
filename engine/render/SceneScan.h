// SceneScan: taking what can be seen out of a document, in steps as large as one likes, so that a
// window stays alive while a huge scene is read. It refers to the document, which must neither
// change nor go between its steps. The thread that owns the document.
#pragma once

#include "engine/render/ScenePicture.h"

namespace engine {

class SceneScan {
 public:
  SceneScan(const host::BaseDocument& doc, FileSystem& files, const SceneReading& how,
            RenderCaches& caches);
  ~SceneScan();

  // Reads so many more objects; true when all are read.
  bool Advance(std::size_t objects);
  // The scene as read, not yet prepared; to be called once, after the last step.
  ScenePicture Take();

 private:
  class Reader;
  std::unique_ptr<Reader> reader_;
};

}  // namespace engine
