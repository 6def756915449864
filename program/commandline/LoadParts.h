// LoadParts: which kinds of recorded things one load applies or a comparison looks at, by the words
// of engine/states/RecordedParts.h. The choice is for that load only: the options are set before
// the dialog's button is pressed and are as before afterwards, in the scene, too. Main thread.
#pragma once

#include <string>
#include <vector>

#include "engine/states/RecordedParts.h"
#include "program/commandline/Arguments.h"
#include "program/commandline/Session.h"

namespace commandline {

struct PartChoice {
  std::vector<std::string> parts;    // only these; empty: as the options stand
  std::vector<std::string> without;  // all that the options say but these
};

// The options --parts and --without of a load, and of a verb that looks at what is recorded.
void AddParts(Verb verb, PartChoice& choice);
void AddPartsToShow(Verb verb, PartChoice& choice);

// What is looked at, whatever the options say.
engine::Parts PartsToShow(const PartChoice& choice);
// What a load would apply: the dialog's options as they stand, but for the choice; the words in the
// order of the dialog.
engine::Parts PartsToLoad(Session& session, const PartChoice& choice);
std::vector<std::string> WordsToLoad(Session& session, const PartChoice& choice);
// A sentence about parts of a record that a load leaves alone because an option is off; empty for
// none.
std::string LeftAloneText(Session& session, const PartChoice& choice,
                          const host::BaseContainer& record);
// " (camera, layers only)" where a choice was made; `applied`: the words of what counts.
std::string PartsText(const PartChoice& choice, const std::vector<std::string>& applied);

// Sets the dialog's options while this lives.
class PartsInUse {
 public:
  PartsInUse(Session& session, const PartChoice& choice);
  PartsInUse(const PartsInUse&) = delete;
  PartsInUse& operator=(const PartsInUse&) = delete;
  ~PartsInUse();

 private:
  Session& session_;
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

}  // namespace commandline
