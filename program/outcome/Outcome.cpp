#include "program/outcome/Outcome.h"

#include <algorithm>
#include <filesystem>
#include <unordered_set>

#include "engine/states/StoredStates.h"
#include "program/outcome/Words.h"

namespace outcome {

using engine::LedgerEntry;
using engine::Operation;

namespace {

namespace fs = std::filesystem;

// The folder of preview images beside a scene file.
std::string SideFolderOf(const std::string& scene) {
  return (fs::path(scene).parent_path() / fs::path(scene).stem()).string() +
         engine::kSideFolderEnding;
}

// Plug-ins remove and rename previews on the off chance that there are any.
bool Matters(engine::FileSystem& files, const LedgerEntry& failure) {
  const bool goes =
      failure.operation == Operation::RemoveFile || failure.operation == Operation::Rename;
  return !goes || files.Kind(failure.path) != engine::FileKind::Missing;
}

}  // namespace

std::vector<LedgerEntry> FailuresThatMatter(const engine::Services& services, std::size_t mark) {
  std::vector<LedgerEntry> failures = services.ledger.FailuresSince(mark);
  std::erase_if(failures,
                [&](const LedgerEntry& failure) { return !Matters(services.files, failure); });
  return failures;
}

std::vector<std::string> Sentences(const std::vector<LedgerEntry>& failures) {
  std::vector<std::string> sentences;
  std::unordered_set<std::string> said;
  for (const LedgerEntry& failure : failures) {
    // Plug-ins hand on an empty path for a name that no file can have.
    const std::string sentence =
        failure.path.empty() ? "The name cannot be the name of a file." : failure.message;
    if (said.insert(sentence).second) sentences.push_back(sentence);
  }
  return sentences;
}

std::vector<std::string> NotesOn(const engine::Ledger& ledger, std::size_t mark,
                                 const std::string& path) {
  std::vector<std::string> notes;
  for (std::size_t i = mark; i < ledger.Entries().size(); ++i) {
    const LedgerEntry& entry = ledger.Entries()[i];
    if (entry.operation == Operation::Note && entry.path == path) notes.push_back(entry.message);
  }
  return notes;
}

// The plug-in copies the side folder by itself when a scene is saved under another name. Whether it
// did is read from the ledger; a folder that it did not even look at is told, because the previews
// stay behind without a word.
Outcome OfSaving(const engine::Services& services, std::size_t mark, const std::string& former,
                 const std::string& path) {
  Outcome outcome;
  outcome.summary = "Saved " + Listed({fs::path(path).filename().string()});
  outcome.problems = Sentences(FailuresThatMatter(services, mark));
  for (std::string& note : NotesOn(services.ledger, mark, path))
    outcome.problems.push_back(std::move(note));
  const std::string from = SideFolderOf(former) + "/";
  const std::string to = SideFolderOf(path);
  const std::vector<LedgerEntry>& entries = services.ledger.Entries();
  std::size_t taken = 0;
  bool touched = false;
  for (std::size_t i = mark; i < entries.size(); ++i) {
    const bool copied =
        entries[i].operation == Operation::CopyFile && entries[i].path.starts_with(from);
    touched = touched || copied ||
              (entries[i].operation == Operation::MakeFolder && entries[i].path == to);
    taken += copied && entries[i].succeeded ? 1 : 0;
  }
  outcome.summary += (taken > 0 ? " with " + Counted(taken, "preview image") : "") + ".";
  const bool moved = !former.empty() && former != path &&
                     services.files.Kind(SideFolderOf(former)) == engine::FileKind::Folder;
  if (moved && !touched) {
    outcome.problems.push_back("The preview images in \"" + SideFolderOf(former) +
                               "\" were not taken along.");
  }
  return outcome;
}

}  // namespace outcome
