// FoldSection: a titled part of a panel that folds away under its title. Main thread.
#pragma once

#include <QGridLayout>
#include <QToolButton>
#include <QWidget>

namespace desktop {

class FoldSection : public QWidget {
 public:
  FoldSection(const QString& title, bool folded, QWidget* parent);

  bool IsFolded() const { return !title_->isChecked(); }
  // Appends a line: a label in a column of that width, and what it labels.
  void AddLine(const QString& label, const QString& tip, int labelWidth, QWidget* field);

 private:
  QToolButton* title_;
  QWidget* body_;
  QGridLayout* lines_;
};

}  // namespace desktop
