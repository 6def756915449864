#include "program/desktop/Icons.h"
#include "program/desktop/MainWindow.h"
#include "program/desktop/menus/Menus.h"
#include "program/desktop/render/RenderWindow.h"
#include "program/desktop/render/SheetWindow.h"

namespace desktop {

void BuildRenderMenu(QMenu& menu, MainWindow& window) {
  QAction* render = AddEntry(menu, "&Render to Window", QKeySequence("Ctrl+R"), [&window] {
    if (const host::BaseDocument* doc = host::GetActiveDocument())
      (new RenderWindow(&window, *doc))->show();
  });
  render->setShortcuts({QKeySequence("Ctrl+R"), QKeySequence("F9")});
  render->setIcon(Icon("render"));
  QAction* sheet =
      AddEntry(menu, "&Contact Sheet of All Stagemarks...", {}, [&window] { AskForSheet(window); });
  sheet->setIcon(Icon("sheet"));
}

}  // namespace desktop
