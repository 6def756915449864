#include "engine/editing/FieldValue.h"

#include <algorithm>

#include "engine/editing/LayerCommands.h"
#include "engine/editing/MaterialCommands.h"
#include "engine/editing/ObjectFrame.h"
#include "engine/scene/ElementState.h"
#include "engine/scene/NodeFactory.h"
#include "host/Application.h"
#include "host/Parameters.h"

namespace engine {

namespace {

using host::BaseDocument;
using host::BaseList2D;
using host::BaseObject;
using host::GeData;
using host::LONG;
using host::Vector;

// One of the properties that are no parameters. The element is of the kind that the table of fields
// shows it for.
struct OwnProperty {
  LONG id;
  GeData (*read)(const BaseList2D& element);
  void (*write)(BaseList2D& element, const GeData& value);
  // Whether both surely have the same value: saves reading it, of very many elements. Null: not
  // known.
  bool (*alike)(const BaseList2D& a, const BaseList2D& b) = nullptr;
};

const BaseObject& Object(const BaseList2D& element) {
  return static_cast<const BaseObject&>(element);
}
BaseObject& Object(BaseList2D& element) { return static_cast<BaseObject&>(element); }
const BaseDocument& Document(const BaseList2D& element) {
  return static_cast<const BaseDocument&>(element);
}
BaseDocument& Document(BaseList2D& element) { return static_cast<BaseDocument&>(element); }
LONG Number(bool value) { return value ? 1 : 0; }
GeData Link(const BaseList2D* target) { return GeData(target); }
// A link to another document's element resolves to nothing, and takes the value off.
BaseList2D* Target(const BaseList2D& element, const GeData& value) {
  return value.GetLink(element.GetDocument());
}

bool SameAxes(const BaseList2D& a, const BaseList2D& b) {
  const host::Matrix first = Object(a).GetMl();
  const host::Matrix second = Object(b).GetMl();
  return first.v1 == second.v1 && first.v2 == second.v2 && first.v3 == second.v3;
}

// All else of the frame stays.
void WritePosition(BaseList2D& element, const GeData& value) {
  host::Matrix frame = Object(element).GetMl();
  frame.off = value.GetVector();
  Object(element).SetMl(frame);
}

void WriteInUse(BaseList2D& element, const GeData& value) {
  value.GetBool() ? element.DelBit(host::BIT_DISABLED) : element.SetBit(host::BIT_DISABLED);
}

void WriteLayerColor(BaseList2D& element, const GeData& value) {
  host::LayerData data = element.GetLayerData(element.GetDocument(), true);
  data.color = value.GetVector();
  element.SetLayerData(element.GetDocument(), data);
}

constexpr OwnProperty kProperties[] = {
    {kFieldName, [](const BaseList2D& e) { return GeData(e.GetName()); },
     [](BaseList2D& e, const GeData& v) { e.SetName(v.GetString()); },
     [](const BaseList2D& a, const BaseList2D& b) { return a.GetName() == b.GetName(); }},
    {kFieldLayer, [](const BaseList2D& e) { return Link(e.GetLayerObject(e.GetDocument())); },
     [](BaseList2D& e, const GeData& v) { e.SetLayerObject(AsLayer(Target(e, v))); },
     [](const BaseList2D& a, const BaseList2D& b) { return LayerIdOf(a) == LayerIdOf(b); }},
    {kFieldEditorMode, [](const BaseList2D& e) { return GeData(Object(e).GetEditorMode()); },
     [](BaseList2D& e, const GeData& v) { Object(e).SetEditorMode(v.GetLong()); }},
    {kFieldRenderMode, [](const BaseList2D& e) { return GeData(Object(e).GetRenderMode()); },
     [](BaseList2D& e, const GeData& v) { Object(e).SetRenderMode(v.GetLong()); }},
    {kFieldDeformMode,
     [](const BaseList2D& e) { return GeData(Number(Object(e).GetDeformMode())); },
     [](BaseList2D& e, const GeData& v) { Object(e).SetDeformMode(v.GetBool()); }},
    {kFieldPosition, [](const BaseList2D& e) { return GeData(Object(e).GetMl().off); },
     WritePosition},
    {kFieldRotation, [](const BaseList2D& e) { return GeData(AnglesOf(Object(e).GetMl())); },
     [](BaseList2D& e, const GeData& v) {
       Object(e).SetMl(WithAngles(Object(e).GetMl(), v.GetVector()));
     },
     SameAxes},
    {kFieldScale, [](const BaseList2D& e) { return GeData(ScaleOf(Object(e).GetMl())); },
     [](BaseList2D& e, const GeData& v) {
       Object(e).SetMl(WithScale(Object(e).GetMl(), v.GetVector()));
     },
     SameAxes},
    {kFieldTagMaterial,
     [](const BaseList2D& e) {
       return Link(static_cast<const host::TextureTag&>(e).GetMaterial());
     },
     [](BaseList2D& e, const GeData& v) {
       static_cast<host::TextureTag&>(e).SetMaterial(AsMaterial(Target(e, v)));
     }},
    {kFieldInUse, [](const BaseList2D& e) { return GeData(Number(!e.GetBit(host::BIT_DISABLED))); },
     WriteInUse},
    {kFieldSceneCamera,
     [](const BaseList2D& e) {
       return Link(Document(e).GetRenderBaseDraw()->GetSceneCamera(&Document(e)));
     },
     [](BaseList2D& e, const GeData& v) {
       Document(e).GetRenderBaseDraw()->SetSceneCamera(AsObject(v.GetLink(&Document(e))), true);
     }},
    {kFieldActiveSettings,
     [](const BaseList2D& e) { return Link(Document(e).GetActiveRenderData()); },
     [](BaseList2D& e, const GeData& v) {
       Document(e).SetActiveRenderData(AsRenderData(v.GetLink(&Document(e))));
     }},
    {kFieldFps, [](const BaseList2D& e) { return GeData(Document(e).GetFps()); },
     [](BaseList2D& e, const GeData& v) { Document(e).SetFps(v.GetLong()); }},
    {kFieldLayerColor,
     [](const BaseList2D& e) { return GeData(e.GetLayerData(e.GetDocument(), true).color); },
     WriteLayerColor},
};

const OwnProperty* PropertyOf(LONG id) {
  const auto found = std::find_if(std::begin(kProperties), std::end(kProperties),
                                  [id](const auto& row) { return row.id == id; });
  return found == std::end(kProperties) ? nullptr : found;
}

// The switch of a layer that a field number stands for. Field numbers go down from the first
// switch.
host::Bool& SwitchOf(host::LayerData& data, LONG id) {
  return data.*(kLayerSwitchTable.at(static_cast<std::size_t>(kFieldLayerFlags - id)).flag);
}

// The initial value of the field in an element of that type. Where the type has none it is one of
// the field's kind, so that an edit of one part of a vector has the others to keep.
GeData Preset(LONG type, const Field& field) {
  const host::BaseContainer data = DefaultData(type);
  if (data.FindIndex(field.id) != host::NOTOK) return data.GetData(field.id);
  if (IsOfParts(field.kind)) return Vector();
  switch (field.kind) {
    case FieldKind::Real:
    case FieldKind::Angle:
    case FieldKind::Percent:
      return host::Real(field.preset);
    case FieldKind::File:
      return host::Filename();
    case FieldKind::Frame:
      return host::BaseTime();
    default:
      return LONG(0);
  }
}

// Never 0, which frames are divided by.
LONG FrameRateOf(const BaseList2D& settings) {
  return std::max<LONG>(1, settings.GetDataInstance()->GetLong(host::RDATA_FRAMERATE, 30));
}

GeData ReadParameter(const BaseList2D& element, const Field& field) {
  GeData value = element.GetDataInstance()->GetData(field.id);
  if (value.GetType() == host::DA_NIL) value = Preset(element.GetType(), field);
  return field.kind == FieldKind::Frame ? GeData(value.GetTime().GetFrame(FrameRateOf(element)))
                                        : value;
}

double Part(const Vector& v, int part) { return part == 0 ? v.x : part == 1 ? v.y : v.z; }

// Marks the parts in which the values differ; true when all do.
bool MarkDifferences(FieldValue& common, const GeData& other, FieldKind kind) {
  if (!IsOfParts(kind)) return common.mixed[0] = common.mixed[0] || other != common.value;
  const Vector first = common.value.GetVector();
  const Vector now = other.GetVector();
  const int parts = PartsOf(kind);
  for (int part = 0; part < parts; ++part) {
    if (Part(first, part) != Part(now, part)) common.mixed[static_cast<std::size_t>(part)] = true;
  }
  return std::count(common.mixed.begin(), common.mixed.end(), true) == parts;
}

std::string StepName(const Field& field) { return field.id == kFieldName ? "Rename" : field.label; }

}  // namespace

GeData ReadField(const BaseList2D& element, const Field& field) {
  if (field.kind == FieldKind::Texture) return GeData(TextureFileOf(element, field.id));
  if (field.id >= 0) return ReadParameter(element, field);
  if (const OwnProperty* property = PropertyOf(field.id)) return property->read(element);
  host::LayerData data = element.GetLayerData(element.GetDocument(), true);
  return Number(SwitchOf(data, field.id));
}

CommonValue::CommonValue(const Field& field, const BaseList2D& first)
    : field_(field), first_(first), common_{ReadField(first, field)} {
  const OwnProperty* property = field.id < 0 ? PropertyOf(field.id) : nullptr;
  if (property) alike_ = property->alike;
}

bool CommonValue::LookAt(const BaseList2D& element) {
  // Of a million elements that are alike most are passed over without making a value.
  if (!agree_ || (alike_ && alike_(element, first_))) return agree_;
  agree_ = !MarkDifferences(common_, ReadField(element, field_), field_.kind);
  return agree_;
}

void WriteField(BaseList2D& element, const Field& field, const GeData& value) {
  if (field.kind == FieldKind::Frame) {
    const auto rate = static_cast<host::Real>(FrameRateOf(element));
    element.SetParameter(field.id, host::BaseTime(value.GetLong(), rate), 0);
  } else if (field.id >= 0) {
    element.SetParameter(field.id, value, 0);
  } else if (const OwnProperty* property = PropertyOf(field.id)) {
    property->write(element, value);
  } else {
    host::LayerData data = element.GetLayerData(element.GetDocument(), true);
    SwitchOf(data, field.id) = value.GetBool();
    element.SetLayerData(element.GetDocument(), data);
  }
}

GeData Edited(const GeData& before, const FieldEdit& edit, FieldKind kind) {
  if (!IsOfParts(kind)) return edit.value;
  const Vector old = before.GetVector();
  const Vector wanted = edit.value.GetVector();
  return Vector(edit.parts[0] ? wanted.x : old.x, edit.parts[1] ? wanted.y : old.y,
                edit.parts[2] ? wanted.z : old.z);
}

namespace {

// Read and written one by one: in a selection that differs, an edit of one part leaves each element
// its other parts.
void Apply(host::BaseDocument& doc, host::BaseList2D& element, const Field& field,
           const FieldEdit& edit) {
  const host::GeData before = ReadField(element, field);
  const host::GeData after = Edited(before, edit, field.kind);
  // No entry in the undo step for what stays as it is.
  if (after == before) return;
  if (field.kind == FieldKind::Texture)
    return SetTextureFile(element, field.id, after.GetFilename());
  doc.AddUndo(host::UNDO_CHANGE, &element);
  WriteField(element, field, after);
}

}  // namespace

host::BaseList2D* FindElement(host::BaseDocument& doc, NodeId id) {
  return id == IdOf(doc) ? &doc : FindNode(&doc, id);
}

std::vector<host::BaseList2D*> ElementsOf(host::BaseDocument& doc, const Ids& ids) {
  std::vector<host::BaseList2D*> elements;
  elements.reserve(ids.size());
  for (const NodeId id : ids) {
    if (host::BaseList2D* element = FindElement(doc, id)) elements.push_back(element);
  }
  return elements;
}

StepwiseEdit SetField(host::BaseDocument& doc, std::vector<host::BaseList2D*> elements,
                      const Field& field, const FieldEdit& edit) {
  const std::size_t steps = elements.size();
  return {StepName(field), steps,
          [&doc, elements = std::move(elements), &field, edit](std::size_t i) {
            Apply(doc, *elements[i], field, edit);
          },
          [] { host::EventAdd(); }};
}

}  // namespace engine
