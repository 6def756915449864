#include "program/desktop/attributes/TextLine.h"

#include <QFileInfo>
#include <QHBoxLayout>
#include <QPointer>
#include <QToolButton>

#include "program/desktop/FileChooser.h"
#include "program/desktop/Text.h"

namespace desktop {

namespace {

constexpr const char* kPictures = "Pictures (*.png *.jpg *.jpeg *.tif *.tiff *.exr *.bmp *.tga)";

}  // namespace

TextLine::TextLine(const Field& field, QWidget* parent)
    : LineField(field, parent), edit_(new TypingEdit(this)) {
  edit_->take = [this](const QString& text) { return Take(text); };
  edit_->setToolTip(field.tip);
  edit_->setAccessibleName(field.label);
  layout()->addWidget(edit_);
  Watch(edit_);
  setFocusProxy(edit_);
  if (field.kind != FieldKind::Text) AddChooser();
}

void TextLine::AddChooser() {
  auto* button = new QToolButton(this);
  button->setText("...");
  button->setToolTip("Choose a file");
  connect(button, &QToolButton::clicked, this, [this] { Choose(); });
  layout()->addWidget(button);
}

void TextLine::Show(const FieldValue& value, const host::BaseDocument& doc) {
  doc_ = IdentityOf(&doc);
  if (edit_->IsTyped()) return;
  const bool isFile = Shown().kind != FieldKind::Text;
  edit_->ShowText(ToQt(isFile ? value.value.GetFilename().GetString() : value.value.GetString()),
                  value.mixed[0]);
}

QString TextLine::Take(const QString& text) const {
  if (Shown().kind == FieldKind::Text && text.isEmpty())
    return "A name needs one character at least.";
  Tell({Shown().kind == FieldKind::Text ? host::GeData(ToHost(text))
                                        : host::GeData(host::Filename(ToHost(text)))});
  return {};
}

// Begins where the file is now, else beside the scene.
void TextLine::Choose() {
  const QPointer<TextLine> alive(this);
  const host::BaseDocument* doc = FindOpenDocument(doc_);
  const std::string folder = doc ? doc->GetDocumentPath().GetString().ToUtf8() : "";
  const QString now = edit_->text();
  const std::string begin = QFileInfo(now).isAbsolute() ? now.toStdString() : folder;
  const QString filter = Shown().kind == FieldKind::Texture ? kPictures : kAnything;
  const auto path = ChooseFile(
      this, {host::FILESELECTTYPE_ANYTHING, host::FILESELECT_LOAD, "Choose a file", begin}, filter);
  if (path && alive) Tell({host::GeData(host::Filename(host::String(*path)))});
}

}  // namespace desktop
