// RandomEdits: changes of all kinds to a document, decided by a seed, each registered for undo. For
// tests that take back and do again. Main thread.
#pragma once

#include "engine/scene/NodeTypes.h"
#include "engine/scene/TreeWalk.h"
#include "engine/undo/MoveNodes.h"
#include "engine/undo/Undo.h"
#include "tests/support/SceneBuilder.h"

namespace tests {

class RandomEdits {
 public:
  // A scene with one of each thing that can be changed.
  static void Build(SceneBuilder& scene) {
    scene.Object("A/B")
        .Object("A/C")
        .Object("D")
        .Material("M")
        .Layer("L/K")
        .Settings("S")
        .Post("S", 5)
        .Pass("S", 6, false);
    scene.Texture("A/B", "M").Expression("D");
  }

  RandomEdits(host::BaseDocument& doc, unsigned seed) : doc_(doc), seed_(seed) {}

  // One group of one to four operations.
  void Step() {
    engine::UndoScope scope(doc_, "random");
    for (unsigned i = 0; i <= Random(4); ++i) Operation();
  }

 private:
  unsigned Random(unsigned bound) {
    return (seed_ = seed_ * 1664525u + 1013904223u) / 65536u % bound;
  }

  // Any element of the document but itself and what is fixed in expressions.
  host::BaseList2D* Any() {
    std::vector<host::BaseList2D*> all;
    for (host::GeListNode* node = engine::NextInside(doc_, doc_); node;
         node = engine::NextInside(*node, doc_)) {
      const engine::NodeKind kind = engine::KindOf(*node);
      if (kind != engine::NodeKind::NodeMaster && kind != engine::NodeKind::Node)
        all.push_back(static_cast<host::BaseList2D*>(node));
    }
    return all[Random(static_cast<unsigned>(all.size()))];
  }

  host::BaseObject* AnyObject() {
    for (int i = 0; i < 50; ++i) {
      if (host::BaseObject* object = engine::AsObject(Any())) return object;
    }
    return nullptr;
  }

  void Operation() {
    switch (Random(9)) {
      case 0:
        return MakeObject();
      case 1:
        return MakeTag();
      case 2:
        return Delete(Any());
      case 3:
        return CopySettings();
      case 4:
        return doc_.GetRenderBaseDraw()->SetSceneCamera(AnyObject(), false);
      case 5:
        return MakeRoot();
      case 6:
        return MoveSome();
      default:
        return Change(Any());
    }
  }

  void Made(host::BaseList2D* node) { doc_.AddUndo(host::UNDO_NEW, node); }

  void MakeObject() {
    host::BaseObject* object = host::BaseObject::Alloc(Random(2) ? host::Ocube : host::Ocamera);
    host::BaseObject* parent = Random(2) ? AnyObject() : nullptr;
    doc_.InsertObject(object, parent,
                      parent ? static_cast<host::BaseObject*>(parent->GetDownLast()) : nullptr);
    Made(object);
  }

  void MoveSome() {
    std::vector<host::BaseList2D*> some;
    for (unsigned i = 0; i <= Random(3); ++i) {
      if (host::BaseObject* object = AnyObject()) some.push_back(object);
    }
    host::BaseObject* parent = Random(3) ? AnyObject() : nullptr;
    engine::MoveNodes(doc_, some, parent, parent ? parent->GetDown() : doc_.GetFirstObject());
  }

  void MakeTag() {
    const host::LONG types[] = {host::Ttexture, host::Tcompositing, host::Texpresso, 1021738};
    if (host::BaseObject* object = AnyObject())
      Made(object->MakeTag(types[Random(4)], object->GetFirstTag()));
  }

  void MakeRoot() {
    if (Random(2)) {
      auto* material = host::BaseMaterial::Alloc(host::Mmaterial);
      doc_.InsertMaterial(material);
      return Made(material);
    }
    host::RenderData* settings = host::RenderData::Alloc();
    settings->InsertVideoPost(host::BaseVideoPost::Alloc(static_cast<host::LONG>(Random(100))));
    doc_.InsertRenderData(settings, nullptr, doc_.GetFirstRenderData());
    Made(settings);
    doc_.SetActiveRenderData(settings);
  }

  void CopySettings() {
    host::RenderData* first = doc_.GetFirstRenderData();
    if (!first->GetNext()) return;
    doc_.AddUndo(host::UNDO_CHANGE, first);
    first->GetNext()->CopyTo(first, Random(2) ? 0 : host::COPY_NO_BITS, nullptr);
  }

  void Change(host::BaseList2D* node) {
    doc_.AddUndo(host::UNDO_CHANGE, node);
    node->SetName(host::String(std::string_view(std::to_string(Random(1000)))));
    node->GetDataInstance()->SetLink(static_cast<host::LONG>(Random(5)), Any());
    node->SetAllBits(static_cast<host::LONG>(Random(8)));
    if (host::BaseObject* object = engine::AsObject(node)) {
      object->SetEditorMode(static_cast<host::LONG>(Random(3)));
      host::Matrix frame;
      frame.off.x = Random(10);
      object->SetMl(frame);
    }
    if (host::TextureTag* tag = engine::AsTextureTag(node))
      tag->SetMaterial(doc_.GetFirstMaterial());
  }

  void Delete(host::BaseList2D* node) {
    doc_.AddUndo(host::UNDO_DELETE, node);
    host::BaseObject* object = engine::AsObject(node);
    host::BaseTag* tag = engine::AsTag(node);
    host::BaseMaterial* material = engine::AsMaterial(node);
    host::LayerObject* layer = engine::AsLayer(node);
    host::RenderData* settings = engine::AsRenderData(node);
    if (object) return host::BaseObject::Free(object);
    if (tag) return host::BaseTag::Free(tag);
    if (material) return host::BaseMaterial::Free(material);
    if (layer) return host::LayerObject::Free(layer);
    if (settings) host::RenderData::Free(settings);
  }

  host::BaseDocument& doc_;
  unsigned seed_;
};

}  // namespace tests
