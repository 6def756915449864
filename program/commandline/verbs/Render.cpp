#include <filesystem>
#include <iostream>

#include "program/commandline/Arguments.h"
#include "program/commandline/StatePictures.h"

namespace commandline {

namespace {

constexpr const char* kPattern = "{scene} {state}.png";
constexpr const char* kPatternAsItIs = "{scene}.png";

struct RenderOptions {
  std::vector<std::string> states;
  bool all = false;
  std::string size;
  unsigned jobs = 0;
  bool resume = false;
};

struct PlannedPicture {
  Mark state;
  std::string name;  // for messages
  std::string path;
  PictureSize size;
  bool isThere = false;
  bool isRendered = false;
};

// Carries out one call of `render`: first everything is planned and checked, then rendered picture
// by picture.
class RenderVerb {
 public:
  RenderVerb(Program& program, const RenderOptions& options)
      : program_(program),
        options_(options),
        session_(program),
        pictures_(session_, options.jobs) {}

  int Run() {
    int status = CheckOptions();
    for (const auto step : {&RenderVerb::Open, &RenderVerb::Plan, &RenderVerb::CheckNames,
                            &RenderVerb::CheckPlaces, &RenderVerb::MakeFolders}) {
      if (status == kDone) status = (this->*step)();
    }
    if (status != kDone) return status;
    PrintPlan();
    status = RenderAll();
    PrintResult(status);
    return status == kDone ? session_.CheckLedger() : status;
  }

 private:
  int Refuse(const std::string& why) {
    program_.terminal.Error(why);
    return kUsage;
  }

  int CheckOptions() {
    if (!options_.size.empty()) {
      const auto size = ParsePictureSize(options_.size);
      if (!size) return Refuse(size.Message());
      size_ = size.Value();
    }
    if (program_.output.empty()) return kDone;
    const engine::Status pattern = CheckPattern(program_.output);
    return pattern ? kDone : Refuse(pattern.Message());
  }

  int Open() {
    int status = session_.StartWithScene();
    if (status == kDone) status = pictures_.Choose(options_.states);
    return status == kDone ? session_.CheckTextures(result_) : status;
  }

  // Names and sizes may differ from state to state, so each is recalled before any is rendered.
  int Plan() {
    const std::string usual = pictures_.AsItIs() ? kPatternAsItIs : kPattern;
    const std::string& pattern = program_.output.empty() ? usual : program_.output;
    for (const Mark& state : pictures_.States()) {
      if (Terminal::Interrupted()) return kInterrupted;
      if (const int status = pictures_.Recall(state); status != kDone) return status;
      const PictureFacts facts = pictures_.Facts(state);
      const PictureSize size = size_.width > 0 ? size_ : pictures_.Size();
      if (const auto fits = engine::CheckImageSize(size.width, size.height, 16); !fits) {
        program_.terminal.Error("\"" + facts.state + "\": " + fits.Message() +
                                " Give another size with --size.");
        return kFailed;
      }
      plan_.push_back({state, facts.state, AbsolutePath(FillPattern(pattern, facts)), size});
    }
    return kDone;
  }

  int CheckNames() {
    std::vector<std::string> paths;
    for (const PlannedPicture& picture : plan_) paths.push_back(picture.path);
    if (const auto clash = FindClash(paths)) {
      return Refuse("\"" + plan_[clash->first].name + "\" and \"" + plan_[clash->second].name +
                    "\" would be written to " +
                    WhyOneFile(paths[clash->first], paths[clash->second]) +
                    " Nothing was rendered.");
    }
    return kDone;
  }

  std::string WhyOneFile(const std::string& one, const std::string& other) const {
    const bool hasState =
        program_.output.empty() || program_.output.find("{state}") != std::string::npos;
    if (one != other) {
      return "\"" + one + "\" and \"" + other +
             "\", which differ in upper and lower case only and are one file on some disks. Rename "
             "one of them, or render them "
             "apart.";
    }
    if (!hasState)
      return "one file, " + other + ". Put {state} into the pattern, or render them apart.";
    return "one file, " + other +
           ", because what a file's name cannot hold is replaced in it. Rename one of them, or "
           "render them apart.";
  }

  int CheckPlaces() {
    std::vector<std::string> paths;
    for (PlannedPicture& picture : plan_) {
      picture.isThere = options_.resume && IsWhole(picture);
      if (!picture.isThere) paths.push_back(picture.path);
    }
    return session_.CheckReplacing(paths, program_.verbName);
  }

  int MakeFolders() {
    for (const PlannedPicture& picture : plan_) {
      const auto folder = std::filesystem::path(picture.path).parent_path().string();
      if (const auto made = session_.Files().MakeFolders(folder); !made) {
        program_.terminal.Error(made.Message());
        return kFailed;
      }
    }
    return kDone;
  }

  // A picture of that size that can be read to its end.
  bool IsWhole(const PlannedPicture& picture) {
    if (session_.Files().Kind(picture.path) != engine::FileKind::File) return false;
    const auto bytes = session_.Files().ReadFile(picture.path, engine::kLargestImageBytes);
    if (!bytes) return false;
    const auto image = engine::DecodeImage(bytes.Value());
    return image && image.Value().width == picture.size.width &&
           image.Value().height == picture.size.height;
  }

  void PrintPlan() {
    if (program_.json) return;
    Report report;
    report.Line(Counted(plan_.size(), "picture") + ":");
    for (const PlannedPicture& picture : plan_) {
      report.Line("  " + picture.path + "  " + SizeText(picture.size) +
                  (picture.isThere ? "  is there" : ""));
    }
    report.Print(false);
    std::cout.flush();
  }

  int RenderAll() {
    for (std::size_t i = 0; i < plan_.size(); ++i) {
      PlannedPicture& picture = plan_[i];
      if (picture.isThere) continue;
      int status = pictures_.Recall(picture.state);
      engine::Image image;
      if (status == kDone)
        status = pictures_.Render(picture.size, {i, plan_.size()}, picture.name, &image);
      if (status == kDone) status = pictures_.Save(image, picture.path, program_.verbName);
      if (status != kDone) return status;
      picture.isRendered = true;
    }
    return kDone;
  }

  void PrintResult(int status) {
    Report& report = result_;
    std::size_t rendered = 0;
    std::size_t there = 0;
    report.PutList("pictures");
    for (const PlannedPicture& picture : plan_) {
      rendered += picture.isRendered;
      there += picture.isThere;
      report.Append("pictures",
                    {{"state", pictures_.AsItIs() ? JsonValue() : JsonValue(picture.state.name)},
                     {"file", picture.path},
                     {"width", picture.size.width},
                     {"height", picture.size.height},
                     {"result", picture.isRendered ? "rendered"
                                : picture.isThere  ? "there"
                                                   : "missing"}});
    }
    report.Line("Rendered " + Counted(rendered, "picture") +
                (there > 0 ? ", " + Counted(there, "picture") + " kept." : "."));
    report.Print(program_.json);
    if (status == kDone) return;
    program_.terminal.Error((status == kInterrupted ? "Interrupted" : "Stopped") +
                            std::string(" after ") + std::to_string(rendered + there) + " of " +
                            Counted(plan_.size(), "picture") +
                            "; the same call with --resume takes up with what is missing.");
  }

  Program& program_;
  const RenderOptions& options_;
  Session session_;
  StatePictures pictures_;
  Report result_;
  PictureSize size_;
  std::vector<PlannedPicture> plan_;
};

}  // namespace

void AddRender(Arguments& arguments, Program& program) {
  Verb verb = arguments.AddVerb("render", "Render a picture of each state");
  AddScene(verb, program);
  auto options = std::make_shared<RenderOptions>();
  AddOnly(verb, options->states, "--state");
  verb.AddFlag("--all", options->all, "Render every Stagemark, as without --only")
      .Excludes("--only")
      .Excludes("--state");
  verb.Add("-o,--output", program.output,
           "File names, ending in .png or .tif, with {scene}, {state}, {camera} and {frame}")
      .Word("FILES")
      .Default(kPattern);
  verb.Add("--size", options->size,
           "Picture size, as 1920x1080, instead of that of each state's render settings")
      .Word("WIDTHxHEIGHT");
  AddStrict(verb, program);
  verb.Add("--jobs", options->jobs, "Number of threads; 0: one for each core")
      .Word("N")
      .Between(0, 1024);
  verb.AddFlag("--resume", options->resume,
               "Keep whole pictures that are there and render what is missing");
  AddForce(verb, program);
  verb.Footer(
      "A scene without Stagemarks is rendered as it is. Pictures of an earlier `render` are "
      "replaced, other files are not.\n\n"
      "Examples:\n"
      "  stagemarks render room.c4d\n"
      "  stagemarks render room.c4d --only \"shot_0*\" -o \"pictures/{scene} {camera} "
      "{frame}.tif\" "
      "--size 640x360");
  verb.Does([&program, options] { return RenderVerb(program, *options).Run(); });
}

}  // namespace commandline
