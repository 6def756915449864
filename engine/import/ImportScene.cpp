// The parent's side of an import: starts the child, gathers what it sends, turns every way it can
// end into a message.
#include <signal.h>

#include <algorithm>
#include <charconv>
#include <utility>

#include "engine/import/Frames.h"
#include "engine/import/Import.h"
#include "engine/import/SourceCheck.h"
#include "engine/import/TextureFiles.h"
#include "engine/import/WorkerProcess.h"
#include "engine/scene/DocumentState.h"
#include "engine/scene/Ownership.h"
#include "engine/scenefile/SceneFile.h"

namespace engine {
namespace {

constexpr std::size_t kMostNotes = 1000;

// Received: collects what the child sends. It is not trusted: sizes and numbers are bounded, texts
// are cleaned.
class Received {
 public:
  Received(Person& person, std::string what, std::uint64_t limit)
      : person_(person), what_(std::move(what)), limit_(limit) {}

  // False stops the child: too much, damaged, or the person wants no more.
  bool Take(std::string_view bytes) {
    parser_.Feed(bytes);
    total_ += bytes.size();
    while (std::optional<Frame> frame = parser_.Next()) Take(*frame);
    if (TooMuch() || parser_.Damaged()) return false;
    stopped_ = !person_.Progress(progress_, what_);
    return !stopped_;
  }

  bool TooMuch() const { return total_ > limit_; }
  bool Damaged() const { return parser_.Damaged(); }
  bool Stopped() const { return stopped_; }
  bool Done() const { return done_; }
  const std::string& Failure() const { return failure_; }
  const std::string& Scene() const { return scene_; }
  const std::string& What() const { return what_; }
  std::vector<std::string>& NotesSent() { return notes_; }

 private:
  void Take(Frame& frame) {
    switch (frame.kind) {
      case FrameKind::Progress:
        return SetProgress(frame.bytes);
      case FrameKind::Note:
        if (notes_.size() < kMostNotes) notes_.push_back(Clean(frame.bytes));
        return;
      case FrameKind::Scene:
        scene_ += frame.bytes;
        return;
      case FrameKind::Failure:
        failure_ = Clean(frame.bytes);
        return;
      case FrameKind::Done:
        done_ = true;
        return;
      case FrameKind::State:
      case FrameKind::Picture:
      case FrameKind::Written:
        return;
    }
  }

  void SetProgress(const std::string& text) {
    int thousandths = 0;
    std::from_chars(text.data(), text.data() + text.size(), thousandths);
    progress_ = std::clamp(thousandths / 1000.0, progress_, 1.0);
  }

  static std::string Clean(std::string text) {
    constexpr std::size_t kMost = 1000;
    if (text.size() > kMost) text = text.substr(0, kMost) + "...";
    std::replace_if(
        text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; }, ' ');
    return text;
  }

  Person& person_;
  std::string what_;
  std::uint64_t limit_;
  FrameParser parser_;
  std::uint64_t total_ = 0;
  double progress_ = 0;
  bool stopped_ = false;
  bool done_ = false;
  std::string failure_;
  std::string scene_;
  std::vector<std::string> notes_;
};

std::string SlowMessage(const ImportLimits& limits) {
  return "The import took longer than " + std::to_string(limits.seconds) +
         " seconds and was stopped.";
}

std::string SignalMessage(int signal, const ImportLimits& limits) {
  if (signal == SIGXCPU) return SlowMessage(limits);
  if (signal == SIGKILL)
    return "The importer was ended by the system, probably for lack of memory.";
  return "The importer stopped (signal " + std::to_string(signal) +
         "). The file is damaged or not supported.";
}

std::string StatusMessage(int status) {
  if (status == kCannotRun)
    return "The importer could not be started: its program is missing or got too little memory.";
  return "The importer stopped (status " + std::to_string(status) +
         "). The file is damaged or not supported.";
}

// Why there is no scene; empty when there is one.
std::string WhyNot(const WorkerOutcome& outcome, const Received& received,
                   const ImportLimits& limits) {
  if (received.Stopped()) return "The import was stopped.";
  if (received.TooMuch()) return "The scene is too large to import.";
  if (received.Damaged()) return "The importer's answer is damaged.";
  if (outcome.end == WorkerEnd::TimedOut) return SlowMessage(limits);
  if (!received.Failure().empty()) return received.Failure();
  if (outcome.end == WorkerEnd::Signalled) return SignalMessage(outcome.number, limits);
  return received.Done() && outcome.number == 0 ? std::string() : StatusMessage(outcome.number);
}

void SetOrigin(const std::string& path, host::BaseDocument& doc) {
  const host::Filename source(host::String{std::string_view(path)});
  host::Filename name = source.GetFile();
  name.SetSuffix("c4d");
  doc.SetDocumentPath(source.GetDirectory());
  doc.SetDocumentName(name);
}

Status Failed(const std::string& path, const std::string& why) {
  return Status::Failure("\"" + path + "\" was not imported. " + why);
}

}  // namespace

Result<Imported> ImportScene(const Services& services, const std::string& path,
                             const std::string& worker, const ImportLimits& limits) {
  if (Status source = CheckSource(path, limits); !source) return source;
  WorkerProcess process;
  if (Status started = process.Start(worker, path, limits); !started)
    return Failed(path, started.Message());
  Received received(services.person, "Importing " + path.substr(path.rfind('/') + 1),
                    limits.resultBytes);
  const WorkerOutcome outcome =
      process.Run([&](std::string_view bytes) { return received.Take(bytes); });
  const std::string why = WhyNot(outcome, received, limits);
  if (!why.empty()) return Failed(path, why);
  bool stopped = false;
  const auto progress = [&](double) {
    return !(stopped = !services.person.Progress(1, received.What()));
  };
  Result<OwnedDocument> scene = ReadScene(received.Scene(), 0, progress);
  if (stopped) return Failed(path, "The import was stopped.");
  if (!scene) return Failed(path, "The importer's answer is damaged: " + scene.Message());
  Imported imported{scene.Take(), std::move(received.NotesSent())};
  SetOrigin(path, *imported.document);
  for (const std::string& note : ResolveTextures(services.files, *imported.document, path))
    imported.notes.push_back(note);
  ClearChanged(*imported.document);
  services.person.Progress(1, received.What());
  return imported;
}

}  // namespace engine
