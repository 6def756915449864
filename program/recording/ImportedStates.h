// Recording what came in: the states of an imported file become Stagemarks, each recorded by the
// plug-in's own dialog as a person would do it, and the scene looks afterwards as the file shows it
// at first. Owns nothing. Main thread.
#pragma once

#include <string>
#include <vector>

#include "engine/outside/Services.h"
#include "host/BaseDocument.h"
#include "program/pictures/StagemarksDialog.h"

namespace recording {

struct RecordedStates {
  std::vector<std::string> names;  // of the Stagemarks, in the order of the file
  std::vector<std::string> notes;  // what is not as in the file, for a person
};

// `doc` is the active document and the dialog knows it. States without a name, or with that of
// another one, get a number. Nothing can be undone afterwards, and the document counts as
// unchanged, like any that was just imported. The Stagemarks get the dates that the file has for
// its states.
RecordedStates RecordImportedStates(const engine::Services& services,
                                    pictures::StagemarksDialog& dialog, host::BaseDocument& doc);

}  // namespace recording
