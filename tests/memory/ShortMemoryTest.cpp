// Memory that runs out at any place of what a person does most: a message or std::bad_alloc, never
// the end of the program; files on the disk are the old or the new ones, and the same act works
// when there is memory again.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <new>

#include "engine/dialog/Dialogs.h"
#include "engine/import/Import.h"
#include "engine/render/ImageDecoder.h"
#include "engine/render/Renderer.h"
#include "engine/scene/Mesh.h"
#include "engine/scene/SceneDump.h"
#include "engine/scenefile/SceneFile.h"
#include "host/BaseMaterial.h"
#include "source/Stagemarks/keys/Gadgets.h"
#include "source/Stagemarks/keys/Options.h"
#include "tests/support/PluginSession.h"

namespace {

// Takings of memory on this thread until one fails, once; below 0: none does. They are counted.
thread_local long takingsLeft = -1;
thread_local long takings = 0;

void* Take(std::size_t bytes) {
  ++takings;
  if (takingsLeft >= 0 && takingsLeft-- == 0) return nullptr;
  return std::malloc(bytes > 0 ? bytes : 1);
}

}  // namespace

#if defined(__SANITIZE_ADDRESS__)
// Plug-ins free by hand what they took by hand: of one in whose middle memory fails nothing is
// asked but that the program goes on.
extern "C" const char* __asan_default_options() { return "detect_leaks=0"; }
#endif

[[gnu::noinline]] void* operator new(std::size_t bytes) {
  if (void* memory = Take(bytes)) return memory;
  throw std::bad_alloc();
}
[[gnu::noinline]] void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
  return Take(bytes);
}
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace {

namespace fs = std::filesystem;

constexpr long kEachOf = 100;     // the first takings
constexpr long kMostPlaces = 50;  // of the others, evenly

class ShortMemory : public testing::Test, protected tests::PluginSession {
 protected:
  void SetUp() override {
    for (const host::LONG type : {host::Ocube, host::Osphere, host::Onull, host::Ocamera}) {
      host::BaseObject* const object = host::BaseObject::Alloc(type);
      object->MakeTag(host::Ttexture);
      Doc().AppendObject(object);
    }
    host::BaseMaterial* const material = host::BaseMaterial::Alloc(host::Mmaterial);
    material->SetName("A material of a name that needs memory");
    Doc().AppendMaterial(material);
    SaveAs("shot.c4d");
    Transcript();
  }

  std::string File(const std::string& name) const { return Folder() + "/" + name; }

  // Lets one taking of memory of `act` fail, each of the first and some of all others, until it
  // runs through; `check` looks after each. Both hear nothing of it.
  void FailAnywhere(const std::function<void()>& act, const std::function<void()>& check) {
    act();
    takings = 0;
    act();
    const long all = takings;
    ASSERT_GT(all, 0) << "nothing is counted";
    const long step = std::max(1L, (all - kEachOf) / kMostPlaces);
    for (long at = 0; at < all; at += at < kEachOf ? 1 : step) {
      takingsLeft = at;
      try {
        act();
      } catch (const std::exception&) {
        // The programs report such exceptions as their last resort.
      }
      takingsLeft = -1;
      host::EventAdd();  // as the next thing that a person does: lists are made anew
      Deliver();
      check();
      if (HasFatalFailure()) return;
    }
    act();
    check();
  }
};

TEST_F(ShortMemory, Recording) {
  int number = 0;
  FailAnywhere([&] { Record("A" + std::to_string(number++)); },
               [&] { EXPECT_NE(engine::DumpDocument(Doc()), ""); });
  Record("Last");
  EXPECT_NE(Rows().find("Last"), std::string::npos);
  SaveAs("again.c4d");
  EXPECT_TRUE(engine::OpenSceneFile(Services().Get(), File("again.c4d")));
}

TEST_F(ShortMemory, RecordingWithAPreview) {
  Tick(stagemarks::kGeneratePreview, true);
  Person().AnswerOthers(true);
  const std::string file = File("shot_SM/A.tif");
  std::size_t mark = 0;
  FailAnywhere(
      [&] {
        fs::remove(file);
        mark = Services().ledger.Mark();
        Record("A");
      },
      [&] {
        if (!fs::exists(file)) return;
        const auto picture = engine::DecodeImage(tests::ReadText(file));
        ASSERT_TRUE(picture) << picture.Message();
        // A scene is seen, or there is a word about it.
        const std::vector<std::uint8_t>& bytes = picture.Value().bytes;
        const bool isEmpty =
            std::ranges::all_of(bytes, [](std::uint8_t byte) { return byte == 0 || byte == 255; });
        EXPECT_TRUE(!isEmpty || !Services().ledger.FailuresSince(mark).empty());
      });
}

TEST_F(ShortMemory, Loading) {
  Record("A");
  Doc().GetFirstObject()->SetEditorMode(host::MODE_OFF);
  Record("B");
  FailAnywhere([&] { Load("A"), Load("B"); }, [] {});
  Load("A");
  EXPECT_EQ(Doc().GetFirstObject()->GetEditorMode(), host::MODE_UNDEF);
  Load("B");
  EXPECT_EQ(Doc().GetFirstObject()->GetEditorMode(), host::MODE_OFF);
}

// So short that each taking of memory fails once.
TEST_F(ShortMemory, ReplacingAFileLeavesNoOther) {
  const std::string before = tests::Names(Folder());
  FailAnywhere([&] { (void)Services().files.ReplaceFile(File("shot.c4d"), "other"); },
               [&] { EXPECT_EQ(tests::Names(Folder()), before); });
}

TEST_F(ShortMemory, SavingAndOpening) {
  Record("A");
  SaveAs("shot.c4d");
  const std::string whole = tests::ReadText(File("shot.c4d"));
  FailAnywhere([&] { (void)App().SaveDocument(Doc()); },
               [&] {
                 EXPECT_EQ(tests::ReadText(File("shot.c4d")), whole);
                 for (const auto& entry : fs::directory_iterator(Folder()))
                   EXPECT_TRUE(entry.path().filename() == "user" ||
                               entry.path().filename().string().starts_with("shot"))
                       << entry.path();
               });
  const std::string dump = engine::DumpDocument(Doc());
  FailAnywhere(
      [&] {
        auto read = engine::OpenSceneFile(Services().Get(), File("shot.c4d"));
        if (!read) return;
        const std::string opened = engine::DumpDocument(*read.Value());
        EXPECT_EQ(engine::DumpDifference(opened, dump).size(), 0U);
      },
      [] {});
}

TEST_F(ShortMemory, Exporting) {
  Record("A");
  Check("A");
  fs::create_directories(File("out"));
  FailAnywhere(
      [&] {
        Person().ChooseNext(File("out"));
        Press(stagemarks::kGenerateFiles);
      },
      [&] {
        for (const auto& entry : fs::recursive_directory_iterator(File("out"))) {
          if (entry.path().extension() != ".c4d") continue;
          const auto read = engine::OpenSceneFile(Services().Get(), entry.path());
          EXPECT_TRUE(read) << read.Message();
        }
      });
}

TEST_F(ShortMemory, Rendering) {
  engine::RenderCaches caches;
  engine::PictureSetup setup;
  setup.width = 40;
  setup.height = 30;
  FailAnywhere(
      [&] {
        auto picture = engine::PictureInProgress::Begin(Doc(), Services().files, setup, caches);
        EXPECT_EQ(picture.Ok(), picture.Message().empty());
        if (picture) (void)picture.Value()->Refine();
      },
      [] {});
}

// Their arrays are no takings of the heap.
TEST_F(ShortMemory, RenderingALargeMesh) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "sanitizers map more address space than any limit allows";
#endif
  constexpr std::int32_t kSide = 600;
  auto mesh = std::make_shared<engine::Mesh>();
  for (std::int32_t i = 0; i < kSide * kSide; ++i)
    mesh->points.push_back({static_cast<float>(i % kSide), 0, static_cast<float>(i / kSide)});
  for (std::int32_t i = 0; i + kSide + 1 < kSide * kSide; ++i)
    mesh->polygons.push_back({i, i + kSide, i + kSide + 1, i + 1});
  host::BaseObject* const object = host::BaseObject::Alloc(host::Opolygon);
  Doc().AppendObject(object);
  engine::SetMesh(*object, mesh);
  engine::RenderCaches caches;
  engine::PictureSetup setup;
  setup.width = 40;
  setup.height = 30;
  const auto begin = [&] {
    return engine::PictureInProgress::Begin(Doc(), Services().files, setup, caches);
  };
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_AS, &before), 0);
  long pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  const rlimit tight{static_cast<rlim_t>(pages * ::getpagesize()) + (3 << 20), before.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_AS, &tight), 0);
  const auto refused = begin();
  ::setrlimit(RLIMIT_AS, &before);
  EXPECT_EQ(refused.Message(), "There is not enough memory for the picture.");
  EXPECT_TRUE(begin());
}

TEST_F(ShortMemory, DecodingByAChild) {
  engine::DecodeImagesBy(TEST_BINARY_DIR "/bin/stagemarks");
  const std::string file = tests::ReadText(TEST_SOURCE_DIR "/tests/render/pictures/alpha.tif");
  const auto whole = engine::DecodeImageHere(file);
  FailAnywhere([&] { (void)engine::DecodeImage(file); },
               [&] {
                 const auto again = engine::DecodeImage(file);
                 ASSERT_TRUE(again) << again.Message();
                 EXPECT_EQ(again.Value().bytes, whole.Value().bytes);
               });
  engine::DecodeImagesBy("");
}

TEST_F(ShortMemory, Importing) {
  engine::ImportLimits limits;
  FailAnywhere(
      [&] {
        const auto imported =
            engine::ImportScene(Services().Get(), TEST_SOURCE_DIR "/scenes/spider/spider.obj",
                                TEST_BINARY_DIR "/bin/stagemarks", limits);
        EXPECT_EQ(imported.Ok(), imported.Message().empty());
      },
      [] {});
}

// Runs the program with that much address space, what it says in the file `said`; its exit status,
// or -1 where a signal ended it, as one that never comes to an end is.
int ExitWithin(rlim_t mebibytes, const char* verb, const std::string& scene,
               const std::string& picture, const std::string& said) {
  const pid_t child = ::fork();
  if (child == 0) {
    const rlimit limit{mebibytes << 20, mebibytes << 20};
    const int text = ::open(said.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    const int nowhere = ::open("/dev/null", O_RDWR);
    for (int standard = 0; standard < 3; ++standard)
      ::dup2(standard == 2 ? text : nowhere, standard);
    ::setrlimit(RLIMIT_AS, &limit);
    ::alarm(120);
    ::execl(TEST_BINARY_DIR "/bin/stagemarks", "stagemarks", verb, scene.c_str(), "-o",
            picture.c_str(), "--force", nullptr);
    ::_exit(127);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// The libraries' own takings of memory and their threads, too: from what the program can hardly
// start with to more than it needs.
TEST_F(ShortMemory, NoLimitOnAddressSpaceEndsTheProgram) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "sanitizers map more address space than any limit allows";
#endif
  Record("A");
  SaveAs("shot.c4d");
  int done = 0;
  for (rlim_t mebibytes = 60; mebibytes <= 420; mebibytes += mebibytes < 180 ? 20 : 6) {
    fs::remove(File("sheet.png"));
    const char* verb = mebibytes / 2 % 2 == 0 ? "sheet" : "render";
    const int status =
        ExitWithin(mebibytes, verb, File("shot.c4d"), File("sheet.png"), File("said.txt"));
    EXPECT_GE(status, 0) << mebibytes << " MiB";
    EXPECT_EQ(tests::ReadText(File("said.txt")).find("std::"), std::string::npos)
        << mebibytes << " MiB: " << tests::ReadText(File("said.txt"));
    EXPECT_EQ(status == 0, fs::exists(File("sheet.png"))) << mebibytes << " MiB";
    done += status == 0;
    if (done > 3) return;
  }
  EXPECT_GE(done, 1) << "the last limits are large enough for it";
}

}  // namespace
