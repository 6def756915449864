// PictureManifest: what became of pictures, one JSON object a line, in the order in which it
// happened: what each was made from, where, when and how long it took. Plain values; any thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "program/pictures/PictureRecord.h"

namespace pictures {

// Name of the manifest file beside the pictures of one call.
inline constexpr const char* kManifestName = "pictures.jsonl";

struct ManifestLine {
  std::string picture;  // path, relative to the manifest's folder where it lies in it
  std::string state;
  PictureRecord record;
  bool failed = false;
  std::string why;          // it failed, one sentence
  std::string time;         // when it was done: "2026-11-22T07:59:21Z"
  std::string host;         // the machine
  std::string node;         // what a scheduler calls it, empty without one
  double seconds = 0;       // that it took
  std::uint64_t bytes = 0;  // of the file
};

// The line as JSON, without a line break.
std::string TextOf(const ManifestLine& line);
// All lines that can be read; others, which a killed program may leave, are counted in `*broken`.
std::vector<ManifestLine> ReadManifest(std::string_view text, std::size_t* broken = nullptr);

// The present time and the name of this machine, as a line has them.
std::string TimeNow();
std::string HostName();
// A path as a manifest in that folder gives it, and back.
std::string RelativeTo(const std::string& folder, const std::string& path);
std::string AbsoluteFrom(const std::string& folder, const std::string& path);

}  // namespace pictures
