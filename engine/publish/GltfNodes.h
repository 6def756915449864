// GltfNodes: the tree of a glTF file (glTF 2.0, section 3.5): a node for each object that has
// something to show, or something below it that has. A mesh or light that some state hides stands
// on a node without children, because hiding a node hides all below it, while here something may
// show below what is hidden. Refers to what it was given. Main thread.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "engine/core/Progress.h"
#include "engine/core/Result.h"
#include "engine/publish/CamerasAndLights.h"
#include "engine/publish/NodeTexts.h"
#include "engine/publish/PublishedMeshes.h"
#include "host/BaseDocument.h"

namespace engine {

class GltfNodes {
 public:
  GltfNodes(const VisibleParts& parts, PublishedMeshes& meshes, CamerasAndLights& camerasAndLights,
            NodeTexts& texts)
      : parts_(parts), meshes_(meshes), camerasAndLights_(camerasAndLights), texts_(texts) {}

  // Writes the objects of the document; a failure where it was stopped.
  Status Write(const host::BaseDocument& doc, const ProgressCallback& progress);

  // The list of nodes without its brackets; nothing where there are none. TextSize: approximate.
  void AppendText(std::string& to) const;
  std::size_t TextSize() const { return textSize_; }
  const std::vector<std::size_t>& Roots() const { return roots_; }
  // The nodes that do not show in a state, in their order.
  const std::vector<std::size_t>& HiddenIn(std::size_t state) const { return hidden_[state]; }
  // Whether a node is hidden in the first state, which is that of the file as it stands.
  bool HasHidden() const { return !hidden_[0].empty(); }
  // The node of a camera object.
  std::optional<std::size_t> CameraNode(NodeId object) const;
  // Whether any frame held numbers that are not finite; such frames are left out of the file.
  bool HasResetFrames() const { return hasResetFrames_; }
  std::size_t Meshes() const { return meshNodes_; }
  std::size_t Triangles() const { return triangles_; }

 private:
  // An object in the order of the tree.
  struct Place {
    const host::BaseObject* object;
    std::size_t parent;
    bool isWanted = false;
    bool hasWantedBelow = false;
    std::size_t node = 0;  // that its children hang on
  };
  struct Node {
    std::string_view kept;  // members that the texts of nodes keep
    std::string members;    // further ones
    std::vector<std::size_t> children;
  };

  void FindWanted(const host::BaseDocument& doc);
  void AddObject(Place& place);
  std::size_t AddNode(std::string_view kept, std::string members, std::size_t parent);
  void AddParts(const Place& place);
  void AddPart(std::size_t part, const host::BaseObject& object, std::size_t node);

  const VisibleParts& parts_;
  PublishedMeshes& meshes_;
  CamerasAndLights& camerasAndLights_;
  NodeTexts& texts_;
  std::vector<Place> places_;
  std::vector<Node> nodes_;
  std::vector<std::size_t> roots_;
  std::vector<std::vector<std::size_t>> hidden_;
  std::unordered_map<NodeId, std::size_t> cameras_;
  bool hasResetFrames_ = false;
  std::size_t textSize_ = 0;
  std::size_t meshNodes_ = 0;
  std::size_t triangles_ = 0;
};

}  // namespace engine
