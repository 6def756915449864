// The table calls.txt: verb, arguments, exit status and both outputs, word for word, as a shell
// sees them.
#include <filesystem>
#include <sstream>

#include "tests/commandline/CommandLine.h"

namespace {

using tests::ChildResult;
using tests::CommandLine;
using tests::ReadText;

struct CallLine {
  std::string status, arguments, out, err;
};

std::string Trimmed(const std::string& text) {
  const std::size_t start = text.find_first_not_of(' ');
  return start == std::string::npos ? ""
                                    : text.substr(start, text.find_last_not_of(' ') - start + 1);
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
    text.replace(at, from.size(), to);
  return text;
}

CallLine Split(const std::string& line) {
  std::istringstream columns(line);
  CallLine call;
  for (std::string* column : {&call.status, &call.arguments, &call.out, &call.err}) {
    std::getline(columns, *column, '|');
    *column = Trimmed(*column);
  }
  return call;
}

TEST_F(CommandLine, EveryCallOfTheTable) {
  std::filesystem::create_directory_symlink(TEST_SOURCE_DIR "/scenes", folder_ / "scenes");
  // As the program names it: without links.
  const std::string here = std::filesystem::canonical(folder_.Path()).string();
  const auto whole = [&](const std::string& column) {
    return column.empty() ? "" : Replaced(Replaced(column, "\\n", "\n"), "{here}", here) + "\n";
  };
  std::istringstream table(ReadText(TEST_SOURCE_DIR "/tests/commandline/calls.txt"));
  int calls = 0;
  for (std::string line; std::getline(table, line);) {
    if (line.empty() || line.front() == '#') continue;
    const CallLine call = Split(line);
    const std::string command =
        "cd '" + here + "' && '" TEST_BINARY_DIR "/bin/stagemarks' " + call.arguments;
    const ChildResult result = tests::RunChild(
        "/bin/sh", {"-c", command},
        {{"XDG_CONFIG_HOME", here + "/config"}, {"XDG_STATE_HOME", here + "/state"}});
    EXPECT_EQ(std::to_string(result.status), call.status) << line;
    EXPECT_EQ(result.out, whole(call.out)) << line;
    EXPECT_EQ(result.err, whole(call.err)) << line;
    ++calls;
  }
  EXPECT_GE(calls, 40);
}

TEST_F(CommandLine, ColorsAreForTerminalsThatWantThem) {
  const auto colored = [](const std::string& out) {
    return out.find("\x1b[1m") != std::string::npos;
  };
  const std::vector<std::string> call{"info", TEST_SOURCE_DIR "/scenes/spider/spider.fbx"};
  EXPECT_TRUE(colored(CallOnTerminal(call, {}).out));
  EXPECT_FALSE(colored(Call(call).out));
  setenv("NO_COLOR", "1", 1);
  EXPECT_FALSE(colored(CallOnTerminal(call, {}).out));
  unsetenv("NO_COLOR");
}

}  // namespace
