// PictureButton: a bitmap button gadget as a widget: shows an image file as large as it fits, in
// its proportions, and asks for no more room than that. Files are read again only when they
// changed. Main thread.
#pragma once

#include <QAbstractButton>
#include <QImage>

#include "engine/outside/Outside.h"
#include "program/desktop/dialog/DialogLink.h"

namespace desktop {

class PictureButton : public QAbstractButton {
 public:
  PictureButton(const engine::Gadget& gadget, QWidget* parent);

  void Show(const engine::Gadget& gadget);
  const QImage& Picture() const { return picture_; }
  QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  void Load(const std::string& path);
  // The largest size of the picture's proportions inside `room`.
  QSize Fitted(QSize room) const;

  QSize asked_;
  bool border_;
  std::string path_;
  engine::FileStamp stamp_;
  QImage picture_;  // null: nothing to show
};

}  // namespace desktop
