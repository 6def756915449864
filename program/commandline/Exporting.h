// Exporting: presses the dialog's export of the checked Stagemarks and gathers from the ledger what
// came of it, because the dialog itself keeps silent about most failures; and shows written files
// as a tree. Main thread.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "program/commandline/Session.h"
#include "program/export/ExportPlan.h"

namespace commandline {

using pictures::FrameRange;

struct ExportOrder {
  std::string layout = "folders";  // one of exporting::LayoutWords
  std::string folder;              // absolute; made where it is missing, but not its parents
  std::vector<std::string> only;
  std::optional<FrameRange> frames;
  // Each state onto the scene as it is, instead of onto the state before it.
  bool isolated = false;
};

struct ExportResult {
  int status = kFailed;
  bool begun = false;  // false: it was refused before anything was written
  exporting::ExportPlan plan;
  std::vector<std::string> scenes;    // scene files written, in order
  std::vector<std::string> written;   // all files and folders written
  std::vector<std::string> missing;   // textures that were found nowhere
  std::vector<std::string> failures;  // one sentence each
};

// Exports the Stagemarks whose rows are checked, all or, where one of them cannot be written or the
// disk has too little room and nobody says yes, none. Shows progress. The scene stays as it is.
ExportResult Export(Session& session, const ExportOrder& order);

// Lines for the files and folders of `paths` that lie below `root` (absolute paths, without it),
// each indented by two blanks a level, names in byte order, folders with a slash; the files of a
// folder "tex" are only counted unless `all`.
std::vector<std::string> FileTreeLines(const std::string& root,
                                       const std::vector<std::string>& paths, bool all = false);

}  // namespace commandline
