#include "program/desktop/render/PictureSaving.h"

#include <QCoreApplication>
#include <QPointer>

#include "program/desktop/FileDialogs.h"
#include "program/desktop/background/BackgroundJob.h"
#include "program/pictures/PictureNames.h"

namespace desktop {

std::optional<std::string> AskForPicture(QWidget* parent, const std::string& title,
                                         const std::string& proposal) {
  return ChooseFile(parent, {host::FILESELECTTYPE_ANYTHING, host::FILESELECT_SAVE, title, proposal},
                    kPictureFiles);
}

namespace {

// Writes one picture and goes when that is done, or when the program ends before. It has no owner:
// closing the window must not lose the picture that is being written.
class Saving : public QObject {
 public:
  Saving(QObject* owner, const engine::Services& services, std::string path,
         std::function<void(const engine::Status&)> written)
      : services_(services), owner_(owner), path_(std::move(path)), written_(std::move(written)) {
    connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, this,
            [this] { encoding_.Finish(); });
  }

  void Begin(const std::shared_ptr<const engine::Image>& picture) {
    encoding_.Start(
        [this, picture](const BackgroundJob::Control&) {
          bytes_ = pictures::EncodePicture(*picture, path_);
        },
        [this](const std::string& problem) {
          if (!problem.empty()) bytes_ = engine::Status::Failure(problem);
          Write();
          deleteLater();
        });
  }

 private:
  // On the main thread, to which files and ledger belong; only the packing was beside it.
  void Write() {
    services_.files.Follow(path_.substr(0, path_.rfind('/')));
    const engine::Status status =
        bytes_ ? services_.files.ReplaceFile(path_, bytes_.Value())
               : engine::Status::Failure("\"" + path_ + "\" was not written: " + bytes_.Message());
    if (owner_) return written_(status);
    if (!status) services_.person.Tell(status.Message());
  }

  const engine::Services services_;
  QPointer<QObject> owner_;
  std::string path_;
  std::function<void(const engine::Status&)> written_;
  engine::Result<std::string> bytes_{std::string()};
  BackgroundJob encoding_{"the picture's file"};  // last: it ends before what it uses
};

}  // namespace

void SavePicture(QObject* owner, const engine::Services& services,
                 std::shared_ptr<const engine::Image> picture, const std::string& path,
                 std::function<void(const engine::Status&)> written) {
  (new Saving(owner, services, path, std::move(written)))->Begin(picture);
}

}  // namespace desktop
