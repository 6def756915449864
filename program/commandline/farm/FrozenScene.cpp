// A copy of the scene that nobody changes any more: a folder named by its content, with the
// textures in it under names of their own. It is made beside its place and renamed when it is
// whole, so that a folder of that name is always complete.
#include "program/commandline/farm/FrozenScene.h"

#include <unistd.h>

#include <unordered_map>

#include "engine/render/TextureSearch.h"
#include "engine/scene/EmbeddedFiles.h"
#include "engine/scene/ShaderWalk.h"
#include "engine/scenefile/SceneFile.h"
#include "program/pictures/PictureNames.h"
#include "program/pictures/PictureRecord.h"

namespace commandline {

using engine::Result;
using engine::Status;

namespace {

// The scene's own name: sheets and pages have it for a title.
std::string FileOf(const std::string& title) {
  return "/" + pictures::SafeFileName(title) + ".c4d";
}

std::string FolderOf(const std::string& farm, const std::string& title,
                     const std::string& content) {
  return farm + "/scenes/" + pictures::SafeFileName(title) + "-" + content;
}

// Copies textures into one folder, each content once, and lets the scene's shaders name the copies.
class TextureGathering {
 public:
  TextureGathering(engine::FileSystem& files, const host::BaseDocument& doc, std::string folder)
      : files_(files), doc_(doc), folder_(std::move(folder)) {}

  Status Gather() {
    Status status;
    engine::ForEachBitmapShader(doc_, [&](host::BaseShader& shader) {
      if (!status) return;
      const std::string name = engine::BitmapFileOf(shader);
      auto copied = Copy(name);
      if (!copied) {
        status = copied.GetStatus();
      } else if (!copied.Value().empty()) {
        engine::SetBitmapFile(shader, copied.Value());
      }
    });
    return status;
  }

 private:
  // The name of the copy; empty for a texture that is not there. Each name is copied once; two
  // names of one content become one file.
  Result<std::string> Copy(const std::string& name) {
    const auto known = byName_.find(name);
    if (known != byName_.end()) return known->second;
    std::string bytes;
    if (const std::string* embedded = engine::FindEmbeddedFile(doc_, name)) {
      bytes = *embedded;
    } else {
      const std::string file =
          engine::FindTexture(files_, name, doc_.GetDocumentPath().GetString().ToUtf8());
      if (file.empty()) return byName_[name] = "";
      auto read = files_.ReadFile(file);
      if (!read) return read.GetStatus();
      bytes = read.Take();
    }
    // The hash in front: no two textures have one name.
    const std::string copy = pictures::HashOfTexts({bytes}) + " " + engine::SafeFileName(name);
    if (Status made = files_.MakeFolders(folder_); !made) return made;
    if (Status written = files_.ReplaceFile(folder_ + "/" + copy, bytes); !written) return written;
    return byName_[name] = copy;
  }

  engine::FileSystem& files_;
  const host::BaseDocument& doc_;
  std::string folder_;
  std::unordered_map<std::string, std::string> byName_;
};

// Textures first: saving writes the names of the copies into the scene.
Status CopyInto(Session& session, const std::string& folder, const std::string& file) {
  engine::FileSystem& files = session.Files();
  host::BaseDocument& doc = session.Document();
  if (Status made = files.MakeFolders(folder); !made) return made;
  TextureGathering textures(files, doc, folder + "/" + engine::kTextureFolders.front());
  if (Status gathered = textures.Gather(); !gathered) return gathered;
  return engine::SaveSceneFile(session.GetServices(), doc, folder + file);
}

}  // namespace

std::string FrozenPath(const std::string& farm, const std::string& title,
                       const std::string& content) {
  return FolderOf(farm, title, content) + FileOf(title);
}

Result<std::string> FreezeScene(Session& session, const std::string& farm, const std::string& title,
                                const std::string& content, bool* copied) {
  engine::FileSystem& files = session.Files();
  const std::string folder = FolderOf(farm, title, content);
  const std::string file = FileOf(title);
  *copied = files.Kind(folder + file) != engine::FileKind::File;
  if (!*copied) return folder + file;
  const std::string part = folder + ".part" + std::to_string(getpid());
  Status status = CopyInto(session, part, file);
  if (status) status = files.Rename(part, folder);
  // Somebody else may have been quicker with the same.
  const bool isThere = files.Kind(folder + file) == engine::FileKind::File;
  if (!status) (void)files.RemoveFolder(part).Ok();
  if (!status && !isThere) return status;
  return folder + file;
}

}  // namespace commandline
