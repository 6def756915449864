// LookedAt: which elements the attributes are of. These are the selected objects or the selected tags, whichever were selected
// last; another panel may put its own there (a material, a layer), until objects or tags are selected anew. It keeps identities
// and owns no element. Main thread.
#pragma once

#include <memory>
#include <vector>

#include "program/desktop/OpenDocument.h"

namespace desktop {

// Identities of elements of one document; a new list whenever they change, so that comparing addresses tells.
using Ids = std::vector<engine::NodeId>;
using SharedIds = std::shared_ptr<const Ids>;

class LookedAt {
 public:
  // Takes up what was selected, deselected or deleted since the last call. Linear in the selection, and cheap when nothing
  // changed.
  void Follow(const host::BaseDocument* doc);
  // Looks at these elements of `doc` until other objects or tags are selected there or all of them are deleted.
  void Show(const host::BaseDocument& doc, Ids elements);
  // Never null; empty when nothing is selected.
  const SharedIds& Elements() const { return elements_; }

 private:
  void ReadSelection(const host::BaseDocument* doc);
  void Choose(const host::BaseDocument* doc);

  host::ULLONG doc_ = 0;
  host::ULLONG seen_ = 0;
  Ids objects_;
  Ids tags_;
  Ids shown_;  // put here by a panel; empty: the selection counts
  bool tagsCameLast_ = false;
  SharedIds elements_ = std::make_shared<Ids>();
};

}  // namespace desktop
