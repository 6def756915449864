// Parameter numbers of the elements that the stand-in itself gives a meaning: cameras, lights,
// primitives, materials, bitmap shaders, tags. They are stored in scene files: never renumber.
// Colors are linear 0..1 per channel, lengths scene units, angles radians.
#pragma once

#include "host/Types.h"

namespace host {

// Camera (Ocamera): looks along +z of its frame.
inline constexpr LONG CAMERA_PROJECTION = 1001;  // LONG: 0 perspective, 1 parallel
inline constexpr LONG CAMERA_FOV = 1002;         // REAL, horizontal field of view
// REAL, vertical field of view, 0: follow the horizontal one and the picture
inline constexpr LONG CAMERA_FOV_VERTICAL = 1003;
// REAL, width of the picture of a parallel camera
inline constexpr LONG CAMERA_WIDTH = 1004;
inline constexpr LONG CAMERA_NEAR = 1005;  // REAL
inline constexpr LONG CAMERA_FAR = 1006;   // REAL, 0: no limit

// Light (Olight): shines along +z of its frame where it has a direction.
// LONG: 0 point, 1 spot, 2 sun (parallel rays), 3 area, 4 ambient
inline constexpr LONG LIGHT_TYPE = 90001;
inline constexpr LONG LIGHT_COLOR = 90002;        // vector
inline constexpr LONG LIGHT_BRIGHTNESS = 90003;   // REAL, 1 is a plain light
inline constexpr LONG LIGHT_SHADOW = 90004;       // LONG: 0 none, 1 ray-traced
inline constexpr LONG LIGHT_INNER_ANGLE = 90005;  // REAL, spot: full angle of the bright cone
inline constexpr LONG LIGHT_OUTER_ANGLE = 90006;  // REAL, spot: full angle where it ends
inline constexpr LONG LIGHT_RANGE = 90007;        // REAL, 0: no end

// Primitives, centered on their frame's origin, axis along y.
inline constexpr LONG PRIM_SIZE = 1100;  // vector: cube edge lengths
// REAL: sphere, cylinder, cone (bottom), torus (ring), disc
inline constexpr LONG PRIM_RADIUS = 1110;
inline constexpr LONG PRIM_RADIUS2 = 1111;   // REAL: torus (tube)
inline constexpr LONG PRIM_HEIGHT = 1112;    // REAL: cylinder, cone; plane: depth
inline constexpr LONG PRIM_WIDTH = 1113;     // REAL: plane
inline constexpr LONG PRIM_SEGMENTS = 1114;  // LONG: subdivisions around

// Material (Mmaterial).
inline constexpr LONG MATERIAL_COLOR = 2100;         // vector
inline constexpr LONG MATERIAL_COLOR_SHADER = 2102;  // link to one of its shaders, null: none
inline constexpr LONG MATERIAL_ALPHA = 2110;         // REAL, 1 is opaque
// LONG: 0 opaque, 1 cut at the cutoff, 2 blend
inline constexpr LONG MATERIAL_ALPHA_MODE = 2111;
inline constexpr LONG MATERIAL_ALPHA_CUTOFF = 2112;      // REAL
inline constexpr LONG MATERIAL_LUMINANCE = 2120;         // vector: emitted
inline constexpr LONG MATERIAL_LUMINANCE_SHADER = 2121;  // link
inline constexpr LONG MATERIAL_SPECULAR = 2130;          // REAL, 0..1
inline constexpr LONG MATERIAL_ROUGHNESS = 2131;         // REAL, 0..1
inline constexpr LONG MATERIAL_METALLIC = 2132;          // REAL, 0..1
inline constexpr LONG MATERIAL_NORMAL_SHADER = 2140;     // link
inline constexpr LONG MATERIAL_DOUBLE_SIDED = 2150;      // Bool

// Bitmap shader (Xbitmap).
inline constexpr LONG BITMAPSHADER_FILENAME = 1000;  // Filename
// Color shader (Xcolor).
inline constexpr LONG COLORSHADER_COLOR = 1000;  // vector

// Texture tag (Ttexture).
inline constexpr LONG TEXTURETAG_OFFSET = 1101;  // vector, in u and v
inline constexpr LONG TEXTURETAG_TILES = 1102;   // vector, repetitions in u and v, 0: once

// Compositing tag (Tcompositing): switches that the stand-in's renderer follows, all Bool, on by
// default.
inline constexpr LONG COMPOSITINGTAG_CASTSHADOW = 1000;
inline constexpr LONG COMPOSITINGTAG_RECEIVESHADOW = 1001;
inline constexpr LONG COMPOSITINGTAG_SEENBYCAMERA = 1002;

// Global illumination post effect (VPglobalillumination): its cache file.
inline constexpr LONG GI_USE_CACHE_FILE = 3803;  // LONG: 1 the cache is kept in a file
inline constexpr LONG GI_OWN_CACHE_FILE = 3809;  // LONG: 1 the file is the one named below
inline constexpr LONG GI_CACHE_FILENAME = 3810;  // Filename

}  // namespace host
