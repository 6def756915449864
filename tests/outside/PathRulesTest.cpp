#include <gtest/gtest.h>

#include <filesystem>

#include "engine/outside/PathRules.h"
#include "engine/outside/SystemServices.h"
#include "tests/support/ScratchFolder.h"

namespace {

using tests::ScratchFolder;
using namespace std::string_literals;

struct Case {
  const char* name;
  std::string path;     // "@" stands for the scratch folder
  const char* reading;  // part of the refusal, empty where it is allowed
  const char* writing;
};

class PathRules : public testing::TestWithParam<Case> {
 protected:
  // Relative paths start in the scratch folder.
  PathRules() { std::filesystem::current_path(scratch_.Path()); }
  ~PathRules() override { std::filesystem::current_path(former_); }

  std::string Path() const {
    const std::string& path = GetParam().path;
    return !path.empty() && path[0] == '@' ? scratch_.Path() + path.substr(1) : path;
  }

  static void Expect(const std::string& message, const std::string& refusal) {
    if (refusal.empty()) {
      EXPECT_EQ(message, "");
    } else {
      EXPECT_NE(message.find(refusal), std::string::npos) << message;
    }
  }

  std::filesystem::path former_ = std::filesystem::current_path();
  ScratchFolder scratch_;
  engine::SystemServices services_;
  engine::FileSystem& files_ = services_.Get().files;
};

TEST_P(PathRules, Reading) {
  tests::WriteText(scratch_ / "file", "text");
  Expect(files_.ReadFile(Path()).Message(), GetParam().reading);
  const bool allowed = GetParam().reading == ""s;
  EXPECT_EQ(files_.Kind(Path()) == engine::FileKind::File, allowed);
}

TEST_P(PathRules, Changing) {
  tests::WriteText(scratch_ / "file", "text");
  const std::string refusal = GetParam().writing;
  // Asked only: where the rule had a hole, the work itself would take the whole disk.
  Expect(engine::PathForWriting(Path()).Message(), refusal);
  if (Path() == "/") return;
  Expect(files_.CopyFile(scratch_ / "file", Path(), true).Message(), refusal);
  Expect(files_.ReplaceFile(Path(), "new").Message(), refusal);
  if (refusal.empty()) return;
  tests::WriteText(scratch_ / "file", "text");
  Expect(files_.MakeFolder(Path()).Message(), refusal);
  Expect(files_.MakeFolders(Path()).Message(), refusal);
  Expect(files_.RemoveFile(Path()).Message(), refusal);
  Expect(files_.RemoveFolder(Path()).Message(), refusal);
  Expect(files_.Rename(Path(), scratch_ / "other").Message(), refusal);
  Expect(files_.Rename(scratch_ / "file", Path()).Message(), refusal);
  Expect(files_.CopyFile(Path(), scratch_ / "other", true).Message(), GetParam().reading);
  EXPECT_EQ(tests::Names(scratch_.Path()), "file");
  EXPECT_EQ(tests::ReadText(scratch_ / "file"), "text");
  EXPECT_EQ(services_.Get().ledger.FailuresSince(0).size(), 9U);
}

INSTANTIATE_TEST_SUITE_P(
    Table, PathRules,
    testing::Values(Case{"Plain", "@/file", "", ""}, Case{"Empty", "", "is empty", "is empty"},
                    Case{"Relative", "file", "is relative", "is relative"},
                    Case{"RelativeDot", "./file", "is relative", "is relative"},
                    Case{"DoubledSlashes", "@//.//file", "", ""},
                    Case{"TrailingSlash", "@/file/", "", ""},
                    Case{"DotDot", "@/../nowhere/../file/..", "No such file", "\"..\" component"},
                    Case{"DotDotLast", "@/..", "folder", "\"..\" component"},
                    Case{"DotDotBehindBackslash", "@/a\\..\\file", "No such file",
                         "\"..\" component"},
                    Case{"Nul", "@/file\0.c4d"s, "NUL byte", "NUL byte"},
                    Case{"Root", "/", "it is a folder", "root folder"}),
    [](const auto& one) { return one.param.name; });

TEST(PathRules, NamesThatOnlyLookLikeDotsAreNames) {
  const ScratchFolder scratch;
  engine::SystemServices services;
  for (const char* name : {"...", "..a", "a..", ".hidden", "a..b"}) {
    EXPECT_TRUE(services.Get().files.ReplaceFile(scratch / name, name)) << name;
    EXPECT_EQ(tests::ReadText(scratch / name), name);
  }
}

}  // namespace
