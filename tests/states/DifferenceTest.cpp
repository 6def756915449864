// Differences between two Stagemarks are the changes made between them; those between one and the
// scene are the changes that a load makes.
#include "engine/scene/Ownership.h"
#include "engine/states/FieldText.h"
#include "engine/states/LostSearch.h"
#include "engine/states/RecordedFields.h"
#include "host/Parameters.h"
#include "tests/states/Stage.h"

namespace {

using engine::ChangeKind;
using engine::CompareOptions;
using engine::Difference;
using engine::Part;
using tests::ElementsOf;
using tests::Key;
using tests::Stage;

class RandomEdits : public testing::TestWithParam<unsigned> {};
INSTANTIATE_TEST_SUITE_P(Seeds, RandomEdits, testing::Range(1u, 13u));

// Some of all elements, each changed once.
std::set<Key> ChangeSome(Stage& stage) {
  std::set<Key> changed;
  for (const auto& [key, element] : stage.Elements()) {
    if (stage.Pick(4) != 0) continue;
    stage.Change(key, element);
    changed.insert(key);
  }
  return changed;
}

// The keys, with a Stagemark's copy of the render settings in place of the scene's.
std::set<Key> WithSettingsOf(std::set<Key> keys, engine::NodeId scene, engine::NodeId copy) {
  if (keys.erase({Part::RenderSettings, scene}) > 0) keys.insert({Part::RenderSettings, copy});
  return keys;
}

TEST_P(RandomEdits, BetweenTwoRecordingsAreExactlyWhatDiffers) {
  Stage stage(GetParam());
  stage.Record("A");
  const std::set<Key> changed = ChangeSome(stage);
  stage.Record("B");
  const engine::StoredState a = stage.State("A");
  const engine::StoredState b = stage.State("B");
  const Difference difference = engine::CompareStates(stage.Doc(), a.record, b.record);
  const engine::NodeId scene = engine::IdOf(*stage.Doc().GetFirstRenderData());
  const auto copyOf = [&](const engine::StoredState& state) {
    return engine::IdOf(*state.record.GetContainer(engine::kStoredSettings)
                             .GetLink(engine::kStoredSettings, &stage.Doc()));
  };
  EXPECT_EQ(ElementsOf(difference, ChangeKind::Changed), WithSettingsOf(changed, scene, copyOf(a)));
  EXPECT_EQ(difference.changes.size(), changed.size());
  const Difference back = engine::CompareStates(stage.Doc(), b.record, a.record);
  const Difference mirrored = engine::Mirrored(difference);
  ASSERT_EQ(back.changes.size(), mirrored.changes.size());
  for (std::size_t i = 0; i < back.changes.size(); ++i) {
    EXPECT_EQ(back.changes[i].element, mirrored.changes[i].element);
    ASSERT_EQ(back.changes[i].fields.size(), 1u);
    EXPECT_EQ(back.changes[i].fields[0].left, mirrored.changes[i].fields[0].left);
    EXPECT_EQ(back.changes[i].fields[0].right, mirrored.changes[i].fields[0].right);
  }
}

// Every value of the scene that a load may write.
using Values = std::map<std::pair<Key, host::LONG>, host::GeData>;
Values AllValues(const Stage& stage) {
  Values values;
  for (const auto& [key, element] : stage.Elements()) {
    if (key.first == Part::Camera) {
      values[{key, 0}] = stage.Doc().GetRenderBaseDraw()->GetSceneCamera(&stage.Doc());
    } else if (key.first == Part::RenderSettings) {
      for (const engine::FieldNow& field :
           engine::FieldsOfSettings(*stage.Doc().GetFirstRenderData()))
        values[{key, field.field}] = field.value;
    } else {
      for (const engine::FieldNow& field : engine::FieldsInScene(stage.Doc(), key.first, *element))
        values[{key, field.field}] = field.value;
      const host::BaseContainer& data = *element->GetDataInstance();
      if (key.first > Part::CompositingTags)
        values[{key, engine::kStoredTagLink}] = data.GetData(engine::kStoredTagLink);
    }
  }
  return values;
}

std::set<Key> ThatDiffer(const Values& before, const Values& after) {
  std::set<Key> keys;
  for (const Values* one : {&before, &after}) {
    for (const auto& [place, value] : *one) {
      const auto was = before.find(place);
      const auto is = after.find(place);
      if (was == before.end() || is == after.end() || was->second != is->second)
        keys.insert(place.first);
    }
  }
  return keys;
}

// The dry run, under any options, says what loading then changes, and afterwards there is nothing
// left to change.
TEST_P(RandomEdits, AreWhatLoadingWouldChangeAndChanges) {
  Stage stage(GetParam());
  stage.Record("A");
  ChangeSome(stage);
  stage.AddObject("Later");
  stage.Record("B");
  ChangeSome(stage);
  for (const char* name : {"A", "B", "A"}) {
    CompareOptions options;
    options.parts = stage.SwitchAtRandom();
    options.unknown = false;
    options.everyEntry = true;
    const host::BaseContainer record = stage.State(name).record;
    const std::set<Key> expected =
        ElementsOf(engine::CompareWithScene(stage.Doc(), record, options), ChangeKind::Changed);
    const Values before = AllValues(stage);
    stage.Load(name);
    EXPECT_EQ(ThatDiffer(before, AllValues(stage)), expected) << name << " " << options.parts;
    EXPECT_TRUE(engine::CompareWithScene(stage.Doc(), record, options).IsEmpty()) << name;
    options.everyEntry = false;
    EXPECT_TRUE(engine::CompareWithScene(stage.Doc(), record, options).IsEmpty()) << name;
  }
}

// A recording of fewer objects keeps what an earlier one left behind it: the last record of an
// object is the one that loading leaves.
TEST(Difference, CountsOfAnObjectRecordedTwiceTheLast) {
  Stage stage;
  stage.Record("Large");
  host::BaseObject* last = stage.Build().GetObject("Near");
  for (const char* name : {"Object 2", "Object 3"}) {
    host::BaseObject* object = stage.Build().GetObject(name);
    host::BaseObject::Free(object);
  }
  last->SetRenderMode(host::MODE_OFF);
  stage.Record("Small");
  CompareOptions options;
  options.everyEntry = true;
  options.unknown = false;
  const host::BaseContainer record = stage.State("Small").record;
  const Difference dry = engine::CompareWithScene(stage.Doc(), record, options);
  const Values before = AllValues(stage);
  stage.Load("Small");
  EXPECT_EQ(ThatDiffer(before, AllValues(stage)), ElementsOf(dry, ChangeKind::Changed));
  EXPECT_TRUE(ElementsOf(dry, ChangeKind::Changed).contains({Part::Objects, engine::IdOf(*last)}));
  EXPECT_TRUE(engine::CompareWithScene(stage.Doc(), record, options).IsEmpty());
  const Difference between =
      engine::CompareStates(stage.Doc(), stage.State("Large").record, record);
  EXPECT_EQ(between.Of(Part::Objects).changed, 0u);
}

// Objects on both sides of what was put in or taken out are compared with themselves.
TEST(Difference, FindsElementsThatOnlyOneSideHas) {
  Stage stage;
  stage.Record("A");
  host::BaseObject* first = stage.Build().GetObject("Object 0");
  const engine::NodeId firstId = engine::IdOf(*first);
  auto* extra = host::BaseObject::Alloc(host::Onull);
  extra->SetName("Extra");
  stage.Doc().InsertObject(extra, nullptr, nullptr);
  stage.Record("B");
  const Difference difference =
      engine::CompareStates(stage.Doc(), stage.State("A").record, stage.State("B").record);
  EXPECT_EQ(ElementsOf(difference, ChangeKind::OnlyRight),
            (std::set<Key>{{Part::Objects, engine::IdOf(*extra)}}));
  EXPECT_EQ(difference.changes.size(), 1u);
  const Difference scene = engine::CompareWithScene(stage.Doc(), stage.State("A").record);
  EXPECT_EQ(ElementsOf(scene, ChangeKind::OnlyLeft),
            (std::set<Key>{{Part::Objects, engine::IdOf(*extra)}}));
  host::BaseObject::Free(first);
  const Difference after =
      engine::CompareStates(stage.Doc(), stage.State("A").record, stage.State("B").record);
  EXPECT_FALSE(ElementsOf(after, ChangeKind::Changed).contains({Part::Objects, firstId}));
}

TEST_P(RandomEdits, AreTheSameInSteps) {
  Stage stage(GetParam());
  stage.Record("A");
  ChangeSome(stage);
  stage.AddObject("Late");
  host::BaseObject* gone = stage.Build().GetObject("Object 3");
  host::BaseObject::Free(gone);
  const host::BaseContainer record = stage.State("A").record;
  const Difference whole = engine::CompareWithScene(stage.Doc(), record);
  engine::StepwiseComparison steps(stage.Doc(), record);
  while (steps.Advance(static_cast<std::size_t>(1 + stage.Pick(3)))) {
  }
  EXPECT_EQ(steps.HasFound(), !whole.IsEmpty());
  const Difference stepwise = steps.Take();
  EXPECT_EQ(stepwise.gone, whole.gone);
  EXPECT_GT(stepwise.gone, 0u);
  EXPECT_EQ(stepwise.heldRight, whole.heldRight);
  for (const ChangeKind kind : {ChangeKind::Changed, ChangeKind::OnlyLeft})
    EXPECT_EQ(ElementsOf(stepwise, kind), ElementsOf(whole, kind));
}

TEST_P(RandomEdits, BetweenTwoRecordingsAreTheSameInSteps) {
  Stage stage(GetParam());
  stage.Record("A");
  ChangeSome(stage);
  stage.AddObject("Late");
  stage.Record("B");
  const host::BaseContainer a = stage.State("A").record;
  const host::BaseContainer b = stage.State("B").record;
  const Difference whole = engine::CompareStates(stage.Doc(), a, b);
  engine::StepwiseComparison steps(stage.Doc(), a, b);
  while (steps.Advance(static_cast<std::size_t>(1 + stage.Pick(3)))) {
  }
  EXPECT_TRUE(steps.HasFound());
  const Difference stepwise = steps.Take();
  EXPECT_EQ(stepwise.heldLeft, whole.heldLeft);
  EXPECT_EQ(stepwise.heldRight, whole.heldRight);
  for (const ChangeKind kind : {ChangeKind::Changed, ChangeKind::OnlyRight})
    EXPECT_EQ(ElementsOf(stepwise, kind), ElementsOf(whole, kind));
}

// Two files that were copies of each other once: by identity, and by path where it is another
// object.
TEST(Difference, BetweenTwoDocumentsGoesByIdentityThenByPath) {
  engine::OwnedDocument former;
  engine::NodeId changed[2] = {};
  {
    Stage stage;
    stage.Record("A");
    former.reset(
        static_cast<host::BaseDocument*>(stage.Doc().GetClone(host::COPY_DOCUMENT, nullptr)));
    changed[0] = engine::IdOf(*stage.Build().GetObject("Object 4"));
    changed[1] = engine::IdOf(*stage.Build().GetTag("Object 5", host::Ttexture));
  }
  const engine::StoredState a = engine::ReadStates(*former).at(0);
  EXPECT_TRUE(engine::CompareStates(*former, a.record, *former, a.record).IsEmpty());
  Stage stage;
  stage.Record("A");
  stage.Build().GetObject("Object 4")->SetEditorMode(host::MODE_OFF);
  static_cast<host::TextureTag*>(stage.Build().GetTag("Object 5", host::Ttexture))
      ->SetMaterial(stage.Build().GetMaterial("Blue"));
  stage.AddObject("Only here");
  stage.Record("B");
  const auto compare = [&](const char* name) {
    return engine::CompareStates(*former, a.record, stage.Doc(), stage.State(name).record);
  };
  EXPECT_TRUE(compare("A").IsEmpty());
  const Difference difference = compare("B");
  EXPECT_EQ(ElementsOf(difference, ChangeKind::Changed),
            (std::set<Key>{{Part::Objects, changed[0]}, {Part::Materials, changed[1]}}));
  EXPECT_EQ(difference.Of(Part::Objects).onlyRight, 1u);
}

// A link to something that the other document does not have differs from a link to nothing.
TEST(Difference, BetweenTwoDocumentsNothingIsNoCounterpart) {
  engine::OwnedDocument former;
  {
    Stage stage;
    stage.Build().Material("Gone").Camera("Old").LookThrough("Old");
    static_cast<host::TextureTag*>(stage.Build().GetTag("Object 5", host::Ttexture))
        ->SetMaterial(stage.Build().GetMaterial("Gone"));
    stage.Record("A");
    former.reset(
        static_cast<host::BaseDocument*>(stage.Doc().GetClone(host::COPY_DOCUMENT, nullptr)));
  }
  Stage stage;
  static_cast<host::TextureTag*>(stage.Build().GetTag("Object 5", host::Ttexture))
      ->SetMaterial(nullptr);
  stage.Record("A");
  const Difference difference = engine::CompareStates(
      *former, engine::ReadStates(*former).at(0).record, stage.Doc(), stage.State("A").record);
  EXPECT_EQ(difference.Of(Part::Materials).changed, 1u);
  EXPECT_EQ(difference.Of(Part::Camera).changed, 1u);
}

// Lost is what no Stagemark could bring back, in lists of any length and order.
TEST(Difference, FindsWhatWouldBeLost) {
  for (const int objects : {12, 700}) {
    for (const bool turned : {false, true}) {
      SCOPED_TRACE(std::to_string(objects) + (turned ? " backwards" : ""));
      Stage stage(1, objects);
      const auto object = [&](int i) {
        return stage.Build().GetObject("Object " + std::to_string(i));
      };
      for (int i = 0; turned && i < objects; ++i) {
        host::BaseObject* moved = object(i);
        moved->Remove();
        stage.Doc().InsertObject(moved, nullptr, nullptr);
      }
      stage.Record("A");
      for (int i = 1; i < objects; i += 3) object(i)->SetRenderMode(host::MODE_OFF);
      stage.Record("B");
      std::set<Key> lost = {{Part::Camera, 0}};
      for (int i = 2; i < objects; i += 3) {
        object(i)->SetRenderMode(host::MODE_OFF);
        lost.insert({Part::Objects, engine::IdOf(*object(i))});
      }
      stage.Build().LookThrough("Near").Cube("No load would touch it");
      const Difference toA = engine::CompareWithScene(stage.Doc(), stage.State("A").record);
      EXPECT_EQ(toA.changes.size(), 2 + static_cast<std::size_t>(2 * objects / 3));
      const std::vector<engine::StoredState> states = engine::ReadStates(stage.Doc());
      engine::LostSearch search(stage.Doc(), states, toA);
      while (search.Advance(static_cast<std::size_t>(1 + stage.Pick(3)))) {
      }
      std::set<Key> found;
      for (const std::size_t i : search.Take())
        found.insert({toA.changes[i].part, toA.changes[i].element});
      EXPECT_EQ(found, lost);
      EXPECT_EQ(engine::FindLost(stage.Doc(), states, toA), search.Take());
    }
  }
}

// As a person reads it.
TEST(Difference, IsReadByNames) {
  Stage stage;
  stage.Build().Cube("Room/Lamp");
  stage.Record("A");
  stage.Build().Modes("Room/Lamp", host::MODE_UNDEF, host::MODE_OFF);
  stage.Build().LookThrough("Wide");
  static_cast<host::TextureTag*>(stage.Build().GetTag("Object 0", host::Ttexture))
      ->SetMaterial(nullptr);
  stage.Build().GetTag("Object 0", Stage::kStyle)->GetDataInstance()->SetString(2, "bold");
  stage.Doc().GetFirstRenderData()->GetDataInstance()->SetLong(host::RDATA_XRES, 640);
  std::string text;
  const Difference difference = engine::CompareWithScene(stage.Doc(), stage.State("A").record);
  for (const engine::ElementChange& change : difference.changes) {
    const host::LONG type = engine::TypeForFields(stage.Doc(), change);
    for (const engine::FieldChange& field : change.fields) {
      text += std::string(engine::RowOf(change.part).label) + " | " +
              (change.element ? engine::ElementPath(stage.Doc(), change.element) : "") + " | " +
              engine::FieldLabel(type, field.field) + ": " +
              engine::FieldValueText(stage.Doc(), type, field.field, field.left) + " -> " +
              engine::FieldValueText(stage.Doc(), type, field.field, field.right) + "\n";
    }
  }
  EXPECT_EQ(text,
            "Render Settings | Render Settings | Width: 640 px -> 1280 px\n"
            "Active Camera |  | Camera: \"Wide\" -> none\n"
            "Objects | Room/Lamp | Render mode: Off -> Undefined\n"
            "Materials | Texture on Object 0 | Material: none -> \"Red\"\n"
            "Sketch Style Tags | Sketch Style Tag on Object 0 | Value 2: \"bold\" -> \"plain\"\n");
}

}  // namespace
