#include "program/desktop/panels/MaterialsPanel.h"

#include <QDrag>
#include <QLineEdit>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

#include "engine/editing/MaterialCommands.h"
#include "engine/editing/Selection.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"
#include "program/desktop/Text.h"
#include "program/desktop/background/SlicedEdit.h"
#include "program/desktop/panels/DragAndDrop.h"
#include "program/desktop/panels/EmptyText.h"
#include "program/desktop/panels/NodeTreeModel.h"

namespace desktop {

using host::BaseMaterial;

namespace {

constexpr int kLongestCaption = 200;

}  // namespace

MaterialModel::MaterialModel(std::shared_ptr<MaterialThumbnails> thumbnails,
                             std::function<double()> scale, QObject* parent)
    : QAbstractListModel(parent), scale_(std::move(scale)), thumbnails_(std::move(thumbnails)) {
  thumbnails_->Listen(this, [this](engine::NodeId material) {
    const QModelIndex index = IndexOf(material);
    if (index.isValid()) emit dataChanged(index, index, {Qt::DecorationRole});
  });
}

// O(materials). Where they are the same ones the cells are only drawn anew.
bool MaterialModel::Update(host::BaseDocument* doc) {
  std::vector<engine::NodeId> ids;
  for (const BaseMaterial* material = doc ? doc->GetFirstMaterial() : nullptr; material;
       material = material->GetNext()) {
    ids.push_back(engine::IdOf(*material));
  }
  if (doc_ == IdentityOf(doc) && ids == ids_) return false;
  beginResetModel();
  doc_ = IdentityOf(doc);
  ids_ = std::move(ids);
  rows_.clear();
  for (std::size_t row = 0; row < ids_.size(); ++row) rows_[ids_[row]] = static_cast<int>(row);
  endResetModel();
  return true;
}

BaseMaterial* MaterialModel::MaterialAt(const QModelIndex& index) const {
  const host::BaseDocument* doc = index.isValid() ? Document() : nullptr;
  return doc ? engine::AsMaterial(
                   engine::FindNode(doc, ids_[static_cast<std::size_t>(index.row())]))
             : nullptr;
}

engine::MaterialList MaterialModel::MaterialsAt(const QModelIndexList& rows) const {
  engine::MaterialList materials;
  for (const QModelIndex& row : rows) {
    if (BaseMaterial* material = MaterialAt(row)) materials.push_back(material);
  }
  return materials;
}

// O(1): thumbnails that are ready tell their cells one by one.
QModelIndex MaterialModel::IndexOf(engine::NodeId material) const {
  const auto it = rows_.find(material);
  return it == rows_.end() ? QModelIndex() : index(it->second);
}

// Thumbnails are asked for by the cells that are drawn, so no others are made.
QVariant MaterialModel::data(const QModelIndex& index, int role) const {
  BaseMaterial* material = MaterialAt(index);
  if (!material) return {};
  switch (role) {
    case Qt::EditRole:
      return ToQt(material->GetName());
    case Qt::ToolTipRole:
      return NameInTip(material->GetName(), "Material");
    case Qt::DisplayRole:
      return ToQt(material->GetName()).left(kLongestCaption).replace('\n', ' ');
    case Qt::DecorationRole:
      return thumbnails_->Of(*material, scale_());
    default:
      return {};
  }
}

bool MaterialModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  BaseMaterial* material = role == Qt::EditRole ? MaterialAt(index) : nullptr;
  if (!material || value.toString().isEmpty()) return false;
  if (value.toString() != ToQt(material->GetName()))
    engine::RenameMaterial(*Document(), *material, ToHost(value.toString()));
  emit dataChanged(index, index);
  return true;
}

Qt::ItemFlags MaterialModel::flags(const QModelIndex& index) const {
  if (!index.isValid()) return Qt::NoItemFlags;
  return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable | Qt::ItemIsDragEnabled |
         Qt::ItemNeverHasChildren;
}

QStringList MaterialModel::mimeTypes() const { return {kMaterialMime}; }

// One at a time: an object shows one.
QMimeData* MaterialModel::mimeData(const QModelIndexList& indexes) const {
  const BaseMaterial* material = indexes.isEmpty() ? nullptr : MaterialAt(indexes.first());
  return material ? DraggedNodes(kMaterialMime, {engine::IdOf(*material)}) : nullptr;
}

namespace {

constexpr int kThumbnailSide = MaterialThumbnails::kSide;
constexpr int kThumbnailMargin = 6;
constexpr int kCellWidth = kThumbnailSide + 4 * kThumbnailMargin;
constexpr int kSpacing = 2;

QRect BallIn(const QRect& cell) {
  return {cell.left() + (cell.width() - kThumbnailSide) / 2, cell.top() + kThumbnailMargin,
          kThumbnailSide, kThumbnailSide};
}

QRect NameIn(const QRect& cell) {
  return QRect(cell.left() + 2, cell.top() + kThumbnailSide + kThumbnailMargin, cell.width() - 4,
               cell.height() - kThumbnailSide - kThumbnailMargin);
}

class MaterialDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override {
    PaintGround(*painter, option);
    const auto ball = index.data(Qt::DecorationRole).value<QPixmap>();
    if (ball.isNull()) {
      PaintWaiting(*painter, option);
    } else {
      painter->drawPixmap(BallIn(option.rect), ball);
    }
    const QRect place = NameIn(option.rect);
    painter->setPen(option.palette.color(QPalette::Text));
    painter->drawText(
        place, Qt::AlignCenter,
        option.fontMetrics.elidedText(index.data().toString(), Qt::ElideRight, place.width()));
  }

  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const override {
    return {kCellWidth, kThumbnailSide + 2 * kThumbnailMargin + option.fontMetrics.height()};
  }

  QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                        const QModelIndex& index) const override {
    QWidget* editor = QStyledItemDelegate::createEditor(parent, option, index);
    if (auto* line = qobject_cast<QLineEdit*>(editor)) line->setAlignment(Qt::AlignCenter);
    return editor;
  }

  // The editor lies over the name below the ball, and grows upwards.
  void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                            const QModelIndex&) const override {
    const QRect place = NameIn(option.rect);
    const int height = std::max(place.height(), editor->sizeHint().height());
    editor->setGeometry(place.left(), place.bottom() + 1 - height, place.width(), height);
  }

 private:
  static void PaintGround(QPainter& painter, const QStyleOptionViewItem& option) {
    const bool isChosen = option.state & QStyle::State_Selected;
    const bool hasFocus = option.state & QStyle::State_HasFocus;
    if (!isChosen && !hasFocus) return;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(hasFocus ? QPen(option.palette.color(QPalette::Link)) : QPen(Qt::NoPen));
    painter.setBrush(isChosen ? option.palette.brush(QPalette::Highlight) : QBrush(Qt::NoBrush));
    painter.drawRoundedRect(QRectF(option.rect).adjusted(0.5, 0.5, -0.5, -0.5), 4, 4);
    painter.restore();
  }

  static void PaintWaiting(QPainter& painter, const QStyleOptionViewItem& option) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(option.palette.color(QPalette::Button));
    painter.drawEllipse(BallIn(option.rect));
    painter.restore();
  }
};

}  // namespace

MaterialGrid::MaterialGrid(std::shared_ptr<MaterialThumbnails> thumbnails, QWidget* parent)
    : QListView(parent),
      model_(new MaterialModel(
          std::move(thumbnails), [this] { return devicePixelRatioF(); }, this)) {
  setModel(model_);
  setItemDelegate(new MaterialDelegate(this));
  setViewMode(IconMode);
  setMovement(Static);
  setResizeMode(Adjust);
  setUniformItemSizes(true);
  setSpacing(kSpacing);
  setSelectionMode(ExtendedSelection);
  setEditTriggers(EditKeyPressed);
  setDragEnabled(true);
  setAccessibleName("Materials");
  showing_ = false;
}

// Selected materials are those of the document; `showing_` keeps them from being written back.
void MaterialGrid::Follow(host::BaseDocument* doc) {
  const host::ULLONG count = doc ? engine::ChangeCount(*doc) : 0;
  if (IdentityOf(doc) == doc_ && count == seen_) return;
  doc_ = IdentityOf(doc);
  seen_ = count;
  showing_ = true;
  model_->Update(doc);
  ShowSelection();
  showing_ = false;
  viewport()->update();
}

void MaterialGrid::EditName(const host::BaseMaterial& material) {
  const QModelIndex index = model_->IndexOf(engine::IdOf(material));
  selectionModel()->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
  scrollTo(index);
  edit(index);
}

void MaterialGrid::selectionChanged(const QItemSelection& selected,
                                    const QItemSelection& deselected) {
  QListView::selectionChanged(selected, deselected);
  host::BaseDocument* doc = showing_ ? nullptr : Document();
  if (doc) engine::SelectMaterials(*doc, Chosen());
}

// Rows are in the document's order, so that both are walked together.
void MaterialGrid::ShowSelection() {
  QItemSelection wanted;
  int row = 0;
  const host::BaseDocument* doc = Document();
  for (const host::BaseMaterial* material = doc ? doc->GetFirstMaterial() : nullptr; material;
       material = material->GetNext()) {
    const QModelIndex index = model_->index(row++);
    if (material->GetBit(host::BIT_ACTIVE)) wanted.append(QItemSelectionRange(index));
  }
  selectionModel()->select(wanted, QItemSelectionModel::ClearAndSelect);
}

void MaterialGrid::startDrag(Qt::DropActions) {
  QMimeData* dragged = model_->mimeData({currentIndex()});
  if (!dragged) return;
  auto* drag = new QDrag(this);
  drag->setMimeData(dragged);
  const auto ball = currentIndex().data(Qt::DecorationRole).value<QPixmap>();
  drag->setPixmap(ball);
  drag->setHotSpot({kThumbnailSide / 2, kThumbnailSide / 2});
  drag->exec(Qt::CopyAction);
}

void MaterialGrid::paintEvent(QPaintEvent* event) {
  QListView::paintEvent(event);
  if (model_->rowCount() == 0)
    PaintEmptyText(*this, "No materials yet: make one and drag it onto an object");
}

namespace {

// Assigns the first of several materials: an object shows one.
void AssignToSelection(host::BaseDocument& doc, const engine::MaterialList& materials) {
  RunEdit(doc, engine::AssignMaterial(*materials.front(), engine::SelectedObjects(doc)));
}

}  // namespace

MaterialsPanel::MaterialsPanel(std::shared_ptr<MaterialThumbnails> thumbnails, QWidget* parent)
    : QWidget(parent),
      grid_(new MaterialGrid(std::move(thumbnails), this)),
      acts_(*grid_, [](QMenu&) {}) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(grid_);
  BuildActions();
  connect(grid_, &QAbstractItemView::doubleClicked, this, [this] {
    if (opened) opened();
  });
}

void MaterialsPanel::BuildActions() {
  acts_.PutBelow(*this);
  acts_.AddMaker("New Material", [this](host::BaseDocument& doc) { Add(doc); });
  acts_.Add("duplicate", "Duplicate Material", {}, &engine::DuplicateMaterials);
  acts_.Add("assign", "Assign to Selection", {}, &AssignToSelection);
  acts_.Add("select", "Select Objects with This Material", {}, &engine::SelectObjectsWith);
  acts_.AddSpace();
  acts_.Add("delete", "Delete Material", QKeySequence::Delete, &engine::DeleteMaterials);
}

void MaterialsPanel::Follow(host::BaseDocument* doc) {
  grid_->Follow(doc);
  acts_.Follow(doc);
}

// The row is there only after following; then its name is asked for where it stands.
void MaterialsPanel::Add(host::BaseDocument& doc) {
  const host::BaseMaterial* material = engine::AddMaterial(doc);
  grid_->Follow(&doc);
  grid_->EditName(*material);
}

}  // namespace desktop
