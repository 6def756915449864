// Pictures and files of states for scripts: rendered, exported, published, shown together. The
// document is as before afterwards. Every function throws a Failure where it cannot. The thread of
// the session.
#pragma once

#include <cstdint>
#include <optional>
#include <utility>

#include "program/python/Session.h"

namespace scripting {

struct Picture {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::vector<std::uint8_t> pixels;  // red, green, blue, alpha, row by row from the top left
  Names notes;                       // what of the scene was left out
};
// Renders a state as if it were loaded, or the scene as it stands where `state` is empty. `size`: 0
// for that of the render settings; where one side is 0, the other and the shape count. `path`:
// where the picture is written, empty for nowhere; a written one is answered without pixels.
Picture Render(DocumentId document, const std::string& state,
               std::pair<std::uint32_t, std::uint32_t> size, const std::string& path,
               bool overwrite, unsigned threads);

struct ExportOrder {
  std::string folder;
  Names states;        // by names and patterns, none: all
  std::string layout;  // "file", "folders", "project" or "one-tex"
  std::optional<std::pair<int, int>> frames;
  bool isolated = false;      // each onto the scene as it is, not onto the state before
  bool allowMissing = false;  // textures
};
struct Exported {
  Names scenes;   // files, in order
  Names written;  // all files and folders
  Names missing;  // textures that were found nowhere
};
Exported Export(DocumentId document, const ExportOrder& order);

struct PublishWishes {
  std::string folder;
  Names states;        // by names and patterns, none: all, or the scene as it is
  std::string format;  // "glb" or "gltf"
  bool allInOne = false;
  bool omitHidden = true;
  bool overwrite = false;
};
// Publishes states; answers the scene files, without those beside them.
Names Publish(DocumentId document, const PublishWishes& wishes);

struct PageWishes {
  std::string folder;  // made where it is missing
  Names states;        // by names and patterns, none: all, or the scene as it is
  std::string title;   // empty: the scene's name
  bool overwrite = false;
};
// Makes a web page that shows the states in 3D; answers its file.
std::string MakePage(DocumentId document, const PageWishes& wishes);

struct SheetWishes {
  std::string path;  // .png or .tif
  Names states;      // as of a page
  // Largest size of each picture, in pixels; without it a size that suits their number.
  std::optional<std::pair<std::uint32_t, std::uint32_t>> size;
  bool overwrite = false;
  unsigned threads = 0;  // 0: one for each core
};
// Makes a contact sheet of the states; answers its file.
std::string MakeSheet(DocumentId document, const SheetWishes& wishes);

}  // namespace scripting
