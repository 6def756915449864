// Recording what belongs to the scene as a whole: render settings, camera and layers.
#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/keys/ElementKeys.h"
#include "source/Stagemarks/recording/Records.h"
#include "source/Stagemarks/recording/Walk.h"

namespace stagemarks {

namespace {

// Gives each post or pass of the copy the switch of its counterpart: copying leaves all bits out.
template <class Item>
void CopySwitches(const Item* source, Item* copy) {
  for (; source && copy; source = source->GetNext(), copy = copy->GetNext()) {
    if (source->GetAllBits() & BIT_DISABLED) {
      copy->SetAllBits(copy->GetAllBits() | BIT_DISABLED);
    } else {
      copy->SetAllBits(copy->GetAllBits() & ~BIT_DISABLED);
    }
  }
}

}  // namespace

Bool SMDialog::RecordRenderSettings() {
  BaseDocument* doc = GetActiveDocument();
  if (!doc) return FALSE;
  RenderData* source = doc->GetActiveRenderData();
  RenderData* copy = RenderData::Alloc();
  source->CopyTo(copy, COPY_NO_BITS, nullptr);
  copy->SetName(elementName_);
  CopySwitches(source->GetFirstVideoPost(), copy->GetFirstVideoPost());
  CopySwitches(source->GetFirstMultipass(), copy->GetFirstMultipass());
  doc->InsertRenderData(copy, nullptr, doc->GetFirstRenderData());
  renderBc_.SetLink(kRenderLink, copy);
  doc->SetActiveRenderData(source);
  return TRUE;
}

Bool SMDialog::RecordCameraSettings() {
  if (!IsOn(Option::ActiveCamera)) {
    cameraBc_.SetLink(kCameraLink, nullptr);
    return FALSE;
  }
  const BaseDocument* doc = GetActiveDocument();
  if (!doc) return FALSE;
  cameraBc_.SetLink(kCameraLink, doc->GetRenderBaseDraw()->GetSceneCamera(doc));
  return TRUE;
}

Bool SMDialog::RecordLayerSettings() {
  BaseDocument* doc = GetActiveDocument();
  if (!doc) return FALSE;
  layerCount_ = 0;
  if (const GeListHead* root = doc->GetLayerObjectRoot()) LoopThroughLayers(doc, root->GetFirst());
  return TRUE;
}

// Empties nothing: records of an earlier, larger layer tree stay behind the new ones.
void SMDialog::LoopThroughLayers(BaseDocument* doc, GeListNode* layer) {
  const GeListNode* above = layer ? layer->GetUp() : nullptr;
  for (; layer; layer = NextInOrder(layer, above)) {
    layersBc_.SetContainer(layerCount_,
                           LayerRecord(*static_cast<LayerObject*>(layer), doc, layerCount_));
    ++layerCount_;
  }
}

BaseContainer SMDialog::GetSelectedLayers() const {
  BaseContainer selected;
  const BaseDocument* doc = GetActiveDocument();
  const GeListHead* root = doc ? doc->GetLayerObjectRoot() : nullptr;
  if (!root) return selected;
  for (GeListNode* node = root->GetFirst(); node; node = NextInOrder(node)) {
    const LayerObject* layer = static_cast<LayerObject*>(node);
    if (layer->GetAllBits() & BIT_ACTIVE) selected.SetLink(selected.GetCount(), layer);
  }
  return selected;
}

}  // namespace stagemarks
