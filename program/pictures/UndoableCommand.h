// UndoableCommand: stands around a command of the Stagemarks dialog that changes what is stored,
// and makes one undo step of it, which the plug-in does not: containers, render settings, previews.
// Stagemarks that are deleted or recorded over go into the trash of the document. Around anything
// else it does nothing. Main thread.
#pragma once

#include <memory>
#include <string>

#include "engine/outside/Services.h"
#include "host/GeDialog.h"

namespace pictures {

class UndoableCommand {
 public:
  // Begin it right before the command. `label`: of the button or menu entry. The step has the name
  // of the act that goes on (engine::ActName), else the label. `services` and the document outlive
  // it.
  UndoableCommand(const engine::Services& services, host::GeDialog& dialog,
                  const std::string& label);
  UndoableCommand(const UndoableCommand&) = delete;
  UndoableCommand& operator=(const UndoableCommand&) = delete;
  // The command is done.
  ~UndoableCommand();

 private:
  struct Body;
  std::unique_ptr<Body> body_;  // null: nothing to do
};

}  // namespace pictures
