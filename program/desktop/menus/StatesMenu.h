// StatesMenu: the entries of the menu "Plug-ins" that load Stagemarks from anywhere in the window,
// and loading one by its name. The window outlives the actions, which belong to it. Main thread.
#pragma once

#include <QList>
#include <string>

#include "program/recording/ImportedStates.h"

class QAction;
class QMenu;

namespace desktop {

class MainWindow;

// Loads the Stagemark of that name by the button of the dialog, which is opened where it is closed.
// The status line says why where it cannot.
void LoadStagemark(MainWindow& window, const std::string& name);
// The one that is `way` rows below the current one in the dialog's list (above for less than 0); at
// the ends the status line says so.
void LoadNeighbor(MainWindow& window, int way);
// Records the states that came in with the active document as Stagemarks; the dialog is opened
// where it is closed. Without the plug-in they wait.
recording::RecordedStates RecordWhatCameIn(MainWindow& window);
// "Load Previous Stagemark" and "Load Next Stagemark" with their keys, which work without the menu
// ever being opened.
QList<QAction*> AddStateEntries(QMenu& menu, MainWindow& window);

}  // namespace desktop
