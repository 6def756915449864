// Parameter numbers that the pictures of this program follow beyond those of host/Parameters.h: the
// pictures of a surface of metal and roughness, how a picture lies on a surface, and the size of a
// lamp. They are stored in scene files, in ranges of our own, so that who does not know them passes
// them over: never renumber. Where one is absent, the picture is what it was before there was one.
#pragma once

#include "host/Types.h"

namespace engine {

// Material (Mmaterial). Links to its shaders; the channels are those of glTF 2.0, section 3.9, and
// a gray picture has the same in all of them.
inline constexpr host::LONG kMaterialRoughnessShader = 91001;  // green, times the roughness
inline constexpr host::LONG kMaterialMetallicShader = 91002;   // blue, times the metallic share
inline constexpr host::LONG kMaterialOcclusionShader = 91003;  // red: what light around arrives
inline constexpr host::LONG kMaterialOcclusion = 91004;        // REAL, its strength, 1
inline constexpr host::LONG kMaterialNormalStrength = 91005;   // REAL, of the normal map, 1
// Link: its gray, times the opacity.
inline constexpr host::LONG kMaterialOpacityShader = 91006;
// REAL, 0: the share of the light that goes through the surface rather than into it.
inline constexpr host::LONG kMaterialTransmission = 91007;

// Bitmap shader (Xbitmap): u and v (growing downwards) of the surface are scaled, then turned
// anticlockwise, then moved.
inline constexpr host::LONG kBitmapOffset = 92001;    // vector, in u and v
inline constexpr host::LONG kBitmapTiles = 92002;     // vector, repetitions in u and v
inline constexpr host::LONG kBitmapRotation = 92003;  // REAL, radians
// LONG: what lies beyond the picture's edges, see TextureWrap
inline constexpr host::LONG kBitmapWrapU = 92004;
inline constexpr host::LONG kBitmapWrapV = 92005;
// BOOL: seen from near, each pixel is a square of one color, as it is meant for pictures of few
inline constexpr host::LONG kBitmapIsSharp = 92006;

// Light (Olight) with a place: REAL, the radius of what shines; 0: a point, with hard shadows.
inline constexpr host::LONG kLightRadius = 92101;

enum class TextureWrap : host::LONG { Repeat = 0, Clamp = 1, Mirror = 2 };

}  // namespace engine
