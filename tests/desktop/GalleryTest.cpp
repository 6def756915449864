// The gallery: every Stagemark with its picture and what it says of it, chosen and loaded with
// mouse and keys, and the keys that load the next one from anywhere.
#include "program/desktop/panels/GalleryPanel.h"

#include <gtest/gtest.h>

#include <QMessageBox>
#include <QStatusBar>
#include <QWheelEvent>

#include <filesystem>

#include "engine/scene/SceneDump.h"
#include "host/BaseObject.h"
#include "host/RenderData.h"
#include "program/desktop/render/WipeWindow.h"
#include "program/pictures/SceneFingerprint.h"
#include "tests/desktop/States.h"

namespace {

namespace fs = std::filesystem;
using desk::Desk;
using desktop::GalleryModel;

struct WithGallery : Desk {
  host::BaseObject* cube = host::BaseObject::Alloc(host::Ocube);

  WithGallery() {
    Doc().AppendObject(cube);
    host::BaseContainer& settings = *Doc().GetActiveRenderData()->GetDataInstance();
    settings.SetLong(host::RDATA_XRES, 160);
    settings.SetLong(host::RDATA_YRES, 90);
    for (const auto& [name, mode] : {std::pair{"Dawn", host::MODE_ON},
                                     {"Noon", host::MODE_OFF},
                                     {"Midnight", host::MODE_UNDEF}}) {
      cube->SetRenderMode(mode);
      desk::RecordState(*this, name);
    }
    Raise("gallery");
  }
  host::BaseDocument& Doc() { return *host::GetActiveDocument(); }
  desktop::GalleryPanel& Gallery() { return Panel<desktop::GalleryPanel>("gallery"); }
  desktop::GalleryGrid& Grid() { return Gallery().Grid(); }
  QModelIndex Row(const char* name) { return Grid().Model().IndexOf(std::string(name)); }
  void Click(const char* name, Qt::KeyboardModifiers keys = {}) {
    Grid().scrollTo(Row(name));
    QTest::mouseClick(Grid().viewport(), Qt::LeftButton, keys,
                      Grid().visualRect(Row(name)).center());
    Rest();
  }
  void Press(Qt::Key key, Qt::KeyboardModifiers keys = {}) {
    QTest::keyClick(&Grid(), key, keys);
    Rest();
  }
  QString Names() {
    QStringList names;
    for (int row = 0; row < Grid().model()->rowCount(); ++row)
      names.append(Grid().model()->index(row, 0).data().toString());
    return names.join(" ");
  }
  // How each state differs from the scene, in the words of the gallery, once all are counted.
  QString Things() {
    QStringList things;
    for (const char* name : {"Dawn", "Midnight", "Noon"}) {
      EXPECT_TRUE(pictures::WaitFor([&] {
        return !Row(name).data(GalleryModel::kThings).isNull() &&
               Row(name).data(GalleryModel::kThings) != "";
      }));
      things.append(Row(name).data(GalleryModel::kThings).toString());
    }
    return things.join(", ");
  }
  const desktop::StatePicture& Picture(const char* name) {
    return Grid().Model().PictureAt(Row(name));
  }
  // A large picture that is as new as the Stagemark.
  bool IsDone(const char* name) {
    const desktop::StatePicture& picture = Picture(name);
    return !picture.image.isNull() && !picture.isPreview && !picture.olderThanState &&
           Gallery().Pictures().Rendering() == desktop::kNoState;
  }
  // Only what can be seen is rendered, and on an enlarged screen that may be less than all.
  bool AllCome() {
    for (const char* name : {"Dawn", "Midnight", "Noon"}) {
      Grid().scrollTo(Row(name));
      if (!pictures::WaitFor([&] { return IsDone(name); })) return false;
    }
    return true;
  }
  QAction& Act(const QString& text) {
    for (QAction* action : Grid().actions()) {
      if (action->text().startsWith(text)) return *action;
    }
    throw std::runtime_error("no action " + text.toStdString());
  }
  void MoveCube(double x) {
    host::Matrix frame = cube->GetMl();
    frame.off.x += x;
    cube->SetMl(frame);
  }
  std::size_t Made() { return Gallery().Pictures().Made(); }
  void SaveAs(const std::string& file) {
    EXPECT_TRUE(App().SaveDocumentAs(Doc(), Folder() + "/" + file));
    Rest();
  }
  // Files that are kept of all scenes, links among them.
  std::vector<fs::path> Kept() {
    std::vector<fs::path> files;
    const fs::path root = Services().folders.cache + "/gallery";
    if (!fs::exists(root)) return files;
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
      if (!entry.is_directory()) files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
  }
  std::vector<std::string> ChosenInDialog() { return Window().States().Chosen(); }
  QString Status() { return Window().statusBar()->currentMessage(); }
};

using Names = std::vector<std::string>;

TEST(Gallery, SaysOfEachWhatLoadingItWouldChange) {
  WithGallery desk;
  EXPECT_EQ(desk.Names(), "Dawn Midnight Noon");
  EXPECT_TRUE(desk.Row("Midnight").data(GalleryModel::kCurrent).toBool());
  EXPECT_EQ(desk.Things(), "differs in 1 thing, same as the scene, differs in 1 thing");
  desk.cube->SetEditorMode(host::MODE_OFF);
  desk.cube->SetRenderMode(host::MODE_OFF);
  host::EventAdd();
  Desk::Rest();
  EXPECT_EQ(desk.Things(), "differs in 1 thing, differs in 1 thing, differs in 1 thing");
  desk::RecordState(desk, "Night");
  EXPECT_EQ(desk.Names(), "Dawn Midnight Night Noon");
  desk.Entry("File", "New").trigger();
  Desk::Rest();
  EXPECT_EQ(desk.Names(), "");
}

TEST(Gallery, IsOneSelectionWithTheDialog) {
  WithGallery desk;
  desk.Click("Noon");
  EXPECT_EQ(desk.ChosenInDialog(), Names{"Noon"});
  desk.Click("Dawn", Qt::ControlModifier);
  EXPECT_EQ(desk.ChosenInDialog(), (Names{"Dawn", "Noon"}));
  desk::ChooseState(desk, 1);
  Desk::Rest();
  EXPECT_EQ(desk.Grid().Chosen(), Names{"Midnight"});
  desk.Press(Qt::Key_Home);
  EXPECT_EQ(desk.ChosenInDialog(), Names{"Dawn"}) << "keys choose, too";
  host::EventAdd();
  Desk::Rest();
  EXPECT_EQ(desk.Grid().Chosen(), Names{"Dawn"});
}

TEST(Gallery, EnterAndDoubleClickLoadAlsoWithoutTheDialog) {
  WithGallery desk;
  desk.Click("Noon");
  desk.Press(Qt::Key_Return);
  EXPECT_EQ(desk.cube->GetRenderMode(), host::MODE_OFF);
  EXPECT_TRUE(desk.Row("Noon").data(GalleryModel::kCurrent).toBool());
  desk.PluginDock()->close();
  Desk::Rest();
  ASSERT_EQ(desk.Dialog(), nullptr);
  desk.Click("Dawn");
  QTest::mouseDClick(desk.Grid().viewport(), Qt::LeftButton, {},
                     desk.Grid().visualRect(desk.Row("Dawn")).center());
  Desk::Rest();
  EXPECT_NE(desk.Dialog(), nullptr);
  EXPECT_EQ(desk.cube->GetRenderMode(), host::MODE_ON);
}

TEST(Gallery, TheSearchFieldLeavesWhatFits) {
  WithGallery desk;
  auto& field = *desk.Gallery().findChild<QLineEdit*>();
  QTest::keyClicks(&field, "N");
  EXPECT_EQ(desk.Names(), "Dawn Midnight Noon");
  QTest::keyClicks(&field, "oo");
  EXPECT_EQ(desk.Names(), "Noon");
  QTest::keyClick(&field, Qt::Key_Return);
  Desk::Rest();
  EXPECT_EQ(desk.ChosenInDialog(), Names{"Noon"}) << "Enter goes to what was found";
  field.setText("dusk");
  EXPECT_EQ(desk.Names(), "");
  field.clear();
  EXPECT_EQ(desk.Names(), "Dawn Midnight Noon");
}

// From the picture, without the gallery.
TEST(Gallery, KeysLoadTheNeighborInTheList) {
  WithGallery desk;
  const auto press = [&](Qt::Key key) {
    QTest::keyClick(&desk.Window().View(), key, Qt::ControlModifier);
    Desk::Rest();
  };
  struct Step {
    Qt::Key key;
    host::LONG mode;
    const char* said;  // null: that it was loaded
  };
  for (const Step& step : {Step{Qt::Key_PageDown, host::MODE_OFF, nullptr},
                           {Qt::Key_PageDown, host::MODE_OFF, "\"Noon\" is the last"},
                           {Qt::Key_PageUp, host::MODE_UNDEF, nullptr},
                           {Qt::Key_PageUp, host::MODE_ON, nullptr},
                           {Qt::Key_PageUp, host::MODE_ON, "\"Dawn\" is the first"}}) {
    press(step.key);
    EXPECT_EQ(desk.cube->GetRenderMode(), step.mode);
    EXPECT_EQ(desk.Status().startsWith(step.said ? step.said : "\""), step.said != nullptr)
        << desk.Status().toStdString();
  }
  desk.Entry("File", "New").trigger();
  Desk::Rest();
  press(Qt::Key_PageDown);
  EXPECT_TRUE(desk.Status().startsWith("There are no Stagemarks")) << desk.Status().toStdString();
}

TEST(Gallery, RendersWhatCanBeSeenAndLeavesTheDocumentAlone) {
  WithGallery desk;
  const std::string before = engine::DumpState(desk.Doc());
  ASSERT_TRUE(desk.AllCome());
  EXPECT_EQ(desk.Made(), 3U);
  EXPECT_EQ(desk.Picture("Dawn").image.width(), desk.Grid().PictureBox().width());
  EXPECT_NE(desk.Picture("Dawn").image, desk.Picture("Noon").image) << "one has the cube";
  EXPECT_EQ(desk.Picture("Dawn").image, desk.Picture("Midnight").image);
  EXPECT_EQ(engine::DumpDifference(before, engine::DumpState(desk.Doc())), Names());
  EXPECT_TRUE(desk.Kept().empty()) << "a scene without a file keeps nothing";
  desk.Click("Noon");
  desk.Press(Qt::Key_Return);
  desk.Press(Qt::Key_Home);
  EXPECT_EQ(desk.Things(), "differs in 1 thing, differs in 1 thing, same as the scene");
  EXPECT_EQ(desk.Made(), 3U) << "loading makes no picture old";
}

TEST(Gallery, MarksWhatIsOlderAndRendersItWhenThatIsMeant) {
  WithGallery desk;
  desk.SaveAs("room.c4d");
  ASSERT_TRUE(desk.AllCome());
  // A change that no Stagemark records: the pictures stay, with a mark, until the scene is saved.
  const auto older = [&] {
    return desk.Picture("Dawn").olderThanScene && desk.Picture("Noon").olderThanScene;
  };
  desk.MoveCube(500);
  host::EventAdd();
  ASSERT_TRUE(pictures::WaitFor(older));
  EXPECT_EQ(desk.Made(), 3U);
  desk.Click("Dawn");
  desk.Act("Render Again").trigger();
  ASSERT_TRUE(pictures::WaitFor([&] { return !desk.Picture("Dawn").olderThanScene; }));
  EXPECT_EQ(desk.Made(), 4U) << "the one that was asked for";
  EXPECT_TRUE(desk.Picture("Noon").olderThanScene);
  desk.SaveAs("room.c4d");
  ASSERT_TRUE(pictures::WaitFor([&] { return !desk.Picture("Noon").olderThanScene; }));
  ASSERT_TRUE(desk.AllCome());
  // Recorded again: that one alone, without being asked.
  const std::size_t made = desk.Made();
  desk.cube->SetRenderMode(host::MODE_OFF);
  desk::AnswerNext<QMessageBox>([](QMessageBox& box) { box.button(QMessageBox::Yes)->click(); });
  desk::RecordState(desk, "Dawn");
  ASSERT_TRUE(pictures::WaitFor([&] { return desk.Made() > made; }));
  ASSERT_TRUE(desk.AllCome());
  EXPECT_EQ(desk.Made(), made + 1);
  EXPECT_EQ(desk.Picture("Dawn").image, desk.Picture("Noon").image);
}

TEST(Gallery, KeepsPicturesForTheNextTimeAndNeverThroughALink) {
  WithGallery desk;
  desk.SaveAs("room.c4d");
  ASSERT_TRUE(desk.AllCome());
  ASSERT_TRUE(pictures::WaitFor([&] { return desk.Kept().size() == 3; }));
  const QImage dawn = desk.Picture("Dawn").image;
  const auto comeBack = [&] {
    ASSERT_TRUE(desk.App().SaveDocument(desk.Doc()));
    desk.Entry("File", "New").trigger();
    Desk::Rest();
    for (host::BaseDocument* doc : desk.App().Documents()) {
      if (doc->GetDocumentName() == host::Filename("room.c4d")) host::SetActiveDocument(doc);
    }
    host::EventAdd();
    Desk::Rest();
    ASSERT_TRUE(desk.AllCome());
  };
  comeBack();
  EXPECT_EQ(desk.Made(), 3U) << "they are read";
  EXPECT_EQ(desk.Picture("Dawn").image, dawn);
  // One is damaged, one is a link to somebody's file.
  const std::string precious = desk.Folder() + "/precious.png";
  ASSERT_TRUE(desk.Services().files.ReplaceFile(precious, "precious"));
  const auto kept = desk.Kept();
  ASSERT_TRUE(desk.Services().files.ReplaceFile(kept[0].string(), "no picture"));
  fs::remove(kept[1]);
  fs::create_symlink(precious, kept[1]);
  comeBack();
  ASSERT_TRUE(pictures::WaitFor([&] { return desk.Made() == 5U && !fs::is_symlink(kept[1]); }));
  EXPECT_EQ(desk.Services().files.ReadFile(precious).Value(), "precious");
  // Renamed: the picture goes along; deleted: its file goes.
  desk.Click("Dawn");
  auto& field = desk.Gadget<QLineEdit>(stagemarks::kNameField);
  field.clear();
  QTest::keyClicks(&field, "Dawner");
  QTest::mouseClick(&desk.Gadget<QPushButton>(stagemarks::kRename), Qt::LeftButton);
  Desk::Rest();
  EXPECT_EQ(desk.Names(), "Dawner Midnight Noon");
  EXPECT_EQ(desk.Picture("Dawner").image, dawn);
  desk.Click("Noon");
  desk::AnswerNext<QMessageBox>([](QMessageBox& box) { box.button(QMessageBox::Yes)->click(); });
  desk.Act("Delete").trigger();
  Desk::Rest();
  EXPECT_EQ(desk.Names(), "Dawner Midnight");
  EXPECT_EQ(desk.Kept().size(), 2U);
}

// Whoever puts the link there: the cache is all that a person has named.
TEST(Gallery, KeepsNothingInALinkedFolder) {
  for (const std::string link : {"/gallery", "/gallery/scene"}) {
    Desk desk;
    const std::string cache = desk.Services().folders.cache;
    const std::string away = desk.Folder() + "/away";
    fs::create_directories(away + "/scene");
    for (const char* place : {"/1.png", "/scene/1.png"}) tests::WriteText(away + place, "mine");
    fs::create_directories(fs::path(cache + link).parent_path());
    fs::create_directory_symlink(away, cache + link);
    const desktop::StatePictureFiles kept(desk.Services());
    desktop::KeptPicture picture;
    picture.image = QImage(4, 4, QImage::Format_RGB32);
    const engine::Status status = kept.Keep(cache + "/gallery/scene", 1, picture);
    EXPECT_NE(status.Message().find(cache + link), std::string::npos) << status.Message();
    kept.Remove(cache + "/gallery/scene", 1);
    EXPECT_EQ(tests::ReadText(cache + "/gallery/scene/1.png"), "mine") << link;
  }
}

TEST(Gallery, RendersForNobodyWhereItIsHiddenOrStopped) {
  WithGallery desk;
  ASSERT_TRUE(desk.AllCome());
  const auto again = [&] {
    desk.Grid().clearSelection();
    desk.Act("Render Again").trigger();
    EXPECT_TRUE(pictures::WaitFor(
        [&] { return desk.Gallery().Pictures().Rendering() != desktop::kNoState; }));
  };
  again();
  EXPECT_TRUE(desk.Act("Stop").isEnabled());
  desk.Act("Stop").trigger();
  EXPECT_EQ(desk.Gallery().Pictures().Rendering(), desktop::kNoState);
  EXPECT_FALSE(desk.Act("Stop").isEnabled());
  again();
  desk.PluginDock()->raise();
  Desk::Rest();
  EXPECT_EQ(desk.Gallery().Pictures().Rendering(), desktop::kNoState);
  desk.Raise("gallery");
  EXPECT_TRUE(pictures::WaitFor([&] { return desk.Made() >= 6U; })) << "goes on when seen again";
}

TEST(StateRenderer, SaysWhatCannotBeRendered) {
  WithGallery desk;
  std::string problem;
  int rendered = 0;
  desktop::StateRenderer::News news;
  news.rendered = [&](const engine::Image&) { ++rendered; };
  news.failed = [&](const std::string& told) { problem = told; };
  desktop::StateRenderer renderer(desk.Doc(), news);
  renderer.Render("Noon", {64, 64});
  renderer.Render("Nobody", {64, 64});
  ASSERT_TRUE(pictures::WaitFor([&] { return !problem.empty(); }));
  EXPECT_EQ(problem, "\"Nobody\" was not loaded.");
  EXPECT_EQ(rendered, 1);
  EXPECT_FALSE(renderer.IsBusy());
}

// Two chosen ones under one line.
TEST(Gallery, TwoCanBeWipedOverOneAnother) {
  WithGallery desk;
  ASSERT_TRUE(desk.AllCome());
  desk.Click("Dawn");
  EXPECT_FALSE(desk.Act("Compare A/B").isEnabled());
  desk.Click("Noon", Qt::ControlModifier);
  desk.Act("Compare A/B").trigger();
  desktop::WipeWindow* window = nullptr;
  for (QWidget* widget : QApplication::topLevelWidgets()) {
    if (auto* found = dynamic_cast<desktop::WipeWindow*>(widget)) window = found;
  }
  ASSERT_NE(window, nullptr);
  desktop::WipeView& view = window->View();
  EXPECT_EQ(view.Side(0).name + view.Side(1).name, "DawnNoon");
  EXPECT_EQ(view.Side(0).image, desk.Picture("Dawn").image) << "at once what there is";
  ASSERT_TRUE(pictures::WaitFor([&] { return window->Rendered() == 2; }));
  EXPECT_EQ(view.Side(1).image.width(), view.width()) << "then at the size of the window";
  const QPointF place(view.width() / 4.0, view.height() / 2.0);
  QMouseEvent moved(QEvent::MouseMove, place, view.mapToGlobal(place), Qt::NoButton, {}, {});
  QApplication::sendEvent(&view, &moved);
  EXPECT_NEAR(view.Divider(), 0.25, 0.01);
  const QRgb left = view.grab().toImage().pixel(view.width() / 2, view.height() / 2);
  const double divider = view.Divider();
  QTest::keyClick(&view, Qt::Key_Right);
  EXPECT_GT(view.Divider(), divider);
  QTest::keyClick(&view, Qt::Key_Left);
  EXPECT_NEAR(view.Divider(), divider, 1e-9);
  EXPECT_TRUE(pictures::Write(*window, "wipe"));
  for (const Qt::Key key : {Qt::Key_Tab, Qt::Key_X, Qt::Key_Tab}) QTest::keyClick(&view, key);
  EXPECT_EQ(view.Side(0).name, "Noon");
  EXPECT_NE(view.grab().toImage().pixel(view.width() / 2, view.height() / 2), left);
  const QPointer<QWidget> watched = window;
  QTest::keyClick(&view, Qt::Key_Escape);
  Desk::Rest();
  EXPECT_TRUE(watched.isNull());
}

TEST(Gallery, TheWheelMakesPicturesLargerAndTheSizeIsKept) {
  WithGallery desk;
  ASSERT_TRUE(desk.AllCome());
  const int width = desk.Grid().PictureWidth();
  const QPointF place(desk.Grid().viewport()->rect().center());
  for (int turn = 0; turn < 5; ++turn) {
    QWheelEvent wheel(place, desk.Grid().viewport()->mapToGlobal(place), {}, {0, 120}, {},
                      Qt::ControlModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(desk.Grid().viewport(), &wheel);
  }
  EXPECT_EQ(desk.Grid().PictureWidth(), width + 100);
  desk.Grid().scrollTo(desk.Row("Dawn"));
  ASSERT_TRUE(pictures::WaitFor([&] {
    return desk.Picture("Dawn").image.width() == desk.Grid().PictureBox().width();
  })) << "rendered at the larger size";
  desk.Restart();
  EXPECT_EQ(desk.Grid().PictureWidth(), width + 100);
}

TEST(Gallery, PictureOfThePanel) {
  WithGallery desk;
  ASSERT_TRUE(desk.AllCome());
  desk.Click("Noon");
  (void)desk.Things();
  EXPECT_TRUE(pictures::Write(desk.Gallery(), "gallery"));
}

// The number for a scene changes with what one sees, and with nothing that a Stagemark holds.
TEST(SceneFingerprint, ChangesWithWhatNoStagemarkRecords) {
  WithGallery desk;
  const auto number = [&] { return pictures::FingerprintOf(desk.Doc()); };
  const auto first = number();
  desk::LoadState(desk, 2);
  desk::RecordState(desk, "More");
  EXPECT_EQ(number(), first);
  const std::function<void()> changes[] = {
      [&] { desk.MoveCube(1); },
      [&] { desk.cube->GetDataInstance()->SetReal(1234567, 2.5); },
      [&] { desk.cube->GetDataInstance()->SetString(1234568, "wood.png"); },
      [&] { desk.Doc().AppendObject(host::BaseObject::Alloc(host::Osphere)); },
      [&] {
        host::BaseObject* below = desk.cube->GetNext();
        below->Remove();
        below->InsertUnder(desk.cube);
      },
  };
  std::vector<std::uint64_t> seen = {first};
  for (const auto& change : changes) {
    change();
    EXPECT_EQ(std::count(seen.begin(), seen.end(), number()), 0) << seen.size();
    seen.push_back(number());
  }
}

}  // namespace
