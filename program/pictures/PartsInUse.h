// PartsInUse: which kinds of recorded things one load applies, by the words of
// engine/states/RecordedParts.h. The choice is for that load only: the dialog's options are set
// before its button is pressed and are as before afterwards, in the scene, too. Main thread.
#pragma once

#include <string>
#include <vector>

#include "engine/states/RecordedParts.h"
#include "host/BaseDocument.h"
#include "program/pictures/StagemarksDialog.h"

namespace pictures {

struct PartChoice {
  std::vector<std::string> parts;    // only these; empty: as the options stand
  std::vector<std::string> without;  // all that the options say but these
};

// The chosen parts, whatever the options say.
engine::Parts PartsToShow(const PartChoice& choice);
// The parts that a load would apply: the dialog's options as they stand, except where `choice` says
// otherwise; the words in the order of the dialog.
engine::Parts PartsToLoad(const StagemarksDialog& dialog, const PartChoice& choice);
std::vector<std::string> WordsToLoad(const StagemarksDialog& dialog, const PartChoice& choice);

// Sets the options of the dialog, which shows `doc`, while this lives. No events may be delivered
// meanwhile: the dialog would read its options anew.
class PartsInUse {
 public:
  PartsInUse(const StagemarksDialog& dialog, host::BaseDocument& doc, const PartChoice& choice);
  PartsInUse(const PartsInUse&) = delete;
  PartsInUse& operator=(const PartsInUse&) = delete;
  ~PartsInUse();

 private:
  StagemarksDialog dialog_;
  host::BaseDocument& doc_;
  host::BaseContainer before_;        // the document's data
  std::vector<host::LONG> touched_;   // keys in it that setting the options changed
  std::vector<std::string> toggled_;  // options, as the dialog calls them
};

// Keys whose values differ between two containers, or that one of them lacks.
std::vector<host::LONG> KeysThatDiffer(const host::BaseContainer& one,
                                       const host::BaseContainer& other);
// Gives `data` the values that `from` has for these keys; what it lacks goes.
void PutBack(const std::vector<host::LONG>& keys, const host::BaseContainer& from,
             host::BaseContainer& data);

}  // namespace pictures
