// Where previews lie, and showing one.
#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/keys/FileNames.h"

namespace stagemarks {

Filename SMDialog::GetSMfilePath() const {
  const BaseDocument* doc = GetActiveDocument();
  if (!doc) return Filename();
  Filename name = doc->GetDocumentName();
  name.ClearSuffix();
  return doc->GetDocumentPath() + Filename(name.GetString() + kSideFolderEnding);
}

// The ending of an element's name after its last dot counts as a suffix and is replaced.
Filename SMDialog::GetPreviewImage(const String& name) const {
  Filename file = GetSMfilePath() + Filename(name);
  file.SetSuffix(kPreviewSuffix);
  return file;
}

void SMDialog::ShowPreview(const String& name) {
  const Filename preview = GetPreviewImage(name);
  if (!GeFExist(preview)) {
    ShowDefaultImage();
  } else if (previewButton_) {
    previewButton_->SetImage(preview);
  }
}

void SMDialog::ShowDefaultImage() {
  const Filename image = GeGetPluginPath() + Filename(kResourceFolder) + Filename(kDefaultImage);
  if (previewButton_ && GeFExist(image)) previewButton_->SetImage(image);
}

}  // namespace stagemarks
