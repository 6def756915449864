#include "program/desktop/panels/TreeRows.h"

#include "program/desktop/Text.h"

namespace desktop {

namespace {

constexpr int kLongestName = 500;

}  // namespace

QString NameInRow(const host::String& name) { return ToQt(name).left(kLongestName).replace('\n', ' '); }

void TreeRows::Take(const host::BaseDocument* doc, FlatTree shape) {
  beginResetModel();
  doc_ = IdentityOf(doc);
  shape_ = std::move(shape);
  endResetModel();
}

bool TreeRows::TakeWhatDiffers(const host::BaseDocument* doc, FlatTree shape) {
  if (IsOf(doc) && shape == shape_) return false;
  Take(doc, std::move(shape));
  return true;
}

host::BaseList2D* TreeRows::NodeAt(const QModelIndex& index) const {
  const host::BaseDocument* doc = index.isValid() ? Document() : nullptr;
  return doc ? engine::FindNode(doc, EntryOf(index).id) : nullptr;
}

QModelIndex TreeRows::IndexAt(int place, int column) const {
  return place == 0 ? QModelIndex() : createIndex(shape_.At(place).row, column, static_cast<quintptr>(place));
}

QModelIndex TreeRows::index(int row, int column, const QModelIndex& parent) const {
  if (parent.isValid() && parent.column() != 0) return {};
  const FlatTree::Entry& above = EntryOf(parent);
  if (row < 0 || row >= above.childCount || column < 0 || column >= columnCount()) return {};
  return createIndex(row, column, static_cast<quintptr>(above.firstChild + row));
}

QModelIndex TreeRows::parent(const QModelIndex& index) const {
  return index.isValid() ? IndexAt(EntryOf(index).parent) : QModelIndex();
}

int TreeRows::rowCount(const QModelIndex& parent) const { return parent.column() > 0 ? 0 : EntryOf(parent).childCount; }

}  // namespace desktop
