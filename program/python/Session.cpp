// One session for a process: with an application of its own, or within the desktop's (decision 65).
// Each call from Python is a Call: it checks process and thread, forgets the answers of the call
// before, and turns failures of files, stops and questions without an answer into exceptions at its
// end.
#include "program/python/Session.h"

#include <unistd.h>

#include <algorithm>

#include "engine/application/ProgramPlaces.h"
#include "engine/dialog/Dialogs.h"
#include "engine/editing/FieldValue.h"
#include "engine/render/ImageDecoder.h"
#include "engine/scene/DocumentState.h"
#include "host/Application.h"
#include "program/outcome/Outcome.h"

namespace scripting {

namespace {

constexpr const char* kPlugin = "Stagemarks";

// Never destroyed by the end of the process: the engine may be gone by then.
Session* session = nullptr;
bool hasEnded = false;

std::string Joined(const Names& sentences) {
  std::string text;
  for (const std::string& sentence : sentences) text += (text.empty() ? "" : "\n") + sentence;
  return text;
}

std::optional<pictures::StagemarksDialog> OpenDialog(const engine::Services& services) {
  for (host::GeDialog* open : engine::OpenDialogs()) {
    const pictures::StagemarksDialog dialog(*open, &services);
    if (dialog.Fits()) return dialog;
  }
  return std::nullopt;
}

}  // namespace

void Check(const engine::Status& status) {
  if (status) return;
  const bool stopped = Session::Person().WasStopped();
  throw Failure(stopped ? Fault::Stopped : Fault::Failed, status.Message());
}

// A question that no argument has answered is remembered and answered with no.
bool ScriptPerson::Ask(const std::string& text) {
  if (!yes_) refused_.push_back(text);
  return yes_;
}

std::optional<std::string> ScriptPerson::ChooseFile(const engine::FileQuestion&) {
  return std::exchange(nextFile_, std::nullopt);
}

void ScriptPerson::ShowStatus(const std::string& text) {
  if (behind) behind->ShowStatus(text);
}

void ScriptPerson::ClearStatus() {
  if (behind) behind->ClearStatus();
}

// Once stopped it stays so until the next call.
bool ScriptPerson::Progress(double fraction, const std::string& what) {
  const bool goesOn = !stopped_ && (!listener || listener(fraction, what)) &&
                      (!behind || behind->Progress(fraction, what));
  if (!goesOn) stopped_ = true;
  return goesOn;
}

void ScriptPerson::Forget() {
  yes_ = false;
  nextFile_.reset();
  told_.clear();
  refused_.clear();
  stopped_ = false;
}

ScriptPerson& Session::Person() {
  static auto* const person = new ScriptPerson;
  return *person;
}

// A session within another application than the present one is over.
Session& Session::Get() {
  const bool isOfOther =
      session && !session->own_ && session->application_ != engine::Application::Current();
  if (isOfOther) delete std::exchange(session, nullptr);
  if (hasEnded) throw Failure(Fault::Gone, "The program is ending; nothing can be opened anymore.");
  if (!session) {
    std::unique_ptr<Session> made(new Session);
    if (made->own_) made->LoadPlugin();
    session = made.release();
  }
  return *session;
}

// In a forked child nothing is ended: it belongs to the parent.
void Session::End() {
  if (!session || session->process_ != getpid()) return;
  hasEnded = session->own_ != nullptr;
  while (!session->steps_.empty()) session->CloseStep(true);
  delete std::exchange(session, nullptr);
}

// Within the desktop its own application is used, with a person of ours before the desktop's.
Session::Session() : process_(getpid()) {
  Person().behind = nullptr;
  application_ = engine::Application::Current();
  if (!application_) {
    system_ = std::make_unique<engine::SystemServices>(Person());
    engine::ApplicationSetup setup;
    setup.importWorker = engine::ImportWorkerProgram();
    setup.importLimits = engine::ChosenImportLimits(Person());
    engine::DecodeImagesBy(setup.importWorker);
    own_ = std::make_unique<engine::Application>(system_->Get(), setup);
    application_ = own_.get();
  } else {
    Person().behind = &application_->GetServices().person;
  }
  const engine::Services& given = application_->GetServices();
  services_ = std::make_unique<engine::Services>(engine::Services{
      given.files, given.clock, Person(), given.ledger, given.folders, given.viewer});
}

void Session::LoadPlugin() {
  const std::string path = engine::PluginFolder() + "/" + kPlugin + "/" + kPlugin + ".so";
  const engine::LoadReport report = application_->LoadPlugin(path);
  if (report.outcome != engine::LoadOutcome::Loaded) throw Failure(Fault::Failed, report.message);
}

host::BaseDocument& Session::Document(DocumentId document) const {
  for (host::BaseDocument* doc : application_->Documents()) {
    if (engine::NumberOf(*doc) == document) return *doc;
  }
  throw Failure(Fault::Gone, "This document is closed.");
}

host::BaseList2D& Session::Element(host::BaseDocument& doc, ElementId element) const {
  if (element == 0) return doc;
  if (host::BaseList2D* found = engine::FindElement(doc, element)) return *found;
  throw Failure(Fault::Gone, "This element is not in the document anymore.");
}

void Session::SetPlaced(DocumentId document, bool isPlaced) {
  if (isPlaced) {
    unplaced_.erase(document);
  } else {
    unplaced_.insert(document);
  }
}

// The dialog shows the active document; which one was active before is remembered for the end of
// the call.
pictures::StagemarksDialog Session::DialogFor(host::BaseDocument& doc) {
  const host::BaseDocument* active = host::GetActiveDocument();
  if (active != &doc && active && formerlyActive_ == 0) formerlyActive_ = engine::NumberOf(*active);
  host::SetActiveDocument(&doc);
  auto dialog = OpenDialog(*services_);
  for (const engine::CommandPlugin& command : application_->Commands()) {
    if (dialog || command.name.ToUtf8() != kPlugin) continue;
    if (application_->ExecuteCommand(command.id)) dialog = OpenDialog(*services_);
  }
  if (!dialog)
    throw Failure(Fault::Failed, "The plug-in was loaded, but its dialog could not be opened.");
  application_->DeliverEvents();
  return *dialog;
}

void Session::ReturnToActive() {
  const DocumentId former = std::exchange(formerlyActive_, 0);
  for (host::BaseDocument* doc : application_->Documents()) {
    if (engine::NumberOf(*doc) == former) host::SetActiveDocument(doc);
  }
}

void Session::Opening(DocumentId document, DocumentId activeBefore) {
  opening_ = document;
  formerlyActive_ = activeBefore;
}

void Session::CloseOpening() {
  const DocumentId opening = std::exchange(opening_, 0);
  for (host::BaseDocument* doc : application_->Documents()) {
    if (engine::NumberOf(*doc) == opening) return host::KillDocument(doc);
  }
}

int Session::BeginStep(DocumentId document, const std::string& name) {
  host::BaseDocument& doc = Document(document);
  steps_.push_back({++lastStep_, document, *doc.GetDataInstance(),
                    std::make_unique<engine::UndoScope>(doc, name)});
  return lastStep_;
}

// Undo does not cover the stored data, so that is put back by hand, and only where it differs:
// writing counts as a change.
void Session::CloseStep(bool keep) {
  OpenStep step = std::move(steps_.back());
  steps_.pop_back();
  if (!keep) {
    host::BaseDocument& doc = Document(step.document);
    step.scope->Cancel();
    if (!engine::Identical(*doc.GetDataInstance(), step.data)) *doc.GetDataInstance() = step.data;
    host::EventAdd();
  }
  step.scope.reset();
  application_->DeliverEvents();
}

// Inner steps that were left open are closed first and become part of this one.
void Session::EndStep(int step, bool keep) {
  const auto isIt = [step](const OpenStep& open) { return open.number == step; };
  if (std::ranges::none_of(steps_, isIt)) return;
  for (bool last = false; !last;) {
    last = isIt(steps_.back());
    CloseStep(keep || !last);
  }
}

bool Session::HasStep(DocumentId document) const {
  return std::ranges::any_of(
      steps_, [document](const OpenStep& open) { return open.document == document; });
}

void Session::DropSteps(DocumentId document) {
  const auto isOfIt = [document](const OpenStep& open) { return open.document == document; };
  std::erase_if(steps_, isOfIt);
}

// One call at a time, on one thread: nothing below is made for more.
Call::Call() : session_(Session::Get()), mark_(session_.Services().ledger.Mark()) {
  if (session_.process_ != getpid()) {
    throw Failure(Fault::OtherThread,
                  "This process was forked from the one that uses stagemarks. Start another "
                  "Python for it.");
  }
  if (session_.thread_ != std::this_thread::get_id()) {
    throw Failure(Fault::OtherThread,
                  "Documents belong to the thread that used stagemarks first; this is another "
                  "one.");
  }
  if (session_.busy_) {
    throw Failure(Fault::OtherThread,
                  "Another call of stagemarks is not done yet; a callback only hears of it.");
  }
  session_.busy_ = true;
  Session::Person().Forget();
  if (session_.IsInDesktop()) published_.emplace(session_.Services());
}

Call::~Call() {
  session_.busy_ = false;
  session_.CloseOpening();
  session_.ReturnToActive();
}

// A document that was opened stays only when everything went well.
void Call::Finish() {
  session_.App().DeliverEvents();
  const Names failures =
      outcome::Sentences(outcome::FailuresThatMatter(session_.Services(), mark_));
  if (Session::Person().WasStopped())
    throw Failure(Fault::Stopped, failures.empty() ? "The work was stopped." : Joined(failures));
  if (!failures.empty()) throw Failure(Fault::Failed, Joined(failures));
  if (std::exchange(session_.opening_, 0) != 0) session_.formerlyActive_ = 0;
}

void RunEdit(host::BaseDocument& doc, engine::StepwiseEdit edit) {
  const std::string name = edit.name;
  const auto goesOn = [&name](double share) { return Session::Person().Progress(share, name); };
  if (!engine::RunWhole(doc, std::move(edit), goesOn)) FailAs("The work was stopped.");
}

// By what comes first: stopped, a question, a message of the plug-in, else `sentence`.
void FailAs(const std::string& sentence, const std::string& argument) {
  const ScriptPerson& person = Session::Person();
  if (person.WasStopped()) throw Failure(Fault::Stopped, "The work was stopped.");
  if (!person.Refused().empty()) {
    throw Failure(Fault::Refused, Joined(person.Refused()) +
                                      (argument.empty() ? "" : " " + argument + " answers yes."));
  }
  throw Failure(Fault::Failed, person.Told().empty() ? sentence : Joined(person.Told()));
}

}  // namespace scripting
