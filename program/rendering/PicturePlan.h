// PicturePlan: which pictures a call asks for, with their names, sizes and what each will be made
// from, all known and checked before the first pixel; and what they will cost. Works on a scene and
// its StatePictures, which it does not own. What is wrong is said to the scene's listener and
// answered as an exit status. Main thread.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "program/rendering/StatePictures.h"

namespace rendering {

// An order of pictures, in the words that were typed.
struct PictureOrder {
  std::vector<std::string> states;  // empty: all
  std::vector<std::string> sizes;   // "640x360"; empty: that of each state
  std::string frames;               // "0:9"; empty: the first one of each state
  std::string folder;               // absolute; a pattern that is not begins there
  std::string pattern;              // of the files' names; empty: the usual one
  std::string format;               // "png", "tif", "exr"; empty: as the pattern says
};

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

// Estimated cost of the pictures that are still to be rendered.
struct PictureEstimate {
  double seconds = 0;
  double reading = 0;  // seconds of these for the first picture before any other
  std::uint64_t bytes = 0;
};

// Findings of `check` in the states of a plan, and a text about them.
struct PictureFindings {
  std::size_t errors = 0;
  std::size_t warnings = 0;
  std::string text;  // empty where nothing was found
};

class PicturePlan {
 public:
  PicturePlan(PictureScene& scene, StatePictures& pictures, const PictureOrder& order)
      : scene_(scene), pictures_(pictures), order_(order) {}

  // Checks sizes, frames and pattern, before the scene is opened.
  int CheckOrder();
  // Finds names, sizes and records of all pictures of the chosen states; refuses two of one name.
  int Make();
  PictureFindings Findings();

  std::vector<PlannedPicture>& Pictures() { return plan_; }
  // Makes the folders for all pictures and for their manifest.
  int MakeFolders();
  // The folder above all pictures: the pattern up to its first placeholder.
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
  std::string Absolute(const std::string& path) const;
  std::string FixedFolder() const;
  std::string WhyOneFile(const PlannedPicture& one, const PlannedPicture& other) const;

  PictureScene& scene_;
  StatePictures& pictures_;
  const PictureOrder& order_;
  std::string pattern_;
  std::string folder_;
  std::vector<PictureSize> sizes_;
  std::vector<int> frames_;
  std::string sceneHash_;
  std::string stateHash_;  // of the state that is being added
  std::string settingsHash_;
  std::vector<PlannedPicture> plan_;
};

// The hash of the other settings that a picture depends on, for its record.
std::string SettingsHash(PictureKind kind);

// "3.1 megapixels"; "2 min 5 s".
std::string PixelsText(std::uint64_t pixels);
std::string DurationText(double seconds);

}  // namespace rendering
