#include "program/desktop/panels/MaterialRows.h"

#include "program/desktop/Dragging.h"
#include "program/desktop/Text.h"
#include "program/desktop/panels/TreeRows.h"

namespace desktop {

using host::BaseMaterial;

namespace {

constexpr int kLongestName = 200;

}  // namespace

MaterialRows::MaterialRows(std::shared_ptr<MaterialThumbnails> thumbnails,
                           std::function<double()> scale, QObject* parent)
    : QAbstractListModel(parent), scale_(std::move(scale)), thumbnails_(std::move(thumbnails)) {
  thumbnails_->Listen(this, [this](engine::NodeId material) {
    const QModelIndex index = IndexOf(material);
    if (index.isValid()) emit dataChanged(index, index, {Qt::DecorationRole});
  });
}

bool MaterialRows::Update(host::BaseDocument* doc) {
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

BaseMaterial* MaterialRows::MaterialAt(const QModelIndex& index) const {
  const host::BaseDocument* doc = index.isValid() ? Document() : nullptr;
  return doc ? engine::AsMaterial(
                   engine::FindNode(doc, ids_[static_cast<std::size_t>(index.row())]))
             : nullptr;
}

MaterialList MaterialRows::MaterialsAt(const QModelIndexList& rows) const {
  MaterialList materials;
  for (const QModelIndex& row : rows) {
    if (BaseMaterial* material = MaterialAt(row)) materials.push_back(material);
  }
  return materials;
}

QModelIndex MaterialRows::IndexOf(engine::NodeId material) const {
  const auto it = rows_.find(material);
  return it == rows_.end() ? QModelIndex() : index(it->second);
}

QVariant MaterialRows::data(const QModelIndex& index, int role) const {
  BaseMaterial* material = MaterialAt(index);
  if (!material) return {};
  switch (role) {
    case Qt::EditRole:
      return ToQt(material->GetName());
    case Qt::ToolTipRole:
      return NameInTip(material->GetName(), "Material");
    case Qt::DisplayRole:
      return ToQt(material->GetName()).left(kLongestName).replace('\n', ' ');
    case Qt::DecorationRole:
      return thumbnails_->Of(*material, scale_());
    default:
      return {};
  }
}

bool MaterialRows::setData(const QModelIndex& index, const QVariant& value, int role) {
  BaseMaterial* material = role == Qt::EditRole ? MaterialAt(index) : nullptr;
  if (!material || value.toString().isEmpty()) return false;
  if (value.toString() != ToQt(material->GetName()))
    RenameMaterial(*Document(), *material, ToHost(value.toString()));
  emit dataChanged(index, index);
  return true;
}

Qt::ItemFlags MaterialRows::flags(const QModelIndex& index) const {
  if (!index.isValid()) return Qt::NoItemFlags;
  return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable | Qt::ItemIsDragEnabled |
         Qt::ItemNeverHasChildren;
}

QStringList MaterialRows::mimeTypes() const { return {kMaterialMime}; }

QMimeData* MaterialRows::mimeData(const QModelIndexList& indexes) const {
  const BaseMaterial* material = indexes.isEmpty() ? nullptr : MaterialAt(indexes.first());
  return material ? DraggedNodes(kMaterialMime, {engine::IdOf(*material)}) : nullptr;
}

}  // namespace desktop
