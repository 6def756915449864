// DocumentListener and UndoAttachment: those who work with a document, which does not know them:
// the application's scene hooks, and the history that keeps undo steps. Both are owned by the
// document and end before its nodes do. Main thread.
#pragma once

#include <memory>

#include "host/BaseDocument.h"

namespace engine {

class DocumentListener {
 public:
  virtual ~DocumentListener() = default;
  // A message sent to the document; true when it was taken.
  virtual bool Message(host::BaseDocument& doc, host::LONG type, void* data) = 0;
};

// Attaches the listener that messages to the document go to, in place of an earlier one.
void SetListener(host::BaseDocument& doc, std::unique_ptr<DocumentListener> listener);
// Null where there is none.
DocumentListener* ListenerOf(const host::BaseDocument& doc);

class UndoAttachment {
 public:
  virtual ~UndoAttachment() = default;
  // A node of the document, still in its place, is about to be freed. True: the attachment took it
  // out and owns it now.
  virtual bool Claim(host::BaseList2D& node) = 0;
  // The document itself made a node and put it into its place.
  virtual void Made(host::BaseList2D& node) = 0;
  // Somebody has put render settings into the document that were in none.
  virtual void SettingsInserted(host::BaseList2D& settings) = 0;
};

}  // namespace engine
