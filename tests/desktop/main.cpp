// Runs the tests inside an application with the program's own look, on a screen of a common size.
#include <gtest/gtest.h>

#include <QApplication>

#include "program/desktop/ApplicationStyle.h"
#include "tests/desktop/Victim.h"

int main(int count, char** words) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
    qputenv("QT_QPA_PLATFORM",
            "offscreen:configfile=" TEST_SOURCE_DIR "/tests/desktop/screens/large.json");
  }
  QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
  QApplication application(count, words);
  if (const std::optional<int> status = desk::WorkAsVictim()) return *status;
  desktop::ApplyTheme(application);
  testing::InitGoogleTest(&count, words);
  return RUN_ALL_TESTS();
}
