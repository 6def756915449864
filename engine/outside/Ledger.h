// Ledger: the list of what was done to the outside, in order: the operation, the path, the result.
// The command line takes its exit status and its list of written files from here, because plug-ins
// keep silent about many failures. Main thread.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace engine {

enum class Operation {
  Look,  // only where the system does not say what is there
  ReadFile,
  ReplaceFile,
  MakeFolder,
  CopyFile,
  RemoveFile,
  RemoveFolder,
  Rename,
  ListFolder,
  OpenViewer,
  Note
};

struct LedgerEntry {
  Operation operation;
  std::string path;
  std::string target;  // of a copy or rename
  bool succeeded;
  std::string message;  // why it failed, for a person; the text of a note
  bool absent = false;  // failed only because nothing was at `path`
};

class Ledger {
 public:
  void Add(LedgerEntry entry) { entries_.push_back(std::move(entry)); }
  // Something a person should know about `path` that is no failure of an operation.
  void AddNote(std::string path, std::string message);
  const std::vector<LedgerEntry>& Entries() const { return entries_; }
  // Number of entries so far: a mark to read on from.
  std::size_t Mark() const { return entries_.size(); }
  // Failures from `mark` on; a file that is merely not there when asked for counts as none.
  std::vector<LedgerEntry> FailuresSince(std::size_t mark) const;
  // Texts of the notes from `mark` on that are no failures: those are among FailuresSince.
  std::vector<std::string> NotesSince(std::size_t mark) const;
  // Paths written (replaced, copied to, renamed to, made) with success from `mark` on and not
  // removed or renamed again, in order, each once.
  std::vector<std::string> WrittenSince(std::size_t mark) const;

 private:
  std::vector<LedgerEntry> entries_;
};

}  // namespace engine
