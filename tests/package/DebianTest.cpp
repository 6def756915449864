// The Debian package: made, read, unpacked into a bare folder, and tried there.
#include <filesystem>

#include "tests/package/Installed.h"

namespace {

namespace fs = std::filesystem;
using tests::ChildResult;

class DebianPackage : public testing::Test {
 protected:
  // The package is made once; empty where that failed.
  static void SetUpTestSuite() {
    scratch_ = std::make_unique<tests::ScratchFolder>();
    if (!CanBeMade()) return;
    const ChildResult made = tests::RunChild(
        TEST_CPACK,
        {"-G", "DEB", "--config", TEST_BINARY_DIR "/CPackConfig.cmake", "-B", scratch_->Path()});
    EXPECT_EQ(made.status, 0) << made.out << made.err;
    for (const auto& entry : fs::directory_iterator(scratch_->Path())) {
      if (entry.path().extension() != ".deb") continue;
      const bool isPython = entry.path().filename().string().starts_with("python3-");
      (isPython ? python_ : file_) = entry.path().string();
    }
    fs::create_directories(At("home"));
    fs::permissions(At("home"), fs::perms::owner_all);
  }
  static void TearDownTestSuite() { scratch_.reset(); }

  void SetUp() override {
    if (!CanBeMade()) GTEST_SKIP() << "built with sanitizers, or dpkg-dev is not installed";
    ASSERT_NE(file_, "");
  }

  // Nobody installs what was built with sanitizers, and packing it takes minutes.
  static bool CanBeMade() {
#if defined(__SANITIZE_ADDRESS__)
    return false;
#else
    return tests::CanRun("dpkg-shlibdeps");
#endif
  }
  static std::string At(const std::string& path) { return *scratch_ / path; }
  static std::string Field(const std::string& name) {
    return tests::RunChild("/usr/bin/dpkg-deb", {"-f", file_, name}).out;
  }

  static std::unique_ptr<tests::ScratchFolder> scratch_;
  static std::string file_;
  static std::string python_;
};

std::unique_ptr<tests::ScratchFolder> DebianPackage::scratch_;
std::string DebianPackage::file_;
std::string DebianPackage::python_;

TEST_F(DebianPackage, SaysWhatItIsAndNeeds) {
  std::vector<std::pair<std::string, std::string>> parts{
      {"Package", "stagemarks\n"}, {"Version", TEST_VERSION "-1\n"},
      {"Section", "graphics\n"},   {"Depends", "fonts-dejavu-core"},
      {"Depends", "libembree3"},   {"Depends", "libassimp"},
      {"Depends", "libdraco"},     {"Depends", "libmeshoptimizer"},
      {"Depends", "libc6 (>="},    {"Recommends", "pdf-viewer"},
      {"Recommends", "xdg-utils"}, {"Description", "the states of a 3D scene\n"},
  };
  if (tests::kHasDesktop)
    parts.insert(parts.end(), {{"Depends", "libqt6widgets6"}, {"Depends", "libqt6svg6"}});
  for (const auto& [field, part] : parts)
    EXPECT_NE(Field(field).find(part), std::string::npos) << field << ": " << Field(field);
  // Its own library is no package.
  EXPECT_EQ(Field("Depends").find("stagemarks"), std::string::npos) << Field("Depends");
}

TEST_F(DebianPackage, WorksWhereItIsUnpacked) {
  ASSERT_EQ(tests::RunChild("/usr/bin/dpkg-deb", {"-x", file_, At("root")}).status, 0);
  const std::string sample = At("root/usr/share/stagemarks/scenes/dungeon/dungeon.gltf");
  const std::string scene = At("home/dungeon.c4d");
  for (const std::vector<std::string>& call :
       std::vector<std::vector<std::string>>{{"--version"},
                                             {"import", sample, scene},
                                             {"record", scene, "Day", "--preview", "--write"},
                                             {"load", scene, "Day"}}) {
    const ChildResult result = tests::RunBare(At("root/usr/bin/stagemarks"), call, At("home"));
    ASSERT_EQ(result.status, 0) << call.front() << ": " << result.err;
  }
  EXPECT_TRUE(fs::exists(At("home/dungeon_SM/Day.tif")));
  if (!tests::kHasDesktop) return;
  const ChildResult desktop =
      tests::RunBare(At("root/usr/bin/stagemarks-desktop"), {"--check", scene}, At("home"),
                     {{"QT_QPA_PLATFORM", "offscreen"}});
  EXPECT_EQ(desktop.status, 0) << desktop.err;
  EXPECT_NE(
      desktop.out.find("plug-ins: " + At("root/usr/" TEST_PARTS "/plugins") + "\n  Stagemarks\n"),
      std::string::npos)
      << desktop.out;
  // Where the dialog's Help looks for it.
  EXPECT_EQ(tests::ReadText(At("root/usr/" TEST_PARTS "/plugins/Stagemarks/help/SM_Manual.pdf"))
                .substr(0, 5),
            "%PDF-");
}

// Scripts have a package of their own, which brings them to the programs of the same version.
TEST_F(DebianPackage, PythonHasItsOwn) {
  if (!tests::kHasPython) GTEST_SKIP() << "built without Python";
  ASSERT_NE(python_, "");
  const auto field = [](const char* name) {
    return tests::RunChild("/usr/bin/dpkg-deb", {"-f", python_, name}).out;
  };
  EXPECT_EQ(field("Package"), "python3-stagemarks\n");
  for (const char* needed : {"stagemarks (= " TEST_VERSION "-1)", "python3 (>= 3.", "libpython3."})
    EXPECT_NE(field("Depends").find(needed), std::string::npos) << field("Depends");
  EXPECT_EQ(Field("Depends").find("python"), std::string::npos) << Field("Depends");
  for (const std::string& file : {file_, python_})
    ASSERT_EQ(tests::RunChild("/usr/bin/dpkg-deb", {"-x", file, At("both")}).status, 0);
  const ChildResult result = tests::RunBare(
      TEST_PYTHON, {"-c", "import stagemarks; print(len(stagemarks.new().settings))"}, At("home"),
      {{"PYTHONPATH", At("both/usr/lib/python3/dist-packages")}});
  EXPECT_EQ(result.out, "1\n") << result.err;
}

TEST_F(DebianPackage, IsCleanToThePackageChecker) {
  if (!tests::CanRun("lintian")) GTEST_SKIP() << "lintian is not installed";
  const ChildResult result =
      tests::RunChild("/bin/sh", {"-c", "lintian --fail-on error '" + file_ + "'"});
  EXPECT_EQ(result.status, 0) << result.out << result.err;
}

}  // namespace
