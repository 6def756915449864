#include <QApplication>
#include <QMessageBox>

#include "engine/application/ProgramPlaces.h"
#include "program/desktop/MainWindow.h"
#include "program/desktop/Text.h"
#include "program/desktop/menus/Menus.h"
#include "program/desktop/menus/ShortcutPage.h"

namespace desktop {

namespace {

// The one that the plug-in's own help opens; unlike there, somebody who asks in vain is told.
void OpenManual(MainWindow& window) {
  const std::string manual = engine::PluginFolder() + "/Stagemarks/help/SM_Manual.pdf";
  const engine::Status opened = engine::Outside::Current().OpenWithViewer(manual);
  if (!opened) window.Commands().Person().Warn("The manual cannot be shown. " + opened.Message());
}

QString PluginNames(const engine::Application& application) {
  QStringList names;
  for (const engine::CommandPlugin& command : application.Commands())
    names.append(ToQt(command.name));
  return names.isEmpty() ? "none" : names.join(", ");
}

void ShowAbout(MainWindow& window) {
  QMessageBox box(QMessageBox::NoIcon, "About " + QApplication::applicationDisplayName(),
                  QApplication::applicationDisplayName() + " " + QApplication::applicationVersion(),
                  QMessageBox::Ok, &window);
  box.setIconPixmap(QApplication::windowIcon().pixmap(64));
  box.setTextFormat(Qt::PlainText);
  box.setInformativeText(
      "Records the states of a 3D scene under names, recalls, edits and exports "
      "them.\n\nPlug-ins: " +
      PluginNames(window.App()) + "\nFrom: " + ToQt(engine::PluginFolder()) + "\nToolkit: Qt " +
      qVersion() + "\nPictures are computed on the processor; no graphics card is needed.");
  box.exec();
}

}  // namespace

void BuildHelpMenu(QMenu& menu, MainWindow& window) {
  AddEntry(menu, "&Manual", QKeySequence::HelpContents, [&window] { OpenManual(window); });
  AddEntry(menu, "&Keyboard Shortcuts", {}, [&window] { ShowShortcuts(window); });
  menu.addSeparator();
  AddEntry(menu, "&About", {}, [&window] { ShowAbout(window); });
}

}  // namespace desktop
