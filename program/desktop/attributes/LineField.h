// LineField: what edits one field of the elements that are looked at. It shows what it is given and
// tells of edits; it knows no elements. One class for each way of editing. Main thread.
#pragma once

#include <QWidget>
#include <functional>
#include <vector>

#include "program/desktop/attributes/FieldValue.h"
#include "program/desktop/attributes/TypingEdit.h"

namespace desktop {

class LineField : public QWidget {
 public:
  // Made for `field`, which outlives it.
  static LineField* Make(const Field& field, QWidget* parent);

  // An edit by a person.
  std::function<void(const FieldEdit&)> edited;

  // Shows a value of elements of `doc`, except where a person is typing.
  virtual void Show(const FieldValue& value, const host::BaseDocument& doc) = 0;
  // Takes what is typed, or says why not and forgets it.
  void FinishTyping();

 protected:
  LineField(const Field& field, QWidget* parent);
  const Field& Shown() const { return field_; }
  // A part that a person types into.
  void Watch(TypingEdit* edit) { edits_.push_back(edit); }
  void Tell(const FieldEdit& edit) const;

 private:
  const Field& field_;
  std::vector<TypingEdit*> edits_;
};

}  // namespace desktop
