// DocumentBody: what a document holds besides what every element holds. Known to engine/scene and
// engine/undo only; the lists own their nodes. Main thread.
#pragma once

#include <memory>

#include "engine/scene/DeletedStates.h"
#include "engine/scene/DocumentListener.h"
#include "engine/scene/EditorView.h"
#include "engine/scene/EmbeddedFiles.h"
#include "engine/scene/NodeAccess.h"
#include "engine/scene/NodeTable.h"
#include "engine/scene/SelectionOrder.h"

namespace engine {

// Documents made up to now.
inline host::ULLONG documentsMade = 0;

struct DocumentBody {
  host::GeListHead layers;
  host::GeListHead renderSettings;
  host::GeListHead materials;
  host::GeListHead objects;

  NodeTable table;
  host::RenderData* activeSettings = nullptr;
  host::BaseDraw view;
  host::ULLONG cameraSets = 0;           // see SceneCameraSetCount
  std::optional<EditorView> editorView;  // none: nobody looks at it
  host::Filename path;
  host::LONG fps = 30;
  bool changed = false;
  host::ULLONG changes = 0;
  const host::ULLONG number = ++documentsMade;
  host::ULLONG treeChanges = 0;  // objects put in and taken out
  // Elements selected and deselected, put in and taken out with that
  host::ULLONG selectionChanges = 0;

  SelectionOrder selectedObjects;
  SelectionOrder selectedTags;

  std::shared_ptr<const void> kept;               // see KeepWith
  std::shared_ptr<const EmbeddedFiles> embedded;  // null: none
  SharedDeletedStates deletedStates;              // null: none; not copied
  std::unique_ptr<DocumentListener> listener;
  std::unique_ptr<UndoAttachment> undo;
};

inline DocumentBody& BodyOf(const host::BaseDocument& doc) { return NodeAccess::Body(doc); }

// Tells views and caches that the document of a node, if it has one, is not what it was.
inline void TouchView(host::GeListNode& node) {
  if (const host::BaseDocument* doc = node.GetDocument()) ++BodyOf(*doc).changes;
}

// Marks it as having unsaved changes, too.
inline void Touch(host::GeListNode& node) {
  TouchView(node);
  if (const host::BaseDocument* doc = node.GetDocument()) BodyOf(*doc).changed = true;
}

}  // namespace engine
