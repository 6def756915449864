// The gallery: every Stagemark with its picture and what it says of it, chosen and loaded with mouse
// and keys, and the keys that load the next one from anywhere.
#include "program/desktop/panels/GalleryPanel.h"

#include <gtest/gtest.h>

#include <QStatusBar>

#include "host/BaseObject.h"
#include "tests/desktop/States.h"

namespace {

using desk::Desk;
using desktop::GalleryModel;

struct WithGallery : Desk {
  host::BaseObject* cube = host::BaseObject::Alloc(host::Ocube);

  WithGallery() {
    Doc().AppendObject(cube);
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
  // What it says of each once all are counted.
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

}  // namespace
