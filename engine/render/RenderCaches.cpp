#include "engine/render/RenderCaches.h"

#include "engine/render/Primitives.h"
#include "host/Parameters.h"

namespace engine {

namespace {

// Generated meshes are small and many may be tried out while sizes are dragged.
constexpr std::size_t kMostPrimitives = 4096;

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

std::shared_ptr<const Geometry> RenderCaches::GeometryOf(const std::shared_ptr<const Mesh>& mesh) {
  if (!mesh || !device_) return nullptr;
  CachedGeometry& cached = geometries_[mesh.get()];
  // A new mesh may live at the address of one that is gone.
  if (cached.mesh.lock() != mesh) {
    cached = {mesh, MakeGeometry(device_, *mesh)};
    ++work_.geometries;
  }
  return cached.geometry;
}

std::shared_ptr<const Mesh> RenderCaches::PrimitiveOf(host::LONG type, const host::BaseContainer& data) {
  std::vector<double> key = KeyOf(type, data);
  if (!IsOrdered(key)) return nullptr;
  if (primitives_.size() > kMostPrimitives) primitives_.clear();
  std::shared_ptr<const Mesh>& mesh = primitives_[std::move(key)];
  if (!mesh) mesh = std::make_shared<const Mesh>(MakePrimitive(type, data));
  return mesh;
}

RenderCaches::CachedTexture RenderCaches::Decode(std::string_view bytes) {
  CachedTexture decoded;
  ++work_.textures;
  Result<Image> image = DecodeImage(bytes);
  if (image) {
    decoded.texture = std::make_shared<const Texture>(image.Take());
  } else {
    decoded.problem = image.Message();
  }
  return decoded;
}

RenderCaches::CachedTexture RenderCaches::Load(const std::string& path) {
  const Result<std::string> bytes = Outside::Current().ReadFile(path, kLargestImageBytes);
  CachedTexture loaded;
  if (bytes) loaded = Decode(bytes.Value());
  if (!bytes) loaded.problem = bytes.Message();
  return loaded;
}

std::shared_ptr<const Texture> RenderCaches::Use(CachedTexture& cached, std::string* problem) {
  cached.usedAt = ++clock_;
  *problem = cached.problem;
  return cached.texture;
}

std::shared_ptr<const Texture> RenderCaches::TextureAt(const std::string& path, std::string* problem) {
  const FileStamp stamp = Outside::Current().Stamp(path);
  const auto [it, isNew] = textures_.try_emplace({path, nullptr});
  if (isNew || !(it->second.stamp == stamp)) it->second = Load(path);
  it->second.stamp = stamp;
  return Use(it->second, problem);
}

std::shared_ptr<const Texture> RenderCaches::TextureIn(const std::shared_ptr<const std::string>& bytes, std::string* problem) {
  const auto [it, isNew] = textures_.try_emplace({std::string(), bytes.get()});
  // New bytes may lie at the address of others that are gone.
  if (isNew || it->second.source.lock() != bytes) it->second = Decode(*bytes);
  it->second.source = bytes;
  return Use(it->second, problem);
}

bool RenderCaches::TakeError() {
  if (rtcGetDeviceError(device_) == RTC_ERROR_NONE) return false;
  geometries_.clear();
  return true;
}

void RenderCaches::Tidy() {
  std::erase_if(geometries_, [](const auto& entry) { return entry.second.mesh.expired(); });
  std::map<std::uint64_t, TextureKey> byUse;
  std::size_t bytes = 0;
  for (const auto& [key, cached] : textures_) {
    if (!cached.texture) continue;
    bytes += cached.texture->Bytes();
    if (cached.texture.use_count() == 1) byUse[cached.usedAt] = key;
  }
  for (auto it = byUse.begin(); it != byUse.end() && bytes > kMostTextureBytes; ++it) {
    bytes -= textures_[it->second].texture->Bytes();
    textures_.erase(it->second);
  }
}

}  // namespace engine
