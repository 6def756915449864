// PluginSession: the built plug-in, loaded as in life into an application whose person is a script.
// It has a fresh folder, one new document and the open dialog. Its verbs press the dialog's own
// gadgets and deliver the posted events afterwards. A verb that finds nothing to press throws
// std::runtime_error. Main thread; one at a time.
#pragma once

#include <string>
#include <vector>

#include "engine/application/Application.h"
#include "engine/dialog/Dialogs.h"
#include "tests/support/ScratchFolder.h"
#include "tests/support/ScriptedServices.h"

namespace tests {

class PluginSession {
 public:
  explicit PluginSession(engine::ApplicationSetup setup = {});
  ~PluginSession();

  const std::string& Folder() const { return folder_.Path(); }
  ScriptedServices& Services() { return services_; }
  ScriptedPerson& Person() { return services_.person; }
  engine::Application& App() { return application_; }
  host::GeDialog& Dialog() { return *dialog_; }
  // The active document.
  host::BaseDocument& Doc() const;
  // Gives the active document this name in Folder(), as if it had been saved there, or saves it.
  void PretendSaved(const std::string& name);
  void SaveAs(const std::string& name);

  // --- Verbs. They answer what the dialog's Command answered.
  // Types the name and presses "Record Element".
  bool Record(const std::string& name);
  // Selects the row and presses the button.
  bool Load(const std::string& name);
  bool Delete(const std::string& name);
  bool Rename(const std::string& from, const std::string& to);
  // Presses a button, chooses a menu entry, types into a field, sets a check box.
  bool Press(host::LONG button);
  bool Menu(host::LONG entry);
  bool Type(host::LONG field, const std::string& text);
  bool Tick(host::LONG checkbox, bool on);
  // Selects or flips rows by name: the first row of that name. Selecting nothing clears the
  // selection.
  bool SelectRows(const std::vector<std::string>& names);
  bool Check(const std::string& name);
  bool Undo();
  bool Redo();
  // Delivers posted events, as the host's loop does.
  void Deliver() { application_.DeliverEvents(); }
  // Answers the next question.
  void Answer(bool yes) { Person().AnswerNext(yes); }

  // --- What can be seen.
  // One line a row: "[x] * Name", the mark and the star where they are.
  std::string Rows() const;
  // The time column of each row, a line each.
  std::string Times() const;
  // The text of the name field, and the file in the bitmap button without its folder.
  std::string NameField() const;
  std::string Picture() const;
  // The menu's check mark.
  bool Marked(host::LONG entry) const;
  // All that was told, asked and shown since the last call, a line each.
  std::string Transcript() { return Person().TakeTranscript(); }

  // --- The stores of the active document.
  host::BaseContainer Store(host::LONG id) const;
  // Whether the document's data holds that store at all.
  bool HasStore(host::LONG id) const;
  // The record under an element ID, and one of its parts as lines.
  host::BaseContainer Element(host::LONG id) const;
  std::string Part(host::LONG element, host::LONG key) const;
  // A store as lines.
  std::string StoreText(host::LONG id) const;

 private:
  host::LONG LineOf(const std::string& name) const;
  const engine::Gadget& List() const;

  ScratchFolder folder_;
  ScriptedServices services_;
  engine::Application application_;
  host::GeDialog* dialog_ = nullptr;
};

}  // namespace tests
