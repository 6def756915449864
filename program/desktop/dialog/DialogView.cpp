// The gadget tree is the truth, the widgets show it. Changes are told by the engine while plug-in
// code runs; they are collected and shown when the event loop comes round. Widgets are only built
// anew when the shape of the tree has changed, which a text of it tells: with them would go what is
// typed, scrolled and focused.
#include "program/desktop/dialog/DialogView.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QMenuBar>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>
#include <algorithm>

#include "program/desktop/Text.h"
#include "program/desktop/background/DocumentBusy.h"
#include "program/desktop/dialog/GadgetGrid.h"
#include "program/desktop/dialog/ListView.h"
#include "program/desktop/dialog/PluginCall.h"

namespace desktop {

namespace {

// Pixels that borders of groups are cut to where room is short.
constexpr int kNarrowBorder = 3;

void Add(std::string& shape, std::initializer_list<host::LONG> numbers) {
  for (const host::LONG number : numbers) shape.append(std::to_string(number)).push_back(' ');
}

// With its length before it, so that two texts cannot be read as other two.
void AddText(std::string& shape, const host::String& text) {
  const std::string bytes = text.ToUtf8();
  shape.append(std::to_string(bytes.size())).append(":").append(bytes);
}

void AddGadget(std::string& shape, const engine::Gadget& gadget) {
  Add(shape,
      {static_cast<host::LONG>(gadget.kind), gadget.id, gadget.flags, gadget.width, gadget.height});
  if (gadget.kind != engine::GadgetKind::Group) return;
  Add(shape, {gadget.columns, gadget.rows, gadget.spaceX, gadget.spaceY, gadget.enabled});
  Add(shape, {gadget.borderLeft, gadget.borderTop, gadget.borderRight, gadget.borderBottom});
  Add(shape, {static_cast<host::LONG>(gadget.children.size())});
  AddText(shape, gadget.text);
}

void AddPluginEntry(std::string& shape, const engine::MenuEntry& entry) {
  Add(shape, {entry.id, entry.separator, static_cast<host::LONG>(entry.children.size())});
  AddText(shape, entry.text);
}

// The shape of a dialog as a text that differs when its widgets have to be built anew: kinds, IDs,
// places and titles of groups, but no values.
std::string ShapeOf(const host::GeDialog& dialog) {
  std::string shape;
  std::vector<const engine::Gadget*> open = {&engine::DialogRoot(dialog)};
  while (!open.empty()) {
    const engine::Gadget* gadget = open.back();
    open.pop_back();
    AddGadget(shape, *gadget);
    for (const auto& child : gadget->children) open.push_back(child.get());
  }
  return shape;
}

// Texts and IDs of the menu bar, without what is checked or switched off.
std::string ShapeOfMenus(const host::GeDialog& dialog) {
  std::string shape;
  std::vector<const engine::MenuEntry*> open;
  for (const engine::MenuEntry& entry : engine::DialogMenus(dialog)) open.push_back(&entry);
  while (!open.empty()) {
    const engine::MenuEntry* entry = open.back();
    open.pop_back();
    AddPluginEntry(shape, *entry);
    for (const engine::MenuEntry& child : entry->children) open.push_back(&child);
  }
  return shape;
}

// Checkable only while it is checked: the toolkit keeps an empty box in front of others.
void ShowState(QAction& action, const engine::MenuEntry& entry) {
  action.setEnabled(entry.enabled);
  action.setCheckable(entry.checked);
  action.setChecked(entry.checked);
}

void AddPluginEntries(QMenu& menu, const std::vector<engine::MenuEntry>& entries,
                      const SharedDialogLink& link);

// The link and not the dialog is held: a menu may be open while its dialog goes.
void AddPluginEntry(QMenu& menu, const engine::MenuEntry& entry, const SharedDialogLink& link) {
  if (entry.separator) {
    menu.addSeparator();
  } else if (entry.id == 0) {
    AddPluginEntries(*menu.addMenu(Label(entry.text)), entry.children, link);
  } else {
    QAction* action = menu.addAction(Label(entry.text));
    action->setData(entry.id);
    ShowState(*action, entry);
    QObject::connect(
        action, &QAction::triggered, action, [link, action, id = entry.id, label = entry.text] {
          CallPlugin(link, *action, label, About::kNothingMore,
                     [id](host::GeDialog& dialog) { return engine::ChooseMenu(dialog, id); });
        });
  }
}

// The toolkit flips a check mark by itself when its entry is chosen; the dialog alone says what is
// marked.
void RefreshStates(const QMenu& menu, const SharedDialogLink& link) {
  for (QAction* action : menu.actions()) {
    const host::LONG id = action->data().toInt();
    const engine::MenuEntry* entry =
        id != 0 && link->dialog ? engine::FindMenuEntry(*link->dialog, id) : nullptr;
    if (entry) ShowState(*action, *entry);
  }
}

void AddPluginEntries(QMenu& menu, const std::vector<engine::MenuEntry>& entries,
                      const SharedDialogLink& link) {
  for (const engine::MenuEntry& entry : entries) AddPluginEntry(menu, entry, link);
  QObject::connect(&menu, &QMenu::aboutToShow, &menu, [&menu, link] { RefreshStates(menu, link); });
}

// Fills the bar anew with the dialog's menus; an entry that is chosen becomes an event. Check marks
// and what is switched off are taken over whenever a menu opens.
void ShowMenus(QMenuBar& bar, const SharedDialogLink& link) {
  for (QAction* action : bar.actions()) {
    if (action->menu()) action->menu()->deleteLater();
  }
  bar.clear();
  for (const engine::MenuEntry& entry : engine::DialogMenus(*link->dialog)) {
    QMenu* menu = bar.addMenu(Label(entry.text));
    AddPluginEntries(*menu, entry.children, link);
  }
}

}  // namespace

DialogView::DialogView(host::GeDialog& dialog, engine::FileSystem& files, QWidget* parent)
    : QWidget(parent),
      link_(std::make_shared<DialogLink>(DialogLink{&dialog, files})),
      menus_(new QMenuBar(this)),
      area_(new QScrollArea(this)) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setMenuBar(menus_);
  layout->addWidget(area_);
  // The bar belongs to the dock, not to the top of the screen.
  menus_->setNativeMenuBar(false);
  area_->setWidgetResizable(true);
  area_->setFrameShape(QFrame::NoFrame);
  catchUp_.setSingleShot(true);
  // While plug-in code runs, for instance behind a question of its own, the dialog may be half
  // filled.
  connect(&catchUp_, &QTimer::timeout, this, [this] {
    if (std::exchange(isWaiting_, true)) return;
    WhenDocumentIsFree(this, [this] {
      isWaiting_ = false;
      CatchUp();
    });
  });
  engine::AddDialogObserver(*this);
  Build();
}

DialogView::~DialogView() {
  engine::RemoveDialogObserver(*this);
  link_->dialog = nullptr;
}

QWidget* DialogView::WidgetOf(host::LONG id) const {
  const auto it = widgets_.find(id);
  return it == widgets_.end() ? nullptr : it->second.widget;
}

QSize DialogView::sizeHint() const {
  const QSize content = area_->widget() ? area_->widget()->sizeHint() : QSize();
  return {content.width(), content.height() + menus_->sizeHint().height()};
}

void DialogView::SetEmptyListText(const QString& text) {
  emptyListText_ = text;
  for (const auto& [id, made] : widgets_) {
    if (auto* list = dynamic_cast<ListView*>(made.widget)) list->SetEmptyText(text);
  }
}

void DialogView::DialogClosed(host::GeDialog& dialog) {
  if (&dialog != link_->dialog) return;
  link_->dialog = nullptr;
  catchUp_.stop();
  setEnabled(false);
  if (closed) closed();
}

// A gadget without an ID cannot be found again, and a group may change its children: then all is
// looked at.
void DialogView::DialogChanged(host::GeDialog& dialog, const engine::Gadget* gadget) {
  if (&dialog != link_->dialog) return;
  if (gadget && gadget->id != 0 && gadget->kind != engine::GadgetKind::Group) {
    changed_.insert(gadget->id);
  } else {
    changedWholly_ = true;
  }
  if (!catchUp_.isActive()) catchUp_.start(0);
}

// `changing` comes first: it may choose a row, and what that changes is shown here, too.
void DialogView::CatchUp() {
  if (!link_->dialog) return;
  if (changing) changing();
  const auto changed = std::exchange(changed_, {});
  if (std::exchange(changedWholly_, false)) {
    Build();
    if (titled) titled();
  }
  for (const host::LONG id : changed) {
    const engine::Gadget* gadget = link_->Find(id);
    const auto it = widgets_.find(id);
    if (gadget && it != widgets_.end()) it->second.show(*gadget);
  }
  if (!changed.empty()) FitToWidth();
}

void DialogView::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  FitToWidth();
}

// Room is taken from pictures first, which shrink and stay readable, then from the borders of
// groups; what is missing then is scrolled.
void DialogView::FitToWidth() {
  if (!area_->widget()) return;
  std::vector<QWidget*> pictures;
  for (const auto& [id, made] : widgets_) {
    if (auto* picture = dynamic_cast<PictureButton*>(made.widget)) pictures.push_back(picture);
  }
  for (QWidget* picture : pictures) picture->setMaximumWidth(QWIDGETSIZE_MAX);
  SetBorders(true);
  const int missing = MissingWidth();
  for (QWidget* picture : pictures) {
    const int width = picture->sizeHint().width() - missing;
    if (missing > 0) picture->setMaximumWidth(std::max(width, picture->minimumWidth()));
  }
  UpdateLayouts();
  const QSize least = area_->widget()->minimumSizeHint();
  if (MissingWidth() > 0 || least.width() > area_->width() || least.height() > area_->height())
    SetBorders(false);
}

// A list is content with less than it asks for as long as it shows its columns.
int DialogView::MissingWidth() const {
  int wanted = area_->widget()->sizeHint().width();
  for (const auto& [id, made] : widgets_) {
    if (const auto* list = dynamic_cast<const ListView*>(made.widget)) {
      wanted -= std::max(0, list->sizeHint().width() - list->ReadableWidth());
    }
  }
  return wanted - area_->width();
}

void DialogView::SetBorders(bool wide) {
  const auto narrowed = [wide](int border) {
    return wide ? border : std::min(border, kNarrowBorder);
  };
  for (const auto& [grid, asked] : groups_) {
    grid->setContentsMargins(narrowed(asked.left()), narrowed(asked.top()), narrowed(asked.right()),
                             narrowed(asked.bottom()));
  }
  UpdateLayouts();
}

// Updates from the innermost group outwards; the toolkit itself does so only in the event loop.
void DialogView::UpdateLayouts() {
  std::for_each(groups_.rbegin(), groups_.rend(),
                [](const auto& group) { group.first->parentWidget()->updateGeometry(); });
}

// Marks in menus and titles change often; the widgets, with what is typed and scrolled in them,
// stay as long as the tree does.
void DialogView::Build() {
  const std::string menuShape = ShapeOfMenus(*link_->dialog);
  if (menuShape != menuShape_) ShowMenus(*menus_, link_);
  menuShape_ = menuShape;
  const std::string shape = ShapeOf(*link_->dialog);
  if (shape == shape_) return;
  shape_ = shape;
  widgets_.clear();
  groups_.clear();
  if (QWidget* former = area_->takeWidget()) former->deleteLater();
  area_->setWidget(BuildGroup(engine::DialogRoot(*link_->dialog), area_));
  SetEmptyListText(emptyListText_);
  FitToWidth();
  updateGeometry();
  if (built) built();
}

// Recursive by the depth of groups, which a plug-in's code builds one by one.
QWidget* DialogView::BuildGroup(const engine::Gadget& group, QWidget* parent) {
  QWidget* box =
      group.text.Content() ? new QGroupBox(ToQt(group.text), parent) : new QWidget(parent);
  auto* grid = new QGridLayout(box);
  groups_.emplace_back(
      grid, QMargins(group.borderLeft, group.borderTop, group.borderRight, group.borderBottom));
  grid->setContentsMargins(groups_.back().second);
  grid->setHorizontalSpacing(group.spaceX);
  grid->setVerticalSpacing(group.spaceY);
  box->setEnabled(group.enabled);
  int index = 0;
  for (const auto& child : group.children) Place(*child, CellOf(group, index++), *grid, *box);
  return box;
}

// Stretch goes to cells whose gadget asked for all of the width or height.
void DialogView::Place(const engine::Gadget& child, Cell cell, QGridLayout& grid, QWidget& group) {
  const bool isSeparator = child.kind == engine::GadgetKind::Separator;
  QWidget* widget = nullptr;
  if (child.kind == engine::GadgetKind::Group) {
    widget = BuildGroup(child, &group);
  } else {
    const GadgetWidget made = MakeGadgetWidget(link_, child, &group);
    widget = made.widget;
    if (child.id != 0) widgets_[child.id] = made;
  }
  grid.addWidget(widget, cell.row, cell.column,
                 isSeparator ? Qt::AlignHCenter : AlignmentOf(child.flags));
  if (FillsWidth(child.flags)) grid.setColumnStretch(cell.column, 1);
  if (FillsHeight(child.flags) && !isSeparator) grid.setRowStretch(cell.row, 1);
}

}  // namespace desktop
