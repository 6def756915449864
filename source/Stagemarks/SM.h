// SM: the menu command. It owns the dialog, which therefore lives as long as the command and is the
// same at every opening. The host owns the command from its registration on. Main thread.
#pragma once

#include "source/Stagemarks/SMDialog.h"

namespace stagemarks {

class SM : public CommandData {
 public:
  ~SM() override;
  // Opens the dialog, or brings it to front.
  Bool Execute(BaseDocument* doc) override;
  Bool RestoreLayout(void* secret) override;

 private:
  SMDialog dialog_;
};

// Registers the command; false when the host refuses.
Bool RegisterSM();

}  // namespace stagemarks
