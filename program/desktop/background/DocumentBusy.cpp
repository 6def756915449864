#include "program/desktop/background/DocumentBusy.h"

#include <QAbstractEventDispatcher>
#include <QPointer>
#include <deque>

#include "engine/dialog/Dialogs.h"

namespace desktop {

namespace {

// Counted, since one may stand inside of another. Main thread only.
int busy = 0;

// The acts that wait, until the event loop finds the documents free before it waits itself. Before
// the loop waits, and not by a timer: then all that was going on has returned for sure.
class WaitingActs : public QObject {
 public:
  WaitingActs() {
    connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, this,
            [this] {
              if (!acts_.empty() && !IsDocumentBusy()) RunAll();
            });
  }

  void Add(QObject* context, std::function<void()> act) {
    acts_.emplace_back(context, std::move(act));
  }

 private:
  // An act may begin something that the ones behind it wait for again.
  void RunAll() {
    while (!acts_.empty() && !IsDocumentBusy()) {
      const auto [context, act] = std::move(acts_.front());
      acts_.pop_front();
      if (context) act();
    }
  }

  std::deque<std::pair<QPointer<QObject>, std::function<void()>>> acts_;
};

}  // namespace

DocumentBusy::DocumentBusy() { ++busy; }
DocumentBusy::~DocumentBusy() { --busy; }

// A call of a plug-in counts by itself, whoever made it.
bool IsDocumentBusy() { return busy > 0 || engine::InsideDialogCall(); }

void WhenDocumentIsFree(QObject* context, std::function<void()> act) {
  if (!IsDocumentBusy()) return act();
  // One for each application: it hears of that one's event loop.
  static QPointer<WaitingActs> waiting;
  if (!waiting) {
    waiting = new WaitingActs;
    waiting->setParent(QAbstractEventDispatcher::instance());
  }
  waiting->Add(context, std::move(act));
}

}  // namespace desktop
