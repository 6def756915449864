#include "engine/import/SceneReader.h"

#include <assimp/BaseImporter.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <malloc.h>

#include <algorithm>
#include <assimp/Importer.hpp>
#include <assimp/ProgressHandler.hpp>
#include <memory>
#include <set>

#include "engine/import/FolderFiles.h"
#include "engine/import/GltfReader.h"
#include "engine/import/ImportedElements.h"
#include "engine/import/SceneConversion.h"
#include "engine/import/Skins.h"
#include "engine/outside/Confinement.h"
#include "host/Filename.h"

namespace engine {
namespace {

// Reading takes the first part of the whole.
constexpr double kReadingPart = 0.7;
constexpr float kSmoothingDegrees = 40;
constexpr const char* kStopped = "The import was stopped.";

class Progress : public Assimp::ProgressHandler {
 public:
  explicit Progress(const std::function<bool(double)>& tell) : tell_(tell) {}
  bool Update(float fraction) override {
    last_ = std::max(last_, static_cast<double>(std::clamp(fraction, 0.0f, 1.0f)));
    return tell_(last_ * kReadingPart);
  }

 private:
  const std::function<bool(double)>& tell_;
  double last_ = 0;
};

// Removes the other importers: they would be asked about a file that its own one refuses.
void KeepLoadersOf(const std::string& suffix, Assimp::Importer& importer) {
  std::vector<Assimp::BaseImporter*> others;
  for (std::size_t i = 0; i < importer.GetImporterCount(); ++i) {
    Assimp::BaseImporter* loader = importer.GetImporter(i);
    std::set<std::string> suffixes;
    loader->GetExtensionList(suffixes);
    if (suffixes.count(suffix) == 0) others.push_back(loader);
  }
  for (Assimp::BaseImporter* loader : others) {
    importer.UnregisterLoader(loader);
    delete loader;
  }
}

const char* SuffixOf(SourceFormat format) {
  switch (format) {
    case SourceFormat::Gltf:
      return "gltf";
    case SourceFormat::Glb:
      return "glb";
    case SourceFormat::Obj:
      return "obj";
    case SourceFormat::Fbx:
      return "fbx";
    default:
      return "dae";
  }
}

// The files belong to the importer.
FolderFiles& Configure(Assimp::Importer& importer, const std::string& path,
                       const std::function<bool(double)>& progress) {
  auto* files = new FolderFiles(path);
  KeepLoadersOf(SuffixOf(FormatOf(path)), importer);
  importer.SetIOHandler(files);
  importer.SetProgressHandler(new Progress(progress));
  // No meshes made up to show bones, no helper nodes for the parts of a transformation, and the
  // names that a person gave instead of ids.
  importer.SetPropertyBool(AI_CONFIG_IMPORT_NO_SKELETON_MESHES, true);
  importer.SetPropertyBool(AI_CONFIG_IMPORT_FBX_PRESERVE_PIVOTS, false);
  importer.SetPropertyBool(AI_CONFIG_IMPORT_COLLADA_USE_COLLADA_NAMES, true);
  importer.SetPropertyFloat(AI_CONFIG_PP_GSN_MAX_SMOOTHING_ANGLE, kSmoothingDegrees);
  return *files;
}

// glTF asks for flat faces where it gives no normals (glTF 1.0, "Meshes").
unsigned StepsFor(SourceFormat format) {
  const unsigned steps = aiProcess_Triangulate | aiProcess_SortByPType;
  return IsGltf(format) ? steps : steps | aiProcess_GenSmoothNormals;
}

std::string ReasonOf(const Assimp::Importer& importer) {
  const std::string reason = importer.GetErrorString();
  if (reason.rfind("No suitable reader", 0) == 0)
    return "The file is damaged, or of another kind than its suffix says.";
  return reason.empty() ? "The file cannot be read." : "The file cannot be read: " + reason;
}

// Owns what was read, and leaves freeing it to the end of the process, which is near: taking apart
// millions of small pieces is a tenth of the work. Where memory is short for what is still to be
// done, it is freed all the same.
template <class T>
class LeftToTheEnd {
 public:
  explicit LeftToTheEnd(std::unique_ptr<T> value) : value_(std::move(value)) {}
  LeftToTheEnd(const LeftToTheEnd&) = delete;
  LeftToTheEnd& operator=(const LeftToTheEnd&) = delete;
  ~LeftToTheEnd() {
    const struct mallinfo2 taken = ::mallinfo2();
    if (taken.uordblks + taken.hblkhd < MemoryLimit() / 4) (void)value_.release();
  }
  T& operator*() const { return *value_; }
  T* operator->() const { return value_.get(); }

 private:
  std::unique_ptr<T> value_;
};

using Answer = Result<std::vector<std::string>>;
using ProgressOfAll = std::function<bool(double)>;

Answer Converted(const aiScene& scene, const std::string& path, const SceneFacts& facts,
                 host::BaseDocument& doc, const ProgressOfAll& progress, Notes& notes) {
  const bool finished =
      SceneConversion(scene, FormatOf(path), facts, doc, notes).Convert([&](double fraction) {
        return progress(kReadingPart + (1 - kReadingPart) * fraction);
      });
  KeepImportedElements(doc, DescribeElements(doc, path.substr(path.rfind('/') + 1)));
  return finished ? Answer(notes.Sentences()) : Answer::Failure(kStopped);
}

// Reads a file with the importing library.
Answer ReadByLibrary(const std::string& path, SourceFormat format, host::BaseDocument& doc,
                     const ProgressOfAll& progress) {
  const LeftToTheEnd importer(std::make_unique<Assimp::Importer>());
  FolderFiles& files = Configure(*importer, path, progress);
  const aiScene* scene = importer->ReadFile(path, StepsFor(format));
  if (scene == nullptr || scene->mRootNode == nullptr) return Answer::Failure(ReasonOf(*importer));
  Notes notes;
  // The scene is the importer's, which is ours.
  BendSkins(const_cast<aiScene&>(*scene));
  const SceneFacts facts = GatherFacts(*scene, format, path, files, notes);
  return Converted(*scene, path, facts, doc, progress, notes);
}

Answer ReadGltfFile(GltfFile& file, const std::string& path, host::BaseDocument& doc,
                    const ProgressOfAll& progress, Notes& notes) {
  const LeftToTheEnd source(std::make_unique<GltfScene>(ReadGltf(
      file, path, [&](double fraction) { return progress(kReadingPart * fraction); }, notes)));
  if (!source->scene) return Answer::Failure(kStopped);
  return Converted(*source->scene, path, source->facts, doc, progress, notes);
}

}  // namespace

Result<std::vector<std::string>> ReadForeignScene(const std::string& path, host::BaseDocument& doc,
                                                  const std::function<bool(double)>& progress) {
  const SourceFormat format = FormatOf(path);
  if (format == SourceFormat::None)
    return Answer::Failure("The file's suffix is not one that is imported.");
  if (!IsGltf(format)) return ReadByLibrary(path, format, doc, progress);
  try {
    Notes notes;
    const LeftToTheEnd file(std::make_unique<GltfFile>(path, format == SourceFormat::Glb, notes));
    if (!file->IsVersion1()) return ReadGltfFile(*file, path, doc, progress, notes);
  } catch (const UnreadableFile& why) {
    return Answer::Failure(std::string("The file cannot be read: ") + why.what());
  }
  return ReadByLibrary(path, format, doc, progress);
}

}  // namespace engine
