// PictureNames: file names of pictures from a pattern with placeholders. What comes out of a scene
// never leads out of the folder of the pattern. Pure functions, any thread.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "engine/render/Image.h"

namespace pictures {

// What the placeholders {scene}, {state}, {camera} and {frame} stand for.
struct PictureFacts {
  std::string scene;
  std::string state;
  std::string camera;
  int frame = 0;  // shown with at least four digits
};

// Fails for unknown placeholders, for no file name and for suffixes other than .png, .tif and
// .tiff.
engine::Status CheckPattern(const std::string& pattern);
// The pattern with each placeholder replaced by a name that is safe in a file name.
std::string FillPattern(const std::string& pattern, const PictureFacts& facts);

// The text as one component of a path: separators and control characters replaced, no leading dot,
// at most 120 bytes.
std::string SafeFileName(const std::string& text);
// Whether the file is to be a TIFF.
bool IsTiffName(const std::string& path);
// The bytes of the file with that name: a TIFF or PNG by its suffix.
engine::Result<std::string> EncodePicture(const engine::Image& picture, const std::string& path);
// The text with small letters only: texts that some file systems would take for one become equal.
std::string FoldedCase(const std::string& text);
// Two of the paths that some file systems would take for one: equal up to letter case.
std::optional<std::pair<std::size_t, std::size_t>> FindClash(const std::vector<std::string>& paths);

}  // namespace pictures
