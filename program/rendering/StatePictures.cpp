#include "program/rendering/StatePictures.h"

#include <cstdio>
#include <unordered_map>

#include "engine/render/Renderer.h"
#include "engine/undo/Undo.h"
#include "host/Host.h"
#include "program/pictures/DialogLabels.h"
#include "program/publish/FileOrigin.h"

namespace rendering {

using engine::PictureInProgress;
using engine::Result;
using engine::Status;

namespace {

// Memory of the renderer for each pixel.
constexpr std::uint64_t kBytesPerPixel = 16;

const host::BaseContainer& ActiveSettings(const host::BaseDocument& doc) {
  return *doc.GetActiveRenderData()->GetDataInstance();
}

// "month/day/year hour:minute", the year mostly without its century, as "year-month-day"; what is
// no such date stays.
std::string SortableDate(const std::string& shown) {
  int month = 0;
  int day = 0;
  int year = 0;
  if (std::sscanf(shown.c_str(), "%2d/%2d/%4d", &month, &day, &year) != 3)
    return shown.empty() ? "no date" : shown;
  char text[32];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d", year < 100 ? 2000 + year : year, month, day);
  return text;
}

}  // namespace

// The last conversion catches what follows the number: two conversions read means nothing does.
// Nine digits cannot overflow.
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
  lastFailure_ = why;
  scene_.Listener().Error(why);
  return kFailed;
}

// The rows are copied now: recalling a state moves the "current" mark and rebuilds the list.
int StatePictures::Choose(const std::vector<std::string>& typed) {
  std::vector<std::string> names;
  if (const int status = scene_.ChooseMarks(typed, names); status != kDone) return status;
  std::unordered_map<std::string, Mark> marks;
  for (Mark& mark : scene_.Dialog().Marks()) marks.emplace(mark.name, mark);
  for (const std::string& name : names) states_.push_back(marks.at(name));
  asItIs_ = states_.empty();
  if (asItIs_) states_.emplace_back();
  return kDone;
}

int StatePictures::Recall(const Mark& state) {
  if (asItIs_) return kDone;
  scene_.BeforeLoading();
  if (!scene_.Dialog().Select(state.name) || !scene_.Dialog().Press(pictures::kLoad)) {
    return Fail("\"" + state.name + "\" was not loaded.");
  }
  scene_.DeliverEvents();
  return kDone;
}

int StatePictures::InState(const Mark& state, const std::function<int()>& look) {
  host::BaseDocument& doc = scene_.Document();
  engine::UndoScope step(doc, "Load " + state.name);
  // No step takes back which Stagemark was loaded last.
  const host::BaseContainer stored = *doc.GetDataInstance();
  int status = Recall(state);
  if (status == kDone) status = look();
  step.Cancel();
  *doc.GetDataInstance() = stored;
  return status;
}

PictureSize StatePictures::Size() const { return pictures::SizeOf(scene_.Document()); }

// The frame is the first one of the range of the render settings, in their own rate.
PictureFacts StatePictures::Facts(const Mark& state) const {
  host::BaseDocument& doc = scene_.Document();
  const host::BaseContainer& settings = ActiveSettings(doc);
  const host::BaseObject* camera = doc.GetRenderBaseDraw()->GetSceneCamera(&doc);
  PictureFacts facts;
  facts.scene = SceneName(doc);
  facts.state = asItIs_ ? "as it is" : state.name;
  facts.date = SortableDate(state.date);
  facts.camera = camera ? camera->GetName().ToUtf8() : "Editor camera";
  facts.frame =
      settings.GetTime(host::RDATA_FRAMEFROM).GetFrame(settings.GetLong(host::RDATA_FRAMERATE, 30));
  return facts;
}

int StatePictures::Render(const PictureSize& size, const PictureTurn& turn, const std::string& name,
                          engine::Image* picture) {
  return RenderAs(false, size, turn, name, picture);
}

// On the caches that the pictures use afterwards, so that what is read here is not read again.
int StatePictures::Probe(const PictureSize& size, engine::Image* picture) {
  engine::PictureSetup setup;
  setup.width = size.width;
  setup.height = size.height;
  setup.threads = threads_;
  auto begun = PictureInProgress::Begin(scene_.Document(), scene_.Files(), setup,
                                        engine::RenderCaches::Shared());
  const auto goesOn = [this](double) { return !scene_.Listener().IsStopped(); };
  while (begun && !begun.Value()->IsFinished()) {
    if (!begun.Value()->Refine(goesOn)) return kInterrupted;
  }
  if (begun && picture) *picture = begun.Value()->Current();
  return begun ? kDone : kFailed;
}

int StatePictures::RenderLight(const PictureSize& size, const PictureTurn& turn,
                               const std::string& name, engine::Image* picture) {
  return RenderAs(true, size, turn, name, picture);
}

// The renderer holds its own copy of all that it needs once it has begun. Missing textures are left
// out of the notes where the caller has named them before, all at once.
int StatePictures::RenderAs(bool isLinear, const PictureSize& size, const PictureTurn& turn,
                            const std::string& name, engine::Image* picture) {
  PictureListener& listener = scene_.Listener();
  engine::PictureSetup setup;
  setup.width = size.width;
  setup.height = size.height;
  setup.threads = threads_;
  setup.isLinear = isLinear;
  auto begun = PictureInProgress::Begin(scene_.Document(), scene_.Files(), setup,
                                        engine::RenderCaches::Shared());
  if (!begun) return Fail("\"" + name + "\" was not rendered: " + begun.Message());
  for (const std::string& note : begun.Value()->Notes()) {
    const bool wasNamed =
        scene_.TexturesChecked() && note.ends_with(" is not shown: it was not found.");
    if (!wasNamed && said_.IsNew(note)) listener.Note(note);
  }
  const auto count = static_cast<double>(turn.count);
  const std::string what = "Rendering " + std::to_string(turn.number + 1) + " of " +
                           std::to_string(turn.count) + ": " + name;
  const auto progress = [&](double done) {
    return listener.Progress((static_cast<double>(turn.number) + done) / count, what);
  };
  while (!begun.Value()->IsFinished()) {
    if (!begun.Value()->Refine(progress)) return kInterrupted;
  }
  *picture = isLinear ? begun.Value()->Light() : begun.Value()->Current();
  return kDone;
}

// Encoded in memory first, the file replaced whole: a picture is never half there. The record goes
// in before the mark, whose hash covers it.
int StatePictures::Save(const engine::Image& picture, const std::string& path,
                        const std::string& maker, const PictureRecord* record,
                        std::uint64_t* bytes) {
  const std::string made = record ? RecordAsText(*record) : "";
  Result<std::string> file = pictures::EncodePicture(picture, path, made);
  if (!file) return Fail("\"" + path + "\" was not written: " + file.Message());
  const std::string marked = publishing::WithMaker(
      record ? publishing::WithRecord(file.Value(), made) : file.Value(), maker);
  if (bytes) *bytes = marked.size();
  const Status written = scene_.Files().ReplaceFile(path, marked);
  return written ? kDone : Fail(written.Message());
}

}  // namespace rendering
