// The tag types that are recorded: the option that asks for each, the capture of its settings, and
// the keys of the compositing tag's fifty parameters. The numbers stand in scene files: never
// renumber.
#pragma once

#include <array>

#include "source/Stagemarks/Host.h"
#include "source/Stagemarks/keys/Options.h"

namespace stagemarks {

// Texture: the material link only. Compositing: fifty parameters renumbered. Generic: the whole
// data container.
enum class Capture { Texture, Compositing, Generic };

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

// The compositing tag's fifty parameters and the keys they are recorded under, in recorded order.
// Keys 60015 and 60016 belong to no parameter and stay unused.
//
// How a parameter is read: from the tag's data as a plain number, or as it comes from its parameter
// interface.
enum class Reading { Bool, Long, Real, Parameter };

struct CompositingRow {
  LONG parameter;
  Reading reading;
  LONG key;
};

inline constexpr std::array<CompositingRow, 50> kCompositing{{
    {1000, Reading::Bool, 60000},      {1001, Reading::Bool, 60001},
    {1002, Reading::Bool, 60002},      {1003, Reading::Bool, 60003},
    {1017, Reading::Bool, 60004},      {1004, Reading::Bool, 60006},
    {1005, Reading::Bool, 60011},      {1006, Reading::Long, 60012},
    {1007, Reading::Long, 60013},      {1016, Reading::Real, 60014},
    {1158, Reading::Bool, 60045},      {1151, Reading::Real, 60047},
    {1150, Reading::Real, 60046},      {1152, Reading::Real, 60048},
    {1154, Reading::Bool, 60049},      {1155, Reading::Bool, 60050},
    {1156, Reading::Bool, 60051},      {1010, Reading::Bool, 60019},
    {1011, Reading::Bool, 60020},      {1012, Reading::Bool, 60021},
    {1013, Reading::Bool, 60022},      {1014, Reading::Bool, 60023},
    {1015, Reading::Bool, 60024},      {1136, Reading::Bool, 60025},
    {1137, Reading::Bool, 60026},      {1138, Reading::Bool, 60027},
    {1139, Reading::Bool, 60028},      {1140, Reading::Bool, 60029},
    {1141, Reading::Bool, 60030},      {1110, Reading::Long, 60031},
    {1111, Reading::Long, 60032},      {1112, Reading::Long, 60033},
    {1113, Reading::Long, 60034},      {1114, Reading::Long, 60035},
    {1115, Reading::Long, 60036},      {1120, Reading::Long, 60037},
    {1121, Reading::Long, 60038},      {1122, Reading::Long, 60039},
    {1123, Reading::Long, 60040},      {1124, Reading::Long, 60041},
    {1125, Reading::Long, 60042},      {1126, Reading::Parameter, 60005},
    {1127, Reading::Parameter, 60007}, {1129, Reading::Parameter, 60008},
    {1128, Reading::Parameter, 60009}, {1142, Reading::Parameter, 60010},
    {1143, Reading::Parameter, 60017}, {1144, Reading::Parameter, 60018},
    {1131, Reading::Parameter, 60043}, {1130, Reading::Parameter, 60044},
}};

}  // namespace stagemarks
