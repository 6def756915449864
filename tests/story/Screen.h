// Screen: a real X server without a monitor, on a display that is free, and a window manager on it.
// Both end with it, and with the program, also when that crashes or is killed. Made before the
// application, which then finds it in the environment.
#pragma once

#include <QProcess>

namespace story {

class Screen {
 public:
  // Throws std::runtime_error with what is missing.
  Screen();
  ~Screen();

 private:
  QProcess server_;
  QProcess windowManager_;
};

}  // namespace story
