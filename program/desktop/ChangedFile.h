// ChangedFile: the question what to do where another program has changed the file of an open
// document. Main thread.
#pragma once

#include <QWidget>

#include "host/BaseDocument.h"

namespace desktop {

enum class ChangedFileAnswer {
  Reload,    // the document as it is here goes
  KeepMine,  // the next saving replaces the file
  SaveAs,
  Later,
};

// What Enter answers loses nothing: reloading where nothing is changed here, else saving under
// another name. `saves`: a person is about to save.
ChangedFileAnswer AskAboutChangedFile(QWidget* window, const host::BaseDocument& doc, bool saves);

}  // namespace desktop
