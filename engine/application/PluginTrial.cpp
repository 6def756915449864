#include "engine/application/PluginTrial.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "engine/outside/Confinement.h"
#include "engine/outside/SystemServices.h"

namespace engine {
namespace {

constexpr int kLongestTrial = 20000;  // milliseconds
constexpr int kCameToItsEnd = 0;

// Called in the child: a crash leaves no core file, prints nothing and runs no signal handler; the
// child ends with its parent.
void KeepQuiet() {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  sigset_t none;
  sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
  for (const int number : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGTERM, SIGINT})
    ::signal(number, SIG_DFL);
  const rlimit nothing{0, 0};
  ::setrlimit(RLIMIT_CORE, &nothing);
  const int nowhere = ::open("/dev/null", O_RDWR | O_CLOEXEC);
  for (int standard = 0; standard < 3; ++standard) ::dup2(nowhere, standard);
}

[[noreturn]] void Try(const std::function<void()>& work) {
  KeepQuiet();
  AllowReadingOnly({"/"});
  try {
    const SystemServices mute;
    const PublishedServicesScope scope(mute.Get());
    work();
  } catch (...) {
    // That is an answer, too: it will be thrown again where it is caught.
  }
  // Nothing of the parent's is ended or written a second time.
  ::_exit(kCameToItsEnd);
}

// The pipe has no end for as long as the child lives.
bool EndsInTime(int pipe) {
  pollfd end{pipe, POLLIN, 0};
  int ready;
  do {
    ready = ::poll(&end, 1, kLongestTrial);
  } while (ready < 0 && errno == EINTR);
  return ready > 0;
}

std::string EndOf(pid_t child, bool inTime) {
  if (!inTime) ::kill(child, SIGKILL);
  int status = 0;
  pid_t ended;
  do {
    ended = ::waitpid(child, &status, 0);
  } while (ended < 0 && errno == EINTR);
  if (!inTime) return "it does not come to an end";
  if (ended == child && WIFSIGNALED(status))
    return std::string("it crashes (") + ::strsignal(WTERMSIG(status)) + ")";
  if (ended == child && WEXITSTATUS(status) != kCameToItsEnd) return "it ends the program";
  return "";
}

}  // namespace

std::string WhyItWouldEnd(const std::function<void()>& work) {
  std::array<int, 2> ends{-1, -1};
  // The child has the other end until it is over, whatever ends it.
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) return "";
  const pid_t child = ::fork();
  if (child == 0) Try(work);
  ::close(ends[1]);
  std::string why = child > 0 ? EndOf(child, EndsInTime(ends[0])) : "";
  ::close(ends[0]);
  return why;
}

}  // namespace engine
