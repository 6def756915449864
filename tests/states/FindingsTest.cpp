// Each kind of fault, planted once, is found once and as nothing else; mending takes it away and
// leaves what loading brings back.
#include "engine/states/Findings.h"

#include <filesystem>
#include <functional>

#include "engine/outside/RealFileSystem.h"
#include "engine/outside/Services.h"
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
