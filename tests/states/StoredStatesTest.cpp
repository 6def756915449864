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
#include "tests/states/Stage.h"

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

TEST(StoredStates, DatesAreReadAndWritten) {
  const tests::CentralEurope zone;
  using Date = engine::StoredDate;
  struct Case {
    Date date;
    const char* text;
    const char* withZone;
  };
  const Case cases[] = {
      {Date{{2026, 3, 5, 14, 7, 9}}, "2026-03-05 14:07:09", "2026-03-05T14:07:09+01:00"},
      {Date{{2026, 7, 31, 23, 59, 58}}, "2026-07-31 23:59:58", "2026-07-31T23:59:58+02:00"},
      {Date{{1, 2, 3, 4, 5, 6}}, "0001-02-03 04:05:06", "0001-02-03T04:05:06+01:00"},
      {Date{{9999, 12, 31, 0, 0, 0}}, "9999-12-31 00:00:00", "9999-12-31T00:00:00+01:00"},
      // Skipped by the change to summer time.
      {Date{{2026, 3, 29, 2, 30, 0}}, "2026-03-29 02:30:00", nullptr},
      {Date{{10000, 1, 1, 0, 0, 0}}, "10000-01-01 00:00:00", ""},
      {Date{{0, 1, 1, 0, 0, 1}}, "0000-01-01 00:00:01", ""},
      {Date{{2026, 2, 30, 1, 1, 1}}, "2026-02-30 01:01:01", ""},
      {Date{{2026, 13, 1, 1, 1, 1}}, "2026-13-01 01:01:01", ""},
      {Date{{2026, 1, 1, 1, 60, 1}}, "2026-01-01 01:60:01", ""},
      {Date{{2026, 1, 1, 1, 1, 61}}, "2026-01-01 01:01:61", ""},
      {Date{}, "", ""}};
  for (const Case& c : cases) {
    EXPECT_EQ(c.date.Text(), c.text);
    EXPECT_EQ(Date::FromText(c.text), c.date) << c.text;
    if (c.withZone) {
      EXPECT_EQ(c.date.WithZone(), c.withZone) << c.text;
    } else {
      EXPECT_NE(c.date.WithZone(), "") << c.text;
    }
  }
  for (const char* none : {"2026-03-05", "2026-3-5 14:07:09", "2026-03-05 14:07:09 ", "today"})
    EXPECT_EQ(Date::FromText(none), Date()) << none;
}

TEST(StoredStates, PreviewsLieBesideTheScene) {
  tests::SceneBuilder scene;
  EXPECT_EQ(engine::SideFolderOf(scene.Doc()), "");
  scene.Doc().SetDocumentPath(host::Filename("/scenes"));
  scene.Doc().SetDocumentName(host::Filename("room.v2.c4d"));
  EXPECT_EQ(engine::SideFolderOf(scene.Doc()), "/scenes/room.v2_SM");
  EXPECT_EQ(engine::PreviewFileIn("/a_SM", "Day"), "/a_SM/Day.tif");
  for (const char* name : {"", "a/b", "a\\b"}) EXPECT_EQ(engine::PreviewFileIn("/a_SM", name), "");
  EXPECT_EQ(engine::PreviewFileIn("", "Day"), "");
}

// Records, list entries, both and what is neither.
TEST(StoredStates, AreReadInTheOrderOfTheirRecordsAndListedByName) {
  tests::SceneBuilder scene;
  host::BaseContainer records;
  host::BaseContainer entries;
  const auto one = [](host::LONG id, const char* name, bool current = false) {
    host::BaseContainer date;
    date.SetLong(stagemarks::kYear, 2020 + id);
    date.SetLong(stagemarks::kSecond, 7);
    host::BaseContainer data(id);
    data.SetString(stagemarks::kName, name);
    data.SetContainer(stagemarks::kDate, date);
    if (current) data.SetBool(stagemarks::kCurrent, true);
    return data;
  };
  records.SetContainer(4, one(4, "kept name"));
  records.SetContainer(1, one(1, "Twin"));
  records.SetContainer(2, {});
  records.SetContainer(6, one(6, "Not listed"));
  entries.SetContainer(1, one(1, "Twin", true));
  entries.SetContainer(4, one(5, "beta"));
  entries.SetContainer(3, one(3, "Twin", true));
  entries.SetContainer(2, {});
  entries.SetContainer(9, one(9, "Alpha"));
  scene.Doc().GetDataInstance()->SetContainer(stagemarks::kPluginId, records);
  scene.Doc().GetDataInstance()->SetContainer(stagemarks::kListStore, entries);
  const auto text = [](const std::vector<engine::StoredState>& states) {
    std::string lines;
    for (const engine::StoredState& state : states)
      lines += std::to_string(state.id) + " " + state.name + (state.current ? "*" : "") +
               (state.hasRecord ? " record" : "") + (state.hasEntry ? " entry " : " ") +
               std::to_string(state.date.fields[0]) + "/" + std::to_string(state.date.fields[5]) +
               " " + std::to_string(state.record.GetId()) + "\n";
    return lines;
  };
  EXPECT_EQ(text(engine::ReadStates(scene.Doc())),
            "4 beta record entry 2025/7 4\n"
            "1 Twin* record entry 2021/7 1\n"
            "6 Not listed record 2026/7 6\n"
            "3 Twin* entry 2023/7 0\n"
            "9 Alpha entry 2029/7 0\n");
  EXPECT_EQ(text(engine::ListedStates(scene.Doc())),
            "9 Alpha entry 2029/7 0\n"
            "1 Twin* record entry 2021/7 1\n"
            "3 Twin* entry 2023/7 0\n"
            "4 beta record entry 2025/7 4\n");
}

}  // namespace
