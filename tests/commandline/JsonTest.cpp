// Output for programs: of every verb, held against the schema that describes it; messages on
// standard error; and how quiet a quiet call is.
#include <regex>
#include <set>
#include <sstream>

#include "tests/commandline/CommandLine.h"

namespace {

using nlohmann::json;
using tests::ChildResult;
using tests::CommandLine;
using tests::ReadText;
using Words = std::vector<std::string>;

// As much of JSON Schema as the file uses; what it uses besides is refused, so that no word of it
// goes unheeded.
class Schema {
 public:
  Schema() : root_(json::parse(ReadText(TEST_SOURCE_DIR "/docs/json.schema.json"))) {}

  const json& Definition(const std::string& name) const { return root_.at("$defs").at(name); }
  const json& Root() const { return root_; }

  // The first violation of the schema by a value, empty for none.
  std::string Fault(const json& value, const json& schema, const std::string& at = "") const {
    std::string fault;
    for (const auto& [word, rule] : schema.items()) {
      if (fault.empty()) fault = Breach(word, rule, value, schema, at);
    }
    return fault;
  }

 private:
  static std::string TypeOf(const json& value) {
    return value.is_number_integer() ? "integer"
           : value.is_number()       ? "number"
                                     : std::string(value.type_name());
  }

  static bool IsOfType(const json& value, const json& type) {
    return TypeOf(value) == type || (type == "number" && value.is_number());
  }

  std::string Breach(const std::string& word, const json& rule, const json& value,
                     const json& schema, const std::string& at) const {
    if (word == "description") return "";
    if (word == "$ref") return Fault(value, Definition(rule.get<std::string>().substr(8)), at);
    if (word == "const") return value == rule ? "" : at + " is " + value.dump();
    if (word == "enum") return Among(rule, value) ? "" : at + " is " + value.dump();
    if (word == "type") {
      const json types = rule.is_array() ? rule : json::array({rule});
      for (const json& type : types) {
        if (IsOfType(value, type)) return "";
      }
      return at + " is of type " + TypeOf(value);
    }
    if (word == "pattern") {
      const bool fits =
          !value.is_string() ||
          std::regex_search(value.get<std::string>(), std::regex(rule.get<std::string>()));
      return fits ? "" : at + " is " + value.dump();
    }
    if (word == "minItems" || word == "maxItems")
      return value.size() == rule ? "" : at + " has another length";
    if (word == "items") return FaultOfItems(value, rule, at);
    if (word == "required" && value.is_object()) {
      for (const json& key : rule) {
        if (!value.contains(key.get<std::string>())) return at + " lacks " + key.dump();
      }
      return "";
    }
    if (word == "required") return "";
    if (word == "properties") return FaultOfMembers(value, rule, at);
    if (word == "additionalProperties") return FaultOfOthers(value, schema, rule, at);
    return "the schema says \"" + word + "\", which this test does not know";
  }

  static bool Among(const json& values, const json& value) {
    return std::find(values.begin(), values.end(), value) != values.end();
  }

  std::string FaultOfItems(const json& value, const json& rule, const std::string& at) const {
    for (std::size_t i = 0; value.is_array() && i < value.size(); ++i) {
      const std::string fault = Fault(value[i], rule, at + "[" + std::to_string(i) + "]");
      if (!fault.empty()) return fault;
    }
    return "";
  }

  std::string FaultOfMembers(const json& value, const json& rule, const std::string& at) const {
    for (const auto& [key, inner] : rule.items()) {
      const std::string fault =
          value.is_object() && value.contains(key) ? Fault(value[key], inner, at + "." + key) : "";
      if (!fault.empty()) return fault;
    }
    return "";
  }

  std::string FaultOfOthers(const json& value, const json& schema, const json& rule,
                            const std::string& at) const {
    const json known = schema.value("properties", json::object());
    const json members = value.is_object() ? value : json::object();
    for (const auto& [key, member] : members.items()) {
      if (known.contains(key)) continue;
      const std::string fault =
          rule.is_boolean() ? "is not described" : Fault(member, rule, at + "." + key);
      if (!fault.empty()) return at + "." + key + " " + fault;
    }
    return "";
  }

  json root_;
};

class JsonOutput : public CommandLine {
 protected:
  // One call at least of every verb that works without other machines.
  std::vector<Words> Calls(const std::string& scene) const {
    const std::string spider = TEST_SOURCE_DIR "/scenes/spider/spider.fbx";
    tests::WriteText(folder_ / "steps", "list\nset --object Kopf --editor on\nstates export Day\n");
    return {{"new", Scene("new.c4d")},
            {"import", spider, Scene("fresh.c4d"), "--collect"},
            {"import", spider, "--update", scene, "--dry-run"},
            {"info", scene, "--tree"},
            {"info", scene, "--dump"},
            {"set", scene, "--object", "Kopf", "--render", "on", "--size", "10x10"},
            {"run", scene, folder_ / "steps"},
            {"objects", "list", scene},
            {"objects", "add", scene, "Box", "--type", "cube"},
            {"cameras", "place", scene, "Front", "--at", "0,0,0"},
            {"lights", "remove", scene, "*"},
            {"materials", "rename", scene, "Skin", "Hide"},
            {"layers", "list", scene},
            {"objects", "remove", scene, "Kopf"},
            {"layers", "remove", scene, "Props"},
            {"record", scene, "New"},
            {"list", scene},
            {"show", scene, "Day"},
            {"diff", scene, "Day", "Night"},
            {"matrix", scene},
            {"check", scene},
            {"check", scene, "--fix", "link-gone"},
            {"check", "--codes"},
            {"load", scene, "Day"},
            {"load", scene, "Day", "-o", Scene("loaded.c4d")},
            {"restore", scene, "--dry-run", "--keep", "hidden"},
            {"rename", scene, "Day", "Dawn"},
            {"delete", scene, "Day", "--yes"},
            {"delete-all", scene, "--yes"},
            {"trash", "list", scene},
            {"trash", "restore", scene, "Gone", "--as", "Back"},
            {"trash", "empty", scene, "--yes"},
            {"options", scene, "--off", "LAYERS", "objects"},
            {"states", "import", scene, folder_ / "states.json", "--replace", "--dry-run"},
            {"update", scene},
            {"set-objects", scene, "Kopf"},
            {"set-tags", scene, "Kopf"},
            {"set-layers", scene, "Props"},
            {"set-camera", scene, "Front"},
            {"clean-materials", scene},
            {"export", scene, "--to", folder_ / "out"},
            {"publish", scene, "--to", folder_ / "web", "--all-in-one"},
            {"render", scene, "--size", "8x6", "-o", folder_ / "{state}.png"},
            {"sheet", scene, "-o", folder_ / "sheet.png"},
            {"farm", "submit", scene, "--farm", folder_ / "farm", "--size", "8x6", "--dry-run"},
            {"demo", "--to", folder_ / "demo"}};
  }
};

// The object that was printed is that of the verb, and each message is one.
void ExpectDescribed(const ChildResult& result, const std::string& verb) {
  const Schema schema;
  const std::string told = result.out + result.err;
  const json printed = json::parse(result.out, nullptr, false);
  ASSERT_FALSE(printed.is_discarded()) << told;
  EXPECT_EQ(printed.value("verb", ""), verb) << told;
  EXPECT_EQ(schema.Fault(printed, schema.Definition("verb-" + verb)), "") << told;
  std::istringstream messages(result.err);
  for (std::string line; std::getline(messages, line);) {
    EXPECT_EQ(schema.Fault(json::parse(line, nullptr, false), schema.Definition("message")), "")
        << told;
  }
}

TEST_F(JsonOutput, EveryVerbPrintsWhatTheSchemaSays) {
  const std::string scene = Staged();
  tests::WriteText(folder_ / "states.json", Out({"states", "export", scene}));
  Out({"record", scene, "Gone", "--write"});
  Out({"delete", scene, "Gone", "--yes", "--write"});
  std::set<std::string> seen{"page"};  // made where the viewer is
  for (Words call : Calls(scene)) {
    call.emplace_back("--json");
    SCOPED_TRACE(testing::PrintToString(call));
    ExpectDescribed(Call(call), call[0]);
    seen.insert(call[0]);
  }
  const Schema schema;
  for (const json& verb : schema.Root()["anyOf"]) {
    const std::string name = verb["$ref"].get<std::string>().substr(8);
    EXPECT_TRUE(name == "message" || seen.contains(name.substr(5))) << name << " is not called";
  }
}

// With a scheduler that takes every job and knows none; a machine of which it knows nothing does
// it.
TEST_F(JsonOutput, TheFarmPrintsWhatTheSchemaSays) {
  const std::string scene = Staged();
  const std::pair<const char*, const char*> commands[] = {
      {"sbatch", "echo 77"},
      {"squeue", "echo 'slurm_load_jobs error: Invalid job id specified' >&2; exit 1"},
      {"scancel", "exit 0"}};
  std::string slurm = "mkdir slurm";
  for (const auto& [name, text] : commands)
    slurm += std::string("; printf '%s\\n' '#!/bin/sh' \"") + text + "\" >slurm/" + name;
  ASSERT_EQ(Shell(slurm + "; chmod +x slurm/*").status, 0);
  std::string job;
  for (const std::string action :
       {"submit", "status", "retry", "run", "collect", "status", "cancel"}) {
    SCOPED_TRACE(action);
    const std::string what = action == "submit" ? "'" + scene + "' --farm farm --size 8x6"
                             : action == "run"  ? "'" + job + "' --jobs 1"
                                                : "'" + job + "'";
    const ChildResult result =
        Shell("PATH=$PWD/slurm:$PATH; stagemarks farm " + action + " " + what + " --json");
    EXPECT_EQ(result.status, 0) << result.err;
    ExpectDescribed(result, "farm");
    const json printed = json::parse(result.out, nullptr, false);
    if (action == "submit") job = printed.value("folder", "");
    if (action == "run") {
      EXPECT_EQ(printed.value("rendered", 0), 2);
    } else if (action == "collect") {
      EXPECT_EQ(printed["tasks"][0].value("result", ""), "done");
    }
  }
}

TEST_F(JsonOutput, ErrorsAreLinesOfJsonAndLeaveTheResultAlone) {
  const std::string scene = Staged();
  const struct {
    Words call;
    int status;
    const char* says;
  } rows[] = {{{"load", scene, "Dya"}, 2, "There is no Stagemark \"Dya\""},
              {{"list", Scene("nowhere.c4d")}, 1, "No such file"},
              {{"list"}, 2, "SCENE is required"},
              {{"lits", scene}, 2, "There is no verb \"lits\". Did you mean"},
              {{"list", scene, "--names"}, 2, "--json excludes --names"},
              {{"delete", scene, "Day"}, 1, "Nothing was deleted."}};
  for (const auto& row : rows) {
    Words call = row.call;
    call.emplace_back("--json");
    const ChildResult result = Call(call);
    EXPECT_EQ(result.status, row.status) << testing::PrintToString(call);
    EXPECT_EQ(result.out, "") << testing::PrintToString(call);
    json last;
    std::istringstream messages(result.err);
    for (std::string line; std::getline(messages, line);) last = json::parse(line, nullptr, false);
    EXPECT_EQ(last.value("level", ""), "error") << result.err;
    EXPECT_NE(last.value("text", "").find(row.says), std::string::npos) << result.err;
  }
}

TEST_F(JsonOutput, QuietCallsPrintErrorsOnly) {
  const std::string scene = Staged();
  Out({"record", scene, "Gone", "--write"});
  Out({"delete", scene, "Gone", "--yes", "--write"});
  tests::WriteText(folder_ / "states.json", Out({"states", "export", scene}));
  for (Words call : Calls(scene)) {
    // Data that a call asks for is printed: a dump, and the text among the steps.
    const bool isData = call[0] == "run" || call.back() == "--dump";
    call.insert(call.end(), {"--quiet"});
    const ChildResult result = Call(call);
    EXPECT_EQ(result.out.empty(), !isData) << testing::PrintToString(call) << result.out;
    EXPECT_EQ(result.err, "") << testing::PrintToString(call);
  }
  EXPECT_NE(Call({"load", scene, "Dya", "-q"}).err, "");
}

TEST_F(JsonOutput, CountsAreOfWhatChanged) {
  const std::string scene = Staged();
  const auto count = [&](const Words& call, const char* key) { return Json(call)["counts"][key]; };
  EXPECT_EQ(count({"set", scene, "--object", "*", "--render", "off"}, "objects"), 0);
  EXPECT_EQ(count({"set", scene, "--object", "Kopf*", "--editor", "off"}, "objects"), 2);
  EXPECT_EQ(count({"set", scene, "--object", "Kopf*", "--material", "none"}, "objects"), 2);
  EXPECT_EQ(count({"set", scene, "--layer", "Props", "--flag", "view=on"}, "layers"), 0);
  EXPECT_EQ(count({"set", scene, "--camera", "Front"}, "sceneCamera"), true);
  EXPECT_EQ(Json({"set-objects", scene, "Kopf"})["changedStagemarks"], json::array({"Day"}));
  EXPECT_EQ(Json({"options", scene, "--on", "layers", "CAMERA"})["changed"], 0);
  EXPECT_EQ(Json({"options", scene, "--toggle", "active camera"})["changed"], 1);
}

}  // namespace
