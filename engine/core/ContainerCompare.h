// The first look at two containers: most that are compared are short and alike to the bit, or not
// alike at once. Bodies are borrowed; any thread that may read them.
#pragma once

#include "engine/core/ContainerBody.h"

namespace engine {

// Of two laid-out bodies of one size: the same entries to the bit.
bool AlikeLaidOut(const ContainerBody& a, const ContainerBody& b);

// True for bodies of one form, but long ones, with the same entries and own ID to the bit: nothing
// nested needs a look. False says nothing.
inline bool AlikeShort(const ContainerBody& a, const ContainerBody& b) {
  if (a.form != b.form || a.IsLong() || a.size != b.size || a.id != b.id) return false;
  if (a.IsLaidOut()) return AlikeLaidOut(a, b);
  const Entry* left = a.Entries();
  const Entry* right = b.Entries();
  for (const Entry* end = left + a.size; left != end; ++left, ++right) {
    if (((KeyAndType(*left) ^ KeyAndType(*right)) | (left->bits ^ right->bits)) != 0) return false;
  }
  return true;
}

}  // namespace engine
