// PicturePlan: which pictures a call asks for, with their names, sizes and what each will be made
// from, all known and checked before the first pixel; and what they will cost. Works on a session
// and its StatePictures, which it does not own. What is wrong is said on the terminal and answered
// as an exit status. Main thread.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "program/commandline/Arguments.h"
#include "program/commandline/StatePictures.h"

namespace commandline {

// As typed.
struct PictureOrder {
  std::vector<std::string> states;  // empty: all
  std::vector<std::string> sizes;   // "640x360"; empty: that of each state
  std::string frames;               // "0:9"; empty: the first one of each state
  std::string pattern;              // of the files' names; empty: the usual one
  std::string format;               // "png", "tif", "exr"; empty: as the pattern says
};
// -o, --only, --size, --frames and --format of a verb; `pattern` gets what -o says.
void AddPictureOrder(Verb verb, PictureOrder& order, std::string& pattern);

struct PlannedPicture {
  Mark state;
  std::string name;  // of the state, for messages
  std::string path;  // absolute
  PictureSize size;
  int frame = 0;
  PictureRecord record;
  bool isThere = false;     // made from the same, and whole
  bool isRendered = false;  // now
};

// About; of pictures that are still to be rendered.
struct PictureEstimate {
  double seconds = 0;
  double reading = 0;  // seconds of these for the first picture before any other
  std::uint64_t bytes = 0;
};

class PicturePlan {
 public:
  PicturePlan(Session& session, StatePictures& pictures, const PictureOrder& order)
      : session_(session), pictures_(pictures), order_(order) {}

  // Sizes, frames and pattern; before the scene is opened.
  int CheckOrder();
  // Names, sizes and records of all pictures of the chosen states; refuses two of one name.
  int Make();
  // Says what speaks against the pictures: textures that are missing and what `check` finds in the
  // states. With --strict a warning is enough for kFailed.
  int CheckScene(Report& report);

  std::vector<PlannedPicture>& Pictures() { return plan_; }
  // Above all pictures: the pattern up to its first placeholder.
  const std::string& Folder() const { return folder_; }
  std::uint64_t PixelsToRender() const;
  // Renders the first missing picture very small to learn what the missing ones will cost; nothing
  // where fewer than two are missing.
  std::optional<PictureEstimate> Estimate();

 private:
  int Refuse(const std::string& why);
  int Fail(const std::string& why);
  int CheckPatternAndFormat();
  int AddState(const Mark& state, const pictures::SceneHashes& hashes);
  int AddPicture(const Mark& state, const PictureSize& size, int frame);
  int CheckNames();
  std::string WhyOneFile(const PlannedPicture& one, const PlannedPicture& other) const;

  Session& session_;
  StatePictures& pictures_;
  const PictureOrder& order_;
  std::string pattern_;
  std::string folder_;
  std::vector<PictureSize> sizes_;
  std::vector<int> frames_;
  std::string scene_;  // hashes; that of the state which is being added
  std::string state_;
  std::string settings_;
  std::vector<PlannedPicture> plan_;
};

// The hash of what else makes a picture, for its record.
std::string SettingsHash(PictureKind kind);

// "3.1 megapixels"; "2 min 5 s".
std::string PixelsText(std::uint64_t pixels);
std::string DurationText(double seconds);

}  // namespace commandline
