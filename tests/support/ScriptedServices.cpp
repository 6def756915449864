#include "tests/support/ScriptedServices.h"

#include <utility>

namespace tests {
namespace {

template <class T>
T TakeFirst(std::deque<T>& script, T otherwise) {
  if (script.empty()) return otherwise;
  T first = std::move(script.front());
  script.pop_front();
  return first;
}

}  // namespace

std::string ScriptedPerson::TakeTranscript() {
  std::string text;
  for (const std::string& line : std::exchange(transcript_, {})) text += line + "\n";
  return text;
}

void ScriptedPerson::Tell(const std::string& text) { WriteDown("tell: " + text); }

bool ScriptedPerson::Ask(const std::string& text) {
  const bool yes = TakeFirst(answers_, otherAnswer_);
  WriteDown("ask: " + text + (yes ? " -> yes" : " -> no"));
  return yes;
}

std::optional<std::string> ScriptedPerson::ChooseFile(const engine::FileQuestion& question) {
  std::optional<std::string> path = TakeFirst(choices_, std::optional<std::string>());
  WriteDown("choose: " + question.title + " -> " + path.value_or("(canceled)"));
  return path;
}

void ScriptedPerson::ShowStatus(const std::string& text) { WriteDown("status: " + text); }

void ScriptedPerson::ClearStatus() { WriteDown("status cleared"); }

bool ScriptedPerson::Progress(double, const std::string&) {
  const int call = ++progressCalls_;
  return stopAt_ == 0 || call < stopAt_;
}

engine::Status ScriptedViewer::DoOpen(const std::string& path) {
  person_.WriteDown("view: " + path);
  return {};
}

ScriptedServices::ScriptedServices(const std::string& userFolder) {
  if (userFolder.empty()) return;
  folders = {userFolder + "/config", userFolder + "/data", userFolder + "/cache",
             userFolder + "/state"};
}

}  // namespace tests
