// The contents of elements, as readers, writers and pictures of scenes take them: bits, modes,
// links by identity and layer flags as they are. Setting here marks no document changed and tells
// no view: it is for elements that are being made. Main thread; reading on any thread that may read
// the scene.
#pragma once

#include "engine/scene/NodeIds.h"
#include "host/BaseObject.h"
#include "host/LayerObject.h"

namespace engine {

// Editor and render mode (MODE_ON, MODE_OFF; anything else counts as MODE_UNDEF) and deform mode.
void SetModes(host::BaseObject& object, host::LONG editor, host::LONG render, bool deform);

// Identity of an element's layer and of a texture tag's material, 0 for none. It may name an
// element that is gone.
NodeId LayerIdOf(const host::BaseList2D& node);
void SetLayerId(host::BaseList2D& node, NodeId layer);
NodeId MaterialIdOf(const host::TextureTag& tag);
void SetMaterialId(host::TextureTag& tag, NodeId material);

// All 64 bits that ChangeNBit changes singly.
host::ULLONG NBitsOf(const host::GeListNode& node);
void SetNBits(host::GeListNode& node, host::ULLONG bits);

// The layer's own flags, without those of the layers above it.
const host::LayerData& OwnLayerData(const host::LayerObject& layer);
void SetOwnLayerData(host::LayerObject& layer, const host::LayerData& data);

}  // namespace engine
