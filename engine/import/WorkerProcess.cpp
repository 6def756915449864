#include "engine/import/WorkerProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace engine {
namespace {

constexpr int kLooksPerSecond = 20;  // how often the receiver hears of a silent child

}  // namespace

Status WorkerProcess::Start(const std::string& program, const std::string& path,
                            const ImportLimits& limits) {
  Status started =
      child_.Start("The importer", program, {kImportWorkerVerb, path},
                   {limits.memoryBytes, limits.seconds}, ConfinedChild::Life::OfThread);
  if (started) ::fcntl(child_.Talk(), F_SETFL, O_NONBLOCK);
  // Time on the clock besides the processor time that the child may have: one that waits takes
  // none.
  deadline_ = std::chrono::steady_clock::now() + std::chrono::seconds(limits.seconds);
  return started;
}

// Looks once at what the child sends; false at its end.
bool WorkerProcess::Step(const Receiver& receive) {
  pollfd watched{child_.Talk(), POLLIN, 0};
  const int ready = ::poll(&watched, 1, 1000 / kLooksPerSecond);
  if (ready <= 0) {
    stopped_ = !receive({});
    return true;
  }
  std::array<char, 1 << 16> bytes;
  const ssize_t count = ::read(child_.Talk(), bytes.data(), bytes.size());
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
  while (!stopped_ && !timedOut_ && !child_.HasEnded()) {
    ::poll(nullptr, 0, 1);
    timedOut_ = std::chrono::steady_clock::now() >= deadline_;
  }
  if (stopped_ || timedOut_) child_.Kill();
  const ConfinedChild::End end = child_.Wait();
  if (timedOut_) return {WorkerEnd::TimedOut, 0};
  if (stopped_) return {WorkerEnd::Stopped, 0};
  return {end.bySignal ? WorkerEnd::Signalled : WorkerEnd::Exited, end.number};
}

}  // namespace engine
