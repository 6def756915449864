// Labels in pictures: order of the letters, shortening, drawing at the edges, fonts that are none.
#include "engine/render/Text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

#include "tests/support/ScratchFolder.h"
#include "tests/support/ScriptedServices.h"

namespace {

using engine::Font;
using engine::Image;
using engine::TextLine;

constexpr int kWide = 100000;

Image Black(std::uint32_t width, std::uint32_t height) {
  Image image{width, height, {}, {}};
  image.bytes.resize(image.PixelCount() * 4);
  return image;
}

// Bounds of what is not black: left, top, right, bottom.
std::array<int, 4> Inked(const Image& image) {
  std::array<int, 4> box{static_cast<int>(image.width), static_cast<int>(image.height), -1, -1};
  for (std::size_t i = 0; i < image.PixelCount(); ++i) {
    if (image.bytes[i * 4] == 0) continue;
    const auto x = static_cast<int>(i % image.width);
    const auto y = static_cast<int>(i / image.width);
    box = {std::min(box[0], x), std::min(box[1], y), std::max(box[2], x), std::max(box[3], y)};
  }
  return box;
}

class Text : public testing::Test {
 protected:
  tests::ScriptedServices services_;
  Font font_ = Font::Load(services_.files, Font::Weight::Regular).Take();
};

TEST_F(Text, StandsInTheOrderInWhichItIsSeen) {
  const struct {
    const char* name;
    const char* text;
    std::u32string seen;
  } kCases[] = {
      {"Latin", "aB\xC3\xA9", U"aB\u00E9"},
      {"Hebrew", "\u05D0\u05D1\u05D2", U"\u05D2\u05D1\u05D0"},
      {"Hebrew with a number", "\u05D0\u05D1 12", U"12 \u05D1\u05D0"},
      {"Hebrew within Latin", "a \u05D0\u05D1 b", U"a \u05D1\u05D0 b"},
      {"Arabic letters join", "\u0628\u062A", U"\uFE96\uFE91"},
      {"control characters", "a\nb\x7F", U"a b "},
      {"hidden marks of direction", "a\u202Eb", U"ab"},
      {"broken bytes", "a\xFFz\xE2\x82", U"a\uFFFDz\uFFFD\uFFFD"},
      {"nothing", "", U""},
  };
  for (const auto& c : kCases) {
    const TextLine line = font_.Set(c.text, 16, kWide);
    EXPECT_EQ(std::u32string(line.characters.begin(), line.characters.end()), c.seen) << c.name;
  }
}

TEST_F(Text, IsShortenedToItsPlace) {
  const std::string longName(3000000, 'w');
  for (const char* name :
       {"A state with a name that is a good deal too long", longName.c_str(),
        "\u05D0\u05D1\u05D2\u05D3\u05D4\u05D5\u05D6\u05D7\u05D8 \u05D9\u05DA\u05DB"}) {
    const TextLine line = font_.Set(name, 16, 90);
    EXPECT_LE(line.width, 90);
    EXPECT_GT(line.width, 60);
    EXPECT_EQ(std::count(line.characters.begin(), line.characters.end(), U'\u2026'), 1);
  }
  const TextLine fits = font_.Set("Short", 16, font_.Set("Short", 16, kWide).width);
  EXPECT_EQ(fits.characters.size(), 5U);
  EXPECT_EQ(font_.Set("Anything", 16, 0).characters.size(), 1U) << "the ellipsis is the least";
}

TEST_F(Text, IsDrawnWhereItIsMeant) {
  Image image = Black(200, 60);
  const TextLine line = font_.Set("HEH", 20, kWide);
  font_.Draw(line, 30, 40, {255, 255, 255}, image);
  const auto [left, top, right, bottom] = Inked(image);
  EXPECT_NEAR(left, 32, 2);
  EXPECT_NEAR(right, 30 + line.width - 2, 3);
  EXPECT_NEAR(top, 40 - 15, 2);
  EXPECT_EQ(bottom, 39) << "capitals stand on the baseline";
  Image wide = Black(3000, 60);
  const TextLine longer = font_.Set(std::string(150, 'H'), 20, kWide);
  font_.Draw(longer, 30, 40, {255, 255, 255}, wide);
  EXPECT_NEAR(Inked(wide)[2], 30 + longer.width - 2, 3);
  std::set<int> shades;
  for (std::size_t i = 0; i < image.PixelCount(); ++i) shades.insert(image.bytes[i * 4]);
  EXPECT_GT(shades.size(), 4U) << "edges are smooth";
}

TEST_F(Text, ShowsHanAndKana) {
  std::set<std::string> pictures;
  for (const char* letter : {"\u6F22", "\u5B57", "\u304B", "\u30D5", "\U0001F9FF"}) {
    Image image = Black(40, 40);
    font_.Draw(font_.Set(letter, 30, kWide), 4, 32, {255, 255, 255}, image);
    pictures.emplace(image.bytes.begin(), image.bytes.end());
  }
  EXPECT_EQ(pictures.size(), 5U)
      << "each has a glyph of its own, none is the box for what is missing";
  const int latin = font_.Set("ab", 30, kWide).width;
  EXPECT_GT(font_
                .Set("a\u6F22"
                     "b",
                     30, kWide)
                .width,
            latin + 20);
}

TEST_F(Text, KeepsWithinThePicture) {
  const TextLine line = font_.Set("Wide and tall", 40, kWide);
  for (const auto& [x, y] :
       {std::pair{-1000, 20}, {-50, 10}, {60, 20}, {10, -5}, {10, 1000}, {2000000000, 5}}) {
    Image image = Black(64, 20);
    font_.Draw(line, x, y, {255, 255, 255}, image);
    EXPECT_EQ(image.bytes.size(), 64U * 20U * 4U);
  }
}

// What lies inside is as in a picture that has room for all.
TEST_F(Text, IsCutByTheEdgesOfThePicture) {
  const TextLine line = font_.Set("\u00C4gypten WAV", 24, kWide);
  Image whole = Black(300, 100);
  font_.Draw(line, 60, 50, {255, 255, 255}, whole);
  for (const auto& [left, top] : {std::pair(70, 20), {0, 40}, {66, 35}, {100, 0}, {60, 49}}) {
    Image part = Black(64, 20);
    font_.Draw(line, 60 - left, 50 - top, {255, 255, 255}, part);
    for (int y = 0; y < 20; ++y) {
      for (int x = 0; x < 64; ++x)
        ASSERT_EQ(part.bytes[(y * 64 + x) * 4], whole.bytes[((top + y) * 300 + left + x) * 4])
            << left << " " << top << ": " << x << " " << y;
    }
  }
}

TEST_F(Text, IsBetweenItsColorAndTheGround) {
  Image plain = Black(60, 40);
  Image colored = plain;
  for (std::size_t i = 0; i < colored.bytes.size(); ++i)
    colored.bytes[i] = std::array<std::uint8_t, 4>{200, 30, 90, 255}[i % 4];
  font_.Draw(font_.Set("H8", 30, kWide), 5, 35, {255, 255, 255}, plain);
  font_.Draw(font_.Set("H8", 30, kWide), 5, 35, {20, 220, 90}, colored);
  EXPECT_EQ(*std::ranges::max_element(plain.bytes), 255) << "wholly covered";
  for (std::size_t i = 0; i < plain.PixelCount(); ++i) {
    const int cover = plain.bytes[i * 4];
    EXPECT_NEAR(colored.bytes[i * 4], 200 - 180 * cover / 255.0, 1);
    EXPECT_NEAR(colored.bytes[i * 4 + 1], 30 + 190 * cover / 255.0, 1);
    EXPECT_EQ(colored.bytes[i * 4 + 2], 90);
    EXPECT_EQ(colored.bytes[i * 4 + 3], 255);
  }
}

// A system without fonts.
class Bare : public engine::RealFileSystem {
 public:
  using RealFileSystem::RealFileSystem;

 protected:
  engine::FileKind DoKind(const std::string&) override { return engine::FileKind::Missing; }
};

TEST_F(Text, AMissingFontNamesItsPackage) {
  Bare bare(services_.ledger, services_.person);
  const auto font = Font::Load(bare, Font::Weight::Bold);
  ASSERT_FALSE(font);
  EXPECT_NE(font.Message().find("fonts-dejavu-core"), std::string::npos) << font.Message();
}

TEST_F(Text, WhatIsNoFontIsRefusedByName) {
  tests::ScratchFolder folder;
  tests::WriteText(folder / "text.ttf", "no font");
  tests::WriteText(folder / "empty.ttf", "");
  for (const char* name : {"text.ttf", "empty.ttf", "missing.ttf"}) {
    const auto font = Font::LoadFile(services_.files, folder / name);
    ASSERT_FALSE(font) << name;
    EXPECT_NE(font.Message().find(name), std::string::npos) << font.Message();
  }
}

}  // namespace
