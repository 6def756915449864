#include "program/python/States.h"

#include <algorithm>
#include <unordered_map>

#include "engine/states/StoredStates.h"
#include "engine/undo/Undo.h"
#include "host/Host.h"
#include "program/export/ExportPlan.h"
#include "program/lookup/SceneLookup.h"
#include "program/outcome/BulkEdits.h"
#include "program/outcome/CommandWatch.h"
#include "program/outcome/Words.h"
#include "program/pictures/DialogLabels.h"

namespace scripting {

namespace {

using outcome::Listed;
using pictures::StagemarksDialog;

StagemarksDialog DialogOf(DocumentId document) { return Session::Get().DialogFor(Find(document)); }
void Deliver() { Session::Get().App().DeliverEvents(); }

// The name of an undo step, as at the desktop.
std::string StepName(const char* act, const std::string& name) {
  return act + outcome::Shown(name);
}

// Nobody asks before it deletes: that a script says what to delete is the answer.
bool PressDelete(StagemarksDialog& dialog, const Names& names) {
  Session::Person().Answer(true);
  if (names.size() == 1) {
    const engine::ActName act(StepName("Delete ", names.front()));
    return dialog.Select(names.front()) && dialog.Press(pictures::kDelete);
  }
  return dialog.CheckOnly(names) && dialog.Choose(pictures::kDeleteChecked);
}

struct BulkRow {
  Bulk what;
  const char* entry;
  Kind kind;
  const char* noun;
};
constexpr BulkRow kBulkRows[] = {
    {Bulk::Update, pictures::kUpdateChecked, Kind::Objects, ""},
    {Bulk::Objects, pictures::kSetObjects, Kind::Objects, "object"},
    {Bulk::Tags, pictures::kSetTags, Kind::Tags, "tag"},
    {Bulk::Layers, pictures::kSetLayers, Kind::Layers, "layer"},
    {Bulk::Camera, pictures::kSetCamera, Kind::Objects, "camera"},
};

std::vector<ElementId> IdsOf(const FoundList& found) {
  std::vector<ElementId> ids;
  for (const Found& one : found) ids.push_back(one.first);
  return ids;
}

// Selects elements for an edit while it lives, and restores the former selection.
class SelectedMeanwhile {
 public:
  SelectedMeanwhile(DocumentId document, const BulkRow& row, const std::vector<ElementId>& elements)
      : document_(document), kind_(row.kind), isUsed_(row.what != Bulk::Update) {
    if (!isUsed_) return;
    if (elements.empty())
      throw Failure(Fault::Misused, std::string("No ") + row.noun + " was given.");
    former_ = IdsOf(Selected(document, kind_));
    Select(document, kind_, elements);
  }
  SelectedMeanwhile(const SelectedMeanwhile&) = delete;
  SelectedMeanwhile& operator=(const SelectedMeanwhile&) = delete;
  ~SelectedMeanwhile() {
    try {
      if (isUsed_) Select(document_, kind_, former_);
    } catch (const std::exception&) {
      // Of a document or elements that are gone, or without memory: the edit's selection stays.
    }
  }

 private:
  DocumentId document_;
  Kind kind_;
  bool isUsed_;
  std::vector<ElementId> former_;
};

void CheckCamera(host::BaseDocument& doc, const std::vector<ElementId>& elements) {
  if (elements.size() != 1) throw Failure(Fault::Misused, "One camera is needed.");
  if (Session::Get().Element(doc, elements[0]).GetType() != host::Ocamera)
    throw Failure(Fault::Misused, "A camera is needed here.");
}

Names MaterialNames(const host::BaseDocument& doc) {
  Names names;
  for (host::BaseMaterial* at = doc.GetFirstMaterial(); at; at = at->GetNext())
    names.push_back(at->GetName().ToUtf8());
  return names;
}

std::string LabelOfWord(const std::string& word) {
  std::string known;
  for (const engine::PartRow& row : engine::kPartRows) {
    if (word == row.word) return row.label;
    known += (known.empty() ? "" : ", ") + std::string(row.word);
  }
  throw Failure(Fault::Misused, "There is no part \"" + word + "\". Parts are: " + known + ".");
}

}  // namespace

// Before anything is done, so that a mistyped word costs nothing.
void CheckWords(const PartChoice& choice) {
  for (const Names& words : {choice.parts, choice.without}) {
    for (const std::string& word : words) LabelOfWord(word);
  }
}

// The states in the order of the dialog's list.
std::vector<StateFacts> ListStates(DocumentId document) {
  std::unordered_multimap<std::string, engine::StoredState> stored;
  for (engine::StoredState& state : engine::ReadStates(Find(document))) {
    std::string name = state.name;
    stored.emplace(std::move(name), std::move(state));
  }
  std::vector<StateFacts> facts;
  for (const pictures::Mark& mark : DialogOf(document).Marks()) {
    StateFacts& fact = facts.emplace_back(StateFacts{mark.name, "", mark.current});
    if (const auto found = stored.find(mark.name); found != stored.end()) {
      fact.date = found->second.date.Text();
      stored.erase(found);
    }
  }
  return facts;
}

// No names mean all.
Names ChooseStates(DocumentId document, const Names& typed) {
  Names known;
  for (pictures::Mark& mark : DialogOf(document).Marks()) known.push_back(std::move(mark.name));
  if (typed.empty()) return known;
  auto found = lookup::FindMarks(typed, known);
  if (!found) throw Failure(Fault::NotFound, found.Message());
  return found.Take();
}

std::string ChooseState(DocumentId document, const std::string& typed) {
  return TheOnly(typed, ChooseStates(document, {typed}));
}

std::string TheOnly(const std::string& typed, const Names& meant) {
  if (meant.size() == 1) return meant.front();
  throw Failure(Fault::NotFound, "\"" + outcome::Shown(typed) + "\" means " + Listed(meant) +
                                     ", and here one Stagemark is needed. Give one of these "
                                     "names.");
}

// A preview whose name no file can have is refused first: the plug-in would record without one.
// The option is put back in any case, what was typed only when nothing was recorded.
void Record(DocumentId document, const std::string& name, bool overwrite, bool preview) {
  const std::string obstacle = preview ? exporting::WhyNoFileName(name + ".tif") : "";
  if (!obstacle.empty()) {
    throw Failure(Fault::Misused, "There is no preview: the name " + Listed({name}) +
                                      " cannot be that of a file, " + obstacle + ".");
  }
  StagemarksDialog dialog = DialogOf(document);
  Session::Person().Answer(overwrite);
  const std::string typed = dialog.TypedName();
  const bool ticked = dialog.IsTicked(pictures::kGeneratePreview);
  dialog.TypeName(name);
  dialog.Tick(pictures::kGeneratePreview, preview);
  const engine::ActName act(StepName("Record ", name));
  const bool recorded = dialog.Press(pictures::kRecord);
  Deliver();
  dialog.Tick(pictures::kGeneratePreview, ticked);
  if (!recorded || name.empty() || dialog.Current() != name) {
    dialog.TypeName(typed);
    FailAs("\"" + name + "\" was not recorded.", "overwrite=True");
  }
}

// The difference is taken from the open undo step, once the options are back, and so tells what was
// really written.
Loaded Load(DocumentId document, const std::string& typed, const PartChoice& parts) {
  CheckWords(parts);
  const std::string name = ChooseState(document, typed);
  StagemarksDialog dialog = DialogOf(document);
  host::BaseDocument& doc = Find(document);
  Loaded loaded;
  loaded.parts = pictures::WordsToLoad(dialog, parts);
  const engine::UndoScope step(doc, "Load " + name);
  {
    const pictures::PartsInUse inUse(dialog, doc, parts);
    if (!dialog.Select(name) || !dialog.Press(pictures::kLoad))
      FailAs("\"" + name + "\" was not loaded.");
  }
  Deliver();
  const auto changes = step.Difference(0);
  loaded.objects = changes->objects;
  loaded.tags = changes->tags;
  loaded.layers = changes->layers;
  loaded.others = changes->others;
  loaded.renderSettings = changes->renderSettings > 0 || changes->activeSettings;
  loaded.camera = changes->sceneCamera;
  return loaded;
}

// The plug-in takes a name twice; here it is refused, since everything is found by name.
void Rename(DocumentId document, const std::string& typed, const std::string& to) {
  const std::string from = ChooseState(document, typed);
  StagemarksDialog dialog = DialogOf(document);
  if (from != to && dialog.Has(to)) {
    throw Failure(Fault::Refused,
                  "There is a Stagemark \"" + to + "\" already. Delete or rename that one first.");
  }
  dialog.Select(from);
  dialog.TypeName(to);
  const engine::ActName act(StepName("Rename ", from));
  dialog.Press(pictures::kRename);
  Deliver();
  if (to.empty() || !dialog.Has(to)) FailAs("\"" + from + "\" was not renamed.");
}

// Whether anything was deleted shows in the rows that are left.
Names Delete(DocumentId document, const Names& typed) {
  if (typed.empty()) return {};
  Names names = ChooseStates(document, typed);
  StagemarksDialog dialog = DialogOf(document);
  const std::size_t before = dialog.Marks().size();
  PressDelete(dialog, names);
  Deliver();
  if (dialog.Marks().size() == before) FailAs("Nothing was deleted.");
  return names;
}

// The plug-in's commands work on check marks and the selection: both are put back. Whether anything
// changed is told by the stored data.
std::pair<std::string, bool> Edit(DocumentId document, Bulk what, const Names& typed,
                                  const std::vector<ElementId>& elements) {
  const BulkRow& row = *std::ranges::find(kBulkRows, what, &BulkRow::what);
  host::BaseDocument& doc = Find(document);
  if (what == Bulk::Camera) CheckCamera(doc, elements);
  const Names names = ChooseStates(document, typed);
  if (names.empty()) throw Failure(Fault::NotFound, "There are no Stagemarks in this scene.");
  StagemarksDialog dialog = DialogOf(document);
  const SelectedMeanwhile selected(document, row, elements);
  const Names checked = dialog.CheckedNames();
  dialog.CheckOnly(names);
  const host::BaseContainer before = *doc.GetDataInstance();
  dialog.Choose(row.entry);
  Deliver();
  const bool changed = !(before == *doc.GetDataInstance());
  dialog.CheckOnly(checked);
  if (!Session::Person().Told().empty()) FailAs("Nothing changed.");
  const std::string noun = *row.noun == '\0' ? "" : outcome::Counted(elements.size(), row.noun);
  return {outcome::Sentence(*outcome::FindBulkEdit(row.entry), changed, noun, names), changed};
}

Names CleanMaterials(DocumentId document) {
  host::BaseDocument& doc = Find(document);
  StagemarksDialog dialog = DialogOf(document);
  if (dialog.Marks().empty()) throw Failure(Fault::Failed, outcome::kNoMarksForMaterials);
  const Names before = MaterialNames(doc);
  Session::Person().Answer(true);
  dialog.Choose(pictures::kCleanMaterials);
  Deliver();
  return outcome::NamesGone(before, MaterialNames(doc));
}

std::map<std::string, bool> Options(DocumentId document) {
  std::map<std::string, bool> options;
  for (const auto& [label, isOn] : DialogOf(document).Options()) {
    if (const engine::PartRow* row = engine::FindPartByLabel(label)) options[row->word] = isOn;
  }
  return options;
}

// Choosing an entry turns it, so it is chosen only where it is not so yet.
void SetOption(DocumentId document, const std::string& word, bool on) {
  const std::string label = LabelOfWord(word);
  StagemarksDialog dialog = DialogOf(document);
  for (const auto& [entry, isOn] : dialog.Options()) {
    if (entry == label && isOn != on) dialog.Choose(entry);
  }
  Deliver();
}

}  // namespace scripting
