#include <algorithm>
#include <cstdlib>

#include "tests/reliability/Rounds.h"

namespace tests {

namespace {

// One call that changes the disk.
struct Step {
  std::string what;  // create, write, sync, sync-names, link, rename, remove
  std::string file;  // its number; the path for rename and remove
  std::string path;  // for create and link; the target for rename
  std::string bytes;
};

std::vector<Step> ReadJournal(const std::string& text) {
  std::vector<Step> steps;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t blank = text.find(' ', at);
    const std::size_t first = text.find('\t', blank);
    const std::size_t second = text.find('\t', first + 1);
    const std::size_t end = text.find('\n', second);
    const std::size_t size = std::strtoull(text.c_str() + second + 1, nullptr, 10);
    steps.push_back({text.substr(at, blank - at), text.substr(blank + 1, first - blank - 1),
                     text.substr(first + 1, second - first - 1), text.substr(end + 1, size)});
    at = end + 1 + size;
  }
  return steps;
}

// A disk at a power cut: contents that it holds for sure, and those that it may hold. Bytes are
// sure once their file was synced, names once a folder was; before that any first part of either
// may have reached the disk.
class Disk {
 public:
  Disk(const Workshop::Files& files, const std::string& folder) {
    for (const auto& [name, bytes] : files) {
      sure_[folder + "/" + name] = name;
      contents_[name] = {bytes, bytes.size()};
    }
  }

  void Take(const Step& step) {
    if (step.what == "write") {
      contents_[step.file].bytes += step.bytes;
    } else if (step.what == "sync") {
      contents_[step.file].sure = contents_[step.file].bytes.size();
    } else if (step.what == "sync-names") {
      for (const Step& name : pending_) Change(sure_, name);
      pending_.clear();
    } else {
      if (step.what == "create") contents_[step.file] = {};
      pending_.push_back(step);
    }
  }

  // By full path, what is there if the power fails now.
  Workshop::Files Cut(std::mt19937_64& random) const {
    Names names = sure_;
    const std::size_t kept = random() % (pending_.size() + 1);
    for (std::size_t i = 0; i < kept; ++i) Change(names, pending_[i]);
    Workshop::Files files;
    for (const auto& [path, file] : names) files[path] = Remains(file, random);
    return files;
  }

 private:
  using Names = std::map<std::string, std::string>;  // path to file
  struct Content {
    std::string bytes;
    std::size_t sure = 0;
  };

  static void Change(Names& names, const Step& step) {
    if (step.what == "create" || step.what == "link") {
      names[step.path] = step.file;
    } else if (const auto found = names.find(step.file); found != names.end()) {
      if (step.what == "rename") names[step.path] = found->second;
      names.erase(step.file);
    }
  }

  // Cut off, or with the length known and the bytes not.
  std::string Remains(const std::string& file, std::mt19937_64& random) const {
    const auto found = contents_.find(file);
    if (found == contents_.end()) return "";
    std::string bytes = found->second.bytes;
    const std::size_t unsure = bytes.size() - found->second.sure;
    if (unsure == 0) return bytes;
    const std::size_t cut = found->second.sure + random() % (unsure + 1);
    if (random() % 2) {
      std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(cut), bytes.end(), '\0');
    } else {
      bytes.resize(cut);
    }
    return bytes;
  }

  Names sure_;
  std::vector<Step> pending_;
  std::map<std::string, Content> contents_;
};

// Cuts the power many times after each call of one command.
void CutAll(Workshop& workshop, std::size_t command, std::mt19937_64& random,
            const RoundBudget& more, Findings& findings) {
  constexpr int kCutsPerStep = 8;
  const Workshop::Clean& clean = workshop.WithoutFaults(command);
  const std::string folder = workshop.Folder();
  Disk disk(workshop.Before(), folder);
  const std::vector<Step> steps = ReadJournal(clean.journal);
  findings.Require(!steps.empty(), "nothing was written by " + Workshop::Commands()[command][0]);
  for (std::size_t i = 0; i < steps.size() && more(findings.executions); ++i) {
    disk.Take(steps[i]);
    const std::string text = Workshop::Commands()[command][0] + ", power cut after step " +
                             std::to_string(i + 1) + " (" + steps[i].what + "): ";
    for (int cut = 0; cut < kCutsPerStep; ++cut, ++findings.executions) {
      const Workshop::Files files = disk.Cut(random);
      findings.Require(files.contains(folder + "/" + Workshop::kScene), text + "the scene is gone");
      for (const auto& [path, bytes] : files) {
        if (path.find(".stagemarks-") != std::string::npos) continue;
        const std::string name = path.substr(folder.size() + 1);
        findings.Require(workshop.IsWhole(name, bytes, clean.files),
                         text + "\"" + name + "\" is damaged");
      }
    }
  }
}

}  // namespace

Findings PowerCuts(std::uint64_t seed, const RoundBudget& more) {
  Workshop workshop;
  std::mt19937_64 random(seed);
  Findings findings;
  while (more(findings.executions)) {
    for (std::size_t i = 0; i < Workshop::Commands().size(); ++i)
      CutAll(workshop, i, random, more, findings);
  }
  return findings;
}

}  // namespace tests
