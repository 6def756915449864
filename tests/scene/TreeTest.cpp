// Places in the trees: inserting, taking out, walking; chains too deep for a stack.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "engine/scene/DocumentState.h"
#include "engine/scene/Mesh.h"
#include "engine/scene/Ownership.h"
#include "engine/scene/SceneDump.h"
#include "engine/scene/TreeWalk.h"
#include "tests/support/SceneBuilder.h"

namespace {

using host::BaseDocument;
using host::BaseObject;
using tests::SceneBuilder;

constexpr int kDeep = 200'000;

// "A(B(C) D) E": names in pre-order, children in brackets. For shallow scenes.
std::string Shape(const BaseObject* first) {
  std::string text;
  for (const BaseObject* object = first; object; object = object->GetNext()) {
    if (object != first) text += " ";
    text += object->GetName().ToUtf8();
    if (object->GetDown()) text += "(" + Shape(object->GetDown()) + ")";
    EXPECT_EQ(object->GetNext() ? object->GetNext()->GetPred() : object, object);
    EXPECT_TRUE(object->GetNext() || !object->GetUp() || object->GetUp()->GetDownLast() == object);
  }
  return text;
}

std::string Shape(const SceneBuilder& scene) { return Shape(scene.Doc().GetFirstObject()); }

BaseObject* NewObject(const char* name) {
  BaseObject* object = BaseObject::Alloc(host::Onull);
  object->SetName(name);
  return object;
}

TEST(Tree, PutsObjectsWhereAsked) {
  SceneBuilder scene;
  BaseDocument& doc = scene.Doc();
  scene.Object("A").Object("A/B").Object("C");
  doc.InsertObject(NewObject("first"), nullptr, nullptr);
  doc.InsertObject(NewObject("afterA"), nullptr, scene.GetObject("A"));
  doc.InsertObject(NewObject("inA"), scene.GetObject("A"), nullptr);
  doc.InsertObject(NewObject("afterB"), scene.GetObject("A"), scene.GetObject("A/B"));
  NewObject("under")->InsertUnder(scene.GetObject("C"));
  NewObject("last")->InsertUnderLast(scene.GetObject("C"));
  NewObject("between")->InsertAfter(scene.GetObject("C/under"));
  EXPECT_EQ(Shape(scene), "first A(inA B afterB) afterA C(under between last)");
  EXPECT_EQ(scene.GetObject("A")->GetUp(), nullptr);
  EXPECT_EQ(scene.GetObject("A/B")->GetUp(), scene.GetObject("A"));
}

TEST(Tree, MovesWhatIsSomewhereAndRefusesACircle) {
  SceneBuilder scene;
  scene.Object("A/B/C").Object("D");
  BaseObject* a = scene.GetObject("A");
  BaseObject* c = scene.GetObject("A/B/C");
  a->InsertUnder(c);
  a->InsertUnder(a);
  a->InsertAfter(a);
  EXPECT_EQ(Shape(scene), "A(B(C)) D") << "an object cannot hang below itself";
  c->InsertUnder(scene.GetObject("D"));
  EXPECT_EQ(Shape(scene), "A(B) D(C)");
  scene.GetObject("A")->InsertAfter(scene.GetObject("D"));
  EXPECT_EQ(Shape(scene), "D(C) A(B)");
  EXPECT_EQ(c->GetDocument(), &scene.Doc());
}

TEST(Tree, ANeighborFromElsewhereCountsAsNone) {
  SceneBuilder scene;
  scene.Object("A/B").Object("C");
  scene.Doc().InsertObject(NewObject("new"), nullptr, scene.GetObject("A/B"));
  EXPECT_EQ(Shape(scene), "new A(B) C");
}

TEST(Tree, RemovedSubtreeLeavesTheDocumentWhole) {
  SceneBuilder scene;
  scene.Object("A/B").Tag("A/B", host::Tphong).Object("C");
  BaseObject* a = scene.GetObject("A");
  BaseObject* b = scene.GetObject("A/B");
  a->Remove();
  EXPECT_EQ(Shape(scene), "C");
  EXPECT_EQ(b->GetDocument(), nullptr);
  EXPECT_EQ(b->GetFirstTag()->GetDocument(), nullptr);
  EXPECT_EQ(b->GetUp(), a);
  BaseObject::Free(a);
}

TEST(Tree, TagsShadersAndExpressionNodesKeepTheirOrder) {
  SceneBuilder scene;
  scene.Object("A").Tag("A", 1).Tag("A", 3);
  BaseObject* a = scene.GetObject("A");
  a->MakeTag(2, a->GetTag(1));
  host::LONG expected = 1;
  for (host::BaseTag* tag = a->GetFirstTag(); tag; tag = tag->GetNext()) {
    EXPECT_EQ(tag->GetType(), expected++);
    EXPECT_EQ(tag->GetObject(), a);
  }
  EXPECT_EQ(expected, 4);
  host::GvNodeMaster* master = scene.Expression("A");
  host::GvNode* root = master->GetRoot();
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(root->GetUp(), nullptr);
  host::GvNode* node = master->CreateNode(root, 400001);
  EXPECT_EQ(root->GetDown(), node);
  EXPECT_EQ(master->CreateNode(root, 400002)->GetPred(), node);
  EXPECT_EQ(master->CreateNode(nullptr, 400001), nullptr);
  root->Remove();
  EXPECT_EQ(master->GetRoot(), root) << "an expression is never without its root";
}

TEST(Tree, ChainsDocuments) {
  engine::OwnedDocument docs[3];
  for (engine::OwnedDocument& doc : docs) doc.reset(BaseDocument::Alloc());
  engine::ChainDocument(*docs[0], nullptr);
  engine::ChainDocument(*docs[1], docs[0].get());
  engine::ChainDocument(*docs[2], docs[1].get());
  docs[1]->Remove();
  EXPECT_EQ(docs[0]->GetNext(), docs[2].get());
  EXPECT_EQ(docs[2]->GetPred(), docs[0].get());
  EXPECT_EQ(docs[1]->GetNext(), nullptr);
  engine::ChainDocument(*docs[1], docs[0].get());
  EXPECT_EQ(docs[0]->GetNext(), docs[1].get());
  EXPECT_EQ(docs[1]->GetPred(), docs[0].get());
  EXPECT_EQ(docs[1]->GetNext(), docs[2].get());
  EXPECT_EQ(docs[2]->GetPred(), docs[1].get());
  engine::ChainDocument(*docs[1], docs[1].get());
  EXPECT_EQ(docs[1]->GetNext(), nullptr) << "one behind itself is in no chain";
  EXPECT_EQ(docs[0]->GetNext(), docs[2].get());
  engine::UnchainDocument(*docs[0]);
}

TEST(Tree, WalksBelowARootOrToTheEnd) {
  SceneBuilder scene;
  scene.Object("A/B/C").Object("A/D").Object("E");
  const auto walk = [](const BaseObject* from, const BaseObject* root) {
    std::string names;
    for (const BaseObject* object = from; object; object = engine::NextInTree(object, root))
      names += object->GetName().ToUtf8();
    return names;
  };
  EXPECT_EQ(walk(scene.GetObject("A"), nullptr), "ABCDE");
  EXPECT_EQ(walk(scene.GetObject("A/B"), nullptr), "BCDE");
  EXPECT_EQ(walk(scene.GetObject("A"), scene.GetObject("A")), "ABCD");
  EXPECT_EQ(walk(scene.GetObject("A/B"), scene.GetObject("A/B")), "BC");
}

TEST(Tree, MakesNamesUniqueWhenAsked) {
  SceneBuilder scene;
  for (int i = 0; i < 3; ++i)
    scene.Doc().InsertObject(BaseObject::Alloc(host::Ocube), nullptr, nullptr, true);
  EXPECT_EQ(Shape(scene), "Cube.2 Cube.1 Cube");
  BaseObject* one = scene.GetObject("Cube.1");
  BaseObject::Free(one);
  scene.Doc().InsertObject(BaseObject::Alloc(host::Ocube), scene.GetObject("Cube"), nullptr, true);
  EXPECT_EQ(Shape(scene), "Cube.2 Cube(Cube.1)") << "gaps are filled, names below count, too";
  scene.Doc().InsertObject(scene.GetObject("Cube.2"), nullptr, scene.GetObject("Cube"), true);
  EXPECT_EQ(Shape(scene), "Cube(Cube.1) Cube.2") << "its own name is in nobody's way";
  scene.Material("M");
  for (const bool checks : {true, false}) {
    auto* material = host::BaseMaterial::Alloc(host::Mmaterial);
    material->SetName("M");
    scene.Doc().InsertMaterial(material, nullptr, checks);
    EXPECT_EQ(material->GetName(), checks ? "M.1" : "M");
  }
}

TEST(Tree, WhereThereIsNoPlaceNothingMoves) {
  SceneBuilder scene;
  scene.Object("A").Object("B");
  BaseObject* a = scene.GetObject("A");
  BaseObject* loose = NewObject("loose");
  a->InsertAfter(nullptr);
  a->InsertAfter(loose);
  a->InsertUnder(nullptr);
  a->InsertUnderLast(nullptr);
  SceneBuilder other;
  other.Object("Far");
  scene.Doc().InsertObject(a, other.GetObject("Far"), nullptr);
  scene.Doc().AppendObject(a, other.GetObject("Far"));
  scene.Doc().InsertObject(nullptr, nullptr, nullptr, true);
  EXPECT_EQ(Shape(scene), "A B");
  EXPECT_EQ(a->GetTag(host::Tphong), nullptr);
  BaseObject::Free(loose);
  const host::AtomArray none;
  for (const host::LONG index : {-1, 0}) EXPECT_EQ(none.GetIndex(index), nullptr);
}

TEST(Tree, WorldFrameFollowsTheParents) {
  SceneBuilder scene;
  scene.Object("A/B").At("A/B", 1, 0, 0);
  host::Matrix quarter;  // a quarter turn about y: x becomes -z
  quarter.off = host::Vector(10, 0, 0);
  quarter.v1 = host::Vector(0, 0, -1);
  quarter.v3 = host::Vector(1, 0, 0);
  scene.GetObject("A")->SetMl(quarter);
  EXPECT_EQ(scene.GetObject("A/B")->GetMg().off, host::Vector(10, 0, -1));
  EXPECT_EQ(scene.GetObject("A/B")->GetMg().v1, quarter.v1);
}

TEST(Tree, CountsTheScene) {
  SceneBuilder scene;
  scene.Camera("A/Cam")
      .Object("Lamp", host::Olight)
      .Tag("Lamp", host::Tphong)
      .Material("M")
      .Layer("L/K")
      .Settings("S");
  scene.Bitmap(scene.GetMaterial("M"), "a.png", scene.Bitmap(scene.GetMaterial("M"), "b.png"));
  auto mesh = std::make_shared<engine::Mesh>();
  mesh->polygons.resize(7);
  scene.Object("Mesh", host::Opolygon);
  engine::SetMesh(*scene.Last(), mesh);
  const engine::SceneCounts counts = engine::CountScene(scene.Doc());
  EXPECT_EQ(counts.objects, 4u);
  EXPECT_EQ(counts.tags, 1u);
  EXPECT_EQ(counts.materials, 1u);
  EXPECT_EQ(counts.shaders, 2u);
  EXPECT_EQ(counts.layers, 2u);
  EXPECT_EQ(counts.renderSettings, 2u);
  EXPECT_EQ(counts.cameras, 1u);
  EXPECT_EQ(counts.lights, 1u);
  EXPECT_EQ(counts.polygons, 7u);
}

// Every element below the one made before, from the top down or from the bottom up; tags on each.
BaseObject* DeepChain(BaseDocument& doc, bool topDown) {
  BaseObject* end = nullptr;
  for (int i = 0; i < kDeep; ++i) {
    BaseObject* object = BaseObject::Alloc(host::Onull);
    object->MakeTag(host::Tphong);
    if (topDown) {
      doc.AppendObject(object, end);
    } else {
      if (end) end->InsertUnder(object);
    }
    end = object;
  }
  if (!topDown) doc.AppendObject(end);
  return end;
}

TEST(Tree, DeepChainsAreBuiltWalkedCopiedDumpedAndDestroyed) {
  for (const bool topDown : {true, false}) {
    SceneBuilder scene;
    BaseDocument& doc = scene.Doc();
    BaseObject* end = DeepChain(doc, topDown);
    EXPECT_EQ(engine::CountScene(doc).objects, static_cast<std::size_t>(kDeep));
    EXPECT_EQ(end->GetMg(), host::Matrix());
    const engine::OwnedDocument copy(
        static_cast<BaseDocument*>(doc.GetClone(host::COPY_DOCUMENT, nullptr)));
    EXPECT_EQ(engine::DumpDocument(*copy), engine::DumpDocument(doc));
    BaseObject* twin = static_cast<BaseObject*>(doc.GetFirstObject()->GetClone(0, nullptr));
    BaseObject::Free(twin);
    BaseObject* top = doc.GetFirstObject();
    doc.StartUndo();
    doc.AddUndo(host::UNDO_DELETE, top);
    BaseObject::Free(top);
    doc.EndUndo();
    EXPECT_EQ(engine::CountScene(doc).objects, 0u);
    doc.DoUndo();
    EXPECT_EQ(engine::CountScene(doc).tags, static_cast<std::size_t>(kDeep));
    doc.DoRedo();
  }
}

TEST(Tree, DeepShaderAndLayerChains) {
  SceneBuilder scene;
  scene.Material("M");
  host::BaseShader* shader = scene.Bitmap(scene.GetMaterial("M"), "a.png");
  host::LayerObject* layer = nullptr;
  for (int i = 0; i < kDeep; ++i) {
    shader = scene.Bitmap(nullptr, "b.png", shader);
    host::LayerObject* below = host::LayerObject::Alloc();
    scene.Doc().AppendLayer(below, layer);
    layer = below;
  }
  EXPECT_EQ(scene.Doc().GetAllTextures(nullptr).GetCount(), kDeep + 1);
  const engine::OwnedDocument copy(
      static_cast<BaseDocument*>(scene.Doc().GetClone(host::COPY_DOCUMENT, nullptr)));
  EXPECT_EQ(engine::CountScene(*copy).layers, static_cast<std::size_t>(kDeep));
}

// Objects and where they hang, as plain lists.
class TreeModel {
 public:
  void Add(BaseObject* object) { below_[nullptr].push_back(object); }
  const std::vector<BaseObject*>& Below(BaseObject* parent) { return below_[parent]; }

  // The expected effect of InsertObject.
  void Move(BaseObject* moved, BaseObject* parent, BaseObject* pred) {
    for (BaseObject* above = parent; above; above = parentOf_[above]) {
      if (above == moved) return;
    }
    if (pred == moved) return;
    auto& from = below_[parentOf_[moved]];
    from.erase(std::find(from.begin(), from.end(), moved));
    auto& to = below_[parent];
    to.insert(pred ? std::find(to.begin(), to.end(), pred) + 1 : to.begin(), moved);
    parentOf_[moved] = parent;
  }

  bool Agrees(const BaseDocument& doc) const {
    return std::all_of(below_.begin(), below_.end(), [&](const auto& entry) {
      const BaseObject* object = entry.first ? entry.first->GetDown() : doc.GetFirstObject();
      for (const BaseObject* child : entry.second) {
        if (object != child) return false;
        object = object->GetNext();
      }
      return object == nullptr;
    });
  }

 private:
  std::map<BaseObject*, std::vector<BaseObject*>> below_;
  std::map<BaseObject*, BaseObject*> parentOf_;
};

TEST(Tree, RandomMovesAgreeWithAModel) {
  SceneBuilder scene;
  TreeModel model;
  std::vector<BaseObject*> objects;
  for (int i = 0; i < 40; ++i) {
    objects.push_back(NewObject(std::to_string(i).c_str()));
    scene.Doc().AppendObject(objects.back());
    model.Add(objects.back());
  }
  unsigned seed = 7;
  const auto random = [&](std::size_t bound) {
    return (seed = seed * 1664525u + 1013904223u) / 65536u % bound;
  };
  for (int step = 0; step < 3000; ++step) {
    BaseObject* moved = objects[random(objects.size())];
    BaseObject* parent = random(4) == 0 ? nullptr : objects[random(objects.size())];
    const std::vector<BaseObject*>& siblings = model.Below(parent);
    BaseObject* pred =
        siblings.empty() || random(3) == 0 ? nullptr : siblings[random(siblings.size())];
    scene.Doc().InsertObject(moved, parent, pred);
    model.Move(moved, parent, pred);
    ASSERT_TRUE(model.Agrees(scene.Doc())) << step;
  }
}

}  // namespace
