// Outcome: what came of something that a person asked for, in sentences. A plug-in keeps silent
// about many failures; what the ledger holds of them is read here, for both programs. A value; main
// thread.
#pragma once

#include <string>
#include <vector>

#include "engine/outside/Services.h"

namespace outcome {

struct Outcome {
  std::string summary;                // what was done; empty where there is nothing to say
  std::vector<std::string> problems;  // what did not come about, a sentence each
  std::vector<std::string> files;     // written, for whoever wants to see each of them
  std::string folder;                 // where to look at them; empty for nowhere
  bool IsEmpty() const { return summary.empty() && problems.empty(); }
};

// Entries of the ledger from `mark` on that failed and matter: a file that was to be removed or
// renamed and is not there does no harm, since a Stagemark need not have a preview.
std::vector<engine::LedgerEntry> FailuresThatMatter(const engine::Services& services,
                                                    std::size_t mark);
// Their sentences, each once.
std::vector<std::string> Sentences(const std::vector<engine::LedgerEntry>& failures);

// The notes in the ledger from `mark` on about the file at `path`.
std::vector<std::string> NotesOn(const engine::Ledger& ledger, std::size_t mark,
                                 const std::string& path);

// The outcome of saving a scene, which went well, as far as the ledger shows it from `mark` on: the
// scene's name and the files that were taken along to the new place. `former`: the path of the
// scene before, empty for none.
Outcome OfSaving(const engine::Services& services, std::size_t mark, const std::string& former,
                 const std::string& path);

}  // namespace outcome
