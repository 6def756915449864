#include "program/desktop/panels/TreeRows.h"

#include <unordered_set>

#include "engine/undo/MoveNodes.h"
#include "host/Application.h"
#include "program/desktop/Dragging.h"
#include "program/desktop/SceneCommands.h"
#include "program/desktop/Text.h"

namespace desktop {

namespace {

constexpr int kLongestName = 500;

// Those of the elements that are wanted, each before what is below it.
std::vector<engine::NodeId> InOrder(const FlatTree& shape,
                                    const std::unordered_set<engine::NodeId>& wanted) {
  std::vector<engine::NodeId> found;
  std::vector<int> ahead = {0};
  while (!ahead.empty()) {
    const FlatTree::Entry& entry = shape.At(ahead.back());
    ahead.pop_back();
    if (wanted.contains(entry.id)) found.push_back(entry.id);
    for (int child = entry.childCount - 1; child >= 0; --child)
      ahead.push_back(entry.firstChild + child);
  }
  return found;
}

}  // namespace

QString NameInRow(const host::String& name) {
  return ToQt(name).left(kLongestName).replace('\n', ' ');
}

QString NameInTip(const host::String& name, const QString& about) {
  return "<qt>" + NameInRow(name).toHtmlEscaped() + "<br>" + about.toHtmlEscaped() + "</qt>";
}

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
  return place == 0 ? QModelIndex()
                    : createIndex(shape_.At(place).row, column, static_cast<quintptr>(place));
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

QMimeData* TreeRows::mimeData(const QModelIndexList& indexes) const {
  std::unordered_set<engine::NodeId> ids;
  for (const QModelIndex& index : indexes) {
    if (index.column() == 0) ids.insert(IdAt(index));
  }
  return DraggedNodes(mimeTypes().front().toLatin1().constData(), InOrder(shape_, ids));
}

bool TreeRows::CanMoveTo(const std::vector<engine::NodeId>& ids, const QModelIndex& parent) const {
  if (ids.empty() || !Document()) return false;
  const std::unordered_set<engine::NodeId> moved(ids.begin(), ids.end());
  const host::GeListNode* above = NodeAt(parent);
  while (above && !moved.contains(engine::IdOf(*above))) above = above->GetUp();
  return !above;
}

bool TreeRows::MoveTo(const std::vector<engine::NodeId>& ids, int row, const QModelIndex& parent) {
  host::BaseDocument* doc = Document();
  if (!doc) return false;
  std::vector<host::BaseList2D*> nodes;
  for (const engine::NodeId id : ids) {
    if (host::BaseList2D* node = engine::FindNode(doc, id)) nodes.push_back(node);
  }
  const QModelIndex above = parent.siblingAtColumn(0);
  if (row < 0 || row > rowCount(above)) row = rowCount(above);
  const bool moved =
      engine::MoveNodes(*doc, Topmost(nodes), NodeAt(above), NodeAt(index(row - 1, 0, above)));
  if (moved) host::EventAdd();
  return moved;
}

int TreeRows::rowCount(const QModelIndex& parent) const {
  return parent.column() > 0 ? 0 : EntryOf(parent).childCount;
}

}  // namespace desktop
