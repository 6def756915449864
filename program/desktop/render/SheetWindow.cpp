#include "program/desktop/render/SheetWindow.h"

#include <QFileInfo>
#include <QMessageBox>

#include "program/desktop/DocumentCommands.h"
#include "program/desktop/Text.h"
#include "program/desktop/render/PictureSaving.h"
#include "program/desktop/render/RenderJob.h"
#include "program/pictures/PictureNames.h"

namespace desktop {

SheetWindow::SheetWindow(QWidget* window, const engine::Services& services,
                         const host::BaseDocument& doc, std::string file)
    : PictureWindow(window, services, "Contact Sheet", doc),
      stop_(AddButton("Stop", "End the work; no sheet is written", [this] { Stop(); })),
      folder_(AddButton("Open Folder", "Show the folder of the sheet",
                        [this] {
                          const std::string path = QFileInfo(ToQt(File())).path().toStdString();
                          const engine::Status opened = GetServices().viewer.Open(path);
                          if (!opened)
                            QMessageBox::warning(this, windowTitle(), ToQt(opened.Message()));
                        })),
      maker_(services.files, doc, [this](const SheetNews& news) { Take(news); }) {
  Propose(std::move(file));
  folder_->setEnabled(false);
  Say("Reading the states");
}

void SheetWindow::Stop() {
  maker_.Stop();
  End("Stopped; no sheet was written");
}

void SheetWindow::Take(const SheetNews& news) {
  if (!news.sheet.isNull()) View().Show(news.sheet);
  SayNotes(news.notes);
  Progress().setValue(static_cast<int>(news.done * Progress().maximum()));
  if (!news.ended) return Say(news.doing);
  if (!news.picture) return End("No sheet was made: " + ToQt(news.problem));
  WriteSheet(news);
}

// Written without a question: its place was chosen before the work began. It can be saved elsewhere
// when that fails.
void SheetWindow::WriteSheet(const SheetNews& news) {
  View().Show(Viewed(news.picture));
  stop_->setEnabled(false);
  Keep(news.picture);
  Write(File(), [this](bool written) {
    ended_ = true;
    Progress().hide();
    folder_->setEnabled(written);
  });
}

void SheetWindow::End(const QString& text) {
  ended_ = true;
  stop_->setEnabled(false);
  Progress().hide();
  Say(text);
}

void AskForSheet(QWidget& window, const engine::Services& services) {
  host::BaseDocument* doc = host::GetActiveDocument();
  if (!doc) return;
  const std::string folder = doc->GetDocumentPath().GetString().ToUtf8();
  const std::string scene = pictures::SceneName(*doc);
  const std::string name =
      pictures::SafeFileName((scene.empty() ? "Scene" : scene) + " sheet") + ".png";
  const auto file = AskForPicture(&window, "Write the contact sheet as",
                                  (folder.empty() ? "" : folder + "/") + name);
  if (file) (new SheetWindow(&window, services, *doc, *file))->show();
}

}  // namespace desktop
