// The viewport: the picture comes, gets finer, follows changes and the mouse; and the camera behind it.
#include "program/desktop/view/Viewport.h"

#include <gtest/gtest.h>

#include <QWheelEvent>
#include <QtTest/QTest>
#include <cmath>

#include "engine/scene/Nodes.h"
#include "host/BaseObject.h"
#include "program/desktop/view/EditorCamera.h"
#include "tests/desktop/Desk.h"

namespace {

using desk::Desk;
using desktop::EditorCamera;

double Distance(const host::Vector& a, const host::Vector& b) { return std::hypot(a.x - b.x, a.y - b.y, a.z - b.z); }

engine::Box UnitBox() {
  engine::Box box;
  box.Add({-1, -1, -1});
  box.Add({1, 1, 1});
  return box;
}

TEST(EditorCamera, GoesAroundAtOneDistanceAndStaysUpright) {
  engine::PictureCamera start;
  start.frame.off = {0, 0, -500};
  EditorCamera camera(start, UnitBox());
  EXPECT_NEAR(Distance(camera.Camera().frame.off, start.frame.off), 0, 1e-6);
  for (const auto& [heading, pitch] : {std::pair{0.7, -0.4}, {3.0, -9.0}, {-1.0, 20.0}}) {
    camera.Orbit(heading, pitch);
    const host::Matrix frame = camera.Camera().frame;
    EXPECT_NEAR(Distance(frame.off, {}), 500, 1e-6);
    EXPECT_NEAR(frame.v1.y, 0, 1e-12);
    EXPECT_GT(frame.v2.y, 0);
  }
  camera.Zoom(0.5);
  EXPECT_NEAR(Distance(camera.Camera().frame.off, {}), 250, 1e-6);
}

TEST(EditorCamera, SlidesByWhatTheHandMoves) {
  engine::PictureCamera start;
  start.frame.off = {0, 0, -500};
  EditorCamera camera(start, UnitBox());
  camera.Slide(0.5, 0);
  EXPECT_NEAR(camera.Camera().frame.off.x, -500 * std::tan(start.fov / 2), 1e-6);
  camera.Slide(0, 0.25);
  EXPECT_GT(camera.Camera().frame.off.y, 0);
}

struct WithCube : Desk {
  host::BaseObject* cube = host::BaseObject::Alloc(host::Ocube);

  WithCube() {
    host::GetActiveDocument()->AppendObject(cube);
    Window().Beat();
    WaitForPicture();
  }
  desktop::Viewport& View() { return Window().View(); }
  bool WaitForPicture() {
    return QTest::qWaitFor(
        [this] {
          Window().Beat();
          return View().IsFinished();
        },
        20000);
  }
  QRgb Middle() { return View().Picture().pixel(View().Picture().rect().center()); }
};

TEST(Viewport, ShowsWhatIsThereAndWhatChanges) {
  WithCube desk;
  ASSERT_FALSE(desk.View().Picture().isNull());
  const QRgb lit = desk.Middle();
  desk.cube->SetEditorMode(host::MODE_OFF);
  ASSERT_TRUE(desk.WaitForPicture());
  EXPECT_NE(desk.Middle(), lit);
  desk.cube->SetEditorMode(host::MODE_ON);
  ASSERT_TRUE(desk.WaitForPicture());
  EXPECT_EQ(desk.Middle(), lit);
}

TEST(Viewport, ClicksChooseAndDragsGoAround) {
  WithCube desk;
  const QPoint middle = desk.View().rect().center();
  QTest::mouseClick(&desk.View(), Qt::LeftButton, {}, middle);
  EXPECT_EQ(host::GetActiveDocument()->GetActiveObject(), desk.cube);
  QTest::mouseClick(&desk.View(), Qt::LeftButton, {}, {2, 2});
  EXPECT_EQ(host::GetActiveDocument()->GetActiveObject(), nullptr);
  const QImage before = desk.View().Picture();
  QTest::mousePress(&desk.View(), Qt::LeftButton, {}, middle);
  for (int i = 1; i <= 8; ++i) QTest::mouseMove(&desk.View(), middle + QPoint(i * 12, i * 3));
  QTest::mouseRelease(&desk.View(), Qt::LeftButton, {}, middle + QPoint(96, 24));
  EXPECT_TRUE(desk.View().LooksThroughEditorCamera());
  ASSERT_TRUE(desk.WaitForPicture());
  EXPECT_NE(desk.View().Picture(), before);
  desk.Entry("View", "Look Through").trigger();
  ASSERT_TRUE(desk.WaitForPicture());
  EXPECT_EQ(desk.View().Picture(), before);
}

TEST(Viewport, LivesThroughOddSizesAndClosingAtWork) {
  WithCube desk;
  for (const QSize size : {QSize(300, 200), QSize(2400, 90), QSize(700, 600)}) desk.Window().resize(size);
  desk.View().FrameAll();
  desk.Entry("File", "New").trigger();
  Desk::Rest();
  EXPECT_TRUE(desk.View().Picture().isNull());
  host::GetActiveDocument()->AppendObject(host::BaseObject::Alloc(host::Ocube));
  desk.Window().Beat();
  desk.Restart();
}

}  // namespace
