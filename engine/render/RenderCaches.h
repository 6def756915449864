// RenderCaches: what is expensive to make and stays useful from picture to picture: search structures of meshes, generated
// primitives and decoded textures. The programs keep one while they run; the pictures made with it share what it holds, also
// after it is gone. One thread at a time.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "engine/outside/Outside.h"
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

  // The geometry of a mesh, made when it is asked for the first time and kept while the mesh lives; null when nothing of it can
  // be seen.
  std::shared_ptr<const Geometry> GeometryOf(const std::shared_ptr<const Mesh>& mesh);
  // The mesh of a primitive: the same one for the same type and sizes while any picture or this cache holds it.
  std::shared_ptr<const Mesh> PrimitiveOf(host::LONG type, const host::BaseContainer& data);
  // The texture in a file, read again when size or date of the file have changed. Null, with the reason in `*problem`, when it
  // cannot be read; that is remembered, too.
  std::shared_ptr<const Texture> TextureAt(const std::string& path, std::string* problem);
  // The same for a file held in memory, told by the bytes' identity.
  std::shared_ptr<const Texture> TextureIn(const std::shared_ptr<const std::string>& bytes, std::string* problem);

  // Whether the ray tracer complained since the last call (it does when memory is short). All geometry is forgotten then.
  bool TakeError();
  // Forgets meshes that are gone and the textures used longest ago beyond the bound. Called after each picture was prepared.
  void Tidy();

  // How often something was made: for tests and for the curious.
  struct Work {
    std::size_t geometries = 0;
    std::size_t textures = 0;
  };
  const Work& WorkDone() const { return work_; }

 private:
  struct CachedGeometry {
    std::weak_ptr<const Mesh> mesh;
    std::shared_ptr<const Geometry> geometry;
  };
  struct CachedTexture {
    FileStamp stamp;                          // of a file
    std::weak_ptr<const std::string> source;  // of bytes in memory
    std::shared_ptr<const Texture> texture;
    std::string problem;
    std::uint64_t usedAt = 0;
  };
  using PrimitiveKey = std::vector<double>;  // type and sizes

  // By path, or by the address of bytes in memory.
  using TextureKey = std::pair<std::string, const std::string*>;

  CachedTexture Load(const std::string& path);
  CachedTexture Decode(std::string_view bytes);
  std::shared_ptr<const Texture> Use(CachedTexture& cached, std::string* problem);

  RTCDevice device_;
  std::unordered_map<const Mesh*, CachedGeometry> geometries_;
  std::map<PrimitiveKey, std::shared_ptr<const Mesh>> primitives_;
  std::map<TextureKey, CachedTexture> textures_;
  std::uint64_t clock_ = 0;
  Work work_;
};

}  // namespace engine
