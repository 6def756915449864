// Puts up the screen, then runs the story on it in an application with the program's own look.
#include <gtest/gtest.h>

#include <QApplication>
#include <cstdio>

#include "program/desktop/ApplicationStyle.h"
#include "tests/story/Screen.h"

int main(int count, char** words) try {
  testing::InitGoogleTest(&count, words);
  story::Screen screen;
  QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
  QApplication application(count, words);
  desktop::ApplyTheme(application);
  return RUN_ALL_TESTS();
} catch (const std::exception& problem) {
  std::fprintf(stderr, "%s (packages: xvfb, openbox, xdotool)\n", problem.what());
  return 1;
}
