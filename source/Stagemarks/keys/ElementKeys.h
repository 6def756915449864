// Keys inside an element's record and its list entry. They stand in scene files: never renumber.
#pragma once

#include <array>

#include "source/Stagemarks/Host.h"

namespace stagemarks {

// Element record: the parts in the order in which a recording writes them; the list entry holds
// name, date and current flag. Element IDs count from 0; a record's own ID is its element ID.
inline constexpr LONG kName = 20000;
inline constexpr LONG kDate = 20002;
// Entry of the list store itself: its entries were built from the records once.
inline constexpr LONG kListBuilt = 20003;
inline constexpr LONG kRender = 25000;  // container, and inside it the link to the recorded copy
inline constexpr LONG kLayers = 25003;
inline constexpr LONG kCamera = 25004;
inline constexpr LONG kObjects = 25005;
inline constexpr LONG kTags = 25006;
inline constexpr LONG kCurrent = 25007;
inline constexpr LONG kRenderLink = 25000;

// Date and time of recording, all LONG.
inline constexpr LONG kYear = 25008;
inline constexpr LONG kMonth = 25009;
inline constexpr LONG kDay = 25010;
inline constexpr LONG kHour = 25011;
inline constexpr LONG kMinute = 25012;
inline constexpr LONG kSecond = 25013;

// Object record.
inline constexpr LONG kObjectLink = 30000;
inline constexpr LONG kEditorMode = 30001;
inline constexpr LONG kRenderMode = 30002;
inline constexpr LONG kDeformMode = 30003;

// Tag record: the link beside the captured settings; a texture tag's only setting.
inline constexpr LONG kTagLink = 40000;
inline constexpr LONG kMaterialLink = 50000;

inline constexpr LONG kCameraLink = 70000;

// Layer record.
inline constexpr LONG kLayerLink = 80000;

// A layer's nine flags and their keys, in the host's order.
struct LayerFlagRow {
  LONG key;
  Bool LayerData::*flag;
};

inline constexpr std::array<LayerFlagRow, 9> kLayerFlags{{
    {80001, &LayerData::solo},
    {80002, &LayerData::view},
    {80003, &LayerData::render},
    {80004, &LayerData::manager},
    {80005, &LayerData::locked},
    {80006, &LayerData::generators},
    {80007, &LayerData::deformers},
    {80008, &LayerData::expressions},
    {80009, &LayerData::animation},
}};

}  // namespace stagemarks
