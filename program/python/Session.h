// Session: what scripts work on: the application with the plug-in loaded, its documents by number
// and the steps that are open. The first call makes it, or finds the application of the desktop
// that the script runs in. Scripts hold numbers only, so that nothing they keep can dangle:
// whatever is gone is refused with a Failure. It belongs to the thread that made it.
#pragma once

#include <sys/types.h>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "engine/application/Application.h"
#include "engine/core/ContainerContents.h"
#include "engine/editing/StepwiseEdit.h"
#include "engine/outside/SystemServices.h"
#include "engine/undo/Undo.h"
#include "program/pictures/StagemarksDialog.h"

namespace scripting {

using DocumentId = host::ULLONG;  // engine::NumberOf
using ElementId = engine::NodeId;
using Names = std::vector<std::string>;

// The kind of a failure, for a script to catch; the message is for a person.
enum class Fault {
  Failed,       // it did not work
  NotFound,     // no such thing, or several of that name
  Refused,      // a question that no argument answered
  Gone,         // the document is closed, the element deleted
  Misused,      // a value that cannot be
  Stopped,      // by whoever hears of the progress
  OtherThread,  // another thread, a forked process, or a call within a call
};
class Failure : public std::runtime_error {
 public:
  Failure(Fault what, const std::string& message) : std::runtime_error(message), fault(what) {}
  Fault fault;
};
// Throws where the engine said no.
void Check(const engine::Status& status);

// Who answers while a script runs: questions as its arguments say, everything else is kept.
class ScriptPerson : public engine::Person {
 public:
  // Hears of progress, on any thread; false stops the work. Set once.
  std::function<bool(double share, const std::string& what)> listener;
  // Of the desktop that the script runs in; null for none.
  engine::Person* behind = nullptr;

  void Tell(const std::string& text) override { told_.push_back(text); }
  bool Ask(const std::string& text) override;
  std::optional<std::string> ChooseFile(const engine::FileQuestion& question) override;
  void ShowStatus(const std::string& text) override;
  void ClearStatus() override;
  bool Progress(double fraction, const std::string& what) override;

  // Set the answer to every question of the next call, and the next choice of a file.
  void Answer(bool yes) { yes_ = yes; }
  void ChooseNextFile(const std::string& path) { nextFile_ = path; }
  // Forget clears all at the start of a call; the others tell of that call.
  void Forget();
  const Names& Told() const { return told_; }
  const Names& Refused() const { return refused_; }
  bool WasStopped() const { return stopped_; }

 private:
  bool yes_ = false;
  std::optional<std::string> nextFile_;
  Names told_;
  Names refused_;
  std::atomic<bool> stopped_{false};
};

class Session {
 public:
  // The only session, made by the first call. Throws where the plug-in cannot be loaded.
  static Session& Get();
  // Closes all documents and ends the application, if it was made here. Nothing works afterwards.
  static void End();
  // One person for all sessions.
  static ScriptPerson& Person();

  engine::Application& App() { return *application_; }
  const engine::Services& Services() const { return *services_; }
  bool IsInDesktop() const { return !own_; }

  // Throws for one that is closed or gone. Element 0 is the document itself.
  host::BaseDocument& Document(DocumentId document) const;
  host::BaseList2D& Element(host::BaseDocument& doc, ElementId element) const;
  // An imported document, whose path is only where its name came from, until it is saved.
  void SetPlaced(DocumentId document, bool isPlaced);
  bool IsPlaced(DocumentId document) const { return !unplaced_.contains(document); }
  // The dialog, with the document as the active one until the call is over; opened where it is
  // closed. What it changes of the states is an undo step, as at the desktop.
  pictures::StagemarksDialog DialogFor(host::BaseDocument& doc);
  // A document that this call opened: closed again where the call fails after all, with the one
  // that was active before as the active one.
  void Opening(DocumentId document, DocumentId activeBefore);

  // Steps, the innermost last.
  int BeginStep(DocumentId document, const std::string& name);
  // Ends a step, and with it all steps inside it. Without `keep` everything is taken back,
  // recorded Stagemarks too.
  void EndStep(int step, bool keep);
  bool HasStep(DocumentId document) const;
  // Ends the steps of a document.
  void DropSteps(DocumentId document);

 private:
  friend class Call;
  struct OpenStep {
    int number;
    DocumentId document;
    host::BaseContainer data;  // of the document when it began
    std::unique_ptr<engine::UndoScope> scope;
  };

  Session();
  void LoadPlugin();
  void CloseStep(bool keep);
  void ReturnToActive();
  void CloseOpening();

  std::thread::id thread_ = std::this_thread::get_id();
  pid_t process_;
  std::unique_ptr<engine::SystemServices> system_;
  std::unique_ptr<engine::Application> own_;
  engine::Application* application_ = nullptr;
  std::unique_ptr<engine::Services> services_;
  std::vector<OpenStep> steps_;
  std::set<DocumentId> unplaced_;
  DocumentId formerlyActive_ = 0;  // while a call has another one as the active document
  DocumentId opening_ = 0;         // by the call that is at work
  int lastStep_ = 0;
  bool busy_ = false;
};

// One call of a script, from begin to end: refused from another thread, in a forked process and
// within another call.
class Call {
 public:
  Call();
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;
  ~Call();
  // Throws when a file operation of the call failed, or when it was stopped.
  void Finish();

 private:
  Session& session_;
  std::optional<engine::PublishedServicesScope> published_;
  std::size_t mark_;
};

// Runs all of an edit, with progress; throws where it was stopped, and nothing is changed then.
void RunEdit(host::BaseDocument& doc, engine::StepwiseEdit edit);

// The document of a number that was given out; throws where it is closed.
inline host::BaseDocument& Find(DocumentId document) { return Session::Get().Document(document); }

// Throws the sentence of what went wrong: of what the plug-in told or asked, else this one.
// `argument`: how a script says yes to what was asked, "overwrite=True".
[[noreturn]] void FailAs(const std::string& sentence, const std::string& argument = "");

}  // namespace scripting
