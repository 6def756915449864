// The verb run: steps, each a verb as in the shell, on one scene that is read and written once.
#include <algorithm>
#include <iostream>
#include <iterator>
#include <sstream>

#include "program/commandline/Arguments.h"
#include "program/commandline/Session.h"

namespace commandline {

namespace {

using Words = std::vector<std::string>;

// Verbs that work on the scene that is open and on nothing else.
constexpr const char* kSteps[] = {
    "set",     "record",      "list",      "show",       "diff",       "matrix",          "check",
    "load",    "rename",      "delete",    "delete-all", "options",    "states",          "update",
    "info",    "set-objects", "set-tags",  "set-layers", "set-camera", "clean-materials", "objects",
    "cameras", "lights",      "materials", "layers"};
// The steps whose action comes before the scene.
constexpr const char* kStepsWithAction[] = {"states", "objects",   "cameras",
                                            "lights", "materials", "layers"};

bool HasAction(const std::string& verb) {
  return std::ranges::find(kStepsWithAction, verb) != std::end(kStepsWithAction);
}

struct BatchOptions {
  std::string steps;
};

// One line of the steps as a shell takes it apart: words between blanks, quotes around blanks, a
// backslash before what is meant as it stands, and nothing behind a # that begins a word.
class LineWords {
 public:
  explicit LineWords(const std::string& line) : line_(line) {}

  // False for a quote without its end.
  bool Read(Words& words) {
    for (; place_ < line_.size(); ++place_) {
      const char c = line_[place_];
      if (c == ' ' || c == '\t' || c == '\r') {
        Finish(words);
      } else if (c == '#' && !inWord_) {
        return true;
      } else if (!ReadLetter(c)) {
        return false;
      }
    }
    Finish(words);
    return true;
  }

 private:
  bool ReadLetter(char c) {
    inWord_ = true;
    if (c == '\'' || c == '"') return ReadQuoted(c);
    if (c == '\\' && place_ + 1 < line_.size()) c = line_[++place_];
    word_ += c;
    return true;
  }

  bool ReadQuoted(char quote) {
    while (++place_ < line_.size() && line_[place_] != quote) {
      const bool escapes = quote == '"' && line_[place_] == '\\' && place_ + 1 < line_.size() &&
                           (line_[place_ + 1] == '"' || line_[place_ + 1] == '\\');
      if (escapes) ++place_;
      word_ += line_[place_];
    }
    return place_ < line_.size();
  }

  void Finish(Words& words) {
    if (inWord_) words.push_back(std::exchange(word_, {}));
    inWord_ = false;
  }

  const std::string& line_;
  std::size_t place_ = 0;
  std::string word_;
  bool inWord_ = false;
};

class BatchRun {
 public:
  BatchRun(Program& program, const BatchOptions& options)
      : program_(program), options_(options), session_(program) {}

  int Run() {
    std::string text;
    if (const int status = ReadSteps(text); status != kDone) return status;
    if (const int status = session_.StartWithScene(); status != kDone) return status;
    session_.HoldSideFiles();
    report_.PutList("results");
    std::istringstream lines(text);
    std::string line;
    for (std::size_t number = 1; std::getline(lines, line); ++number) {
      const int status = Terminal::Interrupted() ? kInterrupted : Step(line, number);
      if (status == kDone) continue;
      program_.terminal.Error("Line " + std::to_string(number) + " failed: " + line +
                              "\nNothing was written.");
      return status;
    }
    return Finish();
  }

 private:
  int ReadSteps(std::string& text) {
    if (options_.steps == "-") {
      text.assign(std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>());
      return kDone;
    }
    auto read = session_.Files().ReadFile(AbsolutePath(options_.steps));
    if (!read) program_.terminal.Error(read.Message());
    if (!read) return kFailed;
    text = read.Take();
    return kDone;
  }

  // The scene is put where the shell has it.
  int Step(const std::string& line, std::size_t number) {
    Words words;
    if (!LineWords(line).Read(words)) {
      program_.terminal.Error("A quotation mark has no end.");
      return kUsage;
    }
    if (words.empty()) return kDone;
    if (std::ranges::find(kSteps, words[0]) == std::end(kSteps)) {
      program_.terminal.Error("\"" + words[0] + "\" is no step. Steps are " +
                              Joined({std::begin(kSteps), std::end(kSteps)}) + ".");
      return kUsage;
    }
    const std::size_t place = HasAction(words[0]) ? 2 : 1;  // where the shell has the scene
    words.insert(words.begin() + static_cast<long>(std::min(place, words.size())), program_.scene);
    words.insert(words.begin(), "stagemarks");
    return Do(words, number, line);
  }

  // Each step is read by arguments of its own, as if it was typed in a shell, and works on the open
  // scene. The file is written once, at the end of all steps.
  int Do(Words& words, std::size_t number, const std::string& line) {
    Program step(program_.terminal, session_.Opened());
    step.yes = program_.yes;
    step.quiet = program_.quiet;
    step.verbose = program_.verbose;
    step.json = program_.json;
    Arguments arguments(step);
    AddVerbs(arguments, step);
    std::vector<char*> given;
    for (std::string& word : words) given.push_back(word.data());
    if (const auto status = arguments.Read(static_cast<int>(given.size()), given.data()))
      return *status;
    const bool writes = step.write || !step.output.empty();
    if (writes) {
      program_.terminal.Error("A step writes nothing: say --write or -o behind `run`.");
      return kUsage;
    }
    step.write = true;  // what is changed is kept, by the run
    program_.terminal.Choose(step.Choices());
    const int status = program_.json ? DoForProgram(step, number, line) : step.verb();
    program_.terminal.Choose(program_.Choices());
    session_.App().DeliverEvents();
    ++done_;
    return status;
  }

  // Does a step with its output captured, which becomes a part of the run's report.
  int DoForProgram(Program& step, std::size_t number, const std::string& line) {
    std::ostringstream printed;
    std::streambuf* const former = std::cout.rdbuf(printed.rdbuf());
    const int status = step.verb();
    std::cout.rdbuf(former);
    report_.Append(
        "results",
        {{"line", number}, {"step", line}, {"result", JsonValue::Parsed(printed.str())}});
    return status;
  }

  int Finish() {
    report_.Put("steps", done_);
    report_.Line("Ran " + Counted(done_, "step") + ".");
    return session_.Keep(report_);
  }

  Program& program_;
  const BatchOptions& options_;
  Session session_;
  Report report_;
  std::size_t done_ = 0;
};

}  // namespace

void AddRun(Arguments& arguments, Program& program) {
  Verb verb = arguments.AddVerb("run", "Run steps, a verb a line, on one scene: all or nothing");
  AddScene(verb, program);
  auto options = std::make_shared<BatchOptions>();
  verb.Add("STEPS", options->steps, "The file with the steps, - for standard input").Required();
  AddKeeping(verb, program);
  verb.Footer(
      "Each line is a verb with its options as in the shell, without the scene; # begins a "
      "comment. "
      "The scene is read once and, after the last step, written once; the first step that fails "
      "ends the run, and nothing is written.\n\n"
      "Examples:\n"
      "  stagemarks run room.c4d steps.txt --write\n"
      "  printf 'set --object \"Lamp*\" --render off\\nrecord Night\\n' | stagemarks run room.c4d "
      "- "
      "--write");
  verb.Does([&program, options] { return BatchRun(program, *options).Run(); });
}

}  // namespace commandline
