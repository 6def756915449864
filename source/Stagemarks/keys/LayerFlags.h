// The nine flags of a layer and the keys of a layer record that hold them, in the host's order.
// Scenes hold these keys.
#pragma once

#include <array>

#include "source/Stagemarks/Host.h"

namespace stagemarks {

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
