#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/recording/Records.h"
#include "source/Stagemarks/recording/Walk.h"

namespace stagemarks {

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
