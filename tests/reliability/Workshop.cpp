#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "engine/scene/Ownership.h"
#include "engine/scenefile/SceneFile.h"
#include "engine/states/StoredStates.h"
#include "tests/reliability/Rounds.h"

namespace tests {

namespace fs = std::filesystem;

namespace {

constexpr const char* kProgram = TEST_BINARY_DIR "/bin/stagemarks";
constexpr const char* kFaults = TEST_BINARY_DIR "/lib/faulty_calls.so";

Workshop::Files FilesBelow(const std::string& folder) {
  Workshop::Files files;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    if (entry.is_regular_file())
      files[fs::relative(entry.path(), folder).string()] = ReadText(entry.path().string());
  }
  return files;
}

}  // namespace

const std::vector<std::vector<std::string>>& Workshop::Commands() {
  static const std::vector<std::vector<std::string>> commands = {
      {"record", "s.c4d", "Dawn", "--preview", "--write"},
      {"record", "s.c4d", "Day", "--preview", "--yes", "--write"},
      {"rename", "s.c4d", "Day", "Noon", "--write"},
      {"delete", "s.c4d", "Night", "--yes", "--write"},
      {"delete-all", "s.c4d", "--yes", "--write"},
      {"set", "s.c4d", "--object", "*", "--render", "off", "--write"},
      {"load", "s.c4d", "Day", "--write"},
      {"export", "s.c4d", "--to", "out"},
      {"options", "s.c4d", "--toggle", "Layers", "--write"},
  };
  return commands;
}

Workshop::Workshop() {
  fs::create_directories(Folder());
  const std::vector<std::vector<std::string>> making = {
      {"import", TEST_SOURCE_DIR "/tests/scenes/gltf/Cameras.gltf", "s.c4d"},
      {"record", "s.c4d", "Day", "--preview", "--write"},
      {"set", "s.c4d", "--object", "*", "--render", "off", "--write"},
      {"record", "s.c4d", "Night", "--preview", "--write"}};
  for (const auto& command : making) {
    const ChildResult made = Run(command);
    if (made.status != 0) throw std::runtime_error(made.out + made.err);
    before_ = FilesBelow(Folder());
  }
}

void Workshop::Reset() const {
  fs::remove_all(Folder());
  fs::create_directories(Folder());
  for (const auto& [name, bytes] : before_) {
    fs::create_directories(fs::path(Folder() + "/" + name).parent_path());
    WriteText(Folder() + "/" + name, bytes);
  }
}

ChildResult Workshop::Run(const std::vector<std::string>& command,
                          const std::map<std::string, std::string>& environment) {
  Reset();
  std::map<std::string, std::string> all = environment;
  all["XDG_CONFIG_HOME"] = scratch_ / "config";
  all["XDG_STATE_HOME"] = scratch_ / "state";
  all["LD_PRELOAD"] = kFaults;
  all["STAGEMARKS_FAULT_ROOT"] = Folder();
  std::vector<std::string> words = {"-C", Folder(), kProgram};
  words.insert(words.end(), command.begin(), command.end());
  return RunChild("/usr/bin/env", words, all);
}

const Workshop::Clean& Workshop::WithoutFaults(std::size_t command) {
  const auto [found, isNew] = cleans_.try_emplace(command);
  Clean& clean = found->second;
  if (!isNew) return clean;
  const ChildResult result = Run(
      Commands()[command],
      {{"STAGEMARKS_FAULT_COUNT", Place("count")}, {"STAGEMARKS_FAULT_JOURNAL", Place("journal")}});
  if (result.status != 0) throw std::runtime_error(result.out + result.err);
  clean = {std::atol(ReadText(Place("count")).c_str()), After(), ReadText(Place("journal"))};
  if (clean.calls == 0) throw std::runtime_error("no call was counted");
  return clean;
}

bool Workshop::IsWhole(const std::string& name, const std::string& bytes, const Files& made) const {
  const auto old = before_.find(name);
  if (old != before_.end() && old->second == bytes) return true;
  const auto now = made.find(name);
  if (now == made.end()) return false;
  // A scene holds the moment at which it was changed.
  return now->second == bytes ||
         (name.ends_with(".c4d") && StatesIn(bytes) == StatesIn(now->second));
}

Workshop::Files Workshop::After() const { return FilesBelow(Folder()); }

std::string NamesIn(const host::BaseDocument& doc) {
  std::string names;
  for (const engine::StoredState& state : engine::ReadStates(doc)) names += state.name + "\n";
  return names;
}

std::string StatesIn(const std::string& bytes) {
  const auto scene = engine::ReadScene(bytes);
  return scene ? NamesIn(*scene.Value()) : "(damaged)";
}

}  // namespace tests
