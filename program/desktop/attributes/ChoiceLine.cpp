#include "program/desktop/attributes/ChoiceLine.h"

#include <QAbstractItemView>
#include <QHBoxLayout>
#include <QSignalBlocker>
#include <QWheelEvent>

#include "program/desktop/Text.h"

namespace desktop {

namespace {

using host::BaseDocument;
using host::BaseList2D;

constexpr int kFewestLetters = 8;
constexpr int kLongestName = 200;
constexpr const char* kMixed = "\u2014";

const char* NoneText(FieldKind kind) {
  return kind == FieldKind::Camera ? "Editor camera" : "None";
}

QString NameOf(const BaseList2D& element) {
  const QString name = ToQt(element.GetName()).left(kLongestName).simplified();
  return name.isEmpty() ? "(no name)" : name;
}

// The first node of a list, and whether one of its nodes is meant.
const host::GeListNode* FirstOf(const BaseDocument& doc, FieldKind kind) {
  switch (kind) {
    case FieldKind::Layer:
      return doc.GetLayerObjectRoot()->GetFirst();
    case FieldKind::Material:
      return doc.GetFirstMaterial();
    case FieldKind::Camera:
      return doc.GetFirstObject();
    default:
      return doc.GetFirstRenderData();
  }
}

}  // namespace

void ChoiceLine::Box::showPopup() {
  line_.ReadList();
  QComboBox::showPopup();
}

// The toolkit gives the focus back before it tells which row was chosen.
void ChoiceLine::Box::hidePopup() {
  closing_ = true;
  QComboBox::hidePopup();
  closing_ = false;
}

bool ChoiceLine::Box::IsChosenFrom() const { return closing_ || view()->isVisible(); }

void ChoiceLine::Box::focusInEvent(QFocusEvent* event) {
  if (!IsChosenFrom()) line_.ReadList();
  QComboBox::focusInEvent(event);
}

void ChoiceLine::Box::wheelEvent(QWheelEvent* event) { event->ignore(); }

ChoiceLine::ChoiceLine(const Field& field, QWidget* parent)
    : LineField(field, parent), box_(new Box(*this)) {
  box_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  box_->setMinimumContentsLength(kFewestLetters);
  box_->setPlaceholderText(kMixed);
  box_->setFocusPolicy(Qt::StrongFocus);
  box_->setToolTip(field.tip);
  box_->setAccessibleName(field.label);
  for (const FieldChoice& choice : field.choices) box_->addItem(choice.label, choice.value);
  layout()->addWidget(box_);
  setFocusProxy(box_);
  connect(box_, &QComboBox::activated, this, [this](int row) { Chosen(row); });
}

void ChoiceLine::Show(const FieldValue& value, const BaseDocument& doc) {
  const QSignalBlocker quiet(box_);
  doc_ = IdentityOf(&doc);
  if (IsLink()) {
    ShowLink(value, doc);
  } else {
    box_->setCurrentIndex(value.mixed[0] ? -1 : box_->findData(value.value.GetLong()));
  }
}

// A list that was read stays as long as it is being used; else there is but the one that is shown.
void ChoiceLine::ShowLink(const FieldValue& value, const BaseDocument& doc) {
  if (box_->IsChosenFrom()) return;
  const BaseList2D* target = value.value.GetLink(&doc);
  const qulonglong id = target ? engine::IdOf(*target) : 0;
  if (!box_->hasFocus()) {
    box_->clear();
    if (!value.mixed[0]) box_->addItem(target ? NameOf(*target) : NoneText(Shown().kind), id);
  } else {
    ReadList();
  }
  box_->setCurrentIndex(value.mixed[0] ? -1 : box_->findData(id));
}

void ChoiceLine::ReadList() {
  const BaseDocument* doc = IsLink() ? FindOpenDocument(doc_) : nullptr;
  if (!doc) return;
  const QSignalBlocker quiet(box_);
  const QVariant now = box_->currentIndex() < 0 ? QVariant() : box_->currentData();
  box_->clear();
  if (Shown().kind != FieldKind::Settings) box_->addItem(NoneText(Shown().kind), qulonglong(0));
  for (const host::GeListNode* node = FirstOf(*doc, Shown().kind); node;
       node = engine::NextInTree(node)) {
    if (Shown().kind == FieldKind::Camera && node->GetType() != host::Ocamera) continue;
    box_->addItem(NameOf(static_cast<const BaseList2D&>(*node)), qulonglong(engine::IdOf(*node)));
  }
  box_->setCurrentIndex(now.isValid() ? box_->findData(now) : -1);
}

void ChoiceLine::Chosen(int row) {
  if (!IsLink()) return Tell({host::GeData(host::LONG(box_->itemData(row).toInt()))});
  const BaseDocument* doc = FindOpenDocument(doc_);
  if (doc) Tell({host::GeData(engine::FindNode(doc, box_->itemData(row).toULongLong()))});
}

}  // namespace desktop
