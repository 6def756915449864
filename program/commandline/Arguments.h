// Arguments: what may stand behind `stagemarks`: the verbs with their options, flags and places.
// Each verb declares itself here and names the variables that get what was typed; those live until
// the verb has run. The library that reads the words is known to Arguments.cpp and HelpText.cpp
// only. Main thread.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "program/commandline/Program.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace commandline {

// One option, flag or place of a verb; belongs to the Arguments. Everything but IsGiven is said
// before the words are read. The names of other options are those with dashes, and those options
// have been declared before.
class Option {
 public:
  explicit Option(CLI::Option& option) : option_(&option) {}

  // The word for its value in the help, as "DIR".
  Option& Word(const char* word);
  // The default value that the help names; the variable is left as it is.
  Option& Default(const char* text);
  Option& Required();
  // Exactly `count` values, or from `least` to `most`.
  Option& Count(int count);
  Option& Count(int least, int most);
  // Several values in one word, with `separator` between them.
  Option& Separated(char separator);
  // Takes one word each time that it is typed.
  Option& OneWord();
  // Refuses every other value. The help names them, and so does the completion of the shell.
  Option& OneOf(const std::vector<std::string>& values);
  Option& Between(unsigned least, unsigned most);
  // Refuses numbers that are not from 0 to 1.
  Option& Shares();
  // Offered by the completion of the shell; other values are read as well.
  Option& Offers(const char* word, const std::vector<std::string>& values);
  // Read, but shown nowhere.
  Option& Hidden();
  // Refused together with that option, or without it.
  Option& Excludes(const char* other);
  Option& Needs(const char* other);
  // True when it was typed, with or without a value.
  bool IsGiven() const;

 private:
  CLI::Option* option_;
};

// One verb; a handle, belongs to the Arguments. `names` are "-o,--output" for an option, and a
// word without dashes for a place, whose value is known by its order.
class Verb {
 public:
  Verb(CLI::App& verb, Program& program) : verb_(&verb), program_(&program) {}

  Option Add(const char* names, std::string& value, const char* help) const;
  Option Add(const char* names, unsigned& value, const char* help) const;
  Option Add(const char* names, std::vector<std::string>& values, const char* help) const;
  Option Add(const char* names, std::vector<double>& values, const char* help) const;
  Option AddFlag(const char* names, bool& isOn, const char* help) const;
  // The help shows what is declared from now on below `title`.
  void BeginSection(const char* title) const;
  // Help text below the options; indented lines are commands to type.
  void Footer(const char* text) const;
  // Sets the function that runs when this verb was typed; it returns the exit status.
  void Does(std::function<int()> work) const;

 private:
  CLI::App* verb_;
  Program* program_;
};

class Arguments {
 public:
  // Declares the options of every verb, which set `program`.
  explicit Arguments(Program& program);
  Arguments(const Arguments&) = delete;
  Arguments& operator=(const Arguments&) = delete;
  ~Arguments();

  // The help shows the verbs that are declared from now on below `title`.
  void BeginGroup(const char* title) { group_ = title; }
  Verb AddVerb(const char* name, const char* help);

  // Reads what was typed into the variables and chooses the program's verb. An exit status where
  // that is all: help was asked for and printed, or something cannot be read, which the terminal
  // says with the name that was probably meant.
  std::optional<int> Read(int count, char** words);

  // The verbs with all their options for the build, which fills them into the files that are
  // installed: sections of the manual page, in the page's own language, and assignments to the
  // tables of the shell's completion.
  std::string TextForManualPage() const;
  std::string TablesForBash() const;

 private:
  Program& program_;
  std::unique_ptr<CLI::App> app_;
  const char* group_ = "";
};

// Declarations that several verbs share: the place SCENE and --json; the options of a verb that
// changes the scene (-o, --write and what goes with them).
inline constexpr const char* kAnyScene =
    "The scene: a .c4d file, or a .gltf, .glb, .fbx, .obj or .dae that is imported on the fly";
void AddScene(Verb verb, Program& program, const char* help = kAnyScene);
void AddKeeping(Verb verb, Program& program);
// --wait of a verb that replaces a scene.
void AddWait(Verb verb, Program& program);
// --strict of a verb for which a missing texture may be a fault.
void AddStrict(Verb verb, Program& program);
// --force of a verb that writes files.
void AddForce(Verb verb, Program& program);
// --only, by which a verb that works on several Stagemarks is told which; they are names and
// patterns for Session::ChooseMarks. `former`: a name that this option had in earlier versions.
void AddOnly(Verb verb, std::vector<std::string>& only, const char* former = nullptr);

}  // namespace commandline
