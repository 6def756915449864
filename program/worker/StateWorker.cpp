// The child's side. It reads an order (the scene as bytes, its path, the dialog's options), then
// one request after the other, each answered by frames that end in Done or Failure. Every state is
// loaded onto the scene as it came and taken back by undo. Decision 19 says why this is a process
// of its own.
#include "program/worker/StateWorker.h"

#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <exception>
#include <unordered_map>
#include <unordered_set>

#include "engine/application/Application.h"
#include "engine/application/ProgramPlaces.h"
#include "engine/import/Frames.h"
#include "engine/outside/SystemServices.h"
#include "engine/render/Renderer.h"
#include "engine/scenefile/SceneFile.h"
#include "program/pictures/ContactSheet.h"
#include "program/pictures/DialogLabels.h"
#include "program/publish/PageMaking.h"
#include "program/publish/PublishedFiles.h"
#include "program/worker/PictureFiles.h"

namespace worker {

namespace {

using engine::Frame;
using engine::FrameKind;
using engine::Status;

constexpr const char* kPlugin = "Stagemarks";
constexpr const char* kStopped = "Stopped.";

// Written by the signal handler, which may do nothing else; lock-free on every machine that this
// runs on.
std::atomic<bool> stopAsked{false};

// Without SA_RESTART: SIGTERM must end a read, which could wait forever.
void ListenForStop() {
  struct sigaction action {};
  action.sa_handler = [](int) { stopAsked = true; };
  sigaction(SIGTERM, &action, nullptr);
}

// The scene that the child is to open: its path, the dialog's options by label, the file's bytes.
struct Order {
  std::string path;
  std::unordered_map<std::string, bool> options;
  std::string scene;
};

// A request that fails ends the child: what of it is still sound is not asked.
class StateWorker : public rendering::PictureScene, public rendering::PictureListener {
 public:
  Status Run() {
    Order order;
    Status status = ReadOrder(order);
    if (status) status = Open(order);
    while (status) {
      const auto asked = Read();
      if (!asked) break;
      status = Answer(asked->bytes);
    }
    return status;
  }
  engine::FrameWriter& Output() { return output_; }

  host::BaseDocument& Document() override { return *host::GetActiveDocument(); }
  pictures::StagemarksDialog& Dialog() override { return *dialog_; }
  engine::FileSystem& Files() override { return services_.Get().files; }
  rendering::PictureListener& Listener() override { return *this; }
  void DeliverEvents() override { application_.DeliverEvents(); }
  void BeforeLoading() override { SetOptions(); }
  // The plan names them.
  bool TexturesChecked() const override { return true; }
  // The desktop knows the names.
  int ChooseMarks(const std::vector<std::string>& typed, std::vector<std::string>& names) override {
    std::unordered_set<std::string> known;
    for (Mark& mark : dialog_->Marks()) {
      if (typed.empty()) names.push_back(mark.name);
      known.insert(std::move(mark.name));
    }
    for (const std::string& name : typed) {
      if (!known.contains(name)) {
        Error("There is no Stagemark \"" + name + "\" any more.");
        return outcome::kUsage;
      }
      names.push_back(name);
    }
    return outcome::kDone;
  }

  void Say(const std::string& text) override { output_.Write(FrameKind::Note, text); }
  void Note(const std::string& text) override { output_.Write(FrameKind::Note, text); }
  void Error(const std::string& text) override {
    complaints_ += (complaints_.empty() ? "" : " ") + text;
  }
  bool Progress(double share, const std::string&) override { return Tell(share); }
  void Step(std::size_t done, std::size_t count, const std::string&) override {
    Tell(static_cast<double>(done) / static_cast<double>(count));
  }
  bool IsStopped() const override { return stopAsked; }

 private:
  // Nothing at the end of the input, when the pipe is damaged and when a stop is asked for: either
  // way there is no more work.
  std::optional<Frame> Read() {
    for (;;) {
      if (auto frame = parser_.Next()) return frame;
      if (IsStopped()) return std::nullopt;
      char bytes[1 << 16];
      const ssize_t count = ::read(STDIN_FILENO, bytes, sizeof bytes);
      if (count <= 0 || parser_.Damaged()) return std::nullopt;
      parser_.Feed({bytes, static_cast<std::size_t>(count)});
    }
  }

  // The first note is the path of the scene, which may be empty, the others are options ("1" or "0"
  // before the label); the scene comes in pieces, and Done ends it.
  Status ReadOrder(Order& order) {
    bool hasPath = false;
    for (auto frame = Read(); frame; frame = Read()) {
      if (frame->kind == FrameKind::Done) return {};
      if (frame->kind == FrameKind::Scene) order.scene += frame->bytes;
      if (frame->kind != FrameKind::Note) continue;
      if (!std::exchange(hasPath, true)) {
        order.path = frame->bytes;
      } else if (!frame->bytes.empty()) {
        order.options[frame->bytes.substr(1)] = frame->bytes[0] == '1';
      }
    }
    return Status::Failure("The scene did not arrive.");
  }

  // The bytes are the desktop's unsaved document, the path only says where its textures lie.
  Status Open(const Order& order) {
    auto read = engine::ReadScene(order.scene);
    if (!read) return read.GetStatus();
    host::BaseDocument* const doc = read.Take().release();
    const host::Filename file{host::String(std::string_view(order.path))};
    if (!order.path.empty()) doc->SetDocumentPath(file.GetDirectory());
    doc->SetDocumentName(file.GetFile());
    host::InsertBaseDocument(doc);
    host::SetActiveDocument(doc);
    return OpenDialog(order);
  }

  Status OpenDialog(const Order& order) {
    const auto report =
        application_.LoadPlugin(engine::PluginFolder() + "/" + kPlugin + "/" + kPlugin + ".so");
    if (report.outcome != engine::LoadOutcome::Loaded) return Status::Failure(report.message);
    for (const engine::CommandPlugin& command : application_.Commands()) {
      if (command.name.ToUtf8() == kPlugin) application_.ExecuteCommand(command.id);
    }
    if (engine::OpenDialogs().empty())
      return Status::Failure("The plug-in's dialog could not be opened.");
    dialog_.emplace(*engine::OpenDialogs().back());
    application_.DeliverEvents();
    options_ = order.options;
    return {};
  }

  // Before each load: the dialog takes what the scene keeps of its options anew with every change.
  void SetOptions() {
    for (const auto& [label, on] : dialog_->Options()) {
      const auto wanted = options_.find(label);
      if (wanted != options_.end() && wanted->second != on) dialog_->Choose(label);
    }
  }

  Status Answer(const std::string& asked) {
    if (asked == kMeasureStates) return TellStates();
    if (const auto order = OrderFromText(asked)) return Publish(*order);
    if (const auto order = PicturesFromText(asked)) return WritePictures(*order);
    const auto request = RequestFromText(asked);
    return request ? SendPicture(*request) : Status::Failure("\"" + asked + "\" is no request.");
  }

  Status WritePictures(const PicturesOrder& order) {
    complaints_.clear();
    if (!files_) {
      files_.emplace(
          *this,
          [this](const PictureNews& news) { output_.Write(FrameKind::Pictures, NewsAsText(news)); },
          [this](const engine::Image& small) { Send(small); });
    }
    if (!files_->Do(order, [this] { return complaints_; })) return Status::Failure(kStopped);
    return output_.Write(FrameKind::Done, "") ? Status() : Status::Failure("Nobody listens.");
  }

  void Send(const engine::Image& picture) {
    const std::vector<std::uint8_t>& bytes = picture.bytes;
    output_.Write(FrameKind::Picture, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  }

  // Sizes differ from state to state, so each is loaded, though nothing is rendered.
  Status TellStates() {
    std::vector<Mark> marks = dialog_->Marks();
    if (marks.empty()) marks.emplace_back();
    for (Mark& mark : marks) {
      if (Status status = Recall(mark.name); !status) return status;
      const StateFacts state{pictures::SizeOf(Document()), std::move(mark)};
      TakeBack();
      if (!output_.Write(FrameKind::State, StateAsText(state)))
        return Status::Failure("Nobody listens.");
    }
    output_.Write(FrameKind::Done, "");
    return {};
  }

  Status SendPicture(const PictureRequest& request) {
    StateFacts state;
    for (Mark& mark : dialog_->Marks()) {
      if (mark.name == request.name) state.mark = std::move(mark);
    }
    if (Status status = Recall(request.name); !status) return status;
    state.size = pictures::SizeOf(Document());
    output_.Write(FrameKind::State, StateAsText(state));
    const auto picture = Render(request, [&](double done) { return Tell(done); });
    if (!picture) return picture.GetStatus();
    Send(picture.Value());
    output_.Write(FrameKind::Done, "");
    return {};
  }

  // False when the work is to end.
  bool Tell(double done) {
    const std::string share = std::to_string(static_cast<int>(done * 1000));
    return output_.Write(FrameKind::Progress, share) && !IsStopped();
  }

  // The document as it stands, which is taken back as soon as it is read.
  engine::Result<engine::Image> Render(const PictureRequest& request,
                                       const engine::ProgressCallback& tell) {
    const PictureSize size = pictures::FittedInto(pictures::SizeOf(Document()), request.box);
    engine::PictureSetup setup;
    setup.width = size.width;
    setup.height = size.height;
    auto begun = engine::PictureInProgress::Begin(Document(), services_.Get().files, setup,
                                                  engine::RenderCaches::Shared());
    TakeBack();
    if (!begun)
      return Status::Failure("\"" + request.name + "\" was not rendered: " + begun.Message());
    TellNotes(begun.Value()->Notes());
    while (!begun.Value()->IsFinished()) {
      if (!begun.Value()->Refine(tell)) return Status::Failure("Nobody listens.");
    }
    return begun.Value()->Current();
  }

  void TellNotes(const std::vector<std::string>& notes) {
    for (const std::string& note : notes) Note(note);
  }

  Status Publish(const publishing::PublishOrder& order) {
    const auto files = publishing::FilesOf(order, pictures::SceneName(Document()));
    if (!files) return files.GetStatus();
    services_.Get().files.Follow(order.folder);
    if (Status made = services_.Get().files.MakeFolders(order.folder); !made) return made;
    Status status = order.asPage ? MakePage(order) : MakeFiles(order, files.Value());
    if (status) output_.Write(FrameKind::Done, "");
    return status;
  }

  // One state takes as much as another; the work of a file at its end counts as one.
  engine::ProgressCallback Turn(std::size_t number, std::size_t count) {
    return [this, number, count](double done) {
      return Tell((static_cast<double>(number) + done) / static_cast<double>(count));
    };
  }

  Status MakePage(const publishing::PublishOrder& order) {
    const auto viewer = publishing::ReadPageViewer(services_.Get().files);
    if (!viewer) return viewer.GetStatus();
    publishing::PageMaking making(Document(), services_.Get().files,
                                  pictures::SceneName(Document()));
    const std::vector<std::string> names =
        order.names.empty() ? std::vector<std::string>{""} : order.names;
    const std::size_t turns = names.size() + 1;
    for (std::size_t i = 0; i < names.size(); ++i) {
      if (Status status = Recall(names[i]); !status) return status;
      const std::string shown = names[i].empty() ? pictures::kAsItIs : names[i];
      if (Status status = making.AddState(shown, Turn(i, turns)); !status) return status;
      const auto picture = Render({publishing::kThumbnail, shown}, Turn(i, turns));
      if (!picture) return picture.GetStatus();
      if (Status status = making.AddThumbnail(picture.Value()); !status) return status;
    }
    const auto page = making.Finish(viewer.Value(), order.title, Turn(names.size(), turns));
    if (!page) return page.GetStatus();
    TellNotes(making.Scene().notes);
    Status written =
        publishing::WritePage(services_.Get().files, order.folder, page.Value(), viewer.Value());
    if (written) output_.Write(FrameKind::Written, order.folder + "/" + publishing::kPageFile);
    return written;
  }

  // One set of caches for all files: states share most of their meshes and textures. What stands
  // there already is replaced: the desktop has asked about it.
  Status MakeFiles(const publishing::PublishOrder& order,
                   const std::vector<publishing::OrderedFile>& files) {
    engine::RenderCaches renderCaches;
    engine::PublishCaches caches;
    auto facts = publishing::ReadStateFacts(Document());
    const std::size_t turns = std::max<std::size_t>(order.names.size(), 1) + files.size();
    std::size_t turn = 0;
    for (const publishing::OrderedFile& file : files) {
      engine::Publication publication(
          Document(), services_.Get().files,
          publishing::OptionsOf(order, pictures::SceneName(Document()), file), renderCaches,
          caches);
      for (const std::string& name : file.states) {
        if (Status status = Recall(name); !status) return status;
        Status added = publication.AddState(facts[name], Turn(turn++, turns));
        if (!name.empty()) TakeBack();
        if (!added) return added;
      }
      auto scene = publication.Finish(Turn(turn++, turns));
      if (!scene) return scene.GetStatus();
      TellNotes(scene.Value().notes);
      Status written = publishing::WriteScene(services_.Get().files, file.path, scene.Take(), true);
      if (!written) return written;
      output_.Write(FrameKind::Written, file.path);
    }
    return {};
  }

  Status Recall(const std::string& name) {
    if (IsStopped()) return Status::Failure(kStopped);
    if (name.empty()) return {};
    SetOptions();
    if (!dialog_->Select(name) || !dialog_->Press(pictures::kLoad))
      return Status::Failure("\"" + name + "\" was not loaded.");
    application_.DeliverEvents();
    return {};
  }

  // Each state is loaded onto the scene as it was, not onto the state before.
  void TakeBack() {
    if (Document().DoUndo()) host::EventAdd();
    application_.DeliverEvents();
  }

  engine::SystemServices services_;
  engine::Application application_{services_.Get(), {}};
  engine::FrameParser parser_;
  engine::FrameWriter output_{STDOUT_FILENO};
  std::optional<pictures::StagemarksDialog> dialog_;
  std::unordered_map<std::string, bool> options_;
  std::string complaints_;  // while pictures are written
  std::optional<PictureFiles> files_;
};

}  // namespace

std::string RequestAsText(const PictureRequest& request) {
  return "picture " + std::to_string(request.box.width) + " " + std::to_string(request.box.height) +
         " " + request.name;
}

// The name is the rest, whatever stands in it; sscanf is asked how far it came (%n), because a name
// may begin with blanks.
std::optional<PictureRequest> RequestFromText(const std::string& text) {
  PictureRequest request;
  int name = 0;
  const int read =
      std::sscanf(text.c_str(), "picture %u %u%n", &request.box.width, &request.box.height, &name);
  const auto behind = static_cast<std::size_t>(name);
  if (read != 2 || behind >= text.size() || text[behind] != ' ') return std::nullopt;
  request.name = text.substr(behind + 1);
  return request;
}

namespace {

constexpr std::string_view kPublish = "publish";

}  // namespace

// The parts stand between bytes that no name has.
std::string OrderAsText(const publishing::PublishOrder& order) {
  std::string text(kPublish);
  const auto add = [&](const std::string& part) { text += std::string(1, '\0') + part; };
  for (const bool yes : {order.asPage, order.asText, order.allInOne, order.omitHidden})
    add(yes ? "1" : "0");
  add(order.folder);
  add(order.title);
  for (const std::string& name : order.names) add(name);
  return text;
}

std::optional<publishing::PublishOrder> OrderFromText(const std::string& text) {
  if (!text.starts_with(std::string(kPublish) + '\0')) return std::nullopt;
  std::vector<std::string> parts;
  for (std::size_t at = kPublish.size(); at < text.size();) {
    const std::size_t end = std::min(text.find('\0', at + 1), text.size());
    parts.push_back(text.substr(at + 1, end - at - 1));
    at = end;
  }
  if (parts.size() < 6) return std::nullopt;
  publishing::PublishOrder order;
  order.asPage = parts[0] == "1";
  order.asText = parts[1] == "1";
  order.allInOne = parts[2] == "1";
  order.omitHidden = parts[3] == "1";
  order.folder = parts[4];
  order.title = parts[5];
  order.names.assign(parts.begin() + 6, parts.end());
  return order;
}

// The length of the date stands in the first line: both it and the name may hold anything.
std::string StateAsText(const StateFacts& state) {
  const Mark& mark = state.mark;
  return std::to_string(state.size.width) + " " + std::to_string(state.size.height) + " " +
         (mark.current ? "1" : "0") + " " + std::to_string(mark.date.size()) + "\n" + mark.date +
         mark.name;
}

std::optional<StateFacts> StateFromText(const std::string& text) {
  StateFacts state;
  int current = 0;
  std::size_t date = 0;
  const std::size_t head = text.find('\n');
  const bool isWhole =
      head != std::string::npos && std::sscanf(text.c_str(), "%u %u %d %zu", &state.size.width,
                                               &state.size.height, &current, &date) == 4;
  if (!isWhole || date > text.size() - head - 1) return std::nullopt;
  state.mark.current = current != 0;
  state.mark.date = text.substr(head + 1, date);
  state.mark.name = text.substr(head + 1 + date);
  return state;
}

int RunStateWorker() {
  // A desktop that is gone ends the writing, not the child in the middle of it.
  std::signal(SIGPIPE, SIG_IGN);
  ListenForStop();
  StateWorker worker;
  Status status;
  try {
    status = worker.Run();
  } catch (const std::exception& error) {
    status = Status::Failure(std::string("The states cannot be shown: ") + error.what());
  }
  if (!status)
    worker.Output().Write(FrameKind::Failure, worker.IsStopped() ? kStopped : status.Message());
  return status ? 0 : 1;
}

}  // namespace worker
