#include "program/desktop/render/StateChoice.h"

#include <QHBoxLayout>
#include <QLabel>

#include "engine/states/StoredStates.h"
#include "program/lookup/SceneLookup.h"

namespace desktop {

namespace {

std::vector<std::string> RecordedNames(const host::BaseDocument& doc) {
  std::vector<std::string> names;
  for (const engine::StoredState& state : engine::ListedStates(doc)) {
    if (state.hasRecord) names.push_back(state.name);
  }
  return names;
}

}  // namespace

// Several rows that are selected are meant; one is selected nearly always and means nothing.
StateChoice::StateChoice(const host::BaseDocument& doc, std::vector<std::string> chosen,
                         std::function<void()> changed)
    : all_(RecordedNames(doc)), chosen_(std::move(chosen)) {
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  if (all_.empty()) {
    row->addWidget(new QLabel("None are recorded: it is the scene as it is."));
    return;
  }
  auto* all = new QRadioButton(QString("&All (%1)").arg(all_.size()));
  onlyChosen_ = new QRadioButton(QString("&Selected in the list (%1)").arg(chosen_.size()));
  onlyChosen_->setEnabled(!chosen_.empty());
  byPattern_ = new QRadioButton("Name&d");
  byPattern_->setAccessibleName("Named by a pattern");
  pattern_ = new QLineEdit;
  pattern_->setObjectName("pattern");
  pattern_->setPlaceholderText("shot_*");
  pattern_->setToolTip("A name; * stands for any text, ? for one letter");
  (chosen_.size() > 1 ? onlyChosen_ : all)->setChecked(true);
  for (QWidget* widget : {static_cast<QWidget*>(all), static_cast<QWidget*>(onlyChosen_),
                          static_cast<QWidget*>(byPattern_), static_cast<QWidget*>(pattern_)})
    row->addWidget(widget);
  row->setStretchFactor(pattern_, 1);
  connect(pattern_, &QLineEdit::textEdited, this, [this] { byPattern_->setChecked(true); });
  connect(byPattern_, &QRadioButton::clicked, this, [this] { pattern_->setFocus(); });
  if (!changed) return;
  for (QRadioButton* button : {all, onlyChosen_, byPattern_}) {
    connect(button, &QRadioButton::toggled, this, [changed](bool on) {
      if (on) changed();
    });
  }
  connect(pattern_, &QLineEdit::editingFinished, this, changed);
}

// Nothing where a pattern means none of them; an empty list where there are none at all.
std::optional<std::vector<std::string>> StateChoice::Names() const {
  if (onlyChosen_ && onlyChosen_->isChecked()) return chosen_;
  if (!byPattern_ || !byPattern_->isChecked()) return all_;
  auto meant = lookup::FindMarks({pattern_->text().toStdString()}, all_);
  return meant ? std::optional(meant.Take()) : std::nullopt;
}

}  // namespace desktop
