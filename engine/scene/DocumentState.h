// The state of a document beyond the published interface: counts of its changes, for views and
// caches; scene camera and active settings by identity; selection in its order; data kept for its
// reader; its place in the chain of open documents. Main thread; a document that no other thread
// changes may be read on any.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "engine/core/ContainerContents.h"
#include "host/BaseDocument.h"

namespace engine {

// A number that no other document of this process has, not even a copy of it or the same file
// opened again. Not 0.
host::ULLONG NumberOf(const host::BaseDocument& doc);
// Clears "has unsaved changes".
void ClearChanged(host::BaseDocument& doc);
// Numbers that grow: with every change of the document, with every object put in or taken out, and
// whenever it changes which elements are selected. A view that has seen a number need not look
// again while it stays.
host::ULLONG ChangeCount(const host::BaseDocument& doc);
host::ULLONG TreeChangeCount(const host::BaseDocument& doc);
host::ULLONG SelectionChangeCount(const host::BaseDocument& doc);

// Identity of the scene camera, 0 for none; it may name a camera that is gone. Setting it is no
// change of the document.
NodeId SceneCameraIdOf(const host::BaseDocument& doc);
void SetSceneCameraId(host::BaseDocument& doc, NodeId camera);
NodeId ActiveRenderDataIdOf(const host::BaseDocument& doc);

// The selected objects, then the selected tags, each in the order of selecting.
std::vector<host::BaseList2D*> SelectedInOrder(const host::BaseDocument& doc);
// The tag selected last that is still selected, or null, as GetActiveObject tells the object.
host::BaseTag* ActiveTagOf(const host::BaseDocument& doc);

// Further data that a reader keeps with a document, such as sections that it does not know; copies
// of the document get it, too.
void KeepWith(host::BaseDocument& doc, std::shared_ptr<const void> kept);
const std::shared_ptr<const void>& KeptWith(const host::BaseDocument& doc);

// The chain of open documents, which a program walks by GetNext and GetPred; it owns nothing. Puts
// a document that is in no chain behind `pred`, or starts a chain where that is null.
void ChainDocument(host::BaseDocument& doc, host::BaseDocument* pred);
// Takes it out again; its neighbors become neighbors of each other.
void UnchainDocument(host::BaseDocument& doc);

// How many elements of all kinds live in a document, itself included. O(1).
std::size_t NodeCount(const host::BaseDocument& doc);
// How many of each a document holds. O(n).
struct SceneCounts {
  std::size_t objects = 0;
  std::size_t tags = 0;
  std::size_t materials = 0;
  std::size_t shaders = 0;
  std::size_t layers = 0;
  std::size_t renderSettings = 0;
  std::size_t cameras = 0;
  std::size_t lights = 0;
  std::size_t polygons = 0;
};
SceneCounts CountScene(const host::BaseDocument& doc);

}  // namespace engine
