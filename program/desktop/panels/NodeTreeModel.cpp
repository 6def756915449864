// A tree of the document as a flat list in breadth-first order: the children of a node stand in a
// row behind each other, so that index, parent and row are array accesses, and a chain of a million
// nodes costs neither recursion nor memory beyond its entries.
#include "program/desktop/panels/NodeTreeModel.h"

#include <bit>
#include <random>
#include <unordered_set>

#include "engine/editing/Selection.h"
#include "engine/scene/NodeIds.h"
#include "engine/undo/MoveNodes.h"
#include "host/Application.h"
#include "program/desktop/Text.h"
#include "program/desktop/panels/DragAndDrop.h"

namespace desktop {

namespace {

// Where to look first in a table of so many slots, a power of 2. Different in every process: a file
// cannot choose identities that fall onto one slot.
std::size_t FirstSlot(engine::NodeId id, std::size_t slotCount) {
  static const engine::NodeId factor =
      (engine::NodeId{std::random_device()()} << 32 | std::random_device()()) | 1;
  return static_cast<std::size_t>((id * factor) >> (64 - std::bit_width(slotCount - 1)));
}

}  // namespace

// Place 0 is the invisible root. O(nodes).
FlatTree::FlatTree(const host::GeListNode* first) : entries_(1) {
  std::vector<const host::GeListNode*> nodes = {nullptr};
  for (std::size_t place = 0; place < nodes.size(); ++place) {
    const host::GeListNode* child = place > 0 ? nodes[place]->GetDown() : first;
    entries_[place].firstChild = static_cast<int>(entries_.size());
    for (; child; child = child->GetNext()) {
      entries_.push_back(
          {engine::IdOf(*child), static_cast<int>(place), entries_[place].childCount++});
      nodes.push_back(child);
    }
  }
}

// Kept nodes keep all that is above them. Backwards first, since children stand behind their
// parents: one pass marks them all. Then forwards, in which order the parents have their new places
// already.
FlatTree FlatTree::Kept(const std::function<bool(engine::NodeId)>& keep) const {
  std::vector<int> newPlaces(entries_.size(), 0);  // first 1 for those that stay
  for (std::size_t place = entries_.size() - 1; place > 0; --place) {
    if (newPlaces[place] == 0 && !keep(entries_[place].id)) continue;
    newPlaces[place] = 1;
    newPlaces[static_cast<std::size_t>(entries_[place].parent)] = 1;
  }
  FlatTree kept;
  newPlaces[0] = 0;
  for (std::size_t place = 1; place < entries_.size(); ++place) {
    if (newPlaces[place] == 0) continue;
    const int parent = newPlaces[static_cast<std::size_t>(entries_[place].parent)];
    newPlaces[place] = static_cast<int>(kept.entries_.size());
    Entry& above = kept.entries_[static_cast<std::size_t>(parent)];
    if (above.childCount == 0) above.firstChild = newPlaces[place];
    const int row = above.childCount++;
    kept.entries_.push_back({entries_[place].id, parent, row});
  }
  return kept;
}

// Open addressing with linear probing over a table twice as large as the nodes; made with the first
// question, and shared by copies.
int FlatTree::PlaceOf(engine::NodeId id) const {
  if (id == 0 || entries_.size() == 1) return 0;
  if (!places_) {
    std::vector<int> places(std::bit_ceil(2 * entries_.size()), 0);
    for (std::size_t place = 1; place < entries_.size(); ++place) {
      std::size_t slot = FirstSlot(entries_[place].id, places.size());
      while (places[slot] != 0) slot = (slot + 1) % places.size();
      places[slot] = static_cast<int>(place);
    }
    places_ = std::make_shared<const std::vector<int>>(std::move(places));
  }
  std::size_t slot = FirstSlot(id, places_->size());
  while ((*places_)[slot] != 0 && At((*places_)[slot]).id != id)
    slot = (slot + 1) % places_->size();
  return (*places_)[slot];
}

namespace {

constexpr int kLongestRow = 500;

// The wanted elements in the order of the tree, each before what is below it: the order in which
// they are put down again.
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
  return ToQt(name).left(kLongestRow).replace('\n', ' ');
}

// As rich text, escaped: a plain text that looks like markup would be taken for it.
QString NameInTip(const host::String& name, const QString& about) {
  return "<qt>" + NameInRow(name).toHtmlEscaped() + "<br>" + about.toHtmlEscaped() + "</qt>";
}

// A reset and no moves of rows: telling the toolkit of each would be quadratic in what moved.
void NodeTreeModel::Take(const host::BaseDocument* doc, FlatTree shape) {
  beginResetModel();
  doc_ = IdentityOf(doc);
  shape_ = std::move(shape);
  endResetModel();
}

bool NodeTreeModel::TakeWhatDiffers(const host::BaseDocument* doc, FlatTree shape) {
  if (IsOf(doc) && shape == shape_) return false;
  Take(doc, std::move(shape));
  return true;
}

host::BaseList2D* NodeTreeModel::NodeAt(const QModelIndex& index) const {
  const host::BaseDocument* doc = index.isValid() ? Document() : nullptr;
  return doc ? engine::FindNode(doc, EntryOf(index).id) : nullptr;
}

// The ID of an index is its place.
QModelIndex NodeTreeModel::IndexAt(int place, int column) const {
  return place == 0 ? QModelIndex()
                    : createIndex(shape_.At(place).row, column, static_cast<quintptr>(place));
}

QModelIndex NodeTreeModel::index(int row, int column, const QModelIndex& parent) const {
  if (parent.isValid() && parent.column() != 0) return {};
  const FlatTree::Entry& above = EntryOf(parent);
  if (row < 0 || row >= above.childCount || column < 0 || column >= columnCount()) return {};
  return createIndex(row, column,
                     static_cast<quintptr>(above.firstChild) + static_cast<quintptr>(row));
}

QModelIndex NodeTreeModel::parent(const QModelIndex& index) const {
  return index.isValid() ? IndexAt(EntryOf(index).parent) : QModelIndex();
}

QMimeData* NodeTreeModel::mimeData(const QModelIndexList& indexes) const {
  std::unordered_set<engine::NodeId> ids;
  for (const QModelIndex& index : indexes) {
    if (index.column() == 0) ids.insert(IdAt(index));
  }
  return DraggedNodes(mimeTypes().front().toLatin1().constData(), InOrder(shape_, ids));
}

// Nothing goes below itself. O(depth).
bool NodeTreeModel::CanMoveTo(const std::vector<engine::NodeId>& ids,
                              const QModelIndex& parent) const {
  if (ids.empty() || !Document()) return false;
  const std::unordered_set<engine::NodeId> moved(ids.begin(), ids.end());
  const host::GeListNode* above = NodeAt(parent);
  while (above && !moved.contains(engine::IdOf(*above))) above = above->GetUp();
  return !above;
}

// `row` below 0 means onto the parent: behind its last child. Nodes whose parents move as well go
// with them.
bool NodeTreeModel::MoveTo(const std::vector<engine::NodeId>& ids, int row,
                           const QModelIndex& parent) {
  host::BaseDocument* doc = Document();
  if (!doc) return false;
  std::vector<host::BaseList2D*> nodes;
  for (const engine::NodeId id : ids) {
    if (host::BaseList2D* node = engine::FindNode(doc, id)) nodes.push_back(node);
  }
  const QModelIndex above = parent.siblingAtColumn(0);
  if (row < 0 || row > rowCount(above)) row = rowCount(above);
  const bool moved = engine::MoveNodes(*doc, engine::Topmost(nodes), NodeAt(above),
                                       NodeAt(index(row - 1, 0, above)));
  if (moved) host::EventAdd();
  return moved;
}

int NodeTreeModel::rowCount(const QModelIndex& parent) const {
  return parent.column() > 0 ? 0 : EntryOf(parent).childCount;
}

}  // namespace desktop
