// Random operations, undone to the start and done again to the end, each step compared with the
// dump it had.
#include "tests/undo/RandomEdits.h"

#include <gtest/gtest.h>

#include "engine/scene/SceneDump.h"

namespace {

using host::BaseDocument;
using tests::RandomEdits;

class UndoRandom : public testing::TestWithParam<unsigned> {};

TEST_P(UndoRandom, GoesBackToTheStartAndForwardToTheEnd) {
  tests::SceneBuilder scene;
  RandomEdits::Build(scene);
  BaseDocument& doc = scene.Doc();
  RandomEdits edits(doc, GetParam());
  std::vector<std::string> dumps = {engine::DumpDocument(doc)};
  for (int i = 0; i < 60; ++i) {
    edits.Step();
    if (engine::DumpDocument(doc) != dumps.back()) dumps.push_back(engine::DumpDocument(doc));
  }
  for (int round = 0; round < 2; ++round) {
    std::size_t at = dumps.size() - 1;
    while (doc.DoUndo()) {
      if (engine::DumpDocument(doc) != dumps[at]) --at;
      ASSERT_EQ(engine::DumpDifference(dumps[at], engine::DumpDocument(doc)),
                std::vector<std::string>())
          << at;
    }
    EXPECT_EQ(at, 0u);
    while (doc.DoRedo()) {
      if (engine::DumpDocument(doc) != dumps[at]) ++at;
      ASSERT_EQ(engine::DumpDifference(dumps[at], engine::DumpDocument(doc)),
                std::vector<std::string>())
          << at;
    }
    EXPECT_EQ(at, dumps.size() - 1);
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, UndoRandom, testing::Range(1u, 40u));

}  // namespace
