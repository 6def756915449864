// Hands that press, type, drag and choose whatever the desktop shows, decided by a seed. Boxes that
// come up are worked in, too, and answered. Only what would leave the scratch folder, or end the
// program, is kept from them: the choosing of files, which gets a place in the folder or nothing;
// fields with whole paths; scripts; the manual; quitting.
#include <unistd.h>

#include <QAbstractButton>
#include <QDrag>
#include <QWheelEvent>
#include <QtTest/QTest>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <iostream>

#include "engine/scene/NodeTypes.h"
#include "engine/scene/SceneDump.h"
#include "engine/scene/TreeWalk.h"
#include "engine/scenefile/SceneFile.h"
#include "engine/undo/Undo.h"
#include "program/desktop/ApplicationStyle.h"
#include "program/desktop/OpenDocument.h"
#include "tests/desktop/States.h"
#include "tests/reliability/Rounds.h"

namespace tests {

namespace fs = std::filesystem;

namespace {

constexpr int kEventsInOneRound = 200;

class Hands : public QObject {
 public:
  Hands(desk::Desk& desk, std::uint64_t seed) : desk_(desk), random_(seed) {}

  // Makes so many events, then closes what is open and lets the program come to rest.
  void Work(int count) {
    left_ = count;
    works_ = true;
    Go();
    while (left_ > 0 || Box()) QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    works_ = false;
    for (QWidget* window : QApplication::topLevelWidgets()) {
      if (window != &desk_.Window() && window->isVisible()) window->close();
    }
    desk::Desk::Rest();
  }

 private:
  std::size_t Below(std::size_t limit) { return random_() % limit; }
  bool Once(std::size_t in) { return Below(in) == 0; }
  template <class List>
  auto& OneOf(List& list) {
    return list[static_cast<decltype(std::size(list))>(Below(std::size(list)))];
  }

  static QWidget* Box() {
    QWidget* popup = QApplication::activePopupWidget();
    return popup ? popup : QApplication::activeModalWidget();
  }

  // The next event is asked for before this one is made: what comes up may have a loop of its own.
  void Go() {
    if (!works_) return;
    QTimer::singleShot(0, this, [this] { Go(); });
    if (left_ > 0) {
      --left_;
      Act();
    } else {
      QDrag::cancel();
      if (Box()) Leave(*Box());
    }
  }

  void Act() {
    desk_.Window().show();
    QWidget* box = Box();
    if (box && (Once(4) || qobject_cast<QFileDialog*>(box))) return Leave(*box);
    if (!box && Once(6)) return ChooseFromMenu();
    QWidget* window = box ? box : AnyWindow();
    switch (Below(8)) {
      case 0:
      case 1:
        return Type(*window);
      case 2:
        return Drag(Target(*window));
      case 3:
        return Turn(Target(*window));
      default:
        return Click(Target(*window));
    }
  }

  QWidget* AnyWindow() {
    std::vector<QWidget*> windows(3, &desk_.Window());
    for (QWidget* each : QApplication::topLevelWidgets()) {
      if (each->isVisible()) windows.push_back(each);
    }
    return OneOf(windows);
  }

  // Something inside of it that a person could meet.
  QWidget* Target(QWidget& window) {
    QWidget* at =
        window.childAt(static_cast<int>(Below(static_cast<std::size_t>(window.width()))),
                       static_cast<int>(Below(static_cast<std::size_t>(window.height()))));
    if (!at || Once(2)) {
      std::vector<QWidget*> all = {&window};
      for (QWidget* each : window.findChildren<QWidget*>()) {
        if (each->isVisible() && each->isEnabled() && !each->size().isEmpty()) all.push_back(each);
      }
      at = OneOf(all);
    }
    return IsKeptFrom(at) ? &window : at;
  }

  static bool IsKeptFrom(QWidget* widget) {
    const auto* line = qobject_cast<QLineEdit*>(widget);
    if (line && line->text().contains('/')) return true;
    for (; widget; widget = widget->parentWidget()) {
      if (dynamic_cast<desktop::ScriptConsole*>(widget)) return true;
    }
    return false;
  }

  QPoint Place(const QWidget& widget) {
    return {static_cast<int>(Below(static_cast<std::size_t>(std::max(1, widget.width())))),
            static_cast<int>(Below(static_cast<std::size_t>(std::max(1, widget.height()))))};
  }
  Qt::KeyboardModifiers Held() {
    const Qt::KeyboardModifiers all[] = {Qt::NoModifier,      Qt::NoModifier,    Qt::NoModifier,
                                         Qt::ControlModifier, Qt::ShiftModifier, Qt::AltModifier};
    return OneOf(all);
  }

  void Click(QPointer<QWidget> on) {
    const Qt::MouseButton button = Once(6) ? Qt::RightButton : Qt::LeftButton;
    const Qt::KeyboardModifiers held = Held();
    const QPoint place = Place(*on);
    const bool twice = Once(5);
    QTest::mousePress(on, button, held, place);
    if (on) QTest::mouseRelease(on, button, held, place);
    if (on && twice) QTest::mouseDClick(on, button, held, place);
    if (!on || button != Qt::RightButton) return;
    QContextMenuEvent menu(QContextMenuEvent::Mouse, place, on->mapToGlobal(place));
    QApplication::sendEvent(on, &menu);
  }

  void Drag(QPointer<QWidget> on) {
    const Qt::MouseButton buttons[] = {Qt::LeftButton, Qt::LeftButton, Qt::MiddleButton,
                                       Qt::RightButton};
    const Qt::MouseButton button = OneOf(buttons);
    const Qt::KeyboardModifiers held = Held();
    QTest::mousePress(on, button, held, Place(*on));
    for (int i = 0; i < 3 && on; ++i) QTest::mouseMove(on, Place(*on));
    if (on) QTest::mouseRelease(on, button, held, Place(*on));
  }

  void Turn(QPointer<QWidget> on) {
    const QPoint place = Place(*on);
    QWheelEvent wheel(place, on->mapToGlobal(place), {}, {0, Once(2) ? 120 : -120}, Qt::NoButton,
                      Held(), Qt::NoScrollPhase, false);
    QApplication::sendEvent(on, &wheel);
  }

  void Type(QWidget& window) {
    const Qt::Key keys[] = {Qt::Key_Return, Qt::Key_Tab,    Qt::Key_Escape, Qt::Key_Delete,
                            Qt::Key_Up,     Qt::Key_Down,   Qt::Key_Left,   Qt::Key_Right,
                            Qt::Key_Home,   Qt::Key_End,    Qt::Key_PageUp, Qt::Key_PageDown,
                            Qt::Key_Space,  Qt::Key_F2,     Qt::Key_Plus,   Qt::Key_Minus,
                            Qt::Key_A,      Qt::Key_D,      Qt::Key_0,      Qt::Key_7,
                            Qt::Key_Comma,  Qt::Key_Insert, Qt::Key_Menu,   Qt::Key_Backspace};
    const Qt::Key shortcuts[] = {Qt::Key_Z, Qt::Key_Z, Qt::Key_A, Qt::Key_C, Qt::Key_V, Qt::Key_X,
                                 Qt::Key_D, Qt::Key_S, Qt::Key_B, Qt::Key_N, Qt::Key_L, Qt::Key_M};
    QWidget* focus = window.focusWidget();
    QWidget* on = focus && focus->isVisible() ? focus : &window;
    if (IsKeptFrom(on)) return;
    if (Once(3)) {
      const Qt::KeyboardModifiers held = Once(3) ? Qt::ControlModifier | Qt::ShiftModifier
                                                 : Qt::KeyboardModifiers(Qt::ControlModifier);
      return QTest::keyClick(on, OneOf(shortcuts), held);
    }
    QTest::keyClick(on, OneOf(keys), Held());
  }

  void ChooseFromMenu() {
    static const QStringList kKept = {"Quit", "Manual", "Run File...", "Console"};
    QMenu* menu = nullptr;
    QList<QAction*> entries = desk_.Window().menuBar()->actions();
    while (!entries.isEmpty()) {
      QAction* entry = OneOf(entries);
      if (!entry->isEnabled() || entry->isSeparator()) return;
      if (kKept.contains(entry->text().remove('&')) || entry->text().startsWith("Run ")) return;
      menu = entry->menu();
      if (!menu) return entry->trigger();
      emit menu->aboutToShow();
      entries = menu->actions();
    }
  }

  // Answers a box in one of the ways that it has; a chooser of files gets a place in the folder.
  void Leave(QWidget& box) {
    auto* dialog = qobject_cast<QDialog*>(&box);
    if (!dialog) {
      box.close();
    } else if (auto* chooser = qobject_cast<QFileDialog*>(dialog)) {
      Answer(*chooser);
    } else if (const auto buttons = dialog->findChildren<QAbstractButton*>();
               !buttons.isEmpty() && left_ > 0 && Once(2)) {
      if (QAbstractButton* button = OneOf(buttons); !IsKeptFrom(button)) button->click();
    } else {
      dialog->reject();
    }
  }

  void Answer(QFileDialog& chooser) {
    if (left_ == 0 || Once(2)) return chooser.reject();
    const char* const names[] = {"other.c4d", "made.c4d", "made.png", "folder"};
    chooser.findChild<QLineEdit*>()->setText(
        QString::fromStdString(desk_.Folder() + "/" + OneOf(names)));
    QMetaObject::invokeMethod(&chooser, "accept");
  }

  desk::Desk& desk_;
  std::mt19937_64 random_;
  int left_ = 0;
  bool works_ = false;
};

// Message with the seed that repeats this round, for whoever finds the program dead or hanging.
char present[100];

// SIGALRM says that the round took too long.
extern "C" void SayWhichRound(int signal) {
  for (const char* text : {static_cast<const char*>(present), sigabbrev_np(signal), "\n"})
    (void)!write(STDERR_FILENO, text, std::strlen(text));
  std::signal(signal, SIG_DFL);
  raise(signal);
}

// Leaves out messages about actions that a screen in memory does not support.
void SayWhatIsNew(QtMsgType, const QMessageLogContext&, const QString& text) {
  if (!text.startsWith("This plugin does not support")) std::cerr << text.toStdString() << "\n";
}

// Sample scenes as files of ours, made once.
class Samples {
 public:
  Samples() {
    fs::copy(TEST_SOURCE_DIR "/scenes/teapot", scratch_ / "0", fs::copy_options::recursive);
    fs::rename(scratch_ / "0/teapot.c4d", scratch_ / "0/s.c4d");
    fs::rename(scratch_ / "0/teapot_SM", scratch_ / "0/s_SM");
    const char* const imported[] = {"scenes/spider/spider.obj", "scenes/dungeon/dungeon.gltf",
                                    "tests/scenes/gltf/Cameras.gltf"};
    for (const char* file : imported) {
      const std::string folder = scratch_ / std::to_string(count_++);
      fs::create_directories(folder);
      const ChildResult made =
          RunChild(TEST_BINARY_DIR "/bin/stagemarks",
                   {"import", std::string(TEST_SOURCE_DIR "/") + file, folder + "/s.c4d"});
      if (made.status != 0) throw std::runtime_error(made.out + made.err);
    }
  }
  // Copies one into an existing folder, as "s.c4d" and what belongs to it.
  void CopyTo(const std::string& folder, std::uint64_t which) const {
    fs::copy(scratch_ / std::to_string(which % static_cast<std::uint64_t>(count_)), folder,
             fs::copy_options::recursive);
  }

 private:
  ScratchFolder scratch_;
  int count_ = 1;
};

std::string Difference(const std::string& was, const std::string& is) {
  std::string text;
  for (const std::string& line : engine::DumpDifference(was, is, 6)) text += "\n    " + line;
  return text;
}

void CheckSaved(desk::Desk& desk, const std::string& what, Findings& findings) {
  const std::string path = desk.Folder() + "/checked.c4d";
  const engine::Status saved = desk.App().SaveDocumentAs(desk::Scene(), path);
  findings.Require(saved.Ok(), what + "cannot be saved: " + saved.Message());
  if (!saved) return;
  const auto opened = engine::ReadScene(ReadText(path));
  findings.Require(opened.Ok(), what + "the saved scene cannot be opened: " + opened.Message());
  if (!opened) return;
  const std::string dump = engine::DumpDocument(desk::Scene());
  const std::string again = engine::DumpDocument(*opened.Value());
  findings.Require(dump == again, what + "the saved scene is another:" + Difference(dump, again));
}

void CheckPlaces(const desk::Desk& desk, engine::Ledger& ledger, const std::string& what,
                 Findings& findings) {
  for (const std::string& path : ledger.WrittenSince(0))
    findings.Require(path.starts_with(desk.Folder()), what + "wrote \"" + path + "\"");
}

// The document but for what undo does not give back: what is selected, and the bit that the plug-in
// turns over for each layer that it loads, so that the host looks at the layers again.
std::string DumpWhatUndoKnows(host::BaseDocument& doc) {
  constexpr host::LONG kLayersChangedBit = 32;
  doc.ChangeNBit(kLayersChangedBit, host::NBIT_CLEAR);
  for (host::GeListNode* node = engine::NextInside(doc, doc); node;
       node = engine::NextInside(*node, doc)) {
    const engine::NodeKind kind = engine::KindOf(*node);
    if (kind != engine::NodeKind::NodeMaster && kind != engine::NodeKind::Node)
      static_cast<host::BaseList2D*>(node)->DelBit(host::BIT_ACTIVE);
  }
  return engine::DumpDocument(doc);
}

void CheckUndo(host::BaseDocument& doc, const std::string& first, const std::string& what,
               Findings& findings) {
  const std::string last = DumpWhatUndoKnows(doc);
  int steps = 0;
  while (doc.DoUndo()) ++steps;
  const std::string back = DumpWhatUndoKnows(doc);
  findings.Require(back == first, what + "undo to the start:" + Difference(first, back));
  for (int i = 0; i < steps; ++i) doc.DoRedo();
  const std::string again = DumpWhatUndoKnows(doc);
  findings.Require(again == last, what + "redo to the end:" + Difference(last, again));
}

void OneRound(const Samples& samples, std::uint64_t seed, const RoundBudget& more,
              Findings& findings) {
  desk::Desk desk;
  samples.CopyTo(desk.Folder(), seed);
  fs::current_path(desk.Folder());
  const std::string what = "round " + std::to_string(seed) + ": ";
  if (!desk.Window().Commands().Open(desk.Folder() + "/s.c4d")) {
    findings.Require(false, what + "the sample cannot be opened");
    return;
  }
  desk::Desk::Rest();
  desk::RecordState(desk, "Dawn");
  host::BaseDocument* const doc = &desk::Scene();
  const host::ULLONG document = desktop::IdentityOf(doc);
  engine::ClearUndo(*doc);
  const std::string first = DumpWhatUndoKnows(*doc);
  int count = 0;
  while (count < kEventsInOneRound && more(findings.executions + static_cast<std::uint64_t>(count)))
    ++count;
  Hands(desk, seed).Work(count);
  findings.executions += static_cast<std::uint64_t>(count);
  constexpr std::size_t kStepsKept = 100;
  // Another document may stand where this one was.
  if (desktop::IdentityOf(&desk::Scene()) == document &&
      engine::DoneNames(*doc).size() < kStepsKept)
    CheckUndo(*doc, first, what, findings);
  CheckSaved(desk, what, findings);
  CheckPlaces(desk, desk.Services().ledger, what, findings);
}

}  // namespace

Findings WindowEvents(std::uint64_t seed, const RoundBudget& more) {
  constexpr unsigned kSecondsForOneRound = 300;  // longer is a hang
  qputenv("QT_QPA_PLATFORM",
          "offscreen:configfile=" TEST_SOURCE_DIR "/tests/desktop/screens/large.json");
  const ScratchFolder runtime;
  qputenv("XDG_RUNTIME_DIR", QByteArray::fromStdString(runtime.Path()));
  qputenv("PATH", "");  // no program of the system is started
  qInstallMessageHandler(SayWhatIsNew);
  QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
  int count = 1;
  char name[] = "reliability";
  char* words[] = {name, nullptr};
  QApplication application(count, words);
  desktop::ApplyTheme(application);
  for (const int signal : {SIGSEGV, SIGABRT, SIGBUS, SIGFPE, SIGALRM})
    std::signal(signal, SayWhichRound);
  const Samples samples;
  Findings findings;
  for (std::uint64_t round = seed; more(findings.executions); ++round) {
    std::snprintf(present, sizeof present, "window-events died in round %llu by SIG",
                  static_cast<unsigned long long>(round));
    alarm(kSecondsForOneRound);
    OneRound(samples, round, more, findings);
  }
  alarm(0);
  return findings;
}

const std::map<std::string, Rounds>& Kinds() {
  static const std::map<std::string, Rounds> kinds = {{"window-events", WindowEvents}};
  return kinds;
}

}  // namespace tests
