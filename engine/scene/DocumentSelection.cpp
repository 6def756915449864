// Selection of a document's objects and tags.
#include "engine/scene/DocumentBody.h"
#include "engine/scene/DocumentState.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTree.h"
#include "engine/scene/TreeWalk.h"

namespace engine {

std::vector<host::BaseList2D*> SelectedInOrder(const host::BaseDocument& doc) {
  const DocumentBody& body = BodyOf(doc);
  std::vector<host::BaseList2D*> order = body.selectedObjects.InOrder(body.table);
  const std::vector<host::BaseList2D*> tags = body.selectedTags.InOrder(body.table);
  order.insert(order.end(), tags.begin(), tags.end());
  return order;
}

host::BaseTag* ActiveTagOf(const host::BaseDocument& doc) {
  DocumentBody& body = BodyOf(doc);
  return static_cast<host::BaseTag*>(body.selectedTags.Last(body.table));
}

}  // namespace engine

namespace host {

using engine::DocumentBody;
using engine::SelectionOrder;

namespace {

// Selects, adds or takes off one element; null with SELECTION_NEW selects nothing.
void Select(DocumentBody& body, SelectionOrder& order, BaseList2D* node, LONG mode) {
  if (mode == SELECTION_NEW) order.DeselectAll(body.table);
  if (!node) return;
  if (mode == SELECTION_SUB) return node->DelBit(BIT_ACTIVE);
  node->SetBit(BIT_ACTIVE);
  order.Add(engine::IdOf(*node), body.table);
}

}  // namespace

BaseObject* BaseDocument::GetActiveObject() const {
  return static_cast<BaseObject*>(body_->selectedObjects.Last(body_->table));
}

void BaseDocument::GetActiveObjects(AtomArray& selection, LONG) const {
  selection.Flush();
  for (BaseObject* object = GetFirstObject(); object; object = engine::NextInTree(object)) {
    if (object->GetBit(BIT_ACTIVE)) selection.Append(object);
  }
}

void BaseDocument::GetActiveTags(AtomArray& selection) const {
  selection.Flush();
  for (BaseObject* object = GetFirstObject(); object; object = engine::NextInTree(object)) {
    for (BaseTag* tag = object->GetFirstTag(); tag; tag = tag->GetNext()) {
      if (tag->GetBit(BIT_ACTIVE)) selection.Append(tag);
    }
  }
}

void BaseDocument::SetActiveObject(BaseObject* op, LONG mode) {
  if (!op || op->GetDocument() == this) Select(*body_, body_->selectedObjects, op, mode);
}

void BaseDocument::SetActiveTag(BaseTag* tag, LONG mode) {
  if (!tag || tag->GetDocument() == this) Select(*body_, body_->selectedTags, tag, mode);
}

}  // namespace host
