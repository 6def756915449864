#include "program/publish/PageMaking.h"

#include "engine/states/StoredStates.h"

namespace publishing {

using engine::ProgressCallback;
using engine::Result;
using engine::Status;

namespace {

engine::PublishOptions AllStates(const std::string& scene) {
  engine::PublishOptions options;
  options.scene = scene;
  // A page switches between states, so it needs them all in one scene.
  options.asVariants = true;
  return options;
}

}  // namespace

std::unordered_map<std::string, engine::StateFacts> ReadStateFacts(const host::BaseDocument& doc) {
  std::unordered_map<std::string, engine::StateFacts> facts;
  for (const engine::StoredState& state : engine::ReadStates(doc)) {
    std::string date = state.date.Text();
    // "2026-11-22 07:59" becomes ISO 8601, which browsers read.
    if (const std::size_t blank = date.find(' '); blank != std::string::npos) date[blank] = 'T';
    facts.emplace(state.name, engine::StateFacts{state.name, state.id, date});
  }
  return facts;
}

PageMaking::PageMaking(const host::BaseDocument& doc, engine::FileSystem& files,
                       const std::string& scene)
    : facts_(ReadStateFacts(doc)),
      publication_(doc, files, AllStates(scene), renderCaches_, caches_) {}

// A state that is not stored, as the scene as it is, has no number and no date.
Status PageMaking::AddState(const std::string& name, const ProgressCallback& progress) {
  const auto stored = facts_.find(name);
  const engine::StateFacts facts =
      stored != facts_.end() ? stored->second : engine::StateFacts{name, 0, ""};
  Status added = publication_.AddState(facts, progress);
  if (added) contents_.states.push_back({facts.name, facts.date, ""});
  return added;
}

Status PageMaking::AddThumbnail(const engine::Image& picture) {
  auto bytes = EncodeThumbnail(picture);
  if (!bytes) return bytes.GetStatus();
  contents_.states.back().thumbnail = bytes.Take();
  return {};
}

// The scene's bytes are moved into the page and freed with the contents: they may be most of the
// memory.
Result<std::string> PageMaking::Finish(const PageViewer& viewer, const std::string& title,
                                       const ProgressCallback& progress) {
  auto scene = publication_.Finish(progress);
  if (!scene) return scene.GetStatus();
  scene_ = scene.Take();
  contents_.title = title;
  contents_.scene = std::move(scene_.bytes);
  std::string page = MakeStatePage(viewer, contents_);
  contents_ = {};
  return page;
}

}  // namespace publishing
