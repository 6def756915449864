// ChoiceLine: one of a few, or one of the document's layers, materials, cameras or render settings.
// The list of these is read when it is about to be used. Main thread.
#pragma once

#include <QComboBox>

#include "program/desktop/OpenDocument.h"
#include "program/desktop/attributes/LineField.h"

namespace desktop {

class ChoiceLine : public LineField {
 public:
  ChoiceLine(const Field& field, QWidget* parent);

  void Show(const FieldValue& value, const host::BaseDocument& doc) override;

 private:
  // The list, which is read when a person comes to it, and leaves the wheel to what it stands in.
  class Box : public QComboBox {
   public:
    explicit Box(ChoiceLine& line) : QComboBox(&line), line_(line) {}
    void showPopup() override;
    void hidePopup() override;
    // From when the popup opens until what is chosen in it was told.
    bool IsChosenFrom() const;

   protected:
    void focusInEvent(QFocusEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

   private:
    ChoiceLine& line_;
    bool closing_ = false;
  };

  bool IsLink() const { return Shown().kind != FieldKind::Choice; }
  void ShowLink(const FieldValue& value, const host::BaseDocument& doc);
  void ReadList();
  void Chosen(int row);

  Box* box_;
  host::ULLONG doc_ = 0;
};

}  // namespace desktop
