// The menu of scripts: a file is chosen and run, the last one again, and the console is shown.
#include <QFileInfo>
#include <QStatusBar>
#include <memory>

#include "program/desktop/FileDialogs.h"
#include "program/desktop/MainWindow.h"
#include "program/desktop/Text.h"
#include "program/desktop/menus/Menus.h"
#include "program/desktop/script/ScriptConsole.h"

namespace desktop {

namespace {

// The console shows what the script prints; a script that fails is taken back as a whole, which the
// message says.
void RunScript(MainWindow& window, const std::string& path) {
  const QString name = QFileInfo(ToQt(path)).fileName();
  window.Panels().Raise("console");
  const scripting::ScriptEnd end = window.Console().RunFile(path);
  if (end.succeeded) {
    window.statusBar()->showMessage("Ran " + name + ".");
  } else {
    window.Commands().Person().Warn("\"" + name.toStdString() +
                                    "\" failed, and every scene is as "
                                    "it was before.\n\n" +
                                    end.problem);
  }
}

}  // namespace

void BuildScriptMenu(QMenu& menu, MainWindow& window) {
  // Shared by both entries; for this run only.
  const auto last = std::make_shared<std::string>();
  auto* again = new QAction("Run &Again", &menu);
  AddEntry(menu, "&Run File...", QKeySequence("Ctrl+Shift+R"), [&window, last, again] {
    const engine::FileQuestion question{host::FILESELECTTYPE_ANYTHING, host::FILESELECT_LOAD,
                                        "Run Script", *last};
    const auto path = ChooseFile(&window, question, kScripts);
    if (!path) return;
    *last = *path;
    again->setText("Run " + QFileInfo(ToQt(*path)).fileName() + " &Again");
    again->setEnabled(true);
    RunScript(window, *path);
  });
  again->setShortcut(QKeySequence("Ctrl+Shift+G"));
  again->setEnabled(false);
  QObject::connect(again, &QAction::triggered, again,
                   [&window, last] { RunScript(window, *last); });
  menu.addAction(again);
  menu.addSeparator();
  AddEntry(menu, "&Console", QKeySequence("Ctrl+Shift+P"), [&window] {
    window.Panels().Raise("console");
    window.Console().setFocus();
  });
}

}  // namespace desktop
