// Results go to standard output, everything else to standard error, each message one line or one
// JSON object (decision 66). Progress is one line that is drawn over itself, on a terminal only;
// elsewhere ten steps of a long work are lines.
#include "program/commandline/Terminal.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <iostream>

#include "engine/dialog/TerminalText.h"
#include "program/commandline/Report.h"

namespace commandline {

namespace {

// Letters of one word, say a name or path, in a message; and the width where nobody knows it.
constexpr std::size_t kLongestWord = 400;
constexpr std::size_t kUsualColumns = 100;

volatile std::sig_atomic_t stopSignal = 0;

// The second one ends the program at once: the first may be heard late. 128 + signal is what shells
// expect.
void OnStop(int signal) {
  if (stopSignal) std::_Exit(128 + signal);
  stopSignal = signal;
}

// Waiting for a word typed ends at Ctrl-C, all other waiting goes on. A signal that was ignored at
// the start stays so: `nohup` relies on it.
void CatchInterruptsWith(int flags) {
  struct sigaction action {};
  action.sa_handler = OnStop;
  action.sa_flags = flags;
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction former {};
    if (sigaction(signal, nullptr, &former) == 0 && former.sa_handler != SIG_IGN)
      sigaction(signal, &action, nullptr);
  }
}

bool CanAsk() { return isatty(STDIN_FILENO) && isatty(STDERR_FILENO); }

// https://no-color.org
bool UsesColor() {
  const char* off = std::getenv("NO_COLOR");
  return isatty(STDOUT_FILENO) && !(off && *off);
}

}  // namespace

void PrintMessage(bool asJson, const char* level, const std::string& text) {
  if (asJson) {
    std::cerr << "{\"version\": " << kJsonVersion << ", \"level\": \"" << level
              << "\", \"text\": \"" << JsonText(text) << "\"}\n";
    return;
  }
  const std::string_view kind = level;
  std::cerr << (kind == "error"  ? "stagemarks: "
                : kind == "note" ? "note: "
                                 : "")
            << Readable(text) << '\n';
}

// A file that grows beyond what the system allows fails to be written, as on a full disk, and ends
// nothing.
void Terminal::CatchInterrupts() {
  CatchInterruptsWith(SA_RESTART);
  std::signal(SIGXFSZ, SIG_IGN);
}

int Terminal::StopSignal() { return stopSignal; }

// Bound, because long lines of text are hard to read; tables may use all of it.
std::size_t Terminal::Columns() {
  return std::clamp<std::size_t>(ColumnsForTable(), 60, kUsualColumns);
}

std::size_t Terminal::ColumnsForTable() {
  winsize size{};
  const bool known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return known ? std::max<std::size_t>(size.ws_col, 60) : kUsualColumns;
}

// A plug-in may say the same for each of a hundred Stagemarks: once in a row is enough.
void Terminal::Tell(const std::string& text) {
  EndProgressLine();
  const bool isSaid = !told_.empty() && told_.back() == text;
  told_.push_back(text);
  if (!choices_.quiet && !isSaid) PrintMessage(choices_.json, "message", text);
}

// No where nobody can answer: what plug-ins ask about is deleting and overwriting.
bool Terminal::Ask(const std::string& text) {
  EndProgressLine();
  if (choices_.yes) {
    Say(text + " yes (--yes)");
    return true;
  }
  const bool yes = CanAsk() && AskHere(text);
  if (!CanAsk() && !choices_.quiet)
    PrintMessage(choices_.json, "question",
                 text + " no (nobody can be asked here; --yes answers yes)");
  if (!yes) ++refused_;
  return yes;
}

// Ctrl-C at a question is a no.
// An interruption may come between the question and the reading, so the wait looks for it again and
// again.
bool Terminal::WaitForLine() {
  pollfd input{STDIN_FILENO, POLLIN, 0};
  while (!Interrupted()) {
    if (poll(&input, 1, 50) > 0) return true;
  }
  return false;
}

// Without SA_RESTART, so that Ctrl-C ends the reading.
bool Terminal::AskHere(const std::string& text) {
  std::cerr << Readable(text) << " [y/N] " << std::flush;
  CatchInterruptsWith(0);
  std::string answer;
  const bool answered = WaitForLine() && std::getline(std::cin, answer);
  CatchInterruptsWith(SA_RESTART);
  if (!answered) std::cerr << '\n';
  return answered && !answer.empty() && (answer[0] == 'y' || answer[0] == 'Y');
}

std::optional<std::string> Terminal::ChooseFile(const engine::FileQuestion&) {
  auto chosen = std::move(nextFile_);
  nextFile_.reset();
  return chosen;
}

void Terminal::ShowStatus(const std::string& text) {
  if (choices_.verbose && !choices_.quiet) PrintMessage(choices_.json, "status", text);
}

void Terminal::ClearStatus() {}

// Called by any thread of a render; each percent is printed by one of them.
bool Terminal::Progress(double fraction, const std::string& what) {
  const int percent = static_cast<int>(fraction * 100);
  if (!choices_.quiet && !choices_.json && isatty(STDERR_FILENO) &&
      shownPercent_.exchange(percent) != percent) {
    std::fprintf(stderr, "\r\033[K%s %d %%", what.c_str(), percent);
    if (percent >= 100) EndProgressLine();
  }
  return !Interrupted();
}

// So that a log of a night has ten lines and not ten thousand.
void Terminal::Step(std::size_t done, std::size_t count, const std::string& what) {
  if (choices_.quiet || isatty(STDERR_FILENO) || count < 2 || done == 0) return;
  const std::size_t tenths = std::min<std::size_t>(10, count);
  if (done * tenths / count == (done - 1) * tenths / count) return;
  PrintMessage(choices_.json, "progress",
               what + ": " + std::to_string(done) + " of " + std::to_string(count) + " (" +
                   std::to_string(done * 100 / count) + " %)");
}

void Terminal::EndProgressLine() {
  if (shownPercent_.exchange(-1) >= 0) std::fputs("\r\033[K", stderr);
}

void Terminal::Say(const std::string& text) {
  EndProgressLine();
  if (!choices_.quiet) PrintMessage(choices_.json, "message", text);
}

void Terminal::Note(const std::string& text) {
  EndProgressLine();
  if (noted_.insert(text).second && !choices_.quiet) PrintMessage(choices_.json, "note", text);
}

void Terminal::Error(const std::string& text) {
  EndProgressLine();
  PrintMessage(choices_.json, "error", text);
}

// By words, so that line breaks stay and one long name does not hide the rest.
std::string Readable(const std::string& message) {
  std::string readable;
  for (std::size_t start = 0; start <= message.size();) {
    const std::size_t end = std::min(message.find_first_of(" \n", start), message.size());
    const std::string word = engine::Printable(message.substr(start, end - start));
    readable += engine::Shortened(word, kLongestWord);
    if (end < message.size()) readable += message[end];
    start = end + 1;
  }
  return readable;
}

// By bytes: exact for help texts, which are ASCII, and on the safe side for others. A word longer
// than the line has one of its own.
std::vector<std::string> Wrapped(const std::string& text, std::size_t width) {
  std::vector<std::string> lines{""};
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find(' ', start), text.size());
    const std::string word = text.substr(start, end - start);
    if (!lines.back().empty() && lines.back().size() + 1 + word.size() > width)
      lines.emplace_back();
    lines.back() += (lines.back().empty() ? "" : " ") + word;
    start = end + 1;
  }
  return lines;
}

std::string Colored(Color color, const std::string& text) {
  if (!UsesColor()) return text;
  static const char* const kCodes[] = {"32", "31", "33", "1", "2"};
  return std::string("\033[") + kCodes[static_cast<int>(color)] + "m" + text + "\033[0m";
}

}  // namespace commandline
