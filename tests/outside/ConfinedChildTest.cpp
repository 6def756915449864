// What a confined child is given and what it is left, as the child itself sees it.
#include "engine/outside/ConfinedChild.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>
#include <string>
#include <thread>

#include "tests/support/ScratchFolder.h"

namespace {

using engine::ConfinedChild;
using Life = ConfinedChild::Life;

constexpr engine::ProcessLimits kLimits{std::uint64_t{1} << 32, 5};

std::string ReadAll(int descriptor) {
  std::string all;
  char some[4096];
  for (ssize_t count = 0; (count = ::read(descriptor, some, sizeof some)) > 0;)
    all.append(some, static_cast<std::size_t>(count));
  return all;
}

engine::Status RunScript(ConfinedChild& child, const std::string& script,
                         Life life = Life::OfTalk) {
  return child.Start("The script", "/bin/sh", {"-c", script}, kLimits, life);
}

// The output of a script, and how it ended.
std::string SaidBy(const std::string& script) {
  ConfinedChild child;
  EXPECT_EQ(RunScript(child, "exec >&3; " + script).Message(), "");
  const std::string said = ReadAll(child.Talk());
  const ConfinedChild::End end = child.Wait();
  return said + (end.bySignal ? "signal " : "status ") + std::to_string(end.number);
}

constexpr const char* kShow = "while read -r line; do echo \"$line\"; done <";

bool HasLine(const std::string& text, const std::string& line) {
  return ("\n" + text).find("\n" + line) != std::string::npos;
}

TEST(ConfinedChild, HasTheTalkAndNothingElse) {
  const int kept = ::fcntl(1, F_DUPFD, 20);  // not closed by the system
  // Whatever runs the tests may have given them nothing to read themselves.
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  const int input = ::dup(0);
  ::dup2(ends[0], 0);
  EXPECT_EQ(SaidBy("echo $0; pwd -P; for i in 0 2; do [ /proc/self/fd/$i -ef /dev/null ] && echo "
                   "$i; done; for i in 1 3 4 5 6 7 8 9 10 11 12 20; do [ -e /proc/self/fd/$i ] && "
                   "echo has $i; done; exit 7"),
            "3\n/\n0\n2\nhas 1\nhas 3\nstatus 7");
  ::dup2(input, 0);
  for (const int descriptor : {kept, input, ends[0], ends[1]}) ::close(descriptor);
  ::setenv("STAGEMARKS_TEST", "environment", 1);
  ::unsetenv("GLIBC_TUNABLES");
  const char* const show = "echo $STAGEMARKS_TEST $GLIBC_TUNABLES; kill -9 $$";
  EXPECT_EQ(SaidBy(show), "environment glibc.malloc.hugetlb=1\nsignal 9");
  ::setenv("GLIBC_TUNABLES", "glibc.malloc.check=0", 1);
  EXPECT_EQ(SaidBy(show), "environment glibc.malloc.check=0\nsignal 9");
  ::unsetenv("GLIBC_TUNABLES");
  ::unsetenv("STAGEMARKS_TEST");
}

TEST(ConfinedChild, HearsAllSignalsButOne) {
  constexpr int kNumbers[] = {SIGPIPE, SIGINT, SIGTERM, SIGHUP, SIGXCPU, SIGCHLD};
  sigset_t blocked;
  sigset_t former;
  sigfillset(&blocked);
  ::sigprocmask(SIG_SETMASK, &blocked, &former);
  void (*handlers[std::size(kNumbers)])(int);
  for (std::size_t i = 0; i < std::size(kNumbers); ++i)
    handlers[i] = ::signal(kNumbers[i], SIG_IGN);
  ConfinedChild child;
  EXPECT_TRUE(RunScript(child, std::string("exec >&3; ") + kShow + "/proc/self/status"));
  const std::string status = ReadAll(child.Talk());
  for (std::size_t i = 0; i < std::size(kNumbers); ++i) ::signal(kNumbers[i], handlers[i]);
  ::sigprocmask(SIG_SETMASK, &former, nullptr);
  child.Wait();
  EXPECT_TRUE(HasLine(status, "SigBlk:\t0000000000000000")) << status;
  EXPECT_TRUE(HasLine(status, "SigIgn:\t0000000001000000")) << "files that grow: " << status;
  EXPECT_TRUE(HasLine(status, "NoNewPrivs:\t1")) << status;
}

TEST(ConfinedChild, HasLimitsThatOnlyGetTighter) {
  const auto limits = [] {
    std::string text = SaidBy(std::string(kShow) + "/proc/self/limits");
    for (std::size_t at = 0; (at = text.find("  ", at)) != std::string::npos;) text.erase(at, 1);
    return text;
  };
  const std::string loose = limits();
  for (const char* line : {"Max cpu time 5 6 ", "Max file size 0 0 ", "Max core file size 0 0 ",
                           "Max processes 0 0 ", "Max open files 64 64 "})
    EXPECT_TRUE(HasLine(loose, line)) << line << loose;
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  EXPECT_TRUE(HasLine(loose, "Max address space 4294967296 4294967296 ")) << loose;
#endif
  rlimit former{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &former), 0);
  const rlimit few{40, former.rlim_max};
  ::setrlimit(RLIMIT_NOFILE, &few);
  const std::string tight = limits();
  ::setrlimit(RLIMIT_NOFILE, &former);
  EXPECT_TRUE(HasLine(tight, "Max open files 40 64 ")) << tight;
}

TEST(ConfinedChild, EndsWithItsThreadOrWithTheTalkOrWithItsObject) {
  const char* const waits = "echo >&3; read line <&3; exit 4";
  char ready = 0;
  for (const Life life : {Life::OfThread, Life::OfTalk}) {
    ConfinedChild child;
    std::thread([&] {
      EXPECT_TRUE(RunScript(child, waits, life));
      EXPECT_EQ(::read(child.Talk(), &ready, 1), 1);
    }).join();
    if (life == Life::OfTalk) {
      EXPECT_FALSE(child.HasEnded());
      EXPECT_EQ(::write(child.Talk(), "\n", 1), 1);
    }
    while (!child.HasEnded()) std::this_thread::yield();
    const ConfinedChild::End end = child.Wait();
    EXPECT_EQ(end.bySignal, life == Life::OfThread);
    EXPECT_EQ(end.number, life == Life::OfThread ? SIGKILL : 4);
  }
  int talk = -1;
  {
    ConfinedChild child;
    EXPECT_TRUE(RunScript(child, waits));
    talk = child.Talk();
  }
  EXPECT_EQ(::fcntl(talk, F_GETFD), -1);
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "no child is left";
  ConfinedChild none;
  EXPECT_TRUE(none.Start("Nothing", "/nowhere/at/all", {}, kLimits, Life::OfTalk));
  EXPECT_EQ(none.Wait().number, engine::kCannotRun);
}

// What a copy of this process answers.
std::string AnswerOfCopy(const std::function<std::string()>& ask) {
  int ends[2];
  if (::pipe(ends) != 0) return "no pipe";
  const pid_t child = ::fork();
  if (child == 0) {
    const std::string answer = ask();
    ::_exit(::write(ends[1], answer.data(), answer.size()) < 0 ? 1 : 0);
  }
  ::close(ends[1]);
  std::string answer = ReadAll(ends[0]);
  ::close(ends[0]);
  ::waitpid(child, nullptr, 0);
  return answer;
}

// Alone, without the filter of system calls, as a plug-in is tried out.
TEST(Confinement, WhereReadingIsAllowedNothingElseIs) {
#ifdef SYS_landlock_create_ruleset
  // Networks came with version 4, signals with version 6.
  if (::syscall(SYS_landlock_create_ruleset, nullptr, 0, 1) < 6)
#endif
    GTEST_SKIP() << "this kernel cannot confine all of it";
  const tests::ScratchFolder scratch;
  for (const char* folder : {"open", "closed", "open/empty"})
    ASSERT_EQ(::mkdir((scratch / folder).c_str(), 0700), 0);
  for (const char* file : {"open/file", "open/other", "closed/file"})
    tests::WriteText(scratch / file, "x");
  const auto at = [&](const char* name) { return scratch / name; };
  const auto opens = [&](const char* name, int flags) {
    return ::open(at(name).c_str(), flags, 0600) >= 0;
  };
  const pid_t parent = ::getpid();
  const auto connects = [](bool isServer) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = isServer ? 0 : htons(9);
    const auto* const where = reinterpret_cast<const sockaddr*>(&address);
    const int talk = ::socket(AF_INET, SOCK_STREAM, 0);
    return (isServer ? ::bind(talk, where, sizeof address)
                     : ::connect(talk, where, sizeof address)) == 0 ||
           errno != EACCES;
  };
  const std::pair<const char*, std::function<bool()>> attempts[] = {
      {"read", [&] { return opens("open/file", O_RDONLY); }},
      {"list", [&] { return opens("open", O_RDONLY | O_DIRECTORY); }},
      {"read elsewhere", [&] { return opens("closed/file", O_RDONLY); }},
      {"list elsewhere", [&] { return opens("closed", O_RDONLY | O_DIRECTORY); }},
      {"write", [&] { return opens("open/file", O_WRONLY); }},
      {"empty", [&] { return opens("open/file", O_RDONLY | O_TRUNC); }},
      {"cut", [&] { return ::truncate(at("open/file").c_str(), 0) == 0; }},
      {"make", [&] { return opens("open/new", O_RDWR | O_CREAT); }},
      {"make a folder", [&] { return ::mkdir(at("open/new").c_str(), 0700) == 0; }},
      {"make a pipe", [&] { return ::mkfifo(at("open/pipe").c_str(), 0700) == 0; }},
      {"make a link", [&] { return ::symlink("file", at("open/link").c_str()) == 0; }},
      {"link", [&] { return ::link(at("open/file").c_str(), at("closed/link").c_str()) == 0; }},
      {"rename", [&] { return ::rename(at("open/file").c_str(), at("open/moved").c_str()) == 0; }},
      {"remove", [&] { return ::unlink(at("open/other").c_str()) == 0; }},
      {"remove a folder", [&] { return ::rmdir(at("open/empty").c_str()) == 0; }},
      {"run",
       [&] {
         char* const none[] = {nullptr};
         return ::execve("/bin/true", none, none) == 0 || errno != EACCES;
       }},
      {"be a server", [&] { return connects(true); }},
      {"connect", [&] { return connects(false); }},
      {"gain rights", [] { return ::prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0) != 1; }},
      {"signal", [&] { return ::kill(parent, 0) == 0; }},
  };
  const std::string answer = AnswerOfCopy([&] {
    std::string done;
    if (!engine::AllowReadingOnly({scratch / "nowhere", scratch / "open"})) done = "no means ";
    for (const auto& [name, attempt] : attempts) done += attempt() ? std::string(name) + ", " : "";
    return done;
  });
  EXPECT_EQ(answer, "read, list, ");
  EXPECT_EQ(tests::Names(scratch / "open"), "empty file other");
}

TEST(Confinement, ASuperuserKeepsTheRightToRead) {
  const std::string answer = AnswerOfCopy([] {
    engine::DropPrivileges();
    const int status = ::open("/proc/self/status", O_RDONLY);
    return "dumpable " + std::to_string(::prctl(PR_GET_DUMPABLE)) + "\n" + ReadAll(status);
  });
  EXPECT_TRUE(HasLine(answer, "dumpable 0")) << answer;
  EXPECT_TRUE(HasLine(answer, "NoNewPrivs:\t1")) << answer;
  const std::string kept = ::geteuid() == 0 ? "0000000000000004" : "0000000000000000";
  for (const std::string set : {"CapEff", "CapPrm"})
    EXPECT_TRUE(HasLine(answer, set + ":\t" + kept)) << answer;
  EXPECT_TRUE(HasLine(answer, "CapInh:\t0000000000000000")) << answer;
}

TEST(Confinement, TheLimitOnMemoryIsTheProcesss) {
  rlimit limit{};
  ASSERT_EQ(::getrlimit(RLIMIT_AS, &limit), 0);
  const bool isLimited = limit.rlim_cur != RLIM_INFINITY;
  EXPECT_EQ(engine::MemoryLimit(), isLimited ? limit.rlim_cur : UINT64_MAX);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  const std::string answer = AnswerOfCopy([&] {
    const rlimit some{std::uint64_t{1} << 32, limit.rlim_max};
    ::setrlimit(RLIMIT_AS, &some);
    return std::to_string(engine::MemoryLimit() >> 20);
  });
  EXPECT_EQ(answer, "4096");
#endif
}

}  // namespace
