// What the mouse does in the cells of the object tree: switches and sweeps over them, tags, layers.
#include <QMenu>
#include <QMouseEvent>

#include "engine/undo/Undo.h"
#include "host/BaseObject.h"
#include "program/desktop/Colors.h"
#include "program/desktop/Icons.h"
#include "program/desktop/Text.h"
#include "program/desktop/panels/LayerActs.h"
#include "program/desktop/panels/ObjectTree.h"
#include "program/desktop/panels/TagStrip.h"

namespace desktop {

using host::BaseObject;

namespace {

constexpr std::size_t kMostMenuEntries = 60;
constexpr int kSwatchSide = 12;

host::LONG NextValue(Switch which, int value) {
  if (which == Switch::kGenerator) return value ? 0 : 1;
  switch (value) {
    case host::MODE_UNDEF:
      return host::MODE_ON;
    case host::MODE_ON:
      return host::MODE_OFF;
    default:
      return host::MODE_UNDEF;
  }
}

constexpr int kLongestName = 60;

QString MenuText(const host::String& name) {
  return ToQt(name).left(kLongestName).replace('&', "&&");
}

QIcon Swatch(const host::Vector& color) {
  QPixmap picture(kSwatchSide, kSwatchSide);
  picture.fill(colors::Shown(color));
  return picture;
}

}  // namespace

void ObjectTree::mousePressEvent(QMouseEvent* event) {
  const QPoint place = event->position().toPoint();
  cellPressed_ = PressedCell(*event);
  if (!cellPressed_) QTreeView::mousePressEvent(event);
  const bool plain = event->button() == Qt::LeftButton && event->modifiers() == Qt::NoModifier;
  rowHeld_ = plain && !cellPressed_ && visualRect(indexAt(place)).contains(place);
}

void ObjectTree::mouseDoubleClickEvent(QMouseEvent* event) {
  cellPressed_ = PressedCell(*event);
  if (!cellPressed_) QTreeView::mouseDoubleClickEvent(event);
}

void ObjectTree::mouseMoveEvent(QMouseEvent* event) {
  if (sweep_) SweepTo(event->position().toPoint().y());
  // The toolkit would drag rows that its own model knows to be selected, and select what the mouse
  // passes from any other.
  if (rowHeld_ && event->buttons() == Qt::LeftButton && state() == NoState) setState(DraggingState);
  if (!cellPressed_) QTreeView::mouseMoveEvent(event);
}

void ObjectTree::mouseReleaseEvent(QMouseEvent* event) {
  EndSweep();
  if (!std::exchange(cellPressed_, false)) QTreeView::mouseReleaseEvent(event);
}

bool ObjectTree::PressedCell(const QMouseEvent& event) {
  const QPoint place = event.position().toPoint();
  const QModelIndex index = indexAt(place);
  if (event.button() != Qt::LeftButton || !index.isValid() || index.column() == ObjectRows::kName)
    return false;
  BaseObject* object = rows_->ObjectAt(index);
  if (!object) return true;
  if (index.column() == ObjectRows::kTags) {
    PressTag(*object, index, event);
  } else if (index.column() == ObjectRows::kLayer) {
    AskLayer(*object, event.globalPosition().toPoint());
  } else if (index.data(ObjectRows::kMode).isValid()) {
    BeginSweep(*object, index, place.y());
  }
  viewport()->update();
  return true;
}

void ObjectTree::PressTag(BaseObject& object, const QModelIndex& index, const QMouseEvent& event) {
  const bool add = event.modifiers() & Qt::ControlModifier;
  const QRect cell = visualRect(index);
  const TagHit hit = TagAt(cell, event.position().toPoint(), object);
  if (hit.tag) return SelectTag(*hit.tag, add);
  if (!hit.more) return;
  QMenu menu(this);
  for (host::BaseTag* tag :
       TagsFrom(object, TagsFitting(object, cell.width()).tags.size(), kMostMenuEntries)) {
    menu.addAction(Icon(TagIcon(tag->GetType())), TagText(*tag).replace('&', "&&"))
        ->setData(QVariant::fromValue(engine::IdOf(*tag)));
  }
  const QAction* chosen = menu.exec(event.globalPosition().toPoint());
  host::BaseDocument* doc = chosen ? rows_->Document() : nullptr;
  host::BaseTag* tag =
      doc ? engine::AsTag(engine::FindNode(doc, chosen->data().value<engine::NodeId>())) : nullptr;
  if (tag) SelectTag(*tag, add);
}

void ObjectTree::AskLayer(BaseObject& object, const QPoint& place) {
  const engine::NodeId asked = engine::IdOf(object);
  QMenu menu(this);
  menu.addAction("No Layer")->setData(QVariant::fromValue(engine::NodeId{0}));
  menu.addSeparator();
  std::size_t left = kMostMenuEntries;
  const host::GeListNode* node = rows_->Document()->GetLayerObjectRoot()->GetFirst();
  for (; node && left > 0; node = engine::NextInTree(node), --left) {
    const auto& layer = static_cast<const host::LayerObject&>(*node);
    menu.addAction(Swatch(engine::OwnLayerData(layer).color), MenuText(layer.GetName()))
        ->setData(QVariant::fromValue(engine::IdOf(layer)));
  }
  if (node)
    menu.addAction("More in the Layers panel: drop objects on them there")->setEnabled(false);
  const QAction* chosen = menu.exec(place);
  host::BaseDocument* doc = chosen ? rows_->Document() : nullptr;
  BaseObject* still = doc ? engine::AsObject(engine::FindNode(doc, asked)) : nullptr;
  if (still)
    AssignLayer(*doc, MeantBy(*still),
                engine::AsLayer(engine::FindNode(doc, chosen->data().value<engine::NodeId>())));
}

void ObjectTree::BeginSweep(BaseObject& object, const QModelIndex& index, int y) {
  EndSweep();
  host::BaseDocument& doc = *object.GetDocument();
  const Switch which = ObjectRows::SwitchIn(index.column());
  const host::LONG value = NextValue(which, index.data(ObjectRows::kMode).toInt());
  sweep_ = Sweep{doc_, index.column(), value, y};
  doc.StartUndo();
  engine::NameUndo(doc, SwitchStep(which));
  ChangeSwitch(doc, MeantBy(object), which, value);
}

void ObjectTree::SweepTo(int y) {
  host::BaseDocument* doc = FindOpenDocument(sweep_->doc);
  if (!doc || doc != rows_->Document()) return;
  const int last = std::clamp(y, 0, viewport()->height() - 1);
  const int x = columnViewportPosition(sweep_->column) + columnWidth(sweep_->column) / 2;
  QModelIndex index = indexAt({x, std::min(sweep_->y, last)});
  for (; index.isValid() && visualRect(index).top() <= std::max(sweep_->y, last);
       index = indexBelow(index)) {
    BaseObject* object = rows_->ObjectAt(index);
    const QModelIndex cell = index.siblingAtColumn(sweep_->column);
    if (object && cell.data(ObjectRows::kMode).isValid()) {
      ChangeSwitch(*doc, {object}, ObjectRows::SwitchIn(sweep_->column), sweep_->value);
    }
  }
  sweep_->y = last;
}

void ObjectTree::EndSweep() {
  if (!sweep_) return;
  host::BaseDocument* doc = FindOpenDocument(sweep_->doc);
  sweep_.reset();
  if (!doc) return;
  doc->EndUndo();
  host::EventAdd();
}

void ObjectTree::SwitchSelected(int column) {
  host::BaseDocument* doc = rows_->Document();
  const BaseObject* active = doc ? doc->GetActiveObject() : nullptr;
  const Switch which = ObjectRows::SwitchIn(column);
  if (active)
    SetSwitch(*doc, SelectedObjects(*doc), which, NextValue(which, SwitchOf(*active, which)));
}

}  // namespace desktop
