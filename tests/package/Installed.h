// Installed: the build as `cmake --install` lays it out, moved to another place, as a person who
// unpacks it elsewhere has it. Made once for all tests of a fixture. Main thread.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/ChildProgram.h"
#include "tests/support/ScratchFolder.h"

namespace tests {

constexpr bool kHasDesktop = TEST_DESKTOP;
constexpr bool kHasPython = TEST_WITH_PYTHON;

// Whether a program that a test needs is installed on this machine.
bool CanRun(const std::string& program);

// Runs a program of `root` with nothing of this process's environment but a home of its own and
// what is given.
ChildResult RunBare(const std::string& program, const std::vector<std::string>& arguments,
                    const std::string& home,
                    const std::map<std::string, std::string>& environment = {});

class Installed : public testing::Test {
 protected:
  static void SetUpTestSuite();
  static void TearDownTestSuite() { scratch_.reset(); }

  // A path below the moved tree's prefix.
  static std::string At(const std::string& path) { return *scratch_ / ("moved/" + path); }
  static std::string Home() { return *scratch_ / "home"; }
  static ChildResult Run(const std::string& program, const std::vector<std::string>& arguments,
                         const std::map<std::string, std::string>& environment = {}) {
    return RunBare(At("bin/" + program), arguments, Home(), environment);
  }

 private:
  static std::unique_ptr<ScratchFolder> scratch_;
};

}  // namespace tests
