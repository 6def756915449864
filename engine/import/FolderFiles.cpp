#include "engine/import/FolderFiles.h"

#include <assimp/MemoryIOWrapper.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <system_error>

#include "engine/import/ForeignText.h"
#include "engine/import/SourceCheck.h"

namespace engine {
namespace {

namespace fs = std::filesystem;

// The kinds of text that the library reads without looking how they are written.
bool IsText(const std::string& file) {
  const SourceFormat format = FormatOf(file);
  return format == SourceFormat::Obj || format == SourceFormat::Collada ||
         fs::path(file).extension() == ".mtl";
}

Assimp::IOStream* InMemory(const std::string& text) {
  auto* bytes = new std::uint8_t[text.size()];
  std::memcpy(bytes, text.data(), text.size());
  return new Assimp::MemoryIOStream(bytes, text.size(), true);
}

}  // namespace

std::vector<std::string> FolderFiles::FoldersOf(const std::string& scene) {
  std::error_code error;
  std::vector<std::string> folders{
      fs::weakly_canonical(fs::path(scene).parent_path(), error).string()};
  const std::string target = fs::weakly_canonical(scene, error).parent_path().string();
  if (target != folders.front()) folders.push_back(target);
  return folders;
}

FolderFiles::FolderFiles(const std::string& scene) : folders_(FoldersOf(scene)) {}

bool FolderFiles::IsInside(const std::string& file) const {
  std::error_code error;
  const std::string path = fs::weakly_canonical(file, error).string();
  return !error && std::any_of(folders_.begin(), folders_.end(), [&](const std::string& folder) {
    return path.rfind(folder == "/" ? folder : folder + "/", 0) == 0;
  });
}

bool FolderFiles::Exists(const char* file) const {
  return IsInside(file) && Assimp::DefaultIOSystem::Exists(file);
}

Assimp::IOStream* FolderFiles::OpenPlain(const char* file) {
  std::error_code error;
  return IsInside(file) && fs::is_regular_file(file, error)
             ? Assimp::DefaultIOSystem::Open(file, "rb")
             : nullptr;
}

std::string FolderFiles::ReadWhole(const std::string& file) {
  const std::unique_ptr<Assimp::IOStream> stream(OpenPlain(file.c_str()));
  if (!stream) return {};
  std::string bytes(stream->FileSize(), '\0');
  bytes.resize(stream->Read(bytes.data(), 1, bytes.size()));
  return bytes;
}

Assimp::IOStream* FolderFiles::Open(const char* file, const char* mode) {
  if (std::strpbrk(mode, "wa+") != nullptr) return nullptr;
  std::unique_ptr<Assimp::IOStream> stream(OpenPlain(file));
  if (stream) opened_.emplace_back(file);
  if (!stream || !IsText(file)) return stream.release();
  std::string head(2, '\0');
  head.resize(stream->Read(head.data(), 1, head.size()));
  stream->Seek(0, aiOrigin_SET);
  const bool isXml = FormatOf(file) == SourceFormat::Collada;
  if (!isXml && !IsMarkedUtf16(head)) return stream.release();
  stream.reset();
  std::string text = ReadWhole(file);
  if (IsMarkedUtf16(text)) text = FromUtf16(text);
  return InMemory(isXml ? WithNamedCameras(WithoutLeadingBlanks(text)) : text);
}

}  // namespace engine
