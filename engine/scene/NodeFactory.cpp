#include "engine/scene/NodeFactory.h"

#include <string_view>
#include <unordered_set>

#include "engine/scene/DocumentBody.h"
#include "engine/scene/Mesh.h"
#include "engine/scene/NewNodes.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/NodePool.h"
#include "engine/scene/NodeTree.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/Ownership.h"
#include "engine/scene/TreeWalk.h"

namespace engine {

using host::BaseList2D;
using host::GeListNode;
using A = NodeAccess;

namespace {

// Pools are never ended: nodes may outlive every static object.
template <class T>
NodePool& PoolOf() {
  static NodePool* const pool = new NodePool(sizeof(T));
  return *pool;
}

template <class T>
BaseList2D* MakeAs(NodeKind kind, host::LONG type) {
  T* node = A::Construct<T>(PoolOf<T>().Take(), kind, type);
  A::Id(*node) = NodeIds::Instance().Next();
  return node;
}

template <class T>
void EndAs(GeListNode* node) {
  A::End<T>(node);
  PoolOf<T>().Give(node);
}

// The destructor of the very class, since the published classes have no virtual one. Documents are
// in no pool and end by Free.
void End(GeListNode* node) {
  switch (A::Kind(*node)) {
    case NodeKind::Document:
      return;
    case NodeKind::Object:
      return EndAs<host::BaseObject>(node);
    case NodeKind::Tag:
      return EndAs<host::BaseTag>(node);
    case NodeKind::TextureTag:
      return EndAs<host::TextureTag>(node);
    case NodeKind::XPressoTag:
      return EndAs<host::XPressoTag>(node);
    case NodeKind::Material:
      return EndAs<host::BaseMaterial>(node);
    case NodeKind::Shader:
      return EndAs<host::BaseShader>(node);
    case NodeKind::Layer:
      return EndAs<host::LayerObject>(node);
    case NodeKind::RenderSettings:
      return EndAs<host::RenderData>(node);
    case NodeKind::VideoPost:
      return EndAs<host::BaseVideoPost>(node);
    case NodeKind::Multipass:
      return EndAs<host::MultipassObject>(node);
    case NodeKind::NodeMaster:
      return EndAs<host::GvNodeMaster>(node);
    case NodeKind::Node:
      return EndAs<host::GvNode>(node);
  }
}

// An expression consists of its master, and that of the root below which nodes are made.
void AddMaster(BaseList2D& tag) {
  BaseList2D* master = MakeBare(NodeKind::NodeMaster, host::GVbase);
  PutIn(*MakeNode(NodeKind::Node, host::GVbase), *master, kChildren, nullptr);
  PutIn(*master, tag, kAttached, nullptr);
}

GeListNode* Innermost(GeListNode* node) {
  while (GeListNode* inside = FirstInside(*node)) node = inside;
  return node;
}

// Post-order: an owner ends after all it owns, so that the way back up is still there.
void DestroyTree(GeListNode* root) {
  GeListNode* node = Innermost(root);
  while (node != root) {
    GeListNode* following = Following(*node);
    GeListNode* after = following ? Innermost(following) : OwnerOf(*node);
    End(node);
    node = after;
  }
  End(root);
}

}  // namespace

BaseList2D* MakeBare(NodeKind kind, host::LONG type) {
  switch (kind) {
    case NodeKind::Document:
      return nullptr;
    case NodeKind::Object:
      return MakeAs<host::BaseObject>(kind, type);
    case NodeKind::Tag:
      return MakeAs<host::BaseTag>(kind, type);
    case NodeKind::TextureTag:
      return MakeAs<host::TextureTag>(kind, type);
    case NodeKind::XPressoTag:
      return MakeAs<host::XPressoTag>(kind, type);
    case NodeKind::Material:
      return MakeAs<host::BaseMaterial>(kind, type);
    case NodeKind::Shader:
      return MakeAs<host::BaseShader>(kind, type);
    case NodeKind::Layer:
      return MakeAs<host::LayerObject>(kind, type);
    case NodeKind::RenderSettings:
      return MakeAs<host::RenderData>(kind, type);
    case NodeKind::VideoPost:
      return MakeAs<host::BaseVideoPost>(kind, type);
    case NodeKind::Multipass:
      return MakeAs<host::MultipassObject>(kind, type);
    case NodeKind::NodeMaster:
      return MakeAs<host::GvNodeMaster>(kind, type);
    case NodeKind::Node:
      return MakeAs<host::GvNode>(kind, type);
  }
  return nullptr;
}

BaseList2D* MakeNode(NodeKind kind, host::LONG type) {
  BaseList2D* node = MakeBare(kind, type);
  if (!node) return nullptr;
  if (IsKnownType(type)) A::Name(*node) = TypeName(type);
  A::Data(*node) = DefaultData(type);
  if (kind == NodeKind::XPressoTag) AddMaster(*node);
  return node;
}

host::BaseDocument* MakeBareDocument() {
  host::BaseDocument* doc = A::ConstructDocument(std::make_unique<DocumentBody>());
  A::Id(*doc) = NodeIds::Instance().Next();
  A::Document(*doc) = doc;
  BodyOf(*doc).table.Add(A::Id(*doc), doc);
  A::DocumentOf(BodyOf(*doc).view) = doc;
  return doc;
}

NodeKind TagKind(host::LONG type) {
  if (type == host::Ttexture) return NodeKind::TextureTag;
  return type == host::Texpresso ? NodeKind::XPressoTag : NodeKind::Tag;
}

void DestroyNode(BaseList2D* node) {
  if (!node) return;
  if (A::Kind(*node) != NodeKind::Document) return DestroyTree(node);
  auto* doc = static_cast<host::BaseDocument*>(node);
  host::BaseDocument::Free(doc);
}

// The next one is asked for before its neighbor ends.
void DestroyList(GeListNode* first) {
  while (first) {
    GeListNode* next = first->GetNext();
    DestroyTree(first);
    first = next;
  }
}

void FreeNode(BaseList2D* node) {
  if (!node) return;
  const host::BaseDocument* doc = node->GetDocument();
  // An open undo step that was told of the deletion parks the node instead, so that undo brings
  // back the very same one and links to it hold.
  if (doc && BodyOf(*doc).undo && BodyOf(*doc).undo->Claim(*node)) return;
  TakeOut(*node);
  DestroyNode(node);
}

// The lowest number that is free, so that gaps are filled.
void MakeNameUnique(BaseList2D& node, const BaseList2D* first) {
  const std::string name = node.GetName().ToUtf8();
  // Only these can stand in the way. They are looked at where they lie.
  std::unordered_set<std::string_view> names;
  for (const GeListNode* other = first; other; other = NextInTree(other)) {
    const host::String& taken = A::Name(*static_cast<const BaseList2D*>(other));
    if (other != &node && taken.View().substr(0, name.size()) == name) names.insert(taken.View());
  }
  std::string candidate = name;
  for (int number = 1; names.count(candidate) > 0; ++number)
    candidate = name + "." + std::to_string(number);
  node.SetName(host::String(std::string_view(candidate)));
}

}  // namespace engine
