#include "program/commandline/Demo.h"

#include <filesystem>
#include <iostream>

#include "engine/scene/Nodes.h"
#include "engine/scene/SceneDump.h"
#include "program/commandline/Bounds.h"
#include "program/commandline/SceneEdits.h"

namespace commandline {

using host::BaseObject;

namespace {

// Objects with geometry, in tree order.
std::vector<BaseObject*> MeshObjects(const host::BaseDocument& doc) {
  std::vector<BaseObject*> objects;
  for (BaseObject* object = doc.GetFirstObject(); object; object = engine::NextInTree(object)) {
    if (engine::MeshOf(*object)) objects.push_back(object);
  }
  return objects;
}

}  // namespace

Demo::Demo(Session& session, std::string scene, std::string folder)
    : session_(session), scene_(std::move(scene)), folder_(std::move(folder)) {}

int Demo::Run() {
  std::cout << Coloured(Colour::Bold, "Stagemarks: three states of one scene") << "\n\n";
  const bool worked = Import() && RecordStates() && RecallStates() && UndoRecall() && SaveAndReopen();
  if (!worked) return kFailed;
  ShowResult();
  return session_.CheckLedger();
}

bool Demo::Step(const std::string& text, bool worked, const std::vector<std::string>& why) {
  std::cout << "  " << (worked ? Coloured(Colour::Green, "\u2713") : Coloured(Colour::Red, "\u2717")) << " " << text << std::endl;
  for (const std::string& line : why) std::cout << "      " << line << '\n';
  return worked;
}

bool Demo::Import() {
  if (session_.Open(scene_) != kDone) return Step("Opening " + scene_, false);
  const engine::SceneCounts counts = engine::CountScene(session_.Document());
  return Step("Opened " + std::filesystem::path(scene_).filename().string() + ": " + Counted(counts.objects, "object") + ", " +
                  Counted(counts.materials, "material") + ", " + Counted(counts.lights, "light") + ", " +
                  Counted(counts.polygons, "polygon"),
              true);
}

void Demo::MakeEverything() {
  host::BaseDocument& doc = session_.Document();
  const Bounds bounds = BoundsOf(doc);
  BaseObject* camera = MakeCamera(doc, "Overview", ViewPoint(bounds, 0.6), bounds.centre);
  doc.GetRenderBaseDraw()->SetSceneCamera(camera, host::FALSE);
  host::LayerObject* layer = MakeLayer(doc, "Props");
  const auto meshes = MeshObjects(doc);
  for (std::size_t i = 1; i < meshes.size(); i += 4) AssignLayer(doc, *meshes[i], layer);
}

void Demo::MakeEmptier() {
  host::BaseDocument& doc = session_.Document();
  const Bounds bounds = BoundsOf(doc);
  BaseObject* camera = MakeCamera(doc, "From the side", ViewPoint(bounds, 2.2), bounds.centre);
  doc.GetRenderBaseDraw()->SetSceneCamera(camera, host::FALSE);
  const auto meshes = MeshObjects(doc);
  for (std::size_t i = 0; i < meshes.size(); i += 3) {
    doc.AddUndo(host::UNDO_CHANGE, meshes[i]);
    meshes[i]->SetEditorMode(host::MODE_OFF);
    meshes[i]->SetRenderMode(host::MODE_OFF);
  }
  SetRenderSize(doc, 1920, 1080);
}

void Demo::MakeClay() {
  host::BaseDocument& doc = session_.Document();
  host::BaseMaterial* clay = MakeMaterial(doc, "Clay", {0.62, 0.55, 0.48});
  for (BaseObject* object : MeshObjects(doc)) {
    AssignMaterial(doc, *object, clay);
    doc.AddUndo(host::UNDO_CHANGE, object);
    object->SetEditorMode(host::MODE_UNDEF);
    object->SetRenderMode(host::MODE_UNDEF);
  }
  auto* layer = static_cast<host::LayerObject*>(doc.GetLayerObjectRoot()->GetLast());
  SetLayerFlag(doc, *layer, "render", false);
  SetRenderSize(doc, 1080, 1080);
}

bool Demo::RecordStates() {
  using Make = void (Demo::*)();
  const struct {
    Make make;
    const char* name;
    const char* what;
  } kStates[] = {
      {&Demo::MakeEverything, "Overview", "everything, from above"},
      {&Demo::MakeEmptier, "Emptier", "every third object hidden, another camera, a wider picture"},
      {&Demo::MakeClay, "Clay", "one plain material, the layer \"Props\" left out, a square picture"},
  };
  for (const auto& state : kStates) {
    session_.Document().StartUndo();
    (this->*state.make)();
    session_.Document().EndUndo();
    session_.Document().SetChanged();
    if (!Record(state.name, state.what)) return false;
  }
  return true;
}

bool Demo::Record(const std::string& name, const std::string& what) {
  StagemarksDialog& dialog = session_.Dialog();
  const bool recorded = dialog.TypeName(name) && dialog.Press("Record Element");
  session_.App().DeliverEvents();
  states_.push_back({name, engine::DumpState(session_.Document())});
  return Step("Recorded \"" + name + "\": " + what, recorded && dialog.Current() == name);
}

bool Demo::Recall(const State& state) {
  const bool loaded = session_.Dialog().Select(state.name) && session_.Dialog().Press("Load");
  session_.App().DeliverEvents();
  const auto difference = engine::DumpDifference(state.facts, engine::DumpState(session_.Document()));
  return Step("Recalled \"" + state.name + "\": the scene equals the recorded state", loaded && difference.empty(), difference);
}

bool Demo::RecallStates() {
  for (const State& state : states_) {
    if (!Recall(state)) return false;
  }
  return true;
}

bool Demo::UndoRecall() {
  const std::string before = engine::DumpState(session_.Document());
  if (!Recall(states_.front())) return false;
  const bool undone = session_.App().Undo();
  session_.App().DeliverEvents();
  const auto difference = engine::DumpDifference(before, engine::DumpState(session_.Document()));
  return Step("Undid that recall in one step: the scene is as it was before", undone && difference.empty(), difference);
}

bool Demo::SaveAndReopen() {
  if (const engine::Status made = session_.Files().MakeFolders(folder_); !made)
    return Step("Making " + folder_, false, {made.Message()});
  saved_ = folder_ + "/" + std::filesystem::path(scene_).stem().string() + ".c4d";
  const engine::Status saved = session_.App().SaveDocumentAs(session_.Document(), saved_);
  if (!Step("Saved " + saved_, saved.Ok(), saved.Ok() ? std::vector<std::string>{} : std::vector{saved.Message()})) return false;
  host::KillDocument(&session_.Document());
  if (session_.Open(saved_) != kDone) return Step("Opening it again", false);
  Step("Opened it again: " + Counted(session_.Dialog().Marks().size(), "Stagemark"),
       session_.Dialog().Marks().size() == states_.size());
  return RecallStates();
}

void Demo::ShowResult() {
  std::cout << "\nThe list, as the dialog shows it:\n\n" << session_.Dialog().ListText() << "\n\n";
  std::cout << "What next:\n"
            << "  stagemarks list \"" << saved_ << "\"\n"
            << "  stagemarks load \"" << saved_ << "\" Overview -o overview.c4d\n"
            << "  stagemarks --help\n";
}

}  // namespace commandline
