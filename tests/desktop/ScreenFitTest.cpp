// The window on the screen that it opens on: wholly inside, the first time and with what a larger
// screen has left; what one needs most is at hand. Run on a large screen, on a small one and at
// twice the scale.
#include "program/desktop/ScreenFit.h"

#include <gtest/gtest.h>

#include <QScreen>

#include "program/desktop/dialog/GadgetWidgets.h"
#include "program/desktop/render/PictureWindow.h"
#include "tests/desktop/States.h"

namespace {

using desk::Desk;

::testing::AssertionResult IsOnScreen(const QWidget& window) {
  const QRect frame = window.frameGeometry();
  const QRect room = window.screen()->availableGeometry();
  if (room.contains(frame)) return ::testing::AssertionSuccess();
  QString said;
  QDebug(&said) << frame << "on" << room << "least" << window.minimumSizeHint();
  return ::testing::AssertionFailure() << said.toStdString();
}

// Whether no part of the widget is cut off by the widgets around it; says how much is seen if not.
::testing::AssertionResult IsWhole(const QWidget& widget) {
  const QRect seen = widget.visibleRegion().boundingRect();
  if (seen == widget.rect()) return ::testing::AssertionSuccess();
  QString said;
  QDebug(&said) << "of" << widget.rect() << "one sees" << seen;
  return ::testing::AssertionFailure() << said.toStdString();
}

void ExpectWhatIsNeededMost(Desk& desk) {
  EXPECT_TRUE(IsOnScreen(desk.Window()));
  EXPECT_TRUE(IsWhole(desk.Gadget<QWidget>(stagemarks::kRecord)));
  EXPECT_TRUE(IsWhole(desk.Gadget<QWidget>(stagemarks::kLoad)));
  EXPECT_TRUE(IsWhole(desk.Gadget<QWidget>(stagemarks::kNameField)));
  EXPECT_TRUE(IsWhole(desk::StateList(desk)));
  EXPECT_GE(desk::StateList(desk).height(), 3 * desk::StateList(desk).sizeHintForRow(0));
}

TEST(ScreenFit, TheFirstWindowHasAllThatOneNeeds) {
  Desk desk;
  RecordState(desk, "Morning");
  ExpectWhatIsNeededMost(desk);
  EXPECT_GE(desk.Window().View().width(), desk.Window().width() / 4) << "the picture has its share";
  EXPECT_TRUE(pictures::Write(desk.Window(), "first-window"));
}

TEST(ScreenFit, TheLayoutOfALargerScreenIsBroughtOntoThisOne) {
  Desk desk;
  desk.Window().setWindowState(Qt::WindowNoState);
  const QSize larger = desk.Window().screen()->size() * 1.5;
  desk.Window().setGeometry(QRect(QPoint(40, 60), larger));
  Desk::Rest();
  desk.Window().resizeDocks({desk.PluginDock()}, {larger.width() / 2}, Qt::Horizontal);
  Desk::Rest();
  ASSERT_FALSE(IsOnScreen(desk.Window()));
  EXPECT_TRUE(desk.Window().close());
  desk.Restart();
  RecordState(desk, "Morning");
  ExpectWhatIsNeededMost(desk);
}

TEST(ScreenFit, OtherWindowsFitToo) {
  QWidget window;
  EXPECT_EQ(desktop::FittingSize(window, {300, 200}), QSize(300, 200));
  window.resize(desktop::FittingSize(window, {30000, 20000}));
  window.show();
  desktop::FitToScreen(window);
  EXPECT_TRUE(IsOnScreen(window));
  window.setGeometry(window.screen()->geometry().translated(500, -300));
  desktop::FitToScreen(window);
  EXPECT_TRUE(IsOnScreen(window));
}

// In a dialog that gets narrower the picture goes first and the times last.
TEST(ScreenFit, ThePictureGivesWayBeforeTheList) {
  Desk desk;
  RecordState(desk, "Late in the afternoon, blinds down");
  desktop::DialogView view(*desk.Dialog(), desk.Services().files, nullptr);
  view.show();
  const auto& list = dynamic_cast<desktop::ListView&>(*view.WidgetOf(stagemarks::kList));
  const auto& picture =
      dynamic_cast<desktop::PictureButton&>(*view.WidgetOf(stagemarks::kPreviewButton));
  struct Row {
    int width;
    bool pictureIsWhole;
  };
  for (const auto& [width, pictureIsWhole] : {Row{1000, true}, {480, false}, {390, false}}) {
    view.resize(width, 620);
    Desk::Rest();
    EXPECT_EQ(picture.width() == picture.sizeHint().width(), pictureIsWhole) << width;
    EXPECT_GE(list.width(), list.ReadableWidth()) << width;
    const QRect date = list.visualRect(list.model()->index(0, list.model()->columnCount() - 1));
    EXPECT_LE(date.right(), list.viewport()->width()) << width;
    EXPECT_TRUE(IsWhole(*view.WidgetOf(stagemarks::kRecord))) << width;
  }
}

}  // namespace
