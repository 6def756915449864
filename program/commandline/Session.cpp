#include "program/commandline/Session.h"

#include <cstdlib>
#include <filesystem>

namespace commandline {

namespace fs = std::filesystem;

namespace {

constexpr const char* kPlugin = "Stagemarks";

std::string PluginFolder() {
  const char* chosen = std::getenv("STAGEMARKS_PLUGINS");
  return chosen && *chosen ? AbsolutePath(chosen) : ProgramFolder() + "/../lib/stagemarks/plugins";
}

}  // namespace

std::string ProgramFolder() {
  std::error_code error;
  return fs::read_symlink("/proc/self/exe", error).parent_path().string();
}

std::string AbsolutePath(const std::string& typed) {
  std::error_code error;
  const fs::path absolute = fs::absolute(typed, error);
  return error ? typed : absolute.lexically_normal().string();
}

Session::Session(Program& program) : program_(program), outside_(program.terminal), inUse_(outside_) {
  engine::ApplicationSetup setup;
  setup.importWorker = ProgramFolder() + "/stagemarks";
  application_ = std::make_unique<engine::Application>(outside_, setup);
}

int Session::Start() { return LoadPlugin(); }

int Session::LoadPlugin() {
  const std::string path = PluginFolder() + "/" + kPlugin + "/" + kPlugin + ".so";
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
  const int status = Start();
  return status == kDone ? Open(program_.scene) : status;
}

int Session::Open(const std::string& path) {
  std::vector<std::string> notes;
  const std::string absolute = AbsolutePath(path);
  const auto opened = application_->OpenDocument(absolute, &notes);
  if (!opened) {
    program_.terminal.Error(opened.Message());
    return kFailed;
  }
  imported_ = fs::path(absolute).extension() != ".c4d";
  for (const std::string& note : notes) program_.terminal.Note(note);
  application_->DeliverEvents();
  return kDone;
}

int Session::RequireMark(const std::string& name) {
  if (dialog_->Has(name)) return kDone;
  std::string text = "There is no Stagemark \"" + name + "\" in this scene.";
  const auto near = dialog_->NamesLike(name);
  for (std::size_t i = 0; i < near.size(); ++i) text += (i == 0 ? " Did you mean \"" : "\" or \"") + near[i];
  if (!near.empty()) text += "\"?";
  if (near.empty()) text += " `stagemarks list` shows those there are.";
  program_.terminal.Error(text);
  return kUsage;
}

int Session::Keep(Report& report) {
  std::string target = program_.output.empty() ? "" : AbsolutePath(program_.output);
  if (target.empty() && program_.write && imported_) {
    program_.terminal.Error("--write would overwrite \"" + program_.scene +
                            "\", which is no scene of ours. Give -o OUT.c4d instead.");
    return kUsage;
  }
  if (target.empty() && program_.write) target = AbsolutePath(program_.scene);
  if (target.empty()) {
    program_.terminal.Note("nothing was written; -o OUT.c4d keeps the result" +
                           std::string(imported_ ? "." : ", --write in place."));
    report.Json()["written"] = nullptr;
    return CheckLedger();
  }
  const engine::Status saved = application_->SaveDocumentAs(Document(), target);
  if (!saved) {
    program_.terminal.Error(saved.Message());
    return kFailed;
  }
  report.Json()["written"] = ValidUtf8(target);
  report.Line("Written: " + target);
  return CheckLedger();
}

int Session::CheckLedger() {
  const auto failures = outside_.GetLedger().FailuresSince(0);
  for (const engine::LedgerEntry& failure : failures) program_.terminal.Error(failure.message);
  return failures.empty() ? kDone : kFailed;
}

}  // namespace commandline
