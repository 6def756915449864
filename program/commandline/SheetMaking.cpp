// A sheet is made in steps, each of which may end it: which states, names, may they be written,
// folders, sizes and records (each state is recalled for that), the layout, then the pictures. A
// picture is taken from a former run, from finished renders, or rendered.
#include "program/commandline/SheetMaking.h"

#include <algorithm>
#include <filesystem>

#include "engine/outside/FoldedName.h"
#include "program/publish/FileOrigin.h"

namespace commandline {

namespace {

// A page shows one picture large at a time.
constexpr PictureSize kPageBox{960, 720};
constexpr const char* kPageFile = "index.html";
constexpr const char* kPictureFolder = "pictures";
// The maker of a page with its pictures: a sheet does not replace those, and neither of them one of
// `render`.
constexpr const char* kPage = "page";

namespace fs = std::filesystem;

// Where a sheet or page keeps its own pictures; empty where it needs none.
std::string KeptFolder(const SheetOrder& order) {
  if (!order.folder.empty()) return order.folder + "/" + kPictureFolder;
  return order.resume ? fs::path(order.sheet).replace_extension().string() + " " + kPictureFolder
                      : "";
}

}  // namespace

int SheetMaking::Run(Report& report) {
  int status = kDone;
  for (const auto step :
       {&SheetMaking::Choose, &SheetMaking::NamePictures, &SheetMaking::CheckPlaces,
        &SheetMaking::MakeFolders, &SheetMaking::MeasureStates, &SheetMaking::LayOut,
        &SheetMaking::MakeAll}) {
    if (status == kDone) status = (this->*step)();
  }
  if (status == kDone) status = Write(report);
  if (status == kInterrupted) {
    session_.GetProgram().terminal.Error(
        "Interrupted; no sheet was written." +
        std::string(order_.resume ? " The same call takes up with what is missing." : ""));
  }
  return status;
}

int SheetMaking::Fail(const std::string& why) {
  session_.GetProgram().terminal.Error(why);
  return kFailed;
}

int SheetMaking::Choose() {
  title_ = SceneName(session_.Document());
  return pictures_.Choose(order_.states);
}

// Names are given before anything is measured: they decide what must not be overwritten.
int SheetMaking::NamePictures() {
  kept_ = KeptFolder(order_);
  for (const Mark& state : pictures_.States()) {
    Planned planned;
    const std::string name = pictures_.AsItIs() ? pictures::kAsItIs : state.name;
    if (!kept_.empty()) planned.file = kept_ + "/" + FreeName(name);
    plan_.push_back(std::move(planned));
  }
  return kDone;
}

// Sheet and page have makers of their own, so that neither replaces the other's files.
int SheetMaking::CheckPlaces() {
  if (!order_.folder.empty()) session_.Files().Follow(order_.folder);
  if (!order_.sheet.empty()) {
    if (const int status = session_.CheckReplacing({order_.sheet}, pictures::kSheetMaker);
        status != kDone)
      return status;
  }
  std::vector<std::string> paths;
  if (!order_.folder.empty()) paths.push_back(order_.folder + "/" + kPageFile);
  for (const Planned& planned : plan_) {
    if (!planned.file.empty()) paths.push_back(planned.file);
  }
  return session_.CheckReplacing(paths, kPage);
}

int SheetMaking::MakeFolders() {
  for (const std::string& folder :
       {order_.folder, kept_, std::filesystem::path(order_.sheet).parent_path().string()}) {
    if (folder.empty()) continue;
    if (const auto made = session_.Files().MakeFolders(folder); !made) return Fail(made.Message());
  }
  return kDone;
}

// Pictures that are there already are never enlarged.
PictureSize SheetMaking::Fitted(const Planned& planned, const PictureSize& box) const {
  if (order_.made.empty()) return FittedInto(planned.own, box);
  return FittedInto(planned.own, {std::min(box.width, planned.own.width),
                                  std::min(box.height, planned.own.height)});
}

// Finished pictures of both kinds fit; one made here is a PNG file.
int SheetMaking::MeasureStates() {
  const pictures::SceneHashes hashes(session_.Document(), session_.Files());
  settings_ = {SettingsHash(PictureKind::Png), SettingsHash(PictureKind::Tiff)};
  for (std::size_t i = 0; i < plan_.size(); ++i) {
    if (Terminal::Interrupted()) return kInterrupted;
    const auto made = order_.made.find(pictures_.AsItIs() ? "" : pictures_.States()[i].name);
    const int status = pictures_.InState(pictures_.States()[i], [&] {
      plan_[i].own = made == order_.made.end() ? pictures_.Size() : made->second;
      plan_[i].record = {hashes.Scene(), hashes.State(), settings_[0], {}, 0, STAGEMARKS_VERSION};
      return kDone;
    });
    if (status != kDone) return status;
  }
  return kDone;
}

// A sheet whose cells would be larger than the pictures that are there is laid out once more, with
// those as its cells.
int SheetMaking::LayOut() {
  std::vector<PictureSize> sizes;
  PictureSize largest{0, 0};
  for (const Planned& planned : plan_) {
    sizes.push_back(planned.own);
    largest = {std::max(largest.width, planned.own.width),
               std::max(largest.height, planned.own.height)};
  }
  subtitle_ = pictures::SheetSubtitle(pictures_.AsItIs() ? 0 : plan_.size());
  if (!order_.sheet.empty()) {
    auto sheet =
        pictures::ContactSheet::Make(session_.Files(), sizes, title_, subtitle_, order_.size);
    const bool isRoomy = sheet && !order_.made.empty() &&
                         sheet.Value().Box().width > largest.width &&
                         sheet.Value().Box().height > largest.height;
    if (isRoomy)
      sheet = pictures::ContactSheet::Make(session_.Files(), sizes, title_, subtitle_, largest);
    if (!sheet) return Fail(sheet.Message());
    sheet_ = std::make_unique<pictures::ContactSheet>(sheet.Take());
  }
  const PictureSize box = order_.size             ? *order_.size
                          : order_.folder.empty() ? sheet_->Box()
                                                  : kPageBox;
  for (Planned& planned : plan_) {
    planned.size = Fitted(planned, box);
    planned.record.size = planned.size;
  }
  finished_.LookIn(fs::path(order_.sheet.empty() ? order_.folder : order_.sheet).parent_path());
  for (const std::string& folder : order_.from) finished_.LookIn(folder);
  return kDone;
}

int SheetMaking::MakeAll() {
  for (std::size_t i = 0; i < plan_.size(); ++i) {
    if (Terminal::Interrupted()) return kInterrupted;
    if (const int status = MakeOne(i); status != kDone) return status;
    session_.GetProgram().terminal.Step(i + 1, plan_.size(), "Making the sheet");
  }
  return kDone;
}

// The page takes the picture as it is, the sheet a smaller one.
int SheetMaking::MakeOne(std::size_t index) {
  Mark state = pictures_.States()[index];
  if (pictures_.AsItIs()) state.name = pictures::kAsItIs;
  const Planned& planned = plan_[index];
  engine::Image picture;
  if (const int status = Obtain(index, state.name, &picture); status != kDone) return status;
  if (!order_.folder.empty()) {
    entries_.push_back(
        {state, std::string(kPictureFolder) + "/" + fs::path(planned.file).filename().string(),
         planned.size.width, planned.size.height});
  }
  if (!sheet_) return kDone;
  const PictureSize cell = Fitted(planned, sheet_->Box());
  sheet_->Place(index, engine::ScaledDown(picture, cell.width, cell.height), state);
  return kDone;
}

// The picture kept before, a finished one, or a new one.
int SheetMaking::Obtain(std::size_t index, const std::string& name, engine::Image* picture) {
  const Planned& planned = plan_[index];
  if (order_.resume && TakeKept(planned, picture)) {
    ++taken_;
    return kDone;
  }
  auto found = finished_.Find(planned.record, settings_, planned.size);
  taken_ += found ? 1 : 0;
  int status = kDone;
  if (found) {
    *picture = std::move(*found);
  } else {
    status = pictures_.InState(pictures_.States()[index], [&] {
      return pictures_.Render(planned.size, {index, plan_.size()}, name, picture);
    });
  }
  return status != kDone || planned.file.empty()
             ? status
             : pictures_.Save(*picture, planned.file, kPage, &planned.record);
}

// Made here, unchanged since, and from the same: anything else is made anew.
bool SheetMaking::TakeKept(const Planned& planned, engine::Image* picture) {
  engine::FileSystem& files = session_.Files();
  if (planned.file.empty() || files.Kind(planned.file) != engine::FileKind::File) return false;
  const auto bytes = files.ReadFile(planned.file, engine::kLargestImageBytes);
  if (!bytes || publishing::MakerOf(bytes.Value()) != kPage) return false;
  const auto record = pictures::FindRecord(bytes.Value());
  auto image = record && *record == planned.record ? engine::DecodeImage(bytes.Value())
                                                   : engine::Result<engine::Image>::Failure("");
  if (image) *picture = image.Take();
  return image.Ok();
}

// Two names may become one once they are safe for files: the later ones get a number.
std::string SheetMaking::FreeName(const std::string& name) {
  const std::string safe = SafeFileName(name);
  std::string free = safe + ".png";
  for (std::size_t& number = numbers_[engine::FoldedName(safe)];
       !files_.insert(engine::FoldedName(free)).second;) {
    free = safe + " (" + std::to_string(++number + 1) + ").png";
  }
  return free;
}

// Sheet and page go last: where they are, all that they show is there.
int SheetMaking::Write(Report& report) {
  report.Put("states", pictures_.AsItIs() ? 0 : plan_.size());
  report.Put("finishedPictures", taken_);
  report.Put("sheet", JsonValue());
  report.Put("page", JsonValue());
  if (taken_ > 0)
    report.Line("Used " + Counted(taken_, "finished picture") + ", rendered " +
                std::to_string(plan_.size() - taken_) + ".");
  if (sheet_) {
    if (const int status = pictures_.Save(sheet_->Picture(), order_.sheet, pictures::kSheetMaker);
        status != kDone)
      return status;
    report.Put("sheet", order_.sheet);
    report.Line("Written: " + order_.sheet);
  }
  if (order_.folder.empty()) return kDone;
  const std::string page = order_.folder + "/" + kPageFile;
  const auto written = session_.Files().ReplaceFile(
      page, publishing::WithMaker(MakePicturePage(title_, subtitle_, entries_), kPage));
  if (!written) return Fail(written.Message());
  report.Put("page", page);
  report.Line("Written: " + page);
  return kDone;
}

}  // namespace commandline
