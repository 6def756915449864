// Field: one editable property of elements: where it is kept, how it is called, shown and limited.
// The fields of every kind of element stand in one table; a new one is a new row. Plain data; any
// thread.
#pragma once

#include <span>

#include "host/BaseList2D.h"

namespace engine {

enum class FieldKind {
  Text,
  Whole,
  Real,
  Angle,    // kept in radians, shown in degrees
  Percent,  // kept as a share of 1
  Frame,    // a time, shown as the number of its frame
  Switch,
  Choice,
  Vector,
  Angles,  // three angles
  Pair,    // a vector whose third part means nothing
  Color,
  ScreenColor,  // kept as the screen shows it; other colors are kept linear
  File,
  Texture,  // the picture behind a material's link to a shader
  Layer,
  Material,
  Camera,
  Settings
};

// Properties that are no parameters of the element's container have numbers below 0.
enum OwnField : host::LONG {
  kFieldName = -1,
  kFieldLayer = -2,
  kFieldEditorMode = -3,
  kFieldRenderMode = -4,
  kFieldDeformMode = -5,
  kFieldPosition = -6,
  kFieldRotation = -7,
  kFieldScale = -8,
  kFieldTagMaterial = -9,
  kFieldInUse = -10,  // video posts and passes
  kFieldSceneCamera = -11,
  kFieldActiveSettings = -12,
  kFieldFps = -13,
  kFieldLayerColor = -20,
  kFieldLayerFlags = -21  // the first of nine: -21, -22, ... in the order of the layer's data
};

struct FieldChoice {
  host::LONG value;
  const char* label;
};

struct Field {
  host::LONG id;
  const char* label;
  FieldKind kind;
  // Of numbers, as they are shown.
  double min = -1e9;
  double max = 1e9;
  double step = 1;
  const char* unit = "";
  const char* tip = "";
  std::span<const FieldChoice> choices = {};
  double preset = 0;  // as it is kept, of a number that an element may lack
};

// Fields of one type of element (a base type: of all derived from it) under a common title.
struct FieldSection {
  host::LONG type;
  const char* title;
  std::span<const Field> fields;
  bool folded = false;  // at first
};

// In the order of showing.
std::span<const FieldSection> FieldSections();
// The field that is shown for a post effect or a pass: whether it is in use.
const Field& InUseField();
// The document's scene camera, which is shown with render settings, too.
const Field& SceneCameraField();

// Whether a value consists of three numbers, each edited by itself; how many of them are shown;
// what a shown number has to be divided by to give the kept one.
bool IsColor(FieldKind kind);
bool IsOfParts(FieldKind kind);
int PartsOf(FieldKind kind);
double ShownPerKept(FieldKind kind);

}  // namespace engine
