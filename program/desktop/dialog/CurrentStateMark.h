// CurrentStateMark: the star of the current state in the Stagemarks list: full while the scene is
// in that state, hollow once it has been changed. It is found out in slices of the event loop, of a
// large scene when that has been left alone for a moment. Main thread.
#pragma once

#include <QTimer>
#include <memory>

#include "engine/states/Difference.h"
#include "program/desktop/background/Slices.h"
#include "program/desktop/dialog/StatesDialog.h"
#include "program/desktop/panels/DocumentView.h"

namespace desktop {

class CurrentStateMark : public DocumentView {
 public:
  // `states` outlives this.
  explicit CurrentStateMark(const StatesDialog& states);

  void Follow(host::BaseDocument* doc) override;

 private:
  // Nothing is done until one of these differs.
  struct Question {
    host::ULLONG doc = 0;
    host::ULLONG changes = 0;
    engine::NodeId camera = 0;
    engine::Parts parts;
    const ListView* list = nullptr;
    bool operator==(const Question&) const = default;
  };

  // Compares on; false when it is known.
  bool Advance();
  void Show(bool isChanged);

  const StatesDialog& states_;
  Question asked_;
  std::unique_ptr<engine::StepwiseComparison> comparison_;
  Slices slices_;
  QTimer pause_;
};

}  // namespace desktop
