#include "engine/application/Application.h"

#include <utility>

#include "engine/application/ApplicationBody.h"
#include "engine/dialog/Dialogs.h"
#include "host/C4DThread.h"
#include "host/GeDialog.h"

namespace engine {
namespace {

Application* current = nullptr;

// Counts a command as running until its scope is left, by an exception of the plug-in, too: after
// that events must be delivered as before.
class CommandRun {
 public:
  explicit CommandRun(int& depth) : depth_(depth) { ++depth_; }
  CommandRun(const CommandRun&) = delete;
  CommandRun& operator=(const CommandRun&) = delete;
  ~CommandRun() { --depth_; }

 private:
  int& depth_;
};

}  // namespace

Application::Application(const Services& services, ApplicationSetup setup)
    : body_(std::make_unique<ApplicationBody>(services, std::move(setup))) {
  // One application may live within the life of another, as in tests.
  body_->former = std::exchange(current, this);
}

// Plug-ins first: PluginEnd may still look at documents, and their scene hooks end while these
// live.
Application::~Application() {
  UnloadPlugins();
  body_->documents.KillAll();
  current = body_->former;
}

Application* Application::Current() { return current; }

const Services& Application::GetServices() const { return body_->services; }

LoadReport Application::LoadPlugin(const std::string& path) {
  return body_->plugins.Load(path, body_->services.files, body_->hooks);
}

std::vector<LoadReport> Application::LoadPlugins(const std::string& folder) {
  std::vector<LoadReport> reports;
  const Result<std::vector<std::string>> names = body_->services.files.ListFolders(folder);
  if (!names) return reports;
  for (const std::string& name : names.Value())
    reports.push_back(LoadPlugin(folder + "/" + name + "/" + name + ".so"));
  return reports;
}

void Application::UnloadPlugins() {
  host::StopAllThreads();
  body_->plugins.UnloadAll(body_->hooks);
}

const std::vector<CommandPlugin>& Application::Commands() const {
  return body_->plugins.Commands();
}

bool Application::ExecuteCommand(host::LONG id) {
  constexpr host::LONG kEnabled = 1;
  for (const CommandPlugin& command : Commands()) {
    if (command.id != id) continue;
    host::BaseDocument* doc = body_->documents.Active();
    // Asked now, as a menu would be grayed: what was possible before need not be any more.
    if ((command.data->GetState(doc) & kEnabled) == 0) return false;
    const CommandRun run(body_->commandDepth);
    return command.data->Execute(doc);
  }
  return false;
}

void Application::RestoreLayouts() {
  for (const CommandPlugin& command : Commands()) command.data->RestoreLayout(this);
}

bool Application::Undo() {
  host::BaseDocument* doc = body_->documents.Active();
  if (doc == nullptr || !doc->DoUndo()) return false;
  host::EventAdd();
  return true;
}

bool Application::Redo() {
  host::BaseDocument* doc = body_->documents.Active();
  if (doc == nullptr || !doc->DoRedo()) return false;
  host::EventAdd();
  return true;
}

void Application::DeliverEvents() {
  if (body_->commandDepth > 0 || InsideDialogCall()) return;
  // Events posted while the dialogs hear of this wait for the next round.
  if (body_->eventPosted.exchange(false))
    SendCoreMessage(host::EVMSG_CHANGE, host::BaseContainer());
}

bool Application::HasPendingEvents() const { return body_->eventPosted; }

}  // namespace engine

namespace host {

void EventAdd(LONG) {
  if (engine::ApplicationBody* body = engine::ApplicationBody::Current()) body->eventPosted = true;
}

}  // namespace host
