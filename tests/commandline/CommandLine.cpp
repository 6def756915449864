#include "tests/commandline/CommandLine.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace tests {

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

constexpr const char* kProgram = TEST_BINARY_DIR "/bin/stagemarks";

std::vector<std::string> WithJson(std::vector<std::string> arguments) {
  arguments.emplace_back("--json");
  return arguments;
}

}  // namespace

std::map<std::string, std::string> CommandLine::Environment() const {
  return {{"XDG_CONFIG_HOME", settings_ / "config"}, {"XDG_STATE_HOME", settings_ / "state"}};
}

ChildResult CommandLine::Call(const std::vector<std::string>& arguments) const {
  return RunChild(kProgram, arguments, Environment());
}

ChildResult CommandLine::CallOnTerminal(const std::vector<std::string>& arguments,
                                        const std::vector<Typing>& typing) const {
  return RunOnTerminal(kProgram, arguments, Environment(), typing);
}

ChildResult CommandLine::Shell(const std::string& script) const {
  auto environment = Environment();
  environment["PATH"] = std::string(TEST_BINARY_DIR "/bin:") + std::getenv("PATH");
  return RunChild("/bin/sh", {"-c", "cd '" + folder_.Path() + "' && { " + script + "\n}"},
                  environment);
}

std::string CommandLine::Out(const std::vector<std::string>& arguments) const {
  const ChildResult result = Call(arguments);
  EXPECT_EQ(result.status, 0) << testing::PrintToString(arguments) << "\n"
                              << result.out << result.err;
  return result.out;
}

json CommandLine::Json(std::vector<std::string> arguments) const {
  return json::parse(Out(WithJson(std::move(arguments))), nullptr, false);
}

json CommandLine::JsonAnyway(std::vector<std::string> arguments) const {
  return json::parse(Call(WithJson(std::move(arguments))).out, nullptr, false);
}

std::string CommandLine::Spider() const {
  const std::string scene = Scene("spider.c4d");
  Out({"import", TEST_SOURCE_DIR "/scenes/spider/spider.fbx", scene});
  return scene;
}

std::string CommandLine::Staged() const {
  const std::string scene = Spider();
  Out({"record", scene, "Day", "--write"});
  Out({"set", scene, "--object", "*", "--render", "off", "--add-layer", "Props", "--add-camera",
       "Front", "--write"});
  Out({"record", scene, "Night", "--write"});
  return scene;
}

std::string CommandLine::Marks(const std::string& scene) const {
  std::string names;
  const json list = Json({"list", scene});
  for (const json& mark : list["stagemarks"])
    names += (mark["current"] ? "*" : "") + mark["name"].get<std::string>() + " ";
  return names;
}

std::string CommandLine::Files(const std::string& name) const {
  std::map<std::string, int> found;
  for (const auto& entry : fs::recursive_directory_iterator(folder_ / name)) {
    if (entry.is_directory()) continue;
    const fs::path path = fs::relative(entry.path(), folder_ / name);
    ++found[path.parent_path().filename() == "tex" ? (path.parent_path() / "*").string()
                                                   : path.string()];
  }
  std::string text;
  for (const auto& [path, count] : found) {
    text += (text.empty() ? "" : " | ") + path + (path.back() == '*' ? std::to_string(count) : "");
  }
  return text;
}

}  // namespace tests
