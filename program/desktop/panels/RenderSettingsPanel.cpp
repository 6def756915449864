#include "program/desktop/panels/RenderSettingsPanel.h"

#include <QApplication>
#include <QHeaderView>
#include <QMessageBox>
#include <QMouseEvent>
#include <QPainter>
#include <QSplitter>
#include <QStyledItemDelegate>
#include <QVBoxLayout>
#include <set>

#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"
#include "program/desktop/Icons.h"
#include "program/desktop/Text.h"
#include "program/desktop/panels/DragAndDrop.h"

namespace desktop {

using host::BaseContainer;
using host::LONG;
using host::RenderData;

namespace {

// Values of RDATA_FRAMESEQUENCE.
constexpr LONG kCurrentFrame = 1;
constexpr LONG kAllFrames = 2;

QString SizeText(const BaseContainer& data) {
  return QString("%1 \u00d7 %2")
      .arg(data.GetLong(host::RDATA_XRES))
      .arg(data.GetLong(host::RDATA_YRES));
}

QString FramesText(const BaseContainer& data) {
  const LONG frames = data.GetLong(host::RDATA_FRAMESEQUENCE);
  if (frames == kCurrentFrame) return "Current";
  if (frames == kAllFrames) return "All";
  const LONG rate = std::max<LONG>(1, data.GetLong(host::RDATA_FRAMERATE, 30));
  const auto frame = [&](LONG id) { return data.GetTime(id).GetFrame(rate); };
  return QString("%1 \u2013 %2").arg(frame(host::RDATA_FRAMEFROM)).arg(frame(host::RDATA_FRAMETO));
}

QString CellText(const RenderData& settings, int column) {
  switch (column) {
    case RenderSettingsModel::kName:
      return NameInRow(settings.GetName());
    case RenderSettingsModel::kSize:
      return SizeText(*settings.GetDataInstance());
    case RenderSettingsModel::kFrames:
      return FramesText(*settings.GetDataInstance());
    default:
      return {};
  }
}

}  // namespace

// Which settings belong to Stagemarks is read with every change: O(states).
bool RenderSettingsModel::Update(host::BaseDocument* doc) {
  stagemarks_ = engine::FindSettingsOfStates(doc);
  return TakeWhatDiffers(doc, FlatTree(doc ? doc->GetFirstRenderData() : nullptr));
}

RenderData* RenderSettingsModel::SettingsAt(const QModelIndex& index) const {
  return engine::AsRenderData(NodeAt(index));
}

QString RenderSettingsModel::StagemarkOf(const RenderData& settings) const {
  const auto it = stagemarks_.find(engine::IdOf(settings));
  return it == stagemarks_.end() ? QString() : ToQt(it->second);
}

engine::SettingsList RenderSettingsModel::SettingsAt(const QModelIndexList& rows) const {
  engine::SettingsList settings;
  for (const QModelIndex& row : rows) {
    if (RenderData* each = SettingsAt(row)) settings.push_back(each);
  }
  return settings;
}

QVariant RenderSettingsModel::data(const QModelIndex& index, int role) const {
  const RenderData* settings = SettingsAt(index);
  if (!settings) return {};
  const bool isActive = Document()->GetActiveRenderData() == settings;
  const bool isDot = index.column() == kActive;
  switch (role) {
    case kIsActive:
      return isActive;
    case Qt::DisplayRole:
      return isDot ? QVariant() : CellText(*settings, index.column());
    case Qt::DecorationRole:
      return index.column() == kName && !StagemarkOf(*settings).isNull()
                 ? QVariant(Icon("stagemark"))
                 : QVariant();
    case Qt::EditRole:
      return index.column() == kName ? QVariant(ToQt(settings->GetName())) : QVariant();
    case Qt::ToolTipRole:
    case Qt::AccessibleTextRole:
      if (isDot)
        return isActive ? "Active: pictures are rendered with these" : "Click to render with these";
      return BelongsText(index, role);
    default:
      return {};
  }
}

QVariant RenderSettingsModel::BelongsText(const QModelIndex& index, int role) const {
  const RenderData* settings = index.column() == kName ? SettingsAt(index) : nullptr;
  const QString stagemark = settings ? StagemarkOf(*settings) : QString();
  if (stagemark.isNull()) return {};
  const QString whole = "Belongs to the Stagemark \u201c" + NameInRow(ToHost(stagemark)) + "\u201d";
  return role == Qt::ToolTipRole ? "<qt>" + whole.toHtmlEscaped() + "</qt>"
                                 : NameInRow(settings->GetName()) + ", belongs to a Stagemark";
}

QVariant RenderSettingsModel::headerData(int section, Qt::Orientation orientation, int role) const {
  constexpr const char* kTitles[kColumnCount] = {"Name", "", "Size", "Frames"};
  const bool isTitle = orientation == Qt::Horizontal && role == Qt::DisplayRole && section >= 0 &&
                       section < kColumnCount;
  return isTitle ? QVariant(QString(kTitles[section])) : QVariant();
}

bool RenderSettingsModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  RenderData* settings =
      index.column() == kName && role == Qt::EditRole ? SettingsAt(index) : nullptr;
  if (!settings || value.toString().isEmpty()) return false;
  if (value.toString() != ToQt(settings->GetName()))
    engine::RenameRenderSettings(*Document(), *settings, ToHost(value.toString()));
  emit dataChanged(index, index);
  return true;
}

Qt::ItemFlags RenderSettingsModel::flags(const QModelIndex& index) const {
  if (!index.isValid()) return Qt::ItemIsDropEnabled;
  const Qt::ItemFlags plain = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDropEnabled;
  return index.column() == kName ? plain | Qt::ItemIsEditable | Qt::ItemIsDragEnabled : plain;
}

namespace {

constexpr int kDotColumn = 26;
constexpr int kSizeColumn = 92;
constexpr int kFramesColumn = 76;
// Narrower lists leave columns out, so that the names can be read.
constexpr int kRoomForSize = 240;
constexpr int kRoomForFrames = 320;
constexpr double kRing = 5.5;
constexpr double kDot = 3;

// A ring, with a dot in the accent color where the settings are the active ones.
class ActiveDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override {
    QStyledItemDelegate::paint(painter, option, index);
    const bool isActive = index.data(RenderSettingsModel::kIsActive).toBool();
    const QColor color =
        option.palette.color(isActive ? QPalette::Link : QPalette::PlaceholderText);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(QPen(color, 1.2));
    painter->setBrush(Qt::NoBrush);
    painter->drawEllipse(QRectF(option.rect).center(), kRing, kRing);
    painter->setPen(Qt::NoPen);
    painter->setBrush(color);
    if (isActive) painter->drawEllipse(QRectF(option.rect).center(), kDot, kDot);
    painter->restore();
  }
};

}  // namespace

// The dot stands first on the screen and is not the first column, as in the layers.
RenderSettingsList::RenderSettingsList(QWidget* parent)
    : QTreeView(parent), model_(new RenderSettingsModel(this)) {
  setModel(model_);
  setUniformRowHeights(true);
  setSelectionMode(ExtendedSelection);
  setEditTriggers(EditKeyPressed);
  setExpandsOnDoubleClick(false);
  setAlternatingRowColors(true);
  setRootIsDecorated(false);
  EnableRowDragging(*this);
  setAccessibleName("Render settings");
  header()->setStretchLastSection(false);
  header()->setMinimumSectionSize(kDotColumn);
  header()->setSectionsMovable(false);
  header()->setSectionResizeMode(QHeaderView::Interactive);
  header()->setSectionResizeMode(RenderSettingsModel::kName, QHeaderView::Stretch);
  header()->setSectionResizeMode(RenderSettingsModel::kActive, QHeaderView::Fixed);
  header()->moveSection(RenderSettingsModel::kActive, 0);
  setTreePosition(RenderSettingsModel::kName);
  setColumnWidth(RenderSettingsModel::kActive, kDotColumn);
  setColumnWidth(RenderSettingsModel::kSize, kSizeColumn);
  setColumnWidth(RenderSettingsModel::kFrames, kFramesColumn);
  setItemDelegateForColumn(RenderSettingsModel::kActive, new ActiveDelegate(this));
  showing_ = false;
}

// Settings have no selection in the document, so what was chosen is found again by identity.
void RenderSettingsList::Follow(host::BaseDocument* doc) {
  const host::ULLONG count = doc ? engine::ChangeCount(*doc) : 0;
  if (IdentityOf(doc) == doc_ && count == seen_) return;
  doc_ = IdentityOf(doc);
  seen_ = count;
  const engine::Ids before = *chosen_;
  showing_ = true;
  if (model_->Update(doc)) {
    expandAll();
    engine::SettingsList still;
    for (const engine::NodeId id : before)
      still.push_back(engine::AsRenderData(engine::FindNode(doc, id)));
    Choose(still);
  }
  showing_ = false;
  TakeChosen();
  viewport()->update();
}

void RenderSettingsList::Choose(const engine::SettingsList& settings) {
  QItemSelection wanted;
  for (const host::RenderData* each : settings) {
    const QModelIndex index = each ? model_->IndexOf(engine::IdOf(*each)) : QModelIndex();
    if (index.isValid())
      wanted.append(
          QItemSelectionRange(index, index.siblingAtColumn(RenderSettingsModel::kColumnCount - 1)));
  }
  if (!wanted.isEmpty())
    selectionModel()->setCurrentIndex(wanted.first().topLeft(), QItemSelectionModel::NoUpdate);
  selectionModel()->select(wanted, QItemSelectionModel::ClearAndSelect);
}

// The active ones where none are chosen, so that the fields always show some. The shared list is
// only replaced by another one: its address tells the fields whether to read anew.
void RenderSettingsList::TakeChosen() {
  engine::Ids ids;
  for (const host::RenderData* each : Chosen()) ids.push_back(engine::IdOf(*each));
  const host::BaseDocument* doc = Document();
  if (ids.empty() && doc) ids.push_back(engine::IdOf(*doc->GetActiveRenderData()));
  if (ids != *chosen_) chosen_ = std::make_shared<engine::Ids>(std::move(ids));
}

QItemSelectionModel::SelectionFlags RenderSettingsList::selectionCommand(
    const QModelIndex& index, const QEvent* event) const {
  const bool isMouse =
      event && (event->type() == QEvent::MouseButtonPress ||
                event->type() == QEvent::MouseButtonRelease || event->type() == QEvent::MouseMove);
  if (isMouse && index.column() == RenderSettingsModel::kActive)
    return QItemSelectionModel::NoUpdate;
  return QTreeView::selectionCommand(index, event);
}

void RenderSettingsList::selectionChanged(const QItemSelection& selected,
                                          const QItemSelection& deselected) {
  QTreeView::selectionChanged(selected, deselected);
  if (!showing_) TakeChosen();
}

void RenderSettingsList::Activate(const QModelIndex& index) {
  host::RenderData* settings = model_->SettingsAt(index);
  if (settings) engine::ActivateRenderSettings(*Document(), *settings);
  viewport()->update();
}

void RenderSettingsList::startDrag(Qt::DropActions) {
  const QModelIndexList rows = selectionModel()->selectedRows();
  if (!rows.isEmpty())
    DragRows(*this, model_->mimeData(rows), static_cast<int>(rows.size()),
             rows.front().data().toString());
}

void RenderSettingsList::resizeEvent(QResizeEvent* event) {
  setColumnHidden(RenderSettingsModel::kSize, width() < kRoomForSize);
  setColumnHidden(RenderSettingsModel::kFrames, width() < kRoomForFrames);
  QTreeView::resizeEvent(event);
}

void RenderSettingsList::mousePressEvent(QMouseEvent* event) {
  const QModelIndex index = indexAt(event->position().toPoint());
  const bool isDot =
      index.column() == RenderSettingsModel::kActive && event->button() == Qt::LeftButton;
  isDot ? Activate(index) : QTreeView::mousePressEvent(event);
}

void RenderSettingsList::mouseDoubleClickEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) Activate(indexAt(event->position().toPoint()));
}

namespace {

constexpr qsizetype kMostNames = 6;

}  // namespace

RenderSettingsPanel::RenderSettingsPanel(QWidget* parent)
    : QWidget(parent),
      list_(new RenderSettingsList(this)),
      values_(new AttributesView(this)),
      acts_(*list_, [this](QMenu& menu) {
        menu.addSeparator();
        menu.addAction("Rename", this, [this] { list_->EditName(); })
            ->setEnabled(list_->currentIndex().isValid());
      }) {
  auto* side = new QWidget(this);
  auto* column = new QVBoxLayout(side);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  column->addWidget(list_);
  BuildActions(*side);
  auto* halves = new QSplitter(this);
  halves->addWidget(side);
  halves->addWidget(values_);
  halves->setStretchFactor(0, 1);
  halves->setStretchFactor(1, 1);
  halves->setChildrenCollapsible(false);
  auto* row = new QVBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  row->addWidget(halves);
}

void RenderSettingsPanel::BuildActions(QWidget& side) {
  acts_.PutBelow(side);
  acts_.AddMaker("New Render Settings", [this](host::BaseDocument& doc) { Add(doc); });
  acts_.Add("duplicate", "Duplicate", {},
            [this](host::BaseDocument& doc, const engine::SettingsList& settings) {
              const engine::SettingsList copies = engine::DuplicateRenderSettings(doc, settings);
              Follow(&doc);
              list_->Choose(copies);
            });
  acts_.Add("render-settings", "Render with These", {},
            [](host::BaseDocument& doc, const engine::SettingsList& settings) {
              engine::ActivateRenderSettings(doc, *settings.front());
            });
  acts_.AddSpace();
  delete_ = acts_.Add("delete", "Delete Render Settings", QKeySequence::Delete,
                      [this](host::BaseDocument& doc, const engine::SettingsList& settings) {
                        if (MayDelete(doc, settings)) engine::DeleteRenderSettings(doc, settings);
                      });
}

// Settings below the chosen ones are deleted with them. Undo brings them back, but who loads such a
// Stagemark next week has no undo any more.
bool RenderSettingsPanel::MayDelete(const host::BaseDocument& doc,
                                    const engine::SettingsList& settings) {
  const engine::SettingsOfStates all = engine::FindSettingsOfStates(&doc);
  std::set<QString> hit;
  std::vector<const host::RenderData*> open(settings.begin(), settings.end());
  while (!open.empty()) {
    const host::RenderData* each = open.back();
    open.pop_back();
    if (const auto it = all.find(engine::IdOf(*each)); it != all.end())
      hit.insert(ToQt(it->second));
    for (const host::RenderData* below = each->GetDown(); below; below = below->GetNext())
      open.push_back(below);
  }
  if (hit.empty()) return true;
  QStringList names;
  for (const QString& name : hit)
    names.append(QChar(0x201c) + NameInRow(ToHost(name)) + QChar(0x201d));
  if (names.size() > kMostNames) {
    names =
        names.mid(0, kMostNames) + QStringList{QString("and %1 more").arg(hit.size() - kMostNames)};
  }
  QMessageBox box(QMessageBox::Question, QApplication::applicationDisplayName(),
                  "These render settings belong to Stagemarks. Without them, loading these no "
                  "longer brings render settings back.\n"
                  "Delete them all the same? Undo brings them back.",
                  QMessageBox::Yes | QMessageBox::No, window());
  box.setDefaultButton(QMessageBox::No);
  box.setTextFormat(Qt::PlainText);
  box.setInformativeText("Stagemarks: " + names.join(", "));
  return box.exec() == QMessageBox::Yes;
}

// A document keeps one at least.
void RenderSettingsPanel::Follow(host::BaseDocument* doc) {
  list_->Follow(doc);
  values_->Follow(doc, list_->ChosenIds());
  acts_.Follow(doc);
  const bool several =
      doc && (doc->GetFirstRenderData()->GetNext() || doc->GetFirstRenderData()->GetDown());
  delete_->setEnabled(delete_->isEnabled() && several);
}

void RenderSettingsPanel::Add(host::BaseDocument& doc) {
  host::RenderData* settings = engine::AddRenderSettings(doc);
  Follow(&doc);
  list_->Choose({settings});
  list_->EditName();
}

}  // namespace desktop
