#include "program/commandline/StatePictures.h"

#include <cstdio>
#include <unordered_map>

#include "engine/render/Renderer.h"
#include "host/Host.h"
#include "program/commandline/FileOrigin.h"
#include "program/pictures/DialogLabels.h"

namespace commandline {

using engine::PictureInProgress;
using engine::Result;
using engine::Status;

namespace {

// What the renderer keeps for each pixel.
constexpr std::uint64_t kBytesPerPixel = 16;

const host::BaseContainer& ActiveSettings(const host::BaseDocument& doc) {
  return *doc.GetActiveRenderData()->GetDataInstance();
}

}  // namespace

Result<PictureSize> ParsePictureSize(const std::string& typed) {
  long width = 0;
  long height = 0;
  char rest = 0;
  if (std::sscanf(typed.c_str(), "%9ldx%9ld%c", &width, &height, &rest) != 2 || width < 1 ||
      height < 1) {
    return Result<PictureSize>::Failure("\"" + typed + "\" is no picture size; 1280x720 is one.");
  }
  const PictureSize size{static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)};
  if (Status fits = engine::CheckImageSize(size.width, size.height, kBytesPerPixel); !fits)
    return fits;
  return size;
}

std::string SizeText(const PictureSize& size) {
  return std::to_string(size.width) + " x " + std::to_string(size.height);
}

int StatePictures::Fail(const std::string& why) {
  session_.GetProgram().terminal.Error(why);
  return kFailed;
}

int StatePictures::Choose(const std::vector<std::string>& typed) {
  std::vector<std::string> names;
  if (const int status = session_.ChooseMarks(typed, names); status != kDone) return status;
  std::unordered_map<std::string, Mark> marks;
  for (Mark& mark : session_.Dialog().Marks()) marks.emplace(mark.name, mark);
  for (const std::string& name : names) states_.push_back(marks.at(name));
  asItIs_ = states_.empty();
  if (asItIs_) states_.emplace_back();
  return kDone;
}

int StatePictures::Recall(const Mark& state) {
  if (asItIs_) return kDone;
  if (!session_.Dialog().Select(state.name) || !session_.Dialog().Press(pictures::kLoad)) {
    return Fail("\"" + state.name + "\" was not loaded.");
  }
  session_.App().DeliverEvents();
  return kDone;
}

PictureSize StatePictures::Size() const { return pictures::SizeOf(session_.Document()); }

PictureFacts StatePictures::Facts(const Mark& state) const {
  host::BaseDocument& doc = session_.Document();
  const host::BaseContainer& settings = ActiveSettings(doc);
  const host::BaseObject* camera = doc.GetRenderBaseDraw()->GetSceneCamera(&doc);
  PictureFacts facts;
  facts.scene = SceneName(doc);
  facts.state = asItIs_ ? "as it is" : state.name;
  facts.camera = camera ? camera->GetName().ToUtf8() : "Editor camera";
  facts.frame =
      settings.GetTime(host::RDATA_FRAMEFROM).GetFrame(settings.GetLong(host::RDATA_FRAMERATE, 30));
  return facts;
}

int StatePictures::Render(const PictureSize& size, const PictureTurn& turn, const std::string& name,
                          engine::Image* picture) {
  Terminal& terminal = session_.GetProgram().terminal;
  engine::PictureSetup setup;
  setup.width = size.width;
  setup.height = size.height;
  setup.threads = threads_;
  auto begun = PictureInProgress::Begin(session_.Document(), session_.Files(), setup,
                                        engine::RenderCaches::Shared());
  if (!begun) return Fail("\"" + name + "\" was not rendered: " + begun.Message());
  for (const std::string& note : begun.Value()->Notes()) {
    const bool wasNamed =
        session_.TexturesChecked() && note.ends_with(" is not shown: it was not found.");
    if (!wasNamed && said_.IsNew(note)) terminal.Note(note);
  }
  const auto count = static_cast<double>(turn.count);
  const std::string what = "Rendering " + std::to_string(turn.number + 1) + " of " +
                           std::to_string(turn.count) + ": " + name;
  const auto progress = [&](double done) {
    return terminal.Progress((static_cast<double>(turn.number) + done) / count, what);
  };
  while (!begun.Value()->IsFinished()) {
    if (!begun.Value()->Refine(progress)) return kInterrupted;
  }
  *picture = begun.Value()->Current();
  return kDone;
}

int StatePictures::Save(const engine::Image& picture, const std::string& path,
                        const std::string& maker) {
  const Result<std::string> bytes = pictures::EncodePicture(picture, path);
  if (!bytes) return Fail("\"" + path + "\" was not written: " + bytes.Message());
  const Status written = session_.Files().ReplaceFile(path, WithMaker(bytes.Value(), maker));
  return written ? kDone : Fail(written.Message());
}

}  // namespace commandline
