#include "engine/import/TextureCollection.h"

#include <map>
#include <string_view>
#include <unordered_map>

#include "engine/scene/EmbeddedFiles.h"
#include "engine/scene/ShaderWalk.h"
#include "engine/scenefile/FileAsRead.h"

namespace engine {
namespace {

constexpr unsigned kMostNames = 1000;

class Collection {
 public:
  Collection(const Services& services, host::BaseDocument& doc, const std::string& folder)
      : services_(services),
        doc_(doc),
        folder_(folder),
        target_(folder + "/" + kTextureFolders[0]) {}

  Result<std::vector<std::string>> Run() {
    std::vector<host::BaseShader*> shaders;
    ForEachBitmapShader(doc_, [&](host::BaseShader& shader) {
      if (LiesElsewhere(BitmapFileOf(shader))) shaders.push_back(&shader);
    });
    for (std::size_t i = 0; i < shaders.size(); ++i) {
      const double done = static_cast<double>(i) / static_cast<double>(shaders.size());
      if (!services_.person.Progress(done, "Collecting textures"))
        return Status::Failure("The collecting of textures was stopped.");
      const Result<std::string> copy = CopyOf(BitmapFileOf(*shaders[i]));
      if (!copy) return copy.GetStatus();
      SetBitmapFile(*shaders[i], copy.Value());
    }
    return std::move(copied_);
  }

 private:
  bool LiesElsewhere(const std::string& file) const {
    return !file.empty() && file.front() == '/' && file.rfind(folder_ + "/", 0) != 0 &&
           FindEmbeddedFile(doc_, file) == nullptr && services_.files.Kind(file) == FileKind::File;
  }

  Result<std::string> CopyOf(const std::string& file) {
    const auto known = bySource_.find(file);
    if (known != bySource_.end()) return known->second;
    Result<std::string> bytes = services_.files.ReadFile(file);
    if (!bytes) return bytes;
    const std::string_view whole = bytes.Value();
    // By size and 64 bits of hash, which no two pictures share by chance.
    std::string& copy = byContent_[{whole.size(), HashOfContent({&whole, 1})}];
    if (copy.empty()) {
      Result<std::string> placed = Place(file, bytes.Value());
      if (!placed) return placed;
      copy = placed.Take();
    }
    bySource_.emplace(file, copy);
    return copy;
  }

  Result<std::string> Place(const std::string& file, const std::string& bytes) {
    if (Status made = services_.files.MakeFolder(target_); !made) return made;
    const std::string safe = SafeFileName(file);
    std::string name = safe;
    for (unsigned number = 2; number < kMostNames; ++number) {
      const std::string path = target_ + "/" + name;
      const FileKind kind = services_.files.Kind(path);
      if (kind == FileKind::Missing && FindEmbeddedFile(doc_, name) == nullptr) {
        const Status written = services_.files.ReplaceFile(path, bytes);
        if (!written) return written;
        copied_.push_back(path);
        return path;
      }
      const Result<std::string> there = kind == FileKind::File ? services_.files.ReadFile(path)
                                                               : Result<std::string>(std::string());
      if (kind == FileKind::File && there && there.Value() == bytes) return path;
      name = NumberedFileName(safe, number);
    }
    return Result<std::string>::Failure("There is no free name for \"" + file + "\" in \"" +
                                        target_ + "\".");
  }

  const Services& services_;
  host::BaseDocument& doc_;
  const std::string folder_;
  const std::string target_;
  std::unordered_map<std::string, std::string> bySource_;
  std::map<std::pair<std::size_t, std::uint64_t>, std::string> byContent_;
  std::vector<std::string> copied_;
};

}  // namespace

Result<std::vector<std::string>> CollectTextures(const Services& services, host::BaseDocument& doc,
                                                 const std::string& folder) {
  return Collection(services, doc, folder).Run();
}

}  // namespace engine
