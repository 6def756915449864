#include "tests/story/Hands.h"

#include <QApplication>
#include <QEventLoop>
#include <QPointer>
#include <QProcess>
#include <QWindow>
#include <QtTest/QTest>
#include <functional>
#include <stdexcept>

#include "tests/desktop/Pictures.h"

namespace hands {

namespace {

// Counts what the window system brings. A click goes through the window manager first, which takes
// its time.
class Arrivals : public QObject {
 public:
  Arrivals() { qApp->installEventFilter(this); }
  int Of(QEvent::Type type) const { return counts_.value(type); }

 protected:
  bool eventFilter(QObject* receiver, QEvent* event) override {
    if (receiver->isWindowType()) ++counts_[event->type()];
    return false;
  }

 private:
  QHash<QEvent::Type, int> counts_;
};

// Where in a window the window system says that the pointer is. A window that has just come up may
// be moved by the window manager, and knows of it later.
class Pointer : public QObject {
 public:
  Pointer() { qApp->installEventFilter(this); }
  bool IsAt(const QWidget& widget, QPoint place) const {
    const QWidget& window = *widget.window();
    return window_ == window.windowHandle() && place_ == widget.mapTo(&window, place);
  }

 protected:
  bool eventFilter(QObject* receiver, QEvent* event) override {
    const bool isMove = event->type() == QEvent::MouseMove || event->type() == QEvent::Enter;
    if (isMove && receiver->isWindowType()) {
      window_ = receiver;
      place_ = static_cast<const QSinglePointEvent*>(event)->position().toPoint();
    }
    return false;
  }

 private:
  QPointer<QObject> window_;
  QPoint place_;
};

QStringList At(const QWidget& widget, QPoint place) {
  const QPoint global = widget.mapToGlobal(place);
  return {"mousemove", QString::number(global.x()), QString::number(global.y())};
}

// Calls `then` when the acts are done; at once the event loop goes on.
void Begin(const QStringList& acts, std::function<void()> then) {
  auto* program = new QProcess;
  QObject::connect(program, &QProcess::finished, program, [program, then = std::move(then)] {
    program->deleteLater();
    then();
  });
  program->setProcessChannelMode(QProcess::ForwardedChannels);
  program->start("xdotool", acts);
  if (!program->waitForStarted()) throw std::runtime_error("cannot start xdotool");
}

void Do(const QStringList& acts) {
  QEventLoop loop;
  Begin(acts, [&loop] { loop.quit(); });
  loop.exec();
}

void WaitFor(const std::function<bool()>& arrived, const std::string& what) {
  if (!pictures::WaitFor(arrived)) throw std::runtime_error(what + " does not arrive");
}

// Until what the window system has sent so far has been handled with all that comes of it.
void Rest() {
  QGuiApplication::sync();
  pictures::Settle();
}

// The place is looked up anew until the pointer is there. By way of the place beside it, since one
// that is there already would not be told of.
void MoveOnto(const QWidget& widget, QPoint place, const std::string& what) {
  constexpr int kTries = 30;
  constexpr int kLongestWay = 1000;
  const Pointer pointer;
  for (int i = 0; i < kTries; ++i) {
    Do(At(widget, place + QPoint(1, 0)) + At(widget, place));
    if (QTest::qWaitFor([&] { return pointer.IsAt(widget, place); }, kLongestWay)) return;
  }
  throw std::runtime_error("the pointer for " + what + " does not arrive");
}

// Where to let go: in the middle, or just inside the edge, which the toolkit takes for the place
// between two rows.
QPoint PlaceIn(const Cell& cell) {
  const QRect place = cell.view.visualRect(cell.index);
  const int x = place.left() + std::min(place.width() / 2, 60);
  return {x, cell.where == Cell::Where::On      ? place.center().y()
             : cell.where == Cell::Where::Above ? place.top() + 1
                                                : place.bottom() - 1};
}

}  // namespace

void Click(const QWidget& widget, QPoint place, int times) {
  const std::string what = QString("a click on a %1 \"%2\" in \"%3\"")
                               .arg(widget.metaObject()->className(), widget.objectName(),
                                    widget.window()->windowTitle())
                               .toStdString();
  MoveOnto(widget, place, what);
  const Arrivals arrivals;
  Do({"click", "--repeat", QString::number(times), "--delay", "60", "1"});
  WaitFor([&] { return arrivals.Of(QEvent::MouseButtonRelease) >= times; }, what);
  Rest();
}

void Click(const QWidget& widget) { Click(widget, widget.rect().center()); }

void Click(QAbstractItemView& view, const QModelIndex& cell) {
  view.scrollTo(cell);
  Rest();
  Click(*view.viewport(), view.visualRect(cell).center());
}

// While something is dragged the toolkit stays in a loop of its own, within the first loop here: so
// each step begins the next.
void Drag(const Cell& from, const Cell& to) {
  if (!from.index.isValid() || !to.index.isValid())
    throw std::runtime_error("there is no such row");
  if (!to.view.viewport()->rect().contains(PlaceIn(to)))
    throw std::runtime_error("the row to drop on is not in sight");
  const SingleClicks single;
  const QWidget& start = *from.view.viewport();
  const QPoint hold = from.view.visualRect(from.index).center();
  const Arrivals arrivals;
  QEventLoop loop;
  const auto letGo = [&] { Begin({"sleep", "0.5", "mouseup", "1"}, [&loop] { loop.quit(); }); };
  const auto carry = [&] {
    const QWidget& end = *to.view.viewport();
    Begin(At(end, PlaceIn(to) - QPoint(6, 0)) + QStringList{"sleep", "0.1"} + At(end, PlaceIn(to)),
          letGo);
  };
  Begin(At(start, hold) + QStringList{"sleep", "0.1", "mousedown", "1", "sleep", "0.1"} +
            At(start, hold + QPoint(12, 4)) + QStringList{"sleep", "0.1"} +
            At(start, hold + QPoint(16, 5)) + QStringList{"sleep", "0.2"},
        carry);
  loop.exec();
  WaitFor([&] { return arrivals.Of(QEvent::Drop) > 0 || arrivals.Of(QEvent::DragLeave) > 0; },
          "what is dragged");
  Rest();
}

void Type(const QWidget& field, const QString& text) {
  Click(field);
  Press("ctrl+a");
  Do({"type", "--delay", "12", text});
  Rest();
}

void Press(const QString& keys) {
  Do({"key", keys});
  Rest();
}

void Choose(QMenuBar& bar, const QString& menu, const QString& entry) {
  for (QAction* top : bar.actions()) {
    if (top->text().remove('&') != menu) continue;
    Click(bar, bar.actionGeometry(top).center());
    for (QAction* action : top->menu()->actions()) {
      if (action->text().remove('&').startsWith(entry))
        return Click(*top->menu(), top->menu()->actionGeometry(action).center());
    }
  }
  throw std::runtime_error("no menu entry " + entry.toStdString());
}

}  // namespace hands
