// The plug-in answers a command with yes or no and keeps silent about the rest, so everything is
// told by comparing: rows, the document's data, materials and the ledger before and after.
#include "program/outcome/CommandWatch.h"

#include <algorithm>
#include <unordered_map>

#include "engine/scene/NodeTypes.h"
#include "engine/scene/TreeWalk.h"
#include "engine/states/StoredStates.h"
#include "host/Host.h"
#include "program/outcome/BulkEdits.h"
#include "program/outcome/Words.h"
#include "program/pictures/DialogLabels.h"

namespace outcome {

using engine::Operation;

namespace {

constexpr const char* kSceneEnding = ".c4d";
constexpr const char* kOneRowNeeded = "Nothing was done: select exactly one Stagemark in the list.";
constexpr const char* kCheckNeeded = "Nothing was done: check the Stagemarks that are meant.";

std::vector<std::string> NamesOf(const std::vector<pictures::Mark>& marks) {
  std::vector<std::string> names;
  names.reserve(marks.size());
  for (const pictures::Mark& mark : marks) names.push_back(mark.name);
  return names;
}

std::vector<std::string> MaterialsOf(const host::BaseDocument& doc) {
  std::vector<std::string> names;
  for (const host::BaseMaterial* at = doc.GetFirstMaterial(); at; at = at->GetNext())
    names.push_back(at->GetName().ToUtf8());
  return names;
}

std::vector<std::string> NamesOf(const host::AtomArray& items) {
  std::vector<std::string> names;
  names.reserve(static_cast<std::size_t>(items.GetCount()));
  for (host::LONG i = 0; i < items.GetCount(); ++i) {
    names.push_back(static_cast<const host::BaseList2D*>(items.GetIndex(i))->GetName().ToUtf8());
  }
  return names;
}

std::vector<std::string> ActiveCamera(const host::BaseDocument& doc) {
  const host::BaseObject* active = doc.GetActiveObject();
  return active && active->GetType() == host::Ocamera
             ? std::vector<std::string>{active->GetName().ToUtf8()}
             : std::vector<std::string>{};
}

// Layers stand before everything else that a document owns.
std::vector<std::string> SelectedLayers(const host::BaseDocument& doc) {
  std::vector<std::string> names;
  for (const host::GeListNode* node = engine::NextInside(doc, doc); node;
       node = engine::NextInside(*node, doc)) {
    if (engine::KindOf(*node) != engine::NodeKind::Layer) break;
    const auto& layer = *static_cast<const host::LayerObject*>(node);
    if (layer.GetAllBits() & host::BIT_ACTIVE) names.push_back(layer.GetName().ToUtf8());
  }
  return names;
}

}  // namespace

// A multiset difference in the order of `before`, O(n): names may occur more than once.
std::vector<std::string> NamesGone(const std::vector<std::string>& before,
                                   const std::vector<std::string>& after) {
  std::unordered_map<std::string, int> left;
  for (const std::string& name : after) ++left[name];
  std::vector<std::string> gone;
  for (const std::string& name : before) {
    if (--left[name] < 0) gone.push_back(name);
  }
  return gone;
}

std::string CleanedSentence(const std::vector<std::string>& gone) {
  return gone.empty() ? "Every material is used by a Stagemark."
                      : "Deleted " + Counted(gone.size(), "material") + ": " + Listed(gone) + ".";
}

// A command and the function that tells its outcome. Those of the list and of the options are not
// here: they show by themselves.
struct CommandWatch::Command {
  const char* label;
  void (CommandWatch::*say)(bool answered, Outcome& outcome);
};

// The bulk edits share one row; which it was is found again by the label.
const CommandWatch::Command* CommandWatch::Find(const std::string& label) {
  static constexpr Command kBulkEdit{"", &CommandWatch::SayBulkEdit};
  static constexpr Command kCommands[] = {
      {pictures::kRecord, &CommandWatch::SayRecorded},
      {pictures::kLoad, &CommandWatch::SayLoaded},
      {pictures::kDelete, &CommandWatch::SayDeleted},
      {pictures::kDeleteChecked, &CommandWatch::SayDeleted},
      {pictures::kDeleteAll, &CommandWatch::SayDeleted},
      {pictures::kRename, &CommandWatch::SayRenamed},
      {pictures::kCleanMaterials, &CommandWatch::SayCleaned},
      {pictures::kGenerateScenes, &CommandWatch::SayExported},
      {pictures::kSaveDefaults, &CommandWatch::SaySavedDefaults},
  };
  if (FindBulkEdit(label)) return &kBulkEdit;
  const auto* found = std::find_if(std::begin(kCommands), std::end(kCommands),
                                   [&](const Command& c) { return label == c.label; });
  return found == std::end(kCommands) ? nullptr : found;
}

// Taken before the command runs. The copies of rows and data are cheap next to it; the container
// shares its entries with the document.
CommandWatch::CommandWatch(const engine::Services& services, host::GeDialog& dialog,
                           std::string label)
    : services_(services),
      dialog_(dialog),
      label_(std::move(label)),
      command_(dialog_.Fits() ? Find(label_) : nullptr),
      mark_(services_.ledger.Mark()),
      doc_(host::GetActiveDocument()) {
  if (!command_ || !doc_) return;
  data_ = *doc_->GetDataInstance();
  names_ = NamesOf(dialog_.Marks());
  selected_ = dialog_.SelectedNames();
  checked_ = dialog_.CheckedNames();
  materials_ = MaterialsOf(*doc_);
  inScene_ = SelectedInScene();
  typed_ = dialog_.TypedName();
  preview_ = dialog_.IsTicked(pictures::kGeneratePreview);
}

// Failures of files are added whatever the command, since plug-ins keep silent about them.
Outcome CommandWatch::Finish(bool answered) {
  Outcome outcome;
  if (command_ && doc_) (this->*command_->say)(answered, outcome);
  for (std::string& failure : Sentences(FailuresThatMatter(services_, mark_))) {
    outcome.problems.push_back(std::move(failure));
  }
  return outcome;
}

std::vector<std::string> CommandWatch::SelectedInScene() const {
  const BulkEdit* edit = FindBulkEdit(label_);
  const std::string kind = edit ? edit->selected : "";
  const host::AutoAlloc<host::AtomArray> items;
  if (kind == "layer") return SelectedLayers(*doc_);
  if (kind == "object") doc_->GetActiveObjects(*items, host::GETACTIVEOBJECTFLAGS_CHILDREN);
  if (kind == "tag") doc_->GetActiveTags(*items);
  return NamesOf(*items);
}

bool CommandWatch::SceneDataChanged() const { return !(data_ == *doc_->GetDataInstance()); }

// An empty path stands for a name that no file can have.
bool CommandWatch::Has(Operation operation, const char* ending, bool succeeded) const {
  const std::vector<engine::LedgerEntry>& entries = services_.ledger.Entries();
  return std::any_of(entries.begin() + static_cast<std::ptrdiff_t>(mark_), entries.end(),
                     [&](const engine::LedgerEntry& entry) {
                       return entry.operation == operation && entry.succeeded == succeeded &&
                              (entry.path.empty() || entry.path.ends_with(ending));
                     });
}

// A dialog that answers no was not to record over a Stagemark, or had recorded and then no memory
// for the preview.
void CommandWatch::SayRecorded(bool answered, Outcome& outcome) {
  if (typed_.empty() || (!answered && !SceneDataChanged())) return;
  const bool anew = std::find(names_.begin(), names_.end(), typed_) != names_.end();
  outcome.summary = "Recorded " + Listed({typed_}) + (anew ? " anew" : "");
  if (Has(Operation::ReplaceFile, engine::kPreviewEnding, true))
    outcome.summary += ", with preview";
  if (!preview_ && Has(Operation::RemoveFile, engine::kPreviewEnding, true))
    outcome.summary += "; its old preview is gone";
  outcome.summary += ".";
  if (Has(Operation::ReplaceFile, engine::kPreviewEnding, false))
    outcome.problems.push_back("The preview of " + Listed({typed_}) + " was not written.");
  if (!answered)
    outcome.problems.push_back("There was not enough memory for the preview of " +
                               Listed({typed_}) + ".");
}

void CommandWatch::SayLoaded(bool answered, Outcome& outcome) {
  if (selected_.size() == 1) outcome.summary = answered ? "Loaded " + Listed(selected_) + "." : "";
  if (selected_.size() != 1) outcome.summary = kOneRowNeeded;
}

// By the rows that are gone, not by what was asked for: a person may have said no. With a row
// selected and nothing gone he has, and needs no sentence about it.
void CommandWatch::SayDeleted(bool, Outcome& outcome) {
  const std::vector<std::string> gone = NamesGone(names_, NamesOf(dialog_.Marks()));
  if (!gone.empty()) {
    outcome.summary = "Deleted " +
                      (gone.size() > 1 ? Counted(gone.size(), "Stagemark") + ": " : "") +
                      Listed(gone) + ".";
  } else if (label_ == pictures::kDelete && selected_.size() != 1) {
    outcome.summary = kOneRowNeeded;
  } else if (label_ != pictures::kDelete) {
    outcome.summary = names_.empty() ? "There are no Stagemarks in this scene." : kCheckNeeded;
  }
}

void CommandWatch::SayRenamed(bool, Outcome& outcome) {
  if (selected_.size() != 1) {
    outcome.summary = kOneRowNeeded;
  } else if (!typed_.empty()) {
    outcome.summary = typed_ == selected_.front()
                          ? "The name in the field is the one it has: type another one."
                          : "Renamed " + Listed(selected_) + " to " + Listed({typed_}) + ".";
  }
}

void CommandWatch::SayCleaned(bool, Outcome& outcome) {
  outcome.summary = names_.empty() ? kNoMarksForMaterials
                                   : CleanedSentence(NamesGone(materials_, MaterialsOf(*doc_)));
}

void CommandWatch::SaySavedDefaults(bool, Outcome& outcome) {
  if (!Has(Operation::ReplaceFile, "", false))
    outcome.summary = "Kept these options as your defaults.";
}

// Says nothing where the camera is missing: the dialog does so itself.
void CommandWatch::SayBulkEdit(bool, Outcome& outcome) {
  const BulkEdit& edit = *FindBulkEdit(label_);
  const bool isCamera = label_ == pictures::kSetCamera;
  const bool needs = *edit.selected != 0 && inScene_.empty();
  const bool changed = SceneDataChanged();
  const std::vector<std::string> selected = isCamera ? ActiveCamera(*doc_) : inScene_;
  if (isCamera && selected.empty()) return;
  if (checked_.empty()) {
    outcome.summary = kCheckNeeded;
  } else if (needs) {
    outcome.summary = std::string("Nothing was changed: select ") +
                      (edit.selected[0] == 'o' ? "an " : "a ") + edit.selected + " first.";
  } else {
    const bool tags = std::string(edit.selected) == "tag";
    outcome.summary = Sentence(edit, changed,
                               tags ? Counted(selected.size(), "tag") : Listed(selected), checked_);
  }
}

// An export is whole when each checked Stagemark has its scene file, no texture is missing and
// nothing failed. The plug-in makes the copy that it exports the active document and goes back at
// its end: one that is still active has stayed behind.
void CommandWatch::SayExported(bool, Outcome& outcome) {
  if (folder_.empty()) return;
  const engine::Ledger& ledger = services_.ledger;
  std::size_t scenes = 0;
  for (std::size_t i = mark_; i < ledger.Entries().size(); ++i) {
    const engine::LedgerEntry& entry = ledger.Entries()[i];
    const bool copied = entry.operation == Operation::CopyFile;
    if (!entry.succeeded || (!copied && entry.operation != Operation::ReplaceFile)) continue;
    scenes += !copied && entry.path.ends_with(kSceneEnding) ? 1 : 0;
    outcome.files.push_back(copied ? entry.target : entry.path);
  }
  outcome.folder = folder_;
  const bool whole =
      scenes == checked_.size() && missing_.empty() && FailuresThatMatter(services_, mark_).empty();
  const std::string done = Counted(scenes, "scene file");
  outcome.summary = whole ? "Exported " + done + " into \"" + folder_ + "\"."
                          : "Not everything was exported: " + done + " of " +
                                std::to_string(checked_.size()) + " in \"" + folder_ + "\".";
  for (const std::string& texture : missing_)
    outcome.problems.push_back("The texture \"" + texture + "\" was found nowhere.");
  if (host::GetActiveDocument() != doc_)
    outcome.problems.push_back("The copy of the scene that was being exported stays open.");
}

}  // namespace outcome
