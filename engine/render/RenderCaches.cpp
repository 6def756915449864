#include "engine/render/RenderCaches.h"

#include "engine/render/Primitives.h"
#include "host/Parameters.h"

namespace engine {

namespace {

// Generated meshes are small and many may be tried out while sizes are dragged.
constexpr std::size_t kMostPrimitives = 4096;
constexpr std::size_t kMostMissed = 10000;

std::vector<double> KeyOf(host::LONG type, const host::BaseContainer& data) {
  const host::Vector size = data.GetVector(host::PRIM_SIZE);
  return {static_cast<double>(type),
          size.x,
          size.y,
          size.z,
          data.GetReal(host::PRIM_RADIUS),
          data.GetReal(host::PRIM_RADIUS2),
          data.GetReal(host::PRIM_HEIGHT),
          data.GetReal(host::PRIM_WIDTH),
          data.GetReal(host::PRIM_SEGMENTS, 36)};
}

// NaN has no place in an ordered map.
bool IsOrdered(const std::vector<double>& key) {
  return std::none_of(key.begin(), key.end(), [](double number) { return std::isnan(number); });
}

}  // namespace

RenderCaches::RenderCaches() : device_(rtcNewDevice(nullptr)) {}

RenderCaches::~RenderCaches() {
  geometries_.clear();
  if (device_) rtcReleaseDevice(device_);
}

RenderCaches& RenderCaches::Shared() {
  static RenderCaches caches;
  return caches;
}

std::shared_ptr<RenderCaches::CachedGeometry> RenderCaches::SlotOf(
    const std::shared_ptr<const Mesh>& mesh) {
  const std::lock_guard lock(geometriesLock_);
  std::shared_ptr<CachedGeometry>& slot = geometries_[mesh.get()];
  // A new mesh may live at the address of one that is gone.
  if (!slot || slot->mesh.lock() != mesh) {
    slot = std::make_shared<CachedGeometry>();
    slot->mesh = mesh;
  }
  return slot;
}

std::shared_ptr<const Geometry> RenderCaches::GeometryOf(const std::shared_ptr<const Mesh>& mesh) {
  if (!mesh || !device_) return nullptr;
  const std::shared_ptr<CachedGeometry> slot = SlotOf(mesh);
  const std::lock_guard lock(slot->making);
  if (!slot->isMade) {
    slot->geometry = MakeGeometry(device_, *mesh);
    slot->isMade = true;
    ++geometriesMade_;
  }
  return slot->geometry;
}

std::shared_ptr<const Mesh> RenderCaches::PrimitiveOf(host::LONG type,
                                                      const host::BaseContainer& data) {
  std::vector<double> key = KeyOf(type, data);
  if (!IsOrdered(key)) return nullptr;
  if (primitives_.size() > kMostPrimitives) primitives_.clear();
  std::shared_ptr<const Mesh>& mesh = primitives_[std::move(key)];
  if (!mesh) mesh = std::make_shared<const Mesh>(MakePrimitive(type, data));
  return mesh;
}

std::shared_ptr<TextureFile> RenderCaches::FileAt(FileSystem& files, const std::string& path) {
  const FileStamp stamp = files.Stamp(path);
  CachedFile& cached = files_[{path, nullptr}];
  if (!cached.file || !(cached.stamp == stamp)) {
    Result<std::string> bytes = files.ReadFile(path, kLargestImageBytes);
    cached.file =
        bytes ? std::make_shared<TextureFile>(std::make_shared<const std::string>(bytes.Take()))
              : std::make_shared<TextureFile>(bytes.GetStatus());
  }
  cached.stamp = stamp;
  cached.usedAt = ++clock_;
  return cached.file;
}

void RenderCaches::Missed(const std::string& path) {
  if (missed_.size() >= kMostMissed) missed_.clear();
  missed_.insert(path);
}

bool RenderCaches::ForgetChangedFiles(FileSystem& files) {
  const auto changed = std::erase_if(files_, [&](const auto& entry) {
    const std::string& path = entry.first.first;
    return !path.empty() && !(files.Stamp(path) == entry.second.stamp);
  });
  return changed + std::erase_if(missed_,
                                 [&](const std::string& path) {
                                   return files.Kind(path) == FileKind::File;
                                 }) >
         0;
}

std::shared_ptr<TextureFile> RenderCaches::FileIn(const std::shared_ptr<const std::string>& bytes) {
  CachedFile& cached = files_[{std::string(), bytes.get()}];
  // New bytes may lie at the address of others that are gone.
  if (!cached.file || cached.source.lock() != bytes)
    cached.file = std::make_shared<TextureFile>(bytes);
  cached.source = bytes;
  cached.usedAt = ++clock_;
  return cached.file;
}

std::shared_ptr<const Texture> RenderCaches::TextureOf(TextureFile& file, std::string* problem) {
  bool decoded = false;
  std::shared_ptr<const Texture> texture = file.Get(problem, &decoded);
  texturesMade_ += decoded;
  return texture;
}

void RenderCaches::ForgetGeometry() {
  const std::lock_guard lock(geometriesLock_);
  geometries_.clear();
}

void RenderCaches::TidyGeometry() {
  const std::lock_guard lock(geometriesLock_);
  std::erase_if(geometries_, [](const auto& entry) { return entry.second->mesh.expired(); });
}

void RenderCaches::TidyTextures() {
  std::map<std::uint64_t, FileKey> byUse;
  std::size_t bytes = 0;
  for (const auto& [key, cached] : files_) {
    bytes += cached.file->Bytes();
    if (cached.file->IsIdle()) byUse[cached.usedAt] = key;
  }
  for (auto it = byUse.begin(); it != byUse.end() && bytes > kMostTextureBytes; ++it) {
    bytes -= files_[it->second].file->Bytes();
    files_.erase(it->second);
  }
}

}  // namespace engine
