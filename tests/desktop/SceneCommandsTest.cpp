// What a person does to a scene: each one undo step, in the order of the tree, with names of their own for copies.
#include "program/desktop/SceneCommands.h"

#include <gtest/gtest.h>

#include "engine/scene/SceneDump.h"
#include "engine/undo/Undo.h"
#include "tests/support/SceneBuilder.h"

namespace {

using desktop::Switch;
using host::BaseObject;
using tests::SceneBuilder;

struct Scene : SceneBuilder {
  Scene() {
    Cube("A").Object("A/In").Camera("B").Object("C/Deep/Deeper").Object("D").Material("Red").Material("Blue");
    Texture("A", "Red").Tag("A/In", host::Tphong).Tag("B", host::Tcompositing);
  }
  std::string Names(bool selected = false) const {
    std::string names;
    for (const BaseObject* object = Doc().GetFirstObject(); object; object = engine::NextInTree(object)) {
      if (!selected || object->GetBit(host::BIT_ACTIVE)) names += object->GetName().ToUtf8() + " ";
    }
    return names;
  }
  void Choose(std::initializer_list<const char*> paths) {
    desktop::SelectNone(Doc());
    for (const char* path : paths) Doc().SetActiveObject(GetObject(path), host::SELECTION_ADD);
  }
  host::LONG MaterialTags(const char* path, const char* material) {
    host::LONG count = 0;
    for (host::BaseTag* tag = GetObject(path)->GetFirstTag(); tag; tag = tag->GetNext()) {
      auto* texture = engine::AsTextureTag(tag);
      if (texture && texture->GetMaterial() == GetMaterial(material)) ++count;
    }
    return count;
  }
};

TEST(SceneCommands, Selecting) {
  Scene scene;
  desktop::SelectAll(scene.Doc());
  EXPECT_EQ(scene.Names(true), scene.Names());
  EXPECT_EQ(desktop::TopmostSelected(scene.Doc()).size(), 4u);
  scene.Choose({"D", "C/Deep/Deeper", "C/Deep"});
  const std::vector<BaseObject*> topmost = {scene.GetObject("C/Deep"), scene.GetObject("D")};
  EXPECT_EQ(desktop::TopmostSelected(scene.Doc()), topmost);
  EXPECT_EQ(desktop::SelectedObjects(scene.Doc()).size(), 3u);
  host::BaseTag* tag = scene.GetTag("B", host::Tcompositing);
  desktop::SelectTag(*tag, true);
  EXPECT_EQ(engine::ActiveTagOf(scene.Doc()), tag);
  EXPECT_EQ(scene.Names(true), "Deep Deeper D ");
  desktop::SelectTag(*tag, true);
  EXPECT_EQ(engine::ActiveTagOf(scene.Doc()), nullptr);
  desktop::SelectTag(*tag, false);
  EXPECT_EQ(scene.Names(true), "");
  desktop::SelectNone(scene.Doc());
  EXPECT_EQ(engine::ActiveTagOf(scene.Doc()), nullptr);
}

TEST(SceneCommands, DeletesObjectsAndTagsInOneStep) {
  Scene scene;
  scene.Choose({"A", "A/In", "C/Deep"});
  for (const auto& [path, type] : {std::pair{"A/In", host::Tphong}, {"B", host::Tcompositing}}) {
    desktop::SelectTag(*scene.GetTag(path, type), true);
  }
  const std::string before = engine::DumpDocument(scene.Doc());
  desktop::DeleteSelected(scene.Doc());
  EXPECT_EQ(scene.Names(), "B C D ");
  EXPECT_EQ(scene.GetObject("B")->GetFirstTag(), nullptr);
  EXPECT_EQ(engine::UndoName(scene.Doc()), "Delete");
  EXPECT_TRUE(scene.Doc().DoUndo());
  EXPECT_EQ(engine::DumpDifference(before, engine::DumpDocument(scene.Doc())), std::vector<std::string>());
  desktop::SelectNone(scene.Doc());
  desktop::DeleteSelected(scene.Doc());
  EXPECT_FALSE(engine::CanUndo(scene.Doc()));
}

TEST(SceneCommands, DuplicatesDeepAndMovesTheSelectionOn) {
  Scene scene;
  scene.GetTag("A", host::Ttexture)->GetDataInstance()->SetLink(1, scene.GetObject("D"));
  scene.GetTag("A", host::Ttexture)->GetDataInstance()->SetLink(2, scene.GetObject("B"));
  scene.Object("A.1");
  scene.Choose({"A", "A/In", "C/Deep", "D"});
  desktop::DuplicateSelected(scene.Doc());
  EXPECT_EQ(scene.Names(), "A In A.2 In B C Deep Deeper Deep.1 Deeper D D.1 A.1 ");
  EXPECT_EQ(scene.Names(true), "A.2 Deep.1 D.1 ");
  EXPECT_EQ(scene.GetObject("C/Deep.1")->GetUp(), scene.GetObject("C"));
  EXPECT_EQ(scene.MaterialTags("A.2", "Red"), 1);
  EXPECT_NE(scene.GetTag("A.2/In", host::Tphong), nullptr);
  const host::BaseContainer& data = *scene.GetTag("A.2", host::Ttexture)->GetDataInstance();
  EXPECT_EQ(data.GetLink(1, &scene.Doc()), scene.GetObject("D.1"));
  EXPECT_EQ(data.GetLink(2, &scene.Doc()), scene.GetObject("B"));
  desktop::DuplicateSelected(scene.Doc());
  EXPECT_EQ(scene.Names(true), "A.2.1 Deep.1.1 D.1.1 ");
  EXPECT_EQ(engine::UndoName(scene.Doc()), "Duplicate");
  EXPECT_TRUE(scene.Doc().DoUndo());
  EXPECT_TRUE(scene.Doc().DoUndo());
  EXPECT_EQ(scene.Names(), "A In B C Deep Deeper D A.1 ");
}

TEST(SceneCommands, ThousandsOfOneNameGetNumbers) {
  SceneBuilder scene;
  for (int i = 0; i < 20000; ++i) scene.Doc().AppendObject(BaseObject::Alloc(host::Onull));
  desktop::SelectAll(scene.Doc());
  const std::string name = scene.Doc().GetFirstObject()->GetName().ToUtf8();
  desktop::DuplicateSelected(scene.Doc());
  EXPECT_EQ(desktop::SelectedObjects(scene.Doc()).size(), 20000u);
  EXPECT_EQ(scene.Doc().GetActiveObject()->GetName().ToUtf8(), name + ".20000");
}

TEST(SceneCommands, GivesMaterialsByTheFirstTextureTag) {
  Scene scene;
  const std::vector<BaseObject*> both = {scene.GetObject("A"), scene.GetObject("B")};
  EXPECT_TRUE(desktop::AssignMaterial(scene.Doc(), engine::IdOf(*scene.GetMaterial("Blue")), both));
  EXPECT_EQ(scene.MaterialTags("A", "Blue") + scene.MaterialTags("B", "Blue"), 2);
  EXPECT_EQ(scene.MaterialTags("A", "Red"), 0);
  EXPECT_EQ(engine::UndoName(scene.Doc()), "Assign Material");
  EXPECT_TRUE(scene.Doc().DoUndo());
  EXPECT_EQ(scene.MaterialTags("A", "Red"), 1);
  EXPECT_EQ(scene.GetObject("B")->GetTag(host::Ttexture), nullptr);
  EXPECT_FALSE(desktop::AssignMaterial(scene.Doc(), engine::IdOf(*scene.GetObject("A")), both));
  EXPECT_TRUE(desktop::AssignMaterial(scene.Doc(), engine::IdOf(*scene.GetMaterial("Red")), {scene.GetObject("A")}));
  EXPECT_FALSE(engine::CanUndo(scene.Doc()));
}

TEST(SceneCommands, SetsSwitches) {
  Scene scene;
  const std::vector<BaseObject*> both = {scene.GetObject("A"), scene.GetObject("B")};
  const std::string before = engine::DumpDocument(scene.Doc());
  for (const auto& [which, value, name] : {std::tuple{Switch::kEditor, host::MODE_OFF, "Visibility"},
                                           {Switch::kRender, host::MODE_ON, "Visibility"},
                                           {Switch::kGenerator, 0, "Generator"}}) {
    desktop::SetSwitch(scene.Doc(), both, which, value);
    EXPECT_EQ(desktop::SwitchOf(*both[1], which), value);
    EXPECT_EQ(engine::UndoName(scene.Doc()), name);
    desktop::SetSwitch(scene.Doc(), both, which, value);
    EXPECT_TRUE(scene.Doc().DoUndo());
    EXPECT_EQ(engine::DumpDifference(before, engine::DumpDocument(scene.Doc())), std::vector<std::string>());
  }
}

}  // namespace
