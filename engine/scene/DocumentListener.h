// What a document knows of those who work with it without knowing them: the listener (the
// application's scene hooks) and the attachment that keeps undo steps. Both are owned by the
// document and end before its nodes do. Main thread.
#pragma once

#include "host/BaseDocument.h"

namespace engine {

class DocumentListener {
 public:
  virtual ~DocumentListener() = default;
  // A message sent to the document; true when it was taken.
  virtual bool Message(host::BaseDocument& doc, host::LONG type, void* data) = 0;
};

class UndoAttachment {
 public:
  virtual ~UndoAttachment() = default;
  // A node of the document, still in its place, is about to be freed. True: the attachment took it
  // out and owns it now.
  virtual bool Claim(host::BaseList2D& node) = 0;
  // The document itself made a node and put it into its place.
  virtual void Made(host::BaseList2D& node) = 0;
};

}  // namespace engine
