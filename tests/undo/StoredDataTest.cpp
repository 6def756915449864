// Steps of what a document stores for plug-ins: the stores that changed are exchanged as wholes, all
// other data stays as it is by then.
#include "engine/undo/StoredData.h"

#include <gtest/gtest.h>

#include <functional>

#include "engine/scene/NodeIds.h"
#include "engine/undo/UndoHistory.h"
#include "tests/support/ContainerText.h"
#include "tests/support/SceneBuilder.h"

namespace {

using host::BaseContainer;
using host::RenderData;
using tests::SceneBuilder;

constexpr host::LONG kStore = 1;
constexpr host::LONG kOther = 2;    // another of the scope's
constexpr host::LONG kForeign = 3;  // of somebody else
constexpr host::LONG kNumber = 4;   // no container, of somebody else

struct Stored : SceneBuilder {
  Stored() {
    Put(kStore, 1);
    Put(kForeign, 1);
    Data().SetLong(kNumber, 1);
  }
  BaseContainer& Data() const { return *Doc().GetDataInstance(); }
  void Put(host::LONG key, host::LONG value) const {
    BaseContainer store;
    store.SetLong(0, value);
    Data().SetContainer(key, store);
  }
  std::string Text() const { return tests::ContainerText(Data(), nullptr); }
};

struct StoreCase {
  const char* name;
  std::function<void(Stored&)> act;    // inside the scope
  std::function<void(Stored&)> later;  // by somebody else, without undo
  const char* done;
  const char* undone;
  const char* redone;
};

const StoreCase kStoreCases[] = {
    {"changed", [](Stored& s) { s.Put(kStore, 2); }, [](Stored&) {}, "{1 {0 2}, 3 {0 1}, 4 1}",
     "{1 {0 1}, 3 {0 1}, 4 1}", "{1 {0 2}, 3 {0 1}, 4 1}"},
    {"made", [](Stored& s) { s.Put(kOther, 2); }, [](Stored&) {},
     "{1 {0 1}, 3 {0 1}, 4 1, 2 {0 2}}", "{1 {0 1}, 3 {0 1}, 4 1}",
     "{1 {0 1}, 3 {0 1}, 4 1, 2 {0 2}}"},
    {"removed", [](Stored& s) { s.Data().RemoveData(kStore); }, [](Stored&) {}, "{3 {0 1}, 4 1}",
     "{1 {0 1}, 3 {0 1}, 4 1}", "{3 {0 1}, 4 1}"},
    {"others changed later", [](Stored& s) { s.Put(kStore, 2); },
     [](Stored& s) {
       s.Put(kForeign, 9);
       s.Data().SetLong(kNumber, 9);
       s.Put(5, 9);
     },
     "{1 {0 2}, 3 {0 9}, 4 9, 5 {0 9}}", "{1 {0 1}, 3 {0 9}, 4 9, 5 {0 9}}",
     "{1 {0 2}, 3 {0 9}, 4 9, 5 {0 9}}"},
    {"others gone later", [](Stored& s) { s.Put(kStore, 2); },
     [](Stored& s) {
       s.Data().RemoveData(kForeign);
       s.Data().RemoveData(kNumber);
     },
     "{1 {0 2}}", "{1 {0 1}}", "{1 {0 2}}"},
    {"of somebody else as well",
     [](Stored& s) {
       s.Put(kStore, 2);
       s.Put(kForeign, 2);
     },
     [](Stored&) {}, "{1 {0 2}, 3 {0 2}, 4 1}", "{1 {0 1}, 3 {0 1}, 4 1}",
     "{1 {0 2}, 3 {0 2}, 4 1}"},
};

TEST(StoredData, IsExchangedWhereItChanged) {
  for (const StoreCase& c : kStoreCases) {
    SCOPED_TRACE(c.name);
    Stored scene;
    {
      engine::StoredDataScope scope(scene.Doc(), "Store", {kStore, kOther});
      EXPECT_FALSE(scope.HasChanged());
      c.act(scene);
      EXPECT_TRUE(scope.HasChanged());
      EXPECT_EQ(tests::ContainerText(scope.Before(), nullptr), "{1 {0 1}, 3 {0 1}, 4 1}");
    }
    EXPECT_EQ(engine::UndoName(scene.Doc()), "Store");
    c.later(scene);
    EXPECT_EQ(scene.Text(), c.done);
    for (int round = 0; round < 2; ++round) {
      EXPECT_TRUE(scene.Doc().DoUndo());
      EXPECT_EQ(scene.Text(), c.undone);
      EXPECT_TRUE(scene.Doc().DoRedo());
      EXPECT_EQ(scene.Text(), c.redone);
    }
  }
}

TEST(StoredData, WithoutAChangeOfItThereIsNoStep) {
  Stored scene;
  {
    const engine::StoredDataScope scope(scene.Doc(), "Store", {kStore, kOther});
    scene.Put(kForeign, 2);
    scene.Put(kStore, 1);
    EXPECT_FALSE(scope.HasChanged());
  }
  EXPECT_FALSE(engine::CanUndo(scene.Doc()));
}

// Exchanged each time that the step is.
struct Outside : engine::OutsideChange {
  explicit Outside(int& count) : count_(count) {}
  void Exchange(host::BaseDocument&) noexcept override { ++count_; }

 private:
  int& count_;
};

TEST(StoredData, SettingsDeletedStatesAndWhatIsOutsideGoAlong) {
  Stored scene;
  scene.Settings("Old").Settings("Stays");
  host::BaseDocument& doc = scene.Doc();
  const engine::NodeId old = engine::IdOf(*scene.GetSettings("Old"));
  const auto deleted = std::make_shared<const engine::DeletedStates>();
  const auto names = [&] {
    std::string text;
    for (RenderData* s = doc.GetFirstRenderData(); s; s = s->GetNext())
      text += s->GetName().ToUtf8() + " ";
    return text;
  };
  int exchanges = 0;
  {
    engine::StoredDataScope scope(doc, "Store", {kStore});
    RenderData* settings = scene.GetSettings("Old");
    RenderData::Free(settings);
    scene.Settings("New");
    engine::SetDeletedStates(doc, deleted);
    EXPECT_TRUE(scope.HasChanged());
    ASSERT_NE(scope.Removed(old), nullptr);
    EXPECT_EQ(scope.Removed(old)->GetName(), "Old");
    EXPECT_EQ(scope.Removed(engine::IdOf(*scene.GetSettings("Stays"))), nullptr);
    scope.Add(std::make_unique<Outside>(exchanges));
  }
  EXPECT_EQ(names(), "Render Settings Stays New ");
  EXPECT_EQ(exchanges, 0);
  EXPECT_TRUE(doc.DoUndo());
  EXPECT_EQ(names(), "Render Settings Old Stays ");
  EXPECT_EQ(engine::SharedDeletedStatesOf(doc), nullptr);
  EXPECT_TRUE(doc.DoRedo());
  EXPECT_EQ(names(), "Render Settings Stays New ");
  EXPECT_EQ(engine::SharedDeletedStatesOf(doc), deleted);
  EXPECT_EQ(exchanges, 2);
  // Outside of such a scope settings that nobody registers go for good.
  {
    const engine::UndoScope plain(doc, "Plain");
    doc.SetFps(12);
    RenderData* settings = scene.GetSettings("New");
    RenderData::Free(settings);
  }
  EXPECT_TRUE(doc.DoUndo());
  EXPECT_EQ(names(), "Render Settings Stays ");
}

// A step counts as much as it weighs.
TEST(StoredData, HeavyStepsPushOthersOut) {
  Stored scene;
  host::LONG value = 1;
  const auto step = [&](std::size_t weight) {
    engine::StoredDataScope scope(scene.Doc(), "Store", {kStore});
    scene.Put(kStore, ++value);
    scope.Weigh(weight);
  };
  const auto steps = [&] { return engine::DoneNames(scene.Doc()).size(); };
  for (int i = 0; i < 4; ++i) step(1500000);
  EXPECT_EQ(steps(), 2u);
  // Back and forth they weigh what they did.
  for (int i = 0; i < 5; ++i) {
    EXPECT_TRUE(scene.Doc().DoUndo());
    EXPECT_TRUE(scene.Doc().DoRedo());
  }
  step(0);
  EXPECT_EQ(steps(), 3u);
  step(1500000);
  EXPECT_EQ(steps(), 3u);
  EXPECT_TRUE(scene.Doc().DoUndo());
  step(1500000);
  EXPECT_EQ(steps(), 3u) << "what was undone counts no more";
  step(5000000);
  EXPECT_EQ(steps(), 1u) << "the last one stays";
  EXPECT_TRUE(scene.Doc().DoUndo());
  EXPECT_EQ(scene.Data().GetContainer(kStore).GetLong(0), value - 1);
}

}  // namespace
