// Stagemarks that the programs read from a scene are those that the plug-in keeps there.
#include "engine/states/StoredStates.h"

#include <gtest/gtest.h>

#include "engine/scene/NodeIds.h"
#include "engine/states/RecordedParts.h"
#include "source/Stagemarks/keys/ElementKeys.h"
#include "source/Stagemarks/keys/FileNames.h"
#include "source/Stagemarks/keys/Options.h"
#include "source/Stagemarks/keys/PluginIds.h"
#include "source/Stagemarks/keys/TagTypes.h"
#include "tests/support/SceneBuilder.h"

namespace {

TEST(StoredStates, HaveThePlugInsNumbers) {
  const std::pair<host::LONG, host::LONG> numbers[] = {
      {engine::kStagemarksId, stagemarks::kRecordStore},
      {engine::kStoredEntries, stagemarks::kListStore},
      {engine::kStoredOptions, stagemarks::kPreferences},
      {engine::kStoredOptionsSaved, stagemarks::kChoiceSaved},
      {engine::kStoredListBuilt, stagemarks::kListBuilt},
      {engine::kStoredName, stagemarks::kName},
      {engine::kStoredDate, stagemarks::kDate},
      {engine::kStoredYear, stagemarks::kYear},
      {engine::kStoredYear + engine::kStoredDateFields - 1, stagemarks::kSecond},
      {engine::kStoredCurrent, stagemarks::kCurrent},
      {engine::kStoredSettings, stagemarks::kRender},
      {engine::kStoredSettings, stagemarks::kRenderLink},
      {engine::kStoredLayers, stagemarks::kLayers},
      {engine::kStoredLayerLink, stagemarks::kLayerLink},
      {engine::kStoredLayerFlags, stagemarks::kLayerFlags.front().key},
      {engine::kStoredLayerFlags + 8, stagemarks::kLayerFlags.back().key},
      {engine::kStoredCamera, stagemarks::kCamera},
      {engine::kStoredCameraLink, stagemarks::kCameraLink},
      {engine::kStoredObjects, stagemarks::kObjects},
      {engine::kStoredObjectLink, stagemarks::kObjectLink},
      {engine::kStoredEditorMode, stagemarks::kEditorMode},
      {engine::kStoredRenderMode, stagemarks::kRenderMode},
      {engine::kStoredDeformMode, stagemarks::kDeformMode},
      {engine::kStoredTags, stagemarks::kTags},
      {engine::kStoredTagLink, stagemarks::kTagLink},
      {engine::kStoredMaterialLink, stagemarks::kMaterialLink}};
  for (const auto& [here, there] : numbers) EXPECT_EQ(here, there);
  EXPECT_STREQ(engine::kSideFolderEnding, stagemarks::kSideFolderEnding);
  EXPECT_EQ(engine::kPreviewEnding, std::string(".") + stagemarks::kPreviewSuffix);
  for (std::size_t i = 0; i < engine::kCompositingParameters.size(); ++i) {
    EXPECT_EQ(engine::kCompositingParameters[i].parameter, stagemarks::kCompositing[i].parameter);
    EXPECT_EQ(engine::kCompositingParameters[i].key, stagemarks::kCompositing[i].key);
  }
}

// Each option with its label, and the tags that it is about.
TEST(StoredStates, HaveThePlugInsParts) {
  for (const stagemarks::OptionRow& option : stagemarks::kOptions) {
    const engine::PartRow* part = engine::FindPartByLabel(option.label);
    ASSERT_TRUE(part) << option.label;
    EXPECT_EQ(part->option, option.id);
    EXPECT_EQ(&engine::RowOf(part->part), part);
  }
  for (const stagemarks::TagTypeRow& row : stagemarks::kTagTypes) {
    const engine::PartRow* part = engine::FindPartOfTag(row.type);
    ASSERT_TRUE(part) << row.type;
    const auto& option = stagemarks::kOptions[stagemarks::IndexOf(row.option)];
    EXPECT_EQ(part->option, option.id);
  }
}

// Of several with one name it is the one that loading finds: by its place in the list, whose ID may
// be another.
TEST(StoredStates, AreFoundByNameAsLoadingFindsThem) {
  struct Case {
    std::vector<std::pair<host::LONG, const char*>> entries;  // own ID, name
    bool hasNote;
    host::LONG loaded;
  };
  const Case cases[] = {{{{0, "Day"}, {1, "Twin"}, {2, "Twin"}}, true, 1},
                        {{{0, "Twin"}, {1, "Day"}, {2, "Twin"}}, true, 0},
                        {{{2, "Twin"}, {1, "Day"}, {0, "Twin"}}, true, 2},
                        {{{1, "Twin"}, {0, "Day"}}, false, 1},
                        {{{0, "Day"}, {1, "Dusk"}}, true, 0}};
  for (const Case& c : cases) {
    tests::SceneBuilder scene;
    host::BaseContainer entries;
    std::vector<engine::StoredState> states;
    for (const auto& [id, name] : c.entries) {
      host::BaseContainer entry(id);
      entry.SetString(stagemarks::kName, name);
      entries.SetContainer(entries.GetCount(), entry);
      states.emplace_back();
      states.back().id = id;
      states.back().name = name;
    }
    if (c.hasNote) entries.SetBool(stagemarks::kListBuilt, true);
    scene.Doc().GetDataInstance()->SetContainer(stagemarks::kListStore, entries);
    EXPECT_EQ(engine::LoadedId(scene.Doc(), "Twin"), c.loaded);
    const engine::StoredState* found = engine::FindState(scene.Doc(), states, "Twin");
    EXPECT_EQ(found ? found->id : 0, c.loaded);
  }
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
