// Pictures decoded by a child: as in this process, and however the child ends, a message is all
// that comes of it.
#include "engine/render/ImageDecoder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/support/ScratchFolder.h"

namespace {

struct ImageDecoder : testing::Test {
  ~ImageDecoder() override { engine::DecodeImagesBy(""); }

  // A program that is no decoder: what it does with the descriptor that it gets as $2.
  std::string Script(const std::string& what) {
    const std::string path = scratch_ / "decoder";
    tests::WriteText(path, "#!/bin/sh\n" + what + "\n");
    ::chmod(path.c_str(), 0700);
    return path;
  }
  tests::ScratchFolder scratch_;
};

TEST_F(ImageDecoder, AnswersAsThisProcessDoes) {
  engine::DecodeImagesBy(TEST_BINARY_DIR "/bin/stagemarks");
  for (const auto& entry :
       std::filesystem::directory_iterator(TEST_SOURCE_DIR "/tests/render/pictures")) {
    const std::string file = tests::ReadText(entry.path());
    for (const std::string& bytes :
         {file, file.substr(0, file.size() / 2), file.substr(0, 3), std::string()}) {
      const auto here = engine::DecodeImageHere(bytes);
      const auto there = engine::DecodeImage(bytes);
      ASSERT_EQ(here.Ok(), there.Ok()) << entry.path() << there.Message();
      EXPECT_EQ(here.Message(), there.Message());
      if (!here) continue;
      EXPECT_EQ(here.Value().bytes, there.Value().bytes);
      EXPECT_EQ(here.Value().floats, there.Value().floats);
    }
  }
}

TEST_F(ImageDecoder, AChildThatFailsCostsAMessage) {
  const std::string file = tests::ReadText(TEST_SOURCE_DIR "/tests/render/pictures/alpha.tif");
  struct Case {
    const char* what;
    const char* message;  // null: decoded here
  };
  const Case cases[] = {
      {"exit 0", nullptr},
      {"printf x >&3; kill -SEGV $$", "The picture is damaged: its reader stopped (signal 11)."},
      {"printf x >&3; exit 3", "gave up on it."},
      {"printf x >&3; printf '\\377\\377\\0\\0\\377\\377\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0' >&3",
       "gave an answer that cannot be."},
      {"printf x >&3; printf '\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\351\\3\\0\\0' >&3; "
       "head -c 1001 /dev/zero >&3",
       "gave an answer that cannot be."},
      {"printf x >&3; kill -KILL $$", "came to no end with it."},
      {"printf x >&3; printf '\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\7\\0\\0\\0a\\nb\\033cde' >&3; "
       "read x <&3",
       "a b cde"},
  };
  for (const Case& c : cases) {
    engine::DecodeImagesBy(Script(c.what));
    const auto image = engine::DecodeImage(file);
    EXPECT_EQ(image.Ok(), c.message == nullptr) << c.what;
    const std::string wanted = c.message ? c.message : "";
    EXPECT_NE(image.Message().find(wanted), std::string::npos) << image.Message();
  }
  engine::DecodeImagesBy("/nowhere/at/all");
  EXPECT_TRUE(engine::DecodeImage(file)) << "without a child this process does it";
}

TEST_F(ImageDecoder, OneChildDecodesManyPictures) {
  const std::string refusal = "\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\1\\0\\0\\0";
  engine::DecodeImagesBy(Script(": > \"$0.$$\"; printf 'x" + refusal + "a" + refusal +
                                "b' >&3; read x <&3; read x <&3"));
  EXPECT_EQ(engine::DecodeImage("picture").Message(), "a");
  EXPECT_EQ(engine::DecodeImage("another").Message(), "b");
  using Entries = std::filesystem::directory_iterator;
  EXPECT_EQ(std::distance(Entries(scratch_.Path()), Entries()), 2) << "it and what one start left";
}

}  // namespace
