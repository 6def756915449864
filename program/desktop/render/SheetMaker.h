// SheetMaker: renders every Stagemark of a document onto a contact sheet. Each state is loaded through the plug-in's dialog onto
// a copy of the document that lives for that one step, so that the document itself, its undo steps and what is checked stay as
// they are. Between the steps the window lives on: the copy is read and freed in slices, the picture is rendered on another
// thread. It keeps the document's identity, never its address. Main thread.
#pragma once

#include <QTimer>
#include <memory>
#include <optional>

#include "engine/application/Application.h"
#include "engine/render/SceneScan.h"
#include "program/desktop/OpenDocument.h"
#include "program/desktop/SlowEnd.h"
#include "program/desktop/render/RenderJob.h"
#include "program/pictures/ContactSheet.h"

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
  SheetMaker(engine::Application& application, const host::BaseDocument& doc, std::function<void(const SheetNews&)> news);

  // Ends it; no sheet is made and nothing further is told.
  void Stop();

 private:
  // A step of the main thread: a copy of the document, in no list, in that state. Null when that failed, which was told.
  OwnedDocument Visit(std::size_t state);
  void Begin();
  void Measure();
  void LayOut();
  void Render();
  void Scan();
  void Take(const RenderNews& news);
  void End();
  void Fail(const std::string& problem);
  void Next(void (SheetMaker::*step)());
  void Tell(double done, bool showsSheet);
  std::string NameOf(std::size_t state) const;

  engine::Application& application_;
  engine::NodeId doc_;
  std::function<void(const SheetNews&)> news_;
  std::string title_;
  std::vector<pictures::Mark> states_;  // one without a name: the scene as it is
  bool asItIs_ = false;
  std::vector<pictures::PictureSize> sizes_;
  std::unique_ptr<pictures::ContactSheet> sheet_;
  std::size_t placed_ = 0;
  std::vector<std::string> notes_;
  void (SheetMaker::*step_)() = nullptr;
  QTimer next_;
  OwnedDocument copy_;                     // that is being read
  std::optional<engine::SceneScan> scan_;  // of the copy
  SlowEnd ended_;
  std::unique_ptr<RenderJob> job_;  // last: it ends before what it tells of
};

}  // namespace desktop
