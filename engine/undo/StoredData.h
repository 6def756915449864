// StoredDataScope: makes one undo step of what happens to the data that a document stores for
// plug-ins while it lives, which nobody registers: to the containers in its data, to render
// settings put in and taken out, and to its deleted Stagemarks. Undo exchanges them, the containers
// each as a whole and only those that changed. Main thread.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "engine/core/ContainerContents.h"
#include "engine/scene/DeletedStates.h"
#include "engine/undo/Undo.h"
#include "host/BaseDocument.h"

namespace engine {

// Something outside of the document that a step changed, too.
class OutsideChange {
 public:
  virtual ~OutsideChange() = default;
  // Exchanges what is kept with what is there; undo and redo are the same. It tells nobody but the
  // ledger of what fails, and keeps that.
  virtual void Exchange(host::BaseDocument& doc) noexcept = 0;
};

class StoredDataScope {
 public:
  // `stores`: the containers of the document's data that the scope is about; where none of them
  // changes and nothing else was registered there is no step.
  StoredDataScope(host::BaseDocument& doc, const std::string& name, std::vector<host::LONG> stores);
  StoredDataScope(const StoredDataScope&) = delete;
  StoredDataScope& operator=(const StoredDataScope&) = delete;
  ~StoredDataScope();

  // The document's data when the scope began; shares its entries.
  const host::BaseContainer& Before() const { return before_; }
  // Whether stores or deleted Stagemarks are others by now.
  bool HasChanged() const;
  // Render settings that were taken out since; null where none of that identity were. Linear in
  // what was registered.
  const host::RenderData* Removed(NodeId settings) const;
  // Is exchanged with the step, if there is one.
  void Add(std::unique_ptr<OutsideChange> change) { outside_ = std::move(change); }
  // Counts the step as that many more entries, for the limit of what is kept.
  void Weigh(std::size_t entries) { weight_ = entries; }

 private:
  host::BaseDocument& doc_;
  std::vector<host::LONG> stores_;
  UndoScope scope_;
  host::BaseContainer before_;
  SharedDeletedStates deletedBefore_;
  std::unique_ptr<OutsideChange> outside_;
  std::size_t weight_ = 0;
  bool outer_;  // whether settings were being followed already
};

}  // namespace engine
