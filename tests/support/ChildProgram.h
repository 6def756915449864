// Runs a program as a child and keeps what it printed: for tests of whole programs. Blocks until
// the child ends.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace tests {

struct ChildResult {
  int status = -1;  // exit status, 128 + n when killed by signal n
  std::string out;
  std::string err;
};

// `environment` is added to this process's own. Standard input is empty.
ChildResult RunChild(const std::string& program, const std::vector<std::string>& arguments,
                     const std::map<std::string, std::string>& environment = {});

// Keys typed once a text has appeared; "\x03" is Ctrl-C.
struct Typing {
  std::string after;
  std::string keys;
};

// As RunChild, but on a terminal of its own, where both outputs come together in `out`.
ChildResult RunOnTerminal(const std::string& program, const std::vector<std::string>& arguments,
                          const std::map<std::string, std::string>& environment,
                          const std::vector<Typing>& typing);

}  // namespace tests
