// Besides the kinds and names of types, the parameters that their elements start with.
#include "engine/scene/NodeTypes.h"

#include <unordered_map>

#include "engine/scene/NodeFactory.h"
#include "host/Parameters.h"

namespace engine {

using host::BaseContainer;
using host::LONG;
using host::String;
using host::Vector;

namespace {

// Angles are kept in radians.
constexpr double kDegree = 3.14159265358979323846 / 180;

struct TypeRow {
  LONG type;
  const char* name;
};

// Type numbers are unique over all classes.
constexpr TypeRow kTypes[] = {
    {host::Onull, "Null"},
    {host::Opolygon, "Polygon"},
    {host::Ocamera, "Camera"},
    {host::Olight, "Light"},
    {host::Ocube, "Cube"},
    {host::Osphere, "Sphere"},
    {host::Ocone, "Cone"},
    {host::Otorus, "Torus"},
    {host::Odisc, "Disc"},
    {host::Oplane, "Plane"},
    {host::Ocylinder, "Cylinder"},
    {host::Ttexture, "Texture"},
    {host::Tcompositing, "Compositing"},
    {host::Texpresso, "XPresso"},
    {host::Tphong, "Phong"},
    {host::Mmaterial, "Material"},
    {host::Xbitmap, "Bitmap"},
    {host::Xcolor, "Color"},
    {host::Xlayer, "Layer"},
    {host::Xfusion, "Fusion"},
    {host::Olayer, "Layer"},
    {host::Rbase, "Render Settings"},
    {host::VPglobalillumination, "Global Illumination"},
    {host::Zmultipass, "Multi-Pass"},
    {host::GVbase, "Node"},
    {host::Tbasedocument, "Document"},
};

// Never destroyed: nodes are made and named until the program ends, and what is static ends in no
// certain order.
const std::unordered_map<LONG, String>& TypeNames() {
  static const auto* const names = [] {
    auto* map = new std::unordered_map<LONG, String>;
    for (const TypeRow& row : kTypes) map->emplace(row.type, String(row.name));
    return map;
  }();
  return *names;
}

BaseContainer CameraData() {
  BaseContainer data;
  data.SetLong(host::CAMERA_PROJECTION, 0);
  // A lens as long as its film is wide: twice the arc tangent of a half.
  data.SetReal(host::CAMERA_FOV, 53.13 * kDegree);
  data.SetReal(host::CAMERA_FOV_VERTICAL, 0);
  data.SetReal(host::CAMERA_WIDTH, 1000);
  data.SetReal(host::CAMERA_NEAR, 1);
  data.SetReal(host::CAMERA_FAR, 0);
  return data;
}

BaseContainer LightData() {
  BaseContainer data;
  data.SetLong(host::LIGHT_TYPE, 0);
  data.SetVector(host::LIGHT_COLOR, Vector(1));
  data.SetReal(host::LIGHT_BRIGHTNESS, 1);
  data.SetLong(host::LIGHT_SHADOW, 0);
  data.SetReal(host::LIGHT_INNER_ANGLE, 30 * kDegree);
  data.SetReal(host::LIGHT_OUTER_ANGLE, 45 * kDegree);
  data.SetReal(host::LIGHT_RANGE, 0);
  return data;
}

// Sizes in scene units; 0 leaves a parameter out.
BaseContainer PrimitiveData(double radius, double radius2, double height, double width) {
  BaseContainer data;
  if (radius > 0) data.SetReal(host::PRIM_RADIUS, radius);
  if (radius2 > 0) data.SetReal(host::PRIM_RADIUS2, radius2);
  if (height > 0) data.SetReal(host::PRIM_HEIGHT, height);
  if (width > 0) data.SetReal(host::PRIM_WIDTH, width);
  data.SetLong(host::PRIM_SEGMENTS, 36);
  return data;
}

BaseContainer CubeData() {
  BaseContainer data;
  data.SetVector(host::PRIM_SIZE, Vector(200));
  return data;
}

BaseContainer MaterialData() {
  BaseContainer data;
  data.SetVector(host::MATERIAL_COLOR, Vector(0.8));
  data.SetReal(host::MATERIAL_ALPHA, 1);
  data.SetLong(host::MATERIAL_ALPHA_MODE, 0);
  data.SetReal(host::MATERIAL_ALPHA_CUTOFF, 0.5);
  data.SetVector(host::MATERIAL_LUMINANCE, Vector(0));
  data.SetReal(host::MATERIAL_SPECULAR, 0.5);
  data.SetReal(host::MATERIAL_ROUGHNESS, 0.5);
  data.SetReal(host::MATERIAL_METALLIC, 0);
  data.SetBool(host::MATERIAL_DOUBLE_SIDED, true);
  return data;
}

BaseContainer TextureTagData() {
  BaseContainer data;
  data.SetVector(host::TEXTURETAG_OFFSET, Vector(0));
  data.SetVector(host::TEXTURETAG_TILES, Vector(1, 1, 0));
  return data;
}

// A parameter that is not among them reads as 0.
BaseContainer CompositingData() {
  BaseContainer data;
  data.SetBool(host::COMPOSITINGTAG_CASTSHADOW, true);
  data.SetBool(host::COMPOSITINGTAG_RECEIVESHADOW, true);
  data.SetBool(host::COMPOSITINGTAG_SEENBYCAMERA, true);
  for (LONG seenBy : {1003, 1017, 1004}) data.SetBool(seenBy, true);
  data.SetBool(1005, false);
  data.SetLong(1006, 3);
  data.SetLong(1007, 16);
  data.SetReal(1016, 0.1);
  return data;
}

BaseContainer RenderSettingsData() {
  constexpr LONG kSaveAlpha = 5076;
  constexpr LONG kMultipass = 5202;
  constexpr LONG kRenderEngine = 5300;
  BaseContainer data;
  data.SetLong(host::RDATA_XRES, 1280);
  data.SetLong(host::RDATA_YRES, 720);
  data.SetLong(host::RDATA_FRAMESEQUENCE, 1);
  data.SetTime(host::RDATA_FRAMEFROM, host::BaseTime(0, 30));
  data.SetTime(host::RDATA_FRAMETO, host::BaseTime(90, 30));
  data.SetLong(host::RDATA_FRAMERATE, 30);
  data.SetLong(kSaveAlpha, 0);
  data.SetLong(kMultipass, 0);
  data.SetLong(kRenderEngine, 0);
  return data;
}

BaseContainer ColorShaderData() {
  BaseContainer data;
  data.SetVector(host::COLORSHADER_COLOR, Vector(1));
  return data;
}

// New elements of a type share one container until something is written into it.
const std::unordered_map<LONG, BaseContainer>& Defaults() {
  static const auto* const defaults = new std::unordered_map<LONG, BaseContainer>{
      {host::Ocamera, CameraData()},
      {host::Olight, LightData()},
      {host::Ocube, CubeData()},
      {host::Osphere, PrimitiveData(100, 0, 0, 0)},
      {host::Ocone, PrimitiveData(100, 0, 200, 0)},
      {host::Otorus, PrimitiveData(100, 30, 0, 0)},
      {host::Odisc, PrimitiveData(100, 0, 0, 0)},
      {host::Oplane, PrimitiveData(0, 0, 400, 400)},
      {host::Ocylinder, PrimitiveData(50, 0, 200, 0)},
      {host::Mmaterial, MaterialData()},
      {host::Ttexture, TextureTagData()},
      {host::Tcompositing, CompositingData()},
      {host::Rbase, RenderSettingsData()},
      {host::Xcolor, ColorShaderData()},
  };
  return *defaults;
}

}  // namespace

String TypeName(LONG type) {
  static const auto* const unknown = new String("Unknown");
  const auto found = TypeNames().find(type);
  return found == TypeNames().end() ? *unknown : found->second;
}

bool IsKnownType(LONG type) { return TypeNames().count(type) == 1; }

BaseContainer DefaultData(LONG type) {
  const auto found = Defaults().find(type);
  return found == Defaults().end() ? BaseContainer() : found->second;
}

namespace {

template <class T>
T* As(host::C4DAtom* atom, NodeKind kind) {
  return atom && NodeAccess::Kind(*atom) == kind ? static_cast<T*>(atom) : nullptr;
}

}  // namespace

NodeKind KindOf(const host::C4DAtom& atom) { return NodeAccess::Kind(atom); }

host::BaseObject* AsObject(host::C4DAtom* atom) {
  return As<host::BaseObject>(atom, NodeKind::Object);
}
host::TextureTag* AsTextureTag(host::C4DAtom* atom) {
  return As<host::TextureTag>(atom, NodeKind::TextureTag);
}
host::BaseMaterial* AsMaterial(host::C4DAtom* atom) {
  return As<host::BaseMaterial>(atom, NodeKind::Material);
}
host::LayerObject* AsLayer(host::C4DAtom* atom) {
  return As<host::LayerObject>(atom, NodeKind::Layer);
}
host::RenderData* AsRenderData(host::C4DAtom* atom) {
  return As<host::RenderData>(atom, NodeKind::RenderSettings);
}

host::BaseTag* AsTag(host::C4DAtom* atom) {
  if (!atom) return nullptr;
  const NodeKind kind = NodeAccess::Kind(*atom);
  const bool tag =
      kind == NodeKind::Tag || kind == NodeKind::TextureTag || kind == NodeKind::XPressoTag;
  return tag ? static_cast<host::BaseTag*>(atom) : nullptr;
}

}  // namespace engine
