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
  if (data.GetBool(kHasSettings)) parts.settings = scene.GetFirstRenderData();
  const EmbeddedFiles& files = EmbeddedFilesOf(scene);
  if (!files.empty() && files.front().name == kPreview) parts.preview = files.front().bytes;
  return parts;
}

RenderData& InsertCopy(BaseDocument& doc, const RenderData& settings) {
  RenderData* copy = CopyWithId(settings);
  doc.InsertRenderData(copy, nullptr, doc.GetFirstRenderData());
  return *copy;
}

}  // namespace engine
