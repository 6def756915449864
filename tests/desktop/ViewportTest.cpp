// The viewport: the picture comes, gets finer, follows changes and the mouse; and the camera behind
// it.
#include "program/desktop/view/Viewport.h"

#include <gtest/gtest.h>

#include <QContextMenuEvent>
#include <QWheelEvent>
#include <QtTest/QTest>
#include <cmath>
#include <map>

#include "engine/scene/NodeIds.h"
#include "engine/scene/TreeWalk.h"
#include "host/BaseObject.h"
#include "host/LayerObject.h"
#include "program/desktop/view/EditorCamera.h"
#include "program/desktop/view/Outline.h"
#include "tests/desktop/WithCube.h"

namespace {

using desk::Desk;
using desk::WithCube;
using desktop::EditorCamera;

double Distance(const host::Vector& a, const host::Vector& b) {
  return std::hypot(a.x - b.x, a.y - b.y, a.z - b.z);
}

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

// Where a point is seen, in the directions of the camera, for one distance.
host::Vector SeenAt(const EditorCamera& camera, const host::Vector& point) {
  const host::Matrix m = camera.Camera().frame;
  const host::Vector way{point.x - m.off.x, point.y - m.off.y, point.z - m.off.z};
  const auto along = [&way](const host::Vector& v) {
    return way.x * v.x + way.y * v.y + way.z * v.z;
  };
  return {along(m.v1) / along(m.v3), along(m.v2) / along(m.v3), along(m.v3)};
}

TEST(EditorCamera, WhatIsGoneAroundAndComeNearToKeepsItsPlaceInThePicture) {
  engine::PictureCamera start;
  start.frame.off = {0, 0, -500};
  const host::Vector point{120, -40, 80};
  EditorCamera camera(start, UnitBox());
  const host::Vector before = SeenAt(camera, point);
  camera.Orbit(0.8, 0.3, point);
  EXPECT_NEAR(Distance(SeenAt(camera, point), before), 0, 1e-6);
  camera.Zoom(0.25, point);
  EXPECT_NEAR(SeenAt(camera, point).x, before.x, 1e-6);
  EXPECT_NEAR(SeenAt(camera, point).y, before.y, 1e-6);
  EXPECT_NEAR(SeenAt(camera, point).z, before.z / 4, 1e-6);
}

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
  host::LayerObject* layer = host::LayerObject::Alloc();
  host::BaseDocument& doc = *host::GetActiveDocument();
  doc.AppendLayer(layer);
  desk.cube->SetLayerObject(layer);
  host::LayerData flags = layer->GetLayerData(&doc);
  flags.view = false;
  layer->SetLayerData(&doc, flags);
  ASSERT_TRUE(desk.WaitForPicture());
  EXPECT_NE(desk.Middle(), lit);
  flags.view = true;
  flags.render = false;
  layer->SetLayerData(&doc, flags);
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

int AmberPixels(const QImage& outline) {
  int count = 0;
  for (int y = 0; y < outline.height(); ++y) {
    for (int x = 0; x < outline.width(); ++x) count += outline.pixel(x, y) == 0xffc98a3d;
  }
  return count;
}

TEST(Viewport, OutlinesWhatIsSelectedWithoutRenderingAgain) {
  WithCube desk;
  EXPECT_TRUE(desk.View().Outline().isNull());
  host::GetActiveDocument()->SetActiveObject(desk.cube);
  desk.Window().Refresh();
  EXPECT_TRUE(desk.View().IsFinished()) << "a selection is no reason for another picture";
  const int around = AmberPixels(desk.View().Outline());
  EXPECT_GT(around, 200);
  // Objects below a selected one are selected with it.
  host::BaseObject* parent = host::BaseObject::Alloc(host::Onull);
  host::GetActiveDocument()->SetActiveObject(nullptr);
  host::GetActiveDocument()->AppendObject(parent);
  desk.cube->Remove();
  host::GetActiveDocument()->AppendObject(desk.cube, parent);
  ASSERT_TRUE(desk.WaitForPicture());
  EXPECT_TRUE(desk.View().Outline().isNull());
  host::GetActiveDocument()->SetActiveObject(parent);
  desk.Window().Refresh();
  EXPECT_NEAR(AmberPixels(desk.View().Outline()), around, around / 10);
}

// A square of hits of the first of two objects at one place, speckled with those of the second.
TEST(Viewport, OutlinesCoincidentObjectsWithoutSpeckles) {
  constexpr std::uint32_t kSide = 40;
  engine::HitMap hits;
  hits.width = hits.height = kSide;
  hits.objects =
      std::make_shared<const std::vector<engine::NodeId>>(std::vector<engine::NodeId>{7, 8});
  for (std::uint32_t i = 0; i < kSide * kSide; ++i) {
    const std::uint32_t x = i % kSide;
    const std::uint32_t y = i / kSide;
    const bool inside = x >= 10 && x < 30 && y >= 10 && y < 30;
    hits.instances.push_back(!inside ? 0 : (x * 7 + y * 3) % 5 < 2 ? 2 : 1);
  }
  const QImage outline = desktop::OutlineImage(hits, {1, 0}, 1);
  for (int y = 13; y < 27; ++y) {
    for (int x = 13; x < 27; ++x) ASSERT_EQ(qAlpha(outline.pixel(x, y)), 0) << x << " " << y;
  }
  EXPECT_GT(AmberPixels(outline), 60);
}

// Asks for the menu at a place of the view and triggers an entry that is not faint; false when
// there is none. Without a text a picture is written of it.
bool ChooseInMenu(desktop::Viewport& view, QPoint place, const QString& text) {
  bool found = false;
  QTimer::singleShot(20, [&] {
    auto* menu = dynamic_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    if (text.isEmpty()) {
      EXPECT_TRUE(pictures::Write(*menu, "viewport-menu"));
    }
    QList<QAction*> all = menu->actions();
    for (qsizetype i = 0; i < all.size(); ++i) {
      if (QMenu* below = all[i]->menu(); below && below->title().startsWith("Visible"))
        all.append(below->actions());
      if (all[i]->text().remove('&') != text || !all[i]->isEnabled() || found) continue;
      found = true;
      all[i]->trigger();
    }
    menu->close();
  });
  QContextMenuEvent event(QContextMenuEvent::Mouse, place, view.mapToGlobal(place));
  QApplication::sendEvent(&view, &event);
  Desk::Rest();
  return found;
}

TEST(Viewport, MenuFitsTheSelection) {
  WithCube desk;
  const auto choose = [&](QPoint place, const QString& text) {
    return ChooseInMenu(desk.View(), place, text);
  };
  const QPoint middle = desk.View().rect().center();
  EXPECT_FALSE(choose({2, 2}, "Duplicate")) << "nothing is selected";
  EXPECT_FALSE(choose({2, 2}, "Off"));
  EXPECT_TRUE(choose(middle, "Duplicate"));
  EXPECT_EQ(engine::CountScene(*host::GetActiveDocument()).objects, 2U);
  (void)choose({2, 2}, QString());  // for the picture
  EXPECT_TRUE(choose({2, 2}, "Off"));
  EXPECT_EQ(host::GetActiveDocument()->GetActiveObject()->GetEditorMode(), host::MODE_OFF);
  EXPECT_TRUE(choose({2, 2}, "Delete"));
  EXPECT_EQ(engine::CountScene(*host::GetActiveDocument()).objects, 1U);
  EXPECT_TRUE(choose({2, 2}, "Select All"));
  EXPECT_EQ(host::GetActiveDocument()->GetActiveObject(), desk.cube);
}

TEST(Viewport, KeysChooseMoreAndTakeOff) {
  WithCube desk;
  host::BaseObject* other = host::BaseObject::Alloc(host::Ocube);
  other->SetMl([] {
    host::Matrix frame;
    frame.off = {400, 0, 0};
    return frame;
  }());
  host::GetActiveDocument()->AppendObject(other);
  desk.View().FrameAll();
  ASSERT_TRUE(desk.WaitForPicture());
  std::map<engine::NodeId, QPoint> places;
  for (int y = 0; y < desk.View().height(); y += 8) {
    for (int x = 0; x < desk.View().width(); x += 8) places[desk.View().ObjectAt({x, y})] = {x, y};
  }
  const engine::NodeId ids[] = {engine::IdOf(*desk.cube), engine::IdOf(*other)};
  const auto selected = [&] {
    return std::pair(desk.cube->GetBit(host::BIT_ACTIVE), other->GetBit(host::BIT_ACTIVE));
  };
  const auto click = [&](engine::NodeId id, Qt::KeyboardModifiers keys) {
    QTest::mouseClick(&desk.View(), Qt::LeftButton, keys, places.at(id));
    return selected();
  };
  EXPECT_EQ(click(ids[0], {}), std::pair(true, false));
  EXPECT_EQ(click(ids[1], Qt::ShiftModifier), std::pair(true, true));
  EXPECT_EQ(click(ids[0], Qt::ControlModifier), std::pair(false, true));
  EXPECT_EQ(click(0, Qt::ShiftModifier), std::pair(false, true));
  EXPECT_EQ(click(0, {}), std::pair(false, false));
}

TEST(Viewport, FramesTheSelectionAndSaysThroughWhatItLooks) {
  WithCube desk;
  host::BaseObject* camera = host::BaseObject::Alloc(host::Ocamera);
  camera->SetName("Far");
  host::Matrix frame;
  frame.off = {0, 0, -5000};
  camera->SetMl(frame);
  host::BaseDocument& doc = *host::GetActiveDocument();
  doc.AppendObject(camera);
  EXPECT_EQ(desk.View().CameraName(), "Editor camera");
  engine::SetSceneCameraId(doc, engine::IdOf(*camera));
  doc.SetChanged();
  ASSERT_TRUE(desk.WaitForPicture());
  EXPECT_EQ(desk.View().CameraName(), "Scene camera: Far");
  doc.SetActiveObject(desk.cube);
  desk.Window().Refresh();
  const int small = AmberPixels(desk.View().Outline());
  desk.View().setFocus();
  QTest::keyClick(&desk.View(), Qt::Key_S);
  ASSERT_TRUE(desk.WaitForPicture());
  EXPECT_GT(AmberPixels(desk.View().Outline()), 4 * small);
  EXPECT_EQ(desk.View().CameraName(), "Editor camera");
  EXPECT_EQ(desk.View().Camera().frame.v3, frame.v3) << "it stays turned as it was";
  desk.View().LookThrough(engine::IdOf(*camera));
  EXPECT_EQ(desk.View().CameraName(), "Scene camera: Far");
  ASSERT_TRUE(desk.WaitForPicture());
  EXPECT_EQ(desk.View().Camera().frame.off, frame.off);
  frame.off.z = -3000;
  camera->SetMl(frame);
  ASSERT_TRUE(desk.WaitForPicture());
  EXPECT_EQ(desk.View().Camera().frame.off, frame.off) << "it goes along with the camera";
}

TEST(Viewport, GoesAroundAndNearerByKeys) {
  WithCube desk;
  const host::Vector from = desk.View().Camera().frame.off;
  const double far = Distance(from, {});
  QTest::keyClick(&desk.View(), Qt::Key_Plus);
  ASSERT_TRUE(desk.WaitForPicture());
  EXPECT_LT(Distance(desk.View().Camera().frame.off, {}), far);
  QTest::keyClick(&desk.View(), Qt::Key_Minus);
  QTest::keyClick(&desk.View(), Qt::Key_Left);
  ASSERT_TRUE(desk.WaitForPicture());
  EXPECT_GT(Distance(desk.View().Camera().frame.off, from), far / 20);
}

TEST(Viewport, LivesThroughOddSizesAndClosingAtWork) {
  WithCube desk;
  for (const QSize size : {QSize(300, 200), QSize(2400, 90), QSize(700, 600)})
    desk.Window().resize(size);
  desk.View().FrameAll();
  desk.Entry("File", "New").trigger();
  Desk::Rest();
  EXPECT_TRUE(desk.View().Picture().isNull());
  host::GetActiveDocument()->AppendObject(host::BaseObject::Alloc(host::Ocube));
  desk.Window().Refresh();
  desk.Restart();
}

// Written for people to look at; at work the picture shows what is selected in the tree, too.
TEST(ViewportPicture, WithSelections) {
  for (const auto& [name, scene, wanted] :
       {std::tuple("selection-spider", "spider/spider.obj", "Kopf"),
        std::tuple("selection-dungeon", "dungeon/dungeon.gltf", "")}) {
    Desk desk;
    // Closes the report on the parts of the scene that did not come along.
    if (!*wanted) desk::AnswerNext([](QDialog& box) { box.accept(); });
    ASSERT_TRUE(desk.Window().Commands().Open(std::string(TEST_SOURCE_DIR "/scenes/") + scene));
    host::BaseDocument& doc = *host::GetActiveDocument();
    host::BaseObject* chosen = nullptr;
    for (host::BaseObject* object = doc.GetFirstObject(); object;
         object = engine::NextInTree(object)) {
      const auto& mesh = engine::MeshOf(*object);
      const bool fits =
          *wanted ? object->GetName().ToUtf8() == wanted : mesh && mesh->polygons.size() > 30;
      if (fits) chosen = object;
    }
    ASSERT_NE(chosen, nullptr);
    doc.SetActiveObject(chosen);
    EXPECT_TRUE(QTest::qWaitFor(
        [&] {
          desk.Window().Refresh();
          return desk.Window().View().IsFinished();
        },
        90000));
    EXPECT_TRUE(pictures::Write(desk.Window(), name));
  }
}

}  // namespace
