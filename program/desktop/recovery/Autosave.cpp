// When what is kept: decision 75. Each document goes round: changed (Follow), due (Tick), copied on
// the main thread (Keep), written by the worker, and told (Done), which compares the change count
// of the copy with what has been seen since.
#include "program/desktop/recovery/Autosave.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <utility>

#include "engine/outside/RealFileSystem.h"
#include "engine/scene/NewNodes.h"
#include "engine/scenefile/SceneFile.h"
#include "engine/scenefile/Trash.h"
#include "program/desktop/DocumentCommands.h"
#include "program/desktop/OpenDocument.h"
#include "program/desktop/Text.h"
#include "program/desktop/background/DocumentBusy.h"

namespace desktop {

namespace {

// The most that a document waits beyond being due.
constexpr std::chrono::milliseconds kBetweenTicks{1000};

// Beside the scene, because the copy is no document of the list and its own path is that of the
// folder.
std::string NoteOf(const host::BaseDocument& doc) {
  const host::Filename folder = doc.GetDocumentPath();
  QJsonObject note{{"title", DocumentTitle(doc)}};
  if (folder.Content()) note.insert("path", ToQt((folder + doc.GetDocumentName()).GetString()));
  return QJsonDocument(note).toJson().toStdString();
}

}  // namespace

void AutosaveWorker::Start(AutosaveJob order, std::function<void(const engine::Status&)> done) {
  order_ = std::move(order);
  done_ = std::move(done);
  job_.Start([this](const BackgroundJob::Control&) { Write(); },
             [this](const std::string& problem) { End(problem); });
}

// The copy goes piece by piece on the main thread, to which the nodes belong.
void AutosaveWorker::End(const std::string& problem) {
  deletion_.Take(std::move(order_.copy));
  order_ = {};
  for (engine::LedgerEntry& entry : entries_) ledger_.Add(std::move(entry));
  entries_.clear();
  std::exchange(done_, {})(problem.empty() ? status_ : engine::Status::Failure(problem));
}

// A file system of its own, since the ledger belongs to the main thread and a command's report is
// about its own files. The note is written first: where there is a scene there is its note.
void AutosaveWorker::Write() {
  engine::AbsentPerson nobody;
  engine::Ledger ledger;
  engine::RealFileSystem files(ledger, nobody);
  const auto pieces = engine::WriteScene(*order_.copy);
  status_ = pieces.GetStatus();
  if (pieces) status_ = files.ReplaceFile(order_.files.note, order_.note);
  if (pieces && status_) {
    const std::vector<std::string_view> views(pieces.Value().begin(), pieces.Value().end());
    status_ = files.ReplaceFile(order_.files.scene, views);
  }
  entries_ = ledger.Entries();
}

Autosave::Autosave(const engine::Application& application, AutosaveRules rules,
                   std::function<Clock::time_point()> now)
    : application_(application),
      rules_(rules),
      now_(std::move(now)),
      folder_(application.GetServices()),
      previews_(application, folder_),
      worker_(application.GetServices().ledger) {
  tick_.setInterval(std::min({kBetweenTicks, rules.idle, rules.longest}));
  connect(&tick_, &QTimer::timeout, this, [this] { Tick(); });
  previews_.failed = [this](const std::string& message) {
    if (failed) failed(message);
  };
}

Autosave::~Autosave() = default;

// Called with every turn of the event loop, so an unchanged document costs one comparison.
void Autosave::Follow() {
  if (ended_) return;
  const auto open = application_.Documents();
  previews_.Follow(open);
  for (const host::BaseDocument* doc : open) {
    if (doc->GetChanged()) FollowOne(*doc, documents_[IdentityOf(doc)]);
  }
  if (!documents_.empty()) ForgetClosed(open);
}

// `first` is the time of the first change that is not kept.
void Autosave::FollowOne(const host::BaseDocument& doc, Kept& state) {
  const host::ULLONG count = engine::ChangeCount(doc);
  if (count == state.seen) return;
  state.last = now_();
  if (state.seen == state.kept) state.first = state.last;
  state.seen = count;
  if (!tick_.isActive()) tick_.start();
}

// Saved or closed: what was kept of it has no use any more.
void Autosave::ForgetClosed(const std::vector<host::BaseDocument*>& open) {
  for (auto it = documents_.begin(); it != documents_.end();) {
    const auto found = std::find_if(open.begin(), open.end(),
                                    [&](const auto* doc) { return IdentityOf(doc) == it->first; });
    if (found != open.end() && (*found)->GetChanged()) {
      ++it;
    } else {
      folder_.Remove(it->first);
      it = documents_.erase(it);
    }
  }
}

// A dialog at work may have put documents of its own into the list.
void Autosave::Tick() {
  if (worker_.IsBusy() || IsDocumentBusy()) return;
  bool waits = false;
  for (auto& [document, state] : documents_) {
    host::BaseDocument* doc = FindOpenDocument(document);
    if (!doc || state.seen == state.kept) continue;
    waits = true;
    if (IsDue(state)) return Keep(*doc, state);
  }
  if (!waits) tick_.stop();
}

// The first act after opening or saving is due at once: nothing is kept of it at all.
bool Autosave::IsDue(const Kept& state) const {
  const Clock::time_point now = now_();
  if (now < state.next) return false;
  return state.kept == 0 || now - state.last >= rules_.idle || now - state.first >= rules_.longest;
}

void Autosave::KeepNow() {
  worker_.Finish();
  Follow();
  for (auto& [document, state] : documents_) {
    host::BaseDocument* doc = FindOpenDocument(document);
    if (!doc || state.seen == state.kept) continue;
    Keep(*doc, state);
    worker_.Finish();
  }
}

// The pause is set to the longest first, for the case that the copy throws for lack of memory.
void Autosave::Keep(host::BaseDocument& doc, Kept& state) {
  const host::ULLONG document = IdentityOf(&doc);
  const host::ULLONG count = state.seen;
  const Clock::time_point begin = now_();
  state.next = begin + rules_.longestPause;
  if (const engine::Status ready = folder_.Prepare(); !ready) return Done(document, count, ready);
  AutosaveJob job;
  job.copy = engine::CopyOf(doc);
  // Copies have no trash of their own.
  engine::SetDeletedStates(*job.copy, engine::SharedDeletedStatesOf(doc));
  job.files = folder_.FilesOf(document);
  job.note = NoteOf(doc);
  state.next = std::min(begin + rules_.costs * (now_() - begin), begin + rules_.longestPause);
  // Changes from here on are not in the copy.
  state.first = begin;
  worker_.Start(std::move(job), [this, document, count](const engine::Status& status) {
    Done(document, count, status);
  });
}

// A failure is told once, not every eight seconds, and again after it has worked meanwhile.
void Autosave::Done(host::ULLONG document, host::ULLONG count, const engine::Status& status) {
  if (!status && !told_ && failed)
    failed("Unsaved work cannot be kept for the case of a crash. " + status.Message());
  told_ = !status;
  const auto it = documents_.find(document);
  if (it == documents_.end()) return folder_.Remove(document);  // saved or closed meanwhile
  Kept& state = it->second;
  if (status) {
    state.kept = count;
  } else {
    state.next = now_() + rules_.longestPause;
    state.first = {};  // what waited longest still does
  }
  if (const host::BaseDocument* doc = FindOpenDocument(document))
    engine::KeepPackedOnly(engine::DeletedStatesOf(*doc));
}

// The recovered copy stays the one that is kept, so nothing is written anew until the next act.
void Autosave::Adopt(const LostDocument& lost, const host::BaseDocument& doc) {
  const engine::Status adopted = folder_.Adopt(lost.files, IdentityOf(&doc));
  Kept& state = documents_[IdentityOf(&doc)];
  state.seen = engine::ChangeCount(doc);
  if (adopted) state.kept = state.seen;
  previews_.Adopt(doc);
}

void Autosave::End() {
  ended_ = true;
  tick_.stop();
  documents_.clear();
  worker_.Finish();
  previews_.End();
  folder_.RemoveAll();
}

}  // namespace desktop
