// Commands on materials, layers, settings and new objects: what each leaves behind, and that one
// undo takes all of it back.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <span>

#include "engine/editing/ElementCommands.h"
#include "engine/editing/LayerCommands.h"
#include "engine/editing/MaterialCommands.h"
#include "engine/editing/ObjectCommands.h"
#include "engine/editing/RenderSettingsCommands.h"
#include "engine/editing/Selection.h"
#include "engine/scene/DocumentState.h"
#include "engine/scene/SceneDump.h"
#include "engine/scene/TreeWalk.h"
#include "engine/scene/Vectors.h"
#include "engine/undo/Undo.h"
#include "host/Parameters.h"
#include "tests/support/SceneBuilder.h"

namespace {

using engine::NextInTree;
using engine::RunWhole;
using host::BaseDocument;
using host::BaseList2D;
using tests::SceneBuilder;

struct OneScene : SceneBuilder {
  OneScene() {
    Object("Cube").Object("Cube/In").Camera("Camera").Material("Red").Material("Blue");
    Material("Material").Layer("Layer").Layer("Layer/Low").OnLayer("Cube", "Layer");
    Settings("Other").Texture("Cube", "Red").Tag("Cube", host::Tphong);
    for (const char* name : {"Blue", "Material"})
      GetMaterial(name)->SetParameter(host::MATERIAL_COLOR_SHADER,
                                      host::GeData(Bitmap(GetMaterial(name), "old.png")), 0);
    Doc().GetActiveRenderData()->GetDataInstance()->SetLong(host::RDATA_FRAMERATE, 25);
  }
};

std::string NamesFrom(const host::GeListNode* first, const BaseList2D* active = nullptr) {
  std::string names;
  for (const host::GeListNode* node = first; node; node = NextInTree(node)) {
    const auto& element = static_cast<const BaseList2D&>(*node);
    names += element.GetName().ToUtf8() + (element.GetBit(host::BIT_ACTIVE) ? "* " : " ") +
             (&element == active ? "(active) " : "");
  }
  return names;
}

// Names in their order; a star for each that is selected.
std::string ListOf(const BaseDocument& doc) {
  return NamesFrom(doc.GetFirstObject()) + "| " + NamesFrom(doc.GetFirstMaterial()) + "| " +
         NamesFrom(doc.GetLayerObjectRoot()->GetFirst()) + "| " +
         NamesFrom(doc.GetFirstRenderData(), doc.GetActiveRenderData());
}

struct Case {
  const char* step;
  std::function<void(OneScene&, BaseDocument&)> act;
  const char* list;  // null: as before
  std::function<bool(const OneScene&)> isDone = {};
};

engine::LayerList Layers(const OneScene& s) {
  return {s.GetLayer("Layer"), s.GetLayer("Layer/Low")};
}

const Case kOfMaterials[] = {
    {"New Material", [](OneScene&, BaseDocument& doc) { engine::AddMaterial(doc); },
     "Cube In Camera | Red Blue Material Material.1* | Layer Low | Render Settings (active) "
     "Other "},
    {"Duplicate Material",
     [](OneScene& s, BaseDocument& doc) {
       engine::DuplicateMaterials(doc, {s.GetMaterial("Red")});
     },
     "Cube In Camera | Red Red.1* Blue Material | Layer Low | Render Settings (active) Other "},
    {"Duplicate Materials",
     [](OneScene& s, BaseDocument& doc) {
       engine::DuplicateMaterials(doc, {s.GetMaterial("Red"), s.GetMaterial("Material")});
     },
     "Cube In Camera | Red Red.1* Blue Material Material.1* | Layer Low | Render Settings (active) "
     "Other "},
    {"Delete Material",
     [](OneScene& s, BaseDocument& doc) { engine::DeleteMaterials(doc, {s.GetMaterial("Red")}); },
     "Cube In Camera | Blue Material | Layer Low | Render Settings (active) Other "},
    {"Delete Materials",
     [](OneScene& s, BaseDocument& doc) {
       engine::DeleteMaterials(doc, {s.GetMaterial("Red"), s.GetMaterial("Blue")});
     },
     "Cube In Camera | Material | Layer Low | Render Settings (active) Other "},
    {"Rename Material",
     [](OneScene& s, BaseDocument& doc) {
       engine::RenameMaterial(doc, *s.GetMaterial("Red"), "Blue");
     },
     "Cube In Camera | Blue Blue Material | Layer Low | Render Settings (active) Other "},
    {"Part",
     [](OneScene&, BaseDocument& doc) {
       engine::MakeMaterial(doc, "Red", {0.1, 0.2, 0.3});
     },
     "Cube In Camera | Red Blue Material Red | Layer Low | Render Settings (active) Other ",
     [](const OneScene& s) {
       return s.GetMaterial("Material")
                  ->GetNext()
                  ->GetDataInstance()
                  ->GetVector(host::MATERIAL_COLOR) == host::Vector(0.1, 0.2, 0.3);
     }},
    {"Part",
     [](OneScene& s, BaseDocument&) {
       host::BaseMaterial& red = *s.GetMaterial("Red");
       engine::SetTextureFile(red, host::MATERIAL_COLOR_SHADER, host::Filename("a.png"));
       engine::SetTextureFile(red, host::MATERIAL_COLOR_SHADER, host::Filename("b.png"));
       engine::SetTextureFile(*s.GetMaterial("Blue"), host::MATERIAL_LUMINANCE_SHADER,
                              host::Filename("c.png"));
       engine::SetTextureFile(*s.GetMaterial("Blue"), host::MATERIAL_COLOR_SHADER,
                              host::Filename("d.png"));
       engine::SetTextureFile(*s.GetMaterial("Material"), host::MATERIAL_COLOR_SHADER,
                              host::Filename());
       engine::SetTextureFile(red, host::MATERIAL_COLOR_SHADER, host::Filename());
     },
     nullptr,
     [](const OneScene& s) {
       const auto file = [&](const char* material, host::LONG link) {
         return engine::TextureFileOf(*s.GetMaterial(material), link).GetString();
       };
       const host::BaseShader* left = s.GetMaterial("Red")->GetFirstShader();
       return left && !left->GetNext() && file("Red", host::MATERIAL_COLOR_SHADER) == "" &&
              file("Material", host::MATERIAL_COLOR_SHADER) == "" &&
              file("Blue", host::MATERIAL_COLOR_SHADER) == "d.png" &&
              file("Blue", host::MATERIAL_LUMINANCE_SHADER) == "c.png";
     }},
};

const Case kOfLayers[] = {
    {"New Layer", [](OneScene&, BaseDocument& doc) { engine::AddLayer(doc); },
     "Cube In Camera | Red Blue Material | Layer Low Layer.1* | Render Settings (active) Other "},
    {"Delete Layer",
     [](OneScene& s, BaseDocument& doc) { engine::DeleteLayers(doc, {s.GetLayer("Layer/Low")}); },
     "Cube In Camera | Red Blue Material | Layer | Render Settings (active) Other "},
    {"Delete Layers", [](OneScene& s, BaseDocument& doc) { engine::DeleteLayers(doc, Layers(s)); },
     "Cube In Camera | Red Blue Material | | Render Settings (active) Other "},
    {"Rename Layer",
     [](OneScene& s, BaseDocument& doc) { engine::RenameLayer(doc, *s.GetLayer("Layer"), "Low"); },
     "Cube In Camera | Red Blue Material | Low Low | Render Settings (active) Other "},
    {"Layer Color",
     [](OneScene& s, BaseDocument& doc) {
       // One of another document is left alone.
       SceneBuilder other;
       other.Layer("Layer");
       engine::SetLayerColor(doc, {other.GetLayer("Layer"), s.GetLayer("Layer/Low")}, {1, 0, 0});
       EXPECT_NE(other.GetLayer("Layer")->GetLayerData(&other.Doc()).color, host::Vector(1, 0, 0));
     },
     nullptr,
     [](const OneScene& s) {
       return s.GetLayer("Layer/Low")->GetLayerData(&s.Doc()).color == host::Vector(1, 0, 0) &&
              s.GetLayer("Layer")->GetLayerData(&s.Doc()).color == host::LayerData().color;
     }},
    {"Layer Switch",
     [](OneScene& s, BaseDocument& doc) {
       engine::SetLayerSwitch(doc, Layers(s), *engine::FindLayerSwitch("locked"), true);
     },
     nullptr,
     [](const OneScene& s) {
       host::LayerData locked;
       locked.locked = true;
       return s.GetLayer("Layer")->GetLayerData(&s.Doc()) == locked &&
              s.GetLayer("Layer/Low")->GetLayerData(&s.Doc()) == locked;
     }},
    {"Part",
     [](OneScene&, BaseDocument& doc) {
       host::LayerData data;
       data.solo = true;
       engine::MakeLayer(doc, "Low", data);
     },
     "Cube In Camera | Red Blue Material | Layer Low Low | Render Settings (active) Other ",
     [](const OneScene& s) { return s.GetLayer("Low")->GetLayerData(&s.Doc()).solo; }},
    {"Assign Layer",
     [](OneScene& s, BaseDocument& doc) {
       SceneBuilder other;
       other.Layer("Layer");
       RunWhole(doc, engine::AssignLayer(doc, {s.GetObject("Cube")}, other.GetLayer("Layer")));
       EXPECT_FALSE(engine::CanUndo(doc)) << "a layer of another document";
       RunWhole(doc, engine::AssignLayer(doc, {s.GetObject("Cube"), s.GetObject("Camera")},
                                         s.GetLayer("Layer/Low")));
     },
     nullptr,
     [](const OneScene& s) {
       return s.GetObject("Cube")->GetLayerObject(&s.Doc()) == s.GetLayer("Layer/Low") &&
              s.GetObject("Camera")->GetLayerObject(&s.Doc()) == s.GetLayer("Layer/Low");
     }},
    {"Take Off Layer",
     [](OneScene& s, BaseDocument& doc) {
       RunWhole(doc, engine::AssignLayer(doc, {s.GetObject("Cube")}, nullptr));
     },
     nullptr, [](const OneScene& s) { return !s.GetObject("Cube")->GetLayerObject(&s.Doc()); }},
};

const Case kOfSettings[] = {
    {"New Render Settings", [](OneScene&, BaseDocument& doc) { engine::AddRenderSettings(doc); },
     "Cube In Camera | Red Blue Material | Layer Low | Render Settings (active) Other "
     "Render Settings.1 "},
    {"Duplicate Render Settings",
     [](OneScene& s, BaseDocument& doc) {
       SceneBuilder other;
       const auto copies = engine::DuplicateRenderSettings(
           doc, {s.Doc().GetFirstRenderData(), other.Doc().GetFirstRenderData(),
                 s.GetSettings("Other")});
       const engine::SettingsList expected{s.GetSettings("Render Settings.1"),
                                           s.GetSettings("Other.1")};
       EXPECT_EQ(copies, expected);
     },
     "Cube In Camera | Red Blue Material | Layer Low | Render Settings (active) Render Settings.1 "
     "Other Other.1 "},
    {"Delete Render Settings",
     [](OneScene& s, BaseDocument& doc) {
       engine::DeleteRenderSettings(doc, {s.GetSettings("Other")});
     },
     "Cube In Camera | Red Blue Material | Layer Low | Render Settings (active) "},
    {"Delete Render Settings",
     [](OneScene& s, BaseDocument& doc) {
       engine::DeleteRenderSettings(doc, {doc.GetFirstRenderData(), s.GetSettings("Other")});
     },
     "Cube In Camera | Red Blue Material | Layer Low | Other (active) "},
    {"Activate Render Settings",
     [](OneScene& s, BaseDocument& doc) {
       engine::ActivateRenderSettings(doc, *s.GetSettings("Other"));
     },
     "Cube In Camera | Red Blue Material | Layer Low | Render Settings Other (active) "},
    {"Rename",
     [](OneScene& s, BaseDocument& doc) {
       engine::RenameRenderSettings(doc, *s.GetSettings("Other"), "Final");
     },
     "Cube In Camera | Red Blue Material | Layer Low | Render Settings (active) Final "},
    {"Part",
     [](OneScene&, BaseDocument& doc) {
       engine::SetRenderSize(doc, 640, 360);
       engine::SetRenderFrames(doc, 5, 30);
     },
     nullptr,
     [](const OneScene& s) {
       const host::BaseContainer& data = *s.Doc().GetActiveRenderData()->GetDataInstance();
       return data.GetLong(host::RDATA_XRES) == 640 && data.GetLong(host::RDATA_YRES) == 360 &&
              data.GetLong(host::RDATA_FRAMESEQUENCE) == 0 &&
              data.GetTime(host::RDATA_FRAMEFROM) == host::BaseTime(5, 25) &&
              data.GetTime(host::RDATA_FRAMETO) == host::BaseTime(30, 25);
     }},
    {"Scene Camera",
     [](OneScene& s, BaseDocument& doc) { engine::MakeSceneCamera(doc, *s.GetObject("Camera")); },
     nullptr,
     [](const OneScene& s) {
       return s.Doc().GetRenderBaseDraw()->GetSceneCamera(&s.Doc()) == s.GetObject("Camera");
     }},
};

engine::PictureCamera View() {
  engine::PictureCamera view{{}, true, 0.5, 0.25, 300, 2, 4000};
  view.frame.off = {1, 2, 3};
  view.frame.v1 = {0, 0, -2};
  view.frame.v3 = {2, 0, 0};
  return view;
}

bool IsAlone(const OneScene& s, const char* name) {
  const BaseDocument& doc = s.Doc();
  return doc.GetActiveObject() == s.GetObject(name) && !engine::ActiveTagOf(doc);
}

const Case kOfObjects[] = {
    {"New Cube",
     [](OneScene& s, BaseDocument& doc) {
       doc.SetActiveObject(s.GetObject("Cube"));
       doc.SetActiveTag(s.GetTag("Cube", host::Tphong));
       engine::AddObject(doc, host::Ocube);
     },
     "Cube In Camera Cube.1* | Red Blue Material | Layer Low | Render Settings (active) Other ",
     [](const OneScene& s) { return IsAlone(s, "Cube.1"); }},
    {"New Light", [](OneScene&, BaseDocument& doc) { engine::AddLight(doc, View()); },
     "Cube In Camera Light* | Red Blue Material | Layer Low | Render Settings (active) Other ",
     [](const OneScene& s) {
       const host::Matrix frame = s.GetObject("Light")->GetMl();
       return IsAlone(s, "Light") && frame.off == View().frame.off &&
              frame.v1 == host::Vector(0, 0, -1) && frame.v2 == host::Vector(0, 1, 0) &&
              frame.v3 == host::Vector(1, 0, 0);
     }},
    {"New Camera", [](OneScene&, BaseDocument& doc) { engine::AddCamera(doc, View()); },
     "Cube In Camera Camera.1* | Red Blue Material | Layer Low | Render Settings (active) Other ",
     [](const OneScene& s) {
       const host::BaseObject& camera = *s.GetObject("Camera.1");
       const host::BaseContainer& data = *camera.GetDataInstance();
       return IsAlone(s, "Camera.1") && camera.GetMl() == View().frame &&
              data.GetLong(host::CAMERA_PROJECTION) == 1 && data.GetReal(host::CAMERA_FOV) == 0.5 &&
              data.GetReal(host::CAMERA_FOV_VERTICAL) == 0.25 &&
              data.GetReal(host::CAMERA_WIDTH) == 300 && data.GetReal(host::CAMERA_NEAR) == 2 &&
              data.GetReal(host::CAMERA_FAR) == 4000;
     }},
    {"Part", [](OneScene&, BaseDocument& doc) { engine::MakeCamera(doc, "Cube", View().frame); },
     "Cube In Camera Cube | Red Blue Material | Layer Low | Render Settings (active) Other ",
     [](const OneScene& s) { return s.GetObject("Camera")->GetNext()->GetMl() == View().frame; }},
    {"New Camera",
     [](OneScene&, BaseDocument& doc) {
       engine::AddObject(doc, host::Ocamera, "", View().frame, nullptr);
     },
     "Cube In Camera Camera.1 | Red Blue Material | Layer Low | Render Settings (active) Other ",
     [](const OneScene& s) { return s.GetObject("Camera.1")->GetMl() == View().frame; }},
};

TEST(OneStep, TakesBackWhatACommandDid) {
  for (const std::span<const Case> cases :
       {std::span<const Case>(kOfMaterials), std::span<const Case>(kOfLayers),
        std::span<const Case>(kOfSettings), std::span<const Case>(kOfObjects)}) {
    for (const Case& one : cases) {
      SCOPED_TRACE(std::string(one.step) + ": " + (one.list ? one.list : ""));
      OneScene scene;
      BaseDocument& doc = scene.Doc();
      const std::string before = engine::DumpDocument(doc);
      const std::string list = ListOf(doc);
      engine::ClearChanged(doc);
      EXPECT_FALSE(doc.GetChanged() || (!one.list && one.isDone(scene)));
      if (std::string_view(one.step) == "Part") {
        const engine::UndoScope scope(doc, "Part");
        one.act(scene, doc);
      } else {
        one.act(scene, doc);
      }
      EXPECT_EQ(ListOf(doc), one.list ? one.list : list);
      EXPECT_TRUE(!one.isDone || one.isDone(scene));
      EXPECT_TRUE(doc.GetChanged() || std::string_view(one.step) == "Part");
      EXPECT_EQ(engine::DoneNames(doc), std::vector<std::string>{one.step});
      const std::string after = engine::DumpDocument(doc);
      ASSERT_TRUE(doc.DoUndo());
      EXPECT_EQ(engine::DumpDifference(before, engine::DumpDocument(doc)),
                std::vector<std::string>());
      ASSERT_TRUE(doc.DoRedo());
      EXPECT_EQ(engine::DumpDifference(after, engine::DumpDocument(doc)),
                std::vector<std::string>());
    }
  }
}

TEST(OneStep, IsNoneWhereNothingChanges) {
  OneScene scene;
  BaseDocument& doc = scene.Doc();
  engine::DeleteRenderSettings(doc, {scene.GetSettings("Other")});
  engine::ClearUndo(doc);
  engine::DeleteRenderSettings(doc, {doc.GetFirstRenderData()});
  EXPECT_NE(doc.GetFirstRenderData(), nullptr);
  engine::SetLayerSwitch(doc, Layers(scene), *engine::FindLayerSwitch("view"), true);
  RunWhole(doc, engine::AssignLayer(doc, {scene.GetObject("Cube")}, scene.GetLayer("Layer")));
  EXPECT_FALSE(engine::CanUndo(doc));
  engine::MakeSceneCamera(doc, *scene.GetObject("Camera"));
  engine::ClearUndo(doc);
  engine::MakeSceneCamera(doc, *scene.GetObject("Camera"));
  EXPECT_FALSE(engine::CanUndo(doc));
  EXPECT_FALSE(engine::FindLayerSwitch("visible"));
}

// By turns, so that layers made after one another differ, and each can be seen.
TEST(OneStep, GivesLayersColorsThatDiffer) {
  SceneBuilder scene;
  std::vector<host::Vector> colors;
  for (int i = 0; i < 9; ++i)
    colors.push_back(engine::AddLayer(scene.Doc())->GetLayerData(&scene.Doc()).color);
  EXPECT_EQ(colors[8], colors[0]);
  for (std::size_t i = 0; i < 8; ++i) {
    const auto [least, most] = std::minmax({colors[i].x, colors[i].y, colors[i].z});
    EXPECT_TRUE(least > 0.2 && most < 0.85 && most - least < 0.6) << i;
    for (std::size_t j = 0; j < i; ++j) {
      EXPECT_GT(engine::LengthOf(engine::Sum(colors[i], engine::Scaled(colors[j], -1))), 0.1);
    }
  }
}

TEST(OneStep, SelectsByMaterialLayerAndList) {
  OneScene scene;
  BaseDocument& doc = scene.Doc();
  scene.Texture("Camera", "Blue").OnLayer("Cube/In", "Layer/Low").Object("Bare");
  scene.Texture("Cube", "Material").Select("Bare");
  struct Choice {
    const char* what;
    std::function<void()> choose;
    const char* list;
  };
  const Choice choices[] = {
      {"of a material", [&] { engine::SelectObjectsWith(doc, {scene.GetMaterial("Material")}); },
       "Cube* In Camera Bare | Red Blue Material | Layer Low | "},
      {"of two materials",
       [&] {
         engine::SelectObjectsWith(doc, {scene.GetMaterial("Red"), scene.GetMaterial("Blue")});
       },
       "Cube* In Camera* Bare | Red Blue Material | Layer Low | "},
      {"on a layer", [&] { engine::SelectObjectsOn(doc, {scene.GetLayer("Layer/Low")}); },
       "Cube In* Camera Bare | Red Blue Material | Layer Low | "},
      {"on layers", [&] { engine::SelectObjectsOn(doc, Layers(scene)); },
       "Cube* In* Camera Bare | Red Blue Material | Layer Low | "},
      {"materials",
       [&] {
         engine::SelectMaterials(doc, {scene.GetMaterial("Red")});
         engine::SelectMaterials(doc, {scene.GetMaterial("Blue"), scene.GetMaterial("Material")});
       },
       "Cube* In* Camera Bare | Red Blue* Material* | Layer Low | "},
      {"layers",
       [&] {
         engine::SelectLayers(doc, {scene.GetLayer("Layer")});
         engine::SelectLayers(doc, {scene.GetLayer("Layer/Low")});
       },
       "Cube* In* Camera Bare | Red Blue* Material* | Layer Low* | "},
      {"only one",
       [&] {
         engine::SelectOnly(doc, {scene.GetObject("Camera"), scene.GetObject("Cube")});
       },
       "Cube* In Camera* Bare | Red Blue* Material* | Layer Low* | "},
  };
  for (const Choice& one : choices) {
    one.choose();
    const std::string list = ListOf(doc);
    EXPECT_EQ(list.substr(0, list.rfind('|') + 2), one.list) << one.what;
  }
  EXPECT_TRUE(IsAlone(scene, "Cube"));
}

TEST(OneStep, TakesOfWhatLiesInOneAnotherTheTopmost) {
  SceneBuilder scene;
  scene.Object("A/B/C/D").Object("A/B/E").Object("F/G");
  const auto topmost = [&](std::initializer_list<const char*> paths) {
    engine::Elements all;
    for (const char* path : paths) all.push_back(scene.GetObject(path));
    std::string names;
    for (const BaseList2D* one : engine::Topmost(all)) names += one->GetName().ToUtf8() + " ";
    return names;
  };
  EXPECT_EQ(topmost({"A/B/C/D", "A/B/E", "A/B/C", "F/G"}), "E C G ");
  EXPECT_EQ(topmost({"A/B/C/D", "A/B/E", "A"}), "A ");
  EXPECT_EQ(topmost({"F/G", "A/B/C/D", "A/B/E"}), "G D E ");
}

}  // namespace
