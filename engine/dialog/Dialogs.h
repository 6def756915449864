// Dialogs as data: the gadget tree, list rows and menus behind a GeDialog, and the events that a
// click, a key or a command-line verb turns into. No toolkit here: the desktop draws this tree, the
// command line presses it. The tree is owned by its GeDialog. Main thread.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/GeDialog.h"

namespace engine {

enum class GadgetKind {
  Group,
  Button,
  Checkbox,
  StaticText,
  EditText,
  NumberField,
  ComboBox,
  Separator,
  ListView,
  BitmapButton
};

// One entry of a combo box.
struct Choice {
  host::LONG id;
  host::String text;
};

// One column of a list: its key in the rows and LV_COLUMN_ kind.
struct Column {
  host::LONG id;
  host::LONG kind;
};

// One row of a list: the plug-in's number for it and its values.
struct Row {
  host::LONG id;
  host::BaseContainer values;
};

struct Gadget {
  GadgetKind kind = GadgetKind::Group;
  host::LONG id = 0;
  host::LONG flags = 0;
  host::LONG width = 0;  // as passed: SizeChr or pixels
  host::LONG height = 0;
  host::String text;  // title of a group, label, name of a custom gadget
  bool enabled = true;

  // Groups.
  host::LONG columns = 0;
  host::LONG rows = 0;
  host::LONG spaceX = 0;
  host::LONG spaceY = 0;
  host::LONG borderLeft = 0;
  host::LONG borderTop = 0;
  host::LONG borderRight = 0;
  host::LONG borderBottom = 0;
  std::vector<std::unique_ptr<Gadget>> children;

  // Values. A check box, combo box and number field hold a number, an edit field a text.
  host::GeData value;
  host::Real min = 0;
  host::Real max = 0;
  host::Real step = 1;
  host::LONG format = 0;
  std::vector<Choice> choices;

  // Lists. Rows in display order, and the line of each row number.
  std::vector<Column> listColumns;
  std::vector<Row> listRows;
  std::unordered_map<host::LONG, std::size_t> lineOfRow;
  host::BaseSelect selection;

  // Custom gadgets.
  host::BaseContainer settings;
  host::Filename image;  // of a bitmap button, empty for none
};

struct MenuEntry {
  host::LONG id = 0;  // 0: a sub-menu or a separator
  host::String text;
  bool separator = false;
  bool enabled = true;
  bool checked = false;
  std::vector<MenuEntry> children;
};

// Hears what changes in dialogs; the desktop's view is one. `gadget` is null when the title, the
// menus or the whole layout changed; a list tells once per DataChanged. Nothing is told while a
// dialog builds or fills itself for opening.
class DialogObserver {
 public:
  virtual ~DialogObserver() = default;
  // Also when a dialog that is open already is asked to come to front.
  virtual void DialogOpened(host::GeDialog& dialog) = 0;
  virtual void DialogClosed(host::GeDialog& dialog) = 0;
  virtual void DialogChanged(host::GeDialog& dialog, const Gadget* gadget) = 0;
};
void AddDialogObserver(DialogObserver& observer);
void RemoveDialogObserver(DialogObserver& observer);

// Dialogs that are open now, in the order of opening.
std::vector<host::GeDialog*> OpenDialogs();
// The plug-in ID of the last Open, 0 before the first.
host::LONG DialogPluginId(const host::GeDialog& dialog);
host::String DialogTitle(const host::GeDialog& dialog);
// The root group; its children are what CreateLayout added. The menu bar: one entry per sub-menu.
const Gadget& DialogRoot(const host::GeDialog& dialog);
const std::vector<MenuEntry>& DialogMenus(const host::GeDialog& dialog);
// Gadget or menu entry with that ID, or null.
const Gadget* FindGadget(const host::GeDialog& dialog, host::LONG id);
const MenuEntry* FindMenuEntry(const host::GeDialog& dialog, host::LONG id);

// --- Events: each changes the gadget's own value first, as a real toolkit does, then sends one
// Command whose message holds the gadget's ID under BFM_ACTION_ID. They answer what Command
// answered; false, sending nothing, for an unknown, disabled or unfitting gadget or a closed
// dialog.
bool PressButton(host::GeDialog& dialog, host::LONG id);
bool ChooseMenu(host::GeDialog& dialog, host::LONG id);
bool SetCheckbox(host::GeDialog& dialog, host::LONG id, bool checked);
bool TypeText(host::GeDialog& dialog, host::LONG id, const host::String& text);
bool TypeNumber(host::GeDialog& dialog, host::LONG id, host::Real number);
bool ChooseFromCombo(host::GeDialog& dialog, host::LONG id, host::LONG choice);
// Rows by line number (0-based, display order). Selecting replaces the selection.
bool SelectLines(host::GeDialog& dialog, host::LONG list, const std::vector<host::LONG>& lines);
// Flips the check box in column `column` of one row; the row's value changes, then the event is
// sent.
bool ToggleLine(host::GeDialog& dialog, host::LONG list, host::LONG line, host::LONG column);
// Sends a core message to every open dialog.
void SendCoreMessage(host::LONG id, const host::BaseContainer& message);
// True while a Command, CoreMessage or other plug-in call of any dialog is running.
bool InsideDialogCall();

// List `id` as text: one line per row, the selected ones behind an arrow, check boxes as [x],
// columns lined up, cells cut at `widestCell` columns. Control characters and broken UTF-8 show as
// replacement characters, so that a text cannot disturb a terminal. Empty when there is no such
// list.
std::string ListAsText(const host::GeDialog& dialog, host::LONG id,
                       std::size_t widestCell = std::string::npos);

}  // namespace engine
