#include "program/desktop/recovery/Autosave.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>

#include "engine/scene/NewNodes.h"
#include "program/desktop/DocumentCommands.h"
#include "program/desktop/OpenDocument.h"
#include "program/desktop/Text.h"
#include "program/desktop/background/DocumentBusy.h"

namespace desktop {

namespace {

constexpr std::chrono::milliseconds kBetweenTicks{2000};

std::string NoteOf(const host::BaseDocument& doc) {
  const host::Filename folder = doc.GetDocumentPath();
  QJsonObject note{{"title", DocumentTitle(doc)}};
  if (folder.Content()) note.insert("path", ToQt((folder + doc.GetDocumentName()).GetString()));
  return QJsonDocument(note).toJson().toStdString();
}

}  // namespace

Autosave::Autosave(const engine::Application& application, AutosaveRules rules)
    : application_(application),
      rules_(rules),
      folder_(application.GetServices()),
      worker_(application.GetServices().ledger) {
  tick_.setInterval(std::min({kBetweenTicks, rules.pause, rules.longest}));
  connect(&tick_, &QTimer::timeout, this, [this] { Tick(); });
}

Autosave::~Autosave() = default;

void Autosave::Follow() {
  if (ended_) return;
  const auto open = application_.Documents();
  for (const host::BaseDocument* doc : open) {
    if (doc->GetChanged()) FollowOne(*doc, documents_[IdentityOf(doc)]);
  }
  if (!documents_.empty()) ForgetClosed(open);
}

void Autosave::FollowOne(const host::BaseDocument& doc, Kept& state) {
  const host::ULLONG count = engine::ChangeCount(doc);
  if (count == state.seen) return;
  if (state.seen == state.kept) state.changed = Clock::now();
  state.seen = count;
  ++state.acts;
  if (!tick_.isActive()) tick_.start();
}

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

bool Autosave::IsDue(const Kept& state) const {
  const Clock::time_point now = Clock::now();
  if (now - state.tried < rules_.pause) return false;
  return state.acts >= rules_.acts || now - state.changed >= rules_.longest;
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

void Autosave::Keep(host::BaseDocument& doc, Kept& state) {
  const host::ULLONG document = IdentityOf(&doc);
  const host::ULLONG count = state.seen;
  state.tried = Clock::now();
  state.acts = 0;
  if (const engine::Status ready = folder_.Prepare(); !ready) return Done(document, count, ready);
  AutosaveJob job;
  job.copy = engine::CopyOf(doc);
  job.files = folder_.FilesOf(document);
  job.note = NoteOf(doc);
  worker_.Start(std::move(job), [this, document, count](const engine::Status& status) {
    Done(document, count, status);
  });
}

void Autosave::Done(host::ULLONG document, host::ULLONG count, const engine::Status& status) {
  if (!status && !told_ && failed)
    failed("Unsaved work cannot be kept for the case of a crash. " + status.Message());
  told_ = !status;
  const auto it = documents_.find(document);
  if (it == documents_.end()) return folder_.Remove(document);  // saved or closed meanwhile
  Kept& state = it->second;
  if (status) state.kept = count;
  state.changed = Clock::now();
}

void Autosave::Adopt(const LostDocument& lost, const host::BaseDocument& doc) {
  const engine::Status adopted = folder_.Adopt(lost.files, IdentityOf(&doc));
  Kept& state = documents_[IdentityOf(&doc)];
  state.seen = engine::ChangeCount(doc);
  if (adopted) state.kept = state.seen;
}

void Autosave::End() {
  ended_ = true;
  tick_.stop();
  documents_.clear();
  worker_.Finish();
  folder_.RemoveAll();
}

}  // namespace desktop
