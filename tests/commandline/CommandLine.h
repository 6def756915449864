// CommandLine: the built program called as a person calls it, in a scratch folder with settings of
// its own. Main thread.
#pragma once

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/ChildProgram.h"
#include "tests/support/ScratchFolder.h"

namespace tests {

class CommandLine : public testing::Test {
 protected:
  ChildResult Call(const std::vector<std::string>& arguments) const;
  // As Call, but on a terminal of its own, at which `typing` is typed.
  ChildResult CallOnTerminal(const std::vector<std::string>& arguments,
                             const std::vector<Typing>& typing) const;
  // A script of the shell in the scratch folder, where `stagemarks` is the program.
  ChildResult Shell(const std::string& script) const;
  // Calls and expects success.
  std::string Out(const std::vector<std::string>& arguments) const;
  nlohmann::json Json(std::vector<std::string> arguments) const;
  // Calls with --json and any status.
  nlohmann::json JsonAnyway(std::vector<std::string> arguments) const;

  std::string Scene(const std::string& name) const { return folder_ / name; }
  // A scene imported from the spider: 19 meshes, a camera, a light.
  std::string Spider() const;
  // The spider with "Day", all objects shown, and after it "Night", all objects hidden, with a new
  // layer "Props" and a camera "Front".
  std::string Staged() const;
  // Names of the Stagemarks, the current one marked with a star, a blank after each.
  std::string Marks(const std::string& scene) const;
  // All files below a folder of the scratch folder, sorted, joined by " | "; the files of folders
  // "tex" only counted.
  std::string Files(const std::string& name) const;

  ScratchFolder folder_;
  // With the folders "config" and "state".
  ScratchFolder settings_;

 private:
  std::map<std::string, std::string> Environment() const;
};

}  // namespace tests
