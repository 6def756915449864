// Documents for scripts: opening, saving, closing, undo. Numbers in, numbers out; every function
// throws a Failure where it cannot. The thread of the session.
#pragma once

#include "engine/update/SceneUpdate.h"
#include "program/python/Session.h"

namespace scripting {

struct Opened {
  DocumentId document = 0;
  Names notes;   // of an import: what was lost or mended
  Names states;  // that came in with the file and are Stagemarks now
};
// Opens a scene, or imports one of another format, and makes it the active document.
// `allowOutside`: also with pictures that lie outside the folder of an imported file.
Opened Open(const std::string& path, bool allowOutside);
Opened New();
// Closes a document, one with unsaved changes only where `discard` says so; its open steps end.
void Close(DocumentId document, bool discard);
std::vector<DocumentId> AllDocuments();
DocumentId ActiveDocument();  // 0 for none
void Activate(DocumentId document);

// Empty for a document that was never saved.
std::string PathOfDocument(DocumentId document);
std::string NameOfDocument(DocumentId document);
bool IsChanged(DocumentId document);
// Saves in place where `path` is empty. Answers the absolute path. `overwrite`: also replaces a
// file that is another scene's, or was changed by somebody else since. `seconds`: how long to wait
// for another program that changes the file.
std::string Save(DocumentId document, const std::string& path, bool overwrite, double seconds);

// Brings a document up to a newer version of the file that it was imported from, in one undo step.
// `removeGone`: what the file does not have any more is deleted.
engine::SceneUpdate UpdateFrom(DocumentId document, const std::string& path, bool removeGone,
                               bool allowOutside);

// False where there is nothing to take back or do again.
bool Undo(DocumentId document);
bool Redo(DocumentId document);
// Names of the steps: done ones with the oldest first, undone ones with the next of Redo first.
Names DoneSteps(DocumentId document);
Names UndoneSteps(DocumentId document);
int BeginStep(DocumentId document, const std::string& name);
void EndStep(int step, bool keep);

// The full path of the program that reads files of other formats; it need not be there.
std::string ImporterPath();

}  // namespace scripting
