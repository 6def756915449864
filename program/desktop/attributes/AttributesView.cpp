#include "program/desktop/attributes/AttributesView.h"

#include <QGridLayout>
#include <QLocale>
#include <QScrollBar>
#include <QToolButton>
#include <QWidget>
#include <algorithm>

#include "program/desktop/OpenDocument.h"
#include "program/desktop/background/DocumentBusy.h"

namespace desktop {

namespace {

// Pixels, but for the length of a heading, which is in letters.
constexpr int kLeastLabel = 84;
constexpr int kMostLabel = 120;
constexpr int kLabelAir = 4;
constexpr qsizetype kLongestHeading = 80;
// Read within the call: they take less than a slice, and the panel does not flicker.
constexpr std::size_t kMostElementsHere = 5000;

// Then the widgets stay and only take other values: building them anew is what costs.
bool LookAlike(const std::vector<AttributeGroup>& a, const std::vector<AttributeGroup>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](const auto& x, const auto& y) { return x.LooksLike(y); });
}

}  // namespace

// A titled part of the panel that collapses to its title.
class CollapsibleSection : public QWidget {
 public:
  CollapsibleSection(const QString& title, bool folded, QWidget* parent);

  bool IsFolded() const { return !title_->isChecked(); }
  // Appends a line: a label in a column of that width, and what it labels.
  void AddLine(const QString& label, const QString& tip, int labelWidth, QWidget* field);

 private:
  QToolButton* title_;
  QWidget* body_;
  QGridLayout* lines_;
};

CollapsibleSection::CollapsibleSection(const QString& title, bool folded, QWidget* parent)
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

// The label's text is the field's name, too, for those who have the screen read to them.
void CollapsibleSection::AddLine(const QString& label, const QString& tip, int labelWidth,
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

AttributesView::AttributesView(QWidget* parent)
    : QScrollArea(parent),
      slices_(
          "reading the attributes", [this] { return Advance(); }, [this] { reading_.reset(); }) {
  auto* page = new QWidget(this);
  column_ = new QVBoxLayout(page);
  column_->setContentsMargins(6, 6, 6, 6);
  column_->setSpacing(2);
  title_ = new QLabel(page);
  kinds_ = new QLabel(page);
  for (QLabel* label : {title_, kinds_}) {
    label->setTextFormat(Qt::PlainText);
    label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    column_->addWidget(label);
  }
  QFont bold = title_->font();
  bold.setBold(true);
  title_->setFont(bold);
  kinds_->setForegroundRole(QPalette::PlaceholderText);
  column_->addStretch();
  setWidget(page);
  setWidgetResizable(true);
  setFrameShape(NoFrame);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
}

// A value that is being typed is taken for the elements that it was typed for, before others are
// shown. The change count is asked again after that, since taking it changes the document.
void AttributesView::Follow(host::BaseDocument* doc, const engine::SharedIds& elements) {
  const host::ULLONG count = doc ? engine::ChangeCount(*doc) : 0;
  const bool others = IdentityOf(doc) != doc_ || elements != elements_;
  if (!others && count == seen_) return;
  if (others) {
    for (const Shown& shown : lines_) shown.field->FinishTyping();
  }
  doc_ = IdentityOf(doc);
  elements_ = elements;
  seen_ = doc ? engine::ChangeCount(*doc) : 0;
  reading_.reset();
  slices_.Stop();
  if (!doc) {
    ShowGroups({});
    return ShowHeading(nullptr, {});
  }
  reading_.emplace(*doc, elements);
  // Very many elements take several turns of the event loop.
  elements->size() > kMostElementsHere ? slices_.Start() : slices_.StartHere();
  // Until then the fields show other elements.
  if (reading_ && others) ShowWaiting();
}

bool AttributesView::Advance() {
  host::BaseDocument* doc = FindOpenDocument(doc_);
  if (!reading_) return false;
  // A document that has changed is followed anew before the loop waits.
  if (!doc || engine::ChangeCount(*doc) != seen_) return reading_.reset(), false;
  if (!reading_->Advance(kElementsAtOnce)) return true;
  ShowRead(*doc);
  reading_.reset();
  return false;
}

void AttributesView::ShowWaiting() {
  if (content_) content_->setEnabled(false);
  title_->setText(QLocale(QLocale::English).toString(static_cast<qulonglong>(elements_->size())) +
                  " elements");
  kinds_->setText("Reading what they have in common");
  kinds_->show();
}

void AttributesView::ShowRead(host::BaseDocument& doc) {
  ShowHeading(&doc, reading_->Elements());
  ShowGroups(reading_->TakeGroups());
  auto value = reading_->Values().begin();
  for (const Shown& shown : lines_) {
    if (*value) shown.field->Show(**value, doc);
    ++value;
  }
}

// Lines are given to the widgets that stand there, in the same order.
void AttributesView::ShowGroups(std::vector<AttributeGroup> groups) {
  if (!content_ || !LookAlike(groups, groups_)) Build(groups);
  content_->setEnabled(true);
  groups_ = std::move(groups);
  auto shown = lines_.begin();
  for (const AttributeGroup& group : groups_) {
    for (const AttributeLine& line : group.lines) (shown++)->line = line;
  }
}

// The old widgets are deleted later: one of them may be the one whose edit brought us here. What
// was folded stays so, by title, for the session.
void AttributesView::Build(const std::vector<AttributeGroup>& groups) {
  for (const auto& [title, section] : sections_) folded_[title] = section->IsFolded();
  lines_.clear();
  sections_.clear();
  if (content_) {
    content_->hide();
    content_->deleteLater();
  }
  content_ = new QWidget(widget());
  auto* column = new QVBoxLayout(content_);
  column->setContentsMargins(0, 6, 0, 0);
  column->setSpacing(2);
  int labelWidth = kLeastLabel;
  for (const AttributeGroup& group : groups) {
    for (const AttributeLine& line : group.lines)
      labelWidth = std::max(labelWidth, fontMetrics().horizontalAdvance(line.label) + kLabelAir);
  }
  for (const AttributeGroup& group : groups) AddGroup(group, std::min(labelWidth, kMostLabel));
  column_->insertWidget(column_->count() - 1, content_);
  // Sideways there is nothing to scroll to; and a panel that shrinks and grows with every click
  // would move the picture.
  const int margins =
      2 * column_->contentsMargins().left() + verticalScrollBar()->sizeHint().width();
  setMinimumWidth(std::max(minimumWidth(), content_->minimumSizeHint().width() + margins));
}

// The line is looked up by its place at the time of the edit: by then it may show other elements.
void AttributesView::AddGroup(const AttributeGroup& group, int labelWidth) {
  const auto kept = folded_.find(group.title);
  auto* section = new CollapsibleSection(
      group.title, kept == folded_.end() ? group.folded : kept->second, content_);
  for (const AttributeLine& line : group.lines) {
    FieldWidget* field = FieldWidget::Make(*line.field, section);
    field->edited = [this, at = lines_.size()](const engine::FieldEdit& edit) { Edit(at, edit); };
    section->AddLine(line.label, line.field->tip, labelWidth, field);
    lines_.push_back({line, field});
  }
  sections_[group.title] = section;
  content_->layout()->addWidget(section);
}

void AttributesView::ShowHeading(const host::BaseDocument* doc, const ElementList& elements) {
  const QString title = doc ? TitleOf(elements) : QString("No document is open");
  title_->setText(title.left(kLongestHeading));
  title_->setToolTip(title.size() > kLongestHeading ? title.left(10 * kLongestHeading) : QString());
  kinds_->setText(KindsOf(elements));
  kinds_->setVisible(!elements.empty());
}

void AttributesView::Edit(std::size_t line, const engine::FieldEdit& edit) {
  // A field that loses the focus to the box of other work is applied after that work.
  WhenDocumentIsFree(this, [this, doc = doc_, line = lines_[line].line, edit] {
    if (host::BaseDocument* still = FindOpenDocument(doc))
      editing_.Set(*still, line.elements, *line.field, edit);
  });
}

}  // namespace desktop
