// SheetMaker: renders every Stagemark of a document onto a contact sheet. A StateRenderer loads and
// renders them, while a person goes on with the document; here the pictures are put onto the sheet.
// Main thread.
#pragma once

#include <QImage>
#include <memory>

#include "program/desktop/render/StateRenderer.h"
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

class SheetMaker {
 public:
  SheetMaker(engine::FileSystem& files, const host::BaseDocument& doc,
             std::function<void(const SheetNews&)> news);
  SheetMaker(const SheetMaker&) = delete;
  SheetMaker& operator=(const SheetMaker&) = delete;

  // Ends it; no sheet is made and nothing further is told.
  void Stop();

 private:
  void LayOut();
  void RenderNext();
  void Place(const engine::Image& picture);
  void End();
  void Fail(const std::string& problem);
  // `done`: of the picture that is being rendered.
  void Tell(double done, bool showsSheet);
  std::string NameOf(std::size_t state) const;
  StateRenderer::News Hearing();

  engine::FileSystem& files_;
  std::function<void(const SheetNews&)> news_;
  std::string title_;
  std::vector<worker::StateFacts> states_;
  std::unique_ptr<pictures::ContactSheet> sheet_;
  std::size_t placed_ = 0;
  std::vector<std::string> notes_;
  StateRenderer renderer_;  // last: it ends before what it tells
};

}  // namespace desktop
