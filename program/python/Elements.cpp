#include "program/python/Elements.h"

#include "engine/editing/FieldValue.h"
#include "engine/editing/Selection.h"
#include "engine/scene/DocumentState.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/TreeWalk.h"
#include "engine/states/FieldText.h"
#include "program/lookup/SceneLookup.h"
#include "program/outcome/Words.h"

namespace scripting {

namespace {

using host::BaseDocument;
using host::BaseList2D;
using host::BaseObject;
using host::GeListNode;

BaseList2D& FindOne(DocumentId document, ElementId element) {
  return Session::Get().Element(Find(document), element);
}

FoundList Siblings(const GeListNode* first) {
  FoundList found;
  for (; first; first = first->GetNext()) found.push_back(FoundOf(*first));
  return found;
}

GeListNode* FirstOf(const BaseDocument& doc, Kind kind) {
  switch (kind) {
    case Kind::Materials:
      return doc.GetFirstMaterial();
    case Kind::Layers:
      return doc.GetLayerObjectRoot()->GetFirst();
    case Kind::Settings:
      return doc.GetFirstRenderData();
    default:
      return doc.GetFirstObject();
  }
}

// One pass over all objects, in the order of their tree.
FoundList AllTags(const BaseDocument& doc) {
  FoundList found;
  for (const BaseObject* object = doc.GetFirstObject(); object;
       object = engine::NextInTree(object)) {
    for (const host::BaseTag* tag = object->GetFirstTag(); tag; tag = tag->GetNext())
      found.push_back(FoundOf(*tag));
  }
  return found;
}

template <class T>
FoundList Meant(engine::Result<std::vector<T*>> found) {
  if (!found) throw Failure(Fault::NotFound, found.Message());
  FoundList list;
  for (const T* one : found.Value()) list.push_back(FoundOf(*one));
  return list;
}

// Finds by name, pattern or position elements that the shell has no words for. Names win over
// positions.
FoundList FindNamed(const BaseDocument& doc, const FoundList& all, const std::string& what,
                    const std::string& typed) {
  FoundList found;
  const bool isPattern = lookup::IsPattern(typed);
  for (const Found& one : all) {
    const std::string name = engine::FindNode(&doc, one.first)->GetName().ToUtf8();
    if (isPattern ? lookup::MatchesPattern(name, typed) : name == typed) found.push_back(one);
  }
  if (found.empty()) {
    if (const auto place = lookup::PositionIn(typed); place && *place < all.size())
      return {all[*place]};
    throw Failure(Fault::NotFound, "There are no " + what + " \"" + outcome::Shown(typed) + "\".");
  }
  if (found.size() > 1 && !isPattern) {
    throw Failure(Fault::NotFound, "There are several " + what + " \"" + outcome::Shown(typed) +
                                       "\". A position, as #0, means one of them.");
  }
  return found;
}

}  // namespace

Found FoundOf(const GeListNode& node) { return {engine::IdOf(node), node.GetType()}; }

FoundList List(DocumentId document, Kind kind) {
  const BaseDocument& doc = Find(document);
  if (kind == Kind::Tags) return AllTags(doc);
  FoundList found;
  for (const GeListNode* node = FirstOf(doc, kind); node; node = engine::NextInTree(node))
    found.push_back(FoundOf(*node));
  return found;
}

FoundList FindIn(DocumentId document, Kind kind, const std::string& typed) {
  const BaseDocument& doc = Find(document);
  if (kind == Kind::Objects) return Meant(lookup::FindObjects(doc, typed));
  if (kind == Kind::Layers) return Meant(lookup::FindLayers(doc, typed));
  if (kind == Kind::Materials) return Meant(lookup::FindMaterials(doc, typed));
  return FindNamed(doc, List(document, kind), kind == Kind::Tags ? "tags" : "render settings",
                   typed);
}

// False also where the document is closed, where others would throw.
bool IsThere(DocumentId document, ElementId element) {
  for (BaseDocument* doc : Session::Get().App().Documents()) {
    if (engine::NumberOf(*doc) == document) return engine::FindElement(*doc, element) != nullptr;
  }
  return false;
}

std::string PathOfElement(DocumentId document, ElementId element) {
  BaseList2D& found = FindOne(document, element);
  if (const BaseObject* object = engine::AsObject(&found)) return lookup::PathOf(*object);
  return engine::ElementPath(Find(document), element);
}

std::string TypeNameOf(DocumentId document, ElementId element) {
  return FindOne(document, element).GetTypeName().ToUtf8();
}

FoundList Children(DocumentId document, ElementId element) {
  return Siblings(FindOne(document, element).GetDown());
}

FoundList Parts(DocumentId document, ElementId element) {
  BaseList2D& found = FindOne(document, element);
  if (const BaseObject* object = engine::AsObject(&found)) return Siblings(object->GetFirstTag());
  const host::RenderData* settings = engine::AsRenderData(&found);
  if (!settings) return {};
  FoundList parts = Siblings(settings->GetFirstVideoPost());
  const FoundList passes = Siblings(settings->GetFirstMultipass());
  parts.insert(parts.end(), passes.begin(), passes.end());
  return parts;
}

// The document itself counts as nothing above.
Found Above(DocumentId document, ElementId element) {
  const BaseDocument& doc = Find(document);
  const BaseList2D* above = engine::OwnerOf(FindOne(document, element));
  return above && above != &doc ? FoundOf(*above) : Found{};
}

FoundList Selected(DocumentId document, Kind kind) {
  BaseDocument& doc = Find(document);
  FoundList found;
  for (const Found& one : List(document, kind)) {
    if (engine::FindNode(&doc, one.first)->GetBit(host::BIT_ACTIVE)) found.push_back(one);
  }
  return found;
}

// Checked before the selection is touched: elements of one kind, all of them there.
void Select(DocumentId document, Kind kind, const std::vector<ElementId>& elements) {
  BaseDocument& doc = Find(document);
  std::vector<BaseObject*> objects;
  engine::MaterialList materials;
  engine::LayerList layers;
  std::vector<host::BaseTag*> tags;
  for (const ElementId id : elements) {
    BaseList2D& one = FindOne(document, id);
    if (kind == Kind::Objects && engine::AsObject(&one)) objects.push_back(engine::AsObject(&one));
    if (kind == Kind::Materials && engine::AsMaterial(&one))
      materials.push_back(engine::AsMaterial(&one));
    if (kind == Kind::Layers && engine::AsLayer(&one)) layers.push_back(engine::AsLayer(&one));
    if (kind == Kind::Tags && engine::AsTag(&one)) tags.push_back(engine::AsTag(&one));
  }
  if (objects.size() + materials.size() + layers.size() + tags.size() != elements.size())
    throw Failure(Fault::Misused, "Elements of one kind can be selected at once.");
  if (kind == Kind::Materials) return engine::SelectMaterials(doc, materials);
  if (kind == Kind::Layers) return engine::SelectLayers(doc, layers);
  if (kind == Kind::Objects) return engine::SelectOnly(doc, objects);
  engine::SelectNone(doc);
  for (host::BaseTag* tag : tags) engine::SelectTag(*tag, true);
}

}  // namespace scripting
