// ScriptedServices: services for tests. The person is a script: answers given beforehand in order,
// and a transcript of all that was told, asked and shown. The clock stands where it is put, the
// user folders lie where the test says, and the files are real ones whose disk can be broken. Main
// thread, except Progress.
#pragma once

#include <atomic>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "engine/outside/Services.h"
#include "tests/support/FaultyFileSystem.h"

namespace tests {

class ScriptedPerson : public engine::Person {
 public:
  // Answers in the order of asking; when none is left a question is answered no and a choice
  // canceled.
  void AnswerNext(bool yes) { answers_.push_back(yes); }
  void ChooseNext(std::optional<std::string> path) { choices_.push_back(std::move(path)); }
  // The answer to questions when no answer is left.
  void AnswerOthers(bool yes) { otherAnswer_ = yes; }
  // Work is asked to stop from its `call`-th report of progress on (1 is the next); 0: never.
  void StopProgressAt(int call) { stopAt_ = call == 0 ? 0 : progressCalls_ + call; }
  int ProgressCalls() const { return progressCalls_; }

  // Takes the transcript away, as one text with a line end after each line. One line an event:
  // "tell: text", "ask: text -> yes", "choose: title -> path", "status: text", "status cleared",
  // "view: path".
  std::string TakeTranscript();
  void WriteDown(std::string line) { transcript_.push_back(std::move(line)); }

  void Tell(const std::string& text) override;
  bool Ask(const std::string& text) override;
  std::optional<std::string> ChooseFile(const engine::FileQuestion& question) override;
  void ShowStatus(const std::string& text) override;
  void ClearStatus() override;
  bool Progress(double fraction, const std::string& what) override;

 private:
  std::deque<bool> answers_;
  std::deque<std::optional<std::string>> choices_;
  bool otherAnswer_ = false;
  std::atomic<int> progressCalls_{0};
  std::atomic<int> stopAt_{0};
  std::vector<std::string> transcript_;
};

struct ScriptedClock : engine::Clock {
  host::LocalFileTime now{2000, 1, 1, 12, 0, 0};
  host::LocalFileTime Now() override { return now; }
};

// Shows nothing and writes down what it was asked to show.
class ScriptedViewer : public engine::Viewer {
 public:
  ScriptedViewer(engine::FileSystem& files, engine::Ledger& ledger, ScriptedPerson& person)
      : Viewer(files, ledger), person_(person) {}

 protected:
  engine::Status DoOpen(const std::string& path) override;

 private:
  ScriptedPerson& person_;
};

struct ScriptedServices {
  // `userFolder`: absolute; the folders config, data, cache and state lie in it. Empty: there are
  // none, so that nothing of the user's is ever touched.
  explicit ScriptedServices(const std::string& userFolder = "");
  ScriptedServices(const ScriptedServices&) = delete;
  ScriptedServices& operator=(const ScriptedServices&) = delete;

  const engine::Services& Get() const { return services_; }

  engine::Ledger ledger;
  ScriptedPerson person;
  FaultyFileSystem files{ledger, person};
  ScriptedClock clock;
  engine::UserFolders folders;
  ScriptedViewer viewer{files, ledger, person};

 private:
  engine::Services services_{files, clock, person, ledger, folders, viewer};
};

}  // namespace tests
