// LoadParts: which kinds of recorded things one load applies or a comparison looks at, by the words
// of engine/states/RecordedParts.h. The choice is for that load only: the options are set before
// the dialog's button is pressed and are as before afterwards, in the scene, too. Main thread.
#pragma once

#include <string>
#include <vector>

#include "engine/states/RecordedParts.h"
#include "program/commandline/Arguments.h"
#include "program/commandline/Session.h"
#include "program/pictures/PartsInUse.h"

namespace commandline {

using pictures::KeysThatDiffer;
using pictures::PartChoice;
using pictures::PartsInUse;
using pictures::PartsToShow;
using pictures::PutBack;

// The words for all parts.
std::vector<std::string> AllWords();
// The options --parts and --without of a load, and of a verb that looks at what is recorded.
void AddParts(Verb verb, PartChoice& choice);
void AddPartsToShow(Verb verb, PartChoice& choice);

// The parts that a load would apply: the dialog's options as they stand, except where `choice` says
// otherwise; the words in the order of the dialog.
engine::Parts PartsToLoad(Session& session, const PartChoice& choice);
std::vector<std::string> WordsToLoad(Session& session, const PartChoice& choice);
// A sentence about parts of a record that a load leaves alone because an option is off; empty for
// none.
std::string LeftAloneText(Session& session, const PartChoice& choice,
                          const host::BaseContainer& record);
// " (camera, layers only)" where a choice was made; `applied`: the words of what counts.
std::string PartsText(const PartChoice& choice, const std::vector<std::string>& applied);

}  // namespace commandline
