// Moving objects in the tree: order, refusals, frames in the world.
#include "engine/undo/MoveObjects.h"

#include <gtest/gtest.h>

#include "engine/scene/Nodes.h"
#include "engine/undo/Undo.h"
#include "tests/support/SceneBuilder.h"

namespace {

using host::BaseObject;
using support::SceneBuilder;

std::string Shape(const host::BaseDocument& doc) {
  std::string text;
  for (const BaseObject* object = doc.GetFirstObject(); object; object = engine::NextInTree(object)) {
    int depth = 0;
    for (const BaseObject* up = object->GetUp(); up; up = up->GetUp()) ++depth;
    text += std::string(static_cast<std::size_t>(depth), '>') + object->GetName().ToUtf8() + " ";
  }
  return text;
}

struct Letters : SceneBuilder {
  Letters() { Object("A/B").Object("A/C").Object("D").Object("E/F"); }
};

struct Case {
  std::vector<std::string> objects;
  std::string parent;
  std::string pred;
  std::string expected;  // empty: refused
};

TEST(MoveObjects, KeepsTheOrderGivenAndMakesNoCircle) {
  const Case cases[] = {
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
  for (const Case& c : cases) {
    Letters scene;
    const std::string before = Shape(scene.Doc());
    const auto named = [&](const std::string& path) { return path.empty() ? nullptr : scene.GetObject(path); };
    std::vector<BaseObject*> objects;
    for (const std::string& path : c.objects) objects.push_back(named(path));
    EXPECT_EQ(engine::MoveObjects(scene.Doc(), objects, named(c.parent), named(c.pred)), !c.expected.empty());
    EXPECT_EQ(Shape(scene.Doc()), c.expected.empty() ? before : c.expected);
    EXPECT_EQ(engine::UndoName(scene.Doc()), c.expected.empty() ? "" : "Move");
    scene.Doc().DoUndo();
    EXPECT_EQ(Shape(scene.Doc()), before);
  }
  Letters scene;
  Letters other;
  EXPECT_FALSE(engine::MoveObjects(scene.Doc(), {other.GetObject("D")}, nullptr, nullptr));
  EXPECT_FALSE(engine::MoveObjects(scene.Doc(), {scene.GetObject("D")}, other.GetObject("A"), nullptr));
  EXPECT_FALSE(engine::MoveObjects(scene.Doc(), {nullptr}, nullptr, nullptr));
}

TEST(MoveObjects, NothingMovesInTheWorld) {
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
    EXPECT_TRUE(engine::MoveObjects(scene.Doc(), {object}, parent ? scene.GetObject(parent) : nullptr, nullptr));
    const host::Matrix after = object->GetMg();
    for (const auto& [a, b] : {std::pair{before.off, after.off}, {before.v1, after.v1}, {before.v2, after.v2}}) {
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
  EXPECT_TRUE(engine::MoveObjects(scene.Doc(), {scene.GetObject("D")}, scene.GetObject("A"), nullptr));
  EXPECT_EQ(scene.GetObject("A/D")->GetMl().off.x, 7);
}

TEST(MoveObjects, KeepsTheSelectionAndTheActiveOne) {
  Letters scene;
  scene.Select("A/B").Select("D");
  scene.Doc().SetActiveObject(scene.GetObject("A/B"), host::SELECTION_ADD);
  EXPECT_TRUE(engine::MoveObjects(scene.Doc(), {scene.GetObject("A/B"), scene.GetObject("D")}, scene.GetObject("E"), nullptr));
  EXPECT_EQ(scene.Doc().GetActiveObject(), scene.GetObject("E/B"));
  EXPECT_TRUE(scene.GetObject("E/D")->GetBit(host::BIT_ACTIVE));
}

TEST(MoveObjects, ManyOutOfAndIntoADeepChain) {
  SceneBuilder scene;
  host::BaseDocument& doc = scene.Doc();
  std::vector<BaseObject*> leaves;
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
  EXPECT_TRUE(engine::MoveObjects(doc, leaves, nullptr, nullptr));
  EXPECT_EQ(doc.GetFirstObject(), leaves.front());
  EXPECT_TRUE(engine::MoveObjects(doc, leaves, above, nullptr));
  EXPECT_EQ(leaves.back()->GetUp(), above);
  EXPECT_TRUE(doc.DoUndo());
  EXPECT_TRUE(doc.DoUndo());
  EXPECT_EQ(leaves.back()->GetUp(), above);
  EXPECT_NE(leaves.front()->GetUp(), above);
}

}  // namespace
