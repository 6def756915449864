// A comparison that stops at the first thing that differs: hollow is found out soon, and only full
// needs a look at everything.
#include "program/desktop/dialog/CurrentStateMark.h"

#include <algorithm>

#include "program/desktop/dialog/ListView.h"

namespace desktop {

CurrentStateMark::CurrentStateMark(const StatesDialog& states)
    : states_(states),
      slices_(
          "comparing the scene", [this] { return Advance(); }, [this] { comparison_.reset(); }) {
  pause_.setSingleShot(true);
  pause_.setInterval(kMomentAfterChange);
  QObject::connect(&pause_, &QTimer::timeout, &pause_, [this] { slices_.Start(); });
}

// The star stays as it is until the comparison is through, except in another document or list. A
// large scene is compared when it has rested for a moment: during a drag each comparison would be
// for nothing.
void CurrentStateMark::Follow(host::BaseDocument* doc) {
  Question question;
  question.list = states_.List();
  if (doc && question.list) {
    question.doc = IdentityOf(doc);
    question.changes = engine::ChangeCount(*doc);
    question.camera = engine::SceneCameraIdOf(*doc);
    question.parts = states_.PartsInForce();
  }
  if (question == asked_) return;
  const bool isOther = question.doc != asked_.doc || question.list != asked_.list;
  asked_ = question;
  comparison_.reset();
  slices_.Stop();
  pause_.stop();
  if (asked_.doc == 0) return;
  if (isOther) Show(false);
  if (engine::NodeCount(*doc) < kLargeScene) return slices_.StartHere();
  pause_.start();
}

// The state that is current and still has a record; without one the star stays full.
bool CurrentStateMark::Advance() {
  const host::BaseDocument* doc = FindOpenDocument(asked_.doc);
  // Changed since: the next Follow begins anew.
  if (!doc || engine::ChangeCount(*doc) != asked_.changes) return false;
  if (!comparison_) {
    const auto states = engine::ReadStates(*doc);
    const auto current = std::ranges::find_if(
        states, [](const engine::StoredState& state) { return state.current && state.hasRecord; });
    if (current == states.end()) return false;
    comparison_ = std::make_unique<engine::StepwiseComparison>(
        *doc, current->record,
        engine::CompareOptions{.parts = asked_.parts, .mostFields = 0, .unknown = false});
    return true;
  }
  if (!comparison_->HasFound() && comparison_->Advance(kElementsAtOnce)) return true;
  Show(comparison_->HasFound());
  comparison_.reset();
  return false;
}

void CurrentStateMark::Show(bool isChanged) {
  if (ListView* list = states_.List()) {
    list->ShowStar(isChanged ? ListModel::Star::Hollow : ListModel::Star::Full,
                   isChanged ? "The current state, but the scene has been changed since"
                             : "The current state: the scene is as it was recorded or loaded");
  }
}

}  // namespace desktop
