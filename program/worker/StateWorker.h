// StateWorker: the child that makes pictures of the states of a scene, and publishes them,
// `stagemarks --state-worker`.
// A plug-in knows one dialog and one active document: what a child loads disturbs nobody at the
// desktop. It is told all by its standard input and answers by its standard output, both in frames:
//   in    a Note with the path of the document, empty where it has none; a Note for each option of
//         the dialog, "1" or "0" and its label; the scene; Done
// Then what it is asked for in Notes, as often as wanted, until the input ends:
//   in    kMeasureStates
//   out   a State for each state, see StateFacts; Done
//   in    a PictureRequest as text
//   out   the State; Progress and Notes; the Picture, fitted into the box, as bytes of red, green,
//         blue, alpha, row by row; Done
//   in    a PublishOrder as text
//   out   Progress of the whole and Notes; Written for each file; Done
//   in    a PicturesOrder as text, see PictureFiles.h
//   out   Progress and Notes; Pictures, with a Picture before each that was rendered; Done
// SIGTERM ends it in the middle of a picture, and leaves nothing of that behind.
// A Failure ends the child, whatever it was asked.
#pragma once

#include <optional>
#include <string>

#include "program/pictures/PictureSize.h"
#include "program/pictures/StagemarksDialog.h"
#include "program/publish/PublishOrder.h"

namespace worker {

using pictures::Mark;
using pictures::PictureSize;

inline constexpr const char* kStateWorkerVerb = "--state-worker";

inline constexpr const char* kMeasureStates = "measure";

// A request for the picture of a state, by its name, fitted into `box`; no name: the scene as it
// is.
struct PictureRequest {
  PictureSize box;
  std::string name;
};
std::string RequestAsText(const PictureRequest& request);
// Nothing for any other text.
std::optional<PictureRequest> RequestFromText(const std::string& text);

std::string OrderAsText(const publishing::PublishOrder& order);
// Nothing for any other text.
std::optional<publishing::PublishOrder> OrderFromText(const std::string& text);

// Facts that the child tells of a state; without a name: of the scene as it is, without states.
struct StateFacts {
  PictureSize size;  // of the picture by itself
  Mark mark;
};
std::string StateAsText(const StateFacts& state);
// Nothing when it is damaged.
std::optional<StateFacts> StateFromText(const std::string& text);

// Does the child's whole work; answers its exit status.
int RunStateWorker();

}  // namespace worker
