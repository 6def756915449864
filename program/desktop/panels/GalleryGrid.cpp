// The gallery keeps no pictures: rows are states, and the pictures, with what is wrong with them,
// are asked of StatePictures whenever a cell is drawn.
#include "program/desktop/panels/GalleryGrid.h"

#include <QPainter>
#include <QStyledItemDelegate>
#include <QWheelEvent>
#include <algorithm>
#include <unordered_set>

#include "program/desktop/Icons.h"
#include "program/desktop/Text.h"
#include "program/desktop/Theme.h"
#include "program/desktop/dialog/StatesDialog.h"
#include "program/desktop/panels/EmptyText.h"

namespace desktop {

using engine::StoredState;
using host::LONG;

namespace {

constexpr qsizetype kMostOfName = 200;

// Only Stagemarks in the list can be loaded by name.
std::vector<StoredState> Listed(const host::BaseDocument* doc) {
  return doc ? engine::ListedStates(*doc) : std::vector<StoredState>();
}

// By number and name: dates and records may differ and leave the rows where they are.
bool AreSame(const std::vector<StoredState>& a, const std::vector<StoredState>& b) {
  return std::equal(
      a.begin(), a.end(), b.begin(), b.end(),
      [](const StoredState& x, const StoredState& y) { return x.id == y.id && x.name == y.name; });
}

}  // namespace

// Counts of differences belong to the scene as it was and go. Rows are only reset when there are
// others, so that the grid keeps its place.
void GalleryModel::Update(const host::BaseDocument* doc) {
  std::vector<StoredState> states = Listed(doc);
  things_.clear();
  if (AreSame(states, states_)) {
    states_ = std::move(states);
    if (!shown_.empty()) emit dataChanged(index(0), index(rowCount() - 1));
    return;
  }
  beginResetModel();
  states_ = std::move(states);
  shown_ = Matching();
  endResetModel();
}

void GalleryModel::SetFilter(const QString& text) {
  beginResetModel();
  filter_ = text;
  shown_ = Matching();
  endResetModel();
}

// In the order of the list; letter case does not matter.
std::vector<std::size_t> GalleryModel::Matching() const {
  std::vector<std::size_t> matching;
  for (std::size_t i = 0; i < states_.size(); ++i) {
    if (ToQt(states_[i].name).contains(filter_, Qt::CaseInsensitive)) matching.push_back(i);
  }
  return matching;
}

const StoredState* GalleryModel::StateAt(const QModelIndex& index) const {
  return index.isValid() ? &states_[shown_[static_cast<std::size_t>(index.row())]] : nullptr;
}

QModelIndex GalleryModel::IndexOf(const std::string& name) const {
  const auto it = std::find_if(shown_.begin(), shown_.end(),
                               [&](std::size_t i) { return states_[i].name == name; });
  return it == shown_.end() ? QModelIndex() : index(static_cast<int>(it - shown_.begin()));
}

QModelIndex GalleryModel::IndexOf(LONG id) const {
  const auto it = std::find_if(shown_.begin(), shown_.end(),
                               [&](std::size_t i) { return states_[i].id == id; });
  return it == shown_.end() ? QModelIndex() : index(static_cast<int>(it - shown_.begin()));
}

void GalleryModel::SetThings(LONG id, std::size_t things) {
  things_[id] = things;
  const QModelIndex row = IndexOf(id);
  if (row.isValid()) emit dataChanged(row, row, {kThings, Qt::ToolTipRole});
}

std::optional<std::size_t> GalleryModel::ThingsOf(LONG id) const {
  const auto it = things_.find(id);
  return it == things_.end() ? std::nullopt : std::optional(it->second);
}

// kNoState stands for all of them.
void GalleryModel::PictureChanged(LONG id) {
  if (id == kNoState && !shown_.empty())
    emit dataChanged(index(0), index(rowCount() - 1), {Qt::DecorationRole, Qt::ToolTipRole});
  const QModelIndex row = IndexOf(id);
  if (row.isValid()) emit dataChanged(row, row, {Qt::DecorationRole, Qt::ToolTipRole});
}

const StatePicture& GalleryModel::PictureAt(const QModelIndex& index) const {
  return pictures_.Of(index.isValid() ? StateAt(index)->id : kNoState);
}

std::optional<double> GalleryModel::ProgressAt(const QModelIndex& index) const {
  const StoredState* state = StateAt(index);
  const bool isRendered = state && pictures_.Rendering() == state->id;
  return isRendered ? std::optional(pictures_.Progress()) : std::nullopt;
}

// One note, the gravest: a person can do one thing about a picture.
QString GalleryModel::NotesOf(const StoredState& state) const {
  const StatePicture& picture = pictures_.Of(state.id);
  if (pictures_.Rendering() == state.id) return "Its picture is being rendered";
  if (!picture.problem.empty()) return "No picture: " + ToQt(picture.problem);
  if (picture.olderThanState) return "The picture is older than the Stagemark";
  if (picture.olderThanScene) return "The scene has changed since the picture was rendered";
  if (picture.image.isNull() && pictures_.WaitsForOrder())
    return "The scene is very large: Render Again makes the picture";
  return picture.isPreview ? "The small picture that was made with the recording" : QString();
}

QString GalleryModel::Tip(const StoredState& state) const {
  QStringList lines = {"<b>" + ToQt(state.name).left(kMostOfName).toHtmlEscaped() + "</b>"};
  if (!state.date.Text().empty()) lines.append("Recorded " + ToQt(state.date.Text()));
  if (const auto things = ThingsOf(state.id)) lines.append(SameOrDifferent(*things));
  if (state.current) lines.append("Recorded or loaded last");
  if (const QString notes = NotesOf(state); !notes.isEmpty()) lines.append(notes.toHtmlEscaped());
  lines.append("Double click or Enter loads it");
  return "<qt>" + lines.join("<br>") + "</qt>";
}

QVariant GalleryModel::data(const QModelIndex& index, int role) const {
  const StoredState* state = StateAt(index);
  if (!state) return {};
  switch (role) {
    case Qt::DisplayRole:
      return ToQt(state->name).left(kMostOfName).replace('\n', ' ');
    case Qt::DecorationRole:
      return PictureAt(index).image;
    case Qt::ToolTipRole:
      return Tip(*state);
    case kDate:
      return ToQt(state->date.Text().substr(0, 16));
    case kCurrent:
      return state->current;
    case kThings: {
      const auto things = ThingsOf(state->id);
      return things ? SameOrDifferent(*things) : QString();
    }
    case Qt::AccessibleTextRole:
      return QStringList({index.data().toString(), index.data(kThings).toString(), NotesOf(*state)})
          .join(", ");
    default:
      return {};
  }
}

namespace {

// Pixels, but for the shares and counts among them.
constexpr int kCellMargin = 6;
constexpr int kBetween = 8;  // difference and date
constexpr std::size_t kManyThings = 9999;
constexpr qsizetype kDay = 10;  // letters of a date
constexpr double kMarkFont = 0.85;
constexpr int kMarkEnds = 5;
constexpr int kProgressHeight = 4;
constexpr float kBadgeOpacity = 0.85F;

// 8:5, between a photograph and a film: both lose little.
QSize BoxOf(int width) { return {width, width * 5 / 8}; }

class GalleryDelegate : public QStyledItemDelegate {
 public:
  explicit GalleryDelegate(GalleryGrid& grid) : QStyledItemDelegate(&grid), grid_(grid) {}

  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const override {
    const QSize box = BoxOf(grid_.PictureWidth());
    return {box.width() + 2 * kCellMargin,
            box.height() + 3 * kCellMargin + 2 * option.fontMetrics.lineSpacing()};
  }

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override {
    painter->save();
    PaintGround(*painter, option);
    const QRect box(option.rect.topLeft() + QPoint(kCellMargin, kCellMargin),
                    BoxOf(grid_.PictureWidth()));
    PaintPicture(*painter, option, box, index);
    PaintText(*painter, option, box, index);
    painter->restore();
  }

 private:
  static void PaintGround(QPainter& painter, const QStyleOptionViewItem& option) {
    const bool isChosen = option.state & QStyle::State_Selected;
    const bool hasFocus = option.state & QStyle::State_HasFocus;
    if (!isChosen && !hasFocus) return;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(hasFocus ? QPen(option.palette.color(QPalette::Link)) : QPen(Qt::NoPen));
    painter.setBrush(isChosen ? option.palette.brush(QPalette::Highlight) : QBrush(Qt::NoBrush));
    painter.drawRoundedRect(QRectF(option.rect).adjusted(0.5, 0.5, -0.5, -0.5), 4, 4);
  }

  // The picture in its own shape in the middle of the box; progress and mark lie on it.
  void PaintPicture(QPainter& painter, const QStyleOptionViewItem& option, const QRect& box,
                    const QModelIndex& index) const {
    const StatePicture& picture = grid_.Model().PictureAt(index);
    QRect place = box;
    if (picture.image.isNull()) {
      PaintMissing(painter, option, box, picture);
    } else {
      place.setSize(picture.image.size().scaled(box.size(), Qt::KeepAspectRatio));
      place.moveCenter(box.center());
      painter.setRenderHint(QPainter::SmoothPixmapTransform);
      painter.drawImage(place, picture.image);
    }
    const auto progress = grid_.Model().ProgressAt(index);
    if (progress) PaintProgress(painter, place, *progress);
    if (picture.olderThanState) {
      PaintMark(painter, option, place, "older than the state", PresentTheme().accent);
    } else if (picture.olderThanScene) {
      PaintMark(painter, option, place, "the scene has changed", PresentTheme().faint);
    }
  }

  static void PaintMissing(QPainter& painter, const QStyleOptionViewItem& option, const QRect& box,
                           const StatePicture& picture) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(option.palette.color(QPalette::Button));
    painter.drawRoundedRect(box, 3, 3);
    Icon(picture.problem.empty() ? "stagemark" : "warning")
        .paint(&painter, QRect(box.center() - QPoint(12, 12), QSize(24, 24)), Qt::AlignCenter,
               QIcon::Disabled);
  }

  static void PaintProgress(QPainter& painter, const QRect& place, double done) {
    QRect line(place.left(), place.bottom() - kProgressHeight + 1, place.width(), kProgressHeight);
    painter.fillRect(line, QColor(PresentTheme().bar));
    line.setWidth(static_cast<int>(line.width() * done));
    painter.fillRect(line, QColor(PresentTheme().accent));
  }

  static void PaintMark(QPainter& painter, const QStyleOptionViewItem& option, const QRect& place,
                        const QString& text, QRgb color) {
    QFont font = option.font;
    font.setPointSizeF(font.pointSizeF() * kMarkFont);
    const QFontMetrics metrics(font);
    const QString shown =
        metrics.elidedText(text, Qt::ElideRight, place.width() - 2 * kCellMargin - 2 * kMarkEnds);
    QRect pill(0, 0, metrics.horizontalAdvance(shown) + 2 * kMarkEnds, metrics.height());
    pill.moveBottomLeft(place.bottomLeft() + QPoint(kMarkEnds, -kMarkEnds));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    QColor ground(PresentTheme().window);
    ground.setAlphaF(kBadgeOpacity);
    painter.setBrush(ground);
    painter.drawRoundedRect(pill, pill.height() / 2.0, pill.height() / 2.0);
    painter.setPen(QColor(color));
    painter.setFont(font);
    painter.drawText(pill, Qt::AlignCenter, shown);
  }

  static void PaintText(QPainter& painter, const QStyleOptionViewItem& option, const QRect& box,
                        const QModelIndex& index) {
    const int line = option.fontMetrics.lineSpacing();
    const QRect name(box.left(), box.bottom() + kCellMargin, box.width(), line);
    const bool isChosen = option.state & QStyle::State_Selected;
    painter.setPen(
        option.palette.color(isChosen ? QPalette::HighlightedText : QPalette::WindowText));
    PaintName(painter, option.font, name, index);
    painter.setFont(option.font);
    if (!isChosen) painter.setPen(option.palette.color(QPalette::PlaceholderText));
    PaintFacts(painter, option.fontMetrics, name.translated(0, line), index);
  }

  static void PaintName(QPainter& painter, QFont font, const QRect& place,
                        const QModelIndex& index) {
    const bool isCurrent = index.data(GalleryModel::kCurrent).toBool();
    font.setBold(isCurrent);
    const QFontMetrics metrics(font);
    const QString star = isCurrent ? QString(" \u2605") : QString();
    const QString name = metrics.elidedText(index.data().toString(), Qt::ElideRight,
                                            place.width() - metrics.horizontalAdvance(star));
    painter.setFont(font);
    painter.drawText(place, Qt::AlignLeft | Qt::AlignVCenter, name + star);
  }

  static void PaintFacts(QPainter& painter, const QFontMetrics& metrics, const QRect& place,
                         const QModelIndex& index) {
    const QString things = index.data(GalleryModel::kThings).toString();
    painter.drawText(place, Qt::AlignLeft | Qt::AlignVCenter,
                     metrics.elidedText(things, Qt::ElideRight, place.width()));
    QString date = index.data(GalleryModel::kDate).toString();
    // The day alone where there is no room for the time, and in all cells alike.
    const int longest = metrics.horizontalAdvance(SameOrDifferent(kManyThings)) + kBetween;
    if (longest + metrics.horizontalAdvance(date) > place.width()) date = date.left(kDay);
    if (metrics.horizontalAdvance(things) + kBetween + metrics.horizontalAdvance(date) <=
        place.width())
      painter.drawText(place, Qt::AlignRight | Qt::AlignVCenter, date);
  }

  GalleryGrid& grid_;
};

}  // namespace

GalleryGrid::GalleryGrid(const StatePictures& pictures, QWidget* parent)
    : QListView(parent), model_(new GalleryModel(pictures, this)) {
  setModel(model_);
  setItemDelegate(new GalleryDelegate(*this));
  setViewMode(IconMode);
  setMovement(Static);
  setResizeMode(Adjust);
  setUniformItemSizes(true);
  setSpacing(2);
  setSelectionMode(ExtendedSelection);
  setEditTriggers(NoEditTriggers);
  setVerticalScrollMode(ScrollPerPixel);
  setContextMenuPolicy(Qt::CustomContextMenu);
  setAccessibleName("Gallery of Stagemarks");
  showing_ = false;
}

// Other pictures may be in sight afterwards, hence `scrolled`.
void GalleryGrid::SetPictureWidth(int width) {
  width_ = std::clamp(width, kLeastWidth, kMostWidth);
  scheduleDelayedItemsLayout();
  if (scrolled) scrolled();
}

// In pixels of the screen, which are finer than those of a widget on some.
QSize GalleryGrid::PictureBox() const { return BoxOf(width_) * devicePixelRatioF(); }

// By rows, not in the order of clicking: A and B of a comparison are the upper and the lower one.
std::vector<std::string> GalleryGrid::Chosen() const {
  QModelIndexList rows = selectionModel()->selectedIndexes();
  std::sort(rows.begin(), rows.end());
  std::vector<std::string> names;
  for (const QModelIndex& row : rows) names.push_back(model_->StateAt(row)->name);
  return names;
}

// By name, since the filter and the list move rows; `showing_` keeps it from being told as a
// person's choice.
void GalleryGrid::ShowChosen(const std::vector<std::string>& names) {
  const std::unordered_set<std::string> wanted(names.begin(), names.end());
  QItemSelection rows;
  for (int row = 0; row < model_->rowCount() && !wanted.empty(); ++row) {
    const QModelIndex index = model_->index(row);
    if (wanted.contains(model_->StateAt(index)->name)) rows.append(QItemSelectionRange(index));
  }
  showing_ = true;
  if (!rows.isEmpty()) {
    selectionModel()->setCurrentIndex(rows.first().topLeft(), QItemSelectionModel::NoUpdate);
    scrollTo(rows.first().topLeft());
  }
  selectionModel()->select(rows, QItemSelectionModel::ClearAndSelect);
  showing_ = false;
}

// Stops below the last one in sight; O(rows above it).
std::vector<LONG> GalleryGrid::Visible() const {
  std::vector<LONG> ids;
  const QRect inside = viewport()->rect();
  for (int row = 0; row < model_->rowCount(); ++row) {
    const QModelIndex index = model_->index(row);
    const QRect place = visualRect(index);
    if (place.top() > inside.bottom()) break;
    if (place.intersects(inside)) ids.push_back(model_->StateAt(index)->id);
  }
  return ids;
}

void GalleryGrid::selectionChanged(const QItemSelection& selected,
                                   const QItemSelection& deselected) {
  QListView::selectionChanged(selected, deselected);
  if (!showing_ && chosen) chosen();
}

void GalleryGrid::wheelEvent(QWheelEvent* event) {
  const int turned = event->angleDelta().y();
  if (!(event->modifiers() & Qt::ControlModifier) || turned == 0)
    return QListView::wheelEvent(event);
  if (zoomed) zoomed(turned > 0 ? 1 : -1);
  event->accept();
}

void GalleryGrid::paintEvent(QPaintEvent* event) {
  QListView::paintEvent(event);
  if (model_->rowCount() > 0) return;
  PaintEmptyText(*this, model_->States().empty()
                            ? QString("No Stagemarks yet: name this state in the Stagemarks "
                                      "dialog and press Record Element")
                            : "No Stagemark has \"" + model_->Filter() + "\" in its name");
}

void GalleryGrid::scrollContentsBy(int dx, int dy) {
  QListView::scrollContentsBy(dx, dy);
  if (scrolled) scrolled();
}

void GalleryGrid::resizeEvent(QResizeEvent* event) {
  QListView::resizeEvent(event);
  if (scrolled) scrolled();
}

}  // namespace desktop
