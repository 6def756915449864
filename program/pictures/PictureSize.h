// PictureSize: how large pictures of a scene are. Pure functions; those of a document on its
// thread, the others on any.
#pragma once

#include <cstdint>
#include <string>

#include "host/BaseDocument.h"

namespace pictures {

struct PictureSize {
  std::uint32_t width = 0;   // pixels
  std::uint32_t height = 0;  // pixels
};

// The largest size of the same shape that fits into `box`.
PictureSize FittedInto(const PictureSize& size, const PictureSize& box);
// The size in the active render settings, with 0 for a side that is no size.
PictureSize SizeOf(const host::BaseDocument& doc);
// The name of the scene's file without its suffix.
std::string SceneName(const host::BaseDocument& doc);

}  // namespace pictures
