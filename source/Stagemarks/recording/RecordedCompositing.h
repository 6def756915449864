// RecordedCompositing: what was recorded of the scene's compositing tags last, in the order of the
// walk. A tag whose data is what it was then is recorded again without reading its fifty values,
// and so is one whose data is that of the tag before. The copies of data and records share their
// entries with tags and stores. Main thread.
#pragma once

#include <cstddef>
#include <vector>

#include "source/Stagemarks/Host.h"

namespace stagemarks {

class RecordedCompositing {
 public:
  // Begins a walk over all tags anew.
  void Begin() { next_ = 0; }
  // The record of the walk's next tag, own ID and link to the tag included; valid until the next
  // call.
  const BaseContainer& RecordOf(const BaseTag& tag, LONG index);
  // Forgets the tags behind the last one of the walk.
  void End() { tags_.resize(next_); }

 private:
  struct Recorded {
    BaseContainer data;
    BaseContainer record;
    GeData tag;  // a link
    LONG index = NOTOK;
    // Whether equal data gives an equal record. Containers are equal whatever their own IDs, which
    // a record keeps.
    Bool isFlat = FALSE;
  };

  std::vector<Recorded> tags_;
  std::size_t next_ = 0;
  BaseContainer data_;  // of the tag before
  BaseContainer work_;  // its record, written over for the next one
  Bool isFlat_ = FALSE;
};

}  // namespace stagemarks
