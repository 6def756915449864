// Cost of recording and recalling a big scene, through the loaded plug-in as the dialog drives it.
// Beside it stands the least that the same work can cost: the switches of every object copied into
// plain arrays, and written back after a hash look-up of each object.
#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

#include "engine/application/Application.h"
#include "engine/dialog/Dialogs.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/TreeWalk.h"
#include "source/Stagemarks/keys/Gadgets.h"
#include "source/Stagemarks/keys/PluginIds.h"
#include "tests/support/ScriptedServices.h"

namespace {

using host::BaseDocument;
using host::BaseObject;
using host::GeDialog;
using host::LONG;
using host::String;

// Time of the processor, so that other programs on the machine count little.
double Now() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

double Seconds(const std::function<void()>& work) {
  const double begin = Now();
  work();
  return Now() - begin;
}

// Bytes handed out by the allocator now.
double MemoryInUse() {
  const struct mallinfo2 info = mallinfo2();
  return static_cast<double>(info.uordblks) + static_cast<double>(info.hblkhd);
}

void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "%s\n", what);
  std::exit(1);
}

constexpr LONG kStyleTag = 1011012;

// Stands for a compositing tag that is like no other
constexpr LONG kCompositingOfItsOwn = -host::Tcompositing;

void FillStyle(host::BaseContainer& data, LONG number) {
  for (LONG key = 1000; key < 1010; ++key) data.SetLong(key, key + number);
}

// The plug-in with its dialog open on one new document.
class Stage {
 public:
  Stage() : application_(services_.Get(), {}) {
    const engine::LoadReport report =
        application_.LoadPlugin(TEST_PLUGIN_DIR "/Stagemarks/Stagemarks.so");
    Require(report.outcome == engine::LoadOutcome::Loaded, report.message.c_str());
    host::SetActiveDocument(application_.NewDocument());
    Require(application_.ExecuteCommand(stagemarks::kPluginId), "the dialog did not open");
    dialog_ = engine::OpenDialogs().front();
  }

  BaseDocument& Doc() { return *host::GetActiveDocument(); }

  // Objects with a tag of each of these types. Tags without parameters of their own get ten.
  void Build(LONG objects, const std::vector<LONG>& tags) {
    for (LONG i = 0; i < objects; ++i) {
      BaseObject* object = BaseObject::Alloc(host::Onull);
      Doc().AppendObject(object);
      host::BaseTag* last = nullptr;
      for (const LONG type : tags) {
        last = object->MakeTag(std::abs(type), last);
        if (type == kStyleTag) FillStyle(*last->GetDataInstance(), i);
        if (type == kCompositingOfItsOwn) last->GetDataInstance()->SetLong(1006, i);
      }
    }
  }

  void SetAllModes(LONG mode) {
    for (BaseObject* object = Doc().GetFirstObject(); object; object = engine::NextInTree(object)) {
      object->SetEditorMode(mode);
      object->SetRenderMode(mode);
    }
  }

  void Record(const std::string& name) {
    engine::TypeText(*dialog_, stagemarks::kNameField, String(name.c_str()));
    Require(engine::PressButton(*dialog_, stagemarks::kRecord), "not recorded");
  }

  void LoadLine(LONG line) {
    engine::SelectLines(*dialog_, stagemarks::kList, {line});
    Require(engine::PressButton(*dialog_, stagemarks::kLoad), "not loaded");
  }

  void Deliver() { application_.DeliverEvents(); }

 private:
  tests::ScriptedServices services_;
  engine::Application application_;
  GeDialog* dialog_ = nullptr;
};

struct Plain {
  std::vector<engine::NodeId> ids;
  std::vector<LONG> editor;
  std::vector<LONG> render;
  std::vector<char> deform;
};

Plain CopyPlain(const BaseDocument& doc) {
  Plain plain;
  for (const BaseObject* object = doc.GetFirstObject(); object;
       object = engine::NextInTree(const_cast<BaseObject*>(object))) {
    plain.ids.push_back(engine::IdOf(*object));
    plain.editor.push_back(object->GetEditorMode());
    plain.render.push_back(object->GetRenderMode());
    plain.deform.push_back(object->GetDeformMode() ? 1 : 0);
  }
  return plain;
}

using ById = std::unordered_map<engine::NodeId, BaseObject*>;

ById Index(const BaseDocument& doc) {
  ById index;
  for (BaseObject* object = doc.GetFirstObject(); object; object = engine::NextInTree(object))
    index[engine::IdOf(*object)] = object;
  return index;
}

void WritePlainBack(const Plain& plain, const ById& index) {
  for (std::size_t i = 0; i < plain.ids.size(); ++i) {
    BaseObject* object = index.find(plain.ids[i])->second;
    object->SetEditorMode(plain.editor[i]);
    object->SetRenderMode(plain.render[i]);
    object->SetDeformMode(plain.deform[i] != 0);
  }
}

void Line(const char* what, double nanoseconds, double baseline, double bytes = -1) {
  std::printf("  %-28s %9.1f", what, nanoseconds);
  if (baseline > 0) std::printf(" %9.1f", nanoseconds / baseline);
  if (bytes >= 0) std::printf("%s %12.2f", baseline > 0 ? "" : "          ", bytes);
  std::printf("\n");
}

// Recording what has not changed, and the plain copy, in turn; the least of each. Where another
// program computes on the same core, one that computes takes up to 1.7 times as long and one that
// waits for memory does not: a single run may tell more about that program than about ours.
void MeasureAgain(Stage& stage, LONG objects) {
  constexpr int kRuns = 15;
  const double before = MemoryInUse();
  double again = 1e9;
  double copy = 1e9;
  for (int run = 0; run < kRuns; ++run) {
    again = std::min(again, Seconds([&] { stage.Record("B" + std::to_string(run)); }));
    stage.Deliver();
    Plain plain;
    copy = std::min(copy, Seconds([&] { plain = CopyPlain(stage.Doc()); }));
  }
  Line("again, unchanged", 1e9 / objects * again, 1e9 / objects * copy,
       (MemoryInUse() - before) / objects / kRuns);
}

// Time and memory per object of recording, recalling and undoing, beside the plain copy and its
// way back.
void MeasureStates(Stage& stage, LONG objects, double copy, double back) {
  const auto measure = [&](const char* what, double baseline, const std::function<void()>& work) {
    const double before = MemoryInUse();
    const double time = 1e9 / objects * Seconds(work);
    Line(what, time, baseline, (MemoryInUse() - before) / objects);
  };
  measure("first recording", copy, [&] { stage.Record("A"); });
  stage.Deliver();
  MeasureAgain(stage, objects);
  stage.SetAllModes(host::MODE_OFF);
  measure("recall with undo entries", back, [&] { stage.LoadLine(0); });
  Require(stage.Doc().GetFirstObject()->GetEditorMode() == host::MODE_UNDEF, "not recalled");
  stage.Deliver();
  measure("undo", back, [&] { stage.Doc().DoUndo(); });
  Require(stage.Doc().GetFirstObject()->GetEditorMode() == host::MODE_OFF, "not undone");
  stage.Deliver();
  stage.LoadLine(0);
  stage.Deliver();
  measure("again after a load", copy, [&] { stage.Record("C"); });
}

void MeasureScene(const char* title, LONG objects, const std::vector<LONG>& tags) {
  Stage stage;
  stage.Build(objects, tags);
  const double perObject = 1e9 / objects;
  Plain plain;
  const double copy = perObject * Seconds([&] { plain = CopyPlain(stage.Doc()); });
  const ById index = Index(stage.Doc());
  const double back = perObject * Seconds([&] { WritePlainBack(plain, index); });

  std::printf("%d objects%s\n  %-28s %9s %9s %12s\n", objects, title, "", "ns/object", "x plain",
              "bytes/object");
  Line("plain copy", copy, 0);
  Line("plain write-back", back, 0);
  MeasureStates(stage, objects, copy, back);
  std::printf("\n");
}

void MeasureGrowth(LONG objects) {
  Stage stage;
  stage.Build(objects, {});
  const double perObject = 1e9 / objects;
  std::printf("%d objects, by the number of elements already stored\n  %8s %12s %12s %14s\n",
              objects, "stored", "record", "load", "list, us/row");
  LONG stored = 0;
  for (const LONG wanted : {1, 10, 1000}) {
    for (; stored < wanted; ++stored) stage.Record("E" + std::to_string(stored));
    stage.Deliver();
    const double record = perObject * Seconds([&] { stage.Record("E" + std::to_string(stored)); });
    ++stored;
    stage.Deliver();
    stage.SetAllModes(host::MODE_OFF);
    const double load = perObject * Seconds([&] { stage.LoadLine(0); });
    const double list = 1e6 / stored * Seconds([&] { stage.Deliver(); });
    std::printf("  %8d %12.1f %12.1f %14.2f\n", wanted, record, load, list);
    stage.Record("E" + std::to_string(stored++));
  }
}

}  // namespace

// With a number: the big scene has so many objects instead of a million. With a second one: only
// that scene, from 0 on, and nothing about growth.
int main(int count, char** arguments) {
  const LONG objects = count > 1 ? std::atoi(arguments[1]) : 1000000;
  const int only = count > 2 ? std::atoi(arguments[2]) : -1;
  const struct {
    const char* title;
    std::vector<LONG> tags;
  } scenes[] = {
      {"", {}},
      {" with two texture tags each", {host::Ttexture, host::Ttexture}},
      {" with a texture and a style tag each", {host::Ttexture, kStyleTag}},
      {" with a texture and a compositing tag each", {host::Ttexture, host::Tcompositing}},
      {" with a texture and a compositing tag of its own each",
       {host::Ttexture, kCompositingOfItsOwn}},
  };
  for (int i = 0; i < static_cast<int>(std::size(scenes)); ++i) {
    if (only < 0 || only == i)
      MeasureScene(scenes[i].title, i == 0 ? objects : objects / 10, scenes[i].tags);
  }
  if (only < 0) MeasureGrowth(objects / 10);
}
