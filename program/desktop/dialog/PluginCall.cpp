#include "program/desktop/dialog/PluginCall.h"

#include <QGuiApplication>
#include <QMainWindow>
#include <algorithm>
#include <optional>
#include <utility>

#include "engine/scene/DocumentState.h"
#include "engine/undo/Undo.h"
#include "host/Application.h"
#include "program/desktop/Text.h"
#include "program/pictures/DialogLabels.h"
#include "program/pictures/StagemarksDialog.h"

namespace desktop {

namespace {

const CallSubject* innermost = nullptr;

// Elements of the scene times rows of the dialog's longest list: an act may go through all of them.
// Below that the call is over before anything could be read.
constexpr std::size_t kNoticed = 200'000;

std::size_t LongestList(const engine::Gadget& group) {
  std::size_t longest = group.listRows.size();
  for (const auto& child : group.children) longest = std::max(longest, LongestList(*child));
  return longest;
}

bool WouldBeNoticed(const host::GeDialog& dialog) {
  const host::BaseDocument* doc = host::GetActiveDocument();
  return doc && engine::NodeCount(*doc) * (1 + LongestList(engine::DialogRoot(dialog))) >= kNoticed;
}

// "Load Day" says more in the Undo menu than "Load"; a recording has its name from the field, since
// no row is chosen for it.
std::string StepName(host::GeDialog& dialog, const host::String& label, About about) {
  constexpr qsizetype kLongest = 60;
  QString name = ToQt(label).simplified();
  const pictures::StagemarksDialog states(dialog);
  const auto chosen = about == About::kChosenRow && states.Fits() ? states.SelectedNames()
                                                                  : std::vector<std::string>();
  if (chosen.size() == 1) name += " " + QString::fromStdString(chosen.front()).simplified();
  if (label == host::String(pictures::kRecord) && states.Fits())
    name = "Record " + QString::fromStdString(states.TypedName()).simplified();
  return (name.size() > kLongest ? name.left(kLongest - 1) + QChar(0x2026) : name).toStdString();
}

QStatusBar* StatusLineOf(const QObject& from) {
  for (const QObject* above = &from; above; above = above->parent()) {
    if (const auto* window = qobject_cast<const QMainWindow*>(above))
      return const_cast<QMainWindow*>(window)->statusBar();
  }
  return nullptr;
}

}  // namespace

// Painted at once: the event loop does not run before the call is over.
BusyIndicator::BusyIndicator(const QObject& from, const QString& doing)
    : line_(StatusLineOf(from)), doing_(doing) {
  QGuiApplication::setOverrideCursor(Qt::WaitCursor);
  if (!line_) return;
  line_->showMessage(doing);
  line_->repaint();
}

BusyIndicator::~BusyIndicator() {
  QGuiApplication::restoreOverrideCursor();
  if (line_ && line_->currentMessage() == doing_) line_->clearMessage();
}

// Without an override pointer the toolkit changes nothing, so it may stand around any box.
NormalPointer::NormalPointer() { QGuiApplication::changeOverrideCursor(Qt::ArrowCursor); }
NormalPointer::~NormalPointer() { QGuiApplication::changeOverrideCursor(Qt::WaitCursor); }

CallSubject::CallSubject(const QString& text)
    : text_(text), around_(std::exchange(innermost, this)) {}
CallSubject::~CallSubject() { innermost = around_; }
QString CallSubject::Present() { return innermost ? innermost->text_ : QString(); }

// The name of the step stands around everything else, because the undo step takes it when it
// closes.
void CallPlugin(const SharedDialogLink& link, const QObject& from, const host::String& label,
                About about, const std::function<bool(host::GeDialog&)>& act) {
  host::GeDialog* const dialog = link->dialog;
  if (!dialog) return;
  const engine::ActName named(StepName(*dialog, label, about));
  const auto run = [&] {
    std::optional<BusyIndicator> busy;
    if (WouldBeNoticed(*dialog)) busy.emplace(from, ToQt(label).simplified() + QChar(0x2026));
    const CallSubject concern(link->concerns ? link->concerns(label) : QString());
    return act(*dialog);
  };
  if (link->around) {
    link->around(*dialog, label.ToUtf8(), run);
  } else {
    run();
  }
}

}  // namespace desktop
