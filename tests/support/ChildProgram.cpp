#include "tests/support/ChildProgram.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace test_support {

namespace {

std::string ReadAll(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// In the child: never returns.
[[noreturn]] void Become(const std::string& program, const std::vector<std::string>& arguments,
                         const std::map<std::string, std::string>& environment, const std::string& out, const std::string& err) {
  const int flags = O_WRONLY | O_CREAT | O_TRUNC;
  dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
  dup2(open(out.c_str(), flags, 0600), STDOUT_FILENO);
  dup2(open(err.c_str(), flags, 0600), STDERR_FILENO);
  for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
  std::vector<char*> words{const_cast<char*>(program.c_str())};
  for (const std::string& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
  words.push_back(nullptr);
  execv(program.c_str(), words.data());
  _exit(127);
}

}  // namespace

ChildResult RunChild(const std::string& program, const std::vector<std::string>& arguments,
                     const std::map<std::string, std::string>& environment) {
  const TemporaryFolder folder;
  const pid_t child = fork();
  if (child == 0) Become(program, arguments, environment, folder / "out", folder / "err");
  int status = 0;
  waitpid(child, &status, 0);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), ReadAll(folder / "out"), ReadAll(folder / "err")};
}

TemporaryFolder::TemporaryFolder() {
  std::string pattern = (std::filesystem::temp_directory_path() / "stagemarks-test-XXXXXX").string();
  if (!mkdtemp(pattern.data())) throw std::runtime_error("no temporary folder can be made");
  path_ = pattern;
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

}  // namespace test_support
