// Reports: tells the person what came of what was asked for. What went well is a line in the status
// line; what did not, and the files of an export, stand in a small window that stays until it is
// closed, and is only one: the next report takes its place. Belongs to the main window. Main
// thread.
#pragma once

#include <QDialog>
#include <QPointer>
#include <functional>

#include "engine/application/Application.h"
#include "host/GeDialog.h"
#include "program/desktop/DesktopPerson.h"
#include "program/export/ExportPlan.h"
#include "program/outcome/CommandWatch.h"

namespace desktop {

class Reports {
 public:
  Reports(const engine::Services& services, DesktopPerson& person, QWidget* window)
      : services_(services), person_(person), window_(window) {}

  // Runs what a person did to a dialog, and tells what came of it. `label`: of the button or menu
  // entry.
  void Run(host::GeDialog& dialog, const std::string& label, const std::function<bool()>& act);
  void Show(const outcome::Outcome& outcome);
  // Goes one undo step back, or forward, and tells which files could not go along. False where
  // there is none.
  bool Undo(engine::Application& application) {
    return Step(application, &engine::Application::Undo);
  }
  bool Redo(engine::Application& application) {
    return Step(application, &engine::Application::Redo);
  }
  // Says what an export into `folder` will write; where not all of it can be written, asks whether
  // it shall begin all the same.
  bool MayExport(const exporting::ExportPlan& plan, const std::string& folder);
  // The window, null where none stands open.
  QDialog* Window() const { return open_; }

 private:
  bool Step(engine::Application& application, bool (engine::Application::*go)());
  // Before the first byte into a folder that was chosen. False when the person would rather not.
  bool MayWriteInto(const std::string& folder, host::GeDialog& dialog,
                    outcome::CommandWatch& watch);

  const engine::Services& services_;
  DesktopPerson& person_;
  QWidget* window_;
  // Deletes itself when it is closed.
  QPointer<QDialog> open_;
};

}  // namespace desktop
