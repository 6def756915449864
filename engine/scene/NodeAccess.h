// NodeAccess: the one way into the private members of scene elements. Used in engine/scene and
// engine/undo only; what others need is a function of the headers by topic. It checks nothing. Main
// thread.
#pragma once

#include <memory>
#include <new>
#include <utility>

#include "engine/scene/NodeTypes.h"

namespace engine {

struct DocumentBody;

struct NodeAccess {
  using Node = host::GeListNode;

  // Makes and ends an element in memory that the caller provides; what hangs below it is the
  // caller's.
  template <class T>
  static T* Construct(void* memory, NodeKind kind, host::LONG type) {
    return ::new (memory) T(type, static_cast<host::UCHAR>(kind));
  }
  template <class T>
  static void End(Node* node) {
    static_cast<T*>(node)->~T();
  }
  static host::BaseDocument* ConstructDocument(std::unique_ptr<DocumentBody> body);

  static NodeKind Kind(const host::C4DAtom& atom) { return static_cast<NodeKind>(atom.kind_); }
  static host::UCHAR* Modes(host::C4DAtom& atom) { return atom.modes_; }
  static const host::UCHAR* Modes(const host::C4DAtom& atom) { return atom.modes_; }

  static Node*& Next(Node& node) { return node.next_; }
  static Node*& Pred(Node& node) { return node.pred_; }
  static Node*& Up(Node& node) { return node.up_; }
  static Node*& Down(Node& node) { return node.down_; }
  static Node*& DownLast(Node& node) { return node.downLast_; }
  static Node*& Kin(Node& node) { return node.kin_; }
  static Node* Kin(const Node& node) { return node.kin_; }
  static host::BaseDocument*& Document(Node& node) { return node.document_; }
  static host::ULLONG& Id(Node& node) { return node.id_; }
  static host::ULLONG Id(const Node& node) { return node.id_; }
  static host::ULLONG& NBits(Node& node) { return node.nbits_; }
  static host::ULLONG NBits(const Node& node) { return node.nbits_; }
  static Node*& First(host::GeListHead& head) { return head.first_; }
  static Node*& Last(host::GeListHead& head) { return head.last_; }

  static host::String& Name(host::BaseList2D& node) { return node.name_; }
  static const host::String& Name(const host::BaseList2D& node) { return node.name_; }
  static host::BaseContainer& Data(host::BaseList2D& node) { return node.data_; }
  static host::LONG& Bits(host::BaseList2D& node) { return node.bits_; }
  static host::ULLONG& Layer(host::BaseList2D& node) { return node.layer_; }
  static host::ULLONG Layer(const host::BaseList2D& node) { return node.layer_; }
  static host::GeListHead& Shaders(host::BaseList2D& node) { return node.shaders_; }
  static const host::GeListHead& Shaders(const host::BaseList2D& node) { return node.shaders_; }

  static Node*& LastTag(host::BaseObject& object) { return object.lastTag_; }
  static std::shared_ptr<const ObjectShape>& Shape(host::BaseObject& object) {
    return object.shape_;
  }
  static const std::shared_ptr<const ObjectShape>& Shape(const host::BaseObject& object) {
    return object.shape_;
  }
  static host::ULLONG& Material(host::TextureTag& tag) { return tag.material_; }
  static host::ULLONG Material(const host::TextureTag& tag) { return tag.material_; }
  static host::GvNodeMaster*& Master(host::XPressoTag& tag) { return tag.master_; }
  static host::LayerData& Flags(host::LayerObject& layer) { return layer.flags_; }
  static const host::LayerData& Flags(const host::LayerObject& layer) { return layer.flags_; }
  static host::GeListHead& Posts(host::RenderData& settings) { return settings.posts_; }
  static const host::GeListHead& Posts(const host::RenderData& settings) { return settings.posts_; }
  static host::GeListHead& Passes(host::RenderData& settings) { return settings.passes_; }
  static const host::GeListHead& Passes(const host::RenderData& settings) {
    return settings.passes_;
  }

  static DocumentBody& Body(const host::BaseDocument& doc) { return *doc.body_; }
  static host::ULLONG& Camera(host::BaseDraw& view) { return view.camera_; }
  static host::BaseDocument*& DocumentOf(host::BaseDraw& view) { return view.document_; }
  static host::ULLONG Camera(const host::BaseDraw& view) { return view.camera_; }
};

// A mode outside the three there are counts as undefined.
inline host::LONG ValidMode(host::LONG mode) {
  return mode == host::MODE_ON || mode == host::MODE_OFF ? mode : host::MODE_UNDEF;
}

}  // namespace engine
