// StatePictures: the pictures of a document's Stagemarks for whoever shows them. It reads those
// that are kept from former runs, else the previews that recording has made, and has what is
// missing or old rendered, one after the other, for as long as somebody looks. Main thread.
#pragma once

#include <QImage>
#include <QSize>
#include <memory>
#include <optional>
#include <set>
#include <unordered_map>

#include "engine/states/StoredStates.h"
#include "program/desktop/background/Slices.h"
#include "program/desktop/render/StatePictureFiles.h"
#include "program/desktop/render/StateRenderer.h"
#include "program/pictures/SceneFingerprint.h"

namespace desktop {

// No Stagemark; IDs count from 0.
inline constexpr host::LONG kNoState = -1;

struct StatePicture {
  QImage image;                 // null: none yet
  bool isPreview = false;       // the small one that recording has made
  bool olderThanState = false;  // recorded or changed since
  bool olderThanScene = false;  // what no Stagemark records has changed since
  std::string problem;          // why it was not rendered
};

class StatePictures {
 public:
  // `changed`: told when the picture of a Stagemark, or its marks, have changed; kNoState: of
  // all.
  StatePictures(const engine::Services& services, std::function<void(host::LONG id)> changed);
  ~StatePictures();

  // Takes over which Stagemarks there are; null: none.
  void Follow(const host::BaseDocument* doc, const std::vector<engine::StoredState>& states);
  const StatePicture& Of(host::LONG id) const;
  // Goes on with what these need, in this order, at a size of `box` pixels; what is older than the
  // scene only where the scene is as it was saved. Not within Follow.
  void See(const std::vector<host::LONG>& visible, QSize box);
  // Nobody looks any more.
  void Leave();
  // Has them rendered however good they are; ends a Stop.
  void RenderAgain(const std::vector<host::LONG>& ids);
  // Ends the rendering, until RenderAgain or another document.
  void Stop();
  bool IsStopped() const { return stopped_; }
  // Whether very large scenes wait for RenderAgain, as this one does.
  bool WaitsForOrder() const { return waitsForOrder_; }
  // State whose picture is being rendered, kNoState for none, and the share that is done.
  host::LONG Rendering() const { return rendering_; }
  double Progress() const { return progress_; }
  // How many pictures were rendered so far.
  std::size_t Made() const { return made_; }

 private:
  struct Entry {
    engine::StoredState state;
    StatePicture shown;
    bool isRead = false;            // looked for on the disk
    bool isKept = false;            // there, in the folder of the scene
    host::BaseContainer record;     // as the picture shows it
    std::uint64_t fingerprint = 0;  // of the scene that it shows
    std::uint64_t tried = 0;        // fingerprint for which it was rendered last
    QSize box;                      // it was rendered for; of one that is kept its own size
    host::BaseContainer failed;     // record that could not be rendered
    bool hasFailed = false;
  };

  host::BaseDocument* Document() const { return FindOpenDocument(doc_); }
  void Forget();
  void TakeStates(const std::vector<engine::StoredState>& states);
  // False where all are kept that can be.
  bool KeepNext();
  bool Advance();
  void ReadFiles(Entry& entry);
  void ReadPreview(Entry& entry);
  bool ReadFingerprint(const host::BaseDocument& doc);
  void Mark(Entry& entry) const;
  void MarkAll();
  bool Needs(const Entry& entry) const;
  void RenderNext();
  void StartRenderer(const host::BaseDocument& doc);
  void EndRenderer();
  void Take(const engine::Image& picture);
  void Keep(Entry& entry);
  void TakeFailure(const std::string& problem);
  void DropUnseen();

  const engine::Services& services_;
  StatePictureFiles files_;
  std::function<void(host::LONG)> changed_;
  host::ULLONG doc_ = 0;
  std::string path_;      // of the scene
  std::string folder_;    // of the pictures that are kept
  std::string previews_;  // their folder
  std::unordered_map<host::LONG, Entry> entries_;
  std::vector<host::LONG> visible_;
  std::set<host::LONG> ordered_;  // by RenderAgain
  QSize box_;
  bool isSeen_ = false;
  bool stopped_ = false;
  bool waitsForOrder_ = false;
  bool hasWarned_ = false;
  std::uint64_t fingerprint_ = 0;  // of the scene at that change count; 0: not known yet
  host::ULLONG fingerprintCount_ = 0;
  std::optional<pictures::SceneFingerprint> reading_;
  host::ULLONG readingCount_ = 0;
  host::LONG rendering_ = kNoState;
  double progress_ = 0;
  std::size_t made_ = 0;
  std::unique_ptr<StateRenderer> renderer_;
  // The records in its copy of the scene
  std::unordered_map<host::LONG, host::BaseContainer> copied_;
  Slices slices_;
};

}  // namespace desktop
