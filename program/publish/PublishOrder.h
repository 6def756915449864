// PublishOrder: what of a scene is to be published, as what and where to, as a person chooses it;
// and the files that come of it. Values; any thread.
#pragma once

#include <string>
#include <vector>

#include "engine/publish/Publish.h"

namespace publishing {

struct PublishOrder {
  bool asPage = false;  // a web page; else files
  bool asText = false;  // .gltf with other files beside it; else .glb
  bool allInOne = false;
  bool omitHidden = true;
  std::string folder;              // absolute
  std::string title;               // of a page
  std::vector<std::string> names;  // of Stagemarks; none: the scene as it is
};

struct OrderedFile {
  std::string name;  // for a person
  std::string stem;
  std::string path;
  std::vector<std::string> states;  // in it; an empty name: the scene as it is
};

// The files in the order of the names. Fails where two of them would become one file, at least on
// some disks. `scene`: its name, empty where it has none yet.
engine::Result<std::vector<OrderedFile>> FilesOf(const PublishOrder& order,
                                                 const std::string& scene);
// The options for one of these files, which is no page.
engine::PublishOptions OptionsOf(const PublishOrder& order, const std::string& scene,
                                 const OrderedFile& file);

}  // namespace publishing
