// InspectedElements: which elements a person looks at, whose fields are shown: the selected
// objects, tags, materials or layers, whichever were selected last. A panel may put others there
// until something is selected anew. It keeps identities and owns no element. Main thread.
#pragma once

#include <array>
#include <memory>
#include <vector>

#include "engine/core/ContainerContents.h"
#include "host/BaseDocument.h"

namespace engine {

// Identities of elements of one document; a new list whenever they change, so that comparing
// addresses tells.
using Ids = std::vector<NodeId>;
using SharedIds = std::shared_ptr<const Ids>;

class InspectedElements {
 public:
  enum Kind { kTags, kMaterials, kLayers, kObjects, kKinds };

  // Takes up what was selected, deselected or deleted since the last call. Linear in the selection
  // where that changed, else cheap.
  void Follow(const host::BaseDocument* doc);
  // Looks at these elements of `doc` until others are selected there or all of them are deleted.
  void Show(const host::BaseDocument& doc, Ids elements);
  // Looks at the selected ones of that kind again, as somebody touched them. Nothing where none is
  // selected.
  void Return(const host::BaseDocument& doc, Kind kind);
  // Never null; empty when nothing is selected.
  const SharedIds& Elements() const { return elements_; }

 private:
  using Selection = std::array<Ids, kKinds>;

  static Selection ReadSelection(const host::BaseDocument& doc);
  void TakeOver(Selection selection, bool isNew);
  const Ids& Wanted() const;
  void Choose(const host::BaseDocument* doc);

  host::ULLONG doc_ = 0;
  host::ULLONG seen_ = 0;
  Selection selection_;
  Kind last_ = kObjects;
  Ids shown_;  // put here by a panel; empty: the selection counts
  SharedIds elements_ = std::make_shared<Ids>();
};

}  // namespace engine
