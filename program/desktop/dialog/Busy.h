// Busy: shows that work goes on which says nothing of itself, before it begins: the pointer waits
// and the status line of the window names the act. Only where a person would notice: small scenes
// are through before anything could be read. Main thread.
#pragma once

#include <QPointer>
#include <QStatusBar>
#include <functional>

#include "program/desktop/dialog/DialogLink.h"

namespace desktop {

class Busy {
 public:
  // `from`: the widget in a main window that a person used. `doing`: the act in a few words.
  Busy(const QObject& from, const QString& doing);
  Busy(const Busy&) = delete;
  Busy& operator=(const Busy&) = delete;
  // Takes its text away unless something else is said there by now.
  ~Busy();

 private:
  QPointer<QStatusBar> line_;
  QString doing_;
};

// The pointer as it is where nobody works, for as long as a question stands there.
class FreePointer {
 public:
  FreePointer();
  FreePointer(const FreePointer&) = delete;
  FreePointer& operator=(const FreePointer&) = delete;
  ~FreePointer();
};

// What the act that goes on is about, as long as this lives. Acts may begin within acts. Main
// thread.
class Concern {
 public:
  explicit Concern(const QString& text);
  Concern(const Concern&) = delete;
  Concern& operator=(const Concern&) = delete;
  ~Concern();
  // Of the innermost act; empty where there is none.
  static QString Present();

 private:
  QString text_;
  const Concern* around_;
};

// What of a dialog an act is about: the row that is chosen in its list, or nothing more than its
// label says.
enum class About { kChosenRow, kNothingMore };
// Sends an act of a person to the dialog of the link, unless that is closed. `label`: of the
// gadget, as the dialog has it. Undo steps that the plug-in makes get that name, with the chosen
// row's where the act is about it.
void Act(const SharedDialogLink& link, const QObject& from, const host::String& label, About about,
         const std::function<bool(host::GeDialog&)>& act);

}  // namespace desktop
