// SheetMaking: renders the states of the open scene once and puts them onto a contact sheet, into a
// page for a browser, or both. Works on a session it does not own. Main thread.
#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "program/commandline/PicturePage.h"
#include "program/commandline/StatePictures.h"
#include "program/pictures/ContactSheet.h"

namespace commandline {

struct SheetOrder {
  std::vector<std::string> states;  // empty: all
  std::string sheet;                // absolute path of the sheet, empty: none
  std::string folder;               // absolute path of the page's folder, empty: none
  unsigned threads = 0;             // 0: one for each core
};

class SheetMaking {
 public:
  SheetMaking(Session& session, const SheetOrder& order)
      : session_(session), order_(order), pictures_(session, order.threads) {}

  // Puts what was written into the report. What goes wrong is said on the terminal; the sheet and
  // the page are written last.
  int Run(Report& report);

 private:
  int Fail(const std::string& why);
  int Choose();
  int NamePictures();
  int CheckPlaces();
  int MakeFolders();
  int LayOut();
  int RenderAll();
  int AddToSheet(std::size_t index, const Mark& state);
  int AddToPage(std::size_t index, const Mark& state);
  std::string FreeName(const std::string& name);
  int Write(Report& report);

  Session& session_;
  const SheetOrder& order_;
  StatePictures pictures_;
  std::string title_;
  std::string subtitle_;
  std::vector<PictureSize> sizes_;
  std::unique_ptr<pictures::ContactSheet> sheet_;
  std::vector<PageEntry> entries_;              // of the page, in order
  std::set<std::string> files_;                 // names given, letter case folded
  std::map<std::string, std::size_t> numbers_;  // by name: the last number tried
};

}  // namespace commandline
