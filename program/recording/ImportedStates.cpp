#include "program/recording/ImportedStates.h"

#include <algorithm>
#include <unordered_set>

#include "engine/import/ImportedStates.h"
#include "engine/scene/DocumentState.h"
#include "engine/scene/ElementState.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/SeededIds.h"
#include "engine/undo/Undo.h"
#include "host/RenderData.h"
#include "program/outcome/Words.h"
#include "program/pictures/DialogLabels.h"

namespace recording {

using engine::ImportedState;
using engine::ImportedStates;
using engine::NodeId;
using host::BaseDocument;

namespace {

// The time at which the plug-in believes to record.
class ToldClock : public engine::Clock {
 public:
  explicit ToldClock(engine::Clock& real) : real_(real) {}
  host::LocalFileTime Now() override { return told.year != 0 ? told : real_.Now(); }

  host::LocalFileTime told;

 private:
  engine::Clock& real_;
};

engine::Services With(engine::Clock& clock, const engine::Services& services) {
  return {services.files,   clock,          services.person, services.ledger,
          services.folders, services.viewer};
}

std::string OneLine(std::string name) {
  std::replace_if(
      name.begin(), name.end(), [](unsigned char c) { return c < 0x20 || c == 0x7f; }, ' ');
  const std::size_t first = name.find_first_not_of(' ');
  return first == std::string::npos ? std::string()
                                    : name.substr(first, name.find_last_not_of(' ') - first + 1);
}

class Recording {
 public:
  Recording(const engine::Services& services, pictures::StagemarksDialog& dialog, BaseDocument& doc)
      : dialog_(dialog),
        doc_(doc),
        kept_(engine::TakeImportedStates(doc)),
        clock_(services.clock),
        services_(With(clock_, services)),
        scope_(services_) {
    for (const pictures::Mark& mark : dialog.Marks()) taken_.insert(mark.name);
  }

  RecordedStates Run() {
    SwitchOptionsOn();
    const std::string typed = dialog_.TypedName();
    const bool hasPreviews = dialog_.IsTicked(pictures::kGeneratePreview);
    dialog_.Tick(pictures::kGeneratePreview, false);
    asItCame_ = AsItStands();
    RecordAll();
    Apply(asItCame_);
    // The one that the scene shows is the current one.
    if (!current_.empty() && dialog_.Select(current_)) dialog_.Press(pictures::kLoad);
    dialog_.Tick(pictures::kGeneratePreview, hasPreviews);
    dialog_.TypeName(typed);
    return std::move(result_);
  }

 private:
  void RecordAll() {
    const std::size_t count = kept_.states.size();
    for (std::size_t i = 0; i < count; ++i) {
      const double done = static_cast<double>(i) / static_cast<double>(count);
      if (!services_.person.Progress(done, "Recording the file's states")) {
        result_.notes.push_back("Recording was stopped; left out are " +
                                outcome::Counted(count - i, "state") + ".");
        return;
      }
      RecordOne(i);
    }
    services_.person.Progress(1, "Recording the file's states");
  }

  // Each part of a state is recorded only where its option is on.
  void SwitchOptionsOn() {
    const auto any = [&](auto has) {
      return std::any_of(kept_.states.begin(), kept_.states.end(), has);
    };
    Need("Materials", any([](const ImportedState& state) { return !state.looks.empty(); }));
    Need("Objects", !kept_.switched.empty());
    Need("Active Camera", any([](const ImportedState& state) { return state.camera != 0; }));
    Need("Render Settings", any([](const ImportedState& state) { return state.width > 0; }));
  }

  void Need(const char* option, bool isNeeded) {
    for (const auto& [label, isOn] : dialog_.Options()) {
      if (!isNeeded || isOn || label != option) continue;
      dialog_.Choose(label);
      result_.notes.push_back("The option \"" + label +
                              "\" was switched on: the file's states are made of it.");
    }
  }

  ImportedState AsItStands() const {
    ImportedState state;
    if (!kept_.states.empty()) {
      for (const auto& [tag, material] : kept_.states.front().looks) {
        if (const host::TextureTag* texture = TextureTagOf(tag))
          state.looks.emplace_back(tag, engine::MaterialIdOf(*texture));
      }
    }
    for (const NodeId id : kept_.switched) {
      const host::BaseObject* object = engine::AsObject(engine::FindNode(&doc_, id));
      if (object && object->GetRenderMode() == host::MODE_OFF) state.hidden.push_back(id);
    }
    state.camera = engine::SceneCameraIdOf(doc_);
    const host::BaseContainer& settings = *doc_.GetActiveRenderData()->GetDataInstance();
    state.width = settings.GetLong(host::RDATA_XRES);
    state.height = settings.GetLong(host::RDATA_YRES);
    return state;
  }

  host::TextureTag* TextureTagOf(NodeId id) const {
    return engine::AsTextureTag(engine::FindNode(&doc_, id));
  }

  void Apply(const ImportedState& state) {
    for (const auto& [tag, material] : state.looks) {
      if (host::TextureTag* texture = TextureTagOf(tag))
        texture->SetMaterial(engine::AsMaterial(engine::FindNode(&doc_, material)));
    }
    const std::unordered_set<NodeId> hidden(state.hidden.begin(), state.hidden.end());
    for (const NodeId id : kept_.switched) {
      host::BaseObject* object = engine::AsObject(engine::FindNode(&doc_, id));
      const host::LONG mode = hidden.contains(id) ? host::MODE_OFF : host::MODE_UNDEF;
      if (object) engine::SetModes(*object, mode, mode, object->GetDeformMode());
    }
    if (state.camera != 0) {
      host::BaseObject* camera = engine::AsObject(engine::FindNode(&doc_, state.camera));
      if (camera) doc_.GetRenderBaseDraw()->SetSceneCamera(camera, host::FALSE);
    }
    if (state.width <= 0 || state.height <= 0) return;
    host::BaseContainer& settings = *doc_.GetActiveRenderData()->GetDataInstance();
    settings.SetLong(host::RDATA_XRES, state.width);
    settings.SetLong(host::RDATA_YRES, state.height);
  }

  void RecordOne(std::size_t number) {
    const ImportedState& state = kept_.states[number];
    const std::string name = FreeName(OneLine(state.name), number);
    Apply(state);
    clock_.told = state.date;
    dialog_.TypeName(name);
    if (!dialog_.Press(pictures::kRecord)) {
      result_.notes.push_back("The state " + outcome::Listed({name}) + " was not recorded.");
      return;
    }
    if (current_.empty() && CameInAs(state)) current_ = name;
    result_.names.push_back(name);
  }

  // The plug-in knows its Stagemarks by their names and takes none without one.
  std::string FreeName(std::string name, std::size_t number) {
    const bool isNameless = name.empty();
    if (isNameless) name = "Variant " + std::to_string(number + 1);
    std::string free = name;
    for (int i = 2; !taken_.insert(free).second; ++i) free = name + " " + std::to_string(i);
    if (isNameless) {
      result_.notes.push_back("A state without a name is called " + outcome::Listed({free}) + ".");
    } else if (free != kept_.states[number].name) {
      result_.notes.push_back("A second state " + outcome::Listed({name}) + " is called " +
                              outcome::Listed({free}) + ".");
    }
    return free;
  }

  // Whether the scene, as it came in, looks like that.
  bool CameInAs(const ImportedState& state) const {
    return state.looks == asItCame_.looks && Sorted(state.hidden) == Sorted(asItCame_.hidden) &&
           (state.camera == 0 || state.camera == asItCame_.camera) &&
           (state.width == 0 ||
            (state.width == asItCame_.width && state.height == asItCame_.height));
  }

  static std::vector<NodeId> Sorted(std::vector<NodeId> ids) {
    std::sort(ids.begin(), ids.end());
    return ids;
  }

  pictures::StagemarksDialog& dialog_;
  BaseDocument& doc_;
  ImportedStates kept_;
  ToldClock clock_;
  const engine::Services services_;
  engine::PublishedServicesScope scope_;
  RecordedStates result_;
  std::unordered_set<std::string> taken_;
  ImportedState asItCame_;
  std::string current_;  // the Stagemark that is the scene as it came in
};

}  // namespace

RecordedStates RecordImportedStates(const engine::Services& services,
                                    pictures::StagemarksDialog& dialog, BaseDocument& doc) {
  if (!engine::HasImportedStates(doc)) return {};
  // Seeded, so that importing a file twice gives the same scene.
  const engine::SeededIds ids(engine::IdOf(doc));
  RecordedStates recorded = Recording(services, dialog, doc).Run();
  engine::ClearUndo(doc);
  engine::ClearChanged(doc);
  return recorded;
}

}  // namespace recording
