// The checker: exit statuses, what it prints for a person and for a program, and mending. Each code
// is planted and found in tests/states.
#include <filesystem>

#include "engine/states/StoredStates.h"
#include "tests/commandline/CommandLine.h"
#include "tests/support/PluginSession.h"
#include "tests/support/SceneBuilder.h"

namespace {

using nlohmann::json;
using tests::ChildResult;
using tests::CommandLine;
using tests::ReadText;

class Checker : public CommandLine {
 protected:
  // "Day" and "Night", "Night" taken out of the list, and the record of an object that is gone.
  std::string Damaged() const {
    const std::string file = Scene("damaged.c4d");
    tests::PluginSession session;
    tests::SceneBuilder build(session.Doc());
    build.Cube("Lamp").Cube("Table").Camera("Front").LookThrough("Front");
    session.Record("Day");
    build.Modes("Table", host::MODE_OFF, host::MODE_OFF);
    session.Record("Night");
    host::BaseObject* lamp = build.GetObject("Lamp");
    host::BaseObject::Free(lamp);
    host::BaseContainer& data = *session.Doc().GetDataInstance();
    host::BaseContainer entries = data.GetContainer(engine::kStoredEntries);
    entries.RemoveData(1);
    data.SetContainer(engine::kStoredEntries, entries);
    session.SaveAs("room.c4d");
    std::filesystem::copy_file(session.Folder() + "/room.c4d", file);
    return file;
  }
  std::multiset<std::string> Codes(const json& checked) const {
    std::multiset<std::string> codes;
    for (const json& finding : checked["findings"]) codes.insert(finding["code"]);
    return codes;
  }
};

TEST_F(Checker, AnswersByStatusAndCode) {
  const std::string clean = Staged();
  const std::string damaged = Damaged();
  const struct {
    std::vector<std::string> call;
    int status;
    std::vector<const char*> says;
  } kRows[] = {
      {{clean}, 0, {"not-in-some-states", "the scene  Front  This object is known to 1 of 2"}},
      {{clean, "--strict"}, 0, {"1 note."}},
      {{damaged}, 1, {"1 error", "error entry-missing", "Night", "`--fix entry-missing` puts it"}},
      {{"--codes"}, 0, {"error   record-missing\n", "`--fix link-gone` takes these records out."}},
      {{}, 2, {"SCENE is required"}},
      {{Scene("missing.c4d")}, 2, {"missing.c4d"}},
      {{clean, "--only", "Day"}, 2, {"`stagemarks list SCENE --only NAMES`"}},
      {{clean, "--fix", "lamp-gone"},
       2,
       {"There is no code \"lamp-gone\". `stagemarks check --codes`"}},
      {{clean, "--fix", "name-twice"},
       2,
       {"no answer that is safe", "These can be fixed: record-missing"}},
      {{clean, "--write"}, 2, {"nothing to write without --fix"}},
      {{damaged, "--fix", "link-gone"}, 1, {"Fixed link-gone in ", "note: nothing was written"}},
      {{clean, "--fix", "link-gone"}, 0, {"Nothing was fixed of link-gone."}}};
  for (const auto& row : kRows) {
    std::vector<std::string> call{"check"};
    call.insert(call.end(), row.call.begin(), row.call.end());
    const ChildResult result = Call(call);
    EXPECT_EQ(result.status, row.status) << testing::PrintToString(call) << result.err;
    for (const char* says : row.says)
      EXPECT_NE((result.out + result.err).find(says), std::string::npos)
          << says << "\n"
          << result.out << result.err;
  }
}

TEST_F(Checker, StrictCountsWarnings) {
  const std::string scene = Spider();
  Out({"record", scene, "Night", "--write"});
  Out({"set", scene, "--object", "Kopf", "--render", "off", "--write"});
  Out({"record", scene, "night", "--write"});
  EXPECT_EQ(Json({"check", scene})["warnings"], 1);
  EXPECT_EQ(Call({"check", scene, "--strict"}).status, 1);
  EXPECT_EQ(Codes(JsonAnyway({"check", scene, "--strict"})).count("file-name-clash"), 1U);
}

TEST_F(Checker, FixMendsWhatItNamesAndKeepsTheRest) {
  const std::string scene = Damaged();
  const std::string before = ReadText(scene);
  EXPECT_EQ(Marks(scene), "Day ");
  const json found = JsonAnyway({"check", scene});
  EXPECT_EQ(found["errors"], 1);
  EXPECT_EQ(Codes(found).count("entry-missing"), 1U);
  EXPECT_EQ(Codes(found).count("link-gone"), 2U) << "in both states";
  for (const json& finding : found["findings"]) {
    EXPECT_TRUE(finding["fixable"]) << finding;
    EXPECT_FALSE(finding["remedy"].get<std::string>().empty());
  }
  EXPECT_EQ(ReadText(scene), before);

  const json fixed = Json({"check", scene, "--fix", "entry-missing", "--write"});
  EXPECT_EQ(fixed["fixed"], json::array({{{"code", "entry-missing"}, {"places", 1}}}));
  EXPECT_EQ(fixed["errors"], 0);
  EXPECT_EQ(Marks(scene).find("Night") != std::string::npos, true);
  EXPECT_EQ(Codes(Json({"check", scene})).count("link-gone"), 2U);
  Out({"check", scene, "--fix", "link-gone", "--fix", "entry-missing", "-o", Scene("whole.c4d")});
  EXPECT_TRUE(Codes(Json({"check", Scene("whole.c4d")})).empty());
  EXPECT_EQ(Call({"diff", scene + ":Night", Scene("whole.c4d") + ":Night"}).status, 0);
}

TEST_F(Checker, CodesAreForScripts) {
  const json codes = Json({"check", "--codes"})["codes"];
  EXPECT_GT(codes.size(), 10U);
  for (const json& code : codes) EXPECT_EQ(code.size(), 5U) << code;
}

}  // namespace
