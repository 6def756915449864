// The twelve options that choose what is recorded and recalled. Their order here is the order of
// the dialog's flags, of the stored choices and of the menu.
#pragma once

#include <array>

#include "source/Stagemarks/Host.h"

namespace stagemarks {

enum class Option : LONG {
  Objects,
  Layers,
  RenderSettings,
  ActiveCamera,
  Materials,
  CompositingTags,
  SketchRenderTags,
  SketchStyleTags,
  VRayCompositingTags,
  VRayPhysicalCameraTags,
  VRayCameraDomeTags,
  MentalRayCameraTags,
};

// An option's menu entry, which is also its key in the stored choices.
struct OptionRow {
  Option option;
  LONG id;
  const CHAR* label;
};

inline constexpr std::array<OptionRow, 12> kOptions{{
    {Option::Objects, 10019, "Objects"},
    {Option::Layers, 10017, "Layers"},
    {Option::RenderSettings, 10016, "Render Settings"},
    {Option::ActiveCamera, 10018, "Active Camera"},
    {Option::Materials, 10020, "Materials"},
    {Option::CompositingTags, 10021, "Compositing Tags"},
    {Option::SketchRenderTags, 10054, "Sketch Render Tags"},
    {Option::SketchStyleTags, 10055, "Sketch Style Tags"},
    {Option::VRayCompositingTags, 10056, "VRay Compositing Tags"},
    {Option::VRayPhysicalCameraTags, 10057, "VRay Physical Camera Tags"},
    {Option::VRayCameraDomeTags, 10058, "VRay Camera Dome Tags"},
    {Option::MentalRayCameraTags, 10059, "Mental Ray Camera Tags"},
}};

// Key beside the options: the container holds a choice.
inline constexpr LONG kChoiceSaved = 10061;

constexpr std::size_t IndexOf(Option option) { return static_cast<std::size_t>(option); }

// The row of a menu entry, null for one that is no option.
constexpr const OptionRow* FindOption(LONG id) {
  for (const OptionRow& row : kOptions) {
    if (row.id == id) return &row;
  }
  return nullptr;
}

}  // namespace stagemarks
