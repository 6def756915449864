// Random operations, undone to the start and done again to the end, each step compared with the
// dump it had.
#include <gtest/gtest.h>

#include "engine/scene/NodeTypes.h"
#include "engine/scene/SceneDump.h"
#include "engine/scene/TreeWalk.h"
#include "engine/undo/MoveNodes.h"
#include "engine/undo/Undo.h"
#include "tests/support/SceneBuilder.h"

namespace {

using host::BaseDocument;
using host::BaseList2D;
using host::BaseObject;
using host::GeListNode;
using host::RenderData;

class RandomEdits {
 public:
  RandomEdits(BaseDocument& doc, unsigned seed) : doc_(doc), seed_(seed) {}

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
  BaseList2D* Any() {
    std::vector<BaseList2D*> all;
    for (GeListNode* node = engine::NextInside(doc_, doc_); node;
         node = engine::NextInside(*node, doc_)) {
      const engine::NodeKind kind = engine::KindOf(*node);
      if (kind != engine::NodeKind::NodeMaster && kind != engine::NodeKind::Node)
        all.push_back(static_cast<BaseList2D*>(node));
    }
    return all[Random(static_cast<unsigned>(all.size()))];
  }

  BaseObject* AnyObject() {
    for (int i = 0; i < 50; ++i) {
      if (BaseObject* object = engine::AsObject(Any())) return object;
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

  void Made(BaseList2D* node) { doc_.AddUndo(host::UNDO_NEW, node); }

  void MakeObject() {
    BaseObject* object = BaseObject::Alloc(Random(2) ? host::Ocube : host::Ocamera);
    BaseObject* parent = Random(2) ? AnyObject() : nullptr;
    doc_.InsertObject(object, parent,
                      parent ? static_cast<BaseObject*>(parent->GetDownLast()) : nullptr);
    Made(object);
  }

  void MoveSome() {
    std::vector<BaseList2D*> some;
    for (unsigned i = 0; i <= Random(3); ++i) {
      if (BaseObject* object = AnyObject()) some.push_back(object);
    }
    BaseObject* parent = Random(3) ? AnyObject() : nullptr;
    engine::MoveNodes(doc_, some, parent, parent ? parent->GetDown() : doc_.GetFirstObject());
  }

  void MakeTag() {
    const host::LONG types[] = {host::Ttexture, host::Tcompositing, host::Texpresso, 1021738};
    if (BaseObject* object = AnyObject())
      Made(object->MakeTag(types[Random(4)], object->GetFirstTag()));
  }

  void MakeRoot() {
    if (Random(2)) {
      auto* material = host::BaseMaterial::Alloc(host::Mmaterial);
      doc_.InsertMaterial(material);
      return Made(material);
    }
    RenderData* settings = RenderData::Alloc();
    settings->InsertVideoPost(host::BaseVideoPost::Alloc(static_cast<host::LONG>(Random(100))));
    doc_.InsertRenderData(settings, nullptr, doc_.GetFirstRenderData());
    Made(settings);
    doc_.SetActiveRenderData(settings);
  }

  void CopySettings() {
    RenderData* first = doc_.GetFirstRenderData();
    if (!first->GetNext()) return;
    doc_.AddUndo(host::UNDO_CHANGE, first);
    first->GetNext()->CopyTo(first, Random(2) ? 0 : host::COPY_NO_BITS, nullptr);
  }

  void Change(BaseList2D* node) {
    doc_.AddUndo(host::UNDO_CHANGE, node);
    node->SetName(host::String(std::string_view(std::to_string(Random(1000)))));
    node->GetDataInstance()->SetLink(static_cast<host::LONG>(Random(5)), Any());
    node->SetAllBits(static_cast<host::LONG>(Random(8)));
    if (BaseObject* object = engine::AsObject(node)) {
      object->SetEditorMode(static_cast<host::LONG>(Random(3)));
      host::Matrix frame;
      frame.off.x = Random(10);
      object->SetMl(frame);
    }
    if (host::TextureTag* tag = engine::AsTextureTag(node))
      tag->SetMaterial(doc_.GetFirstMaterial());
  }

  void Delete(BaseList2D* node) {
    doc_.AddUndo(host::UNDO_DELETE, node);
    BaseObject* object = engine::AsObject(node);
    host::BaseTag* tag = engine::AsTag(node);
    host::BaseMaterial* material = engine::AsMaterial(node);
    host::LayerObject* layer = engine::AsLayer(node);
    RenderData* settings = engine::AsRenderData(node);
    if (object) return BaseObject::Free(object);
    if (tag) return host::BaseTag::Free(tag);
    if (material) return host::BaseMaterial::Free(material);
    if (layer) return host::LayerObject::Free(layer);
    if (settings) RenderData::Free(settings);
  }

  BaseDocument& doc_;
  unsigned seed_;
};

class UndoRandom : public testing::TestWithParam<unsigned> {};

TEST_P(UndoRandom, GoesBackToTheStartAndForwardToTheEnd) {
  tests::SceneBuilder scene;
  scene.Object("A/B")
      .Object("A/C")
      .Object("D")
      .Material("M")
      .Layer("L/K")
      .Settings("S")
      .Post("S", 5)
      .Pass("S", 6, false);
  scene.Texture("A/B", "M").Expression("D");
  BaseDocument& doc = scene.Doc();
  RandomEdits edits(doc, GetParam());
  std::vector<std::string> dumps = {engine::DumpDocument(doc)};
  for (int i = 0; i < 60; ++i) {
    edits.Step();
    if (engine::DumpDocument(doc) != dumps.back()) dumps.push_back(engine::DumpDocument(doc));
  }
  for (int round = 0; round < 2; ++round) {
    std::size_t at = dumps.size() - 1;
    while (doc.DoUndo()) {
      if (engine::DumpDocument(doc) != dumps[at]) --at;
      ASSERT_EQ(engine::DumpDifference(dumps[at], engine::DumpDocument(doc)),
                std::vector<std::string>())
          << at;
    }
    EXPECT_EQ(at, 0u);
    while (doc.DoRedo()) {
      if (engine::DumpDocument(doc) != dumps[at]) ++at;
      ASSERT_EQ(engine::DumpDifference(dumps[at], engine::DumpDocument(doc)),
                std::vector<std::string>())
          << at;
    }
    EXPECT_EQ(at, dumps.size() - 1);
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, UndoRandom, testing::Range(1u, 40u));

}  // namespace
