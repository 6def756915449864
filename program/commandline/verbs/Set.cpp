#include <array>
#include <cstdio>
#include <unordered_set>

#include "engine/editing/LayerCommands.h"
#include "engine/editing/MaterialCommands.h"
#include "engine/editing/ObjectCommands.h"
#include "engine/editing/RenderSettingsCommands.h"
#include "program/commandline/Arguments.h"
#include "program/commandline/FramingCamera.h"
#include "program/commandline/SceneSelection.h"
#include "program/commandline/Session.h"

namespace commandline {

namespace {

struct Changes {
  std::vector<std::string> objects;
  std::string editor;
  std::string render;
  std::string deform;
  std::string material;
  std::string assignLayer;
  std::vector<std::string> select;
  std::string layer;
  std::vector<std::string> layerFlags;
  std::string camera;
  std::string addCamera;
  std::vector<double> at;  // empty: where everything can be seen
  std::vector<double> lookAt{0, 0, 0};
  std::string addLayer;
  std::string addMaterial;
  std::vector<double> color{0.8, 0.8, 0.8};
  std::string size;
  std::string frames;
};

using Objects = std::vector<host::BaseObject*>;

// Carries out one call of `set`: each step answers an exit status and counts what it changed.
class SetVerb {
 public:
  SetVerb(Program& program, const Changes& changes)
      : program_(program), changes_(changes), session_(program) {}

  // All changes are one undo step. They are kept only when each of them worked: a step that fails
  // ends the verb before anything is written.
  int Run() {
    if (const int status = session_.StartWithScene(); status != kDone) return status;
    host::BaseDocument& doc = session_.Document();
    doc.StartUndo();
    int status = kDone;
    for (const auto step :
         {&SetVerb::Make, &SetVerb::ChangeObjects, &SetVerb::Select, &SetVerb::ChangeLayer,
          &SetVerb::ChangeCamera, &SetVerb::ChangeRenderSettings}) {
      if (status == kDone) status = (this->*step)();
    }
    doc.EndUndo();
    if (status != kDone) return status;
    if (done_.empty())
      return Refuse("Nothing to change was given. `stagemarks set --help` lists what can be.");
    doc.SetChanged();
    host::EventAdd();
    session_.App().DeliverEvents();
    return Finish();
  }

 private:
  int Refuse(const std::string& why) {
    program_.terminal.Error(why);
    return kUsage;
  }

  int Finish() {
    Report report;
    for (const std::string& what : done_) report.Line(what);
    report.Put("changed", done_);
    report.PutObject("counts", {{"objects", counts_.objects},
                                {"layers", counts_.layers},
                                {"sceneCamera", counts_.sceneCamera},
                                {"renderSettings", counts_.renderSettings},
                                {"added", counts_.added}});
    return session_.Keep(report);
  }

  // New things first: the other steps may name them.
  int Make() {
    host::BaseDocument& doc = session_.Document();
    if (!changes_.addCamera.empty()) {
      const auto& [at, lookAt] = std::tie(changes_.at, changes_.lookAt);
      host::BaseObject* camera =
          at.empty() ? MakeFramingCamera(doc, changes_.addCamera)
                     : engine::MakeCamera(doc, changes_.addCamera,
                                          engine::LookAt({at[0], at[1], at[2]},
                                                         {lookAt[0], lookAt[1], lookAt[2]}));
      ++counts_.added;
      done_.push_back("Added the camera " + PathOf(*camera) + ".");
    }
    if (!changes_.addLayer.empty()) {
      engine::MakeLayer(doc, changes_.addLayer);
      ++counts_.added;
      done_.push_back("Added the layer " + changes_.addLayer + ".");
    }
    if (!changes_.addMaterial.empty()) {
      engine::MakeMaterial(doc, changes_.addMaterial,
                           {changes_.color[0], changes_.color[1], changes_.color[2]});
      ++counts_.added;
      done_.push_back("Added the material " + changes_.addMaterial + ".");
    }
    return kDone;
  }

  bool ChangesObjects() const {
    return !(changes_.editor.empty() && changes_.render.empty() && changes_.deform.empty() &&
             changes_.material.empty() && changes_.assignLayer.empty());
  }

  // An object counts once, however many of its switches changed.
  int ChangeObjects() {
    if (!ChangesObjects()) return kDone;
    if (changes_.objects.empty()) return Refuse("Say which objects are meant with --object.");
    Objects objects;
    if (const int status = FindAllObjects(session_, changes_.objects, objects); status != kDone)
      return status;
    ChangeModes(objects);
    if (const int status = ChangeMaterial(objects); status != kDone) return status;
    if (const int status = ChangeAssignedLayer(objects); status != kDone) return status;
    counts_.objects = changed_.size();
    done_.push_back(changed_.empty() ? "No object changed: " + Counted(objects.size(), "object") +
                                           (objects.size() == 1 ? " is" : " are") + " so already."
                                     : "Changed " + Counted(changed_.size(), "object") + ".");
    return kDone;
  }

  // "default" is the mode that asks the object above.
  static host::LONG Mode(const std::string& word) {
    return word == "on" ? host::MODE_ON : word == "off" ? host::MODE_OFF : host::MODE_UNDEF;
  }

  void ChangeModes(const Objects& objects) {
    const std::pair<engine::Switch, std::string> switches[] = {
        {engine::Switch::kEditor, changes_.editor}, {engine::Switch::kRender, changes_.render}};
    for (host::BaseObject* object : objects) {
      for (const auto& [which, word] : switches) {
        if (!word.empty()) Switch(*object, which, Mode(word));
      }
      if (!changes_.deform.empty())
        Switch(*object, engine::Switch::kGenerator, changes_.deform == "on" ? 1 : 0);
    }
  }

  // Equal values are left alone, so that the count is of what changed.
  void Switch(host::BaseObject& object, engine::Switch which, host::LONG value) {
    if (engine::SwitchOf(object, which) == value) return;
    engine::ChangeSwitch(session_.Document(), {&object}, which, value);
    changed_.insert(&object);
  }

  // By the tag that the picture shows.
  int ChangeMaterial(const Objects& objects) {
    if (changes_.material.empty()) return kDone;
    host::BaseMaterial* material = nullptr;
    if (changes_.material != "none") {
      const auto found = FindMaterial(session_.Document(), changes_.material);
      if (!found) return Refuse(found.Message());
      material = found.Value();
    }
    for (host::BaseObject* object : objects) {
      const host::TextureTag* tag = engine::ShownTextureTag(*object);
      if ((tag ? tag->GetMaterial() : nullptr) == material) continue;
      engine::GiveMaterial(session_.Document(), *object, material);
      changed_.insert(object);
    }
    return kDone;
  }

  int ChangeAssignedLayer(const Objects& objects) {
    if (changes_.assignLayer.empty()) return kDone;
    host::BaseDocument& doc = session_.Document();
    host::LayerObject* layer = nullptr;
    if (changes_.assignLayer != "none") {
      const auto found = FindLayer(doc, changes_.assignLayer);
      if (!found) return Refuse(found.Message());
      layer = found.Value();
    }
    for (host::BaseObject* object : objects) {
      if (object->GetLayerObject(&doc) == layer) continue;
      engine::PutOnLayer(doc, *object, layer);
      changed_.insert(object);
    }
    return kDone;
  }

  int Select() {
    if (changes_.select.empty()) return kDone;
    std::string selected;
    if (const int status = SelectObjects(session_, changes_.select, selected); status != kDone)
      return status;
    done_.push_back("Selected " + selected + ".");
    return kDone;
  }

  int ChangeLayer() {
    if (changes_.layerFlags.empty()) return kDone;
    if (changes_.layer.empty()) return Refuse("Say which layer is meant with --layer.");
    const host::BaseDocument& doc = session_.Document();
    const auto layer = FindLayer(doc, changes_.layer);
    if (!layer) return Refuse(layer.Message());
    const host::LayerData before = layer.Value()->GetLayerData(&doc);
    for (const std::string& flag : changes_.layerFlags) {
      const auto equals = flag.find('=');
      const std::string value = equals == std::string::npos ? "" : flag.substr(equals + 1);
      const auto number = engine::FindLayerSwitch(flag.substr(0, equals));
      if ((value != "on" && value != "off") || !number) {
        return Refuse("\"" + flag +
                      "\" is no layer flag. Flags are solo, view, render, manager, locked, "
                      "generators, deformers, "
                      "expressions and animation, each =on or =off.");
      }
      engine::SetLayerSwitch(session_.Document(), {layer.Value()}, *number, value == "on");
      done_.push_back("Layer " + changes_.layer + ": " + flag + ".");
    }
    counts_.layers = before == layer.Value()->GetLayerData(&doc) ? 0 : 1;
    return kDone;
  }

  // No camera means the editor camera.
  int ChangeCamera() {
    if (changes_.camera.empty()) return kDone;
    host::BaseObject* camera = nullptr;
    if (changes_.camera != "none") {
      const auto found = FindObject(session_.Document(), changes_.camera);
      if (!found) return Refuse(found.Message());
      if (found.Value()->GetType() != host::Ocamera)
        return Refuse("\"" + changes_.camera + "\" is no camera.");
      camera = found.Value();
    }
    const host::BaseDocument& doc = session_.Document();
    counts_.sceneCamera = doc.GetRenderBaseDraw()->GetSceneCamera(&doc) != camera;
    doc.GetRenderBaseDraw()->SetSceneCamera(camera, host::FALSE);
    done_.push_back("The scene camera is now " + (camera ? PathOf(*camera) : "the editor camera") +
                    ".");
    return kDone;
  }

  int ChangeRenderSettings() {
    std::array<int, 2> numbers{};
    char rest = 0;
    const host::RenderData& settings = *session_.Document().GetActiveRenderData();
    const host::BaseContainer before = *settings.GetDataInstance();
    if (!changes_.size.empty()) {
      if (std::sscanf(changes_.size.c_str(), "%dx%d%c", &numbers[0], &numbers[1], &rest) != 2 ||
          numbers[0] < 1 || numbers[1] < 1 || numbers[0] > 16384 || numbers[1] > 16384) {
        return Refuse("\"" + changes_.size +
                      "\" is no picture size; 1920x1080 is one, up to 16384 a side.");
      }
      engine::SetRenderSize(session_.Document(), numbers[0], numbers[1]);
      done_.push_back("Picture size " + changes_.size + ".");
    }
    if (!changes_.frames.empty()) {
      if (std::sscanf(changes_.frames.c_str(), "%d:%d%c", &numbers[0], &numbers[1], &rest) != 2 ||
          numbers[0] > numbers[1]) {
        return Refuse("\"" + changes_.frames + "\" is no frame range; 0:90 is one.");
      }
      engine::SetRenderFrames(session_.Document(), numbers[0], numbers[1]);
      done_.push_back("Frames " + changes_.frames + ".");
    }
    counts_.renderSettings = !(before == *settings.GetDataInstance());
    return kDone;
  }

  Program& program_;
  const Changes& changes_;
  Session session_;
  std::vector<std::string> done_;
  std::unordered_set<const host::BaseObject*> changed_;
  // Numbers of changed and added elements, for the report.
  struct {
    std::size_t objects = 0;
    std::size_t layers = 0;
    bool sceneCamera = false;
    bool renderSettings = false;
    std::size_t added = 0;
  } counts_;
};

void AddObjectChanges(Verb verb, Changes& changes) {
  verb.BeginSection("Objects");
  const std::vector<std::string> modes({"on", "off", "default"});
  verb.Add("--object", changes.objects,
           "Objects to change: name, /path, #position, or a pattern with * for several")
      .Word("OBJECT");
  verb.Add("--editor", changes.editor, "Visible in the editor: on, off or default (as the parent)")
      .Word("MODE")
      .OneOf(modes);
  verb.Add("--render", changes.render, "Visible in renders: on, off or default (as the parent)")
      .Word("MODE")
      .OneOf(modes);
  verb.Add("--deform", changes.deform, "Generator on or off").Word("MODE").OneOf({"on", "off"});
  verb.Add("--material", changes.material, "Material of the texture tag, or none").Word("MATERIAL");
  verb.Add("--assign-layer", changes.assignLayer, "Layer to put the objects on, or none")
      .Word("LAYER");
  verb.Add("--select", changes.select, "Select exactly these objects").Word("OBJECT");
}

std::vector<std::string> LayerFlags() {
  std::vector<std::string> flags;
  for (const engine::LayerSwitch& row : engine::kLayerSwitchTable) {
    for (const char* value : {"=on", "=off"}) flags.push_back(std::string(row.key) + value);
  }
  return flags;
}

void AddSceneChanges(Verb verb, Changes& changes) {
  verb.BeginSection("Layers and picture");
  verb.Add("--layer", changes.layer, "Layer whose flags --flag changes").Word("LAYER");
  verb.Add("--flag", changes.layerFlags,
           "A flag of that layer: solo, view, render, manager, locked, generators, "
           "deformers, expressions or animation; "
           "may be given several times")
      .Offers("FLAG=on|off", LayerFlags());
  verb.Add("--camera", changes.camera, "Camera to render through, or none").Word("CAMERA");
  verb.Add("--size", changes.size, "Picture size of the active render settings, as 1920x1080")
      .Word("WIDTHxHEIGHT");
  verb.Add("--frames", changes.frames, "Frame range of the active render settings, as 0:90")
      .Word("FROM:TO");
  verb.BeginSection("What is new");
  verb.Add("--add-camera", changes.addCamera,
           "Add a camera of this name that shows everything, or see --at")
      .Word("NAME");
  verb.Add("--at", changes.at, "Where the new camera stands").Word("X,Y,Z").Separated(',').Count(3);
  verb.Add("--look-at", changes.lookAt, "What it looks at from there")
      .Word("X,Y,Z")
      .Separated(',')
      .Count(3)
      .Needs("--at");
  verb.Add("--add-layer", changes.addLayer, "Add a layer of this name").Word("NAME");
  verb.Add("--add-material", changes.addMaterial, "Add a material of this name; see --color")
      .Word("NAME");
  verb.Add("--color", changes.color, "Its color, from 0 to 1")
      .Word("R,G,B")
      .Separated(',')
      .Count(3)
      .Shares();
}

}  // namespace

void AddSet(Arguments& arguments, Program& program) {
  Verb verb = arguments.AddVerb(
      "set",
      "Change switches, materials, layers, camera or render settings, to make states from a shell");
  AddScene(verb, program);
  auto changes = std::make_shared<Changes>();
  AddObjectChanges(verb, *changes);
  AddSceneChanges(verb, *changes);
  verb.BeginSection("Options");
  AddKeeping(verb, program);
  verb.Footer(
      "Examples:\n"
      "  stagemarks set room.c4d --object \"Lamp*\" --render off --write\n"
      "  stagemarks set room.c4d --add-camera Front --at 0,150,-900 --look-at 0,100,0 --write\n"
      "  stagemarks set room.c4d --layer Props --flag render=off --size 1920x1080 -o room2.c4d");
  verb.Does([&program, changes] { return SetVerb(program, *changes).Run(); });
}

}  // namespace commandline
