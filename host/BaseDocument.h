// BaseDocument: a scene. It owns objects, materials, layers, render settings, its parameter
// container and its undo steps, and it is what links resolve against. BaseDraw: its view. Main
// thread; a copy made for rendering may be read by the render thread.
#pragma once

#include <memory>

#include "host/AtomArray.h"
#include "host/BaseList2D.h"
#include "host/BaseObject.h"

namespace engine {
struct DocumentBody;
}

namespace host {

class BaseMaterial;
class BaseTag;
class LayerObject;
class RenderData;

inline constexpr LONG Tbasedocument = 110059;

// Undo types. CHANGE: the element's state before a change. DELETE: before it is freed. NEW: after
// it was inserted. Each is registered inside of StartUndo and EndUndo, by AddUndo.
inline constexpr LONG UNDO_CHANGE = 40;
inline constexpr LONG UNDO_NEW = 44;
inline constexpr LONG UNDO_DELETE = 45;

// Selection modes.
inline constexpr LONG SELECTION_NEW = 0;
inline constexpr LONG SELECTION_ADD = 1;
inline constexpr LONG SELECTION_SUB = 2;

// Flag of GetActiveObjects: children of selected parents count too.
inline constexpr LONG GETACTIVEOBJECTFLAGS_CHILDREN = 1;

// The view that renders are made from. Owned by its document.
class BaseDraw {
 public:
  // The camera looked through, or null: none, or one that was deleted. `doc` is the document of
  // this view. Not owned by the caller.
  BaseObject* GetSceneCamera(const BaseDocument* doc) const;
  // Null looks through the editor camera. `animate` is there for the host's signature. A camera of
  // another document is taken and reads as none. Which camera is looked through belongs to the undo
  // group that is open: no AddUndo is needed for it.
  void SetSceneCamera(BaseObject* camera, Bool animate);

 private:
  friend struct engine::NodeAccess;
  ULLONG camera_ = 0;  // identity, 0 for none
  BaseDocument* document_ = nullptr;
};

class BaseDocument : public BaseList2D {
 public:
  // An empty document with one render settings, no path and the name "Untitled"; owned by the
  // caller until inserted into the host's list. Null when out of memory. Its "unsaved changes" are
  // off.
  static BaseDocument* Alloc();
  // Destroys a document that is in no list; null is allowed.
  static void Free(BaseDocument*& doc);

  // First of each list, null where it is empty (render settings: never).
  BaseObject* GetFirstObject() const;
  BaseMaterial* GetFirstMaterial() const;
  RenderData* GetFirstRenderData() const;
  // The invisible parent of the layers; never null.
  GeListHead* GetLayerObjectRoot() const;

  // Puts an element (owned by nobody) below `parent`, or at the top level where that is null, after
  // `pred`, or first where that is null. The document owns it from then on. `checknames` makes the
  // name unique: O(n). An element of another document is moved here, a parent that is not of this
  // document changes nothing.
  void InsertObject(BaseObject* op, BaseObject* parent, BaseObject* pred, Bool checknames = FALSE);
  void InsertMaterial(BaseMaterial* material, BaseMaterial* pred = nullptr,
                      Bool checknames = FALSE);
  void InsertLayer(LayerObject* layer, LayerObject* parent = nullptr, LayerObject* pred = nullptr);
  // Changes nothing about which settings are active.
  void InsertRenderData(RenderData* settings, RenderData* parent, RenderData* pred);
  // As the Insert functions, at the end of the list in question. O(1).
  void AppendObject(BaseObject* op, BaseObject* parent = nullptr);
  void AppendMaterial(BaseMaterial* material);
  void AppendLayer(LayerObject* layer, LayerObject* parent = nullptr);

  // Never null. Setting one that is not of this document changes nothing.
  RenderData* GetActiveRenderData() const;
  void SetActiveRenderData(RenderData* settings);
  // The view that renders use; never null.
  BaseDraw* GetRenderBaseDraw() const;

  // File name and folder. A document that was never saved has an empty path. The name has its
  // suffix. Setting them renames nothing on the disk.
  Filename GetDocumentName() const;
  void SetDocumentName(const Filename& name);
  Filename GetDocumentPath() const;
  void SetDocumentPath(const Filename& path);

  // Frames per second of the document's time.
  LONG GetFps() const;
  // At least 1; less changes nothing.
  void SetFps(LONG fps);

  // "Has unsaved changes". What is selected is none. The setters of elements do this by themselves:
  // only what is written through GetDataInstance has to say so.
  void SetChanged();
  Bool GetChanged() const;

  // Opens and closes an undo group; opening while one is open goes on with it. One Undo takes back
  // one group.
  Bool StartUndo();
  Bool EndUndo();
  // Registers a change of `element` (a node) in the open group. False, doing nothing, outside a
  // group. CHANGE and DELETE come before the act, NEW comes after it. An element may be registered
  // more than once in a group: Undo runs backwards and ends with the first state. The document
  // itself and elements of other documents are refused.
  Bool AddUndo(LONG type, void* element);
  // Take back or do again one group; false when there is none. For programs around a plug-in; a
  // plug-in that undoes by itself takes back what a person did.
  Bool DoUndo();
  Bool DoRedo();

  // The selected object that was selected last, or null. The selected ones in pre-order, children
  // of selected parents included. The selected tags in pre-order of objects, in tag order. The
  // lists are flushed first; they walk the whole scene, O(objects). `flags` change nothing.
  BaseObject* GetActiveObject() const;
  void GetActiveObjects(AtomArray& selection, LONG flags) const;
  void GetActiveTags(AtomArray& selection) const;
  // NEW with null selects nothing. An element of another document changes nothing.
  void SetActiveObject(BaseObject* op, LONG mode = SELECTION_NEW);
  void SetActiveTag(BaseTag* tag, LONG mode = SELECTION_NEW);

  // One entry (type 131) per texture reference under keys 0, 1, 2 ..., in scene order: materials,
  // objects, expression nodes; missing files too. `objects`: null for the whole document.
  BaseContainer GetAllTextures(const AtomArray* objects) const;

 private:
  friend struct engine::NodeAccess;
  explicit BaseDocument(std::unique_ptr<engine::DocumentBody> body);
  ~BaseDocument();
  std::unique_ptr<engine::DocumentBody> body_;
};

}  // namespace host
