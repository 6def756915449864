#include "program/commandline/SheetMaking.h"

#include <filesystem>

#include "program/commandline/FileOrigin.h"

namespace commandline {

namespace {

constexpr PictureSize kPageBox{960, 720};
constexpr const char* kPageFile = "index.html";
// Makers: a sheet does not replace a picture of a page.
constexpr const char* kSheet = "sheet";
constexpr const char* kPage = "page";

namespace fs = std::filesystem;

bool IsSameFolder(const fs::path& one, const fs::path& other) {
  std::error_code error;
  return fs::weakly_canonical(one / "", error) == fs::weakly_canonical(other / "", error);
}

}  // namespace

int SheetMaking::Run(Report& report) {
  int status = kDone;
  for (const auto step :
       {&SheetMaking::Choose, &SheetMaking::NamePictures, &SheetMaking::CheckPlaces,
        &SheetMaking::MakeFolders, &SheetMaking::LayOut, &SheetMaking::RenderAll}) {
    if (status == kDone) status = (this->*step)();
  }
  if (status == kDone) status = Write(report);
  if (status == kInterrupted)
    session_.GetProgram().terminal.Error("Interrupted; no sheet was written.");
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

// A sheet in the folder of the page has its name first.
int SheetMaking::NamePictures() {
  if (order_.folder.empty()) return kDone;
  const fs::path sheet = order_.sheet;
  if (!order_.sheet.empty() && IsSameFolder(sheet.parent_path(), order_.folder))
    files_.insert(FoldedCase(sheet.filename()));
  for (const Mark& state : pictures_.States()) {
    entries_.push_back(
        {state, FreeName(pictures_.AsItIs() ? pictures::kAsItIs : state.name), 0, 0});
  }
  return kDone;
}

int SheetMaking::CheckPlaces() {
  if (!order_.sheet.empty()) {
    if (const int status = session_.CheckReplacing({order_.sheet}, kSheet); status != kDone)
      return status;
  }
  if (order_.folder.empty()) return kDone;
  std::vector<std::string> paths{order_.folder + "/" + kPageFile};
  for (const PageEntry& entry : entries_) paths.push_back(order_.folder + "/" + entry.file);
  return session_.CheckReplacing(paths, kPage);
}

int SheetMaking::MakeFolders() {
  for (const std::string& folder :
       {order_.folder, std::filesystem::path(order_.sheet).parent_path().string()}) {
    if (folder.empty()) continue;
    if (const auto made = session_.Files().MakeFolders(folder); !made) return Fail(made.Message());
  }
  return kDone;
}

int SheetMaking::LayOut() {
  for (const Mark& state : pictures_.States()) {
    if (Terminal::Interrupted()) return kInterrupted;
    if (const int status = pictures_.Recall(state); status != kDone) return status;
    sizes_.push_back(pictures_.Size());
  }
  subtitle_ = pictures::SheetSubtitle(pictures_.AsItIs() ? 0 : pictures_.States().size());
  if (order_.sheet.empty()) return kDone;
  auto sheet = pictures::ContactSheet::Make(session_.Files(), sizes_, title_, subtitle_);
  if (!sheet) return Fail(sheet.Message());
  sheet_ = std::make_unique<pictures::ContactSheet>(sheet.Take());
  return kDone;
}

int SheetMaking::RenderAll() {
  for (std::size_t i = 0; i < sizes_.size(); ++i) {
    Mark state = pictures_.States()[i];
    int status = pictures_.Recall(state);
    if (pictures_.AsItIs()) state.name = pictures::kAsItIs;
    if (status == kDone && sheet_) status = AddToSheet(i, state);
    if (status == kDone && !order_.folder.empty()) status = AddToPage(i, state);
    if (status != kDone) return status;
  }
  return kDone;
}

int SheetMaking::AddToSheet(std::size_t index, const Mark& state) {
  engine::Image picture;
  const int status = pictures_.Render(FittedInto(sizes_[index], sheet_->Box()),
                                      {index, sizes_.size()}, state.name, &picture);
  if (status == kDone) sheet_->Place(index, picture, state);
  return status;
}

int SheetMaking::AddToPage(std::size_t index, const Mark& state) {
  const PictureSize size = FittedInto(sizes_[index], kPageBox);
  engine::Image picture;
  const int status = pictures_.Render(size, {index, sizes_.size()}, state.name, &picture);
  if (status != kDone) return status;
  PageEntry& entry = entries_[index];
  entry = {state, entry.file, size.width, size.height};
  return pictures_.Save(picture, order_.folder + "/" + entry.file, kPage);
}

// Two names may become one once they are safe for files: the later ones get a number.
std::string SheetMaking::FreeName(const std::string& name) {
  const std::string safe = SafeFileName(name);
  std::string free = safe + ".png";
  for (std::size_t& number = numbers_[FoldedCase(safe)]; !files_.insert(FoldedCase(free)).second;) {
    free = safe + " (" + std::to_string(++number + 1) + ").png";
  }
  return free;
}

int SheetMaking::Write(Report& report) {
  report.Put("states", pictures_.AsItIs() ? 0 : sizes_.size());
  report.Put("sheet", JsonValue());
  report.Put("page", JsonValue());
  if (sheet_) {
    if (const int status = pictures_.Save(sheet_->Picture(), order_.sheet, kSheet); status != kDone)
      return status;
    report.Put("sheet", order_.sheet);
    report.Line("Written: " + order_.sheet);
  }
  if (order_.folder.empty()) return kDone;
  const std::string page = order_.folder + "/" + kPageFile;
  const auto written = session_.Files().ReplaceFile(
      page, WithMaker(MakePicturePage(title_, subtitle_, entries_), kPage));
  if (!written) return Fail(written.Message());
  report.Put("page", page);
  report.Line("Written: " + page);
  return kDone;
}

}  // namespace commandline
