// What the programs read of the Stagemarks in a scene is what the plug-in keeps there.
#include "engine/states/StoredStates.h"

#include <gtest/gtest.h>

#include "engine/scene/NodeIds.h"
#include "source/Stagemarks/keys/ElementKeys.h"
#include "source/Stagemarks/keys/PluginIds.h"
#include "tests/support/SceneBuilder.h"

namespace {

TEST(StoredStates, HaveThePlugInsNumbers) {
  EXPECT_EQ(engine::kStagemarksId, stagemarks::kPluginId);
  EXPECT_EQ(engine::kStoredName, stagemarks::kName);
  EXPECT_EQ(engine::kStoredSettings, stagemarks::kRender);
  EXPECT_EQ(engine::kStoredSettings, stagemarks::kRenderLink);
}

// Records with settings, without any, with settings that are gone, and something else in between.
TEST(StoredStates, TellWhoseRenderSettingsAreWhose) {
  tests::SceneBuilder scene;
  scene.Settings("Own").Settings("Day's").Settings("Night's");
  host::BaseContainer records;
  const auto add = [&](host::LONG id, const char* name, const host::BaseList2D* settings) {
    host::BaseContainer kept;
    kept.SetLink(stagemarks::kRenderLink, settings);
    host::BaseContainer record;
    record.SetString(stagemarks::kName, name);
    record.SetContainer(stagemarks::kRender, kept);
    records.SetContainer(id, record);
  };
  add(0, "Day", scene.GetSettings("Day's"));
  add(1, "Dusk", nullptr);
  records.SetLong(2, 5);
  records.SetContainer(3, {});
  add(4, "Night", scene.GetSettings("Night's"));
  add(5, "Odd", scene.Material("Red").GetMaterial("Red"));
  scene.Doc().GetDataInstance()->SetContainer(stagemarks::kPluginId, records);
  const engine::SettingsOfStates expected = {
      {engine::IdOf(*scene.GetSettings("Day's")), "Day"},
      {engine::IdOf(*scene.GetSettings("Night's")), "Night"}};
  EXPECT_EQ(engine::FindSettingsOfStates(&scene.Doc()), expected);
  EXPECT_TRUE(engine::FindSettingsOfStates(nullptr).empty());
}

}  // namespace
