#include "program/desktop/render/PictureSaving.h"

#include <QPointer>
#include <QThread>

#include "engine/outside/Outside.h"
#include "program/desktop/FileChooser.h"
#include "program/pictures/PictureNames.h"

namespace desktop {

std::optional<std::string> AskForPicture(QWidget* parent, const std::string& title, const std::string& proposal) {
  return ChooseFile(parent, {host::FILESELECTTYPE_ANYTHING, host::FILESELECT_SAVE, title, proposal}, kPictureFiles);
}

void SavePicture(QObject* owner, std::shared_ptr<const engine::Image> picture, const std::string& path,
                 std::function<void(const engine::Status&)> written) {
  auto bytes = std::make_shared<engine::Result<std::string>>(std::string());
  QThread* thread =
      QThread::create([picture = std::move(picture), path, bytes] { *bytes = pictures::EncodePicture(*picture, path); });
  QObject::connect(thread, &QThread::finished, thread, &QObject::deleteLater);
  QObject::connect(thread, &QThread::finished, owner, [path, bytes, written = std::move(written)] {
    written(*bytes ? engine::Outside::Current().ReplaceFile(path, bytes->Value())
                   : engine::Status::Failure("\"" + path + "\" was not written: " + bytes->Message()));
  });
  thread->start();
}

}  // namespace desktop
