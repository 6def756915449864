#include "program/desktop/render/PictureSaving.h"

#include <QCoreApplication>
#include <QPointer>
#include <QThread>

#include "engine/outside/Outside.h"
#include "program/desktop/FileDialogs.h"
#include "program/pictures/PictureNames.h"

namespace desktop {

std::optional<std::string> AskForPicture(QWidget* parent, const std::string& title,
                                         const std::string& proposal) {
  return ChooseFile(parent, {host::FILESELECTTYPE_ANYTHING, host::FILESELECT_SAVE, title, proposal},
                    kPictureFiles);
}

void SavePicture(QObject* owner, std::shared_ptr<const engine::Image> picture,
                 const std::string& path, std::function<void(const engine::Status&)> written) {
  auto bytes = std::make_shared<engine::Result<std::string>>(std::string());
  QThread* thread = QThread::create([picture = std::move(picture), path, bytes] {
    *bytes = pictures::EncodePicture(*picture, path);
  });
  // Once: when the thread has ended, or when the program ends before.
  const auto finish = [thread, path, bytes, isDone = std::make_shared<bool>(false),
                       owner = QPointer<QObject>(owner), written = std::move(written)] {
    if (std::exchange(*isDone, true)) return;
    thread->wait();
    thread->deleteLater();
    const engine::Status status =
        *bytes ? engine::Outside::Current().ReplaceFile(path, bytes->Value())
               : engine::Status::Failure("\"" + path + "\" was not written: " + bytes->Message());
    if (owner) return written(status);
    if (!status) engine::Outside::Current().Tell(status.Message());
  };
  QObject::connect(thread, &QThread::finished, QCoreApplication::instance(), finish);
  QObject::connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, thread, finish);
  thread->start();
}

}  // namespace desktop
