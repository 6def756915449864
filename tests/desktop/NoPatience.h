// Work on the main thread shows its progress from the first moment on, and long edits are done in
// as many slices as can be, as long as one lives.
#pragma once

#include <utility>

#include "program/desktop/background/ProgressDialog.h"

namespace desk {

class NoPatience {
 public:
  NoPatience() : former_(std::exchange(desktop::ProgressDialog::patience, 0)) {}
  NoPatience(const NoPatience&) = delete;
  NoPatience& operator=(const NoPatience&) = delete;
  ~NoPatience() { desktop::ProgressDialog::patience = former_; }

 private:
  int former_;
};

}  // namespace desk
