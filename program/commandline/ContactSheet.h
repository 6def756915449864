// ContactSheet: one picture with a labelled cell for each state, on a dark neutral ground that leaves the eye to the pictures.
// It owns its picture and fonts; cells are placed one by one, so that no more than one state's picture is in memory besides it.
// One thread at a time.
#pragma once

#include <string>

#include "engine/render/Text.h"
#include "program/commandline/StatePictures.h"

namespace commandline {

// Where everything lies, in pixels.
struct SheetLayout {
  std::size_t columns = 1;
  std::size_t rows = 1;
  PictureSize box;    // each cell's picture fits into it
  PictureSize sheet;  // the whole
};

// The layout for so many cells, closest to the shape of a screen, for pictures that are `shape` wide when 1 high. A failure when
// the sheet would be larger than an image may be.
engine::Result<SheetLayout> LayOutSheet(std::size_t count, double shape);
// The shape that suits all of these sizes: their own where they share one.
double CommonShape(const std::vector<PictureSize>& sizes);

class ContactSheet {
 public:
  // With the heading drawn. Fails when there is no font.
  static engine::Result<ContactSheet> Make(const SheetLayout& layout, const std::string& title, const std::string& subtitle);

  // Puts a picture no larger than the box into the cell `index`, counted from 0 along the rows, with its caption.
  void Place(std::size_t index, const engine::Image& picture, const Mark& caption);
  const engine::Image& Picture() const { return sheet_; }

 private:
  ContactSheet(const SheetLayout& layout, engine::Font regular, engine::Font bold);
  void DrawHeading(const std::string& title, const std::string& subtitle);
  void DrawCaption(int left, int top, const Mark& caption);

  SheetLayout layout_;
  engine::Font regular_;
  engine::Font bold_;
  engine::Image sheet_;
};

}  // namespace commandline
