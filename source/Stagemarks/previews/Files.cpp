// Where previews lie, and showing one.
#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/keys/FileNames.h"
#include "source/Stagemarks/previews/PreviewFile.h"

namespace stagemarks {

Filename SMDialog::GetSMfilePath() const {
  const BaseDocument* doc = GetActiveDocument();
  if (!doc) return Filename();
  Filename name = doc->GetDocumentName();
  name.ClearSuffix();
  return doc->GetDocumentPath() + Filename(name.GetString() + kSideFolderEnding);
}

Filename SMDialog::GetPreviewImage(const String& name) const {
  return PreviewFile(GetSMfilePath(), name);
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
