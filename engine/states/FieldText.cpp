#include "engine/states/FieldText.h"

#include <cmath>

#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/TreeWalk.h"
#include "engine/scene/ValueText.h"

namespace engine {

using host::BaseDocument;
using host::BaseList2D;
using host::GeData;
using host::LONG;

namespace {

// A recorded tag whose type the host does not know is called as its option is, one of them.
std::string TypeText(const BaseList2D& element) {
  const PartRow* part = FindPartOfTag(element.GetType());
  if (!part || part->tagType == host::Ttexture || part->tagType == host::Tcompositing)
    return element.GetTypeName().ToUtf8();
  // Labels of options are plurals: "Sketch Style Tags".
  const std::string_view label = part->label;
  return std::string(label.substr(0, label.size() - 1));
}

std::string NameOrType(const BaseList2D& element) {
  const std::string name = element.GetName().ToUtf8();
  return name.empty() ? TypeText(element) : name;
}

std::string PathOf(const BaseList2D& element) {
  std::string path = NameOrType(element);
  for (const host::GeListNode* up = element.GetUp(); up; up = up->GetUp())
    path = NameOrType(static_cast<const BaseList2D&>(*up)) + "/" + path;
  return path;
}

// The fields of an element stand in a section for its very type or in one for all of its class.
// Settings, objects, layers and tags are recorded, so that any other type is an object's.
const Field* FindField(LONG type, LONG field) {
  if (field == kFieldSceneCamera) return &SceneCameraField();
  const LONG base = type == host::Tbasedocument || type == host::Rbase || type == host::Olayer
                        ? type
                    : FindPartOfTag(type) || type == host::Tbase ? host::Tbase
                                                                 : host::Obase;
  for (const FieldSection& section : FieldSections()) {
    if (section.type != type && section.type != base) continue;
    for (const Field& row : section.fields) {
      if (row.id == field) return &row;
    }
  }
  return nullptr;
}

// At most six digits that matter, which is what a person compares.
std::string NumberText(double number) {
  char text[40];
  std::snprintf(text, sizeof text, "%.6g", number);
  return text;
}

std::string LinkText(const BaseDocument& doc, const GeData& value) {
  const BaseList2D* target = FindNode(&doc, LinkOf(value));
  return target ? Quoted(host::String(NameOrType(*target).c_str())) : "none";
}

std::string PlainText(const BaseDocument& doc, const GeData& value) {
  if (value.GetType() == host::DA_ALIASLINK) return LinkText(doc, value);
  if (value.GetType() == host::DA_REAL) return NumberText(value.GetReal());
  if (value.GetType() == host::DA_NIL) return "nothing";
  if (value.GetType() == host::DA_FILENAME) return Quoted(value.GetFilename().GetString());
  if (value.GetType() == host::DA_CONTAINER)
    return std::to_string(value.GetContainer().GetCount()) + " values";
  return ValueText(value, [](NodeId) { return std::string(); });
}

std::string PartsText(const Field& field, const GeData& value) {
  const host::Vector vector = value.GetVector();
  const double scale = ShownPerKept(field.kind);
  std::string text = NumberText(vector.x * scale) + ", " + NumberText(vector.y * scale);
  if (PartsOf(field.kind) > 2) text += ", " + NumberText(vector.z * scale);
  return text + field.unit;
}

std::string TextOf(const BaseDocument& doc, const Field& field, const GeData& value) {
  if (field.kind == FieldKind::Choice) {
    for (const FieldChoice& choice : field.choices) {
      if (choice.value == value.GetLong()) return choice.label;
    }
    return PlainText(doc, value);
  }
  if (field.kind == FieldKind::Switch) return value.GetBool() ? "On" : "Off";
  if (IsOfParts(field.kind) && value.GetType() == host::DA_VECTOR) return PartsText(field, value);
  if (field.kind == FieldKind::Frame && value.GetType() == host::DA_TIME) {
    const host::BaseTime time = value.GetTime();
    return "frame " + NumberText(time.GetNumerator());
  }
  if (value.GetType() == host::DA_LONG || value.GetType() == host::DA_REAL)
    return NumberText(value.GetReal() * ShownPerKept(field.kind)) + field.unit;
  return PlainText(doc, value);
}

}  // namespace

std::string ElementPath(const BaseDocument& doc, NodeId element) {
  const BaseList2D* node = FindNode(&doc, element);
  if (!node) return "nothing";
  switch (KindOf(*node)) {
    case NodeKind::Tag:
    case NodeKind::TextureTag:
    case NodeKind::XPressoTag: {
      const BaseList2D* owner = OwnerOf(*node);
      return NameOrType(*node) + (owner ? " on " + PathOf(*owner) : "");
    }
    default:
      return PathOf(*node);
  }
}

std::string ElementKind(const BaseDocument& doc, NodeId element) {
  const BaseList2D* node = FindNode(&doc, element);
  if (!node) return "";
  const std::string type = TypeText(*node);
  // "Texture" becomes "Texture tag"; "Sketch Style Tag" says so already.
  const bool plainTag = AsTag(FindNode(&doc, element)) && !type.ends_with(" Tag");
  return plainTag ? type + " tag" : type;
}

std::string FieldLabel(LONG type, LONG field) {
  if (field <= kFieldEffects) return "Effect " + std::to_string(kFieldEffects - field + 1);
  if (field == kFieldActiveSettings) return "In use";
  if (field == kStoredTagLink) return "Link to itself";
  const Field* row = FindField(type, field);
  return row ? row->label : "Value " + std::to_string(field);
}

std::string FieldValueText(const BaseDocument& doc, LONG type, LONG field,
                           const std::optional<GeData>& value) {
  if (!value) return "not there";
  if (field <= kFieldEffects) return value->GetString().ToUtf8();
  const Field* row = FindField(type, field);
  return row ? TextOf(doc, *row, *value) : PlainText(doc, *value);
}

LONG TypeForFields(const BaseDocument& doc, const ElementChange& change) {
  if (change.part == Part::RenderSettings) return host::Rbase;
  if (change.part == Part::Objects) return host::Obase;
  if (change.part == Part::Layers) return host::Olayer;
  const BaseList2D* element = FindNode(&doc, change.element);
  return element ? element->GetType() : RowOf(change.part).tagType;
}

}  // namespace engine
