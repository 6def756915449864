// PicturePage: a page for a browser that shows the pictures of all states with their names, to be
// searched, sorted and looked at large. It needs nothing but the picture files beside it. Pure
// functions, any thread.
#pragma once

#include <string>
#include <vector>

#include "program/pictures/StagemarksDialog.h"

namespace commandline {

using pictures::Mark;

struct PageEntry {
  Mark state;
  std::string file;  // path of the picture, from the folder of the page
  std::uint32_t width = 0;
  std::uint32_t height = 0;
};

// The whole page, in UTF-8; names are shown as text whatever they hold.
std::string MakePicturePage(const std::string& title, const std::string& subtitle,
                            const std::vector<PageEntry>& entries);

// A file's path as an address in a page: every byte that is not plainly a letter, digit or
// separator as its number (RFC 3986).
std::string Address(const std::string& file);

}  // namespace commandline
