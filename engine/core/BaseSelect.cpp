#include "host/BaseSelect.h"

#include <algorithm>

namespace host {

void BaseSelect::Select(LONG number) { SelectAll(number, number); }

void BaseSelect::SelectAll(LONG first, LONG last) {
  if (first > last) return;
  // 64-bit ends: touching ranges are joined without overflow at the ends of LONG.
  const auto touchesAfter = [&](const Range& range) {
    return static_cast<LLONG>(range.last) + 1 < first;
  };
  auto from = std::partition_point(ranges_.begin(), ranges_.end(), touchesAfter);
  auto to = from;
  while (to != ranges_.end() && static_cast<LLONG>(to->first) - 1 <= last) {
    first = std::min(first, to->first);
    last = std::max(last, to->last);
    ++to;
  }
  ranges_.insert(ranges_.erase(from, to), Range{first, last});
}

void BaseSelect::Deselect(LONG number) {
  auto it = std::find_if(ranges_.begin(), ranges_.end(),
                         [&](const Range& r) { return r.first <= number && number <= r.last; });
  if (it == ranges_.end()) return;
  const Range range = *it;
  it = ranges_.erase(it);
  if (number < range.last) it = ranges_.insert(it, Range{number + 1, range.last});
  if (range.first < number) ranges_.insert(it, Range{range.first, number - 1});
}

void BaseSelect::DeselectAll() { ranges_.clear(); }

Bool BaseSelect::IsSelected(LONG number) const {
  const auto it = std::partition_point(ranges_.begin(), ranges_.end(),
                                       [&](const Range& r) { return r.last < number; });
  return it != ranges_.end() && it->first <= number;
}

LONG BaseSelect::GetCount() const {
  LONG count = 0;
  for (const Range& range : ranges_) count += range.last - range.first + 1;
  return count;
}

LONG BaseSelect::GetSegments() const { return static_cast<LONG>(ranges_.size()); }

Bool BaseSelect::GetRange(LONG segment, LONG* first, LONG* last) const {
  if (segment < 0 || segment >= GetSegments()) return FALSE;
  *first = ranges_[static_cast<std::size_t>(segment)].first;
  *last = ranges_[static_cast<std::size_t>(segment)].last;
  return TRUE;
}

}  // namespace host
