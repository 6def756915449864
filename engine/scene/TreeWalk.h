// Walks over a scene: from an element to its owner, over a tree of elements of one class, and over
// everything that an element owns. All of them are loops, so that a chain of a million children is
// walked like any other, and a walk may be left and taken up anywhere. What is walked over must not
// be put in or taken out meanwhile. Any thread that may read the scene.
#pragma once

#include "host/BaseDocument.h"

namespace engine {

// The owner of an element: parent, object of a tag, settings of a post, element of a shader,
// document; null for one in no place.
host::BaseList2D* OwnerOf(const host::GeListNode& node);

// The next node of a depth-first pre-order walk that stays below `root` (null: walks on through the
// siblings of the start and of its parents); null at the end.
host::GeListNode* NextInTree(const host::GeListNode* node, const host::GeListNode* root = nullptr);
template <class T>
T* NextInTree(T* node, const host::GeListNode* root = nullptr) {
  return static_cast<T*>(NextInTree(static_cast<const host::GeListNode*>(node), root));
}

// Pre-order over everything that `root` owns, whatever its class: shaders, tags, posts, passes,
// expression nodes, children; of a document also layers, render settings, materials and objects, in
// this order. Null at the end:
//   for (const GeListNode* node = NextInside(doc, doc); node; node = NextInside(*node, doc)) ...
host::GeListNode* NextInside(const host::GeListNode& node, const host::GeListNode& root);

}  // namespace engine
