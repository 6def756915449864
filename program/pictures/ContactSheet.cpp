#include "program/pictures/ContactSheet.h"

#include <algorithm>
#include <cmath>

namespace pictures {

using engine::Font;
using engine::Image;
using engine::Result;
using engine::TextLine;
using Color = engine::Font::Color;

namespace {

// Grays have no tint, so that the pictures' colors are judged as they are.
constexpr Color kGround{30, 30, 30};
constexpr Color kPlate{20, 20, 20};
constexpr Color kEdge{52, 52, 52};
constexpr Color kBright{236, 236, 236};
constexpr Color kText{214, 214, 214};
constexpr Color kDim{140, 140, 140};
constexpr Color kAccent{232, 170, 66};
constexpr Color kOnAccent{28, 22, 10};

// All lengths are pixels of the sheet, which is never scaled.
constexpr int kMargin = 44;
constexpr int kGap = 30;
constexpr int kHeading = 108;  // from the top edge to the first row
constexpr int kCaption = 58;   // below each picture
constexpr int kTitlePixels = 27;
constexpr int kSubtitlePixels = 14;
constexpr int kNamePixels = 16;
constexpr int kDatePixels = 12;
constexpr int kTagPixels = 11;
constexpr int kFrame = 3;  // around the current one
constexpr const char* kCurrent = "CURRENT";
// Width of a picture by the number of cells up to which it holds.
constexpr std::pair<std::size_t, int> kWidths[] = {
    {2, 560}, {12, 420}, {60, 340}, {300, 260}, {100000, 200}};
// The shape that sheets come near to, width to height: between that of screens and of paper.
constexpr double kScreen = 1.5;

struct Area {
  int left;
  int top;
  int width;
  int height;
  Area Grown(int by) const { return {left - by, top - by, width + 2 * by, height + 2 * by}; }
};

void Fill(Image& image, const Area& area, Color color) {
  const int right = std::min(area.left + area.width, static_cast<int>(image.width));
  const int bottom = std::min(area.top + area.height, static_cast<int>(image.height));
  for (int y = std::max(0, area.top); y < bottom; ++y) {
    for (int x = std::max(0, area.left); x < right; ++x) {
      std::uint8_t* pixel =
          &image.bytes[(static_cast<std::size_t>(y) * image.width + static_cast<std::size_t>(x)) *
                       4];
      std::copy(color.begin(), color.end(), pixel);
      pixel[3] = 255;
    }
  }
}

void Copy(const Image& picture, int left, int top, Image& image) {
  for (std::uint32_t y = 0; y < picture.height; ++y) {
    const std::size_t to =
        ((static_cast<std::size_t>(top) + y) * image.width + static_cast<std::size_t>(left)) * 4;
    std::copy_n(&picture.bytes[static_cast<std::size_t>(y) * picture.width * 4], picture.width * 4,
                &image.bytes[to]);
  }
}

int Width(std::size_t columns, int box) {
  return 2 * kMargin + static_cast<int>(columns) * (box + kGap) - kGap;
}
int Height(std::size_t rows, int box) {
  return kHeading + static_cast<int>(rows) * (box + kCaption + kGap) - kGap + kMargin - 10;
}

// How far from the shape of a screen, and how ragged the last row is; the smallest wins. The
// logarithm makes twice as wide as bad as twice as high; a last row that is half empty costs 0.4,
// as a sheet half as wide again does.
double Fault(std::size_t count, std::size_t columns, int width, int height) {
  const std::size_t rows = (count + columns - 1) / columns;
  const double shape = static_cast<double>(Width(columns, width)) / Height(rows, height);
  const auto empty = static_cast<double>(columns * rows - count);
  return std::abs(std::log(shape / kScreen)) + 0.8 * empty / static_cast<double>(columns);
}

// The shape that suits all of these sizes: their own where they share one. A hundredth apart still
// counts as one shape, as 1920x1080 and 1366x768 do. 4:3 suits a mixture; extreme shapes are cut,
// so that a strip does not make the cells useless.
double CommonShape(const std::vector<PictureSize>& sizes) {
  double shape = 0;
  for (const PictureSize& size : sizes) {
    const double own = static_cast<double>(size.width) / std::max(1U, size.height);
    if (shape != 0 && std::abs(own - shape) > 0.01 * shape) return 4.0 / 3;
    shape = own;
  }
  return std::clamp(shape, 0.6, 2.4);
}

// The box of each of so many pictures that are `shape` wide when 1 high.
PictureSize UsualBox(std::size_t count, double shape) {
  const auto& [most, width] = *std::find_if(std::begin(kWidths), std::end(kWidths) - 1,
                                            [&](auto& row) { return count <= row.first; });
  return {static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(width / shape)};
}

// The layout for so many cells, closest to the shape of a screen. All numbers of columns are tried
// up to 64, O(64). No caption could be read on a sheet with more.
Result<SheetLayout> LayOutSheet(std::size_t count, const PictureSize& box) {
  const auto width = static_cast<int>(box.width);
  const auto height = static_cast<int>(box.height);
  std::size_t columns = 1;
  for (std::size_t c = 2; c <= std::min<std::size_t>(count, 64); ++c) {
    if (Fault(count, c, width, height) < Fault(count, columns, width, height)) columns = c;
  }
  const std::size_t rows = (count + columns - 1) / columns;
  SheetLayout layout{columns, rows, box, {}};
  layout.sheet = {static_cast<std::uint32_t>(Width(columns, width)),
                  static_cast<std::uint32_t>(Height(rows, height))};
  if (!engine::CheckImageSize(layout.sheet.width, layout.sheet.height, 4)) {
    return Result<SheetLayout>::Failure(std::to_string(count) +
                                        " states are too many for one sheet. Choose some of them "
                                        "or smaller pictures, or make a page for a browser "
                                        "instead.");
  }
  return layout;
}

}  // namespace

std::string SheetSubtitle(std::size_t states) {
  if (states == 0) return "No Stagemarks yet: the scene as it is";
  return std::to_string(states) + (states == 1 ? " Stagemark" : " Stagemarks");
}

// Everything that can fail fails here, before the first picture is rendered.
Result<ContactSheet> ContactSheet::Make(engine::FileSystem& files,
                                        const std::vector<PictureSize>& sizes,
                                        const std::string& title, const std::string& subtitle,
                                        const std::optional<PictureSize>& box) {
  const std::size_t count = std::max<std::size_t>(1, sizes.size());
  const auto layout = LayOutSheet(count, box ? *box : UsualBox(count, CommonShape(sizes)));
  if (!layout) return layout.GetStatus();
  auto regular = Font::Load(files, Font::Weight::Regular);
  if (!regular) return regular.GetStatus();
  auto bold = Font::Load(files, Font::Weight::Bold);
  if (!bold) return bold.GetStatus();
  ContactSheet sheet(layout.Value(), regular.Take(), bold.Take());
  sheet.DrawHeading(title, subtitle);
  return sheet;
}

ContactSheet::ContactSheet(const SheetLayout& layout, Font regular, Font bold)
    : layout_(layout), regular_(std::move(regular)), bold_(std::move(bold)) {
  sheet_.width = layout.sheet.width;
  sheet_.height = layout.sheet.height;
  sheet_.bytes.resize(sheet_.PixelCount() * 4);
  Fill(sheet_, {0, 0, static_cast<int>(sheet_.width), static_cast<int>(sheet_.height)}, kGround);
}

void ContactSheet::DrawHeading(const std::string& title, const std::string& subtitle) {
  const int width = static_cast<int>(sheet_.width) - 2 * kMargin;
  bold_.Draw(bold_.Set(title, kTitlePixels, width), kMargin, 52, kBright, sheet_);
  regular_.Draw(regular_.Set(subtitle, kSubtitlePixels, width), kMargin, 78, kDim, sheet_);
}

// The picture stands in the middle of its box, which it does not exceed; what is left shows the
// plate.
void ContactSheet::Place(std::size_t index, const Image& picture, const Mark& caption) {
  const auto width = static_cast<int>(layout_.box.width);
  const auto height = static_cast<int>(layout_.box.height);
  const int left = kMargin + static_cast<int>(index % layout_.columns) * (width + kGap);
  const int top = kHeading + static_cast<int>(index / layout_.columns) * (height + kCaption + kGap);
  const Area plate{left, top, width, height};
  Fill(sheet_, plate.Grown(caption.current ? kFrame : 1), caption.current ? kAccent : kEdge);
  Fill(sheet_, plate, kPlate);
  Copy(picture, left + (width - static_cast<int>(picture.width)) / 2,
       top + (height - static_cast<int>(picture.height)) / 2, sheet_);
  DrawCaption(left, top + height, caption);
}

// The mark of the current one takes its room first, the name is shortened to what is left.
void ContactSheet::DrawCaption(int left, int top, const Mark& caption) {
  int width = static_cast<int>(layout_.box.width);
  if (caption.current) {
    const TextLine tag = bold_.Set(kCurrent, kTagPixels, width);
    const Area pill{left + width - tag.width - 14, top + 13, tag.width + 14, 18};
    Fill(sheet_, pill, kAccent);
    bold_.Draw(tag, pill.left + 7, pill.top + 13, kOnAccent, sheet_);
    width -= pill.width + 10;
  }
  bold_.Draw(bold_.Set(caption.name, kNamePixels, width), left, top + 28, kText, sheet_);
  regular_.Draw(regular_.Set(caption.date, kDatePixels, width), left, top + 48, kDim, sheet_);
}

}  // namespace pictures
