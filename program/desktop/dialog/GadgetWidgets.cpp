// One function for each kind of gadget: it makes the widget, connects it to the dialog's events and
// answers a function that shows the gadget's values in it. Signals hold the ID and the link, never
// the gadget: the tree may be built anew, and the dialog may go, while a widget still stands.
#include "program/desktop/dialog/GadgetWidgets.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QSignalBlocker>
#include <algorithm>
#include <limits>

#include "engine/render/Image.h"
#include "program/desktop/Text.h"
#include "program/desktop/dialog/GadgetGrid.h"
#include "program/desktop/dialog/ListView.h"
#include "program/desktop/dialog/PluginCall.h"

namespace desktop {

using engine::Gadget;
using engine::GadgetKind;

namespace {

constexpr int kRealDecimals = 3;
constexpr int kGadgetDigits = 9;
constexpr int kFewestGadgetDigits = 5;
constexpr int kDigitsOfArrows = 4;

}  // namespace

// Without tracking a number counts when it is typed, not with each digit: the plug-in hears of it
// as of one act. Digits as in the files, whatever the locale.
NumberField::NumberField(QWidget* parent) : QDoubleSpinBox(parent) {
  setKeyboardTracking(false);
  setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
  setLocale(QLocale::c());
}

void NumberField::Show(const engine::Gadget& gadget) {
  const QSignalBlocker quiet(this);
  setDecimals(gadget.format == host::FORMAT_LONG ? 0 : kRealDecimals);
  setRange(gadget.min, gadget.max);
  setSingleStep(gadget.step);
  setValue(gadget.value.GetReal());
}

// By digits: the toolkit would reserve room for the largest number of the range.
QSize NumberField::sizeHint() const {
  const int digit = fontMetrics().horizontalAdvance('0');
  return {digit * (kGadgetDigits + kDigitsOfArrows), QDoubleSpinBox::sizeHint().height()};
}

QSize NumberField::minimumSizeHint() const {
  return {fontMetrics().horizontalAdvance('0') * (kFewestGadgetDigits + kDigitsOfArrows),
          sizeHint().height()};
}

namespace {

constexpr QSize kSmallestImage(64, 48);
// Shape of the frame where there is no image.
constexpr QSize kUsualShape(4, 3);

// Copied, since the view refers to bytes that go with this function.
QImage ToPicture(const engine::Image& image) {
  const engine::Image bytes = engine::ToBytes(image);
  const QImage view(bytes.bytes.data(), static_cast<int>(bytes.width),
                    static_cast<int>(bytes.height), static_cast<qsizetype>(bytes.width) * 4,
                    QImage::Format_RGBA8888);
  return view.copy();
}

}  // namespace

PictureButton::PictureButton(engine::FileSystem& files, const engine::Gadget& gadget,
                             QWidget* parent)
    : QAbstractButton(parent),
      files_(files),
      asked_(AskedSize(gadget, fontMetrics())),
      border_(gadget.settings.GetBool(host::BITMAPBUTTON_BORDER)) {
  setAccessibleName(ToQt(gadget.text));
  setMinimumSize(kSmallestImage);
  setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
}

QSize PictureButton::sizeHint() const { return Fitted(asked_).expandedTo(kSmallestImage); }

QSize PictureButton::Fitted(QSize room) const {
  return (picture_.isNull() ? kUsualShape : picture_.size()).scaled(room, Qt::KeepAspectRatio);
}

void PictureButton::Show(const engine::Gadget& gadget) {
  setEnabled(gadget.enabled);
  Load(gadget.image.GetString().ToUtf8());
}

// A preview that is rendered anew has the same path, hence the stamp. A picture that cannot be read
// shows an empty frame: a Stagemark need not have one.
void PictureButton::Load(const std::string& path) {
  const engine::FileStamp stamp = path.empty() ? engine::FileStamp{} : files_.Stamp(path);
  if (path == path_ && stamp == stamp_) return;
  path_ = path;
  stamp_ = stamp;
  picture_ = QImage();
  update();
  updateGeometry();
  if (path.empty()) return;
  const auto bytes = files_.ReadFile(path, engine::kLargestImageBytes);
  if (!bytes) return;
  const auto image = engine::DecodeImage(bytes.Value());
  if (image) picture_ = ToPicture(image.Value());
}

void PictureButton::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  QRect frame({0, 0}, Fitted(size()));
  frame.moveCenter(rect().center());
  const QRect inside = border_ ? frame.adjusted(1, 1, -1, -1) : frame;
  if (border_)
    painter.fillRect(frame, palette().color(hasFocus() ? QPalette::Link : QPalette::Mid));
  painter.fillRect(inside, palette().color(QPalette::Base));
  painter.setRenderHint(QPainter::SmoothPixmapTransform);
  if (!picture_.isNull()) painter.drawImage(inside, picture_);
  if (!hasFocus() || border_) return;
  painter.setPen(palette().color(QPalette::Link));
  painter.drawRect(frame.adjusted(0, 0, -1, -1));
}

namespace {

GadgetWidget MakeButton(const SharedDialogLink& link, const Gadget& gadget, QWidget* parent) {
  auto* button = new QPushButton(parent);
  button->setMinimumSize(AskedSize(gadget, button->fontMetrics()));
  QObject::connect(button, &QPushButton::clicked, button, [link, button, id = gadget.id] {
    const engine::Gadget* now = link->Find(id);
    if (now)
      CallPlugin(link, *button, now->text, About::kChosenRow,
                 [id](host::GeDialog& dialog) { return engine::PressButton(dialog, id); });
  });
  return {button, [button](const Gadget& now) { button->setText(Label(now.text)); }};
}

GadgetWidget MakeCheckbox(const SharedDialogLink& link, const Gadget& gadget, QWidget* parent) {
  auto* box = new QCheckBox(parent);
  box->setMinimumSize(AskedSize(gadget, box->fontMetrics()));
  QObject::connect(box, &QCheckBox::clicked, box, [link, id = gadget.id](bool checked) {
    if (link->dialog) engine::SetCheckbox(*link->dialog, id, checked);
  });
  return {box, [box](const Gadget& now) {
            box->setText(Label(now.text));
            box->setChecked(now.value.GetLong() != 0);
          }};
}

GadgetWidget MakeStaticText(const SharedDialogLink&, const Gadget& gadget, QWidget* parent) {
  auto* label = new QLabel(parent);
  label->setTextFormat(Qt::PlainText);
  label->setMinimumSize(AskedSize(gadget, label->fontMetrics()));
  return {label, [label](const Gadget& now) { label->setText(ToQt(now.text)); }};
}

GadgetWidget MakeEditText(const SharedDialogLink& link, const Gadget& gadget, QWidget* parent) {
  auto* field = new QLineEdit(parent);
  // The toolkit would cut names at 32767 letters.
  field->setMaxLength(std::numeric_limits<int>::max());
  // The plug-in's wish, but the dialog must fit beside a picture.
  field->setMinimumWidth(std::min(AskedSize(gadget, field->fontMetrics()).width(), 120));
  QObject::connect(field, &QLineEdit::textEdited, field,
                   [link, id = gadget.id](const QString& text) {
                     if (link->dialog) engine::TypeText(*link->dialog, id, ToHost(text));
                   });
  return {field, [field](const Gadget& now) {
            const QString text = ToQt(now.value.GetString());
            // Setting an equal text would move the cursor of whoever types.
            if (field->text() != text) field->setText(text);
          }};
}

GadgetWidget MakeNumberField(const SharedDialogLink& link, const Gadget& gadget, QWidget* parent) {
  auto* field = new NumberField(parent);
  field->setMinimumSize(AskedSize(gadget, field->fontMetrics()));
  QObject::connect(field, &QDoubleSpinBox::valueChanged, field,
                   [link, id = gadget.id](double value) {
                     if (link->dialog) engine::TypeNumber(*link->dialog, id, value);
                   });
  return {field, [field](const Gadget& now) { field->Show(now); }};
}

// Length of the longest entry in characters, at most that of a field in a dialog.
int LongestText(const QComboBox& combo) {
  constexpr int kMost = 32;
  int longest = 0;
  for (int i = 0; i < combo.count(); ++i)
    longest = std::max(longest, static_cast<int>(combo.itemText(i).size()));
  return std::min(longest, kMost);
}

// O(entries), which are few.
bool HasChoices(const QComboBox& combo, const std::vector<engine::Choice>& choices) {
  int row = 0;
  return combo.count() == static_cast<int>(choices.size()) &&
         std::all_of(choices.begin(), choices.end(), [&](const engine::Choice& choice) {
           const int at = row++;
           return combo.itemText(at) == ToQt(choice.text) &&
                  combo.itemData(at).toInt() == choice.id;
         });
}

void ShowChoices(QComboBox& combo, const Gadget& now) {
  const QSignalBlocker quiet(combo);
  // A list that a person is choosing from stays as long as it is right.
  if (!HasChoices(combo, now.choices)) {
    combo.clear();
    for (const engine::Choice& choice : now.choices) combo.addItem(ToQt(choice.text), choice.id);
  }
  combo.setCurrentIndex(combo.findData(now.value.GetLong()));
  if (now.width == 0) combo.setMinimumContentsLength(LongestText(combo));
}

GadgetWidget MakeComboBox(const SharedDialogLink& link, const Gadget& gadget, QWidget* parent) {
  auto* combo = new QComboBox(parent);
  combo->setMinimumWidth(std::min(AskedSize(gadget, combo->fontMetrics()).width(), 120));
  combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  QObject::connect(combo, &QComboBox::activated, combo, [link, combo, id = gadget.id](int index) {
    if (link->dialog) engine::ChooseFromCombo(*link->dialog, id, combo->itemData(index).toInt());
  });
  return {combo, [combo](const Gadget& now) { ShowChoices(*combo, now); }};
}

GadgetWidget MakeSeparator(const SharedDialogLink&, const Gadget& gadget, QWidget* parent) {
  auto* line = new QFrame(parent);
  line->setFrameShape(QFrame::VLine);
  line->setFrameShadow(QFrame::Plain);
  line->setMinimumHeight(AskedSize(gadget, line->fontMetrics()).height());
  return {line, [](const Gadget&) {}};
}

GadgetWidget MakeList(const SharedDialogLink& link, const Gadget& gadget, QWidget* parent) {
  auto* list = new ListView(link, gadget, parent);
  return {list, [list](const Gadget& now) { list->Show(now); }};
}

GadgetWidget MakePicture(const SharedDialogLink& link, const Gadget& gadget, QWidget* parent) {
  auto* picture = new PictureButton(link->files, gadget, parent);
  QObject::connect(picture, &QAbstractButton::clicked, picture, [link, id = gadget.id] {
    if (link->dialog) engine::PressButton(*link->dialog, id);
  });
  return {picture, [picture](const Gadget& now) { picture->Show(now); }};
}

GadgetWidget Make(const SharedDialogLink& link, const Gadget& gadget, QWidget* parent) {
  switch (gadget.kind) {
    case GadgetKind::Button:
      return MakeButton(link, gadget, parent);
    case GadgetKind::Checkbox:
      return MakeCheckbox(link, gadget, parent);
    case GadgetKind::StaticText:
      return MakeStaticText(link, gadget, parent);
    case GadgetKind::EditText:
      return MakeEditText(link, gadget, parent);
    case GadgetKind::NumberField:
      return MakeNumberField(link, gadget, parent);
    case GadgetKind::ComboBox:
      return MakeComboBox(link, gadget, parent);
    case GadgetKind::ListView:
      return MakeList(link, gadget, parent);
    case GadgetKind::BitmapButton:
      return MakePicture(link, gadget, parent);
    case GadgetKind::Separator:
    case GadgetKind::Group:
      break;
  }
  return MakeSeparator(link, gadget, parent);
}

}  // namespace

// Being switched on or off is common to all kinds and wrapped around.
GadgetWidget MakeGadgetWidget(const SharedDialogLink& link, const Gadget& gadget, QWidget* parent) {
  GadgetWidget made = Make(link, gadget, parent);
  made.show = [widget = made.widget, show = made.show](const Gadget& now) {
    widget->setEnabled(now.enabled);
    show(now);
  };
  made.show(gadget);
  return made;
}

}  // namespace desktop
