#include "tests/support/PluginSession.h"

#include <cstdlib>
#include <stdexcept>

#include "source/Stagemarks/keys/ElementKeys.h"
#include "source/Stagemarks/keys/Gadgets.h"
#include "source/Stagemarks/keys/PluginIds.h"
#include "tests/support/ContainerText.h"

namespace tests {

namespace {

// Any moment that shows which field of the time went where.
constexpr host::LocalFileTime kNow{2011, 3, 5, 14, 7, 59};

host::String HostText(const std::string& utf8) { return host::String(std::string_view(utf8)); }

[[noreturn]] void Fail(const std::string& what) { throw std::runtime_error(what); }

}  // namespace

PluginSession::PluginSession(engine::ApplicationSetup setup)
    : services_(folder_.Path() + "/user"), application_(services_.Get(), std::move(setup)) {
  services_.clock.now = kNow;
  const engine::LoadReport report =
      application_.LoadPlugin(TEST_PLUGIN_DIR "/Stagemarks/Stagemarks.so");
  if (report.outcome != engine::LoadOutcome::Loaded) Fail(report.message);
  host::SetActiveDocument(application_.NewDocument());
  if (!application_.ExecuteCommand(stagemarks::kPluginId))
    Fail("the command did not open its dialog");
  Deliver();
  for (host::GeDialog* dialog : engine::OpenDialogs()) {
    if (engine::DialogPluginId(*dialog) == stagemarks::kPluginId) dialog_ = dialog;
  }
  if (!dialog_) Fail("the dialog is not open");
}

PluginSession::~PluginSession() = default;

host::BaseDocument& PluginSession::Doc() const {
  host::BaseDocument* doc = host::GetActiveDocument();
  if (!doc) Fail("no document is active");
  return *doc;
}

void PluginSession::PretendSaved(const std::string& name) {
  Doc().SetDocumentPath(host::Filename(HostText(Folder())));
  Doc().SetDocumentName(host::Filename(HostText(name)));
}

void PluginSession::SaveAs(const std::string& name) {
  const engine::Status saved = application_.SaveDocumentAs(Doc(), Folder() + "/" + name);
  if (!saved) Fail(saved.Message());
}

bool PluginSession::Record(const std::string& name) {
  Type(stagemarks::kNameField, name);
  return Press(stagemarks::kRecord);
}

bool PluginSession::Load(const std::string& name) {
  SelectRows({name});
  return Press(stagemarks::kLoad);
}

bool PluginSession::Delete(const std::string& name) {
  SelectRows({name});
  return Press(stagemarks::kDelete);
}

bool PluginSession::Rename(const std::string& from, const std::string& to) {
  SelectRows({from});
  Type(stagemarks::kNameField, to);
  return Press(stagemarks::kRename);
}

bool PluginSession::Press(host::LONG button) {
  if (!engine::FindGadget(*dialog_, button)) Fail("no button " + std::to_string(button));
  const bool answer = engine::PressButton(*dialog_, button);
  Deliver();
  return answer;
}

bool PluginSession::Menu(host::LONG entry) {
  if (!engine::FindMenuEntry(*dialog_, entry)) Fail("no menu entry " + std::to_string(entry));
  const bool answer = engine::ChooseMenu(*dialog_, entry);
  Deliver();
  return answer;
}

bool PluginSession::Type(host::LONG field, const std::string& text) {
  const bool answer = engine::TypeText(*dialog_, field, HostText(text));
  Deliver();
  return answer;
}

bool PluginSession::Tick(host::LONG checkbox, bool on) {
  const bool answer = engine::SetCheckbox(*dialog_, checkbox, on);
  Deliver();
  return answer;
}

bool PluginSession::SelectRows(const std::vector<std::string>& names) {
  std::vector<host::LONG> lines;
  for (const std::string& name : names) lines.push_back(LineOf(name));
  const bool answer = engine::SelectLines(*dialog_, stagemarks::kList, lines);
  Deliver();
  return answer;
}

bool PluginSession::Check(const std::string& name) {
  const bool answer =
      engine::ToggleLine(*dialog_, stagemarks::kList, LineOf(name), stagemarks::kColumnChecked);
  Deliver();
  return answer;
}

bool PluginSession::Undo() {
  const bool done = application_.Undo();
  Deliver();
  return done;
}

bool PluginSession::Redo() {
  const bool done = application_.Redo();
  Deliver();
  return done;
}

std::string PluginSession::Rows() const {
  std::string text;
  for (const engine::Row& row : List().listRows) {
    text += row.values.GetBool(stagemarks::kColumnChecked) ? "[x] " : "[ ] ";
    if (row.values.GetString(stagemarks::kColumnCurrent) == host::String("*")) text += "* ";
    text += row.values.GetString(stagemarks::kColumnName).ToUtf8() + "\n";
  }
  return text;
}

std::string PluginSession::Times() const {
  std::string text;
  for (const engine::Row& row : List().listRows)
    text += row.values.GetString(stagemarks::kColumnDate).ToUtf8() + "\n";
  return text;
}

std::string PluginSession::NameField() const {
  host::String text;
  dialog_->GetString(stagemarks::kNameField, text);
  return text.ToUtf8();
}

std::string PluginSession::Picture() const {
  const engine::Gadget* button = engine::FindGadget(*dialog_, stagemarks::kPreviewButton);
  return button ? button->image.GetFileString().ToUtf8() : "no button";
}

bool PluginSession::Marked(host::LONG entry) const {
  const engine::MenuEntry* found = engine::FindMenuEntry(*dialog_, entry);
  if (!found) Fail("no menu entry " + std::to_string(entry));
  return found->checked;
}

host::BaseContainer PluginSession::Store(host::LONG id) const {
  return Doc().GetDataInstance()->GetContainer(id);
}

bool PluginSession::HasStore(host::LONG id) const {
  return Doc().GetDataInstance()->FindIndex(id) != host::NOTOK;
}

host::BaseContainer PluginSession::Element(host::LONG id) const {
  return Store(stagemarks::kRecordStore).GetContainer(id);
}

std::string PluginSession::Part(host::LONG element, host::LONG key) const {
  return ContainerLines(Element(element).GetContainer(key), &Doc());
}

std::string PluginSession::StoreText(host::LONG id) const {
  return ContainerLines(Store(id), &Doc());
}

host::LONG PluginSession::LineOf(const std::string& name) const {
  const std::vector<engine::Row>& rows = List().listRows;
  for (std::size_t line = 0; line < rows.size(); ++line) {
    if (rows[line].values.GetString(stagemarks::kColumnName).ToUtf8() == name)
      return static_cast<host::LONG>(line);
  }
  Fail("no row \"" + name + "\"");
}

const engine::Gadget& PluginSession::List() const {
  const engine::Gadget* list = engine::FindGadget(*dialog_, stagemarks::kList);
  if (!list) Fail("no list");
  return *list;
}

}  // namespace tests
