// The edit runs within the call for as long as nobody would notice, then in slices under a modal
// box. The documents are busy until it ends; what it did is taken back when it is stopped, because
// the run that goes takes its open undo group with it (decision 31).
#include "program/desktop/background/SlicedEdit.h"

#include <QPointer>
#include <algorithm>
#include <optional>

#include "program/desktop/Text.h"
#include "program/desktop/background/DocumentBusy.h"
#include "program/desktop/background/ProgressDialog.h"
#include "program/desktop/background/Slices.h"

namespace desktop {

namespace {

class SlicedEdit : public QObject {
 public:
  SlicedEdit(host::BaseDocument& doc, engine::StepwiseEdit edit,
             std::function<void(bool whole)> over)
      : over_(std::move(over)),
        slices_(
            "\"" + edit.name + "\", which was taken back", [this] { return Advance(); },
            [this] { End(false); }) {
    // It is what makes the documents busy: waiting for them it would wait for itself.
    slices_.waits = false;
    slices_.paused = [this] { ShowProgress(); };
    busy_.emplace();
    run_.emplace(doc, std::move(edit));
  }

  // The first slice is as long as the patience, so that a short edit is over when its command
  // returns.
  void Begin() {
    slices_.time = std::chrono::milliseconds(ProgressDialog::patience);
    slices_.StartHere();
  }

  // Goes itself when the event loop comes round. The order matters: no slice comes any more, the
  // undo group closes while the documents are still busy, then they are free, and only then is
  // somebody told, who may begin the next edit.
  void End(bool whole) {
    if (!run_) return;
    slices_.Stop();
    run_.reset();
    busy_.reset();
    if (box_) {
      box_->disconnect(this);
      box_->hide();
      box_->deleteLater();
    }
    deleteLater();
    if (current == this) current.clear();
    if (const auto over = std::move(over_)) over(whole);
  }

  static inline QPointer<SlicedEdit> current;

 private:
  bool Advance() {
    if (run_->Advance()) return true;
    End(true);
    return false;
  }

  // After the first slice the normal ones, which leave the box alive.
  void ShowProgress() {
    if (!box_) {
      slices_.time = std::min(kSliceTime, slices_.time);
      box_ = new ProgressDialog(nullptr);
      connect(box_, &QProgressDialog::canceled, this, [this] { End(false); });
    }
    box_->Tell(run_->Share(), ToQt(run_->Name()));
  }

  std::function<void(bool whole)> over_;
  Slices slices_;
  std::optional<DocumentBusy> busy_;
  std::optional<engine::StepwiseRun> run_;
  QPointer<ProgressDialog> box_;
};

}  // namespace

// One at a time: the modal box keeps a person from a second one, so that only code can ask.
void RunEdit(host::BaseDocument& doc, engine::StepwiseEdit edit,
             std::function<void(bool whole)> over) {
  if (IsEditing()) {
    if (over) over(false);
    return;
  }
  SlicedEdit::current = new SlicedEdit(doc, std::move(edit), std::move(over));
  SlicedEdit::current->Begin();
}

void StopEdit() {
  if (SlicedEdit::current) SlicedEdit::current->End(false);
}

bool IsEditing() { return !SlicedEdit::current.isNull(); }

}  // namespace desktop
