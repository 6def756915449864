// Stage: an application with a scripted person, a scratch folder with the user folders in it, and a
// disk that can be broken.
#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "engine/application/Application.h"
#include "tests/support/ScratchFolder.h"
#include "tests/support/ScriptedServices.h"

namespace tests {

struct Stage : testing::Test {
  std::string At(const std::string& name) const { return scratch / name; }

  // Copies a test plug-in below "plugins" of the scratch folder; the path of its library.
  std::string Place(const std::string& name, bool withResources = true) {
    const std::string folder = At("plugins/" + name);
    std::filesystem::create_directories(folder);
    const std::string library = "/" + name + ".so";
    std::filesystem::copy_file(std::filesystem::path(TEST_PLUGINS) / name / (name + ".so"),
                               folder + library);
    if (withResources) std::filesystem::create_directory(folder + "/res");
    return folder + library;
  }

  std::string LoadGood() {
    const engine::LoadReport report = application->LoadPlugin(Place("Good"));
    services.person.TakeTranscript();
    return report.message;
  }

  // The transcript without the word "status: " of each line.
  std::string Heard() {
    std::string text = services.person.TakeTranscript();
    const std::string word = "status: ";
    for (std::size_t at = 0; (at = text.find(word, at)) != std::string::npos;)
      text.erase(at, word.size());
    return text;
  }

  static bool IsOpen(const std::string& library) {
    void* handle = dlopen(library.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (handle != nullptr) dlclose(handle);
    return handle != nullptr;
  }

  ScratchFolder scratch;
  ScriptedServices services{scratch / "user"};
  std::unique_ptr<engine::Application> application = std::make_unique<engine::Application>(
      services.Get(), engine::ApplicationSetup{"", {"/first", "/second"}});
};

}  // namespace tests
