// Stagemarks as text: back into the same scene they come as they were, into another one as far as
// it has their elements; a damaged text changes nothing.
#include "engine/states/StateText.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <sstream>

#include "engine/scene/NodeIds.h"
#include "engine/states/RecordList.h"
#include "tests/states/Stage.h"

namespace {

using engine::SameName;
using engine::TakeInOptions;
using engine::TakenIn;
using host::BaseContainer;
using host::BaseObject;
using host::LONG;
using tests::Stage;

std::string TextOf(const host::BaseDocument& doc) {
  std::string text;
  engine::WriteStatesAsText(doc, engine::ReadStates(doc), "room.c4d", [&](std::string_view piece) {
    text += piece;
    return true;
  });
  return text;
}

const TakeInOptions kReplace{{}, {}, SameName::Replaced, false};

BaseContainer Stored(const host::BaseDocument& doc, LONG id) {
  return doc.GetDataInstance()->GetContainer(id);
}

void Forget(host::BaseDocument& doc) {
  doc.GetDataInstance()->SetContainer(engine::kStagemarksId, {});
  doc.GetDataInstance()->SetContainer(engine::kStoredEntries, {});
}

// A style tag with a value of every kind.
void FillWithEverything(BaseContainer& data) {
  BaseContainer inner(7);
  inner.SetString(1, "inside");
  inner.SetContainer(2, BaseContainer(9));
  data.SetReal(1001, std::numeric_limits<double>::quiet_NaN());
  data.SetReal(1002, -0.0);
  data.SetReal(1003, 0.1);
  data.SetVector(1004, {1, std::numeric_limits<double>::infinity(), 3});
  data.SetData(1005, host::BaseTime(3, 25));
  data.SetString(1006, "quoted \" \\ \n \xff end");
  data.SetData(1007, host::Filename("maps/wood.tif"));
  data.SetContainer(1008, inner);
  data.SetData(1009, host::GeData());
  data.SetString(1010, "on");
}

TEST(StateText, ComesBackByteForByte) {
  for (unsigned seed = 0; seed < 8; ++seed) {
    SCOPED_TRACE(seed);
    Stage stage(seed);
    FillWithEverything(*stage.Build().GetTag("Object 3", Stage::kStyle)->GetDataInstance());
    for (const char* name : {"Day",
                             "N\xc3\xa4"
                             "chtlich \"x\"",
                             "Empty"}) {
      stage.SwitchAtRandom();
      for (const auto& [key, element] : stage.Elements()) {
        if (stage.Pick(3) == 0) stage.Change(key, element);
      }
      stage.Record(name);
    }
    BaseObject* gone = stage.Build().GetObject("Object 5");
    gone->Remove();
    BaseObject::Free(gone);
    // A mode that is none, an ID that is not its place, and a record in another order.
    BaseContainer& stores = *stage.Doc().GetDataInstance();
    BaseContainer* odd = stores.GetContainerInstance(engine::kStagemarksId)
                             ->GetContainerInstance(1)
                             ->GetContainerInstance(engine::kStoredObjects);
    if (odd && odd->GetCount() > 4) {
      odd->GetContainerInstance(0)->SetLong(engine::kStoredEditorMode, 7);
      odd->GetContainerInstance(1)->SetId(40);
      odd->GetContainerInstance(2)->RemoveData(engine::kStoredObjectLink);
      odd->GetContainerInstance(3)->SetString(123, "more");
    }
    const BaseContainer records = Stored(stage.Doc(), engine::kStagemarksId);
    const BaseContainer entries = Stored(stage.Doc(), engine::kStoredEntries);
    const auto settings = engine::FindSettingsOfStates(&stage.Doc()).size();
    const std::string text = TextOf(stage.Doc());
    const auto taken = engine::TakeInStates(stage.Doc(), text, kReplace);
    ASSERT_TRUE(taken.Ok()) << taken.Message();
    EXPECT_EQ(taken.Value().byPath + taken.Value().byName, 0U);
    EXPECT_TRUE(engine::Identical(Stored(stage.Doc(), engine::kStagemarksId), records));
    EXPECT_TRUE(engine::Identical(Stored(stage.Doc(), engine::kStoredEntries), entries));
    EXPECT_EQ(engine::FindSettingsOfStates(&stage.Doc()).size(), settings);
    EXPECT_EQ(TextOf(stage.Doc()), text);
  }
}

std::size_t LinesThatDiffer(const std::string& a, const std::string& b) {
  std::multiset<std::string> lines;
  std::istringstream first(a);
  std::istringstream second(b);
  std::size_t count = 0;
  for (std::string line; std::getline(first, line);) lines.insert(line);
  for (std::string line; std::getline(second, line);) {
    const auto found = lines.find(line);
    found == lines.end() ? void(++count) : void(lines.erase(found));
  }
  return count;
}

TEST(StateText, AChangeIsALine) {
  Stage stage;
  stage.Record("Day");
  const std::string before = TextOf(stage.Doc());
  stage.Build().GetObject("Object 4")->SetRenderMode(host::MODE_OFF);
  stage.Answer(true);
  stage.Record("Day");
  // The switch, and the identity of the render settings: recording makes a new copy of them.
  EXPECT_EQ(LinesThatDiffer(before, TextOf(stage.Doc())), 2U);
}

struct Change {
  const char* what;
  std::function<void(Stage&)> make;
  std::size_t byPath;
  std::size_t byName;
  std::size_t missing;
  std::size_t ambiguous;
};

void Free(BaseObject* object) {
  object->Remove();
  BaseObject::Free(object);
}

TEST(StateText, FindsElementsOfAnotherScene) {
  const Change changes[] = {
      {"nothing", [](Stage&) {}, 0, 0, 0, 0},
      {"made anew at its place",
       [](Stage& stage) {
         Free(stage.Build().GetObject("Wide"));
         stage.Build().Camera("Wide");
       },
       1, 0, 0, 0},
      {"made anew elsewhere",
       [](Stage& stage) {
         Free(stage.Build().GetObject("Wide"));
         stage.Build().Camera("Object 1/Wide");
       },
       0, 1, 0, 0},
      {"made anew elsewhere, twice",
       [](Stage& stage) {
         Free(stage.Build().GetObject("Wide"));
         stage.Build().Camera("Object 1/Wide").Camera("Object 2/Wide");
       },
       0, 0, 0, 1},
      {"gone", [](Stage& stage) { Free(stage.Build().GetObject("Wide")); }, 0, 0, 1, 0},
  };
  for (const Change& change : changes) {
    SCOPED_TRACE(change.what);
    Stage stage;
    stage.Record("Day");
    const std::string text = TextOf(stage.Doc());
    Forget(stage.Doc());
    change.make(stage);
    const auto taken = engine::TakeInStates(stage.Doc(), text, {});
    ASSERT_TRUE(taken.Ok()) << taken.Message();
    EXPECT_EQ(taken.Value().byPath, change.byPath);
    EXPECT_EQ(taken.Value().byName, change.byName);
    EXPECT_EQ(taken.Value().missing.size(), change.missing);
    EXPECT_EQ(taken.Value().ambiguous.size(), change.ambiguous);
    EXPECT_EQ(taken.Value().states[0].leftOut, change.missing + change.ambiguous);
    engine::CompareOptions known;
    known.unknown = false;
    EXPECT_TRUE(engine::CompareWithScene(stage.Doc(), stage.State("Day").record, known).IsEmpty());
  }
}

TEST(StateText, BringsItsRenderSettingsAlong) {
  Stage stage;
  stage.Doc().GetActiveRenderData()->GetDataInstance()->SetLong(host::RDATA_XRES, 333);
  stage.Record("Day");
  const std::string text = TextOf(stage.Doc());
  host::RenderData* copy = engine::RecordedSettings(stage.Doc(), stage.State("Day").record);
  ASSERT_TRUE(copy);
  host::RenderData::Free(copy);
  Forget(stage.Doc());
  ASSERT_TRUE(engine::TakeInStates(stage.Doc(), text, {}).Ok());
  copy = engine::RecordedSettings(stage.Doc(), stage.State("Day").record);
  ASSERT_TRUE(copy);
  EXPECT_EQ(copy->GetDataInstance()->GetLong(host::RDATA_XRES), 333);
}

TEST(StateText, NamesThatAreThereAreDecidedUpon) {
  Stage stage;
  stage.Record("Day");
  stage.Record("Night");
  const std::string text = TextOf(stage.Doc());
  const auto names = [&] {
    std::vector<std::string> all;
    for (const auto& state : engine::ReadStates(stage.Doc())) all.push_back(state.name);
    return all;
  };
  EXPECT_EQ(engine::TakeInStates(stage.Doc(), text, {}).Message(),
            "There is a Stagemark \"Day\" already.");
  TakeInOptions options;
  options.names = {{"Day", "Morning"}};
  options.isWanted = [](const std::string& name) { return name == "Day"; };
  ASSERT_TRUE(engine::TakeInStates(stage.Doc(), text, options).Ok());
  EXPECT_EQ(names(), (std::vector<std::string>{"Day", "Night", "Morning"}));
  EXPECT_TRUE(stage.State("Morning").hasEntry);
  options = {};
  options.names = {{"Day", "Dusk"}, {"Night", "Dusk"}};
  EXPECT_EQ(engine::TakeInStates(stage.Doc(), text, options).Message(),
            "Two Stagemarks would be called \"Dusk\".");
  options = {};
  options.sameName = SameName::Kept;
  const auto kept = engine::TakeInStates(stage.Doc(), text, options);
  ASSERT_TRUE(kept.Ok());
  EXPECT_EQ(kept.Value().states[0].outcome, TakenIn::Outcome::Kept);
}

std::string Replaced(std::string text, const std::string& what, const std::string& by) {
  const std::size_t found = text.find(what);
  EXPECT_NE(found, std::string::npos) << what;
  return text.replace(found, what.size(), by);
}

std::string Members(int count) {
  std::string text = "{";
  for (int i = 0; i < count; ++i) text += (i > 0 ? ",\"" : "\"") + std::to_string(i) + "\":0";
  return text + "}";
}

TEST(StateText, DamageIsNamedAndChangesNothing) {
  Stage stage;
  stage.Record("Day");
  const std::string text = TextOf(stage.Doc());
  const std::string deep = std::string(100, '[') + std::string(100, ']');
  const std::pair<std::string, const char*> damaged[] = {
      {"", "The text cannot be read: parse error"},
      {"[]", "\"format\" is missing"},
      {Replaced(text, "stagemarks-states", "something"), "it is no text of Stagemarks"},
      {Replaced(text, "\"version\": 1", "\"version\": 2"), "its version is 2"},
      {Replaced(text, "\"name\": \"Day\"", "\"name\": \"\""), "without a name"},
      {Replaced(text, "\"name\": \"Day\"", "\"nome\": \"Day\""), "\"name\" is missing"},
      {Replaced(text, "\"editor\"", "\"edited\""), "\"edited\" is no name of a value here"},
      {Replaced(text, "\"render\":\"undefined\"", "\"#x\":1"), "\"#x\" is no name"},
      {Replaced(text, "\"render\":\"undefined\"", "\"\":1"), "\"\" is no name of a value here"},
      {Replaced(text, "\"render\":\"undefined\"", "\"render\":99999999999"), "no whole number"},
      {Replaced(text, "\"render\":\"undefined\"", "\"render\":" + deep), "no vector"},
      {Replaced(text, "\"objects\": [", "\"objects\": [5, "), "holds what is no record"},
      {Replaced(text, "\"element\":\"Object 0\"", "\"element\":\"Nobody\""),
       "\"Nobody\" is not among the elements"},
      {Replaced(text, "\"date\": \"", "\"date\": \"x"), "is no date"},
      {Replaced(text, "\"identity\":\"", "\"identity\":\"x"), "is no identity"},
      {Replaced(text, "\"elements\": {", "\"elements\": {\"Object 0\": {}, "),
       "\"Object 0\" stands twice among the elements"},
      {Replaced(text, "\"type\":", "\"type\":99999999999, \"kind\":"), "is no number of 32 bits"},
      {Replaced(text, "\"scene\": ",
                "\"more\": " + std::string(300, '[') + std::string(300, ']') + ", \"scene\": "),
       "nested too deeply"},
      {Replaced(text, "\"scene\": ", "\"more\": " + Members(20000) + ", \"scene\": "),
       "more than 10,000 members"},
  };
  const BaseContainer before = stage.Doc().GetData();
  for (const auto& [bad, words] : damaged) {
    const auto taken = engine::TakeInStates(stage.Doc(), bad, kReplace);
    EXPECT_FALSE(taken.Ok()) << words;
    EXPECT_NE(taken.Message().find(words), std::string::npos) << taken.Message();
  }
  for (std::size_t end = 0; end + 3 < text.size(); end += text.size() / 50)
    EXPECT_FALSE(engine::TakeInStates(stage.Doc(), text.substr(0, end), kReplace).Ok()) << end;
  EXPECT_TRUE(engine::Identical(stage.Doc().GetData(), before));
}

// Compared as scenes are, by the same code: so it must be the same scene as far as the text goes.
TEST(StateText, MakesASceneOfItsOwn) {
  for (unsigned seed = 0; seed < 6; ++seed) {
    SCOPED_TRACE(seed);
    Stage stage(seed);
    stage.Build().Layer("Outer/Inner").Cube("Box").Cube("Object 1/Box").Cube("Object 1/Box");
    for (const char* name : {"Day", "Night"}) {
      stage.SwitchAtRandom();
      for (const auto& [key, element] : stage.Elements()) {
        if (stage.Pick(3) == 0) stage.Change(key, element);
      }
      stage.Record(name);
    }
    const auto scene = engine::SceneOfText(TextOf(stage.Doc()));
    ASSERT_TRUE(scene.Ok()) << scene.Message();
    const host::BaseDocument& made = *scene.Value();
    const auto states = engine::ReadStates(made);
    ASSERT_EQ(states.size(), 2U);
    for (const engine::StoredState& state : states) {
      const auto same =
          engine::CompareStates(stage.Doc(), stage.State(state.name).record, made, state.record);
      EXPECT_TRUE(same.IsEmpty()) << state.name;
    }
    const auto there =
        engine::CompareStates(stage.Doc(), stage.State("Day").record, stage.State("Night").record);
    const auto here = engine::CompareStates(made, states[0].record, states[1].record);
    ASSERT_EQ(here.changes.size(), there.changes.size());
    for (std::size_t i = 0; i < here.changes.size(); ++i) {
      EXPECT_EQ(here.changes[i].part, there.changes[i].part);
      EXPECT_EQ(here.changes[i].fields.size(), there.changes[i].fields.size());
      const bool isOfScene = here.changes[i].part <= engine::Part::Camera;
      EXPECT_TRUE(isOfScene || here.changes[i].element == there.changes[i].element);
    }
  }
}

TEST(StateText, ScenesOfDamagedTextsAreRefused) {
  Stage stage;
  stage.Build().Tag("Object 0", host::Tphong);
  stage.Record("Day");
  const std::string text = TextOf(stage.Doc());
  const std::string lamp = "\"name\":\"Wide\",";
  const std::pair<std::string, const char*> damaged[] = {
      {Replaced(text, lamp, lamp + "\"position\":2000000000,"), "beyond all measure"},
      {Replaced(text, lamp, lamp + "\"position\":-1,"), "is below 0"},
      {Replaced(text, lamp, lamp + "\"in\":\"Wide\","), "lie in themselves"},
      {Replaced(text, lamp, lamp + "\"in\":\"Nowhere\","), "\"Nowhere\" is not among the elements"},
      {text.substr(0, text.size() / 2), "parse error"},
  };
  for (const auto& [bad, words] : damaged) {
    const auto scene = engine::SceneOfText(bad);
    EXPECT_FALSE(scene.Ok()) << words;
    EXPECT_NE(scene.Message().find(words), std::string::npos) << scene.Message();
  }
}

// Nothing in it is looked for one by one.
TEST(StateText, ManyElementsAreReadInOneGo) {
  std::string records;
  std::string elements;
  constexpr int kCount = 100'000;
  for (int i = 0; i < kCount; ++i) {
    const std::string name = "\"Part " + std::to_string(i) + "\"";
    const char* const comma = i > 0 ? "," : "";
    records += comma + ("{\"element\":" + name) +
               ",\"editor\":\"off\",\"render\":\"off\",\"deform\":true}";
    elements += comma + name + ":{\"name\":" + name + ",\"kind\":\"Cube\",\"type\":5159}";
  }
  const auto scene = engine::SceneOfText(
      R"({"format":"stagemarks-states","version":1,"states":[{"name":"All","id":0,"objects":[)" +
      records + "]}],\"elements\":{" + elements + "}}");
  ASSERT_TRUE(scene.Ok()) << scene.Message();
  const auto states = engine::ReadStates(*scene.Value());
  ASSERT_EQ(states.size(), 1U);
  EXPECT_EQ(states[0].record.GetContainerInstance(engine::kStoredObjects)->GetCount(), kCount);
}

TEST(StateText, DeepScenesMakeNoLongerLines) {
  Stage stage(0, 1);
  BaseObject* last = stage.Build().GetObject("Object 0");
  for (int i = 0; i < 3000; ++i) {
    BaseObject* next = BaseObject::Alloc(host::Onull);
    next->SetName("Null");
    stage.Doc().AppendObject(next, last);
    last = next;
  }
  stage.Record("Deep");
  const std::string text = TextOf(stage.Doc());
  EXPECT_LT(text.size(), 3000U * 1200);
  EXPECT_TRUE(engine::TakeInStates(stage.Doc(), text, kReplace).Ok());
}

}  // namespace
