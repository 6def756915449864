// TextLine: a text; of a file, with a button that opens a chooser. Main thread.
#pragma once

#include "program/desktop/OpenDocument.h"
#include "program/desktop/attributes/LineField.h"

namespace desktop {

class TextLine : public LineField {
 public:
  TextLine(const Field& field, QWidget* parent);

  void Show(const FieldValue& value, const host::BaseDocument& doc) override;

 private:
  void AddChooser();
  void Choose();
  QString Take(const QString& text) const;

  TypingEdit* edit_;
  host::ULLONG doc_ = 0;
};

}  // namespace desktop
