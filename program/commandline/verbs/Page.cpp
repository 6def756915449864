#include "engine/undo/Undo.h"
#include "program/commandline/Arguments.h"
#include "program/commandline/PictureOrders.h"
#include "program/pictures/ContactSheet.h"
#include "program/publish/PageMaking.h"

namespace commandline {

namespace {

struct PageChoices {
  std::string folder;
  std::vector<std::string> only;
  std::string title;
};

// Carries out one call of `page`: the places first, then state by state, and the page at last.
class PageVerb {
 public:
  PageVerb(Program& program, const PageChoices& choices)
      : program_(program), choices_(choices), session_(program), states_(session_, 0) {}

  int Run() {
    int status = session_.StartWithScene();
    for (const auto step : {&PageVerb::Plan, &PageVerb::Make}) {
      if (status == kDone) status = (this->*step)();
    }
    if (status == kInterrupted) program_.terminal.Error("Interrupted; no page was written.");
    if (status != kDone) return status;
    report_.Print(program_);
    return session_.CheckLedger();
  }

 private:
  int Fail(const std::string& why) {
    program_.terminal.Error(why);
    return kFailed;
  }

  // Everything that can be refused is, before the first state is read.
  int Plan() {
    auto viewer = publishing::ReadPageViewer(session_.Files());
    if (!viewer) return Fail(viewer.Message());
    viewer_ = viewer.Take();
    if (const int status = states_.Choose(choices_.only); status != kDone) return status;
    if (const int status = session_.CheckTextures(report_); status != kDone) return status;
    folder_ = AbsolutePath(choices_.folder);
    session_.Files().Follow(folder_);
    std::vector<std::string> paths{folder_ + "/" + publishing::kPageFile};
    if (!publishing::HasLicense(session_.Files(), folder_, viewer_))
      paths.push_back(folder_ + "/" + publishing::kPageLicense);
    if (const int status = session_.CheckReplacing(paths, publishing::kPageMaker); status != kDone)
      return status;
    const engine::Status made = session_.Files().MakeFolders(folder_);
    return made ? kDone : Fail(made.Message());
  }

  int Make() {
    publishing::PageMaking making(session_.Document(), session_.Files(),
                                  SceneName(session_.Document()));
    const std::size_t count = states_.States().size();
    for (std::size_t i = 0; i < count; ++i) {
      if (const int status = Add({i, count}, making); status != kDone) return status;
    }
    const auto page = making.Finish(viewer_, Title(), ProgressOf(1, "Writing the page"));
    if (!page) return Refuse("No page was made: ", page.Message());
    for (const std::string& note : making.Scene().notes) {
      if (note.find(" was not found ") == std::string::npos) program_.terminal.Note(note);
    }
    return Write(page.Value(), making.Scene());
  }

  // Scene and thumbnail in one load of the state.
  int Add(const PictureTurn& turn, publishing::PageMaking& making) {
    const Mark& state = states_.States()[turn.number];
    const std::string& name = states_.AsItIs() ? pictures::kAsItIs : state.name;
    const double done = static_cast<double>(turn.number) / static_cast<double>(turn.count);
    engine::UndoScope step(session_.Document(), "Load " + name);
    if (const int status = states_.Recall(state); status != kDone) return status;
    const engine::Status added = making.AddState(name, ProgressOf(done, "Reading " + name));
    if (!added) return Refuse("\"" + name + "\" cannot be on the page: ", added.Message());
    engine::Image picture;
    const int status =
        states_.Render(FittedInto(states_.Size(), publishing::kThumbnail), turn, name, &picture);
    step.Cancel();
    if (status != kDone) return status;
    const engine::Status taken = making.AddThumbnail(picture);
    return taken ? kDone : Fail(taken.Message());
  }

  engine::ProgressCallback ProgressOf(double done, const std::string& what) {
    return [this, done, what](double) { return program_.terminal.Progress(done, what); };
  }

  int Refuse(const std::string& what, const std::string& why) {
    return Terminal::Interrupted() ? kInterrupted : Fail(what + why);
  }

  std::string Title() {
    return choices_.title.empty() ? SceneName(session_.Document()) : choices_.title;
  }

  int Write(const std::string& page, const engine::PublishedScene& scene) {
    const std::string path = folder_ + "/" + publishing::kPageFile;
    const engine::Status written = publishing::WritePage(session_.Files(), folder_, page, viewer_);
    if (!written) return Fail(written.Message());
    const std::size_t count = states_.AsItIs() ? 0 : states_.States().size();
    report_.Put("page", path);
    report_.Put("title", Title());
    report_.Put("states", count);
    report_.Put("objects", scene.objects);
    report_.Put("triangles", scene.triangles);
    report_.Put("bytes", page.size());
    report_.Line("Written: " + path);
    report_.Line("  " + Counted(count, "state") + ", " + Counted(scene.triangles, "triangle") +
                 "; any browser opens it, without a server or network.");
    return kDone;
  }

  Program& program_;
  const PageChoices& choices_;
  Session session_;
  StatePictures states_;
  Report report_;
  publishing::PageViewer viewer_;
  std::string folder_;
};

}  // namespace

void AddPage(Arguments& arguments, Program& program) {
  Verb verb = arguments.AddVerb(
      "page", "Make a web page that shows the states in 3D, without a server or network");
  AddScene(verb, program);
  auto choices = std::make_shared<PageChoices>();
  verb.Add("--to", choices->folder, "Folder for the page; made when it is missing")
      .Required()
      .Word("DIR");
  AddOnly(verb, choices->only);
  verb.Add("--title", choices->title, "What the page is called")
      .Word("TEXT")
      .Default("the scene's name");
  AddStrict(verb, program);
  AddForce(verb, program);
  verb.Footer(
      "The folder gets index.html, which holds everything, and the license of the viewer's "
      "library. "
      "Any browser opens it,\n"
      "from a disk, a mail or a server. Each state is one click or one key (1 to 9); two can be "
      "compared with a slider;\n"
      "index.html#state=Day opens with a state. Only pages that this verb wrote are replaced "
      "without "
      "--force.\n\n"
      "Examples:\n"
      "  stagemarks page room.c4d --to web\n"
      "  stagemarks page room.c4d --to web --only \"shot_0*\" --title \"Living room\"");
  verb.Does([&program, choices] { return PageVerb(program, *choices).Run(); });
}

}  // namespace commandline
