// ScriptedOutside: a door with real files (or those of another door), whose person is a script:
// answers given beforehand in order, a clock that can be set, user folders of its own, and a
// transcript of all that was told, asked and shown. For tests and for runs without a person. Main
// thread, except Progress.
#pragma once

#include <atomic>
#include <deque>
#include <memory>

#include "engine/outside/ForwardingOutside.h"

namespace engine {

class ScriptedOutside : public ForwardingOutside {
 public:
  // Real files. `userFolder`: absolute; the folders config, data, cache and state lie in it. Empty:
  // there are none, so that nothing of the user's is ever touched.
  explicit ScriptedOutside(std::string userFolder = "");
  // Files of `inner`, which must outlive this.
  ScriptedOutside(Outside& inner, std::string userFolder);
  ~ScriptedOutside() override;

  // Answers in the order of asking; when none is left a question is answered no and a choice
  // canceled.
  void AnswerNext(bool yes) { answers_.push_back(yes); }
  void ChooseNext(std::optional<std::string> path) { choices_.push_back(std::move(path)); }
  // What an unscripted question gets.
  void AnswerOthers(bool yes) { otherAnswer_ = yes; }
  bool AllAnswersUsed() const { return answers_.empty() && choices_.empty(); }
  // The clock stands still at `time`; starts at 2000-01-01 12:00:00.
  void SetNow(const host::LocalFileTime& time) { now_ = time; }
  // Every disk has this much room, in blocks of 4096 bytes; nothing: what the files' own door says.
  void SetSpace(std::optional<std::uint64_t> free) { space_ = free; }
  // Work is asked to stop from its `call`-th report of progress on (1 is the next); 0: never.
  void StopProgressAt(int call);
  int ProgressCalls() const { return progressCalls_; }

  // One line an event: "tell: text", "ask: text -> yes", "choose: title -> path", "status: text",
  // "status cleared", "view: path".
  const std::vector<std::string>& Transcript() const { return transcript_; }
  // Takes the transcript away, as one text with a line end after each line.
  std::string TakeTranscript();

  host::LocalFileTime Now() override { return now_; }
  void Tell(const std::string& text) override;
  bool Ask(const std::string& text) override;
  std::optional<std::string> ChooseFile(const FileQuestion& question) override;
  void ShowStatus(const std::string& text) override;
  void ClearStatus() override;
  bool Progress(double fraction, const std::string& what) override;
  std::string ConfigFolder() override { return UserFolderNamed("config"); }
  std::string DataFolder() override { return UserFolderNamed("data"); }
  std::string CacheFolder() override { return UserFolderNamed("cache"); }
  std::string StateFolder() override { return UserFolderNamed("state"); }

 protected:
  std::optional<DiskSpace> DoSpace(const std::string& path) override;
  Status DoOpenWithViewer(const std::string& path) override;

 private:
  ScriptedOutside(std::unique_ptr<Outside> owned, std::string userFolder);
  std::string UserFolderNamed(const char* name) const {
    return userFolder_.empty() ? "" : userFolder_ + "/" + name;
  }

  std::unique_ptr<Outside> owned_;
  std::string userFolder_;
  std::deque<bool> answers_;
  std::deque<std::optional<std::string>> choices_;
  bool otherAnswer_ = false;
  std::optional<std::uint64_t> space_;
  host::LocalFileTime now_{2000, 1, 1, 12, 0, 0};
  std::atomic<int> progressCalls_{0};
  std::atomic<int> stopAt_{0};
  std::vector<std::string> transcript_;
};

}  // namespace engine
