#include "engine/outside/ScriptedOutside.h"

#include <utility>

#include "engine/outside/FileHandle.h"
#include "engine/outside/RealOutside.h"

namespace engine {
namespace {

template <class T>
T TakeFirst(std::deque<T>& script, T otherwise) {
  if (script.empty()) return otherwise;
  T first = std::move(script.front());
  script.pop_front();
  return first;
}

}  // namespace

ScriptedOutside::ScriptedOutside(std::string userFolder)
    : ScriptedOutside(std::make_unique<RealOutside>(), std::move(userFolder)) {}

ScriptedOutside::ScriptedOutside(std::unique_ptr<Outside> owned, std::string userFolder)
    : ForwardingOutside(*owned), owned_(std::move(owned)), userFolder_(std::move(userFolder)) {}

ScriptedOutside::ScriptedOutside(Outside& inner, std::string userFolder)
    : ForwardingOutside(inner), userFolder_(std::move(userFolder)) {}

ScriptedOutside::~ScriptedOutside() = default;

void ScriptedOutside::StopProgressAt(int call) { stopAt_ = call == 0 ? 0 : progressCalls_ + call; }

std::string ScriptedOutside::TakeTranscript() {
  std::string text;
  for (const std::string& line : std::exchange(transcript_, {})) text += line + "\n";
  return text;
}

void ScriptedOutside::Tell(const std::string& text) { transcript_.push_back("tell: " + text); }

bool ScriptedOutside::Ask(const std::string& text) {
  const bool yes = TakeFirst(answers_, otherAnswer_);
  transcript_.push_back("ask: " + text + (yes ? " -> yes" : " -> no"));
  return yes;
}

std::optional<std::string> ScriptedOutside::ChooseFile(const FileQuestion& question) {
  std::optional<std::string> path = TakeFirst(choices_, std::optional<std::string>());
  transcript_.push_back("choose: " + question.title + " -> " + path.value_or("(canceled)"));
  return path;
}

void ScriptedOutside::ShowStatus(const std::string& text) {
  transcript_.push_back("status: " + text);
}

void ScriptedOutside::ClearStatus() { transcript_.push_back("status cleared"); }

bool ScriptedOutside::Progress(double, const std::string&) {
  const int call = ++progressCalls_;
  return stopAt_ == 0 || call < stopAt_;
}

std::optional<DiskSpace> ScriptedOutside::DoSpace(const std::string& path) {
  return space_ ? DiskSpace{*space_, 4096} : ForwardingOutside::DoSpace(path);
}

Status ScriptedOutside::DoOpenWithViewer(const std::string& path) {
  if (Kind(path) == FileKind::Missing) return FileFailure("Cannot open", path, "it is not there");
  transcript_.push_back("view: " + path);
  return {};
}

}  // namespace engine
