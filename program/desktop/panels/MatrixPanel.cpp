// The table of what each state says of each element. It is read in four sections, one walk over the
// scene each (first what there are few of), in slices of the event loop, and shown when all are
// there. The names of the elements stand in a table of their own over the first column, which does
// not scroll sideways.
#include "program/desktop/panels/MatrixPanel.h"

#include <QApplication>
#include <QClipboard>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <QVBoxLayout>
#include <algorithm>
#include <unordered_map>

#include "program/desktop/Icons.h"
#include "program/desktop/Text.h"
#include "program/desktop/Theme.h"
#include "program/desktop/panels/ElementRows.h"
#include "program/desktop/panels/EmptyText.h"
#include "program/desktop/panels/NodeTreeModel.h"

namespace desktop {

using engine::Part;
using engine::StateMatrix;

// All rows as pairs of section and row, made once; filter and order only choose among them.
void MatrixModel::Show(const host::BaseDocument* doc, std::unique_ptr<StateTable> table) {
  beginResetModel();
  doc_ = IdentityOf(doc);
  table_ = std::move(table);
  rows_.clear();
  for (std::size_t i = 0; table_ && i < table_->sections.size(); ++i) {
    for (std::size_t row = 0; row < table_->sections[i]->Rows().size(); ++row)
      rows_.push_back({static_cast<std::uint32_t>(i), static_cast<std::uint32_t>(row)});
  }
  if (sortColumn_ >= columnCount()) sortColumn_ = -1;
  Arrange();
  endResetModel();
}

void MatrixModel::SetFilter(const QString& text) {
  if (text == filter_) return;
  beginResetModel();
  filter_ = text;
  Arrange();
  endResetModel();
}

void MatrixModel::sort(int column, Qt::SortOrder order) {
  emit layoutAboutToBeChanged();
  sortColumn_ = column;
  sortOrder_ = order;
  Arrange();
  emit layoutChanged();
}

// The texts of the sorted column are made once for each row and not with each comparison. Stable,
// so that equal rows keep the order of the scene.
void MatrixModel::Arrange() {
  shown_.clear();
  if (!Document()) return;
  std::ranges::copy_if(rows_, std::back_inserter(shown_), [this](Place place) {
    return filter_.isEmpty() || NameOf(place).contains(filter_, Qt::CaseInsensitive);
  });
  if (sortColumn_ < 0) return;
  std::vector<std::pair<QString, Place>> keyed;
  keyed.reserve(shown_.size());
  for (const Place place : shown_) keyed.emplace_back(Text(place, sortColumn_), place);
  const auto key = [](const auto& row) -> const QString& { return row.first; };
  if (sortOrder_ == Qt::AscendingOrder) {
    std::ranges::stable_sort(keyed, std::less(), key);
  } else {
    std::ranges::stable_sort(keyed, std::greater(), key);
  }
  std::ranges::transform(keyed, shown_.begin(), [](const auto& row) { return row.second; });
}

const StateMatrix::Row* MatrixModel::RowAt(const QModelIndex& index) const {
  if (!index.isValid()) return nullptr;
  const Place place = shown_[static_cast<std::size_t>(index.row())];
  return &MatrixOf(place).Rows()[place.row];
}

const engine::StoredState* MatrixModel::StateAt(int column) const {
  return table_ && column > kElement && column < columnCount()
             ? &table_->states[static_cast<std::size_t>(column - 1)]
             : nullptr;
}

// The camera is the only field of its row.
engine::NodeId MatrixModel::CameraAt(const QModelIndex& index) const {
  const Place place = shown_[static_cast<std::size_t>(index.row())];
  if (!StateAt(index.column())) return 0;
  for (const engine::FieldNow& field :
       MatrixOf(place).CellFields(place.row, static_cast<std::size_t>(index.column() - 1)))
    return engine::LinkOf(field.value);
  return 0;
}

int MatrixModel::RowOf(Part part, engine::NodeId element) const {
  for (std::size_t i = 0; i < shown_.size(); ++i) {
    const StateMatrix::Row& row = MatrixOf(shown_[i]).Rows()[shown_[i].row];
    if (row.part == part && row.element == element) return static_cast<int>(i);
  }
  return -1;
}

QString MatrixModel::NameOf(Place place) const {
  const StateMatrix::Row& row = MatrixOf(place).Rows()[place.row];
  return row.element == 0 ? QString(engine::RowOf(row.part).label)
                          : ToQt(engine::ElementPath(*Document(), row.element)).simplified();
}

// A dash where the state does not hold the element: that is not the same as an empty value.
QString MatrixModel::Text(Place place, int column) const {
  if (column == kElement) {
    const bool isUnknown = MatrixOf(place).Rows()[place.row].knownBy == 0;
    return NameOf(place) + (isUnknown ? ": no state knows it" : "");
  }
  const auto state = static_cast<std::size_t>(column - 1);
  if (!MatrixOf(place).Holds(place.row, state)) return QString(QChar(0x2013));
  return ToQt(MatrixOf(place).Text(place.row, state));
}

QVariant MatrixModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || !Document()) return {};
  const Place place = shown_[static_cast<std::size_t>(index.row())];
  if (role == Qt::DisplayRole) return Text(place, index.column());
  return index.column() == kElement ? ElementData(place, role)
                                    : CellData(place, index.column(), role);
}

QVariant MatrixModel::ElementData(Place place, int role) const {
  const StateMatrix::Row& row = MatrixOf(place).Rows()[place.row];
  const bool isUnknown = row.knownBy == 0;
  if (role == kIsUnknown) return isUnknown;
  if (role == Qt::DecorationRole)
    return isUnknown ? Icon("warning") : ElementIcon(*Document(), row.part, row.element);
  if (role != Qt::ToolTipRole) return {};
  const QString about = isUnknown ? QString("No state knows it: loading leaves it as it is")
                                  : QString("%1, known by %2 of %3 states")
                                        .arg(engine::RowOf(row.part).label)
                                        .arg(row.knownBy)
                                        .arg(table_->states.size());
  return NameInTip(ToHost(NameOf(place)), about);
}

QVariant MatrixModel::CellData(Place place, int column, int role) const {
  const auto state = static_cast<std::size_t>(column - 1);
  const StateMatrix& matrix = MatrixOf(place);
  if (role == kIsChanged) return matrix.IsChanged(place.row, state);
  if (role == kIsUnknown) return !matrix.Holds(place.row, state);
  const bool isTip = role == Qt::ToolTipRole;
  if (!isTip && role != Qt::AccessibleTextRole) return {};
  QString text = Text(place, column);
  if (!matrix.Holds(place.row, state)) text = "does not hold it";
  if (matrix.IsChanged(place.row, state)) text += ", other than in the state before";
  if (!isTip) return text;
  return NameInTip(ToHost(NameOf(place)), ToQt(StateAt(column)->name) + ": " + text);
}

QVariant MatrixModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal) return {};
  if (role == Qt::TextAlignmentRole) return QVariant(Qt::AlignLeft | Qt::AlignVCenter);
  if (role != Qt::DisplayRole && role != Qt::ToolTipRole) return {};
  if (section == kElement) return QString("Element");
  const engine::StoredState* state = StateAt(section);
  return state ? ToQt(state->name).simplified() : QString();
}

namespace {

constexpr int kElementWidth = 190;
constexpr int kLeastStateWidth = 60;
constexpr int kMostStateWidth = 240;
// Rows whose widths are measured; all of them would cost a text each.
constexpr int kMeasuredRows = 40;
constexpr int kCorner = 7;
constexpr int kTintAlpha = 32;  // not to be taken for a chosen one

// A changed cell has a tint and a corner, so that nobody needs the color to see it; one that does
// not hold the element is faint.
class MatrixCell : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override {
    QStyleOptionViewItem cell = option;
    if (index.data(MatrixModel::kIsUnknown).toBool() && index.column() != MatrixModel::kElement)
      cell.palette.setColor(QPalette::Text, QColor(PresentTheme().faint));
    const bool isChanged = index.data(MatrixModel::kIsChanged).toBool();
    if (isChanged) {
      QColor tint(PresentTheme().accent);
      tint.setAlpha(kTintAlpha);
      painter->fillRect(option.rect, tint);
    }
    QStyledItemDelegate::paint(painter, cell, index);
    if (!isChanged) return;
    const QPointF corner = option.rect.topRight() + QPoint(1, 0);
    QPainterPath path(corner);
    path.lineTo(corner - QPointF(kCorner, 0));
    path.lineTo(corner + QPointF(0, kCorner));
    painter->fillPath(path, QColor(PresentTheme().accent));
  }
};

void SetUp(QTableView& table) {
  table.verticalHeader()->hide();
  table.verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  table.verticalHeader()->setDefaultSectionSize(table.fontMetrics().height() + 8);
  table.setShowGrid(false);
  table.setAlternatingRowColors(true);
  table.setWordWrap(false);
  table.setTextElideMode(Qt::ElideMiddle);
  table.setTabKeyNavigation(false);
  table.setHorizontalScrollMode(QTableView::ScrollPerPixel);
  table.setVerticalScrollMode(QTableView::ScrollPerPixel);
  table.setItemDelegate(new MatrixCell(&table));
  table.horizontalHeader()->setHighlightSections(false);
  table.horizontalHeader()->setSortIndicatorClearable(true);
}

}  // namespace

MatrixTable::MatrixTable(QWidget* parent)
    : QTableView(parent), model_(new MatrixModel(this)), fixed_(new QTableView(this)) {
  setModel(model_);
  SetUp(*this);
  setAccessibleName("What states say of elements");
  horizontalHeader()->setSortIndicator(-1, Qt::AscendingOrder);
  setSortingEnabled(true);
  BuildFixed();
  for (QTableView* part : {static_cast<QTableView*>(this), fixed_}) {
    connect(part, &QTableView::clicked, this, [this](const QModelIndex& cell) {
      if (chosen &&
          !(QApplication::keyboardModifiers() & (Qt::ShiftModifier | Qt::ControlModifier)))
        chosen(cell);
    });
  }
}

// A second view of the same model and selection, with all columns but the first hidden. Both scroll
// bars follow each other; the heads sort through the lower one.
void MatrixTable::BuildFixed() {
  fixed_->setModel(model_);
  SetUp(*fixed_);
  fixed_->setSelectionModel(selectionModel());
  fixed_->setFocusPolicy(Qt::NoFocus);
  fixed_->setFrameShape(QFrame::NoFrame);
  fixed_->setStyleSheet("QTableView { border: none; border-radius: 0; }");
  fixed_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  fixed_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  fixed_->horizontalHeader()->setSectionResizeMode(QHeaderView::Interactive);
  fixed_->horizontalHeader()->setSortIndicator(-1, Qt::AscendingOrder);
  connect(fixed_->horizontalHeader(), &QHeaderView::sortIndicatorChanged, this,
          [this](int column, Qt::SortOrder order) {
            horizontalHeader()->setSortIndicator(column, order);
          });
  fixed_->horizontalHeader()->setSectionsClickable(true);
  fixed_->horizontalHeader()->setSortIndicatorShown(true);
  connect(fixed_->horizontalHeader(), &QHeaderView::sectionResized, this,
          [this](int column, int, int width) {
            if (column != MatrixModel::kElement) return;
            setColumnWidth(column, width);
            PlaceFixed();
          });
  connect(verticalScrollBar(), &QScrollBar::valueChanged, fixed_->verticalScrollBar(),
          &QScrollBar::setValue);
  connect(fixed_->verticalScrollBar(), &QScrollBar::valueChanged, verticalScrollBar(),
          &QScrollBar::setValue);
}

// The chosen cell is found again by element and state.
void MatrixTable::Show(const host::BaseDocument* doc, std::unique_ptr<StateTable> table) {
  const engine::StateMatrix::Row* row = model_->RowAt(currentIndex());
  const bool any = row != nullptr;
  const auto former =
      row ? std::pair(row->part, row->element) : std::pair(Part(), engine::NodeId());
  const engine::StoredState* state = model_->StateAt(currentIndex().column());
  const host::LONG id = state ? state->id : -1;
  const int columns = model_->columnCount();
  model_->Show(doc, std::move(table));
  if (model_->columnCount() != columns) FitColumns();
  for (int column = 1; column < model_->columnCount(); ++column)
    fixed_->setColumnHidden(column, true);
  PlaceFixed();
  if (!any) return;
  int column = MatrixModel::kElement;
  for (int i = 1; i < model_->columnCount(); ++i) {
    if (model_->StateAt(i)->id == id) column = i;
  }
  setCurrentIndex(model_->index(model_->RowOf(former.first, former.second), column));
}

void MatrixTable::FitColumns() {
  for (int column = 1; column < model_->columnCount(); ++column) {
    int width = horizontalHeader()->sectionSizeHint(column);
    for (int row = 0; row < std::min(model_->rowCount(), kMeasuredRows); ++row)
      width = std::max(width, sizeHintForIndex(model_->index(row, column)).width() + kCorner);
    setColumnWidth(column, std::clamp(width, kLeastStateWidth, kMostStateWidth));
  }
  setColumnWidth(MatrixModel::kElement, kElementWidth);
  fixed_->setColumnWidth(MatrixModel::kElement, kElementWidth);
}

void MatrixTable::PlaceFixed() {
  fixed_->setVisible(model_->rowCount() > 0);
  fixed_->horizontalHeader()->setFixedHeight(horizontalHeader()->height());
  fixed_->setGeometry(frameWidth(), frameWidth(), columnWidth(MatrixModel::kElement),
                      viewport()->height() + horizontalHeader()->height());
}

void MatrixTable::resizeEvent(QResizeEvent* event) {
  QTableView::resizeEvent(event);
  PlaceFixed();
}

// A cell that the fixed column covers is not in sight.
void MatrixTable::scrollTo(const QModelIndex& index, ScrollHint hint) {
  QTableView::scrollTo(index, hint);
  const int covered = columnWidth(MatrixModel::kElement) - visualRect(index).left();
  if (index.column() > MatrixModel::kElement && covered > 0)
    horizontalScrollBar()->setValue(horizontalScrollBar()->value() - covered);
}

void MatrixTable::SetEmptyText(const QString& text) {
  emptyText_ = text;
  viewport()->update();
}

void MatrixTable::paintEvent(QPaintEvent* event) {
  QTableView::paintEvent(event);
  if (model_->rowCount() == 0) PaintEmptyText(*this, emptyText_);
}

void MatrixTable::keyPressEvent(QKeyEvent* event) {
  const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (event->matches(QKeySequence::Copy)) {
    QApplication::clipboard()->setText(SelectedText());
  } else if (isEnter && chosen && currentIndex().isValid()) {
    chosen(currentIndex());
  } else {
    QTableView::keyPressEvent(event);
  }
}

// With tabs and line ends, as spreadsheets take it: the columns of any chosen cell with their
// heads, cells that are not chosen empty. One cell alone is just its text.
QString MatrixTable::SelectedText() const {
  QModelIndexList cells = selectionModel()->selectedIndexes();
  if (cells.size() == 1) return cells.front().data().toString();
  std::sort(cells.begin(), cells.end());
  std::vector<int> columns;
  for (const QModelIndex& cell : cells) columns.push_back(cell.column());
  std::ranges::sort(columns);
  columns.erase(std::unique(columns.begin(), columns.end()), columns.end());
  QString text;
  for (const int column : columns)
    text += model_->headerData(column, Qt::Horizontal, Qt::DisplayRole).toString() +
            (column == columns.back() ? "\n" : "\t");
  for (auto cell = cells.cbegin(); cell != cells.cend();) {
    const int row = cell->row();
    for (const int column : columns) {
      if (cell != cells.cend() && cell->row() == row && cell->column() == column)
        text += (cell++)->data().toString();
      text += column == columns.back() ? "\n" : "\t";
    }
  }
  return text;
}

namespace {

// Groups of parts that one walk over the scene makes the rows of.
const std::array<engine::Parts, 4>& Sections() {
  static const std::array<engine::Parts, 4> sections = [] {
    std::array<engine::Parts, 4> parts;
    for (const engine::PartRow& row : engine::kPartRows) {
      const std::size_t section = row.part <= Part::Camera    ? 0
                                  : row.part == Part::Objects ? 1
                                  : row.part == Part::Layers  ? 2
                                                              : 3;
      parts[section].set(engine::IndexOf(row.part));
    }
    return parts;
  }();
  return sections;
}

host::BaseContainer StoredIn(const host::BaseDocument& doc) {
  return doc.GetDataInstance()->GetContainer(engine::kStagemarksId);
}

}  // namespace

MatrixPanel::MatrixPanel(const StatesDialog& states, engine::InspectedElements& inspected,
                         QWidget* parent)
    : QWidget(parent),
      states_(states),
      inspected_(inspected),
      slices_(
          "reading the states", [this] { return Advance(); }, [this] { work_.reset(); }),
      table_(new MatrixTable(this)) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  BuildHead(*layout);
  layout->addWidget(table_);
  setFocusProxy(table_);
  table_->chosen = [this](const QModelIndex& cell) { Select(cell); };
  pause_.setSingleShot(true);
  pause_.setInterval(kMomentAfterChange);
  connect(&pause_, &QTimer::timeout, this, [this] { slices_.Start(); });
}

void MatrixPanel::BuildHead(QLayout& layout) {
  auto* head = new QWidget(this);
  auto* line = new QHBoxLayout(head);
  line->setContentsMargins(6, 4, 6, 4);
  filter_ = new QLineEdit(head);
  filter_->setPlaceholderText("Filter elements");
  filter_->setAccessibleName("Filter elements");
  filter_->setToolTip("Shows only rows with this in their names");
  filter_->setClearButtonEnabled(true);
  filter_->addAction(Icon("search"), QLineEdit::LeadingPosition);
  connect(filter_, &QLineEdit::textChanged, this, [this](const QString& text) {
    table_->Model().SetFilter(text);
    ShowEmptyText();
  });
  connect(filter_, &QLineEdit::returnPressed, table_, qOverload<>(&QWidget::setFocus));
  all_ = new QCheckBox("All rows", head);
  all_->setToolTip("Also elements of which all states say the same");
  connect(all_, &QCheckBox::toggled, this, [this] {
    if (const host::BaseDocument* doc = FindOpenDocument(doc_)) Begin(doc);
  });
  line->addWidget(filter_, 1);
  line->addWidget(all_);
  layout.addWidget(head);
}

// The tree, its size and the stored containers: values of the scene itself are not in the table.
// The stores are compared by the address of their contents, O(1).
bool MatrixPanel::IsAsRead(const host::BaseDocument& doc) const {
  return engine::TreeChangeCount(doc) == treeChanges_ && engine::NodeCount(doc) == nodes_ &&
         engine::BodyOf(StoredIn(doc)) == engine::BodyOf(stored_);
}

// A change that moves no element and stores no state costs one repaint.
void MatrixPanel::Follow(host::BaseDocument* doc) {
  const host::ULLONG changes = doc ? engine::ChangeCount(*doc) : 0;
  const bool isOther = IdentityOf(doc) != doc_;
  if (!isOther && changes == changes_) return;
  changes_ = changes;
  // Names of elements and materials may be others.
  table_->viewport()->update();
  if (isOther || (doc && !IsAsRead(*doc))) Begin(doc);
}

void MatrixPanel::Begin(const host::BaseDocument* doc) {
  const bool isOther = IdentityOf(doc) != doc_;
  doc_ = IdentityOf(doc);
  changes_ = doc ? engine::ChangeCount(*doc) : 0;
  treeChanges_ = doc ? engine::TreeChangeCount(*doc) : 0;
  nodes_ = doc ? engine::NodeCount(*doc) : 0;
  stored_ = doc ? StoredIn(*doc) : host::BaseContainer();
  slices_.Stop();
  work_.reset();
  if (isOther || !doc) table_->Show(nullptr, nullptr);
  ShowEmptyText();
  if (!doc) return;
  work_ = std::make_unique<StateTable>();
  nextSection_ = 0;
  if (nodes_ < kLargeScene) return slices_.StartHere();
  pause_.start();
}

// The states come first, in the order of the list that a person sees beside it.
bool MatrixPanel::Advance() {
  const host::BaseDocument* doc = FindOpenDocument(doc_);
  if (!work_ || !doc) return false;
  // The next Follow begins anew.
  if (!IsAsRead(*doc)) return false;
  if (nextSection_ == 0) {
    work_->states = engine::ReadStates(*doc);
    std::erase_if(work_->states, [](const engine::StoredState& state) { return !state.hasRecord; });
    std::unordered_map<std::string, std::size_t> places;
    for (const pictures::Mark& mark : states_.Rows()) places.emplace(mark.name, places.size());
    // As the list has them.
    std::ranges::stable_sort(work_->states, {}, [&](const engine::StoredState& state) {
      const auto place = places.find(state.name);
      return place == places.end() ? places.size() : place->second;
    });
  }
  if (nextSection_ < Sections().size()) {
    const auto rows = all_->isChecked() ? engine::MatrixRows::All : engine::MatrixRows::Differing;
    work_->sections.push_back(
        std::make_unique<StateMatrix>(*doc, work_->states, rows, Sections()[nextSection_++]));
    return true;
  }
  table_->Show(doc, std::move(work_));
  ShowEmptyText();
  return false;
}

void MatrixPanel::ShowEmptyText() {
  const MatrixModel& model = table_->Model();
  table_->SetEmptyText(
      work_                      ? "Reading the states" + QString(QChar(0x2026))
      : model.columnCount() <= 1 ? "No Stagemarks yet: this table shows what each says of each "
                                   "element"
      : model.Rows() > 0         ? "No element of that name is in the table"
      : model.columnCount() == 2 ? "One Stagemark alone differs from nothing: record another "
                                   "one, or check All rows"
                                 : "All states say the same: check All rows to see what");
}

void MatrixPanel::Select(const QModelIndex& cell) {
  host::BaseDocument* doc = FindOpenDocument(doc_);
  const StateMatrix::Row* row = table_->Model().RowAt(cell);
  if (!doc || !row || doc != host::GetActiveDocument()) return;
  const engine::NodeId element =
      row->part == Part::Camera ? table_->Model().CameraAt(cell) : row->element;
  const engine::StoredState* state = table_->Model().StateAt(cell.column());
  const std::string name = state ? state->name : std::string();
  SelectInScene(*doc, inspected_, element);
  if (!name.empty()) states_.Choose({name});
}

}  // namespace desktop
