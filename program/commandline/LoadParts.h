// LoadParts: which kinds of recorded things one load applies, by short names for the dialog's
// options. The choice is for that load only: the options are set before the dialog's button is
// pressed and are as before afterwards, in the scene, too. Main thread.
#pragma once

#include <string>
#include <vector>

#include "program/commandline/Arguments.h"
#include "program/commandline/Session.h"

namespace commandline {

struct PartChoice {
  std::vector<std::string> parts;    // only these; empty: as the options stand
  std::vector<std::string> without;  // all that the options say but these
};

// All short names.
std::vector<std::string> PartNames();
// The options --parts and --without.
void AddParts(Verb verb, PartChoice& choice);

// Sets the dialog's options while this lives.
class PartsInUse {
 public:
  PartsInUse(Session& session, const PartChoice& choice);
  PartsInUse(const PartsInUse&) = delete;
  PartsInUse& operator=(const PartsInUse&) = delete;
  ~PartsInUse();

  // The short names of what a load applies now.
  const std::vector<std::string>& Applied() const { return applied_; }

 private:
  Session& session_;
  host::BaseContainer before_;        // the document's data
  std::vector<host::LONG> touched_;   // keys in it that setting the options changed
  std::vector<std::string> toggled_;  // options, as the dialog calls them
  std::vector<std::string> applied_;
};

// Keys whose values differ between two containers, or that one of them lacks.
std::vector<host::LONG> KeysThatDiffer(const host::BaseContainer& one,
                                       const host::BaseContainer& other);
// Gives `data` the values that `from` has for these keys; what it lacks goes.
void PutBack(const std::vector<host::LONG>& keys, const host::BaseContainer& from,
             host::BaseContainer& data);

}  // namespace commandline
