// SlicedEdit: runs edits that may touch very many elements. A short one is done when RunEdit
// returns. A long one goes on in slices of the normal event loop, its undo group open, under a
// modal box that tells how far it is and can stop it; until it is over the documents are busy.
// Stopped, or ended by an exception, it is taken back as a whole. Main thread.
#pragma once

#include <functional>

#include "engine/editing/StepwiseEdit.h"

namespace desktop {

// `over` hears, when the edit has ended, whether it was done as a whole; the document is free
// again then. No edit begins in the middle of another: `over` hears false.
void RunEdit(host::BaseDocument& doc, engine::StepwiseEdit edit,
             std::function<void(bool whole)> over = {});

// Takes back the edit that goes on, if one does, before it returns: for closing.
void StopEdit();
bool IsEditing();

}  // namespace desktop
