#include <cerrno>
#include <sstream>

#include "tests/reliability/Rounds.h"

namespace tests {

namespace {

// Errors of disks, quotas and full tables. EINTR is none of them: it asks to be tried again.
constexpr int kErrors[] = {EIO, ENOSPC, EACCES, EMFILE, ENOMEM, EDQUOT, EROFS, ELOOP};
constexpr const char* kKinds[] = {"fail", "fail", "stay", "short", "kill"};

struct Round {
  std::size_t command;
  std::string kind;
  long call;
  int error;

  std::string Text() const {
    std::ostringstream text;
    for (const std::string& word : Workshop::Commands()[command]) text << word << " ";
    text << "with " << kind << " " << error << " at call " << call << ": ";
    return text.str();
  }
};

void Check(const Round& round, const ChildResult& result, const Workshop& workshop,
           const Workshop::Clean& clean, Findings& findings) {
  const std::string text = round.Text();
  const bool killed = round.kind == "kill";
  const Workshop::Files files = workshop.After();
  findings.Require(result.status < 128 || killed,
                   text + "ended with " + std::to_string(result.status) + " " + result.err);
  findings.Require(result.status == 0 || killed || !(result.out + result.err).empty(),
                   text + "failed without a word");
  findings.Require(files.contains(Workshop::kScene), text + "the scene is gone");
  for (const auto& [name, bytes] : files) {
    if (name.find(".stagemarks-") != std::string::npos) {
      findings.Require(killed || round.kind == "stay", text + "left \"" + name + "\"");
    } else {
      findings.Require(workshop.IsWhole(name, bytes, clean.files),
                       text + "\"" + name + "\" is damaged");
    }
  }
  if (result.status != 0) return;
  for (const auto& [name, bytes] : clean.files) {
    const auto made = files.find(name);
    findings.Require(made != files.end(), text + "success, but no \"" + name + "\"");
    if (made != files.end() && name.ends_with(".c4d"))
      findings.Require(StatesIn(made->second) == StatesIn(bytes),
                       text + "success, but \"" + name + "\" is another");
  }
}

}  // namespace

Findings FaultRounds(std::uint64_t seed, const RoundBudget& more) {
  Workshop workshop;
  std::mt19937_64 random(seed);
  const auto below = [&](std::size_t limit) { return random() % limit; };
  Findings findings;
  while (more(findings.executions)) {
    const std::size_t command = below(Workshop::Commands().size());
    const Workshop::Clean& clean = workshop.WithoutFaults(command);
    const Round round{command, kKinds[below(std::size(kKinds))],
                      1 + static_cast<long>(below(static_cast<std::size_t>(clean.calls))),
                      kErrors[below(std::size(kErrors))]};
    const ChildResult result = workshop.Run(
        Workshop::Commands()[command], {{"STAGEMARKS_FAULT_CALL", std::to_string(round.call)},
                                        {"STAGEMARKS_FAULT_KIND", round.kind},
                                        {"STAGEMARKS_FAULT_ERROR", std::to_string(round.error)}});
    ++findings.executions;
    Check(round, result, workshop, clean, findings);
  }
  return findings;
}

}  // namespace tests
