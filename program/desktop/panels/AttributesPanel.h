// AttributesPanel: the attributes of what is looked at in the active document. Main thread.
#pragma once

#include "program/desktop/attributes/AttributesView.h"
#include "program/desktop/panels/DocumentView.h"

namespace desktop {

class AttributesPanel : public AttributesView, public DocumentView {
 public:
  // `lookedAt` outlives the panel's last Follow.
  AttributesPanel(LookedAt& lookedAt, QWidget* parent)
      : AttributesView(parent), lookedAt_(lookedAt) {}

  void Follow(host::BaseDocument* doc) override {
    lookedAt_.Follow(doc);
    AttributesView::Follow(doc, lookedAt_.Elements());
  }

 private:
  LookedAt& lookedAt_;
};

}  // namespace desktop
