#include "program/desktop/FileChooser.h"

#include <QFileDialog>

#include "program/desktop/Text.h"

namespace desktop {

namespace {

void ShowProposal(QFileDialog& dialog, const std::string& proposal) {
  if (proposal.empty()) return;
  const QFileInfo proposed(ToQt(proposal));
  dialog.setDirectory(proposed.isDir() ? proposed.filePath() : proposed.path());
  if (!proposed.isDir()) dialog.selectFile(proposed.fileName());
}

}  // namespace

std::optional<std::string> ChooseFile(QWidget* parent, const engine::FileQuestion& question, const QString& filter) {
  QFileDialog dialog(parent, ToQt(question.title));
  const bool isFolder = question.flags & host::FILESELECT_DIRECTORY;
  const bool isSave = question.flags & host::FILESELECT_SAVE;
  dialog.setAcceptMode(isSave ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
  dialog.setFileMode(isFolder ? QFileDialog::Directory : isSave ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
  dialog.setNameFilters({filter, kAnything});
  if (filter == kOwnScenes) dialog.setDefaultSuffix("c4d");
  if (filter == kPictureFiles && isSave) dialog.setDefaultSuffix("png");
  ShowProposal(dialog, question.proposal);
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return std::nullopt;
  return dialog.selectedFiles().first().toStdString();
}

}  // namespace desktop
