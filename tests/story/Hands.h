// Hands: mouse and keyboard of the X server, moved by the program `xdotool`, so that every event
// takes the way it takes in life. Each act waits until it has arrived here, however busy the
// machine is, and until the event loop has come to rest; it works inside a question, too. Each
// throws std::runtime_error when it does not arrive.
#pragma once

#include <QAbstractItemView>
#include <QApplication>
#include <QMenu>
#include <QMenuBar>
#include <QWidget>

namespace hands {

// Two clicks are two clicks, however soon one comes after the other, as long as one lives.
class SingleClicks {
 public:
  SingleClicks() : former_(QApplication::doubleClickInterval()) {
    QApplication::setDoubleClickInterval(1);
  }
  SingleClicks(const SingleClicks&) = delete;
  SingleClicks& operator=(const SingleClicks&) = delete;
  ~SingleClicks() { QApplication::setDoubleClickInterval(former_); }

 private:
  int former_;
};

void Click(const QWidget& widget, QPoint place, int times = 1);
void Click(const QWidget& widget);
// A cell of a view, in the middle; it is brought into sight first.
void Click(QAbstractItemView& view, const QModelIndex& cell);

// A cell, and where of it something is let go.
struct Cell {
  enum class Where { Above, On, Below };
  QAbstractItemView& view;
  QPersistentModelIndex index;
  Where where = Where::On;
};
// Takes hold of the middle of a cell, carries it to another one that is in sight, rests there as a
// person does and lets go.
void Drag(const Cell& from, const Cell& to);

// Replaces what is in a field.
void Type(const QWidget& field, const QString& text);
// For example "ctrl+z".
void Press(const QString& keys);
// Opens a menu by its name and clicks the entry whose text begins with `entry`. Throws where there
// is none.
void Choose(QMenuBar& bar, const QString& menu, const QString& entry);

}  // namespace hands
