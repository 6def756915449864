// Position, angles and scale of an object's frame, each read and replaced by itself; what is not
// replaced stays, shear included. Angles are radians about X, Y and Z: first about Z, then X, then
// Y. A mirrored frame has a negative scale in X. Any thread.
#pragma once

#include "host/Math.h"

namespace engine {

host::Vector AnglesOf(const host::Matrix& frame);
host::Vector ScaleOf(const host::Matrix& frame);
host::Matrix WithAngles(const host::Matrix& frame, const host::Vector& angles);
// A scale of 0 becomes a tiny one, because the direction of the axis would be lost with its length.
host::Matrix WithScale(const host::Matrix& frame, const host::Vector& scale);

}  // namespace engine
