// Saving at the desktop on a disk that fails: at each operation in turn, and from each on. The file
// is the old one or the new one, the document knows which, and the person is told.
#include <gtest/gtest.h>

#include <QMessageBox>
#include <filesystem>

#include "engine/outside/SystemServices.h"
#include "engine/scene/SceneDump.h"
#include "engine/scenefile/SceneFile.h"
#include "host/BaseObject.h"
#include "program/desktop/MainWindow.h"
#include "tests/desktop/Pictures.h"
#include "tests/support/FaultyFileSystem.h"
#include "tests/support/ScratchFolder.h"

namespace {

namespace fs = std::filesystem;

class FaultyDesk {
 public:
  FaultyDesk() {
    for (const char* folder : {"CONFIG", "DATA", "CACHE", "STATE"})
      qputenv((QByteArray("XDG_") + folder + "_HOME").constData(),
              QByteArray::fromStdString(folder_.Path() + "/" + folder));
    system_.emplace(person_);
    files_.emplace(system_->Get().ledger, person_);
    const engine::Services& own = system_->Get();
    services_.emplace(
        engine::Services{*files_, own.clock, own.person, own.ledger, own.folders, own.viewer});
    application_ = std::make_unique<engine::Application>(*services_, engine::ApplicationSetup());
    application_->NewDocument();
    window_ = std::make_unique<desktop::MainWindow>(*application_, person_, "");
    application_->LoadPlugins(TEST_PLUGIN_DIR);
    // Every box is read and closed.
    boxes_.callOnTimeout([this] {
      auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
      if (!box) return;
      ++told_;
      box->defaultButton() ? box->defaultButton()->click() : box->accept();
    });
    boxes_.start(1);
  }

  host::BaseDocument& Doc() { return *host::GetActiveDocument(); }
  void Add(const char* name) {
    host::BaseObject* object = host::BaseObject::Alloc(host::Onull);
    object->SetName(name);
    Doc().AppendObject(object);
  }
  tests::FaultyFileSystem& Files() { return *files_; }
  desktop::DocumentCommands& Commands() { return window_->Commands(); }
  const std::string& Folder() const { return folder_.Path(); }
  int Told() const { return told_; }
  bool Save(const std::string& path) {
    return static_cast<bool>(application_->SaveDocumentAs(Doc(), path));
  }
  // A dump of the document in the file; the reason where it cannot be opened.
  std::string InFile(const std::string& path) {
    auto doc = engine::OpenSceneFile(system_->Get(), path);
    return doc ? engine::DumpDocument(*doc.Value()) : doc.Message();
  }
  // Names beside the scene.
  std::string Beside() const {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder_.Path()))
      if (entry.path().filename().string().rfind("room", 0) == 0 ||
          entry.path().filename().string().front() == '.')
        names.insert(entry.path().filename().string());
    std::string text;
    for (const std::string& name : names) text += name + " ";
    return text;
  }

 private:
  tests::ScratchFolder folder_;
  desktop::DesktopPerson person_;
  std::optional<engine::SystemServices> system_;
  std::optional<tests::FaultyFileSystem> files_;
  std::optional<engine::Services> services_;
  std::unique_ptr<engine::Application> application_;
  std::unique_ptr<desktop::MainWindow> window_;
  QTimer boxes_;
  int told_ = 0;
};

TEST(SavingUnderFaults, TheFileIsTheOldOneOrTheNewOneAndThePersonHearsWhich) {
  for (const bool stays : {false, true}) {
    FaultyDesk desk;
    const std::string path = desk.Folder() + "/room.c4d";
    desk.Add("First");
    ASSERT_TRUE(desk.Save(path));
    const std::string beside = desk.Beside();
    bool reached = true;
    for (std::size_t number = 1; reached; ++number) {
      ASSERT_LT(number, 50U);
      desk.Add("More");
      const std::string before = desk.InFile(path);
      const std::string now = engine::DumpDocument(desk.Doc());
      const int told = desk.Told();
      stays ? desk.Files().BreakFrom(number) : desk.Files().Break(number, tests::Fault::Fail);
      const bool saved = desk.Commands().Save(desk.Doc());
      reached = desk.Files().Count() >= number;
      desk.Files().Mend();
      EXPECT_EQ(desk.Doc().GetChanged(), !saved) << number;
      EXPECT_EQ(desk.InFile(path), saved ? now : before) << number;
      EXPECT_TRUE(saved || desk.Told() > told) << number;
      EXPECT_EQ(desk.Beside(), beside) << number;
      pictures::Settle();
    }
  }
}

}  // namespace
