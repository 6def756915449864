#include "program/desktop/attributes/FoldSection.h"

#include <QLabel>
#include <QVBoxLayout>

namespace desktop {

FoldSection::FoldSection(const QString& title, bool folded, QWidget* parent)
    : QWidget(parent),
      title_(new QToolButton(this)),
      body_(new QWidget(this)),
      lines_(new QGridLayout(body_)) {
  title_->setText(title);
  title_->setCheckable(true);
  title_->setChecked(!folded);
  title_->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  title_->setArrowType(folded ? Qt::RightArrow : Qt::DownArrow);
  title_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  title_->setObjectName("fold");  // the style sheet knows it by this name
  lines_->setContentsMargins(8, 4, 4, 8);
  lines_->setHorizontalSpacing(8);
  lines_->setVerticalSpacing(4);
  lines_->setColumnStretch(1, 1);
  body_->setVisible(!folded);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  column->addWidget(title_);
  column->addWidget(body_);
  connect(title_, &QToolButton::toggled, this, [this](bool open) {
    title_->setArrowType(open ? Qt::DownArrow : Qt::RightArrow);
    body_->setVisible(open);
  });
}

void FoldSection::AddLine(const QString& label, const QString& tip, int labelWidth,
                          QWidget* field) {
  auto* text = new QLabel(body_);
  text->setTextFormat(Qt::PlainText);
  text->setText(text->fontMetrics().elidedText(label, Qt::ElideRight, labelWidth));
  text->setToolTip(tip.isEmpty() && text->text() != label ? label : tip);
  text->setFixedWidth(labelWidth);
  text->setBuddy(field);
  field->setAccessibleName(label);
  const int row = lines_->rowCount();
  lines_->addWidget(text, row, 0, Qt::AlignLeft | Qt::AlignVCenter);
  lines_->addWidget(field, row, 1);
}

}  // namespace desktop
