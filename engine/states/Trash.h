// Trash: Stagemarks that were deleted or recorded over go into the trash of their document, and
// come back from it. The plug-in has no part in this. Previews are files and come back with them.
// Main thread.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "engine/outside/Services.h"
#include "engine/scene/DeletedStates.h"
#include "engine/undo/StoredData.h"

namespace engine {

// The trash keeps so many; the one deleted first goes first.
inline constexpr std::size_t kMostDeletedStates = 20;

// The containers of the document's data that hold Stagemarks.
std::vector<host::LONG> StoresOfStates();

// The preview files of some Stagemarks as they are before something is done to them. Handed over to
// an undo step it exchanges those that were changed.
class KeptPreviews : public OutsideChange {
 public:
  using Bytes = std::shared_ptr<const std::string>;

  // All previews of a command, and one of them; larger ones are not kept, and undo says so.
  static constexpr std::uint64_t kMostBytes = 256ull << 20;
  static constexpr std::uint64_t kMostBytesOfOne = 16ull << 20;

  explicit KeptPreviews(const Services& services) : services_(services) {}
  // Reads the preview of that Stagemark.
  void Take(const host::BaseDocument& doc, const std::string& name);
  // The preview that Take read; null where there is none.
  Bytes Of(const std::string& name) const;
  // Forgets those that are on the disk as they were. False when none is left.
  bool KeepChanged(const host::BaseDocument& doc);
  // The preview of that name becomes these bytes with the next exchange.
  void Wish(const std::string& name, Bytes bytes);

  void Exchange(host::BaseDocument& doc) noexcept override;

 private:
  // The file before the step and after it; null: there is none.
  struct Kept {
    Bytes sides[2];
    FileStamp stamp;
    std::string notKept;  // why the one before is not
    int onDisk = 1;       // the side that the disk has: not the live one where writing failed
  };
  void ExchangeOne(const std::string& name, const std::string& path, Kept& kept) const;

  const Services services_;
  std::map<std::string, Kept> kept_;  // by the names of the Stagemarks
  std::uint64_t bytes_ = 0;
  int live_ = 1;  // the side that belongs to the document as it is
};

// Puts the Stagemarks that `scope` has seen go into the trash of `doc`: those that were stored when
// it began and are not any more, and of the name `recorded` the one that is another now.
void MoveToTrash(const Services& services, StoredDataScope& scope, host::BaseDocument& doc,
                 const std::string& recorded, const KeptPreviews& previews);

// Gives back the Stagemark at that position of the trash as one undo step, under the name `as`, or
// its own where that is empty. The result is the name it has. Its preview is written beside the
// scene. On failure, with a reason for a person, nothing is changed.
Result<std::string> RestoreDeleted(const Services& services, host::BaseDocument& doc,
                                   std::size_t position, const std::string& as = "");
// Forgets what is in the trash, as one undo step.
void EmptyTrash(host::BaseDocument& doc);

}  // namespace engine
