// How long does a person wait at the desktop with a big scene: 200,000 objects, 2,000 Stagemarks? Each act goes through the
// window, until it has come to rest; beside it stands the same act without a window, on the dialog and the scene alone, or a
// plain list of the toolkit with as many rows. Times are those of the main thread, which is what freezes a window; of the first
// picture it is the time that passes.
#include <QApplication>
#include <QEventLoop>
#include <QMenuBar>
#include <QStandardItemModel>
#include <QTimer>
#include <QTreeView>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <memory>

#include "engine/outside/RealOutside.h"
#include "engine/render/Renderer.h"
#include "engine/scene/Nodes.h"
#include "engine/scenefile/SceneFile.h"
#include "program/desktop/MainWindow.h"
#include "program/desktop/Theme.h"
#include "source/Stagemarks/keys/Gadgets.h"
#include "source/Stagemarks/keys/PluginIds.h"
#include "tests/support/ScratchFolder.h"

namespace {

using host::BaseDocument;
using host::BaseObject;
using host::LONG;

constexpr LONG kCheckAll = 10035;
constexpr LONG kAlong = 450;
constexpr double kSpace = 300;

double MainThreadSeconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double PassedSeconds() { return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count(); }

double Measure(double (*clock)(), const std::function<void()>& work) {
  const double begin = clock();
  work();
  return clock() - begin;
}

void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "%s\n", what);
  std::exit(1);
}

void Print(const char* what, double window, double plain, const char* besides) {
  std::printf("  %-22s %9.1f ms %9.1f ms %8.1f x   %s\n", what, window * 1e3, plain * 1e3, window / plain, besides);
}

// Lets everything happen that is posted, due or a consequence of it.
void Rest() {
  for (int i = 0; i < 3; ++i) {
    QEventLoop loop;
    QTimer::singleShot(20, &loop, &QEventLoop::quit);
    loop.exec();
  }
}

host::GeDialog& Dialog() { return *engine::OpenDialogs().front(); }

void Record(const char* name) {
  engine::TypeText(Dialog(), stagemarks::kNameField, host::String(name));
  Require(engine::PressButton(Dialog(), stagemarks::kRecord), "not recorded");
}

void Recall(LONG line) {
  engine::SelectLines(Dialog(), stagemarks::kList, {line});
  Require(engine::PressButton(Dialog(), stagemarks::kLoad), "not recalled");
}

// Groups of a hundred cubes, all of them side by side.
void Build(BaseDocument& doc, LONG objects) {
  BaseObject* group = nullptr;
  for (LONG i = 0; i < objects; ++i) {
    BaseObject* object = BaseObject::Alloc(i % 100 == 0 ? host::Onull : host::Ocube);
    object->SetName(host::String(("Object " + std::to_string(i)).c_str()));
    if (i % 100 == 0) {
      doc.AppendObject(group = object);
    } else {
      object->InsertUnderLast(group);
      host::Matrix frame;
      frame.off = host::Vector(kSpace * (i % kAlong), 0, kSpace * (i / kAlong));
      object->SetMl(frame);
    }
  }
}

void SelectAll(BaseDocument& doc) {
  for (BaseObject* object = doc.GetFirstObject(); object; object = engine::NextInTree(object)) {
    doc.SetActiveObject(object, host::SELECTION_ADD);
  }
}

// A row per object in the toolkit's own list, selected.
double SelectAllInPlainList(LONG rows) {
  QStandardItemModel model;
  QTreeView view;
  view.setModel(&model);
  view.setUniformRowHeights(true);
  view.setSelectionMode(QAbstractItemView::ExtendedSelection);
  QList<QStandardItem*> items;
  for (LONG i = 0; i < rows; ++i) items.append(new QStandardItem("Object"));
  model.appendColumn(items);
  view.show();
  Rest();
  return Measure(&MainThreadSeconds, [&] {
    view.selectAll();
    Rest();
  });
}

// What each act takes without a window.
struct Plain {
  double open = 0;
  double select = 0;
  double check = 0;
  double record = 0;
  double recall = 0;
};

void OpenPlainly(const std::string& path) {
  auto doc = engine::OpenSceneFile(path);
  Require(doc.Ok(), doc.Message().c_str());
  engine::RenderCaches caches;
  engine::PictureSetup setup;
  setup.width = 480;
  setup.height = 320;
  setup.draft = true;
  auto picture = engine::PictureInProgress::Begin(*doc.Value(), setup, caches);
  Require(picture.Ok(), picture.Message().c_str());
  Require(picture.Value()->Refine([](double) { return true; }), "no picture");
  BaseDocument::Free(doc.Value());
}

Plain MakeAndMeasure(engine::Application& application, const std::string& path, LONG objects, int stagemarks) {
  BaseDocument& doc = *application.NewDocument();
  Build(doc, objects);
  Require(application.ExecuteCommand(stagemarks::kPluginId), "the dialog did not open");
  for (int i = 0; i < stagemarks; ++i) Record(("State " + std::to_string(i)).c_str());
  Plain plain;
  plain.record = Measure(&MainThreadSeconds, [&] {
    Record("One more");
    application.DeliverEvents();
  });
  plain.recall = Measure(&MainThreadSeconds, [&] {
    Recall(0);
    application.DeliverEvents();
  });
  plain.check = Measure(&MainThreadSeconds, [&] { engine::ChooseMenu(Dialog(), kCheckAll); });
  plain.select = Measure(&MainThreadSeconds, [&] { SelectAll(doc); });
  doc.SetActiveObject(nullptr);
  Require(application.SaveDocumentAs(doc, path).Ok(), "not saved");
  plain.open = Measure(&PassedSeconds, [&] { OpenPlainly(path); });
  return plain;
}

QAction* Entry(desktop::MainWindow& window, const QString& menu, const QString& text) {
  for (QAction* top : window.menuBar()->actions()) {
    if (top->text().remove('&') != menu) continue;
    for (QAction* action : top->menu()->actions()) {
      if (action->text().remove('&').startsWith(text)) return action;
    }
  }
  return nullptr;
}

double InWindow(const std::function<void()>& act) {
  return Measure(&MainThreadSeconds, [&] {
    act();
    Rest();
  });
}

void MeasureWindow(desktop::MainWindow& window, const std::string& path, const Plain& plain, LONG objects) {
  Print("open, first picture",
        Measure(&PassedSeconds,
                [&] {
                  Require(window.Commands().Open(path), "not opened");
                  while (window.View().Picture().isNull()) QApplication::processEvents(QEventLoop::WaitForMoreEvents);
                }),
        plain.open, "reading the file, and a picture");
  Rest();
  QAction* selectAll = Entry(window, "Edit", "Select All");
  Require(selectAll, "no Select All");
  const double select = InWindow([&] { selectAll->trigger(); });
  Print("select all", select, plain.select, "the selection in the scene");
  Print("", select, SelectAllInPlainList(objects), "a plain list of as many rows");
  host::GetActiveDocument()->SetActiveObject(nullptr);
  Rest();
  Print("check all", InWindow([] { engine::ChooseMenu(Dialog(), kCheckAll); }), plain.check, "the dialog without a window");
  Print("record", InWindow([] { Record("At the window"); }), plain.record, "the dialog without a window");
  Print("recall", InWindow([] { Recall(0); }), plain.recall, "the dialog without a window");
  BaseDocument* copy = nullptr;
  const double cloning =
      Measure(&MainThreadSeconds, [&] { copy = static_cast<BaseDocument*>(host::GetActiveDocument()->GetClone(1024, nullptr)); });
  const double writing = Measure(&MainThreadSeconds, [&] { Require(engine::WriteScene(*copy).Ok(), "not written"); });
  BaseDocument::Free(copy);
  Print("autosave", cloning, writing, "writing it on the main thread");
}

int Run(LONG objects, int stagemarks) {
  const tests::ScratchFolder folder;
  qputenv("XDG_STATE_HOME", QByteArray::fromStdString(folder.Path()));
  desktop::DesktopPerson person;
  engine::RealOutside outside(person);
  const engine::OutsideInUse inUse(outside);
  engine::Application application(outside, {});
  Require(
      application.LoadPlugin(std::string(TEST_PLUGIN_DIR) + "/Stagemarks/Stagemarks.so").outcome == engine::LoadOutcome::Loaded,
      "the plug-in is not there");
  std::printf("%d objects, %d Stagemarks\n  %-22s %12s %12s\n", objects, stagemarks, "", "window", "without");
  const Plain plain = MakeAndMeasure(application, folder.Path() + "/big.c4d", objects, stagemarks);
  Dialog().Close();
  host::KillDocument(host::GetActiveDocument());
  application.NewDocument();
  desktop::MainWindow window(application, person, "");
  window.show();
  window.RestoreLayout();
  Require(application.ExecuteCommand(stagemarks::kPluginId), "the dialog did not open");
  Rest();
  MeasureWindow(window, folder.Path() + "/big.c4d", plain, objects);
  return 0;
}

}  // namespace

// Arguments: the number of objects and of Stagemarks.
int main(int count, char** words) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(count, words);
  desktop::ApplyTheme(application);
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  return Run(count > 1 ? std::atoi(words[1]) : 200000, count > 2 ? std::atoi(words[2]) : 2000);
}
