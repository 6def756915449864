// The command line `stagemarks`. The verbs declare themselves, one is chosen by what was typed, and
// that one runs and answers the exit status.
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <initializer_list>
#include <iostream>
#include <string_view>
#include <system_error>

#include "engine/application/ProgramPlaces.h"
#include "engine/import/Import.h"
#include "engine/render/ImageDecoder.h"
#include "program/commandline/Arguments.h"
#include "program/commandline/Report.h"
#include "program/worker/StateWorker.h"

namespace commandline {
namespace {

using AddVerb = void (*)(Arguments&, Program&);

void AddGroup(Arguments& arguments, Program& program, const char* title,
              std::initializer_list<AddVerb> verbs) {
  arguments.BeginGroup(title);
  for (const AddVerb add : verbs) add(arguments, program);
}

}  // namespace

// The order of help and manual page.
void AddVerbs(Arguments& arguments, Program& program) {
  AddGroup(arguments, program, "Scenes", {AddNew, AddImport, AddInfo, AddSet, AddRun, AddRestore});
  AddGroup(arguments, program, "Elements of a scene", {AddElementVerbs});
  AddGroup(arguments, program, "Stagemarks",
           {AddRecord, AddList, AddShow, AddDiff, AddMatrix, AddCheck, AddLoad, AddRename,
            AddDelete, AddDeleteAll, AddTrash, AddOptions, AddStates});
  AddGroup(arguments, program, "Many Stagemarks at once",
           {AddUpdate, AddSetObjects, AddSetTags, AddSetLayers, AddSetCamera, AddCleanMaterials});
  AddGroup(arguments, program, "Files and pictures",
           {AddExport, AddPublish, AddPage, AddRender, AddFarm, AddSheet, AddDemo});
}

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

// So does the decoding of pictures: `stagemarks --decode-images DESCRIPTOR`.
bool IsImageDecoder(int count, char** words) {
  return count == 3 && std::string_view(words[1]) == engine::kImageDecoderVerb;
}

// The desktop shows states with the pictures of a child, which is this program called as
// `stagemarks --state-worker`.
bool IsStateWorker(int count, char** words) {
  return count == 2 && std::string_view(words[1]) == worker::kStateWorkerVerb;
}

// Also where the words could not be read.
bool IsForProgram(int count, char** words) {
  const auto isEnd = [](std::string_view word) { return word == "--"; };
  char** const end = std::find_if(words + 1, words + count, isEnd);
  return std::find(words + 1, end, std::string_view("--json")) != end;
}

// --json is looked for before anything is read, so that faults of the reading come as JSON, too.
int Run(int count, char** words) {
  Program program;
  program.json = IsForProgram(count, words);
  program.terminal.Choose(program.Choices());
  Arguments arguments(program);
  AddVerbs(arguments, program);
  if (IsDescription(count, words)) {
    std::cout << (std::string_view(words[2]) == "bash" ? arguments.TablesForBash()
                                                       : arguments.TextForManualPage());
    return kDone;
  }
  if (const auto status = arguments.Read(count, words)) return *status;
  Terminal::CatchInterrupts();
  program.terminal.Choose(program.Choices());
  const int status = program.verb();
  return status != kDone && Terminal::Interrupted() ? 128 + Terminal::StopSignal() : status;
}

// A reader that has had enough, as `head`, ends this program as it ends others: without a word.
int EndOutput(StandardOutput& output, int status, bool forProgram) {
  const int error = output.Finish();
  if (error == 0) return status;
  if (error != EPIPE) {
    PrintMessage(
        forProgram, "error",
        "Not all results could be printed: " + std::generic_category().message(error) + ".");
  } else if (status == kDone) {
    std::signal(SIGPIPE, SIG_DFL);
    (void)std::raise(SIGPIPE);
  }
  return status == kDone ? kFailed : status;
}

// Children first, before anything is set up that they have no need of. The child that shows states
// decodes pictures by another one, as this program itself does.
int RunAndPrint(int count, char** words) {
  if (IsImportWorker(count, words)) return engine::RunImportWorker(words[2], std::atoi(words[3]));
  if (IsImageDecoder(count, words)) return engine::RunImageDecoder(std::atoi(words[2]));
  engine::DecodeImagesBy(engine::ImportWorkerProgram());
  if (IsStateWorker(count, words)) return worker::RunStateWorker();
  StandardOutput output;
  return EndOutput(output, Run(count, words), IsForProgram(count, words));
}

}  // namespace
}  // namespace commandline

// Unexpected exceptions, such as running out of memory, still get a message.
int main(int count, char** words) {
  const auto fail = [&](const std::string& why) {
    commandline::PrintMessage(commandline::IsForProgram(count, words), "error", why);
    return commandline::kFailed;
  };
  try {
    return commandline::RunAndPrint(count, words);
  } catch (const std::bad_alloc&) {
    return fail("There is not enough memory. Close other programs and try again.");
  } catch (const std::exception& error) {
    return fail(std::string("it cannot go on (") + error.what() + ").");
  } catch (...) {
    return fail("it cannot go on.");
  }
}
