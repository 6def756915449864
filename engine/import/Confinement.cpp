#include "engine/import/Confinement.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>

#if __has_include(<linux/landlock.h>)
#include <linux/landlock.h>
#endif

namespace engine {
namespace {

// Address sanitizers map terabytes that are never touched.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kLimitsAddressSpace = false;
#else
constexpr bool kLimitsAddressSpace = true;
#endif

constexpr rlim_t kDescriptors = 64;

void Lower(__rlimit_resource_t what, rlim_t soft, rlim_t hard) {
  rlimit limit{};
  if (::getrlimit(what, &limit) != 0) return;
  limit.rlim_max = std::min(limit.rlim_max, hard);
  limit.rlim_cur = std::min({limit.rlim_cur, soft, limit.rlim_max});
  ::setrlimit(what, &limit);
}

}  // namespace

void SetProcessLimits(const ImportLimits& limits) {
  if (kLimitsAddressSpace) Lower(RLIMIT_AS, limits.memoryBytes, limits.memoryBytes);
  // The soft limit's signal can be told from others; the hard one kills a second later whatever
  // happens.
  Lower(RLIMIT_CPU, limits.seconds, limits.seconds + 1);
  Lower(RLIMIT_CORE, 0, 0);
  Lower(RLIMIT_NOFILE, kDescriptors, kDescriptors);
  Lower(RLIMIT_NPROC, 0, 0);
  // A pipe has no size, so this stops files only; the error is enough, no signal is needed.
  ::signal(SIGXFSZ, SIG_IGN);
  Lower(RLIMIT_FSIZE, 0, 0);
}

#if __has_include(<linux/landlock.h>) && defined(SYS_landlock_create_ruleset)
namespace {

// All that the first version of the interface knows; later kernels understand it, too.
constexpr std::uint64_t kReading = LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR;
constexpr std::uint64_t kAllAccess = (LANDLOCK_ACCESS_FS_MAKE_SYM << 1) - 1;

void Allow(int rules, const std::string& folder) {
  landlock_path_beneath_attr rule{};
  rule.allowed_access = kReading;
  rule.parent_fd = ::open(folder.c_str(), O_PATH | O_CLOEXEC | O_DIRECTORY);
  if (rule.parent_fd < 0) return;
  ::syscall(SYS_landlock_add_rule, rules, LANDLOCK_RULE_PATH_BENEATH, &rule, 0);
  ::close(rule.parent_fd);
}

}  // namespace

void AllowReadingOnly(const std::vector<std::string>& folders) {
  landlock_ruleset_attr attributes{};
  attributes.handled_access_fs = kAllAccess;
  const long rules =
      ::syscall(SYS_landlock_create_ruleset, &attributes, sizeof(attributes.handled_access_fs), 0);
  if (rules < 0) return;
  for (const std::string& folder : folders) Allow(static_cast<int>(rules), folder);
  ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  ::syscall(SYS_landlock_restrict_self, rules, 0);
  ::close(static_cast<int>(rules));
}
#else
void AllowReadingOnly(const std::vector<std::string>&) {}
#endif

}  // namespace engine
