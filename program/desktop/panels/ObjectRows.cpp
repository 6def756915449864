#include "program/desktop/panels/ObjectRows.h"

#include "engine/undo/Undo.h"
#include "host/BaseObject.h"
#include "program/desktop/Text.h"

namespace desktop {

using host::BaseObject;
using host::LONG;

namespace {

constexpr int kLongestName = 500;

LONG ModeOf(const BaseObject& object, int column) {
  return column == ObjectRows::kEditor ? object.GetEditorMode() : object.GetRenderMode();
}

// What an undefined mode comes to.
bool IsHidden(const BaseObject& object, int column) {
  const BaseObject* decides = &object;
  while (decides && ModeOf(*decides, column) == host::MODE_UNDEF) decides = decides->GetUp();
  return decides && ModeOf(*decides, column) == host::MODE_OFF;
}

QString Explanation(const BaseObject& object, int column) {
  const QString where = column == ObjectRows::kEditor ? "Editor" : "Render";
  const bool hidden = IsHidden(object, column);
  switch (ModeOf(object, column)) {
    case host::MODE_ON:
      return where + ": on";
    case host::MODE_OFF:
      return where + ": off";
    default:
      return where + ": follows its parent, " + (hidden ? "hidden" : "visible");
  }
}

}  // namespace

std::vector<ObjectRows::Entry> ObjectRows::Read(const host::BaseDocument* doc) {
  std::vector<Entry> entries = {Entry()};
  std::vector<const BaseObject*> objects = {nullptr};
  for (std::size_t place = 0; place < objects.size(); ++place) {
    const BaseObject* child = place > 0 ? objects[place]->GetDown() : doc ? doc->GetFirstObject() : nullptr;
    entries[place].firstChild = static_cast<int>(entries.size());
    for (; child; child = child->GetNext()) {
      entries.push_back({engine::IdOf(*child), static_cast<int>(place), entries[place].childCount++});
      objects.push_back(child);
    }
  }
  return entries;
}

bool ObjectRows::Update(host::BaseDocument* doc) {
  std::vector<Entry> entries = Read(doc);
  if (doc_ == IdentityOf(doc) && entries == entries_) {
    if (rowCount() > 0) emit dataChanged(index(0, 0), index(rowCount() - 1, kColumnCount - 1));
    return false;
  }
  beginResetModel();
  doc_ = IdentityOf(doc);
  entries_ = std::move(entries);
  places_.clear();
  for (std::size_t place = 1; place < entries_.size(); ++place) places_[entries_[place].id] = static_cast<int>(place);
  endResetModel();
  return true;
}

BaseObject* ObjectRows::ObjectAt(const QModelIndex& index) const {
  const host::BaseDocument* doc = index.isValid() ? Document() : nullptr;
  return doc ? engine::AsObject(engine::FindNode(doc, EntryOf(index).id)) : nullptr;
}

engine::NodeId ObjectRows::IdAt(const QModelIndex& index) const { return EntryOf(index).id; }

QModelIndex ObjectRows::IndexOf(engine::NodeId object, int column) const {
  const auto it = places_.find(object);
  if (it == places_.end()) return {};
  return createIndex(entries_[static_cast<std::size_t>(it->second)].row, column, static_cast<quintptr>(it->second));
}

QModelIndex ObjectRows::index(int row, int column, const QModelIndex& parent) const {
  if (parent.isValid() && parent.column() != 0) return {};
  const Entry& above = EntryOf(parent);
  if (row < 0 || row >= above.childCount || column < 0 || column >= kColumnCount) return {};
  return createIndex(row, column, static_cast<quintptr>(above.firstChild + row));
}

QModelIndex ObjectRows::parent(const QModelIndex& index) const {
  const int above = index.isValid() ? EntryOf(index).parent : 0;
  return above == 0 ? QModelIndex() : createIndex(entries_[static_cast<std::size_t>(above)].row, 0, static_cast<quintptr>(above));
}

int ObjectRows::rowCount(const QModelIndex& parent) const { return parent.column() > 0 ? 0 : EntryOf(parent).childCount; }

QVariant ObjectRows::data(const QModelIndex& index, int role) const {
  const BaseObject* object = ObjectAt(index);
  if (!object) return {};
  if (index.column() != kName) return ModeData(*object, index.column(), role);
  if (role == Qt::EditRole) return ToQt(object->GetName());
  if (role == Qt::DisplayRole) return ToQt(object->GetName()).left(kLongestName).replace('\n', ' ');
  if (role == Qt::ToolTipRole) return ToQt(engine::TypeName(object->GetType()));
  return {};
}

QVariant ObjectRows::ModeData(const BaseObject& object, int column, int role) const {
  if (role == kMode) return ModeOf(object, column);
  if (role == kHidden) return IsHidden(object, column);
  if (role == Qt::ToolTipRole) return Explanation(object, column);
  return {};
}

bool ObjectRows::setData(const QModelIndex& index, const QVariant& value, int role) {
  BaseObject* object = index.column() == kName && role == Qt::EditRole ? ObjectAt(index) : nullptr;
  if (!object || value.toString().isEmpty()) return false;
  if (value.toString() == ToQt(object->GetName())) return true;
  {
    const engine::UndoScope scope(*Document(), "Rename");
    Document()->AddUndo(host::UNDO_CHANGE, object);
    object->SetName(ToHost(value.toString()));
  }
  host::EventAdd();
  emit dataChanged(index, index);
  return true;
}

void ObjectRows::SetMode(const QModelIndexList& rows, int column, LONG mode) {
  host::BaseDocument* doc = Document();
  if (!doc || rows.isEmpty()) return;
  {
    const engine::UndoScope scope(*doc, "Visibility");
    for (const QModelIndex& row : rows) {
      BaseObject* object = ObjectAt(row);
      if (!object || ModeOf(*object, column) == mode) continue;
      doc->AddUndo(host::UNDO_CHANGE, object);
      column == kEditor ? object->SetEditorMode(mode) : object->SetRenderMode(mode);
    }
  }
  doc->SetChanged();
  host::EventAdd();
}

Qt::ItemFlags ObjectRows::flags(const QModelIndex& index) const {
  if (!index.isValid()) return Qt::NoItemFlags;
  const Qt::ItemFlags plain = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
  return index.column() == kName ? plain | Qt::ItemIsEditable : plain;
}

}  // namespace desktop
