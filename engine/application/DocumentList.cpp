#include "engine/application/DocumentList.h"

#include <algorithm>

#include "engine/scene/DocumentState.h"

namespace engine {

DocumentList::~DocumentList() { KillAll(); }

bool DocumentList::Holds(const host::BaseDocument* doc) const {
  return std::find(documents_.begin(), documents_.end(), doc) != documents_.end();
}

bool DocumentList::Insert(host::BaseDocument* doc) {
  if (doc == nullptr || Holds(doc)) return false;
  // Before its hooks hear of it, which may walk over the open documents.
  ChainDocument(*doc, documents_.empty() ? nullptr : documents_.back());
  documents_.push_back(doc);
  hooks_.Attach(*doc);
  return true;
}

bool DocumentList::Activate(host::BaseDocument* doc) {
  if (doc == active_ || !Holds(doc)) return false;
  active_ = doc;
  return true;
}

bool DocumentList::Kill(host::BaseDocument* doc) {
  if (!Release(doc)) return false;
  host::BaseDocument::Free(doc);
  return true;
}

bool DocumentList::Release(host::BaseDocument* doc) {
  const auto it = std::find(documents_.begin(), documents_.end(), doc);
  if (doc == nullptr || it == documents_.end()) return false;
  // While the document is still in the list: hooks may ask for it in their Free.
  hooks_.Detach(*doc);
  const std::size_t place = static_cast<std::size_t>(it - documents_.begin());
  documents_.erase(it);
  if (active_ == doc)
    active_ = documents_.empty() ? nullptr : documents_[std::min(place, documents_.size() - 1)];
  UnchainDocument(*doc);
  return true;
}

void DocumentList::KillAll() {
  while (!documents_.empty()) Kill(documents_.back());
}

}  // namespace engine
