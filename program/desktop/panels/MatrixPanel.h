// MatrixPanel: what each Stagemark says of each element, as a table: elements in rows, states in
// columns. It can be sorted, filtered and copied as text; a click selects object and state. It is
// made anew, in slices of the event loop, when what is recorded or the elements of the scene have
// changed. It keeps identities and owns no element. Main thread.
#pragma once

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QTableView>
#include <QTimer>
#include <memory>

#include "engine/editing/InspectedElements.h"
#include "engine/states/StateMatrix.h"
#include "program/desktop/background/Slices.h"
#include "program/desktop/dialog/StatesDialog.h"
#include "program/desktop/panels/DocumentView.h"

namespace desktop {

// The table of a document with the states that it borrows from.
struct StateTable {
  std::vector<engine::StoredState> states;
  // One for each group of parts, in the order of the rows.
  std::vector<std::unique_ptr<engine::StateMatrix>> sections;
};

// The element in the first column, then a column for each state. Texts are read when a view asks.
class MatrixModel : public QAbstractTableModel {
 public:
  static constexpr int kElement = 0;
  enum Role { kIsChanged = Qt::UserRole, kIsUnknown };

  using QAbstractTableModel::QAbstractTableModel;

  // Takes over a table of `doc`; null: none.
  void Show(const host::BaseDocument* doc, std::unique_ptr<StateTable> table);
  host::BaseDocument* Document() const { return FindOpenDocument(doc_); }
  // Shows the rows with this text in their elements only; all for an empty one.
  void SetFilter(const QString& text);
  // Rows there are without a filter.
  std::size_t Rows() const { return rows_.size(); }

  // Row at an index, null beside the rows; state of a column, null for that of the elements.
  const engine::StateMatrix::Row* RowAt(const QModelIndex& index) const;
  const engine::StoredState* StateAt(int column) const;
  // The camera that the state of a cell holds, 0 for none.
  engine::NodeId CameraAt(const QModelIndex& index) const;
  // The place of an element's row among those shown, -1 where it is not.
  int RowOf(engine::Part part, engine::NodeId element) const;

  int rowCount(const QModelIndex& parent = {}) const override {
    return parent.isValid() ? 0 : static_cast<int>(shown_.size());
  }
  int columnCount(const QModelIndex& parent = {}) const override {
    return parent.isValid() || !table_ ? 0 : static_cast<int>(table_->states.size()) + 1;
  }
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  // By the texts of a column; -1: the order of the scene.
  void sort(int column, Qt::SortOrder order) override;

 private:
  struct Place {
    std::uint32_t section;
    std::uint32_t row;  // in it
  };

  const engine::StateMatrix& MatrixOf(Place place) const {
    return *table_->sections[place.section];
  }
  // Finds the rows that are shown, and their order.
  void Arrange();
  QString Text(Place place, int column) const;
  QString NameOf(Place place) const;
  QVariant ElementData(Place place, int role) const;
  QVariant CellData(Place place, int column, int role) const;

  host::ULLONG doc_ = 0;
  std::unique_ptr<StateTable> table_;
  std::vector<Place> rows_;
  std::vector<Place> shown_;
  QString filter_;
  int sortColumn_ = -1;
  Qt::SortOrder sortOrder_ = Qt::AscendingOrder;
};

// The column of the elements stays in sight. Owns its model.
class MatrixTable : public QTableView {
 public:
  explicit MatrixTable(QWidget* parent);

  MatrixModel& Model() { return *model_; }
  // Keeps the chosen cell where it still is one.
  void Show(const host::BaseDocument* doc, std::unique_ptr<StateTable> table);
  void SetEmptyText(const QString& text);
  // The selected cells: lines of columns with tabs between, below the heading of each column where
  // there is more than one cell.
  QString SelectedText() const;
  // A cell that comes into sight is not covered by the column that stays.
  void scrollTo(const QModelIndex& index, ScrollHint hint = EnsureVisible) override;
  // Called for the cell that a person clicks on or opens with Enter.
  std::function<void(const QModelIndex&)> chosen;

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  void BuildFixed();
  void PlaceFixed();
  void FitColumns();

  MatrixModel* model_;
  QTableView* fixed_;  // the column of the elements, on top of the table's own
  QString emptyText_;
};

class MatrixPanel : public QWidget, public DocumentView {
 public:
  // `inspected`, `states`: outlive the panel's last Follow.
  MatrixPanel(const StatesDialog& states, engine::InspectedElements& inspected, QWidget* parent);

  void Follow(host::BaseDocument* doc) override;
  MatrixTable& Table() { return *table_; }
  QLineEdit& Filter() { return *filter_; }
  QCheckBox& ShowAll() { return *all_; }
  // Until the table is made.
  bool IsReading() const { return work_ != nullptr; }
  QSize sizeHint() const override { return {420, 240}; }

 private:
  void BuildHead(QLayout& layout);
  // Whether what the table was made of is still so.
  bool IsAsRead(const host::BaseDocument& doc) const;
  void Begin(const host::BaseDocument* doc);
  // Makes the next section; false when nothing is left to do.
  bool Advance();
  void ShowEmptyText();
  // Selects the element of a cell in the scene, and the state in the list.
  void Select(const QModelIndex& cell);

  const StatesDialog& states_;
  engine::InspectedElements& inspected_;
  // The document shown or being read: its identity and counts, and what it had stored.
  host::ULLONG doc_ = 0;
  host::ULLONG changes_ = 0;
  host::ULLONG treeChanges_ = 0;
  std::size_t nodes_ = 0;
  host::BaseContainer stored_;
  std::unique_ptr<StateTable> work_;
  std::size_t nextSection_ = 0;
  Slices slices_;
  QTimer pause_;  // before the rows of a large scene are made anew
  QLineEdit* filter_;
  QCheckBox* all_;
  MatrixTable* table_;
};

}  // namespace desktop
