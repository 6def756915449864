// Moving objects, layers and render settings in their trees: order, refusals, frames in the world.
#include "engine/undo/MoveNodes.h"

#include <gtest/gtest.h>

#include "engine/scene/TreeWalk.h"
#include "engine/undo/Undo.h"
#include "tests/support/SceneBuilder.h"

namespace {

using host::BaseObject;
using tests::SceneBuilder;

std::string Shape(const host::GeListNode* first) {
  std::string text;
  for (const host::GeListNode* node = first; node; node = engine::NextInTree(node)) {
    int depth = 0;
    for (const host::GeListNode* up = node->GetUp(); up; up = up->GetUp()) ++depth;
    text += std::string(static_cast<std::size_t>(depth), '>') +
            static_cast<const host::BaseList2D*>(node)->GetName().ToUtf8() + " ";
  }
  return text;
}
std::string Shape(const host::BaseDocument& doc) { return Shape(doc.GetFirstObject()); }

struct Letters : SceneBuilder {
  Letters() { Object("A/B").Object("A/C").Object("D").Object("E/F"); }
};

struct Move {
  std::vector<std::string> objects;
  std::string parent;
  std::string pred;
  std::string expected;  // empty: refused
};

TEST(MoveNodes, KeepsTheOrderGivenAndMakesNoCircle) {
  const Move cases[] = {
      {{"D", "A/B"}, "", "E", "A >C E >F D B "},
      {{"E", "D"}, "A", "A/B", "A >B >E >>F >D >C "},
      {{"D"}, "E/F", "", "A >B >C E >F >>D "},
      {{"A/B", "A"}, "E", "", "D E >B >A >>C >F "},
      {{"A/B", "A/C"}, "A", "A/B", "A >B >C D E >F "},
      {{"A/C", "A/B"}, "A", "A/B", "A >C >B D E >F "},
      {{"D", "A"}, "", "D", "D A >B >C E >F "},
      {{"D"}, "A", "E", "A >D >B >C E >F "},
      {{"A"}, "A", "", ""},
      {{"D", "A"}, "A/C", "", ""},
      {{"D", "D"}, "A", "", ""},
      {{}, "A", "", ""},
  };
  for (const Move& c : cases) {
    Letters scene;
    const std::string before = Shape(scene.Doc());
    const auto named = [&](const std::string& path) {
      return path.empty() ? nullptr : scene.GetObject(path);
    };
    std::vector<host::BaseList2D*> objects;
    for (const std::string& path : c.objects) objects.push_back(named(path));
    EXPECT_EQ(engine::MoveNodes(scene.Doc(), objects, named(c.parent), named(c.pred)),
              !c.expected.empty());
    EXPECT_EQ(Shape(scene.Doc()), c.expected.empty() ? before : c.expected);
    EXPECT_EQ(engine::UndoName(scene.Doc()), Shape(scene.Doc()) == before ? "" : "Move");
    scene.Doc().DoUndo();
    EXPECT_EQ(Shape(scene.Doc()), before);
  }
  Letters scene;
  Letters other;
  EXPECT_FALSE(engine::MoveNodes(scene.Doc(), {other.GetObject("D")}, nullptr, nullptr));
  EXPECT_FALSE(
      engine::MoveNodes(scene.Doc(), {scene.GetObject("D")}, other.GetObject("A"), nullptr));
  EXPECT_FALSE(engine::MoveNodes(scene.Doc(), {nullptr}, nullptr, nullptr));
}

TEST(MoveNodes, MovesLayersAndKeepsWhatIsOnThem) {
  SceneBuilder scene;
  scene.Layer("A").Layer("A/B").Layer("C").Object("Cube").OnLayer("Cube", "A/B");
  const auto shape = [&] { return Shape(scene.Doc().GetLayerObjectRoot()->GetFirst()); };
  host::LayerObject* b = scene.GetLayer("A/B");
  host::LayerObject* c = scene.GetLayer("C");
  EXPECT_FALSE(engine::MoveNodes(scene.Doc(), {c, scene.GetObject("Cube")}, nullptr, nullptr))
      << "of two kinds";
  EXPECT_FALSE(engine::MoveNodes(scene.Doc(), {b}, scene.GetObject("Cube"), nullptr));
  EXPECT_FALSE(engine::MoveNodes(scene.Doc(), {b->GetUp()}, b, nullptr));
  EXPECT_TRUE(engine::MoveNodes(scene.Doc(), {b}, nullptr, c));
  EXPECT_EQ(shape(), "A C B ");
  EXPECT_TRUE(engine::MoveNodes(scene.Doc(), {c, scene.GetLayer("A")}, b, nullptr));
  EXPECT_EQ(shape(), "B >C >A ");
  EXPECT_EQ(scene.GetObject("Cube")->GetLayerObject(&scene.Doc()), b);
  for (const char* expected : {"A C B ", "A >B C "}) {
    EXPECT_TRUE(scene.Doc().DoUndo());
    EXPECT_EQ(shape(), expected);
  }
  EXPECT_TRUE(scene.Doc().DoRedo());
  EXPECT_EQ(shape(), "A C B ");
}

TEST(MoveNodes, MovesRenderSettingsAndKeepsTheActiveOnes) {
  SceneBuilder scene;
  host::BaseDocument& doc = scene.Doc();
  const auto shape = [&] { return Shape(doc.GetFirstRenderData()); };
  host::RenderData* a = doc.GetFirstRenderData();
  a->SetName("A");
  EXPECT_TRUE(engine::MoveNodes(doc, {a}, nullptr, nullptr));
  EXPECT_EQ(shape(), "A ") << "the only ones are not taken out, which would make others";
  host::RenderData* b = host::RenderData::Alloc();
  b->SetName("B");
  doc.InsertRenderData(b, nullptr, a);
  doc.SetActiveRenderData(b);
  EXPECT_TRUE(engine::MoveNodes(doc, {b}, a, nullptr));
  EXPECT_TRUE(engine::MoveNodes(doc, {b, a}, nullptr, nullptr));
  EXPECT_EQ(shape(), "B A ");
  EXPECT_EQ(doc.GetActiveRenderData(), b);
  for (const char* expected : {"A >B ", "A B "}) {
    EXPECT_TRUE(doc.DoUndo());
    EXPECT_EQ(shape(), expected);
    EXPECT_EQ(doc.GetActiveRenderData(), b);
  }
  while (doc.DoRedo()) continue;
  EXPECT_EQ(shape(), "B A ");
  EXPECT_EQ(doc.GetActiveRenderData(), b);
}

TEST(MoveNodes, NothingMovesInTheWorld) {
  Letters scene;
  host::Matrix turned;
  turned.v1 = {0, 2, 0};
  turned.v2 = {-2, 0, 0};
  turned.v3 = {0, 0, 2};
  turned.off = {10, 0, 0};
  scene.GetObject("A")->SetMl(turned);
  scene.At("A/B", 1, 2, 3).At("E", 5, 5, 5);
  const auto moves = [&](const char* path, const char* parent) {
    BaseObject* object = scene.GetObject(path);
    const host::Matrix before = object->GetMg();
    EXPECT_TRUE(engine::MoveNodes(scene.Doc(), {object}, parent ? scene.GetObject(parent) : nullptr,
                                  nullptr));
    const host::Matrix after = object->GetMg();
    for (const auto& [a, b] :
         {std::pair{before.off, after.off}, {before.v1, after.v1}, {before.v2, after.v2}}) {
      EXPECT_NEAR(a.x, b.x, 1e-9);
      EXPECT_NEAR(a.y, b.y, 1e-9);
      EXPECT_NEAR(a.z, b.z, 1e-9);
    }
  };
  moves("A/B", "E");
  moves("D", "A");
  moves("A/D", nullptr);
  // Below one that is flat no frame can do that: the object keeps its own.
  turned.v3 = {};
  scene.GetObject("A")->SetMl(turned);
  scene.At("D", 7, 8, 9);
  EXPECT_TRUE(
      engine::MoveNodes(scene.Doc(), {scene.GetObject("D")}, scene.GetObject("A"), nullptr));
  EXPECT_EQ(scene.GetObject("A/D")->GetMl().off.x, 7);
}

TEST(MoveNodes, KeepsTheSelectionAndTheActiveOne) {
  Letters scene;
  scene.Select("A/B").Select("D");
  scene.Doc().SetActiveObject(scene.GetObject("A/B"), host::SELECTION_ADD);
  EXPECT_TRUE(engine::MoveNodes(scene.Doc(), {scene.GetObject("A/B"), scene.GetObject("D")},
                                scene.GetObject("E"), nullptr));
  EXPECT_EQ(scene.Doc().GetActiveObject(), scene.GetObject("E/B"));
  EXPECT_TRUE(scene.GetObject("E/D")->GetBit(host::BIT_ACTIVE));
}

TEST(MoveNodes, ManyOutOfAndIntoADeepChain) {
  SceneBuilder scene;
  host::BaseDocument& doc = scene.Doc();
  std::vector<host::BaseList2D*> leaves;
  BaseObject* above = nullptr;
  for (int i = 0; i < 40000; ++i) {
    BaseObject* link = BaseObject::Alloc(host::Onull);
    BaseObject* leaf = BaseObject::Alloc(host::Onull);
    doc.AppendObject(link, above);
    doc.AppendObject(leaf, link);
    leaf->InsertUnder(link);
    above = link;
    leaves.push_back(leaf);
  }
  EXPECT_TRUE(engine::MoveNodes(doc, leaves, nullptr, nullptr));
  EXPECT_EQ(doc.GetFirstObject(), leaves.front());
  EXPECT_TRUE(engine::MoveNodes(doc, leaves, above, nullptr));
  EXPECT_EQ(leaves.back()->GetUp(), above);
  EXPECT_TRUE(doc.DoUndo());
  EXPECT_TRUE(doc.DoUndo());
  EXPECT_EQ(leaves.back()->GetUp(), above);
  EXPECT_NE(leaves.front()->GetUp(), above);
}

}  // namespace
