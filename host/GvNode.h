// GvNode and GvNodeMaster: the node tree of an expression tag. The master owns the root, the root
// its children. Main thread.
#pragma once

#include "host/BaseList2D.h"

namespace host {

inline constexpr LONG GVbase = 1001101;

class GvNode : public BaseList2D {
 public:
  GvNode* GetNext() const { return static_cast<GvNode*>(GeListNode::GetNext()); }
  GvNode* GetPred() const { return static_cast<GvNode*>(GeListNode::GetPred()); }
  GvNode* GetUp() const { return static_cast<GvNode*>(GeListNode::GetUp()); }
  GvNode* GetDown() const { return static_cast<GvNode*>(GeListNode::GetDown()); }

 protected:
  using BaseList2D::BaseList2D;
  ~GvNode() = default;

 private:
  friend struct engine::NodeAccess;
};

class GvNodeMaster : public BaseList2D {
 public:
  // The root node, made with the master; never null.
  GvNode* GetRoot() const { return static_cast<GvNode*>(GeListNode::GetDown()); }
  // Makes a node of operator type `id` as last child of `parent`. Owned by the master. Null without
  // a parent. `id` needs not be known: the node is kept as data.
  GvNode* CreateNode(GvNode* parent, LONG id);

 protected:
  using BaseList2D::BaseList2D;
  ~GvNodeMaster() = default;

 private:
  friend struct engine::NodeAccess;
};

}  // namespace host
