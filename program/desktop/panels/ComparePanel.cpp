// The differences as a tree of three levels: groups by part, their elements, and the fields of an
// element where more than one differs. They are found out in slices of the event loop, with the
// values of so many elements, then shown all at once; rows that were open or chosen are found again
// by element, so that a scene that changes does not fold the tree.
#include "program/desktop/panels/ComparePanel.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QLocale>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

#include "engine/states/FieldText.h"
#include "program/desktop/Icons.h"
#include "program/desktop/Text.h"
#include "program/desktop/panels/ElementRows.h"
#include "program/desktop/panels/EmptyText.h"
#include "program/desktop/panels/NodeTreeModel.h"

namespace desktop {

using engine::ChangeKind;
using engine::ElementChange;
using engine::Part;

namespace {

// Internal IDs of model indexes: 0 for a group, the number of its group for an element, the place
// of its element for a field; elements and fields count from these.
constexpr quintptr kFirstElementId = 1;
constexpr quintptr kFirstFieldId = quintptr{1} << 32;

QString Counted(const QString& what, std::size_t count) {
  return QString("%1 (%2)").arg(what, QLocale().toString(qulonglong{count}));
}

// Told in the element's own row: most differences are of one switch.
bool IsOneField(const ElementChange& change) {
  return change.kind == ChangeKind::Changed && change.fields.size() == 1;
}

}  // namespace

// The tree is only reset when its shape differs; else the views ask for the texts anew, and
// scrolling stays.
bool CompareModel::Show(const host::BaseDocument* doc, Compared compared) {
  CompareModel next;
  next.doc_ = IdentityOf(doc);
  next.compared_ = std::move(compared);
  next.Arrange();
  const bool resets = !LooksLike(next);
  if (resets) beginResetModel();
  doc_ = next.doc_;
  std::swap(compared_, next.compared_);
  std::swap(groups_, next.groups_);
  std::swap(order_, next.order_);
  std::swap(lost_, next.lost_);
  things_ = next.things_;
  if (resets) endResetModel();
  emit headerDataChanged(Qt::Horizontal, 0, kColumnCount - 1);
  return resets;
}

// `order_` holds the places of the changes in the order of the rows: parts first, and of a scene
// what the state does not know last, which no load would touch. The changes come sorted by part.
void CompareModel::Arrange() {
  const std::vector<ElementChange>& changes = compared_.difference.changes;
  lost_.resize(changes.size());
  for (const std::size_t lost : compared_.lost) lost_[lost] = true;
  const auto isUnknown = [this](const ElementChange& change) {
    return compared_.isScene && change.kind == ChangeKind::OnlyLeft;
  };
  for (std::size_t i = 0; i < changes.size();) {
    const Part part = changes[i].part;
    const std::size_t first = order_.size();
    for (; i < changes.size() && changes[i].part == part; ++i) {
      if (!isUnknown(changes[i])) order_.push_back(i);
    }
    AddGroup(engine::RowOf(part).label, {}, first);
  }
  things_ = order_.size();
  if (!compared_.isScene) return;
  const std::size_t first = order_.size();
  for (std::size_t i = 0; i < changes.size(); ++i) {
    if (isUnknown(changes[i])) order_.push_back(i);
  }
  AddGroup("The Stagemark does not know",
           "In the scene, but not in this Stagemark: loading leaves them as they are", first);
  if (const std::size_t gone = compared_.difference.gone; gone > 0) {
    groups_.push_back({Counted("Gone from the scene", gone),
                       "Recorded, but in the scene no more: loading passes them over",
                       order_.size(), 0});
  }
}

void CompareModel::AddGroup(const QString& title, const QString& tip, std::size_t first) {
  const std::size_t count = order_.size() - first;
  if (count > 0) groups_.push_back({Counted(title, count), tip, first, count});
}

// Values may differ: they are asked for when they are drawn.
bool CompareModel::LooksLike(const CompareModel& other) const {
  if (doc_ != other.doc_ || groups_ != other.groups_ || order_ != other.order_) return false;
  return std::ranges::all_of(order_, [&](std::size_t i) {
    const ElementChange& mine = compared_.difference.changes[i];
    const ElementChange& others = other.compared_.difference.changes[i];
    return mine.element == others.element && mine.fields.size() == others.fields.size();
  });
}

// The ID of an index tells its level and, below a group, where its parent is, so that no tree is
// kept beside the list.
CompareModel::Level CompareModel::LevelOf(const QModelIndex& index) {
  if (index.internalId() < kFirstElementId) return Level::Group;
  return index.internalId() < kFirstFieldId ? Level::Element : Level::Field;
}

std::optional<std::size_t> CompareModel::PlaceOf(const QModelIndex& index) const {
  if (!index.isValid() || LevelOf(index) == Level::Group) return std::nullopt;
  if (LevelOf(index) == Level::Field) return index.internalId() - kFirstFieldId;
  return groups_[index.internalId() - kFirstElementId].first +
         static_cast<std::size_t>(index.row());
}

const ElementChange* CompareModel::ChangeAt(const QModelIndex& index) const {
  const std::optional<std::size_t> place = PlaceOf(index);
  return place ? &compared_.difference.changes[order_[*place]] : nullptr;
}

bool CompareModel::IsLost(const QModelIndex& index) const {
  const std::optional<std::size_t> place = PlaceOf(index);
  return place && lost_[order_[*place]];
}

QModelIndex CompareModel::index(int row, int column, const QModelIndex& parent) const {
  if (row < 0 || row >= rowCount(parent) || column < 0 || column >= kColumnCount) return {};
  if (!parent.isValid()) return createIndex(row, column, quintptr{0});
  if (LevelOf(parent) == Level::Group)
    return createIndex(row, column, kFirstElementId + static_cast<quintptr>(parent.row()));
  return createIndex(row, column, kFirstFieldId + *PlaceOf(parent));
}

// The group of a place is found by bisection: O(log groups).
QModelIndex CompareModel::parent(const QModelIndex& index) const {
  if (!index.isValid() || LevelOf(index) == Level::Group) return {};
  if (LevelOf(index) == Level::Element)
    return createIndex(static_cast<int>(index.internalId() - kFirstElementId), 0, quintptr{0});
  const std::size_t place = index.internalId() - kFirstFieldId;
  const auto group = std::prev(std::ranges::upper_bound(groups_, place, {}, &Group::first));
  return createIndex(static_cast<int>(place - group->first), 0,
                     kFirstElementId + static_cast<quintptr>(group - groups_.begin()));
}

// An element that only one side has says all in its own row.
int CompareModel::rowCount(const QModelIndex& parent) const {
  if (!parent.isValid()) return static_cast<int>(groups_.size());
  if (parent.column() > 0 || LevelOf(parent) == Level::Field) return 0;
  if (LevelOf(parent) == Level::Group)
    return static_cast<int>(groups_[static_cast<std::size_t>(parent.row())].count);
  const ElementChange& change = *ChangeAt(parent);
  const bool hasRows = change.kind == ChangeKind::Changed && change.fields.size() > 1;
  return hasRows ? static_cast<int>(change.fields.size()) : 0;
}

QVariant CompareModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || !Document()) return {};
  switch (LevelOf(index)) {
    case Level::Group:
      return GroupData(groups_[static_cast<std::size_t>(index.row())], index.column(), role);
    case Level::Element:
      return ElementData(*ChangeAt(index), index.column(), role);
    case Level::Field:
      return FieldData(*ChangeAt(index), static_cast<std::size_t>(index.row()), index.column(),
                       role);
  }
  return {};
}

QVariant CompareModel::GroupData(const Group& group, int column, int role) const {
  if (role == Qt::DisplayRole && column == kWhat) return group.title;
  if (role == Qt::ToolTipRole && !group.tip.isEmpty()) return group.tip;
  if (role == Qt::FontRole) {
    QFont bold;
    bold.setBold(true);
    return bold;
  }
  return {};
}

QVariant CompareModel::ElementData(const ElementChange& change, int column, int role) const {
  if (column != kWhat) return ElementValue(change, column, role);
  const host::BaseDocument& doc = *Document();
  const bool isLost =
      lost_[static_cast<std::size_t>(&change - compared_.difference.changes.data())];
  QString name = change.part == Part::Camera ? QString("Scene")
                                             : ToQt(engine::ElementPath(doc, change.element));
  if (IsOneField(change)) name += ": " + FieldData(change, 0, kWhat, Qt::DisplayRole).toString();
  if (role == Qt::DisplayRole) return name.simplified();
  if (role == Qt::DecorationRole)
    return isLost ? Icon("warning") : ElementIcon(doc, change.part, change.element);
  if (role == Qt::AccessibleDescriptionRole && isLost) return QString("will be lost");
  if (role != Qt::ToolTipRole) return {};
  const QString about = isLost ? QString("In no Stagemark as it is now: loading this one loses it")
                               : ToQt(engine::ElementKind(doc, change.element));
  return NameInTip(ToHost(name), about);
}

// Data of an element that has no rows below it.
QVariant CompareModel::ElementValue(const ElementChange& change, int column, int role) const {
  if (IsOneField(change)) return FieldData(change, 0, column, role);
  if (role != Qt::DisplayRole) return {};
  if (change.kind == ChangeKind::Changed)
    return change.fields.empty() && column == kLeft ? QVariant("differs") : QVariant();
  const bool has = (change.kind == ChangeKind::OnlyLeft) == (column == kLeft);
  if (!has) return QString("not held");
  return compared_.isScene ? QString("in the scene") : QString("held");
}

// Texts are made for what is drawn, so that thousands of differences cost what one sees of them.
QVariant CompareModel::FieldData(const ElementChange& change, std::size_t field, int column,
                                 int role) const {
  if (role != Qt::DisplayRole && role != Qt::ToolTipRole) return {};
  const host::BaseDocument& doc = *Document();
  const engine::FieldChange& values = change.fields[field];
  const host::LONG type = engine::TypeForFields(doc, change);
  if (column == kWhat) return ToQt(engine::FieldLabel(type, values.field));
  return ToQt(engine::FieldValueText(doc, type, values.field,
                                     column == kLeft ? values.left : values.right));
}

QVariant CompareModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal) return {};
  if (role == Qt::TextAlignmentRole) return QVariant(Qt::AlignLeft | Qt::AlignVCenter);
  if (role != Qt::DisplayRole && role != Qt::ToolTipRole) return {};
  if (section == kWhat) return QString("What differs");
  return section == kLeft ? compared_.left : compared_.right;
}

namespace {

// More rows than that are not opened by themselves.
constexpr std::size_t kFewElements = 200;

}  // namespace

// Rows that a person opens and closes are remembered, those that OpenRows opens are not.
CompareTree::CompareTree(QWidget* parent) : QTreeView(parent), model_(new CompareModel(this)) {
  setModel(model_);
  setUniformRowHeights(true);
  setAlternatingRowColors(true);
  setAllColumnsShowFocus(true);
  setTextElideMode(Qt::ElideMiddle);
  setIndentation(14);
  setAccessibleName("Differences");
  header()->setSectionsMovable(false);
  header()->setStretchLastSection(true);
  connect(this, &QTreeView::clicked, this, [this](const QModelIndex& row) {
    if (chosen) chosen(row);
  });
  const auto remember = [this](const QModelIndex& row, bool isOpen) {
    if (!opening_) opened_[KeyOf(row)] = isOpen;
  };
  connect(this, &QTreeView::expanded, this,
          [remember](const QModelIndex& row) { remember(row, true); });
  connect(this, &QTreeView::collapsed, this,
          [remember](const QModelIndex& row) { remember(row, false); });
}

void CompareTree::Show(const host::BaseDocument* doc, Compared compared) {
  const Key chosenRow = KeyOf(currentIndex());
  const bool any = currentIndex().isValid();
  if (!model_->Show(doc, std::move(compared))) return viewport()->update();
  OpenRows();
  for (int group = 0; any && group < model_->rowCount(); ++group) {
    const QModelIndex above = model_->index(group, 0);
    for (int row = 0; row < model_->rowCount(above); ++row) {
      if (KeyOf(model_->index(row, 0, above)) != chosenRow) continue;
      setCurrentIndex(model_->index(row, 0, above));
      return;
    }
  }
}

// Part and element name a row for good; both groups without a part share a key, which is -1.
CompareTree::Key CompareTree::KeyOf(const QModelIndex& index) const {
  const ElementChange* change = model_->ChangeAt(index);
  if (change) return {static_cast<int>(change->part), change->element};
  // A group has its part, under an identity that no element has.
  const ElementChange* first = model_->ChangeAt(model_->index(0, 0, index));
  const int part = first && !(first->kind == ChangeKind::OnlyLeft && model_->Shown().isScene)
                       ? static_cast<int>(first->part)
                       : -1;
  return {part, ~engine::NodeId{0}};
}

// Few rows are opened all, so that one sees values at once; many stay folded, since opening them
// would bury the groups.
void CompareTree::OpenRows() {
  opening_ = true;
  const bool isSmall = model_->Elements() <= kFewElements;
  const auto open = [&](const QModelIndex& row, bool usually) {
    const auto known = opened_.find(KeyOf(row));
    if (known == opened_.end() ? usually : known->second) expand(row);
  };
  for (int group = 0; group < model_->rowCount(); ++group) {
    const QModelIndex above = model_->index(group, 0);
    const ElementChange* first = model_->ChangeAt(model_->index(0, 0, above));
    open(above, isSmall && first && KeyOf(above).first >= 0);
    if (!isSmall) continue;
    for (int row = 0; row < model_->rowCount(above); ++row)
      open(model_->index(row, 0, above), true);
  }
  opening_ = false;
}

void CompareTree::SetEmptyText(const QString& text) {
  emptyText_ = text;
  viewport()->update();
}

void CompareTree::keyPressEvent(QKeyEvent* event) {
  const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (isEnter && chosen && currentIndex().isValid()) return chosen(currentIndex());
  QTreeView::keyPressEvent(event);
}

void CompareTree::paintEvent(QPaintEvent* event) {
  QTreeView::paintEvent(event);
  if (model_->rowCount() == 0) PaintEmptyText(*this, emptyText_);
}

void CompareTree::resizeEvent(QResizeEvent* event) {
  QTreeView::resizeEvent(event);
  const int width = viewport()->width();
  header()->resizeSection(CompareModel::kWhat, width / 2);
  header()->resizeSection(CompareModel::kLeft, width / 4);
}

namespace {

// Most elements whose values are read and shown.
constexpr std::size_t kMostFields = 5000;

constexpr const char* kNoDialog =
    "Open Stagemarks in the menu Plug-ins: this panel compares its states with the scene";
constexpr const char* kNoStates = "No Stagemarks yet: record one to see later what has changed";
constexpr const char* kNoneChosen =
    "Select a row of the Stagemarks list to see what loading it would change, or two rows to "
    "compare them with each other";
constexpr const char* kManyChosen = "Select one or two rows of the Stagemarks list to compare";

}  // namespace

ComparePanel::ComparePanel(const StatesDialog& states, engine::InspectedElements& inspected,
                           QWidget* parent)
    : QWidget(parent),
      states_(states),
      inspected_(inspected),
      slices_(
          "comparing states", [this] { return Advance(); }, [this] { isWanted_ = false; }),
      tree_(new CompareTree(this)) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  BuildHead(*layout);
  BuildWarning(*layout);
  layout->addWidget(tree_);
  setFocusProxy(tree_);
  tree_->chosen = [this](const QModelIndex& row) { Select(row); };
  pause_.setSingleShot(true);
  pause_.setInterval(kMomentAfterChange);
  connect(&pause_, &QTimer::timeout, this, [this] { slices_.Start(); });
}

void ComparePanel::BuildHead(QLayout& layout) {
  auto* head = new QWidget(this);
  auto* line = new QHBoxLayout(head);
  line->setContentsMargins(6, 4, 6, 4);
  name_ = new QLabel(head);
  verdict_ = new QLabel(head);
  for (QLabel* label : {name_, verdict_}) {
    label->setTextFormat(Qt::PlainText);
    line->addWidget(label);
  }
  QFont bold = name_->font();
  bold.setBold(true);
  name_->setFont(bold);
  line->addStretch();
  load_ = new QPushButton("Load", head);
  load_->setToolTip("Bring the scene into the state on the right");
  connect(load_, &QPushButton::clicked, this, [this] {
    if (asked_.chosen.size() == 1) states_.Load(asked_.chosen.front());
  });
  line->addWidget(load_);
  layout.addWidget(head);
}

void ComparePanel::BuildWarning(QLayout& layout) {
  warning_ = new QWidget(this);
  auto* warned = new QHBoxLayout(warning_);
  warned->setContentsMargins(6, 0, 6, 4);
  // A button draws its icon in the colors of the present theme.
  auto* sign = new QToolButton(warning_);
  sign->setIcon(Icon("warning"));
  sign->setAutoRaise(true);
  sign->setFocusPolicy(Qt::NoFocus);
  sign->setAttribute(Qt::WA_TransparentForMouseEvents);
  warningText_ = new QLabel(warning_);
  warningText_->setToolTip(
      "No Stagemark holds these as they are now: record the scene first to keep them");
  warned->addWidget(sign);
  warned->addWidget(warningText_, 1);
  layout.addWidget(warning_);
  warning_->hide();
}

// Everything that the answer depends on: while it is equal nothing is compared.
ComparePanel::Question ComparePanel::Ask(const host::BaseDocument* doc) const {
  Question question;
  if (!doc) return question;
  question.doc = IdentityOf(doc);
  question.changes = engine::ChangeCount(*doc);
  question.camera = engine::SceneCameraIdOf(*doc);
  question.isOpen = states_.IsOpen();
  question.chosen = states_.Chosen();
  question.isEmpty = question.chosen.empty() && states_.Rows().empty();
  question.parts = states_.PartsInForce();
  return question;
}

// The rows stay until the new comparison is through, unless they are about something else.
void ComparePanel::Follow(host::BaseDocument* doc) {
  Question question = Ask(doc);
  if (question == asked_) return;
  const bool isOther = question.doc != asked_.doc || question.chosen != asked_.chosen;
  asked_ = std::move(question);
  work_.reset();
  isWanted_ = false;
  if (asked_.chosen.empty() || asked_.chosen.size() > 2) {
    slices_.Stop();
    return ShowNothing(asked_.chosen.size() > 2 ? kManyChosen
                       : !asked_.isOpen         ? kNoDialog
                       : asked_.isEmpty         ? kNoStates
                                                : kNoneChosen);
  }
  isWanted_ = true;
  if (isOther) ShowNothing("Comparing" + QString(QChar(0x2026)));
  if (!doc || engine::NodeCount(*doc) < kLargeScene) return slices_.StartHere();
  slices_.Stop();
  isOther ? slices_.Start() : pause_.start();
}

void ComparePanel::ShowNothing(const QString& text) {
  tree_->Show(nullptr, {});
  tree_->SetEmptyText(text);
  ShowHead();
}

// First the differences, then, where it is the scene that would change, which of its values stand
// in no other Stagemark and would be lost.
bool ComparePanel::Advance() {
  const host::BaseDocument* doc = FindOpenDocument(asked_.doc);
  // Changed since: the next Follow begins anew.
  if (!isWanted_ || !doc || engine::ChangeCount(*doc) != asked_.changes) return false;
  if (!work_) {
    BeginWork(*doc);
    return work_ != nullptr;
  }
  if (work_->steps) {
    if (work_->steps->Advance(kElementsAtOnce)) return true;
    work_->result.difference = work_->steps->Take();
    work_->steps.reset();
    if (work_->result.isScene) work_->lost.emplace(*doc, work_->states, work_->result.difference);
    return true;
  }
  if (work_->lost && work_->lost->Advance(kElementsAtOnce)) return true;
  Finish();
  return false;
}

// The states are kept with the work: the comparison refers to their records.
void ComparePanel::BeginWork(const host::BaseDocument& doc) {
  auto work = std::make_unique<Work>();
  work->states = engine::ReadStates(doc);
  for (const std::string& name : asked_.chosen) {
    const engine::StoredState* state = engine::FindState(doc, work->states, name);
    if (!state || !state->hasRecord) {
      isWanted_ = false;
      return ShowNothing("There is no record of \"" + ToQt(name) + "\" in this scene");
    }
    work->chosen.push_back(state);
  }
  work->result.isScene = work->chosen.size() == 1;
  work->result.left = work->result.isScene ? QString("Scene") : ToQt(asked_.chosen.front());
  work->result.right = ToQt(asked_.chosen.back());
  const engine::CompareOptions options{.parts = asked_.parts, .mostFields = kMostFields};
  const host::BaseContainer& first = work->chosen.front()->record;
  const host::BaseContainer& last = work->chosen.back()->record;
  work->steps = work->result.isScene
                    ? std::make_unique<engine::StepwiseComparison>(doc, first, options)
                    : std::make_unique<engine::StepwiseComparison>(doc, first, last, options);
  work_ = std::move(work);
}

void ComparePanel::Finish() {
  isWanted_ = false;
  if (work_->lost) work_->result.lost = work_->lost->Take();
  work_->lost.reset();  // it reads what is handed over now
  const bool isScene = work_->result.isScene;
  tree_->Show(FindOpenDocument(asked_.doc), std::move(work_->result));
  tree_->SetEmptyText(isScene ? "Loading would change nothing" : "Both hold the same");
  work_.reset();
  ShowHead();
}

void ComparePanel::ShowHead() {
  const CompareModel& model = tree_->Model();
  const Compared& shown = model.Shown();
  const bool isShown = !shown.right.isEmpty();
  name_->setVisible(isShown);
  verdict_->setVisible(isShown);
  load_->setVisible(isShown && shown.isScene);
  load_->setEnabled(model.Things() > 0);
  name_->setText(shown.isScene ? shown.right
                               : shown.left + " " + QChar(0x2192) + " " + shown.right);
  QString verdict = isShown ? SameOrDifferent(model.Things()) : QString();
  if (!shown.isScene)
    verdict.replace("same as the scene", "say the same").replace("differs", "differ");
  verdict_->setText(verdict);
  const std::size_t lost = shown.lost.size();
  warning_->setVisible(lost > 0);
  warningText_->setText(lost == 1 ? QString("1 of these is in no Stagemark and will be lost")
                                  : QLocale().toString(qulonglong{lost}) +
                                        " of these are in no Stagemark and will be lost");
}

// For a camera the one that loading would look through, else the one that it would leave.
void ComparePanel::Select(const QModelIndex& index) {
  host::BaseDocument* doc = FindOpenDocument(asked_.doc);
  const ElementChange* change = tree_->Model().ChangeAt(index);
  if (!doc || !change || doc != host::GetActiveDocument()) return;
  engine::NodeId element = change->element;
  if (change->part == Part::Camera && !change->fields.empty()) {
    const auto& camera =
        change->fields.front().right ? change->fields.front().right : change->fields.front().left;
    element = camera ? engine::LinkOf(*camera) : 0;
  }
  SelectInScene(*doc, inspected_, element);
}

}  // namespace desktop
