#include <filesystem>

#include "program/commandline/Arguments.h"
#include "program/commandline/ChangeLists.h"
#include "program/commandline/LoadParts.h"
#include "program/commandline/Session.h"

namespace commandline {

namespace {

namespace fs = std::filesystem;

// As diff(1) has it.
constexpr int kEqual = 0;
constexpr int kDifferent = 1;
struct DiffOptions {
  std::vector<std::string> names;
  bool scene = false;
  PartChoice parts;
};

// A Stagemark as typed, and the scene that it is in.
struct Place {
  std::string scene;
  std::string name;
};

bool IsFile(const std::string& path) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  return fs::exists(status) && !fs::is_directory(status);
}

// "room.c4d:Day". Files and Stagemarks may have colons in their names: the shortest beginning that
// is a file is the scene.
engine::Result<Place> ReadPlace(const std::string& typed) {
  for (std::size_t colon = typed.find(':'); colon != std::string::npos;
       colon = typed.find(':', colon + 1)) {
    if (IsFile(typed.substr(0, colon)))
      return Place{typed.substr(0, colon), typed.substr(colon + 1)};
  }
  const std::size_t colon = typed.find(':');
  return engine::Result<Place>::Failure(
      IsFile(typed) ? "Which Stagemark of " + Listed({typed}) +
                          " is meant? Write SCENE:STAGEMARK, or give the scene once and two names "
                          "after it, or one name and --scene."
      : colon == std::string::npos
          ? Listed({typed}) + " is neither a scene file nor SCENE:STAGEMARK."
          : "There is no scene file " + Listed({typed.substr(0, colon)}) + ", which " +
                Listed({typed}) + " begins with.");
}

class DiffVerb {
 public:
  DiffVerb(Program& program, const DiffOptions& options)
      : program_(program), options_(options), session_(program) {}

  int Run() {
    int status = ReadPlaces();
    if (status == kDone) status = session_.StartWithScene();
    if (status == kDone) status = Read(places_[0], left_);
    if (status == kDone) status = options_.scene ? WithScene() : WithOther();
    // Not to be mistaken for "different".
    return status == kFailed ? kTrouble : status == kDone ? Answer() : status;
  }

 private:
  int Refuse(const std::string& why) {
    program_.terminal.Error(why);
    return kUsage;
  }

  int ReadPlaces() {
    const std::size_t wanted = options_.scene ? 1 : 2;
    std::vector<std::string> typed = options_.names;
    if (typed.size() == wanted) {
      for (const std::string& name : typed) places_.push_back({program_.scene, name});
      return kDone;
    }
    if (typed.size() + 1 != wanted)
      return Refuse(
          "Two Stagemarks are needed: SCENE A B, or SCENE1:A SCENE2:B, or SCENE A --scene.");
    typed.insert(typed.begin(), program_.scene);
    for (const std::string& place : typed) {
      auto read = ReadPlace(place);
      if (!read) return Refuse(read.Message());
      places_.push_back(read.Take());
    }
    program_.scene = places_[0].scene;
    return kDone;
  }

  int WithScene() {
    leftDoc_ = rightDoc_ = &session_.Document();
    engine::CompareOptions compare = Compared();
    compare.parts = PartsToLoad(session_, options_.parts);
    leftAlone_ = LeftAloneText(session_, options_.parts, left_.record);
    auto toScene = engine::CompareWithScene(*leftDoc_, left_.record, compare);
    TellListed(*leftDoc_, left_.record, compare, {}, toScene);
    difference_ = engine::Mirrored(std::move(toScene));
    return kDone;
  }

  int WithOther() {
    std::error_code error;
    leftDoc_ = &session_.Document();
    const bool isOneScene = fs::equivalent(places_[0].scene, places_[1].scene, error);
    if (!isOneScene) {
      if (const int status = session_.Open(places_[1].scene); status != kDone) return status;
    }
    rightDoc_ = &session_.Document();
    if (const int status = Read(places_[1], right_); status != kDone) return status;
    engine::CompareOptions compare = Compared();
    compare.parts = PartsToShow(options_.parts);
    difference_ =
        isOneScene
            ? engine::CompareStates(*leftDoc_, left_.record, right_.record, compare)
            : engine::CompareStates(*leftDoc_, left_.record, *rightDoc_, right_.record, compare);
    return kDone;
  }

  // Of two scenes, a message about one says which.
  int Read(const Place& place, engine::StoredState& state) {
    const int status = session_.ReadMark(place.name, state);
    if (status != kDone && IsOfTwo()) program_.terminal.Say("The scene is " + place.scene + ".");
    return status;
  }

  bool IsOfTwo() const { return places_.size() > 1 && places_[0].scene != places_[1].scene; }

  engine::CompareOptions Compared() const {
    engine::CompareOptions compare;
    if (!program_.verbose && !program_.json) compare.mostFields = kMostListed;
    return compare;
  }

  // How a side is called in a sentence; two of one name by their scenes, too.
  std::string Called(const Place& place, const std::string& name) const {
    return Listed({IsOfTwo() ? place.scene + ":" + name : name});
  }

  int Answer() {
    const Sides sides{*leftDoc_, *rightDoc_, Called(places_[0], left_.name),
                      options_.scene ? "the scene" : Called(places_[1], right_.name),
                      program_.verbose};
    Report report;
    report.PutObject("left", {{"scene", places_[0].scene}, {"stagemark", left_.name}});
    report.PutObject("right", {{"scene", places_.back().scene},
                               {"stagemark", options_.scene ? JsonValue() : right_.name}});
    report.Put("equal", difference_.IsEmpty());
    PutChanges(sides, difference_, report);
    AddLines(sides, report);
    report.Print(program_);
    return difference_.IsEmpty() ? kEqual : kDifferent;
  }

  void AddLines(const Sides& sides, Report& report) {
    AddDifference(sides, report);
    if (!leftAlone_.empty()) report.Line("\n" + leftAlone_);
  }

  void AddDifference(const Sides& sides, Report& report) {
    const std::string parts = PartsText(options_.parts, options_.parts.parts);
    if (difference_.IsEmpty()) {
      report.Line(sides.left + " and " + sides.right + " are the same" + parts + ".");
      return;
    }
    report.Line(sides.left + " -> " + sides.right + parts + ": " +
                Counted(difference_.changes.size(), "thing") +
                (difference_.changes.size() == 1 ? " differs" : " differ"));
    AddCounts(sides, difference_, report);
    if (!AddChanges(sides, difference_, report)) report.Line("\n-v lists everything.");
  }

  Program& program_;
  const DiffOptions& options_;
  Session session_;
  std::vector<Place> places_;
  const host::BaseDocument* leftDoc_ = nullptr;
  const host::BaseDocument* rightDoc_ = nullptr;
  engine::StoredState left_;
  engine::StoredState right_;
  engine::Difference difference_;
  std::string leftAlone_;
};

}  // namespace

void AddDiff(Arguments& arguments, Program& program) {
  Verb verb = arguments.AddVerb("diff", "Say in what two Stagemarks differ, or the scene from one");
  AddScene(verb, program);
  auto options = std::make_shared<DiffOptions>();
  verb.Add("STAGEMARKS", options->names, "Two Stagemarks, or one with --scene").Count(0, 2);
  verb.AddFlag("--scene", options->scene,
               "Compare with the scene as it is, as far as the options let a load change it");
  AddPartsToShow(verb, options->parts);
  verb.Footer(
      "Stagemarks of two scenes are given as SCENE1:A SCENE2:B; the shortest beginning that is a "
      "file is the scene. Elements of two scenes are the same when they come from one scene, else "
      "when they have the same path.\n"
      "Exit status: 0 equal, 1 different, 2 trouble.\n\n"
      "Examples:\n"
      "  stagemarks diff room.c4d Day Night\n"
      "  stagemarks diff room.c4d Day --scene --parts objects,camera\n"
      "  stagemarks diff monday.c4d:Day tuesday.c4d:Day --json");
  verb.Does([&program, options] { return DiffVerb(program, *options).Run(); });
}

}  // namespace commandline
