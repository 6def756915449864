#include "engine/publish/GltfFile.h"

#include <cstdio>

#include "engine/publish/GltfText.h"
#include "engine/scene/EmbeddedFiles.h"

namespace engine {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::uint32_t kMagic = 0x46546C67;      // "glTF"
constexpr std::uint32_t kJsonChunk = 0x4E4F534A;  // "JSON"
constexpr std::uint32_t kBytesChunk = 0x004E4942;

void AppendWord(std::string& to, std::uint64_t number) {
  for (unsigned shift = 0; shift < 32; shift += 8) to += static_cast<char>(number >> shift & 0xFF);
}

// The parts put into one object.
std::string TextOf(const GltfParts& parts, const std::string& ofBuffer) {
  std::string text = parts.head.dump(-1, ' ', false, Json::error_handler_t::replace);
  text.pop_back();
  if (!parts.nodes.empty()) text.append(",\"nodes\":[").append(parts.nodes).append("]");
  if (!parts.meshes.empty()) text.append(",\"meshes\":[").append(parts.meshes).append("]");
  return text.append(ofBuffer).append("}");
}

Status CheckSize(std::uint64_t size, const PublishOptions& options) {
  if (size <= options.largest) return {};
  return Status::Failure(
      "It is larger than the 4 GiB that a glTF file can hold. Publish it in parts, or hide what is "
      "not needed.");
}

Result<PublishedScene> Binary(const GltfParts& parts, const GltfBuffer& buffer,
                              const PublishOptions& options) {
  const std::uint64_t bytes = buffer.Size(true);
  if (Status fits = CheckSize(bytes, options); !fits) return fits;
  std::string json = TextOf(parts, buffer.Members(true, ""));
  json.append(-json.size() % 4, ' ');
  const std::uint64_t size = 12 + 8 + json.size() + (bytes == 0 ? 0 : 8 + bytes);
  if (Status fits = CheckSize(size, options); !fits) return fits;
  PublishedScene scene;
  std::string& file = scene.bytes;
  file.reserve(size);
  AppendWord(file, kMagic);
  AppendWord(file, 2);
  AppendWord(file, size);
  AppendWord(file, json.size());
  AppendWord(file, kJsonChunk);
  file += json;
  if (bytes == 0) return scene;
  AppendWord(file, bytes);
  AppendWord(file, kBytesChunk);
  buffer.AppendTo(file, true);
  return scene;
}

}  // namespace

Result<PublishedScene> FinishGltfFile(GltfParts parts, const GltfBuffer& buffer,
                                      const PublishOptions& options) {
  return Binary(parts, buffer, options);
}

}  // namespace engine
