#include "engine/application/ProgramPlaces.h"

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>

namespace engine {
namespace {

namespace fs = std::filesystem;

constexpr const char* kProgram = "stagemarks";

// Without links and dots; what does not exist is only made absolute.
std::string Clean(const fs::path& path) {
  std::error_code error;
  const fs::path clean = fs::weakly_canonical(fs::absolute(path, error), error);
  return (error ? path : clean).string();
}

// The library is found by a function in it: its path is what the loader was told, which may be
// relative.
std::string EngineFolder() {
  Dl_info info{};
  if (dladdr(reinterpret_cast<const void*>(&ProgramFolder), &info) == 0 ||
      info.dli_fname == nullptr)
    return "";
  return fs::path(Clean(info.dli_fname)).parent_path().string();
}

}  // namespace

// An interpreter that has loaded the engine lies elsewhere.
std::string ProgramFolder() {
  std::error_code error;
  std::string ours = Clean(EngineFolder() + "/" STAGEMARKS_PROGRAMS_FROM_LIBRARY);
  if (fs::exists(fs::path(ours) / kProgram, error)) return ours;
  return fs::read_symlink("/proc/self/exe", error).parent_path().string();
}

std::string PluginFolder() {
  const char* chosen = std::getenv("STAGEMARKS_PLUGINS");
  if (chosen == nullptr || *chosen == '\0') return EngineFolder() + "/plugins";
  return *chosen == '/' ? Clean(chosen) : chosen;
}

// A build folder has the usual names, whatever was chosen for the installed tree.
std::string SharedFolder() {
  const std::string installed = Clean(ProgramFolder() + "/" STAGEMARKS_SHARED_FROM_PROGRAMS);
  std::error_code error;
  return fs::exists(installed, error) ? installed : Clean(ProgramFolder() + "/../share/stagemarks");
}

std::string ImportWorkerProgram() { return ProgramFolder() + "/" + kProgram; }

std::string SampleScene() { return SharedFolder() + "/scenes/dungeon/dungeon.gltf"; }

}  // namespace engine
