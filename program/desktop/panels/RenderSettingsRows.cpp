#include "program/desktop/panels/RenderSettingsRows.h"

#include "program/desktop/Icons.h"
#include "program/desktop/Text.h"

namespace desktop {

using host::BaseContainer;
using host::LONG;
using host::RenderData;

namespace {

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
    case RenderSettingsRows::kName:
      return NameInRow(settings.GetName());
    case RenderSettingsRows::kSize:
      return SizeText(*settings.GetDataInstance());
    case RenderSettingsRows::kFrames:
      return FramesText(*settings.GetDataInstance());
    default:
      return {};
  }
}

}  // namespace

bool RenderSettingsRows::Update(host::BaseDocument* doc) {
  stagemarks_ = FindStagemarkSettings(doc);
  return TakeWhatDiffers(doc, FlatTree(doc ? doc->GetFirstRenderData() : nullptr));
}

RenderData* RenderSettingsRows::SettingsAt(const QModelIndex& index) const {
  return engine::AsRenderData(NodeAt(index));
}

QString RenderSettingsRows::StagemarkOf(const RenderData& settings) const {
  const auto it = stagemarks_.find(engine::IdOf(settings));
  return it == stagemarks_.end() ? QString() : it->second;
}

SettingsList RenderSettingsRows::SettingsAt(const QModelIndexList& rows) const {
  SettingsList settings;
  for (const QModelIndex& row : rows) {
    if (RenderData* each = SettingsAt(row)) settings.push_back(each);
  }
  return settings;
}

QVariant RenderSettingsRows::data(const QModelIndex& index, int role) const {
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

QVariant RenderSettingsRows::BelongsText(const QModelIndex& index, int role) const {
  const RenderData* settings = index.column() == kName ? SettingsAt(index) : nullptr;
  const QString stagemark = settings ? StagemarkOf(*settings) : QString();
  if (stagemark.isNull()) return {};
  const QString whole = "Belongs to the Stagemark \u201c" + NameInRow(ToHost(stagemark)) + "\u201d";
  return role == Qt::ToolTipRole ? "<qt>" + whole.toHtmlEscaped() + "</qt>"
                                 : NameInRow(settings->GetName()) + ", belongs to a Stagemark";
}

QVariant RenderSettingsRows::headerData(int section, Qt::Orientation orientation, int role) const {
  constexpr const char* kTitles[kColumnCount] = {"Name", "", "Size", "Frames"};
  const bool isTitle = orientation == Qt::Horizontal && role == Qt::DisplayRole && section >= 0 &&
                       section < kColumnCount;
  return isTitle ? QVariant(QString(kTitles[section])) : QVariant();
}

bool RenderSettingsRows::setData(const QModelIndex& index, const QVariant& value, int role) {
  RenderData* settings =
      index.column() == kName && role == Qt::EditRole ? SettingsAt(index) : nullptr;
  if (!settings || value.toString().isEmpty()) return false;
  if (value.toString() != ToQt(settings->GetName()))
    RenameRenderSettings(*Document(), *settings, ToHost(value.toString()));
  emit dataChanged(index, index);
  return true;
}

Qt::ItemFlags RenderSettingsRows::flags(const QModelIndex& index) const {
  if (!index.isValid()) return Qt::ItemIsDropEnabled;
  const Qt::ItemFlags plain = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDropEnabled;
  return index.column() == kName ? plain | Qt::ItemIsEditable | Qt::ItemIsDragEnabled : plain;
}

}  // namespace desktop
