// A file with states at the desktop: they come in as Stagemarks, and a newer file is brought into
// the scene in one undo step without disturbing them.
#include <QStatusBar>
#include <nlohmann/json.hpp>

#include "engine/undo/Undo.h"
#include "program/desktop/menus/UpdateFromFile.h"
#include "tests/desktop/States.h"

namespace {

using desk::AnswerNext;
using desk::CountStates;
using desk::Desk;
using desk::Scene;
using nlohmann::json;

class ChairDesk : public Desk {
 public:
  // A triangle in two colors; nothing is left out of it.
  std::string Write(double height) const {
    const json mapping = {{"material", 1}, {"variants", {1}}};
    const json part = {{"attributes", {{"POSITION", 0}}},
                       {"material", 0},
                       {"extensions", {{"KHR_materials_variants", {{"mappings", {mapping}}}}}}};
    const json file = {
        {"asset", {{"version", "2.0"}}},
        {"extensionsUsed", {"KHR_materials_variants"}},
        {"extensions",
         {{"KHR_materials_variants", {{"variants", {{{"name", "Red"}}, {{"name", "Blue"}}}}}}}},
        {"buffers",
         {{{"byteLength", 36},
           {"uri",
            "data:application/octet-stream;base64,"
            "AAAAAAAAAAAAAAAAAACAPwAAAAAAAAAAAAAAAAAAgD8AAAAA"}}}},
        {"bufferViews", {{{"buffer", 0}, {"byteLength", 36}}}},
        {"accessors",
         {{{"bufferView", 0}, {"componentType", 5126}, {"count", 3}, {"type", "VEC3"}}}},
        {"materials", {{{"name", "Red paint"}}, {{"name", "Blue paint"}}}},
        {"meshes", {{{"primitives", {part}}}}},
        {"nodes", {{{"name", "Chair"}, {"mesh", 0}, {"translation", {0, height, 0}}}}},
        {"scenes", {{{"nodes", {0}}}}}};
    tests::WriteText(Folder() + "/chair.gltf", file.dump());
    return Folder() + "/chair.gltf";
  }
  QString Status() { return Window().statusBar()->currentMessage(); }
};

TEST(ImportedStates, BecomeStagemarksWhenTheFileIsOpened) {
  ChairDesk desk;
  ASSERT_TRUE(desk.Window().Commands().Open(desk.Write(0)));
  Desk::Rest();
  EXPECT_EQ(CountStates(desk), 2);
  EXPECT_TRUE(desk.Status().contains("2 Stagemarks: \"Red\" and \"Blue\""))
      << desk.Status().toStdString();
  EXPECT_FALSE(Scene().GetChanged());
  EXPECT_FALSE(engine::CanUndo(Scene()));
  EXPECT_TRUE(pictures::Write(desk.Window(), "imported-states"));
}

TEST(ImportedStates, StayWhenTheSceneIsUpdatedFromItsFile) {
  ChairDesk desk;
  ASSERT_TRUE(desk.Window().Commands().Open(desk.Write(0)));
  desktop::UpdateFromFile(desk.Window(), desk.Write(2));
  Desk::Rest();
  EXPECT_TRUE(desk.Status().startsWith("Updated from \"chair.gltf\": 1 object changed"))
      << desk.Status().toStdString();
  EXPECT_EQ(Scene().GetFirstObject()->GetMl().off.y, 200);
  EXPECT_EQ(CountStates(desk), 2);
  EXPECT_EQ(engine::UndoName(Scene()), "Update from File");
  EXPECT_TRUE(desk.App().Undo());
  EXPECT_EQ(Scene().GetFirstObject()->GetMl().off.y, 0);
  AnswerNext([](QDialog& box) { box.accept(); });
  desktop::UpdateFromFile(desk.Window(), desk.Folder() + "/none.gltf");
}

}  // namespace
