#include "program/python/Pictures.h"

#include <algorithm>

#include "engine/publish/Publish.h"
#include "program/export/ExportPlan.h"
#include "program/lookup/SceneLookup.h"
#include "program/outcome/Words.h"
#include "program/pictures/DialogLabels.h"
#include "program/publish/PageMaking.h"
#include "program/publish/PublishOrder.h"
#include "program/publish/PublishedFiles.h"
#include "program/python/ScriptScene.h"
#include "program/python/States.h"

namespace scripting {

namespace {

using engine::PublishOptions;
using pictures::StagemarksDialog;

// A side of 0 follows the shape of the state's picture; both 0 take its size. By 64 bits, since the
// product of two sides may not fit into 32.
pictures::PictureSize SizeOf(const rendering::StatePictures& states,
                             std::pair<std::uint32_t, std::uint32_t> wanted) {
  pictures::PictureSize size = states.Size();
  const auto [width, height] = wanted;
  if (width != 0 && height != 0) return {width, height};
  if (width != 0) {
    return {width, std::max(1U, static_cast<std::uint32_t>(std::uint64_t{width} * size.height /
                                                           std::max(1U, size.width)))};
  }
  if (height != 0) {
    return {std::max(1U, static_cast<std::uint32_t>(std::uint64_t{height} * size.width /
                                                    std::max(1U, size.height))),
            height};
  }
  return size;
}

void CheckPictureName(const std::string& path) {
  if (pictures::KindOfName(path)) return;
  throw Failure(Fault::Misused,
                "\"" + path + "\" has the name of no picture; .png, .tif and .exr are known.");
}

}  // namespace

// Pixels are handed over only where no file was asked for.
Picture Render(DocumentId document, const std::string& state,
               std::pair<std::uint32_t, std::uint32_t> size, const std::string& path,
               bool overwrite, unsigned threads) {
  const std::string target = path.empty() ? "" : lookup::AbsolutePath(path);
  if (!target.empty()) CheckPictureName(target);
  if (!target.empty()) CheckPlace(target, "render", overwrite);
  ScriptScene scene(document);
  rendering::StatePictures states(scene, threads);
  const std::string name = state.empty() ? "the scene" : state;
  Picture picture;
  engine::Image image;
  const auto render = [&] {
    const pictures::PictureSize wanted = SizeOf(states, size);
    const bool isLight =
        !target.empty() && pictures::KindOfName(target) == pictures::PictureKind::Exr;
    const int status = isLight ? states.RenderLight(wanted, {}, name, &image)
                               : states.Render(wanted, {}, name, &image);
    return status != rendering::kDone || target.empty() ? status
                                                        : states.Save(image, target, "render");
  };
  if (state.empty()) {
    scene.Check(render());
  } else {
    states.Choose({ChooseState(document, state)});
    scene.Check(states.InState(states.States().front(), render));
  }
  picture.width = image.width;
  picture.height = image.height;
  if (target.empty()) picture.pixels = std::move(image.bytes);
  picture.notes = scene.Notes();
  return picture;
}

namespace {

exporting::Layout LayoutOf(const std::string& word) {
  if (const auto layout = exporting::LayoutOfWord(word)) return *layout;
  std::string known;
  for (const std::string& one : exporting::LayoutWords())
    known += (known.empty() ? "" : ", ") + one;
  throw Failure(Fault::Misused, "\"" + word + "\" is no layout. There are: " + known + ".");
}

// Whether the export may begin, else why not. A script has nobody to ask, so too little room is a
// failure.
void CheckPlan(const ExportOrder& order, const exporting::ExportPlan& plan) {
  if (!plan.obstacles.empty()) throw Failure(Fault::Failed, plan.obstacles.front());
  if (!plan.missing.empty() && !order.allowMissing) {
    throw Failure(Fault::Refused, "The texture \"" + plan.missing.front() +
                                      "\" was not found. allow_missing=True exports without it.");
  }
  if (!exporting::Fits(plan)) {
    throw Failure(Fault::Failed, "The export is " + exporting::Summary(plan) + ", and only " +
                                     exporting::BytesText(*plan.free) + " are free where \"" +
                                     order.folder + "\" is.");
  }
}

// The plug-in asks for the folder when its button is pressed; the answer lies ready before.
void PressExport(StagemarksDialog& dialog, const ExportOrder& order, exporting::Layout layout,
                 const std::string& folder) {
  dialog.ChooseLayout(exporting::EntryOf(layout));
  dialog.Tick(pictures::kChangeFrameRange, order.frames.has_value());
  if (order.frames) dialog.TypeFrames(order.frames->first, order.frames->second);
  Session::Person().ChooseNextFile(folder);
  dialog.Press(pictures::kGenerateScenes);
  Session::Get().App().DeliverEvents();
}

}  // namespace

// Check marks are as before afterwards. With `isolated` each state is an export of its own.
Exported Export(DocumentId document, const ExportOrder& order) {
  const exporting::Layout layout = LayoutOf(order.layout);
  const std::string folder = lookup::AbsolutePath(order.folder);
  const Names names = ChooseStates(document, order.states);
  if (names.empty()) throw Failure(Fault::NotFound, "There are no Stagemarks in this scene.");
  ScriptScene scene(document);
  const exporting::ExportPlan plan =
      exporting::PlanExport(scene.Files(), scene.Document(), {layout, folder, names});
  CheckPlan(order, plan);
  Check(scene.Files().MakeFolder(folder));
  const std::size_t mark = Session::Get().Services().ledger.Mark();
  const Names checked = scene.Dialog().CheckedNames();
  std::size_t done = 0;
  std::vector<Names> rounds{names};
  if (order.isolated) {
    rounds.clear();
    for (const std::string& name : names) rounds.push_back({name});
  }
  for (const Names& round : rounds) {
    const double share = static_cast<double>(done++) / static_cast<double>(rounds.size());
    if (!scene.Progress(share, "Exporting " + outcome::Listed(round))) break;
    scene.Dialog().CheckOnly(round);
    PressExport(scene.Dialog(), order, layout, folder);
  }
  scene.Dialog().CheckOnly(checked);
  const engine::Ledger& ledger = Session::Get().Services().ledger;
  Exported exported{exporting::ScenesWritten(ledger, mark), ledger.WrittenSince(mark),
                    plan.missing};
  if (exported.scenes.size() != names.size()) FailAs("Not every Stagemark was exported.");
  return exported;
}

namespace {

// One call of Publish.
class Publishing {
 public:
  Publishing(DocumentId document, const PublishWishes& wishes)
      : wishes_(wishes),
        scene_(document),
        states_(scene_, 0),
        facts_(publishing::ReadStateFacts(scene_.Document())) {
    order_.folder = lookup::AbsolutePath(wishes.folder);
    order_.asText = wishes.format == "gltf";
    if (!order_.asText && wishes.format != "glb")
      throw Failure(Fault::Misused, "\"" + wishes.format + "\" is neither \"glb\" nor \"gltf\".");
    order_.allInOne = wishes.allInOne;
    order_.omitHidden = wishes.omitHidden;
    states_.Choose(wishes.states);
    for (const pictures::Mark& state : states_.States()) {
      if (!states_.AsItIs()) order_.names.push_back(state.name);
    }
  }

  // Places are checked before the first state is loaded.
  Names Run() {
    const std::string scene = pictures::SceneName(scene_.Document());
    const auto files = publishing::FilesOf(order_, scene);
    Check(files.GetStatus());
    for (const publishing::OrderedFile& file : files.Value())
      CheckPlace(file.path, "publish", wishes_.overwrite);
    Check(scene_.Files().MakeFolders(order_.folder));
    Names written;
    std::size_t first = 0;
    steps_ = static_cast<double>(states_.States().size() + files.Value().size());
    for (const publishing::OrderedFile& file : files.Value()) {
      Make(file, publishing::OptionsOf(order_, scene, file), first);
      first += file.states.size();
      written.push_back(file.path);
    }
    return written;
  }

 private:
  engine::ProgressCallback Progress(const std::string& name) {
    return [this, name](double share) {
      return scene_.Progress((done_ + share) / steps_, "Publishing " + name);
    };
  }

  void Make(const publishing::OrderedFile& file, const PublishOptions& options, std::size_t first) {
    engine::Publication publication(scene_.Document(), scene_.Files(), options, renderCaches_,
                                    caches_);
    for (std::size_t i = 0; i < file.states.size(); ++i)
      AddState(publication, states_.States()[first + i]);
    auto published = publication.Finish(Progress(file.name));
    Check(published.GetStatus());
    Check(publishing::WriteScene(scene_.Files(), file.path, published.Take(), wishes_.overwrite));
    done_ += 1;
  }

  void AddState(engine::Publication& publication, const pictures::Mark& state) {
    engine::Status read;
    const auto look = [&] {
      read = publication.AddState(facts_[state.name], Progress(state.name));
      return rendering::kDone;
    };
    scene_.Check(states_.AsItIs() ? look() : states_.InState(state, look));
    Check(read);
    done_ += 1;
  }

  const PublishWishes& wishes_;
  ScriptScene scene_;
  rendering::StatePictures states_;
  std::unordered_map<std::string, engine::StateFacts> facts_;
  publishing::PublishOrder order_;
  engine::RenderCaches renderCaches_;
  engine::PublishCaches caches_;
  double done_ = 0;
  double steps_ = 1;
};

}  // namespace

Names Publish(DocumentId document, const PublishWishes& wishes) {
  return Publishing(document, wishes).Run();
}

}  // namespace scripting
