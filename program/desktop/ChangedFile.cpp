#include "program/desktop/ChangedFile.h"

#include <QMessageBox>
#include <QPushButton>

#include "program/desktop/DocumentCommands.h"

namespace desktop {

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
