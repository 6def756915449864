// PictureWork: renders planned pictures one after the other, each from the scene as it was opened,
// and keeps a manifest of what became of them. Several of these, of any number of programs and
// machines that share the folders, may do one plan together: none does a picture that another one
// is at. Works on a scene it does not own. Main thread.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "engine/outside/AppendedFile.h"
#include "engine/outside/WorkClaim.h"
#include "program/pictures/PictureManifest.h"
#include "program/rendering/PicturePlan.h"

namespace rendering {

// The mark of files with a picture of a state, see FileOrigin.h.
inline constexpr const char* kPictureMaker = "render";

struct WorkRules {
  std::string manifest;     // absolute path
  bool isShared = false;    // leave out what is there, and share the rest with others
  bool keepsGoing = false;  // with the next picture when one fails
  // Called for each picture; both may be empty. `image`: null unless it was rendered here; `why` it
  // failed, empty where it did not.
  std::function<void(const PlannedPicture&)> begun = {};
  std::function<void(const PlannedPicture&, const engine::Image* image, const std::string& why)>
      ended = {};
};

// The file found at the path of a picture.
enum class PictureAtPlace : std::uint8_t {
  None,      // nothing, or no file, and writing says why it cannot be
  Finished,  // whole and made from the same
  Other,     // a picture of a state, made from something else
  Foreign,   // nobody may replace it unasked
};

class PictureWork {
 public:
  PictureWork(PictureScene& scene, StatePictures& pictures, WorkRules rules)
      : scene_(scene), pictures_(pictures), rules_(std::move(rules)) {}

  // Reads the file.
  PictureAtPlace Look(const PlannedPicture& picture);
  bool IsDone(const PlannedPicture& picture) { return Look(picture) == PictureAtPlace::Finished; }
  // Renders the pictures without isThere. The first fault that is no picture's own, as Ctrl-C, ends
  // it.
  int Do(std::vector<PlannedPicture>& plan);
  std::size_t Failed() const { return failed_; }

 private:
  int DoOne(PlannedPicture& picture, std::size_t number);
  int DoLeftToOthers();
  int RenderAndSave(const PlannedPicture& picture, std::size_t number, engine::Image* image,
                    std::uint64_t* bytes);
  int TakeDown(const PlannedPicture& picture, int status, double seconds, std::uint64_t bytes);

  PictureScene& scene_;
  StatePictures& pictures_;
  WorkRules rules_;
  std::size_t count_ = 0;  // pictures that were not there
  std::size_t failed_ = 0;
  std::vector<std::pair<PlannedPicture*, std::size_t>> others_;  // that somebody else was at
  std::unique_ptr<engine::AppendedFile> manifest_;               // opened with the first line
};

}  // namespace rendering
