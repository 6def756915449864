// The nine switches of a layer as one number, bit 0 the first; stored in scene files. Any thread.
#pragma once

#include <cstdint>

#include "host/LayerObject.h"

namespace engine::scenefile {

inline constexpr host::Bool host::LayerData::*kLayerSwitches[] = {
    &host::LayerData::solo,      &host::LayerData::view,        &host::LayerData::render,
    &host::LayerData::manager,   &host::LayerData::locked,      &host::LayerData::generators,
    &host::LayerData::deformers, &host::LayerData::expressions, &host::LayerData::animation};

inline std::uint64_t SwitchesOf(const host::LayerData& layer) {
  std::uint64_t bits = 0;
  for (unsigned i = 0; i < std::size(kLayerSwitches); ++i)
    if (layer.*kLayerSwitches[i]) bits |= std::uint64_t{1} << i;
  return bits;
}

inline host::LayerData LayerWith(std::uint64_t switches, const host::Vector& color) {
  host::LayerData layer;
  for (unsigned i = 0; i < std::size(kLayerSwitches); ++i)
    layer.*kLayerSwitches[i] = (switches >> i & 1) != 0;
  layer.color = color;
  return layer;
}

}  // namespace engine::scenefile
