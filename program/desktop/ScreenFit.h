// How large windows may be: no larger than the screen that they open on, title bar and edges
// included. Main thread.
#pragma once

#include <QSize>

class QWidget;

namespace desktop {

// For a window that has never been shown: as much of the wanted size as the screen has room for.
QSize FittingSize(const QWidget& window, QSize wanted);
// Brings a window wholly onto its screen, made smaller where need be. One that fills the screen is
// left alone.
void FitToScreen(QWidget& window);

}  // namespace desktop
