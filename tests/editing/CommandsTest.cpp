// Edits of a scene: each one undo step, in the order of the tree, copies with names of their own.
#include <gtest/gtest.h>

#include <functional>
#include <set>

#include "engine/editing/MaterialCommands.h"
#include "engine/editing/ObjectCommands.h"
#include "engine/editing/Selection.h"
#include "engine/scene/DocumentState.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/SceneDump.h"
#include "engine/scene/TreeWalk.h"
#include "engine/undo/Undo.h"
#include "tests/support/SceneBuilder.h"

namespace {

using engine::RunWhole;
using engine::Switch;
using host::BaseObject;
using tests::SceneBuilder;

struct Scene : SceneBuilder {
  Scene() {
    Cube("A")
        .Object("A/In")
        .Camera("B")
        .Object("C/Deep/Deeper")
        .Object("D")
        .Material("Red")
        .Material("Blue");
    Texture("A", "Red").Tag("A/In", host::Tphong).Tag("B", host::Tcompositing);
  }
  std::string Names(bool selected = false) const {
    std::string names;
    for (const BaseObject* object = Doc().GetFirstObject(); object;
         object = engine::NextInTree(object)) {
      if (!selected || object->GetBit(host::BIT_ACTIVE)) names += object->GetName().ToUtf8() + " ";
    }
    return names;
  }
  void Choose(std::initializer_list<const char*> paths) {
    engine::SelectNone(Doc());
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

TEST(Commands, Selecting) {
  Scene scene;
  engine::SelectAll(scene.Doc());
  EXPECT_EQ(scene.Names(true), scene.Names());
  EXPECT_EQ(engine::TopmostSelected(scene.Doc()).size(), 4u);
  scene.Choose({"D", "C/Deep/Deeper", "C/Deep"});
  const std::vector<BaseObject*> topmost = {scene.GetObject("C/Deep"), scene.GetObject("D")};
  EXPECT_EQ(engine::TopmostSelected(scene.Doc()), topmost);
  EXPECT_EQ(engine::SelectedObjects(scene.Doc()).size(), 3u);
  host::BaseTag* tag = scene.GetTag("B", host::Tcompositing);
  engine::SelectTag(*tag, true);
  EXPECT_EQ(engine::ActiveTagOf(scene.Doc()), tag);
  EXPECT_EQ(scene.Names(true), "Deep Deeper D ");
  engine::SelectTag(*tag, true);
  EXPECT_EQ(engine::ActiveTagOf(scene.Doc()), nullptr);
  engine::SelectTag(*tag, false);
  EXPECT_EQ(scene.Names(true), "");
  engine::SelectNone(scene.Doc());
  EXPECT_EQ(engine::ActiveTagOf(scene.Doc()), nullptr);
}

TEST(Commands, DeletesObjectsAndTagsInOneStep) {
  Scene scene;
  scene.Choose({"A", "A/In", "C/Deep"});
  for (const auto& [path, type] : {std::pair{"A/In", host::Tphong}, {"B", host::Tcompositing}}) {
    engine::SelectTag(*scene.GetTag(path, type), true);
  }
  const std::string before = engine::DumpDocument(scene.Doc());
  RunWhole(scene.Doc(), engine::DeleteSelected(scene.Doc()));
  EXPECT_EQ(scene.Names(), "B C D ");
  EXPECT_EQ(scene.GetObject("B")->GetFirstTag(), nullptr);
  EXPECT_EQ(engine::UndoName(scene.Doc()), "Delete");
  EXPECT_TRUE(scene.Doc().DoUndo());
  EXPECT_EQ(engine::DumpDifference(before, engine::DumpDocument(scene.Doc())),
            std::vector<std::string>());
  engine::SelectNone(scene.Doc());
  RunWhole(scene.Doc(), engine::DeleteSelected(scene.Doc()));
  EXPECT_FALSE(engine::CanUndo(scene.Doc()));
}

TEST(Commands, DuplicatesDeepAndMovesTheSelectionOn) {
  Scene scene;
  scene.GetTag("A", host::Ttexture)->GetDataInstance()->SetLink(1, scene.GetObject("D"));
  scene.GetTag("A", host::Ttexture)->GetDataInstance()->SetLink(2, scene.GetObject("B"));
  scene.Object("A.1");
  scene.Choose({"A", "A/In", "C/Deep", "D"});
  RunWhole(scene.Doc(), engine::DuplicateSelected(scene.Doc()));
  EXPECT_EQ(scene.Names(), "A In A.2 In B C Deep Deeper Deep.1 Deeper D D.1 A.1 ");
  EXPECT_EQ(scene.Names(true), "A.2 Deep.1 D.1 ");
  EXPECT_EQ(scene.GetObject("C/Deep.1")->GetUp(), scene.GetObject("C"));
  EXPECT_EQ(scene.MaterialTags("A.2", "Red"), 1);
  EXPECT_NE(scene.GetTag("A.2/In", host::Tphong), nullptr);
  const host::BaseContainer& data = *scene.GetTag("A.2", host::Ttexture)->GetDataInstance();
  EXPECT_EQ(data.GetLink(1, &scene.Doc()), scene.GetObject("D.1"));
  EXPECT_EQ(data.GetLink(2, &scene.Doc()), scene.GetObject("B"));
  RunWhole(scene.Doc(), engine::DuplicateSelected(scene.Doc()));
  EXPECT_EQ(scene.Names(true), "A.2.1 Deep.1.1 D.1.1 ");
  EXPECT_EQ(engine::UndoName(scene.Doc()), "Duplicate");
  EXPECT_TRUE(scene.Doc().DoUndo());
  EXPECT_TRUE(scene.Doc().DoUndo());
  EXPECT_EQ(scene.Names(), "A In B C Deep Deeper D A.1 ");
}

TEST(Commands, ThousandsOfOneNameGetNumbers) {
  SceneBuilder scene;
  for (int i = 0; i < 20000; ++i) scene.Doc().AppendObject(BaseObject::Alloc(host::Onull));
  engine::SelectAll(scene.Doc());
  const std::string name = scene.Doc().GetFirstObject()->GetName().ToUtf8();
  RunWhole(scene.Doc(), engine::DuplicateSelected(scene.Doc()));
  EXPECT_EQ(engine::SelectedObjects(scene.Doc()).size(), 20000u);
  EXPECT_EQ(scene.Doc().GetActiveObject()->GetName().ToUtf8(), name + ".20000");
}

TEST(Commands, CopiesOfManyMaterialsGetNamesOfTheirOwn) {
  tests::SceneBuilder scene;
  for (int i = 0; i < 3000; ++i) scene.Material("Same");
  engine::MaterialList all;
  for (host::BaseMaterial* m = scene.Doc().GetFirstMaterial(); m; m = m->GetNext())
    all.push_back(m);
  engine::DuplicateMaterials(scene.Doc(), all);
  std::set<std::string> names;
  for (host::BaseMaterial* m = scene.Doc().GetFirstMaterial(); m; m = m->GetNext())
    names.insert(m->GetName().ToUtf8());
  EXPECT_EQ(names.size(), 3001U) << "the old ones share one name, each copy has its own";
}

struct LongAct {
  std::function<engine::StepwiseEdit()> edit;
  std::vector<std::size_t> stopsAfter;  // steps
};

void ExpectNothingOfStopped(const LongAct& one, host::BaseDocument& doc,
                            const std::string& before) {
  for (const std::size_t stop : one.stopsAfter) {
    engine::StepwiseEdit edit = one.edit();
    const std::string name = edit.name;
    std::size_t asked = 0;
    EXPECT_FALSE(RunWhole(doc, std::move(edit), [&](double) { return asked++ < stop; }));
    EXPECT_EQ(engine::DumpDocument(doc), before) << name << " stopped after " << stop;
    EXPECT_FALSE(engine::CanUndo(doc) || engine::CanRedo(doc)) << name << " stopped after " << stop;
  }
}

TEST(Commands, OfVeryManyCanBeStoppedAndThenChangeNothing) {
  SceneBuilder scene;
  scene.Material("Red");
  for (int i = 0; i < 600; ++i)
    scene.Doc().AppendObject(BaseObject::Alloc(i % 2 ? host::Onull : host::Ocube));
  scene.Doc().GetFirstObject()->MakeTag(host::Tphong);
  const auto selectAll = [&] {
    engine::SelectNone(scene.Doc());
    engine::SelectAll(scene.Doc());
    scene.Doc().SetActiveTag(scene.Doc().GetFirstObject()->GetFirstTag());
  };
  selectAll();
  const auto all = [&] { return engine::SelectedObjects(scene.Doc()); };
  const LongAct acts[] = {
      {[&] { return engine::DuplicateSelected(scene.Doc()); },
       {0, 400, 600, 1000, 1200, 1201, 1800}},
      {[&] { return engine::DeleteSelected(scene.Doc()); }, {0, 1, 300, 601}},
      {[&] { return engine::AssignMaterial(*scene.GetMaterial("Red"), all()); }, {1, 600}},
      {[&] { return engine::SetSwitch(scene.Doc(), all(), Switch::kRender, host::MODE_OFF); },
       {1, 600}},
  };
  const std::string before = engine::DumpDocument(scene.Doc());
  for (const LongAct& one : acts) {
    ExpectNothingOfStopped(one, scene.Doc(), before);
    engine::StepwiseEdit edit = one.edit();
    const std::string name = edit.name;
    EXPECT_TRUE(RunWhole(scene.Doc(), std::move(edit)));
    EXPECT_EQ(engine::UndoName(scene.Doc()), name);
    EXPECT_NE(engine::DumpDocument(scene.Doc()), before) << name;
    EXPECT_TRUE(scene.Doc().DoUndo());
    engine::ClearUndo(scene.Doc());
    selectAll();
    EXPECT_EQ(engine::DumpDocument(scene.Doc()), before) << name;
  }
}

TEST(Commands, GiveMaterialsInOneStep) {
  Scene scene;
  const std::vector<BaseObject*> both = {scene.GetObject("A"), scene.GetObject("B")};
  RunWhole(scene.Doc(), engine::AssignMaterial(*scene.GetMaterial("Blue"), both));
  EXPECT_EQ(scene.MaterialTags("A", "Blue") + scene.MaterialTags("B", "Blue"), 2);
  EXPECT_EQ(scene.MaterialTags("A", "Red"), 0);
  EXPECT_EQ(engine::UndoName(scene.Doc()), "Assign Material");
  EXPECT_TRUE(scene.Doc().DoUndo());
  EXPECT_EQ(scene.MaterialTags("A", "Red"), 1);
  EXPECT_EQ(scene.GetObject("B")->GetTag(host::Ttexture), nullptr);
  RunWhole(scene.Doc(), engine::AssignMaterial(*scene.GetMaterial("Red"), {scene.GetObject("A")}));
  EXPECT_FALSE(engine::CanUndo(scene.Doc()));
}

// Of several texture tags the picture shows the last one that has a material, so that one gets it.
TEST(Commands, GiveMaterialsToTheTagThatThePictureShows) {
  struct Case {
    std::vector<const char*> before;  // materials of the tags, empty: none
    std::vector<const char*> after;
  };
  const Case cases[] = {{{}, {"Blue"}},
                        {{"Red"}, {"Blue"}},
                        {{""}, {"Blue"}},
                        {{"Red", "Green"}, {"Red", "Blue"}},
                        {{"Red", "Blue"}, {"Red", "Blue"}},
                        {{"Red", ""}, {"Blue", ""}},
                        {{"Red", "Green", ""}, {"Red", "Blue", ""}},
                        {{"", ""}, {"", "Blue"}}};
  for (const Case& one : cases) {
    SceneBuilder scene;
    scene.Cube("Box").Material("Red").Material("Green").Material("Blue");
    for (const char* material : one.before) scene.Texture("Box", material);
    RunWhole(scene.Doc(),
             engine::AssignMaterial(*scene.GetMaterial("Blue"), {scene.GetObject("Box")}));
    std::vector<std::string> after;
    for (host::BaseTag* tag = scene.GetObject("Box")->GetFirstTag(); tag; tag = tag->GetNext()) {
      const host::BaseMaterial* material = engine::AsTextureTag(tag)->GetMaterial();
      after.push_back(material ? material->GetName().ToUtf8() : "");
    }
    EXPECT_EQ(after, std::vector<std::string>(one.after.begin(), one.after.end()));
  }
}

// The file of the bitmap that the picture shows is changed; a color before it hides it.
TEST(Commands, GiveATextureToTheBitmapThatThePictureShows) {
  Scene scene;
  host::BaseMaterial& red = *scene.GetMaterial("Red");
  const auto set = [&](const char* file) {
    const engine::UndoScope scope(scene.Doc(), "Texture");
    engine::SetTextureFile(red, host::MATERIAL_COLOR_SHADER, host::Filename(file));
    std::string files;
    for (const host::BaseShader* shader = red.GetFirstShader(); shader; shader = shader->GetNext())
      files +=
          shader->GetData().GetFilename(host::BITMAPSHADER_FILENAME).GetString().ToUtf8() + " ";
    return files;
  };
  EXPECT_EQ(set("a.png"), "a.png ");
  EXPECT_EQ(set("b.png"), "b.png ");
  host::BaseShader* color = host::BaseShader::Alloc(host::Xcolor);
  red.InsertShader(color);
  red.SetParameter(host::MATERIAL_COLOR_SHADER, host::GeData(color), 0);
  EXPECT_EQ(set("c.png"), "b.png  c.png ");
}

TEST(Commands, SetsSwitches) {
  Scene scene;
  const std::vector<BaseObject*> both = {scene.GetObject("A"), scene.GetObject("B")};
  const std::string before = engine::DumpDocument(scene.Doc());
  for (const auto& [which, value, name] :
       {std::tuple{Switch::kEditor, host::MODE_OFF, "Visibility"},
        {Switch::kRender, host::MODE_ON, "Visibility"},
        {Switch::kGenerator, 0, "Generator"}}) {
    RunWhole(scene.Doc(), engine::SetSwitch(scene.Doc(), both, which, value));
    EXPECT_EQ(engine::SwitchOf(*both[1], which), value);
    EXPECT_EQ(engine::UndoName(scene.Doc()), name);
    RunWhole(scene.Doc(), engine::SetSwitch(scene.Doc(), both, which, value));
    EXPECT_TRUE(scene.Doc().DoUndo());
    EXPECT_EQ(engine::DumpDifference(before, engine::DumpDocument(scene.Doc())),
              std::vector<std::string>());
  }
}

}  // namespace
