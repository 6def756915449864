#include "program/desktop/script/ScriptConsole.h"

#include <QFontDatabase>
#include <QKeyEvent>
#include <QVBoxLayout>
#include <algorithm>

#include "program/desktop/Text.h"
#include "program/desktop/Theme.h"
#include "program/desktop/background/DocumentBusy.h"

namespace desktop {

namespace {

// The oldest go; a script that prints in a loop must not fill the memory.
constexpr int kMostLines = 5000;
constexpr qsizetype kMostRemembered = 500;
constexpr const char* kWelcome =
    "Python: doc is the active document, stagemarks the package. help(doc) tells more.\n";

// Longest common prefix; `words` is not empty.
QString CommonBeginning(const std::vector<std::string>& words) {
  QString common = ToQt(words.front());
  for (const std::string& word : words) {
    const QString other = ToQt(word);
    while (!other.startsWith(common)) common.chop(1);
  }
  return common;
}

// With its dots, so that "doc.sta" is completed as a whole.
qsizetype WordBegin(const QString& text) {
  qsizetype begin = text.size();
  while (begin > 0 &&
         (text[begin - 1].isLetterOrNumber() || text[begin - 1] == '_' || text[begin - 1] == '.'))
    --begin;
  return begin;
}

}  // namespace

ScriptConsole::ScriptConsole(ScriptRunner& runner, QWidget* parent)
    : QWidget(parent),
      runner_(runner),
      output_(new QPlainTextEdit(this)),
      prompt_(new QLabel(this)),
      line_(new QLineEdit(this)) {
  const QFont fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
  output_->setReadOnly(true);
  output_->setMaximumBlockCount(kMostLines);
  for (QWidget* widget : {static_cast<QWidget*>(output_), static_cast<QWidget*>(line_),
                          static_cast<QWidget*>(prompt_)})
    widget->setFont(fixed);
  output_->setAccessibleName("What scripts print");
  line_->setAccessibleName("Python");
  line_->setPlaceholderText("Python; Tab completes, Up brings back");
  auto* row = new QHBoxLayout;
  row->addWidget(prompt_);
  row->addWidget(line_, 1);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(4, 4, 4, 4);
  layout->addWidget(output_, 1);
  layout->addLayout(row);
  setFocusProxy(line_);
  line_->installEventFilter(this);
  runner_.written = [this](const QString& text, bool isError) { Show(text, isError); };
  SetPrompt();
  Show(kWelcome, false);
}

void ScriptConsole::SetPrompt() { prompt_->setText(begun_.isEmpty() ? ">>>" : "..."); }

// Always at the end, wherever a person has put the cursor.
void ScriptConsole::Show(const QString& text, bool isError, bool isTyped) {
  QTextCursor cursor(output_->document());
  cursor.movePosition(QTextCursor::End);
  QTextCharFormat format;
  if (isError) format.setForeground(QColor::fromRgb(PresentTheme().accent));
  if (isTyped) format.setFontWeight(QFont::Bold);
  cursor.insertText(text, format);
  output_->setTextCursor(cursor);
  output_->ensureCursorVisible();
}

scripting::ScriptEnd ScriptConsole::RunFile(const std::string& path) {
  Show("Running " + ToQt(path) + "\n", false, true);
  scripting::ScriptEnd end = runner_.RunFile(path);
  if (end.succeeded) Show("Done.\n", false, true);
  return end;
}

// The event loop may run within a script, so lines are taken while one runs.
void ScriptConsole::Enter() {
  const QString text = line_->text();
  line_->clear();
  if (!text.trimmed().isEmpty() && (history_.isEmpty() || history_.last() != text))
    history_.append(text);
  while (history_.size() > kMostRemembered) history_.removeFirst();
  place_ = history_.size();
  // A line typed ahead runs when its turn comes.
  ahead_.append(text);
  if (ahead_.size() > 1) return;
  WhenDocumentIsFree(this, [this] {
    while (!ahead_.isEmpty()) Run(ahead_.takeFirst());
  });
}

// A statement goes on until Python says that it is whole; an empty line ends a block.
void ScriptConsole::Run(const QString& text) {
  Show((begun_.isEmpty() ? ">>> " : "... ") + text + "\n", false, true);
  if (begun_.isEmpty() && text.trimmed().isEmpty()) return;
  begun_ += begun_.isEmpty() ? text : "\n" + text;
  const scripting::ScriptEnd end = runner_.RunLines(begun_.toStdString());
  if (!end.needsMore) begun_.clear();
  // Python prints its own messages; only the failure to load it is shown here.
  if (!runner_.IsLoaded()) Show(ToQt(end.problem) + "\n", true);
  SetPrompt();
}

// As in a shell: as far as all agree, and with the next Tab the choices. At the beginning of a line
// Tab indents.
void ScriptConsole::Complete() {
  const QString before = line_->text().left(line_->cursorPosition());
  if (before.trimmed().isEmpty()) return line_->insert("    ");
  const auto words = runner_.Complete(before.toStdString());
  if (words.empty()) return;
  const qsizetype begin = WordBegin(before);
  const QString common = CommonBeginning(words);
  if (common.size() > before.size() - begin) {
    const QString after = line_->text().mid(line_->cursorPosition());
    line_->setText(before.left(begin) + common + after);
    line_->setCursorPosition(static_cast<int>(begin + common.size()));
    return;
  }
  QStringList shown;
  for (const std::string& word : words) shown.append(ToQt(word));
  Show(shown.join("  ") + "\n", false);
}

// The line that was being typed stands at the end of the history.
void ScriptConsole::Browse(int way) {
  const qsizetype wanted = std::clamp<qsizetype>(place_ + way, 0, history_.size());
  if (wanted == place_) return;
  if (place_ == history_.size()) typed_ = line_->text();
  place_ = wanted;
  line_->setText(place_ == history_.size() ? typed_ : history_[place_]);
}

bool ScriptConsole::eventFilter(QObject* watched, QEvent* event) {
  if (watched != line_ || event->type() != QEvent::KeyPress) return false;
  const auto& key = static_cast<QKeyEvent&>(*event);
  if (key.modifiers() & (Qt::ControlModifier | Qt::AltModifier)) return false;
  switch (key.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
      Enter();
      return true;
    case Qt::Key_Tab:
      Complete();
      return true;
    case Qt::Key_Up:
    case Qt::Key_Down:
      Browse(key.key() == Qt::Key_Up ? -1 : 1);
      return true;
    case Qt::Key_Escape:
      begun_.clear();
      line_->clear();
      SetPrompt();
      return true;
    default:
      return false;
  }
}

}  // namespace desktop
