// StatePage: a page for a browser in which the states of a scene are looked at in 3D: one file that
// needs neither a server nor the network. The viewer lies beside the program, made when it was
// built; here it is filled with the scene and a thumbnail of each state. Any thread.
#pragma once

#include <string>
#include <vector>

#include "engine/outside/FileSystem.h"
#include "engine/render/Image.h"
#include "program/pictures/PictureSize.h"

namespace publishing {

// Names of the files of a page in its folder.
inline constexpr const char* kPageFile = "index.html";
inline constexpr const char* kPageLicense = "LICENSE-three.txt";

struct PageViewer {
  std::string page;     // with a place for what it shows
  std::string license;  // of the library in it
};
// Fails with what to do where the program was built without it.
engine::Result<PageViewer> ReadPageViewer(engine::FileSystem& files);

struct PageState {
  std::string name;
  std::string date;       // ISO 8601, empty where unknown
  std::string thumbnail;  // bytes of a JPEG file, empty for none
};

struct PageContents {
  std::string title;
  std::vector<PageState> states;  // in the order of those in the scene
  std::string scene;              // bytes of a .glb file that holds them all
};

// Largest size of a thumbnail, in pixels; and the bytes of its file, a JPEG.
inline constexpr pictures::PictureSize kThumbnail{480, 360};
engine::Result<std::string> EncodeThumbnail(const engine::Image& picture);

// The mark of pages in FileOrigin.h: those of `sheet` have had the name of the verb `page` for
// longer.
inline constexpr const char* kPageMaker = "state-page";
// Whether the folder has the viewer's license already, letter by letter.
bool HasLicense(engine::FileSystem& files, const std::string& folder, const PageViewer& viewer);
// Writes the page, as MakeStatePage gives it, and the license. The page is written last, with its
// mark: where it is, all that belongs to it is there.
engine::Status WritePage(engine::FileSystem& files, const std::string& folder,
                         const std::string& page, const PageViewer& viewer);

// The whole page, in UTF-8. Whatever the title and the names hold, they are data in it and nothing
// else.
std::string MakeStatePage(const PageViewer& viewer, const PageContents& contents);

}  // namespace publishing
