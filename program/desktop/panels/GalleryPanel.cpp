// The panel costs something only while it can be seen: pictures in sight are rendered by the
// child, and what differs from the scene is counted in slices, the visible ones first. Both
// begin when nothing has happened for a moment.
#include "program/desktop/panels/GalleryPanel.h"

#include <QDockWidget>
#include <QVBoxLayout>
#include <algorithm>

#include "program/desktop/Icons.h"
#include "program/desktop/Text.h"
#include "program/desktop/render/WipeWindow.h"

namespace desktop {

using engine::StoredState;
using host::LONG;

namespace {

// Pixels that a notch of the wheel or a page of the slider makes.
constexpr int kZoomStep = 20;
constexpr const char* kSize = "gallery/size";
constexpr std::size_t kCountedAtOnce = 2000;  // elements

}  // namespace

// The pictures tell of themselves from the main thread only.
GalleryPanel::GalleryPanel(const engine::Services& services, Settings& settings,
                           const StatesDialog& dialog, QWidget* parent)
    : QWidget(parent),
      settings_(settings),
      dialog_(dialog),
      pictures_(services,
                [this](LONG id) {
                  grid_->Model().PictureChanged(id);
                  stop_->setEnabled(pictures_.Rendering() != kNoState);
                }),
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
  rest_.setInterval(kMomentAfterChange);
  connect(&rest_, &QTimer::timeout, this, [this] {
    if (!CanBeSeen()) return;
    pictures_.See(grid_->Visible(), grid_->PictureBox());
    StartCounting();
    KeepSize();
  });
  engine::AddDialogObserver(*this);
}

GalleryPanel::~GalleryPanel() { engine::RemoveDialogObserver(*this); }

// A dock behind another tab is not hidden, but stands outside the window.
bool GalleryPanel::CanBeSeen() const { return isVisible() && !visibleRegion().isEmpty(); }

// The dock is known only when the panel stands in it, and may be another one after a layout was
// restored.
void GalleryPanel::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  auto* dock = qobject_cast<QDockWidget*>(parentWidget());
  if (dock && dock != std::exchange(dock_, dock))
    connect(dock, &QDockWidget::visibilityChanged, this,
            [this](bool isSeen) { isSeen ? WorkSoon() : Rest(); });
  WorkSoon();
}

void GalleryPanel::hideEvent(QHideEvent* event) {
  QWidget::hideEvent(event);
  Rest();
}

// The child may go: pictures that are there stay.
void GalleryPanel::Rest() {
  rest_.stop();
  ForgetCounting();
  pictures_.Leave();
}

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
  BuildSize();
}

void GalleryPanel::BuildSize() {
  size_->setRange(GalleryGrid::kLeastWidth, GalleryGrid::kMostWidth);
  size_->setValue(KeptSize());
  grid_->SetPictureWidth(size_->value());
  size_->setPageStep(kZoomStep);
  size_->setMaximumWidth(100);
  size_->setToolTip("How large the pictures are (Ctrl and the wheel)");
  size_->setAccessibleName("Size of the pictures");
  bar_->addWidget(size_);
}

int GalleryPanel::KeptSize() const {
  const int kept = settings_.Bytes(kSize).toInt();
  return kept > 0 ? kept : GalleryGrid::kFirstWidth;
}

// Kept when a person has let go of it for a moment, not with each step of the slider.
void GalleryPanel::KeepSize() {
  // A failure to save it is in the ledger; the size holds for this run.
  if (size_->value() != KeptSize()) (void)settings_.Set(kSize, QByteArray::number(size_->value()));
}

void GalleryPanel::BuildActions() {
  load_ = bar_->Add(*grid_, "stagemark", "Load", {}, [this] { Load(); });
  load_->setToolTip("Bring the scene into the chosen state (double click, Enter)");
  wipe_ =
      bar_->Add(*grid_, "wipe", "Compare A/B", QKeySequence("Ctrl+B"), [this] { CompareTwo(); });
  wipe_->setToolTip("Lay the pictures of the two chosen Stagemarks over one another (Ctrl+B)");
  render_ = bar_->Add(*grid_, "render", "Render Again", {}, [this] { RenderAgain(); });
  stop_ = bar_->Add(*grid_, "render-stop", "Stop Rendering", {}, [this] { pictures_.Stop(); });
  delete_ = bar_->Add(*grid_, "delete", "Delete\u2026", QKeySequence::Delete, [this] { Delete(); });
  delete_->setToolTip("Delete the chosen Stagemark for good, after a question (Del)");
}

void GalleryPanel::Connect() {
  connect(search_, &QLineEdit::textChanged, this, [this](const QString& text) {
    const auto chosen = grid_->Chosen();
    grid_->Model().SetFilter(text);
    grid_->ShowChosen(chosen);
    WorkSoon();
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
  grid_->scrolled = [this] { WorkSoon(); };
  grid_->chosen = [this] {
    dialog_.Choose(grid_->Chosen());
    ShowActions();
  };
}

void GalleryPanel::ShowMenu(const QPoint& place) {
  if (!grid_->indexAt(place).isValid()) return;
  QMenu menu(grid_);
  menu.addActions({load_});
  menu.setDefaultAction(load_);
  menu.addActions({wipe_});
  menu.addSeparator();
  menu.addActions({render_});
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

// All of them where none is chosen.
void GalleryPanel::RenderAgain() {
  std::vector<LONG> ids;
  for (const std::string& name : grid_->Chosen())
    ids.push_back(grid_->Model().StateAt(grid_->Model().IndexOf(name))->id);
  const auto& states = grid_->Model().States();
  if (ids.empty())
    std::transform(states.begin(), states.end(), std::back_inserter(ids),
                   [](const StoredState& state) { return state.id; });
  pictures_.RenderAgain(ids);
}

// With the pictures that are there, which the window replaces by larger ones.
void GalleryPanel::CompareTwo() {
  const auto chosen = grid_->Chosen();
  const host::BaseDocument* doc = FindOpenDocument(doc_);
  if (!doc || chosen.size() != 2) return;
  const auto side = [this](const std::string& name) {
    return WipeSide{name, grid_->Model().PictureAt(grid_->Model().IndexOf(name)).image};
  };
  (new WipeWindow(window(), *doc, side(chosen[0]), side(chosen[1])))->show();
}

void GalleryPanel::ShowActions() {
  const auto count = grid_->selectionModel()->selectedIndexes().size();
  load_->setEnabled(count == 1);
  wipe_->setEnabled(count == 2);
  render_->setEnabled(!grid_->Model().States().empty());
  render_->setToolTip(count > 0 ? "Render the pictures of the chosen Stagemarks again"
                                : "Render all pictures again");
  stop_->setEnabled(pictures_.Rendering() != kNoState);
  delete_->setEnabled(count == 1 && dialog_.IsOpen());
}

// The dialog's options decide what a load applies, and with it what differs. A saved or renamed
// file changes where previews are found, without a change of the scene.
void GalleryPanel::Follow(host::BaseDocument* doc) {
  const host::ULLONG count = doc ? engine::ChangeCount(*doc) : 0;
  const bool dialogChanged = std::exchange(dialogChanged_, false);
  const engine::Parts parts = dialogChanged ? dialog_.PartsInForce() : parts_;
  const bool isOther = IdentityOf(doc) != doc_ || count != seen_;
  const bool isSaved = doc && !doc->GetChanged();
  const QString file =
      doc ? ToQt((doc->GetDocumentPath() + doc->GetDocumentName()).GetString()) : QString();
  if (isOther || parts != parts_) {
    doc_ = IdentityOf(doc);
    seen_ = count;
    parts_ = parts;
    const auto chosen = grid_->Chosen();
    grid_->Model().Update(doc);
    if (grid_->Chosen() != chosen) grid_->ShowChosen(chosen);
    ForgetCounting();
  }
  if (isOther || isSaved != isSaved_ || file != file_ || parts != parts_) {
    isSaved_ = isSaved;
    file_ = file;
    pictures_.Follow(doc, grid_->Model().States());
    ShowActions();
    WorkSoon();
  }
  if (dialogChanged) FollowDialog();
}

// Nothing chosen in the dialog leaves the gallery alone: the plug-in forgets its row with every
// rebuilt list.
void GalleryPanel::FollowDialog() {
  const auto chosen = dialog_.Chosen();
  if (!chosen.empty() && chosen != grid_->Chosen()) grid_->ShowChosen(chosen);
  ShowActions();
}

void GalleryPanel::ForgetCounting() {
  counting_.Stop();
  comparison_.reset();
}

// A scene that has changed meanwhile ends the counting; Follow begins it anew.
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

// Only how many things differ, not which: no fields are read.
bool GalleryPanel::CountNext(const host::BaseDocument& doc) {
  const GalleryModel& model = grid_->Model();
  while (!uncounted_.empty() && model.ThingsOf(uncounted_.back())) uncounted_.pop_back();
  if (uncounted_.empty()) return false;
  counted_ = uncounted_.back();
  const auto state = std::find_if(model.States().begin(), model.States().end(),
                                  [this](const StoredState& one) { return one.id == counted_; });
  if (state == model.States().end()) return false;
  engine::CompareOptions options;
  options.parts = parts_;
  options.mostFields = 0;
  options.unknown = false;
  comparison_.emplace(doc, state->record, options);
  return true;
}

// A stack: what is in sight is laid on top, in reverse, and counted first; a state in both is
// counted once.
void GalleryPanel::StartCounting() {
  uncounted_.clear();
  for (const StoredState& state : grid_->Model().States()) uncounted_.push_back(state.id);
  const std::vector<LONG> visible = grid_->Visible();
  uncounted_.insert(uncounted_.end(), visible.rbegin(), visible.rend());
  counting_.Start();
}

}  // namespace desktop
