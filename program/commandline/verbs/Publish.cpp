#include "engine/publish/Publish.h"

#include "engine/undo/Undo.h"
#include "program/commandline/Arguments.h"
#include "program/commandline/FileOrigin.h"
#include "program/commandline/StatePictures.h"

namespace commandline {

namespace {

struct PublishChoices {
  std::string folder;
  std::vector<std::string> only;
  std::string hidden = "omit";
};

struct PlannedFile {
  Mark state;
  std::string name;  // for messages
  std::string path;
};

// Carries out one call of `publish`: names first, then state by state, each as it would be loaded
// into the scene as it is now.
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
    report_.PutList("published");
    for (std::size_t i = 0; i < plan_.size() && status == kDone; ++i) status = Publish(i);
    report_.Line(status == kDone
                     ? "Published " + Counted(written_, "state") + " to " + folder_ + "."
                     : "Not everything was published.");
    report_.Print(program_.json);
    return status == kDone ? session_.CheckLedger() : status;
  }

 private:
  int Fail(const std::string& why) {
    program_.terminal.Error(why);
    return kFailed;
  }

  int Plan() {
    folder_ = AbsolutePath(choices_.folder);
    std::vector<std::string> paths;
    const std::string scene = SceneName(session_.Document());
    for (const Mark& state : states_.States()) {
      const std::string name = states_.AsItIs() ? scene : scene + " " + state.name;
      plan_.push_back({state, states_.AsItIs() ? scene : state.name,
                       folder_ + "/" + SafeFileName(name) + ".glb"});
      paths.push_back(plan_.back().path);
    }
    if (const auto clash = FindClash(paths)) {
      return Fail("\"" + plan_[clash->first].name + "\" and \"" + plan_[clash->second].name +
                  "\" would be written to one file, " + paths[clash->second] +
                  ", at least on some disks. Rename one of them, or publish them apart with "
                  "--only. Nothing was published.");
    }
    if (const int status = session_.CheckReplacing(paths, program_.verbName); status != kDone)
      return status;
    const engine::Status made = session_.Files().MakeFolders(folder_);
    return made ? kDone : Fail(made.Message());
  }

  int Publish(std::size_t number) {
    const PlannedFile& file = plan_[number];
    const double done = static_cast<double>(number) / static_cast<double>(plan_.size());
    if (!program_.terminal.Progress(done, "Publishing " + file.name)) return kInterrupted;
    engine::UndoScope step(session_.Document(), "Load " + file.name);
    if (const int status = states_.Recall(file.state); status != kDone) return status;
    engine::PublishOptions options;
    options.scene = SceneName(session_.Document());
    options.state = states_.AsItIs() ? "" : file.state.name;
    options.omitHidden = choices_.hidden == "omit";
    const auto published =
        engine::PublishGltf(session_.Document(), session_.Files(), options, caches_, geometries_);
    step.Cancel();
    if (!published) return Fail("\"" + file.name + "\" was not published: " + published.Message());
    for (const std::string& note : published.Value().notes) {
      const bool wasNamed = note.find(" was not found ") != std::string::npos;
      if (!wasNamed && said_.IsNew(note)) program_.terminal.Note(note);
    }
    const engine::Status written = session_.Files().ReplaceFile(
        file.path, WithMaker(published.Value().bytes, program_.verbName));
    if (!written) return Fail(written.Message());
    Tell(file, published.Value());
    return kDone;
  }

  void Tell(const PlannedFile& file, const engine::PublishedScene& scene) {
    ++written_;
    report_.Append("published", {{"stagemark", file.state.name},
                                 {"file", file.path},
                                 {"objects", scene.objects},
                                 {"triangles", scene.triangles},
                                 {"bytes", scene.bytes.size()}});
    report_.Line("  " + Shown(file.path.substr(folder_.size() + 1)) + "  " +
                 Counted(scene.objects, "object") + ", " + Counted(scene.triangles, "triangle"));
  }

  Program& program_;
  const PublishChoices& choices_;
  Session session_;
  StatePictures states_;
  Report report_;
  std::string folder_;
  std::vector<PlannedFile> plan_;
  engine::RenderCaches caches_;
  engine::GltfGeometries geometries_;
  pictures::SaidNotes said_;
  std::size_t written_ = 0;
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
  verb.Add("--hidden", choices->hidden,
           "What does not render: omit: is left out; mark: is there and marked as not visible")
      .OneOf({"omit", "mark"})
      .Default("omit")
      .Word("HOW");
  AddStrict(verb, program);
  AddForce(verb, program);
  verb.Footer(
      "Each file (.glb, binary glTF 2.0) shows one state as a rendered picture does: objects with "
      "their materials and\n"
      "textures, lights and cameras, the scene camera first. Browsers, engines and modellers read "
      "it. A scene without\n"
      "Stagemarks is published as it is. The scene itself is left alone, and only files that this "
      "verb wrote are replaced\n"
      "without --force.\n\n"
      "Examples:\n"
      "  stagemarks publish room.c4d --to web\n"
      "  stagemarks publish room.c4d --to web --only Day --hidden mark");
  verb.Does([&program, choices] { return PublishVerb(program, *choices).Run(); });
}

}  // namespace commandline
