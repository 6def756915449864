// ElementMatch: which objects and materials of a scene are which of a newer import of the file that
// they came from: by the identity that the file itself gives, then by the names from the top, then,
// for what was moved, by a name that nothing else has. Of elements with one name in one place the
// first is the first. What was made in the scene is looked through, as if what stands below it
// stood above it. Linear in both. Main thread; both documents outlive it unchanged.
#pragma once

#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "engine/core/ContainerContents.h"
#include "host/BaseDocument.h"

namespace engine {

class ElementMatch {
 public:
  // `imported`: identities of elements that came from the file; empty: not known, all may have.
  ElementMatch(const host::BaseDocument& scene, const host::BaseDocument& fresh,
               const std::unordered_set<NodeId>& imported);

  // The element of the scene for one of the fresh import, null where there is none.
  host::BaseObject* ObjectFor(const host::BaseObject& fresh) const;
  host::BaseMaterial* MaterialFor(const host::BaseMaterial& fresh) const;
  // Elements that came from the file, or may have, and are not in the fresh import; a tree in
  // order.
  const std::vector<host::BaseObject*>& GoneObjects() const { return goneObjects_; }
  const std::vector<host::BaseMaterial*>& GoneMaterials() const { return goneMaterials_; }

 private:
  void MatchObjects(const host::BaseDocument& scene, const host::BaseDocument& fresh,
                    const std::unordered_set<NodeId>& imported);
  void MatchMaterials(const host::BaseDocument& scene, const host::BaseDocument& fresh,
                      const std::unordered_set<NodeId>& imported);

  std::unordered_map<NodeId, host::BaseObject*> objects_;  // by identities of the fresh import
  std::unordered_map<NodeId, host::BaseMaterial*> materials_;
  std::vector<host::BaseObject*> goneObjects_;
  std::vector<host::BaseMaterial*> goneMaterials_;
};

}  // namespace engine
