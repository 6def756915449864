// ContactSheet: one picture with a labeled cell for each state, on a dark neutral ground that
// leaves the eye to the pictures. It owns its picture and fonts; cells are placed one by one, so
// that no more than one state's picture is in memory besides it. One thread at a time.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "engine/render/Text.h"
#include "program/pictures/PictureSize.h"
#include "program/pictures/StagemarksDialog.h"

namespace pictures {

// Where everything lies, in pixels.
struct SheetLayout {
  std::size_t columns = 1;
  std::size_t rows = 1;
  PictureSize box;    // each cell's picture fits into it
  PictureSize sheet;  // the whole
};

// The line below the title for so many states. Without any, the sheet shows the scene as it is,
// with kAsItIs as its name.
std::string SheetSubtitle(std::size_t states);
inline constexpr const char* kAsItIs = "As it is";
// The mark of sheets in publish/FileOrigin.h.
inline constexpr const char* kSheetMaker = "sheet";

class ContactSheet {
 public:
  // A sheet with the heading drawn and a cell for each picture, these being the sizes that the
  // pictures have by themselves. Its shape is close to that of a screen. Fails when it would be
  // larger than an image may be, and when there is no font. `box`: what each picture fits into,
  // instead of one that suits their number.
  static engine::Result<ContactSheet> Make(engine::FileSystem& files,
                                           const std::vector<PictureSize>& sizes,
                                           const std::string& title, const std::string& subtitle,
                                           const std::optional<PictureSize>& box = {});

  // Largest size of a cell's picture, in pixels.
  const PictureSize& Box() const { return layout_.box; }

  // Puts a picture no larger than the box into the cell `index`, counted from 0 along the rows,
  // with its caption.
  void Place(std::size_t index, const engine::Image& picture, const Mark& caption);
  const engine::Image& Picture() const { return sheet_; }
  // The last thing that is asked of it.
  engine::Image TakePicture() { return std::move(sheet_); }

 private:
  ContactSheet(const SheetLayout& layout, engine::Font regular, engine::Font bold);
  void DrawHeading(const std::string& title, const std::string& subtitle);
  void DrawCaption(int left, int top, const Mark& caption);

  SheetLayout layout_;
  engine::Font regular_;
  engine::Font bold_;
  engine::Image sheet_;
};

}  // namespace pictures
