// C4DAtom and C4DAtomGoal: the root of everything that lives in a scene. Elements are made by their
// class's Alloc and given back by its Free; they are never copied as C++ objects. Main thread,
// except that a document nobody else knows (a copy made for rendering) may be read by one other
// thread.
#pragma once

#include "host/DescID.h"
#include "host/GeData.h"

namespace engine {
struct NodeAccess;
}

namespace host {

class AliasTrans;

// Copy flags. 0: everything. The stand-in knows these two besides.
// Leave out bits; copied video posts and passes start with bits 0
inline constexpr LONG COPY_NO_BITS = 16;
// A whole document: identities are kept, links inside follow the copy
inline constexpr LONG COPY_DOCUMENT = 1024;

class C4DAtom {
 public:
  C4DAtom(const C4DAtom&) = delete;
  C4DAtom& operator=(const C4DAtom&) = delete;

  // The registered type number: 5616 for a texture tag, say.
  LONG GetType() const { return type_; }
  // True for the own type and for the base types it is derived from (Obase, Tbase, ...). Ask this
  // before a static_cast: there is no other run-time type.
  Bool IsInstanceOf(LONG type) const;

  // A copy that belongs to no document, owned by the caller; null when it cannot be made. A copied
  // element gets an identity of its own, a copied document (COPY_DOCUMENT) keeps those of all its
  // elements. `trans` may be null and changes nothing. Links inside of the copied part follow the
  // copy, links out of it stay.
  C4DAtom* GetClone(LONG flags, AliasTrans* trans);
  // Writes name, data, bits, video posts and multi-passes of this element (and what else its kind
  // holds) over `dst`; never identity and place. Onto itself: nothing happens. False for unlike
  // kinds.
  Bool CopyTo(C4DAtom* dst, LONG flags, AliasTrans* trans);

  // Reads a parameter. False, with `value` as it was, when there is none. `flags` change nothing.
  // Setting creates the parameter where it is missing; false for an empty path only.
  Bool GetParameter(const DescID& id, GeData& value, LONG flags) const;
  Bool SetParameter(const DescID& id, const GeData& value, LONG flags);

  // Sends a message to the element: true when something took it. Number 5 is "update". `data` is
  // what the message's number says it is, owned by the sender. A document hands it on to its scene
  // hooks before this returns. An element of no document takes nothing.
  Bool Message(LONG type, void* data = nullptr);

 protected:
  C4DAtom(LONG type, UCHAR kind) : type_(type), kind_(kind) {}
  ~C4DAtom() = default;

 private:
  friend struct engine::NodeAccess;

 protected:
  LONG type_;
  UCHAR kind_;  // which class this is; engine/scene knows the numbers
  // Objects only: editor, render, deform; here to share a cache line with the type
  UCHAR modes_[3] = {2, 2, 1};
};

// Base class of all that a link can point to.
class C4DAtomGoal : public C4DAtom {
 protected:
  using C4DAtom::C4DAtom;
  ~C4DAtomGoal() = default;
};

}  // namespace host
