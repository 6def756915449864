// All states at a glance: the web page that shows them in 3D, and the contact sheet.
#include "program/lookup/SceneLookup.h"
#include "program/pictures/ContactSheet.h"
#include "program/publish/PageMaking.h"
#include "program/python/Pictures.h"
#include "program/python/ScriptScene.h"

namespace scripting {

namespace {

using pictures::PictureSize;
using publishing::PageMaking;
using publishing::PageViewer;
using rendering::PictureTurn;
using rendering::StatePictures;

std::string NameOf(const StatePictures& states, std::size_t number) {
  return states.AsItIs() ? pictures::kAsItIs : states.States()[number].name;
}

// Scene and thumbnail in one load of the state.
void AddToPage(ScriptScene& scene, StatePictures& states, const PictureTurn& turn,
               PageMaking& making) {
  const std::string name = NameOf(states, turn.number);
  const double done = static_cast<double>(turn.number) / static_cast<double>(turn.count);
  const auto goesOn = [&](double) { return scene.Progress(done, "Reading " + name); };
  engine::Status added;
  engine::Image picture;
  const auto look = [&] {
    added = making.AddState(name, goesOn);
    return added ? states.Render(pictures::FittedInto(states.Size(), publishing::kThumbnail), turn,
                                 name, &picture)
                 : rendering::kDone;
  };
  scene.Check(states.InState(states.States()[turn.number], look));
  Check(added);
  Check(making.AddThumbnail(picture));
}

// The folder of a page that may be written there, made where it is missing.
std::string PageFolder(engine::FileSystem& files, const PageWishes& wishes,
                       const PageViewer& viewer) {
  std::string folder = lookup::AbsolutePath(wishes.folder);
  CheckPlace(folder + "/" + publishing::kPageFile, publishing::kPageMaker, wishes.overwrite);
  if (!publishing::HasLicense(files, folder, viewer)) {
    CheckPlace(folder + "/" + publishing::kPageLicense, publishing::kPageMaker, wishes.overwrite);
  }
  Check(files.MakeFolders(folder));
  return folder;
}

// By the parser of the shell, so that both have the same limits.
PictureSize BoxOf(std::pair<std::uint32_t, std::uint32_t> size) {
  const auto box =
      rendering::ParsePictureSize(std::to_string(size.first) + "x" + std::to_string(size.second));
  if (!box) throw Failure(Fault::Misused, box.Message());
  return box.Value();
}

std::string SheetPath(const SheetWishes& wishes) {
  std::string path = lookup::AbsolutePath(wishes.path);
  const auto kind = pictures::KindOfName(path);
  if (!kind || *kind == pictures::PictureKind::Exr)
    throw Failure(Fault::Misused, "A sheet is a .png or a .tif; \"" + path + "\" is neither.");
  CheckPlace(path, pictures::kSheetMaker, wishes.overwrite);
  return path;
}

// The sizes that the pictures of the states have by themselves. Each state is loaded for it: the
// layout needs all sizes.
std::vector<PictureSize> OwnSizes(ScriptScene& scene, StatePictures& states) {
  std::vector<PictureSize> sizes;
  for (const pictures::Mark& state : states.States()) {
    scene.Check(states.InState(state, [&] {
      sizes.push_back(states.Size());
      return rendering::kDone;
    }));
  }
  return sizes;
}

}  // namespace

std::string MakePage(DocumentId document, const PageWishes& wishes) {
  ScriptScene scene(document);
  engine::FileSystem& files = scene.Files();
  const auto viewer = publishing::ReadPageViewer(files);
  Check(viewer.GetStatus());
  StatePictures states(scene, 0);
  scene.Check(states.Choose(wishes.states));
  const std::string folder = PageFolder(files, wishes, viewer.Value());
  const std::string name = pictures::SceneName(scene.Document());
  PageMaking making(scene.Document(), files, name);
  const std::size_t count = states.States().size();
  for (std::size_t i = 0; i < count; ++i) AddToPage(scene, states, {i, count}, making);
  const auto page = making.Finish(viewer.Value(), wishes.title.empty() ? name : wishes.title,
                                  [&](double) { return scene.Progress(1, "Writing the page"); });
  Check(page.GetStatus());
  Check(publishing::WritePage(files, folder, page.Value(), viewer.Value()));
  return folder + "/" + publishing::kPageFile;
}

// Each state is loaded twice: first for all sizes, then for its picture, so that one picture at a
// time is in memory beside the sheet.
std::string MakeSheet(DocumentId document, const SheetWishes& wishes) {
  std::string path = SheetPath(wishes);
  std::optional<PictureSize> box;
  if (wishes.size) box = BoxOf(*wishes.size);
  ScriptScene scene(document);
  StatePictures states(scene, wishes.threads);
  scene.Check(states.Choose(wishes.states));
  const std::vector<PictureSize> sizes = OwnSizes(scene, states);
  auto sheet = pictures::ContactSheet::Make(
      scene.Files(), sizes, pictures::SceneName(scene.Document()),
      pictures::SheetSubtitle(states.AsItIs() ? 0 : sizes.size()), box);
  Check(sheet.GetStatus());
  for (std::size_t i = 0; i < sizes.size(); ++i) {
    pictures::Mark caption = states.States()[i];
    caption.name = NameOf(states, i);
    const PictureSize cell = pictures::FittedInto(sizes[i], sheet.Value().Box());
    engine::Image picture;
    scene.Check(states.InState(states.States()[i], [&] {
      return states.Render(cell, {i, sizes.size()}, caption.name, &picture);
    }));
    sheet.Value().Place(i, picture, caption);
  }
  scene.Check(states.Save(sheet.Value().Picture(), path, pictures::kSheetMaker));
  return path;
}

}  // namespace scripting
