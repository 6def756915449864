// Cost of knowing before one acts: comparing two Stagemarks of a big scene beside a walk over the
// pointers of both lists; the dry run of a load beside the load; the check of many Stagemarks
// beside reading each of their records once; and the memory that all this takes.
#include <malloc.h>
#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <string>

#include "engine/application/Application.h"
#include "engine/core/ContainerBody.h"
#include "engine/dialog/Dialogs.h"
#include "engine/scene/TreeWalk.h"
#include "engine/states/Findings.h"
#include "engine/states/LostSearch.h"
#include "engine/states/StateMatrix.h"
#include "source/Stagemarks/keys/Gadgets.h"
#include "source/Stagemarks/keys/PluginIds.h"
#include "tests/support/ChildProgram.h"
#include "tests/support/ScratchFolder.h"
#include "tests/support/ScriptedServices.h"

namespace {

using engine::StoredState;
using host::BaseObject;
using host::LONG;

double Now() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

// Least of some runs: other programs on the machine only ever add.
double Seconds(const std::function<void()>& work, int runs = 5) {
  double least = 1e9;
  for (int i = 0; i < runs; ++i) {
    const double begin = Now();
    work();
    least = std::min(least, Now() - begin);
  }
  return least;
}

double MemoryInUse() {
  const struct mallinfo2 info = mallinfo2();
  return static_cast<double>(info.uordblks) + static_cast<double>(info.hblkhd);
}

void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "%s\n", what);
  std::exit(1);
}

class Stage {
 public:
  explicit Stage(LONG objects) : application_(services_.Get(), {}) {
    const double before = MemoryInUse();
    const engine::LoadReport report =
        application_.LoadPlugin(TEST_PLUGIN_DIR "/Stagemarks/Stagemarks.so");
    Require(report.outcome == engine::LoadOutcome::Loaded, report.message.c_str());
    host::SetActiveDocument(application_.NewDocument());
    Require(application_.ExecuteCommand(stagemarks::kPluginId), "the dialog did not open");
    dialog_ = engine::OpenDialogs().front();
    for (LONG i = 0; i < objects; ++i) {
      objects_.push_back(BaseObject::Alloc(host::Onull));
      Doc().AppendObject(objects_.back());
    }
    scene_ = MemoryInUse() - before;
  }

  host::BaseDocument& Doc() { return *host::GetActiveDocument(); }
  double Memory() const { return scene_; }

  // Every so many objects, from one on, get another render mode.
  void Change(std::size_t from, std::size_t step) {
    for (std::size_t i = from; i < objects_.size(); i += step)
      objects_[i]->SetRenderMode((objects_[i]->GetRenderMode() + 1) % 3);
  }
  StoredState Record(const std::string& name) {
    const double before = MemoryInUse();
    engine::TypeText(*dialog_, stagemarks::kNameField, host::String(name.c_str()));
    Require(engine::PressButton(*dialog_, stagemarks::kRecord), "not recorded");
    application_.DeliverEvents();
    scene_ += MemoryInUse() - before;
    for (StoredState& state : engine::ReadStates(Doc())) {
      if (state.name == name) return state;
    }
    return {};
  }
  void Save(const std::string& path) {
    Require(application_.SaveDocumentAs(Doc(), path).Ok(), "not saved");
  }
  void Open(const std::string& path) {
    Require(application_.OpenDocument(path).Ok(), "not opened");
    application_.DeliverEvents();
  }
  void Load(LONG line) {
    engine::SelectLines(*dialog_, stagemarks::kList, {line});
    Require(engine::PressButton(*dialog_, stagemarks::kLoad), "not loaded");
  }

 private:
  tests::ScriptedServices services_;
  engine::Application application_;
  host::GeDialog* dialog_ = nullptr;
  std::vector<BaseObject*> objects_;
  double scene_ = 0;  // bytes of the scene with its Stagemarks
};

// Every pointer of both lists of object records, and nothing of what they point to.
std::size_t WalkPointers(const StoredState& a, const StoredState& b) {
  std::size_t sum = 0;
  for (const StoredState* state : {&a, &b}) {
    const host::BaseContainer* list = state->record.GetContainerInstance(engine::kStoredObjects);
    const engine::ContainerBody* body = engine::ContainerAccess::Body(*list);
    std::uint32_t next = 0;
    for (auto stretch = engine::NextEntries(body, next); !stretch.empty();
         stretch = engine::NextEntries(body, next)) {
      for (const engine::Entry& entry : stretch) sum += entry.bits;
    }
  }
  return sum;
}

std::size_t sink = 0;

void Row(const char* what, double seconds, double baseline, const char* beside) {
  std::printf("%-52s %10.3f ms   %7.2f x %s\n", what, seconds * 1e3, seconds / baseline, beside);
}

void DryRuns(Stage& stage, const StoredState& a, std::size_t count) {
  engine::CompareOptions dry;
  dry.everyEntry = true;
  dry.unknown = false;
  dry.mostFields = 24;
  // There and back in turn, so that each load has as much to do as the dry run before it.
  for (const std::size_t step : {std::size_t{1}, count / 1000}) {
    double dryRun = 1e9;
    double load = 1e9;
    for (int i = 0; i < 3; ++i) {
      stage.Load(0);
      stage.Change(0, step);
      dryRun = std::min(
          dryRun,
          Seconds(
              [&] { sink += engine::CompareWithScene(stage.Doc(), a.record, dry).changes.size(); },
              1));
      load = std::min(load, Seconds([&] { stage.Load(0); }, 1));
    }
    Row(step == 1 ? "dry run, all objects change" : "dry run, 1,000 objects change", dryRun, load,
        "load");
  }
}

// The longest of the steps in which a window has something done, each of 500 elements.
template <class Stepwise>
double LongestStep(Stepwise& work) {
  double longest = 0;
  for (bool goes = true; goes;) {
    const double begin = Now();
    goes = work.Advance(500);
    longest = std::max(longest, Now() - begin);
  }
  return longest;
}

// Longest step of the comparisons that a panel makes while a person works, where every object
// differs.
void Steps(Stage& stage, const StoredState& a) {
  stage.Change(0, 1);
  const StoredState other = stage.Record("D");
  stage.Change(0, 1);
  const host::BaseDocument& doc = stage.Doc();
  const double states = Seconds(
      [&] { sink += engine::CompareStates(doc, a.record, other.record).changes.size(); }, 1);
  engine::StepwiseComparison twoStates(doc, a.record, other.record);
  Row("longest step, two Stagemarks", LongestStep(twoStates), states, "all of it");
  const double scene =
      Seconds([&] { sink += engine::CompareWithScene(doc, a.record).changes.size(); }, 1);
  engine::StepwiseComparison withScene(doc, a.record);
  Row("longest step, scene and Stagemark", LongestStep(withScene), scene, "all of it");
  const engine::Difference toScene = withScene.Take();
  const std::vector<StoredState> all = engine::ReadStates(doc);
  const double lost = Seconds([&] { sink += engine::FindLost(doc, all, toScene).size(); }, 1);
  const double begin = Now();
  engine::LostSearch search(doc, all, toScene);
  const double beginning = Now() - begin;
  Row("longest step, what is in no Stagemark", std::max(beginning, LongestStep(search)), lost,
      "all of it");
}

void BigScene(LONG count) {
  Stage stage(count);
  const StoredState a = stage.Record("A");
  const StoredState same = stage.Record("B");
  stage.Change(0, static_cast<std::size_t>(count) / 1000);
  const StoredState thousand = stage.Record("C");
  const host::BaseDocument& doc = stage.Doc();
  const double walk = Seconds([&] { sink += WalkPointers(a, thousand); });
  std::printf("%d objects; one walk over both lists of pointers %.3f ms\n", count, walk * 1e3);
  Row("two Stagemarks that share their records",
      Seconds([&] { sink += engine::CompareStates(doc, a.record, same.record).changes.size(); }),
      walk, "walk");
  Row("1,000 objects differ", Seconds([&] {
        sink += engine::CompareStates(doc, a.record, thousand.record).changes.size();
      }),
      walk, "walk");
  DryRuns(stage, a, static_cast<std::size_t>(count));
  const double before = MemoryInUse();
  const engine::Difference difference = engine::CompareStates(doc, a.record, thousand.record);
  std::printf("memory of that difference: %.2f %% of the scene\n",
              100 * (MemoryInUse() - before) / stage.Memory());
  Steps(stage, a);
}

double ChildrenNow() {
  rusage use{};
  getrusage(RUSAGE_CHILDREN, &use);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
  };
  return seconds(use.ru_utime) + seconds(use.ru_stime);
}

// Processor time of a program of its own; every process pays for its fresh memory.
double SecondsOfChild(const std::string& program, const std::vector<std::string>& arguments) {
  double least = 1e9;
  for (int i = 0; i < 3; ++i) {
    const double before = ChildrenNow();
    const tests::ChildResult result = tests::RunChild(program, arguments);
    Require(result.status == 0, result.err.c_str());
    least = std::min(least, ChildrenNow() - before);
  }
  return least;
}

// The least that `stagemarks load` has to do: read the file, the plug-in's load, write the file.
int Parts(const std::string& from, const std::string& to) {
  Stage stage(0);
  stage.Open(from);
  stage.Load(0);
  stage.Save(to);
  return 0;
}

void LoadVerb(LONG count) {
  const tests::ScratchFolder folder;
  const std::string file = folder / "big.c4d";
  {
    Stage stage(count);
    stage.Record("A");
    stage.Change(0, 2);
    stage.Save(file);
  }
  const double parts = SecondsOfChild("/proc/self/exe", {"--parts", file, folder / "loaded.c4d"});
  const double verb =
      SecondsOfChild(TEST_BINARY_DIR "/bin/stagemarks",
                     {"load", file, "A", "--quiet", "-o", folder / "verb.c4d", "--force"});
  std::printf("%d objects, half of them change; read, load, write %.0f ms\n", count, parts * 1e3);
  Row("stagemarks load -o", verb, parts, "read, load, write");
}

void ManyStates(LONG objects, LONG states, std::size_t step) {
  Stage stage(objects);
  for (LONG i = 0; i < states; ++i) {
    stage.Change(static_cast<std::size_t>(i) % step, step);
    stage.Record("State " + std::to_string(i));
  }
  const std::vector<StoredState> all = engine::ReadStates(stage.Doc());
  const double read = Seconds([&] {
    for (const StoredState& state : all) sink += WalkPointers(state, state);
  });
  std::printf("%d objects x %d Stagemarks, every %zu. changed between two\n", objects, states,
              step);
  const double before = MemoryInUse();
  Row("check", Seconds([&] { sink += engine::FindFindings(stage.Doc(), nullptr, {}).size(); }, 2),
      read, "walk over all pointers");
  double memory = 0;
  Row("table of states and elements",
      Seconds(
          [&] {
            const engine::StateMatrix matrix(stage.Doc(), all, engine::MatrixRows::Differing);
            sink += matrix.Rows().size();
            memory = MemoryInUse() - before;
          },
          2),
      read, "walk over all pointers");
  std::printf("memory of the table: %.2f %% of the scene\n", 100 * memory / stage.Memory());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 4 && std::string(argv[1]) == "--parts") return Parts(argv[2], argv[3]);
  BigScene(1'000'000);
  LoadVerb(1'000'000);
  ManyStates(5'000, 200, 50);
  ManyStates(5'000, 200, 1);
  ManyStates(10'000, 200, 50);
  return sink == 1 ? 1 : 0;
}
