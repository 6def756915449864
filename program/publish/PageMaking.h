// PageMaking: a web page (StatePage.h) in the making. Whoever brings the document into its states
// adds one after the other, with its picture. It owns what it has read; the document and the files
// outlive it. Main thread.
#pragma once

#include <unordered_map>

#include "engine/publish/Publish.h"
#include "program/publish/StatePage.h"

namespace publishing {

// Facts about the Stagemarks stored in the scene, by their names: of equal names the first.
std::unordered_map<std::string, engine::StateFacts> ReadStateFacts(const host::BaseDocument& doc);

class PageMaking {
 public:
  // `scene`: its name.
  PageMaking(const host::BaseDocument& doc, engine::FileSystem& files, const std::string& scene);

  // Adds the document as it stands as the state `name`, whether or not there is a Stagemark of that
  // name. A failure where it was stopped.
  engine::Status AddState(const std::string& name, const engine::ProgressCallback& progress);
  // Sets the thumbnail of the state added last; fitted into the box of StatePage.h.
  engine::Status AddThumbnail(const engine::Image& picture);
  // The page with all states; called once.
  engine::Result<std::string> Finish(const PageViewer& viewer, const std::string& title,
                                     const engine::ProgressCallback& progress);
  // Facts about the scene in the page, after Finish; its bytes are gone.
  const engine::PublishedScene& Scene() const { return scene_; }

 private:
  std::unordered_map<std::string, engine::StateFacts> facts_;
  engine::RenderCaches renderCaches_;
  engine::PublishCaches caches_;
  PageContents contents_;
  engine::PublishedScene scene_;
  engine::Publication publication_;  // last: it uses the others
};

}  // namespace publishing
