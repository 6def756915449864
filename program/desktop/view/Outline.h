// The line around what is selected in a picture. Pure functions, any thread.
#pragma once

#include <QImage>

#include "engine/render/HitMap.h"

namespace desktop {

// A transparent image of the map's size with a thin line outside of the pixels whose instance
// `marks` has a 1 for; a null image where there is none. `marks` belongs to the scene of the map.
QImage OutlineImage(const engine::HitMap& hits, const std::vector<std::uint8_t>& marks,
                    double scale = 1);

}  // namespace desktop
