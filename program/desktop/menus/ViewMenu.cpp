#include "program/desktop/MainWindow.h"
#include "program/desktop/menus/Menus.h"

namespace desktop {

void BuildViewMenu(QMenu& menu, MainWindow& window) {
  Viewport& view = window.View();
  AddEntry(menu, "Frame &All", QKeySequence("Ctrl+F"), [&view] { view.FrameAll(); });
  AddEntry(menu, "Look Through &Scene Camera", QKeySequence("Ctrl+K"), [&view] { view.LookThroughSceneCamera(); });
}

}  // namespace desktop
