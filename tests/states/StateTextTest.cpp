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

std::string EffectsOf(const host::RenderData& settings) {
  std::string text = settings.GetName().ToUtf8() + ":";
  const auto add = [&](const host::BaseList2D& effect) {
    text += " " + effect.GetName().ToUtf8() + (effect.GetBit(host::BIT_DISABLED) ? " off" : " on") +
            " " + std::to_string(effect.GetDataInstance()->GetLong(7));
  };
  for (const auto* post = settings.GetFirstVideoPost(); post; post = post->GetNext()) add(*post);
  for (const auto* pass = settings.GetFirstMultipass(); pass; pass = pass->GetNext()) add(*pass);
  return text;
}

// Into those that the Stagemark has; only where it has none, into new ones.
TEST(StateText, EffectsAndPassesComeBackInTheirOrder) {
  Stage stage;
  tests::SceneBuilder& build = stage.Build();
  build.Post("Render Settings", host::VPglobalillumination, false);
  build.Post("Render Settings", 1001, true)
      .Pass("Render Settings", 2001)
      .Pass("Render Settings", 2002, false);
  host::RenderData& scene = *stage.Doc().GetFirstRenderData();
  int number = 0;
  const auto name = [&](host::BaseList2D& effect) {
    effect.SetName(host::String(("E" + std::to_string(++number)).c_str()));
    effect.GetDataInstance()->SetLong(7, 10 * number);
  };
  for (auto* post = scene.GetFirstVideoPost(); post; post = post->GetNext()) name(*post);
  for (auto* pass = scene.GetFirstMultipass(); pass; pass = pass->GetNext()) name(*pass);
  stage.Record("Day");
  const std::string text = TextOf(stage.Doc());
  const auto recorded = [&] {
    return engine::RecordedSettings(stage.Doc(), stage.State("Day").record);
  };
  const std::string effects = "Day: E1 off 10 E2 on 20 E3 on 30 E4 off 40";
  EXPECT_EQ(EffectsOf(*recorded()), effects);
  const std::function<void(host::RenderData&)> changes[] = {
      [](host::RenderData&) {},
      [](host::RenderData& one) { one.SetName("Other"); },
      [](host::RenderData& one) { one.GetDataInstance()->SetLong(host::RDATA_YRES, 5); },
      [](host::RenderData& one) { one.GetFirstVideoPost()->DelBit(host::BIT_DISABLED); },
      [](host::RenderData& one) { one.GetFirstVideoPost()->GetNext()->SetName("Other"); },
      [](host::RenderData& one) { one.GetFirstMultipass()->GetDataInstance()->SetLong(7, 8); },
      [](host::RenderData& one) {
        host::BaseVideoPost* post = one.GetFirstVideoPost();
        host::BaseVideoPost::Free(post);
      },
      [](host::RenderData& one) {
        one.InsertMultipass(host::MultipassObject::Alloc(2003), one.GetFirstMultipass()->GetNext());
      },
  };
  for (std::size_t i = 0; i < std::size(changes); ++i) {
    const host::RenderData* before = recorded();
    changes[i](*recorded());
    ASSERT_TRUE(engine::TakeInStates(stage.Doc(), text, kReplace).Ok()) << i;
    EXPECT_EQ(recorded(), before) << i;
    EXPECT_EQ(EffectsOf(*recorded()), effects) << i;
    EXPECT_EQ(TextOf(stage.Doc()), text) << i;
  }
  host::RenderData* gone = recorded();
  host::RenderData::Free(gone);
  ASSERT_TRUE(engine::TakeInStates(stage.Doc(), text, kReplace).Ok());
  EXPECT_EQ(EffectsOf(*recorded()), effects);
  EXPECT_EQ(recorded(), scene.GetNext()) << "behind those that are there";
}

// The entry in the list keeps its star where a Stagemark is replaced, and is new where there was
// none.
TEST(StateText, SaysWhatBecameOfEach) {
  Stage stage;
  stage.Record("Day");
  stage.Record("Night");
  const std::string text = TextOf(stage.Doc());
  const auto states = [&] {
    std::string said;
    for (const engine::StoredState& state : engine::ReadStates(stage.Doc()))
      said += std::to_string(state.id) + " " + state.name + (state.current ? "* " : " ") +
              (state.hasEntry && state.hasRecord ? "" : "half ") +
              (state.date == engine::StoredDate() ? "undated " : "") +
              (state.record.GetId() == state.id ? "" : "misnumbered ");
    return said;
  };
  const auto take = [&](const std::string& from, const TakeInOptions& options) {
    const auto taken = engine::TakeInStates(stage.Doc(), from, options);
    if (!taken) return taken.Message();
    std::string said;
    for (const TakenIn::State& state : taken.Value().states)
      said += state.name + " " + std::to_string(static_cast<int>(state.outcome)) + " " +
              std::to_string(state.records) + "-" + std::to_string(state.leftOut) + ", ";
    return said + std::to_string(taken.Value().byIdentity) + " as they were";
  };
  EXPECT_EQ(take(text, kReplace), "Day 1 53-0, Night 1 53-0, 54 as they were");
  EXPECT_EQ(states(), "0 Day 1 Night* ");
  TakeInOptions renamed;
  renamed.names = {{"Day", "Dawn"}, {"Night", "Dusk"}};
  EXPECT_EQ(take(text, renamed), "Dawn 0 53-0, Dusk 0 53-0, 54 as they were");
  BaseContainer entries = Stored(stage.Doc(), engine::kStoredEntries);
  entries.RemoveData(0);
  stage.Doc().GetDataInstance()->SetContainer(engine::kStoredEntries, entries);
  EXPECT_EQ(take(text, kReplace), "Day 1 53-0, Night 1 53-0, 54 as they were");
  EXPECT_EQ(states(), "0 Day 1 Night* 2 Dawn 3 Dusk ");
  // Of a scene that has none of it nothing comes but the name, and only if that is wanted.
  Forget(stage.Doc());
  while (BaseObject* object = stage.Doc().GetFirstObject()) Free(object);
  while (host::GeListNode* layer = stage.Doc().GetLayerObjectRoot()->GetFirst()) {
    auto* one = static_cast<host::LayerObject*>(layer);
    host::LayerObject::Free(one);
  }
  EXPECT_EQ(take(text, {}), "Nothing of what \"Day\" holds is in the scene.");
  EXPECT_EQ(states(), "");
  TakeInOptions all;
  all.evenEmpty = true;
  EXPECT_EQ(take(text, all), "Day 0 0-53, Night 0 0-53, 1 as they were");
  EXPECT_EQ(states(), "0 Day 1 Night ");
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
  const auto value = [&](const std::string& other) {
    return Replaced(text, "\"#2\":\"plain\"", "\"#2\":" + other);
  };
  const auto nested = [](int depth) {
    std::string inside = "5";
    while (depth-- > 0) inside = R"({"id":1,"entries":[[1,)" + inside + "]]}";
    return inside;
  };
  // As far as it may go.
  for (const std::string& good :
       {value("2147483647"), value("-2147483648"), value(nested(64)), value("[1,2.5,-3]"),
        value(R"({"bytes":"09af"})"), value(R"({"link":null})"),
        Replaced(text, "\"scene\": ", "\"more\": " + Members(10000) + ", \"scene\": "),
        Replaced(text, "\"scene\": ",
                 "\"more\": " + std::string(199, '[') + std::string(199, ']') + ", \"scene\": ")})
    EXPECT_EQ(engine::SceneOfText(good).Message(), "");
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
      {value(R"({"time":[1]})"), "no time: it wants 2 values"},
      {value(R"([1,2])"), "no vector: it wants 3 values"},
      {value(R"([1,2,"x"])"), "is no number"},
      {value(R"([1,2,{"bits":"x"}])"), "are no bits of a number"},
      {value(R"([1,2,{"bits":"1x"}])"), "are no bits of a number"},
      {value(R"({"bytes":"abc"})"), "is no list of bytes"},
      {value(R"({"bytes":"ag"})"), "is no list of bytes"},
      {value(R"({"file":5})"), "is no text"},
      {value(R"({"entries":5,"id":1})"), "is no list"},
      {value(R"({"entries":[[1]],"id":1})"), "no entry: it wants 2 values"},
      {value(R"({"entries":[]})"), "\"id\" is missing"},
      {value(R"({"none":1})"), "is no value"},
      {value("-2147483649"), "no whole number of 32 bits"},
      {value("2147483648"), "no whole number of 32 bits"},
      {value(nested(65)), "too deep in one another"},
      {Replaced(text, "\"#2\"", "\"#2x\""), "\"#2x\" is no name of a value here"},
      {Replaced(text, "\"#2\"", "\"#99999999999\""), "is no name of a value here"},
      {Replaced(text, "\"states\": [", "\"states\": {}, \"other\": ["), "\"states\" is no list"},
      {Replaced(text, "\"elements\": {", "\"elements\": [], \"other\": {"),
       "\"elements\" is no object"},
      {Replaced(text, "\"layers\": [", "\"layers\": 5, \"other\": ["), "\"layers\" is no list"},
      {Replaced(text, "\"element\":\"Object 0\"", "\"element\":5"), "named by no text"},
      {Replaced(text, "\"element\":\"Object 0\"", "\"element\":{\"gone\":\"5x\"}"),
       "is no identity"},
      {Replaced(text, "\"identity\":\"", "\"identity\":\"\",\"other\":\""), "is no identity"},
      {Replaced(text, "\"type\":", "\"type\":-2147483649, \"kind\":"), "is no number of 32 bits"},
      {Replaced(text, "\"type\":", "\"type\":1.5, \"kind\":"), "is no number of 32 bits"},
      {Replaced(text, "\"scene\": ", "\"more\": " + Members(10001) + ", \"scene\": "),
       "more than 10,000 members"},
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
