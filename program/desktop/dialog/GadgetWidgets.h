// The widget of each kind of gadget, and how it follows its gadget. Clicks and typing become events
// of the dialog; a dialog that is gone hears nothing. The widgets belong to their parent. Main
// thread.
#pragma once

#include <QAbstractButton>
#include <QDoubleSpinBox>
#include <QImage>
#include <QWidget>
#include <functional>

#include "engine/dialog/Dialogs.h"
#include "engine/outside/FileSystem.h"
#include "program/desktop/dialog/DialogLink.h"

namespace desktop {

// A number with arrows, in the range, step and format of its gadget. Tells of a typed number when
// typing is done.
class NumberField : public QDoubleSpinBox {
 public:
  explicit NumberField(QWidget* parent);

  // Takes over range, step, format and value without telling.
  void Show(const engine::Gadget& gadget);
  // A range as wide as numbers go would ask for a field as wide as the screen.
  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;
};

// A bitmap button: shows an image file as large as it fits, in its proportions, and asks for no
// more room than that. A file is read again only when it has changed.
class PictureButton : public QAbstractButton {
 public:
  PictureButton(engine::FileSystem& files, const engine::Gadget& gadget, QWidget* parent);

  void Show(const engine::Gadget& gadget);
  const QImage& Picture() const { return picture_; }
  QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  // Reads the image file where it is another one, or has changed; nothing is shown where it cannot
  // be read.
  void Load(const std::string& path);
  // The largest size of the picture's proportions inside `room`.
  QSize Fitted(QSize room) const;

  engine::FileSystem& files_;
  QSize asked_;
  // Whether the plug-in asks for an edge around the picture.
  bool border_;
  std::string path_;
  engine::FileStamp stamp_;
  QImage picture_;  // null: nothing to show
};

// A widget with the way to bring it in step with its gadget.
struct GadgetWidget {
  QWidget* widget;
  // Brings the widget in step with the gadget without an event.
  std::function<void(const engine::Gadget&)> show;
};

// For every kind but a group. Shows the gadget's present value already.
GadgetWidget MakeGadgetWidget(const SharedDialogLink& link, const engine::Gadget& gadget,
                              QWidget* parent);

}  // namespace desktop
