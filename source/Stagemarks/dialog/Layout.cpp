// The dialog's gadgets and menus in their order, and their initial values.
#include <initializer_list>
#include <span>

#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/keys/Gadgets.h"

namespace stagemarks {

namespace {

// Layout flags as the host counts them. One bit each for the middle, the left and the right across
// (8, 16, 32) and for the middle, the top and the bottom in height (1, 2, 4); all three together
// fill.
constexpr LONG kFill = 63;
constexpr LONG kFillAcross = 57;
constexpr LONG kFillAcrossOnly = 56;  // no place in height is asked for
constexpr LONG kInTheMiddle = 9;
constexpr LONG kMiddleAcross = 8;
constexpr LONG kMiddleInHeight = 1;

constexpr LONG kListWidth = 60;
constexpr LONG kListHeight = 30;
constexpr LONG kPreviewWidth = 40;
constexpr LONG kPreviewHeight = 30;
constexpr LONG kNameWidth = 466;
constexpr LONG kFileLayoutWidth = 250;
constexpr Real kLastFrame = 300000;

struct Space {
  LONG x;
  LONG y;
};
struct Border {
  LONG left;
  LONG top;
  LONG right;
  LONG bottom;
};

// A group while it is open.
class Group {
 public:
  Group(SMDialog& dialog, LONG id, LONG flags, LONG columns, LONG rows, Space space, Border border)
      : dialog_(dialog) {
    dialog.GroupBegin(id, flags, columns, rows, "", 0);
    dialog.GroupSpace(space.x, space.y);
    dialog.GroupBorderSpace(border.left, border.top, border.right, border.bottom);
  }
  Group(const Group&) = delete;
  Group& operator=(const Group&) = delete;
  ~Group() { dialog_.GroupEnd(); }

 private:
  SMDialog& dialog_;
};

void AddMenu(SMDialog& dialog, const CHAR* title, std::span<const MenuRow> rows) {
  dialog.MenuSubBegin(title);
  for (const MenuRow& row : rows) {
    if (row.id == kSeparator.id) {
      dialog.MenuAddSeparator();
    } else {
      dialog.MenuAddString(row.id, row.label);
    }
  }
  dialog.MenuSubEnd();
}

}  // namespace

Bool SMDialog::CreateLayout() {
  if (!GeDialog::CreateLayout()) return FALSE;
  SetTitle(kPluginName);
  {
    const Group all(*this, kGroupAll, kFill, 0, 3, {0, 12}, {15, 11, 26, 25});
    const Group elements(*this, kGroupElements, kFill, 1, 0, {4, 4}, {5, 5, 5, 0});
    BuildElementGroups();
    BuildRecordGroups();
    BuildGenerateGroups();
  }
  BuildMenus();
  list_.AttachListView(this, kList);
  ShowDefaultImage();
  return TRUE;
}

// The list beside the preview, and the buttons that act on the selected element.
void SMDialog::BuildElementGroups() {
  const Group area(*this, kGroupListArea, kFill, 1, 0, {4, 4}, {5, 5, 5, 0});
  {
    const Group upper(*this, kGroupListAndPreview, kFill, 2, 0, {4, 4}, {0, 0, 0, 0});
    AddListView(kList, kFill, SizeChr(kListWidth), SizeChr(kListHeight));
    BaseContainer settings;
    settings.SetBool(BITMAPBUTTON_BORDER, TRUE);
    previewButton_ = static_cast<BitmapButtonCustomGui*>(
        AddCustomGui(kPreviewButton, CUSTOMGUI_BITMAPBUTTON, "myBitmapButton", kMiddleInHeight,
                     SizeChr(kPreviewWidth), SizeChr(kPreviewHeight), settings));
  }
  const Group buttons(*this, kGroupElementButtons, kFillAcross, 5, 0, {4, 4}, {0, 5, 0, 0});
  AddButton(kLoad, kFillAcross, 0, 0, "Load");
  AddSeparatorV(0);
  AddButton(kDelete, kFillAcross, 0, 0, "Delete");
  AddSeparatorV(0);
  AddButton(kRename, kFillAcross, 0, 0, "Rename");
}

void SMDialog::BuildRecordGroups() {
  {
    const Group name(*this, kGroupName, kFillAcross, 0, 2, {4, 4}, {5, 5, 5, 0});
    AddEditText(kNameField, kFillAcrossOnly, kNameWidth);
  }
  const Group record(*this, kGroupRecord, kInTheMiddle, 2, 0, {10, 4}, {5, 10, 5, 5});
  AddButton(kRecord, kInTheMiddle, 0, 0, "Record Element");
  AddCheckbox(kGeneratePreview, kMiddleAcross, 0, 0, "Generate Preview Image");
}

void SMDialog::BuildGenerateGroups() {
  {
    const Group generate(*this, kGroupGenerate, kFillAcross, 2, 0, {4, 4}, {5, 10, 5, 0});
    AddButton(kGenerateFiles, kInTheMiddle, 0, 0, "Generate .C4D Files");
    AddComboBox(kFileLayout, kFillAcross, kFileLayoutWidth);
    for (const MenuRow& row : kFileLayouts) AddChild(kFileLayout, row.id, row.label);
  }
  const Group frames(*this, kGroupFrameRange, kFillAcross, 4, 0, {5, 4}, {5, 5, 5, 5});
  AddCheckbox(kChangeFrameRange, kInTheMiddle, 0, 0, "Change Frame Range  ");
  AddEditNumberArrows(kFrameFrom, kFillAcross);
  AddStaticText(kFrameToLabel, kInTheMiddle, 0, 0, "to", 0);
  AddEditNumberArrows(kFrameTo, kFillAcross);
}

void SMDialog::BuildMenus() {
  MenuFlushAll();
  AddMenu(*this, "Edit", kEditMenu);
  MenuSubBegin("Options");
  MenuAddString(kSaveDefaults, "Save As Default Preferences");
  MenuAddSeparator();
  for (const OptionRow& row : kOptions) MenuAddString(row.id, row.label);
  MenuSubEnd();
  AddMenu(*this, "Help", kHelpMenu);
  MenuFinished();
}

// Options that have a value beside their mark in the menu are on at first; the tags of outside
// renderers have none.
Bool SMDialog::InitValues() {
  for (const Option option : {Option::RenderSettings, Option::Layers, Option::ActiveCamera,
                              Option::Objects, Option::Materials, Option::CompositingTags}) {
    SetBool(kOptions[IndexOf(option)].id, TRUE);
  }
  SetBool(kGeneratePreview, FALSE);
  SetLong(kFileLayout, kAsSaveFileFolders);
  SetBool(kChangeFrameRange, FALSE);
  for (const LONG field : {kFrameFrom, kFrameTo}) SetReal(field, 0, 0, kLastFrame, 1, FORMAT_LONG);
  UpdateSMPreferences();
  BaseContainer columns;
  columns.SetLong(kColumnCurrent, LV_COLUMN_TEXT);
  columns.SetLong(kColumnChecked, LV_COLUMN_CHECKBOX);
  columns.SetLong(kColumnName, LV_COLUMN_TEXT);
  columns.SetLong(kColumnDate, LV_COLUMN_TEXT);
  list_.SetLayout(columns.GetCount(), columns);
  UpdateSMList();
  return TRUE;
}

}  // namespace stagemarks
