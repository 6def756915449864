// StatePictures: pictures of the states of the open scene: which states are meant, bringing the
// scene into one through the dialog, and rendering it as it then stands. Works on a scene it does
// not own. What fails is said to its listener and answered as an exit status. Main thread.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "engine/render/Image.h"
#include "program/outcome/ExitStatus.h"
#include "program/outcome/Words.h"
#include "program/pictures/PictureNames.h"
#include "program/pictures/PictureRecord.h"
#include "program/pictures/PictureSize.h"
#include "program/pictures/SaidNotes.h"
#include "program/rendering/PictureScene.h"

namespace rendering {

using outcome::Counted;
using outcome::kDone;
using outcome::kFailed;
using outcome::kInterrupted;
using outcome::kUsage;
using pictures::CheckPattern;
using pictures::FillPattern;
using pictures::FindClash;
using pictures::FittedInto;
using pictures::HasPlaceholder;
using pictures::KindOfName;
using pictures::PictureFacts;
using pictures::PictureKind;
using pictures::PictureRecord;
using pictures::PictureSize;
using pictures::SafeFileName;
using pictures::SceneName;

// The size in a text as "1280x720", both sides 1..16384 and together not more than can be rendered;
// a failure says what is wrong.
engine::Result<PictureSize> ParsePictureSize(const std::string& typed);
std::string SizeText(const PictureSize& size);
// How far the whole work is while one picture of it is rendered.
struct PictureTurn {
  std::size_t number = 0;  // 0-based
  std::size_t count = 1;
};

class StatePictures {
 public:
  // `threads`: 0 one for each core.
  StatePictures(PictureScene& scene, unsigned threads) : scene_(scene), threads_(threads) {}

  // Chooses the states that are meant, all where nothing is typed; a scene without any gives one
  // without a name, which stands for the scene as it is. Unknown names answer kUsage.
  int Choose(const std::vector<std::string>& typed);
  // The chosen states in their order, as they were before any was recalled.
  const std::vector<Mark>& States() const { return states_; }
  bool AsItIs() const { return asItIs_; }

  // Brings the scene into the state; the next one would be loaded onto it.
  int Recall(const Mark& state);
  // Does something with the scene in the state and takes the state back, so that what comes next
  // finds the scene as it was opened. Answers what `look` does.
  int InState(const Mark& state, const std::function<int()>& look);
  // Facts about the scene as it stands: size by the active render settings, names for files.
  PictureSize Size() const;
  PictureFacts Facts(const Mark& state) const;
  // Renders the scene as it stands, and says what is left out of it where that was not said before.
  // kInterrupted after Ctrl-C.
  int Render(const PictureSize& size, const PictureTurn& turn, const std::string& name,
             engine::Image* picture);
  // Renders a picture that nobody gets to see, without progress and notes; `picture` may be null.
  int Probe(const PictureSize& size, engine::Image* picture);
  // Does as Render, but gives floats, for a file that holds all the light.
  int RenderLight(const PictureSize& size, const PictureTurn& turn, const std::string& name,
                  engine::Image* picture);
  // Writes the picture whole or not at all, in the format of the suffix. The file tells that
  // `maker` made it and, with a record, from what. `*bytes` gets its length.
  int Save(const engine::Image& picture, const std::string& path, const std::string& maker,
           const PictureRecord* record = nullptr, std::uint64_t* bytes = nullptr);
  // Why the last Render or Save failed, without an end of the program's own making.
  const std::string& LastFailure() const { return lastFailure_; }

 private:
  int Fail(const std::string& why);
  int RenderAs(bool isLinear, const PictureSize& size, const PictureTurn& turn,
               const std::string& name, engine::Image* picture);

  PictureScene& scene_;
  unsigned threads_;
  pictures::SaidNotes said_;
  bool asItIs_ = false;
  std::vector<Mark> states_;
  std::string lastFailure_;
};

}  // namespace rendering
