// Elements of a document for scripts: objects, tags, materials, layers and render settings by their
// identities; where they stand, what is selected, and their fields as the attributes of the desktop
// show them. What changes a document is one undo step each. Every function throws a Failure where
// it cannot. The thread of the session.
#pragma once

#include <cstdint>
#include <utility>
#include <variant>

#include "program/python/Session.h"

namespace scripting {

// An element and its type (C4DAtom::GetType).
using Found = std::pair<ElementId, host::LONG>;
using FoundList = std::vector<Found>;
// The elements that a list of a document holds. Parts of render settings have no such list.
enum class Kind { Objects, Materials, Layers, Settings, Tags };

Found FoundOf(const host::GeListNode& node);

// Objects, layers and settings in the order of their trees, all levels; tags: of all objects.
FoundList List(DocumentId document, Kind kind);
// By name, path, pattern or position, as the shell has it; without * or ? exactly one.
FoundList FindIn(DocumentId document, Kind kind, const std::string& typed);
bool IsThere(DocumentId document, ElementId element);
std::string PathOfElement(DocumentId document, ElementId element);
std::string TypeNameOf(DocumentId document, ElementId element);
// The elements directly below it; and its tags, or of render settings the effects, then the passes.
FoundList Children(DocumentId document, ElementId element);
FoundList Parts(DocumentId document, ElementId element);
// The element above it, of a tag its object; 0 for none.
Found Above(DocumentId document, ElementId element);

FoundList Selected(DocumentId document, Kind kind);
void Select(DocumentId document, Kind kind, const std::vector<ElementId>& elements);

// A value of a field as the attributes show it: nothing, a switch, a whole number, an element, a
// number, a text, or the parts of a vector.
using Value = std::variant<std::monostate, bool, std::int64_t, std::uint64_t, double, std::string,
                           std::vector<double>>;

struct FieldFacts {
  host::LONG type;  // of the elements that have it; 0: effects and passes
  std::string section;
  std::string label;
  std::string
      kind;  // "text", "whole", "real", "switch", "choice", "vector", "pair", "file" or what
             // it refers to: "layer", "material", "camera", "settings"
  double min;
  double max;
  std::string unit;
  std::string tip;
  Names choices;
};
// All fields there are; one is meant by its place in this list.
const std::vector<FieldFacts>& AllFields();
// The places of the fields that elements of this type have.
std::vector<std::size_t> FieldsOfType(DocumentId document, ElementId element);
Value ReadValue(DocumentId document, ElementId element, std::size_t field);
// Sets the field of all these elements in one step.
void WriteValue(DocumentId document, const std::vector<ElementId>& elements, std::size_t field,
                const Value& value);

}  // namespace scripting
