#include "program/commandline/Demo.h"

#include <algorithm>
#include <filesystem>
#include <iostream>

#include "engine/application/ProgramPlaces.h"
#include "engine/scene/Nodes.h"
#include "engine/scene/SceneDump.h"
#include "program/pictures/DialogLabels.h"

namespace commandline {

namespace {

std::string FileName(const std::string& path) { return path.substr(path.rfind('/') + 1); }

// As a person in the present folder would type it.
std::string Shortest(const std::string& path) {
  std::error_code error;
  const std::string relative = std::filesystem::proximate(path, error).string();
  return error || relative.size() >= path.size() ? path : relative;
}

std::string Typed(const std::string& path) {
  return path.find(' ') == std::string::npos ? path : "\"" + path + "\"";
}

}  // namespace

Demo::Demo(Session& session, std::string scene, std::string folder)
    : session_(session), scene_(std::move(scene)), folder_(std::move(folder)) {}

int Demo::Run() {
  Say(Colored(Color::Bold, "Stagemarks: three states of one scene") + "\n");
  const bool worked = Import() && Save() && RecordStates() && RecallStates() && UndoRecall() &&
                      Recall(states_.back()) && SaveAndReopen() && MakeContactSheet() &&
                      RecallStates() && ExportStates();
  if (worked) ShowResult();
  if (session_.GetProgram().json) report_.Print(true);
  return worked ? session_.CheckLedger() : kFailed;
}

// At once, so that a person sees how far it is; for a program everything comes at the end.
void Demo::Say(const std::string& line) const {
  if (!session_.GetProgram().json) std::cout << line << std::endl;
}

bool Demo::Step(const std::string& text, bool worked, const std::vector<std::string>& why) {
  report_.Append("steps", {{"step", text}, {"worked", worked}, {"why", why}});
  Say("  " + (worked ? Colored(Color::Green, "\u2713") : Colored(Color::Red, "\u2717")) + " " +
      text);
  for (const std::string& line : why) Say("      " + line);
  return worked;
}

bool Demo::Import() {
  if (session_.Open(scene_) != kDone) return Step("Opening " + scene_, false);
  const engine::SceneCounts counts = engine::CountScene(session_.Document());
  return Step("Opened " + FileName(scene_) + ": " + Counted(counts.objects, "object") + ", " +
                  Counted(counts.materials, "material") + ", " + Counted(counts.lights, "light") +
                  ", " + Counted(counts.polygons, "polygon"),
              true);
}

bool Demo::RecordStates() {
  host::BaseDocument& doc = session_.Document();
  doc.StartUndo();
  PrepareDemo(doc);
  doc.EndUndo();
  for (std::size_t i = 0; i < kDemoStates; ++i) {
    doc.StartUndo();
    GetDemoState(i).make(doc);
    doc.EndUndo();
    doc.SetChanged();
    if (!Record(GetDemoState(i))) return false;
  }
  return true;
}

bool Demo::Record(const DemoState& state) {
  StagemarksDialog& dialog = session_.Dialog();
  const bool recorded = dialog.TypeName(state.name) &&
                        dialog.Tick(pictures::kGeneratePreview, true) &&
                        dialog.Press(pictures::kRecord);
  session_.App().DeliverEvents();
  states_.push_back({state.name, engine::DumpState(session_.Document())});
  previews_.push_back(std::filesystem::path(saved_).replace_extension().string() + "_SM/" +
                      state.name + ".tif");
  const bool hasPreview = session_.Files().Kind(previews_.back()) == engine::FileKind::File;
  return Step("Recorded \"" + states_.back().name + "\" with a preview: " + state.what,
              recorded && hasPreview && dialog.Current() == state.name);
}

bool Demo::Recall(const State& state) {
  const bool loaded =
      session_.Dialog().Select(state.name) && session_.Dialog().Press(pictures::kLoad);
  session_.App().DeliverEvents();
  const auto difference =
      engine::DumpDifference(state.facts, engine::DumpState(session_.Document()));
  return Step("Recalled \"" + state.name + "\": the scene equals the recorded state",
              loaded && difference.empty(), difference);
}

bool Demo::RecallStates() {
  return std::all_of(states_.begin(), states_.end(),
                     [this](const State& state) { return Recall(state); });
}

bool Demo::UndoRecall() {
  const std::string before = engine::DumpState(session_.Document());
  if (!Recall(states_.front())) return false;
  const bool undone = session_.App().Undo();
  session_.App().DeliverEvents();
  const auto difference = engine::DumpDifference(before, engine::DumpState(session_.Document()));
  return Step("Undid that recall in one step: the scene is as it was before",
              undone && difference.empty(), difference);
}

// Previews need a saved scene: they lie beside it.
bool Demo::Save() {
  if (const engine::Status made = session_.Files().MakeFolders(folder_); !made)
    return Step("Making " + folder_, false, {made.Message()});
  saved_ = folder_ + "/" + std::filesystem::path(scene_).stem().string() + ".c4d";
  const engine::Status saved = session_.App().SaveDocumentAs(session_.Document(), saved_);
  if (!saved) return Step("Saving " + saved_, false, {saved.Message()});
  return Step("Saved " + Shortest(saved_), true);
}

bool Demo::SaveAndReopen() {
  if (!Save()) return false;
  host::KillDocument(&session_.Document());
  if (session_.Open(saved_) != kDone) return Step("Opening it again", false);
  const std::size_t marks = session_.Dialog().Marks().size();
  return Step("Opened it again: " + Counted(marks, "Stagemark"), marks == states_.size());
}

bool Demo::MakeContactSheet() {
  sheet_ = folder_ + "/sheet.png";
  const SheetOrder order{{}, sheet_, "", 0};
  Report report;
  return Step("Rendered all states onto a contact sheet",
              SheetMaking(session_, order).Run(report) == kDone);
}

bool Demo::ExportStates() {
  ExportOrder order;
  order.layout = "project";
  order.folder = folder_ + "/export";
  const engine::Status made = session_.Files().MakeFolder(order.folder);
  if (!made || session_.Check({}) != kDone) return Step("Exporting", false, {made.Message()});
  const ExportResult result = Export(session_, order);
  std::vector<std::string> why = result.failures;
  for (const std::string& texture : result.missing) why.push_back("found nowhere: " + texture);
  const std::string what =
      Counted(result.scenes.size(), "standalone scene file") + ", one per Stagemark, with textures";
  return Step("Exported " + what, result.status == kDone, why) && CompareFiles(result);
}

bool Demo::CompareFiles(const ExportResult& result) {
  host::BaseDocument* const original = &session_.Document();
  for (const State& state : states_) {
    const auto file = std::find_if(
        result.scenes.begin(), result.scenes.end(),
        [&](const std::string& path) { return path.ends_with(" " + state.name + ".c4d"); });
    if (file == result.scenes.end())
      return Step("Exported \"" + state.name + "\"", false, {"there is no file of it"});
    if (!CompareFile(*file, state)) return false;
    host::SetActiveDocument(original);
  }
  session_.App().DeliverEvents();
  ShowFiles(result);
  return true;
}

bool Demo::CompareFile(const std::string& file, const State& state) {
  if (session_.Open(file) != kDone) return Step("Opening " + file, false);
  const auto difference =
      engine::DumpDifference(state.facts, engine::DumpState(session_.Document()));
  host::KillDocument(&session_.Document());
  return Step("Opened \"" + FileName(file) + "\": it holds the recorded state", difference.empty(),
              difference);
}

void Demo::ShowFiles(const ExportResult& result) {
  std::vector<std::string> files = result.written;
  files.insert(files.end(), {saved_, sheet_});
  files.insert(files.end(), previews_.begin(), previews_.end());
  report_.Put("files", files);
  Say("\nThe files:\n\n  " + Shortest(folder_) + "/");
  for (const std::string& line : FileTreeLines(folder_, files)) Say("    " + line);
}

void Demo::ShowResult() const {
  const std::string scene = Typed(Shortest(saved_));
  const std::string program = Typed(Shortest(engine::ProgramFolder() + "/stagemarks"));
  Say("\nThe list, as the dialog shows it:\n\n" + session_.Dialog().ListText());
  Say("\nEvery state in a picture:\n\n  " + Shortest(sheet_) + "\n\nWhat next:\n");
  for (const char* rest :
       {" list %", " load % Overview -o overview.c4d", " sheet % --html pictures",
        " export % --layout file --to out", " --help"}) {
    std::string line = rest;
    if (const auto place = line.find('%'); place != std::string::npos)
      line.replace(place, 1, scene);
    Say("  " + program + line);
  }
}

}  // namespace commandline
