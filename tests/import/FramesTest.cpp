// The pipe's frames: whole however they are cut up on the way, and never trusted.
#include "engine/import/Frames.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <thread>

namespace tests {
namespace {

using engine::Frame;
using engine::FrameKind;
using engine::FrameParser;
using engine::FrameWriter;

// The bytes that a writer puts into a pipe.
template <class Write>
std::string Sent(Write write) {
  std::array<int, 2> ends{};
  EXPECT_EQ(::pipe(ends.data()), 0);
  std::thread sender([&] {
    FrameWriter writer(ends[1]);
    write(writer);
    ::close(ends[1]);
  });
  std::string all;
  std::array<char, 4096> bytes;
  for (ssize_t count; (count = ::read(ends[0], bytes.data(), bytes.size())) > 0;) {
    all.append(bytes.data(), static_cast<std::size_t>(count));
  }
  sender.join();
  ::close(ends[0]);
  return all;
}

TEST(Frames, SurviveAnyCut) {
  const std::string sent = Sent([](FrameWriter& writer) {
    writer.Write(FrameKind::Note, "first");
    writer.Write(FrameKind::Done, "");
    writer.Write(FrameKind::Scene, std::string("\0\xff", 2));
  });
  for (std::size_t step = 1; step <= sent.size(); ++step) {
    FrameParser parser;
    std::string seen;
    for (std::size_t at = 0; at < sent.size(); at += step) {
      parser.Feed(std::string_view(sent).substr(at, step));
      while (const std::optional<Frame> frame = parser.Next())
        seen += static_cast<char>(frame->kind) + frame->bytes + "|";
    }
    EXPECT_EQ(seen, std::string("Nfirst|D|S\0\xff|", 13)) << step;
    EXPECT_FALSE(parser.Damaged());
  }
}

TEST(Frames, LongContentsComeInPieces) {
  const std::string much(2 * engine::kFrameLimit + 5, 'm');
  FrameParser parser;
  parser.Feed(Sent([&](FrameWriter& writer) { writer.Write(FrameKind::Scene, much); }));
  std::string seen;
  int frames = 0;
  for (; const std::optional<Frame> frame = parser.Next(); ++frames) seen += frame->bytes;
  EXPECT_EQ(seen, much);
  EXPECT_EQ(frames, 3);
}

// Whoever writes hears that nobody listens, at once and from then on.
TEST(Frames, AClosedPipeIsTold) {
  const auto former = ::signal(SIGPIPE, SIG_IGN);
  std::array<int, 2> ends{};
  ASSERT_EQ(::pipe(ends.data()), 0);
  FrameWriter writer(ends[1]);
  EXPECT_TRUE(writer.Write(FrameKind::Note, "heard"));
  ::close(ends[0]);
  for (const char* text : {"not heard", ""}) EXPECT_FALSE(writer.Write(FrameKind::Note, text));
  ::close(ends[1]);
  ::signal(SIGPIPE, former);
}

TEST(Frames, AnUnknownKindOrAnEndlessLengthIsDamage) {
  for (const std::string& bytes :
       {std::string("x\1\0\0\0a", 6), std::string("S\xff\xff\xff\x7f", 5)}) {
    FrameParser parser;
    parser.Feed(bytes);
    EXPECT_FALSE(parser.Next().has_value());
    EXPECT_TRUE(parser.Damaged());
  }
}

}  // namespace
}  // namespace tests
