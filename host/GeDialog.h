// GeDialog: a dialog as a plug-in sees it: it builds a tree of gadgets and menus, sets and reads
// their values and hears events. The plug-in owns the dialog object; the gadgets belong to it and
// live, with their values, until the object is destroyed or the layout is built anew. Main thread.
#pragma once

#include <memory>

#include "host/BaseContainer.h"
#include "host/BaseSelect.h"

namespace engine {
struct DialogBody;
struct Gadget;
}  // namespace engine

namespace host {

class BaseCustomGui;

// Core message: the active document changed in some way.
inline constexpr LONG EVMSG_CHANGE = 604;
// Message entry of Command: the gadget that the event came from ('meid').
inline constexpr LONG BFM_ACTION_ID = 1835362660;
// Custom gadgets, and the setting "border" of the bitmap button ('brdr').
inline constexpr LONG CUSTOMGUI_BITMAPBUTTON = 1000479;
inline constexpr LONG CUSTOMGUI_LISTVIEW = 1018266;
inline constexpr LONG BITMAPBUTTON_BORDER = 1651663986;

// Column kinds of a list: check box ('chk') and text ('txt').
inline constexpr LONG LV_COLUMN_CHECKBOX = 6514795;
inline constexpr LONG LV_COLUMN_TEXT = 7633012;

// Dialog types of Open: 20 is non-modal and can be docked.
inline constexpr LONG DLG_TYPE_ASYNC = 20;

// Number formats of SetReal.
inline constexpr LONG FORMAT_REAL = 1718773089;
inline constexpr LONG FORMAT_LONG = 1718382183;

// Sizes of gadgets are in characters when shifted left by 16 bits, else in pixels; SizeChr encodes
// the former.
constexpr LONG SizeChr(LONG characters) { return characters << 16; }

class GeDialog {
 public:
  GeDialog();
  GeDialog(const GeDialog&) = delete;
  GeDialog& operator=(const GeDialog&) = delete;
  // Closes the dialog.
  virtual ~GeDialog();

  // Builds the gadgets; called once, at the first opening. The base does nothing: true. False
  // leaves the dialog closed and forgets the gadgets, so that the next opening builds it anew.
  virtual Bool CreateLayout();
  // Sets initial values; called at each opening. The base does nothing: true. False leaves the
  // dialog closed.
  virtual Bool InitValues();
  // A message of the host to all open dialogs. Called by the host's loop, never while a command or
  // another dialog call runs, so many changes before it are told once. The answer changes nothing.
  virtual Bool CoreMessage(LONG id, const BaseContainer& msg);
  // An event of gadget or menu entry `id`. Sent after a person changed its value or chose it; what
  // a plug-in sets by itself sends nothing. `msg` holds the gadget under BFM_ACTION_ID; the answer
  // says whether it was dealt with.
  virtual Bool Command(LONG id, const BaseContainer& msg);
  // True keeps the dialog open.
  virtual Bool AskClose();
  // There for the host's signature: the stand-in has no timer and sends no other messages.
  virtual void Timer(const BaseContainer& msg);
  virtual LONG Message(const BaseContainer& msg, BaseContainer& result);
  // The dialog is being closed and AskClose had no objection. Its gadgets and their values stay.
  virtual void DestroyWindow();

  // Runs CreateLayout (first time) and InitValues and shows the dialog; false when either fails. An
  // open one is brought to front: true. Position -1 lets the host choose, size 0 is the natural
  // one. `type` is DLG_TYPE_ASYNC; place and size are chosen by the stand-in. A call out of its own
  // CreateLayout or InitValues is refused.
  Bool Open(LONG type, LONG pluginid, LONG x, LONG y, LONG width, LONG height, LONG subid);
  // Opens the dialog in its place of the window layout. `secret` is handed on from
  // CommandData::RestoreLayout.
  Bool RestoreLayout(LONG pluginid, LONG subid, void* secret);
  // Hides the dialog; its gadgets and members stay. False when AskClose keeps it open or it is not
  // open.
  Bool Close();
  Bool IsOpen() const;

  void SetTitle(const String& title);

  // Groups. Children are added until the matching GroupEnd. 0 columns or rows: as many as needed.
  // `flags` of groups and gadgets are the host's alignment bits. An ID of 0 means "never asked for"
  // and may be used more than once.
  Bool GroupBegin(LONG id, LONG flags, LONG columns, LONG rows, const String& title,
                  LONG groupflags);
  Bool GroupEnd();
  // Of the open group: space between children, and border left, top, right, bottom, in pixels.
  Bool GroupSpace(LONG x, LONG y);
  Bool GroupBorderSpace(LONG left, LONG top, LONG right, LONG bottom);

  // Gadgets, added to the open group. False when the ID is taken.
  Bool AddButton(LONG id, LONG flags, LONG width, LONG height, const String& text);
  Bool AddCheckbox(LONG id, LONG flags, LONG width, LONG height, const String& text);
  // `border` changes nothing here.
  Bool AddStaticText(LONG id, LONG flags, LONG width, LONG height, const String& text, LONG border);
  Bool AddEditText(LONG id, LONG flags, LONG width = 0, LONG height = 0);
  Bool AddEditNumberArrows(LONG id, LONG flags, LONG width = 0, LONG height = 0);
  Bool AddComboBox(LONG id, LONG flags, LONG width = 0, LONG height = 0);
  // An entry of a combo box. The first one is chosen. False when the combo box has an entry `child`
  // already.
  Bool AddChild(LONG id, LONG child, const String& text);
  Bool AddSeparatorV(LONG height, LONG flags = 0);
  Bool AddListView(LONG id, LONG flags, LONG width, LONG height);
  // A custom gadget; null when the host has none of that type or the ID is taken. Owned by the
  // dialog. Only CUSTOMGUI_BITMAPBUTTON is made here, and it needs an ID. `settings` are copied.
  BaseCustomGui* AddCustomGui(LONG id, LONG type, const String& name, LONG flags, LONG width,
                              LONG height, const BaseContainer& settings);
  BaseCustomGui* FindCustomGui(LONG id, LONG type);

  // The menu bar: flushed, built with sub-menus and entries, finished. An ID stands in one place of
  // the whole bar, and 0 is none. Finished is false when a sub-menu is still open.
  void MenuFlushAll();
  Bool MenuSubBegin(const String& text);
  Bool MenuSubEnd();
  Bool MenuAddString(LONG id, const String& text);
  Bool MenuAddSeparator();
  Bool MenuFinished();
  // Whether entry `id` can be chosen and shows a check mark. False for an unknown entry. Entries
  // begin enabled and without a mark; marks do not follow values by themselves.
  Bool MenuInitString(LONG id, Bool enabled, Bool checked);

  // Values of gadgets. For an unknown ID: false, nothing happens. Integer reads of a number field
  // truncate. Setting sends no Command. A number field clamps to its range; a combo box takes the
  // number of one of its entries only. SetString replaces the text of a field, or the label of a
  // button, check box, group or static text. SetReal gives range, step and format besides; false
  // when `min` is above `max`.
  Bool SetBool(LONG id, Bool value);
  Bool SetLong(LONG id, LONG value);
  Bool SetReal(LONG id, Real value, Real min, Real max, Real step, LONG format);
  Bool SetString(LONG id, const String& value);
  Bool GetBool(LONG id, Bool& value) const;
  Bool GetLong(LONG id, LONG& value) const;
  Bool GetReal(LONG id, Real& value) const;
  Bool GetString(LONG id, String& value) const;
  // A disabled gadget is shown, sends nothing and can still be set and read.
  Bool Enable(LONG id, Bool enabled);

 private:
  friend struct engine::DialogBody;
  std::unique_ptr<engine::DialogBody> body_;
};

// A gadget with operations of its own. Owned by its dialog.
class BaseCustomGui {
 public:
  LONG GetId() const;

 protected:
  ~BaseCustomGui() = default;
  friend struct engine::DialogBody;
  GeDialog* dialog_ = nullptr;
  engine::Gadget* gadget_ = nullptr;
};

// A picture. SetImage shows a file; false, keeping what it showed, when it cannot be read.
class BitmapButtonCustomGui : public BaseCustomGui {
 public:
  Bool SetImage(const Filename& file);

 private:
  friend struct engine::DialogBody;
};

// The rows of a list gadget. The plug-in owns this object and attaches it to a gadget; rows belong
// to the gadget. Rows are values: a change needs SetItem. Row numbers are the plug-in's own, 0 or
// greater.
class SimpleListView {
 public:
  // Connects to list gadget `id`; false when there is none. Safe to outlive the dialog: every call
  // answers false or 0 then.
  Bool AttachListView(GeDialog* dialog, LONG id);
  // The columns: key = column number, value = LV_COLUMN_ kind, in display order. `count` of them.
  // False for an unknown kind, the columns are as before then.
  Bool SetLayout(LONG count, const BaseContainer& columns);

  // Sets or appends the row with number `id`. False when nothing is attached. The key of a value is
  // the number of its column. What changed shows after DataChanged.
  Bool SetItem(LONG id, const BaseContainer& row);
  Bool GetItem(LONG id, BaseContainer* row) const;
  // Row at `line` (0-based) in display order, with its number; false outside.
  Bool GetItemLine(LONG line, LONG* id, BaseContainer* row) const;
  LONG GetItemCount() const;
  // Removing rows clears the selection.
  Bool RemoveItem(LONG id);
  void RemoveAll();

  // The selected lines. Lines count from 0 in display order and are no row numbers; GetItemLine
  // tells the number of a line.
  Bool GetSelection(BaseSelect* selection) const;
  Bool SetSelection(const BaseSelect& selection);
  // Tells the view that rows changed. Call it once after a batch. Rows that were selected by name
  // before a removal and are back are selected again; no event follows.
  void DataChanged();

 private:
  GeDialog* dialog_ = nullptr;
  LONG id_ = 0;
};

}  // namespace host
