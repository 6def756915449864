// An import child that was taken over: behind the importer's walls it tries whatever could harm,
// and answers with what it could do. Forbidden attempts must fail, or the test says their names.
#include "tests/import/HostileWorker.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sched.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/shm.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "engine/outside/Confinement.h"

namespace tests {
namespace {

// The number of bytes of the scene, which the child may read, comes last.
using Attempt = std::pair<const char*, std::function<long()>>;

std::vector<Attempt> OnFiles(const std::string& scene, const std::string& folder) {
  const char* const path = scene.c_str();
  const auto open = [](const std::string& name, int flags) {
    return [name, flags] { return long{::open(name.c_str(), flags, 0600)}; };
  };
  const std::string parent = std::to_string(::getppid());
  return {
      {"open to write", open(scene, O_WRONLY)},
      {"open to read and write", open(scene, O_RDWR)},
      {"open to empty", open(scene, O_RDONLY | O_TRUNC)},
      {"make a file", open(folder + "/new", O_WRONLY | O_CREAT)},
      {"make a nameless file", open(folder, O_RDWR | O_TMPFILE)},
      {"read elsewhere", open("/etc/passwd", O_RDONLY)},
      {"read the parent's environment", open("/proc/" + parent + "/environ", O_RDONLY)},
      {"openat2 to empty",
       [path] {
         open_how how{};
         how.flags = O_RDONLY | O_TRUNC;
         return ::syscall(SYS_openat2, AT_FDCWD, path, &how, sizeof(how));
       }},
      {"truncate", [path] { return long{::truncate(path, 0)}; }},
      {"chmod", [path] { return long{::chmod(path, 0)}; }},
      {"chown", [path] { return long{::chown(path, 1, 1)}; }},
      {"utimes", [path] { return long{::utimensat(AT_FDCWD, path, nullptr, 0)}; }},
      {"unlink", [path] { return long{::unlink(path)}; }},
      {"rename", [path, folder] { return long{::rename(path, (folder + "/x").c_str())}; }},
      {"link", [path, folder] { return long{::link(path, (folder + "/x").c_str())}; }},
      {"symlink", [path, folder] { return long{::symlink(path, (folder + "/y").c_str())}; }},
      {"mkdir", [folder] { return long{::mkdir((folder + "/z").c_str(), 0700)}; }},
      {"mkfifo", [folder] { return long{::mkfifo((folder + "/f").c_str(), 0700)}; }},
      {"look at a file elsewhere",
       [] {
         struct stat about {};
         return long{::stat("/etc/passwd", &about)};
       }},
      {"ask for access", [] { return long{::access("/etc/passwd", F_OK)}; }},
      {"read a link",
       [] {
         char text[8];
         return long{::readlink("/proc/self/exe", text, sizeof(text))};
       }},
      {"list a folder elsewhere", [] { return ::opendir("/etc") != nullptr ? 0L : -1L; }},
      {"change folder", [] { return long{::chdir("/etc")}; }},
      {"chroot", [] { return long{::chroot("/")}; }},
      {"mount", [folder] { return long{::mount("none", folder.c_str(), "tmpfs", 0, nullptr)}; }}};
}

long Forked(long child) {
  if (child == 0) ::_exit(0);
  return child;
}

std::vector<Attempt> OnOthers() {
  const pid_t parent = ::getppid();
  const auto socketOf = [](int family, int kind) {
    return [family, kind] { return long{::socket(family, kind, 0)}; };
  };
  return {
      {"socket of the internet", socketOf(AF_INET, SOCK_STREAM)},
      {"socket of datagrams", socketOf(AF_INET6, SOCK_DGRAM)},
      {"socket of this machine", socketOf(AF_UNIX, SOCK_STREAM)},
      {"socket of the kernel", socketOf(AF_NETLINK, SOCK_RAW)},
      {"signal the parent", [parent] { return long{::kill(parent, 0)}; }},
      {"signal a thread of the parent",
       [parent] { return ::syscall(SYS_tgkill, parent, parent, 0); }},
      {"queue a signal", [parent] { return long{::sigqueue(parent, 0, {})}; }},
      {"hold the parent", [parent] { return ::syscall(SYS_pidfd_open, parent, 0); }},
      {"trace the parent", [parent] { return ::ptrace(PTRACE_SEIZE, parent, nullptr, nullptr); }},
      {"read the parent",
       [parent] {
         char byte = 0;
         iovec mine{&byte, 1};
         iovec theirs{&byte, 1};
         return long{::process_vm_readv(parent, &mine, 1, &theirs, 1, 0)};
       }},
      {"limit the parent",
       [parent] {
         rlimit limit{};
         return long{::prlimit(parent, RLIMIT_NOFILE, nullptr, &limit)};
       }},
      {"limit itself",
       [] {
         const rlimit limit{};
         return long{::prlimit(0, RLIMIT_NOFILE, &limit, nullptr)};
       }},
      {"shared memory", [] { return long{::shmget(IPC_PRIVATE, 4096, 0600)}; }}};
}

std::vector<Attempt> OnItself() {
  const auto map = [](int rights) {
    void* const memory = ::mmap(nullptr, 4096, rights, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return memory == MAP_FAILED ? nullptr : memory;
  };
  const auto call = [](long number, long first) {
    return [number, first] { return ::syscall(number, first, 0, 0, 0, 0); };
  };
  return {{"fork", [] { return Forked(::fork()); }},
          {"clone", [] { return Forked(::syscall(SYS_clone, SIGCHLD, 0, 0, 0, 0)); }},
          {"code in memory", [map] { return map(PROT_READ | PROT_EXEC) != nullptr ? 0L : -1L; }},
          {"code made of data",
           [map] {
             void* const memory = map(PROT_READ | PROT_WRITE);
             return memory ? long{::mprotect(memory, 4096, PROT_READ | PROT_EXEC)} : -1L;
           }},
          {"a file in memory", [] { return ::syscall(SYS_memfd_create, "x", 0); }},
          {"name spaces", [] { return long{::unshare(CLONE_NEWUSER)}; }},
          {"another user", [] { return long{::setuid(::getuid())}; }},
          {"process control", [] { return long{::prctl(PR_SET_NAME, "x", 0, 0, 0)}; }},
          {"rings of calls", call(SYS_io_uring_setup, 1)},
          {"programs in the kernel", call(SYS_bpf, 0)},
          {"keys", call(SYS_keyctl, 0)},
          {"watches", call(SYS_inotify_init1, 0)},
          {"a program", [] {
             char* const none[] = {nullptr};
             return long{::execve("/bin/true", none, none)};
           }}};
}

}  // namespace

std::string OpenDoors(const std::string& scene) {
  const std::string folder = scene.substr(0, scene.rfind('/'));
  std::vector<Attempt> attempts = OnFiles(scene, folder);
  for (std::vector<Attempt>& more : std::vector{OnOthers(), OnItself()})
    attempts.insert(attempts.end(), more.begin(), more.end());
  engine::DropPrivileges();
  const bool areFilesConfined = engine::AllowReadingOnly({folder});
  if (!engine::AllowComputingOnly(areFilesConfined) || !areFilesConfined) return "no means";
  const int own = ::open(scene.c_str(), O_RDONLY | O_CLOEXEC);
  std::string done = own >= 0 ? "" : "not even its own scene, ";
  for (const auto& [name, attempt] : attempts) {
    if (attempt() >= 0) done += std::string(name) + ", ";
  }
  return done.empty() ? "nothing" : done;
}

}  // namespace tests
