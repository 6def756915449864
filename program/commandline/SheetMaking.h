// SheetMaking: puts pictures of the states of the open scene onto a contact sheet, into a page for
// a browser, or both; finished ones where there are any, else it renders them, once for both. Works
// on a session it does not own. Main thread.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "program/commandline/FinishedPictures.h"
#include "program/commandline/PictureOrders.h"
#include "program/commandline/PicturePage.h"
#include "program/pictures/ContactSheet.h"

namespace commandline {

struct SheetOrder {
  std::vector<std::string> states;       // empty: all
  std::string sheet;                     // absolute path of the sheet, empty: none
  std::string folder;                    // absolute path of the page's folder, empty: none
  unsigned threads = 0;                  // 0: one for each core
  std::optional<PictureSize> size = {};  // what each picture fits into, instead of what is usual
  std::vector<std::string> from = {};    // absolute paths of folders with finished pictures
  bool resume = false;                   // keep own pictures, and use those kept
  // By name of the state: as large as these at most, and of their shape, instead of what its render
  // settings say. Those of finished pictures need no rendering.
  std::map<std::string, PictureSize> made = {};
};

class SheetMaking {
 public:
  SheetMaking(Session& session, const SheetOrder& order)
      : session_(session), order_(order), pictures_(session, order.threads), finished_(session) {}

  // Puts what was written into the report. What goes wrong is said on the terminal; the sheet and
  // the page are written last.
  int Run(Report& report);

 private:
  // One state's picture as it is going to be.
  struct Planned {
    PictureSize own;  // of the state by itself, or of a finished picture of it
    PictureSize size;
    PictureRecord record;
    std::string file;  // where it is kept, absolute; empty: nowhere
  };

  int Fail(const std::string& why);
  // The largest size that fits into the box and is no larger than a finished picture that it shows.
  PictureSize Fitted(const Planned& planned, const PictureSize& box) const;
  int Choose();
  int NamePictures();
  int CheckPlaces();
  int MakeFolders();
  int MeasureStates();
  int LayOut();
  int MakeAll();
  int MakeOne(std::size_t index);
  int Obtain(std::size_t index, const std::string& name, engine::Image* picture);
  bool TakeKept(const Planned& planned, engine::Image* picture);
  std::string FreeName(const std::string& name);
  int Write(Report& report);

  Session& session_;
  const SheetOrder& order_;
  StatePictures pictures_;
  FinishedPictures finished_;
  std::string title_;
  std::string subtitle_;
  std::string kept_;                   // folder of its own pictures; empty: it keeps none
  std::vector<std::string> settings_;  // of which finished pictures will do
  std::vector<Planned> plan_;          // as the states
  std::unique_ptr<pictures::ContactSheet> sheet_;
  std::vector<PageEntry> entries_;              // of the page, in order
  std::set<std::string> files_;                 // names given, letter case folded
  std::map<std::string, std::size_t> numbers_;  // by name: the last number tried
  std::size_t taken_ = 0;                       // pictures that were not rendered
};

}  // namespace commandline
