// The parent's side of an import: starts the child, gathers what it sends, turns every way it can
// end into a message.
#include <signal.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <set>
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
    // Asked with each piece that arrives, also an empty one: so a silent child can be stopped, too.
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
  const std::vector<std::string>& Weaknesses() const { return weaknesses_; }

 private:
  void Take(Frame& frame) {
    switch (frame.kind) {
      case FrameKind::Progress:
        return SetProgress(frame.bytes);
      case FrameKind::Note:
        if (notes_.size() < kMostNotes) notes_.push_back(Clean(frame.bytes));
        return;
      case FrameKind::Weakness:
        if (weaknesses_.size() < kMostNotes) weaknesses_.push_back(Clean(frame.bytes));
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
      case FrameKind::Pictures:
        return;
    }
  }

  void SetProgress(const std::string& text) {
    int thousandths = 0;
    std::from_chars(text.data(), text.data() + text.size(), thousandths);
    // Never backwards, whatever the child says.
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
  std::vector<std::string> weaknesses_;
};

// Each only once in the life of this process.
void NoteWeaknesses(const std::vector<std::string>& weaknesses, std::vector<std::string>& notes) {
  static std::set<std::string> told;
  for (const std::string& weakness : weaknesses) {
    if (told.insert(weakness).second) notes.push_back(weakness);
  }
}

std::string SlowMessage(const ImportLimits& limits) {
  return "The import took longer than " + std::to_string(limits.seconds) +
         " seconds and was stopped. For a file that you trust set " + kImportSecondsVariable +
         " to more.";
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

// Why there is no scene; empty when there is one. The first cause that applies: ending the child
// makes others come true, such as a signal.
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

// A number above 0 and below `end`; what it stands for is said where it is none.
std::optional<double> NumberIn(const char* variable, double end, const char* unit, Person& person) {
  const char* const text = std::getenv(variable);
  if (text == nullptr || *text == '\0') return std::nullopt;
  double number = 0;
  const char* const textEnd = text + std::strlen(text);
  const auto [stop, error] = std::from_chars(text, textEnd, number);
  if (error == std::errc() && stop == textEnd && number > 0 && number < end) return number;
  person.Tell(std::string(variable) + "=\"" + text + "\" is no number of " + unit +
              " and is not followed.");
  return std::nullopt;
}

Status Failed(const std::string& path, const std::string& why) {
  return Status::Failure("\"" + path + "\" was not imported. " + why);
}

}  // namespace

ImportLimits ChosenImportLimits(Person& person) {
  constexpr double kMostGibibytes = 65536;
  constexpr double kMostSeconds = 1e6;
  ImportLimits limits;
  if (const auto memory = NumberIn(kImportMemoryVariable, kMostGibibytes, "GiB", person))
    limits.memoryBytes = static_cast<std::uint64_t>(*memory * (1ull << 30));
  if (const auto seconds = NumberIn(kImportSecondsVariable, kMostSeconds, "seconds", person))
    limits.seconds = static_cast<unsigned>(std::max(1.0, *seconds));
  return limits;
}

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
  // Checked like any file from outside: who has taken over the child may have written it.
  Result<OwnedDocument> scene = ReadScene(received.Scene(), 0, progress);
  if (stopped) return Failed(path, "The import was stopped.");
  if (!scene) return Failed(path, "The importer's answer is damaged: " + scene.Message());
  Imported imported{scene.Take(), std::move(received.NotesSent())};
  SetOrigin(path, *imported.document);
  NoteWeaknesses(received.Weaknesses(), imported.notes);
  for (const std::string& note :
       ResolveTextures(services, *imported.document, path, limits.outside))
    imported.notes.push_back(note);
  ClearChanged(*imported.document);
  services.person.Progress(1, received.What());
  return imported;
}

}  // namespace engine
