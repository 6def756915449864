#include <algorithm>

#include "engine/editing/Field.h"
#include "engine/scene/PictureLimits.h"
#include "engine/scene/PictureParameters.h"
#include "host/BaseDocument.h"
#include "host/BaseMaterial.h"
#include "host/LayerObject.h"
#include "host/Parameters.h"
#include "host/RenderData.h"

namespace engine {

namespace {

using namespace host;
using Kind = FieldKind;

// Scene units: ten thousand kilometers.
constexpr double kFar = 1e9;
constexpr double kPi = 3.14159265358979323846;
constexpr auto kMostPixels = static_cast<double>(kLargestImageSide);

constexpr FieldChoice kModes[] = {{MODE_UNDEF, "Undefined"}, {MODE_ON, "On"}, {MODE_OFF, "Off"}};
constexpr FieldChoice kOnOff[] = {{1, "On"}, {0, "Off"}};
constexpr FieldChoice kProjections[] = {{0, "Perspective"}, {1, "Parallel"}};
constexpr FieldChoice kLightTypes[] = {
    {0, "Point"}, {1, "Spot"}, {2, "Sun"}, {3, "Area"}, {4, "Ambient"}};
constexpr FieldChoice kShadows[] = {{0, "None"}, {1, "Ray-traced"}};
constexpr FieldChoice kAlphaModes[] = {{0, "Opaque"}, {1, "Cut out"}, {2, "Blended"}};
constexpr FieldChoice kFrameRanges[] = {{0, "From - to"}, {1, "Current frame"}, {2, "All frames"}};

constexpr Field kName{kFieldName, "Name", Kind::Text};
constexpr Field kLayer{kFieldLayer, "Layer", Kind::Layer};

constexpr Field Number(LONG id, const char* label, double min = -kFar, double max = kFar,
                       double step = 1, const char* tip = "") {
  return {id, label, Kind::Real, min, max, step, "", tip};
}
constexpr Field Whole(LONG id, const char* label, double min, double max, const char* unit = "") {
  return {id, label, Kind::Whole, min, max, 1, unit};
}
constexpr Field Angle(LONG id, const char* label, double min, double max, const char* tip = "") {
  return {id, label, Kind::Angle, min, max, 1, "\u00b0", tip};
}
constexpr Field Percent(LONG id, const char* label, double max = 100, const char* tip = "") {
  return {id, label, Kind::Percent, 0, max, 5, " %", tip};
}
// Of a texture that may be missing.
constexpr Field Strength(LONG id, const char* label, double max) {
  return {id, label, Kind::Percent, 0, max, 5, " %", "Of the texture above.", {}, 1};
}
constexpr Field SwitchField(LONG id, const char* label, const char* tip = "") {
  return {id, label, Kind::Switch, 0, 1, 1, "", tip};
}
constexpr Field Choice(LONG id, const char* label, std::span<const FieldChoice> choices,
                       const char* tip = "") {
  return {id, label, Kind::Choice, 0, 0, 0, "", tip, choices};
}
constexpr Field Color(LONG id, const char* label, double max = 1) {
  return {id, label, Kind::Color, 0, max, 0.05};
}
constexpr Field Texture(LONG id, const char* label) {
  return {id,
          label,
          Kind::Texture,
          0,
          0,
          0,
          "",
          "A picture file. Without a folder it is looked for beside the scene and in its folder "
          "\"tex\"."};
}

constexpr Field kObject[] = {
    kName,
    kLayer,
    Choice(kFieldEditorMode, "Editor mode", kModes,
           "Shown in the editor view. Undefined follows the parent."),
    Choice(kFieldRenderMode, "Render mode", kModes,
           "Shown in rendered pictures. Undefined follows the parent."),
    Choice(kFieldDeformMode, "Deform mode", kOnOff, "Off switches a generator or deformer off."),
};
constexpr Field kCoordinates[] = {
    {kFieldPosition, "Position", Kind::Vector, -kFar, kFar, 1, "", "Relative to the parent."},
    {kFieldRotation, "Rotation", Kind::Angles, -36000, 36000, 1, "\u00b0",
     "About the axes X, Y and Z, relative to the parent."},
    {kFieldScale, "Scale", Kind::Vector, -1e6, 1e6, 0.1, "", "Relative to the parent."},
};
constexpr Field kCamera[] = {
    Choice(CAMERA_PROJECTION, "Projection", kProjections),
    Angle(CAMERA_FOV, "Field of view", 0.1, 177, "Horizontal, of a perspective camera."),
    Angle(CAMERA_FOV_VERTICAL, "Vertical field", 0, 177,
          "0 follows the horizontal one and the shape of the picture."),
    Number(CAMERA_WIDTH, "Width", 0.001, kFar, 10, "Of the picture of a parallel camera."),
    Number(CAMERA_NEAR, "Near", 0, kFar, 1, "What is nearer is not shown."),
    Number(CAMERA_FAR, "Far", 0, kFar, 10, "What is farther is not shown. 0: no limit."),
};
constexpr Field kLight[] = {
    Choice(LIGHT_TYPE, "Type", kLightTypes),
    Color(LIGHT_COLOR, "Color"),
    Percent(LIGHT_BRIGHTNESS, "Brightness", 1e6),
    Choice(LIGHT_SHADOW, "Shadow", kShadows),
    Angle(LIGHT_INNER_ANGLE, "Inner angle", 0, 180, "Of a spot: the bright cone."),
    Angle(LIGHT_OUTER_ANGLE, "Outer angle", 0, 180, "Of a spot: where its light ends."),
    Number(LIGHT_RANGE, "Range", 0, kFar, 10, "0: no end."),
    Number(kLightRadius, "Radius", 0, kFar, 1, "Of what shines: shadows are soft. 0: a point."),
};
constexpr Field kRadius = Number(PRIM_RADIUS, "Radius", 0);
constexpr Field kHeight = Number(PRIM_HEIGHT, "Height", 0);
constexpr Field kSegments = Whole(PRIM_SEGMENTS, "Segments", 3, 1000);
constexpr Field kCube[] = {{PRIM_SIZE, "Size", Kind::Vector, 0, kFar, 1}};
constexpr Field kRound[] = {kRadius, kSegments};
constexpr Field kTall[] = {kRadius, kHeight, kSegments};
constexpr Field kTorus[] = {kRadius, Number(PRIM_RADIUS2, "Tube radius", 0), kSegments};
constexpr Field kPlane[] = {Number(PRIM_WIDTH, "Width", 0), Number(PRIM_HEIGHT, "Depth", 0),
                            kSegments};

constexpr Field kNamed[] = {kName, kLayer};
constexpr Field kTextureTag[] = {
    {kFieldTagMaterial, "Material", Kind::Material},
    {TEXTURETAG_OFFSET, "Offset", Kind::Pair, -kFar, kFar, 0.1, "",
     "In U and V; 1 is the whole picture."},
    {TEXTURETAG_TILES, "Tiles", Kind::Pair, 0, 1e6, 1, "", "Repetitions in U and V. 0: once."},
};
constexpr Field kCompositing[] = {
    SwitchField(COMPOSITINGTAG_CASTSHADOW, "Cast shadows"),
    SwitchField(COMPOSITINGTAG_RECEIVESHADOW, "Receive shadows"),
    SwitchField(COMPOSITINGTAG_SEENBYCAMERA, "Seen by camera"),
};
// The plug-in records fifty parameters of a compositing tag, three of which mean something to the
// pictures here. Others can be seen and set, too, so that what a Stagemark brings back can be
// checked.
constexpr const char* kByNumber =
    "Recorded and recalled under this number; the picture here does not follow it.";
constexpr Field KeptSwitch(LONG id, const char* label) { return SwitchField(id, label, kByNumber); }
constexpr Field KeptWhole(LONG id, const char* label) {
  return {id, label, Kind::Whole, -2147483648.0, 2147483647.0, 1, "", kByNumber};
}
constexpr Field KeptReal(LONG id, const char* label) {
  return Number(id, label, -kFar, kFar, 0.1, kByNumber);
}
constexpr Field kCompositingRest[] = {
    KeptSwitch(1003, "Switch 1003"), KeptSwitch(1017, "Switch 1017"),
    KeptSwitch(1004, "Switch 1004"), KeptSwitch(1005, "Switch 1005"),
    KeptSwitch(1158, "Switch 1158"), KeptSwitch(1154, "Switch 1154"),
    KeptSwitch(1155, "Switch 1155"), KeptSwitch(1156, "Switch 1156"),
    KeptSwitch(1010, "Switch 1010"), KeptSwitch(1011, "Switch 1011"),
    KeptSwitch(1012, "Switch 1012"), KeptSwitch(1013, "Switch 1013"),
    KeptSwitch(1014, "Switch 1014"), KeptSwitch(1015, "Switch 1015"),
    KeptSwitch(1136, "Switch 1136"), KeptSwitch(1137, "Switch 1137"),
    KeptSwitch(1138, "Switch 1138"), KeptSwitch(1139, "Switch 1139"),
    KeptSwitch(1140, "Switch 1140"), KeptSwitch(1141, "Switch 1141"),
    KeptWhole(1006, "Number 1006"),  KeptWhole(1007, "Number 1007"),
    KeptWhole(1110, "Number 1110"),  KeptWhole(1111, "Number 1111"),
    KeptWhole(1112, "Number 1112"),  KeptWhole(1113, "Number 1113"),
    KeptWhole(1114, "Number 1114"),  KeptWhole(1115, "Number 1115"),
    KeptWhole(1120, "Number 1120"),  KeptWhole(1121, "Number 1121"),
    KeptWhole(1122, "Number 1122"),  KeptWhole(1123, "Number 1123"),
    KeptWhole(1124, "Number 1124"),  KeptWhole(1125, "Number 1125"),
    KeptReal(1016, "Number 1016"),   KeptReal(1150, "Number 1150"),
    KeptReal(1151, "Number 1151"),   KeptReal(1152, "Number 1152"),
};

constexpr Field kMaterialColor[] = {Color(MATERIAL_COLOR, "Color"),
                                    Texture(MATERIAL_COLOR_SHADER, "Texture")};
constexpr Field kMaterialLuminance[] = {Color(MATERIAL_LUMINANCE, "Color", 1e4),
                                        Texture(MATERIAL_LUMINANCE_SHADER, "Texture")};
constexpr Field kMaterialSurface[] = {
    Percent(MATERIAL_SPECULAR, "Specular"),
    Percent(MATERIAL_ROUGHNESS, "Roughness"),
    Texture(kMaterialRoughnessShader, "Rough texture"),
    Percent(MATERIAL_METALLIC, "Metallic"),
    Texture(kMaterialMetallicShader, "Metal texture"),
    Texture(MATERIAL_NORMAL_SHADER, "Normals"),
    Strength(kMaterialNormalStrength, "Strength", 1000),
    Texture(kMaterialOcclusionShader, "Occlusion"),
    Strength(kMaterialOcclusion, "Strength", 100),
    SwitchField(MATERIAL_DOUBLE_SIDED, "Both sides", "Off shows the front of a face only."),
};
constexpr Field kMaterialOpacity[] = {
    Choice(MATERIAL_ALPHA_MODE, "Mode", kAlphaModes),
    Percent(MATERIAL_ALPHA, "Opacity"),
    Texture(kMaterialOpacityShader, "Texture"),
    Percent(MATERIAL_ALPHA_CUTOFF, "Cutoff", 100,
            "Of a cut-out material: what is less opaque is not shown."),
};

constexpr Field kLayerFlags[] = {
    {kFieldLayerColor, "Color", Kind::ScreenColor, 0, 1, 0.05},
    SwitchField(kFieldLayerFlags, "Solo",
                "While any layer is solo, only objects on solo layers are shown."),
    SwitchField(kFieldLayerFlags - 1, "View"),
    SwitchField(kFieldLayerFlags - 2, "Render"),
    SwitchField(kFieldLayerFlags - 3, "Manager"),
    SwitchField(kFieldLayerFlags - 4, "Locked"),
    SwitchField(kFieldLayerFlags - 5, "Generators"),
    SwitchField(kFieldLayerFlags - 6, "Deformers"),
    SwitchField(kFieldLayerFlags - 7, "Expressions"),
    SwitchField(kFieldLayerFlags - 8, "Animation"),
};
constexpr Field kOnlyName[] = {kName};

constexpr Field kOutput[] = {
    kName,
    Whole(RDATA_XRES, "Width", 1, kMostPixels, " px"),
    Whole(RDATA_YRES, "Height", 1, kMostPixels, " px"),
    Choice(RDATA_FRAMESEQUENCE, "Frames", kFrameRanges),
    {RDATA_FRAMEFROM, "From", Kind::Frame, -1e6, 1e6, 1},
    {RDATA_FRAMETO, "To", Kind::Frame, -1e6, 1e6, 1},
    {RDATA_FRAMERATE, "Frame rate", Kind::Whole, 1, 1000, 1, " fps",
     "The times stay as they are; their frames are counted anew."},
};
constexpr Field kSaving[] = {SwitchField(5076, "Save alpha"), SwitchField(5202, "Save multi-pass")};
constexpr Field kIllumination[] = {
    SwitchField(GI_USE_CACHE_FILE, "Keep a cache"),
    SwitchField(GI_OWN_CACHE_FILE, "Own cache file"),
    {GI_CACHE_FILENAME, "Cache file", Kind::File},
};
constexpr Field kInUse = SwitchField(kFieldInUse, "In use");

constexpr Field kDocument[] = {
    {kFieldSceneCamera, "Camera", Kind::Camera, 0, 0, 0, "",
     "What the picture is rendered through."},
    {kFieldActiveSettings, "Render settings", Kind::Settings},
    Whole(kFieldFps, "Frame rate", 1, 1000, " fps"),
};

constexpr FieldSection kSections[] = {
    {Obase, "Basic", kObject},
    {Obase, "Coordinates", kCoordinates},
    {Ocamera, "Camera", kCamera},
    {Olight, "Light", kLight},
    {Ocube, "Cube", kCube},
    {Osphere, "Sphere", kRound},
    {Odisc, "Disc", kRound},
    {Ocone, "Cone", kTall},
    {Ocylinder, "Cylinder", kTall},
    {Otorus, "Torus", kTorus},
    {Oplane, "Plane", kPlane},
    {Tbase, "Basic", kNamed},
    {Ttexture, "Texture", kTextureTag},
    {Tcompositing, "Compositing", kCompositing},
    {Tcompositing, "Other Recorded Values", kCompositingRest, true},
    {Mbase, "Basic", kNamed},
    {Mmaterial, "Color", kMaterialColor},
    {Mmaterial, "Luminance", kMaterialLuminance},
    {Mmaterial, "Surface", kMaterialSurface},
    {Mmaterial, "Opacity", kMaterialOpacity},
    {Olayer, "Basic", kOnlyName},
    {Olayer, "Layer", kLayerFlags},
    {Rbase, "Output", kOutput},
    {Rbase, "Saving", kSaving},
    {VPglobalillumination, "Global Illumination", kIllumination},
    {Tbasedocument, "Document", kDocument},
};

}  // namespace

std::span<const FieldSection> FieldSections() { return kSections; }
const Field& InUseField() { return kInUse; }
const Field& SceneCameraField() { return kDocument[0]; }

bool IsColor(FieldKind kind) { return kind == Kind::Color || kind == Kind::ScreenColor; }

bool IsOfParts(FieldKind kind) {
  return kind == Kind::Vector || kind == Kind::Angles || kind == Kind::Pair || IsColor(kind);
}

int PartsOf(FieldKind kind) { return !IsOfParts(kind) ? 1 : kind == Kind::Pair ? 2 : 3; }

double ShownPerKept(FieldKind kind) {
  if (kind == Kind::Angle || kind == Kind::Angles) return 180 / kPi;
  return kind == Kind::Percent ? 100 : 1;
}

}  // namespace engine
