#include "engine/scenefile/CarriedFiles.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>

#include "engine/scene/NodeTypes.h"
#include "host/Parameters.h"
#include "host/RenderData.h"

namespace engine {
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

// "/scenes/room/../other/x.png" begins with the folder "/scenes/room" and lies outside.
bool ClimbsUp(std::string_view path) {
  return path.find("/../") != std::string_view::npos || path.ends_with("/..");
}

// Empty where the parameter is missing or no file name: such a name is not touched.
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

namespace {

constexpr std::size_t kLongestName = 255;

// Saving puts the file under this name into a folder: the name must not lead out of it, nor hide
// the file.
bool IsBareName(std::string_view name) {
  return !name.empty() && name.size() <= kLongestName && name.front() != '.' &&
         std::ranges::none_of(name, [](char c) {
           return c == '/' || c == '\\' || static_cast<unsigned char>(c) < 0x20;
         });
}

}  // namespace

std::string FilesContents(const EmbeddedFiles& files, TextWriter& texts) {
  ColumnValues names;
  ColumnValues lengths;
  std::string bytes;
  for (const EmbeddedFile& file : files) {
    names.push_back(texts.Row(file.name));
    lengths.push_back(file.bytes->size());
    bytes += *file.bytes;
  }
  std::string out;
  PutVarint(out, files.size());
  PutInts(out, names);
  PutInts(out, lengths);
  return out += bytes;
}

EmbeddedFiles ReadFiles(std::string_view contents, const std::vector<host::String>& texts,
                        Budget& budget) {
  Cursor in(contents, "FILES", budget);
  const std::size_t rows = in.Rows(sizeof(EmbeddedFile) + sizeof(std::string));
  const ColumnValues names = TakeInts(in, rows);
  CheckBelow(in, names, texts.size(), "a name");
  const ColumnValues lengths = TakeInts(in, rows);
  budget.Charge(in.Left());
  EmbeddedFiles files;
  std::unordered_set<std::string> seen;
  for (std::size_t row = 0; row < rows; ++row) {
    std::string name = texts[names[row]].ToUtf8();
    if (!IsBareName(name)) in.Refuse("a file has a name that leads elsewhere");
    if (!seen.insert(name).second) in.Refuse("two files have the same name");
    files.push_back({std::move(name), std::make_shared<const std::string>(in.Take(lengths[row]))});
  }
  in.End();
  return files;
}

}  // namespace engine
