// MaterialDrop: lets materials be dropped onto what the viewport shows. It watches the viewport's
// drags, leaves those of other things to whoever is below, and owns neither viewport nor document.
// Main thread.
#pragma once

#include <QDropEvent>
#include <QObject>

#include "program/desktop/view/Viewport.h"

namespace desktop {

class MaterialDrop : public QObject {
 public:
  // Belongs to the viewport.
  explicit MaterialDrop(Viewport& view);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void Entered(QDropEvent& event);
  void Moved(QDropEvent& event);
  void Dropped(QDropEvent& event);

  Viewport& view_;
};

}  // namespace desktop
