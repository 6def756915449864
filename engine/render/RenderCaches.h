// RenderCaches: what is expensive to make and stays useful from picture to picture: search
// structures of meshes, generated primitives and decoded textures. The programs keep one while they
// run; the pictures made with it share what it holds, also after it is gone. What a scene is read
// with (PrimitiveOf, FileAt, FileIn) belongs to the thread that owns the documents; what is made of
// it (GeometryOf, TextureOf) any thread may ask for, several at a time.
#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "engine/outside/FileSystem.h"
#include "engine/render/Geometry.h"
#include "engine/render/Texture.h"
#include "host/BaseContainer.h"

namespace engine {

class RenderCaches {
 public:
  // Decoded textures that no picture uses any more are given up beyond this many bytes.
  static constexpr std::size_t kMostTextureBytes = std::size_t{1} << 30;

  RenderCaches();
  RenderCaches(const RenderCaches&) = delete;
  RenderCaches& operator=(const RenderCaches&) = delete;
  ~RenderCaches();
  // One that lives as long as the process, for renders without a home of their own.
  static RenderCaches& Shared();

  RTCDevice Device() const { return device_; }

  // The mesh of a primitive: the same one for the same type and sizes while any picture or this
  // cache holds it.
  std::shared_ptr<const Mesh> PrimitiveOf(host::LONG type, const host::BaseContainer& data);
  // The image file at a path, read again when its size or date have changed.
  std::shared_ptr<TextureFile> FileAt(FileSystem& files, const std::string& path);
  // Remembers that a file was looked for at a path and is not there.
  void Missed(const std::string& path);
  // Forgets the files whose size or date have changed since they were read, and those missed that
  // are there now. Whether there were any: then scenes are worth reading again. It looks at each
  // file once.
  bool ForgetChangedFiles(FileSystem& files);
  // As FileAt for a file held in memory, told by the bytes' identity.
  std::shared_ptr<TextureFile> FileIn(const std::shared_ptr<const std::string>& bytes);
  // Forgets the textures used longest ago beyond the bound. Called after each scene was read.
  void TidyTextures();

  // The geometry of a mesh, made when it is asked for the first time and kept while the mesh lives;
  // null when nothing of it can be seen.
  std::shared_ptr<const Geometry> GeometryOf(const std::shared_ptr<const Mesh>& mesh);
  // The texture in a file, decoded when it is asked for the first time. Null, with the reason in
  // `*problem`, when it cannot be read; that is remembered, too.
  std::shared_ptr<const Texture> TextureOf(TextureFile& file, std::string* problem);
  // Forgets all geometry, as when memory was too short for some: it is made anew when asked for.
  void ForgetGeometry();
  // Forgets geometry whose mesh is gone. Called after each scene was prepared.
  void TidyGeometry();

  // How often something was made: for tests and for the curious.
  struct Work {
    std::size_t geometries = 0;
    std::size_t textures = 0;
  };
  Work WorkDone() const { return {geometriesMade_, texturesMade_}; }

 private:
  // One mesh's geometry; who comes while it is being made waits for it.
  struct CachedGeometry {
    std::mutex making;
    bool isMade = false;
    std::weak_ptr<const Mesh> mesh;
    std::shared_ptr<const Geometry> geometry;
  };
  struct CachedFile {
    FileStamp stamp;                          // of a file
    std::weak_ptr<const std::string> source;  // of bytes in memory
    std::shared_ptr<TextureFile> file;
    std::uint64_t usedAt = 0;
  };
  using PrimitiveKey = std::vector<double>;  // type and sizes

  // A path, or the address of bytes in memory.
  using FileKey = std::pair<std::string, const std::string*>;

  std::shared_ptr<CachedGeometry> SlotOf(const std::shared_ptr<const Mesh>& mesh);

  RTCDevice device_;
  std::mutex geometriesLock_;
  std::unordered_map<const Mesh*, std::shared_ptr<CachedGeometry>> geometries_;
  std::map<PrimitiveKey, std::shared_ptr<const Mesh>> primitives_;
  std::map<FileKey, CachedFile> files_;
  std::set<std::string> missed_;
  std::uint64_t clock_ = 0;
  std::atomic<std::size_t> geometriesMade_{0};
  std::atomic<std::size_t> texturesMade_{0};
};

}  // namespace engine
