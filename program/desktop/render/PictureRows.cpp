#include "program/desktop/render/PictureRows.h"

#include <QFileInfo>

#include "program/desktop/Text.h"
#include "program/desktop/render/RenderJob.h"

namespace desktop {

namespace {

using Kind = worker::PictureNews::Kind;
using Result = PictureRows::Row::Result;

// 16 kilobytes each; the oldest go.
constexpr std::size_t kMostThumbnails = 1000;
constexpr QSize kThumbnailSize(80, 50);

// Room for one, so that rows do not jump when it comes.
const QPixmap& NoThumbnail() {
  static const QPixmap* const none = [] {
    auto* pixmap = new QPixmap(kThumbnailSize);
    pixmap->fill(Qt::transparent);
    return pixmap;
  }();
  return *none;
}

}  // namespace

// A plan comes row by row and is shown when it is whole: what stood there before stays until then.
// Counts are kept along, so that news of a thousand pictures cost no thousand walks.
void PictureRows::Take(const worker::PictureNews& news, const engine::Image& thumbnail) {
  if (news.kind == Kind::Planned) {
    planned_.push_back({news, news.isThere ? Result::Kept : Result::Planned, {}});
    return;
  }
  EndPlan();
  if (news.kind == Kind::Cost || news.kind == Kind::Refused || news.index >= rows_.size()) return;
  Row& row = rows_[news.index];
  row.result = news.kind == Kind::Begun      ? Result::Rendering
               : news.kind == Kind::Rendered ? Result::Rendered
               : news.kind == Kind::Kept     ? Result::Kept
                                             : Result::Failed;
  counts_.rendered += row.result == Result::Rendered;
  counts_.there += row.result == Result::Kept;
  counts_.failed += row.result == Result::Failed;
  row.why = ToQt(news.text);
  if (news.kind == Kind::Rendered) KeepThumbnail(ToQt(row.planned.text), thumbnail);
  const int at = static_cast<int>(news.index);
  emit dataChanged(index(at, 0), index(at, kColumns - 1));
}

void PictureRows::EndPlan() {
  if (planned_.empty()) return;
  beginResetModel();
  rows_ = std::exchange(planned_, {});
  Tally();
  endResetModel();
}

// A picture that was being rendered when the work was stopped is not there.
void PictureRows::EndWork() {
  planned_.clear();
  for (Row& row : rows_) {
    if (row.result == Result::Rendering) row.result = Result::Planned;
  }
  if (!rows_.empty()) emit dataChanged(index(0, 0), index(rowCount() - 1, kColumns - 1));
}

void PictureRows::Tally() {
  counts_ = {};
  for (const Row& row : rows_) {
    counts_.there += row.result == Result::Kept;
    counts_.foreign += row.planned.isForeign;
  }
}

int PictureRows::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int PictureRows::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : kColumns;
}

QVariant PictureRows::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  const Row& row = rows_[static_cast<std::size_t>(index.row())];
  if (role == Qt::DisplayRole) return TextOf(row, index.column());
  if (role == Qt::ToolTipRole)
    return index.column() == kResult && !row.why.isEmpty() ? row.why : ToQt(row.planned.text);
  if (role == Qt::DecorationRole && index.column() == kFile)
    return thumbnails_.value(ToQt(row.planned.text), NoThumbnail());
  return {};
}

QString PictureRows::TextOf(const Row& row, int column) const {
  switch (column) {
    case kFile:
      return QFileInfo(ToQt(row.planned.text)).fileName();
    case kState:
      return ToQt(row.planned.state);
    case kSize:
      return QString("%1 x %2").arg(row.planned.size.width).arg(row.planned.size.height);
    case kFrame:
      return QString::number(row.planned.frame);
    default:
      break;
  }
  switch (row.result) {
    case Result::Planned:
      return row.planned.isForeign ? "Another file stands there" : "To be rendered";
    case Result::Rendering:
      return "Rendering";
    case Result::Rendered:
      return "Rendered";
    case Result::Kept:
      return "Is there";
    case Result::Failed:
      return "Failed: " + row.why;
  }
  return {};
}

QVariant PictureRows::headerData(int section, Qt::Orientation orientation, int role) const {
  constexpr const char* kTitles[] = {"Picture", "Stagemark", "Size", "Frame", "Result"};
  if (role != Qt::DisplayRole || orientation != Qt::Horizontal || section >= kColumns) return {};
  return kTitles[section];
}

// By path: the next plan of the same pictures has them at once.
void PictureRows::KeepThumbnail(const QString& path, const engine::Image& image) {
  const QImage fitted =
      ToQImage(image).scaled(kThumbnailSize, Qt::KeepAspectRatio, Qt::SmoothTransformation);
  if (!thumbnails_.contains(path)) kept_.push_back(path);
  thumbnails_[path] = QPixmap::fromImage(fitted);
  if (kept_.size() <= kMostThumbnails) return;
  thumbnails_.remove(kept_.front());
  kept_.pop_front();
}

}  // namespace desktop
