// BaseSelect: a set of row or element numbers, kept as ascending ranges. A value.
#pragma once

#include <vector>

#include "host/Types.h"

namespace host {

class BaseSelect {
 public:
  // Adds or removes one number, or all from `first` to `last`, both included. Any number may be in
  // a set; ranges that touch are joined. `first` above `last` adds nothing, and so does a number
  // that is in it already.
  void Select(LONG number);
  void SelectAll(LONG first, LONG last);
  void Deselect(LONG number);
  void DeselectAll();

  Bool IsSelected(LONG number) const;
  // How many numbers are selected.
  LONG GetCount() const;
  // How many ranges there are, and range `segment` (0-based) with both ends included; false
  // outside.
  LONG GetSegments() const;
  // Cheaper than IsSelected for each number: a selection of a million rows is one range.
  Bool GetRange(LONG segment, LONG* first, LONG* last) const;

 private:
  struct Range {
    LONG first;
    LONG last;
  };
  std::vector<Range> ranges_;
};

}  // namespace host
