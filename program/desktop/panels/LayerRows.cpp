#include "program/desktop/panels/LayerRows.h"

#include "program/desktop/Colors.h"
#include "program/desktop/Icons.h"
#include "program/desktop/Text.h"
#include "program/desktop/panels/LayerSwitches.h"

namespace desktop {

using host::LayerObject;

namespace {

std::size_t SwitchNumber(int column) {
  return static_cast<std::size_t>(column - LayerRows::kFirstSwitch);
}

}  // namespace

bool LayerRows::Update(host::BaseDocument* doc) {
  return TakeWhatDiffers(doc, FlatTree(doc ? doc->GetLayerObjectRoot()->GetFirst() : nullptr));
}

LayerObject* LayerRows::LayerAt(const QModelIndex& index) const {
  return engine::AsLayer(NodeAt(index));
}

LayerList LayerRows::LayersAt(const QModelIndexList& rows) const {
  LayerList layers;
  for (const QModelIndex& row : rows) {
    if (LayerObject* layer = LayerAt(row)) layers.push_back(layer);
  }
  return layers;
}

QVariant LayerRows::data(const QModelIndex& index, int role) const {
  const LayerObject* layer = LayerAt(index);
  if (!layer) return {};
  const host::LayerData own = layer->GetLayerData(Document());
  if (IsSwitch(index)) return SwitchData(own, SwitchNumber(index.column()), role);
  if (index.column() == kColor) {
    if (role == Qt::BackgroundRole) return colors::Shown(own.color);
    const bool isText = role == Qt::ToolTipRole || role == Qt::AccessibleTextRole;
    return isText ? QVariant("Color: click to change it") : QVariant();
  }
  if (role == Qt::EditRole) return ToQt(layer->GetName());
  if (role == Qt::DisplayRole) return NameInRow(layer->GetName());
  if (role == Qt::ToolTipRole) return NameInTip(layer->GetName(), "Layer");
  return {};
}

QVariant LayerRows::SwitchData(const host::LayerData& layer, std::size_t number, int role) const {
  const LayerSwitch& row = kLayerSwitches.at(number);
  const bool isOn = layer.*(row.flag);
  if (role == kIsOn) return isOn;
  if (role == Qt::DecorationRole) return Icon(row.icon);
  if (role == Qt::AccessibleTextRole || role == Qt::ToolTipRole) {
    return QString("%1: %2 (%3)").arg(row.name, isOn ? "on" : "off", row.help);
  }
  return {};
}

QVariant LayerRows::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal) return {};
  if (section == kName && role == Qt::DisplayRole) return QString("Layer");
  if (section == kName && role == Qt::TextAlignmentRole)
    return QVariant(Qt::AlignLeft | Qt::AlignVCenter);
  if (section < kFirstSwitch || section >= kColumnCount) return {};
  const LayerSwitch& row = kLayerSwitches.at(SwitchNumber(section));
  if (role == Qt::DecorationRole) return Icon(row.icon);
  if (role == Qt::ToolTipRole) return QString("%1: %2").arg(row.name, row.help);
  return {};
}

bool LayerRows::setData(const QModelIndex& index, const QVariant& value, int role) {
  LayerObject* layer = index.column() == kName && role == Qt::EditRole ? LayerAt(index) : nullptr;
  if (!layer || value.toString().isEmpty()) return false;
  if (value.toString() != ToQt(layer->GetName()))
    RenameLayer(*Document(), *layer, ToHost(value.toString()));
  emit dataChanged(index, index);
  return true;
}

Qt::ItemFlags LayerRows::flags(const QModelIndex& index) const {
  if (!index.isValid()) return Qt::ItemIsDropEnabled;
  const Qt::ItemFlags plain = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDropEnabled;
  return index.column() == kName ? plain | Qt::ItemIsEditable | Qt::ItemIsDragEnabled : plain;
}

bool LayerRows::canDropMimeData(const QMimeData* data, Qt::DropAction, int, int,
                                const QModelIndex& parent) const {
  if (!data || !Document()) return false;
  return data->hasFormat(kObjectsMime) || CanMoveTo(DroppedNodes(data, kLayersMime), parent);
}

bool LayerRows::dropMimeData(const QMimeData* data, Qt::DropAction, int row, int,
                             const QModelIndex& parent) {
  const std::vector<engine::NodeId> layers = DroppedNodes(data, kLayersMime);
  if (!layers.empty()) return MoveTo(layers, row, parent);
  host::BaseDocument* doc = Document();
  std::vector<host::BaseObject*> objects;
  for (const engine::NodeId id : DroppedNodes(data, kObjectsMime)) {
    if (host::BaseObject* object = engine::AsObject(engine::FindNode(doc, id)))
      objects.push_back(object);
  }
  if (objects.empty()) return false;
  AssignLayer(*doc, objects, LayerAt(parent));
  return true;
}

}  // namespace desktop
