// A mark is "Made by stagemarks MAKER HASH", HASH being that of the file without it: in a tEXt
// chunk of PNG, in a comment at the end of a page, as a last line of anything else. Decision 14
// says why the mark is in the file.
#include "program/publish/FileOrigin.h"

#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>

#include "engine/scenefile/FileAsRead.h"
#include "engine/scenefile/SceneOrigin.h"
#include "program/publish/PublishedFiles.h"

namespace publishing {

namespace {

constexpr std::string_view kMark = "Made by stagemarks ";
// The mark is looked for in so many bytes at the end of a file and nowhere else, so that a large
// file costs one look and a mark that was copied into the middle counts for nothing.
constexpr std::size_t kLongestMark = 100;
constexpr std::string_view kPngBegin = "\x89PNG\r\n\x1a\n";
constexpr std::string_view kPageBegin = "<!DOCTYPE html>";
constexpr std::size_t kPngEnd = 12;  // bytes of its last chunk
constexpr std::string_view kChunk = "tEXtSoftware";
constexpr std::string_view kRecordChunk = "tEXtComment";

std::string MarkText(std::string_view bytes, const std::string& maker) {
  char hash[17];
  std::snprintf(hash, sizeof hash, "%016llx",
                static_cast<unsigned long long>(engine::HashOfContent({&bytes, 1})));
  return std::string(kMark) + maker + " " + hash;
}

std::string BigEndian(std::uint32_t number) {
  std::string bytes;
  for (const unsigned shift : {24U, 16U, 8U, 0U}) bytes += static_cast<char>(number >> shift);
  return bytes;
}

// Text in a chunk of its own, which programs that show pictures skip or tell. Length, kind,
// keyword, a NUL, text, CRC of kind and rest, all numbers big-endian (PNG specification, 11.3.4.3
// tEXt). The four bytes of the kind do not count for the length.
std::string PngChunk(std::string_view kind, const std::string& text) {
  const std::string body = std::string(kind) + '\0' + text;
  const auto sum =
      crc32(0, reinterpret_cast<const Bytef*>(body.data()), static_cast<uInt>(body.size()));
  return BigEndian(static_cast<std::uint32_t>(body.size() - 4)) + body +
         BigEndian(static_cast<std::uint32_t>(sum));
}

// Long enough to end in the empty IEND chunk of 12 bytes, which stays the last one.
bool IsPng(std::string_view bytes) {
  return bytes.starts_with(kPngBegin) && bytes.size() > kPngBegin.size() + kPngEnd;
}

bool IsTiff(std::string_view bytes) { return bytes.starts_with("II*") || bytes.starts_with("MM"); }

std::string BeforePngEnd(const std::string& bytes, const std::string& chunk) {
  return bytes.substr(0, bytes.size() - kPngEnd) + chunk + bytes.substr(bytes.size() - kPngEnd);
}

// The bytes without their mark, which begins at `mark`; what stands around it depends on the kind
// of file. In a PNG file length, kind, keyword and NUL stand before the mark, in a page the begin
// of a comment.
std::string WithoutMark(std::string_view bytes, std::size_t mark) {
  if (IsPng(bytes)) {
    const std::size_t before = 4 + kChunk.size() + 1;
    return std::string(bytes.substr(0, mark - std::min(mark, before))) +
           std::string(bytes.substr(bytes.size() - kPngEnd));
  }
  const std::size_t before = bytes.starts_with(kPageBegin) ? std::string_view("<!-- ").size() : 0;
  return std::string(bytes.substr(0, mark - std::min(mark, before)));
}

}  // namespace

std::string WithMaker(const std::string& bytes, const std::string& maker) {
  const std::string mark = MarkText(bytes, maker);
  if (bytes.starts_with(kPageBegin)) return bytes + "<!-- " + mark + " -->\n";
  if (!IsPng(bytes)) return bytes + mark + "\n";
  return BeforePngEnd(bytes, PngChunk(kChunk, mark));
}

// Readers of TIFF follow offsets from the head and never see bytes behind the last one.
std::string WithRecord(const std::string& bytes, const std::string& text) {
  if (IsPng(bytes)) return BeforePngEnd(bytes, PngChunk(kRecordChunk, text));
  return IsTiff(bytes) ? bytes + text + "\n" : bytes;
}

// A mark is good when marking the rest again gives the same bytes. Scenes and published files have
// marks of their own kind. Hashing the whole file again is what makes the answer safe: any change
// by somebody else makes it nobody's.
std::string MakerOf(std::string_view bytes) {
  std::string scene = engine::SceneOriginOf(bytes);
  if (!scene.empty()) return scene;
  if (publishing::IsPublished(bytes)) return publishing::HasMark(bytes) ? "publish" : "";
  const std::size_t tail = bytes.size() - std::min(bytes.size(), kLongestMark);
  const std::size_t mark = bytes.substr(tail).find(kMark);
  if (mark == std::string_view::npos) return "";
  const std::string_view rest = bytes.substr(tail + mark + kMark.size());
  const std::string maker(rest.substr(0, std::min(rest.find(' '), rest.size())));
  return WithMaker(WithoutMark(bytes, tail + mark), maker) == bytes ? maker : "";
}

bool MayReplace(engine::FileSystem& files, const std::string& path, const std::string& maker) {
  const engine::FileKind kind = files.Kind(path);
  if (kind != engine::FileKind::File) return kind != engine::FileKind::Unknown;
  const auto bytes = files.ReadFile(path);
  return bytes && MakerOf(bytes.Value()) == maker;
}

}  // namespace publishing
