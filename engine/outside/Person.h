// Person: who sits in front of the program: hears what is told, answers what is asked, chooses
// files, sees status and progress. The command line and the desktop have their own. Main thread,
// except Progress and Writing.
#pragma once

#include <optional>
#include <string>

#include "host/Files.h"

namespace engine {

// The file dialog that a plug-in or a command asks for.
struct FileQuestion {
  host::LONG type;
  host::LONG flags;
  std::string title;
  std::string proposal;  // path shown first, may be empty
};

class Person {
 public:
  virtual ~Person() = default;
  virtual void Tell(const std::string& text) = 0;
  // True for yes.
  virtual bool Ask(const std::string& text) = 0;
  // An absolute path; nothing when canceled.
  virtual std::optional<std::string> ChooseFile(const FileQuestion& question) = 0;
  virtual void ShowStatus(const std::string& text) = 0;
  virtual void ClearStatus() = 0;
  // Progress of long work, 0..1, with what is being done; false asks the work to stop. Any thread.
  virtual bool Progress(double fraction, const std::string& what) = 0;
  // A file is about to be written or copied to `path`. Any thread; false asks the work to stop, and
  // the file stays as it is.
  virtual bool Writing(const std::string&) { return true; }
};

// Nobody there to answer: texts go to the standard error stream, questions are answered no, choices
// are canceled.
class AbsentPerson : public Person {
 public:
  void Tell(const std::string& text) override;
  bool Ask(const std::string& text) override;
  std::optional<std::string> ChooseFile(const FileQuestion& question) override;
  void ShowStatus(const std::string&) override {}
  void ClearStatus() override {}
  bool Progress(double, const std::string&) override { return true; }
};

}  // namespace engine
