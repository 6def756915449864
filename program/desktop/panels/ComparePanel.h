// ComparePanel: the selected row of the Stagemarks list beside the scene, which is what loading it
// would change, or two rows beside each other: groups by part, elements, fields. It follows the
// scene, in slices of the event loop. It keeps identities and owns no element. Main thread.
#pragma once

#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <QTreeView>
#include <map>
#include <optional>

#include "engine/editing/InspectedElements.h"
#include "engine/states/LostSearch.h"
#include "program/desktop/background/Slices.h"
#include "program/desktop/dialog/StatesDialog.h"
#include "program/desktop/panels/DocumentView.h"

namespace desktop {

// A difference with what one says of it.
struct Compared {
  engine::Difference difference;
  std::vector<std::size_t> lost;  // of its changes, those that no Stagemark could bring back
  QString left;                   // what stands on either side, for the heading
  QString right;
  bool isScene = true;  // on the left
};

// Groups, in them elements, in them fields. Values are read from the document when a view asks.
class CompareModel : public QAbstractItemModel {
 public:
  enum Column { kWhat, kLeft, kRight, kColumnCount };
  enum class Level { Group, Element, Field };

  using QAbstractItemModel::QAbstractItemModel;

  // Takes over what was compared in `doc`; null: nothing. False where rows and their order stayed
  // as they were, so that a view keeps what is open and chosen.
  bool Show(const host::BaseDocument* doc, Compared compared);
  const Compared& Shown() const { return compared_; }
  host::BaseDocument* Document() const { return FindOpenDocument(doc_); }
  // How many things loading would change, or differ between two; and how many elements are shown.
  std::size_t Things() const { return things_; }
  std::size_t Elements() const { return order_.size(); }

  static Level LevelOf(const QModelIndex& index);
  // The element of a row or of the row above it, null for a group.
  const engine::ElementChange* ChangeAt(const QModelIndex& index) const;
  bool IsLost(const QModelIndex& index) const;

  QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
  QModelIndex parent(const QModelIndex& index) const override;
  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& = {}) const override { return kColumnCount; }
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  struct Group {
    QString title;
    QString tip;
    std::size_t first;  // in order_
    std::size_t count;
    bool operator==(const Group&) const = default;
  };

  void Arrange();
  void AddGroup(const QString& title, const QString& tip, std::size_t first);
  bool LooksLike(const CompareModel& other) const;
  // The place in order_ of the row or of the row above it; nothing for a group.
  std::optional<std::size_t> PlaceOf(const QModelIndex& index) const;
  QVariant GroupData(const Group& group, int column, int role) const;
  QVariant ElementData(const engine::ElementChange& change, int column, int role) const;
  QVariant ElementValue(const engine::ElementChange& change, int column, int role) const;
  QVariant FieldData(const engine::ElementChange& change, std::size_t field, int column,
                     int role) const;

  host::ULLONG doc_ = 0;
  Compared compared_;
  std::size_t things_ = 0;
  std::vector<Group> groups_;
  std::vector<std::size_t> order_;  // changes, group by group
  std::vector<bool> lost_;          // by change
};

// Owns its model.
class CompareTree : public QTreeView {
 public:
  explicit CompareTree(QWidget* parent);

  CompareModel& Model() { return *model_; }
  void Show(const host::BaseDocument* doc, Compared compared);
  // Shown where there are no rows.
  void SetEmptyText(const QString& text);
  // Called for the row that a person clicks on or opens with Enter.
  std::function<void(const QModelIndex&)> chosen;

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  // Groups and elements by what they are, not by where they stand.
  using Key = std::pair<int, engine::NodeId>;
  Key KeyOf(const QModelIndex& index) const;
  // Opens what is to be open: what a person opened or closed, else what there is room for.
  void OpenRows();

  CompareModel* model_;
  std::map<Key, bool> opened_;  // by a person
  bool opening_ = false;
  QString emptyText_;
};

class ComparePanel : public QWidget, public DocumentView {
 public:
  // `inspected`, `states`: outlive the panel's last Follow.
  ComparePanel(const StatesDialog& states, engine::InspectedElements& inspected, QWidget* parent);

  void Follow(host::BaseDocument* doc) override;
  CompareTree& Tree() { return *tree_; }
  QString Verdict() const { return verdict_->text(); }
  QString Warning() const { return warning_->isHidden() ? QString() : warningText_->text(); }
  QPushButton& LoadButton() { return *load_; }
  // Until what is chosen has been compared.
  bool IsComparing() const { return isWanted_; }
  QSize sizeHint() const override { return {420, 240}; }

 private:
  // Inputs of the comparison: nothing is done until one of these differs.
  struct Question {
    host::ULLONG doc = 0;
    host::ULLONG changes = 0;
    engine::NodeId camera = 0;
    bool isOpen = false;  // the dialog
    bool isEmpty = true;  // its list
    std::vector<std::string> chosen;
    engine::Parts parts;
    bool operator==(const Question&) const = default;
  };
  // The states of a question and how far the work on it is.
  struct Work {
    std::vector<engine::StoredState> states;  // all of the document
    std::vector<const engine::StoredState*> chosen;
    std::unique_ptr<engine::StepwiseComparison> steps;  // null once through
    Compared result;
    std::optional<engine::LostSearch> lost;  // afterwards, of a comparison with the scene
  };

  void BuildHead(QLayout& layout);
  void BuildWarning(QLayout& layout);
  Question Ask(const host::BaseDocument* doc) const;
  void Begin();
  // Compares on; false when nothing is left to do.
  bool Advance();
  void BeginWork(const host::BaseDocument& doc);
  void Finish();
  void ShowNothing(const QString& text);
  void ShowHead();
  // Selects the element of a row in the scene.
  void Select(const QModelIndex& index);

  const StatesDialog& states_;
  engine::InspectedElements& inspected_;
  Question asked_;
  bool isWanted_ = false;
  std::unique_ptr<Work> work_;
  Slices slices_;
  QTimer pause_;  // before a large scene that is being changed is compared again
  QLabel* name_;
  QLabel* verdict_;
  QPushButton* load_;
  QWidget* warning_;
  QLabel* warningText_;
  CompareTree* tree_;
};

}  // namespace desktop
