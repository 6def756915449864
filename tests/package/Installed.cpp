#include "tests/package/Installed.h"

#include <filesystem>

namespace tests {

namespace fs = std::filesystem;

std::unique_ptr<ScratchFolder> Installed::scratch_;

bool CanRun(const std::string& program) {
  return RunChild("/bin/sh", {"-c", "command -v " + program}).status == 0;
}

ChildResult RunBare(const std::string& program, const std::vector<std::string>& arguments,
                    const std::string& home,
                    const std::map<std::string, std::string>& environment) {
  std::vector<std::string> words{"-i", "PATH=/usr/bin:/bin", "HOME=" + home,
                                 "XDG_RUNTIME_DIR=" + home};
  for (const auto& [name, value] : environment) words.push_back(name + "=" + value);
  words.push_back(program);
  words.insert(words.end(), arguments.begin(), arguments.end());
  return RunChild("/usr/bin/env", words);
}

void Installed::SetUpTestSuite() {
  scratch_ = std::make_unique<ScratchFolder>();
  fs::create_directory(Home());
  fs::permissions(Home(), fs::perms::owner_all);
  const std::string stage = *scratch_ / "stage";
  const ChildResult result =
      RunChild(TEST_CMAKE, {"--install", TEST_BINARY_DIR}, {{"DESTDIR", stage}});
  ASSERT_EQ(result.status, 0) << result.err;
  fs::rename(stage + TEST_PREFIX, At(""));
}

}  // namespace tests
