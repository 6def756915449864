// SlowEnd: ends documents that nobody needs any more, in slices between which the window lives on:
// freeing very many objects takes time. It owns them; what is left goes at once with it. Main
// thread.
#pragma once

#include <QTimer>
#include <memory>

#include "host/BaseDocument.h"

namespace desktop {

struct FreeDocument {
  void operator()(host::BaseDocument* doc) const { host::BaseDocument::Free(doc); }
};
using OwnedDocument = std::unique_ptr<host::BaseDocument, FreeDocument>;

class SlowEnd {
 public:
  SlowEnd();

  // A document that is in no list; null does nothing. One that was given before and still lives
  // ends at once, so that there is never more than one.
  void Take(OwnedDocument doc);
  bool IsEmpty() const { return !doc_; }

 private:
  void Slice();

  OwnedDocument doc_;
  QTimer next_;
};

}  // namespace desktop
