// The mark of a published scene stands in its generator's name, which every such file has: sixteen
// digits, zero while the hash is made.
#include "program/publish/PublishedFiles.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>

#include "engine/scenefile/FileAsRead.h"

namespace publishing {

using engine::FileKind;
using engine::FileSystem;
using engine::PublishedFile;
using engine::Status;

namespace {

// In a .glb file 20 bytes of head stand before it, in text nothing does; the generator is the first
// thing that is written.
constexpr std::size_t kHead = 200;  // bytes in which the generator is looked for
constexpr std::size_t kDigits = 16;
constexpr std::string_view kZeros = "0000000000000000";

// The position of the digits in the generator's name, which stands near the beginning; npos in the
// file of another generator.
std::size_t DigitsIn(std::string_view bytes) {
  const std::string_view words =
      engine::kGltfGenerator.substr(0, engine::kGltfGenerator.size() - kDigits);
  const std::size_t at = bytes.substr(0, kHead).find(words);
  const bool has = at != std::string_view::npos && bytes.size() >= at + words.size() + kDigits;
  return has ? at + words.size() : std::string_view::npos;
}

std::string HexOf(std::span<const std::string_view> pieces) {
  std::array<char, kDigits + 1> hash;
  std::snprintf(hash.data(), hash.size(), "%016llx",
                static_cast<unsigned long long>(engine::HashOfContent(pieces)));
  return hash.data();
}

// The hash of the file, its digits counted as zeros. Three pieces are hashed as one, so a large
// file is not copied for it.
std::string MarkOf(std::string_view bytes, std::size_t digits) {
  const std::array<std::string_view, 3> pieces = {bytes.substr(0, digits), kZeros,
                                                  bytes.substr(digits + kDigits)};
  return HexOf(pieces);
}

// Writes what is not there yet; names of what is new go into `made`. What is there with the same
// bytes is left alone, and stays when the rest fails: another scene may refer to it.
Status WriteBeside(FileSystem& files, const std::string& folder, const PublishedFile& file,
                   bool force, std::vector<std::string>& made) {
  const std::string path = folder + "/" + file.name;
  const FileKind kind = files.Kind(path);
  if (kind == FileKind::File) {
    const auto bytes = files.ReadFile(path);
    if (bytes && bytes.Value() == file.bytes) return {};
    if (!force) {
      return Status::Failure("\"" + path +
                             "\" exists already and holds something else than it should. Give "
                             "another folder, or --force to replace it.");
    }
  }
  if (kind == FileKind::Missing) made.push_back(path);
  return files.ReplaceFile(path, file.bytes);
}

// The bytes of former files at `path` are known by their names: nothing else begins so and ends
// with the hash of what is in it.
void RemoveFormerBytes(FileSystem& files, const std::string& path,
                       const std::vector<PublishedFile>& now) {
  const std::filesystem::path file(path);
  const std::string folder = file.parent_path().string();
  const std::string begin = file.stem().string() + ".";
  const auto names = files.ListFiles(folder);
  if (!names) return;
  for (const std::string& name : names.Value()) {
    const bool isNow = std::any_of(now.begin(), now.end(),
                                   [&](const PublishedFile& one) { return one.name == name; });
    if (isNow || !name.starts_with(begin) || name.size() != begin.size() + kDigits + 4) continue;
    const auto read = files.ReadFile(folder + "/" + name);
    const std::string_view bytes = read ? std::string_view(read.Value()) : "";
    if (read && name == begin + HexOf({&bytes, 1}) + ".bin")
      (void)files.RemoveFile(folder + "/" + name);
  }
}

}  // namespace

bool IsPublished(std::string_view bytes) {
  return (bytes.starts_with("glTF") || bytes.starts_with("{\"asset\"")) &&
         DigitsIn(bytes) != std::string_view::npos;
}

std::string WithMark(std::string bytes) {
  const std::size_t digits = DigitsIn(bytes);
  return digits == std::string::npos ? bytes
                                     : bytes.replace(digits, kDigits, MarkOf(bytes, digits));
}

bool HasMark(std::string_view bytes) {
  const std::size_t digits = IsPublished(bytes) ? DigitsIn(bytes) : std::string_view::npos;
  return digits != std::string_view::npos && bytes.substr(digits, kDigits) == MarkOf(bytes, digits);
}

// Files beside go first and the scene last: whoever sees the scene finds all that it refers to. On
// a failure what is new is removed again.
Status WriteScene(FileSystem& files, const std::string& path, engine::PublishedScene scene,
                  bool force) {
  const std::string folder = std::filesystem::path(path).parent_path().string();
  std::vector<std::string> made;
  Status status;
  for (std::size_t i = 0; i < scene.beside.size() && status; ++i)
    status = WriteBeside(files, folder, scene.beside[i], force, made);
  if (status) status = files.ReplaceFile(path, WithMark(std::move(scene.bytes)));
  if (!status) {
    for (const std::string& file : made) (void)files.RemoveFile(file);
  } else if (!scene.beside.empty()) {
    RemoveFormerBytes(files, path, scene.beside);
  }
  return status;
}

}  // namespace publishing
