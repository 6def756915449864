// GeListNode and GeListHead: places in a tree. A node hangs below at most one parent or head and
// belongs to at most one document; heads and parents own what hangs below them. Main thread.
#pragma once

#include "host/C4DAtom.h"

namespace host {

// How ChangeNBit changes a bit.
inline constexpr LONG NBIT_CLEAR = 0;
inline constexpr LONG NBIT_SET = 1;
inline constexpr LONG NBIT_TOGGLE = 2;

class GeListNode : public C4DAtomGoal {
 public:
  // Neighbors in the tree, null where there is none. GetUp of a top-level node is null.
  GeListNode* GetNext() const { return next_; }
  GeListNode* GetPred() const { return pred_; }
  GeListNode* GetUp() const { return up_; }
  GeListNode* GetDown() const { return down_; }
  GeListNode* GetDownLast() const { return downLast_; }

  // The document this node belongs to, or null. O(1).
  BaseDocument* GetDocument() const { return document_; }

  // Takes the node with its subtree out of its place; the caller owns it from then on. It is
  // for putting a node elsewhere; to delete one, call its class's Free instead. The root of an
  // expression stays in its place.
  void Remove();

  // A bit of the node's own second set by its number: control value 0 clears, 1 sets, 2 toggles.
  // False for a bit number outside 0..63. Saved with the scene; free for the program around, no
  // meaning here.
  Bool ChangeNBit(LONG bit, LONG control);
  Bool GetNBit(LONG bit) const;

 protected:
  using C4DAtomGoal::C4DAtomGoal;
  ~GeListNode() = default;

 private:
  friend struct engine::NodeAccess;
  // In this order a walk that records objects stays inside the first 64 bytes of each.
  GeListNode* next_ = nullptr;
  GeListNode* down_ = nullptr;
  ULLONG id_ = 0;  // identity: no other node ever gets it

 protected:
  // Of an object: its first tag. Of tags, shaders, video posts, passes, node masters and roots:
  // what owns them.
  GeListNode* kin_ = nullptr;

 private:
  BaseDocument* document_ = nullptr;
  GeListNode* up_ = nullptr;
  GeListNode* pred_ = nullptr;
  GeListNode* downLast_ = nullptr;
  ULLONG nbits_ = 0;
};

// The invisible parent of a list of top-level nodes, owned by the document.
class GeListHead {
 public:
  GeListNode* GetFirst() const { return first_; }
  GeListNode* GetLast() const { return last_; }

 private:
  friend struct engine::NodeAccess;
  GeListNode* first_ = nullptr;
  GeListNode* last_ = nullptr;
};

}  // namespace host
