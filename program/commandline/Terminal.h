// Terminal: the person before the command line: questions on the terminal (answered by --yes, else
// taken as no where nobody can be asked), messages and progress on stderr. For a program each
// message is a line of JSON there (see docs/JSON.md). Owned by main. Main thread; Progress from any
// thread.
#pragma once

#include <atomic>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "engine/outside/Person.h"
#include "program/outcome/Words.h"
#include "program/rendering/PictureScene.h"

namespace commandline {

struct TerminalChoices {
  bool yes = false;      // answer every question with yes
  bool quiet = false;    // no messages but errors
  bool verbose = false;  // status texts, too
  bool json = false;     // for a program
};

// A message on stderr: "error", "note", "message", "question", "status" or "progress".
void PrintMessage(bool asJson, const char* level, const std::string& text);

class Terminal : public engine::Person, public rendering::PictureListener {
 public:
  void Choose(const TerminalChoices& choices) { choices_ = choices; }

  void Tell(const std::string& text) override;
  bool Ask(const std::string& text) override;
  std::optional<std::string> ChooseFile(const engine::FileQuestion& question) override;
  void ShowStatus(const std::string& text) override;
  void ClearStatus() override;
  bool Progress(double fraction, const std::string& what) override;

  // Progress as lines of a log, where stderr is no terminal: one for each of few steps, and for
  // each tenth of many.
  void Step(std::size_t done, std::size_t count, const std::string& what) override;

  // Sets the next answer of ChooseFile: the verbs know the folder before the dialog asks for it.
  void ChooseNextFile(const std::string& path) { nextFile_ = path; }
  // How many questions were answered with no so far.
  std::size_t Refused() const { return refused_; }
  // Messages of plug-ins since the start, in order.
  const std::vector<std::string>& Told() const { return told_; }

  // Width to write for: that of the terminal, within what reads well; a usual one where there is
  // none.
  static std::size_t Columns();
  // Width for a table, which may fill the terminal.
  static std::size_t ColumnsForTable();

  // Messages for a person, on stderr: plain, as a note (each once only) or as an error.
  void Say(const std::string& text) override;
  void Note(const std::string& text) override;
  void Error(const std::string& text) override;

  // Ctrl-C, and the signals of a closed terminal and of programs that end others, ask running work
  // to stop; a second one ends the program. What was to be ignored when the program was started
  // still is.
  static void CatchInterrupts();
  static bool Interrupted() { return StopSignal() != 0; }
  bool IsStopped() const override { return Interrupted(); }
  // The signal that asked to stop; 0 when there was none.
  static int StopSignal();

 private:
  void EndProgressLine();
  // Waits until a line can be read; false when interrupted.
  static bool WaitForLine();
  bool AskHere(const std::string& text);

  TerminalChoices choices_;
  std::optional<std::string> nextFile_;
  std::vector<std::string> told_;
  std::set<std::string> noted_;
  std::atomic<int> shownPercent_{-1};
  std::size_t refused_ = 0;
};

using outcome::Shown;
// A message with what it quotes made fit for a terminal: control characters but line ends replaced,
// endless words cut.
std::string Readable(const std::string& message);

// Broken at blanks into lines of at most `width` bytes; a longer word stands alone.
std::vector<std::string> Wrapped(const std::string& text, std::size_t width);

// Text in a color, plain where stdout is no terminal or NO_COLOR is set.
enum class Color { Green, Red, Yellow, Bold, Dim };
std::string Colored(Color color, const std::string& text);

}  // namespace commandline
