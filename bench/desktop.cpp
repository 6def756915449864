// How long does a person wait at the desktop with a big scene: 200,000 objects, 2,000 Stagemarks?
// Each act goes through the window, until it has come to rest; beside it stands the same act
// without a window, on the dialog and the scene alone, or a plain list of the toolkit with as many
// rows. Times are those of the main thread, which is what freezes a window; of the first picture it
// is the time that passes. The longest stretch is the most that passes on the main thread between
// two turns of the event loop: what a person feels.
#include <QApplication>
#include <QEventLoop>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenuBar>
#include <QProgressDialog>
#include <QStandardItemModel>
#include <QTimer>
#include <QTreeView>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <map>

#include "engine/editing/ObjectCommands.h"
#include "engine/editing/Selection.h"
#include "engine/outside/SystemServices.h"
#include "engine/render/Renderer.h"
#include "engine/scene/NewNodes.h"
#include "engine/scene/TreeWalk.h"
#include "engine/scenefile/SceneFile.h"
#include "engine/undo/Undo.h"
#include "program/desktop/ApplicationStyle.h"
#include "program/desktop/MainWindow.h"
#include "program/desktop/Text.h"
#include "program/desktop/background/DeferredDeletion.h"
#include "program/desktop/background/DocumentBusy.h"
#include "program/desktop/render/SheetMaker.h"
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

double PassedSeconds() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

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

// The time on the main thread, and its longest stretch between two turns of the event loop.
struct InWindow {
  double all = 0;
  double longest = 0;
};

void Print(const char* what, const InWindow& window, double plain, const char* besides) {
  std::printf("  %-22s %8.1f ms %8.1f ms %8.1f ms %6.1f x   %s\n", what, window.longest * 1e3,
              window.all * 1e3, plain * 1e3, window.all / plain, besides);
}

// Lets everything happen that is posted, due or a consequence of it.
void Rest() {
  for (int i = 0; i < 3 || desktop::IsDocumentBusy(); ++i) {
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

void Press(QWidget& widget, int key, Qt::KeyboardModifiers with) {
  for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
    QKeyEvent event(type, key, with);
    QApplication::sendEvent(&widget, &event);
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

// Time of each act without a window, by its name.
using Seconds = std::map<std::string, double>;

// The names and places of all that is selected, as attributes show them.
std::size_t ReadSelected(const BaseDocument& doc) {
  std::size_t read = 0;
  for (const BaseObject* object : engine::SelectedObjects(doc)) {
    read += object->GetName().Content() && object->GetMl().off.y == 0 ? 1 : 0;
  }
  return read;
}

std::size_t CountNames(const BaseDocument& doc, const QString& part) {
  std::size_t found = 0;
  for (const BaseObject* object = doc.GetFirstObject(); object;
       object = engine::NextInTree(object)) {
    found += desktop::ToQt(object->GetName()).contains(part, Qt::CaseInsensitive) ? 1 : 0;
  }
  return found;
}

void OpenPlainly(const engine::Services& services, const std::string& path) {
  auto doc = engine::OpenSceneFile(services, path);
  Require(doc.Ok(), doc.Message().c_str());
  engine::RenderCaches caches;
  engine::PictureSetup setup;
  setup.width = 480;
  setup.height = 320;
  setup.draft = true;
  auto picture = engine::PictureInProgress::Begin(*doc.Value(), services.files, setup, caches);
  Require(picture.Ok(), picture.Message().c_str());
  Require(picture.Value()->Refine([](double) { return true; }), "no picture");
}

void MeasureEdits(BaseDocument& doc, Seconds& plain) {
  const auto measure = [&](const char* what, const std::function<void()>& act) {
    plain[what] = Measure(&MainThreadSeconds, act);
  };
  measure("select", [&] { engine::SelectAll(doc); });
  measure("attributes", [&] { Require(ReadSelected(doc) > 0, "nothing read"); });
  measure("filter", [&] { Require(CountNames(doc, "77") > 0, "nothing found"); });
  measure("duplicate", [&] { engine::RunWhole(doc, engine::DuplicateSelected(doc)); });
  measure("undo duplicate", [&] { doc.DoUndo(); });
  engine::SelectAll(doc);
  measure("delete", [&] { engine::RunWhole(doc, engine::DeleteSelected(doc)); });
  measure("undo delete", [&] { doc.DoUndo(); });
  engine::ClearUndo(doc);
  doc.SetActiveObject(nullptr);
}

Seconds MakeAndMeasure(engine::Application& application, const std::string& path, LONG objects,
                       int stagemarks) {
  BaseDocument& doc = *application.NewDocument();
  Build(doc, objects);
  Require(application.ExecuteCommand(stagemarks::kPluginId), "the dialog did not open");
  for (int i = 0; i < stagemarks; ++i) Record(("State " + std::to_string(i)).c_str());
  Seconds plain;
  plain["record"] = Measure(&MainThreadSeconds, [&] {
    Record("One more");
    application.DeliverEvents();
  });
  plain["recall"] = Measure(&MainThreadSeconds, [&] {
    Recall(0);
    application.DeliverEvents();
  });
  plain["check"] = Measure(&MainThreadSeconds, [&] { engine::ChooseMenu(Dialog(), kCheckAll); });
  MeasureEdits(doc, plain);
  plain["save"] = Measure(
      &PassedSeconds, [&] { Require(application.SaveDocumentAs(doc, path).Ok(), "not saved"); });
  plain["open"] = Measure(&PassedSeconds, [&] { OpenPlainly(application.GetServices(), path); });
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

// Measures from turn to turn of the event loop, for as long as it lives. While work shows its
// progress each drawing of that counts.
class Turns : public QObject {
 public:
  Turns() {
    startTimer(1);
    QApplication::instance()->installEventFilter(this);
  }
  InWindow Taken() {
    Turn();
    return {last_ - begin_, longest_};
  }

 protected:
  void timerEvent(QTimerEvent*) override { Turn(); }
  bool eventFilter(QObject* receiver, QEvent* event) override {
    if (event->type() == QEvent::Paint && qobject_cast<QProgressDialog*>(receiver->parent()))
      Turn();
    return false;
  }

 private:
  void Turn() {
    const double now = MainThreadSeconds();
    longest_ = std::max(longest_, now - last_);
    last_ = now;
  }

  const double begin_ = MainThreadSeconds();
  double last_ = begin_;
  double longest_ = 0;
};

InWindow Watch(const std::function<void()>& act) {
  Turns turns;
  act();
  Rest();
  return turns.Taken();
}

InWindow Open(desktop::MainWindow& window, const std::string& path) {
  Turns turns;
  const double passed = Measure(&PassedSeconds, [&] {
    Require(window.Commands().Open(path), "not opened");
    while (window.View().Picture().isNull())
      QApplication::processEvents(QEventLoop::WaitForMoreEvents);
  });
  Rest();
  return {passed, turns.Taken().longest};
}

void MeasureSelecting(desktop::MainWindow& window, const Seconds& plain, LONG objects) {
  const auto selectAll = [&] { Entry(window, "Edit", "Select All")->trigger(); };
  const InWindow select = Watch(selectAll);
  Print("select all", select, plain.at("select"), "the selection in the scene");
  Print("", select, SelectAllInPlainList(objects), "a plain list of as many rows");
  const auto change = [] {
    host::GetActiveDocument()->SetChanged();
    host::EventAdd();
  };
  Print("attributes of all", Watch(change), plain.at("attributes"),
        "names and places of the objects");
  host::GetActiveDocument()->SetActiveObject(nullptr);
  host::EventAdd();
  Rest();
  desktop::ObjectTree& tree = window.Objects();
  Print("unfold all", Watch([&] { tree.UnfoldAll(); }), plain.at("select"),
        "the selection in the scene");
  tree.setCurrentIndex(tree.model()->index(0, 0));
  tree.setFocus();
  Rest();
  const auto selectToEnd = [&] { Press(tree, Qt::Key_End, Qt::ShiftModifier); };
  Print("shift+end", Watch(selectToEnd), plain.at("select"), "the selection in the scene");
  QLineEdit& search = *tree.parentWidget()->findChild<QLineEdit*>();
  Print("search: first key", Watch([&] { search.setText("7"); }), plain.at("filter"),
        "a look at all names");
  Print("search: next key", Watch([&] { search.setText("77"); }), plain.at("filter"),
        "a look at all names");
  Print("search: end", Watch([&] { search.clear(); }), plain.at("filter"), "a look at all names");
}

void MeasureEdits(desktop::MainWindow& window, const Seconds& plain) {
  const auto entry = [&](const char* text) {
    return [&window, text] { Entry(window, "Edit", text)->trigger(); };
  };
  entry("Select All")();
  Rest();
  Print("duplicate all", Watch(entry("Duplicate")), plain.at("duplicate"), "the scene alone");
  Print("undo that", Watch(entry("Undo")), plain.at("undo duplicate"), "the scene alone");
  entry("Select All")();
  Rest();
  Print("delete all", Watch(entry("Delete")), plain.at("delete"), "the scene alone");
  Print("undo that", Watch(entry("Undo")), plain.at("undo delete"), "the scene alone");
}

// Its first states, for some seconds.
void MeasureSheet(engine::FileSystem& files, const Seconds& plain) {
  constexpr double kSeconds = 3;
  int states = 0;
  Turns turns;
  desktop::SheetMaker maker(files, *host::GetActiveDocument(),
                            [&](const desktop::SheetNews&) { ++states; });
  const double begin = PassedSeconds();
  while (PassedSeconds() - begin < kSeconds)
    QApplication::processEvents(QEventLoop::WaitForMoreEvents);
  maker.Stop();
  InWindow taken = turns.Taken();
  taken.all /= std::max(1, states);
  Print("contact sheet, a state", taken, plain.at("recall"), "recalling it without a window");
}

void MeasureWindow(desktop::MainWindow& window, const std::string& path, const Seconds& plain,
                   LONG objects) {
  std::printf("  %-22s %11s %11s %11s\n", "", "longest", "window", "without");
  Print("open, first picture", Open(window, path), plain.at("open"),
        "reading the file, and a picture");
  MeasureSelecting(window, plain, objects);
  MeasureEdits(window, plain);
  Print("check all", Watch([] { engine::ChooseMenu(Dialog(), kCheckAll); }), plain.at("check"),
        "the dialog without a window");
  Print("record", Watch([] { Record("At the window"); }), plain.at("record"),
        "the dialog without a window");
  Print("recall", Watch([] { Recall(0); }), plain.at("recall"), "the dialog without a window");
  MeasureSheet(window.App().GetServices().files, plain);
  engine::OwnedDocument copy;
  desktop::DeferredDeletion deletion;
  const double cloning =
      Measure(&MainThreadSeconds, [&] { copy = engine::CopyOf(*host::GetActiveDocument()); });
  const double writing =
      Measure(&MainThreadSeconds, [&] { Require(engine::WriteScene(*copy).Ok(), "not written"); });
  const InWindow freeing = Watch([&] { deletion.Take(std::move(copy)); });
  Print("autosave", {cloning + freeing.all, std::max(cloning, freeing.longest)}, writing,
        "writing it on the main thread");
  Print("save",
        Watch([&] { Require(window.Commands().Save(*host::GetActiveDocument()), "not saved"); }),
        plain.at("save"), "saving without a window");
}

int Run(LONG objects, int stagemarks) {
  const tests::ScratchFolder folder;
  qputenv("XDG_STATE_HOME", QByteArray::fromStdString(folder.Path()));
  desktop::DesktopPerson person;
  const engine::SystemServices services(person);
  engine::Application application(services.Get(), {});
  Require(application.LoadPlugin(TEST_PLUGIN_DIR "/Stagemarks/Stagemarks.so").outcome ==
              engine::LoadOutcome::Loaded,
          "the plug-in is not there");
  std::printf("%d objects, %d Stagemarks\n", objects, stagemarks);
  const Seconds plain =
      MakeAndMeasure(application, folder.Path() + "/big.c4d", objects, stagemarks);
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
