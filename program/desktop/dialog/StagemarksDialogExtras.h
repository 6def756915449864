// StagemarksDialogExtras: conveniences that the desktop adds to the Stagemarks dialog: Enter and
// double click, a context menu for rows, tool tips, a hint in the empty list, and a row and picture
// that stay when the scene changes. All of it goes through the dialog's own buttons, fields and
// events, which are found by their labels. It belongs to its view. Main thread.
#pragma once

#include <QObject>

#include "program/desktop/dialog/DialogView.h"
#include "program/pictures/StagemarksDialog.h"

class QAbstractButton;

namespace desktop {

class ListView;

class StagemarksDialogExtras : public QObject {
 public:
  // `view` shows a dialog for which StagemarksDialog::Fits.
  explicit StagemarksDialogExtras(DialogView& view);

 private:
  // Once the widgets are there, and whenever they have been built anew.
  void Equip();
  // Sets the tool tips.
  void ExplainGadgets();
  // Presses a button as a person does.
  void Press(const char* button);
  // Null where the dialog has no such button, or is closed.
  QAbstractButton* Button(const char* label) const;
  // Null where the dialog has none, or is closed.
  ListView* List() const;
  // The context menu of the list, at a place of its viewport; none beside the rows.
  void ShowMenu(const QPoint& place);
  // Asks for a new name of the chosen row and presses Rename. A name that is taken is refused.
  void Rename();
  // The name that is chosen; empty where not exactly one is.
  std::string Chosen() const;
  // As it stands in the name field.
  std::string TypedName() const;
  // The dialog goes back to its default picture with every change of the scene. Chooses the row
  // again, as a person would, as long as nothing else has been typed into the field, which choosing
  // fills.
  void KeepPicture();
  // Chooses the row that was just recorded or renamed.
  void ChooseTyped();
  // "Stagemark: NAME" for a label whose question names none; empty for others.
  QString ConcernOf(const host::String& label) const;

  DialogView& view_;
  std::string chosen_;      // what was chosen last
  std::string itsPicture_;  // and what the dialog showed for it
};

}  // namespace desktop
