#include "program/desktop/dialog/ListRows.h"

#include <algorithm>

#include "program/desktop/Text.h"

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

ListRows::ListRows(SharedDialogLink link, host::LONG list, QObject* parent)
    : QAbstractTableModel(parent), link_(std::move(link)), list_(list) {}

void ListRows::Update() {
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

void ListRows::SetRowCount(int rows) {
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

bool ListRows::IsCheckColumn(int column) const {
  return column >= 0 && column < columnCount() &&
         columns_[static_cast<std::size_t>(column)].kind == host::LV_COLUMN_CHECKBOX;
}

const host::BaseContainer* ListRows::ValuesOf(const QModelIndex& index) const {
  const engine::Gadget* list = index.isValid() ? link_->Find(list_) : nullptr;
  const auto line = static_cast<std::size_t>(index.row());
  return list && line < list->listRows.size() ? &list->listRows[line].values : nullptr;
}

QVariant ListRows::data(const QModelIndex& index, int role) const {
  const host::BaseContainer* values = ValuesOf(index);
  if (!values) return {};
  const host::LONG column = columns_[static_cast<std::size_t>(index.column())].id;
  const bool isCheck = IsCheckColumn(index.column());
  if (role == Qt::CheckStateRole && isCheck)
    return values->GetBool(column) ? Qt::Checked : Qt::Unchecked;
  if (role == Qt::DisplayRole && !isCheck) return Shortened(ToQt(values->GetString(column)));
  return {};
}

Qt::ItemFlags ListRows::flags(const QModelIndex& index) const {
  if (!index.isValid()) return Qt::NoItemFlags;
  const Qt::ItemFlags plain = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
  return IsCheckColumn(index.column()) ? plain | Qt::ItemIsUserCheckable : plain;
}

bool ListRows::setData(const QModelIndex& index, const QVariant& value, int role) {
  const host::BaseContainer* values = ValuesOf(index);
  if (role != Qt::CheckStateRole || !values || !IsCheckColumn(index.column())) return false;
  const host::LONG column = columns_[static_cast<std::size_t>(index.column())].id;
  const bool wanted = value.value<Qt::CheckState>() == Qt::Checked;
  if (wanted != static_cast<bool>(values->GetBool(column)))
    engine::ToggleLine(*link_->dialog, list_, index.row(), column);
  if (index.row() < rows_) emit dataChanged(index, index, {Qt::CheckStateRole});
  return true;
}

}  // namespace desktop
