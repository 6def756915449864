#include "host/GeListNode.h"

#include "engine/scene/DocumentBody.h"
#include "engine/scene/DocumentState.h"
#include "engine/scene/NodeTree.h"
#include "engine/scene/NodeTypes.h"

namespace host {

using engine::NodeKind;

namespace {

// An expression is never without its master and the master never without its root.
bool StaysInPlace(NodeKind kind, const GeListNode& node) {
  return kind == NodeKind::NodeMaster || (kind == NodeKind::Node && !node.GetUp());
}

}  // namespace

void GeListNode::Remove() {
  const NodeKind kind = engine::NodeAccess::Kind(*this);
  // A document's neighbors are the other open ones.
  if (kind == NodeKind::Document) return engine::UnchainDocument(static_cast<BaseDocument&>(*this));
  if (!StaysInPlace(kind, *this)) engine::TakeOut(*this);
}

Bool GeListNode::ChangeNBit(LONG bit, LONG control) {
  if (bit < 0 || bit > 63) return FALSE;
  const ULLONG mask = ULLONG{1} << bit;
  const ULLONG before = nbits_;
  if (control == NBIT_CLEAR) nbits_ &= ~mask;
  if (control == NBIT_SET) nbits_ |= mask;
  if (control == NBIT_TOGGLE) nbits_ ^= mask;
  if (nbits_ != before) engine::Touch(*this);
  return TRUE;
}

Bool GeListNode::GetNBit(LONG bit) const {
  return bit >= 0 && bit <= 63 && ((nbits_ >> bit) & 1) != 0;
}

}  // namespace host
