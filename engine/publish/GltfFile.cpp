#include "engine/publish/GltfFile.h"

#include <xxhash.h>

#include <array>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <map>

#include "engine/publish/GltfText.h"

namespace engine {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::uint32_t kMagic = 0x46546C67;      // "glTF"
constexpr std::uint32_t kJsonChunk = 0x4E4F534A;  // "JSON"
constexpr std::uint32_t kBytesChunk = 0x004E4942;
constexpr std::size_t kHeadSize = 20;  // bytes before the text of a binary file
constexpr std::size_t kHashDigits = 16;

void AppendWord(std::string& to, std::uint64_t number) {
  for (unsigned shift = 0; shift < 32; shift += 8) to += static_cast<char>(number >> shift & 0xFF);
}

// Room for all that is appended keeps a long text from being copied as it grows.
void Reserve(std::string& file, const GltfParts& parts, std::uint64_t further) {
  constexpr std::size_t kHead = 1 << 16;
  file.reserve(kHead + parts.nodes.TextSize() + parts.meshes.Text().size() + further);
}

// The parts put into one object.
void AppendText(std::string& to, const GltfParts& parts, const std::string& ofBuffer) {
  to += parts.head.dump(-1, ' ', false, Json::error_handler_t::replace);
  to.pop_back();
  if (parts.nodes.TextSize() > 0) {
    to += ",\"nodes\":[";
    parts.nodes.AppendText(to);
    to += ']';
  }
  if (!parts.meshes.Text().empty())
    to.append(",\"meshes\":[").append(parts.meshes.Text()).append("]");
  to.append(ofBuffer).append("}");
}

Status CheckSize(std::uint64_t size, const PublishOptions& options) {
  if (size <= options.largest) return {};
  return Status::Failure(
      "It is larger than the 4 GiB that a glTF file can hold. Publish it in parts, or hide what is "
      "not needed.");
}

Result<PublishedScene> Binary(const GltfParts& parts, const GltfBuffer& buffer,
                              const PublishOptions& options) {
  // Checked before anything is put together: gigabytes need not be written to find that they are
  // too many.
  const std::uint64_t bytes = buffer.Size(true);
  if (Status fits = CheckSize(bytes, options); !fits) return fits;
  PublishedScene scene;
  std::string& file = scene.bytes;
  const std::string ofBuffer = buffer.Members(true, "");
  Reserve(file, parts, ofBuffer.size() + bytes);
  file.assign(kHeadSize, '\0');
  AppendText(file, parts, ofBuffer);
  // Chunks end at multiples of four; that of the text is filled up with blanks.
  file.append(-file.size() % 4, ' ');
  const std::uint64_t json = file.size() - kHeadSize;
  const std::uint64_t size = file.size() + (bytes == 0 ? 0 : 8 + bytes);
  if (Status fits = CheckSize(size, options); !fits) return fits;
  std::string head;
  for (const std::uint64_t word :
       {std::uint64_t{kMagic}, std::uint64_t{2}, size, json, std::uint64_t{kJsonChunk}})
    AppendWord(head, word);
  file.replace(0, kHeadSize, head);
  if (bytes == 0) return scene;
  AppendWord(file, bytes);
  AppendWord(file, kBytesChunk);
  buffer.AppendTo(file, true);
  return scene;
}

// A name with the hash of the content before its suffix. A name that goes with the content lets
// files of several states share pictures and bytes.
std::string NamedByContent(const std::string& begin, std::string_view bytes, const char* suffix) {
  std::array<char, kHashDigits + 1> hash;
  std::snprintf(hash.data(), hash.size(), "%016llx",
                static_cast<unsigned long long>(XXH3_64bits(bytes.data(), bytes.size())));
  return begin + "." + hash.data() + suffix;
}

// A file name as an address (RFC 3986, section 2.1). All but the unreserved characters are coded.
std::string AddressOf(const std::string& name) {
  std::string address;
  for (const char letter : name) {
    const auto byte = static_cast<unsigned char>(letter);
    if (byte < 0x80 && (std::isalnum(byte) != 0 || std::strchr("-._~", letter) != nullptr)) {
      address += letter;
      continue;
    }
    std::array<char, 4> code;
    std::snprintf(code.data(), code.size(), "%%%02X", static_cast<unsigned>(byte));
    address += code.data();
  }
  return address;
}

// The name of a picture without the suffix that it had, which need not be that of its bytes.
PublishedFile PictureFile(const Json& image, const std::string& bytes) {
  const std::string name = image.value("name", "texture");
  const std::string type = image.value("mimeType", "");
  const char* suffix = type == "image/jpeg" ? ".jpg" : type == "image/webp" ? ".webp" : ".png";
  const std::string begin = name.substr(0, name.find_last_of('.'));
  return {NamedByContent(begin.empty() ? "texture" : begin, bytes, suffix), bytes};
}

Result<PublishedScene> Text(GltfParts& parts, const GltfBuffer& buffer,
                            const PublishOptions& options) {
  PublishedScene scene;
  std::map<std::string, std::string> addresses;  // by hash and suffix: equal pictures are one file
  const auto add = [&](PublishedFile file) {
    const std::string content = file.name.substr(file.name.find_last_of('.') - kHashDigits);
    const auto [place, isNew] = addresses.try_emplace(content, AddressOf(file.name));
    if (isNew) scene.beside.push_back(std::move(file));
    return place->second;
  };
  if (parts.head.contains("images")) {
    for (Json& image : parts.head["images"]) {
      const std::size_t place = image["bufferView"].get<std::size_t>();
      image["uri"] = add(PictureFile(image, buffer.Pictures()[place]));
      image.erase("bufferView");
    }
  }
  if (Status fits = CheckSize(buffer.Size(false), options); !fits) return fits;
  std::string bytes;
  bytes.reserve(buffer.Size(false));
  buffer.AppendTo(bytes, false);
  std::string address;
  if (!bytes.empty()) {
    std::string name = NamedByContent(options.beside, bytes, ".bin");
    address = add({std::move(name), std::move(bytes)});
  }
  Reserve(scene.bytes, parts, 0);
  AppendText(scene.bytes, parts, buffer.Members(false, address));
  if (Status fits = CheckSize(scene.bytes.size(), options); !fits) return fits;
  return scene;
}

}  // namespace

Result<PublishedScene> FinishGltfFile(GltfParts parts, const GltfBuffer& buffer,
                                      const PublishOptions& options) {
  return options.beside.empty() ? Binary(parts, buffer, options) : Text(parts, buffer, options);
}

}  // namespace engine
