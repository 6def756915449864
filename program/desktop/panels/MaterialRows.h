// MaterialRows: the materials of a document as a list model: name and thumbnail. It keeps
// identities and reads everything else from the document when it is shown. Main thread.
#pragma once

#include <QAbstractListModel>
#include <memory>
#include <unordered_map>

#include "program/desktop/panels/MaterialActs.h"
#include "program/desktop/panels/MaterialThumbnails.h"

namespace desktop {

class MaterialRows : public QAbstractListModel {
 public:
  // `scale`: of the screen that the thumbnails are shown on.
  MaterialRows(std::shared_ptr<MaterialThumbnails> thumbnails, std::function<double()> scale,
               QObject* parent);

  // Takes over which materials there are. True when that differed, which resets the model.
  bool Update(host::BaseDocument* doc);
  host::BaseDocument* Document() const { return FindOpenDocument(doc_); }
  // Null where there is none any more.
  host::BaseMaterial* MaterialAt(const QModelIndex& index) const;
  MaterialList MaterialsAt(const QModelIndexList& rows) const;
  QModelIndex IndexOf(engine::NodeId material) const;
  const MaterialThumbnails& Thumbnails() const { return *thumbnails_; }

  int rowCount(const QModelIndex& parent = {}) const override {
    return parent.isValid() ? 0 : static_cast<int>(ids_.size());
  }
  QVariant data(const QModelIndex& index, int role) const override;
  // Only names are set here.
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  // One material is dragged, the first of them.
  QStringList mimeTypes() const override;
  QMimeData* mimeData(const QModelIndexList& indexes) const override;

 private:
  host::ULLONG doc_ = 0;
  std::vector<engine::NodeId> ids_;
  std::unordered_map<engine::NodeId, int> rows_;
  std::function<double()> scale_;
  std::shared_ptr<MaterialThumbnails> thumbnails_;
};

}  // namespace desktop
