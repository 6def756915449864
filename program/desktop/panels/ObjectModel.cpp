#include "program/desktop/panels/ObjectModel.h"

#include "engine/editing/MaterialCommands.h"
#include "engine/editing/Selection.h"
#include "engine/render/Primitives.h"
#include "engine/scene/ElementState.h"
#include "engine/scene/NodeTypes.h"
#include "engine/undo/Undo.h"
#include "host/BaseObject.h"
#include "program/desktop/Colors.h"
#include "program/desktop/Icons.h"
#include "program/desktop/Text.h"
#include "program/desktop/background/SlicedEdit.h"

namespace desktop {

using host::BaseObject;
using host::LONG;

namespace {

constexpr int kLongestLayerName = 500;

struct ColumnHeading {
  const char* icon;
  const char* help;
};

constexpr ColumnHeading kHeadings[ObjectModel::kColumnCount] = {
    {"", ""},
    {"layer", "Layer: click to put the object on another one"},
    {"eye",
     "Visible in the editor: click to switch, drag over others to switch them alike (Space)"},
    {"render",
     "Visible in renders: click to switch, drag over others to switch them alike (Shift+Space)"},
    {"generator-on", "Generator: whether the object makes its shape"},
    {"tag-other", "Tags: click to select one"},
};

// Also anything that is switched off, whatever it is, or nobody could switch it on again.
bool HasGenerator(const BaseObject& object) {
  return engine::IsPrimitive(object.GetType()) || !object.GetDeformMode();
}

// An undefined mode follows the nearest parent with a mode of its own; visible without one.
// O(depth), asked for rows that are drawn only.
bool IsHidden(const BaseObject& object, engine::Switch which) {
  const BaseObject* decides = &object;
  while (decides && engine::SwitchOf(*decides, which) == host::MODE_UNDEF)
    decides = decides->GetUp();
  return decides && engine::SwitchOf(*decides, which) == host::MODE_OFF;
}

QString SwitchExplanation(const BaseObject& object, engine::Switch which) {
  if (which == engine::Switch::kGenerator)
    return object.GetDeformMode() ? "Generator: on" : "Generator: off";
  const QString where = which == engine::Switch::kEditor ? "Editor" : "Render";
  switch (engine::SwitchOf(object, which)) {
    case host::MODE_ON:
      return where + ": on";
    case host::MODE_OFF:
      return where + ": off";
    default:
      return where + ": follows its parent, " + (IsHidden(object, which) ? "hidden" : "visible");
  }
}

QVariant SwitchData(const BaseObject& object, engine::Switch which, int role) {
  if (which == engine::Switch::kGenerator && !HasGenerator(object)) return {};
  if (role == ObjectModel::kMode) return engine::SwitchOf(object, which);
  if (role == ObjectModel::kHidden)
    return which != engine::Switch::kGenerator && IsHidden(object, which);
  if (role == Qt::ToolTipRole || role == Qt::AccessibleTextRole)
    return SwitchExplanation(object, which);
  return {};
}

QVariant LayerData(const BaseObject& object, int role) {
  const host::LayerObject* layer = object.GetLayerObject(object.GetDocument());
  if (role == Qt::ToolTipRole || role == Qt::AccessibleTextRole)
    return layer ? "Layer: " + ToQt(layer->GetName()).left(kLongestLayerName)
                 : QString("On no layer");
  if (role != Qt::BackgroundRole || !layer) return {};
  return colors::Shown(engine::OwnLayerData(*layer).color);
}

}  // namespace

QString ObjectIcon(LONG type) {
  switch (type) {
    case host::Onull:
      return "object-null";
    case host::Opolygon:
      return "object-polygon";
    case host::Ocamera:
      return "object-camera";
    case host::Olight:
      return "object-light";
    default:
      return engine::IsPrimitive(type) ? "object-primitive" : "object-other";
  }
}

std::vector<BaseObject*> SelectedWith(BaseObject& object) {
  const host::BaseDocument* doc = object.GetDocument();
  if (!doc || !object.GetBit(host::BIT_ACTIVE)) return {&object};
  return engine::SelectedObjects(*doc);
}

// The tree is only read when its own change count differs: a moved object leaves it as it is.
bool ObjectModel::Update(host::BaseDocument* doc) {
  const host::ULLONG count = doc ? engine::TreeChangeCount(*doc) : 0;
  const bool isNew = !IsOf(doc) || count != seen_;
  if (!isNew && !filterChanged_) return false;
  seen_ = count;
  filterChanged_ = false;
  if (isNew) whole_ = FlatTree(doc ? doc->GetFirstObject() : nullptr);
  Take(doc, IsFiltered() ? Found(doc) : whole_);
  return true;
}

// With all that is above what is found, so that one sees where it is.
FlatTree ObjectModel::Found(const host::BaseDocument* doc) const {
  return whole_.Kept([&](engine::NodeId id) {
    const BaseObject* object = engine::AsObject(engine::FindNode(doc, id));
    return object && IsFound(*object);
  });
}

bool ObjectModel::IsFound(const BaseObject& object) const {
  return ToQt(object.GetName()).contains(filter_, Qt::CaseInsensitive);
}

void ObjectModel::SetFilter(const QString& text) {
  filterChanged_ = filterChanged_ || text != filter_;
  filter_ = text;
}

BaseObject* ObjectModel::ObjectAt(const QModelIndex& index) const {
  return engine::AsObject(NodeAt(index));
}

QVariant ObjectModel::data(const QModelIndex& index, int role) const {
  const BaseObject* object = ObjectAt(index);
  if (!object) return {};
  if (index.column() == kName) return NameData(*object, role);
  if (index.column() == kLayer) return LayerData(*object, role);
  return IsSwitch(index) ? SwitchData(*object, SwitchIn(index.column()), role) : QVariant();
}

QVariant ObjectModel::NameData(const BaseObject& object, int role) const {
  switch (role) {
    case Qt::EditRole:
      return ToQt(object.GetName());
    case Qt::DisplayRole:
      return NameInRow(object.GetName());
    case Qt::AccessibleTextRole:
      return NameInRow(object.GetName()) + (object.GetBit(host::BIT_ACTIVE) ? ", selected" : "");
    case Qt::ToolTipRole:
      return NameInTip(object.GetName(), ToQt(engine::TypeName(object.GetType())));
    case Qt::AccessibleDescriptionRole:
      return ToQt(engine::TypeName(object.GetType()));
    case Qt::DecorationRole:
      return Icon(ObjectIcon(object.GetType()));
    default:
      return {};
  }
}

QVariant ObjectModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || section < 0 || section >= kColumnCount) return {};
  if (section == kName) return role == Qt::DisplayRole ? QVariant("Name") : QVariant();
  if (role == Qt::DecorationRole) return Icon(kHeadings[section].icon);
  if (role == Qt::ToolTipRole || role == Qt::AccessibleTextRole)
    return QString(kHeadings[section].help);
  return {};
}

bool ObjectModel::setData(const QModelIndex& index, const QVariant& value, int role) {
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

Qt::ItemFlags ObjectModel::flags(const QModelIndex& index) const {
  if (!index.isValid()) return Qt::ItemIsDropEnabled;
  const Qt::ItemFlags plain = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDropEnabled;
  return index.column() == kName ? plain | Qt::ItemIsEditable | Qt::ItemIsDragEnabled : plain;
}

// Materials go onto rows.
bool ObjectModel::canDropMimeData(const QMimeData* data, Qt::DropAction, int row, int,
                                  const QModelIndex& parent) const {
  if (!data || !Document()) return false;
  if (data->hasFormat(kMaterialMime)) return row < 0 && parent.isValid();
  if (!data->hasFormat(kObjectsMime)) return false;
  // Dragged objects are always selected ones: none may go below itself.
  const BaseObject* above = ObjectAt(parent);
  while (above && !above->GetBit(host::BIT_ACTIVE)) above = above->GetUp();
  return !above;
}

// A material dropped on a selected object goes to all selected ones.
bool ObjectModel::dropMimeData(const QMimeData* data, Qt::DropAction, int row, int,
                               const QModelIndex& parent) {
  host::BaseDocument* doc = Document();
  if (!doc) return false;
  BaseObject* on = ObjectAt(parent);
  const std::vector<engine::NodeId> materials = DroppedNodes(data, kMaterialMime);
  if (!materials.empty()) {
    auto* material = engine::AsMaterial(engine::FindNode(doc, materials.front()));
    if (on && material) RunEdit(*doc, engine::AssignMaterial(*material, SelectedWith(*on)));
    return on && material;
  }
  return MoveTo(DroppedNodes(data, kObjectsMime), row, parent);
}

namespace {

// As the toolkit's flags mean it, for one object.
host::LONG ModeFor(const host::BaseObject& object, QItemSelectionModel::SelectionFlags command) {
  const bool takesOff =
      command.testFlag(QItemSelectionModel::Deselect) ||
      (command.testFlag(QItemSelectionModel::Toggle) && object.GetBit(host::BIT_ACTIVE));
  return takesOff ? host::SELECTION_SUB : host::SELECTION_ADD;
}

}  // namespace

bool ObjectSelection::Has(const QModelIndex& index) const {
  const host::BaseObject* object = model_.ObjectAt(index);
  return object && object->GetBit(host::BIT_ACTIVE);
}

// The selection is that of the document, written straight into it; the toolkit's own ranges stay
// empty. So a million selected objects need no ranges, and selecting costs what is selected.
void ObjectSelection::select(const QItemSelection& selection, SelectionFlags command) {
  host::BaseDocument* doc = model_.Document();
  if (!doc || command == NoUpdate) return;
  if (command.testFlag(Clear)) {
    doc->SetActiveObject(nullptr);
    doc->SetActiveTag(nullptr);
  }
  for (const QItemSelectionRange& range : selection) {
    const int above = static_cast<int>(range.parent().isValid() ? range.parent().internalId() : 0);
    const int first = model_.Shape().At(above).firstChild;
    for (int row = range.top(); row <= range.bottom(); ++row) {
      host::BaseObject* object =
          engine::AsObject(engine::FindNode(doc, model_.Shape().At(first + row).id));
      if (object) doc->SetActiveObject(object, ModeFor(*object, command));
    }
  }
  host::EventAdd();
}

}  // namespace desktop
