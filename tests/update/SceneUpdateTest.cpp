// Effects of a newer import of a file on a scene that was worked on, and what it leaves alone.
#include "engine/update/SceneUpdate.h"

#include <gtest/gtest.h>

#include <functional>

#include "engine/import/ImportedElements.h"
#include "engine/scene/EmbeddedFiles.h"
#include "engine/scene/Mesh.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/SceneDump.h"
#include "engine/scene/ShaderWalk.h"
#include "engine/undo/Undo.h"
#include "host/Parameters.h"
#include "tests/support/SceneBuilder.h"

namespace {

using engine::SceneUpdate;
using tests::SceneBuilder;

std::shared_ptr<const engine::Mesh> Triangle(float size) {
  auto mesh = std::make_shared<engine::Mesh>();
  mesh->points = {{0, 0, 0}, {size, 0, 0}, {0, size, 0}};
  mesh->polygons = {{0, 1, 2, -1}};
  return mesh;
}

// A room with two lamps of one name, and a cup in a second place, as the file has it.
void BuildFile(SceneBuilder& file) {
  file.Material("Wood").Material("Brass", {0.9, 0.6, 0.1});
  file.Object("Room").Object("Room/Table", host::Opolygon).At("Room/Table", 0, 10, 0);
  engine::SetMesh(*file.Last(), Triangle(1));
  file.Texture("Room/Table", "Wood").Object("Room/Table/Cup", host::Opolygon);
  engine::SetMesh(*file.Last(), Triangle(1));
  file.Object("Shelf").Object("Shelf/Lamp", host::Olight).Camera("View");
}

// Objects in tree order, each with "<" for every one above it.
std::string TreeOf(const host::BaseDocument& doc) {
  std::string text;
  for (const host::BaseObject* object = doc.GetFirstObject(); object;
       object = engine::NextInTree(object)) {
    for (const host::BaseObject* up = object->GetUp(); up; up = up->GetUp()) text += '<';
    text += object->GetName().ToUtf8() + ' ';
  }
  return text;
}

std::string Joined(const std::vector<std::string>& texts) {
  std::string joined;
  for (const std::string& text : texts) joined += (joined.empty() ? "" : ", ") + text;
  return joined;
}

// "changed: Room/Table (place); new: X; gone: Y".
std::string Said(const engine::ElementChanges& changes) {
  std::string text;
  for (const engine::ChangedElement& one : changes.changed)
    text += "changed: " + one.path + " (" + Joined(one.what) + "); ";
  if (!changes.added.empty()) text += "new: " + Joined(changes.added) + "; ";
  if (!changes.gone.empty()) text += "gone: " + Joined(changes.gone) + "; ";
  return text;
}

// All that a person can undo: what came from the file is remembered all the same.
std::string Dump(host::BaseDocument& doc) {
  const host::BaseContainer data = doc.GetData();
  engine::KeepImportedElements(doc, {});
  std::string dump = engine::DumpDocument(doc);
  doc.SetData(data, host::FALSE);
  return dump;
}

class Update : public testing::Test {
 protected:
  Update() {
    BuildFile(scene_);
    engine::KeepImportedElements(scene_.Doc(), engine::DescribeElements(scene_.Doc(), "room.glb"));
    BuildFile(file_);
  }

  SceneUpdate Run(bool removeGone = false) {
    engine::KeepImportedElements(file_.Doc(), engine::DescribeElements(file_.Doc(), "room.glb"));
    return engine::UpdateScene(scene_.Doc(), file_.Doc(), {.removeGone = removeGone});
  }
  double TableHeight() { return scene_.GetObject("Room/Table")->GetMl().off.y; }

  SceneBuilder scene_;
  SceneBuilder file_;
};

TEST_F(Update, FromAnUnchangedFileLeavesTheWorkAlone) {
  scene_.At("Room/Table", 5, 5, 5).Modes("Room/Table/Cup", host::MODE_OFF, host::MODE_OFF);
  scene_.GetMaterial("Wood")->GetDataInstance()->SetReal(host::MATERIAL_ALPHA, 0.5);
  const std::string before = Dump(scene_.Doc());
  const SceneUpdate update = Run(true);
  EXPECT_FALSE(update.ChangesAnything()) << Said(update.objects) << Said(update.materials);
  EXPECT_EQ(update.objects.found, 6U);
  EXPECT_EQ(Dump(scene_.Doc()), before);
  EXPECT_FALSE(engine::CanUndo(scene_.Doc()));
}

struct FileChange {
  const char* name;
  std::function<void(SceneBuilder&)> change;
  const char* objects;
  const char* materials;
  const char* tree = nullptr;  // afterwards, where it is looked at
};

class OneChange : public Update, public testing::WithParamInterface<FileChange> {};

// One undo step takes all of it back, and a second update has nothing to do.
TEST_P(OneChange, ComesInAsOneStep) {
  const std::string before = Dump(scene_.Doc());
  GetParam().change(file_);
  const SceneUpdate update = Run();
  EXPECT_EQ(Said(update.objects), GetParam().objects);
  EXPECT_EQ(Said(update.materials), GetParam().materials);
  EXPECT_EQ(update.objects.addedCount + update.objects.found + update.objects.goneCount,
            6U + update.objects.addedCount);
  const std::string after = Dump(scene_.Doc());
  EXPECT_NE(after, before);
  if (GetParam().tree) {
    EXPECT_EQ(TreeOf(scene_.Doc()), GetParam().tree);
  }
  SceneBuilder again;
  BuildFile(again);
  GetParam().change(again);
  engine::KeepImportedElements(again.Doc(), engine::DescribeElements(again.Doc(), "room.glb"));
  EXPECT_FALSE(engine::UpdateScene(scene_.Doc(), again.Doc(), {}).ChangesAnything());
  EXPECT_EQ(engine::UndoName(scene_.Doc()), "Update from File");
  EXPECT_TRUE(scene_.Doc().DoUndo());
  EXPECT_EQ(engine::DumpDifference(before, Dump(scene_.Doc())), std::vector<std::string>());
  EXPECT_FALSE(engine::CanUndo(scene_.Doc()));
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, OneChange,
    testing::Values(
        FileChange{"Place", [](SceneBuilder& file) { file.At("Room/Table", 1, 2, 3); },
                   "changed: Room/Table (place); ", ""},
        FileChange{
            "Shape",
            [](SceneBuilder& file) { engine::SetMesh(*file.GetObject("Room/Table"), Triangle(2)); },
            "changed: Room/Table (shape); ", ""},
        FileChange{"Lens",
                   [](SceneBuilder& file) {
                     file.GetObject("View")->GetDataInstance()->SetReal(host::CAMERA_FOV, 0.3);
                   },
                   "changed: View (settings); ", ""},
        FileChange{"Material",
                   [](SceneBuilder& file) {
                     file.GetMaterial("Brass")->GetDataInstance()->SetReal(host::MATERIAL_ROUGHNESS,
                                                                           0.1);
                     file.Bitmap(file.GetMaterial("Brass"), "/pictures/brass.png");
                   },
                   "", "changed: Brass (settings); "},
        FileChange{"Assignment",
                   [](SceneBuilder& file) {
                     static_cast<host::TextureTag*>(file.GetTag("Room/Table", host::Ttexture))
                         ->SetMaterial(file.GetMaterial("Brass"));
                   },
                   "changed: Room/Table (material); ", ""},
        FileChange{"NewBranch",
                   [](SceneBuilder& file) {
                     file.Material("Glass").Object("Shelf/Vase").Object("Shelf/Vase/Rose");
                     file.Texture("Shelf/Vase/Rose", "Glass");
                   },
                   "new: Shelf/Vase; ", "new: Glass; "},
        FileChange{"MeshOfSeveralParts",
                   [](SceneBuilder& file) {
                     host::BaseObject* cup = file.GetObject("Room/Table/Cup");
                     host::BaseObject::Free(cup);
                     for (const char* part : {"Room/Table/Cup/A", "Room/Table/Cup/B"}) {
                       file.Object(part, host::Opolygon);
                       engine::SetMesh(*file.Last(), Triangle(1));
                     }
                   },
                   "changed: Room/Table/Cup (shape); new: Room/Table/Cup/A, Room/Table/Cup/B; ",
                   ""},
        FileChange{"OtherParent",
                   [](SceneBuilder& file) {
                     host::BaseObject* lamp = file.GetObject("Shelf/Lamp");
                     lamp->Remove();
                     file.Doc().AppendObject(lamp, file.GetObject("Room"));
                   },
                   "changed: Shelf/Lamp (parent); ", "", "Room <Table <<Cup <Lamp Shelf View "},
        FileChange{"ToTheTop",
                   [](SceneBuilder& file) {
                     for (const char* path : {"Room/Table", "Shelf/Lamp"}) {
                       host::BaseObject* moved = file.GetObject(path);
                       moved->Remove();
                       moved->SetMl(host::Matrix());
                       file.Doc().AppendObject(moved);
                     }
                   },
                   "changed: Room/Table (parent); changed: Shelf/Lamp (parent); ", "",
                   "Room Shelf View Table <Cup Lamp "},
        FileChange{"BelowSomethingNew",
                   [](SceneBuilder& file) {
                     file.Object("Set").Object("Set/Spot", host::Olight).Object("Last");
                     host::BaseObject* room = file.GetObject("Room");
                     room->Remove();
                     file.Doc().AppendObject(room, file.GetObject("Set"));
                   },
                   "changed: Room (parent); new: Set, Last; ", "",
                   "Shelf <Lamp View Set <Spot <Room <<Table <<<Cup Last "},
        FileChange{"BetweenOthers",
                   [](SceneBuilder& file) {
                     host::BaseObject* box = host::BaseObject::Alloc(host::Ocube);
                     box->SetName("Box");
                     file.Doc().InsertObject(box, file.GetObject("Shelf"), nullptr);
                     host::BaseObject* twin = host::BaseObject::Alloc(host::Olight);
                     twin->SetName("Lamp");
                     file.Doc().InsertObject(twin, file.GetObject("Shelf"),
                                             file.GetObject("Shelf/Lamp"));
                     host::BaseObject* gate = host::BaseObject::Alloc(host::Onull);
                     gate->SetName("Gate");
                     file.Doc().InsertObject(gate, nullptr, file.GetObject("Room"));
                   },
                   "new: Gate, Shelf/Box, Shelf/Lamp; ", "",
                   "Room <Table <<Cup Gate Shelf <Box <Lamp <Lamp View "},
        FileChange{"FirstMaterial",
                   [](SceneBuilder& file) { file.Texture("Room/Table/Cup", "Brass"); },
                   "changed: Room/Table/Cup (material); ", ""},
        FileChange{"SmoothMesh",
                   [](SceneBuilder& file) {
                     engine::SetMesh(*file.GetObject("Room/Table"), Triangle(2));
                     file.Tag("Room/Table", host::Tphong);
                   },
                   "changed: Room/Table (shape); ", ""},
        FileChange{"DeepBranch",
                   [](SceneBuilder& file) {
                     std::string path = "Room";
                     for (char c = 'a'; c < 'l'; ++c) path += std::string("/") + c;
                     file.Object(path).Doc().GetFirstObject();
                     file.At(path, 1, 2, 3);
                   },
                   "new: Room/a; ", ""}),
    [](const auto& one) { return one.param.name; });

TEST_F(Update, ThatChangesOneThingKeepsWhatWasDoneToOthers) {
  scene_.At("Room/Table", 5, 5, 5).Modes("Room/Table", host::MODE_OFF, host::MODE_OFF);
  scene_.Texture("Room/Table/Cup", "Brass").Layer("Props").OnLayer("Room/Table", "Props");
  engine::SetMesh(*file_.GetObject("Room/Table"), Triangle(3));
  const host::ULLONG id = engine::IdOf(*scene_.GetObject("Room/Table"));
  EXPECT_EQ(Said(Run().objects), "changed: Room/Table (shape); ");
  EXPECT_EQ(TableHeight(), 5);
  EXPECT_EQ(engine::IdOf(*scene_.GetObject("Room/Table")), id);
  EXPECT_EQ(scene_.GetObject("Room/Table")->GetRenderMode(), host::MODE_OFF);
  EXPECT_EQ(scene_.GetObject("Room/Table")->GetLayerObject(&scene_.Doc()),
            scene_.GetLayer("Props"));
}

TEST_F(Update, FindsWhatWasPutIntoGroupsOrMovedByTheFile) {
  host::BaseObject* room = scene_.GetObject("Room");
  room->Remove();
  scene_.Object("Set");
  scene_.Doc().AppendObject(room, scene_.GetObject("Set"));
  file_.At("Room/Table", 1, 1, 1);
  EXPECT_EQ(Said(Run().objects), "changed: Set/Room/Table (place); ");
  EXPECT_EQ(TreeOf(scene_.Doc()), "Shelf <Lamp View Set <Room <<Table <<<Cup ");
}

TEST_F(Update, FindsWhatTheFileGaveAnotherNameByItsIdentity) {
  for (SceneBuilder* one : {&scene_, &file_})
    one->GetObject("Shelf")->GetDataInstance()->SetString(1059403, "{\"uuid\":\"a-1\"}");
  file_.GetObject("Shelf")->SetName("Rack");
  const host::ULLONG lamp = engine::IdOf(*scene_.GetObject("Shelf/Lamp"));
  const SceneUpdate update = Run();
  EXPECT_EQ(update.objects.found, 6U) << Said(update.objects);
  EXPECT_EQ(engine::IdOf(*scene_.GetObject("Shelf/Lamp")), lamp);
}

// Elements that are gone stay listed until they are removed; those made here are never gone.
TEST_F(Update, NamesWhatIsGoneAndRemovesItOnlyWhenTold) {
  scene_.Object("Made here").Object("Shelf/Made here, too");
  host::BaseObject* shelf = file_.GetObject("Shelf");
  host::BaseObject* table = file_.GetObject("Room/Table");
  host::BaseObject::Free(shelf);
  host::BaseObject::Free(table);
  EXPECT_EQ(Said(Run().objects), "gone: Room/Table, Shelf; ");
  const std::string before = TreeOf(scene_.Doc());
  EXPECT_EQ(before, "Room <Table <<Cup Shelf <Lamp <Made here, too View Made here ");
  const SceneUpdate update = Run(true);
  EXPECT_EQ(update.objects.goneCount, 4U);
  EXPECT_EQ(update.removed, 3U) << "the shelf bears what was made here";
  EXPECT_EQ(TreeOf(scene_.Doc()), "Room Shelf <Made here, too View Made here ");
  EXPECT_TRUE(scene_.Doc().DoUndo());
  EXPECT_EQ(TreeOf(scene_.Doc()), before);
}

TEST_F(Update, FromAFileOfAnotherNameSaysSo) {
  engine::KeepImportedElements(file_.Doc(), engine::DescribeElements(file_.Doc(), "attic.glb"));
  const SceneUpdate update = engine::UpdateScene(scene_.Doc(), file_.Doc(), {});
  EXPECT_EQ(update.notes, std::vector<std::string>{
                              "The scene came from \"room.glb\", and not from \"attic.glb\"."});
  EXPECT_EQ(Run().notes.size(), 1U) << "the last file counts";
}

TEST_F(Update, OfASceneThatDoesNotTellWhatCameFromAFileRemovesNothing) {
  engine::KeepImportedElements(scene_.Doc(), {});
  scene_.Object("Made here");
  const SceneUpdate update = Run(true);
  EXPECT_EQ(update.removed, 0U);
  ASSERT_EQ(update.notes.size(), 1U);
  EXPECT_NE(TreeOf(scene_.Doc()).find("Made here"), std::string::npos);
}

TEST_F(Update, BringsPicturesThatCameInsideTheFile) {
  const auto embed = [](SceneBuilder& into, const std::string& bytes) {
    const std::string name = engine::AddEmbeddedFile(into.Doc(), "wood.png", bytes);
    into.Bitmap(into.GetMaterial("Wood"), name);
  };
  embed(scene_, "old");
  engine::KeepImportedElements(scene_.Doc(), engine::DescribeElements(scene_.Doc(), "room.glb"));
  embed(file_, "new");
  EXPECT_EQ(Said(Run().materials), "changed: Wood (settings); ");
  const host::BaseShader* shader = scene_.GetMaterial("Wood")->GetFirstShader();
  const std::string* bytes = engine::FindEmbeddedFile(scene_.Doc(), engine::BitmapFileOf(*shader));
  ASSERT_TRUE(bytes);
  EXPECT_EQ(*bytes, "new");
  EXPECT_EQ(shader->GetNext(), nullptr);
}

// Layers of the file by their names: those that the scene has, or new ones, each once.
TEST_F(Update, PutsNewObjectsOnTheirLayers) {
  host::LayerData hidden;
  hidden.view = false;
  scene_.Layer("Group/Props");
  file_.Layer("Props", hidden).Layer("Lights", hidden).Object("A").Object("B").Object("C");
  file_.Object("Off").OnLayer("A", "Props").OnLayer("B", "Lights").OnLayer("C", "Lights");
  file_.Tag("A", host::Tphong).Texture("A", "Wood");
  EXPECT_EQ(Said(Run().objects), "new: A, B, C, Off; ");
  const auto layerOf = [&](const char* name) {
    return scene_.GetObject(name)->GetLayerObject(&scene_.Doc());
  };
  EXPECT_EQ(layerOf("A"), scene_.GetLayer("Group/Props"));
  EXPECT_EQ(layerOf("B"), scene_.GetLayer("Lights"));
  EXPECT_EQ(layerOf("C"), layerOf("B"));
  EXPECT_EQ(layerOf("Off"), nullptr);
  EXPECT_EQ(layerOf("B")->GetNext(), nullptr);
  EXPECT_EQ(layerOf("B")->GetLayerData(&scene_.Doc()), hidden);
  EXPECT_NE(layerOf("A")->GetLayerData(&scene_.Doc()), hidden);
  EXPECT_NE(scene_.GetTag("A", host::Tphong), nullptr);
  EXPECT_EQ(static_cast<host::TextureTag*>(scene_.GetTag("A", host::Ttexture))->GetMaterial(),
            scene_.GetMaterial("Wood"));
  EXPECT_TRUE(scene_.Doc().DoUndo());
  EXPECT_EQ(scene_.Doc().GetLayerObjectRoot()->GetFirst()->GetNext(), nullptr);
}

TEST_F(Update, NamesMaterialsThatAreGoneOrCameBack) {
  scene_.Material("Made here");
  host::BaseMaterial* brass = file_.GetMaterial("Brass");
  host::BaseMaterial::Free(brass);
  const SceneUpdate without = Run();
  EXPECT_EQ(Said(without.materials), "gone: Brass; ");
  EXPECT_EQ(without.materials.found, 1U);
  EXPECT_EQ(without.materials.goneCount, 1U);
  file_.Material("Brass", {0.1, 0.1, 0.1}).Material("Glass");
  const SceneUpdate again = Run();
  EXPECT_EQ(Said(again.materials), "changed: Brass (settings); new: Glass; ");
  EXPECT_EQ(again.materials.found, 2U);
  EXPECT_EQ(again.materials.addedCount, 1U);
}

// Of a long way the last names.
TEST_F(Update, ShortensLongPaths) {
  std::string path;
  for (char c = 'a'; c < 'p'; ++c) path += (path.empty() ? "" : "/") + std::string(1, c);
  for (SceneBuilder* one : {&scene_, &file_}) one->Object(path.substr(0, path.size() - 2));
  engine::KeepImportedElements(scene_.Doc(), engine::DescribeElements(scene_.Doc(), "room.glb"));
  file_.Object(path).At(path.substr(0, 23), 1, 0, 0);
  EXPECT_EQ(Said(Run().objects),
            "changed: a/b/c/d/e/f/g/h/i/j/k/l (place); new: \u2026/d/e/f/g/h/i/j/k/l/m/n/o; ");
}

}  // namespace
