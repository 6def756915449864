// AttributesView: the fields of the elements that are looked at, under titles that fold, for
// reading and editing. Very many elements are read in slices. It keeps identities, owns no element.
// Widgets are made anew only when other fields are to be shown. Main thread.
#pragma once

#include <QLabel>
#include <QScrollArea>
#include <QVBoxLayout>
#include <map>
#include <optional>

#include "program/desktop/attributes/AttributeReading.h"
#include "program/desktop/attributes/FieldEditing.h"
#include "program/desktop/attributes/FieldWidget.h"
#include "program/desktop/background/Slices.h"
#include "program/desktop/panels/DocumentView.h"

namespace desktop {

class CollapsibleSection;

class AttributesView : public QScrollArea {
 public:
  explicit AttributesView(QWidget* parent);

  // Shows elements of `doc` (none: the document's own fields; null: nothing) and takes up what
  // changed. Cheap when nothing did. What was being typed for other elements is taken for them
  // first.
  void Follow(host::BaseDocument* doc, const engine::SharedIds& elements);
  // That read very many elements.
  Slices& Reading() { return slices_; }
  // Until all of the elements are read and shown.
  bool IsReading() const { return reading_.has_value(); }
  QSize sizeHint() const override { return {320, 360}; }

 private:
  // Makes all widgets anew; which sections were collapsed is kept by title.
  void Build(const std::vector<AttributeGroup>& groups);
  // `labelWidth`: in pixels, one for all groups so that the fields stand below each other.
  void AddGroup(const AttributeGroup& group, int labelWidth);
  // Reads on; false when nothing is left to read.
  bool Advance();
  // Switches the fields off while they still show other elements.
  void ShowWaiting();
  // Shows heading, groups and values that were read.
  void ShowRead(host::BaseDocument& doc);
  // Keeps the widgets where the groups look as those that are shown.
  void ShowGroups(std::vector<AttributeGroup> groups);
  // The name and kind of the elements, or how many they are; null: that no document is open.
  void ShowHeading(const host::BaseDocument* doc, const ElementList& elements);
  // Sets the field of that line (0-based, over all groups) in all its elements, as one undo step.
  void Edit(std::size_t line, const engine::FieldEdit& edit);

  // A line of the panel and its widget.
  struct Shown {
    AttributeLine line;
    FieldWidget* field;
  };

  // The document that is shown and its change count when reading began.
  host::ULLONG doc_ = 0;
  host::ULLONG seen_ = 0;
  engine::SharedIds elements_;
  std::vector<AttributeGroup> groups_;
  std::vector<Shown> lines_;
  std::map<QString, CollapsibleSection*> sections_;
  std::map<QString, bool> folded_;  // by title, as a person left them
  FieldEditing editing_;
  // Only until all elements are read.
  std::optional<AttributeReading> reading_;
  Slices slices_;
  QLabel* title_;
  QLabel* kinds_;
  QVBoxLayout* column_;
  QWidget* content_ = nullptr;
};

// The attributes of the inspected elements of the active document, as a panel.
class AttributesPanel : public AttributesView, public DocumentView {
 public:
  // `inspected` outlives the panel's last Follow.
  AttributesPanel(engine::InspectedElements& inspected, QWidget* parent)
      : AttributesView(parent), inspected_(inspected) {}

  void Follow(host::BaseDocument* doc) override {
    inspected_.Follow(doc);
    AttributesView::Follow(doc, inspected_.Elements());
  }

 private:
  engine::InspectedElements& inspected_;
};

}  // namespace desktop
