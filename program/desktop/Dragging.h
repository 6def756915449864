// What is dragged from panel to panel: identities as decimal texts with a blank between them. Main
// thread.
#pragma once

#include <QMimeData>
#include <vector>

#include "engine/scene/Nodes.h"

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

}  // namespace desktop
