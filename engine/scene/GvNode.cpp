#include "host/GvNode.h"

#include "engine/scene/NewNodes.h"
#include "engine/scene/NodeFactory.h"
#include "engine/scene/NodeTree.h"
#include "engine/scene/NodeTypes.h"

namespace host {

GvNode* GvNodeMaster::CreateNode(GvNode* parent, LONG id) {
  if (!parent) return nullptr;
  BaseList2D* node = engine::MakeNode(engine::NodeKind::Node, id);
  engine::PutIn(*node, *parent, engine::kChildren, parent->GetDownLast());
  return static_cast<GvNode*>(node);
}

}  // namespace host
