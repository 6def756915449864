// PictureNames: file names of pictures from a pattern with placeholders. What comes out of a scene
// never leads out of the folder of the pattern. Pure functions, any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "engine/render/Image.h"

namespace pictures {

// Values of the placeholders {scene}, {state}, {camera}, {size}, {frame}, {date} and {index}.
struct PictureFacts {
  std::string scene;
  std::string state;
  std::string camera;
  std::string date;         // of recording: "2026-11-22"
  int frame = 0;            // with at least four digits; {frame:06} wants six
  std::size_t index = 1;    // in the order of the call; {index:03} wants three digits
  std::uint32_t width = 0;  // {size}: "1920x1080"
  std::uint32_t height = 0;
};

// The kinds of picture files, by their suffixes and as words for a person.
enum class PictureKind { Png, Tiff, Exr };
// The kind by a file's suffix, in any letter case; nothing for another suffix.
std::optional<PictureKind> KindOfName(const std::string& path);
// "png", "tif" or "exr"; and back, nothing for another word.
const char* WordOf(PictureKind kind);
std::optional<PictureKind> KindOfWord(const std::string& word);

// Fails for unknown placeholders, single braces ({{ and }} stand for one), for no file name and for
// suffixes of no picture.
engine::Status CheckPattern(const std::string& pattern);
// Whether the pattern has that placeholder, "state".
bool HasPlaceholder(const std::string& pattern, const std::string& name);
// The pattern with each placeholder replaced by a name that is safe in a file name; with
// ":safe" behind a name only letters, digits, "-", "_" and "." of ASCII are left of it.
std::string FillPattern(const std::string& pattern, const PictureFacts& facts);

// The text as one component of a path, on any system: "_" in place of separators, of the other
// characters that some system's file names cannot hold, of control characters, of those that turn
// the direction of writing and of bytes that are no UTF-8; also of a leading dot or hyphen and of a
// last dot or blank; "_" before the names of devices (CON, NUL, COM1 ...). At most 120 bytes.
std::string SafeFileName(const std::string& text);
// The bytes of the file with that name, of the kind that its suffix says: pictures of bytes as PNG
// or TIFF, pictures of floats as OpenEXR. `note` is kept in it where the kind has a place for a
// text; of the others FileOrigin.h takes care.
engine::Result<std::string> EncodePicture(const engine::Image& picture, const std::string& path,
                                          const std::string& note = "");
// Two of the paths that some file systems would take for one: equal up to letter case.
std::optional<std::pair<std::size_t, std::size_t>> FindClash(const std::vector<std::string>& paths);

}  // namespace pictures
