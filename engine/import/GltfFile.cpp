// glTF 2.0, sections 3.6 (buffers) and 4.4 (binary files); EXT_meshopt_compression.
#include "engine/import/GltfFile.h"

#include <meshoptimizer.h>

#include <cstdint>

#include "engine/import/ForeignText.h"
#include "engine/import/PercentCode.h"

namespace engine {
namespace {

constexpr std::size_t kGlbHeadBytes = 12;
constexpr std::size_t kChunkHeadBytes = 8;
// "JSON" and "BIN" as four bytes, lowest first. Chunks of other kinds are passed over, as the
// format asks.
constexpr std::uint32_t kJsonChunk = 0x4E4F534A;
constexpr std::uint32_t kBinaryChunk = 0x004E4942;

std::uint32_t NumberOf4(std::string_view bytes, std::size_t at) {
  std::uint32_t number = 0;
  for (std::size_t i = 0; i < 4; ++i)
    number |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[at + i])) << (8 * i);
  return number;
}

int SixBits(char c) {
  if (c >= 'A' && c <= 'Z') return c - 'A';
  if (c >= 'a' && c <= 'z') return c - 'a' + 26;
  if (c >= '0' && c <= '9') return c - '0' + 52;
  // Also of the alphabet for addresses, which some programs write.
  if (c == '+' || c == '-') return 62;
  return c == '/' || c == '_' ? 63 : -1;
}

std::string Base64Decoded(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size() / 4 * 3 + 3);
  std::uint32_t gathered = 0;
  int bits = 0;
  for (const char c : text) {
    if (c == '=') break;
    const int six = SixBits(c);
    if (six < 0) throw UnreadableFile("the data in an address are no base64.");
    gathered = gathered << 6 | static_cast<std::uint32_t>(six);
    bits += 6;
    if (bits < 8) continue;
    bits -= 8;
    bytes.push_back(static_cast<char>(gathered >> bits & 0xFF));
  }
  return bytes;
}

// Parameters of a compressed buffer view, checked for what the decompressing library takes for
// granted.
struct Packing {
  std::size_t count;
  std::size_t stride;
  std::string mode;
  std::string filter;
};

bool FitsFilter(const Packing& packing) {
  if (packing.filter == "OCTAHEDRAL") return packing.stride == 4 || packing.stride == 8;
  if (packing.filter == "QUATERNION") return packing.stride == 8;
  if (packing.filter == "EXPONENTIAL") return packing.stride % 4 == 0;
  return packing.filter.empty() || packing.filter == "NONE";
}

Packing PackingOf(const Json& packing) {
  Packing result{Index(packing, "count", 0), Index(packing, "byteStride", 0), Text(packing, "mode"),
                 Text(packing, "filter")};
  const bool isVertices = result.mode == "ATTRIBUTES";
  const bool isIndices = result.mode == "INDICES" || result.mode == "TRIANGLES";
  const bool fits = isVertices ? result.stride > 0 && result.stride <= 256 &&
                                     result.stride % 4 == 0 && FitsFilter(result)
                               : isIndices && (result.stride == 2 || result.stride == 4) &&
                                     (result.mode != "TRIANGLES" || result.count % 3 == 0);
  constexpr std::size_t kMost = std::size_t{1} << 40;
  if (!fits || result.count > kMost)
    throw UnreadableFile("a buffer view is packed in a way that is not known here (" + result.mode +
                         " " + result.filter + ").");
  return result;
}

void ApplyFilter(const Packing& packing, std::string& data) {
  if (packing.filter == "OCTAHEDRAL")
    meshopt_decodeFilterOct(data.data(), packing.count, packing.stride);
  if (packing.filter == "QUATERNION")
    meshopt_decodeFilterQuat(data.data(), packing.count, packing.stride);
  if (packing.filter == "EXPONENTIAL")
    meshopt_decodeFilterExp(data.data(), packing.count, packing.stride);
}

}  // namespace

GltfFile::GltfFile(const std::string& path, bool isBinary, Notes& notes)
    : folder_(path.substr(0, path.rfind('/') + 1)), files_(path), bytes_(files_.ReadWhole(path)) {
  if (isBinary) {
    ReadBinary(notes);
  } else {
    ParseText(bytes_, notes);
    CheckVersion();
  }
}

void GltfFile::ReadBinary(Notes& notes) {
  if (bytes_.size() < kGlbHeadBytes + kChunkHeadBytes) throw UnreadableFile("it is cut off.");
  const std::uint32_t version = NumberOf4(bytes_, 4);
  isVersion1_ = version == 1;
  if (isVersion1_) return;
  if (version != 2)
    throw UnreadableFile("it is of version " + std::to_string(version) + " of glTF.");
  bool hasText = false;
  for (std::size_t at = kGlbHeadBytes; at + kChunkHeadBytes <= bytes_.size();) {
    const std::size_t length = NumberOf4(bytes_, at);
    const std::uint32_t kind = NumberOf4(bytes_, at + 4);
    at += kChunkHeadBytes;
    if (length > bytes_.size() - at) throw UnreadableFile("it is cut off.");
    const std::string_view chunk = std::string_view(bytes_).substr(at, length);
    if (kind == kJsonChunk && !hasText) ParseText(chunk, notes);
    if (kind == kBinaryChunk && chunk_.empty()) chunk_ = chunk;
    hasText = hasText || kind == kJsonChunk;
    at += length;
  }
  if (!hasText) throw UnreadableFile("its description is missing.");
  CheckVersion();
}

void GltfFile::ParseText(std::string_view text, Notes& notes) {
  // A chunk is padded, by some programs with zeros.
  while (!text.empty() && text.back() == '\0') text.remove_suffix(1);
  top_ = Json::parse(text, nullptr, false);
  if (top_.is_discarded()) {
    // The parser refuses a whole file for one name in another encoding.
    top_ = Json::parse(Utf8Of(text), nullptr, false);
    if (!top_.is_discarded()) notes.Add("Texts that are no UTF-8 were taken for Latin-1.");
  }
  if (!top_.is_object()) throw UnreadableFile("its description is no JSON, or it is cut off.");
}

void GltfFile::CheckVersion() {
  // Version 1 was written as a number, too.
  const Json& written = Member(Object(top_, "asset"), "version");
  const std::string version = written.is_string() ? written.get<std::string>() : written.dump();
  // Files of version 1 need not name it, but have objects of names where version 2 has lists.
  isVersion1_ = version == "1" || version.rfind("1.", 0) == 0 || Member(top_, "nodes").is_object();
  if (!isVersion1_ && !written.is_null() && version != "2" && version.rfind("2.", 0) != 0)
    throw UnreadableFile("it is of version " + version + " of glTF.");
}

const Json& GltfFile::Entry(const char* list, std::size_t index) const {
  return Element(List(top_, list), index, list);
}

std::string GltfFile::ReadBeside(const std::string& address) {
  // As written first: a file may be called "50%20.bin".
  for (const std::string& name : {address, PercentDecoded(address), WithSlashes(address)}) {
    const std::string path = folder_ + name;
    if (name.find('\0') == std::string::npos && files_.Exists(path.c_str()))
      return files_.ReadWhole(path);
  }
  throw UnreadableFile("its buffer \"" + address +
                       "\" is missing, or lies outside the scene's folder.");
}

bool GltfFile::IsData(const std::string& address) { return address.rfind("data:", 0) == 0; }

std::string GltfFile::DataOf(const std::string& address) {
  const std::size_t comma = address.find(',');
  if (comma == std::string::npos) throw UnreadableFile("an address holds no data.");
  const std::string_view head = std::string_view(address).substr(0, comma);
  const std::string_view data = std::string_view(address).substr(comma + 1);
  return head.ends_with(";base64") ? Base64Decoded(data) : PercentDecoded(std::string(data));
}

std::string_view GltfFile::Buffer(std::size_t index) {
  const Json& buffer = Entry("buffers", index);
  const std::string address = Text(buffer, "uri");
  if (address.empty()) {
    if (index == 0 && !chunk_.empty()) return chunk_;
    throw UnreadableFile("buffer " + std::to_string(index) + " has no data.");
  }
  const auto found = buffers_.find(index);
  if (found != buffers_.end()) return found->second;
  // Unpacked or read once, however many views there are; the map's values stay where they are.
  return buffers_[index] = IsData(address) ? DataOf(address) : ReadBeside(address);
}

std::string_view GltfFile::Range(std::size_t buffer, std::size_t offset, std::size_t length) {
  if (buffer == kNowhere) throw UnreadableFile("a buffer view names no buffer.");
  const std::string_view bytes = Buffer(buffer);
  if (offset > bytes.size() || length > bytes.size() - offset) {
    throw UnreadableFile("buffer " + std::to_string(buffer) + " is too short: it has " +
                         std::to_string(bytes.size()) + " bytes, and " + std::to_string(length) +
                         " from byte " + std::to_string(offset) + " on are asked for.");
  }
  return bytes.substr(offset, length);
}

std::string_view GltfFile::View(std::size_t index) {
  const Json& view = Entry("bufferViews", index);
  const Json& packing = Extension(view, "EXT_meshopt_compression");
  if (packing.is_null())
    return Range(Index(view, "buffer"), Index(view, "byteOffset", 0), Index(view, "byteLength", 0));
  const auto found = unpacked_.find(index);
  if (found != unpacked_.end()) return found->second;
  return unpacked_[index] = Unpacked(packing, index);
}

std::string GltfFile::Unpacked(const Json& packing, std::size_t view) {
  const std::string_view packed = Range(Index(packing, "buffer"), Index(packing, "byteOffset", 0),
                                        Index(packing, "byteLength", 0));
  const Packing how = PackingOf(packing);
  // Two bits stand for sixteen bytes at the least.
  constexpr std::size_t kMostUnpacked = 64;
  if (how.count > packed.size() * kMostUnpacked / how.stride + kMostUnpacked)
    throw UnreadableFile("buffer view " + std::to_string(view) + " claims more than it holds.");
  std::string data(how.count * how.stride, '\0');
  const auto* bytes = reinterpret_cast<const unsigned char*>(packed.data());
  int failed = 0;
  if (how.mode == "ATTRIBUTES") {
    failed = meshopt_decodeVertexBuffer(data.data(), how.count, how.stride, bytes, packed.size());
  } else if (how.mode == "TRIANGLES") {
    failed = meshopt_decodeIndexBuffer(data.data(), how.count, how.stride, bytes, packed.size());
  } else {
    failed = meshopt_decodeIndexSequence(data.data(), how.count, how.stride, bytes, packed.size());
  }
  if (failed != 0)
    throw UnreadableFile("buffer view " + std::to_string(view) + " cannot be unpacked.");
  ApplyFilter(how, data);
  return data;
}

}  // namespace engine
