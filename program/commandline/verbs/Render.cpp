#include <iostream>
#include <memory>

#include "program/commandline/Arguments.h"
#include "program/commandline/PictureOrders.h"
#include "program/export/ExportPlan.h"

namespace commandline {

namespace {

constexpr std::size_t kMostPicturesShown = 40;

struct RenderOptions {
  PictureOrder order;
  bool all = false;
  unsigned jobs = 0;
  bool resume = false;
  bool dryRun = false;
};

// Carries out one call of `render`: first everything is planned and checked, then rendered picture
// by picture.
class RenderVerb {
 public:
  RenderVerb(Program& program, const RenderOptions& options)
      : program_(program),
        options_(options),
        session_(program),
        pictures_(session_, options.jobs),
        plan_(session_, pictures_, options.order) {}

  int Run() {
    int status = plan_.CheckOrder();
    for (const auto step : {&RenderVerb::Open, &RenderVerb::Plan, &RenderVerb::CheckPlaces}) {
      if (status == kDone) status = (this->*step)();
    }
    if (status != kDone) return status;
    TellPlan();
    if (options_.dryRun) return PrintDryRun();
    if (status = plan_.MakeFolders(); status != kDone) return status;
    status = work_->Do(plan_.Pictures());
    PrintResult(status);
    return status == kDone ? session_.CheckLedger() : status;
  }

 private:
  // -o names pictures, not the scene, which is only read.
  int Open() {
    int status = session_.StartWithScene();
    if (status == kDone) status = pictures_.Choose(options_.order.states);
    return status == kDone ? CheckPictures(session_, plan_, result_) : status;
  }

  int Plan() {
    const int status = plan_.Make();
    work_ = std::make_unique<PictureWork>(
        session_, pictures_,
        WorkRules{plan_.Folder() + "/" + pictures::kManifestName, options_.resume});
    return status;
  }

  // Finished pictures stay, so nobody has to allow that they are replaced.
  int CheckPlaces() {
    std::vector<std::string> paths;
    for (PlannedPicture& picture : plan_.Pictures()) {
      picture.isThere = options_.resume && work_->IsDone(picture);
      if (!picture.isThere) paths.push_back(picture.path);
    }
    return session_.CheckReplacing(paths, program_.verbName);
  }

  // All that will be done, before anything is.
  void TellPlan() {
    estimate_ = plan_.Estimate();
    const std::vector<PlannedPicture>& plan = plan_.Pictures();
    result_.Put("pixels", static_cast<std::int64_t>(plan_.PixelsToRender()));
    if (estimate_) {
      result_.PutObject("estimate",
                        {{"seconds", static_cast<std::int64_t>(estimate_->seconds + 0.999)},
                         {"bytes", static_cast<std::int64_t>(estimate_->bytes)}});
    }
    if (!program_.json) {
      Report report;
      AddPlan(plan, report);
      report.Print(program_);
      std::cout.flush();
    }
    const auto space = session_.Files().Space(plan_.Folder());
    if (estimate_ && space && space->free < estimate_->bytes) {
      program_.terminal.Note("only " + exporting::BytesText(space->free) +
                             " are free where the pictures go, and they may take about " +
                             exporting::BytesText(estimate_->bytes) + ".");
    }
  }

  void AddPlan(const std::vector<PlannedPicture>& plan, Report& report) const {
    report.Line(Counted(plan.size(), "picture") + ":");
    const std::size_t shown = program_.verbose || plan.size() <= kMostPicturesShown
                                  ? plan.size()
                                  : kMostPicturesShown / 2;
    for (std::size_t i = 0; i < shown; ++i) {
      report.Line("  " + plan[i].path + "  " + SizeText(plan[i].size) +
                  (plan[i].isThere ? "  is there" : ""));
    }
    if (shown < plan.size())
      report.Line("  and " + std::to_string(plan.size() - shown) +
                  " more, all of them with --verbose");
    const std::uint64_t pixels = plan_.PixelsToRender();
    if (estimate_)
      report.Line(PixelsText(pixels) + " to render, about " + DurationText(estimate_->seconds) +
                  " and " + exporting::BytesText(estimate_->bytes) + ".");
  }

  int PrintDryRun() {
    result_.PutList("pictures");
    for (const PlannedPicture& picture : plan_.Pictures()) Append(picture, "would render");
    if (program_.json) result_.Print(program_);
    program_.terminal.Note("nothing was rendered (--dry-run).");
    return kDone;
  }

  void Append(const PlannedPicture& picture, const char* otherwise) {
    result_.Append("pictures",
                   {{"state", pictures_.AsItIs() ? JsonValue() : JsonValue(picture.state.name)},
                    {"file", picture.path},
                    {"width", picture.size.width},
                    {"height", picture.size.height},
                    {"frame", picture.frame},
                    {"record", pictures::HashOfTexts({RecordAsText(picture.record)})},
                    {"result", picture.isRendered ? "rendered"
                               : picture.isThere  ? "there"
                                                  : otherwise}});
  }

  // Also after a failure: the pictures that are there are told.
  void PrintResult(int status) {
    Report& report = result_;
    std::size_t rendered = 0;
    std::size_t there = 0;
    report.PutList("pictures");
    for (const PlannedPicture& picture : plan_.Pictures()) {
      rendered += picture.isRendered;
      there += picture.isThere;
      Append(picture, "missing");
    }
    report.Line("Rendered " + Counted(rendered, "picture") +
                (there > 0 ? ", " + Counted(there, "picture") + " kept." : "."));
    report.Print(program_);
    if (status == kDone) return;
    program_.terminal.Error((status == kInterrupted ? "Interrupted" : "Stopped") +
                            std::string(" after ") + std::to_string(rendered + there) + " of " +
                            Counted(plan_.Pictures().size(), "picture") +
                            "; the same call with --resume takes up with what is missing.");
  }

  Program& program_;
  const RenderOptions& options_;
  Session session_;
  StatePictures pictures_;
  PicturePlan plan_;
  std::unique_ptr<PictureWork> work_;
  std::optional<PictureEstimate> estimate_;
  Report result_;
};

constexpr const char* kRenderFooter =
    "A scene without Stagemarks is rendered as it is. Each state is rendered as if it were "
    "loaded into the scene as it was opened, whatever was rendered before it. Pictures of an "
    "earlier `render` are replaced, other files are not.\n"
    "Each picture holds a record of what it was made from: the scene with its textures, the "
    "state, the settings and the size. The same stands in pictures.jsonl beside the pictures, "
    "with time, machine and duration. --strict refuses, too, what `check` warns of in these "
    "Stagemarks.\n\n"
    "Examples:\n"
    "  stagemarks render room.c4d\n"
    "  stagemarks render room.c4d --only \"shot_0*\" -o \"pictures/{scene} {camera} "
    "{frame}.tif\" "
    "--size 640x360\n"
    "  stagemarks render room.c4d --format exr -o \"{index:03} {state:safe} {size}\" --size "
    "1920x1080 960x540";

}  // namespace

void AddRender(Arguments& arguments, Program& program) {
  Verb verb = arguments.AddVerb("render", "Render a picture of each state");
  AddScene(verb, program);
  auto options = std::make_shared<RenderOptions>();
  AddPictureOrder(verb, options->order, program.output);
  verb.AddFlag("--all", options->all, "Render every Stagemark, as without --only")
      .Excludes("--only")
      .Excludes("--state");
  AddStrict(verb, program);
  verb.Add("--jobs", options->jobs, "Number of threads; 0: one for each core")
      .Word("N")
      .Between(0, 1024);
  verb.AddFlag("--resume", options->resume,
               "Keep pictures that are there and were made from the same, and render what is "
               "missing; several such calls at once share the work");
  verb.AddFlag("--dry-run", options->dryRun, "Say what would be rendered, and render nothing");
  AddForce(verb, program);
  verb.Footer(kRenderFooter);
  verb.Does([&program, options] {
    options->order.pattern = program.output;
    return RenderVerb(program, *options).Run();
  });
}

}  // namespace commandline
