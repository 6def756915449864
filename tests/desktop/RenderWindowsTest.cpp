// The windows with pictures: the render and the contact sheet of all states.
#include <gtest/gtest.h>

#include <QMessageBox>
#include <QPushButton>
#include <QtTest/QTest>
#include <filesystem>

#include "engine/render/Image.h"
#include "engine/scene/Mesh.h"
#include "engine/scene/SceneDump.h"
#include "engine/undo/Undo.h"
#include "host/BaseObject.h"
#include "host/RenderData.h"
#include "program/desktop/render/RenderWindow.h"
#include "program/desktop/render/SheetWindow.h"
#include "tests/desktop/States.h"

namespace {

using desk::ChooseInNextBox;
using desk::Desk;
using desktop::RenderWindow;
using desktop::SheetWindow;

struct CubeOnStage : Desk {
  host::BaseObject* cube = host::BaseObject::Alloc(host::Ocube);

  CubeOnStage() {
    Doc().AppendObject(cube);
    SetSize(160, 90);
  }
  host::BaseDocument& Doc() { return *host::GetActiveDocument(); }
  void SetSize(host::LONG width, host::LONG height) {
    host::BaseContainer& settings = *Doc().GetActiveRenderData()->GetDataInstance();
    settings.SetLong(host::RDATA_XRES, width);
    settings.SetLong(host::RDATA_YRES, height);
  }
  void Record(const char* name) { desk::RecordState(*this, name); }
  template <class Shown>
  Shown* Find() {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      auto* found = dynamic_cast<Shown*>(widget);
      if (found && found->isVisible()) return found;
    }
    return nullptr;
  }
  std::string ReadSettled(const std::string& path) {
    return Services().files.ReadFile(path).Value();
  }
};

TEST(RenderWindow, RendersWhatWasThereAndSavesIt) {
  CubeOnStage desk;
  desk.Entry("Render", "Render to Window").trigger();
  auto* window = desk.Find<RenderWindow>();
  ASSERT_NE(window, nullptr);
  // It was read already: what happens to the document now does not matter.
  desk.cube->SetRenderMode(host::MODE_OFF);
  ASSERT_TRUE(QTest::qWaitFor([&] { return window->IsFinished(); }, 60000));
  EXPECT_TRUE(window->Said().startsWith("Finished"));
  EXPECT_EQ(window->View().Picture().size(), QSize(160, 90));
  EXPECT_NE(window->View().Picture().pixel(80, 45), window->View().Picture().pixel(2, 2));
  for (const char* name : {"/picture.png", "/picture.tif"}) {
    ChooseInNextBox(desk.Folder() + name);
    window->SaveAs();
    ASSERT_TRUE(QTest::qWaitFor([&] { return window->Said().startsWith("Written"); }, 20000));
    const auto image = engine::DecodeImage(desk.ReadSettled(desk.Folder() + name));
    ASSERT_TRUE(image) << name;
    EXPECT_EQ(image.Value().width, 160U);
    window->Say("");
  }
  EXPECT_TRUE(pictures::Write(*window, "render-window-small"));
  const std::string last = desk.Folder() + "/last.png";
  ChooseInNextBox(last);
  window->SaveAs();
  window->close();
  EXPECT_TRUE(QTest::qWaitFor([&] { return std::filesystem::exists(last); }, 20000))
      << "a window that is closed loses no file";
}

TEST(RenderWindow, CanBeStoppedAndClosedAtWork) {
  CubeOnStage desk;
  desk.SetSize(4000, 3000);
  for (int i = 0; i < 2; ++i) {
    desk.Entry("Render", "Render to Window").trigger();
    auto* window = desk.Find<RenderWindow>();
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !window->View().Picture().isNull(); }, 60000));
    if (i == 0) {
      window->Stop();
      EXPECT_TRUE(QTest::qWaitFor([&] { return window->IsFinished(); }, 20000));
      EXPECT_TRUE(window->Said().startsWith("Stopped"));
    }
    window->close();
    Desk::Rest();
  }
  desk.SetSize(0, 100);
  desk.Entry("Render", "Render to Window").trigger();
  auto* window = desk.Find<RenderWindow>();
  ASSERT_TRUE(QTest::qWaitFor([&] { return window->IsFinished(); }, 20000));
  EXPECT_TRUE(window->Said().startsWith("Not rendered: ")) << window->Said().toStdString();
  desk.Restart();
}

TEST(PictureWindow, SaysWhatIsWrongWithTheObjectsOnceForEachDocument) {
  CubeOnStage desk;
  const auto said = [&](std::vector<std::string> notes) {
    desktop::PictureWindow window(&desk.Window(), desk.Services(), "Render", desk.Doc());
    // At the beginning and at the end of the work.
    for (int i = 0; i < 2; ++i) window.SayNotes(notes);
    return window.SaidNotes();
  };
  EXPECT_EQ(said({"921 flat triangles", "No texture A"}), "921 flat triangles\nNo texture A");
  EXPECT_EQ(said({"921 flat triangles", "No texture A"}), "No texture A")
      << "it may be there the next time, or not";
  EXPECT_EQ(said({"12 flat triangles", "3 empty objects"}), "3 empty objects");
  desk.Entry("File", "New").trigger();
  Desk::Rest();
  EXPECT_EQ(said({"921 flat triangles"}), "921 flat triangles");
}

TEST(RenderWindow, SaysFlatTrianglesOfTheSceneOnce) {
  CubeOnStage desk;
  auto mesh = std::make_shared<engine::Mesh>();
  mesh->points = {{0, 0, 0}, {100, 0, 0}, {0, 100, 0}};
  mesh->polygons = {{0, 1, 2, -1}, {0, 1, 1, -1}};
  host::BaseObject* object = host::BaseObject::Alloc(host::Opolygon);
  desk.Doc().AppendObject(object);
  engine::SetMesh(*object, mesh);
  for (const bool isFirst : {true, false}) {
    desk.Entry("Render", "Render to Window").trigger();
    auto* window = desk.Find<RenderWindow>();
    ASSERT_NE(window, nullptr);
    ASSERT_TRUE(QTest::qWaitFor([&] { return window->IsFinished(); }, 60000));
    EXPECT_EQ(window->SaidNotes().contains("1 triangles without an area"), isFirst)
        << window->SaidNotes().toStdString();
    window->close();
    Desk::Rest();
  }
}

TEST(SheetWindow, ShowsEveryStateAndLeavesTheDocumentAlone) {
  CubeOnStage desk;
  desk.Record("Shown");
  desk.cube->SetRenderMode(host::MODE_OFF);
  desk.Record("Hidden");
  desk::ChooseState(desk, 0);
  Desk::Rest();
  const std::string before = engine::DumpState(desk.Doc());
  const bool undo = desk.Entry("Edit", "Undo").isEnabled();
  const std::string file = desk.Folder() + "/sheet.png";
  ChooseInNextBox(file);
  desk.Entry("Render", "Contact Sheet").trigger();
  auto* window = desk.Find<SheetWindow>();
  ASSERT_NE(window, nullptr);
  ASSERT_TRUE(QTest::qWaitFor([&] { return window->IsFinished(); }, 60000));
  EXPECT_TRUE(window->Said().startsWith("Written")) << window->Said().toStdString();
  EXPECT_EQ(engine::DumpState(desk.Doc()), before);
  EXPECT_EQ(desk.Entry("Edit", "Undo").isEnabled(), undo);
  EXPECT_EQ(desk.App().Documents().size(), 1U);
  EXPECT_EQ(desk::StateList(desk).selectionModel()->selectedRows().size(), 1);
  const auto sheet = engine::DecodeImage(desk.ReadSettled(file));
  ASSERT_TRUE(sheet);
  EXPECT_EQ(QSize(static_cast<int>(sheet.Value().width), static_cast<int>(sheet.Value().height)),
            window->View().Picture().size());
  EXPECT_TRUE(pictures::Write(*window, "sheet-window-small"));
}

// A person goes on with the scene, the dialog and other documents while the sheet is made.
TEST(SheetWindow, DisturbsNobodyWhileItIsMade) {
  CubeOnStage desk;
  for (const char* name : {"One", "Two", "Three", "Four"}) desk.Record(name);
  desk.cube->SetRenderMode(host::MODE_OFF);
  host::BaseDocument& scene = desk.Doc();
  Desk::Rest();
  auto& field = desk.Gadget<QLineEdit>(stagemarks::kNameField);
  std::size_t strangers = 0;
  std::string overwritten;
  SheetWindow sheet(&desk.Window(), desk.Services(), scene, desk.Folder() + "/sheet.png");
  sheet.setAttribute(Qt::WA_DeleteOnClose, false);
  sheet.show();
  desk::ChooseState(desk, 1);
  field.clear();
  QTest::keyClicks(&field, "Five");
  engine::ClearChanged(scene);
  const std::string before = engine::DumpDocument(scene);
  const std::size_t steps = engine::DoneNames(scene).size();
  QTimer watch;
  QObject::connect(&watch, &QTimer::timeout, [&] {
    if (host::GetActiveDocument() != &scene || desk.App().Documents().size() != 1) ++strangers;
    if (field.text() != "Five") overwritten = field.text().toStdString();
  });
  watch.start(0);
  ASSERT_TRUE(QTest::qWaitFor([&] { return sheet.IsFinished(); }, 120000));
  EXPECT_TRUE(sheet.Said().startsWith("Written")) << sheet.Said().toStdString();
  EXPECT_EQ(strangers, 0U);
  EXPECT_EQ(overwritten, "");
  EXPECT_EQ(engine::DumpDifference(before, engine::DumpDocument(scene)),
            std::vector<std::string>());
  EXPECT_FALSE(scene.GetChanged());
  EXPECT_EQ(engine::DoneNames(scene).size(), steps);
  EXPECT_EQ(engine::FindGadget(*desk.Dialog(), stagemarks::kNameField)->value.GetString(), "Five");
  EXPECT_TRUE(desk::StateList(desk).selectionModel()->isRowSelected(1));
  QTest::mouseClick(&desk.Gadget<QPushButton>(stagemarks::kRecord), Qt::LeftButton);
  Desk::Rest();
  EXPECT_EQ(desk::CountStates(desk), 5) << "a new one, and no question about another";
}

// Options that only the dialog knows go for the sheet, too: where objects are not loaded, the cube
// stays hidden.
TEST(SheetWindow, LoadsAsTheDialogStands) {
  CubeOnStage desk;
  desk.Record("Shown");
  desk.cube->SetRenderMode(host::MODE_OFF);
  const auto sheetWith = [&](const char* name) {
    SheetWindow sheet(&desk.Window(), desk.Services(), desk.Doc(), desk.Folder() + name);
    sheet.setAttribute(Qt::WA_DeleteOnClose, false);
    EXPECT_TRUE(QTest::qWaitFor([&] { return sheet.IsFinished(); }, 120000));
    EXPECT_TRUE(sheet.Said().startsWith("Written")) << sheet.Said().toStdString();
    return sheet.View().Picture();
  };
  const QImage loaded = sheetWith("/one.png");
  EXPECT_EQ(loaded, sheetWith("/again.png"));
  pictures::StagemarksDialog(*desk.Dialog()).Choose("Objects");
  EXPECT_NE(loaded, sheetWith("/two.png"));
}

TEST(SheetWindow, StopsAndFailsWithoutAFile) {
  CubeOnStage desk;
  desk.Record("One");
  const std::string file = desk.Folder() + "/sheet.png";
  SheetWindow stopped(&desk.Window(), desk.Services(), desk.Doc(), file);
  stopped.setAttribute(Qt::WA_DeleteOnClose, false);
  stopped.Stop();
  EXPECT_TRUE(stopped.IsFinished());
  SheetWindow orphan(&desk.Window(), desk.Services(), desk.Doc(), file);
  orphan.setAttribute(Qt::WA_DeleteOnClose, false);
  host::KillDocument(&desk.Doc());
  desk.App().NewDocument();
  ASSERT_TRUE(QTest::qWaitFor([&] { return orphan.IsFinished(); }, 20000));
  EXPECT_TRUE(orphan.Said().startsWith("No sheet was made")) << orphan.Said().toStdString();
  EXPECT_FALSE(std::filesystem::exists(file));
}

TEST(SheetWindow, WritesElsewhereWhatCouldNotBeWritten) {
  CubeOnStage desk;
  desk.Record("One");
  const std::string blocked = desk.Folder() + "/no folder/sheet.png";
  SheetWindow sheet(&desk.Window(), desk.Services(), desk.Doc(), blocked);
  sheet.setAttribute(Qt::WA_DeleteOnClose, false);
  sheet.show();
  QString told;
  desk::AnswerNext<QMessageBox>([&](QMessageBox& box) {
    told = box.text();
    box.accept();
  });
  ASSERT_TRUE(QTest::qWaitFor([&] { return sheet.IsFinished() && !told.isEmpty(); }, 20000));
  EXPECT_TRUE(told.contains("no folder") && told.contains("Save As")) << told.toStdString();
  EXPECT_TRUE(sheet.Said().startsWith("Not written")) << sheet.Said().toStdString();
  EXPECT_TRUE(pictures::Write(sheet, "sheet-window-not-written"));
  const std::string file = desk.Folder() + "/sheet.tif";
  ChooseInNextBox(file);
  sheet.SaveAs();
  ASSERT_TRUE(QTest::qWaitFor([&] { return sheet.Said().startsWith("Written"); }, 20000));
  EXPECT_TRUE(engine::DecodeImage(desk.ReadSettled(file)));
}

// Written for people to look at.
TEST(RenderWindowsPicture, OfTheSampleScene) {
  CubeOnStage desk;
  desk::AnswerNext([](QDialog& box) { box.accept(); });
  ASSERT_TRUE(desk.Window().Commands().Open(TEST_SOURCE_DIR "/scenes/dungeon/dungeon.gltf"));
  desk.SetSize(960, 540);
  Desk::Rest();
  desk.Record("Whole");
  for (host::BaseObject* object = desk.Doc().GetFirstObject(); object; object = object->GetNext()) {
    if (object->GetName().ToUtf8().starts_with("ground")) object->SetRenderMode(host::MODE_OFF);
  }
  desk.Record("Walls only");
  desk.Entry("Render", "Render to Window").trigger();
  auto* render = desk.Find<RenderWindow>();
  ASSERT_TRUE(QTest::qWaitFor([&] { return render->IsFinished(); }, 120000));
  EXPECT_TRUE(pictures::Write(*render, "render-window"));
  ChooseInNextBox(desk.Folder() + "/sheet.png");
  desk.Entry("Render", "Contact Sheet").trigger();
  auto* sheet = desk.Find<SheetWindow>();
  ASSERT_TRUE(QTest::qWaitFor([&] { return sheet->IsFinished(); }, 120000));
  EXPECT_TRUE(pictures::Write(*sheet, "sheet-window"));
}

}  // namespace
