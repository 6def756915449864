// Hands: mouse and keyboard of the X server, moved by the program `xdotool`, so that every event takes the way it takes in life.
// Each act waits until the event loop has come to rest; it works inside a question, too.
#pragma once

#include <QAbstractItemView>
#include <QMenu>
#include <QMenuBar>
#include <QWidget>

namespace hands {

void Click(const QWidget& widget, QPoint place, int times = 1);
void Click(const QWidget& widget);
// A cell of a view, in the middle; it is brought into sight first.
void Click(QAbstractItemView& view, const QModelIndex& cell);
// Press at one place, release at another, slowly enough for a drag.
void Drag(const QWidget& from, QPoint fromPlace, const QWidget& to, QPoint toPlace);
// Replaces what is in a field.
void Type(const QWidget& field, const QString& text);
// For example "ctrl+z".
void Press(const QString& keys);
// Opens a menu by its name and clicks the entry whose text begins with `entry`. Throws where there is none.
void Choose(QMenuBar& bar, const QString& menu, const QString& entry);

}  // namespace hands
