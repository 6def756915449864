// Frames: how a child of a program talks to its parent through a pipe: the one that imports and the
// one that shows states. A frame is a kind (one byte), a length (four bytes, little end first) and
// that many bytes, at most kFrameLimit. Long contents are sent in several frames. Any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace engine {

inline constexpr std::size_t kFrameLimit = 1u << 20;

enum class FrameKind : char {
  Progress = 'P',  // thousandths as decimal text
  Note = 'N',      // one sentence
  Weakness = 'K',  // one sentence about what this system cannot keep the child from
  Scene = 'S',     // the next bytes of the native scene
  Failure = 'F',   // why there is no scene
  Done = 'D',      // everything was sent
  State = 'T',     // one stored state
  Picture = 'B',   // the next bytes of its picture
  Written = 'W',   // path of a file that stands
  Pictures = 'I',  // news of pictures that are written as files
};

struct Frame {
  FrameKind kind;
  std::string bytes;
};

// The bytes that FrameWriter::Write sends for these contents.
std::string AsFrames(FrameKind kind, std::string_view bytes);

// Writes frames to a descriptor, which it does not own.
class FrameWriter {
 public:
  explicit FrameWriter(int descriptor) : descriptor_(descriptor) {}
  // Contents longer than a frame go out as several of the same kind; empty ones as one empty frame.
  // False, from then on too, when the other side is gone.
  bool Write(FrameKind kind, std::string_view bytes);

 private:
  bool WriteAll(std::string_view bytes);
  int descriptor_;
  bool broken_ = false;
};

// Cuts what arrives into frames.
class FrameParser {
 public:
  void Feed(std::string_view bytes) { pending_.append(bytes); }
  // The next whole frame, or nothing until more has arrived.
  std::optional<Frame> Next();
  // A frame of an unknown kind or too long: nothing further can be trusted.
  bool Damaged() const { return damaged_; }

 private:
  std::string pending_;
  std::size_t position_ = 0;
  bool damaged_ = false;
};

}  // namespace engine
