// Theme: the colors of the program's own widgets: grays without a cast, so that pictures are judged
// by themselves, and one warm accent. There are a dark one and a light one; one of them is in use.
// Main thread.
#pragma once

#include <QColor>

namespace desktop {

struct Theme {
  bool isLight;
  QRgb window;
  QRgb bar;  // title bars, scroll bars, tabs
  QRgb menu;
  QRgb field;  // what one types into or chooses from
  QRgb otherLine;
  QRgb gap;  // between panels
  QRgb button;
  QRgb litButton;  // under the pointer
  QRgb pressedButton;
  QRgb edge;
  QRgb idleBox;  // edge of a box that is to be checked
  QRgb text;
  QRgb quiet;  // text beside what matters, and marks
  QRgb faint;  // what is switched off
  QRgb faintMark;
  QRgb accent;
  QRgb calmAccent;  // of edges
  QRgb selected;
  QRgb selectedText;
  QRgb iconLine;
};

const Theme& DarkTheme();
const Theme& LightTheme();
// The one in use: dark at first.
const Theme& PresentTheme();
// Only notes which one is in use; ShowTheme in ApplicationStyle.h brings it onto the screen.
void UseTheme(const Theme& theme);

}  // namespace desktop
