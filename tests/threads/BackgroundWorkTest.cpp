// Work of the programs on other threads while a person goes on changing the scene: keeping unsaved
// changes, and pictures. The desktop's jobs without the toolkit, whose waiting the thread sanitizer
// does not see; ./test --threads builds them with it.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "engine/outside/RealFileSystem.h"
#include "engine/outside/SystemServices.h"
#include "engine/render/Renderer.h"
#include "engine/render/SceneScan.h"
#include "engine/scene/DeletedStates.h"
#include "engine/scene/NewNodes.h"
#include "engine/scenefile/SceneFile.h"
#include "engine/scenefile/Trash.h"
#include "tests/support/SceneBytes.h"
#include "tests/support/ScratchFolder.h"
#include "tests/undo/RandomEdits.h"

namespace {

using engine::PictureInProgress;
using engine::PreparedScene;

engine::SharedDeletedStates Trash() {
  engine::StateParts parts;
  parts.record.SetString(1, host::String(std::string_view("Day")));
  auto packed = std::make_shared<engine::PackedScene>();
  packed->scene = engine::SceneOfState(parts);
  engine::DeletedState state{"Day", "", "", false, std::move(packed)};
  return std::make_shared<engine::DeletedStates>(1, std::move(state));
}

std::string KeptBytes(const host::BaseDocument& doc, const std::string& path) {
  engine::AbsentPerson nobody;
  engine::Ledger ledger;
  engine::RealFileSystem files(ledger, nobody);
  const auto pieces = engine::WriteScene(doc);
  const std::vector<std::string_view> views(pieces.Value().begin(), pieces.Value().end());
  EXPECT_TRUE(files.ReplaceFile(path, views)) << path;
  return tests::ReadText(path);
}

TEST(BackgroundWork, UnsavedWorkIsKeptWhileTheSceneChanges) {
  const tests::ScratchFolder folder;
  tests::SceneBuilder scene;
  tests::RandomEdits::Build(scene);
  tests::RandomEdits edits(scene.Doc(), 2);
  for (int round = 0; round < 5; ++round) {
    engine::SetDeletedStates(scene.Doc(), Trash());
    engine::OwnedDocument copy = engine::CopyOf(scene.Doc());
    engine::SetDeletedStates(*copy, engine::SharedDeletedStatesOf(scene.Doc()));
    std::string kept;
    {
      const std::jthread writer([&] { kept = KeptBytes(*copy, folder / "kept.c4d"); });
      for (int i = 0; i < 10; ++i) edits.Step();
      const auto& deleted = engine::DeletedStatesOf(scene.Doc());
      EXPECT_TRUE(engine::Unpack(*deleted[0].packed)) << "given back meanwhile";
      KeptBytes(scene.Doc(), folder / "saved.c4d");
    }
    EXPECT_EQ(kept, tests::Bytes(*copy));
    engine::KeepPackedOnly(engine::DeletedStatesOf(scene.Doc()));
    copy.reset();
    while (scene.Doc().DoUndo()) {
    }
  }
}

// A view of the sample scene, whose materials have textures.
class View {
 public:
  engine::ScenePicture Read() {
    engine::SceneScan scan(*scene_, services_.Get().files, {}, caches_);
    while (!scan.Advance(1000)) {
    }
    return scan.Take();
  }
  // Finishes a picture, or stops in its middle when another number is wanted.
  std::vector<std::uint8_t> Render(engine::ScenePicture scene, unsigned number) {
    auto prepared = PreparedScene::Make(std::move(scene), caches_);
    engine::PictureSetup setup{32, 24, {}, {}, 3};
    setup.takesHits = true;
    auto picture = PictureInProgress::Begin(prepared.Take(), setup).Take();
    engine::Image shown;
    while (!picture->IsFinished()) {
      const auto goesOn = [&](double) {
        picture->ShowTiles(&shown);
        return wanted == number;
      };
      if (!picture->Refine(goesOn)) return {};
    }
    return picture->Current().bytes;
  }
  // Moves everything and takes it back.
  void Change() {
    host::BaseObject* first = scene_->GetFirstObject();
    scene_->StartUndo();
    scene_->AddUndo(host::UNDO_CHANGE, first);
    first->SetMl(host::Matrix());
    scene_->EndUndo();
    EXPECT_TRUE(scene_->DoUndo());
  }

  std::atomic<unsigned> wanted{0};

 private:
  engine::SystemServices services_;
  engine::RenderCaches caches_;
  engine::OwnedDocument scene_ =
      engine::OpenSceneFile(services_.Get(), TEST_SOURCE_DIR "/scenes/teapot/teapot.c4d").Take();
};

TEST(BackgroundWork, PicturesShareTexturesAndStopWhileTheSceneChanges) {
  View view;
  std::vector<std::uint8_t> pictures[3];
  {
    std::vector<std::jthread> jobs;
    for (std::vector<std::uint8_t>& picture : pictures) {
      jobs.emplace_back([&, scene = std::make_shared<engine::ScenePicture>(view.Read())] {
        picture = view.Render(std::move(*scene), 0);
      });
    }
    view.Change();
    view.Read();
  }
  EXPECT_FALSE(pictures[0].empty());
  EXPECT_EQ(pictures[0], pictures[1]);
  EXPECT_EQ(pictures[0], pictures[2]);
  for (unsigned i = 1; i < 4; ++i) {
    view.wanted = i;
    std::vector<std::uint8_t> picture;
    {
      const std::jthread job([&, scene = std::make_shared<engine::ScenePicture>(view.Read())] {
        picture = view.Render(std::move(*scene), i);
      });
      view.Change();
      view.wanted = 0;
    }
    EXPECT_TRUE(picture.empty() || picture == pictures[0]) << "stopped, or was faster";
  }
}

}  // namespace
