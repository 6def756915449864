// A library that is loaded in front of a program (LD_PRELOAD) and counts its system calls on files
// below one folder. One of them it can let go wrong, or end the program just before it; or it
// writes down what would have reached the disk. Told by the environment:
//   STAGEMARKS_FAULT_ROOT    the folder, absolute; calls on other files are neither counted nor told
//   STAGEMARKS_FAULT_CALL    which of the counted calls is meant; 1 is the first, 0 none
//   STAGEMARKS_FAULT_KIND    fail, stay (it and all after it), short (a write of half), kill
//   STAGEMARKS_FAULT_ERROR   the number of the error, for fail and stay
//   STAGEMARKS_FAULT_COUNT   a file that is given the number of counted calls at the end
//   STAGEMARKS_FAULT_JOURNAL a file that is given the calls that change the disk, a line each:
//                            what, blank, number or path, tab, path, tab, size, and so many bytes
// Any thread; the descriptors of a child after fork are its own.
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

constexpr int kDescriptors = 4096;

template <class Function>
Function Next(const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

std::string Setting(const char* name) {
  const char* value = getenv((std::string("STAGEMARKS_FAULT_") + name).c_str());
  return value ? value : "";
}

class Faults {
 public:
  Faults()
      : root_(Setting("ROOT")),
        call_(atol(Setting("CALL").c_str())),
        kind_(Setting("KIND")),
        error_(atoi(Setting("ERROR").c_str())),
        process_(getpid()) {
    const std::string journal = Setting("JOURNAL");
    if (!journal.empty())
      journal_ = Open(journal.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_APPEND, 0600);
  }
  ~Faults() {
    const std::string place = Setting("COUNT");
    if (place.empty() || getpid() != process_) return;
    if (FILE* file = fopen(place.c_str(), "w")) {
      fprintf(file, "%ld\n", count_.load());
      fclose(file);
    }
  }

  bool IsOurs(int descriptor) const {
    return descriptor >= 0 && descriptor < kDescriptors && ours_[descriptor];
  }
  bool IsOurs(int folder, const char* path) const {
    if (root_.empty() || !path) return false;
    if (path[0] == '/') return strncmp(path, root_.c_str(), root_.size()) == 0;
    return folder == AT_FDCWD ? InRoot() : IsOurs(folder);
  }
  void Note(int descriptor, bool ours) {
    if (descriptor >= 0 && descriptor < kDescriptors) ours_[descriptor] = ours;
  }

  // Counts a call; true where it has to fail, with errno set.
  bool Fails() {
    if (getpid() != process_) return false;
    const long number = ++count_;
    if (call_ == 0 || number < call_ || (number > call_ && kind_ != "stay")) return false;
    if (kind_ == "kill") raise(SIGKILL);
    if (kind_ == "short") {
      short_ = true;
      return false;
    }
    errno = error_;
    return true;
  }
  // Whether the call just counted is the write that is to be a short one.
  bool TakeShort() { return short_.exchange(false); }

  // `words` end with a tab; see above.
  void Tell(const std::string& words, const void* bytes = nullptr, std::size_t size = 0) {
    if (journal_ < 0 || getpid() != process_) return;
    std::string line = words + std::to_string(size) + "\n";
    line.append(static_cast<const char*>(bytes), bytes ? size : 0);
    Write(journal_, line.data(), line.size());
  }

  static int Open(const char* path, int flags, mode_t mode) {
    static const auto next = Next<int (*)(const char*, int, ...)>("open");
    return next(path, flags, mode);
  }
  static ssize_t Write(int descriptor, const void* bytes, std::size_t size) {
    static const auto next = Next<ssize_t (*)(int, const void*, std::size_t)>("write");
    return next(descriptor, bytes, size);
  }

 private:
  bool InRoot() const {
    char here[4096];
    return getcwd(here, sizeof here) && strncmp(here, root_.c_str(), root_.size()) == 0;
  }

  const std::string root_;
  const long call_;
  const std::string kind_;
  const int error_;
  const pid_t process_;
  int journal_ = -1;
  std::atomic<long> count_{0};
  std::atomic<bool> short_{false};
  std::atomic<bool> ours_[kDescriptors] = {};
};

Faults& TheFaults() {
  static Faults faults;
  return faults;
}

// The file's number in the journal: names change, descriptors are used again, this stays.
std::string Number(int descriptor) {
  struct stat about {};
  return fstat(descriptor, &about) == 0 ? std::to_string(about.st_ino) : "0";
}

// `path` of a call without the folder that counts, with `folder` before it where it is relative.
std::string FullPath(int folder, const char* path) {
  if (path[0] == '/') return path;
  char place[4096] = {};
  if (folder == AT_FDCWD) {
    if (!getcwd(place, sizeof place)) return path;
  } else {
    const std::string link = "/proc/self/fd/" + std::to_string(folder);
    if (readlink(link.c_str(), place, sizeof place - 1) < 0) return path;
  }
  return std::string(place) + "/" + path;
}

int OpenAt(const char* name, int folder, const char* path, int flags, mode_t mode) {
  const auto next = Next<int (*)(int, const char*, int, ...)>(name);
  const bool ours = TheFaults().IsOurs(folder, path);
  if (ours && TheFaults().Fails()) return -1;
  const bool isNew = (flags & (O_CREAT | O_TRUNC)) && (flags & O_TMPFILE) != O_TMPFILE;
  const int descriptor = next(folder, path, flags, mode);
  TheFaults().Note(descriptor, ours);
  if (ours && isNew && descriptor >= 0)
    TheFaults().Tell("create " + Number(descriptor) + "\t" + FullPath(folder, path) + "\t");
  return descriptor;
}

mode_t ModeOf(int flags, va_list rest) {
  return (flags & O_CREAT) || (flags & O_TMPFILE) == O_TMPFILE ? va_arg(rest, mode_t) : 0;
}

}  // namespace

extern "C" {

int open(const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = ModeOf(flags, rest);
  va_end(rest);
  return OpenAt("openat", AT_FDCWD, path, flags, mode);
}

int open64(const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = ModeOf(flags, rest);
  va_end(rest);
  return OpenAt("openat64", AT_FDCWD, path, flags, mode);
}

int openat(int folder, const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = ModeOf(flags, rest);
  va_end(rest);
  return OpenAt("openat", folder, path, flags, mode);
}

int openat64(int folder, const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = ModeOf(flags, rest);
  va_end(rest);
  return OpenAt("openat64", folder, path, flags, mode);
}

int close(int descriptor) {
  static const auto next = Next<int (*)(int)>("close");
  TheFaults().Note(descriptor, false);
  return next(descriptor);
}

ssize_t read(int descriptor, void* bytes, std::size_t size) {
  static const auto next = Next<ssize_t (*)(int, void*, std::size_t)>("read");
  if (TheFaults().IsOurs(descriptor) && TheFaults().Fails()) return -1;
  return next(descriptor, bytes, size);
}

ssize_t write(int descriptor, const void* bytes, std::size_t size) {
  const bool ours = TheFaults().IsOurs(descriptor);
  if (ours && TheFaults().Fails()) return -1;
  if (ours && TheFaults().TakeShort()) size = (size + 1) / 2;
  const ssize_t written = Faults::Write(descriptor, bytes, size);
  if (ours && written > 0)
    TheFaults().Tell("write " + Number(descriptor) + "\t\t", bytes,
                     static_cast<std::size_t>(written));
  return written;
}

ssize_t pread(int descriptor, void* bytes, std::size_t size, off_t place) {
  static const auto next = Next<ssize_t (*)(int, void*, std::size_t, off_t)>("pread");
  if (TheFaults().IsOurs(descriptor) && TheFaults().Fails()) return -1;
  return next(descriptor, bytes, size, place);
}

int fsync(int descriptor) {
  static const auto next = Next<int (*)(int)>("fsync");
  const bool ours = TheFaults().IsOurs(descriptor);
  if (ours && TheFaults().Fails()) return -1;
  const int result = next(descriptor);
  struct stat about {};
  if (ours && result == 0 && fstat(descriptor, &about) == 0) {
    const char* what = S_ISDIR(about.st_mode) ? "sync-names " : "sync ";
    TheFaults().Tell(what + std::to_string(about.st_ino) + "\t\t");
  }
  return result;
}

int linkat(int from, const char* source, int to, const char* target, int flags) {
  static const auto next = Next<int (*)(int, const char*, int, const char*, int)>("linkat");
  const bool ours = TheFaults().IsOurs(to, target);
  if (ours && TheFaults().Fails()) return -1;
  const int result = next(from, source, to, target, flags);
  struct stat about {};
  if (ours && result == 0 && fstatat(to, target, &about, AT_SYMLINK_NOFOLLOW) == 0)
    TheFaults().Tell("link " + std::to_string(about.st_ino) + "\t" + FullPath(to, target) + "\t");
  return result;
}

int renameat2(int from, const char* source, int to, const char* target, unsigned flags) {
  static const auto next = Next<int (*)(int, const char*, int, const char*, unsigned)>("renameat2");
  const bool ours = TheFaults().IsOurs(to, target);
  if (ours && TheFaults().Fails()) return -1;
  const std::string old = FullPath(from, source);
  const int result = next(from, source, to, target, flags);
  if (ours && result == 0) TheFaults().Tell("rename " + old + "\t" + FullPath(to, target) + "\t");
  return result;
}

int renameat(int from, const char* source, int to, const char* target) {
  return renameat2(from, source, to, target, 0);
}

int rename(const char* source, const char* target) {
  return renameat2(AT_FDCWD, source, AT_FDCWD, target, 0);
}

int unlinkat(int folder, const char* path, int flags) {
  static const auto next = Next<int (*)(int, const char*, int)>("unlinkat");
  const bool ours = TheFaults().IsOurs(folder, path);
  if (ours && TheFaults().Fails()) return -1;
  const std::string full = FullPath(folder, path);
  const int result = next(folder, path, flags);
  if (ours && result == 0) TheFaults().Tell("remove " + full + "\t\t");
  return result;
}

int unlink(const char* path) { return unlinkat(AT_FDCWD, path, 0); }
int rmdir(const char* path) { return unlinkat(AT_FDCWD, path, AT_REMOVEDIR); }

int mkdirat(int folder, const char* path, mode_t mode) {
  static const auto next = Next<int (*)(int, const char*, mode_t)>("mkdirat");
  const bool ours = TheFaults().IsOurs(folder, path);
  if (ours && TheFaults().Fails()) return -1;
  return next(folder, path, mode);
}

int mkdir(const char* path, mode_t mode) { return mkdirat(AT_FDCWD, path, mode); }

int fstatat(int folder, const char* path, struct stat* about, int flags) {
  static const auto next = Next<int (*)(int, const char*, struct stat*, int)>("fstatat");
  if (TheFaults().IsOurs(folder, path) && TheFaults().Fails()) return -1;
  return next(folder, path, about, flags);
}

int stat(const char* path, struct stat* about) { return fstatat(AT_FDCWD, path, about, 0); }
int lstat(const char* path, struct stat* about) {
  return fstatat(AT_FDCWD, path, about, AT_SYMLINK_NOFOLLOW);
}

// The library has no function of its own for opening a path part by part.
long syscall(long number, ...) {
  static const auto next = Next<long (*)(long, ...)>("syscall");
  va_list rest;
  va_start(rest, number);
  long words[6];
  for (long& word : words) word = va_arg(rest, long);
  va_end(rest);
  const bool opens = number == SYS_openat2;
  const auto* path = opens ? reinterpret_cast<const char*>(words[1]) : nullptr;
  const bool ours = opens && TheFaults().IsOurs(static_cast<int>(words[0]), path);
  if (ours && TheFaults().Fails()) return -1;
  const long result = next(number, words[0], words[1], words[2], words[3], words[4], words[5]);
  if (opens) TheFaults().Note(static_cast<int>(result), ours);
  return result;
}

int flock(int descriptor, int operation) {
  static const auto next = Next<int (*)(int, int)>("flock");
  if (TheFaults().IsOurs(descriptor) && TheFaults().Fails()) return -1;
  return next(descriptor, operation);
}

}  // extern "C"
