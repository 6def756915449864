#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDockWidget>
#include <QHeaderView>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QShortcut>
#include <QTreeWidget>
#include <QVBoxLayout>
#include "engine/application/ProgramPlaces.h"
#include "program/desktop/MainWindow.h"
#include "program/desktop/ScreenFit.h"
#include "program/desktop/Text.h"
#include "program/desktop/menus/Menus.h"

namespace desktop {

namespace {

constexpr QSize kShortcutPageSize(460, 560);

// A key press that no menu entry stands for.
struct OtherKeys {
  const char* where;
  const char* what;
  const char* keys;
};
constexpr OtherKeys kOthers[] = {
    {"The picture", "Go around what is selected", "Arrows"},
    {"The picture", "Slide", "Shift+Arrows"},
    {"The picture", "Come nearer, go away", "+, -"},
    {"Objects", "Show or hide in the editor", "Space"},
    {"Objects", "Show or hide in renders", "Shift+Space"},
    {"Attributes", "A step up or down", "Up, Down"},
    {"Attributes", "Ten steps up or down", "Shift+Up, Shift+Down, Page Up, Page Down"},
    {"Stagemarks", "Check or uncheck the selected rows", "Space"},
    {"Gallery", "Load the chosen Stagemark", "Enter"},
    {"Gallery", "Larger and smaller pictures", "Ctrl+Wheel"},
    {"Gallery", "Compare the two chosen Stagemarks", "Ctrl+B"},
    {"A and B", "Move the line between them", "Left, Right"},
    {"A and B", "Swap them", "Tab, X"},
    {"Render and contact sheet", "Nearer, farther", "+, -"},
    {"Render and contact sheet", "Each pixel as it is, the whole picture", "1, 0 or F"},
    {"Render and contact sheet", "Close the window", "Esc"},
};

// All keys at a glance: of the menu entries and panels, read from these themselves, and the few
// that no entry stands for.
class ShortcutPage {
 public:
  explicit ShortcutPage(QTreeWidget& list) : list_(list) {}

  void AddMenu(const QString& name, const QMenu& menu) {
    for (const QAction* action : menu.actions()) {
      if (action->menu()) {
        AddMenu(name, *action->menu());
      } else {
        AddAction(name, *action);
      }
    }
  }
  // The keys of the panels themselves; actions that stand in a menu, too, were seen there. Actions
  // and shortcuts wherever they hang in the panel; a shortcut has its name in whatsThis.
  void AddPanel(const QWidget& panel, const QString& title) {
    QList<const QWidget*> widgets = {&panel};
    for (const QWidget* widget : panel.findChildren<QWidget*>()) widgets.append(widget);
    for (const QWidget* widget : widgets) {
      for (const QAction* action : widget->actions()) AddAction(title, *action);
      for (const QShortcut* keys : widget->findChildren<QShortcut*>(Qt::FindDirectChildrenOnly)) {
        Add(title, keys->whatsThis(), {keys->key()});
      }
    }
  }
  void Add(const QString& group, const QString& what, const QString& keys) {
    // Two keys for one thing stand in one row.
    QTreeWidgetItem*& item = groups_[group];
    if (!item) item = new QTreeWidgetItem(&list_, {group});
    item->setExpanded(true);
    for (int row = 0; row < item->childCount(); ++row) {
      if (item->child(row)->text(0) != what) continue;
      if (item->child(row)->text(1) != keys)
        item->child(row)->setText(1, item->child(row)->text(1) + ", " + keys);
      return;
    }
    new QTreeWidgetItem(item, {what, keys});
  }

 private:
  void AddAction(const QString& group, const QAction& action) {
    if (seen_.contains(&action)) return;
    seen_.insert(&action);
    Add(group, action.text().remove('&'), action.shortcuts());
  }
  void Add(const QString& group, const QString& what, const QList<QKeySequence>& keys) {
    QStringList texts;
    for (const QKeySequence& one : keys) texts.append(one.toString(QKeySequence::NativeText));
    texts.removeAll("");
    if (!texts.isEmpty()) Add(group, what, texts.join(", "));
  }

  QTreeWidget& list_;
  QHash<QString, QTreeWidgetItem*> groups_;
  QSet<const QAction*> seen_;
};

// Menus first: what they name is left out of the panels.
void FillShortcuts(QTreeWidget& list, const QMainWindow& window) {
  ShortcutPage page(list);
  for (const QAction* top : window.menuBar()->actions()) {
    if (top->menu()) page.AddMenu(top->text().remove('&'), *top->menu());
  }
  // Entries that are only there while their menu is open.
  for (const QAction* action : window.actions()) {
    if (!action->shortcut().isEmpty())
      page.Add("Window", action->text().remove('&'), action->shortcut().toString());
  }
  page.AddPanel(*window.centralWidget(), "The picture");
  for (const QDockWidget* dock : window.findChildren<QDockWidget*>())
    page.AddPanel(*dock, dock->windowTitle());
  for (const OtherKeys& other : kOthers) page.Add(other.where, other.what, other.keys);
}

// Shows them until the person closes the page.
void ShowShortcuts(QMainWindow& window) {
  QDialog page(&window);
  page.setWindowTitle("Keyboard Shortcuts");
  page.resize(FittingSize(page, kShortcutPageSize));
  auto* list = new QTreeWidget(&page);
  list->setHeaderLabels({"Entry", "Keys"});
  list->header()->setSectionResizeMode(0, QHeaderView::Stretch);
  list->header()->setStretchLastSection(false);
  list->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
  list->setSelectionMode(QAbstractItemView::NoSelection);
  FillShortcuts(*list, window);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, &page);
  QObject::connect(buttons, &QDialogButtonBox::rejected, &page, &QDialog::reject);
  auto* layout = new QVBoxLayout(&page);
  layout->addWidget(list);
  layout->addWidget(buttons);
  page.exec();
}

// The one that the plug-in's own help opens; unlike there, somebody who asks in vain is told. From
// the plug-in's folder, where it is installed.
void OpenManual(MainWindow& window) {
  const std::string manual = engine::PluginFolder() + "/Stagemarks/help/SM_Manual.pdf";
  const engine::Status opened = window.App().GetServices().viewer.Open(manual);
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
