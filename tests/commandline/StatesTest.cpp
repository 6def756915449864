// The verbs that look at what is recorded and change nothing: show, diff, a dry run of load; and
// names with * and ?, in every verb that takes names of Stagemarks.
#include <algorithm>
#include <sstream>

#include "tests/commandline/CommandLine.h"

namespace {

using nlohmann::json;
using tests::ChildResult;
using tests::CommandLine;
using tests::ReadText;

// The arguments lack the scene, which follows the verb.
struct CallRow {
  std::vector<std::string> arguments;
  int status;
  std::vector<const char*> says;
};

class States : public CommandLine {
 protected:
  void Check(const std::string& scene, const std::vector<CallRow>& rows) const {
    const std::string before = ReadText(scene);
    for (const CallRow& row : rows) {
      std::vector<std::string> arguments = row.arguments;
      arguments.insert(arguments.begin() + 1, scene);
      const ChildResult result = Call(arguments);
      EXPECT_EQ(result.status, row.status) << testing::PrintToString(arguments) << result.err;
      for (const char* says : row.says) {
        EXPECT_NE((result.out + result.err).find(says), std::string::npos)
            << testing::PrintToString(arguments) << "\n"
            << says << "\n"
            << result.out << result.err;
      }
    }
    EXPECT_EQ(ReadText(scene), before);
  }
  // "Day" and "Night" of Staged; then the head shown in renders, which no Stagemark knows, and a
  // wider picture.
  std::string Edited() const {
    const std::string scene = Staged();
    Out({"set", scene, "--object", "Kopf", "--render", "on", "--size", "640x480", "--write"});
    return scene;
  }
  // "a_1", "a_2" and "b*" of one scene.
  std::string Numbered() const {
    const std::string scene = Spider();
    for (const char* name : {"a_1", "a_2", "b*", "bx"}) Out({"record", scene, name, "--write"});
    return scene;
  }
  std::string ListedBy(std::vector<std::string> call) const {
    std::string names;
    const json list = Json(std::move(call));
    for (const json& mark : list["stagemarks"]) names += mark["name"].get<std::string>() + " ";
    return names;
  }
};

TEST_F(States, ShowTellsWhatIsHeld) {
  const std::string scene = Staged();
  Check(scene, {{{"show", "Day"},
                 0,
                 {"Day, recorded 20", "Render Settings", "1280 x 720 px", "Objects", "21\n"}},
                {{"show", "Night"},
                 0,
                 {"recorded or loaded last", "22 objects: hidden in renders", "Layers"}},
                {{"show", "Night", "-v", "--parts", "layers,camera"},
                 0,
                 {"Props  Solo ", "Scene camera  \"Camera\""}},
                {{"show", "Nigth"}, 2, {"Did you mean \"Night\"?"}},
                {{"show", "Day", "--parts", "lamps"}, 2, {"--parts"}}});
  const json shown = Json({"show", scene, "Night"});
  EXPECT_EQ(shown["counts"]["objects"], 22);
  EXPECT_EQ(shown["counts"]["layers"], 1);
  EXPECT_TRUE(shown["current"]);
  const auto hidden = std::ranges::count_if(shown["elements"], [](const json& element) {
    return element["part"] == "objects" && element["fields"][1]["value"] == "Off";
  });
  EXPECT_EQ(hidden, 22);
}

TEST_F(States, DiffAnswersAsDiffDoes) {
  const std::string scene = Edited();
  tests::WriteText(Scene("broken.c4d"), "no scene");
  Check(scene, {{{"diff", "Day", "Night"},
                 1,
                 {"\"Day\" -> \"Night\": 23 things differ", "21 changed, 1 only in \"Night\"",
                  "Render mode  Undefined -> Off", "and 13 more", "Front ", "only in \"Night\"",
                  "-v lists everything."}},
                {{"diff", "Day", "Night", "-v"}, 1, {"Kopf2 ", "Props "}},
                {{"diff", "Day", "Day"}, 0, {"\"Day\" and \"Day\" are the same."}},
                {{"diff", "Day", "Night", "--parts", "camera"}, 0, {"the same (camera only)"}},
                {{"diff", "Night", "--scene"}, 1, {"-> the scene: 2 things differ", "Off -> On"}},
                {{"diff", "Night", "--scene", "--without", "objects,render-settings"}, 0, {"same"}},
                {{"diff", "Day", "--scene", "--parts", "objects"}, 1, {"1 only in the scene"}},
                {{"diff", "Day"}, 2, {"Which Stagemark of"}},
                {{"diff", "Day", "Night", "--scene"}, 2, {"Two Stagemarks are needed"}},
                {{"diff", "Day", "Dusk"}, 2, {"There is no Stagemark \"Dusk\""}}});
  EXPECT_EQ(Call({"diff", Scene("broken.c4d"), "Day", "Night"}).status, 2) << "trouble";
  EXPECT_EQ(Call({"diff", Scene("missing.c4d") + ":Day", scene + ":Day"}).status, 2);
}

TEST_F(States, DiffMirrorsForPrograms) {
  const std::string scene = Staged();
  const json there = JsonAnyway({"diff", scene, "Day", "Night"});
  const json back = JsonAnyway({"diff", scene, "Night", "Day"});
  EXPECT_FALSE(there["equal"]);
  EXPECT_EQ(there["counts"]["objects"], json({{"changed", 21}, {"onlyLeft", 0}, {"onlyRight", 1}}));
  EXPECT_EQ(back["counts"]["objects"], json({{"changed", 21}, {"onlyLeft", 1}, {"onlyRight", 0}}));
  ASSERT_EQ(there["differences"].size(), 23U);
  for (std::size_t i = 0; i < 21; ++i) {
    const json& field = there["differences"][i]["fields"][0];
    EXPECT_EQ(field["left"], back["differences"][i]["fields"][0]["right"]);
    EXPECT_EQ(field["name"], "Render mode");
  }
  EXPECT_EQ(Json({"diff", scene, "Day", "Day"})["differences"], json::array());
}

TEST_F(States, DiffReadsTwoScenesWhateverColonsTheyHave) {
  const std::string scene = Staged();
  const std::string other = Scene("a:b.c4d");
  Out({"set", scene, "--object", "Kopf", "--editor", "off", "-o", other});
  Out({"record", other, "x:y", "--write"});
  const struct {
    std::string left, right;
    int status;
  } kRows[] = {{scene + ":Day", other + ":Day", 0}, {scene + ":Night", other + ":x:y", 1},
               {other + ":x:y", other + ":x:y", 0}, {scene + ":Day", other + ":y", 2},
               {scene + ":Day", other, 0},          {scene + ":Dusk", other, 2}};
  for (const auto& row : kRows)
    EXPECT_EQ(Call({"diff", row.left, row.right}).status, row.status) << row.left << row.right;
  EXPECT_NE(
      Call({"diff", scene + ":Night", other + ":x:y"}).out.find("Editor mode  Undefined -> Off"),
      std::string::npos);
}

TEST_F(States, ADryRunTellsWhatLoadingDoesAndLoses) {
  const std::string scene = Edited();
  Check(scene,
        {{{"load", "Night", "--dry-run"},
          0,
          {"Loading \"Night\" would change 1 object and the render settings.",
           "Kopf  Render mode  On -> Off", "Width   640 px -> 1280 px",
           "Will be lost: 2 elements are in no Stagemark"}},
         {{"load", "Night", "-n", "--parts", "camera"}, 0, {"(camera only) would change nothing"}},
         {{"load", "Day", "-n", "--without", "objects"}, 0, {"(without objects) would change"}},
         {{"load", "Day"},
          0,
          {"Render mode  Off -> Undefined", "and 13 more", "Will be lost: 2 elements",
           "Kopf               Render mode  On\n",
           "Stays as it is: 1 element of the scene is not in \"Day\"\n  Front  Camera",
           "note: nothing was written"}},
         {{"load", "Day", "-n", "-o", "x.c4d"}, 2, {"--output excludes --dry-run"}}});
  const json dry = Json({"load", scene, "Night", "-n"});
  const json done = Json({"load", scene, "Night", "-o", Scene("done.c4d")});
  EXPECT_EQ(dry["changes"], done["changes"]);
  EXPECT_EQ(dry["parts"], done["parts"]);
  EXPECT_EQ(dry["lost"].size(), 2U);
  EXPECT_EQ(dry["written"], json());
  EXPECT_EQ(Call({"diff", Scene("done.c4d"), "Night", "--scene"}).status, 0);
  Out({"record", scene, "Kept", "--write"});
  EXPECT_EQ(Json({"load", scene, "Night", "-n"})["lost"], json::array());
}

// A name that is there stands for itself, also with a * in it.
TEST_F(States, NamesMayBePatterns) {
  const std::string scene = Numbered();
  const struct {
    std::vector<std::string> only;
    const char* meant;
  } kRows[] = {{{"a_*"}, "a_1 a_2 "},        {{"a_?"}, "a_1 a_2 "},
               {{"*_2", "a_1"}, "a_1 a_2 "}, {{"b*"}, "b* "},
               {{"b?"}, "b* bx "},           {{"*"}, "a_1 a_2 b* bx "},
               {{"a_1", "a_*"}, "a_1 a_2 "}};
  for (const auto& row : kRows) {
    std::vector<std::string> call{"list", scene, "--only"};
    call.insert(call.end(), row.only.begin(), row.only.end());
    EXPECT_EQ(ListedBy(call), row.meant) << testing::PrintToString(row.only);
  }
  Check(
      scene,
      {{{"update", "--only", "a_*"}, 0, {"\"a_1\" and \"a_2\""}},
       {{"set-objects", "Kopf", "--only", "?_1"}, 0, {"\"a_1\""}},
       {{"set-camera", "Camera", "--only", "c*"}, 2, {"No Stagemark of this scene matches \"c*\""}},
       {{"delete", "a_*"}, 1, {"delete \"a_1\" and \"a_2\"?  This cannot be undone."}},
       {{"delete", "a_*", "--yes"}, 0, {"Deleted \"a_1\" and \"a_2\"."}},
       {{"load", "a_*"}, 2, {"\"a_*\" means \"a_1\" and \"a_2\", and here one"}},
       {{"show", "*x"}, 0, {"bx, recorded"}},
       {{"rename", "*x", "c"}, 0, {"Renamed \"bx\" to \"c\"."}},
       {{"rename", "a_*", "c"}, 2, {"means \"a_1\" and \"a_2\""}},
       {{"export", "--to", Scene("out"), "--layout", "file", "--only", "*_1"}, 0, {"Exported 1"}},
       {{"render", "--size", "8x6", "-o", Scene("{state}.png"), "--only", "*_2"}, 0, {"a_2.png"}},
       {{"sheet", "-o", Scene("s.png"), "--only", "q?"}, 2, {"matches \"q?\""}},
       {{"list", "--only", "a_3"}, 2, {"Did you mean \"a_1\""}}});
}

// The fields of a line of CSV (RFC 4180) that has no line break in a field.
std::vector<std::string> CsvFields(const std::string& line) {
  std::vector<std::string> fields{""};
  bool quoted = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] == '"' && quoted && i + 1 < line.size() && line[i + 1] == '"') {
      fields.back() += line[i++];
    } else if (line[i] == '"') {
      quoted = !quoted;
    } else if (line[i] == ',' && !quoted) {
      fields.emplace_back();
    } else {
      fields.back() += line[i];
    }
  }
  return fields;
}

class Matrix : public States {
 protected:
  // As Edited, with a name that has to be quoted everywhere and a camera that nobody knows.
  std::string Awkward() const {
    const std::string scene = Edited();
    Out({"rename", scene, "Day", "Day, \"wet\" <b>", "--write"});
    Out({"set", scene, "--add-camera", "Side", "--write"});
    return scene;
  }
};

TEST_F(Matrix, SaysWhatEachStateSays) {
  const std::string scene = Awkward();
  Check(scene, {{{"matrix"},
                 0,
                 {"Day, \"wet\" <b>", "Kopf2 ", "Render mode   Undefined", "*Off",
                  "no Stagemark knows it", "* changes from the Stagemark before it"}},
                {{"matrix", "--only", "Night", "--parts", "camera"}, 0, {"Nothing differs"}},
                {{"matrix", "--parts", "camera", "--all"}, 0, {"Scene camera", "\"Camera\""}},
                {{"matrix", "--csv", "--json"}, 2, {"excludes"}},
                {{"matrix", "--only", "D?"}, 2, {"No Stagemark of this scene matches"}}});
  const json matrix = Json({"matrix", scene, "--parts", "objects"});
  const json counts = JsonAnyway({"diff", scene, "Day*", "Night", "--parts", "objects"})["counts"];
  const auto rows = [&](const auto& wanted) {
    return static_cast<std::size_t>(std::ranges::count_if(matrix["rows"], wanted));
  };
  EXPECT_EQ(matrix["stagemarks"], (json{"Day, \"wet\" <b>", "Night"}));
  EXPECT_EQ(rows([](const json& row) { return row["differs"].get<bool>(); }),
            counts["objects"]["changed"]);
  EXPECT_EQ(rows([](const json& row) { return row["cells"][0].is_null() && row["knownBy"] == 1; }),
            counts["objects"]["onlyRight"]);
  EXPECT_EQ(rows([](const json& row) { return row["knownBy"] == 0; }), 1U);
}

TEST_F(Matrix, GoesIntoSpreadsheetsAndBrowsers) {
  const std::string scene = Awkward();
  const json matrix = Json({"matrix", scene, "--parts", "objects"});
  std::istringstream lines(Out({"matrix", scene, "--parts", "objects", "--csv"}));
  std::size_t count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    ASSERT_EQ(line.back(), '\r') << "lines end with both";
    line.pop_back();
    const std::vector<std::string> fields = CsvFields(line);
    ASSERT_EQ(fields.size(), 7U) << line;
    const json& row = count == 0 ? json() : matrix["rows"][count - 1];
    EXPECT_EQ(fields[1], count == 0 ? "element" : row["element"].get<std::string>());
    EXPECT_EQ(fields[5], count == 0                  ? "Day, \"wet\" <b>"
                         : row["cells"][0].is_null() ? ""
                                                     : row["cells"][0]["text"].get<std::string>());
  }
  EXPECT_EQ(count, matrix["rows"].size() + 1);

  const std::string page = Out({"matrix", scene, "--html"});
  EXPECT_EQ(page.rfind("<!DOCTYPE html>", 0), 0U);
  EXPECT_NE(page.find("Day, &quot;wet&quot; &lt;b&gt;"), std::string::npos);
  EXPECT_NE(page.find("<td class=\"changed\">Render mode Off</td>"), std::string::npos);
  for (const char* foreign : {"<script", "src=", "href=", "http"})
    EXPECT_EQ(page.find(foreign), std::string::npos) << foreign;
}

// Columns that have no room beside the rest stand below it.
TEST_F(Matrix, StandsInPiecesWhereItIsWide) {
  const std::string scene = Spider();
  for (int i = 0; i < 12; ++i) {
    Out({"set", scene, "--object", "Kopf", "--render", i % 2 == 0 ? "on" : "off", "--write"});
    Out({"record", scene, "a rather long name " + std::to_string(i), "--write"});
  }
  std::istringstream lines(Out({"matrix", scene}));
  std::size_t heads = 0;
  for (std::string line; std::getline(lines, line);) {
    EXPECT_LE(line.size(), 100U + 10) << line;  // letters of several bytes
    heads += line.find("Kopf ") != std::string::npos;
  }
  EXPECT_GT(heads, 2U);
  EXPECT_NE(Out({"matrix", scene, "-v"}).find("a rather long name 10"), std::string::npos);
}

// A ? is a letter, however many bytes it has; a * backs off as far as it must.
TEST_F(States, PatternsCountLetters) {
  const std::string scene = Spider();
  for (const char* name : {"\u00C41", "aXbXc", "[1]"}) Out({"record", scene, name, "--write"});
  const std::pair<const char*, const char*> kRows[] = {
      {"?1", "\u00C41 "}, {"a*Xc", "aXbXc "}, {"*X*X?", "aXbXc "}, {"[*", "[1] "}};
  for (const auto& [typed, meant] : kRows)
    EXPECT_EQ(ListedBy({"list", scene, "--only", typed}), meant) << typed;
  for (const char* typed : {"??1", "a*Xd", "*X*X", "[1]?"})
    EXPECT_EQ(Call({"list", scene, "--only", typed}).status, 2) << typed;
}

// After a load the scene says what the state says, whatever parts were loaded.
TEST_F(States, NothingDiffersAfterALoad) {
  const std::string scene = Edited();
  for (const char* parts : {"objects", "camera,layers", "render-settings", "objects,materials"}) {
    Out({"load", scene, "Night", "--parts", parts, "-o", Scene("after.c4d"), "--force"});
    EXPECT_EQ(Call({"diff", Scene("after.c4d"), "Night", "--scene", "--parts", parts}).status, 0)
        << parts;
  }
  Out({"options", scene, "--toggle", "Render Settings", "--write"});
  Out({"load", scene, "Night", "-o", Scene("after.c4d"), "--force"});
  Check(Scene("after.c4d"),
        {{{"diff", "Night", "--scene"},
          0,
          {"are the same", "\"Render Settings\" is off in the options"}},
         {{"load", "Night", "-n"}, 0, {"change nothing", "is off in the options"}},
         {{"diff", "Night", "--scene", "--parts", "render-settings"}, 1, {"Width"}}});
}

TEST_F(States, OldWordsWorkAndAreInNoHelp) {
  const std::string scene = Staged();
  EXPECT_EQ(Out({"render", "--help"}).find("--state"), std::string::npos);
  EXPECT_EQ(Out({"check", "--help"}).find("--only"), std::string::npos);
  Out({"render", scene, "--state", "D*", "--size", "8x6", "-o", Scene("old.png")});
  EXPECT_FALSE(ReadText(Scene("old.png")).empty());
}

TEST_F(States, GoIntoAnotherSceneAsText) {
  const std::string scene = Staged();
  const std::string text = folder_ / "states.json";
  const std::string other = Scene("other.c4d");
  Out({"import", TEST_SOURCE_DIR "/scenes/spider/spider.fbx", other});
  tests::WriteText(text, Out({"states", "export", scene}));
  const json said = Json({"states", "import", other, text, "--rename", "Day=Morning", "--write"});
  EXPECT_EQ(said["stagemarks"].size(), 2U);
  EXPECT_EQ(said["stagemarks"][0]["outcome"], "added");
  EXPECT_EQ(said["missing"], json({"Props", "Front"}));
  EXPECT_EQ(ListedBy({"list", other, "--json"}), "Morning Night ");
  EXPECT_EQ(Call({"states", "import", other, text, "--only", "D*", "--rename", "Day=Morning",
                  "--replace", "--dry-run"})
                .out,
            "Replaced \"Morning\".\nNothing was written (--dry-run).\n");
  EXPECT_EQ(Call({"diff", scene + ":Day", other + ":Morning"}).status, 0);
}

// The text without the names of the files, for comparing messages about different ones.
std::string WithoutFiles(std::string text, const std::vector<std::string>& files) {
  for (const std::string& file : files) {
    for (std::size_t at = 0; (at = text.find(file)) != std::string::npos;)
      text.erase(at, file.size());
  }
  return text;
}

// In whatever letters: Chinese ones are two columns wide and three bytes long.
TEST_F(States, TheTrashLinesUpAndKnowsTheZone) {
  const std::string scene = Scene("room.c4d");
  Out({"new", scene});
  for (const char* name : {"\u663C\u9593", "Evening"}) Out({"record", scene, name, "--write"});
  Out({"delete", scene, "*", "--yes", "--write"});
  const std::string out = Out({"trash", "list", scene});
  EXPECT_NE(out.find("\u663C\u9593     deleted"), std::string::npos) << out;
  EXPECT_NE(out.find("Evening  deleted"), std::string::npos) << out;
  const json trash = Json({"trash", "list", scene})["trash"];
  for (const json& one : trash) {
    for (const char* key : {"recorded", "deleted"}) {
      std::string date = one[key];
      date[10] = 'T';
      EXPECT_TRUE(one[std::string(key) + "At"].get<std::string>().starts_with(date)) << one;
    }
  }
}

TEST_F(States, TextsAreComparedAsScenesAre) {
  const std::string scene = Staged();
  const std::string later = Scene("later.c4d");
  Out({"set", scene, "--object", "Kopf*", "--render", "off", "--camera", "Front", "-o", later});
  Out({"record", later, "Day", "--yes", "--write"});
  Out({"record", later, "Dusk", "--write"});
  const auto text = [&](const std::string& of, const std::string& name) {
    const std::string path = Scene(name);
    tests::WriteText(path, Out({"states", "export", of}));
    return path;
  };
  const std::string a = text(scene, "a.json");
  const std::string b = text(later, "b.json");
  const std::vector<std::pair<std::string, std::string>> kinds{{scene, later}, {a, b}, {scene, b}};
  const std::string one =
      WithoutFiles(Call({"diff", scene + ":Day", later + ":Day", "-v"}).out, {scene, later});
  EXPECT_NE(one.find("Front"), std::string::npos) << one;
  json whole;
  for (const auto& [left, right] : kinds) {
    const ChildResult day = Call({"diff", left + ":Day", right + ":Day", "-v"});
    EXPECT_EQ(day.status, 1) << day.err;
    EXPECT_EQ(WithoutFiles(day.out, {left, right}), one) << left << " " << right;
    json files = JsonAnyway({"diff", left, right});
    EXPECT_EQ(files["onlyRight"], json::array({"Dusk"})) << files;
    EXPECT_EQ(files["onlyLeft"], json::array());
    EXPECT_EQ(files["stagemarks"][1]["equal"], true) << "Night is as it was";
    if (whole.is_null()) whole = files["stagemarks"];
    EXPECT_EQ(files["stagemarks"], whole);
    EXPECT_EQ(Call({"diff", right + ":Night", left}).status, 0) << "by its name";
    EXPECT_EQ(Call({"diff", left, left}).status, 0);
  }
  Out({"delete", later, "Dusk", "Night", "--yes", "--write"});
  Out({"delete", scene, "Night", "--yes", "--write"});
  const json single = JsonAnyway({"diff", scene, later});
  EXPECT_EQ(single["stagemarks"], json::array({whole[0]})) << "the same form with one in each";
  EXPECT_EQ(single["differences"], whole[0]["differences"]);
  EXPECT_EQ(Call({"diff", b + ":Dusk", a}).status, 2) << "which has none of this name";
  EXPECT_EQ(Call({"diff", a, "Day", "Night"}).status, 1) << "two of one text";
  EXPECT_EQ(Call({"diff", a, "Day", "--scene"}).status, 2) << "there is none";
  tests::WriteText(Scene("cut.json"), ReadText(a).substr(0, 500));
  for (const char* file : {"cut.json", "nowhere.json"}) {
    const ChildResult result = Call({"diff", scene, Scene(file)});
    EXPECT_EQ(result.status, 2);
    EXPECT_NE(result.err, "");
  }
}

}  // namespace
