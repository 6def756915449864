#include "engine/publish/GltfNodes.h"

#include "engine/publish/GltfText.h"
#include "engine/scene/TreeWalk.h"

namespace engine {

using host::BaseObject;

namespace {

constexpr std::size_t kNone = VisibleParts::kNone;
// So often the caller is asked whether to go on, whichever comes first.
constexpr std::size_t kObjectsPerReport = 1000;
constexpr std::size_t kTrianglesPerReport = 20000;

}  // namespace

// Marks the objects with content and everything above them as wanted.
void GltfNodes::FindWanted(const host::BaseDocument& doc) {
  std::size_t parent = kNone;
  for (const BaseObject* object = doc.GetFirstObject(); object;) {
    places_.push_back({object, parent});
    places_.back().isWanted =
        object->GetType() == host::Ocamera || parts_.FirstOf(IdOf(*object)) != kNone;
    if (object->GetDown()) {
      parent = places_.size() - 1;
      object = object->GetDown();
      continue;
    }
    while (object && !object->GetNext()) {
      object = object->GetUp();
      if (object) parent = places_[parent].parent;
    }
    if (object) object = object->GetNext();
  }
  // From the end: children stand behind their parents, so each is known before its parent is asked
  // for.
  for (std::size_t i = places_.size(); i-- > 0;) {
    if (!places_[i].isWanted || places_[i].parent == kNone) continue;
    Place& above = places_[places_[i].parent];
    above.isWanted = above.hasWantedBelow = true;
  }
}

Status GltfNodes::Write(const host::BaseDocument& doc, const ProgressCallback& progress) {
  FindWanted(doc);
  nodes_.reserve(places_.size());
  hidden_.resize(parts_.States());
  std::size_t objects = 0;
  std::size_t triangles = 0;
  for (std::size_t i = 0; i < places_.size(); ++i) {
    if (places_[i].isWanted) AddObject(places_[i]);
    if (++objects < kObjectsPerReport && triangles_ - triangles < kTrianglesPerReport) continue;
    objects = 0;
    triangles = triangles_;
    if (progress && !progress(static_cast<double>(i) / static_cast<double>(places_.size())))
      return Status::Failure("Publishing was stopped.");
  }
  return {};
}

std::size_t GltfNodes::AddNode(std::string_view kept, std::string members, std::size_t parent) {
  constexpr std::size_t kFurther = 64;  // bytes of what a node has mostly besides
  textSize_ += kept.size() + kFurther;
  const std::size_t node = nodes_.size();
  (parent == kNone ? roots_ : nodes_[parent].children).push_back(node);
  nodes_.push_back({kept, std::move(members), {}});
  return node;
}

void GltfNodes::AddObject(Place& place) {
  const BaseObject& object = *place.object;
  const NodeText& text = texts_.Of(object);
  hasResetFrames_ = hasResetFrames_ || text.wasReset;
  const std::size_t above = place.parent == kNone ? kNone : places_[place.parent].node;
  place.node = AddNode(text.members, "", above);
  // Children hang on the inner one, which has the whole frame.
  if (!text.inner.empty()) place.node = AddNode(text.inner, "", place.node);
  if (object.GetType() == host::Ocamera) {
    nodes_[place.node].members += ",\"camera\":";
    AppendCount(nodes_[place.node].members, camerasAndLights_.CameraOf(object));
    cameras_.emplace(IdOf(object), place.node);
  }
  AddParts(place);
}

void GltfNodes::AddParts(const Place& place) {
  const std::size_t first = parts_.FirstOf(IdOf(*place.object));
  if (first == kNone) return;
  const bool isAlone = parts_.At(first).next == kNone;
  // On the object's own node where hiding it hides nothing else.
  if (isAlone && (!place.hasWantedBelow || parts_.AlwaysShows(first)))
    return AddPart(first, *place.object, place.node);
  const std::string name = "\"name\":" + Quoted(NodeNameOf(*place.object));
  for (std::size_t part = first; part != kNone; part = parts_.At(part).next)
    AddPart(part, *place.object, AddNode("", name, place.node));
}

void GltfNodes::AddPart(std::size_t part, const BaseObject& object, std::size_t node) {
  std::string& members = nodes_[node].members;
  std::string extensions;
  if (parts_.At(part).mesh) {
    if (const auto mesh = meshes_.IndexOf(part, object)) {
      members += ",\"mesh\":";
      AppendCount(members, *mesh);
      ++meshNodes_;
      triangles_ += meshes_.TrianglesOf(part);
    }
  } else {
    extensions = "\"KHR_lights_punctual\":{\"light\":";
    AppendCount(extensions, camerasAndLights_.LightOf(object));
    extensions += "}";
  }
  for (std::size_t state = 0; state < parts_.States(); ++state) {
    if (!parts_.Shows(part, state)) hidden_[state].push_back(node);
  }
  if (!parts_.Shows(part, 0))
    extensions += (extensions.empty() ? "" : ",") +
                  std::string("\"KHR_node_visibility\":{\"visible\":false}");
  if (!extensions.empty()) members += ",\"extensions\":{" + extensions + "}";
}

void GltfNodes::AppendText(std::string& to) const {
  for (const Node& node : nodes_) {
    to += &node == nodes_.data() ? "{" : ",{";
    to.append(node.kept).append(node.members);
    if (!node.children.empty()) AppendNumbers(to, "children", node.children);
    to += '}';
  }
}

std::optional<std::size_t> GltfNodes::CameraNode(NodeId object) const {
  const auto found = cameras_.find(object);
  return found == cameras_.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace engine
