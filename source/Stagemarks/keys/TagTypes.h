// The tag types whose settings are recorded: which option asks for them and how they are captured.
// A tag has one type, so recording, recall and bulk edits find their row here whatever order they
// name the types in.
#pragma once

#include <array>

#include "source/Stagemarks/keys/Options.h"

namespace stagemarks {

// Texture: the material link only. Compositing: fifty parameters renumbered. Generic: the whole
// data container.
enum class Capture { Texture, Compositing, Generic };
inline constexpr std::size_t kCaptures = 3;

struct TagTypeRow {
  LONG type;
  Option option;
  Capture capture;
};

inline constexpr std::array<TagTypeRow, 8> kTagTypes{{
    {Ttexture, Option::Materials, Capture::Texture},
    {Tcompositing, Option::CompositingTags, Capture::Compositing},
    {1021738, Option::VRayCompositingTags, Capture::Generic},
    {1020898, Option::VRayPhysicalCameraTags, Capture::Generic},
    {1021891, Option::VRayCameraDomeTags, Capture::Generic},
    {1025604, Option::MentalRayCameraTags, Capture::Generic},
    {1011012, Option::SketchStyleTags, Capture::Generic},
    {1011961, Option::SketchRenderTags, Capture::Generic},
}};

// The row of a tag type, null for one that is not recorded.
constexpr const TagTypeRow* FindTagType(LONG type) {
  for (const TagTypeRow& row : kTagTypes) {
    if (row.type == type) return &row;
  }
  return nullptr;
}

}  // namespace stagemarks
