#include "program/commandline/Session.h"

#include <filesystem>
#include <unordered_set>

#include "engine/application/ProgramPlaces.h"
#include "engine/import/Import.h"
#include "engine/render/TextureSearch.h"
#include "program/commandline/NamesLike.h"
#include "program/outcome/Outcome.h"

namespace commandline {

namespace fs = std::filesystem;

namespace {

constexpr const char* kPlugin = "Stagemarks";

// The path of a scene file without its suffix: what stands beside the scene begins like this.
std::string Stem(const std::string& file) { return (fs::path(file).parent_path() / fs::path(file).stem()).string(); }

}  // namespace

void TellMissing(Terminal& terminal, const std::vector<std::string>& textures, bool isFault) {
  for (const std::string& texture : textures) {
    const std::string text = "The texture \"" + texture + "\" was not found.";
    isFault ? terminal.Error(text) : terminal.Note(text);
  }
}

std::string AbsolutePath(const std::string& typed) {
  std::error_code error;
  const fs::path absolute = fs::absolute(typed, error);
  return error ? typed : absolute.lexically_normal().string();
}

Session::Session(Program& program) : program_(program), outside_(program.terminal), inUse_(outside_) {
  engine::ApplicationSetup setup;
  setup.importWorker = engine::ImportWorkerProgram();
  application_ = std::make_unique<engine::Application>(outside_, setup);
}

int Session::Start() { return LoadPlugin(); }

int Session::LoadPlugin() {
  const std::string path = engine::PluginFolder() + "/" + kPlugin + "/" + kPlugin + ".so";
  const engine::LoadReport report = application_->LoadPlugin(path);
  if (report.outcome != engine::LoadOutcome::Loaded) {
    program_.terminal.Error(report.message);
    return kFailed;
  }
  for (const engine::CommandPlugin& command : application_->Commands()) {
    if (command.name.ToUtf8() == kPlugin && application_->ExecuteCommand(command.id) && !engine::OpenDialogs().empty()) {
      dialog_ = std::make_unique<StagemarksDialog>(*engine::OpenDialogs().back());
      return kDone;
    }
  }
  program_.terminal.Error("The plug-in was loaded, but its dialog could not be opened.");
  return kFailed;
}

int Session::StartWithScene() {
  if (const int status = CheckTarget(); status != kDone) return status;
  const int status = Start();
  return status == kDone ? Open(program_.scene) : status;
}

int Session::Open(const std::string& path) {
  std::vector<std::string> notes;
  const std::string absolute = AbsolutePath(path);
  const auto opened = application_->OpenDocument(absolute, &notes);
  if (!opened) {
    program_.terminal.Error(opened.Message());
    return Terminal::Interrupted() ? kInterrupted : kFailed;
  }
  imported_ = fs::path(absolute).extension() != ".c4d";
  for (const std::string& note : notes) program_.terminal.Note(note);
  application_->DeliverEvents();
  return kDone;
}

int Session::RequireMarks(const std::vector<std::string>& names) {
  std::unordered_set<std::string> known;
  for (Mark& mark : dialog_->Marks()) known.insert(std::move(mark.name));
  for (const std::string& name : names) {
    if (known.count(name) > 0) continue;
    SayUnknown(name);
    return kUsage;
  }
  return kDone;
}

void Session::SayUnknown(const std::string& name) {
  std::vector<std::string> known;
  for (Mark& mark : dialog_->Marks()) known.push_back(std::move(mark.name));
  const std::string near = DidYouMean(name, known);
  program_.terminal.Error("There is no Stagemark \"" + name + "\" in this scene." +
                          (near.empty() ? " `stagemarks list SCENE` shows those there are." : near));
}

int Session::Check(const std::vector<std::string>& names) {
  if (const int status = RequireMarks(names); status != kDone) return status;
  if (dialog_->Marks().empty()) {
    program_.terminal.Error("There are no Stagemarks in this scene. `stagemarks record SCENE NAME --write` records one.");
    return kFailed;
  }
  const bool checked = names.empty() ? dialog_->Choose("Check All Elements") : dialog_->CheckOnly(names);
  if (!checked) program_.terminal.Error("The rows could not be checked.");
  return checked ? kDone : kFailed;
}

int Session::CheckTextures(Report& report) {
  const std::vector<std::string> missing = engine::MissingTextures(Document());
  texturesChecked_ = true;
  report.Json()["missingTextures"] = JsonOf(missing);
  TellMissing(program_.terminal, missing, program_.strict);
  if (!program_.strict || missing.empty()) return kDone;
  program_.terminal.Error(kStrictRefusal);
  if (program_.json) report.Print(true);
  return kFailed;
}

void Session::HoldSideFiles() {
  const host::BaseDocument& doc = Document();
  outside_.HoldChangesAt(Stem((doc.GetDocumentPath() + doc.GetDocumentName()).GetString().ToUtf8()));
}

// Asked before anything is done: what is written is a scene of ours and is not to replace a file of another format.
int Session::CheckTarget() {
  const bool inPlace = program_.write && program_.output.empty();
  const std::string& target = inPlace ? program_.scene : program_.output;
  if (target.empty() || !engine::IsImportable(target)) return kDone;
  program_.terminal.Error((inPlace ? "--write would overwrite \"" : "The result would overwrite \"") + target +
                          "\", which is no scene of ours. Give " + (inPlace ? "-o OUT.c4d" : "a name that ends in .c4d") +
                          " instead.");
  return kUsage;
}

std::string Session::Target() const {
  if (!program_.output.empty()) return AbsolutePath(program_.output);
  return program_.write ? AbsolutePath(program_.scene) : "";
}

int Session::Keep(Report& report) {
  outside_.StopHolding();
  const std::string target = Target();
  report.Json()["written"] = nullptr;
  if (!target.empty()) return Write(target, report);
  report.Print(program_.json);
  program_.terminal.Note("nothing was written; -o OUT.c4d keeps the result" +
                         std::string(imported_ ? "." : ", --write keeps it in place."));
  return CheckLedger();
}

// Where the side folder is not taken along because somebody else's lies there, the held changes are not for that one.
int Session::Write(const std::string& target, Report& report) {
  const std::size_t refused = program_.terminal.Refused();
  if (const engine::Status saved = application_->SaveDocumentAs(Document(), target); !saved) {
    program_.terminal.Error(saved.Message());
    return Terminal::Interrupted() ? kInterrupted : kFailed;
  }
  const bool whole = program_.terminal.Refused() == refused;
  if (whole) outside_.CarryOut(Stem(target));
  report.Json()["written"] = ValidUtf8(target);
  report.Line("Written: " + target);
  report.Print(program_.json);
  if (!whole) program_.terminal.Error("The scene was written, but its preview images were not taken along.");
  const int status = CheckLedger();
  return whole ? status : kFailed;
}

int Session::CheckLedger() {
  const std::vector<std::string> failures = outcome::Sentences(outcome::FailuresThatMatter(outside_, 0));
  for (const std::string& failure : failures) program_.terminal.Error(failure);
  return failures.empty() ? kDone : kFailed;
}

}  // namespace commandline
