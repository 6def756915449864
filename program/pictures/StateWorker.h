// StateWorker: the child that makes pictures of all states of a scene, `stagemarks --state-worker`.
// A plug-in knows one dialog and one active document: what a child loads disturbs nobody at the
// desktop. It is told all by its standard input and answers by its standard output, both in frames:
//   in    a Note with the path of the document, empty where it has none; a Note for each option of
//         the dialog, "1" or "0" and its label; the scene; Done
//   out   a State for each state, see StateFacts; Done; or a Failure, which ends the child here and
//         later
//   in    a Note with the box that each picture fits into, "width height"
//   out   for each state Progress and Notes, the Picture as bytes of red, green, blue, alpha, row
//         by row, and Done
#pragma once

#include <optional>
#include <string>

#include "program/pictures/PictureSize.h"
#include "program/pictures/StagemarksDialog.h"

namespace pictures {

inline constexpr const char* kStateWorkerVerb = "--state-worker";

// One state as the child tells of it; one without a name: the scene as it is, which has no states.
struct StateFacts {
  PictureSize size;  // of the picture by itself
  Mark mark;
};
std::string StateAsText(const StateFacts& state);
// Nothing when it is damaged.
std::optional<StateFacts> StateFromText(const std::string& text);

// The child's whole work; its exit status.
int RunStateWorker();

}  // namespace pictures
