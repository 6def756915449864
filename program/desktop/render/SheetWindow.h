// SheetWindow: the contact sheet of all Stagemarks, as it grows and when it is written; it can be
// saved elsewhere, too. Closing it before that ends the work and writes nothing. Main thread.
#pragma once

#include "program/desktop/render/PictureWindow.h"
#include "program/desktop/render/SheetMaker.h"

namespace desktop {

class SheetWindow : public PictureWindow {
 public:
  // `file`: absolute; where the sheet goes, a PNG or TIFF file by its suffix.
  SheetWindow(QWidget* window, const engine::Services& services, const host::BaseDocument& doc,
              std::string file);

  void Stop();
  // Written, stopped or failed.
  bool IsFinished() const { return ended_; }

 private:
  void Take(const SheetNews& news);
  void WriteSheet(const SheetNews& news);
  void End(const QString& text);

  bool ended_ = false;
  QPushButton* stop_;
  QPushButton* folder_;
  SheetMaker maker_;  // last: it ends before what it tells of
};

// Asks for the file, then opens the window; does nothing when canceled.
void AskForSheet(QWidget& window, const engine::Services& services);

}  // namespace desktop
