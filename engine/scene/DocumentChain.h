// The chain of open documents, which a program walks by GetNext and GetPred. It owns nothing. Main
// thread.
#pragma once

#include "host/BaseDocument.h"

namespace engine {

// Puts a document that is in no chain behind `pred`, or starts a chain where that is null.
void ChainDocument(host::BaseDocument& doc, host::BaseDocument* pred);
// Takes it out again; its neighbors become neighbors of each other.
void UnchainDocument(host::BaseDocument& doc);

}  // namespace engine
