// PictureFiles: the part of the child that writes pictures of states as files: what it is asked for
// and what it tells of it, both as texts of frames, and the work itself. The desktop reads and
// writes the texts. Main thread of each.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "program/rendering/PictureWork.h"

namespace worker {

using pictures::PictureSize;

struct PicturesOrder {
  bool renders = false;       // else it only tells what would be written and what that costs
  bool keepsFinished = true;  // leaves alone what is there and was made from the same
  bool replaces = false;      // what was not made as a picture of a state, too
  rendering::PictureOrder pictures;
};
std::string PicturesAsText(const PicturesOrder& order);
// Nothing for any other text.
std::optional<PicturesOrder> PicturesFromText(const std::string& text);

struct PictureNews {
  enum class Kind : std::uint8_t {
    Planned,   // with all that is known of it; one for each picture, in order
    Cost,      // of those that are not there; behind the last one
    Begun,     // one is being rendered
    Rendered,  // it is at its place; its thumbnail has arrived before
    Kept,      // somebody else has just rendered it
    Failed,    // `text` says why
    Refused,   // the whole work; `text` says why
  };
  Kind kind = Kind::Planned;
  std::size_t index = 0;  // which picture, from 0
  PictureSize size;       // of the picture as planned, or of the thumbnail
  int frame = 0;
  bool isThere = false;    // made from the same, so it is left alone
  bool isForeign = false;  // something else stands at its place
  std::uint64_t seconds = 0;
  std::uint64_t bytes = 0;
  std::uint64_t pixels = 0;
  std::string state;  // name, of the scene as it is "as it is"
  std::string text;   // absolute path, or why
};
std::string NewsAsText(const PictureNews& news);
// Nothing when it is damaged.
std::optional<PictureNews> NewsFromText(const std::string& text);

// Largest size of a thumbnail for a list of pictures, in pixels.
inline constexpr PictureSize kThumbnailBox{128, 80};

class PictureFiles {
 public:
  // `tell`: hears all news; `show`: the thumbnail of the picture that is told of next. The scene
  // must outlive it.
  PictureFiles(rendering::PictureScene& scene, std::function<void(const PictureNews&)> tell,
               std::function<void(const engine::Image&)> show)
      : scene_(scene), tell_(std::move(tell)), show_(std::move(show)) {}

  // False when it was stopped. `complaints`: what the scene's listener was told to be wrong.
  bool Do(const PicturesOrder& order, const std::function<std::string()>& complaints);

 private:
  // The plan of one order; kept for the next one like it.
  struct Planned {
    Planned(rendering::PictureScene& scene, const PicturesOrder& wanted)
        : order(wanted), pictures(scene, 0), plan(scene, pictures, order.pictures) {}

    PicturesOrder order;
    rendering::StatePictures pictures;
    rendering::PicturePlan plan;
  };

  int Plan(const PicturesOrder& order);
  rendering::WorkRules Rules(const PicturesOrder& order);
  std::size_t TellPlan(const PicturesOrder& order, rendering::PictureWork& work);
  void TellCost();
  void TellEnd(const rendering::PlannedPicture& picture, const engine::Image* image,
               const std::string& why);
  int Render(const PicturesOrder& order, rendering::PictureWork& work, std::size_t foreign);
  std::size_t IndexOf(const rendering::PlannedPicture& picture);

  rendering::PictureScene& scene_;
  std::function<void(const PictureNews&)> tell_;
  std::function<void(const engine::Image&)> show_;
  std::unique_ptr<Planned> planned_;
  std::size_t missing_ = 0;  // pictures of which no end was told yet
};

}  // namespace worker
