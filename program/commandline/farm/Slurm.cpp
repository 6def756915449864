// The scheduler is spoken to by its own commands (sbatch, squeue, scancel), as a person at a shell
// does; options and output are those of their manual pages (measured with 22.05, docs/FARM.md).
#include "program/commandline/farm/Slurm.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <sstream>
#include <system_error>
#include <utility>

#include "engine/outside/FileHandle.h"
#include "program/commandline/Terminal.h"

extern char** environ;

namespace commandline {

using engine::FileHandle;
using engine::Result;
using engine::Status;

namespace {

// How soon Ctrl-C reaches a command that is waited for.
constexpr int kMillisecondsBetweenSignals = 50;

struct Pipe {
  FileHandle reading;
  FileHandle writing;

  static Pipe Make() {
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0) return {};
    return {FileHandle(ends[0]), FileHandle(ends[1])};
  }
};

// Both outputs until both have ended. `child` is told to end when this program is; 0: none is. Both
// at once: a command that fills one pipe while the other is read would wait for ever.
void ReadBoth(const FileHandle& out, const FileHandle& err, pid_t child, ProgramAnswer& answer) {
  std::array<pollfd, 2> inputs{{{out.Get(), POLLIN, 0}, {err.Get(), POLLIN, 0}}};
  std::array<std::string*, 2> texts{&answer.out, &answer.err};
  while (inputs[0].fd >= 0 || inputs[1].fd >= 0) {
    if (child > 0 && Terminal::Interrupted()) kill(std::exchange(child, 0), SIGTERM);
    const int ready =
        poll(inputs.data(), inputs.size(), child > 0 ? kMillisecondsBetweenSignals : -1);
    if (ready < 0 && errno != EINTR) return;
    if (ready <= 0) continue;
    for (std::size_t i = 0; i < inputs.size(); ++i) {
      if (inputs[i].fd < 0 || inputs[i].revents == 0) continue;
      char bytes[4096];
      const ssize_t count = read(inputs[i].fd, bytes, sizeof bytes);
      if (count > 0) texts[i]->append(bytes, static_cast<std::size_t>(count));
      if (count == 0 || (count < 0 && errno != EINTR)) inputs[i].fd = -1;
    }
  }
}

// As shells tell it: 128 and the signal.
int EndOf(pid_t child) {
  int status = 0;
  while (waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) return 1;
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::string WithCommas(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : ",") + word;
  return text;
}

// The last line that is not empty: what a command of Slurm says last is what is wrong.
std::string LastLine(const std::string& text) {
  std::istringstream lines(text);
  std::string last;
  for (std::string line; std::getline(lines, line);) {
    if (!line.empty()) last = line;
  }
  return last.empty() ? "it said nothing" : last;
}

// A line of squeue: job|task|state|node|reason. Tasks that wait as a range have no number of their
// own and keep -1.
QueuedTask TaskOf(const std::string& line) {
  std::istringstream columns(line);
  QueuedTask task;
  std::string number;
  for (std::string* column : {&task.job, &number, &task.state, &task.node, &task.reason})
    std::getline(columns, *column, '|');
  const bool isNumber =
      !number.empty() && number.find_first_not_of("0123456789") == std::string::npos;
  if (isNumber) task.task = std::atoi(number.c_str());
  return task;
}

// The words of the scheduler are handed on.
Result<ProgramAnswer> Understood(Result<ProgramAnswer> answer,
                                 const std::vector<std::string>& words) {
  if (!answer) {
    return Result<ProgramAnswer>::Failure("Slurm's " + words[0] +
                                          " was not found on this machine. Install Slurm's "
                                          "commands (Debian: slurm-client) where jobs "
                                          "are submitted.");
  }
  if (answer.Value().status == 0) return answer;
  return Result<ProgramAnswer>::Failure("Slurm refused: " + LastLine(answer.Value().err) + " (" +
                                        words[0] + ").");
}

}  // namespace

// Output in pipes, no input: a command that asks something must not wait. The writing ends are
// closed here, or reading would never end.
Result<ProgramAnswer> RunProgram(const std::vector<std::string>& words, Purpose purpose) {
  Pipe out = Pipe::Make();
  Pipe err = Pipe::Make();
  std::vector<char*> call;
  call.reserve(words.size() + 1);
  for (const std::string& word : words) call.push_back(const_cast<char*>(word.c_str()));
  call.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, out.writing.Get(), STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, err.writing.Get(), STDERR_FILENO);
  pid_t child = 0;
  const int error = posix_spawnp(&child, call[0], &actions, nullptr, call.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0)
    return Result<ProgramAnswer>::Failure(words[0] + ": " + std::generic_category().message(error));
  out.writing.Close();
  err.writing.Close();
  ProgramAnswer answer;
  ReadBoth(out.reading, err.reading, purpose == Purpose::Looks ? child : 0, answer);
  answer.status = EndOf(child);
  return answer;
}

// A person's own options stand behind ours and win. Requeued tasks find their finished pictures and
// append to the log.
std::vector<std::string> SlurmCall(const SlurmOrder& order) {
  std::vector<std::string> words{"sbatch",
                                 "--parsable",
                                 "--job-name=" + order.name,
                                 "--output=" + order.log,
                                 "--open-mode=append",
                                 "--requeue"};
  if (order.tasks > 0) words.push_back("--array=0-" + std::to_string(order.tasks - 1));
  if (!order.after.empty()) words.push_back("--dependency=afterany:" + order.after);
  if (!order.partition.empty()) words.push_back("--partition=" + order.partition);
  words.insert(words.end(), order.options.begin(), order.options.end());
  words.push_back(order.script);
  return words;
}

// --parsable prints the number, and behind a semicolon the cluster.
Result<std::string> SubmitToSlurm(const SlurmOrder& order) {
  const auto call = SlurmCall(order);
  const auto answer = Understood(RunProgram(call), call);
  if (!answer) return answer.GetStatus();
  const std::string& out = answer.Value().out;
  const std::string number = out.substr(0, out.find_first_not_of("0123456789"));
  if (!number.empty()) return number;
  return Result<std::string>::Failure("Slurm gave no job number: " + LastLine(out) + ".");
}

// One question for all jobs. All states, because a task that has just ended tells of it for a
// while.
Result<std::vector<QueuedTask>> SlurmQueue(const std::vector<std::string>& jobs) {
  std::vector<QueuedTask> tasks;
  if (jobs.empty()) return tasks;
  const std::vector<std::string> call{"squeue",
                                      "--noheader",
                                      "--array",
                                      "--states=all",
                                      "--format=%F|%K|%T|%N|%r",
                                      "--jobs=" + WithCommas(jobs)};
  const auto answer = RunProgram(call, Purpose::Looks);
  // Where the scheduler has forgotten all of the jobs, it calls them invalid.
  const bool isForgotten = answer && answer.Value().err.find("Invalid job id") != std::string::npos;
  if (isForgotten) return tasks;
  if (const auto failed = Understood(answer, call); !failed) return failed.GetStatus();
  std::istringstream lines(answer.Value().out);
  for (std::string line; std::getline(lines, line);) {
    tasks.push_back(TaskOf(line));
  }
  return tasks;
}

bool IsAlive(const QueuedTask& task) {
  for (const char* state : {"PENDING", "RUNNING", "COMPLETING", "CONFIGURING", "SUSPENDED",
                            "REQUEUED", "REQUEUE_HOLD", "RESIZING", "STOPPED"}) {
    if (task.state == state) return true;
  }
  return false;
}

Status CancelInSlurm(const std::vector<std::string>& jobs) {
  std::vector<std::string> words{"scancel"};
  words.insert(words.end(), jobs.begin(), jobs.end());
  const auto answer = RunProgram(words);
  // A job that has ended or was forgotten needs no cancellation.
  const bool isOver = answer && answer.Value().err.find("Invalid job id") != std::string::npos;
  if (isOver) return {};
  return Understood(answer, words).GetStatus();
}

// For sh: within single quotes only a single quote means anything.
std::string Quoted(const std::string& text) {
  std::string quoted = "'";
  for (const char letter : text)
    quoted += letter == '\'' ? std::string("'\\''") : std::string(1, letter);
  return quoted + "'";
}

std::string AsTyped(const std::string& text) {
  constexpr const char* kPlain =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_=./:,%";
  const bool isPlain = !text.empty() && text.find_first_not_of(kPlain) == std::string::npos;
  return isPlain ? text : Quoted(text);
}

}  // namespace commandline
