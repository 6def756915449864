// The verb demo: the product's main job on a real scene, step by step, each step checked: three
// states are made and recorded with previews, recalled and compared, one recall is undone, the
// scene is saved, opened and recalled again, all states are rendered onto a contact sheet, and
// every state is exported as a scene file of its own, which is opened and compared. It prints as it
// goes.
#include <algorithm>
#include <filesystem>
#include <iostream>

#include "engine/application/ProgramPlaces.h"
#include "engine/editing/LayerCommands.h"
#include "engine/editing/MaterialCommands.h"
#include "engine/editing/RenderSettingsCommands.h"
#include "engine/scene/DocumentState.h"
#include "engine/scene/Mesh.h"
#include "engine/scene/SceneDump.h"
#include "engine/scene/TreeWalk.h"
#include "program/commandline/Arguments.h"
#include "program/commandline/Exporting.h"
#include "program/commandline/FramingCamera.h"
#include "program/commandline/SheetMaking.h"
#include "program/pictures/DialogLabels.h"

namespace commandline {

using host::BaseDocument;
using host::BaseObject;

namespace {

struct DemoState {
  const char* name;
  const char* what;  // for a person
  void (*make)(BaseDocument& doc);
};

constexpr const char* kFront = "Overview camera";
constexpr const char* kSide = "Side camera";
constexpr const char* kLayer = "Props";
constexpr const char* kClay = "Clay";

// Objects with geometry, in tree order.
std::vector<BaseObject*> MeshObjects(const BaseDocument& doc) {
  std::vector<BaseObject*> objects;
  for (BaseObject* object = doc.GetFirstObject(); object; object = engine::NextInTree(object)) {
    if (engine::MeshOf(*object)) objects.push_back(object);
  }
  return objects;
}

bool HasTextureTag(const BaseObject& object) {
  for (host::BaseTag* tag = object.GetFirstTag(); tag; tag = tag->GetNext()) {
    if (tag->GetType() == host::Ttexture) return true;
  }
  return false;
}

void LookThrough(BaseDocument& doc, const char* camera) {
  if (const auto found = FindObject(doc, camera))
    doc.GetRenderBaseDraw()->SetSceneCamera(found.Value(), host::FALSE);
}

void Show(BaseDocument& doc, BaseObject& object, host::LONG mode) {
  doc.AddUndo(host::UNDO_CHANGE, &object);
  object.SetEditorMode(mode);
  object.SetRenderMode(mode);
}

void MakeOverview(BaseDocument& doc) { LookThrough(doc, kFront); }

void MakeEmptier(BaseDocument& doc) {
  LookThrough(doc, kSide);
  const auto meshes = MeshObjects(doc);
  for (std::size_t i = 0; i < meshes.size(); i += 3) Show(doc, *meshes[i], host::MODE_OFF);
  engine::SetRenderSize(doc, 1920, 1080);
}

void MakeClay(BaseDocument& doc) {
  const auto clay = FindMaterial(doc, kClay);
  const auto layer = FindLayer(doc, kLayer);
  if (!clay || !layer) return;
  for (BaseObject* object : MeshObjects(doc)) {
    engine::GiveMaterial(doc, *object, clay.Value());
    Show(doc, *object, host::MODE_UNDEF);
  }
  engine::SetLayerSwitch(doc, {layer.Value()}, *engine::FindLayerSwitch("render"), false);
  engine::SetRenderSize(doc, 1080, 1080);
}

// They only change switches, so that each can be brought back. All changes are registered for undo.
constexpr DemoState kStates[] = {
    {"Overview", "everything, from above", MakeOverview},
    {"Emptier", "every third object hidden, another camera, a wider picture", MakeEmptier},
    {"Clay", "one plain material, the layer \"Props\" left out, a square picture", MakeClay},
};

// Makes the cameras, the material, the layer and the tags that the states switch between.
void PrepareDemo(BaseDocument& doc) {
  MakeFramingCamera(doc, kFront);
  MakeFramingCamera(doc, kSide, 2.2);
  engine::MakeMaterial(doc, kClay, {0.36, 0.32, 0.28});
  host::LayerObject* props = engine::MakeLayer(doc, kLayer);
  const auto meshes = MeshObjects(doc);
  for (BaseObject* object : meshes) {
    if (!HasTextureTag(*object)) engine::GiveMaterial(doc, *object, nullptr);
  }
  for (std::size_t i = 1; i < meshes.size(); i += 4) engine::PutOnLayer(doc, *meshes[i], props);
}

std::string FileName(const std::string& path) { return path.substr(path.rfind('/') + 1); }

// The path as a person in the present folder would type it.
std::string Shortest(const std::string& path) {
  std::error_code error;
  const std::string relative = std::filesystem::proximate(path, error).string();
  return error || relative.size() >= path.size() ? path : relative;
}

std::string Typed(const std::string& path) {
  return path.find(' ') == std::string::npos ? path : "\"" + path + "\"";
}

class Demo {
 public:
  // Works on `scene` and writes below `folder`, which is made.
  Demo(Session& session, std::string scene, std::string folder);
  // kDone when every step did what it should; a step that did not says what differed.
  int Run();

 private:
  // One recorded state: its name, and its facts right after recording.
  struct State {
    std::string name;
    std::string facts;
  };

  bool Import();
  bool RecordStates();
  bool RecallStates();
  bool UndoRecall();
  bool Save();
  bool SaveAndReopen();
  bool MakeContactSheet();
  bool ExportStates();
  bool CompareFiles(const ExportResult& result);
  void ShowFiles(const ExportResult& result);
  void ShowResult() const;

  bool Record(const DemoState& state);
  bool Recall(const State& state);
  bool CompareFile(const std::string& file, const State& state);
  void Say(const std::string& line) const;
  bool Step(const std::string& text, bool worked, const std::vector<std::string>& why = {});

  Session& session_;
  Report report_;
  std::string scene_;
  std::string folder_;
  std::string saved_;
  std::string sheet_;
  std::vector<std::string> previews_;
  std::vector<State> states_;
};

Demo::Demo(Session& session, std::string scene, std::string folder)
    : session_(session), scene_(std::move(scene)), folder_(std::move(folder)) {}

// Each step only where the ones before worked. All states are recalled before and after the scene
// was saved and read again.
int Demo::Run() {
  Say(Colored(Color::Bold, "Stagemarks: three states of one scene") + "\n");
  const bool worked = Import() && Save() && RecordStates() && RecallStates() && UndoRecall() &&
                      Recall(states_.back()) && SaveAndReopen() && MakeContactSheet() &&
                      RecallStates() && ExportStates();
  if (worked) ShowResult();
  if (session_.GetProgram().json) report_.Print(session_.GetProgram());
  return worked ? session_.CheckLedger() : kFailed;
}

// At once, so that a person sees how far it is; for a program everything comes at the end.
void Demo::Say(const std::string& line) const {
  const Program& program = session_.GetProgram();
  if (!program.json && !program.quiet) std::cout << line << std::endl;
}

// Answers `worked`, so that steps can be chained.
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
  for (const DemoState& state : kStates) {
    doc.StartUndo();
    state.make(doc);
    doc.EndUndo();
    doc.SetChanged();
    if (!Record(state)) return false;
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

// States are compared as printed texts: what differs can be shown as it is.
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
  session_.Files().Follow(folder_);
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

// Each exported file is opened, compared and closed; the demo's own scene is active again
// afterwards.
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

constexpr const char* kFolder = "stagemarks-demo";

// A demo that was worked on is not replaced by the next one.
std::string FreeFolder(Session& session) {
  std::string folder = kFolder;
  const auto isTaken = [&] {
    const engine::FileKind kind = session.Files().Kind(AbsolutePath(folder));
    return kind != engine::FileKind::Missing && kind != engine::FileKind::Unknown;
  };
  for (int number = 2; isTaken(); ++number) {
    folder = kFolder + ("-" + std::to_string(number));
  }
  return AbsolutePath(folder);
}

int CheckFolder(Session& session, const std::string& folder, const std::string& scene) {
  const std::string saved = folder + "/" + std::filesystem::path(scene).stem().string() + ".c4d";
  for (const std::string& path : {saved, folder + "/export"}) {
    if (session.GetProgram().force || session.Files().Kind(path) == engine::FileKind::Missing)
      continue;
    session.GetProgram().terminal.Error(
        "\"" + path +
        "\" exists already. Name another folder with --to, or --force to replace it.");
    return kFailed;
  }
  return kDone;
}

int RunDemo(Program& program) {
  Session session(program);
  if (const int status = session.Start(); status != kDone) return status;
  const bool isSample = program.scene.empty();
  const std::string scene = isSample ? engine::SampleScene() : AbsolutePath(program.scene);
  if (isSample && session.Files().Kind(scene) != engine::FileKind::File) {
    program.terminal.Error("The sample scene is not at \"" + scene +
                           "\". Give a scene: stagemarks demo SCENE.");
    return kFailed;
  }
  const std::string folder =
      program.output.empty() ? FreeFolder(session) : AbsolutePath(program.output);
  if (const int status = CheckFolder(session, folder, scene); status != kDone) return status;
  return Demo(session, scene, folder).Run();
}

}  // namespace

void AddDemo(Arguments& arguments, Program& program) {
  Verb verb = arguments.AddVerb(
      "demo", "Show the main job on a sample scene: record three states, recall and check them");
  verb.Add("SCENE", program.scene, "The scene to use instead of the sample");
  verb.Add("--to", program.output,
           "Folder for what it writes; one that is not there yet by default")
      .Word("DIR")
      .Default(kFolder);
  AddForce(verb, program);
  verb.AddFlag("--json", program.json, "Print the steps as JSON when all is done");
  verb.Footer(
      "Examples:\n"
      "  stagemarks demo\n"
      "  stagemarks demo my.gltf --to tryout");
  verb.Does([&program] { return RunDemo(program); });
}

}  // namespace commandline
