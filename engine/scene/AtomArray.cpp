#include "host/AtomArray.h"

namespace host {

AtomArray* AtomArray::Alloc() { return new AtomArray; }

void AtomArray::Free(AtomArray*& array) {
  delete array;
  array = nullptr;
}

C4DAtom* AtomArray::GetIndex(LONG index) const {
  return index >= 0 && index < GetCount() ? atoms_[static_cast<std::size_t>(index)] : nullptr;
}

void AtomArray::Append(C4DAtom* atom) { atoms_.push_back(atom); }

}  // namespace host
