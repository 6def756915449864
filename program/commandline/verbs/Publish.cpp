#include "engine/publish/Publish.h"

#include <unordered_map>

#include "engine/undo/Undo.h"
#include "program/commandline/Arguments.h"
#include "program/commandline/PictureOrders.h"
#include "program/publish/PageMaking.h"
#include "program/publish/PublishOrder.h"
#include "program/publish/PublishedFiles.h"

namespace commandline {

namespace {

struct PublishChoices {
  std::string folder;
  std::vector<std::string> only;
  std::string as = "glb";
  std::string hidden = "omit";
  bool allInOne = false;
};

// A file with the states from `first` on.
struct PlannedFile {
  std::string name;  // for messages
  std::string stem;
  std::string path;
  std::size_t first = 0;
  std::size_t count = 1;
};

// Carries out one call of `publish`: names first, then file by file, each of its states as it would
// be loaded into the scene as it is now.
class PublishVerb {
 public:
  PublishVerb(Program& program, const PublishChoices& choices)
      : program_(program), choices_(choices), session_(program), states_(session_, 0) {}

  int Run() {
    int status = session_.StartWithScene();
    if (status == kDone) status = states_.Choose(choices_.only);
    if (status == kDone) status = session_.CheckTextures(report_);
    if (status == kDone) status = Plan();
    if (status != kDone) return status;
    facts_ = publishing::ReadStateFacts(session_.Document());
    report_.PutList("published");
    for (std::size_t i = 0; i < plan_.size() && status == kDone; ++i) status = Publish(plan_[i]);
    report_.Line(status == kDone
                     ? "Published " + Counted(written_, "state") + " to " + folder_ + "."
                     : "Not everything was published.");
    report_.Print(program_);
    if (status == kInterrupted) {
      program_.terminal.Error("Interrupted after " + std::to_string(files_) + " of " +
                              Counted(plan_.size(), "file") + ".");
    }
    return status == kDone ? session_.CheckLedger() : status;
  }

 private:
  int Fail(const std::string& why) {
    program_.terminal.Error(why);
    return kFailed;
  }

  // Names and folder are checked before the first state is read.
  int Plan() {
    folder_ = AbsolutePath(choices_.folder);
    session_.Files().Follow(folder_);
    publishing::PublishOrder order;
    order.folder = folder_;
    order.asText = choices_.as == "gltf";
    order.allInOne = choices_.allInOne;
    for (const Mark& state : states_.States()) {
      if (!states_.AsItIs()) order.names.push_back(state.name);
    }
    const auto files = publishing::FilesOf(order, SceneName(session_.Document()));
    if (!files) return Fail(files.Message() + " `--only` chooses which.");
    std::vector<std::string> paths;
    for (const publishing::OrderedFile& file : files.Value()) {
      const std::size_t first = plan_.empty() ? 0 : plan_.back().first + plan_.back().count;
      plan_.push_back({file.name, file.stem, file.path, first, file.states.size()});
      paths.push_back(file.path);
    }
    if (const int status = session_.CheckReplacing(paths, program_.verbName); status != kDone)
      return status;
    const engine::Status made = session_.Files().MakeFolders(folder_);
    return made ? kDone : Fail(made.Message());
  }

  // A file that was written stays when a later one fails: it is whole.
  int Publish(const PlannedFile& file) {
    engine::PublishOptions options;
    options.scene = SceneName(session_.Document());
    options.omitHidden = choices_.hidden == "omit";
    options.asVariants = choices_.allInOne;
    if (choices_.as == "gltf") options.beside = file.stem;
    engine::Publication publication(session_.Document(), session_.Files(), options, renderCaches_,
                                    caches_);
    for (std::size_t i = 0; i < file.count; ++i) {
      const int status = AddState(publication, states_.States()[file.first + i]);
      if (status != kDone) return status;
    }
    auto published = publication.Finish(ProgressOf(file.name));
    done_ += 1;
    if (!published) return Refuse(file.name, published.Message());
    Tell(published.Value().notes);
    const std::string line = LineOf(file, published.Value());
    const JsonMembers members = MembersOf(file, published.Value());
    const engine::Status written =
        publishing::WriteScene(session_.Files(), file.path, published.Take(), program_.force);
    if (!written) return Fail(written.Message());
    ++files_;
    written_ += file.count;
    report_.Line(line);
    report_.Append("published", members);
    return kDone;
  }

  int AddState(engine::Publication& publication, const Mark& state) {
    const std::string& name = states_.AsItIs() ? plan_[0].name : state.name;
    const auto progress = ProgressOf(name);
    if (!progress(0)) return kInterrupted;
    engine::UndoScope step(session_.Document(), "Load " + name);
    if (const int status = states_.Recall(state); status != kDone) return status;
    const engine::Status read = publication.AddState(facts_[state.name], progress);
    step.Cancel();
    done_ += 1;
    return read ? kDone : Refuse(name, read.Message());
  }

  // Reading a state and writing a file are a step each.
  engine::ProgressCallback ProgressOf(const std::string& name) {
    const auto steps = static_cast<double>(states_.States().size() + plan_.size());
    return [this, steps, name](double share) {
      return program_.terminal.Progress((done_ + share) / steps, "Publishing " + name);
    };
  }

  int Refuse(const std::string& name, const std::string& why) {
    if (Terminal::Interrupted()) return kInterrupted;
    return Fail("\"" + name + "\" was not published: " + why);
  }

  // Missing textures were named at the beginning.
  void Tell(const std::vector<std::string>& notes) {
    for (const std::string& note : notes) {
      const bool wasNamed = note.find(" was not found ") != std::string::npos;
      if (!wasNamed && said_.IsNew(note)) program_.terminal.Note(note);
    }
  }

  std::string LineOf(const PlannedFile& file, const engine::PublishedScene& scene) const {
    return "  " + Shown(file.path.substr(folder_.size() + 1)) + "  " +
           (choices_.allInOne ? Counted(file.count, "state") + ", " : "") +
           Counted(scene.objects, "object") + ", " + Counted(scene.triangles, "triangle");
  }

  JsonMembers MembersOf(const PlannedFile& file, const engine::PublishedScene& scene) const {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < file.count; ++i)
      names.push_back(states_.States()[file.first + i].name);
    std::size_t bytes = scene.bytes.size();
    std::vector<std::string> beside;
    for (const engine::PublishedFile& other : scene.beside) {
      bytes += other.bytes.size();
      beside.push_back(folder_ + "/" + other.name);
    }
    return {{choices_.allInOne ? "stagemarks" : "stagemark",
             choices_.allInOne ? JsonValue(names) : JsonValue(names[0])},
            {"file", file.path},
            {"beside", beside},
            {"objects", scene.objects},
            {"triangles", scene.triangles},
            {"bytes", bytes}};
  }

  Program& program_;
  const PublishChoices& choices_;
  Session session_;
  StatePictures states_;
  Report report_;
  std::string folder_;
  std::vector<PlannedFile> plan_;
  std::unordered_map<std::string, engine::StateFacts> facts_;  // by name
  engine::RenderCaches renderCaches_;
  engine::PublishCaches caches_;
  pictures::SaidNotes said_;
  double done_ = 0;          // steps
  std::size_t written_ = 0;  // states
  std::size_t files_ = 0;
};

}  // namespace

void AddPublish(Arguments& arguments, Program& program) {
  Verb verb =
      arguments.AddVerb("publish", "Write one glTF file per Stagemark, which other programs open");
  AddScene(verb, program);
  auto choices = std::make_shared<PublishChoices>();
  verb.Add("--to", choices->folder, "Folder for the files; made when it is missing")
      .Required()
      .Word("DIR");
  AddOnly(verb, choices->only);
  verb.Add("--as", choices->as,
           "glb: all in one binary file; gltf: text, with bytes and textures in files beside it")
      .OneOf({"glb", "gltf"})
      .Default("glb")
      .Word("FORM");
  verb.Add("--hidden", choices->hidden,
           "What does not render: omit: is left out; mark: is there and marked as not visible")
      .OneOf({"omit", "mark"})
      .Default("omit")
      .Word("HOW");
  verb.AddFlag("--all-in-one", choices->allInOne,
               "One file with all states, each a material variant of its name; what is hidden in "
               "which of them stands in the file's extras");
  AddStrict(verb, program);
  AddForce(verb, program);
  verb.Footer(
      "Each file (glTF 2.0) shows one state as a rendered picture does: objects with their "
      "materials and textures, lights and cameras, the scene camera first. Browsers, engines and "
      "modellers read it. A scene without Stagemarks is published as it is. The scene itself is "
      "left alone, and only files that this verb wrote are replaced without --force.\n\n"
      "Examples:\n"
      "  stagemarks publish room.c4d --to web\n"
      "  stagemarks publish room.c4d --to web --only Day --hidden mark\n"
      "  stagemarks publish room.c4d --to web --all-in-one");
  verb.Does([&program, choices] { return PublishVerb(program, *choices).Run(); });
}

}  // namespace commandline
