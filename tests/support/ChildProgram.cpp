#include "tests/support/ChildProgram.h"

#include <fcntl.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "tests/support/ScratchFolder.h"

namespace tests {

namespace {

// In the child: never returns.
[[noreturn]] void Become(const std::string& program, const std::vector<std::string>& arguments,
                         const std::map<std::string, std::string>& environment) {
  for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
  std::vector<char*> words{const_cast<char*>(program.c_str())};
  for (const std::string& argument : arguments)
    words.push_back(const_cast<char*>(argument.c_str()));
  words.push_back(nullptr);
  execv(program.c_str(), words.data());
  _exit(127);
}

void Redirect(const std::string& out, const std::string& err) {
  const int flags = O_WRONLY | O_CREAT | O_TRUNC;
  dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
  dup2(open(out.c_str(), flags, 0600), STDOUT_FILENO);
  dup2(open(err.c_str(), flags, 0600), STDERR_FILENO);
}

int WaitFor(pid_t child) {
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

// Reads to the end, which a terminal reports as an error, and types what is due.
std::string Converse(int terminal, const std::vector<Typing>& typing) {
  std::string seen;
  std::size_t next = 0;
  std::size_t from = 0;
  char buffer[4096];
  for (ssize_t count = 0; (count = read(terminal, buffer, sizeof buffer)) > 0;) {
    seen.append(buffer, static_cast<std::size_t>(count));
    while (next < typing.size() && seen.find(typing[next].after, from) != std::string::npos) {
      from = seen.size();
      const std::string& keys = typing[next++].keys;
      if (write(terminal, keys.data(), keys.size()) < 0) break;
    }
  }
  return seen;
}

}  // namespace

ChildResult RunChild(const std::string& program, const std::vector<std::string>& arguments,
                     const std::map<std::string, std::string>& environment) {
  const ScratchFolder folder;
  const pid_t child = fork();
  if (child == 0) {
    Redirect(folder / "out", folder / "err");
    Become(program, arguments, environment);
  }
  const int status = WaitFor(child);
  return {status, ReadText(folder / "out"), ReadText(folder / "err")};
}

ChildResult RunOnTerminal(const std::string& program, const std::vector<std::string>& arguments,
                          const std::map<std::string, std::string>& environment,
                          const std::vector<Typing>& typing) {
  int terminal = -1;
  const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (child == 0) Become(program, arguments, environment);
  const std::string seen = Converse(terminal, typing);
  close(terminal);
  return {WaitFor(child), seen, ""};
}

}  // namespace tests
