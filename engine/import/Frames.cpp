#include "engine/import/Frames.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace engine {
namespace {

constexpr std::size_t kFrameHeadBytes = 5;
// All of FrameKind.
constexpr std::string_view kKinds = "PNKSFDTBWI";

std::string Head(FrameKind kind, std::size_t length) {
  std::string head(1, static_cast<char>(kind));
  for (int shift = 0; shift < 32; shift += 8)
    head.push_back(static_cast<char>((length >> shift) & 0xff));
  return head;
}

std::size_t LengthAt(std::string_view head) {
  std::size_t length = 0;
  for (std::size_t i = 0; i < 4; ++i)
    length |= static_cast<std::size_t>(static_cast<unsigned char>(head[1 + i])) << (8 * i);
  return length;
}

}  // namespace

std::string AsFrames(FrameKind kind, std::string_view bytes) {
  std::string frames;
  do {
    const std::string_view piece = bytes.substr(0, kFrameLimit);
    frames.append(Head(kind, piece.size())).append(piece);
    bytes.remove_prefix(piece.size());
  } while (!bytes.empty());
  return frames;
}

bool FrameWriter::WriteAll(std::string_view bytes) {
  while (!bytes.empty() && !broken_) {
    const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    broken_ = written <= 0;
    if (!broken_) bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return !broken_;
}

bool FrameWriter::Write(FrameKind kind, std::string_view bytes) {
  do {
    const std::string_view piece = bytes.substr(0, kFrameLimit);
    if (!WriteAll(Head(kind, piece.size())) || !WriteAll(piece)) return false;
    bytes.remove_prefix(piece.size());
  } while (!bytes.empty());
  return true;
}

std::optional<Frame> FrameParser::Next() {
  const std::string_view rest = std::string_view(pending_).substr(position_);
  if (damaged_ || rest.size() < kFrameHeadBytes) return std::nullopt;
  const std::size_t length = LengthAt(rest);
  // Refused by its head alone: a child that lies about a length gets no memory for it.
  damaged_ = length > kFrameLimit || kKinds.find(rest[0]) == std::string_view::npos;
  if (damaged_ || rest.size() - kFrameHeadBytes < length) return std::nullopt;
  Frame frame{static_cast<FrameKind>(rest[0]), std::string(rest.substr(kFrameHeadBytes, length))};
  position_ += kFrameHeadBytes + length;
  // Taken off in large pieces, so that moving the rest costs each byte a constant share.
  if (position_ > kFrameLimit || position_ == pending_.size()) {
    pending_.erase(0, position_);
    position_ = 0;
  }
  return frame;
}

}  // namespace engine
