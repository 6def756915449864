#include "engine/undo/MoveNodes.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "engine/scene/NodeTypes.h"
#include "engine/scene/Vectors.h"
#include "engine/undo/Undo.h"
#include "engine/undo/UndoHistory.h"

namespace engine {

using host::BaseDocument;
using host::BaseList2D;
using host::BaseObject;
using host::GeListNode;
using host::Matrix;

namespace {

using Moved = std::unordered_set<const GeListNode*>;

// Frames in the world, each reckoned once however many objects ask for it.
class WorldFrames {
 public:
  const Matrix& Of(const BaseObject* object) {
    std::vector<const BaseObject*> way;
    for (; object && frames_.count(object) == 0; object = object->GetUp()) way.push_back(object);
    const Matrix* frame = object ? &frames_.at(object) : &identity_;
    for (auto at = way.rbegin(); at != way.rend(); ++at) {
      frame = &frames_.emplace(*at, Combined(*frame, (*at)->GetMl())).first->second;
    }
    return *frame;
  }

 private:
  const Matrix identity_{};
  std::unordered_map<const BaseObject*, Matrix> frames_;
};

bool IsMovable(NodeKind kind) {
  return kind == NodeKind::Object || kind == NodeKind::Layer || kind == NodeKind::RenderSettings;
}

bool MayMove(const BaseDocument& doc, const std::vector<BaseList2D*>& nodes, const Moved& moved,
             const BaseList2D* parent) {
  if (nodes.empty() || moved.size() != nodes.size() || moved.contains(nullptr)) return false;
  const NodeKind kind = KindOf(*nodes.front());
  const auto fits = [&](const BaseList2D* node) {
    return node->GetDocument() == &doc && KindOf(*node) == kind;
  };
  if (!IsMovable(kind) || (parent && !fits(parent)) ||
      !std::all_of(nodes.begin(), nodes.end(), fits))
    return false;
  const GeListNode* above = parent;
  while (above && !moved.contains(above)) above = above->GetUp();
  return !above;
}

GeListNode* StayingPred(const Moved& moved, const BaseList2D* parent, GeListNode* pred) {
  if (pred && pred->GetUp() != parent) return nullptr;
  while (pred && moved.contains(pred)) pred = pred->GetPred();
  return pred;
}

// Those that are there already stay, so that a document is never without render settings in
// between.
void Put(BaseDocument& doc, const std::vector<BaseList2D*>& nodes, BaseList2D* parent,
         GeListNode* pred) {
  UndoHistory& history = UndoHistory::Of(doc);
  BaseObject* const active = doc.GetActiveObject();
  host::RenderData* const settings = doc.GetActiveRenderData();
  for (BaseList2D* node : nodes) {
    if (node->GetUp() != parent || node->GetPred() != pred)
      history.Move(*node, parent ? *parent : doc, pred);
    pred = node;
  }
  if (active) doc.SetActiveObject(active, host::SELECTION_ADD);
  doc.SetActiveRenderData(settings);
}

// Objects and where they stand in the world, so that they can be given that place again.
class InTheWorld {
 public:
  InTheWorld(const std::vector<BaseList2D*>& nodes, BaseList2D* parent)
      : parent_(AsObject(parent)) {
    for (BaseList2D* node : nodes) {
      BaseObject* object = AsObject(node);
      if (object && object->GetUp() != parent) came_.emplace_back(object, frames_.Of(object));
    }
  }

  void Restore(BaseDocument& doc) {
    const Matrix above = frames_.Of(parent_);
    for (const auto& [object, world] : came_) {
      const auto inside = FrameInside(above, world);
      if (!inside || *inside == object->GetMl()) continue;
      doc.AddUndo(host::UNDO_CHANGE, object);
      object->SetMl(*inside);
    }
  }

 private:
  const BaseObject* parent_;
  WorldFrames frames_;
  std::vector<std::pair<BaseObject*, Matrix>> came_;
};

}  // namespace

bool MoveNodes(BaseDocument& doc, const std::vector<BaseList2D*>& nodes, BaseList2D* parent,
               BaseList2D* pred) {
  const Moved moved(nodes.begin(), nodes.end());
  if (!MayMove(doc, nodes, moved, parent)) return false;
  InTheWorld objects(nodes, parent);
  const UndoScope scope(doc, "Move");
  Put(doc, nodes, parent, StayingPred(moved, parent, pred));
  objects.Restore(doc);
  return true;
}

}  // namespace engine
