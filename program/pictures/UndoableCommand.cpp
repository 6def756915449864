#include "program/pictures/UndoableCommand.h"

#include <algorithm>
#include <new>
#include <utility>

#include "engine/states/RecordList.h"
#include "engine/states/Trash.h"
#include "engine/undo/Undo.h"
#include "host/Host.h"
#include "program/pictures/DialogLabels.h"
#include "program/pictures/StagemarksDialog.h"

namespace pictures {

namespace {

// The Stagemarks that a command may take away or give another preview. Both: the one that is
// selected and the name that was typed for it.
enum class Touches { Nothing, Typed, Selected, Both, Checked, All };

struct Command {
  const char* label;
  Touches touches;
};
constexpr Command kCommands[] = {
    {kRecord, Touches::Typed},          {kLoad, Touches::Nothing},
    {kDelete, Touches::Selected},       {kRename, Touches::Both},
    {kDeleteChecked, Touches::Checked}, {kDeleteAll, Touches::All},
    {kUpdateChecked, Touches::Nothing}, {kSetObjects, Touches::Nothing},
    {kSetTags, Touches::Nothing},       {kSetLayers, Touches::Nothing},
    {kSetCamera, Touches::Nothing},
};

std::vector<std::string> NamesOf(const StagemarksDialog& dialog, Touches touches) {
  std::vector<std::string> names;
  if (touches == Touches::Checked) return dialog.CheckedNames();
  if (touches == Touches::Selected || touches == Touches::Both) names = dialog.SelectedNames();
  if (touches == Touches::Typed || touches == Touches::Both) names.push_back(dialog.TypedName());
  if (touches != Touches::All) return names;
  for (Mark& mark : dialog.Marks()) names.push_back(std::move(mark.name));
  return names;
}

// Renaming gives the copy of the render settings the new name, too.
void RegisterSettings(host::BaseDocument& doc, const std::vector<std::string>& selected) {
  if (selected.size() != 1) return;
  const auto states = engine::ReadStates(doc);
  const engine::StoredState* state = engine::FindState(doc, states, selected.front());
  host::RenderData* settings = state ? engine::RecordedSettings(doc, state->record) : nullptr;
  if (settings) doc.AddUndo(host::UNDO_CHANGE, settings);
}

}  // namespace

// The scope begins when the previews are there and ends before they go.
struct UndoableCommand::Body {
  Body(const engine::Services& with, host::BaseDocument& document, const std::string& name)
      : services(with),
        doc(document),
        previews(std::make_unique<engine::KeptPreviews>(with)),
        scope(document, name, engine::StoresOfStates()) {}

  const engine::Services& services;
  host::BaseDocument& doc;
  std::unique_ptr<engine::KeptPreviews> previews;
  engine::StoredDataScope scope;
  std::string recorded;  // the name that a recording was typed under
  bool fillsTrash = false;
};

// Previews are taken before the command overwrites or deletes their files. Renaming fills no trash,
// though it touches names: nothing is gone by it.
UndoableCommand::UndoableCommand(const engine::Services& services, host::GeDialog& dialog,
                                 const std::string& label) {
  const auto* command = std::find_if(std::begin(kCommands), std::end(kCommands),
                                     [&](const Command& each) { return label == each.label; });
  host::BaseDocument* doc = host::GetActiveDocument();
  const StagemarksDialog states(dialog);
  if (command == std::end(kCommands) || !doc || !states.Fits()) return;
  const std::string& act = engine::PresentAct();
  body_ = std::make_unique<Body>(services, *doc, act.empty() ? label : act);
  for (const std::string& name : NamesOf(states, command->touches))
    body_->previews->Take(*doc, name);
  body_->fillsTrash = command->touches != Touches::Nothing && command->touches != Touches::Both;
  if (command->touches == Touches::Typed) body_->recorded = states.TypedName();
  if (command->touches == Touches::Both) RegisterSettings(*doc, states.SelectedNames());
}

// The trash is filled from the containers as they were before, which the scope holds; previews only
// become part of the step when their files have changed.
UndoableCommand::~UndoableCommand() {
  if (!body_ || !body_->scope.HasChanged()) return;
  // Bulk edits say nothing of it, and the scene would be closed without a question.
  body_->doc.SetChanged();
  try {
    if (body_->fillsTrash)
      engine::MoveToTrash(body_->services, body_->scope, body_->doc, body_->recorded,
                          *body_->previews);
    if (body_->previews->KeepChanged(body_->doc)) body_->scope.Add(std::move(body_->previews));
  } catch (const std::bad_alloc&) {
    // Without memory the deleted Stagemarks do not reach the trash; undo still restores them.
  }
}

}  // namespace pictures
