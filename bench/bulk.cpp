// Do the operations on many elements grow in step with their work? Each is timed through the loaded
// plug-in at a size and at twice that size; beside it stands the described algorithm taken step by
// step, every search a walk over everything, at a size where that still ends. Exporting is compared
// with plainly saving the same document.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <functional>
#include <string>

#include "host/LayerObject.h"
#include "host/RenderData.h"
#include "source/Stagemarks/keys/ElementKeys.h"
#include "source/Stagemarks/keys/Gadgets.h"
#include "source/Stagemarks/keys/PluginIds.h"
#include "tests/support/PlainBulk.h"
#include "tests/support/PluginSession.h"

namespace {

using namespace host;
using tests::PluginSession;
namespace plain = tests::plain;
namespace sm = stagemarks;

// Processor time of this process, so that other programs on the machine count little.
double WorkMilliseconds(const std::function<void()>& work) {
  const std::clock_t begin = std::clock();
  work();
  return 1000.0 * static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
}

double Milliseconds(const std::function<void()>& work) {
  const auto begin = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin)
      .count();
}

void AddObjects(PluginSession& session, LONG count) {
  for (LONG i = 0; i < count; ++i) session.Doc().AppendObject(BaseObject::Alloc(Onull));
}

plain::Names CheckedNames(const PluginSession& session) {
  return plain::SortedNames(session.Store(sm::kListStore));
}

// Ten elements of a scene that has grown by a twentieth since.
class Grown {
 public:
  explicit Grown(LONG objects) {
    AddObjects(session_, objects);
    for (char name = 'A'; name < 'K'; ++name) session_.Record(std::string(1, name));
    AddObjects(session_, objects / 20);
    session_.Menu(sm::kCheckAll);
  }
  double Update() {
    return WorkMilliseconds([&] { session_.Menu(sm::kUpdateChecked); });
  }
  double UpdatePlainly() {
    return WorkMilliseconds([&] { plain::Update(session_.Doc(), CheckedNames(session_)); });
  }
  double SetSelected() {
    for (BaseObject* op = session_.Doc().GetFirstObject(); op; op = op->GetNext())
      op->SetBit(BIT_ACTIVE);
    return WorkMilliseconds([&] { session_.Menu(sm::kSetObjects); });
  }
  double SetSelectedPlainly() {
    for (BaseObject* op = session_.Doc().GetFirstObject(); op; op = op->GetNext())
      op->SetBit(BIT_ACTIVE);
    return WorkMilliseconds([&] { plain::SetObjects(session_.Doc(), CheckedNames(session_)); });
  }

 private:
  PluginSession session_;
};

// Elements that recorded nothing but render settings, in a random order of names; every tenth one
// is checked.
class Many {
 public:
  explicit Many(LONG elements) {
    BaseContainer records;
    BaseContainer list;
    for (LONG id = 0; id < elements; ++id) {
      RenderData* settings = RenderData::Alloc();
      session_.Doc().InsertRenderData(settings, nullptr, session_.Doc().GetFirstRenderData());
      BaseContainer render;
      render.SetLink(sm::kRenderLink, settings);
      const String name = LongToString(static_cast<LONG>(id * 7919LL % elements));
      BaseContainer record(id);
      record.SetString(sm::kName, name);
      record.SetContainer(sm::kRender, render);
      BaseContainer entry(id);
      entry.SetString(sm::kName, name);
      records.SetContainer(id, record);
      list.SetContainer(id, entry);
    }
    list.SetBool(sm::kListBuilt, TRUE);
    session_.Doc().GetDataInstance()->SetContainer(sm::kRecordStore, records);
    session_.Doc().GetDataInstance()->SetContainer(sm::kListStore, list);
    session_.PretendSaved("many.c4d");
    Rebuild();
    for (LONG line = 0; line < elements; line += 10) {
      engine::ToggleLine(session_.Dialog(), sm::kList, line, sm::kColumnChecked);
    }
  }
  double Rebuild() {
    EventAdd();
    return WorkMilliseconds([&] { session_.Deliver(); });
  }
  double RebuildPlainly() {
    return WorkMilliseconds([&] { plain::SortedNames(session_.Store(sm::kListStore)); });
  }
  double DeleteChecked() {
    return WorkMilliseconds([&] { session_.Menu(sm::kDeleteChecked); });
  }
  double DeleteAll() {
    return WorkMilliseconds([&] { session_.Menu(sm::kDeleteAll); });
  }
  double DeletePlainly() {
    plain::Names names = plain::SortedNames(session_.Store(sm::kListStore));
    names.resize(names.size() / 10);
    return WorkMilliseconds([&] { plain::Delete(session_.Doc(), names); });
  }

 private:
  PluginSession session_;
};

struct Row {
  const char* what;
  LONG size;
  LONG plainSize;
  double (*run)(LONG size);
  double (*plain)(LONG size);
};

constexpr Row kRows[] = {
    {"update 10 elements, objects (a twentieth new)", 200000, 4000,
     [](LONG n) { return Grown(n).Update(); }, [](LONG n) { return Grown(n).UpdatePlainly(); }},
    {"set all objects on 10 elements, objects", 100000, 2000,
     [](LONG n) { return Grown(n).SetSelected(); },
     [](LONG n) { return Grown(n).SetSelectedPlainly(); }},
    {"delete a tenth of the elements, elements", 10000, 1000,
     [](LONG n) { return Many(n).DeleteChecked(); },
     [](LONG n) { return Many(n).DeletePlainly(); }},
    {"delete all elements, elements", 10000, 0, [](LONG n) { return Many(n).DeleteAll(); },
     nullptr},
    {"rebuild the list, rows", 10000, 2000, [](LONG n) { return Many(n).Rebuild(); },
     [](LONG n) { return Many(n).RebuildPlainly(); }},
};

double Best(double (*run)(LONG), LONG size) {
  double best = run(size);
  for (int i = 0; i < 4; ++i) best = std::min(best, run(size));
  return best;
}

void Print(const Row& row) {
  const double once = Best(row.run, row.size);
  const double twice = Best(row.run, 2 * row.size);
  std::printf("%-46s %8d %10.1f ms %8d %10.1f ms  x %4.2f", row.what, row.size, once, 2 * row.size,
              twice, twice / once);
  if (row.plain) {
    const double fast = Best(row.run, row.plainSize);
    const double slow = row.plain(row.plainSize);
    const double slower = row.plain(2 * row.plainSize);
    std::printf("   step by step %6d: %9.1f ms (x %4.2f when doubled), here %7.1f ms",
                row.plainSize, slow, slower / slow, fast);
  }
  std::printf("\n");
  std::fflush(stdout);
}

// Exports `elements` files of a scene; the time per file, and that of saving the scene plainly as
// often.
void PrintExport(LONG elements, LONG objects) {
  PluginSession session;
  session.PretendSaved("scene.c4d");
  AddObjects(session, objects);
  for (LONG i = 0; i < elements; ++i) session.Record("E" + std::to_string(i));
  session.Menu(sm::kCheckAll);
  const std::string folder = session.Folder();
  engine::ChooseFromCombo(session.Dialog(), sm::kFileLayout, sm::kAsSaveFile);
  session.Person().ChooseNext(folder);
  const double exported = Milliseconds([&] { session.Press(sm::kGenerateFiles); }) / elements;
  const LONG saves = 10;
  const double saved =
      Milliseconds([&] {
        for (LONG i = 0; i < saves; ++i) {
          const std::string file = folder + "/plain" + std::to_string(i) + ".c4d";
          SaveDocument(&session.Doc(), Filename(file.c_str()), 0, FORMAT_C4DEXPORT);
        }
      }) /
      saves;
  std::printf(
      "export %4d elements of %7d objects: %8.2f ms a file, saving plainly %8.2f ms, x %4.2f\n",
      elements, objects, exported, saved, exported / saved);
  std::fflush(stdout);
}

}  // namespace

// With an argument: only the rows whose text contains it.
int main(int count, char** arguments) {
  const std::string wanted = count > 1 ? arguments[1] : "";
  for (const Row& row : kRows) {
    if (std::string(row.what).find(wanted) != std::string::npos) Print(row);
  }
  if (std::string("export").find(wanted) == std::string::npos) return 0;
  PrintExport(50, 100000);
  PrintExport(100, 100000);
  PrintExport(100, 50000);
  return 0;
}
