// Rounds: the same work again and again while something goes wrong, until it has gone wrong often
// enough. Each round is decided by the seed and its number, so that a finding can be repeated.
// Main thread.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "host/BaseDocument.h"
#include "tests/support/ChildProgram.h"
#include "tests/support/ScratchFolder.h"

namespace tests {

struct Findings {
  std::uint64_t executions = 0;
  std::vector<std::string> damages;  // a sentence each, with what repeats it

  void Require(bool holds, const std::string& otherwise) {
    if (!holds) damages.push_back(otherwise);
  }
};

// Whether to go on after so many executions: by number or by time, as the caller was told.
using RoundBudget = std::function<bool(std::uint64_t executions)>;

// One system call of the program goes wrong, of any kind, in any place, with any error: the scene
// is the old one or the new one, whole; the status says so; nothing is left behind.
Findings FaultRounds(std::uint64_t seed, const RoundBudget& more);
// The power fails after any call, and of what was not yet made durable any part is lost: each file
// is as it was or as it was meant to be.
Findings PowerCuts(std::uint64_t seed, const RoundBudget& more);
// Stagemarks and scenes with names that nobody should give: nothing outside of the scene's folder
// is touched, and what was written is found by the same name.
Findings HostileNames(std::uint64_t seed, const RoundBudget& more);

// Random changes are taken back and done again: the scene is, step by step, what it was.
Findings UndoRounds(std::uint64_t seed, const RoundBudget& more);

// Random hands at the desktop, on copies of the sample scenes: it goes on, what was done can be
// taken back to the start and done again, and what is saved opens as the same.
Findings WindowEvents(std::uint64_t seed, const RoundBudget& more);

// The kinds of the program that is linked, by name.
using Rounds = Findings (*)(std::uint64_t seed, const RoundBudget& more);
const std::map<std::string, Rounds>& Kinds();

// A small scene with the Stagemarks "Day" and "Night", previews too, and commands that change it.
class Workshop {
 public:
  Workshop();

  using Files = std::map<std::string, std::string>;  // by path relative to the folder
  // The result of a command when nothing goes wrong.
  struct Clean {
    long calls = 0;  // those on files of the folder
    Files files;
    std::string journal;  // see FaultyCalls.cpp
  };
  static constexpr const char* kScene = "s.c4d";

  static const std::vector<std::vector<std::string>>& Commands();
  // The files as they are before any command.
  const Files& Before() const { return before_; }
  // A folder with these files and nothing else, in which a command is run. `environment` is what
  // its faults are told by.
  ChildResult Run(const std::vector<std::string>& command,
                  const std::map<std::string, std::string>& environment = {});
  Files After() const;
  // Run at the first asking.
  const Clean& WithoutFaults(std::size_t command);
  // Whether a file is as it was, or as one of those that a command makes.
  bool IsWhole(const std::string& name, const std::string& bytes, const Files& made) const;
  std::string Folder() const { return scratch_ / "work"; }

 private:
  std::string Place(const std::string& name) const { return scratch_ / name; }
  void Reset() const;

  ScratchFolder scratch_;
  Files before_;
  std::map<std::size_t, Clean> cleans_;
};

// The names of the Stagemarks of a document, a line each.
std::string NamesIn(const host::BaseDocument& doc);
// The names of the Stagemarks in the bytes of a scene file, a line each, or "(damaged)".
std::string StatesIn(const std::string& bytes);

}  // namespace tests
