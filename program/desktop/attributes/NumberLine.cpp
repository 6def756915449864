#include "program/desktop/attributes/NumberLine.h"

#include <QColorDialog>
#include <QHBoxLayout>
#include <QPointer>
#include <algorithm>
#include <cmath>

#include "engine/render/Image.h"

namespace desktop {

namespace {

constexpr QSize kPatch(22, 16);

double PartOf(const host::GeData& value, std::size_t part, FieldKind kind) {
  if (!IsOfParts(kind)) return value.GetReal();
  const host::Vector v = value.GetVector();
  return part == 0 ? v.x : part == 1 ? v.y : v.z;
}

char MarkOf(FieldKind kind, std::size_t part) {
  if (!IsOfParts(kind)) return 0;
  return (IsColor(kind) ? "RGB" : kind == FieldKind::Pair ? "UV" : "XYZ")[part];
}

// What a color looks like, and the color that looks like it.
QColor ToScreen(const host::Vector& color, FieldKind kind) {
  const auto byte = [kind](double share) {
    if (kind == FieldKind::Color)
      return static_cast<int>(engine::LinearToSrgb(static_cast<float>(share)));
    return share > 0 ? static_cast<int>(std::lround(std::min(share, 1.0) * 255)) : 0;
  };
  return QColor(byte(color.x), byte(color.y), byte(color.z));
}

host::Vector FromScreen(const QColor& color, FieldKind kind) {
  const auto share = [kind](int byte) {
    return kind == FieldKind::Color
               ? static_cast<double>(engine::SrgbToLinear(static_cast<std::uint8_t>(byte)))
               : byte / 255.0;
  };
  return {share(color.red()), share(color.green()), share(color.blue())};
}

}  // namespace

NumberLine::NumberLine(const Field& field, QWidget* parent) : LineField(field, parent) {
  if (IsColor(field.kind)) AddPatch();
  const auto parts = static_cast<std::size_t>(PartsOf(field.kind));
  for (std::size_t part = 0; part < parts; ++part) {
    auto* number = new NumberEdit(field, MarkOf(field.kind, part), this);
    number->entered = [this, part](double value, bool goesOn) { Entered(part, value, goesOn); };
    number->setAccessibleName(
        parts > 1 ? QString("%1 %2").arg(field.label, QChar(MarkOf(field.kind, part)))
                  : field.label);
    layout()->addWidget(number);
    numbers_.push_back(number);
    Watch(number);
  }
  setFocusProxy(patch_ ? static_cast<QWidget*>(patch_) : numbers_.front());
}

void NumberLine::AddPatch() {
  patch_ = new QToolButton(this);
  patch_->setIconSize(kPatch);
  patch_->setToolTip("Choose a color");
  patch_->setAccessibleName("Choose a color");
  connect(patch_, &QToolButton::clicked, this, [this] { ChooseColor(); });
  layout()->addWidget(patch_);
}

void NumberLine::Show(const FieldValue& value, const host::BaseDocument&) {
  value_ = value;
  for (std::size_t part = 0; part < numbers_.size(); ++part) {
    if (numbers_[part]->IsTyped()) continue;
    const double shown = PartOf(value.value, part, Shown().kind) * ShownPerKept(Shown().kind);
    numbers_[part]->ShowNumber(value.mixed[part] ? std::nullopt : std::optional(shown));
  }
  ShowPatch();
}

void NumberLine::ShowPatch() {
  if (!patch_) return;
  QPixmap picture(kPatch * devicePixelRatioF());
  picture.setDevicePixelRatio(devicePixelRatioF());
  const bool mixed = std::count(value_.mixed.begin(), value_.mixed.end(), true) > 0;
  picture.fill(mixed ? palette().color(QPalette::Mid)
                     : ToScreen(value_.value.GetVector(), Shown().kind));
  patch_->setIcon(picture);
}

void NumberLine::ChooseColor() {
  const QPointer<NumberLine> alive(this);
  const QColor chosen = QColorDialog::getColor(ToScreen(value_.value.GetVector(), Shown().kind),
                                               this, "Choose a color");
  if (chosen.isValid() && alive) Tell({FromScreen(chosen, Shown().kind)});
}

void NumberLine::Entered(std::size_t part, double number, bool goesOn) {
  FieldEdit edit;
  edit.goesOn = goesOn;
  const double kept = number / ShownPerKept(Shown().kind);
  if (IsOfParts(Shown().kind)) {
    edit.parts = {part == 0, part == 1, part == 2};
    edit.value = host::Vector(kept);
  } else {
    edit.value = Kept(kept);
  }
  Tell(edit);
}

host::GeData NumberLine::Kept(double number) const {
  const bool whole = Shown().kind == FieldKind::Whole || Shown().kind == FieldKind::Frame;
  return whole ? host::GeData(static_cast<host::LONG>(std::lround(number))) : host::GeData(number);
}

}  // namespace desktop
