// StatePictures: the pictures of a document's Stagemarks for whoever shows them. Main thread.
#pragma once

#include <QImage>
#include <functional>
#include <unordered_map>

#include "engine/outside/Services.h"
#include "engine/states/StoredStates.h"
#include "program/desktop/OpenDocument.h"
#include "program/desktop/background/Slices.h"

namespace desktop {

struct StatePicture {
  QImage image;            // null: none yet
  bool isPreview = false;  // the small one that recording has made
};

class StatePictures {
 public:
  // `changed`: told when the picture of a Stagemark has changed.
  StatePictures(const engine::Services& services, std::function<void(host::LONG id)> changed);

  // Takes over which Stagemarks there are; null: none.
  void Follow(const host::BaseDocument* doc, const std::vector<engine::StoredState>& states);
  const StatePicture& Of(host::LONG id) const;
  // Reads those that are missing, these first.
  void See(const std::vector<host::LONG>& visible);

 private:
  bool ReadNext();

  engine::FileSystem& files_;
  std::function<void(host::LONG)> changed_;
  host::ULLONG doc_ = 0;
  std::string previews_;  // their folder
  std::unordered_map<host::LONG, std::string> names_;
  std::unordered_map<host::LONG, StatePicture> pictures_;
  std::vector<host::LONG> wanted_;  // the last one is the next
  Slices reading_;
};

}  // namespace desktop
