// Runs a program as a child and keeps what it printed, and a temporary folder: for tests of whole programs. Blocks until
// the child ends.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace test_support {

struct ChildResult {
  int status = -1;  // exit status, 128 + n when killed by signal n
  std::string out;
  std::string err;
};

// `environment` is added to this process's own. Standard input is empty.
ChildResult RunChild(const std::string& program, const std::vector<std::string>& arguments,
                     const std::map<std::string, std::string>& environment = {});

// A fresh folder below the system's temporary one, removed with all in it when this goes.
class TemporaryFolder {
 public:
  TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder();
  const std::string& Path() const { return path_; }
  std::string operator/(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

}  // namespace test_support
