// The command line `stagemarks`. The verbs register themselves, the library reads the arguments and
// picks one, and that one runs and answers the exit status. What cannot be read is refused here,
// with the name that was probably meant.
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string_view>
#include <system_error>

#include "engine/import/Import.h"
#include "program/commandline/Description.h"
#include "program/commandline/HelpFormat.h"
#include "program/commandline/NamesLike.h"
#include "program/commandline/Program.h"
#include "program/commandline/StandardOutput.h"
#include "program/pictures/StateWorker.h"

namespace commandline {
namespace {

// For the build, which makes the manual page and the completion of it: `stagemarks --describe
// man|bash`.
bool IsDescription(int count, char** words) {
  return count == 3 && std::string_view(words[1]) == "--describe";
}

// An import runs in a child, which is this program called as `stagemarks --import-worker PATH
// DESCRIPTOR`.
bool IsImportWorker(int count, char** words) {
  return count == 4 && std::string_view(words[1]) == engine::kImportWorkerVerb;
}

// The desktop shows states with the pictures of a child, which is this program called as
// `stagemarks --state-worker`.
bool IsStateWorker(int count, char** words) {
  return count == 2 && std::string_view(words[1]) == pictures::kStateWorkerVerb;
}

using AddVerb = void (*)(CLI::App&, Program&);

// Each function adds one verb; the help shows them below `title`.
void AddGroup(CLI::App& app, Program& program, const char* title,
              std::initializer_list<AddVerb> verbs) {
  for (const AddVerb add : verbs) {
    add(app, program);
    app.get_subcommands({}).back()->group(title);
  }
}

void AddVerbs(CLI::App& app, Program& program) {
  AddGroup(app, program, "Scenes", {AddNew, AddImport, AddInfo, AddSet});
  AddGroup(app, program, "Stagemarks",
           {AddRecord, AddList, AddLoad, AddRename, AddDelete, AddDeleteAll, AddOptions});
  AddGroup(app, program, "Many Stagemarks at once",
           {AddCheck, AddUpdate, AddSetObjects, AddSetTags, AddSetLayers, AddSetCamera,
            AddCleanMaterials});
  AddGroup(app, program, "Files and pictures", {AddExport, AddRender, AddSheet, AddDemo});
}

void DescribeProgram(CLI::App& app, Program& program) {
  app.formatter(std::make_shared<HelpFormat>(Terminal::Columns()));
  app.set_version_flag("--version", "stagemarks " STAGEMARKS_VERSION);
  app.add_flag("-q,--quiet", program.quiet, "No messages but errors");
  app.add_flag("-v,--verbose", program.verbose, "Say what is being done");
  app.require_subcommand(1);
  app.fallthrough();
  app.footer(
      "Nothing is written to your scene unless you say -o OUT or --write.\n"
      "Exit status: 0 done, 1 it did not work, 2 wrong usage or an unknown name, 130 stopped by "
      "Ctrl-C.\n\n"
      "Examples:\n"
      "  stagemarks import room.gltf room.c4d\n"
      "  stagemarks set room.c4d --object \"Lamp*\" --render off --write\n"
      "  stagemarks record room.c4d \"Lights out\" --write\n"
      "  stagemarks list room.c4d");
}

// What is wrong with the arguments; a verb that does not exist is what a person wants to hear of
// first.
std::string Complaint(const CLI::App& app, const CLI::ParseError& error,
                      const std::vector<std::string>& words) {
  const auto typed = std::find_if(words.begin(), words.end(),
                                  [](const std::string& word) { return word.rfind('-', 0) != 0; });
  if (!app.get_subcommands().empty()) return error.what();
  if (typed == words.end()) return "No verb was given.";
  std::vector<std::string> known;
  for (const CLI::App* verb : app.get_subcommands({})) known.push_back(verb->get_name());
  return "There is no verb \"" + *typed + "\"." + DidYouMean(*typed, known);
}

// `--help` and `--version` come this way, too: they end the reading, and are no fault.
int Refuse(const CLI::App& app, const CLI::ParseError& error, Program& program,
           const std::vector<std::string>& words) {
  if (error.get_exit_code() == 0) return app.exit(error);
  const auto verbs = app.get_subcommands();
  program.terminal.Error(Complaint(app, error, words) + "\n`stagemarks" +
                         (verbs.empty() ? "" : " " + verbs.front()->get_name()) +
                         " --help` explains it.");
  return kUsage;
}

int Run(int count, char** words) {
  Program program;
  CLI::App app("Records, recalls and exports the states of a 3D scene", "stagemarks");
  DescribeProgram(app, program);
  AddVerbs(app, program);
  if (IsDescription(count, words)) {
    std::cout << (std::string_view(words[2]) == "bash" ? TablesForBash(app)
                                                       : TextForManualPage(app));
    return kDone;
  }
  try {
    app.parse(count, words);
  } catch (const CLI::ParseError& error) {
    return Refuse(app, error, program, std::vector<std::string>(words + 1, words + count));
  }
  Terminal::CatchInterrupts();
  program.terminal.Choose({program.yes, program.quiet, program.verbose});
  program.verbName = app.get_subcommands().front()->get_name();
  const int status = program.verb();
  return status != kDone && Terminal::Interrupted() ? 128 + Terminal::StopSignal() : status;
}

// A reader that has had enough, as `head`, ends this program as it ends others: without a word.
int EndOutput(StandardOutput& output, int status) {
  const int error = output.Finish();
  if (error == 0) return status;
  if (error != EPIPE) {
    std::fprintf(stderr, "stagemarks: Not all results could be printed: %s.\n",
                 std::generic_category().message(error).c_str());
  } else if (status == kDone) {
    std::signal(SIGPIPE, SIG_DFL);
    (void)std::raise(SIGPIPE);
  }
  return status == kDone ? kFailed : status;
}

int RunAndPrint(int count, char** words) {
  if (IsImportWorker(count, words))
    return engine::RunImportWorker(words[2], std::atoi(words[3]), {});
  if (IsStateWorker(count, words)) return pictures::RunStateWorker();
  StandardOutput output;
  return EndOutput(output, Run(count, words));
}

}  // namespace
}  // namespace commandline

// What nobody expected, such as no memory where it is needed, still gets a message.
int main(int count, char** words) {
  try {
    return commandline::RunAndPrint(count, words);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "stagemarks: it cannot go on (%s).\n", error.what());
  } catch (...) {
    std::fputs("stagemarks: it cannot go on.\n", stderr);
  }
  return commandline::kFailed;
}
