// Large scenes tell how far their reading and writing is and can be stopped; nothing is lost by
// that.
#include <gtest/gtest.h>

#include "engine/scene/DocumentState.h"
#include "engine/scenefile/SceneFile.h"
#include "host/Host.h"
#include "tests/support/ScratchFolder.h"
#include "tests/support/ScriptedServices.h"

namespace {

using Document = engine::OwnedDocument;

Document SceneOf(int objects) {
  Document doc(host::BaseDocument::Alloc());
  for (int i = 0; i < objects; ++i) doc->AppendObject(host::BaseObject::Alloc(host::Onull));
  return doc;
}

TEST(SceneProgress, GoesFromNothingToAllInBothDirections) {
  const Document doc = SceneOf(40000);
  std::vector<double> shares;
  const engine::ProgressCallback note = [&](double share) {
    shares.push_back(share);
    return true;
  };
  const auto check = [&](const char* what) {
    EXPECT_GE(shares.size(), 5U) << what;
    EXPECT_TRUE(std::is_sorted(shares.begin(), shares.end())) << what;
    EXPECT_LT(shares.front(), 0.4) << what;
    EXPECT_GT(shares.back(), 0.6) << what;
    EXPECT_LE(shares.back(), 1) << what;
    shares.clear();
  };
  const auto pieces = engine::WriteScene(*doc, note);
  ASSERT_TRUE(pieces);
  check("writing");
  std::string bytes;
  for (const std::string& piece : pieces.Value()) bytes += piece;
  const auto read = engine::ReadScene(bytes, 0, note);
  ASSERT_TRUE(read);
  check("reading");
}

TEST(SceneProgress, StoppingASaveLeavesTheOldFileAndStoppingAnOpenSaysSo) {
  tests::ScratchFolder folder;
  tests::ScriptedServices services;
  const std::string path = folder / "large.c4d";
  const Document small = SceneOf(10);
  ASSERT_TRUE(engine::SaveSceneFile(services.Get(), *small, path));
  EXPECT_EQ(services.person.ProgressCalls(), 0) << "nobody would see anything of it";
  const std::string before = services.files.ReadFile(path).Value();
  const Document large = SceneOf(40000);
  services.person.StopProgressAt(2);
  const engine::Status saved = engine::SaveSceneFile(services.Get(), *large, path);
  EXPECT_FALSE(saved);
  EXPECT_NE(saved.Message().find("stopped"), std::string::npos) << saved.Message();
  EXPECT_EQ(services.files.ReadFile(path).Value(), before);
  EXPECT_EQ(services.files.ListFiles(folder.Path()).Value().size(), 1U);

  services.person.StopProgressAt(0);
  ASSERT_TRUE(engine::SaveSceneFile(services.Get(), *large, path));
  services.person.StopProgressAt(2);
  const auto opened = engine::OpenSceneFile(services.Get(), path);
  EXPECT_FALSE(opened);
  EXPECT_NE(opened.Message().find("stopped"), std::string::npos) << opened.Message();
  services.person.StopProgressAt(0);
  const auto whole = engine::OpenSceneFile(services.Get(), path);
  ASSERT_TRUE(whole);
  EXPECT_EQ(engine::CountScene(*whole.Value()).objects, 40000U);
}

}  // namespace
