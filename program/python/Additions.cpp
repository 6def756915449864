#include "program/python/Additions.h"

#include <algorithm>
#include <cctype>

#include "engine/editing/ElementCommands.h"
#include "engine/editing/LayerCommands.h"
#include "engine/editing/MaterialCommands.h"
#include "engine/editing/RenderSettingsCommands.h"
#include "engine/scene/NodeTypes.h"
#include "host/Application.h"
#include "program/lookup/SceneLookup.h"

namespace scripting {

namespace {

using host::BaseDocument;
using host::BaseList2D;
using host::BaseObject;

constexpr double kPi = 3.14159265358979323846;
BaseObject& FindObjectAt(BaseDocument& doc, ElementId element) {
  if (BaseObject* object = engine::AsObject(&Session::Get().Element(doc, element))) return *object;
  throw Failure(Fault::Misused, "An object is needed here.");
}

std::vector<BaseObject*> FindObjectsAt(BaseDocument& doc, const std::vector<ElementId>& ids) {
  std::vector<BaseObject*> objects;
  objects.reserve(ids.size());
  for (const ElementId id : ids) objects.push_back(&FindObjectAt(doc, id));
  return objects;
}

engine::Elements FindAll(BaseDocument& doc, const std::vector<ElementId>& ids) {
  engine::Elements elements;
  for (const ElementId id : ids) elements.push_back(&Session::Get().Element(doc, id));
  return elements;
}

// In any letter case; the failure lists the words there are.
host::LONG ObjectTypeOf(const std::string& typed) {
  std::string known;
  for (const lookup::ObjectTypeWord& row : lookup::kObjectTypeWords) {
    const bool isIt =
        std::ranges::equal(std::string_view(row.word), typed,
                           [](char own, unsigned char c) { return own == std::tolower(c); });
    if (isIt) return row.type;
    known += (known.empty() ? "" : ", ") + std::string(row.word);
  }
  throw Failure(
      Fault::Misused,
      "\"" + typed + "\" is no type of object that can be added. There are: " + known + ".");
}

// Nothing for no numbers. The bounds keep what is computed from them finite; what is no number
// fails the comparison, too. `share`: what each is multiplied by.
std::optional<host::Vector> PointOf(const std::vector<double>& numbers, double share = 1) {
  if (numbers.empty()) return std::nullopt;
  const bool isPoint = numbers.size() == 3 && std::ranges::all_of(numbers, [](double number) {
                         return number >= -1e9 && number <= 1e9;
                       });
  if (!isPoint) throw Failure(Fault::Misused, "Three numbers from -1e9 to 1e9 are needed.");
  return host::Vector(numbers[0] * share, numbers[1] * share, numbers[2] * share);
}

engine::Placement PlacementOf(const Where& where) {
  return {PointOf(where.at), PointOf(where.lookAt), PointOf(where.rotation, kPi / 180),
          PointOf(where.scale)};
}

host::Vector ColorOf(const std::vector<double>& numbers) {
  if (numbers.empty()) return {0.8, 0.8, 0.8};
  const bool isColor = numbers.size() == 3 && std::ranges::all_of(numbers, [](double number) {
                         return number >= 0 && number <= 1;
                       });
  if (!isColor) throw Failure(Fault::Misused, "A color is three numbers from 0 to 1.");
  return {numbers[0], numbers[1], numbers[2]};
}

host::String TextOf(const std::string& text) { return host::String(std::string_view(text)); }

}  // namespace

Found AddObjectOf(DocumentId document, const std::string& type, const std::string& name,
                  ElementId parent, const Where& where) {
  BaseDocument& doc = Find(document);
  const host::LONG number = ObjectTypeOf(type);
  BaseObject* above = parent == 0 ? nullptr : &FindObjectAt(doc, parent);
  const host::Matrix frame = engine::Placed(host::Matrix(), PlacementOf(where));
  return FoundOf(*engine::AddObject(doc, number, name, frame, above));
}

void Place(DocumentId document, const std::vector<ElementId>& objects, const Where& where) {
  BaseDocument& doc = Find(document);
  auto edit = engine::PlaceObjects(doc, FindObjectsAt(doc, objects), PlacementOf(where));
  Check(edit.GetStatus());
  RunEdit(doc, edit.Take());
}

Found AddMaterialOf(DocumentId document, const std::string& name,
                    const std::vector<double>& color) {
  BaseDocument& doc = Find(document);
  const host::Vector plain = ColorOf(color);
  const engine::UndoScope step(doc, "New Material");
  const Found made = FoundOf(*engine::MakeMaterial(doc, name, plain));
  host::EventAdd();
  return made;
}

Found AddLayerOf(DocumentId document, const std::string& name) {
  BaseDocument& doc = Find(document);
  host::LayerData data;
  data.color = engine::NextLayerColor(doc);
  const engine::UndoScope step(doc, "New Layer");
  const Found made = FoundOf(*engine::MakeLayer(doc, name, data));
  host::EventAdd();
  return made;
}

Found AddSettingsOf(DocumentId document, const std::string& name) {
  BaseDocument& doc = Find(document);
  const engine::UndoScope step(doc, "New Render Settings");
  host::RenderData* made = engine::AddRenderSettings(doc);
  made->SetName(TextOf(name));
  return FoundOf(*made);
}

// Render settings go by an edit of their own, because a document always keeps some, and so not
// together with others.
void Remove(DocumentId document, const std::vector<ElementId>& elements) {
  BaseDocument& doc = Find(document);
  const engine::Elements found = FindAll(doc, elements);
  engine::SettingsList settings;
  for (BaseList2D* one : found) {
    if (one == &doc) throw Failure(Fault::Misused, "A document is closed, not removed.");
    if (host::RenderData* data = engine::AsRenderData(one)) settings.push_back(data);
  }
  if (settings.empty()) return RunEdit(doc, engine::RemoveElements(doc, found));
  if (settings.size() != found.size())
    throw Failure(Fault::Misused, "Elements of one kind can be removed at once.");
  engine::DeleteRenderSettings(doc, settings);
}

// 0 takes the material off.
void GiveMaterialTo(DocumentId document, const std::vector<ElementId>& objects,
                    ElementId material) {
  BaseDocument& doc = Find(document);
  host::BaseMaterial* given =
      material == 0 ? nullptr : engine::AsMaterial(&Session::Get().Element(doc, material));
  if (material != 0 && !given) throw Failure(Fault::Misused, "A material is needed here.");
  const std::vector<BaseObject*> found = FindObjectsAt(doc, objects);
  {
    const engine::UndoScope step(doc, "Material");
    for (BaseObject* object : found) engine::GiveMaterial(doc, *object, given);
  }
  host::EventAdd();
}

}  // namespace scripting
