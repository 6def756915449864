#include "engine/outside/ConfinedChild.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>

extern char** environ;

namespace engine {
namespace {

constexpr int kTalk = 3;  // the child's descriptor
// The parent's copies lie above all that the child wants to fill
constexpr int kFirstFree = 10;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kSearchesLeaks = true;
#else
constexpr bool kSearchesLeaks = false;
#endif

struct Launch {
  char* const* arguments;  // the program first
  char* const* environment;
  int talk;
  int nothing;   // /dev/null
  pid_t parent;  // whose end is the child's, 0 for nobody's
  const ProcessLimits* limits;
};

// By one call where the kernel has it, else as many as a program commonly has.
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
[[noreturn]] void BecomeChild(const Launch& launch) {
  if (launch.parent != 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    // The parent may have ended before the child asked to end with it.
    if (::getppid() != launch.parent) ::_exit(kCannotRun);
  }
  ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  for (int standard = 0; standard < kTalk; ++standard) ::dup2(launch.nothing, standard);
  ::dup2(launch.talk, kTalk);
  CloseFrom(kTalk + 1);
  ResetSignals();
  if (::chdir("/") != 0) ::_exit(kCannotRun);
  SetProcessLimits(*launch.limits);
  ::execve(launch.arguments[0], launch.arguments, launch.environment);
  ::_exit(kCannotRun);
}

// The child's environment, ended by null: this process's own, and memory in large pages where the
// system has them: a child lives for so short a time that asking for small ones is a fifth of its
// work. A search for leaks at the child's end would need files and processes that it may not have.
std::vector<char*> ChildEnvironment(std::string& noLeakSearch, std::string& largePages) {
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
  if (std::getenv("GLIBC_TUNABLES") == nullptr) variables.push_back(largePages.data());
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

Status StartFailure(const std::string& who, const char* what) {
  return Status::Failure(who + " could not be started: " + what + ": " + std::strerror(errno) +
                         ".");
}

// Ended by null; the texts are those of `words`.
std::vector<char*> Pointers(std::vector<std::string>& words) {
  std::vector<char*> pointers;
  pointers.reserve(words.size() + 1);
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace

ConfinedChild::~ConfinedChild() {
  if (child_ > 0) {
    Kill();
    Wait();
  }
  if (talk_ >= 0) ::close(talk_);
}

Status ConfinedChild::Start(const std::string& what, const std::string& program,
                            const std::vector<std::string>& words, const ProcessLimits& limits,
                            Life life) {
  std::array<int, 2> ends{-1, -1};
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
    return StartFailure(what, "socketpair");
  talk_ = ends[0];
  const int talk = MoveUp(ends[1]);
  const int nothing = MoveUp(::open("/dev/null", O_RDWR | O_CLOEXEC));
  std::vector<std::string> line{program};
  line.insert(line.end(), words.begin(), words.end());
  line.push_back(std::to_string(kTalk));
  const std::vector<char*> arguments = Pointers(line);
  std::string noLeakSearch;
  std::string largePages = "GLIBC_TUNABLES=glibc.malloc.hugetlb=1";
  const std::vector<char*> environment = ChildEnvironment(noLeakSearch, largePages);
  const Launch launch{
      arguments.data(), environment.data(), talk, nothing, life == Life::OfThread ? ::getpid() : 0,
      &limits};
  // Everything that takes memory is made before: between fork and exec nothing may.
  child_ = talk >= 0 && nothing >= 0 ? ::fork() : -1;
  if (child_ == 0) BecomeChild(launch);
  Status result = child_ > 0 ? Status() : StartFailure(what, "fork");
  if (talk >= 0) ::close(talk);
  if (nothing >= 0) ::close(nothing);
  return result;
}

void ConfinedChild::Kill() { ::kill(child_, SIGKILL); }

// Leaves the end to be waited for.
bool ConfinedChild::HasEnded() const {
  siginfo_t about{};
  const int answer =
      ::waitid(P_PID, static_cast<id_t>(child_), &about, WEXITED | WNOHANG | WNOWAIT);
  return answer != 0 || about.si_pid != 0;
}

ConfinedChild::End ConfinedChild::Wait() {
  int status = 0;
  pid_t ended;
  do {
    ended = ::waitpid(child_, &status, 0);
  } while (ended < 0 && errno == EINTR);
  child_ = -1;
  return WIFSIGNALED(status) ? End{true, WTERMSIG(status)} : End{false, WEXITSTATUS(status)};
}

}  // namespace engine
