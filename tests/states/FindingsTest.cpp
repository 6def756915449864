// Each kind of fault, planted once, is found once and as nothing else; mending takes it away and
// leaves what loading brings back.
#include "engine/states/Findings.h"

#include <chrono>
#include <ctime>
#include <filesystem>
#include <functional>
#include <tuple>

#include "engine/outside/RealFileSystem.h"
#include "engine/outside/Services.h"
#include "engine/states/FieldText.h"
#include "engine/states/RecordList.h"
#include "tests/states/Stage.h"

namespace {

using tests::Stage;

struct Fault {
  const char* code;
  std::function<void(Stage&)> plant;
  bool mended;  // by FixFindings
};

void EditStore(Stage& stage, host::LONG store,
               const std::function<void(host::BaseContainer&)>& edit) {
  host::BaseContainer data = stage.Doc().GetDataInstance()->GetContainer(store);
  edit(data);
  stage.Doc().GetDataInstance()->SetContainer(store, data);
}

template <class T>
void Delete(T* element) {
  T::Free(element);
}

// As only an edit from outside does it: deleting leaves something under the ID.
void TakeOut(Stage& stage, host::LONG id) {
  for (const host::LONG store : {engine::kStagemarksId, engine::kStoredEntries})
    EditStore(stage, store, [id](auto& data) { data.RemoveData(id); });
  Delete(stage.Build().GetSettings(id == 0 ? "Day" : "Night"));
}

// A scene with two states that differ, saved.
void Prepare(Stage& stage) {
  stage.Build().LookThrough("Near");
  stage.Record("Day");
  stage.Build().Modes("Object 1", host::MODE_OFF, host::MODE_OFF);
  stage.Record("Night");
  stage.SaveAs("room.c4d");
}

void RecordAlike(Stage& stage) {
  stage.Load("Night");
  stage.Record("Again");
}

const Fault kFaults[] = {
    {"record-missing",
     [](Stage& stage) {
       EditStore(stage, engine::kStagemarksId, [](auto& store) { store.RemoveData(1); });
     },
     true},
    {"entry-missing",
     [](Stage& stage) {
       EditStore(stage, engine::kStoredEntries, [](auto& store) { store.RemoveData(1); });
     },
     true},
    {"hidden-by-id", [](Stage& stage) { TakeOut(stage, 0); }, true},
    {"name-twice",
     [](Stage& stage) {
       for (const host::LONG store : {engine::kStagemarksId, engine::kStoredEntries}) {
         EditStore(stage, store, [](auto& data) {
           data.GetContainerInstance(1)->SetString(engine::kStoredName, "Day");
         });
       }
     },
     false},
    {"camera-gone", [](Stage& stage) { Delete(stage.Build().GetObject("Near")); }, false},
    {"settings-gone", [](Stage& stage) { Delete(stage.Build().GetSettings("Day")); }, false},
    {"material-gone",
     [](Stage& stage) {
       static_cast<host::TextureTag*>(stage.Build().GetTag("Object 3", host::Ttexture))
           ->SetMaterial(stage.Build().GetMaterial("Blue"));
       stage.Answer(true);
       stage.Record("Day");
       Delete(stage.Build().GetMaterial("Blue"));
     },
     false},
    {"file-name-clash",
     [](Stage& stage) {
       stage.Build().Modes("Object 2", host::MODE_OFF, host::MODE_OFF);
       stage.Record("DAY");
     },
     false},
    {"file-name-unfit",
     [](Stage& stage) {
       stage.Build().Modes("Object 2", host::MODE_OFF, host::MODE_OFF);
       stage.Record("Day/Noon");
     },
     false},
    {"equal-states", RecordAlike, false},
    {"not-in-any-state", [](Stage& stage) { stage.Build().Object("New"); }, false},
    {"not-in-some-states",
     [](Stage& stage) {
       stage.Build().Object("New");
       stage.Answer(true);
       stage.Record("Day");
     },
     false},
    {"link-gone", [](Stage& stage) { Delete(stage.Build().GetObject("Wide")); }, true},
    {"settings-unused", [](Stage& stage) { stage.Build().Settings("Day"); }, false},
    {"texture-missing", [](Stage&) {}, false},
};

std::multiset<std::string> CodesOf(Stage& stage, const std::vector<std::string>& textures = {}) {
  std::multiset<std::string> codes;
  for (const engine::Finding& finding : engine::FindFindings(stage.Doc(), nullptr, textures))
    codes.insert(finding.kind->code);
  return codes;
}

TEST(Findings, AreNoneInACleanScene) {
  Stage stage;
  EXPECT_TRUE(CodesOf(stage).empty());
  Prepare(stage);
  EXPECT_TRUE(CodesOf(stage).empty());
}

TEST(Findings, NameEachFaultByItsCode) {
  for (const Fault& fault : kFaults) {
    SCOPED_TRACE(fault.code);
    Stage stage;
    Prepare(stage);
    fault.plant(stage);
    const std::string code = fault.code;
    std::multiset<std::string> codes =
        CodesOf(stage, code == "texture-missing" ? std::vector<std::string>{"wood.png"}
                                                 : std::vector<std::string>());
    EXPECT_GE(codes.count(code), 1u);
    std::set<std::string> kinds(codes.begin(), codes.end());
    // Deleting an element leaves records of it, too.
    if (code == "camera-gone") kinds.erase("link-gone");
    if (code == "record-missing") kinds.erase("settings-unused");
    EXPECT_EQ(kinds, std::set<std::string>{code});
    const engine::FindingKind* kind = engine::FindFindingKind(code);
    ASSERT_TRUE(kind);
    EXPECT_EQ(kind->fixable, fault.mended);
    const engine::Result<std::size_t> fixed = engine::FixFindings(stage.Doc(), *kind);
    EXPECT_EQ(fixed.Ok(), fault.mended) << fixed.Message();
    if (!fault.mended) continue;
    EXPECT_GT(fixed.Value(), 0u);
    EXPECT_EQ(CodesOf(stage).count(code), 0u);
    EXPECT_EQ(engine::FixFindings(stage.Doc(), *kind).Value(), 0u);
  }
}

// Everything that is said, in its order.
std::string Said(Stage& stage, engine::FileSystem* files = nullptr) {
  std::string text;
  for (const engine::Finding& one : engine::FindFindings(stage.Doc(), files, {"wood.png"}, 2)) {
    text += std::string(one.kind->code) + " | " + one.state + " | " + one.place + " | " + one.text +
            (one.element ? " | " + engine::ElementPath(stage.Doc(), one.element) : "") +
            (one.count > 1 ? " x" + std::to_string(one.count) : "") + "\n";
  }
  return text;
}

TEST(Findings, SayWhatIsWrongWhereAndHowOften) {
  Stage stage(0, 3);
  Prepare(stage);
  stage.Record("day");
  for (int i = 0; i < 4; ++i) stage.Build().Cube("New " + std::to_string(i));
  stage.Build().Texture("New 0", "Blue").Layer("Late");
  stage.Record("Day\\Noon");
  stage.Build().Cube("Nobody's");
  static_cast<host::TextureTag*>(stage.Build().GetTag("New 0", host::Ttexture))
      ->SetMaterial(stage.Build().GetMaterial("Red"));
  Delete(stage.Build().GetMaterial("Blue"));
  Delete(stage.Build().GetObject("Object 2"));
  Delete(stage.Build().GetLayer("Front/Left"));
  stage.Build().Settings("Night").Settings("By hand").Settings("day");
  host::RenderData* last = stage.Doc().GetFirstRenderData();
  while (last->GetNext()) last = last->GetNext();
  stage.Doc().SetActiveRenderData(last);
  EXPECT_EQ(Said(stage),
            "material-gone | Day\\Noon | Texture on New 0 | The material that it records for this "
            "tag is in the scene no more. | Texture on New 0\n"
            "texture-missing |  | wood.png | A texture of the scene is not there.\n"
            "file-name-clash | day |  | \"Day\" differs from it by the case of letters only.\n"
            "file-name-unfit | Day\\Noon |  | The name holds a slash or a backslash.\n"
            "link-gone | day |  | 1 of its 5 objects is in the scene no more.\n"
            "link-gone | day |  | 1 of its 3 layers is in the scene no more.\n"
            "link-gone | day |  | And 1 more of this kind.\n"
            "link-gone | Day\\Noon |  | 1 of its 9 objects is in the scene no more.\n"
            "link-gone | Day\\Noon |  | 1 of its 4 layers is in the scene no more.\n"
            "link-gone | Day\\Noon |  | And 1 more of this kind.\n"
            "link-gone | Day |  | 1 of its 5 objects is in the scene no more.\n"
            "link-gone | Day |  | 1 of its 3 layers is in the scene no more.\n"
            "link-gone | Day |  | And 1 more of this kind.\n"
            "link-gone | Night |  | 1 of its 5 objects is in the scene no more.\n"
            "link-gone | Night |  | 1 of its 3 layers is in the scene no more.\n"
            "link-gone | Night |  | And 1 more of this kind.\n"
            "not-in-some-states |  | New 0 | This object is known to 1 of 4 Stagemarks. | New 0\n"
            "not-in-some-states |  | New 1 | This object is known to 1 of 4 Stagemarks. | New 1\n"
            "not-in-some-states |  |  | And 4 more of this kind. x4\n"
            "not-in-any-state |  | Nobody's | No Stagemark knows this object. | Nobody's\n"
            "equal-states | day |  | It says the same as \"Night\".\n"
            "settings-unused |  | Night | These render settings have the name of a Stagemark that "
            "does not use them. | Night\n");
}

// A recording of fewer elements over a larger one.
TEST(Findings, SayWhichValuesOfARepeatedRecordDisagree) {
  Stage stage(0, 3);
  stage.Build().Modes("Near", host::MODE_ON, host::MODE_ON);
  stage.Record("Day");
  Delete(stage.Build().GetObject("Object 1"));
  stage.Build().Modes("Near", host::MODE_OFF, host::MODE_ON, false);
  stage.Answer(true);
  stage.Record("Day");
  EXPECT_EQ(Said(stage),
            "recorded-twice | Day | Near | It records this object 2 times; loading applies the "
            "last. Editor mode Off, then On, Deform mode Off, then On. | Near\n"
            "recorded-twice | Day | Texture on Object 2 | It records this tag 2 times; loading "
            "applies the last. The values agree. | Texture on Object 2\n"
            "recorded-twice | Day |  | And 2 more of this kind. x2\n"
            "texture-missing |  | wood.png | A texture of the scene is not there.\n");
}

// What is mended holds what it held.
TEST(Findings, MendedStoresKeepTheirContents) {
  struct Mended {
    const char* code;
    std::function<void(Stage&)> plant;
    std::size_t count;
    const char* change;
  };
  const auto remove = [](host::LONG store, host::LONG id) {
    return [=](Stage& stage) { EditStore(stage, store, [=](auto& data) { data.RemoveData(id); }); };
  };
  const Mended cases[] = {
      {"entry-missing", remove(engine::kStoredEntries, 1), 1,
       "0 Day dated recorded listed 5 3 9\n"
       "1 Night dated recorded 5 3 9\n"
       "2 Dusk* dated recorded listed 5 3 9\n"
       "3 entries, built\n"
       "then\n"
       "0 Day dated recorded listed 5 3 9\n"
       "1 Night dated recorded listed 5 3 9\n"
       "2 Dusk* dated recorded listed 5 3 9\n"
       "4 entries, built"},
      {"record-missing", remove(engine::kStagemarksId, 2), 1,
       "0 Day dated recorded listed 5 3 9\n"
       "1 Night dated recorded listed 5 3 9\n"
       "2 Dusk* dated listed 0 0 0\n"
       "4 entries, built\n"
       "then\n"
       "0 Day dated recorded listed 5 3 9\n"
       "1 Night dated recorded listed 5 3 9\n"
       "3 entries, built"},
      {"hidden-by-id", [](Stage& stage) { TakeOut(stage, 0); }, 4,
       "1 Night dated recorded listed 5 3 9\n"
       "2 Dusk* dated recorded listed 5 3 9\n"
       "3 entries, built\n"
       "then\n"
       "0 Night dated recorded listed 5 3 9\n"
       "1 Dusk* dated recorded listed 5 3 9\n"
       "3 entries, built"},
      {"recorded-twice",
       [](Stage& stage) {
         Delete(stage.Build().GetObject("Object 1"));
         stage.Answer(true);
         stage.Record("Dusk");
       },
       1,
       "0 Day dated recorded listed 5 3 9\n"
       "1 Night dated recorded listed 5 3 9\n"
       "2 Dusk* dated recorded listed 5 3 9\n"
       "4 entries, built\n"
       "then\n"
       "0 Day dated recorded listed 5 3 9\n"
       "1 Night dated recorded listed 5 3 9\n"
       "2 Dusk* dated recorded listed 4 3 6\n"
       "4 entries, built"},
      {"link-gone", [](Stage& stage) { Delete(stage.Build().GetObject("Object 0")); }, 3,
       "0 Day dated recorded listed 5 3 9\n"
       "1 Night dated recorded listed 5 3 9\n"
       "2 Dusk* dated recorded listed 5 3 9\n"
       "4 entries, built\n"
       "then\n"
       "0 Day dated recorded listed 4 3 6\n"
       "1 Night dated recorded listed 4 3 6\n"
       "2 Dusk* dated recorded listed 4 3 6\n"
       "4 entries, built"},
  };
  for (const Mended& one : cases) {
    SCOPED_TRACE(one.code);
    Stage stage(0, 3);
    Prepare(stage);
    stage.Build().Modes("Object 2", host::MODE_OFF, host::MODE_OFF);
    stage.Record("Dusk");
    const auto states = [&] {
      std::string text;
      for (const engine::StoredState& state : engine::ReadStates(stage.Doc())) {
        text += std::to_string(state.id) + " " + state.name + (state.current ? "*" : "") + " " +
                (state.date == engine::StoredDate() ? "undated" : "dated") +
                (state.hasRecord ? " recorded" : "") + (state.hasEntry ? " listed" : "");
        for (const engine::ListRow& row : engine::kRecordLists) {
          const host::BaseContainer list = state.record.GetContainer(row.key);
          bool countsUp = true;
          for (host::LONG i = 0; i < list.GetCount(); ++i)
            countsUp = countsUp && list.GetIndexId(i) == i && list.GetContainer(i).GetId() == i;
          text += " " + std::to_string(list.GetCount()) + (countsUp ? "" : "?");
        }
        text += "\n";
      }
      const host::BaseContainer entries =
          stage.Doc().GetDataInstance()->GetContainer(engine::kStoredEntries);
      return text + std::to_string(entries.GetCount()) + " entries, " +
             (entries.GetBool(engine::kStoredListBuilt) ? "built" : "not built");
    };
    one.plant(stage);
    const std::string before = states();
    const engine::Result<std::size_t> fixed =
        engine::FixFindings(stage.Doc(), *engine::FindFindingKind(one.code));
    EXPECT_EQ(fixed.Value(), one.count);
    EXPECT_EQ(before + "\nthen\n" + states(), one.change);
  }
}

// Stores the objects' records of a Stagemark under keys in falling order; `gone`: without that
// many elements.
void TurnRound(Stage& stage, host::LONG id, host::LONG gone) {
  EditStore(stage, engine::kStagemarksId, [&](host::BaseContainer& store) {
    host::BaseContainer* record = store.GetContainerInstance(id);
    const host::BaseContainer before = record->GetContainer(engine::kStoredObjects);
    host::BaseContainer list;
    for (host::LONG i = before.GetCount(); i-- > 0;) {
      host::BaseContainer one = before.GetContainer(i);
      if (i < gone) engine::SetLinkId(one, engine::kStoredObjectLink, engine::NodeId{1} << 40);
      list.SetContainer(i, one);
    }
    record->SetContainer(engine::kStoredObjects, list);
  });
}

// Such lists are gathered anew for each look, one where the last one lay.
TEST(Findings, ListsInOtherOrdersAreToldApart) {
  Stage stage;
  Prepare(stage);
  stage.Record("Again");
  for (host::LONG id = 0; id < 3; ++id) TurnRound(stage, id, id);
  std::string text;
  for (const engine::Finding& finding : engine::FindFindings(stage.Doc(), nullptr, {})) {
    if (std::string(finding.kind->code) == "link-gone")
      text += finding.state + ": " + finding.text + "\n";
  }
  EXPECT_EQ(text,
            "Night: 1 of its 14 objects is in the scene no more.\n"
            "Again: 2 of its 14 objects are in the scene no more.\n");
  const engine::FindingKind& kind = *engine::FindFindingKind("link-gone");
  EXPECT_EQ(engine::FixFindings(stage.Doc(), kind).Value(), 2u);
  EXPECT_EQ(CodesOf(stage).count("link-gone"), 0u);
}

// Records that a recording of fewer elements leaves behind are found with the values that disagree;
// once they are mended, loading brings back the same as before.
TEST(Findings, RecordsOfOneElementBehindOneAnother) {
  Stage stage;
  Prepare(stage);
  host::BaseObject* camera = stage.Build().GetObject("Wide");
  Delete(stage.Build().GetObject("Object 11"));
  camera->SetRenderMode(host::MODE_OFF);
  stage.Record("Fewer");
  std::string text;
  for (const engine::Finding& finding : engine::FindFindings(stage.Doc(), nullptr, {})) {
    if (std::string(finding.kind->code) == "recorded-twice")
      text += finding.state + " " + finding.place + ": " + finding.text + "\n";
  }
  EXPECT_NE(text.find("Fewer Near: It records this object 2 times; loading applies the last."),
            std::string::npos)
      << text;
  const host::BaseContainer before = stage.State("Fewer").record;
  ASSERT_GT(engine::FixFindings(stage.Doc(), *engine::FindFindingKind("recorded-twice")).Value(),
            0u);
  EXPECT_FALSE(CodesOf(stage).contains("recorded-twice"));
  EXPECT_TRUE(engine::CompareStates(stage.Doc(), before, stage.State("Fewer").record).IsEmpty());
  stage.Load("Day");
  stage.Load("Fewer");
  EXPECT_TRUE(engine::CompareWithScene(stage.Doc(), before).IsEmpty());
}

// Numbered anew, each Stagemark is loaded by its own name.
TEST(Findings, HiddenStagemarksCanBeLoadedWhenMended) {
  Stage stage;
  Prepare(stage);
  stage.Build().Modes("Object 2", host::MODE_OFF, host::MODE_OFF);
  stage.Record("Dusk");
  TakeOut(stage, 0);
  EXPECT_EQ(CodesOf(stage), (std::multiset<std::string>{"hidden-by-id"}));
  ASSERT_TRUE(engine::FixFindings(stage.Doc(), *engine::FindFindingKind("hidden-by-id")).Ok());
  host::EventAdd();
  stage.Deliver();
  for (const char* name : {"Night", "Dusk"}) {
    stage.Load(name);
    EXPECT_TRUE(engine::CompareWithScene(stage.Doc(), stage.State(name).record).IsEmpty()) << name;
  }
}

// Beside a scene with a side folder: previews that are missing or older than their state.
TEST(Findings, TellOfPreviews) {
  Stage stage;
  Prepare(stage);
  engine::FileSystem& files = stage.App().GetServices().files;
  const std::string folder = stage.Folder() + "/room_SM";
  ASSERT_TRUE(files.MakeFolder(folder).Ok());
  const std::string_view bytes = "picture";
  ASSERT_TRUE(files.ReplaceFile(folder + "/Day.tif", std::span(&bytes, 1)).Ok());
  EditStore(stage, engine::kStoredEntries, [](auto& store) {
    store.GetContainerInstance(0)
        ->GetContainerInstance(engine::kStoredDate)
        ->SetLong(engine::kStoredYear, 9000);
  });
  std::multiset<std::string> codes;
  for (const engine::Finding& finding : engine::FindFindings(stage.Doc(), &files, {}))
    codes.insert(finding.kind->code + (" " + finding.state));
  EXPECT_EQ(codes, (std::multiset<std::string>{"preview-missing Night", "preview-old Day"}));
  // Where the system does not say what is there, nothing is missing.
  std::filesystem::remove_all(folder);
  std::filesystem::create_symlink("room_SM", folder);
  const std::size_t mark = stage.App().GetServices().ledger.Mark();
  EXPECT_TRUE(engine::FindFindings(stage.Doc(), &files, {}).empty());
  EXPECT_EQ(stage.App().GetServices().ledger.FailuresSince(mark).size(), 1u);
}

// To the second; the time of the file is one of this machine's zone.
TEST(Findings, APreviewIsOldFromOneSecondOn) {
  const tests::CentralEurope zone;
  Stage stage;
  Prepare(stage);
  const std::string folder = stage.Folder() + "/room_SM";
  engine::FileSystem& files = stage.App().GetServices().files;
  ASSERT_TRUE(files.MakeFolder(folder).Ok());
  for (const char* name : {"/Day.tif", "/Night.tif"})
    ASSERT_TRUE(files.ReplaceFile(folder + name, std::string_view("picture")).Ok());
  std::tm local{};
  std::tie(local.tm_year, local.tm_mon, local.tm_mday) = std::tuple(124, 4, 6);
  std::tie(local.tm_hour, local.tm_min, local.tm_sec, local.tm_isdst) = std::tuple(7, 8, 9, -1);
  const auto written = std::chrono::system_clock::from_time_t(std::mktime(&local));
  for (const char* name : {"/Day.tif", "/Night.tif"})
    std::filesystem::last_write_time(folder + name, std::chrono::file_clock::from_sys(written));
  for (const host::LONG second : {8, 9, 10}) {
    EditStore(stage, engine::kStoredEntries, [second](auto& store) {
      const host::LONG fields[] = {2024, 5, 6, 7, 8, 9};
      for (const host::LONG id : {0, 1}) {
        host::BaseContainer* date =
            store.GetContainerInstance(id)->GetContainerInstance(engine::kStoredDate);
        for (host::LONG i = 0; i < 6; ++i) date->SetLong(engine::kStoredYear + i, fields[i]);
        if (id == 0) date->SetLong(engine::kStoredYear + 5, second);
      }
    });
    std::string old;
    for (const engine::Finding& one : engine::FindFindings(stage.Doc(), &files, {}))
      old += one.kind->code + (" " + one.state);
    EXPECT_EQ(old, second > 9 ? "preview-old Day" : "") << second;
  }
}

// Of very many of one kind the first are told, and how many more there are.
TEST(Findings, SumUpWhatIsTooMuchToRead) {
  Stage stage;
  Prepare(stage);
  for (int i = 0; i < 30; ++i) stage.Build().Object("New " + std::to_string(i));
  const std::vector<engine::Finding> findings = engine::FindFindings(stage.Doc(), nullptr, {}, 5);
  ASSERT_EQ(findings.size(), 6u);
  EXPECT_EQ(findings.back().text, "And 25 more of this kind.");
}

}  // namespace
