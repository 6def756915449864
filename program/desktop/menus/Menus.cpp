#include "program/desktop/menus/Menus.h"

#include <QActionGroup>

#include "program/desktop/FileDialogs.h"
#include "program/desktop/Icons.h"
#include "program/desktop/MainWindow.h"
#include "program/desktop/Text.h"
#include "program/desktop/menus/StatesMenu.h"
#include "program/desktop/menus/UpdateFromFile.h"
#include "program/desktop/publish/PublishWindow.h"
#include "program/desktop/render/RenderStatesWindow.h"
#include "program/desktop/render/RenderWindow.h"
#include "program/desktop/render/SheetWindow.h"

namespace desktop {

namespace {

QString Plain(QString text) { return text.remove('&'); }

}  // namespace

// By the texts of menu and entry, without the letters' marks, so that the menus themselves stay
// free of pictures.
const std::vector<MenuIcon>& MenuIcons() {
  static const auto* const icons = new std::vector<MenuIcon>{
      {"File", "New", "new"},          {"File", "Open...", "open"},
      {"File", "Import...", "import"}, {"File", "Save", "save"},
      {"Edit", "Undo", "undo"},        {"Edit", "Redo", "redo"},
      {"Edit", "Delete", "delete"},    {"Edit", "Duplicate", "duplicate"},
      {"View", "Frame All", "frame"},  {"Help", "About", "about"},
  };
  return *icons;
}

void PutIcons(const QMenuBar& bar) {
  for (const QAction* top : bar.actions()) {
    for (QAction* entry : top->menu()->actions()) {
      for (const MenuIcon& row : MenuIcons()) {
        const bool isIt = Plain(top->text()) == row.menu && Plain(entry->text()) == row.entry;
        if (isIt && entry->icon().isNull()) entry->setIcon(Icon(row.icon));
      }
    }
  }
}

QAction* AddEntry(QMenu& menu, const QString& text, const QKeySequence& keys,
                  std::function<void()> work) {
  QAction* action = menu.addAction(text);
  action->setShortcut(keys);
  QObject::connect(action, &QAction::triggered, action, [work = std::move(work)] { work(); });
  return action;
}

namespace {

void FillRecentMenu(QMenu& menu, DocumentCommands& commands) {
  menu.clear();
  for (const QString& path : commands.RecentFiles()) {
    AddEntry(menu, Label(ToHost(path)), {},
             [&commands, path] { commands.Open(path.toStdString()); });
  }
  if (menu.isEmpty()) menu.addAction("No files yet")->setEnabled(false);
}

// The disk is asked when the menu opens, for the choice and for what can be done: no file is looked
// at for a menu that nobody opens.
void AddPreviousVersion(QMenu& menu, DocumentCommands& commands) {
  QAction* revert = AddEntry(menu, "Re&vert to Previous...", {}, [&commands] {
    commands.RevertToPrevious(*host::GetActiveDocument());
  });
  QMenu* places = menu.addMenu("&Keep Previous Version");
  auto* const group = new QActionGroup(places);
  const std::pair<const char*, engine::FormerPlace> kPlaces[] = {
      {"In a &Hidden Folder", engine::FormerPlace::Hidden},
      {"&Beside the Scene", engine::FormerPlace::Beside},
      {"&Nowhere", engine::FormerPlace::Nowhere}};
  for (const auto& [text, place] : kPlaces) {
    QAction* entry =
        AddEntry(*places, text, {}, [&commands, place = place] { commands.KeepPrevious(place); });
    entry->setCheckable(true);
    entry->setActionGroup(group);
    QObject::connect(places, &QMenu::aboutToShow, entry, [entry, &commands, place = place] {
      entry->setChecked(commands.PlaceOfPrevious() == place);
    });
  }
  QObject::connect(&menu, &QMenu::aboutToShow, revert, [revert, &commands] {
    const host::BaseDocument* doc = host::GetActiveDocument();
    revert->setEnabled(doc != nullptr && commands.HasPrevious(*doc));
  });
}

}  // namespace

// A document is always active (the last one closed makes room for a new one), so the entries may
// ask for it.
void BuildFileMenu(QMenu& menu, MainWindow& window) {
  DocumentCommands& commands = window.Commands();
  AddEntry(menu, "&New", QKeySequence::New, [&commands] { commands.New(); });
  AddEntry(menu, "&Open...", QKeySequence::Open, [&commands] { commands.AskAndOpen(kAllScenes); });
  AddEntry(menu, "&Import...", {}, [&commands] { commands.AskAndOpen(kForeignScenes); });
  AddEntry(menu, "&Update from File...", {}, [&window] { AskAndUpdate(window); });
  QMenu* recent = menu.addMenu("Open &Recent");
  QObject::connect(recent, &QMenu::aboutToShow, recent,
                   [recent, &commands] { FillRecentMenu(*recent, commands); });
  menu.addSeparator();
  AddEntry(menu, "&Save", QKeySequence::Save,
           [&commands] { commands.Save(*host::GetActiveDocument()); });
  AddEntry(menu, "Save &As...", QKeySequence("Ctrl+Shift+S"),
           [&commands] { commands.SaveAs(*host::GetActiveDocument()); });
  AddPreviousVersion(menu, commands);
  menu.addSeparator();
  AddEntry(menu, "&Publish...", {}, [&window] { AskToPublish(window, PublishKind::Files); });
  AddEntry(menu, "&Web Page...", {}, [&window] { AskToPublish(window, PublishKind::Page); });
  menu.addSeparator();
  AddEntry(menu, "&Close", QKeySequence("Ctrl+W"),
           [&commands] { commands.Close(*host::GetActiveDocument()); });
  menu.addSeparator();
  AddEntry(menu, "&Quit", QKeySequence("Ctrl+Q"), [&window] { window.close(); });
}

void BuildRenderMenu(QMenu& menu, MainWindow& window) {
  QAction* render = AddEntry(menu, "&Render to Window", QKeySequence("Ctrl+R"), [&window] {
    if (const host::BaseDocument* doc = host::GetActiveDocument())
      (new RenderWindow(&window, window.App().GetServices(), *doc))->show();
  });
  render->setShortcuts({QKeySequence("Ctrl+R"), QKeySequence("F9")});
  render->setIcon(Icon("render"));
  AddEntry(menu, "Render &States...", QKeySequence("Shift+F9"),
           [&window] { AskToRenderStates(window); });
  QAction* sheet = AddEntry(menu, "&Contact Sheet of All Stagemarks...", {},
                            [&window] { AskForSheet(window, window.App().GetServices()); });
  sheet->setIcon(Icon("sheet"));
}

namespace {

// Filled when it opens, since plug-ins are loaded after the menus are made.
void FillPluginMenu(QMenu& menu, engine::Application& application, const QList<QAction*>& states) {
  menu.clear();
  for (const engine::CommandPlugin& command : application.Commands()) {
    QAction* action = AddEntry(menu, Label(host::String(command.name)), {},
                               [&application, id = command.id] { application.ExecuteCommand(id); });
    action->setStatusTip(ToQt(command.help));
  }
  if (menu.isEmpty()) menu.addAction("No plug-ins loaded")->setEnabled(false);
  menu.addSeparator();
  menu.addActions(states);
}

}  // namespace

void BuildPluginMenu(QMenu& menu, MainWindow& window) {
  const QList<QAction*> states = AddStateEntries(menu, window);
  QObject::connect(&menu, &QMenu::aboutToShow, &menu,
                   [&menu, &window, states] { FillPluginMenu(menu, window.App(), states); });
}

}  // namespace desktop
