#include "program/desktop/FileDialogs.h"

#include <QAbstractItemView>
#include <QFileDialog>
#include <QItemSelectionModel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>

#include "program/desktop/DocumentCommands.h"
#include "program/desktop/Text.h"

namespace desktop {

namespace {

// A folder is opened; of a file its folder is, and its name stands in the field.
void ShowProposal(QFileDialog& dialog, const std::string& proposal) {
  if (proposal.empty()) return;
  const QFileInfo proposed(ToQt(proposal));
  dialog.setDirectory(proposed.isDir() ? proposed.filePath() : proposed.path());
  if (!proposed.isDir()) dialog.selectFile(proposed.fileName());
}

// Takes also the name of a folder that is not there yet, and makes it. The widgets in it are found
// by the names that the toolkit gives them. Where it has none of these (the system's own chooser)
// it is as any other.
class Chooser : public QFileDialog {
 public:
  Chooser(QWidget* parent, const QString& title, engine::FileSystem* files)
      : QFileDialog(parent, title), files_(files) {}

  // The toolkit keeps the row of the proposed file chosen while another name is typed, unless the
  // field has the focus: it would answer with a file that nobody named.
  void ChooseWhatIsTyped() {
    const auto* field = findChild<QLineEdit*>("fileNameEdit");
    auto* list = findChild<QAbstractItemView*>("listView");
    if (field && list)
      connect(field, &QLineEdit::textEdited, list->selectionModel(),
              [list] { list->clearSelection(); });
  }

 protected:
  void accept() override {
    if (fileMode() == Directory && files_ && !MakeTyped()) return;
    QFileDialog::accept();
  }

 private:
  // False keeps the chooser open, after the reason was shown. One folder is made and no parents: a
  // typing error in the middle of a path shall not become folders.
  bool MakeTyped() {
    const auto* field = findChild<QLineEdit*>("fileNameEdit");
    const QString typed = field ? field->text() : QString();
    const QFileInfo folder(directory(), typed);
    if (typed.isEmpty() || folder.exists() || !QFileInfo(folder.path()).isDir()) return true;
    const engine::Status made = files_->MakeFolder(folder.absoluteFilePath().toStdString());
    if (!made) QMessageBox::warning(this, windowTitle(), ToQt(made.Message()));
    return made.Ok();
  }

  engine::FileSystem* files_;
};

}  // namespace

std::optional<std::string> ChooseFile(QWidget* parent, const engine::FileQuestion& question,
                                      const QString& filter, engine::FileSystem* files) {
  Chooser dialog(parent, ToQt(question.title), files);
  const bool isFolder = question.flags & host::FILESELECT_DIRECTORY;
  const bool isSave = question.flags & host::FILESELECT_SAVE;
  dialog.setAcceptMode(isSave ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
  dialog.setFileMode(isFolder ? QFileDialog::Directory
                     : isSave ? QFileDialog::AnyFile
                              : QFileDialog::ExistingFile);
  // The system's own chooser cannot be taught new names.
  if (isFolder) dialog.setOption(QFileDialog::DontUseNativeDialog);
  if (isFolder) dialog.setOption(QFileDialog::ShowDirsOnly);
  dialog.setNameFilters({filter, kAnything});
  if (filter == kOwnScenes) dialog.setDefaultSuffix("c4d");
  if (filter == kPictureFiles && isSave) dialog.setDefaultSuffix("png");
  ShowProposal(dialog, question.proposal);
  dialog.ChooseWhatIsTyped();
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return std::nullopt;
  return dialog.selectedFiles().first().toStdString();
}

void BrowseForFolder(QWidget* parent, const char* title, QLineEdit& field,
                     engine::FileSystem& files) {
  const engine::FileQuestion question{host::FILESELECTTYPE_ANYTHING, host::FILESELECT_DIRECTORY,
                                      title, QFileInfo(field.text()).path().toStdString()};
  if (const auto folder = ChooseFile(parent, question, kAnything, &files))
    field.setText(ToQt(*folder));
}

namespace {

QString Explanation(bool hasOwnChanges, bool saves) {
  QString text = hasOwnChanges ? "You have changes that are not in it. Reload loses them and shows "
                                 "the file as it is now."
                               : "Reload shows the file as it is now.";
  text += saves ? " Keep Mine writes yours over it."
                : " Keep Mine goes on with yours, and the next saving writes it over the file.";
  return text + " Save As leaves the file alone and writes yours under another name.";
}

}  // namespace

// Enter loses nothing: with changes of one's own it saves under another name, without any
// it reloads. Escape decides nothing.
ChangedFileAnswer AskAboutChangedFile(QWidget* window, const host::BaseDocument& doc, bool saves) {
  const bool hasOwnChanges = doc.GetChanged();
  QMessageBox box(QMessageBox::Warning, "Changed on disk",
                  "Another program has changed \"" + ShortTitle(doc) + "\".", QMessageBox::NoButton,
                  window);
  box.setTextFormat(Qt::PlainText);
  box.setInformativeText(Explanation(hasOwnChanges, saves));
  QPushButton* reload = box.addButton("&Reload", QMessageBox::DestructiveRole);
  QPushButton* keep = box.addButton("&Keep Mine", QMessageBox::AcceptRole);
  QPushButton* saveAs = box.addButton("Save &As...", QMessageBox::ActionRole);
  box.setEscapeButton(box.addButton(saves ? "Cancel" : "&Later", QMessageBox::RejectRole));
  box.setDefaultButton(hasOwnChanges ? saveAs : reload);
  box.exec();
  if (box.clickedButton() == reload) return ChangedFileAnswer::Reload;
  if (box.clickedButton() == keep) return ChangedFileAnswer::KeepMine;
  return box.clickedButton() == saveAs ? ChangedFileAnswer::SaveAs : ChangedFileAnswer::Later;
}

}  // namespace desktop
