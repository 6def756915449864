// UpdateFromFile: the entry of the menu "File" that brings the active scene up to a newer model, in
// one undo step. Main thread.
#pragma once

#include <string>

namespace desktop {

class MainWindow;

// Asks for the file.
void AskAndUpdate(MainWindow& window);
// What came of it is told in the status line, and what a person should look at in a report; a file
// that cannot be read in a box.
void UpdateFromFile(MainWindow& window, const std::string& path);

}  // namespace desktop
