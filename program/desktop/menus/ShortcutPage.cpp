#include "program/desktop/menus/ShortcutPage.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QMenu>
#include <QMenuBar>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "program/desktop/ScreenFit.h"

namespace desktop {

namespace {

constexpr QSize kSize(460, 560);

void AddKeys(QTreeWidget& list, const QString& menuName, const QMenu& menu) {
  QTreeWidgetItem* group = nullptr;
  for (const QAction* action : menu.actions()) {
    if (action->shortcut().isEmpty()) continue;
    if (!group) group = new QTreeWidgetItem(&list, {menuName});
    new QTreeWidgetItem(group, {action->text().remove('&'), action->shortcut().toString(QKeySequence::NativeText)});
  }
  if (group) group->setExpanded(true);
}

}  // namespace

void ShowShortcuts(QMainWindow& window) {
  QDialog page(&window);
  page.setWindowTitle("Keyboard Shortcuts");
  page.resize(FittingSize(page, kSize));
  auto* list = new QTreeWidget(&page);
  list->setHeaderLabels({"Entry", "Keys"});
  list->header()->setSectionResizeMode(0, QHeaderView::Stretch);
  list->header()->setStretchLastSection(false);
  list->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
  list->setSelectionMode(QAbstractItemView::NoSelection);
  for (const QAction* top : window.menuBar()->actions()) {
    if (top->menu()) AddKeys(*list, top->text().remove('&'), *top->menu());
  }
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, &page);
  QObject::connect(buttons, &QDialogButtonBox::rejected, &page, &QDialog::reject);
  auto* layout = new QVBoxLayout(&page);
  layout->addWidget(list);
  layout->addWidget(buttons);
  page.exec();
}

}  // namespace desktop
