#include "program/desktop/panels/TrashPanel.h"

#include <QHeaderView>
#include <QInputDialog>
#include <QMenu>
#include <QMessageBox>
#include <QVBoxLayout>
#include <algorithm>

#include "engine/states/StoredStates.h"
#include "engine/states/Trash.h"
#include "host/Application.h"
#include "program/desktop/Text.h"
#include "program/desktop/background/DocumentBusy.h"
#include "program/desktop/panels/EmptyText.h"
#include "program/desktop/panels/PanelCommands.h"
#include "program/outcome/Words.h"

namespace desktop {

namespace {

constexpr int kPosition = Qt::UserRole;
constexpr const char* kRestore = "Restore";

// A restored Stagemark must not take the name of another: the plug-in finds them by name.
bool IsTaken(const host::BaseDocument& doc, const std::string& name) {
  const auto states = engine::ReadStates(doc);
  return std::any_of(states.begin(), states.end(),
                     [&](const engine::StoredState& state) { return state.name == name; });
}

}  // namespace

TrashList::TrashList(QWidget* parent) : QTreeWidget(parent) {
  setHeaderLabels({"Stagemark", "What happened", "When", "Recorded"});
  setRootIsDecorated(false);
  setUniformRowHeights(true);
  setAlternatingRowColors(true);
  setAllColumnsShowFocus(true);
  setSelectionMode(ExtendedSelection);
  setContextMenuPolicy(Qt::CustomContextMenu);
}

// The newest first, as one looks for it.
void TrashList::Show(const engine::DeletedStates& states) {
  clear();
  for (std::size_t i = states.size(); i-- > 0;) {
    const engine::DeletedState& state = states[i];
    auto* row = new QTreeWidgetItem(this);
    row->setText(kName, ToQt(outcome::Shown(state.name)));
    row->setText(kWhat, state.overwritten ? "Recorded over" : "Deleted");
    row->setText(kDeleted, ToQt(state.deleted));
    row->setText(kRecorded, ToQt(state.recorded));
    row->setData(kName, kPosition, static_cast<qulonglong>(i));
    row->setToolTip(kName, "Double click to restore it");
  }
  for (int column = 0; column < kColumnCount; ++column) resizeColumnToContents(column);
}

// Positions in the trash, from the highest down.
std::vector<std::size_t> TrashList::Chosen() const {
  std::vector<std::size_t> positions;
  for (const QTreeWidgetItem* row : selectedItems())
    positions.push_back(static_cast<std::size_t>(row->data(kName, kPosition).toULongLong()));
  std::sort(positions.rbegin(), positions.rend());
  return positions;
}

void TrashList::paintEvent(QPaintEvent* event) {
  QTreeWidget::paintEvent(event);
  if (topLevelItemCount() == 0)
    PaintEmptyText(*this, "Stagemarks that are deleted or recorded over can be restored from here");
}

TrashPanel::TrashPanel(const engine::Services& services, Reports& reports, QWidget* parent)
    : QWidget(parent), services_(services), reports_(reports), list_(new TrashList(this)) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(list_);
  auto* bar = new PanelBar(this);
  layout->addWidget(bar);
  restore_ =
      bar->Add(*list_, "undo", kRestore, QKeySequence(Qt::Key_Return), [this] { Restore(); });
  bar->AddSpace();
  empty_ = bar->Add(*list_, "delete", "Empty Trash", {}, [this] { Empty(); });
  connect(list_, &QTreeWidget::itemDoubleClicked, this, [this] { Restore(); });
  connect(list_, &QTreeWidget::itemSelectionChanged, this, [this] { EnableActions(); });
  connect(list_, &QWidget::customContextMenuRequested, this, [this](const QPoint& place) {
    QMenu menu(list_);
    menu.addActions({restore_, empty_});
    menu.exec(list_->viewport()->mapToGlobal(place));
  });
  EnableActions();
}

void TrashPanel::EnableActions() {
  restore_->setEnabled(!list_->selectedItems().isEmpty());
  empty_->setEnabled(list_->topLevelItemCount() > 0);
}

// By the address of the shared list, which is another one after any change.
void TrashPanel::Follow(host::BaseDocument* doc) {
  const engine::SharedDeletedStates now = doc ? engine::SharedDeletedStatesOf(*doc) : nullptr;
  if (IdentityOf(doc) == doc_ && now == shown_) return;
  doc_ = IdentityOf(doc);
  shown_ = now;
  list_->Show(shown_ ? *shown_ : engine::DeletedStates());
  EnableActions();
}

// From the highest position down: what is given back leaves the others where they are.
void TrashPanel::Restore() {
  host::BaseDocument* doc = FindOpenDocument(doc_);
  if (!doc || doc != host::GetActiveDocument() || IsDocumentBusy()) return;
  const std::size_t mark = services_.ledger.Mark();
  outcome::Outcome outcome;
  for (const std::size_t position : list_->Chosen()) {
    if (!RestoreOne(*doc, position, outcome)) break;
  }
  host::EventAdd();
  for (std::string& failure : outcome::Sentences(outcome::FailuresThatMatter(services_, mark)))
    outcome.problems.push_back(std::move(failure));
  reports_.Show(outcome);
}

// The box for another name runs an event loop. False also ends the others: who calls off one of
// several wants to look first.
bool TrashPanel::RestoreOne(host::BaseDocument& doc, std::size_t position,
                            outcome::Outcome& outcome) {
  if (position >= engine::DeletedStatesOf(doc).size()) return false;
  std::string name = engine::DeletedStatesOf(doc)[position].name;
  while (IsTaken(doc, name)) {
    name = AskForName(name);
    if (name.empty() || FindOpenDocument(doc_) != &doc) return false;
  }
  const auto restored = engine::RestoreDeleted(services_, doc, position, name);
  if (restored) {
    outcome.summary += (outcome.summary.empty() ? "" : " ") + std::string("Restored ") +
                       outcome::Listed({restored.Value()}) + ".";
  } else {
    outcome.problems.push_back(restored.Message());
  }
  return restored.Ok();
}

std::string TrashPanel::AskForName(const std::string& taken) {
  bool meant = false;
  const QString name = QInputDialog::getText(
      this, kRestore,
      "There is a Stagemark \"" + ToQt(outcome::Shown(taken)) + "\" already. Restore this one as:",
      QLineEdit::Normal, ToQt(taken + " (restored)"), &meant);
  return meant ? name.toStdString() : std::string();
}

void TrashPanel::Empty() {
  host::BaseDocument* doc = FindOpenDocument(doc_);
  if (!doc || doc != host::GetActiveDocument() || IsDocumentBusy()) return;
  engine::EmptyTrash(*doc);
  host::EventAdd();
}

}  // namespace desktop
