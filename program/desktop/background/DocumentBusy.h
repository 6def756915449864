// DocumentBusy: whether the documents are in the middle of something: a plug-in's call, an edit
// that is done in slices, or work that lets the window draw its progress. Who would read or change
// one then waits until it is free. Main thread.
#pragma once

#include <QObject>
#include <functional>

namespace desktop {

// The documents are in the middle of something as long as one lives.
class DocumentBusy {
 public:
  DocumentBusy();
  DocumentBusy(const DocumentBusy&) = delete;
  DocumentBusy& operator=(const DocumentBusy&) = delete;
  ~DocumentBusy();
};

bool IsDocumentBusy();

// Calls `act` at once where nothing goes on, else in order of asking when that is over and the
// event loop has come round; never when `context` is gone by then.
void WhenDocumentIsFree(QObject* context, std::function<void()> act);

}  // namespace desktop
