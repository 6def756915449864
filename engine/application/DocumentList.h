// DocumentList: the documents of the application in the order of insertion, and which one is
// active. Owns them. Main thread.
#pragma once

#include <vector>

#include "engine/application/SceneHooks.h"

namespace engine {

class DocumentList {
 public:
  explicit DocumentList(SceneHooks& hooks) : hooks_(hooks) {}
  DocumentList(const DocumentList&) = delete;
  DocumentList& operator=(const DocumentList&) = delete;
  ~DocumentList();

  const std::vector<host::BaseDocument*>& All() const { return documents_; }
  host::BaseDocument* Active() const { return active_; }
  bool Holds(const host::BaseDocument* doc) const;

  // False, changing nothing, for null and for one that is in the list already.
  bool Insert(host::BaseDocument* doc);
  // False for one that is not in the list or is active already.
  bool Activate(host::BaseDocument* doc);
  // Ends the scene hooks of a document and destroys it; the next one (else the one before, else
  // none) becomes active when it was. False, changing nothing, for one that is not in the list.
  bool Kill(host::BaseDocument* doc);
  // As Kill, but does not destroy the document: the caller owns it then.
  bool Release(host::BaseDocument* doc);
  void KillAll();

 private:
  SceneHooks& hooks_;
  std::vector<host::BaseDocument*> documents_;
  host::BaseDocument* active_ = nullptr;
};

}  // namespace engine
