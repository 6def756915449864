// ScriptConsole: a panel with what scripts print and a line for Python: Enter runs it, Up and Down
// go through the lines typed before, Tab completes. Each line that is run is one undo step. Main
// thread.
#pragma once

#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>

#include "program/desktop/panels/DocumentView.h"
#include "program/desktop/script/ScriptRunner.h"

namespace desktop {

class ScriptConsole : public QWidget, public DocumentView {
 public:
  // The runner outlives it.
  ScriptConsole(ScriptRunner& runner, QWidget* parent);

  void Follow(host::BaseDocument*) override {}
  QSize sizeHint() const override { return {400, 160}; }
  // Shows a file that is run, and what came of it.
  scripting::ScriptEnd RunFile(const std::string& path);

  QLineEdit& Line() { return *line_; }
  QString Printed() const { return output_->toPlainText(); }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void Show(const QString& text, bool isError, bool isTyped = false);
  void Enter();
  void Run(const QString& text);
  void Complete();
  void Browse(int way);
  void SetPrompt();

  ScriptRunner& runner_;
  QPlainTextEdit* output_;
  QLabel* prompt_;
  QLineEdit* line_;
  QStringList ahead_;  // lines that wait for what runs
  QString begun_;      // lines of something that needs more
  QStringList history_;
  qsizetype place_ = 0;  // in the history; its size: the line that is being typed
  QString typed_;        // that line, while others are shown
};

}  // namespace desktop
