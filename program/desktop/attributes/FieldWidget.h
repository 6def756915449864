// FieldWidget: the widget that edits one field of the inspected elements. It shows what it is given
// and tells of edits; it knows no elements, so the view decides what an edit changes. There is one
// class for each way of editing (numbers, switches, choices, texts), private to the source file.
// Main thread.
#pragma once

#include <QWidget>
#include <functional>
#include <vector>

#include "engine/editing/FieldValue.h"
#include "program/desktop/attributes/LineEdits.h"

namespace desktop {

class FieldWidget : public QWidget {
 public:
  // Made for `field`, which outlives it.
  static FieldWidget* Make(const engine::Field& field, QWidget* parent);

  // Called with each edit by a person; set by the view that made the widget.
  std::function<void(const engine::FieldEdit&)> edited;

  // Shows the value that elements of `doc` have in common, or that it differs; leaves a field alone
  // in which a person is typing. Called whenever the document has changed.
  virtual void Show(const engine::FieldValue& value, const host::BaseDocument& doc) = 0;
  // Takes what is typed, or says why not and forgets it.
  void FinishTyping();

 protected:
  FieldWidget(const engine::Field& field, QWidget* parent);
  const engine::Field& EditedField() const { return field_; }
  // For FinishTyping: a part that a person types into.
  void AddTypingPart(ConfirmedLineEdit* edit) { edits_.push_back(edit); }
  // Calls `edited` where somebody has set it.
  void Tell(const engine::FieldEdit& edit) const;

 private:
  const engine::Field& field_;
  // Children of this widget.
  std::vector<ConfirmedLineEdit*> edits_;
};

}  // namespace desktop
