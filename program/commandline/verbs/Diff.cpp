// Two Stagemarks of one scene, of two scenes or of texts; all of two files by name; or one and the
// scene. Nothing is loaded: records are compared (decision 43). Both scenes are open at once, and
// the left one is active again at the end.
#include <filesystem>
#include <optional>
#include <unordered_map>

#include "program/commandline/Arguments.h"
#include "program/commandline/ChangeLists.h"
#include "program/commandline/LoadParts.h"
#include "program/commandline/Session.h"

namespace commandline {

namespace {

namespace fs = std::filesystem;

// Exit statuses, as diff(1) has them.
constexpr int kEqual = 0;
constexpr int kDifferent = 1;
constexpr const char* kMoreWithVerbose = "\n-v lists everything.";

struct DiffOptions {
  std::vector<std::string> names;
  bool scene = false;
  PartChoice parts;
};

// A Stagemark as typed, and the scene, or the text of Stagemarks, that it is in; all of it without
// a name.
struct Place {
  std::string scene;
  std::optional<std::string> name;
  bool isText = false;
};

// Two Stagemarks beside each other.
struct ComparedStates {
  engine::StoredState left;
  engine::StoredState right;
  engine::Difference difference;
};

bool IsFile(const std::string& path) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  return fs::exists(status) && !fs::is_directory(status);
}

std::string WhichIsMeant(const std::string& scene) {
  return "Which Stagemark of " + Listed({scene}) +
         " is meant? Write SCENE:STAGEMARK, or give the scene once and two names after it, or one "
         "name and --scene.";
}

// "room.c4d:Day", or a file alone. Files and Stagemarks may have colons in their names: the
// shortest beginning that is a file is the scene.
engine::Result<Place> ReadPlace(const std::string& typed) {
  if (IsFile(typed)) return Place{typed, std::nullopt};
  for (std::size_t colon = typed.find(':'); colon != std::string::npos;
       colon = typed.find(':', colon + 1)) {
    if (IsFile(typed.substr(0, colon)))
      return Place{typed.substr(0, colon), typed.substr(colon + 1)};
  }
  const std::size_t colon = typed.find(':');
  return engine::Result<Place>::Failure(
      colon == std::string::npos ? Listed({typed}) + " is neither a scene file nor SCENE:STAGEMARK."
                                 : "There is no scene file " + Listed({typed.substr(0, colon)}) +
                                       ", which " + Listed({typed}) + " begins with.");
}

class DiffVerb {
 public:
  DiffVerb(Program& program, const DiffOptions& options)
      : program_(program), options_(options), session_(program) {}

  int Run() {
    int status = ReadPlaces();
    for (Place& place : places_) place.isText = session_.IsStatesText(place.scene);
    if (status == kDone) status = OpenLeft();
    if (status == kDone) status = options_.scene ? WithScene() : WithOther();
    // Not to be mistaken for "different".
    if (status != kDone) return status == kFailed ? kTrouble : status;
    return IsOfFiles() ? AnswerOfFiles() : Answer();
  }

 private:
  int Refuse(const std::string& why) {
    program_.terminal.Error(why);
    return kUsage;
  }

  // Enough names: all are of the scene. One too few: everything that was typed names a place of its
  // own.
  int ReadPlaces() {
    const std::size_t wanted = options_.scene ? 1 : 2;
    std::vector<std::string> typed = options_.names;
    if (typed.size() == wanted) {
      for (const std::string& name : typed) places_.push_back({program_.scene, name});
      return kDone;
    }
    if (typed.size() + 1 != wanted) {
      return Refuse(
          "Two Stagemarks are needed: SCENE A B, or SCENE1:A SCENE2:B, or SCENE A --scene; or two "
          "files.");
    }
    typed.insert(typed.begin(), program_.scene);
    for (const std::string& place : typed) {
      auto read = ReadPlace(place);
      const bool isAlone = !places_.empty() && !places_[0].name;
      if (!read) return Refuse(isAlone ? WhichIsMeant(places_[0].scene) : read.Message());
      if (options_.scene && !read.Value().name) return Refuse(WhichIsMeant(place));
      places_.push_back(read.Take());
    }
    program_.scene = places_[0].scene;
    return kDone;
  }

  int OpenLeft() {
    const std::string& scene = places_[0].scene;
    const bool isText = !program_.open && places_[0].isText;
    int status = isText ? session_.Start() : session_.StartWithScene();
    if (isText && options_.scene)
      return Refuse(Listed({scene}) + " is a text of Stagemarks, which says nothing of a scene.");
    if (status == kDone && isText) status = session_.OpenStatesText(scene);
    if (status == kDone) leftDoc_ = &session_.Document();
    return status;
  }

  int WithScene() {
    ComparedStates& compared = compared_.emplace_back();
    if (const int status = Read(places_[0], compared.left); status != kDone) return status;
    rightDoc_ = leftDoc_;
    engine::CompareOptions compare = Compared();
    compare.parts = PartsToLoad(session_, options_.parts);
    leftAlone_ = LeftAloneText(session_, options_.parts, compared.left.record);
    auto toScene = engine::CompareWithScene(*leftDoc_, compared.left.record, compare);
    TellListed(*leftDoc_, compared.left.record, compare, {}, toScene);
    compared.difference = engine::Mirrored(std::move(toScene));
    return kDone;
  }

  int WithOther() {
    std::vector<engine::StoredState> left;
    std::vector<engine::StoredState> right;
    int status = ReadStates(places_[0], left);
    if (status == kDone && !IsOneScene()) status = OpenRight();
    rightDoc_ = &session_.Document();
    if (status == kDone) status = ReadStates(places_[1], right);
    // A step of a run goes on with its own scene.
    host::SetActiveDocument(leftDoc_);
    if (status != kDone) return status;
    Pair(std::move(left), std::move(right));
    if (places_[0].name || places_[1].name) {
      // The other file has to have a Stagemark that is named; its other ones are not asked for.
      if (compared_.empty()) {
        return Refuse("There is no Stagemark " +
                      Listed({places_[0].name ? onlyLeft_[0] : onlyRight_[0]}) + " in " +
                      Listed({places_[places_[0].name ? 1 : 0].scene}) + ".");
      }
      onlyLeft_.clear();
      onlyRight_.clear();
    }
    for (ComparedStates& pair : compared_) Compare(pair);
    return kDone;
  }

  int OpenRight() {
    const std::string& scene = places_[1].scene;
    return places_[1].isText ? session_.OpenStatesText(scene) : session_.Open(scene);
  }

  // By the file itself, whichever link leads to it.
  bool IsOneScene() const {
    std::error_code error;
    return fs::equivalent(places_[0].scene, places_[1].scene, error);
  }

  // Reads all states of a file, or the one that is named.
  int ReadStates(const Place& place, std::vector<engine::StoredState>& states) {
    if (!place.name) return session_.ReadMarks({}, states);
    return Read(place, states.emplace_back());
  }

  // Pairs states of one name; two that stand alone whatever their names are.
  void Pair(std::vector<engine::StoredState> left, std::vector<engine::StoredState> right) {
    if (left.size() == 1 && right.size() == 1 && (places_[0].name || places_[1].name || IsText())) {
      compared_.push_back({std::move(left[0]), std::move(right[0]), {}});
      return;
    }
    std::unordered_map<std::string, std::size_t> byName;
    for (std::size_t i = 0; i < right.size(); ++i) byName.emplace(right[i].name, i);
    for (engine::StoredState& state : left) {
      const auto other = byName.find(state.name);
      if (other == byName.end()) {
        onlyLeft_.push_back(state.name);
        continue;
      }
      compared_.push_back({std::move(state), std::move(right[other->second]), {}});
      byName.erase(other);
    }
    for (const engine::StoredState& state : right) {
      if (byName.contains(state.name)) onlyRight_.push_back(state.name);
    }
  }

  bool IsText() const { return places_[0].isText || places_[1].isText; }

  // Elements of one document are the same by identity, of two also by path.
  void Compare(ComparedStates& pair) const {
    engine::CompareOptions compare = Compared();
    compare.parts = PartsToShow(options_.parts);
    pair.difference =
        leftDoc_ == rightDoc_
            ? engine::CompareStates(*leftDoc_, pair.left.record, pair.right.record, compare)
            : engine::CompareStates(*leftDoc_, pair.left.record, *rightDoc_, pair.right.record,
                                    compare);
  }

  // Reads the named state. With two scenes, a message says which of them it is about.
  int Read(const Place& place, engine::StoredState& state) {
    const int status = session_.ReadMark(*place.name, state);
    if (status != kDone && IsOfTwo()) program_.terminal.Say("The scene is " + place.scene + ".");
    return status;
  }

  bool IsOfTwo() const { return places_.size() > 1 && places_[0].scene != places_[1].scene; }
  // Not one Stagemark with another one, but what two files hold.
  bool IsOfFiles() const {
    return places_.size() > 1 && (!places_[0].name || !places_[1].name) &&
           (compared_.size() != 1 || !onlyLeft_.empty() || !onlyRight_.empty());
  }

  engine::CompareOptions Compared() const {
    engine::CompareOptions compare;
    if (!program_.verbose && !program_.json) compare.mostFields = kMostListed;
    return compare;
  }

  // How a side is called in a sentence; two of one name by their scenes, too.
  std::string Called(const Place& place, const std::string& name) const {
    return Listed({IsOfTwo() ? place.scene + ":" + name : name});
  }

  Sides SidesOf(const ComparedStates& compared) const {
    return {*leftDoc_, *rightDoc_, Called(places_[0], compared.left.name),
            options_.scene ? "the scene" : Called(places_[1], compared.right.name),
            program_.verbose};
  }

  int Answer() {
    const ComparedStates& compared = compared_.front();
    const Sides sides = SidesOf(compared);
    Report report;
    report.PutObject("left", {{"scene", places_[0].scene}, {"stagemark", compared.left.name}});
    report.PutObject("right", {{"scene", places_.back().scene},
                               {"stagemark", options_.scene ? JsonValue() : compared.right.name}});
    report.Put("equal", compared.difference.IsEmpty());
    PutChanges(sides, compared.difference, report);
    // However many a file holds, who reads of two files finds them under the same keys.
    if (places_.size() > 1 && !places_[0].name && !places_[1].name) PutPairs(report);
    const bool isWhole = AddDifference(sides, compared.difference, report);
    if (!isWhole) report.Line(kMoreWithVerbose);
    if (!leftAlone_.empty()) report.Line("\n" + leftAlone_);
    report.Print(program_);
    return compared.difference.IsEmpty() ? kEqual : kDifferent;
  }

  // Each Stagemark of two files beside that of the same name.
  int AnswerOfFiles() {
    Report report;
    std::size_t differing = 0;
    for (const ComparedStates& pair : compared_) differing += !pair.difference.IsEmpty();
    report.PutObject("left", {{"scene", places_[0].scene}, {"stagemark", JsonValue()}});
    report.PutObject("right", {{"scene", places_[1].scene}, {"stagemark", JsonValue()}});
    const bool isEqual = differing == 0 && onlyLeft_.empty() && onlyRight_.empty();
    report.Put("equal", isEqual);
    PutPairs(report);
    report.Line(Listed({places_[0].scene}) + " -> " + Listed({places_[1].scene}) + ": " +
                (differing == 0 ? "none" : std::to_string(differing)) + " of " +
                Counted(compared_.size(), "Stagemark") + " of the same name " +
                (differing > 1 ? "differ" : "differs"));
    if (!onlyLeft_.empty())
      report.Line("Only in " + Listed({places_[0].scene}) + ": " + Listed(onlyLeft_));
    if (!onlyRight_.empty())
      report.Line("Only in " + Listed({places_[1].scene}) + ": " + Listed(onlyRight_));
    bool isWhole = true;
    for (const ComparedStates& pair : compared_) {
      if (pair.difference.IsEmpty()) continue;
      report.Line("");
      isWhole = AddDifference(SidesOf(pair), pair.difference, report) && isWhole;
    }
    if (!isWhole) report.Line(kMoreWithVerbose);
    report.Print(program_);
    return isEqual ? kEqual : kDifferent;
  }

  void PutPairs(Report& report) const {
    report.Put("onlyLeft", onlyLeft_);
    report.Put("onlyRight", onlyRight_);
    report.PutStream("stagemarks", [this](const auto& append) {
      for (const ComparedStates& pair : compared_) append(MembersOfPair(pair));
    });
  }

  JsonMembers MembersOfPair(const ComparedStates& pair) const {
    const Sides sides = SidesOf(pair);
    std::vector<JsonValue> changes;
    for (const engine::ElementChange& change : pair.difference.changes)
      changes.push_back(JsonValue::Object(MembersOf(sides, change)));
    return {{"stagemark", pair.left.name},
            {"equal", pair.difference.IsEmpty()},
            {"counts", JsonValue::Object(CountsOf(pair.difference))},
            {"differences", JsonValue::List(changes)}};
  }

  // False when not all of it is listed.
  bool AddDifference(const Sides& sides, const engine::Difference& difference, Report& report) {
    const std::string parts = PartsText(options_.parts, options_.parts.parts);
    if (difference.IsEmpty()) {
      report.Line(sides.left + " and " + sides.right + " are the same" + parts + ".");
      return true;
    }
    report.Line(sides.left + " -> " + sides.right + parts + ": " +
                Counted(difference.changes.size(), "thing") +
                (difference.changes.size() == 1 ? " differs" : " differ"));
    AddCounts(sides, difference, report);
    return AddChanges(sides, difference, report);
  }

  Program& program_;
  const DiffOptions& options_;
  Session session_;
  std::vector<Place> places_;
  host::BaseDocument* leftDoc_ = nullptr;
  host::BaseDocument* rightDoc_ = nullptr;
  std::vector<ComparedStates> compared_;
  // Names that only one of two files has.
  std::vector<std::string> onlyLeft_;
  std::vector<std::string> onlyRight_;
  std::string leftAlone_;
};

}  // namespace

void AddDiff(Arguments& arguments, Program& program) {
  Verb verb = arguments.AddVerb("diff", "Say in what two Stagemarks differ, or the scene from one");
  AddScene(verb, program);
  auto options = std::make_shared<DiffOptions>();
  verb.Add("STAGEMARKS", options->names, "Two Stagemarks, or one with --scene; or another file")
      .Count(0, 2);
  verb.AddFlag("--scene", options->scene,
               "Compare with the scene as it is, as far as the options let a load change it");
  AddPartsToShow(verb, options->parts);
  verb.Footer(
      "Stagemarks of two scenes are given as SCENE1:A SCENE2:B; the shortest beginning that is a "
      "file is the scene. Elements of two scenes are the same when they come from one scene, else "
      "when they have the same path.\n"
      "A text that `states export` wrote is as good as a scene. Two files are compared Stagemark "
      "by "
      "Stagemark, by name.\n"
      "Exit status: 0 equal, 1 different, 2 trouble.\n\n"
      "Examples:\n"
      "  stagemarks diff room.c4d Day Night\n"
      "  stagemarks diff room.c4d Day --scene --parts objects,camera\n"
      "  stagemarks diff monday.c4d:Day tuesday.c4d:Day --json\n"
      "  stagemarks diff room.c4d states.json");
  verb.Does([&program, options] { return DiffVerb(program, *options).Run(); });
}

}  // namespace commandline
