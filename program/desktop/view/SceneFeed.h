// SceneFeed: reads what can be seen of a document when that has changed, in slices. It keeps the
// document's identity, never its address. Main thread.
#pragma once

#include <functional>
#include <optional>

#include "engine/render/SceneScan.h"
#include "program/desktop/OpenDocument.h"
#include "program/desktop/background/Slices.h"

namespace desktop {

class SceneFeed {
 public:
  // `read`: takes each scene that was read to its end.
  SceneFeed(engine::FileSystem& files, engine::RenderCaches& caches,
            const engine::SceneReading& how, std::function<void(engine::ScenePicture)> read);
  // Told when a document was not read to its end: it was closed, or that failed.
  std::function<void()> lost;

  // Begins to read where the document is another one or has changed since; null reads nothing.
  void Follow(const host::BaseDocument* doc);
  // The caller knows that nothing of the scene as read has changed since that change count.
  void TakeAsRead(const host::BaseDocument& doc, host::ULLONG since);
  // Forgets what was read: the next Follow reads again.
  void Forget();
  bool IsReading() const { return scan_.has_value(); }

 private:
  void Start(const host::BaseDocument& doc);
  void GiveUp();
  // False when nothing is left to read.
  bool Advance();

  engine::FileSystem& files_;
  engine::RenderCaches& caches_;
  engine::SceneReading how_;
  std::function<void(engine::ScenePicture)> read_;
  engine::NodeId doc_ = 0;
  host::ULLONG count_ = 0;
  std::optional<engine::SceneScan> scan_;
  Slices slices_;
};

}  // namespace desktop
