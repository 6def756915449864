#include "engine/outside/Ledger.h"

#include <algorithm>
#include <map>

namespace engine {
namespace {

// Written paths with the order in which they came first.
class WrittenPaths {
 public:
  void Apply(const LedgerEntry& entry) {
    switch (entry.operation) {
      case Operation::ReplaceFile:
      case Operation::MakeFolder:
        Add(entry.path);
        break;
      case Operation::CopyFile:
        Add(entry.target);
        break;
      case Operation::Rename:
        Move(entry.path, entry.target);
        break;
      case Operation::RemoveFile:
      case Operation::RemoveFolder:
        Forget(entry.path);
        break;
      default:
        break;
    }
  }

  std::vector<std::string> InOrder() const {
    std::vector<std::pair<std::size_t, std::string>> sorted;
    for (const auto& [path, order] : paths_) sorted.emplace_back(order, path);
    std::sort(sorted.begin(), sorted.end());
    std::vector<std::string> names;
    names.reserve(sorted.size());
    for (auto& [order, path] : sorted) names.push_back(std::move(path));
    return names;
  }

 private:
  // Numbers only grow, also when some were forgotten; a path that is written again keeps its first
  // one.
  void Add(const std::string& path) { paths_.emplace(path, paths_.size() + forgotten_); }

  // With all that was written below a folder.
  void Forget(const std::string& path) {
    forgotten_ += paths_.erase(path);
    const std::string inside = path + "/";
    for (auto it = paths_.lower_bound(inside);
         it != paths_.end() && it->first.compare(0, inside.size(), inside) == 0;) {
      it = paths_.erase(it);
      ++forgotten_;
    }
  }

  void Move(const std::string& from, const std::string& to) {
    const std::string inside = from + "/";
    std::vector<std::string> moved;
    for (auto it = paths_.lower_bound(inside);
         it != paths_.end() && it->first.compare(0, inside.size(), inside) == 0; ++it) {
      moved.push_back(to + it->first.substr(from.size()));
    }
    Forget(from);
    Add(to);
    for (const std::string& path : moved) Add(path);
  }

  std::map<std::string, std::size_t> paths_;
  std::size_t forgotten_ = 0;
};

}  // namespace

void Ledger::AddNote(std::string path, std::string message) {
  Add({Operation::Note, std::move(path), "", true, std::move(message)});
}

std::vector<LedgerEntry> Ledger::FailuresSince(std::size_t mark) const {
  std::vector<LedgerEntry> failures;
  for (std::size_t i = mark; i < entries_.size(); ++i) {
    if (!entries_[i].succeeded && !entries_[i].absent) failures.push_back(entries_[i]);
  }
  return failures;
}

std::vector<std::string> Ledger::NotesSince(std::size_t mark) const {
  std::vector<std::string> notes;
  for (std::size_t i = mark; i < entries_.size(); ++i) {
    if (entries_[i].operation == Operation::Note && entries_[i].succeeded)
      notes.push_back(entries_[i].message);
  }
  return notes;
}

std::vector<std::string> Ledger::WrittenSince(std::size_t mark) const {
  WrittenPaths written;
  for (std::size_t i = mark; i < entries_.size(); ++i) {
    if (entries_[i].succeeded) written.Apply(entries_[i]);
  }
  return written.InOrder();
}

}  // namespace engine
