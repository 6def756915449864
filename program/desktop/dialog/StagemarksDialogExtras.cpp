#include "program/desktop/dialog/StagemarksDialogExtras.h"

#include <QInputDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>

#include "program/desktop/Text.h"
#include "program/desktop/dialog/ListView.h"
#include "program/pictures/DialogLabels.h"

namespace desktop {

using engine::GadgetKind;
using pictures::StagemarksDialog;

namespace {

constexpr const char* kEmptyList = "No Stagemarks yet: name this state and press Record Element";

struct Explained {
  GadgetKind kind;
  const char* label;  // empty: the first one of its kind
  const char* tip;
};

// Found by what they show; one that is not there has no tip.
constexpr Explained kExplained[] = {
    {GadgetKind::Button, pictures::kLoad,
     "Bring the scene into the state of the selected row (double click, Enter)"},
    {GadgetKind::Button, pictures::kDelete,
     "Delete the selected Stagemark for good, after a question"},
    {GadgetKind::Button, pictures::kRename, "Give the selected Stagemark the name in the field"},
    {GadgetKind::EditText, "", "Name for the next recording, or for Rename (Enter records)"},
    {GadgetKind::Button, pictures::kRecord,
     "Record the scene as it is now under the name in the field"},
    {GadgetKind::Checkbox, pictures::kGeneratePreview,
     "Recording also renders a small picture, for scenes that have been saved"},
    {GadgetKind::Button, pictures::kGenerateScenes,
     "Write a scene file for each checked row, in the layout beside"},
    {GadgetKind::ComboBox, "", "How the files are laid out, and whether textures come along"},
    {GadgetKind::Checkbox, pictures::kChangeFrameRange,
     "Give every written file these frames instead of its own"},
    {GadgetKind::BitmapButton, "", "Preview of the selected Stagemark"},
};

}  // namespace

StagemarksDialogExtras::StagemarksDialogExtras(DialogView& view) : QObject(&view), view_(view) {
  view.built = [this] { Equip(); };
  view.changing = [this] { KeepPicture(); };
  view.SetConcerns([this](const host::String& label) { return ConcernOf(label); });
  view.SetEmptyListText(kEmptyList);
  Equip();
}

// Connections go with the widgets, so new widgets are simply connected anew.
void StagemarksDialogExtras::Equip() {
  ExplainGadgets();
  StagemarksDialog dialog(*view_.Dialog());
  if (const engine::Gadget* gadget = dialog.Find(GadgetKind::EditText)) {
    if (auto* field = dynamic_cast<QLineEdit*>(view_.WidgetOf(gadget->id))) {
      connect(field, &QLineEdit::returnPressed, this, [this] { Press(pictures::kRecord); });
    }
  }
  for (const char* label : {pictures::kRecord, pictures::kRename}) {
    // After what the button itself does.
    if (QAbstractButton* button = Button(label))
      connect(button, &QAbstractButton::clicked, this, [this] { ChooseTyped(); });
  }
  ListView* list = List();
  if (!list) return;
  list->opened = [this] { Press(pictures::kLoad); };
  list->setContextMenuPolicy(Qt::CustomContextMenu);
  connect(list, &QWidget::customContextMenuRequested, this,
          [this](const QPoint& place) { ShowMenu(place); });
}

void StagemarksDialogExtras::ExplainGadgets() {
  for (const Explained& row : kExplained) {
    const engine::Gadget* gadget = StagemarksDialog(*view_.Dialog()).Find(row.kind, row.label);
    if (QWidget* widget = gadget ? view_.WidgetOf(gadget->id) : nullptr)
      widget->setToolTip(row.tip);
  }
}

QAbstractButton* StagemarksDialogExtras::Button(const char* label) const {
  const engine::Gadget* gadget =
      view_.Dialog() ? StagemarksDialog(*view_.Dialog()).Find(GadgetKind::Button, label) : nullptr;
  return gadget ? dynamic_cast<QAbstractButton*>(view_.WidgetOf(gadget->id)) : nullptr;
}

ListView* StagemarksDialogExtras::List() const {
  const engine::Gadget* gadget =
      view_.Dialog() ? StagemarksDialog(*view_.Dialog()).Find(GadgetKind::ListView) : nullptr;
  return gadget ? dynamic_cast<ListView*>(view_.WidgetOf(gadget->id)) : nullptr;
}

// By a click on the widget, so that a disabled button stays one and the press is seen.
void StagemarksDialogExtras::Press(const char* button) {
  if (QAbstractButton* found = Button(button)) found->click();
}

// Entries about one row are disabled for several, not left out: the menu keeps its places.
void StagemarksDialogExtras::ShowMenu(const QPoint& place) {
  ListView* list = List();
  if (!list || !list->indexAt(place).isValid()) return;
  const bool one = !Chosen().empty();
  QMenu menu(list);
  const auto add = [&](const QString& text, bool enabled, std::function<void()> act) {
    QAction* action = menu.addAction(text, this, std::move(act));
    action->setEnabled(enabled);
    return action;
  };
  menu.setDefaultAction(add(pictures::kLoad, one, [this] { Press(pictures::kLoad); }));
  add(QString(pictures::kRename) + QChar(0x2026), one, [this] { Rename(); });
  add(pictures::kDelete, one, [this] { Press(pictures::kDelete); });
  menu.addSeparator();
  add(list->AllChecked() ? "Uncheck" : "Check", true, [list] { list->ToggleSelected(); });
  menu.exec(list->viewport()->mapToGlobal(place));
}

// The box runs an event loop: afterwards the same row must still be chosen. The plug-in would take
// a name twice, which confuses every look-up by name, so it is refused here.
void StagemarksDialogExtras::Rename() {
  const std::string former = Chosen();
  bool meant = false;
  const QString name = QInputDialog::getText(&view_, pictures::kRename,
                                             "New name:", QLineEdit::Normal, ToQt(former), &meant);
  if (!meant || !view_.Dialog() || Chosen() != former || name == ToQt(former)) return;
  StagemarksDialog dialog(*view_.Dialog());
  if (dialog.Has(name.toStdString())) {
    QMessageBox::information(&view_, pictures::kRename,
                             "There is a Stagemark of that name already. Choose another name.");
    return;
  }
  if (dialog.TypeName(name.toStdString())) Press(pictures::kRename);
}

std::string StagemarksDialogExtras::Chosen() const {
  if (!view_.Dialog()) return {};
  const engine::Gadget* list = StagemarksDialog(*view_.Dialog()).Find(GadgetKind::ListView);
  if (!list || list->selection.GetCount() != 1) return {};
  const auto names = StagemarksDialog(*view_.Dialog()).SelectedNames();
  return names.empty() ? std::string() : names.front();
}

std::string StagemarksDialogExtras::TypedName() const {
  const engine::Gadget* field =
      view_.Dialog() ? StagemarksDialog(*view_.Dialog()).Find(GadgetKind::EditText) : nullptr;
  return field ? field->value.GetString().ToUtf8() : std::string();
}

// Sends the list event of the row once more and lets the plug-in show its picture (decision 23).
void StagemarksDialogExtras::KeepPicture() {
  const engine::Gadget* picture = StagemarksDialog(*view_.Dialog()).Find(GadgetKind::BitmapButton);
  const std::string name = Chosen();
  if (!picture || name.empty() || TypedName() != name) return;
  const auto shown = [picture] { return picture->image.GetString().ToUtf8(); };
  // Also when it has just been chosen: the scene may have changed since.
  if (name != chosen_ || shown() != itsPicture_) StagemarksDialog(*view_.Dialog()).Select(name);
  chosen_ = name;
  itsPicture_ = shown();
}

// A refused recording leaves the choice alone: the current one is another then.
void StagemarksDialogExtras::ChooseTyped() {
  if (!view_.Dialog()) return;
  StagemarksDialog dialog(*view_.Dialog());
  const std::string name = TypedName();
  if (dialog.Current() == name || Chosen().empty()) dialog.Select(name);
}

// The Stagemark that a question of the dialog is about which does not say so itself.
QString StagemarksDialogExtras::ConcernOf(const host::String& label) const {
  const std::string text = label.ToUtf8();
  const std::string name = text == pictures::kDelete   ? Chosen()
                           : text == pictures::kRecord ? TypedName()
                                                       : std::string();
  return name.empty() ? QString() : "Stagemark: " + ToQt(name);
}

}  // namespace desktop
