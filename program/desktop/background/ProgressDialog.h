// ProgressDialog: the box of work on the main thread, with what goes on, how far it is and a
// button that stops it. It is modal to the whole program, which keeps everything else that a person
// does away from the work while the box is there. Main thread.
#pragma once

#include <QProgressBar>
#include <QProgressDialog>

namespace desktop {

class ProgressDialog : public QProgressDialog {
 public:
  // Short work shows nothing: how long it goes on before the box comes up, in milliseconds.
  static inline int patience = 60;

  // Stands in front of `window`, or of the window in use where that is null.
  explicit ProgressDialog(QWidget* window);

  // `share` of the work that is done, 0..1, or less than 0 where nobody knows. Shows the box.
  void Tell(double share, const QString& doing);

 private:
  // Told directly: with a value of its own the toolkit's dialog runs the event loop.
  QProgressBar* bar_;
};

}  // namespace desktop
