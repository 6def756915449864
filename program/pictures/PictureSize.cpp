#include "program/pictures/PictureSize.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "host/RenderData.h"

namespace pictures {

namespace {

std::uint32_t Side(host::LONG pixels) {
  return static_cast<std::uint32_t>(std::max<host::LONG>(0, pixels));
}

std::uint32_t Scaled(std::uint32_t side, double scale) {
  return static_cast<std::uint32_t>(std::max(1.0, std::round(static_cast<double>(side) * scale)));
}

}  // namespace

// Rounding may give a side one pixel too many, hence the bound. No side becomes 0.
PictureSize FittedInto(const PictureSize& size, const PictureSize& box) {
  if (size.width == 0 || size.height == 0) return box;
  const double scale = std::min(static_cast<double>(box.width) / size.width,
                                static_cast<double>(box.height) / size.height);
  return {std::min(box.width, Scaled(size.width, scale)),
          std::min(box.height, Scaled(size.height, scale))};
}

PictureSize SizeOf(const host::BaseDocument& doc) {
  const host::BaseContainer& settings = *doc.GetActiveRenderData()->GetDataInstance();
  return {Side(settings.GetLong(host::RDATA_XRES)), Side(settings.GetLong(host::RDATA_YRES))};
}

std::string SceneName(const host::BaseDocument& doc) {
  return std::filesystem::path(doc.GetDocumentName().GetString().ToUtf8()).stem().string();
}

}  // namespace pictures
