// Axes: from the importers' right-handed frames (Y up, looking along -z) to the scene's left-handed
// ones. z is mirrored and lengths are scaled: a frame M becomes S M S with S = diag(1, 1, -1), so
// that whole hierarchies keep their sense.
#pragma once

#include <assimp/matrix4x4.h>
#include <assimp/vector3.h>

#include "host/Math.h"

namespace engine {

// Lengths and places in the file are taken times `scale` (scene units per unit of the file).
host::Matrix ConvertFrame(const aiMatrix4x4& frame, double scale);
// The frame whose z axis looks along `look` and whose y axis is as near to `up` as it can be; both
// in the file's axes.
host::Matrix FrameLooking(const aiVector3D& look, const aiVector3D& up);

// `outer` after `inner`: a place in inner's frame goes to outer's parent.
host::Matrix Product(const host::Matrix& outer, const host::Matrix& inner);
// The frame with axes of length 1; an axis of length 0 stays.
host::Matrix WithoutScale(const host::Matrix& frame);
// The common length of the axes, or 0 where they differ by more than a thousandth.
double UniformScale(const aiMatrix4x4& frame);
// True when all numbers are finite.
bool IsFinite(const host::Matrix& frame);

}  // namespace engine
