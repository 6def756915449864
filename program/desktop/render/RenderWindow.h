// RenderWindow: the scene as its active render settings want it, rendered while the main window
// lives on. It reads the document when it opens; what happens to that afterwards does not matter.
// Closing it ends the work. Main thread.
#pragma once

#include <QElapsedTimer>
#include <QTimer>

#include "program/desktop/render/PictureWindow.h"
#include "program/desktop/render/RenderJob.h"
#include "program/desktop/view/SceneFeed.h"

namespace desktop {

class RenderWindow : public PictureWindow {
 public:
  RenderWindow(QWidget* window, const engine::Services& services, const host::BaseDocument& doc);

  void Stop();
  bool IsFinished() const { return ended_; }

 private:
  void Start(engine::ScenePicture scene);
  void Take(const RenderNews& news);
  void End(const RenderNews& news);
  void ShowTime();

  engine::PictureSetup setup_;
  SceneFeed feed_;
  QString doing_ = "Reading the scene";
  QString subject_;
  QElapsedTimer time_;
  QTimer clock_;
  QPushButton* stop_;
  bool ended_ = false;
  std::unique_ptr<RenderJob> job_;  // last: it ends before what it tells of
};

}  // namespace desktop
