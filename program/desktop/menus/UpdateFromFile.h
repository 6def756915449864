// UpdateFromFile: the entry of the menu "File" that brings the active scene up to a newer model, in
// one undo step. Main thread.
#pragma once

#include <string>

namespace desktop {

class MainWindow;

// Asks for the file.
void AskAndUpdate(MainWindow& window);
// Tells the result in the status line, and what a person should look at in a report; a box says
// that a file cannot be read.
void UpdateFromFile(MainWindow& window, const std::string& path);

}  // namespace desktop
