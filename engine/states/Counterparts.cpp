#include "engine/states/Counterparts.h"

#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/TreeWalk.h"

namespace engine {

using host::BaseDocument;
using host::BaseList2D;
using host::GeListNode;

std::unordered_map<NodeId, std::string> ExactPaths(const BaseDocument& doc) {
  std::unordered_map<NodeId, std::string> paths;
  std::unordered_map<std::string, std::size_t> taken;
  for (const GeListNode* node = NextInside(doc, doc); node; node = NextInside(*node, doc)) {
    const auto& element = static_cast<const BaseList2D&>(*node);
    const BaseList2D* owner = OwnerOf(element);
    const auto above = owner && owner != &doc ? paths.find(IdOf(*owner)) : paths.end();
    std::string path = above == paths.end() ? std::string() : above->second;
    path += '/' + std::to_string(element.GetType()) + ':' + element.GetName().ToUtf8();
    if (const std::size_t before = taken[path]++; before > 0) path += '\n' + std::to_string(before);
    paths.emplace(IdOf(element), std::move(path));
  }
  return paths;
}

NodeId Counterparts::Find(NodeId element) {
  const BaseList2D* here = FindNode(&from_, element);
  if (!here) return 0;
  const BaseList2D* there = FindNode(&to_, element);
  if (there && there->GetType() == here->GetType() && there->GetName() == here->GetName())
    return element;
  if (!hasPaths_) {
    hasPaths_ = true;
    paths_ = ExactPaths(from_);
    for (auto& [id, path] : ExactPaths(to_)) places_.emplace(path, id);
  }
  const auto place = places_.find(paths_[element]);
  return place == places_.end() ? 0 : place->second;
}

}  // namespace engine
