#include "program/publish/PublishOrder.h"

#include "program/pictures/PictureNames.h"
#include "program/publish/StatePage.h"

namespace publishing {

using engine::Result;

// One file for a page and for all states in one; otherwise one for each state, named after scene
// and state. Names are made safe first, and only then compared: two states may become one name by
// that.
Result<std::vector<OrderedFile>> FilesOf(const PublishOrder& order, const std::string& name) {
  std::vector<OrderedFile> files;
  const std::string scene = name.empty() ? "Scene" : name;
  const auto add = [&](const std::string& shown, const std::string& file,
                       const std::vector<std::string>& states) {
    const std::string stem = pictures::SafeFileName(file);
    const std::string suffix = order.asText ? ".gltf" : ".glb";
    files.push_back({shown, stem, order.folder + "/" + stem + suffix, states});
  };
  if (order.asPage) {
    files.push_back({order.title, "", order.folder + "/" + kPageFile, order.names});
  } else if (order.names.empty()) {
    add(scene, scene, {""});
  } else if (order.allInOne) {
    add(scene, scene, order.names);
  } else {
    for (const std::string& state : order.names) add(state, scene + " " + state, {state});
  }
  std::vector<std::string> paths;
  paths.reserve(files.size());
  for (const OrderedFile& file : files) paths.push_back(file.path);
  if (const auto clash = pictures::FindClash(paths)) {
    return Result<std::vector<OrderedFile>>::Failure(
        "\"" + files[clash->first].name + "\" and \"" + files[clash->second].name +
        "\" would be written to one file, " + paths[clash->second] +
        ", at least on some disks. Rename one of them, or publish them apart. Nothing was "
        "published.");
  }
  return files;
}

engine::PublishOptions OptionsOf(const PublishOrder& order, const std::string& scene,
                                 const OrderedFile& file) {
  engine::PublishOptions options;
  options.scene = scene;
  options.omitHidden = order.omitHidden;
  options.asVariants = order.allInOne;
  if (order.asText) options.beside = file.stem;
  return options;
}

}  // namespace publishing
