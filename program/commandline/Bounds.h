// Bounds: the box around everything that has geometry, in world space. For cameras that frame a scene. Main thread.
#pragma once

#include "host/Host.h"

namespace commandline {

struct Bounds {
  host::Vector centre;
  double radius = 0;  // half the diagonal, 0 without geometry
};

// O(points). Points that are no numbers are left out.
Bounds BoundsOf(const host::BaseDocument& doc);

// A place to see all of it from: `turn` radians around the vertical axis, 0 from the front, a little above.
host::Vector ViewPoint(const Bounds& bounds, double turn);

}  // namespace commandline
