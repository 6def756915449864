#include "program/desktop/attributes/FieldWidget.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QPointer>
#include <QSignalBlocker>
#include <QToolButton>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

#include "engine/render/Image.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/TreeWalk.h"
#include "host/BaseMaterial.h"
#include "host/LayerObject.h"
#include "host/RenderData.h"
#include "program/desktop/FileDialogs.h"
#include "program/desktop/OpenDocument.h"
#include "program/desktop/Text.h"
#include "program/desktop/attributes/LineEdits.h"

namespace desktop {

using host::BaseDocument;
using host::BaseList2D;

namespace {

// A list keeps this width however long its entries are: panels are narrow.
constexpr int kFewestLetters = 8;
constexpr int kLongestLinkName = 200;

const char* NoneText(engine::FieldKind kind) {
  return kind == engine::FieldKind::Camera ? "Editor camera" : "None";
}

// On one line and cut: a name may be of any length and hold line breaks.
QString NameOf(const BaseList2D& element) {
  const QString name = ToQt(element.GetName()).left(kLongestLinkName).simplified();
  return name.isEmpty() ? "(no name)" : name;
}

// The first node of a list, and whether one of its nodes is meant.
const host::GeListNode* FirstOf(const BaseDocument& doc, engine::FieldKind kind) {
  switch (kind) {
    case engine::FieldKind::Layer:
      return doc.GetLayerObjectRoot()->GetFirst();
    case engine::FieldKind::Material:
      return doc.GetFirstMaterial();
    case engine::FieldKind::Camera:
      return doc.GetFirstObject();
    default:
      return doc.GetFirstRenderData();
  }
}

// One of a few, or one of the document's layers, materials, cameras or render settings. That list
// is read when it is about to be used, so that a scene with many of them costs nothing before.
class ChoiceWidget : public FieldWidget {
 public:
  ChoiceWidget(const engine::Field& field, QWidget* parent);

  void Show(const engine::FieldValue& value, const host::BaseDocument& doc) override;

 private:
  // The list, which is read when a person comes to it, and leaves the wheel to what it stands in.
  class Box : public QComboBox {
   public:
    explicit Box(ChoiceWidget& line) : QComboBox(&line), line_(line) {}
    void showPopup() override;
    void hidePopup() override;
    // True from opening the popup until the choice in it was told.
    bool IsChosenFrom() const;

   protected:
    void focusInEvent(QFocusEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

   private:
    ChoiceWidget& line_;
    bool closing_ = false;
  };

  bool IsLink() const { return EditedField().kind != engine::FieldKind::Choice; }
  void ShowLink(const engine::FieldValue& value, const host::BaseDocument& doc);
  void ReadList();
  void Chosen(int row);

  Box* box_;
  host::ULLONG doc_ = 0;
};

void ChoiceWidget::Box::showPopup() {
  line_.ReadList();
  QComboBox::showPopup();
}

// The toolkit gives the focus back before it tells which row was chosen.
void ChoiceWidget::Box::hidePopup() {
  closing_ = true;
  QComboBox::hidePopup();
  closing_ = false;
}

bool ChoiceWidget::Box::IsChosenFrom() const { return closing_ || view()->isVisible(); }

void ChoiceWidget::Box::focusInEvent(QFocusEvent* event) {
  if (!IsChosenFrom()) line_.ReadList();
  QComboBox::focusInEvent(event);
}

// The wheel scrolls the panel; a list that changes under it would change the scene by accident.
void ChoiceWidget::Box::wheelEvent(QWheelEvent* event) { event->ignore(); }

ChoiceWidget::ChoiceWidget(const engine::Field& field, QWidget* parent)
    : FieldWidget(field, parent), box_(new Box(*this)) {
  box_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  box_->setMinimumContentsLength(kFewestLetters);
  box_->setPlaceholderText(kMixed);
  box_->setFocusPolicy(Qt::StrongFocus);
  box_->setToolTip(field.tip);
  box_->setAccessibleName(field.label);
  for (const engine::FieldChoice& choice : field.choices) box_->addItem(choice.label, choice.value);
  layout()->addWidget(box_);
  setFocusProxy(box_);
  connect(box_, &QComboBox::activated, this, [this](int row) { Chosen(row); });
}

// Without signals: showing is no choice of a person.
void ChoiceWidget::Show(const engine::FieldValue& value, const BaseDocument& doc) {
  const QSignalBlocker quiet(box_);
  doc_ = IdentityOf(&doc);
  if (IsLink()) {
    ShowLink(value, doc);
  } else {
    box_->setCurrentIndex(value.mixed[0] ? -1 : box_->findData(value.value.GetLong()));
  }
}

// A list that was read stays as long as it is being used; else there is but the one that is shown.
void ChoiceWidget::ShowLink(const engine::FieldValue& value, const BaseDocument& doc) {
  if (box_->IsChosenFrom()) return;
  const BaseList2D* target = value.value.GetLink(&doc);
  const qulonglong id = target ? engine::IdOf(*target) : 0;
  if (!box_->hasFocus()) {
    box_->clear();
    if (!value.mixed[0]) box_->addItem(target ? NameOf(*target) : NoneText(EditedField().kind), id);
  } else {
    ReadList();
  }
  box_->setCurrentIndex(value.mixed[0] ? -1 : box_->findData(id));
}

// O(elements of the document); what was chosen stays chosen, by its identity. Render settings have
// no "none": a document always has active ones.
void ChoiceWidget::ReadList() {
  const BaseDocument* doc = IsLink() ? FindOpenDocument(doc_) : nullptr;
  if (!doc) return;
  const QSignalBlocker quiet(box_);
  const QVariant now = box_->currentIndex() < 0 ? QVariant() : box_->currentData();
  box_->clear();
  if (EditedField().kind != engine::FieldKind::Settings)
    box_->addItem(NoneText(EditedField().kind), qulonglong(0));
  for (const host::GeListNode* node = FirstOf(*doc, EditedField().kind); node;
       node = engine::NextInTree(node)) {
    if (EditedField().kind == engine::FieldKind::Camera && node->GetType() != host::Ocamera)
      continue;
    box_->addItem(NameOf(static_cast<const BaseList2D&>(*node)), qulonglong(engine::IdOf(*node)));
  }
  box_->setCurrentIndex(now.isValid() ? box_->findData(now) : -1);
}

// Resolved now: what was listed may be gone, which is a null link then.
void ChoiceWidget::Chosen(int row) {
  if (!IsLink()) return Tell({host::GeData(host::LONG(box_->itemData(row).toInt()))});
  const BaseDocument* doc = FindOpenDocument(doc_);
  if (doc) Tell({host::GeData(engine::FindNode(doc, box_->itemData(row).toULongLong()))});
}

// Pixels.
constexpr QSize kPatch(22, 16);

// Part 0 to 2 of a vector; the value itself where it is no vector.
double PartOf(const host::GeData& value, std::size_t part, engine::FieldKind kind) {
  if (!engine::IsOfParts(kind)) return value.GetReal();
  const host::Vector v = value.GetVector();
  return part == 0 ? v.x : part == 1 ? v.y : v.z;
}

char MarkOf(engine::FieldKind kind, std::size_t part) {
  if (!engine::IsOfParts(kind)) return 0;
  return (engine::IsColor(kind) ? "RGB" : kind == engine::FieldKind::Pair ? "UV" : "XYZ")[part];
}

// The color as the screen shows it, and the color that the screen shows so. Only FieldKind::Color
// is linear light. Other colors, those of layers, are stored as the screen shows them.
QColor ToScreen(const host::Vector& color, engine::FieldKind kind) {
  const auto byte = [kind](double share) {
    if (kind == engine::FieldKind::Color)
      return static_cast<int>(engine::LinearToSrgb(static_cast<float>(share)));
    return share > 0 ? static_cast<int>(std::lround(std::min(share, 1.0) * 255)) : 0;
  };
  return QColor(byte(color.x), byte(color.y), byte(color.z));
}

host::Vector FromScreen(const QColor& color, engine::FieldKind kind) {
  const auto share = [kind](int byte) {
    return kind == engine::FieldKind::Color
               ? static_cast<double>(engine::SrgbToLinear(static_cast<std::uint8_t>(byte)))
               : byte / 255.0;
  };
  return {share(color.red()), share(color.green()), share(color.blue())};
}

// One to three numbers side by side; with a color, a patch of it before them that opens a chooser.
class NumberWidget : public FieldWidget {
 public:
  NumberWidget(const engine::Field& field, QWidget* parent);

  void Show(const engine::FieldValue& value, const host::BaseDocument& doc) override;

 private:
  void AddPatch();
  void ShowPatch();
  void ChooseColor();
  void Entered(std::size_t part, double number, bool goesOn);
  host::GeData Kept(double number) const;

  std::vector<NumberLineEdit*> numbers_;
  QToolButton* patch_ = nullptr;
  engine::FieldValue value_;
};

NumberWidget::NumberWidget(const engine::Field& field, QWidget* parent)
    : FieldWidget(field, parent) {
  if (engine::IsColor(field.kind)) AddPatch();
  const auto parts = static_cast<std::size_t>(engine::PartsOf(field.kind));
  for (std::size_t part = 0; part < parts; ++part) {
    auto* number = new NumberLineEdit(field, MarkOf(field.kind, part), this);
    number->entered = [this, part](double value, bool goesOn) { Entered(part, value, goesOn); };
    number->setAccessibleName(
        parts > 1 ? QString("%1 %2").arg(field.label, QChar(MarkOf(field.kind, part)))
                  : field.label);
    layout()->addWidget(number);
    numbers_.push_back(number);
    AddTypingPart(number);
  }
  setFocusProxy(patch_ ? static_cast<QWidget*>(patch_) : numbers_.front());
}

void NumberWidget::AddPatch() {
  patch_ = new QToolButton(this);
  patch_->setIconSize(kPatch);
  patch_->setToolTip("Choose a color");
  patch_->setAccessibleName("Choose a color");
  connect(patch_, &QToolButton::clicked, this, [this] { ChooseColor(); });
  layout()->addWidget(patch_);
}

// A part that is being typed keeps its text.
void NumberWidget::Show(const engine::FieldValue& value, const host::BaseDocument&) {
  value_ = value;
  for (std::size_t part = 0; part < numbers_.size(); ++part) {
    if (numbers_[part]->IsTyped()) continue;
    const double shown =
        PartOf(value.value, part, EditedField().kind) * engine::ShownPerKept(EditedField().kind);
    numbers_[part]->ShowNumber(value.mixed[part] ? std::nullopt : std::optional(shown));
  }
  ShowPatch();
}

void NumberWidget::ShowPatch() {
  if (!patch_) return;
  QPixmap picture(kPatch * devicePixelRatioF());
  picture.setDevicePixelRatio(devicePixelRatioF());
  const bool mixed = std::count(value_.mixed.begin(), value_.mixed.end(), true) > 0;
  picture.fill(mixed ? palette().color(QPalette::Mid)
                     : ToScreen(value_.value.GetVector(), EditedField().kind));
  patch_->setIcon(picture);
}

// The chooser runs an event loop, in which this widget may be deleted.
void NumberWidget::ChooseColor() {
  const QPointer<NumberWidget> alive(this);
  const QColor chosen = QColorDialog::getColor(
      ToScreen(value_.value.GetVector(), EditedField().kind), this, "Choose a color");
  if (chosen.isValid() && alive) Tell({FromScreen(chosen, EditedField().kind)});
}

// Only the part that was typed is changed: the others may be mixed and stay as they are.
void NumberWidget::Entered(std::size_t part, double number, bool goesOn) {
  engine::FieldEdit edit;
  edit.goesOn = goesOn;
  const double kept = number / engine::ShownPerKept(EditedField().kind);
  if (engine::IsOfParts(EditedField().kind)) {
    edit.parts = {part == 0, part == 1, part == 2};
    edit.value = host::Vector(kept);
  } else {
    edit.value = Kept(kept);
  }
  Tell(edit);
}

host::GeData NumberWidget::Kept(double number) const {
  const bool whole = EditedField().kind == engine::FieldKind::Whole ||
                     EditedField().kind == engine::FieldKind::Frame;
  return whole ? host::GeData(static_cast<host::LONG>(std::lround(number))) : host::GeData(number);
}

// A check box; half checked where the elements differ.
class SwitchWidget : public FieldWidget {
 public:
  SwitchWidget(const engine::Field& field, QWidget* parent);

  void Show(const engine::FieldValue& value, const host::BaseDocument& doc) override;

 private:
  QCheckBox* box_;
};

SwitchWidget::SwitchWidget(const engine::Field& field, QWidget* parent)
    : FieldWidget(field, parent), box_(new QCheckBox(this)) {
  box_->setToolTip(field.tip);
  box_->setAccessibleName(field.label);
  layout()->addWidget(box_);
  static_cast<QHBoxLayout*>(layout())->addStretch();
  setFocusProxy(box_);
  connect(box_, &QCheckBox::clicked, this, [this] {
    // A click leaves "mixed" for good: a person can say on or off only.
    box_->setTristate(false);
    Tell({host::GeData(host::LONG(box_->isChecked() ? 1 : 0))});
  });
}

void SwitchWidget::Show(const engine::FieldValue& value, const host::BaseDocument&) {
  box_->setTristate(value.mixed[0]);
  box_->setCheckState(value.mixed[0]          ? Qt::PartiallyChecked
                      : value.value.GetBool() ? Qt::Checked
                                              : Qt::Unchecked);
}

constexpr const char* kPictures =
    "Pictures (*.png *.jpg *.jpeg *.tif *.tiff *.exr *.webp *.bmp *.tga)";

// A text; of a file, with a button that opens a chooser.
class TextWidget : public FieldWidget {
 public:
  TextWidget(const engine::Field& field, QWidget* parent);

  void Show(const engine::FieldValue& value, const host::BaseDocument& doc) override;

 private:
  void AddChooser();
  void Choose();
  QString Take(const QString& text) const;

  ConfirmedLineEdit* edit_;
  host::ULLONG doc_ = 0;
};

TextWidget::TextWidget(const engine::Field& field, QWidget* parent)
    : FieldWidget(field, parent), edit_(new ConfirmedLineEdit(this)) {
  edit_->take = [this](const QString& text) { return Take(text); };
  edit_->setToolTip(field.tip);
  edit_->setAccessibleName(field.label);
  layout()->addWidget(edit_);
  AddTypingPart(edit_);
  setFocusProxy(edit_);
  if (field.kind != engine::FieldKind::Text) AddChooser();
}

void TextWidget::AddChooser() {
  auto* button = new QToolButton(this);
  button->setText("...");
  button->setToolTip("Choose a file");
  connect(button, &QToolButton::clicked, this, [this] { Choose(); });
  layout()->addWidget(button);
}

void TextWidget::Show(const engine::FieldValue& value, const host::BaseDocument& doc) {
  doc_ = IdentityOf(&doc);
  if (edit_->IsTyped()) return;
  const bool isFile = EditedField().kind != engine::FieldKind::Text;
  edit_->ShowText(ToQt(isFile ? value.value.GetFilename().GetString() : value.value.GetString()),
                  value.mixed[0]);
}

// Elements have names; an empty file name is "no file".
QString TextWidget::Take(const QString& text) const {
  if (EditedField().kind == engine::FieldKind::Text && text.isEmpty())
    return "A name needs one character at least.";
  Tell({EditedField().kind == engine::FieldKind::Text
            ? host::GeData(ToHost(text))
            : host::GeData(host::Filename(ToHost(text)))});
  return {};
}

// Begins where the file is now, else beside the scene.
void TextWidget::Choose() {
  const QPointer<TextWidget> alive(this);
  const host::BaseDocument* doc = FindOpenDocument(doc_);
  const std::string folder = doc ? doc->GetDocumentPath().GetString().ToUtf8() : "";
  const QString now = edit_->text();
  const std::string begin = QFileInfo(now).isAbsolute() ? now.toStdString() : folder;
  const QString filter = EditedField().kind == engine::FieldKind::Texture ? kPictures : kAnything;
  const auto path = ChooseFile(
      this, {host::FILESELECTTYPE_ANYTHING, host::FILESELECT_LOAD, "Choose a file", begin}, filter);
  if (path && alive) Tell({host::GeData(host::Filename(host::String(*path)))});
}

}  // namespace

FieldWidget::FieldWidget(const engine::Field& field, QWidget* parent)
    : QWidget(parent), field_(field) {
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(4);
  setToolTip(field.tip);
}

// Before other elements are shown, which would take the text away.
void FieldWidget::FinishTyping() {
  for (ConfirmedLineEdit* edit : edits_) {
    if (edit->IsTyped()) edit->Finish();
  }
}

void FieldWidget::Tell(const engine::FieldEdit& edit) const {
  if (edited) edited(edit);
}

FieldWidget* FieldWidget::Make(const engine::Field& field, QWidget* parent) {
  switch (field.kind) {
    case engine::FieldKind::Text:
    case engine::FieldKind::File:
    case engine::FieldKind::Texture:
      return new TextWidget(field, parent);
    case engine::FieldKind::Switch:
      return new SwitchWidget(field, parent);
    case engine::FieldKind::Choice:
    case engine::FieldKind::Layer:
    case engine::FieldKind::Material:
    case engine::FieldKind::Camera:
    case engine::FieldKind::Settings:
      return new ChoiceWidget(field, parent);
    default:
      return new NumberWidget(field, parent);
  }
}

}  // namespace desktop
