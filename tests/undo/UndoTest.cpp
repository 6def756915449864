// Undo and redo, seen through dumps of the whole scene.
#include <gtest/gtest.h>

#include <functional>

#include "engine/scene/DocumentState.h"
#include "engine/scene/SceneDump.h"
#include "engine/undo/MoveNodes.h"
#include "engine/undo/Undo.h"
#include "engine/undo/UndoEntry.h"
#include "engine/undo/UndoHistory.h"
#include "host/Parameters.h"
#include "tests/support/SceneBuilder.h"

namespace {

using host::BaseContainer;
using host::BaseDocument;
using host::BaseObject;
using host::RenderData;
using tests::SceneBuilder;

const std::vector<std::string> kSame;

struct Scene : SceneBuilder {
  Scene() {
    Camera("Room/Cam")
        .Cube("Room/Box")
        .Cube("Room/Ball")
        .Object("Out")
        .Material("Red")
        .Material("Blue")
        .Material("Green");
    Layer("L")
        .Settings("HD")
        .Post("HD", 1, false)
        .Post("HD", 2)
        .Pass("HD", 3)
        .Settings("Other")
        .Post("Other", 9);
    Texture("Room/Box", "Red").Tag("Room/Box", host::Tcompositing).Select("Out").Active("HD");
  }
  std::string Dump() const { return engine::DumpDocument(Doc()); }
  host::TextureTag* Paint() const {
    return static_cast<host::TextureTag*>(GetTag("Room/Box", host::Ttexture));
  }
  bool Changing(void* element) const { return Doc().AddUndo(host::UNDO_CHANGE, element); }
  bool Deleting(void* element) const { return Doc().AddUndo(host::UNDO_DELETE, element); }
};

// One group that changes something; undone it is as before, done again as after.
void ExpectTakenBack(Scene& scene, const std::function<void(Scene&)>& change, const char* name) {
  SCOPED_TRACE(name);
  const std::string before = scene.Dump();
  scene.Doc().StartUndo();
  change(scene);
  scene.Doc().EndUndo();
  const std::string after = scene.Dump();
  EXPECT_NE(after, before) << "the case changes nothing";
  for (int round = 0; round < 2; ++round) {
    EXPECT_TRUE(scene.Doc().DoUndo());
    EXPECT_EQ(engine::DumpDifference(before, scene.Dump()), kSame);
    EXPECT_TRUE(scene.Doc().DoRedo());
    EXPECT_EQ(engine::DumpDifference(after, scene.Dump()), kSame);
  }
  EXPECT_TRUE(scene.Doc().DoUndo());
  EXPECT_EQ(engine::DumpDifference(before, scene.Dump()), kSame);
}

struct Case {
  const char* name;
  std::function<void(Scene&)> change;
};

void ChangeObject(Scene& s) {
  s.Changing(s.GetObject("Room/Box"));
  s.Modes("Room/Box", host::MODE_OFF, host::MODE_ON, false)
      .At("Room/Box", 1, 2, 3)
      .OnLayer("Room/Box", "L")
      .Select("Room/Box");
  s.GetObject("Room/Box")->GetDataInstance()->SetLong(1, 1);
  s.GetObject("Room/Box")->SetName("Crate");
}

void ChangeTags(Scene& s) {
  host::BaseTag* tag = s.GetTag("Room/Box", host::Tcompositing);
  s.Changing(tag);
  s.Changing(s.Paint());
  tag->GetDataInstance()->FlushAll();
  tag->GetDataInstance()->SetLink(40000, tag);
  s.Paint()->SetMaterial(s.GetMaterial("Blue"));
}

void ChangeLayer(Scene& s) {
  s.Changing(s.GetLayer("L"));
  host::LayerData flags;
  flags.solo = true;
  s.GetLayer("L")->SetLayerData(&s.Doc(), flags);
}

void LoadSettings(Scene& s) {
  RenderData* first = s.Doc().GetFirstRenderData();
  const host::String name = first->GetName();
  s.Changing(first);
  s.GetSettings("Other")->CopyTo(first, 0, nullptr);
  first->SetName(name);
  s.Doc().SetActiveRenderData(first);
}

void DeleteMaterials(Scene& s) {
  for (const char* name : {"Red", "Green"}) {
    host::BaseMaterial* material = s.GetMaterial(name);
    s.Deleting(material);
    host::BaseMaterial::Free(material);
  }
}

// Registered first and freed later, in another order, one inside the other.
void DeleteNested(Scene& s) {
  BaseObject* room = s.GetObject("Room");
  BaseObject* box = s.GetObject("Room/Box");
  s.Deleting(room);
  s.Deleting(box);
  BaseObject::Free(box);
  BaseObject::Free(room);
}

void InsertSubtree(Scene& s) {
  s.Object("New");
  s.Doc().AddUndo(host::UNDO_NEW, s.GetObject("New"));
  s.Cube("New/Inner").Tag("New/Inner", host::Tphong);
}

void ChangeThenDelete(Scene& s) {
  BaseObject* box = s.GetObject("Room/Box");
  s.Changing(box);
  box->SetName("Doomed");
  s.Deleting(box);
  BaseObject::Free(box);
}

void DeleteAllSettings(Scene& s) {
  while (s.Doc().GetFirstRenderData()->GetName() != "Render Settings" ||
         s.Doc().GetFirstRenderData()->GetNext()) {
    RenderData* settings = s.Doc().GetActiveRenderData();
    settings->SetName("old");
    s.Deleting(settings);
    RenderData::Free(settings);
  }
}

// Among each other, below each other, and below what was moved itself.
void MoveInAndOut(Scene& s) {
  const engine::UndoScope scope(s.Doc(), "Moves");
  BaseObject* box = s.GetObject("Room/Box");
  BaseObject* ball = s.GetObject("Room/Ball");
  BaseObject* out = s.GetObject("Out");
  EXPECT_TRUE(engine::MoveNodes(s.Doc(), {ball, box}, nullptr, out));
  EXPECT_TRUE(engine::MoveNodes(s.Doc(), {s.GetObject("Room"), out}, ball, nullptr));
  EXPECT_TRUE(
      engine::MoveNodes(s.Doc(), {box}, s.GetObject("Ball/Room"), s.GetObject("Ball/Room/Cam")));
}

TEST(Undo, TakesBackAndDoesAgain) {
  const Case cases[] = {
      {"object", ChangeObject},
      {"tags", ChangeTags},
      {"layer", ChangeLayer},
      {"render settings copied over", LoadSettings},
      {"scene camera alone", [](Scene& s) { s.LookThrough("Room/Cam"); }},
      {"active settings alone", [](Scene& s) { s.Active("Other"); }},
      {"materials deleted", DeleteMaterials},
      {"nested objects deleted", DeleteNested},
      {"subtree inserted", InsertSubtree},
      {"changed, then deleted", ChangeThenDelete},
      {"moved", MoveInAndOut},
      {"everything at once",
       [](Scene& s) {
         ChangeObject(s);
         s.GetObject("Room/Crate")->SetName("Box");
         ChangeTags(s);
         LoadSettings(s);
         DeleteMaterials(s);
         DeleteNested(s);
       }},
  };
  Scene scene;
  for (const Case& c : cases) ExpectTakenBack(scene, c.change, c.name);
}

TEST(Undo, SettingsThatStoodInForTheLastOnesGoAgain) {
  Scene scene;
  for (RenderData* s = scene.Doc().GetFirstRenderData(); s; s = s->GetNext()) s->SetName("old");
  ExpectTakenBack(scene, DeleteAllSettings, "all settings");
}

TEST(Undo, SameElementTwiceInAGroup) {
  Scene scene;
  ExpectTakenBack(
      scene,
      [](Scene& s) {
        BaseObject* box = s.GetObject("Room/Box");
        for (host::LONG i = 1; i < 4; ++i) {
          EXPECT_TRUE(s.Changing(box));
          box->GetDataInstance()->SetLong(5, i);
        }
      },
      "three entries");
}

TEST(Undo, BringsBackTheSameElementAndItsLinks) {
  Scene scene;
  BaseObject* box = scene.GetObject("Room/Box");
  host::BaseTag* tag = box->GetFirstTag();
  BaseContainer links;
  links.SetLink(1, box);
  links.SetLink(2, tag);
  scene.LookThrough("Room/Cam");
  scene.Doc().StartUndo();
  for (const char* path : {"Room/Box", "Room/Cam"}) {
    BaseObject* object = scene.GetObject(path);
    scene.Deleting(object);
    BaseObject::Free(object);
    EXPECT_EQ(object, nullptr);
  }
  scene.Doc().EndUndo();
  EXPECT_EQ(box->GetDocument(), nullptr) << "a parked element belongs to no document";
  EXPECT_EQ(links.GetLink(1, &scene.Doc()), nullptr);
  EXPECT_EQ(links.GetLink(2, &scene.Doc()), nullptr);
  EXPECT_EQ(scene.Doc().GetRenderBaseDraw()->GetSceneCamera(&scene.Doc()), nullptr);
  scene.Doc().DoUndo();
  EXPECT_EQ(links.GetLink(1, &scene.Doc()), box);
  EXPECT_EQ(links.GetLink(2, &scene.Doc()), tag);
  EXPECT_EQ(scene.Doc().GetRenderBaseDraw()->GetSceneCamera(&scene.Doc()),
            scene.GetObject("Room/Cam"));
}

TEST(Undo, GroupsGiveBackTheFrameRate) {
  Scene scene;
  scene.Doc().StartUndo();
  scene.Doc().SetFps(25);
  scene.Doc().EndUndo();
  ASSERT_TRUE(scene.Doc().DoUndo());
  EXPECT_EQ(scene.Doc().GetFps(), 30);
  ASSERT_TRUE(scene.Doc().DoRedo());
  EXPECT_EQ(scene.Doc().GetFps(), 25);
}

TEST(Undo, LinksToPostsSurviveTheCopyOver) {
  Scene scene;
  RenderData* first = scene.Doc().GetFirstRenderData();
  scene.Post("Render Settings", 7, false);
  BaseContainer links;
  links.SetLink(1, first->GetFirstVideoPost());
  scene.Doc().StartUndo();
  LoadSettings(scene);
  scene.Doc().EndUndo();
  EXPECT_EQ(links.GetLink(1, &scene.Doc()), nullptr);
  scene.Doc().DoUndo();
  EXPECT_EQ(links.GetLink(1, &scene.Doc()), first->GetFirstVideoPost());
}

TEST(Undo, GroupsHoldTogetherAndEmptyOnesAreNone) {
  Scene scene;
  BaseDocument& doc = scene.Doc();
  EXPECT_FALSE(scene.Changing(scene.GetObject("Out"))) << "outside a group";
  EXPECT_FALSE(doc.EndUndo());
  doc.StartUndo();
  EXPECT_TRUE(doc.EndUndo());
  EXPECT_FALSE(engine::CanUndo(doc));
  EXPECT_FALSE(doc.DoUndo());

  const std::string before = scene.Dump();
  doc.StartUndo();
  scene.Changing(scene.GetObject("Out"));
  scene.Modes("Out", host::MODE_ON, host::MODE_ON);
  doc.StartUndo();
  scene.Changing(scene.GetObject("Room"));
  scene.Modes("Room", host::MODE_ON, host::MODE_ON);
  doc.EndUndo();
  EXPECT_FALSE(doc.EndUndo()) << "opening an open group goes on with it";
  EXPECT_TRUE(doc.DoUndo());
  EXPECT_EQ(engine::DumpDifference(before, scene.Dump()), kSame);
  EXPECT_FALSE(doc.DoUndo());
}

TEST(Undo, AGroupLeftOpenIsClosedByUndo) {
  Scene scene;
  scene.Doc().StartUndo();
  scene.Changing(scene.GetObject("Out"));
  scene.GetObject("Out")->SetName("In");
  EXPECT_TRUE(engine::CanUndo(scene.Doc()));
  EXPECT_TRUE(scene.Doc().DoUndo());
  EXPECT_EQ(scene.GetObject("Out")->GetName(), "Out");
  EXPECT_FALSE(scene.Changing(scene.GetObject("Out")));
}

TEST(Undo, RefusesWhatIsNotAnElementOfTheDocument) {
  Scene scene, other;
  BaseDocument& doc = scene.Doc();
  BaseObject* loose = BaseObject::Alloc(host::Onull);
  doc.StartUndo();
  for (const host::LONG type : {host::UNDO_CHANGE, host::UNDO_NEW, host::UNDO_DELETE}) {
    EXPECT_FALSE(doc.AddUndo(type, nullptr));
    EXPECT_FALSE(doc.AddUndo(type, loose));
    EXPECT_FALSE(doc.AddUndo(type, other.GetObject("Out")));
    EXPECT_FALSE(doc.AddUndo(type, &doc)) << "document data is not undone";
  }
  EXPECT_FALSE(doc.AddUndo(4711, scene.GetObject("Out")));
  doc.EndUndo();
  EXPECT_FALSE(engine::CanUndo(doc));
  BaseObject::Free(loose);
}

TEST(Undo, ANewChangeDropsWhatCouldBeDoneAgain) {
  Scene scene;
  const auto rename = [&](const char* name) {
    engine::UndoScope scope(scene.Doc(), name);
    scene.Changing(scene.Doc().GetFirstObject());
    scene.Doc().GetFirstObject()->SetName(name);
  };
  rename("one");
  rename("two");
  scene.Doc().DoUndo();
  EXPECT_EQ(engine::UndoName(scene.Doc()), "one");
  EXPECT_EQ(engine::RedoName(scene.Doc()), "two");
  rename("three");
  EXPECT_FALSE(engine::CanRedo(scene.Doc()));
  EXPECT_FALSE(scene.Doc().DoRedo());
  EXPECT_EQ(scene.Doc().GetFirstObject()->GetName(), "three");
}

TEST(Undo, MarksTheDocumentChanged) {
  Scene scene;
  scene.Doc().StartUndo();
  ChangeObject(scene);
  scene.Doc().EndUndo();
  for (const bool undo : {true, false}) {
    engine::ClearChanged(scene.Doc());
    EXPECT_TRUE(undo ? scene.Doc().DoUndo() : scene.Doc().DoRedo());
    EXPECT_TRUE(scene.Doc().GetChanged());
  }
}

TEST(Undo, SkipsWhatWasDestroyedWithoutIt) {
  Scene scene;
  scene.Doc().StartUndo();
  scene.Changing(scene.GetObject("Room/Box"));
  scene.Changing(scene.GetObject("Out"));
  scene.GetObject("Out")->SetName("In");
  BaseObject* ball = scene.GetObject("Room/Ball");
  scene.Deleting(ball);
  BaseObject::Free(ball);
  scene.Doc().EndUndo();
  BaseObject* room = scene.GetObject("Room");
  BaseObject::Free(room);
  EXPECT_TRUE(scene.Doc().DoUndo());
  EXPECT_EQ(scene.GetObject("Out")->GetName(), "Out");
  EXPECT_TRUE(scene.Doc().DoRedo());
  EXPECT_EQ(scene.GetObject("In")->GetName(), "In");
}

// A, B, C and D stand in Room. One of them is deleted, then others go away or elsewhere: it comes
// back where its former neighbors tell, one before first.
TEST(Undo, FindsAPlaceAmongNeighborsThatMoved) {
  struct PlaceCase {
    const char* deleted;
    const char* away;    // destroyed
    const char* moved;   // into another object
    const char* toLast;  // moved to the end
    const char* order;
  };
  const PlaceCase cases[] = {{"C", "B", "", "", "ACD"},  {"C", "", "B", "", "ACD"},
                             {"A", "", "", "B", "CDAB"}, {"A", "B", "", "", "ACD"},
                             {"A", "", "B", "", "ACD"},  {"B", "", "", "A", "CDAB"},
                             {"B", "A", "", "C", "DBC"}, {"D", "C", "", "", "ABD"},
                             {"B", "A", "C", "", "DB"},  {"D", "", "C", "A", "BAD"}};
  for (const PlaceCase& c : cases) {
    SceneBuilder scene;
    BaseDocument& doc = scene.Doc();
    scene.Object("Other").Object("Room/A").Object("Room/B").Object("Room/C").Object("Room/D");
    BaseObject* const room = scene.GetObject("Room");
    const auto named = [&](const std::string& name) { return scene.GetObject("Room/" + name); };
    BaseObject* object = named(c.deleted);
    doc.StartUndo();
    doc.AddUndo(host::UNDO_DELETE, object);
    BaseObject::Free(object);
    doc.EndUndo();
    if (*c.away) {
      BaseObject* away = named(c.away);
      BaseObject::Free(away);
    }
    if (*c.moved) {
      BaseObject* moved = named(c.moved);
      moved->Remove();
      doc.AppendObject(moved, scene.GetObject("Other"));
    }
    if (*c.toLast) {
      BaseObject* last = named(c.toLast);
      last->Remove();
      doc.AppendObject(last, room);
    }
    EXPECT_TRUE(doc.DoUndo());
    std::string order;
    for (BaseObject* child = room->GetDown(); child; child = child->GetNext())
      order += child->GetName().ToUtf8();
    EXPECT_EQ(order, c.order) << c.deleted << " " << c.away << " " << c.moved << " " << c.toLast;
  }
}

TEST(Undo, FreeingAfterTheGroupDestroys) {
  Scene scene;
  BaseObject* out = scene.GetObject("Out");
  scene.Doc().StartUndo();
  scene.Deleting(out);
  scene.Doc().EndUndo();
  BaseObject::Free(out);
  EXPECT_FALSE(scene.Doc().DoUndo());
}

std::string NamesOf(const std::vector<std::string>& names) {
  std::string all;
  for (const std::string& name : names) all += name + ";";
  return all;
}

TEST(Undo, NamesAllSteps) {
  Scene scene;
  EXPECT_EQ(NamesOf(engine::DoneNames(scene.Doc())) + NamesOf(engine::UndoneNames(scene.Doc())),
            "");
  for (const char* name : {"one", "two", "three"}) {
    const engine::UndoScope scope(scene.Doc(), name);
    scene.Changing(scene.GetObject("Out"));
    scene.GetObject("Out")->SetName(name);
    EXPECT_TRUE(NamesOf(engine::DoneNames(scene.Doc())).ends_with(std::string(name) + ";"));
    scene.GetObject(name)->SetName("Out");
  }
  scene.Doc().DoUndo();
  scene.Doc().DoUndo();
  EXPECT_EQ(NamesOf(engine::DoneNames(scene.Doc())), "one;");
  EXPECT_EQ(NamesOf(engine::UndoneNames(scene.Doc())), "two;three;");
}

TEST(Undo, StepsAreLimited) {
  Scene scene;
  for (int i = 0; i < 150; ++i) {
    engine::UndoScope scope(scene.Doc(), "step");
    SceneBuilder(scene.Doc()).Object("Made " + std::to_string(i));
    BaseObject* last = scene.GetObject("Made " + std::to_string(i));
    scene.Doc().AddUndo(host::UNDO_NEW, last);
    scene.Deleting(last);
    BaseObject::Free(last);
  }
  int steps = 0;
  while (scene.Doc().DoUndo()) ++steps;
  EXPECT_EQ(steps, 100);
  EXPECT_TRUE(scene.Doc().DoRedo());
  engine::ClearUndo(scene.Doc());
  EXPECT_FALSE(engine::CanRedo(scene.Doc()));
  EXPECT_FALSE(engine::CanUndo(scene.Doc()));
}

TEST(Undo, ACanceledScopeLeavesNothing) {
  Scene scene;
  const std::string before = scene.Dump();
  {
    engine::UndoScope scope(scene.Doc(), "canceled");
    ChangeObject(scene);
    DeleteMaterials(scene);
    scene.LookThrough("Room/Cam");
    scope.Cancel();
  }
  EXPECT_EQ(engine::DumpDifference(before, scene.Dump()), kSame);
  EXPECT_FALSE(engine::CanUndo(scene.Doc()));
  EXPECT_FALSE(engine::CanRedo(scene.Doc()));
}

// A command that opens and closes a group of its own inside the program's scope.
TEST(Undo, AScopeHoldsGroupsInsideItTogether) {
  Scene scene;
  const std::string before = scene.Dump();
  {
    engine::UndoScope scope(scene.Doc(), "command");
    scene.Doc().StartUndo();
    DeleteMaterials(scene);
    scene.Doc().EndUndo();
    ChangeObject(scene);
  }
  EXPECT_TRUE(scene.Doc().DoUndo());
  EXPECT_EQ(engine::DumpDifference(before, scene.Dump()), kSame);
  EXPECT_FALSE(engine::CanUndo(scene.Doc()));
}

TEST(Undo, AnInnerScopeCancelsItsOwnPart) {
  Scene scene;
  const std::string before = scene.Dump();
  std::string outer;
  {
    engine::UndoScope scope(scene.Doc(), "outer");
    DeleteMaterials(scene);
    outer = scene.Dump();
    engine::UndoScope inner(scene.Doc(), "inner");
    ChangeObject(scene);
    inner.Cancel();
  }
  EXPECT_EQ(engine::DumpDifference(outer, scene.Dump()), kSame);
  EXPECT_EQ(engine::UndoName(scene.Doc()), "outer");
  scene.Doc().DoUndo();
  EXPECT_EQ(engine::DumpDifference(before, scene.Dump()), kSame);
}

TEST(Undo, DeletedRenderSettingsComeBackIfTheyWereRegistered) {
  for (const bool isRegistered : {false, true}) {
    SceneBuilder scene;
    scene.Settings("Other").Object("A");
    const auto& history = engine::UndoHistory::Of(scene.Doc());
    EXPECT_EQ(history.ParkedNode(engine::IdOf(*scene.GetSettings("Other"))), nullptr);
    {
      const engine::UndoScope scope(scene.Doc(), "Delete");
      scene.Doc().AddUndo(host::UNDO_CHANGE, scene.GetObject("A"));
      scene.GetObject("A")->SetName("B");
      host::RenderData* other = scene.GetSettings("Other");
      if (isRegistered) scene.Doc().AddUndo(host::UNDO_DELETE, other);
      host::RenderData::Free(other);
    }
    ASSERT_TRUE(scene.Doc().DoUndo());
    EXPECT_EQ(scene.Doc().GetFirstRenderData()->GetNext() != nullptr, isRegistered);
  }
}

// A load of a million objects makes as many entries.
TEST(Undo, EntriesStaySmall) { EXPECT_LE(sizeof(engine::UndoEntry), 72u); }

// Views read the selection anew only when this number has grown.
TEST(Undo, WhoCountsChangesOfTheSelectionMissesNone) {
  SceneBuilder scene;
  BaseDocument& doc = scene.Doc();
  scene.Object("First").Object("Second").Material("Red");
  BaseObject* first = scene.GetObject("First");
  BaseObject* second = scene.GetObject("Second");
  const auto grows = [&](const std::function<void()>& act) {
    const host::ULLONG before = engine::SelectionChangeCount(doc);
    act();
    return engine::SelectionChangeCount(doc) != before;
  };
  EXPECT_TRUE(grows([&] { doc.SetActiveObject(first); }));
  EXPECT_TRUE(grows([&] { doc.SetActiveObject(second, host::SELECTION_ADD); }));
  EXPECT_FALSE(grows([&] {
    doc.SetActiveObject(second, host::SELECTION_ADD);
    first->SetName("Other");
    first->SetEditorMode(host::MODE_OFF);
    doc.SetActiveObject(nullptr, host::SELECTION_ADD);
  }));
  EXPECT_TRUE(grows([&] { doc.SetActiveObject(first, host::SELECTION_SUB); }));
  EXPECT_TRUE(grows([&] {
    const engine::UndoScope scope(doc, "Delete");
    doc.AddUndo(host::UNDO_DELETE, second);
    BaseObject::Free(second);
  })) << "it was selected";
  EXPECT_TRUE(grows([&] { doc.DoUndo(); })) << "it is again";
  EXPECT_TRUE(grows([&] { doc.GetFirstMaterial()->SetBit(host::BIT_ACTIVE); }));
  for (const char* name : {"Other", "Second"})
    doc.SetActiveObject(scene.GetObject(name), host::SELECTION_ADD);
  {
    const engine::UndoScope scope(doc, "Rename");
    doc.AddUndo(host::UNDO_CHANGE, doc.GetFirstMaterial());
    doc.GetFirstMaterial()->SetName("Blue");
    doc.SetActiveObject(first, host::SELECTION_ADD);
  }
  EXPECT_TRUE(grows([&] { doc.DoUndo(); })) << "the same are selected, and another one is active";
  EXPECT_EQ(doc.GetActiveObject(), scene.GetObject("Second"));
}

}  // namespace
