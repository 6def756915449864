// A verb's way: StartWithScene (target checked, plug-in loaded, scene locked and opened), the
// verb's own work through the dialog, Keep (scene written where it was asked for, files beside it
// carried out, result printed, ledger read for the exit status). What can be refused is refused
// before anything is done.
#include "program/commandline/Session.h"

#include <algorithm>
#include <filesystem>
#include <unordered_map>

#include "engine/application/ProgramPlaces.h"
#include "engine/import/Import.h"
#include "engine/outside/FileParts.h"
#include "engine/render/TextureSearch.h"
#include "engine/scenefile/SceneOrigin.h"
#include "engine/states/StateText.h"
#include "program/outcome/Outcome.h"
#include "program/pictures/DialogLabels.h"
#include "program/publish/FileOrigin.h"
#include "program/recording/ImportedStates.h"

namespace commandline {

namespace fs = std::filesystem;

namespace {

constexpr const char* kPlugin = "Stagemarks";

// The path of a scene file without its suffix: what stands beside the scene begins like this.
std::string Stem(const std::string& file) {
  return (fs::path(file).parent_path() / fs::path(file).stem()).string();
}

}  // namespace

void TellMissing(Terminal& terminal, const std::vector<std::string>& textures, bool isFault) {
  for (const std::string& texture : textures) {
    const std::string text = "The texture \"" + texture + "\" was not found.";
    isFault ? terminal.Error(text) : terminal.Note(text);
  }
}

namespace {

engine::ImportLimits LimitsChosen(Terminal& terminal, bool allowOutside) {
  engine::ImportLimits limits = engine::ChosenImportLimits(terminal);
  limits.outside = allowOutside ? engine::OutsideTextures::Take : engine::OutsideTextures::Leave;
  return limits;
}

}  // namespace

OpenScene::OpenScene(Terminal& terminal, bool allowOutside)
    : system(terminal),
      files(system.Get().ledger, terminal),
      services{files,
               system.Get().clock,
               system.Get().person,
               system.Get().ledger,
               system.Get().folders,
               system.Get().viewer},
      importLimits(LimitsChosen(terminal, allowOutside)) {
  engine::ApplicationSetup setup;
  setup.importWorker = engine::ImportWorkerProgram();
  setup.importLimits = importLimits;
  application = std::make_unique<engine::Application>(services, setup);
}

// Several verbs in one run (`run`) share an open scene.
Session::Session(Program& program)
    : program_(program),
      open_(program.open ? program.open
                         : std::make_shared<OpenScene>(program.terminal, program.allowOutside)) {}

int Session::Start() { return LoadPlugin(); }

// The plug-in's command opens its dialog, which is what everything else presses (decision 5).
int Session::LoadPlugin() {
  const std::string path = engine::PluginFolder() + "/" + kPlugin + "/" + kPlugin + ".so";
  const engine::LoadReport report = open_->application->LoadPlugin(path);
  if (report.outcome != engine::LoadOutcome::Loaded) {
    program_.terminal.Error(report.message);
    return kFailed;
  }
  for (const engine::CommandPlugin& command : open_->application->Commands()) {
    if (command.name.ToUtf8() == kPlugin && open_->application->ExecuteCommand(command.id) &&
        !engine::OpenDialogs().empty()) {
      open_->dialog =
          std::make_unique<StagemarksDialog>(*engine::OpenDialogs().back(), &open_->services);
      return kDone;
    }
  }
  program_.terminal.Error("The plug-in was loaded, but its dialog could not be opened.");
  return kFailed;
}

int Session::StartWithScene() {
  if (program_.open) return kDone;
  if (const int status = CheckTarget(); status != kDone) return status;
  int status = Start();
  if (status == kDone) status = LockScene();
  return status == kDone ? Open(program_.scene) : status;
}

// Locks the scene from reading to writing: changes that somebody else writes in between would be
// lost. Without --write only where -o names the scene itself. Tried at once first, so that only a
// real wait is announced.
int Session::LockScene() {
  const std::string scene = AbsolutePath(program_.scene);
  std::error_code error;
  if (!program_.write && (program_.output.empty() || !fs::equivalent(scene, Target(), error)))
    return kDone;
  Terminal& terminal = program_.terminal;
  const std::string busy = "Another program is changing \"" + program_.scene + "\"";
  const std::string seconds = Counted(program_.longestWait, "second");
  auto atOnce = engine::FileLock::Try(scene);
  if (!atOnce) terminal.Error(atOnce.Message());
  if (!atOnce) return kFailed;
  if (atOnce.Value()) {
    open_->lock = std::move(*atOnce.Value());
    return kDone;
  }
  if (program_.longestWait > 0)
    terminal.Say(busy + "; waiting at most " + seconds + " for it (--wait).");
  const auto progress = [&](double share) { return terminal.Progress(share, "Waiting"); };
  auto lock = engine::FileLock::Take(scene, std::chrono::seconds(program_.longestWait), progress);
  if (lock) {
    open_->lock = lock.Take();
    return kDone;
  }
  if (Terminal::Interrupted()) return kInterrupted;
  terminal.Error(busy + ", still after " + seconds +
                 ". Nothing was done. --wait SECONDS waits longer.");
  return kFailed;
}

// States that came in with the file are recorded by the dialog; without one they wait in the
// document (decision 59).
int Session::Open(const std::string& path) {
  const std::string absolute = AbsolutePath(path);
  open_->importNotes.clear();
  const auto opened = open_->application->OpenDocument(absolute, &open_->importNotes);
  if (!opened) {
    // The importer hears of Ctrl-C, too, and may end first.
    const bool stopped = Terminal::Interrupted() && engine::IsImportable(absolute);
    program_.terminal.Error(stopped ? "The import was stopped." : opened.Message());
    return Terminal::Interrupted() ? kInterrupted : kFailed;
  }
  open_->imported = fs::path(absolute).extension() != ".c4d";
  open_->application->DeliverEvents();
  if (open_->dialog) {
    recording::RecordedStates recorded =
        recording::RecordImportedStates(open_->services, *open_->dialog, Document());
    open_->importedMarks = std::move(recorded.names);
    open_->importNotes.insert(open_->importNotes.end(), recorded.notes.begin(),
                              recorded.notes.end());
    open_->application->DeliverEvents();
  }
  for (const std::string& note : open_->importNotes) program_.terminal.Note(note);
  return Terminal::Interrupted() ? kInterrupted : kDone;
}

// JSON begins with a brace, a scene never does; the name of the file says nothing.
bool Session::IsStatesText(const std::string& path) {
  if (engine::IsImportable(path)) return false;
  constexpr std::uint64_t kFirstBytes = 64;
  const auto file = engine::FileParts::Open(AbsolutePath(path));
  const auto begin = file ? file.Value().Read(0, std::min(kFirstBytes, file.Value().Size()))
                          : engine::Result<std::string>(file.GetStatus());
  if (!begin) return false;
  const std::size_t first = begin.Value().find_first_not_of(" \t\r\n");
  return first != std::string::npos && begin.Value()[first] == '{';
}

// Without a path, so that nothing is looked for beside the text.
int Session::OpenStatesText(const std::string& path) {
  const std::string absolute = AbsolutePath(path);
  const auto text = open_->files.ReadFile(absolute);
  auto scene = text ? engine::SceneOfText(text.Value())
                    : engine::Result<engine::OwnedDocument>(text.GetStatus());
  if (!scene) {
    program_.terminal.Error(text ? "\"" + path + "\": " + scene.Message() : scene.Message());
    return kFailed;
  }
  host::BaseDocument* doc = scene.Take().release();
  const host::Filename file{host::String(std::string_view(absolute))};
  doc->SetDocumentName(file.GetFile());
  host::InsertBaseDocument(doc);
  host::SetActiveDocument(doc);
  open_->application->DeliverEvents();
  return kDone;
}

int Session::ChooseMarks(const std::vector<std::string>& typed, std::vector<std::string>& names) {
  std::vector<std::string> known;
  for (Mark& mark : open_->dialog->Marks()) known.push_back(std::move(mark.name));
  if (typed.empty()) {
    names = std::move(known);
    return kDone;
  }
  auto found = FindMarks(typed, known);
  if (!found) program_.terminal.Error(found.Message());
  if (!found) return kUsage;
  names = found.Take();
  return kDone;
}

int Session::ChooseMark(const std::string& typed, std::string& name) {
  std::vector<std::string> names;
  if (const int status = ChooseMarks({typed}, names); status != kDone) return status;
  if (names.size() > 1) {
    program_.terminal.Error("\"" + Shown(typed) + "\" means " + Listed(names) +
                            ", and here one Stagemark is needed. Give one of these names.");
    return kUsage;
  }
  name = names.front();
  return kDone;
}

int Session::RefuseUnrecorded(const std::string& name) {
  program_.terminal.Error("The Stagemark " + Listed({name}) +
                          " stands in the list, but nothing of it is recorded. `stagemarks check "
                          "SCENE` says more.");
  return kFailed;
}

// By name, as the list has them; with none typed those without a record are passed over, named ones
// are refused.
int Session::ReadMarks(const std::vector<std::string>& typed,
                       std::vector<engine::StoredState>& states) {
  std::vector<std::string> names;
  if (const int status = ChooseMarks(typed, names); status != kDone) return status;
  std::unordered_multimap<std::string, engine::StoredState> stored;
  for (engine::StoredState& state : engine::ReadStates(Document())) {
    std::string name = state.name;
    if (state.hasRecord) stored.emplace(std::move(name), std::move(state));
  }
  for (const std::string& name : names) {
    const auto [begin, end] = stored.equal_range(name);
    if (begin == end && !typed.empty()) return RefuseUnrecorded(name);
    for (auto found = begin; found != end; ++found) states.push_back(std::move(found->second));
    stored.erase(begin, end);
  }
  return kDone;
}

int Session::ReadMark(const std::string& typed, engine::StoredState& state) {
  std::string name;
  if (const int status = ChooseMark(typed, name); status != kDone) return status;
  const std::vector<engine::StoredState> states = engine::ReadStates(Document());
  const engine::StoredState* found = engine::FindState(Document(), states, name);
  if (!found || !found->hasRecord) return RefuseUnrecorded(name);
  state = *found;
  return kDone;
}

int Session::Check(const std::vector<std::string>& typed) {
  std::vector<std::string> names;
  if (const int status = ChooseMarks(typed, names); status != kDone) return status;
  if (names.empty()) {
    program_.terminal.Error(
        "There are no Stagemarks in this scene. `stagemarks record SCENE NAME --write` records "
        "one.");
    return kFailed;
  }
  const bool checked =
      typed.empty() ? open_->dialog->Choose(pictures::kCheckAll) : open_->dialog->CheckOnly(names);
  if (!checked) program_.terminal.Error("The rows could not be checked.");
  return checked ? kDone : kFailed;
}

// Told here once for all, so that pictures need not repeat it.
int Session::CheckTextures(Report& report) {
  const std::vector<std::string> missing = engine::MissingTextures(open_->files, Document());
  open_->texturesChecked = true;
  report.Put("missingTextures", missing);
  TellMissing(program_.terminal, missing, program_.strict);
  if (!program_.strict || missing.empty()) return kDone;
  program_.terminal.Error(kStrictRefusal);
  if (program_.json) report.Print(program_);
  return kFailed;
}

void Session::HoldSideFiles() {
  const host::BaseDocument& doc = Document();
  open_->files.HoldChangesAt(
      Stem((doc.GetDocumentPath() + doc.GetDocumentName()).GetString().ToUtf8()));
}

// Asked before anything is done. Suffix and standard output first: they need no look at the disk.
int Session::CheckTarget() {
  const bool inPlace = program_.write && program_.output.empty();
  const std::string& target = inPlace ? program_.scene : program_.output;
  if (target == "-") {
    program_.terminal.Error(
        "A scene cannot be written to standard output. Give a file name; ./- is the file of that "
        "name.");
    return kUsage;
  }
  if (!target.empty() && engine::IsImportable(target)) {
    program_.terminal.Error(
        "\"" + target +
        "\" has the name of another format, which this program reads and does not write. Give " +
        (inPlace ? "-o OUT.c4d" : "a name that ends in .c4d") + " instead.");
    return kUsage;
  }
  if (program_.output.empty()) return kDone;
  open_->files.Follow(fs::path(Target()).parent_path().string());
  return CheckMakers({Target()}, program_.verbName);
}

// CheckWay refuses a link behind what the person has named (decision 68).
int Session::CheckReplacing(const std::vector<std::string>& paths, const std::string& maker) {
  for (const std::string& path : paths) {
    const engine::Status way = open_->files.CheckWay(path);
    if (!way) program_.terminal.Error(way.Message());
    if (!way) return kFailed;
  }
  return CheckMakers(paths, maker);
}

int Session::CheckMakers(const std::vector<std::string>& paths, const std::string& maker) {
  if (program_.force) return kDone;
  std::vector<std::string> others;
  for (const std::string& path : paths) {
    if (!publishing::MayReplace(open_->files, path, maker)) others.push_back(path);
  }
  if (others.empty()) return kDone;
  const bool one = others.size() == 1;
  program_.terminal.Error(Listed(others) + (one ? " exists" : " exist") + " already and " +
                          (one ? "was" : "were") +
                          " not made by this command. Give another name, or --force to replace " +
                          (one ? "it." : "them."));
  return kFailed;
}

// Empty: nothing is kept.
std::string Session::Target() const {
  if (!program_.output.empty()) return AbsolutePath(program_.output);
  return program_.write ? AbsolutePath(program_.scene) : "";
}

// Inside of `run` the scene is kept at the end of all verbs, not after each.
int Session::Keep(Report& report) {
  if (program_.open) {
    report.Print(program_);
    return CheckLedger();
  }
  open_->files.StopHolding();
  const std::string target = Target();
  report.Put("written", JsonValue());
  if (!target.empty()) return Write(target, report);
  report.Print(program_);
  program_.terminal.Note("nothing was written; -o OUT.c4d keeps the result" +
                         std::string(open_->imported ? "." : ", --write keeps it in place."));
  return CheckLedger();
}

// Just before the file takes its place: what was not there, or was refused to the hooks meanwhile,
// may be different now.
engine::Status Session::CheckAgain(const std::string& target, std::size_t refused) {
  if (program_.terminal.Refused() != refused) {
    return engine::Status::Failure(
        "The preview images were not taken along, because there is a folder of that name. Nothing "
        "was "
        "written. Give another name, or --force to replace what is there.");
  }
  const bool allowed = program_.output.empty() || program_.force ||
                       publishing::MayReplace(open_->files, target, program_.verbName);
  return allowed
             ? engine::Status()
             : engine::Status::Failure("\"" + target + "\" was made by somebody else meanwhile.");
}

// With --force the questions of the plug-in on the way are answered with yes. A scene without
// Stagemarks gets the mark of the verb that made it; one with them is a person's work (decision
// 14).
int Session::Write(const std::string& target, Report& report) {
  const std::size_t refused = program_.terminal.Refused();
  if (program_.force) {
    TerminalChoices choices = program_.Choices();
    choices.yes = true;
    program_.terminal.Choose(choices);
  }
  const bool hasMarks = open_->dialog && !open_->dialog->Marks().empty();
  if (!program_.output.empty() && !hasMarks) engine::SetSceneOrigin(Document(), program_.verbName);
  engine::SaveChoices choices;
  choices.longestWait = std::chrono::seconds(program_.longestWait);
  if (open_->lock.Covers(target)) choices.lock = &open_->lock;
  choices.ready = [&] { return CheckAgain(target, refused); };
  const std::size_t mark = open_->services.ledger.Mark();
  if (const engine::Status saved = open_->application->SaveDocumentAs(Document(), target, choices);
      !saved) {
    program_.terminal.Error(saved.Message());
    return Terminal::Interrupted() ? kInterrupted : kFailed;
  }
  for (const std::string& note : outcome::NotesOn(open_->services.ledger, mark, target))
    program_.terminal.Note(note);
  open_->files.CarryOut(Stem(target));
  report.Put("written", target);
  report.Line("Written: " + target);
  report.Print(program_);
  return CheckLedger();
}

// From the beginning of the run on: what failed anywhere decides the exit status.
int Session::CheckLedger() {
  const std::vector<std::string> failures =
      outcome::Sentences(outcome::FailuresThatMatter(open_->services, 0));
  for (const std::string& failure : failures) program_.terminal.Error(failure);
  return failures.empty() ? kDone : kFailed;
}

}  // namespace commandline
