#include "engine/import/WorkerProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "engine/import/Confinement.h"

extern char** environ;

namespace engine {
namespace {

constexpr int kOutput = 3;  // the child's descriptor for its result
// The parent's copies lie above all that the child wants to fill
constexpr int kFirstFree = 10;
constexpr int kLooksPerSecond = 20;  // how often the receiver hears of a silent child

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kSearchesLeaks = true;
#else
constexpr bool kSearchesLeaks = false;
#endif

struct Launch {
  const char* program;
  const char* path;
  char* const* environment;
  int output;
  int nothing;  // /dev/null
  pid_t parent;
  const ImportLimits* limits;
};

void CloseFrom(int first) {
#ifdef SYS_close_range
  if (::syscall(SYS_close_range, static_cast<unsigned>(first), ~0u, 0u) == 0) return;
#endif
  for (int descriptor = first; descriptor < 4096; ++descriptor) ::close(descriptor);
}

void ResetSignals() {
  sigset_t none;
  sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
  for (const int number : {SIGPIPE, SIGINT, SIGTERM, SIGHUP, SIGXCPU, SIGCHLD})
    ::signal(number, SIG_DFL);
}

// Between fork and exec: only calls that are safe there although other threads may hold locks.
[[noreturn]] void BecomeWorker(const Launch& launch) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (::getppid() != launch.parent) ::_exit(kCannotRun);
  ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  for (int standard = 0; standard < kOutput; ++standard) ::dup2(launch.nothing, standard);
  ::dup2(launch.output, kOutput);
  CloseFrom(kOutput + 1);
  ResetSignals();
  if (::chdir("/") != 0) ::_exit(kCannotRun);
  SetProcessLimits(*launch.limits);
  char descriptor[] = {static_cast<char>('0' + kOutput), '\0'};
  char* const arguments[] = {const_cast<char*>(launch.program),
                             const_cast<char*>(kImportWorkerVerb), const_cast<char*>(launch.path),
                             descriptor, nullptr};
  ::execve(launch.program, arguments, launch.environment);
  ::_exit(kCannotRun);
}

// The child's environment, ended by null: this process's own. A search for leaks at the child's end
// would need files and processes that it may not have.
std::vector<char*> ChildEnvironment(std::string& noLeakSearch) {
  const std::string name = "ASAN_OPTIONS=";
  const char* options = std::getenv("ASAN_OPTIONS");
  noLeakSearch =
      name + (options != nullptr ? std::string(options) + ":" : std::string()) + "detect_leaks=0";
  std::vector<char*> variables;
  for (char** variable = environ; *variable != nullptr; ++variable) {
    if (!kSearchesLeaks || std::strncmp(*variable, name.c_str(), name.size()) != 0)
      variables.push_back(*variable);
  }
  if (kSearchesLeaks) variables.push_back(noLeakSearch.data());
  variables.push_back(nullptr);
  return variables;
}

// Moves a descriptor out of the way of the child's own; closes the old one.
int MoveUp(int descriptor) {
  if (descriptor < 0) return descriptor;
  const int moved = ::fcntl(descriptor, F_DUPFD_CLOEXEC, kFirstFree);
  ::close(descriptor);
  return moved;
}

Status SystemFailure(const char* what) {
  return Status::Failure(std::string("The importer could not be started: ") + what + ": " +
                         std::strerror(errno) + ".");
}

}  // namespace

WorkerProcess::~WorkerProcess() {
  if (child_ > 0) {
    Kill();
    Wait();
  }
  if (input_ >= 0) ::close(input_);
}

Status WorkerProcess::Start(const std::string& program, const std::string& path,
                            const ImportLimits& limits) {
  std::array<int, 2> ends{-1, -1};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) return SystemFailure("pipe");
  input_ = ends[0];
  const int output = MoveUp(ends[1]);
  const int nothing = MoveUp(::open("/dev/null", O_RDWR | O_CLOEXEC));
  std::string noLeakSearch;
  const std::vector<char*> environment = ChildEnvironment(noLeakSearch);
  const Launch launch{program.c_str(), path.c_str(), environment.data(), output, nothing,
                      ::getpid(),      &limits};
  child_ = output >= 0 && nothing >= 0 ? ::fork() : -1;
  if (child_ == 0) BecomeWorker(launch);
  Status result = child_ > 0 ? Status() : SystemFailure("fork");
  if (output >= 0) ::close(output);
  if (nothing >= 0) ::close(nothing);
  ::fcntl(input_, F_SETFL, O_NONBLOCK);
  deadline_ = std::chrono::steady_clock::now() + std::chrono::seconds(limits.seconds);
  return result;
}

void WorkerProcess::Kill() { ::kill(child_, SIGKILL); }

bool WorkerProcess::HasEnded() const {
  siginfo_t about{};
  const int answer =
      ::waitid(P_PID, static_cast<id_t>(child_), &about, WEXITED | WNOHANG | WNOWAIT);
  return answer != 0 || about.si_pid != 0;
}

WorkerOutcome WorkerProcess::Wait() {
  int status = 0;
  pid_t ended;
  do {
    ended = ::waitpid(child_, &status, 0);
  } while (ended < 0 && errno == EINTR);
  child_ = -1;
  if (timedOut_) return {WorkerEnd::TimedOut, 0};
  if (stopped_) return {WorkerEnd::Stopped, 0};
  if (WIFSIGNALED(status)) return {WorkerEnd::Signalled, WTERMSIG(status)};
  return {WorkerEnd::Exited, WEXITSTATUS(status)};
}

// One look at the pipe; false at its end.
bool WorkerProcess::Step(const Receiver& receive) {
  pollfd watched{input_, POLLIN, 0};
  const int ready = ::poll(&watched, 1, 1000 / kLooksPerSecond);
  if (ready <= 0) {
    stopped_ = !receive({});
    return true;
  }
  std::array<char, 1 << 16> bytes;
  const ssize_t count = ::read(input_, bytes.data(), bytes.size());
  if (count < 0) return errno == EINTR || errno == EAGAIN;
  if (count > 0)
    stopped_ = !receive(std::string_view(bytes.data(), static_cast<std::size_t>(count)));
  return count > 0;
}

WorkerOutcome WorkerProcess::Run(const Receiver& receive) {
  bool more = true;
  while (more && !stopped_ && !timedOut_) {
    more = Step(receive);
    timedOut_ = more && std::chrono::steady_clock::now() >= deadline_;
  }
  // A child that has closed its end may still sit there.
  while (!stopped_ && !timedOut_ && !HasEnded()) {
    ::poll(nullptr, 0, 1);
    timedOut_ = std::chrono::steady_clock::now() >= deadline_;
  }
  if (stopped_ || timedOut_) Kill();
  return Wait();
}

}  // namespace engine
