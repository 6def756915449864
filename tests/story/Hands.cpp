#include "tests/story/Hands.h"

#include <QEventLoop>
#include <QProcess>
#include <stdexcept>

#include "tests/desktop/Pictures.h"

namespace hands {

namespace {

constexpr int kMillisecondsToRest = 120;

QStringList At(const QWidget& widget, QPoint place) {
  const QPoint global = widget.mapToGlobal(place);
  return {"mousemove", QString::number(global.x()), QString::number(global.y())};
}

void Do(const QStringList& arguments) {
  QProcess program;
  QEventLoop loop;
  QObject::connect(&program, &QProcess::finished, &loop, &QEventLoop::quit);
  program.setProcessChannelMode(QProcess::ForwardedChannels);
  program.start("xdotool", arguments);
  if (!program.waitForStarted()) throw std::runtime_error("cannot start xdotool");
  loop.exec();
  pictures::Settle(kMillisecondsToRest);
}

}  // namespace

void Click(const QWidget& widget, QPoint place, int times) {
  Do(At(widget, place) + QStringList{"sleep", "0.05", "click", "--repeat", QString::number(times), "--delay", "60", "1"});
}

void Click(const QWidget& widget) { Click(widget, widget.rect().center()); }

void Click(QAbstractItemView& view, const QModelIndex& cell) {
  view.scrollTo(cell);
  pictures::Settle();
  Click(*view.viewport(), view.visualRect(cell).center());
}

void Drag(const QWidget& from, QPoint fromPlace, const QWidget& to, QPoint toPlace) {
  QStringList acts = At(from, fromPlace) + QStringList{"sleep", "0.1", "mousedown", "1"};
  const QPoint near = fromPlace + QPoint(12, 12);
  for (const QStringList& step :
       {At(from, near), At(from, near + QPoint(8, 8)), At(to, toPlace - QPoint(0, 3)), At(to, toPlace)}) {
    acts += QStringList{"sleep", "0.2"} + step;
  }
  Do(acts + QStringList{"sleep", "0.4", "mouseup", "1", "sleep", "0.2"});
}

void Type(const QWidget& field, const QString& text) {
  Click(field);
  Press("ctrl+a");
  Do({"type", "--delay", "12", text});
}

void Press(const QString& keys) { Do({"key", keys}); }

void Choose(QMenuBar& bar, const QString& menu, const QString& entry) {
  for (QAction* top : bar.actions()) {
    if (top->text().remove('&') != menu) continue;
    Click(bar, bar.actionGeometry(top).center());
    for (QAction* action : top->menu()->actions()) {
      if (action->text().remove('&').startsWith(entry)) return Click(*top->menu(), top->menu()->actionGeometry(action).center());
    }
  }
  throw std::runtime_error("no menu entry " + entry.toStdString());
}

}  // namespace hands
