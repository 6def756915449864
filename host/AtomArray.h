// AtomArray: a list of elements, none of them owned. AutoAlloc: owns one host object and gives it
// back by its class's Free. Main thread.
#pragma once

#include <vector>

#include "host/C4DAtom.h"

namespace host {

class AtomArray {
 public:
  // Made and given back by the caller, best by AutoAlloc. The array is no part of any document.
  static AtomArray* Alloc();
  static void Free(AtomArray*& array);

  LONG GetCount() const { return static_cast<LONG>(atoms_.size()); }
  // The element at `index` (0-based), null outside.
  C4DAtom* GetIndex(LONG index) const;
  // Null and repetitions are kept. An element that is freed meanwhile leaves its pointer behind:
  // use a list before anything can be deleted.
  void Append(C4DAtom* atom);
  void Flush() { atoms_.clear(); }

 private:
  std::vector<C4DAtom*> atoms_;
};

// `AutoAlloc<BaseSelect> s;` allocates; `s` reads as the pointer, null when that failed.
template <class T>
class AutoAlloc {
 public:
  AutoAlloc() : pointer_(T::Alloc()) {}
  AutoAlloc(const AutoAlloc&) = delete;
  AutoAlloc& operator=(const AutoAlloc&) = delete;
  ~AutoAlloc() { T::Free(pointer_); }
  operator T*() const { return pointer_; }
  T* operator->() const { return pointer_; }

 private:
  T* pointer_;
};

}  // namespace host
