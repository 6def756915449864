// The first look at two containers: most that are compared are short and alike to the bit, or not
// alike at once. Bodies are borrowed; any thread that may read them.
#pragma once

#include "engine/core/ContainerBody.h"

namespace engine {

// True for short bodies with the same entries and own ID to the bit: nothing nested needs a look.
// False says nothing.
inline bool AlikeShort(const ContainerBody& a, const ContainerBody& b) {
  if (a.IsLong() || b.IsLong() || a.size != b.size || a.id != b.id) return false;
  const Entry* left = a.Entries();
  const Entry* right = b.Entries();
  for (const Entry* end = left + a.size; left != end; ++left, ++right) {
    if (((KeyAndType(*left) ^ KeyAndType(*right)) | (left->bits ^ right->bits)) != 0) return false;
  }
  return true;
}

}  // namespace engine
