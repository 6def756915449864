// Elements that were named: renamed, removed and put in their places, each in one undo step.
#include "engine/editing/ElementCommands.h"

#include <gtest/gtest.h>

#include "engine/scene/NodeTypes.h"
#include "engine/scene/SceneDump.h"
#include "engine/scene/TreeWalk.h"
#include "engine/scene/Vectors.h"
#include "engine/undo/Undo.h"
#include "tests/support/SceneBuilder.h"

namespace {

using engine::Elements;
using engine::Placement;
using host::Vector;
using tests::SceneBuilder;

constexpr double kQuarterTurn = 1.57079632679489661923;

struct NamedScene : SceneBuilder {
  NamedScene() {
    Cube("A").Object("A/In").Camera("B").Object("A.1").Material("Red").Material("Blue");
    Texture("A", "Red");
  }
  std::string Names() const {
    std::string names;
    for (const host::BaseObject* object = Doc().GetFirstObject(); object;
         object = engine::NextInTree(object))
      names += object->GetName().ToUtf8() + " ";
    return names;
  }
  void Run(engine::StepwiseEdit edit) { engine::RunWhole(Doc(), std::move(edit)); }
};

TEST(ElementCommands, RenamesOneAsTypedAndSeveralWithNumbers) {
  NamedScene scene;
  const std::string before = engine::DumpDocument(scene.Doc());
  scene.Run(engine::RenameElements(scene.Doc(), {scene.GetObject("B")}, "A"));
  EXPECT_EQ(scene.Names(), "A In A A.1 ") << "a name that others have is allowed";
  EXPECT_EQ(engine::UndoName(scene.Doc()), "Rename");
  EXPECT_TRUE(scene.Doc().DoUndo());
  const Elements several{scene.GetObject("B"), scene.GetObject("A/In"), scene.GetObject("B")};
  scene.Run(engine::RenameElements(scene.Doc(), several, "A"));
  EXPECT_EQ(scene.Names(), "A A.3 A.2 A.1 ") << "given twice it is renamed once";
  EXPECT_TRUE(scene.Doc().DoUndo());
  EXPECT_EQ(engine::DumpDocument(scene.Doc()), before);
  EXPECT_EQ(engine::RenameElements(scene.Doc(), {scene.GetObject("B")}, "B").steps, 0u);
}

TEST(ElementCommands, RemovesEachWithAllBelowIt) {
  NamedScene scene;
  const std::string before = engine::DumpDocument(scene.Doc());
  const Elements all{scene.GetObject("A/In"), scene.GetObject("A"), scene.GetObject("A"),
                     scene.GetMaterial("Red"), scene.Doc().GetActiveRenderData()};
  scene.Run(engine::RemoveElements(scene.Doc(), all));
  EXPECT_EQ(scene.Names(), "B A.1 ");
  EXPECT_EQ(scene.Doc().GetFirstMaterial()->GetName().ToUtf8(), "Blue");
  EXPECT_NE(scene.Doc().GetActiveRenderData(), nullptr);
  EXPECT_TRUE(scene.Doc().DoUndo());
  EXPECT_EQ(engine::DumpDifference(before, engine::DumpDocument(scene.Doc())),
            std::vector<std::string>());
}

TEST(ElementCommands, PlacesAreThoseOfTheSceneWhateverIsAbove) {
  NamedScene scene;
  host::BaseObject& inner = *scene.GetObject("A/In");
  host::Matrix outer;
  outer.off = {100, 0, 0};
  outer.v1 = {0, 0, 2};
  outer.v2 = {0, 2, 0};
  outer.v3 = {-2, 0, 0};
  scene.GetObject("A")->SetMl(outer);
  const struct {
    Placement placement;
    Vector off;
    Vector facing;
  } rows[] = {
      {{.at = Vector(1, 2, 3), .target = {}, .angles = {}, .scale = {}}, {1, 2, 3}, {-2, 0, 0}},
      {{.at = {}, .target = Vector(1, 2, 50), .angles = {}, .scale = {}}, {1, 2, 3}, {0, 0, 2}},
      {{.at = Vector(0, 0, 0), .target = {}, .angles = {}, .scale = Vector(1, 1, 1)},
       {0, 0, 0},
       {0, 0, 1}},
      {{.at = {}, .target = {}, .angles = Vector(0, kQuarterTurn, 0), .scale = {}},
       {0, 0, 0},
       {1, 0, 0}},
  };
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    auto edit = engine::PlaceObjects(scene.Doc(), {&inner}, rows[i].placement);
    ASSERT_TRUE(edit);
    scene.Run(edit.Take());
    const host::Matrix frame = inner.GetMg();
    EXPECT_LT(engine::LengthOf(engine::Sum(frame.off, engine::Scaled(rows[i].off, -1))), 1e-9) << i;
    EXPECT_LT(engine::LengthOf(engine::Sum(frame.v3, engine::Scaled(rows[i].facing, -1))), 1e-9)
        << i;
    EXPECT_EQ(engine::PlaceObjects(scene.Doc(), {&inner}, rows[i].placement).Value().steps, 0u)
        << i;
  }
  outer.v2 = {};
  scene.GetObject("A")->SetMl(outer);
  EXPECT_FALSE(engine::PlaceObjects(scene.Doc(), {&inner}, rows[0].placement));
}

TEST(ElementCommands, AddsBelowAnObjectAtAPlaceOfTheScene) {
  NamedScene scene;
  host::Matrix frame;
  frame.off = {5, 0, 0};
  scene.GetObject("A")->SetMl(frame);
  frame.off = {7, 1, 0};
  const host::BaseObject* light =
      engine::AddObject(scene.Doc(), host::Olight, "Key", frame, scene.GetObject("A"));
  EXPECT_EQ(scene.Names(), "A In Key B A.1 ");
  EXPECT_EQ(light->GetMg().off, Vector(7, 1, 0));
  EXPECT_EQ(light->GetMl().off, Vector(2, 1, 0));
  EXPECT_TRUE(scene.Doc().DoUndo());
  EXPECT_EQ(scene.Names(), "A In B A.1 ");
}

}  // namespace
