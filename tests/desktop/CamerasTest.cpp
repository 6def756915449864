// Cameras at the desktop: made from what is seen, made the scene camera, flown, lost; what the
// plate in the picture says of them; and what else one creates.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "engine/editing/ObjectCommands.h"
#include "engine/render/ScenePicture.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/Vectors.h"
#include "engine/undo/Undo.h"
#include "host/LayerObject.h"
#include "host/Parameters.h"
#include "tests/desktop/WithCube.h"

namespace {

using desk::WithCube;
using desktop::EditorCamera;
using Lines = std::pair<std::string, std::string>;

double Distance(const host::Vector& a, const host::Vector& b) {
  return std::hypot(a.x - b.x, a.y - b.y, a.z - b.z);
}

double Distance(const host::Matrix& a, const host::Matrix& b) {
  return Distance(a.off, b.off) + Distance(a.v1, b.v1) + Distance(a.v2, b.v2) +
         Distance(a.v3, b.v3);
}

host::Matrix At(double z) {
  host::Matrix frame;
  frame.off = {0, 0, z};
  return frame;
}

struct Cameras : WithCube {
  host::BaseDocument& Doc() { return *host::GetActiveDocument(); }
  host::BaseObject* AddCamera(const char* name, const host::Matrix& frame,
                              host::BaseObject* parent = nullptr) {
    auto* camera = host::BaseObject::Alloc(host::Ocamera);
    camera->SetName(name);
    camera->SetMl(frame);
    Doc().AppendObject(camera, parent);
    return camera;
  }
  void SetSceneCamera(host::BaseObject* camera) {
    Doc().GetRenderBaseDraw()->SetSceneCamera(camera, host::FALSE);
    Window().Refresh();
  }
  void Drag(Qt::MouseButton button = Qt::LeftButton) {
    const QPoint middle = View().rect().center();
    QTest::mousePress(&View(), button, {}, middle);
    for (int i = 1; i <= 8; ++i) {
      QTest::mouseMove(&View(), middle + QPoint(i * 12, i * 3));
      Window().Refresh();
    }
    QTest::mouseRelease(&View(), button, {}, middle + QPoint(96, 24));
    Window().Refresh();
  }
  Lines Notice() {
    Window().Refresh();
    return {View().Notice().Shown().seen.toStdString(),
            View().Notice().Shown().recorded.toStdString()};
  }
  std::size_t Steps() { return engine::DoneNames(Doc()).size(); }
};

TEST(EditorCamera, KeepsWhatLeansIsScaledAndMirrored) {
  host::Matrix leaning;
  leaning.v1 = {0.8, 0.6, 0};
  leaning.v2 = {-0.6, 0.8, 0};
  host::Matrix scaled;
  scaled.v1 = {2, 0, 0};
  scaled.v2 = {0, 2, 0};
  scaled.v3 = {0, 0, 2};
  host::Matrix mirrored;
  mirrored.v1 = {-1, 0, 0};
  engine::Box box;
  box.Add({-1, -1, -1});
  box.Add({1, 1, 1});
  for (host::Matrix frame : {leaning, scaled, mirrored}) {
    frame.off = {0, 0, -500};
    engine::PictureCamera start;
    start.frame = frame;
    EditorCamera camera(start, box, EditorCamera::Lean::Keep);
    EXPECT_NEAR(Distance(camera.Camera().frame, frame), 0, 1e-9);
    camera.Orbit(0.7, -0.4);
    const host::Matrix moved = camera.Camera().frame;
    EXPECT_NEAR(Distance(moved.off, {}), 500, 1e-6);
    EXPECT_NEAR(engine::Determinant(moved), engine::Determinant(frame), 1e-9);
    EXPECT_NEAR(Distance(moved.v1, {}), Distance(frame.v1, {}), 1e-9);
    EXPECT_LT(engine::DotOf(moved.v3, moved.off), 0) << "it still looks at the middle";
    camera.Slide(0.5, 0);
    EXPECT_LT(engine::DotOf(engine::Sum(camera.Camera().frame.off, engine::Scaled(moved.off, -1)),
                            moved.v1),
              0)
        << "what is seen goes to the right, the camera to the left";
  }
}

TEST(Cameras, NewOneSeesTheSameAndIsOneStep) {
  for (const bool parallel : {false, true}) {
    Cameras desk;
    if (parallel) {
      host::BaseObject* flat = desk.AddCamera("Flat", At(-900));
      flat->GetDataInstance()->SetLong(host::CAMERA_PROJECTION, 1);
      flat->GetDataInstance()->SetReal(host::CAMERA_WIDTH, 777);
      flat->GetDataInstance()->SetReal(host::CAMERA_FOV_VERTICAL, 0.5);
      desk.View().LookThrough(engine::IdOf(*flat));
      ASSERT_TRUE(desk.WaitForPicture());
    }
    desk.Drag();
    ASSERT_TRUE(desk.WaitForPicture());
    const engine::PictureCamera seen = desk.View().Camera();
    const std::size_t steps = desk.Steps();
    for (const char* name : {"Camera", "Camera.1"}) {
      desk.Entry("Create", "New Camera from View").trigger();
      const host::BaseObject* made = desk.Doc().GetActiveObject();
      ASSERT_EQ(made ? made->GetType() : 0, host::Ocamera);
      EXPECT_EQ(made->GetName().ToUtf8(), name);
      EXPECT_EQ(desk.View().CameraObject(), made);
      const auto its = engine::CameraOf(*made);
      EXPECT_EQ(its->frame, seen.frame);
      EXPECT_EQ(std::tuple(its->fov, its->fovVertical, its->isParallel, its->width),
                std::tuple(seen.fov, parallel ? 0.5 : 0, parallel, seen.width));
    }
    EXPECT_EQ(desk.Steps(), steps + 2);
    desk.App().Undo();
    desk.App().Undo();
    ASSERT_TRUE(desk.WaitForPicture());
    EXPECT_EQ(engine::CountScene(desk.Doc()).cameras, parallel ? 1U : 0U);
    EXPECT_NEAR(Distance(desk.View().Camera().frame, seen.frame), 0, 1e-9) << "the view stays";
  }
}

TEST(Cameras, PlateTellsWhatIsRecordedAndHelps) {
  Cameras desk;
  EXPECT_EQ(desk.Notice(), Lines("Editor camera", "no camera"));
  host::BaseObject* front = desk.AddCamera("Front", At(-900));
  host::BaseObject* side = desk.AddCamera("Side", At(-700));
  desk.SetSceneCamera(front);
  EXPECT_EQ(desk.Notice(), Lines("Scene camera: Front", ""));
  desk.View().LookThrough(engine::IdOf(*side));
  EXPECT_EQ(desk.Notice(), Lines("Camera: Side", "Front"));
  EXPECT_TRUE(pictures::Write(desk.View(), "viewport-other-camera"));
  const std::size_t steps = desk.Steps();
  QTest::mouseClick(&desk.View().Notice().MakeSceneCamera(), Qt::LeftButton);
  EXPECT_EQ(desk.Notice(), Lines("Scene camera: Side", ""));
  EXPECT_EQ(desk.Steps(), steps + 1);
  EXPECT_FALSE(desk.View().Notice().MakeSceneCamera().isVisible());
  desk.App().Undo();
  EXPECT_EQ(desk.Notice(), Lines("Scene camera: Front", ""));
  desk.Drag();
  EXPECT_EQ(desk.Notice(), Lines("Editor camera", "Front"));
  QTest::mouseClick(&desk.View().Notice().NewCamera(), Qt::LeftButton);
  EXPECT_EQ(desk.Notice(), Lines("Camera: Camera", "Front"));
}

// Load sets the camera, be it the one that is set.
TEST(Cameras, WhoeverSetsTheSceneCameraShowsIt) {
  Cameras desk;
  host::BaseObject* front = desk.AddCamera("Front", At(-900));
  desk.SetSceneCamera(front);
  desk.Drag();
  ASSERT_TRUE(desk.WaitForPicture());
  const host::Matrix left = desk.View().Camera().frame;
  EXPECT_NE(left, front->GetMg());
  desk.SetSceneCamera(front);
  ASSERT_TRUE(desk.WaitForPicture());
  EXPECT_EQ(desk.View().Camera().frame, front->GetMg());
  desk.SetSceneCamera(nullptr);
  ASSERT_TRUE(desk.WaitForPicture());
  EXPECT_EQ(desk.View().Camera().frame, left) << "the editor camera stands where it was left";
}

TEST(Cameras, ViewStaysWhenItsCameraGoesAndComesBackWithIt) {
  for (const bool isScenes : {true, false}) {
    Cameras desk;
    host::BaseObject* camera = desk.AddCamera("Front", At(-900));
    isScenes ? desk.SetSceneCamera(camera) : desk.View().LookThrough(engine::IdOf(*camera));
    ASSERT_TRUE(desk.WaitForPicture());
    desk.Doc().SetActiveObject(camera);
    desk.Window().Refresh();
    desk.Entry("Edit", "Delete").trigger();
    ASSERT_TRUE(desk.WaitForPicture());
    EXPECT_EQ(desk.Notice(), Lines("Editor camera", "no camera"));
    EXPECT_NEAR(Distance(desk.View().Camera().frame, At(-900)), 0, 1e-9);
    desk.App().Undo();
    ASSERT_TRUE(desk.WaitForPicture());
    EXPECT_EQ(desk.View().CameraName(), isScenes ? "Scene camera: Front" : "Camera: Front");
  }
}

host::Matrix Below(double x, double y, double z) {
  host::Matrix frame;
  frame.off = {30, -20, 10};
  frame.v1 = {0, x, 0};
  frame.v2 = {-y, 0, 0};
  frame.v3 = {0, 0, z};
  return frame;
}

TEST(Cameras, FlyByOneStepForEachGesture) {
  for (const host::Matrix& above :
       {host::Matrix(), Below(1, 1, 1), Below(3, 3, 3), Below(-1, 1, 1), Below(2, 1, 0.5)}) {
    Cameras desk;
    host::BaseObject* parent = host::BaseObject::Alloc(host::Onull);
    parent->SetMl(above);
    desk.Doc().AppendObject(parent);
    host::BaseObject* camera = desk.AddCamera("Front", At(-900), parent);
    desk.SetSceneCamera(camera);
    ASSERT_TRUE(desk.WaitForPicture());
    ASSERT_FALSE(desk.Entry("View", "Fly Camera").isChecked()) << "one lets it fly, or it stays";
    desk.Entry("View", "Fly Camera").trigger();
    for (const Qt::MouseButton button : {Qt::LeftButton, Qt::MiddleButton}) {
      const std::size_t steps = desk.Steps();
      const host::Matrix before = camera->GetMl();
      desk.Drag(button);
      EXPECT_EQ(desk.View().CameraName(), "Scene camera: Front");
      EXPECT_EQ(desk.Steps(), steps + 1);
      EXPECT_GT(Distance(camera->GetMl().off, before.off), 10);
      EXPECT_EQ(engine::UndoName(desk.Doc()), "Move Camera");
      ASSERT_TRUE(desk.WaitForPicture());
      EXPECT_NEAR(Distance(desk.View().Camera().frame, camera->GetMg()), 0, 1e-6)
          << "the picture goes along";
      desk.App().Undo();
      EXPECT_EQ(camera->GetMl(), before);
    }
  }
}

TEST(Cameras, FlyByWheelKeysAndFraming) {
  Cameras desk;
  host::BaseObject* flat = desk.AddCamera("Flat", At(-900));
  flat->GetDataInstance()->SetLong(host::CAMERA_PROJECTION, 1);
  desk.SetSceneCamera(flat);
  ASSERT_TRUE(desk.WaitForPicture());
  desk.View().LetFly(true);
  const double width = flat->GetDataInstance()->GetReal(host::CAMERA_WIDTH);
  for (int i = 0; i < 3; ++i) QTest::keyClick(&desk.View(), Qt::Key_Plus);
  EXPECT_LT(flat->GetDataInstance()->GetReal(host::CAMERA_WIDTH), width);
  EXPECT_EQ(desk.Steps(), 1U);
  ASSERT_TRUE(desk.WaitForPicture());
  QTest::keyClick(&desk.View(), Qt::Key_Left);
  EXPECT_EQ(desk.Steps(), 2U) << "after a rest it is another gesture";
  desk.View().FrameAll();
  ASSERT_TRUE(desk.WaitForPicture());
  EXPECT_EQ(desk.Steps(), 3U);
  EXPECT_EQ(desk.View().CameraName(), "Scene camera: Flat");
  for (int i = 0; i < 3; ++i) desk.App().Undo();
  EXPECT_EQ(flat->GetMl(), At(-900));
  EXPECT_EQ(flat->GetDataInstance()->GetReal(host::CAMERA_WIDTH), width);
}

TEST(Cameras, StayWhereTheyAreUnlessTheyMayFly) {
  Cameras desk;
  host::BaseObject* front = desk.AddCamera("Front", At(-900));
  host::BaseObject* side = desk.AddCamera("Side", At(-700));
  desk.SetSceneCamera(front);
  desk.Drag();
  EXPECT_EQ(front->GetMl(), At(-900));
  EXPECT_TRUE(desk.View().LooksThroughEditorCamera());
  desk.Window().Refresh();
  EXPECT_FALSE(desk.Entry("View", "Fly Camera").isEnabled());
  desk.SetSceneCamera(front);
  desk.View().LetFly(true);
  EXPECT_TRUE(desk.View().Flies());
  desk.View().LookThrough(engine::IdOf(*side));
  desk.Window().Refresh();
  desk.SetSceneCamera(front);
  EXPECT_FALSE(desk.View().Flies()) << "who looks elsewhere lets go";
  host::LayerObject* layer = host::LayerObject::Alloc();
  desk.Doc().AppendLayer(layer);
  host::LayerData flags = layer->GetLayerData(&desk.Doc());
  flags.locked = true;
  layer->SetLayerData(&desk.Doc(), flags);
  front->SetLayerObject(layer);
  desk.Window().Refresh();
  EXPECT_FALSE(desk.Entry("View", "Fly Camera").isEnabled());
  desk.View().LetFly(true);
  desk.Drag();
  EXPECT_EQ(front->GetMl(), At(-900));
}

TEST(Cameras, DocumentKnowsHowItIsLookedAt) {
  Cameras desk;
  desk.Drag();
  ASSERT_TRUE(desk.WaitForPicture());
  const auto& view = engine::EditorViewOf(desk.Doc());
  ASSERT_TRUE(view);
  EXPECT_EQ(view->camera.frame, desk.View().Camera().frame);
  EXPECT_DOUBLE_EQ(view->aspect, static_cast<double>(desk.View().width()) / desk.View().height());
  const host::ULLONG count = engine::ChangeCount(desk.Doc());
  desk.Drag();
  EXPECT_EQ(engine::ChangeCount(desk.Doc()), count) << "looking around changes nothing";
}

TEST(Cameras, EachDocumentIsLookedAtAsItWasLeft) {
  Cameras desk;
  host::BaseDocument& scene = desk.Doc();
  host::BaseObject* front = desk.AddCamera("Front", At(-900));
  host::BaseObject* side = desk.AddCamera("Side", At(-700));
  desk.SetSceneCamera(front);
  desk.Drag();
  ASSERT_TRUE(desk.WaitForPicture());
  const host::Matrix left = desk.View().Camera().frame;
  const auto goAndComeBack = [&](const std::function<void()>& meanwhile) {
    desk.Entry("File", "New").trigger();
    desk.Window().Refresh();
    EXPECT_EQ(desk.View().CameraName(), "Editor camera");
    meanwhile();
    host::SetActiveDocument(&scene);
    return desk.WaitForPicture();
  };
  ASSERT_TRUE(goAndComeBack([] {}));
  EXPECT_EQ(desk.Notice(), Lines("Editor camera", "Front"));
  EXPECT_EQ(desk.View().Camera().frame, left);
  desk.View().LookThrough(engine::IdOf(*side));
  ASSERT_TRUE(goAndComeBack([] {}));
  EXPECT_EQ(desk.Notice(), Lines("Camera: Side", "Front"));
  ASSERT_TRUE(
      goAndComeBack([&] { scene.GetRenderBaseDraw()->SetSceneCamera(front, host::FALSE); }));
  EXPECT_EQ(desk.Notice(), Lines("Scene camera: Front", "")) << "somebody has set it meanwhile";
}

TEST(CreateMenu, MakesEachInOneStepUnderANameOfItsOwn) {
  WithCube desk;
  host::BaseDocument& doc = *host::GetActiveDocument();
  const auto entry = [&](const QString& text) -> QAction& {
    const QAction& form = desk.Entry("Create", "Form");
    for (QAction* action : form.menu()->actions()) {
      if (action->text().remove('&') == text) return *action;
    }
    return desk.Entry("Create", text);
  };
  for (const auto& [text, type] : {std::pair("Light", host::Olight),
                                   {"Null", host::Onull},
                                   {"Cube", host::Ocube},
                                   {"Sphere", host::Osphere},
                                   {"Cone", host::Ocone},
                                   {"Torus", host::Otorus},
                                   {"Disc", host::Odisc},
                                   {"Plane", host::Oplane},
                                   {"Cylinder", host::Ocylinder}}) {
    std::string names[2];
    for (std::string& name : names) {
      const std::size_t steps = engine::DoneNames(doc).size();
      entry(text).trigger();
      EXPECT_EQ(engine::DoneNames(doc).size(), steps + 1) << text;
      ASSERT_NE(doc.GetActiveObject(), nullptr);
      EXPECT_EQ(doc.GetActiveObject()->GetType(), type) << text;
      name = doc.GetActiveObject()->GetName().ToUtf8();
    }
    EXPECT_NE(names[0], names[1]);
  }
  while (engine::CanUndo(doc)) desk.App().Undo();
  EXPECT_EQ(engine::CountScene(doc).objects, 1U);
  for (const char* text : {"Material", "Layer"}) entry(text).trigger();
  EXPECT_EQ(engine::CountScene(doc).materials, 1U);
  EXPECT_EQ(engine::CountScene(doc).layers, 1U);
  EXPECT_EQ(engine::DoneNames(doc).size(), 2U);
}

}  // namespace
