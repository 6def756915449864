#include "program/desktop/panels/LayerRows.h"

#include <QColor>

#include "program/desktop/Dragging.h"
#include "program/desktop/Icons.h"
#include "program/desktop/Text.h"
#include "program/desktop/panels/LayerSwitches.h"

namespace desktop {

using host::LayerObject;

namespace {

constexpr int kLongestName = 500;

std::size_t SwitchNumber(int column) { return static_cast<std::size_t>(column - LayerRows::kFirstSwitch); }

QColor ToColor(const host::Vector& color) {
  const auto channel = [](double value) { return static_cast<float>(value >= 0 ? std::min(value, 1.0) : 0.0); };
  return QColor::fromRgbF(channel(color.x), channel(color.y), channel(color.z));
}

}  // namespace

bool LayerRows::Update(host::BaseDocument* doc) {
  FlatTree shape(doc ? doc->GetLayerObjectRoot()->GetFirst() : nullptr);
  if (doc_ == IdentityOf(doc) && shape == shape_) return false;
  beginResetModel();
  doc_ = IdentityOf(doc);
  shape_ = std::move(shape);
  endResetModel();
  return true;
}

LayerObject* LayerRows::LayerAt(const QModelIndex& index) const {
  const host::BaseDocument* doc = index.isValid() ? Document() : nullptr;
  return doc ? engine::AsLayer(engine::FindNode(doc, EntryOf(index).id)) : nullptr;
}

LayerList LayerRows::LayersAt(const QModelIndexList& rows) const {
  LayerList layers;
  for (const QModelIndex& row : rows) {
    if (LayerObject* layer = LayerAt(row)) layers.push_back(layer);
  }
  return layers;
}

QModelIndex LayerRows::IndexOf(engine::NodeId layer, int column) const {
  const int place = shape_.PlaceOf(layer);
  return place == 0 ? QModelIndex() : createIndex(shape_.At(place).row, column, static_cast<quintptr>(place));
}

QModelIndex LayerRows::index(int row, int column, const QModelIndex& parent) const {
  if (parent.isValid() && parent.column() != 0) return {};
  const FlatTree::Entry& above = EntryOf(parent);
  if (row < 0 || row >= above.childCount || column < 0 || column >= kColumnCount) return {};
  return createIndex(row, column, static_cast<quintptr>(above.firstChild + row));
}

QModelIndex LayerRows::parent(const QModelIndex& index) const {
  const int above = index.isValid() ? EntryOf(index).parent : 0;
  return above == 0 ? QModelIndex() : createIndex(shape_.At(above).row, 0, static_cast<quintptr>(above));
}

int LayerRows::rowCount(const QModelIndex& parent) const { return parent.column() > 0 ? 0 : EntryOf(parent).childCount; }

QVariant LayerRows::data(const QModelIndex& index, int role) const {
  const LayerObject* layer = LayerAt(index);
  if (!layer) return {};
  const host::LayerData own = layer->GetLayerData(Document());
  if (IsSwitch(index)) return SwitchData(own, SwitchNumber(index.column()), role);
  if (index.column() == kColor) {
    if (role == Qt::BackgroundRole) return ToColor(own.color);
    return role == Qt::ToolTipRole ? QVariant("Color: click to change it") : QVariant();
  }
  if (role == Qt::EditRole) return ToQt(layer->GetName());
  if (role == Qt::DisplayRole) return ToQt(layer->GetName()).left(kLongestName).replace('\n', ' ');
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
  if (section == kName && role == Qt::TextAlignmentRole) return QVariant(Qt::AlignLeft | Qt::AlignVCenter);
  if (section < kFirstSwitch || section >= kColumnCount) return {};
  const LayerSwitch& row = kLayerSwitches.at(SwitchNumber(section));
  if (role == Qt::DecorationRole) return Icon(row.icon);
  if (role == Qt::ToolTipRole) return QString("%1: %2").arg(row.name, row.help);
  return {};
}

bool LayerRows::setData(const QModelIndex& index, const QVariant& value, int role) {
  LayerObject* layer = index.column() == kName && role == Qt::EditRole ? LayerAt(index) : nullptr;
  if (!layer || value.toString().isEmpty()) return false;
  if (value.toString() != ToQt(layer->GetName())) RenameLayer(*Document(), *layer, ToHost(value.toString()));
  emit dataChanged(index, index);
  return true;
}

Qt::ItemFlags LayerRows::flags(const QModelIndex& index) const {
  if (!index.isValid()) return Qt::ItemIsDropEnabled;
  const Qt::ItemFlags plain = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDropEnabled;
  return index.column() == kName ? plain | Qt::ItemIsEditable : plain;
}

QStringList LayerRows::mimeTypes() const { return {kObjectsMime}; }

bool LayerRows::canDropMimeData(const QMimeData* data, Qt::DropAction, int, int, const QModelIndex&) const {
  return Document() && !DroppedNodes(data, kObjectsMime).empty();
}

bool LayerRows::dropMimeData(const QMimeData* data, Qt::DropAction, int, int, const QModelIndex& parent) {
  host::BaseDocument* doc = Document();
  std::vector<host::BaseObject*> objects;
  for (const engine::NodeId id : DroppedNodes(data, kObjectsMime)) {
    if (host::BaseObject* object = engine::AsObject(engine::FindNode(doc, id))) objects.push_back(object);
  }
  if (objects.empty()) return false;
  AssignLayer(*doc, objects, LayerAt(parent));
  return true;
}

}  // namespace desktop
