#include "engine/scene/DeletedStates.h"

#include <utility>

#include "engine/scene/DocumentBody.h"
#include "engine/scene/NodeCopy.h"

namespace engine {

using host::BaseDocument;
using host::RenderData;

namespace {

// In the data of a packed scene.
constexpr host::LONG kRecord = 0;
constexpr host::LONG kEntry = 1;
constexpr host::LONG kHasSettings = 2;
constexpr const char* kPreview = "preview.tif";

// With its identity, because the record names the settings by it.
RenderData* CopyWithId(const RenderData& settings) {
  return static_cast<RenderData*>(CopyTree(settings, CopyRules{true, true, nullptr}));
}

}  // namespace

const DeletedStates& DeletedStatesOf(const BaseDocument& doc) {
  static const DeletedStates none;
  const SharedDeletedStates& states = BodyOf(doc).deletedStates;
  return states ? *states : none;
}

const SharedDeletedStates& SharedDeletedStatesOf(const BaseDocument& doc) {
  return BodyOf(doc).deletedStates;
}

void SetDeletedStates(BaseDocument& doc, SharedDeletedStates states) {
  BodyOf(doc).deletedStates = std::move(states);
}

OwnedDocument SceneOfState(const StateParts& parts) {
  OwnedDocument scene(BaseDocument::Alloc());
  host::BaseContainer& data = *scene->GetDataInstance();
  data.SetContainer(kRecord, parts.record);
  data.SetContainer(kEntry, parts.entry);
  data.SetBool(kHasSettings, parts.settings != nullptr);
  if (parts.settings) {
    // A document is never without settings, so the copy comes before those that it was made with
    // go.
    RenderData* fresh = scene->GetFirstRenderData();
    InsertCopy(*scene, *parts.settings);
    RenderData::Free(fresh);
  }
  if (parts.preview) SetEmbeddedFiles(*scene, {{kPreview, parts.preview}});
  return scene;
}

StateParts PartsOfScene(const BaseDocument& scene) {
  const host::BaseContainer& data = *scene.GetDataInstance();
  StateParts parts{data.GetContainer(kRecord), data.GetContainer(kEntry), nullptr, nullptr};
  // A scene without a copy holds settings, too: those that every document has.
  if (data.GetBool(kHasSettings)) parts.settings = scene.GetFirstRenderData();
  const EmbeddedFiles& files = EmbeddedFilesOf(scene);
  if (!files.empty() && files.front().name == kPreview) parts.preview = files.front().bytes;
  return parts;
}

RenderData& InsertCopy(BaseDocument& doc, const RenderData& settings) {
  RenderData* copy = CopyWithId(settings);
  // Loading writes over the first settings, so a copy must never become these.
  doc.InsertRenderData(copy, nullptr, doc.GetFirstRenderData());
  return *copy;
}

}  // namespace engine
