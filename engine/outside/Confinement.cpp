#include "engine/outside/Confinement.h"

#include <fcntl.h>
#include <linux/capability.h>
#include <seccomp.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>
#include <memory>

namespace engine {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kHasSanitizer = true;
#else
constexpr bool kHasSanitizer = false;
#endif

// Far more than a reader has open at a time.
constexpr rlim_t kDescriptors = 64;

void Lower(__rlimit_resource_t what, rlim_t soft, rlim_t hard) {
  rlimit limit{};
  if (::getrlimit(what, &limit) != 0) return;
  limit.rlim_max = std::min(limit.rlim_max, hard);
  limit.rlim_cur = std::min({limit.rlim_cur, soft, limit.rlim_max});
  ::setrlimit(what, &limit);
}

}  // namespace

void SetProcessLimits(const ProcessLimits& limits) {
  // Sanitizers map terabytes that are never touched.
  if (!kHasSanitizer) Lower(RLIMIT_AS, limits.memoryBytes, limits.memoryBytes);
  // The soft limit's signal can be told from others; the hard one kills a second later whatever
  // happens.
  Lower(RLIMIT_CPU, limits.seconds, rlim_t{limits.seconds} + 1);
  Lower(RLIMIT_CORE, 0, 0);
  Lower(RLIMIT_NOFILE, kDescriptors, kDescriptors);
  // Does not hold for a superuser, who is kept from it by AllowComputingOnly.
  Lower(RLIMIT_NPROC, 0, 0);
  // A socket has no size, so this stops files only; the error is enough, no signal is needed.
  ::signal(SIGXFSZ, SIG_IGN);
  Lower(RLIMIT_FSIZE, 0, 0);
}

std::uint64_t MemoryLimit() {
  rlimit limit{};
  const bool isLimited = ::getrlimit(RLIMIT_AS, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY;
  return isLimited ? limit.rlim_cur : std::numeric_limits<std::uint64_t>::max();
}

namespace {

// The kernel's interface, which its headers here may be too old to know (Landlock): what a set of
// rules can handle, and since which version of the interface.
struct Ruleset {
  std::uint64_t files = 0;
  std::uint64_t network = 0;
  std::uint64_t scopes = 0;
};
struct Rule {
  std::uint64_t allowed;
  std::int32_t folder;
} __attribute__((packed));

constexpr unsigned kAskVersion = 1;
constexpr int kBeneathFolder = 1;
constexpr std::uint64_t kReadFile = 1U << 2;
constexpr std::uint64_t kReadFolder = 1U << 3;
constexpr std::uint64_t kFirstRights = (1U << 13) - 1;  // executing, writing, making, removing
constexpr std::uint64_t kRefer = 1U << 13;
constexpr std::uint64_t kTruncate = 1U << 14;
constexpr std::uint64_t kDeviceControl = 1U << 15;
constexpr std::uint64_t kBindAndConnect = 3;
constexpr std::uint64_t kSocketsAndSignals = 3;

#ifdef SYS_landlock_create_ruleset
Ruleset RulesetOf(long version) {
  Ruleset rules{kFirstRights};
  if (version >= 2) rules.files |= kRefer;
  if (version >= 3) rules.files |= kTruncate;
  if (version >= 4) rules.network = kBindAndConnect;
  if (version >= 5) rules.files |= kDeviceControl;
  if (version >= 6) rules.scopes = kSocketsAndSignals;
  return rules;
}

// Older kernels know a shorter structure: each gets the length that it knows.
std::size_t SizeOf(long version) {
  return sizeof(std::uint64_t) * (version >= 6 ? 3 : version >= 4 ? 2 : 1);
}

// A folder that is not there is none that could be read.
void Allow(int rules, const std::string& folder) {
  const int place = ::open(folder.c_str(), O_PATH | O_CLOEXEC | O_DIRECTORY);
  if (place < 0) return;
  const Rule rule{kReadFile | kReadFolder, place};
  ::syscall(SYS_landlock_add_rule, rules, kBeneathFolder, &rule, 0);
  ::close(place);
}
#endif

}  // namespace

bool AllowReadingOnly([[maybe_unused]] const std::vector<std::string>& folders) {
#ifdef SYS_landlock_create_ruleset
  const long version = ::syscall(SYS_landlock_create_ruleset, nullptr, 0, kAskVersion);
  if (version < 1) return false;
  const Ruleset handled = RulesetOf(version);
  const auto rules =
      static_cast<int>(::syscall(SYS_landlock_create_ruleset, &handled, SizeOf(version), 0));
  if (rules < 0) return false;
  for (const std::string& folder : folders) Allow(rules, folder);
  ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  const long done = ::syscall(SYS_landlock_restrict_self, rules, 0);
  ::close(rules);
  return done == 0;
#else
  return false;
#endif
}

void DropPrivileges() {
  ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  // Nobody of the same user can look into the process, nor does it leave a core file.
  ::prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);
  __user_cap_header_struct head{_LINUX_CAPABILITY_VERSION_3, 0};
  std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> sets{};
  if (::syscall(SYS_capget, &head, sets.data()) != 0) return;
  for (std::size_t i = 0; i < sets.size(); ++i) {
    const std::uint32_t kept = i == 0 ? 1U << CAP_DAC_READ_SEARCH : 0;
    sets[i].effective &= kept;
    sets[i].permitted &= kept;
    sets[i].inheritable = 0;
  }
  ::syscall(SYS_capset, &head, sets.data());
}

namespace {

constexpr std::array kAlwaysAllowed = {
    // memory; mmap and mprotect follow with conditions
    SCMP_SYS(brk), SCMP_SYS(munmap), SCMP_SYS(mremap), SCMP_SYS(madvise),
    // what is open
    SCMP_SYS(read), SCMP_SYS(readv), SCMP_SYS(pread64), SCMP_SYS(write), SCMP_SYS(writev),
    SCMP_SYS(lseek), SCMP_SYS(close), SCMP_SYS(fstat),
    // itself
    SCMP_SYS(futex), SCMP_SYS(sched_yield), SCMP_SYS(clock_gettime), SCMP_SYS(gettimeofday),
    SCMP_SYS(getrandom), SCMP_SYS(getpid), SCMP_SYS(gettid), SCMP_SYS(rt_sigaction),
    SCMP_SYS(rt_sigprocmask), SCMP_SYS(rt_sigreturn), SCMP_SYS(sigaltstack),
    SCMP_SYS(restart_syscall), SCMP_SYS(exit), SCMP_SYS(exit_group)};

constexpr std::uint64_t kChangesFiles = O_ACCMODE | O_CREAT | O_TRUNC | O_APPEND;

using Filter = std::unique_ptr<void, void (*)(scmp_filter_ctx)>;

bool AddRules(scmp_filter_ctx filter, bool areFilesConfined) {
  bool added = true;
  const auto allow = [&](int call, const scmp_arg_cmp& condition) {
    added = added && seccomp_rule_add_array(filter, SCMP_ACT_ALLOW, call, 1, &condition) == 0;
  };
  const auto allowAlways = [&](int call) {
    added = added && seccomp_rule_add_array(filter, SCMP_ACT_ALLOW, call, 0, nullptr) == 0;
  };
  for (const int call : kAlwaysAllowed) allowAlways(call);
  // Clang's sanitizer asks a pipe whether memory is there before it looks at an object's type;
  // where it cannot ask, the object counts as none.
  if (kHasSanitizer) allowAlways(SCMP_SYS(pipe2));
  allow(SCMP_SYS(mmap), {2, SCMP_CMP_MASKED_EQ, PROT_EXEC, 0});
  allow(SCMP_SYS(mprotect), {2, SCMP_CMP_MASKED_EQ, PROT_EXEC, 0});
  allow(SCMP_SYS(openat), {2, SCMP_CMP_MASKED_EQ, kChangesFiles, 0});
  // Its flags lie in memory, where no filter can check them.
  if (areFilesConfined) allowAlways(SCMP_SYS(openat2));
  // Its own limits, as that on memory, may be read but not set.
  const scmp_arg_cmp asksOfItself[] = {{0, SCMP_CMP_EQ, 0, 0}, {2, SCMP_CMP_EQ, 0, 0}};
  added = added &&
          seccomp_rule_add_array(filter, SCMP_ACT_ALLOW, SCMP_SYS(prlimit64), 2, asksOfItself) == 0;
  // As abort does it.
  allow(SCMP_SYS(tgkill), {0, SCMP_CMP_EQ, static_cast<scmp_datum_t>(::getpid()), 0});
  return added;
}

}  // namespace

// Every other call fails with "not permitted" rather than ending the process: a library that asks
// for a clock or a language goes on without.
bool AllowComputingOnly(bool areFilesConfined) {
  const Filter filter(seccomp_init(SCMP_ACT_ERRNO(EPERM)), seccomp_release);
  return filter && AddRules(filter.get(), areFilesConfined) && seccomp_load(filter.get()) == 0;
}

}  // namespace engine
