// LayerObject: a node of the document's layer tree, and LayerData, its flags. Layers are owned by
// their document. Main thread.
#pragma once

#include "host/BaseList2D.h"

namespace host {

inline constexpr LONG Olayer = 100004801;

// Nine flags in the host's order, then the color (0..1 per channel). A value: read it by
// GetLayerData, change it, write it back by SetLayerData. Solo of one layer hides what is on all
// others.
struct LayerData {
  Bool solo = FALSE;
  Bool view = TRUE;
  Bool render = TRUE;
  Bool manager = TRUE;
  Bool locked = FALSE;
  Bool generators = TRUE;
  Bool deformers = TRUE;
  Bool expressions = TRUE;
  Bool animation = TRUE;
  Vector color{0.5, 0.5, 0.5};

  Bool operator==(const LayerData& o) const = default;
};

class LayerObject : public BaseList2D {
 public:
  // A new layer, owned by the caller until inserted.
  static LayerObject* Alloc();
  // As BaseObject::Free.
  static void Free(LayerObject*& layer);

  LayerObject* GetNext() const { return static_cast<LayerObject*>(GeListNode::GetNext()); }
  LayerObject* GetPred() const { return static_cast<LayerObject*>(GeListNode::GetPred()); }
  LayerObject* GetUp() const { return static_cast<LayerObject*>(GeListNode::GetUp()); }
  LayerObject* GetDown() const { return static_cast<LayerObject*>(GeListNode::GetDown()); }

 protected:
  using BaseList2D::BaseList2D;
  ~LayerObject() = default;

 private:
  friend struct engine::NodeAccess;
  LayerData flags_;
};

}  // namespace host
