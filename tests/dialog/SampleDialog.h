// A dialog with one gadget of every kind, which writes down what it hears. The test owns it.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "engine/dialog/Dialogs.h"

namespace sample {

enum Id : host::LONG {
  kButton = 1,
  kCheckbox,
  kText,
  kField,
  kNumber,
  kCombo,
  kList,
  kPicture,
  kFirstChoice = 50,
  kSecondChoice,
  kEntry = 60,
  kMarkedEntry,
  kNoSuchGadget = 999,
  kCheckedColumn = 70,
  kNameColumn,
};

class SampleDialog : public host::GeDialog {
 public:
  std::vector<std::string> heard;
  bool layoutSucceeds = true;
  bool valuesSucceed = true;
  bool staysOpen = false;
  std::function<void()> onCommand;
  host::SimpleListView list;
  host::BaseCustomGui* picture = nullptr;

  host::Bool CreateLayout() override {
    heard.push_back("layout");
    SetTitle("Sample");
    GroupBegin(100, 63, 1, 0, "", 0);
    AddButton(kButton, 0, 0, 0, "Go");
    AddCheckbox(kCheckbox, 0, 0, 0, "Fast");
    AddStaticText(kText, 0, 0, 0, "Speed", 0);
    if (!layoutSucceeds) return host::FALSE;
    AddEditText(kField, 0, 160);
    AddEditNumberArrows(kNumber, 0);
    AddComboBox(kCombo, 0);
    AddChild(kCombo, kFirstChoice, "first");
    AddChild(kCombo, kSecondChoice, "second");
    AddListView(kList, 63, host::SizeChr(30), host::SizeChr(10));
    picture = AddCustomGui(kPicture, host::CUSTOMGUI_BITMAPBUTTON, "picture", 0, host::SizeChr(20),
                           0, host::BaseContainer());
    GroupEnd();
    BuildMenus();
    return list.AttachListView(this, kList);
  }

  host::Bool InitValues() override {
    heard.push_back("values");
    host::BaseContainer columns;
    columns.SetLong(kCheckedColumn, host::LV_COLUMN_CHECKBOX);
    columns.SetLong(kNameColumn, host::LV_COLUMN_TEXT);
    list.SetLayout(2, columns);
    return valuesSucceed;
  }

  host::Bool Command(host::LONG id, const host::BaseContainer& msg) override {
    heard.push_back("command " + std::to_string(id) + " from " +
                    std::to_string(msg.GetLong(host::BFM_ACTION_ID)) +
                    (engine::InsideDialogCall() ? "" : " outside"));
    if (onCommand) onCommand();
    return host::TRUE;
  }

  host::Bool CoreMessage(host::LONG id, const host::BaseContainer&) override {
    heard.push_back("core " + std::to_string(id));
    if (onCommand) onCommand();
    return host::TRUE;
  }

  host::Bool AskClose() override { return staysOpen; }
  void DestroyWindow() override { heard.push_back("destroyed"); }

  bool OpenIt() { return Open(host::DLG_TYPE_ASYNC, 4711, -1, -1, 0, 0, 0); }

  // The callbacks heard since the last call, joined by commas.
  std::string Heard() {
    std::string text;
    for (const std::string& one : heard) text += (text.empty() ? "" : ", ") + one;
    heard.clear();
    return text;
  }

  static host::BaseContainer NamedRow(const char* name, bool checked) {
    host::BaseContainer row;
    row.SetBool(kCheckedColumn, checked);
    row.SetString(kNameColumn, name);
    return row;
  }

 private:
  void BuildMenus() {
    MenuFlushAll();
    MenuSubBegin("Edit");
    MenuAddString(kEntry, "Do it");
    MenuAddSeparator();
    MenuSubBegin("More");
    MenuAddString(kMarkedEntry, "Marked");
    MenuSubEnd();
    MenuSubEnd();
    MenuFinished();
  }
};

}  // namespace sample
