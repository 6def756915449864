#include "engine/scene/DocumentChain.h"

#include "engine/scene/NodeAccess.h"

namespace engine {

using A = NodeAccess;

void ChainDocument(host::BaseDocument& doc, host::BaseDocument* pred) {
  UnchainDocument(doc);
  if (!pred || pred == &doc) return;
  host::GeListNode* next = pred->GetNext();
  A::Pred(doc) = pred;
  A::Next(doc) = next;
  A::Next(*pred) = &doc;
  if (next) A::Pred(*next) = &doc;
}

void UnchainDocument(host::BaseDocument& doc) {
  if (doc.GetPred()) A::Next(*doc.GetPred()) = doc.GetNext();
  if (doc.GetNext()) A::Pred(*doc.GetNext()) = doc.GetPred();
  A::Next(doc) = A::Pred(doc) = nullptr;
}

}  // namespace engine
