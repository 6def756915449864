// PluginCall: hands what a person does in a dialog to its plug-in, one call that only returns when
// all is done. It names the undo step that may come of it, and shows before it begins that work
// goes on which may say nothing of itself. Main thread.
#pragma once

#include <QPointer>
#include <QStatusBar>
#include <functional>

#include "program/desktop/dialog/DialogLink.h"

namespace desktop {

// The pointer waits and the status line of the window names the act. Only where a person would
// notice: small scenes are through before anything could be read.
class BusyIndicator {
 public:
  // `from`: the widget in a main window that a person used. `doing`: the act in a few words.
  BusyIndicator(const QObject& from, const QString& doing);
  BusyIndicator(const BusyIndicator&) = delete;
  BusyIndicator& operator=(const BusyIndicator&) = delete;
  // Takes its text away unless something else is said there by now.
  ~BusyIndicator();

 private:
  QPointer<QStatusBar> line_;
  QString doing_;
};

// The pointer as it is where nobody works, for as long as a question stands there.
class NormalPointer {
 public:
  NormalPointer();
  NormalPointer(const NormalPointer&) = delete;
  NormalPointer& operator=(const NormalPointer&) = delete;
  ~NormalPointer();
};

// Subject of the act in progress, as long as this lives. Acts may begin within acts. Main thread.
class CallSubject {
 public:
  explicit CallSubject(const QString& text);
  CallSubject(const CallSubject&) = delete;
  CallSubject& operator=(const CallSubject&) = delete;
  ~CallSubject();
  // Of the innermost act; empty where there is none.
  static QString Present();

 private:
  QString text_;
  const CallSubject* around_;
};

// Subject of an act in a dialog: the row that is chosen in its list, or nothing more than the label
// says.
enum class About { kChosenRow, kNothingMore };
// Sends an act of a person to the dialog of the link, unless that is closed. `label`: of the
// gadget, as the dialog has it. Undo steps that the plug-in makes get that name, with the chosen
// row's where the act is about it.
void CallPlugin(const SharedDialogLink& link, const QObject& from, const host::String& label,
                About about, const std::function<bool(host::GeDialog&)>& act);

}  // namespace desktop
