#include "program/desktop/panels/RenderSettingsRows.h"

#include "program/desktop/Text.h"

namespace desktop {

using host::BaseContainer;
using host::LONG;
using host::RenderData;

namespace {

constexpr int kLongestName = 500;
constexpr LONG kCurrentFrame = 1;
constexpr LONG kAllFrames = 2;

QString SizeText(const BaseContainer& data) {
  return QString("%1 \u00d7 %2").arg(data.GetLong(host::RDATA_XRES)).arg(data.GetLong(host::RDATA_YRES));
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
      return ToQt(settings.GetName()).left(kLongestName).replace('\n', ' ');
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
  FlatTree shape(doc ? doc->GetFirstRenderData() : nullptr);
  if (doc_ == IdentityOf(doc) && shape == shape_) return false;
  beginResetModel();
  doc_ = IdentityOf(doc);
  shape_ = std::move(shape);
  endResetModel();
  return true;
}

RenderData* RenderSettingsRows::SettingsAt(const QModelIndex& index) const {
  const host::BaseDocument* doc = index.isValid() ? Document() : nullptr;
  return doc ? engine::AsRenderData(engine::FindNode(doc, EntryOf(index).id)) : nullptr;
}

SettingsList RenderSettingsRows::SettingsAt(const QModelIndexList& rows) const {
  SettingsList settings;
  for (const QModelIndex& row : rows) {
    if (RenderData* each = SettingsAt(row)) settings.push_back(each);
  }
  return settings;
}

QModelIndex RenderSettingsRows::IndexOf(engine::NodeId settings, int column) const {
  const int place = shape_.PlaceOf(settings);
  return place == 0 ? QModelIndex() : createIndex(shape_.At(place).row, column, static_cast<quintptr>(place));
}

QModelIndex RenderSettingsRows::index(int row, int column, const QModelIndex& parent) const {
  if (parent.isValid() && parent.column() != 0) return {};
  const FlatTree::Entry& above = EntryOf(parent);
  if (row < 0 || row >= above.childCount || column < 0 || column >= kColumnCount) return {};
  return createIndex(row, column, static_cast<quintptr>(above.firstChild + row));
}

QModelIndex RenderSettingsRows::parent(const QModelIndex& index) const {
  const int above = index.isValid() ? EntryOf(index).parent : 0;
  return above == 0 ? QModelIndex() : createIndex(shape_.At(above).row, 0, static_cast<quintptr>(above));
}

int RenderSettingsRows::rowCount(const QModelIndex& parent) const { return parent.column() > 0 ? 0 : EntryOf(parent).childCount; }

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
    case Qt::EditRole:
      return index.column() == kName ? QVariant(ToQt(settings->GetName())) : QVariant();
    case Qt::ToolTipRole:
    case Qt::AccessibleTextRole:
      if (isDot) return isActive ? "Active: pictures are rendered with these" : "Click to render with these";
      return {};
    default:
      return {};
  }
}

QVariant RenderSettingsRows::headerData(int section, Qt::Orientation orientation, int role) const {
  constexpr const char* kTitles[kColumnCount] = {"Name", "", "Size", "Frames"};
  const bool isTitle = orientation == Qt::Horizontal && role == Qt::DisplayRole && section >= 0 && section < kColumnCount;
  return isTitle ? QVariant(QString(kTitles[section])) : QVariant();
}

bool RenderSettingsRows::setData(const QModelIndex& index, const QVariant& value, int role) {
  RenderData* settings = index.column() == kName && role == Qt::EditRole ? SettingsAt(index) : nullptr;
  if (!settings || value.toString().isEmpty()) return false;
  if (value.toString() != ToQt(settings->GetName())) RenameRenderSettings(*Document(), *settings, ToHost(value.toString()));
  emit dataChanged(index, index);
  return true;
}

Qt::ItemFlags RenderSettingsRows::flags(const QModelIndex& index) const {
  if (!index.isValid()) return Qt::NoItemFlags;
  const Qt::ItemFlags plain = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
  return index.column() == kName ? plain | Qt::ItemIsEditable : plain;
}

}  // namespace desktop
