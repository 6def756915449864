// The pre-order walk over a tree of nodes, without recursion, so that a chain of any depth is
// walked. Any node class with GetDown, GetNext and GetUp.
#pragma once

namespace stagemarks {

// The node after `node`: its first child, else the next sibling of it or of the nearest node above
// it that has one. Never climbs to `above` (null: the invisible top); null at the end.
template <class Node>
Node* NextInOrder(Node* node, const Node* above = nullptr) {
  if (Node* down = node->GetDown()) return down;
  for (; node && node != above; node = node->GetUp()) {
    if (Node* next = node->GetNext()) return next;
  }
  return nullptr;
}

}  // namespace stagemarks
