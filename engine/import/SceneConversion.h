// SceneConversion: the importing library's scene to a document: nodes to objects with their frames,
// shared meshes, texture tags, cameras, lights and layers. Walks with a list, whatever the depth.
// Lives in the child.
#pragma once

#include <assimp/scene.h>

#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "engine/import/ImportedStates.h"
#include "engine/import/MaterialConversion.h"
#include "engine/import/SceneFacts.h"
#include "engine/scene/Mesh.h"
#include "host/BaseDocument.h"
#include "host/LayerObject.h"

namespace engine {

class SceneConversion {
 public:
  SceneConversion(const aiScene& scene, SourceFormat format, const SceneFacts& facts,
                  host::BaseDocument& doc, Notes& notes);

  // Fills the document, which is empty. `progress` hears 0..1 and stops the work by answering
  // false; the document is then incomplete and the answer false, too.
  bool Convert(const std::function<bool(double)>& progress);

 private:
  struct Pending {
    const aiNode* node;
    host::BaseObject* parent;
    bool isTop;  // directly below a root that is no object
  };
  // The part of a node that becomes an object of its own kind.
  struct Parts {
    std::vector<unsigned> meshes;
    const NodeFacts* facts;
    std::size_t Count() const {
      return meshes.size() + facts->cameras.size() + facts->lights.size();
    }
  };

  Parts PartsOf(const aiNode& node);
  host::Matrix FrameOf(const aiNode& node, bool isTop);
  host::BaseObject* Place(const Pending& pending);
  host::BaseObject* MakeSingle(const aiNode& node, const Parts& parts, host::Matrix& frame);
  void AddParts(const Parts& parts, host::BaseObject& under);
  host::BaseObject* MakePolygons(unsigned mesh);
  void SetTags(host::BaseObject& object, unsigned mesh);
  host::BaseObject* MakeCamera(const SourceCamera& camera);
  host::BaseObject* MakeLight(const SourceLight& light);
  void ApplyFacts(const NodeFacts& facts, host::BaseObject& object);
  host::LayerObject* LayerNamed(const std::string& name);
  host::String NameOf(const aiNode& node, const NodeFacts& facts,
                      const host::BaseObject& object) const;
  void PushChildren(const aiNode& node, host::BaseObject* parent, bool isTop);
  ImportedState StateOf(const SourceState& source) const;
  NodeId CameraOf(const SourceState& source) const;
  NodeId ObjectOf(std::size_t node) const;
  void KeepStates();
  void NoteLosses();

  const aiScene& scene_;
  const SceneFacts& facts_;
  host::BaseDocument& doc_;
  Notes& notes_;
  MaterialConversion materials_;
  double scale_;
  host::Matrix rootFrame_;
  std::vector<std::shared_ptr<const Mesh>> meshes_;  // made when first used
  std::unordered_map<std::string, host::LayerObject*> layers_;
  std::vector<Pending> pending_;
  host::BaseObject* firstCamera_ = nullptr;
  // Where the file holds states: the objects of its nodes, and the texture tags that variants
  // change with their meshes
  std::unordered_map<const aiNode*, host::BaseObject*> placed_;
  std::vector<std::pair<NodeId, unsigned>> varied_;
};

}  // namespace engine
