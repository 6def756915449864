#include "program/desktop/dialog/ListView.h"

#include <QHeaderView>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <QToolTip>
#include <algorithm>

#include "program/desktop/Icons.h"
#include "program/desktop/Text.h"
#include "program/desktop/dialog/GadgetGrid.h"
#include "program/desktop/panels/EmptyText.h"

namespace desktop {

namespace {

// A name may be as long as memory; what is shown of it ends here.
constexpr int kLongestText = 500;

QString Shortened(QString text) {
  text.replace('\n', ' ');
  if (text.size() > kLongestText) text = text.left(kLongestText) + QChar(0x2026);
  return text;
}

bool SameColumns(const std::vector<engine::Column>& a, const std::vector<engine::Column>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](const engine::Column& x, const engine::Column& y) {
                      return x.id == y.id && x.kind == y.kind;
                    });
}

}  // namespace

ListModel::ListModel(SharedDialogLink link, host::LONG list, QObject* parent)
    : QAbstractTableModel(parent), link_(std::move(link)), list_(list) {}

// A removed row in the middle is not told as such: rows only come and go at the end and the others
// show other values. That is right for a list that the plug-in builds anew each time, and keeps
// scroll place and widgets.
void ListModel::Update() {
  const engine::Gadget* list = link_->Find(list_);
  if (!list) return;
  if (!SameColumns(columns_, list->listColumns)) {
    beginResetModel();
    columns_ = list->listColumns;
    rows_ = static_cast<int>(list->listRows.size());
    endResetModel();
    return;
  }
  SetRowCount(static_cast<int>(list->listRows.size()));
  if (rows_ > 0 && !columns_.empty())
    emit dataChanged(index(0, 0), index(rows_ - 1, columnCount() - 1));
}

void ListModel::SetRowCount(int rows) {
  if (rows > rows_) {
    beginInsertRows({}, rows_, rows - 1);
    rows_ = rows;
    endInsertRows();
  } else if (rows < rows_) {
    beginRemoveRows({}, rows, rows_ - 1);
    rows_ = rows;
    endRemoveRows();
  }
}

bool ListModel::IsCheckColumn(int column) const {
  return column >= 0 && column < columnCount() &&
         columns_[static_cast<std::size_t>(column)].kind == host::LV_COLUMN_CHECKBOX;
}

const host::BaseContainer* ListModel::ValuesOf(const QModelIndex& index) const {
  const engine::Gadget* list = index.isValid() ? link_->Find(list_) : nullptr;
  const auto line = static_cast<std::size_t>(index.row());
  return list && line < list->listRows.size() ? &list->listRows[line].values : nullptr;
}

// Only cells that show something ask, so a list of ten thousand rows costs what is seen of it.
QVariant ListModel::data(const QModelIndex& index, int role) const {
  const host::BaseContainer* values = ValuesOf(index);
  if (!values) return {};
  const host::LONG column = columns_[static_cast<std::size_t>(index.column())].id;
  const bool isCheck = IsCheckColumn(index.column());
  if (role == Qt::CheckStateRole && isCheck)
    return values->GetBool(column) ? Qt::Checked : Qt::Unchecked;
  if (role == Qt::DisplayRole && !isCheck) return Shortened(ToQt(values->GetString(column)));
  const bool isMark = star_ != Star::None && index.column() == 0 && !isCheck &&
                      !ToQt(values->GetString(column)).trimmed().isEmpty();
  if (role == kStar) return static_cast<int>(isMark ? star_ : Star::None);
  if ((role == Qt::ToolTipRole || role == Qt::AccessibleTextRole) && isMark) return starTip_;
  return {};
}

void ListModel::SetStar(Star star, const QString& tip) {
  if (star == star_ && tip == starTip_) return;
  star_ = star;
  starTip_ = tip;
  if (rows_ > 0 && !columns_.empty()) emit dataChanged(index(0, 0), index(rows_ - 1, 0));
}

Qt::ItemFlags ListModel::flags(const QModelIndex& index) const {
  if (!index.isValid()) return Qt::NoItemFlags;
  const Qt::ItemFlags plain = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
  return IsCheckColumn(index.column()) ? plain | Qt::ItemIsUserCheckable : plain;
}

// Through the dialog, as a click is: it may answer otherwise, so the box shows what the dialog has.
bool ListModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  const host::BaseContainer* values = ValuesOf(index);
  if (role != Qt::CheckStateRole || !values || !IsCheckColumn(index.column())) return false;
  const host::LONG column = columns_[static_cast<std::size_t>(index.column())].id;
  const bool wanted = value.value<Qt::CheckState>() == Qt::Checked;
  if (wanted != static_cast<bool>(values->GetBool(column)))
    engine::ToggleLine(*link_->dialog, list_, index.row(), column);
  if (index.row() < rows_) emit dataChanged(index, index, {Qt::CheckStateRole});
  return true;
}

namespace {

constexpr QSize kSmallestList(160, 96);
constexpr int kNarrowestColumn = 12;
constexpr int kMarkerCharacters = 5;
constexpr int kStarSide = 14;
// Least characters of the column that takes the rest; below that the list is scrolled
constexpr int kReadableCharacters = 18;

// A mark in the first column as a star. The plug-in marks the current row by a character, which
// says nothing to a person and cannot be hollow.
class StarDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override {
    const auto star = static_cast<ListModel::Star>(index.data(ListModel::kStar).toInt());
    if (star == ListModel::Star::None) return QStyledItemDelegate::paint(painter, option, index);
    option.widget->style()->drawPrimitive(QStyle::PE_PanelItemViewItem, &option, painter,
                                          option.widget);
    const int side = std::min({kStarSide, option.rect.width(), option.rect.height()});
    QRect place(0, 0, side, side);
    place.moveCenter(option.rect.center());
    (star == ListModel::Star::Full ? Icon("star") : Icon("star-hollow")).paint(painter, place);
  }
};

bool SameSelection(const host::BaseSelect& a, const host::BaseSelect& b) {
  if (a.GetSegments() != b.GetSegments()) return false;
  for (host::LONG segment = 0; segment < a.GetSegments(); ++segment) {
    host::LONG first[2];
    host::LONG last[2];
    if (!a.GetRange(segment, &first[0], &last[0]) || !b.GetRange(segment, &first[1], &last[1]))
      return false;
    if (first[0] != first[1] || last[0] != last[1]) return false;
  }
  return true;
}

}  // namespace

ListView::ListView(SharedDialogLink link, const engine::Gadget& list, QWidget* parent)
    : QTreeView(parent),
      link_(std::move(link)),
      id_(list.id),
      asked_(AskedSize(list, fontMetrics())),
      model_(new ListModel(link_, list.id, this)) {
  setModel(model_);
  setHeaderHidden(true);
  header()->setStretchLastSection(false);
  header()->setMinimumSectionSize(kNarrowestColumn);
  setRootIsDecorated(false);
  setUniformRowHeights(true);
  setAlternatingRowColors(true);
  setAllColumnsShowFocus(true);
  setSelectionMode(ExtendedSelection);
  setHorizontalScrollMode(ScrollPerPixel);
  setMinimumSize(kSmallestList);
}

QSize ListView::sizeHint() const { return asked_.expandedTo(kSmallestList); }

void ListView::Show(const engine::Gadget& list) {
  showing_ = true;
  model_->Update();
  ShowSelection(list.selection);
  showing_ = false;
  setEnabled(list.enabled);
  FitColumns();
}

void ListView::ShowStar(ListModel::Star star, const QString& tip) {
  if (!itemDelegateForColumn(0)) setItemDelegateForColumn(0, new StarDelegate(this));
  model_->SetStar(star, tip);
}

void ListView::SetEmptyText(const QString& text) {
  emptyText_ = text;
  viewport()->update();
}

void ListView::paintEvent(QPaintEvent* event) {
  QTreeView::paintEvent(event);
  if (model_->rowCount() == 0) PaintEmptyText(*this, emptyText_);
}

// By ranges: selecting all of ten thousand rows is one.
host::BaseSelect ListView::SelectedLines() const {
  host::BaseSelect lines;
  for (const QItemSelectionRange& range : selectionModel()->selection())
    lines.SelectAll(range.top(), range.bottom());
  return lines;
}

// Not where it is equal: setting it would scroll and drop the anchor of Shift.
void ListView::ShowSelection(const host::BaseSelect& selection) {
  if (SameSelection(selection, SelectedLines())) return;
  QItemSelection wanted;
  host::LONG first = 0;
  host::LONG last = 0;
  for (host::LONG segment = 0; selection.GetRange(segment, &first, &last); ++segment) {
    wanted.append(QItemSelectionRange(model_->index(first, 0),
                                      model_->index(last, model_->columnCount() - 1)));
  }
  selectionModel()->select(wanted, QItemSelectionModel::ClearAndSelect);
}

QItemSelectionModel::SelectionFlags ListView::selectionCommand(const QModelIndex& index,
                                                               const QEvent* event) const {
  const bool isMouse =
      event && (event->type() == QEvent::MouseButtonPress ||
                event->type() == QEvent::MouseButtonRelease || event->type() == QEvent::MouseMove);
  // A right click chooses its row in any column: the context menu is for it.
  const bool isRight =
      isMouse && static_cast<const QMouseEvent*>(event)->buttons() & Qt::RightButton;
  if (isMouse && !isRight && model_->IsCheckColumn(index.column()))
    return QItemSelectionModel::NoUpdate;
  return QTreeView::selectionCommand(index, event);
}

// `showing_` keeps what the dialog itself has set from going back to it as an event.
void ListView::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) {
  QTreeView::selectionChanged(selected, deselected);
  if (showing_ || !link_->dialog) return;
  std::vector<host::LONG> lines;
  const host::BaseSelect chosen = SelectedLines();
  host::LONG first = 0;
  host::LONG last = 0;
  for (host::LONG segment = 0; chosen.GetRange(segment, &first, &last); ++segment) {
    for (host::LONG line = first; line <= last; ++line) lines.push_back(line);
  }
  engine::SelectLines(*link_->dialog, id_, lines);
}

void ListView::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Space && event->modifiers() == Qt::NoModifier) {
    ToggleSelected();
  } else if (opened && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)) {
    opened();
  } else {
    QTreeView::keyPressEvent(event);
  }
}

void ListView::mouseDoubleClickEvent(QMouseEvent* event) {
  const QModelIndex index = indexAt(event->position().toPoint());
  QTreeView::mouseDoubleClickEvent(event);
  const bool isRow = index.isValid() && !model_->IsCheckColumn(index.column());
  if (opened && isRow && event->button() == Qt::LeftButton) opened();
}

// Escaped: a name is no markup.
bool ListView::viewportEvent(QEvent* event) {
  if (event->type() != QEvent::ToolTip) return QTreeView::viewportEvent(event);
  const auto* help = static_cast<QHelpEvent*>(event);
  const QModelIndex index = indexAt(help->pos());
  const QRect cell = visualRect(index);
  const bool isWhole =
      viewport()->rect().contains(cell) && sizeHintForIndex(index).width() <= cell.width();
  const QString star = index.data(Qt::ToolTipRole).toString();
  const QString text = (star.isEmpty() ? index.data().toString() : star).toHtmlEscaped();
  QToolTip::showText(
      help->globalPos(),
      (isWhole && star.isEmpty()) || text.isEmpty() ? toolTip() : "<qt>" + text + "</qt>",
      viewport());
  return true;
}

int ListView::CheckColumn() const {
  for (int column = 0; column < model_->columnCount(); ++column) {
    if (model_->IsCheckColumn(column)) return column;
  }
  return -1;
}

bool ListView::AllChecked() const {
  const QModelIndexList lines = selectionModel()->selectedRows(std::max(0, CheckColumn()));
  return std::all_of(lines.begin(), lines.end(), [](const QModelIndex& line) {
    return line.data(Qt::CheckStateRole) == Qt::Checked;
  });
}

// All get one state, as in mail programs: checked unless all were.
void ListView::ToggleSelected() {
  if (CheckColumn() < 0) return;
  const Qt::CheckState wanted = AllChecked() ? Qt::Unchecked : Qt::Checked;
  for (const QModelIndex& line : selectionModel()->selectedRows(CheckColumn())) {
    model_->setData(line, wanted, Qt::CheckStateRole);
  }
}

void ListView::resizeEvent(QResizeEvent* event) {
  QTreeView::resizeEvent(event);
  FitColumns();
}

// The first text column that is wider than a mark is the name; it takes what the others leave.
ListView::Widths ListView::Measure() const {
  const int marker = fontMetrics().averageCharWidth() * kMarkerCharacters;
  const int most = std::max(viewport()->width(), kNarrowestColumn);
  Widths widths;
  for (int column = 0; column < model_->columnCount(); ++column) {
    widths.columns.push_back(std::clamp(sizeHintForColumn(column), kNarrowestColumn, most));
    const bool isFirst =
        widths.filling < 0 || widths.columns[static_cast<std::size_t>(widths.filling)] < marker;
    if (!model_->IsCheckColumn(column) && isFirst) widths.filling = column;
  }
  const int wanted =
      widths.filling < 0 ? 0 : widths.columns[static_cast<std::size_t>(widths.filling)];
  widths.readable = std::max(
      std::min(wanted, fontMetrics().averageCharWidth() * kReadableCharacters), kNarrowestColumn);
  return widths;
}

int ListView::ReadableWidth() const {
  const Widths widths = Measure();
  int width = 2 * frameWidth() + verticalScrollBar()->sizeHint().width() + widths.readable;
  for (int column = 0; column < model_->columnCount(); ++column) {
    if (column != widths.filling) width += widths.columns[static_cast<std::size_t>(column)];
  }
  return std::clamp(width, kSmallestList.width(), sizeHint().width());
}

void ListView::FitColumns() {
  const Widths widths = Measure();
  int left = viewport()->width();
  for (int column = 0; column < model_->columnCount(); ++column) {
    const int width = widths.columns[static_cast<std::size_t>(column)];
    setColumnWidth(column, width);
    left -= width;
  }
  if (widths.filling < 0) return;
  const int filled = widths.columns[static_cast<std::size_t>(widths.filling)] + left;
  setColumnWidth(widths.filling, std::max(filled, widths.readable));
}

}  // namespace desktop
