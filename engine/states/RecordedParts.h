// RecordedParts: the twelve kinds of things that a Stagemark can hold, one for each option of the
// dialog, and how the records of each are laid out. The numbers stand in scenes for ever; a test
// holds them against the plug-in's own. Plain data; any thread.
#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <string_view>

#include "host/BaseTag.h"

namespace engine {

// In the order in which a person reads about them.
enum class Part : std::uint8_t {
  RenderSettings,
  Camera,
  Objects,
  Layers,
  Materials,  // of texture tags
  CompositingTags,
  SketchRenderTags,
  SketchStyleTags,
  VRayCompositingTags,
  VRayPhysicalCameraTags,
  VRayCameraDomeTags,
  MentalRayCameraTags,
};
inline constexpr std::size_t kParts = 12;
using Parts = std::bitset<kParts>;
constexpr std::size_t IndexOf(Part part) { return static_cast<std::size_t>(part); }
inline Parts AllParts() { return Parts().set(); }

struct PartRow {
  Part part;
  host::LONG option;   // of the dialog, which is also its key among a scene's options
  const char* label;   // of that option
  const char* word;    // for the command line
  host::LONG tagType;  // of the tags that belong to it, 0 for none
};
inline constexpr std::array<PartRow, kParts> kPartRows{{
    {Part::RenderSettings, 10016, "Render Settings", "render-settings", 0},
    {Part::Camera, 10018, "Active Camera", "camera", 0},
    {Part::Objects, 10019, "Objects", "objects", 0},
    {Part::Layers, 10017, "Layers", "layers", 0},
    {Part::Materials, 10020, "Materials", "materials", host::Ttexture},
    {Part::CompositingTags, 10021, "Compositing Tags", "compositing", host::Tcompositing},
    {Part::SketchRenderTags, 10054, "Sketch Render Tags", "render-tags", 1011961},
    {Part::SketchStyleTags, 10055, "Sketch Style Tags", "style", 1011012},
    {Part::VRayCompositingTags, 10056, "VRay Compositing Tags", "vray-compositing", 1021738},
    {Part::VRayPhysicalCameraTags, 10057, "VRay Physical Camera Tags", "vray-physical-camera",
     1020898},
    {Part::VRayCameraDomeTags, 10058, "VRay Camera Dome Tags", "vray-camera-dome", 1021891},
    {Part::MentalRayCameraTags, 10059, "Mental Ray Camera Tags", "mental-ray-camera", 1025604},
}};
constexpr const PartRow& RowOf(Part part) { return kPartRows[IndexOf(part)]; }

// Null for a tag type that is not recorded, or a label that is no option's.
constexpr const PartRow* FindPartOfTag(host::LONG type) {
  for (const PartRow& row : kPartRows) {
    if (row.tagType == type && type != 0) return &row;
  }
  return nullptr;
}
constexpr const PartRow* FindPartByLabel(std::string_view label) {
  for (const PartRow& row : kPartRows) {
    if (row.label == label) return &row;
  }
  return nullptr;
}

// The compositing tag's fifty parameters in the order in which they are recorded, and the keys they
// are recorded under.
struct CompositingParameter {
  host::LONG parameter;
  host::LONG key;
};
inline constexpr std::array<CompositingParameter, 50> kCompositingParameters{{
    {1000, 60000}, {1001, 60001}, {1002, 60002}, {1003, 60003}, {1017, 60004}, {1004, 60006},
    {1005, 60011}, {1006, 60012}, {1007, 60013}, {1016, 60014}, {1158, 60045}, {1151, 60047},
    {1150, 60046}, {1152, 60048}, {1154, 60049}, {1155, 60050}, {1156, 60051}, {1010, 60019},
    {1011, 60020}, {1012, 60021}, {1013, 60022}, {1014, 60023}, {1015, 60024}, {1136, 60025},
    {1137, 60026}, {1138, 60027}, {1139, 60028}, {1140, 60029}, {1141, 60030}, {1110, 60031},
    {1111, 60032}, {1112, 60033}, {1113, 60034}, {1114, 60035}, {1115, 60036}, {1120, 60037},
    {1121, 60038}, {1122, 60039}, {1123, 60040}, {1124, 60041}, {1125, 60042}, {1126, 60005},
    {1127, 60007}, {1129, 60008}, {1128, 60009}, {1142, 60010}, {1143, 60017}, {1144, 60018},
    {1131, 60043}, {1130, 60044},
}};

}  // namespace engine
