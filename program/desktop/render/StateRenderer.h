// StateRenderer: a child that loads the Stagemarks of a document and renders them, from a copy of
// the scene as it was when the work began: the document, its undo steps, the active document and
// the plug-in's dialog are not touched, and a person goes on with them. Here the copy is taken and,
// by a background job, written into the child's order; one request after the other is answered.
// Main thread.
#pragma once

#include <QProcess>
#include <deque>
#include <functional>

#include "engine/import/Frames.h"
#include "engine/render/Image.h"
#include "program/desktop/OpenDocument.h"
#include "program/desktop/background/BackgroundJob.h"
#include "program/desktop/background/DeferredDeletion.h"
#include "program/worker/PictureFiles.h"
#include "program/worker/StateWorker.h"

namespace desktop {

class StateRenderer : public QObject {
 public:
  // Callbacks about the work; each may be empty. None of them may destroy the renderer.
  struct News {
    std::function<void(const worker::StateFacts& state)> measured;
    std::function<void()> allMeasured;
    std::function<void(double done)> progress;  // share of what was asked for
    std::function<void(const std::string& note)> noted;
    // Answer to the earliest request that is not answered yet.
    std::function<void(engine::Image picture)> rendered;
    // Publishing: a file is written, and all of them are.
    std::function<void(const std::string& path)> written;
    std::function<void()> published;
    // Pictures as files, and their end; `thumbnail`: of one that was rendered, else empty.
    std::function<void(const worker::PictureNews& news, const engine::Image& thumbnail)> pictured;
    std::function<void()> pictureFilesDone;
    // The last that is told.
    std::function<void(const std::string& problem)> failed;
  };

  // The copy is taken in the next turn of the event loop, or when the document is free.
  StateRenderer(const host::BaseDocument& doc, News news);
  ~StateRenderer() override;

  // Has each state told with the size of its picture.
  void Measure();
  // Has the picture of a state made, fitted into the box; no name: the scene as it is.
  void Render(const std::string& name, const pictures::PictureSize& box);
  // Has Stagemarks published: files are written by the child, each whole or not at all.
  void Publish(const publishing::PublishOrder& order);
  // Has pictures planned or written as files, by the child, each whole or not at all.
  void WritePictures(const worker::PicturesOrder& order);
  // Ends the child; nothing further is told. What it was writing is not there.
  void Stop();
  // Whether something was asked for that is not answered yet.
  bool IsBusy() const { return !stopped_ && !asked_.empty(); }
  // The options as they stand in the plug-in's dialog, which count for what is asked for: not all
  // of them are kept in the scene.
  static std::vector<std::string> OptionsOfDialog();
  // The scene as it was copied, see SceneFingerprint; 0 before it is written.
  std::uint64_t Fingerprint() const { return fingerprint_; }

 private:
  void Begin();
  void StartChild(const std::string& problem);
  void Ask(const std::string& text);
  void Send(engine::FrameKind kind, std::string_view bytes);
  void Read();
  void Take(const engine::Frame& frame);
  void TakeState(const std::string& text);
  void TakeNews(const std::string& text);
  void TakeDone();
  void Fail(const std::string& problem);
  void FailUnread();

  host::ULLONG doc_;
  News news_;
  std::vector<std::string> order_;  // notes of it
  std::deque<std::string> asked_;   // the first one is being answered
  bool isUp_ = false;               // the child has its order
  bool stopped_ = false;
  worker::StateFacts state_;  // whose picture is arriving
  engine::Image picture_;     // that is arriving
  // The job's while it writes
  OwnedDocument copy_;
  std::uint64_t fingerprint_ = 0;
  engine::Result<std::vector<std::string>> scene_{std::vector<std::string>()};
  DeferredDeletion deletion_;
  engine::FrameParser parser_;
  QProcess child_;
  BackgroundJob writing_{"a copy of the scene"};  // last: it ends before what it uses
};

}  // namespace desktop
