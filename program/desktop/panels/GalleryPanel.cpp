#include "program/desktop/panels/GalleryPanel.h"

#include <QPainter>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <algorithm>

#include "program/desktop/Icons.h"
#include "program/desktop/Text.h"
#include "program/desktop/panels/EmptyText.h"

namespace desktop {

using engine::StoredState;
using host::LONG;

namespace {

constexpr qsizetype kMostOfName = 200;

// As the dialog's list has them: by name, those of one name in the order of recording; what is in
// no list is not loaded by name.
std::vector<StoredState> Listed(const host::BaseDocument* doc) {
  std::vector<StoredState> states = doc ? engine::ReadStates(*doc) : std::vector<StoredState>();
  std::erase_if(states, [](const StoredState& state) { return !state.hasEntry; });
  std::stable_sort(states.begin(), states.end(), [](const StoredState& a, const StoredState& b) {
    return host::String(std::string_view(a.name)).Compare(host::String(std::string_view(b.name))) <
           0;
  });
  return states;
}

bool AreSame(const std::vector<StoredState>& a, const std::vector<StoredState>& b) {
  return std::equal(
      a.begin(), a.end(), b.begin(), b.end(),
      [](const StoredState& x, const StoredState& y) { return x.id == y.id && x.name == y.name; });
}

}  // namespace

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

void GalleryModel::PictureChanged(LONG id) {
  const QModelIndex row = IndexOf(id);
  if (row.isValid()) emit dataChanged(row, row, {Qt::DecorationRole, Qt::ToolTipRole});
}

const StatePicture& GalleryModel::PictureAt(const QModelIndex& index) const {
  return pictures_.Of(index.isValid() ? StateAt(index)->id : 0);
}

QString GalleryModel::Tip(const StoredState& state) const {
  QStringList lines = {"<b>" + ToQt(state.name).left(kMostOfName).toHtmlEscaped() + "</b>"};
  if (!state.date.Text().empty()) lines.append("Recorded " + ToQt(state.date.Text()));
  if (const auto things = ThingsOf(state.id)) lines.append(SameOrDifferent(*things));
  if (state.current) lines.append("Recorded or loaded last");
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
      return index.data().toString() + ", " + index.data(kThings).toString();
    default:
      return {};
  }
}

namespace {

constexpr int kMargin = 6;
constexpr int kBetween = 8;  // difference and date

QSize BoxOf(int width) { return {width, width * 2 / 3}; }

class GalleryDelegate : public QStyledItemDelegate {
 public:
  explicit GalleryDelegate(GalleryGrid& grid) : QStyledItemDelegate(&grid), grid_(grid) {}

  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const override {
    const QSize box = BoxOf(grid_.PictureWidth());
    return {box.width() + 2 * kMargin,
            box.height() + 3 * kMargin + 2 * option.fontMetrics.lineSpacing()};
  }

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override {
    painter->save();
    PaintGround(*painter, option);
    const QRect box(option.rect.topLeft() + QPoint(kMargin, kMargin), BoxOf(grid_.PictureWidth()));
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

  void PaintPicture(QPainter& painter, const QStyleOptionViewItem& option, const QRect& box,
                    const QModelIndex& index) const {
    const StatePicture& picture = grid_.Model().PictureAt(index);
    if (picture.image.isNull()) {
      painter.setPen(Qt::NoPen);
      painter.setBrush(option.palette.color(QPalette::Button));
      painter.drawRoundedRect(box, 3, 3);
      Icon("stagemark")
          .paint(&painter, QRect(box.center() - QPoint(12, 12), QSize(24, 24)), Qt::AlignCenter,
                 QIcon::Disabled);
      return;
    }
    QRect place(QPoint(), picture.image.size().scaled(box.size(), Qt::KeepAspectRatio));
    place.moveCenter(box.center());
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(place, picture.image);
  }

  static void PaintText(QPainter& painter, const QStyleOptionViewItem& option, const QRect& box,
                        const QModelIndex& index) {
    const int line = option.fontMetrics.lineSpacing();
    const QRect name(box.left(), box.bottom() + kMargin, box.width(), line);
    const QRect below = name.translated(0, line);
    QFont font = option.font;
    font.setBold(index.data(GalleryModel::kCurrent).toBool());
    painter.setFont(font);
    const bool isChosen = option.state & QStyle::State_Selected;
    painter.setPen(
        option.palette.color(isChosen ? QPalette::HighlightedText : QPalette::WindowText));
    const QString star = index.data(GalleryModel::kCurrent).toBool() ? QString(" \u2605") : "";
    const QFontMetrics metrics(font);
    painter.drawText(name, Qt::AlignLeft | Qt::AlignVCenter,
                     metrics.elidedText(index.data().toString(), Qt::ElideRight,
                                        name.width() - metrics.horizontalAdvance(star)) +
                         star);
    painter.setFont(option.font);
    if (!isChosen) painter.setPen(option.palette.color(QPalette::PlaceholderText));
    const QString things = index.data(GalleryModel::kThings).toString();
    QString date = index.data(GalleryModel::kDate).toString();
    painter.drawText(below, Qt::AlignLeft | Qt::AlignVCenter,
                     option.fontMetrics.elidedText(things, Qt::ElideRight, below.width()));
    const int room = below.width() - option.fontMetrics.horizontalAdvance(things) -
                     (things.isEmpty() ? 0 : kBetween);
    // The day alone where there is no room for the time.
    if (option.fontMetrics.horizontalAdvance(date) > room) date = date.left(10);
    if (option.fontMetrics.horizontalAdvance(date) <= room)
      painter.drawText(below, Qt::AlignRight | Qt::AlignVCenter, date);
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

void GalleryGrid::SetPictureWidth(int width) {
  width_ = std::clamp(width, kLeastWidth, kMostWidth);
  scheduleDelayedItemsLayout();
  if (scrolled) scrolled();
}

QSize GalleryGrid::PictureBox() const { return BoxOf(width_) * devicePixelRatioF(); }

std::vector<std::string> GalleryGrid::Chosen() const {
  QModelIndexList rows = selectionModel()->selectedIndexes();
  std::sort(rows.begin(), rows.end());
  std::vector<std::string> names;
  for (const QModelIndex& row : rows) names.push_back(model_->StateAt(row)->name);
  return names;
}

void GalleryGrid::ShowChosen(const std::vector<std::string>& names) {
  QItemSelection wanted;
  for (const std::string& name : names) {
    const QModelIndex row = model_->IndexOf(name);
    if (row.isValid()) wanted.append(QItemSelectionRange(row));
  }
  showing_ = true;
  if (!wanted.isEmpty()) {
    selectionModel()->setCurrentIndex(wanted.first().topLeft(), QItemSelectionModel::NoUpdate);
    scrollTo(wanted.first().topLeft());
  }
  selectionModel()->select(wanted, QItemSelectionModel::ClearAndSelect);
  showing_ = false;
}

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

namespace {

// Nothing is counted while a person works on the scene.
constexpr int kRest = 250;  // milliseconds
constexpr int kZoomStep = 20;
constexpr std::size_t kCountedAtOnce = 2000;  // elements

}  // namespace

GalleryPanel::GalleryPanel(const engine::Services& services, const StatesDialog& dialog,
                           QWidget* parent)
    : QWidget(parent),
      dialog_(dialog),
      pictures_(services, [this](LONG id) { grid_->Model().PictureChanged(id); }),
      bar_(new PanelBar(this)),
      search_(new QLineEdit(this)),
      size_(new QSlider(Qt::Horizontal, this)),
      grid_(new GalleryGrid(pictures_, this)),
      counting_("counting what differs", [this] { return CountOn(); }) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(bar_);
  layout->addWidget(grid_);
  setFocusProxy(grid_);
  BuildBar();
  Connect();
  rest_.setSingleShot(true);
  rest_.setInterval(kRest);
  connect(&rest_, &QTimer::timeout, this, [this] {
    pictures_.See(grid_->Visible());
    counting_.Start();
  });
  engine::AddDialogObserver(*this);
}

GalleryPanel::~GalleryPanel() { engine::RemoveDialogObserver(*this); }

void GalleryPanel::BuildBar() {
  search_->setPlaceholderText("Search");
  search_->setToolTip("Show only the Stagemarks with this in their names (Escape clears it)");
  search_->setAccessibleName("Search Stagemarks");
  search_->setClearButtonEnabled(true);
  search_->addAction(Icon("search"), QLineEdit::LeadingPosition);
  search_->setMaximumWidth(180);
  bar_->addWidget(search_);
  BuildActions();
  bar_->AddSpace();
  size_->setRange(GalleryGrid::kLeastWidth, GalleryGrid::kMostWidth);
  size_->setValue(GalleryGrid::kFirstWidth);
  size_->setPageStep(kZoomStep);
  size_->setMaximumWidth(100);
  size_->setToolTip("How large the pictures are (Ctrl and the wheel)");
  size_->setAccessibleName("Size of the pictures");
  bar_->addWidget(size_);
}

void GalleryPanel::BuildActions() {
  load_ = bar_->Add(*grid_, "stagemark", "Load", {}, [this] { Load(); });
  load_->setToolTip("Bring the scene into the chosen state (double click, Enter)");
  delete_ = bar_->Add(*grid_, "delete", "Delete\u2026", QKeySequence::Delete, [this] { Delete(); });
  delete_->setToolTip("Delete the chosen Stagemark for good, after a question (Del)");
}

void GalleryPanel::Connect() {
  connect(search_, &QLineEdit::textChanged, this, [this](const QString& text) {
    const auto chosen = grid_->Chosen();
    grid_->Model().SetFilter(text);
    grid_->ShowChosen(chosen);
    rest_.start();
  });
  connect(search_, &QLineEdit::returnPressed, grid_, [this] {
    grid_->setFocus();
    if (grid_->Chosen().empty()) grid_->setCurrentIndex(grid_->Model().index(0));
  });
  connect(size_, &QSlider::valueChanged, grid_, &GalleryGrid::SetPictureWidth);
  connect(grid_, &QAbstractItemView::activated, this, [this] { Load(); });
  connect(grid_, &QWidget::customContextMenuRequested, this,
          [this](const QPoint& place) { ShowMenu(place); });
  grid_->zoomed = [this](int way) { size_->setValue(size_->value() + way * kZoomStep); };
  grid_->scrolled = [this] { rest_.start(); };
  grid_->chosen = [this] {
    dialog_.Choose(grid_->Chosen());
    ShowActions();
    rest_.start();
  };
}

void GalleryPanel::ShowMenu(const QPoint& place) {
  if (!grid_->indexAt(place).isValid()) return;
  QMenu menu(grid_);
  menu.addActions({load_});
  menu.setDefaultAction(load_);
  menu.addSeparator();
  menu.addActions({delete_});
  menu.exec(grid_->viewport()->mapToGlobal(place));
}

void GalleryPanel::Load() {
  const StoredState* state = grid_->Model().StateAt(grid_->currentIndex());
  if (!state || !load) return;
  const std::string name = state->name;
  load(name);
}

void GalleryPanel::Delete() {
  const auto chosen = grid_->Chosen();
  if (chosen.size() == 1) dialog_.Delete(chosen.front());
}

void GalleryPanel::ShowActions() {
  const std::size_t count = grid_->Chosen().size();
  load_->setEnabled(count == 1);
  delete_->setEnabled(count == 1 && dialog_.IsOpen());
}

void GalleryPanel::Follow(host::BaseDocument* doc) {
  const host::ULLONG count = doc ? engine::ChangeCount(*doc) : 0;
  const bool dialogChanged = std::exchange(dialogChanged_, false);
  const engine::Parts parts = dialogChanged ? dialog_.PartsInForce() : parts_;
  if (IdentityOf(doc) != doc_ || count != seen_ || parts != parts_) {
    doc_ = IdentityOf(doc);
    seen_ = count;
    parts_ = parts;
    const auto chosen = grid_->Chosen();
    grid_->Model().Update(doc);
    grid_->ShowChosen(chosen);
    pictures_.Follow(doc, grid_->Model().States());
    ForgetCounting();
    rest_.start();
  }
  if (dialogChanged) FollowDialog();
  ShowActions();
}

void GalleryPanel::FollowDialog() {
  const auto chosen = dialog_.Chosen();
  if (!chosen.empty() && chosen != grid_->Chosen()) grid_->ShowChosen(chosen);
}

void GalleryPanel::ForgetCounting() {
  counting_.Stop();
  comparison_.reset();
}

bool GalleryPanel::CountOn() {
  const host::BaseDocument* doc = FindOpenDocument(doc_);
  if (!doc || engine::ChangeCount(*doc) != seen_) {
    comparison_.reset();
    return false;
  }
  if (!comparison_) return CountNext(*doc);
  if (comparison_->Advance(kCountedAtOnce)) return true;
  const std::size_t things = comparison_->Take().changes.size();
  comparison_.reset();
  grid_->Model().SetThings(counted_, things);
  return true;
}

bool GalleryPanel::CountNext(const host::BaseDocument& doc) {
  std::vector<LONG> ids = grid_->Visible();
  for (const StoredState& state : grid_->Model().States()) ids.push_back(state.id);
  const auto next = std::find_if(ids.begin(), ids.end(),
                                 [this](LONG id) { return !grid_->Model().ThingsOf(id); });
  if (next == ids.end()) return false;
  const auto& states = grid_->Model().States();
  const auto state = std::find_if(states.begin(), states.end(),
                                  [&](const StoredState& one) { return one.id == *next; });
  engine::CompareOptions options;
  options.parts = parts_;
  options.mostFields = 0;
  options.unknown = false;
  counted_ = *next;
  comparison_.emplace(doc, state->record, options);
  return true;
}

}  // namespace desktop
