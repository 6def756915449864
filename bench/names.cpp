// Delay of the shell when it completes a name: `list --names`, `objects list --names` and the whole
// `list` beside a program that only says its version, for scenes of growing size with ten
// Stagemarks that hold every object. The time of the first must not grow.
#include <malloc.h>
#include <sys/resource.h>
#include <sys/time.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "engine/scene/Ownership.h"
#include "engine/scenefile/SceneFile.h"
#include "engine/states/StoredStates.h"
#include "tests/support/ChildProgram.h"
#include "tests/support/SceneBytes.h"
#include "tests/support/ScratchFolder.h"

namespace {

using host::BaseContainer;
using host::LONG;

constexpr const char* kProgram = TEST_BINARY_DIR "/bin/stagemarks";
constexpr LONG kStates = 10;

// Processor time of the children that have ended; other programs do not count.
double ChildSeconds() {
  rusage usage{};
  getrusage(RUSAGE_CHILDREN, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

double Milliseconds(const std::vector<std::string>& call, int runs = 7) {
  double least = 1e9;
  for (int run = 0; run < runs; ++run) {
    const double begin = ChildSeconds();
    const tests::ChildResult result = tests::RunChild(kProgram, call);
    if (result.status != 0) std::exit((std::fputs(result.err.c_str(), stderr), 1));
    least = std::min(least, ChildSeconds() - begin);
  }
  return 1000 * least;
}

// How much states differ: in a few objects, as those of a shot do, or in most of a million
// switches, which no file can store in little.
enum class States { Alike, Scrambled };

BaseContainer RecordOf(const host::BaseDocument& doc, LONG state, States states) {
  BaseContainer objects;
  LONG place = 0;
  for (host::BaseObject* object = doc.GetFirstObject(); object; object = object->GetNext()) {
    BaseContainer one(place);
    one.SetLink(engine::kStoredObjectLink, object);
    const bool isOther =
        states == States::Scrambled ? place % (state + 2) == 0 : place % 1000 == state;
    one.SetLong(engine::kStoredEditorMode, states == States::Scrambled ? (place + state) % 3 : 2);
    one.SetLong(engine::kStoredRenderMode, isOther ? 1 : 2);
    one.SetLong(engine::kStoredDeformMode, 1);
    objects.SetContainer(place++, one);
  }
  BaseContainer record(state);
  record.SetString(engine::kStoredName, host::String("State"));
  record.SetContainer(engine::kStoredObjects, objects);
  return record;
}

std::string MakeScene(const tests::ScratchFolder& folder, int objects, States states) {
  const engine::OwnedDocument doc(host::BaseDocument::Alloc());
  host::BaseObject* last = nullptr;
  for (int i = 0; i < objects; ++i) {
    host::BaseObject* object = host::BaseObject::Alloc(host::Onull);
    object->SetName(host::String(std::string_view("Object " + std::to_string(i))));
    doc->InsertObject(object, nullptr, last);
    last = object;
  }
  BaseContainer records;
  BaseContainer entries;
  for (LONG state = 0; state < kStates; ++state) {
    records.SetContainer(state, RecordOf(*doc, state, states));
    BaseContainer entry(state);
    entry.SetString(engine::kStoredName,
                    host::String(std::string_view("State " + std::to_string(state))));
    entries.SetContainer(state, entry);
  }
  entries.SetBool(engine::kStoredListBuilt, host::TRUE);
  doc->GetDataInstance()->SetContainer(engine::kStagemarksId, records);
  doc->GetDataInstance()->SetContainer(engine::kStoredEntries, entries);
  const std::string path = folder / (std::to_string(objects) + ".c4d");
  tests::WriteText(path, tests::Bytes(*doc));
  return path;
}

}  // namespace

int main() {
  const tests::ScratchFolder folder;
  const double nothing = Milliseconds({"--version"});
  std::printf("A program that says its version: %.1f ms. As many times that:\n", nothing);
  std::printf("%9s %-10s %16s %22s %8s\n", "objects", "states", "list --names",
              "objects list --names", "list");
  for (const int objects : {1000, 100000, 1000000}) {
    for (const States states : {States::Alike, States::Scrambled}) {
      const std::string scene = MakeScene(folder, objects, states);
      malloc_trim(0);  // a child costs more to make the more memory its parent has
      const double names = Milliseconds({"list", scene, "--names"});
      const double elements =
          Milliseconds({"objects", "list", scene, "--names", "--begin", "Object 9"});
      const double whole = Milliseconds({"list", scene}, objects > 100000 ? 1 : 3);
      std::printf("%9d %-10s %7.2f (%3.0f ms) %13.2f (%3.0f ms) %8.1f\n", objects,
                  states == States::Alike ? "alike" : "scrambled", names / nothing, names,
                  elements / nothing, elements, whole / nothing);
    }
  }
  return 0;
}
