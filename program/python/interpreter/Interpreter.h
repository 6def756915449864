// Interpreter: Python inside a running program, for its scripts and its console. It is a library of
// its own, loaded when somebody runs the first script, so that the program needs no Python else.
// Whoever loads it calls kMakeInterpreter of it once; the interpreter lives as long as the process.
// The thread of the documents.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace scripting {

struct ScriptHooks {
  // Gets all that a script prints.
  std::function<void(const std::string& text, bool isError)> write;
  // Asked many times a second while a script runs; false stops it. May handle events.
  std::function<bool()> goesOn;
};

struct ScriptEnd {
  bool needsMore = false;  // of lines: they are the beginning of something
  bool succeeded = false;  // else every open document is as before
  std::string problem;     // the last line of what was printed about it
};

class Interpreter {
 public:
  virtual ~Interpreter() = default;
  // Both make one undo step named `step` in each document that they change. A script that fails, is
  // stopped or ends with a status leaves the documents as they were.
  virtual ScriptEnd RunFile(const std::string& path, const std::string& step) = 0;
  // Lines of a console, which keeps its names; the value of an expression is printed.
  virtual ScriptEnd RunLines(const std::string& lines, const std::string& step) = 0;
  // Completions of the last word of the line, as whole words.
  virtual std::vector<std::string> Complete(const std::string& line) = 0;
};

// The function of the library: null, with why in `*problem`, where there is no Python that works.
using MakeInterpreter = Interpreter*(const ScriptHooks& hooks, std::string* problem);
inline constexpr const char* kMakeInterpreter = "StagemarksMakeInterpreter";
inline constexpr const char* kInterpreterLibrary = "stagemarks-interpreter.so";

}  // namespace scripting
