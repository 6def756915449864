// The structure of a scene: which lists an element owns, putting into and taking out of them, and
// the one walk that reaches everything below an element, whatever its class. Nothing here recurses.
// Main thread.
#pragma once

#include "engine/scene/NodeAccess.h"

namespace engine {

// The lists below an element, in the order in which everything walks them. Documents use the last
// four for their own lists.
enum Slot : int {
  kShaders = 0,
  kAttached = 1,  // tags of an object, posts of render settings, the node master of an expression
  kPasses = 2,
  kChildren = 3,
  kLayers = 4,
  kSettings = 5,
  kMaterials = 6,
  kObjects = 7,
  kSlots = 8,
};

// First element of a list, null where it is empty or the class has no such list.
host::GeListNode* FirstIn(const host::GeListNode& owner, int slot);
// The list of its owner that an element is in.
int SlotOf(const host::GeListNode& node);

// The first element inside, in the order of the lists; null where there is none.
host::GeListNode* FirstInside(const host::GeListNode& node);
// The next one in the same list, else the first of the owner's later lists, else null.
host::GeListNode* Following(const host::GeListNode& node);

// Puts a node that is in no place into a list of `owner`, after `pred` or first where that is null;
// registers it and all below it with the owner's document. Changes nothing when memory runs out
// (std::bad_alloc).
void PutIn(host::GeListNode& node, host::BaseList2D& owner, int slot, host::GeListNode* pred);
// Last element of a list, null where it is empty.
host::GeListNode* LastIn(host::BaseList2D& owner, int slot);
// Takes a node with all below it out of its place and its document. Nothing happens to one that is
// in no place.
void TakeOut(host::GeListNode& node);
// For the published insertions: false, doing nothing, where the node is null, has no business below
// `owner`, or `owner` hangs below it. Takes the node out of its present place first. A `pred` from
// elsewhere counts as null.
bool Place(host::BaseList2D* node, host::BaseList2D* owner, int slot, host::GeListNode* pred);

// Takes the bits as they are, remembering the order of selecting. Changes nothing when memory runs
// out.
void ApplyBits(host::BaseList2D& node, host::LONG bits);

}  // namespace engine
