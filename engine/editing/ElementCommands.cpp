#include "engine/editing/ElementCommands.h"

#include <unordered_set>

#include "engine/editing/ObjectCommands.h"
#include "engine/editing/ObjectFrame.h"
#include "engine/editing/Selection.h"
#include "engine/scene/NewNodes.h"
#include "engine/scene/NodeFactory.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/TreeWalk.h"
#include "engine/scene/Vectors.h"
#include "host/Application.h"

namespace engine {

using host::BaseDocument;
using host::BaseList2D;
using host::BaseObject;
using host::Matrix;
using host::Vector;

namespace {

// Where a walk over all elements of that class begins.
const host::GeListNode* FirstOfClass(const BaseDocument& doc, const BaseList2D& element) {
  switch (KindOf(element)) {
    case NodeKind::Object:
      return doc.GetFirstObject();
    case NodeKind::Material:
      return doc.GetFirstMaterial();
    case NodeKind::Layer:
      return doc.GetLayerObjectRoot()->GetFirst();
    case NodeKind::RenderSettings:
      return doc.GetFirstRenderData();
    default:
      return nullptr;
  }
}

template <class T>
std::vector<T*> EachOnce(const std::vector<T*>& elements) {
  std::unordered_set<const T*> met;
  std::vector<T*> once;
  for (T* element : elements) {
    if (met.insert(element).second) once.push_back(element);
  }
  return once;
}

// A name for each, none of which any other element of the class has. Those that are renamed do not
// count as taken: renaming them again gives the same names.
std::vector<std::string> NumberedNames(const BaseDocument& doc, const Elements& elements,
                                       const std::string& name) {
  // One element may have the name of another one, as in the attributes.
  if (elements.size() == 1) return {name};
  const std::unordered_set<const host::GeListNode*> renamed(elements.begin(), elements.end());
  std::unordered_set<std::string> taken;
  for (const auto* node = elements.empty() ? nullptr : FirstOfClass(doc, *elements.front()); node;
       node = NextInTree(node)) {
    if (!renamed.contains(node))
      taken.insert(static_cast<const BaseList2D*>(node)->GetName().ToUtf8());
  }
  std::vector<std::string> names;
  std::size_t number = 0;
  std::string candidate = name;
  while (names.size() < elements.size()) {
    if (!taken.contains(candidate)) names.push_back(candidate);
    candidate = name + "." + std::to_string(++number);
  }
  return names;
}

Matrix SpaceOf(const BaseObject& object) {
  const BaseObject* parent = object.GetUp();
  return parent ? parent->GetMg() : Matrix();
}

// A billionth of the length, far below what a person can type or see.
bool AreClose(const Vector& a, const Vector& b) {
  const double limit = 1e-9 * (1 + LengthOf(a));
  return LengthOf(Sum(a, Scaled(b, -1))) <= limit;
}

// Reckoned there and back, a frame differs in its last digits.
bool StandsThere(const BaseObject& object, const Placement& placement) {
  const Matrix now = object.GetMg();
  const Matrix then = Placed(now, placement);
  return AreClose(now.off, then.off) && AreClose(now.v1, then.v1) && AreClose(now.v2, then.v2) &&
         AreClose(now.v3, then.v3);
}

}  // namespace

StepwiseEdit RenameElements(BaseDocument& doc, const Elements& given, const std::string& name) {
  const Elements elements = EachOnce(given);
  std::vector<std::pair<BaseList2D*, std::string>> changes;
  std::vector<std::string> names = NumberedNames(doc, elements, name);
  for (std::size_t i = 0; i < elements.size(); ++i) {
    if (elements[i]->GetName().View() != names[i])
      changes.emplace_back(elements[i], std::move(names[i]));
  }
  const std::size_t steps = changes.size();
  return {"Rename", steps,
          [&doc, changes = std::move(changes)](std::size_t i) {
            const auto& [element, to] = changes[i];
            doc.AddUndo(host::UNDO_CHANGE, element);
            element->SetName(host::String(std::string_view(to)));
          },
          [] { host::EventAdd(); }};
}

StepwiseEdit RemoveElements(BaseDocument& doc, const Elements& elements) {
  // An element below another one goes with it, and must not be freed again.
  Elements topmost = Topmost(EachOnce(elements));
  std::erase_if(topmost, [](BaseList2D* element) { return AsRenderData(element) != nullptr; });
  const std::size_t steps = topmost.size();
  return {"Delete", steps,
          [&doc, topmost = std::move(topmost)](std::size_t i) {
            doc.AddUndo(host::UNDO_DELETE, topmost[i]);
            // Whatever its class; the deletion was registered, so that the undo step keeps it.
            FreeNode(topmost[i]);
          },
          [] { host::EventAdd(); }};
}

// The target is faced from where the object then is, so the place comes first.
Matrix Placed(const Matrix& frame, const Placement& placement) {
  Matrix placed = frame;
  if (placement.at) placed.off = *placement.at;
  if (placement.target) {
    const Vector scale = ScaleOf(placed);
    placed = WithScale(LookAt(placed.off, *placement.target), scale);
  } else if (placement.angles) {
    placed = WithAngles(placed, *placement.angles);
  }
  if (placement.scale) placed = WithScale(placed, *placement.scale);
  return placed;
}

Result<StepwiseEdit> PlaceObjects(BaseDocument& doc, const std::vector<BaseObject*>& objects,
                                  const Placement& placement) {
  std::vector<BaseObject*> moved;
  for (BaseObject* object : EachOnce(objects)) {
    if (StandsThere(*object, placement)) continue;
    // Before the first step, so that nothing is placed where one of many cannot be.
    if (!FrameInside(SpaceOf(*object), Matrix())) {
      return Result<StepwiseEdit>::Failure("\"" + object->GetName().ToUtf8() +
                                           "\" lies below an object that is scaled to nothing in a "
                                           "direction. Scale that one first.");
    }
    moved.push_back(object);
  }
  const std::size_t steps = moved.size();
  return StepwiseEdit{"Place", steps,
                      [&doc, moved = std::move(moved), placement](std::size_t i) {
                        BaseObject& object = *moved[i];
                        const auto frame =
                            FrameInside(SpaceOf(object), Placed(object.GetMg(), placement));
                        doc.AddUndo(host::UNDO_CHANGE, &object);
                        if (frame) object.SetMl(*frame);
                      },
                      [] { host::EventAdd(); }};
}

BaseObject* AddObject(BaseDocument& doc, host::LONG type, const std::string& name,
                      const Matrix& frame, BaseObject* parent) {
  BaseObject* object = BaseObject::Alloc(type);
  object->SetName(name.empty() ? TypeName(type) : host::String(std::string_view(name)));
  if (name.empty()) MakeNameUnique(*object, doc.GetFirstObject());
  const auto inside = parent ? FrameInside(parent->GetMg(), frame) : frame;
  if (inside) object->SetMl(*inside);
  {
    const UndoScope scope(doc, "New " + TypeName(type).ToUtf8());
    parent ? object->InsertUnderLast(parent) : doc.AppendObject(object);
    doc.AddUndo(host::UNDO_NEW, object);
  }
  host::EventAdd();
  return object;
}

}  // namespace engine
