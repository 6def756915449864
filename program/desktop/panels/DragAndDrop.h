// Drag and drop between the panels: what is carried (identities of elements, as decimal texts with
// a blank between them), and how rows of a tree are picked up and dropped. What may be dropped
// where is decided by the models. Main thread.
#pragma once

#include <QMimeData>
#include <QTreeView>
#include <vector>

#include "engine/core/ContainerContents.h"

namespace desktop {

// One material.
inline constexpr const char* kMaterialMime = "application/x-stagemarks-material";
// Objects of the active document.
inline constexpr const char* kObjectsMime = "application/x-stagemarks-objects";
// Its layers, its render settings.
inline constexpr const char* kLayersMime = "application/x-stagemarks-layers";
inline constexpr const char* kRenderSettingsMime = "application/x-stagemarks-render-settings";

// Owned by the caller.
QMimeData* DraggedNodes(const char* mime, const std::vector<engine::NodeId>& nodes);
// Empty for data of another kind; what is no number is left out.
std::vector<engine::NodeId> DroppedNodes(const QMimeData* data, const char* mime);

// Lets rows of the tree be dragged, and things be dropped onto its rows and between them.
void EnableRowDragging(QTreeView& tree);
// Drags `count` rows, the first of which is called `name`, until they are let go. Takes over
// `data`.
void DragRows(QTreeView& tree, QMimeData* data, int count, const QString& name);

}  // namespace desktop
