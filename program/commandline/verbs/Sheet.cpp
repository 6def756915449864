#include <CLI/CLI.hpp>
#include <filesystem>
#include <map>
#include <set>

#include "program/commandline/ContactSheet.h"
#include "program/commandline/PicturePage.h"

namespace commandline {

namespace {

namespace fs = std::filesystem;

constexpr PictureSize kPageBox{960, 720};
constexpr const char* kPageFile = "index.html";

struct SheetOptions {
  std::vector<std::string> states;
  bool html = false;
  std::string folder;
  unsigned jobs = 0;
};

// Carries out one call of `sheet`: lays the sheet out, then recalls and renders state by state.
class SheetVerb {
 public:
  SheetVerb(Program& program, const SheetOptions& options)
      : program_(program), options_(options), session_(program), pictures_(session_, options.jobs) {}

  int Run() {
    int status = kDone;
    for (const auto step :
         {&SheetVerb::Open, &SheetVerb::ChooseFiles, &SheetVerb::Begin, &SheetVerb::RenderAll, &SheetVerb::Write}) {
      if (status == kDone) status = (this->*step)();
    }
    if (status == kInterrupted) program_.terminal.Error("Interrupted; no sheet was written.");
    if (status != kDone) return status;
    report_.Print(program_.json);
    return session_.CheckLedger();
  }

 private:
  int Fail(const std::string& why, int status = kFailed) {
    program_.terminal.Error(why);
    return status;
  }

  int Open() {
    if (!program_.output.empty()) {
      if (const auto name = CheckPattern(program_.output); !name) return Fail(name.Message(), kUsage);
    }
    const int status = session_.StartWithScene();
    return status == kDone ? pictures_.Choose(options_.states) : status;
  }

  // A sheet unless only a page is asked for; the page's folder has the name of the sheet where none is given.
  int ChooseFiles() {
    title_ = pictures_.Facts(pictures_.States().front()).scene;
    const bool onlyPage = options_.html && program_.output.empty() && !options_.folder.empty();
    const std::string usual = SafeFileName(title_ + " sheet") + ".png";
    const std::string sheet =
        AbsolutePath(program_.output.empty() ? usual : FillPattern(program_.output, pictures_.Facts(pictures_.States().front())));
    if (!onlyPage) sheetFile_ = sheet;
    if (options_.html)
      folder_ = options_.folder.empty() ? fs::path(sheet).replace_extension().string() : AbsolutePath(options_.folder);
    for (const std::string& folder : {folder_, fs::path(sheetFile_).parent_path().string()}) {
      if (folder.empty()) continue;
      if (const auto made = session_.Files().MakeFolders(folder); !made) return Fail(made.Message());
    }
    return kDone;
  }

  int Begin() {
    for (const Mark& state : pictures_.States()) {
      if (Terminal::Interrupted()) return kInterrupted;
      if (const int status = pictures_.Recall(state); status != kDone) return status;
      sizes_.push_back(pictures_.Size());
    }
    subtitle_ = pictures_.AsItIs() ? "No Stagemarks yet: the scene as it is" : Counted(pictures_.States().size(), "Stagemark");
    if (sheetFile_.empty()) return kDone;
    const auto layout = LayOutSheet(sizes_.size(), CommonShape(sizes_));
    if (!layout) return Fail(layout.Message());
    box_ = layout.Value().box;
    auto sheet = ContactSheet::Make(layout.Value(), title_, subtitle_);
    if (!sheet) return Fail(sheet.Message());
    sheet_ = std::make_unique<ContactSheet>(sheet.Take());
    return kDone;
  }

  int RenderAll() {
    for (std::size_t i = 0; i < sizes_.size(); ++i) {
      Mark state = pictures_.States()[i];
      int status = pictures_.Recall(state);
      if (pictures_.AsItIs()) state.name = "As it is";
      if (status == kDone && sheet_) status = AddToSheet(i, state);
      if (status == kDone && !folder_.empty()) status = AddToPage(i, state);
      if (status != kDone) return status;
    }
    return kDone;
  }

  int AddToSheet(std::size_t index, const Mark& state) {
    engine::Image picture;
    const int status = pictures_.Render(FittedInto(sizes_[index], box_), {index, sizes_.size()}, state.name, &picture);
    if (status == kDone) sheet_->Place(index, picture, state);
    return status;
  }

  int AddToPage(std::size_t index, const Mark& state) {
    const PictureSize size = FittedInto(sizes_[index], kPageBox);
    engine::Image picture;
    const int status = pictures_.Render(size, {index, sizes_.size()}, state.name, &picture);
    if (status != kDone) return status;
    entries_.push_back({state, FreeName(state.name), size.width, size.height});
    return pictures_.Save(picture, folder_ + "/" + entries_.back().file);
  }

  // Two names may become one once they are safe for files: the later ones get a number.
  std::string FreeName(const std::string& name) {
    const std::string safe = SafeFileName(name);
    std::string free = safe;
    for (std::size_t& number = numbers_[FoldedCase(safe)]; !files_.insert(FoldedCase(free)).second;) {
      free = safe + " (" + std::to_string(++number + 1) + ")";
    }
    return free + ".png";
  }

  int Write() {
    report_.Json() = {{"states", pictures_.AsItIs() ? 0 : sizes_.size()}, {"sheet", nullptr}, {"page", nullptr}};
    if (sheet_) {
      if (const int status = pictures_.Save(sheet_->Picture(), sheetFile_); status != kDone) return status;
      report_.Json()["sheet"] = ValidUtf8(sheetFile_);
      report_.Line("Written: " + sheetFile_);
    }
    if (folder_.empty()) return kDone;
    const std::string page = folder_ + "/" + kPageFile;
    const auto written = session_.Files().ReplaceFile(page, MakePicturePage(title_, subtitle_, entries_));
    if (!written) return Fail(written.Message());
    report_.Json()["page"] = ValidUtf8(page);
    report_.Line("Written: " + page);
    return kDone;
  }

  Program& program_;
  const SheetOptions& options_;
  Session session_;
  StatePictures pictures_;
  Report report_;
  std::string title_;
  std::string subtitle_;
  std::string sheetFile_;  // empty: none
  std::string folder_;     // of the page, empty: none
  std::vector<PictureSize> sizes_;
  PictureSize box_;
  std::unique_ptr<ContactSheet> sheet_;
  std::vector<PageEntry> entries_;
  std::set<std::string> files_;                 // names given, letter case folded
  std::map<std::string, std::size_t> numbers_;  // by name: the last number tried
};

}  // namespace

void AddSheet(CLI::App& app, Program& program) {
  CLI::App* verb = app.add_subcommand("sheet", "Make a contact sheet of all states, or a page for a browser");
  AddScene(*verb, program);
  auto options = std::make_shared<SheetOptions>();
  verb->add_option("-o,--output", program.output, "The sheet, ending in .png or .tif (\"{scene} sheet.png\")");
  verb->add_option("--state", options->states, "Only this Stagemark; may be given several times");
  auto* html =
      verb->add_option("--html", options->folder, "Write a page with search into this folder, the sheet's name by default");
  html->expected(0, 1);
  verb->add_option("--jobs", options->jobs, "Number of threads; 0: one for each core")->check(CLI::Range(0U, 1024U));
  verb->footer(
      "Examples:\n"
      "  stagemarks sheet room.c4d -o sheet.png\n"
      "  stagemarks sheet room.c4d --html pictures");
  verb->callback([&program, options, html] {
    options->html = html->count() > 0;
    program.verb = [&program, options] { return SheetVerb(program, *options).Run(); };
  });
}

}  // namespace commandline
