// Publishing at the desktop: files and web pages of the states, made beside a person's work.
#include <QRadioButton>
#include <QtTest/QTest>
#include <filesystem>

#include "engine/scene/SceneDump.h"
#include "program/desktop/publish/PublishWindow.h"
#include "tests/desktop/Desk.h"
#include "tests/desktop/States.h"
#include "tests/desktop/WithCube.h"

namespace {

using desk::Desk;
using desktop::PublishWindow;

namespace fs = std::filesystem;

constexpr const char* kPageViewer = TEST_BINARY_DIR "/share/stagemarks/page/page.html";

class TwoStates : public desk::WithCube {
 public:
  TwoStates() {
    desk::RecordState(*this, "Shown");
    cube->SetRenderMode(host::MODE_OFF);
    desk::RecordState(*this, "Hidden");
    Rest();
  }

  // The window that the entry of the menu opens.
  PublishWindow& OpenBy(const char* entry) {
    Entry("File", entry).trigger();
    PublishWindow* window = nullptr;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      auto* found = dynamic_cast<PublishWindow*>(widget);
      if (found && found->isVisible()) window = found;
    }
    if (!window) throw std::runtime_error("no window");
    window->findChild<QLineEdit*>("folder")->setText(QString::fromStdString(Out()));
    return *window;
  }
  std::string Out() const { return Folder() + "/out"; }
  static void Press(PublishWindow& window, const QString& text) {
    for (QPushButton* button : window.findChildren<QPushButton*>()) {
      if (button->text().remove('&') == text) return QTest::mouseClick(button, Qt::LeftButton);
    }
    FAIL() << "no button " << text.toStdString();
  }
  static bool Finishes(PublishWindow& window) {
    return QTest::qWaitFor([&] { return window.IsFinished(); }, 60000);
  }
};

TEST(PublishWindow, WritesFilesAndLeavesTheDocumentAlone) {
  TwoStates desk;
  const std::string before = engine::DumpState(desk::Scene());
  const bool undo = desk.Entry("Edit", "Undo").isEnabled();
  const char* const kWritten[] = {"Untitled Hidden.glb Untitled Shown.glb",
                                  "Untitled Hidden.gltf Untitled Shown.gltf", "Untitled.glb"};
  for (int form = 0; form < 3; ++form) {
    fs::remove_all(desk.Out());
    PublishWindow& window = desk.OpenBy("Publish");
    window.findChild<QComboBox*>()->setCurrentIndex(form);
    TwoStates::Press(window, "Publish");
    ASSERT_TRUE(TwoStates::Finishes(window));
    EXPECT_TRUE(window.Said().startsWith("Written: ")) << window.Said().toStdString();
    std::string names;
    const auto files = desk.Services().files.ListFiles(desk.Out());
    for (const std::string& name : files.Value()) {
      if (!name.ends_with(".bin")) names += (names.empty() ? "" : " ") + name;
    }
    EXPECT_EQ(names, kWritten[form]);
    window.close();
    Desk::Rest();
  }
  EXPECT_EQ(engine::DumpState(desk::Scene()), before);
  EXPECT_EQ(desk.Entry("Edit", "Undo").isEnabled(), undo);
}

TEST(PublishWindow, MakesAWebPageOfTheStatesThatAreSelected) {
  if (!fs::exists(kPageViewer)) GTEST_SKIP() << "built without the viewer of web pages";
  TwoStates desk;
  desk::ChooseState(desk, 0);
  PublishWindow& window = desk.OpenBy("Web Page");
  for (QRadioButton* button : window.findChildren<QRadioButton*>()) {
    if (button->text().startsWith("&Selected")) button->setChecked(true);
  }
  QTest::keyClick(&window, Qt::Key_Return);
  ASSERT_TRUE(TwoStates::Finishes(window));
  EXPECT_TRUE(window.Said().startsWith("Written: ")) << window.Said().toStdString();
  const std::string page = tests::ReadText(desk.Out() + "/index.html");
  const std::size_t contents = page.find("id=\"contents\"");
  const std::string list = page.substr(contents, page.find("</script>", contents) - contents);
  EXPECT_NE(list.find("\"name\":\"Hidden\""), std::string::npos);
  EXPECT_EQ(list.find("\"name\":\"Shown\""), std::string::npos);
  EXPECT_TRUE(pictures::Write(window, "web-page-small"));
}

TEST(PublishWindow, StopsRefusesAndAsks) {
  TwoStates desk;
  PublishWindow& window = desk.OpenBy("Publish");
  TwoStates::Press(window, "Publish");
  EXPECT_FALSE(window.IsFinished());
  TwoStates::Press(window, "Stop");
  EXPECT_TRUE(window.IsFinished());
  EXPECT_EQ(window.Said(), "Stopped; nothing was published.");
  EXPECT_FALSE(fs::exists(desk.Out()));
  window.findChild<QLineEdit*>("folder")->setText("here");
  TwoStates::Press(window, "Publish");
  EXPECT_TRUE(window.Said().startsWith("Choose a folder")) << window.Said().toStdString();
  tests::WriteText(desk.Folder() + "/file", "mine");
  window.findChild<QLineEdit*>("folder")->setText(
      QString::fromStdString(desk.Folder() + "/file/out"));
  TwoStates::Press(window, "Publish");
  ASSERT_TRUE(TwoStates::Finishes(window));
  EXPECT_TRUE(window.Said().startsWith("Nothing was published.")) << window.Said().toStdString();
  fs::create_directory(desk.Out());
  tests::WriteText(desk.Out() + "/Untitled Shown.glb", "mine");
  window.findChild<QLineEdit*>("folder")->setText(QString::fromStdString(desk.Out()));
  desk::AnswerNext<QDialog>([](QDialog& box) { box.reject(); });
  TwoStates::Press(window, "Publish");
  EXPECT_TRUE(window.IsFinished());
  EXPECT_EQ(tests::ReadText(desk.Out() + "/Untitled Shown.glb"), "mine");
}

}  // namespace
