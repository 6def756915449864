#include "engine/scenefile/CarriedPaths.h"

#include <string_view>

#include "engine/scene/NodeTypes.h"
#include "host/Parameters.h"
#include "host/RenderData.h"

namespace engine::scenefile {
namespace {

constexpr std::string_view kHere = "./";

// The parameter that names a file which goes with the scene; 0 for elements without one.
host::LONG FileParameterOf(const host::BaseList2D& node) {
  const NodeKind kind = KindOf(node);
  if (kind == NodeKind::Shader && node.GetType() == host::Xbitmap)
    return host::BITMAPSHADER_FILENAME;
  if (kind == NodeKind::VideoPost && node.GetType() == host::VPglobalillumination)
    return host::GI_CACHE_FILENAME;
  return 0;
}

bool ClimbsUp(std::string_view path) {
  return path.find("/../") != std::string_view::npos || path.ends_with("/..");
}

std::string NameIn(const host::BaseContainer& data, host::LONG parameter) {
  return data.GetType(parameter) == host::DA_FILENAME
             ? data.GetFilename(parameter).GetString().ToUtf8()
             : "";
}

}  // namespace

CarriedPaths::CarriedPaths(std::string folder) : folder_(std::move(folder)) {
  if (!folder_.empty() && folder_.back() != '/') folder_ += '/';
}

const host::BaseContainer& CarriedPaths::DataToWrite(const host::BaseList2D& node) {
  const host::BaseContainer& data = *node.GetDataInstance();
  const host::LONG parameter = folder_.empty() ? 0 : FileParameterOf(node);
  const std::string name = parameter == 0 ? "" : NameIn(data, parameter);
  if (name.size() <= folder_.size() || !name.starts_with(folder_) || ClimbsUp(name)) return data;
  host::BaseContainer& copy = copies_.emplace_back(data);
  copy.SetFilename(parameter,
                   host::Filename(host::String(std::string(kHere) + name.substr(folder_.size()))));
  return copy;
}

void CarriedPaths::Resolve(host::BaseList2D& node) const {
  const host::LONG parameter = folder_.empty() ? 0 : FileParameterOf(node);
  const std::string name = parameter == 0 ? "" : NameIn(*node.GetDataInstance(), parameter);
  if (!name.starts_with(kHere)) return;
  const std::string path = folder_ + name.substr(kHere.size());
  node.GetDataInstance()->SetFilename(parameter,
                                      host::Filename(host::String(std::string_view(path))));
}

}  // namespace engine::scenefile
