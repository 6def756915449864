// Damaged files of every format: each gives a scene or a message, within its time, and this process
// lives on.
#include <filesystem>
#include <random>

#include "tests/import/ImportSession.h"
#include "tests/support/ScratchFolder.h"

namespace tests {
namespace {

namespace fs = std::filesystem;

constexpr unsigned kSeed = 20261121;
constexpr int kFilesPerScene = 34;

class Mutation : public ImportSession {
 protected:
  // Changes some bytes, takes some out, doubles some, or cuts the end off; small files more often
  // than large ones.
  std::string Mutated(std::string bytes) {
    const int changes = 1 + static_cast<int>(Random(12));
    for (int i = 0; i < changes && bytes.size() > 8; ++i) {
      const std::size_t at = Random(bytes.size());
      const std::size_t length = 1 + Random(std::min<std::size_t>(64, bytes.size() - at));
      switch (Random(5)) {
        case 0:
          bytes[at] = static_cast<char>(Random(256));
          break;
        case 1:
          bytes.erase(at, length);
          break;
        case 2:
          bytes.insert(at, bytes.substr(at, length));
          break;
        case 3:
          bytes.replace(at, length, length, static_cast<char>(Random(2) ? 0xff : '9'));
          break;
        default:
          if (Random(8) == 0) bytes.resize(at + 1);
      }
    }
    return bytes;
  }
  std::size_t Random(std::size_t below) {
    return std::uniform_int_distribution<std::size_t>(0, below - 1)(random_);
  }

  std::mt19937 random_{kSeed};
  ScratchFolder folder_;
};

TEST_F(Mutation, DamagedFilesGiveASceneOrAMessage) {
  engine::ImportLimits limits;
  limits.memoryBytes = 2ull << 30;
  limits.seconds = 20;
  int scenes = 0;
  int refusals = 0;
  for (const char* name :
       {"tests/scenes/features/features.gltf", "tests/scenes/draco/suzi.glb",
        "scenes/spider/spider.fbx", "scenes/spider/spider.obj", "tests/scenes/collada/lights.dae",
        "tests/scenes/fbx/cubes_with_mirroring_and_pivot.fbx"}) {
    const std::string whole = ReadText(SceneFile(name));
    ASSERT_GT(whole.size(), 1000U) << name;
    for (int i = 0; i < kFilesPerScene; ++i) {
      const std::string file = folder_ / (std::to_string(i) + fs::path(name).extension().string());
      WriteText(file, Mutated(whole));
      engine::Result<engine::Imported> imported =
          engine::ImportScene(services_.Get(), file, IMPORT_WORKER, limits);
      ++(imported ? scenes : refusals);
      if (!imported) {
        EXPECT_NE(imported.Message().find(file), std::string::npos) << imported.Message();
        EXPECT_EQ(imported.Message().find("answer is damaged"), std::string::npos)
            << file << imported.Message();
      }
    }
  }
  EXPECT_GT(scenes, 20) << "seed " << kSeed;
  EXPECT_GT(refusals, 20) << "seed " << kSeed;
}

}  // namespace
}  // namespace tests
