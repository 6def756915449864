// Random operations, undone to the start and done again to the end, each step compared with the
// dump it had.
#include "tests/undo/RandomEdits.h"

#include <gtest/gtest.h>

#include "engine/scene/NewNodes.h"
#include "engine/scene/NodeCopy.h"
#include "engine/scene/SceneDump.h"
#include "tests/support/CountedMemory.h"

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

// What elements, steps and copies of them take is given back, however they end: undone, done again,
// dropped by another change, left open.
TEST(UndoMemory, ADocumentGivesAllItsMemoryBack) {
  const auto work = [](unsigned seed) {
    tests::SceneBuilder scene;
    RandomEdits::Build(scene);
    RandomEdits edits(scene.Doc(), seed);
    for (int i = 0; i < 30; ++i) {
      edits.Step();
      for (int back = i % 7; back > 3; --back) scene.Doc().DoUndo();
    }
    const engine::OwnedDocument copy = engine::CopyOf(scene.Doc());
    const engine::OwnedDocument anew = engine::CopyDocument(scene.Doc(), false);
    while (scene.Doc().DoUndo()) {
    }
    scene.Doc().DoRedo();
    scene.Doc().StartUndo();
    edits.Step();
  };
  for (unsigned seed = 1; seed < 20; ++seed) {
    work(seed);  // what is kept for the next one is there from now on
    const long before = tests::blocksHeld;
    work(seed);
    EXPECT_EQ(tests::blocksHeld, before) << seed;
  }
}

// Entries lie in chunks; a part of a step may end anywhere in one.
TEST(UndoMemory, AStepOfManyEntriesIsCutAnywhere) {
  for (const int first : {511, 512, 513, 1024, 1025}) {
    tests::SceneBuilder scene;
    scene.Object("A");
    BaseDocument& doc = scene.Doc();
    host::BaseObject* object = scene.GetObject("A");
    const auto write = [&](int count) {
      for (int i = 0; i < count; ++i) {
        doc.AddUndo(host::UNDO_CHANGE, object);
        object->GetDataInstance()->SetLong(1, object->GetDataInstance()->GetLong(1) + 1);
      }
    };
    {
      const engine::UndoScope outer(doc, "outer");
      write(first);
      {
        engine::UndoScope inner(doc, "inner");
        write(700);
        inner.Cancel();
      }
      EXPECT_EQ(object->GetDataInstance()->GetLong(1), first);
      write(600);
    }
    for (const int expected : {0, first + 600}) {
      EXPECT_TRUE(expected == 0 ? doc.DoUndo() : doc.DoRedo());
      EXPECT_EQ(object->GetDataInstance()->GetLong(1), expected) << first;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, UndoRandom, testing::Range(1u, 40u));

}  // namespace
