// HeldBack: while it lives only one window hears what a person does, and no timer fires but those
// of that window. Work that lets the window live now and then is so never entered a second time: by
// a copy that is due, by what waits for its next slice, by something dropped, or by typing that
// ends because its field lost the focus. What was held back of timers fires later. Main thread.
#pragma once

#include <QObject>

namespace desktop {

class HeldBack : public QObject {
 public:
  // `heard`: the window, with all that belongs to it.
  explicit HeldBack(QObject& heard);

 protected:
  bool eventFilter(QObject* receiver, QEvent* event) override;

 private:
  QObject& heard_;
};

}  // namespace desktop
