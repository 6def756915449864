// MaterialUpdate: the materials' part of an update of a scene: new ones come in, changed ones get
// what the file says of them with their textures, all others stay. A part of the open undo group.
// Main thread.
#pragma once

#include <unordered_map>
#include <vector>

#include "engine/import/ImportedElements.h"
#include "engine/scene/NodeCopy.h"
#include "engine/update/ElementMatch.h"
#include "engine/update/SceneUpdate.h"

namespace engine {

class MaterialUpdate {
 public:
  // `before` and `now`: what the file said of its elements the last time and says this time. All
  // outlive this.
  MaterialUpdate(host::BaseDocument& doc, const host::BaseDocument& fresh,
                 const ElementMatch& match, const ImportedElements& before,
                 const ImportedElements& now);

  ElementChanges Run();
  // The material of the scene for one of the fresh import, 0 for none.
  NodeId CounterpartOf(NodeId fresh) const;
  // The file's materials, to be remembered until the next update.
  const std::vector<ImportedElement>& Counterparts() const { return remembered_; }

 private:
  host::BaseMaterial* Add(const host::BaseMaterial& fresh);
  void Replace(host::BaseMaterial& material, const host::BaseMaterial& fresh);
  void BringFiles(host::BaseMaterial& material);

  host::BaseDocument& doc_;
  const host::BaseDocument& fresh_;
  const ElementMatch& match_;
  std::unordered_map<NodeId, ImportedElement> before_;
  std::unordered_map<NodeId, ImportedElement> now_;
  std::unordered_map<NodeId, NodeId> counterparts_;
  std::vector<ImportedElement> remembered_;
};

}  // namespace engine
