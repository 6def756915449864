#include "program/desktop/panels/LayersPanel.h"

#include <QColorDialog>
#include <QDragEnterEvent>
#include <QHeaderView>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

#include "engine/editing/LayerCommands.h"
#include "engine/editing/Selection.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/TreeWalk.h"
#include "program/desktop/Colors.h"
#include "program/desktop/Icons.h"
#include "program/desktop/Text.h"
#include "program/desktop/background/SlicedEdit.h"
#include "program/desktop/panels/DragAndDrop.h"
#include "program/desktop/panels/EmptyText.h"

namespace desktop {

using host::LayerObject;

namespace {

// In the order of engine::kLayerSwitchTable.
constexpr std::array<const char*, 9> kSwitchIcons = {
    "solo",       "eye",      "render", "manager", "lock", "object-generator", "object-deformer",
    "expression", "animation"};
static_assert(kSwitchIcons.size() == engine::kLayerSwitchTable.size());

std::size_t SwitchNumber(int column) {
  return static_cast<std::size_t>(column - LayerModel::kFirstSwitch);
}

}  // namespace

bool LayerModel::Update(host::BaseDocument* doc) {
  return TakeWhatDiffers(doc, FlatTree(doc ? doc->GetLayerObjectRoot()->GetFirst() : nullptr));
}

LayerObject* LayerModel::LayerAt(const QModelIndex& index) const {
  return engine::AsLayer(NodeAt(index));
}

engine::LayerList LayerModel::LayersAt(const QModelIndexList& rows) const {
  engine::LayerList layers;
  for (const QModelIndex& row : rows) {
    if (LayerObject* layer = LayerAt(row)) layers.push_back(layer);
  }
  return layers;
}

// GetLayerData of a layer gives its own flags, whatever layer is above it.
QVariant LayerModel::data(const QModelIndex& index, int role) const {
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

QVariant LayerModel::SwitchData(const host::LayerData& layer, std::size_t number, int role) const {
  const engine::LayerSwitch& row = engine::kLayerSwitchTable.at(number);
  const bool isOn = layer.*(row.flag);
  if (role == kIsOn) return isOn;
  if (role == Qt::DecorationRole) return Icon(kSwitchIcons.at(number));
  if (role == Qt::AccessibleTextRole || role == Qt::ToolTipRole) {
    return QString("%1: %2 (%3)").arg(row.name, isOn ? "on" : "off", row.help);
  }
  return {};
}

QVariant LayerModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal) return {};
  if (section == kName && role == Qt::DisplayRole) return QString("Layer");
  if (section == kName && role == Qt::TextAlignmentRole)
    return QVariant(Qt::AlignLeft | Qt::AlignVCenter);
  if (section < kFirstSwitch || section >= kColumnCount) return {};
  const engine::LayerSwitch& row = engine::kLayerSwitchTable.at(SwitchNumber(section));
  if (role == Qt::DecorationRole) return Icon(kSwitchIcons.at(SwitchNumber(section)));
  if (role == Qt::ToolTipRole) return QString("%1: %2").arg(row.name, row.help);
  return {};
}

// A name needs a letter at least. dataChanged ends the editing also where nothing changed.
bool LayerModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  LayerObject* layer = index.column() == kName && role == Qt::EditRole ? LayerAt(index) : nullptr;
  if (!layer || value.toString().isEmpty()) return false;
  if (value.toString() != ToQt(layer->GetName()))
    engine::RenameLayer(*Document(), *layer, ToHost(value.toString()));
  emit dataChanged(index, index);
  return true;
}

Qt::ItemFlags LayerModel::flags(const QModelIndex& index) const {
  if (!index.isValid()) return Qt::ItemIsDropEnabled;
  const Qt::ItemFlags plain = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDropEnabled;
  return index.column() == kName ? plain | Qt::ItemIsEditable | Qt::ItemIsDragEnabled : plain;
}

bool LayerModel::canDropMimeData(const QMimeData* data, Qt::DropAction, int, int,
                                 const QModelIndex& parent) const {
  if (!data || !Document()) return false;
  return data->hasFormat(kObjectsMime) || CanMoveTo(DroppedNodes(data, kLayersMime), parent);
}

// Layers move in the tree; objects go onto the layer, or off theirs where they are dropped beside
// all.
bool LayerModel::dropMimeData(const QMimeData* data, Qt::DropAction, int row, int,
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
  RunEdit(*doc, engine::AssignLayer(*doc, std::move(objects), LayerAt(parent)));
  return true;
}

namespace {

constexpr int kSwitchColumn = 24;
constexpr int kColorColumn = 26;
constexpr int kIconSide = 16;
constexpr int kSwatchSide = 12;

QRect Centered(const QRect& cell, int side) {
  return {cell.center() - QPoint(side / 2 - 1, side / 2 - 1), QSize(side, side)};
}

// The background of a cell: chosen rows have another one.
void PaintGround(QPainter& painter, const QStyleOptionViewItem& option) {
  option.widget->style()->drawPrimitive(QStyle::PE_PanelItemViewItem, &option, &painter,
                                        option.widget);
}

// The icon of a switch, faint when it is off.
class SwitchDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override {
    PaintGround(*painter, option);
    const bool isOn = index.data(LayerModel::kIsOn).toBool();
    index.data(Qt::DecorationRole)
        .value<QIcon>()
        .paint(painter, Centered(option.rect, kIconSide), Qt::AlignCenter,
               isOn ? QIcon::Normal : QIcon::Disabled);
  }
};

class SwatchDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override {
    PaintGround(*painter, option);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    painter->setBrush(index.data(Qt::BackgroundRole).value<QColor>());
    painter->drawRoundedRect(Centered(option.rect, kSwatchSide), 2.5, 2.5);
    painter->restore();
  }
};

}  // namespace

// The color stands first on the screen and is not the first column, because the toolkit takes that
// one for the tree and for editing.
LayerTree::LayerTree(QWidget* parent) : QTreeView(parent), model_(new LayerModel(this)) {
  setModel(model_);
  setUniformRowHeights(true);
  setSelectionMode(ExtendedSelection);
  setEditTriggers(EditKeyPressed | DoubleClicked);
  setAlternatingRowColors(true);
  EnableRowDragging(*this);
  setAccessibleName("Layers");
  header()->setStretchLastSection(false);
  header()->setMinimumSectionSize(kSwitchColumn);
  header()->setSectionResizeMode(QHeaderView::Fixed);
  header()->setSectionResizeMode(LayerModel::kName, QHeaderView::Stretch);
  header()->setSectionsMovable(false);
  header()->setDefaultAlignment(Qt::AlignCenter);
  header()->moveSection(LayerModel::kColor, 0);
  setTreePosition(LayerModel::kName);
  setColumnWidth(LayerModel::kColor, kColorColumn);
  setItemDelegateForColumn(LayerModel::kColor, new SwatchDelegate(this));
  auto* switches = new SwitchDelegate(this);
  for (int column = LayerModel::kFirstSwitch; column < LayerModel::kColumnCount; ++column) {
    setColumnWidth(column, kSwitchColumn);
    setItemDelegateForColumn(column, switches);
  }
  showing_ = false;
}

void LayerTree::Follow(host::BaseDocument* doc) {
  const host::ULLONG count = doc ? engine::ChangeCount(*doc) : 0;
  if (IdentityOf(doc) == doc_ && count == seen_) return;
  doc_ = IdentityOf(doc);
  seen_ = count;
  showing_ = true;
  if (model_->Update(doc)) expandAll();
  ShowSelection();
  showing_ = false;
  viewport()->update();
}

void LayerTree::EditName(const host::LayerObject& layer) {
  const QModelIndex index = model_->IndexOf(engine::IdOf(layer));
  setCurrentIndex(index);
  edit(index);
}

// The chooser runs an event loop: the layers are found again by their identities.
void LayerTree::AskColor(const engine::LayerList& layers) {
  if (layers.empty()) return;
  std::vector<engine::NodeId> ids;
  for (const host::LayerObject* layer : layers) ids.push_back(engine::IdOf(*layer));
  const QColor now =
      model_->IndexOf(ids.front(), LayerModel::kColor).data(Qt::BackgroundRole).value<QColor>();
  const QColor color = QColorDialog::getColor(now, this, "Color of the layer");
  host::BaseDocument* doc = color.isValid() ? Document() : nullptr;
  if (!doc) return;
  engine::LayerList still;
  for (const engine::NodeId id : ids) still.push_back(engine::AsLayer(engine::FindNode(doc, id)));
  engine::SetLayerColor(*doc, still, {color.redF(), color.greenF(), color.blueF()});
}

// A click on a switch or color is for what is selected and must not change that.
QItemSelectionModel::SelectionFlags LayerTree::selectionCommand(const QModelIndex& index,
                                                                const QEvent* event) const {
  const bool isMouse =
      event && (event->type() == QEvent::MouseButtonPress ||
                event->type() == QEvent::MouseButtonRelease || event->type() == QEvent::MouseMove);
  if (isMouse && index.isValid() && index.column() != LayerModel::kName)
    return QItemSelectionModel::NoUpdate;
  return QTreeView::selectionCommand(index, event);
}

void LayerTree::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) {
  QTreeView::selectionChanged(selected, deselected);
  host::BaseDocument* doc = showing_ ? nullptr : Document();
  if (doc) engine::SelectLayers(*doc, Chosen());
}

void LayerTree::mousePressEvent(QMouseEvent* event) {
  if (!ClickedCell(*event)) QTreeView::mousePressEvent(event);
}

void LayerTree::mouseDoubleClickEvent(QMouseEvent* event) {
  if (!ClickedCell(*event)) QTreeView::mouseDoubleClickEvent(event);
}

// On the press, not the release: switches answer at once. The new value is the opposite of the cell
// that was hit, for all chosen ones.
bool LayerTree::ClickedCell(const QMouseEvent& event) {
  const QModelIndex index = indexAt(event.position().toPoint());
  if (!index.isValid() || index.column() == LayerModel::kName || event.button() != Qt::LeftButton)
    return false;
  if (index.column() == LayerModel::kColor) {
    AskColor(ChosenWith(index));
  } else {
    engine::SetLayerSwitch(*Document(), ChosenWith(index),
                           static_cast<std::size_t>(index.column() - LayerModel::kFirstSwitch),
                           !index.data(LayerModel::kIsOn).toBool());
  }
  viewport()->update();
  return true;
}

void LayerTree::startDrag(Qt::DropActions) {
  const QModelIndexList rows = selectionModel()->selectedRows();
  if (!rows.isEmpty())
    DragRows(*this, model_->mimeData(rows), static_cast<int>(rows.size()),
             rows.front().data().toString());
}

void LayerTree::dragEnterEvent(QDragEnterEvent* event) {
  // Objects go onto layers, never between them.
  setDragDropOverwriteMode(event->mimeData()->hasFormat(kObjectsMime));
  QTreeView::dragEnterEvent(event);
}

// A cell outside of the selection is meant alone.
engine::LayerList LayerTree::ChosenWith(const QModelIndex& index) const {
  const QModelIndex row = index.siblingAtColumn(0);
  return selectionModel()->isSelected(row) ? Chosen() : model_->LayersAt({row});
}

void LayerTree::ShowSelection() {
  QItemSelection wanted;
  if (const host::BaseDocument* doc = Document()) {
    for (const host::GeListNode* node = doc->GetLayerObjectRoot()->GetFirst(); node;
         node = engine::NextInTree(node)) {
      if (!static_cast<const host::LayerObject*>(node)->GetBit(host::BIT_ACTIVE)) continue;
      const QModelIndex index = model_->IndexOf(engine::IdOf(*node));
      wanted.append(
          QItemSelectionRange(index, index.siblingAtColumn(LayerModel::kColumnCount - 1)));
    }
  }
  selectionModel()->select(wanted, QItemSelectionModel::ClearAndSelect);
}

void LayerTree::paintEvent(QPaintEvent* event) {
  QTreeView::paintEvent(event);
  if (model_->rowCount() == 0)
    PaintEmptyText(*this, "No layers yet: add one to switch many objects at once");
}

LayersPanel::LayersPanel(QWidget* parent)
    : QWidget(parent),
      tree_(new LayerTree(this)),
      acts_(*tree_, [this](QMenu& menu) { AddToMenu(menu); }) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(tree_);
  BuildActions();
}

void LayersPanel::BuildActions() {
  acts_.PutBelow(*this);
  acts_.AddMaker("New Layer", [this](host::BaseDocument& doc) { Add(doc); });
  acts_.Add("assign", "Assign to Selection", {},
            [](host::BaseDocument& doc, const engine::LayerList& layers) {
              RunEdit(doc, engine::AssignLayer(doc, engine::SelectedObjects(doc), layers.front()));
            });
  acts_.Add("select", "Select Objects", {}, &engine::SelectObjectsOn);
  acts_.AddSpace();
  acts_.Add("delete", "Delete Layer", QKeySequence::Delete, &engine::DeleteLayers);
}

void LayersPanel::Follow(host::BaseDocument* doc) {
  tree_->Follow(doc);
  acts_.Follow(doc);
}

void LayersPanel::Add(host::BaseDocument& doc) {
  const host::LayerObject* layer = engine::AddLayer(doc);
  tree_->Follow(&doc);
  tree_->EditName(*layer);
}

void LayersPanel::AddToMenu(QMenu& menu) {
  menu.addSeparator();
  const engine::LayerList chosen = tree_->Chosen();
  menu.addAction("Color...", this, [this] { tree_->AskColor(tree_->Chosen()); })
      ->setEnabled(!chosen.empty());
  menu.addAction("Take Selection Off Its Layer", this, [this] {
    if (host::BaseDocument* doc = tree_->Document())
      RunEdit(*doc, engine::AssignLayer(*doc, engine::SelectedObjects(*doc), nullptr));
  });
  menu.addSeparator();
  for (std::size_t i = 0; i < engine::kLayerSwitchTable.size() && !chosen.empty(); ++i) {
    const engine::LayerSwitch& row = engine::kLayerSwitchTable[i];
    const bool isOn = chosen.front()->GetLayerData(tree_->Document()).*(row.flag);
    QAction* action = menu.addAction(row.name, this, [this, i, isOn] {
      acts_.Do([i, isOn](host::BaseDocument& doc, const engine::LayerList& layers) {
        engine::SetLayerSwitch(doc, layers, i, !isOn);
      });
    });
    action->setCheckable(true);
    action->setChecked(isOn);
  }
}

}  // namespace desktop
