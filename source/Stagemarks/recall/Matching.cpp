// Which items of the scene an element's records hold. The link alone is an item's identity: names, types and the
// records' keys play no part.
#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/keys/ElementKeys.h"
#include "source/Stagemarks/recall/LinkTargets.h"
#include "source/Stagemarks/recording/Walk.h"

namespace stagemarks {

namespace {

const BaseContainer* Part(const BaseContainer* element, LONG part) {
  return element ? element->GetContainerInstance(part) : nullptr;
}

Bool Holds(const BaseContainer* element, LONG part, LONG linkKey, const BaseList2D* item) {
  const BaseDocument* doc = GetActiveDocument();
  const BaseContainer* records = Part(element, part);
  if (!doc || !records || !item) return FALSE;
  for (LONG i = 0, id = 0; (id = records->GetIndexId(i)) != NOTOK; ++i) {
    if (records->GetContainer(id).GetLink(linkKey, doc) == item) return TRUE;
  }
  return FALSE;
}

}  // namespace

Bool SMDialog::SearchElementForObject(BaseContainer* element, BaseObject* op) const {
  return Holds(element, kObjects, kObjectLink, op);
}

Bool SMDialog::SearchElementForTag(BaseContainer* element, BaseTag* tag) const { return Holds(element, kTags, kTagLink, tag); }

Bool SMDialog::SearchElementForLayer(BaseContainer* element, LayerObject* layer) const {
  return Holds(element, kLayers, kLayerLink, layer);
}

BaseContainer SMDialog::GetNewObjects(BaseContainer* element) const {
  BaseContainer found;
  const BaseDocument* doc = GetActiveDocument();
  if (!doc || !doc->GetFirstObject()) return found;
  const LinkTargets known(Part(element, kObjects), kObjectLink, doc);
  LONG count = 0;
  for (BaseObject* op = doc->GetFirstObject(); op; op = NextInOrder(op)) {
    if (!known.Contains(op)) found.SetLink(count++, op);
  }
  return found;
}

BaseContainer SMDialog::GetNewTags(BaseContainer* element) const {
  BaseContainer found;
  const BaseDocument* doc = GetActiveDocument();
  if (!doc || !doc->GetFirstObject()) return found;
  const LinkTargets known(Part(element, kTags), kTagLink, doc);
  LONG count = 0;
  for (BaseObject* op = doc->GetFirstObject(); op; op = NextInOrder(op)) {
    for (BaseTag* tag = op->GetFirstTag(); tag; tag = tag->GetNext()) {
      if (!known.Contains(tag)) found.SetLink(count++, tag);
    }
  }
  return found;
}

BaseContainer SMDialog::GetNewLayers(BaseContainer* element) const {
  BaseContainer found;
  const BaseDocument* doc = GetActiveDocument();
  GeListHead* root = doc ? doc->GetLayerObjectRoot() : nullptr;
  if (!root || !root->GetFirst()) return found;
  const LinkTargets known(Part(element, kLayers), kLayerLink, doc);
  LONG count = 0;
  for (LayerObject* layer = static_cast<LayerObject*>(root->GetFirst()); layer; layer = NextInOrder(layer)) {
    if (!known.Contains(layer)) found.SetLink(count++, layer);
  }
  return found;
}

}  // namespace stagemarks
