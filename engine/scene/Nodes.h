// Host-only functions on scene elements: what the scene file, the importer, the renderer, undo and
// the programs need beyond the published interface. They work on the same objects that a plug-in
// sees. Main thread.
#pragma once

#include <memory>
#include <vector>

#include "engine/core/ContainerAccess.h"
#include "engine/core/GoOn.h"
#include "engine/scene/DocumentListener.h"
#include "host/BaseDocument.h"
#include "host/BaseMaterial.h"
#include "host/BaseTag.h"
#include "host/GvNode.h"
#include "host/LayerObject.h"
#include "host/RenderData.h"

namespace engine {

// Which published class an element is.
enum class NodeKind : host::UCHAR {
  Document,
  Object,
  Tag,
  TextureTag,
  XPressoTag,
  Material,
  Shader,
  Layer,
  RenderSettings,
  VideoPost,
  Multipass,
  NodeMaster,
  Node,
};

NodeKind KindOf(const host::C4DAtom& atom);
// Name of a type as the host shows it, "Unknown" for one it does not know.
host::String TypeName(host::LONG type);
// The element as a class, or null when it is of another kind (a texture tag is a tag, too).
host::BaseObject* AsObject(host::C4DAtom* atom);
host::BaseTag* AsTag(host::C4DAtom* atom);
host::TextureTag* AsTextureTag(host::C4DAtom* atom);
host::BaseMaterial* AsMaterial(host::C4DAtom* atom);
host::LayerObject* AsLayer(host::C4DAtom* atom);
host::RenderData* AsRenderData(host::C4DAtom* atom);

NodeId IdOf(const host::GeListNode& node);
// Gives a node that is in no document the identity it had in a file. False when it is 0 or the node
// is in a document.
bool SetId(host::GeListNode& node, NodeId id);
// The element with that identity if it lives in `doc`, anywhere in its trees, else null. O(1).
host::BaseList2D* FindNode(const host::BaseDocument* doc, NodeId id);

// A new node of a class with the defaults of its type, in no place, owned by the caller. An
// expression tag has its master and root already. Null for a document.
host::BaseList2D* MakeNode(NodeKind kind, host::LONG type);
// What owns an element: parent, object of a tag, settings of a post, element of a shader, document;
// null for one in no place.
host::BaseList2D* OwnerOf(const host::GeListNode& node);
// Pre-order over everything that `root` owns, whatever its class: shaders, tags, posts, passes,
// expression nodes, children; of a document also layers, render settings, materials and objects, in
// this order. Null at the end. No recursion:
//   for (const GeListNode* node = NextInside(doc, doc); node; node = NextInside(*node, doc)) ...
host::GeListNode* NextInside(const host::GeListNode& node, const host::GeListNode& root);

// Copies of several elements with all below each, in no place, owned by the caller. Links from one
// to another follow the copies. None when it was stopped.
std::vector<host::BaseList2D*> CopyTogether(const std::vector<host::BaseList2D*>& roots,
                                            const GoOn& goOn = {});

// Destroys a node that is in no place, whatever its class, with all below it. Iterative.
void DestroyNode(host::BaseList2D* node);

// Takes the bits and modes as they are, without marking the document changed: for readers.
void SetModes(host::BaseObject& object, host::LONG editor, host::LONG render, bool deform);
NodeId LayerIdOf(const host::BaseList2D& node);
void SetLayerId(host::BaseList2D& node, NodeId layer);
NodeId MaterialIdOf(const host::TextureTag& tag);
void SetMaterialId(host::TextureTag& tag, NodeId material);
NodeId SceneCameraIdOf(const host::BaseDocument& doc);
void SetSceneCameraId(host::BaseDocument& doc, NodeId camera);
NodeId ActiveRenderDataIdOf(const host::BaseDocument& doc);
// The selected objects, then the selected tags, each in the order of selecting.
std::vector<host::BaseList2D*> SelectedInOrder(const host::BaseDocument& doc);
// The tag selected last that is still selected, or null, as GetActiveObject tells the object.
host::BaseTag* ActiveTagOf(const host::BaseDocument& doc);
host::ULLONG NBitsOf(const host::GeListNode& node);
void SetNBits(host::GeListNode& node, host::ULLONG bits);
const host::LayerData& OwnLayerData(const host::LayerObject& layer);
void SetOwnLayerData(host::LayerObject& layer, const host::LayerData& data);

// Geometry of a polygon object, null where it has none. Copies and instances share it; it never
// changes once set.
const std::shared_ptr<const Mesh>& MeshOf(const host::BaseObject& object);
void SetMesh(host::BaseObject& object, std::shared_ptr<const Mesh> mesh);

// What else a reader wants to keep with a document, given to copies of the document, too: sections
// that it does not know, say.
void KeepWith(host::BaseDocument& doc, std::shared_ptr<const void> kept);
const std::shared_ptr<const void>& KeptWith(const host::BaseDocument& doc);

// Attaches the listener that messages to the document go to, in place of an earlier one. Owned by
// the document.
void SetListener(host::BaseDocument& doc, std::unique_ptr<DocumentListener> listener);
DocumentListener* ListenerOf(const host::BaseDocument& doc);

// Gives `node` a name that none of the tree from `first` on has: "Cube" becomes "Cube.1", "Cube.2",
// ... O(n).
void MakeNameUnique(host::BaseList2D& node, const host::BaseList2D* first);

// A number that no other document of this process has, not even a copy of it or the same file
// opened again. Not 0.
host::ULLONG NumberOf(const host::BaseDocument& doc);
// Clears "has unsaved changes"; and a number that grows with every change of the document, for
// views and caches.
void ClearChanged(host::BaseDocument& doc);
host::ULLONG ChangeCount(const host::BaseDocument& doc);
// A number that grows with every object put in or taken out, for views of the tree.
host::ULLONG TreeChangeCount(const host::BaseDocument& doc);
// A number that grows whenever it changes which elements are selected.
host::ULLONG SelectionChangeCount(const host::BaseDocument& doc);

// The next node of a depth-first pre-order walk that stays below `root` (null: walks on through the
// siblings of the start and of its parents); null at the end. No recursion.
host::GeListNode* NextInTree(const host::GeListNode* node, const host::GeListNode* root = nullptr);
template <class T>
T* NextInTree(T* node, const host::GeListNode* root = nullptr) {
  return static_cast<T*>(NextInTree(static_cast<const host::GeListNode*>(node), root));
}

// How many elements of all kinds live in a document, itself included. O(1).
std::size_t NodeCount(const host::BaseDocument& doc);
// How many of each a document holds.
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
