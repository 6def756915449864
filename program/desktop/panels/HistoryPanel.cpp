#include "program/desktop/panels/HistoryPanel.h"

#include "engine/undo/Undo.h"
#include "program/desktop/Text.h"

namespace desktop {

namespace {

QStringList Texts(const std::vector<std::string>& names) {
  QStringList texts;
  for (const std::string& name : names) texts.append(name.empty() ? QString("Change") : ToQt(name));
  return texts;
}

}  // namespace

HistoryPanel::HistoryPanel(engine::Application& application, Reports& reports, QWidget* parent)
    : QListWidget(parent), application_(application), reports_(reports) {
  setUniformItemSizes(true);
  setAlternatingRowColors(true);
  connect(this, &QListWidget::itemClicked, this,
          [this](QListWidgetItem* item) { GoTo(row(item)); });
  connect(this, &QListWidget::itemActivated, this,
          [this](QListWidgetItem* item) { GoTo(row(item)); });
}

void HistoryPanel::Follow(host::BaseDocument* doc) {
  const host::ULLONG count = doc ? engine::ChangeCount(*doc) : 0;
  if (IdentityOf(doc) == doc_ && count == seen_ && this->count() > 0) return;
  doc_ = IdentityOf(doc);
  seen_ = count;
  const QStringList done = doc ? Texts(engine::DoneNames(*doc)) : QStringList();
  const QStringList undone = doc ? Texts(engine::UndoneNames(*doc)) : QStringList();
  if (this->count() == 0 || done != done_ || undone != undone_) Fill(done, undone);
}

// Row 0 is the scene before the first step, so row n is the scene after n steps.
void HistoryPanel::Fill(const QStringList& done, const QStringList& undone) {
  done_ = done;
  undone_ = undone;
  clear();
  addItem("Start");
  addItems(done);
  setCurrentRow(static_cast<int>(done.size()));
  QFont present = font();
  present.setBold(true);
  currentItem()->setFont(present);
  addItems(undone);
  for (int row = currentRow() + 1; row < count(); ++row)
    item(row)->setForeground(palette().color(QPalette::PlaceholderText));
  for (int row = 0; row < count(); ++row) {
    item(row)->setToolTip(row == currentRow()
                              ? "The scene as it is now"
                              : "Click to go to the scene as it was after this step");
  }
  scrollToItem(currentItem());
}

// Step by step, each with its own report of files. One that cannot be done ends the way there.
void HistoryPanel::GoTo(int row) {
  const host::BaseDocument* doc = FindOpenDocument(doc_);
  if (!doc || doc != host::GetActiveDocument()) return;
  int steps = row - static_cast<int>(engine::DoneNames(*doc).size());
  for (; steps < 0 && reports_.Undo(application_); ++steps) {
  }
  for (; steps > 0 && reports_.Redo(application_); --steps) {
  }
}

}  // namespace desktop
