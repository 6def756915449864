// The dark and the light look: what is chosen shows at once and after a restart, the system is
// followed where that is wanted, and texts and icons can be read on both.
#include "program/desktop/Theme.h"

#include <gtest/gtest.h>

#include "program/desktop/Appearance.h"
#include "program/desktop/ApplicationStyle.h"
#include "program/desktop/Icons.h"
#include "tests/desktop/States.h"

namespace {

using desk::Desk;
using desktop::DarkTheme;
using desktop::LightTheme;

class Looks : public testing::Test {
 protected:
  ~Looks() override { desktop::ShowTheme(DarkTheme()); }
  static bool IsLight() {
    return QApplication::palette().color(QPalette::Window).lightness() > 128;
  }
  static void Choose(Desk& desk, const QString& entry) {
    for (QAction* action : desk.Entry("View", "Appearance").menu()->actions()) {
      if (action->text().remove('&') == entry) action->trigger();
    }
    Desk::Rest();
  }
};

TEST_F(Looks, WhatIsChosenShowsAndStays) {
  Desk desk;
  EXPECT_FALSE(IsLight());
  desktop::AppearanceMenu& look = desk.Window().Appearance();
  struct Step {
    const char* entry;  // empty: the system changes
    bool systemIsLight;
    bool light;
  };
  for (const auto& [entry, systemIsLight, light] : {Step{"Light", false, true},
                                                    {"", true, true},
                                                    {"Dark", true, false},
                                                    {"", false, false},
                                                    {"", true, false},
                                                    {"As the System", true, true},
                                                    {"", false, false},
                                                    {"", true, true}}) {
    if (*entry) Choose(desk, entry);
    look.SystemPrefers(systemIsLight);
    EXPECT_EQ(IsLight(), light) << entry << " while the system is light: " << systemIsLight;
  }
  desktop::ShowTheme(DarkTheme());
  desk.Restart();
  EXPECT_TRUE(IsLight()) << "as the system was last";
  Choose(desk, "Dark");
  desk.Restart();
  EXPECT_FALSE(IsLight());
}

TEST_F(Looks, TheSystemsNumberIsUnderstood) {
  EXPECT_EQ(desktop::SystemAppearance::IsLight(0), std::nullopt);
  EXPECT_EQ(desktop::SystemAppearance::IsLight(1), false);
  EXPECT_EQ(desktop::SystemAppearance::IsLight(2), true);
  EXPECT_EQ(desktop::SystemAppearance::IsLight(77), std::nullopt);
}

TEST_F(Looks, EveryColorOfTheStyleSheetIsNamed) {
  for (const desktop::Theme* look : {&DarkTheme(), &LightTheme()}) {
    desktop::ShowTheme(*look);
    EXPECT_FALSE(qApp->styleSheet().contains('@'));
  }
}

// On its ground each icon stands out, also one that is in use already when the look changes.
TEST_F(Looks, IconsCanBeReadOnBoth) {
  for (const QString& name : desktop::IconNames()) {
    const QIcon icon = desktop::Icon(name);
    for (const desktop::Theme* look : {&DarkTheme(), &LightTheme(), &DarkTheme()}) {
      desktop::ShowTheme(*look);
      const int ground = qGray(look->window);
      const QImage image = icon.pixmap(QSize(32, 32)).toImage();
      int most = 0;
      for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
          const QRgb pixel = image.pixel(x, y);
          if (qAlpha(pixel) > 200) most = std::max(most, std::abs(qGray(pixel) - ground));
        }
      }
      EXPECT_GT(most, 60) << name.toStdString() << (look->isLight ? " on light" : " on dark");
    }
  }
}

TEST_F(Looks, PictureOfTheLightWindow) {
  Desk desk;
  Choose(desk, "Light");
  ASSERT_TRUE(desk.Window().Commands().Open(TEST_SOURCE_DIR "/scenes/spider/spider.obj"));
  for (const char* name : {"All on", "Legs only"}) RecordState(desk, name);
  EXPECT_TRUE(QTest::qWaitFor([&] { return desk.Window().View().IsFinished(); }, 60000));
  EXPECT_TRUE(pictures::Write(desk.Window(), "light-window"));
}

}  // namespace
