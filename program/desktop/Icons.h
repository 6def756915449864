// Icons: the one family of icons, drawn on a grid of 16 units, lines with one warm accent, in the
// colors of the look. The files lie in program/desktop/icons and are part of the program. Main
// thread.
#pragma once

#include <QIcon>

namespace desktop {

// The icon of that file name without suffix: sharp at any size and scale, faint where what it
// stands for is switched off. Each is read once. A name that no file has gives a bright square and
// a warning, so that nobody overlooks it.
QIcon Icon(const QString& name);

// Names of all icons there are, sorted.
QStringList IconNames();

}  // namespace desktop
