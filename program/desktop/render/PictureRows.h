// PictureRows: pictures that are going to be files, as rows: which Stagemark, how large, what came
// of each, and what it looks like. Filled by the news of the child that writes them. Main thread.
#pragma once

#include <QAbstractTableModel>
#include <QHash>
#include <QPixmap>
#include <deque>
#include <vector>

#include "engine/render/Image.h"
#include "program/worker/PictureFiles.h"

namespace desktop {

class PictureRows : public QAbstractTableModel {
 public:
  enum Column { kFile, kState, kSize, kFrame, kResult, kColumns };
  struct Row {
    worker::PictureNews planned;
    enum class Result { Planned, Rendering, Rendered, Kept, Failed } result = Result::Planned;
    QString why;  // it failed
  };
  struct Counts {
    std::size_t there = 0;  // before anything was rendered, or by somebody else
    std::size_t foreign = 0;
    std::size_t rendered = 0;
    std::size_t failed = 0;
  };

  // News of a plan are gathered and shown when it is whole.
  void Take(const worker::PictureNews& news, const engine::Image& thumbnail);
  // The plan is whole; nothing where none was on its way.
  void EndPlan();
  // Pictures that were being rendered will not be finished.
  void EndWork();

  const std::vector<Row>& Rows() const { return rows_; }
  const Counts& Count() const { return counts_; }

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  void Tally();
  QString TextOf(const Row& row, int column) const;
  void KeepThumbnail(const QString& path, const engine::Image& image);

  std::vector<Row> rows_;
  std::vector<Row> planned_;
  Counts counts_;
  // By path, and in the order of coming: of very many pictures the latest.
  QHash<QString, QPixmap> thumbnails_;
  std::deque<QString> kept_;
};

}  // namespace desktop
