// Orders and news are lists of texts with a NUL behind each, numbers in decimal. The plan is made
// from the same rules as in a shell (decision 72), so that both find each other's pictures
// finished.
#include "program/worker/PictureFiles.h"

#include <charconv>

#include "engine/render/TextureSearch.h"
#include "program/pictures/PictureManifest.h"

namespace worker {

using outcome::kDone;
using outcome::kFailed;
using outcome::kInterrupted;
using rendering::PictureAtPlace;
using rendering::PlannedPicture;

namespace {

constexpr std::string_view kPictures = "pictures";

// Parts of a text, between bytes that no name has. A count stands before each list. Reading goes on
// behind the end and notes it: one question at the end, IsWhole, is enough.
class Parts {
 public:
  static std::string Joined(const std::vector<std::string>& parts) {
    std::string text;
    for (const std::string& part : parts) text += part + '\0';
    return text;
  }
  explicit Parts(const std::string& text) {
    for (std::size_t at = 0; at < text.size();) {
      const std::size_t end = std::min(text.find('\0', at), text.size());
      parts_.push_back(text.substr(at, end - at));
      at = end + 1;
    }
  }
  std::size_t Left() const { return parts_.size() - next_; }
  std::string Text() { return next_ < parts_.size() ? parts_[next_++] : Missing(); }
  std::uint64_t Number() {
    const std::string text = Text();
    std::uint64_t number = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    isWhole_ = isWhole_ && read.ec == std::errc() && read.ptr == text.data() + text.size();
    return number;
  }
  // The count is bound by what is there, so that a damaged one allocates nothing.
  std::vector<std::string> Texts() {
    std::vector<std::string> texts(std::min<std::uint64_t>(Number(), Left()));
    for (std::string& text : texts) text = Text();
    return texts;
  }
  bool IsWhole() const { return isWhole_ && Left() == 0; }

 private:
  std::string Missing() {
    isWhole_ = false;
    return "";
  }

  std::vector<std::string> parts_;
  std::size_t next_ = 0;
  bool isWhole_ = true;
};

void Add(const std::vector<std::string>& texts, std::vector<std::string>& parts) {
  parts.push_back(std::to_string(texts.size()));
  parts.insert(parts.end(), texts.begin(), texts.end());
}

}  // namespace

// The order of the parts is the protocol between a desktop and its own child, of one build: it has
// no version.
std::string PicturesAsText(const PicturesOrder& order) {
  std::vector<std::string> parts{std::string(kPictures)};
  for (const bool yes : {order.renders, order.keepsFinished, order.replaces})
    parts.push_back(std::to_string(yes ? 1 : 0));
  Add(order.pictures.states, parts);
  Add(order.pictures.sizes, parts);
  Add({order.pictures.frames, order.pictures.folder, order.pictures.pattern, order.pictures.format},
      parts);
  return Parts::Joined(parts);
}

std::optional<PicturesOrder> PicturesFromText(const std::string& text) {
  Parts parts(text);
  if (parts.Text() != kPictures) return std::nullopt;
  PicturesOrder order;
  for (bool* const yes : {&order.renders, &order.keepsFinished, &order.replaces})
    *yes = parts.Number() == 1;
  order.pictures.states = parts.Texts();
  order.pictures.sizes = parts.Texts();
  const std::vector<std::string> texts = parts.Texts();
  if (texts.size() != 4 || !parts.IsWhole()) return std::nullopt;
  order.pictures.frames = texts[0];
  order.pictures.folder = texts[1];
  order.pictures.pattern = texts[2];
  order.pictures.format = texts[3];
  return order;
}

std::string NewsAsText(const PictureNews& news) {
  std::vector<std::string> parts;
  for (const std::uint64_t number :
       {static_cast<std::uint64_t>(news.kind), std::uint64_t{news.index},
        std::uint64_t{news.size.width}, std::uint64_t{news.size.height},
        static_cast<std::uint64_t>(news.frame), std::uint64_t{news.isThere},
        std::uint64_t{news.isForeign}, news.seconds, news.bytes, news.pixels})
    parts.push_back(std::to_string(number));
  parts.push_back(news.state);
  parts.push_back(news.text);
  return Parts::Joined(parts);
}

// Told by a child that may have been damaged by what it read: a kind out of range is refused before
// it becomes one.
std::optional<PictureNews> NewsFromText(const std::string& text) {
  Parts parts(text);
  PictureNews news;
  const std::uint64_t kind = parts.Number();
  if (kind > static_cast<std::uint64_t>(PictureNews::Kind::Refused)) return std::nullopt;
  news.kind = static_cast<PictureNews::Kind>(kind);
  news.index = parts.Number();
  news.size.width = static_cast<std::uint32_t>(parts.Number());
  news.size.height = static_cast<std::uint32_t>(parts.Number());
  news.frame = static_cast<int>(parts.Number());
  news.isThere = parts.Number() == 1;
  news.isForeign = parts.Number() == 1;
  for (std::uint64_t* const number : {&news.seconds, &news.bytes, &news.pixels})
    *number = parts.Number();
  news.state = parts.Text();
  news.text = parts.Text();
  return parts.IsWhole() ? std::optional(news) : std::nullopt;
}

// That some pictures failed was told with each of them; only what stopped the work is told at its
// end. After that the plan is made anew: what was wrong may be mended by then.
bool PictureFiles::Do(const PicturesOrder& order, const std::function<std::string()>& complaints) {
  int status = Plan(order);
  if (status == kDone) {
    rendering::PictureWork work(scene_, planned_->pictures, Rules(order));
    const std::size_t foreign = TellPlan(order, work);
    if (order.renders) {
      status = Render(order, work, foreign);
      if (missing_ == 0 && status == kFailed) status = kDone;  // each was told
    } else {
      TellCost();
    }
  }
  if (status == kInterrupted || scene_.Listener().IsStopped()) return false;
  if (status != kDone) {
    planned_.reset();
    PictureNews news;
    news.kind = PictureNews::Kind::Refused;
    news.text = complaints();
    tell_(news);
  }
  return true;
}

// The desktop asks for a plan and its cost first and then for the pictures of the same order, so
// the plan is kept while only the wish to render and to replace differs.
int PictureFiles::Plan(const PicturesOrder& order) {
  PicturesOrder alike = order;
  alike.renders = alike.replaces = false;
  if (planned_ && PicturesAsText(planned_->order) == PicturesAsText(alike)) return kDone;
  planned_ = std::make_unique<Planned>(scene_, alike);
  int status = planned_->plan.CheckOrder();
  if (status == kDone) status = planned_->pictures.Choose(planned_->order.pictures.states);
  if (status == kDone) status = planned_->plan.Make();
  if (status != kDone) return status;
  for (const std::string& texture : engine::MissingTextures(scene_.Files(), scene_.Document()))
    scene_.Listener().Note("The texture \"" + texture + "\" was not found.");
  if (const std::string found = planned_->plan.Findings().text; !found.empty())
    scene_.Listener().Note(found);
  return status;
}

rendering::WorkRules PictureFiles::Rules(const PicturesOrder& order) {
  rendering::WorkRules rules;
  rules.manifest = planned_->plan.Folder() + "/" + pictures::kManifestName;
  rules.isShared = order.keepsFinished;
  rules.keepsGoing = true;
  rules.begun = [this](const PlannedPicture& picture) {
    PictureNews news;
    news.kind = PictureNews::Kind::Begun;
    news.index = IndexOf(picture);
    tell_(news);
  };
  rules.ended = [this](const PlannedPicture& picture, const engine::Image* image,
                       const std::string& why) { TellEnd(picture, image, why); };
  return rules;
}

std::size_t PictureFiles::IndexOf(const PlannedPicture& picture) {
  return static_cast<std::size_t>(&picture - planned_->plan.Pictures().data());
}

// How many pictures would take the place of something else.
std::size_t PictureFiles::TellPlan(const PicturesOrder& order, rendering::PictureWork& work) {
  std::size_t foreign = 0;
  missing_ = 0;
  for (PlannedPicture& picture : planned_->plan.Pictures()) {
    picture.isRendered = false;
    const PictureAtPlace there = work.Look(picture);
    picture.isThere = order.keepsFinished && there == PictureAtPlace::Finished;
    PictureNews news;
    news.index = IndexOf(picture);
    news.size = picture.size;
    news.frame = picture.frame;
    news.isThere = picture.isThere;
    news.isForeign = there == PictureAtPlace::Foreign;
    news.state = picture.name;
    news.text = picture.path;
    foreign += news.isForeign ? 1 : 0;
    missing_ += picture.isThere ? 0 : 1;
    tell_(news);
    if (scene_.Listener().IsStopped()) break;
  }
  return foreign;
}

void PictureFiles::TellCost() {
  PictureNews news;
  news.kind = PictureNews::Kind::Cost;
  news.pixels = planned_->plan.PixelsToRender();
  if (const auto estimate = planned_->plan.Estimate()) {
    // Rounded up: 0 seconds would read as "not known".
    news.seconds = static_cast<std::uint64_t>(estimate->seconds + 0.999);
    news.bytes = estimate->bytes;
    const auto space = scene_.Files().Space(planned_->plan.Folder());
    if (space && space->free < news.bytes)
      scene_.Listener().Note("There may not be enough room where the pictures go.");
  }
  tell_(news);
}

// The thumbnail goes before the news, which tells the other side whose it is. Small pictures are
// not enlarged.
void PictureFiles::TellEnd(const PlannedPicture& picture, const engine::Image* image,
                           const std::string& why) {
  PictureNews news;
  news.kind = !why.empty() ? PictureNews::Kind::Failed
              : image      ? PictureNews::Kind::Rendered
                           : PictureNews::Kind::Kept;
  --missing_;
  news.index = IndexOf(picture);
  news.text = why;
  if (image) {
    news.size = pictures::FittedInto({image->width, image->height}, kThumbnailBox);
    if (image->width < news.size.width) news.size = {image->width, image->height};
    const engine::Image small = engine::ScaledDown(*image, news.size.width, news.size.height);
    show_(small.IsFloat() ? engine::ToBytes(small) : small);
  }
  tell_(news);
}

// Refused before the first pixel, as a whole: half of an order would be neither the old nor the new
// set.
int PictureFiles::Render(const PicturesOrder& order, rendering::PictureWork& work,
                         std::size_t foreign) {
  if (foreign > 0 && !order.replaces) {
    scene_.Listener().Error("Files stand where the pictures go that were not made as such.");
    return kFailed;
  }
  const int status = planned_->plan.MakeFolders();
  return status == kDone ? work.Do(planned_->plan.Pictures()) : status;
}

}  // namespace worker
