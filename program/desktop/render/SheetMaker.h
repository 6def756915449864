// SheetMaker: renders every Stagemark of a document onto a contact sheet. A child loads the states
// and renders them, from a copy of the scene as it was when the work began: the document, its undo
// steps, the active document and the plug-in's dialog are not touched, and a person goes on with
// them. Here the copy is taken and, by a background job, written into the child's order, and the
// pictures are put onto the sheet. Main thread.
#pragma once

#include <QImage>
#include <QProcess>
#include <memory>

#include "engine/import/Frames.h"
#include "program/desktop/OpenDocument.h"
#include "program/desktop/background/BackgroundJob.h"
#include "program/desktop/background/DeferredDeletion.h"
#include "program/pictures/ContactSheet.h"
#include "program/pictures/StateWorker.h"

namespace desktop {

struct SheetNews {
  double done = 0;  // share of the whole work
  QString doing;
  QImage sheet;  // null while nothing on it is new
  std::vector<std::string> notes;
  bool ended = false;
  std::string problem;                           // why there is no sheet
  std::shared_ptr<const engine::Image> picture;  // the whole sheet, at the end
};

class SheetMaker : public QObject {
 public:
  SheetMaker(engine::FileSystem& files, const host::BaseDocument& doc,
             std::function<void(const SheetNews&)> news);
  ~SheetMaker() override;

  // Ends it; no sheet is made and nothing further is told.
  void Stop();

 private:
  void Begin();
  void StartChild(const std::string& problem);
  void Send(engine::FrameKind kind, std::string_view bytes);
  void Read();
  void Take(const engine::Frame& frame);
  void TakeState(const std::string& text);
  void TakeDone();
  void LayOut();
  void Place();
  void End();
  void Fail(const std::string& problem);
  void Tell(double done, bool showsSheet);
  std::string NameOf(std::size_t state) const;

  engine::FileSystem& files_;
  host::ULLONG doc_;
  std::function<void(const SheetNews&)> news_;
  std::string title_;
  std::vector<std::string> order_;  // notes of it
  std::vector<pictures::StateFacts> states_;
  std::unique_ptr<pictures::ContactSheet> sheet_;
  std::size_t placed_ = 0;
  engine::Image picture_;  // that is arriving
  std::vector<std::string> notes_;
  bool stopped_ = false;
  // The job's while it writes
  OwnedDocument copy_;
  // As written by the job
  engine::Result<std::vector<std::string>> scene_{std::vector<std::string>()};
  DeferredDeletion deletion_;
  engine::FrameParser parser_;
  QProcess child_;
  BackgroundJob writing_{"a copy of the scene"};  // last: it ends before what it uses
};

}  // namespace desktop
