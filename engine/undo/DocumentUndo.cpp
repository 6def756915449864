// The undo part of the published document, and the programs' view of it.
#include "engine/undo/Undo.h"

#include <utility>

#include "engine/core/Progress.h"
#include "engine/undo/UndoHistory.h"

namespace host {

using engine::UndoHistory;

Bool BaseDocument::StartUndo() {
  UndoHistory::Of(*this).Start();
  return TRUE;
}

Bool BaseDocument::EndUndo() {
  UndoHistory& history = UndoHistory::Of(*this);
  const Bool wasOpen = history.IsOpen();
  history.EndUnlessScoped();
  return wasOpen;
}

Bool BaseDocument::AddUndo(LONG type, void* element) {
  auto* node = static_cast<BaseList2D*>(element);
  if (!node || node == this || node->GetDocument() != this || !body_->undo) return FALSE;
  return static_cast<UndoHistory&>(*body_->undo).Add(type, *node);
}

Bool BaseDocument::DoUndo() { return UndoHistory::Of(*this).Undo(); }
Bool BaseDocument::DoRedo() { return UndoHistory::Of(*this).Redo(); }

}  // namespace host

namespace engine {

using host::BaseDocument;

bool CanUndo(const BaseDocument& doc) {
  return UndoHistory::Of(doc) && UndoHistory::Of(doc)->CanUndo();
}
void ForgetUndone(BaseDocument& doc) { UndoHistory::Of(doc).ForgetUndone(); }
bool CanRedo(const BaseDocument& doc) {
  return UndoHistory::Of(doc) && UndoHistory::Of(doc)->CanRedo();
}
std::string UndoName(const BaseDocument& doc) {
  return UndoHistory::Of(doc) ? UndoHistory::Of(doc)->DoneName() : std::string();
}
std::string RedoName(const BaseDocument& doc) {
  return UndoHistory::Of(doc) ? UndoHistory::Of(doc)->UndoneName() : std::string();
}
std::vector<std::string> DoneNames(const BaseDocument& doc) {
  return UndoHistory::Of(doc) ? UndoHistory::Of(doc)->DoneNames() : std::vector<std::string>();
}
std::vector<std::string> UndoneNames(const BaseDocument& doc) {
  return UndoHistory::Of(doc) ? UndoHistory::Of(doc)->UndoneNames() : std::vector<std::string>();
}
void NameUndo(BaseDocument& doc, const std::string& name) { UndoHistory::Of(doc).Name(name); }
void ClearUndo(BaseDocument& doc) { UndoHistory::Of(doc).Clear(); }

UndoScope::UndoScope(BaseDocument& doc, const std::string& name)
    : doc_(doc), begin_(UndoHistory::Of(doc).EnterScope()) {
  NameUndo(doc, name);
}

UndoScope::~UndoScope() { UndoHistory::Of(doc_).LeaveScope(); }

std::optional<StepDifference> UndoScope::Difference(std::size_t most,
                                                    const ProgressCallback& progress) const {
  return UndoHistory::Of(doc_).Difference(begin_, most, progress);
}

void UndoScope::Cancel() { UndoHistory::Of(doc_).TakeBack(begin_); }

const std::string& PresentAct() { return UndoHistory::actName; }

ActName::ActName(std::string name)
    : former_(std::exchange(UndoHistory::actName, std::move(name))) {}

ActName::~ActName() { UndoHistory::actName = std::move(former_); }

}  // namespace engine
