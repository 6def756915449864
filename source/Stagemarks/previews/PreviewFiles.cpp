// Where previews lie, and showing one.
#include "source/Stagemarks/previews/PreviewFiles.h"

#include <string_view>

#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/keys/FileNames.h"

namespace stagemarks {

namespace {

// False when the path holds parts that change nothing about where it leads.
Bool IsPlainPath(std::string_view path) {
  while (true) {
    const std::size_t end = path.find_first_of("/\\");
    const std::string_view part = path.substr(0, end);
    if (part.empty() || part == ".") return FALSE;
    if (end == std::string_view::npos) return TRUE;
    path.remove_prefix(end + 1);
  }
}

}  // namespace

Filename PreviewFile(const Filename& folder, const String& name) {
  const String file = name + "." + kPreviewSuffix;
  return IsPlainPath(file.View()) ? folder + Filename(file) : Filename();
}

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
