#include "engine/import/EmbeddedTextures.h"

#include "engine/scene/EmbeddedFiles.h"
#include "engine/scene/ShaderWalk.h"

namespace engine {
namespace {

// More files of one name than that are no accident.
constexpr unsigned kMostNames = 1000;

enum class Place { Free, Same, Taken };

Place Look(FileSystem& files, const std::string& path, const std::string& bytes) {
  const FileKind kind = files.Kind(path);
  if (kind == FileKind::Missing) return Place::Free;
  if (kind != FileKind::File) return Place::Taken;
  const Result<std::string> there = files.ReadFile(path);
  return there && there.Value() == bytes ? Place::Same : Place::Taken;
}

void RenameInShaders(host::BaseDocument& doc, const std::string& name, const std::string& to) {
  ForEachBitmapShader(doc, [&](host::BaseShader& shader) {
    if (BitmapFileOf(shader) == name) SetBitmapFile(shader, to);
  });
}

// Writes one file under its name or the next free one, which is the result.
Result<std::string> WriteOne(FileSystem& files, const host::BaseDocument& doc,
                             const EmbeddedFile& file, const std::string& folder) {
  std::string name = file.name;
  for (unsigned number = 2; number < kMostNames; ++number) {
    // A name that another embedded file has is left to it, even while that is not written.
    const bool isOthers = name != file.name && FindEmbeddedFile(doc, name) != nullptr;
    const Place place = isOthers ? Place::Taken : Look(files, folder + "/" + name, *file.bytes);
    if (place == Place::Same) return name;
    if (place == Place::Free) {
      const Status written = files.ReplaceFile(folder + "/" + name, *file.bytes);
      return written ? Result<std::string>(name) : Result<std::string>(written);
    }
    name = NumberedFileName(SafeFileName(file.name), number);
  }
  return Result<std::string>::Failure("There is no free name for \"" + file.name + "\" in \"" +
                                      folder + "\".");
}

}  // namespace

Status WriteEmbeddedTextures(FileSystem& files, host::BaseDocument& doc,
                             const std::string& folder) {
  const EmbeddedFiles embedded = EmbeddedFilesOf(doc);
  if (embedded.empty()) return {};
  const std::string target = folder + "/tex";
  if (Status made = files.MakeFolder(target); !made) return made;
  for (const EmbeddedFile& file : embedded) {
    const Result<std::string> name = WriteOne(files, doc, file, target);
    if (!name) return name.GetStatus();
    if (name.Value() == file.name) continue;
    RenameEmbeddedFile(doc, file.name, name.Value());
    RenameInShaders(doc, file.name, name.Value());
  }
  return {};
}

}  // namespace engine
