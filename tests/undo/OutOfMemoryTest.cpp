// Memory that runs out in the middle of undoing or redoing: everything is as it was, and undo goes
// on working.
#include <gtest/gtest.h>

#include <new>

#include "engine/scene/NodeIds.h"
#include "engine/scene/SceneDump.h"
#include "engine/undo/Undo.h"
#include "tests/support/CountedOperators.h"
#include "tests/support/SceneBuilder.h"

namespace {

using host::BaseDocument;
using host::BaseObject;

// Identities that lie apart, so that registering each of them takes memory.
struct FarApart : tests::SceneBuilder {
  FarApart() {
    Cube("Box").Object("Out");
    for (int i = 0; i < 6; ++i) {
      BaseObject* object = BaseObject::Alloc(host::Onull);
      engine::SetId(*object, engine::NodeId{1} << (40 + i));
      if (i > 2) object->SetBit(host::BIT_ACTIVE);
      Doc().AppendObject(object, i > 0 ? parent : nullptr);
      parent = i % 2 == 0 ? object : parent;
    }
    parent = GetObject("Out")->GetNext();
    Settings("HD").Active("HD");
    for (int i = 0; i < 3; ++i) {
      host::BaseVideoPost* post = host::BaseVideoPost::Alloc(i);
      engine::SetId(*post, engine::NodeId{1} << (30 + i));
      GetSettings("HD")->InsertVideoPost(post);
    }
  }
  BaseObject* parent = nullptr;
};

// Lets every single taking of memory fail, one after the other, until the act succeeds. Answers how
// often it failed.
int FailEverywhere(BaseDocument& doc, BaseObject* box, bool (*act)(BaseDocument&)) {
  const std::string before = engine::DumpDocument(doc);
  for (int failures = 0; failures < 1000; ++failures) {
    bool failed = false;
    tests::takingsLeft = failures;
    try {
      EXPECT_TRUE(act(doc));
    } catch (const std::bad_alloc&) {
      failed = true;
    }
    tests::takingsLeft = -1;
    if (!failed) return failures;
    EXPECT_EQ(engine::DumpDifference(before, engine::DumpDocument(doc)), std::vector<std::string>())
        << "taking " << failures;
    engine::UndoScope scope(doc, "After the failure");
    EXPECT_TRUE(doc.AddUndo(host::UNDO_CHANGE, box)) << "taking " << failures;
    scope.Cancel();
  }
  return 1000;
}

bool Undo(BaseDocument& doc) { return doc.DoUndo(); }
bool Redo(BaseDocument& doc) { return doc.DoRedo(); }

TEST(OutOfMemory, UndoAndRedoChangeNothingAndWorkAfterwards) {
  FarApart scene;
  BaseDocument& doc = scene.Doc();
  BaseObject* box = scene.GetObject("Box");
  const std::string before = engine::DumpDocument(doc);
  doc.StartUndo();
  doc.AddUndo(host::UNDO_CHANGE, box);
  box->SetName("Renamed");
  doc.AddUndo(host::UNDO_DELETE, scene.parent);
  BaseObject::Free(scene.parent);
  BaseObject* made = BaseObject::Alloc(host::Ocamera);
  engine::SetId(*made, engine::NodeId{1} << 50);
  doc.AppendObject(made);
  doc.AddUndo(host::UNDO_NEW, made);
  host::RenderData* settings = scene.GetSettings("HD");
  doc.AddUndo(host::UNDO_CHANGE, settings);
  settings->GetFirstVideoPost()->SetBit(host::BIT_DISABLED);
  doc.AddUndo(host::UNDO_CHANGE, box);
  box->SetBit(host::BIT_ACTIVE);
  doc.EndUndo();
  const std::string after = engine::DumpDocument(doc);
  EXPECT_GT(FailEverywhere(doc, box, Undo), 9);
  EXPECT_EQ(engine::DumpDifference(engine::DumpDocument(doc), before), std::vector<std::string>());
  EXPECT_GT(FailEverywhere(doc, box, Redo), 0);
  EXPECT_EQ(engine::DumpDifference(engine::DumpDocument(doc), after), std::vector<std::string>());
}

}  // namespace
