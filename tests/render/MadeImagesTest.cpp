// Image files made byte by byte: every kind of pixel that a format knows, in every order.
#include <gtest/gtest.h>

#include "engine/render/Codecs.h"

namespace {

using engine::Image;

// A file from little-endian numbers, each with its bytes.
std::string Little(std::initializer_list<std::pair<std::uint64_t, std::size_t>> numbers) {
  std::string bytes;
  for (const auto& [number, size] : numbers) {
    for (std::size_t i = 0; i < size; ++i) bytes += static_cast<char>(i < 8 ? number >> 8 * i : 0);
  }
  return bytes;
}

// 5 x 3 pixels, so that rows need filling up; the first two are alike.
Image OddPicture(bool gray, bool clear) {
  Image image{5, 3, {}, {}};
  for (int i = 0; i < 15; ++i) {
    const int n = i < 2 ? 0 : i;
    for (const int part :
         {n * 17, gray ? n * 17 : 250 - n * 9, gray ? n * 17 : n * n, clear ? 200 - n : 255})
      image.bytes.push_back(static_cast<std::uint8_t>(part));
  }
  return image;
}

// One pixel as those formats have it: gray, or blue, green, red and perhaps one more.
std::string Stored(const Image& image, std::size_t i, std::size_t channels) {
  const std::uint8_t* p = &image.bytes[i * 4];
  std::string bytes;
  for (const std::size_t c : {2U, 1U, 0U, 3U}) bytes += static_cast<char>(p[c]);
  return channels == 1 ? std::string(1, bytes[2]) : bytes.substr(0, channels);
}

TEST(ImageFiles, BmpOfEachKindIsRead) {
  struct Case {
    std::uint64_t bits, headBytes, colors, gap;
    bool topDown;
  };
  for (const Case& c : {Case{24, 40, 0, 0, false},
                        {24, 40, 0, 7, true},
                        {32, 40, 0, 0, false},
                        {32, 56, 0, 0, true},
                        {8, 40, 15, 0, false},
                        {8, 56, 15, 3, true},
                        {8, 40, 0, 0, false}}) {
    const Image image = OddPicture(false, false);
    const std::size_t entries = c.bits > 8 ? 0 : c.colors == 0 ? 256 : c.colors;
    std::string file = "BM" + Little({{0, 8},
                                      {14 + c.headBytes + entries * 4 + c.gap, 4},
                                      {c.headBytes, 4},
                                      {5, 4},
                                      {c.topDown ? 0xFFFFFFFDU : 3U, 4},
                                      {1, 2},
                                      {c.bits, 2},
                                      {0, 16},
                                      {c.colors, 4},
                                      {0, 4}});
    file.resize(14 + c.headBytes);
    for (std::size_t i = 0; i < entries; ++i) file += i < 15 ? Stored(image, i, 4) : "none";
    file.resize(file.size() + c.gap);
    for (std::size_t y = 0; y < 3; ++y) {
      for (std::size_t x = 0; x < 5; ++x) {
        const std::size_t i = (c.topDown ? y : 2 - y) * 5 + x;
        // The last color stands for all that the palette lacks.
        file += c.bits > 8                  ? Stored(image, i, c.bits / 8)
                : i == 14 && c.colors == 15 ? std::string(1, '\xC8')
                                            : std::string(1, static_cast<char>(i));
      }
      while ((file.size() - 14 - c.headBytes - entries * 4 - c.gap) % 4 != 0) file += '\x77';
    }
    const auto read = engine::DecodeImage(file);
    ASSERT_TRUE(read) << c.bits << read.Message();
    EXPECT_EQ(read.Value().bytes, image.bytes) << c.bits << " " << c.topDown << " " << c.colors;
    file.pop_back();
    EXPECT_EQ(engine::DecodeImage(file).Message(), "The BMP picture is damaged or cut off.");
    for (const std::size_t place : {28U, 30U}) {
      std::string other = file;
      other[place] = 4;
      EXPECT_EQ(engine::DecodeImage(other).Message(), "BMP pictures of this kind are not read.");
    }
  }
}

TEST(ImageFiles, TgaOfEachKindIsRead) {
  struct Case {
    std::uint64_t kind, bits, noteBytes;
    bool topDown;
  };
  for (const Case& c : {Case{2, 24, 0, false},
                        {2, 32, 5, true},
                        {3, 8, 0, false},
                        {10, 24, 9, true},
                        {10, 32, 0, false},
                        {11, 8, 0, true}}) {
    const std::size_t channels = c.bits / 8;
    const Image image = OddPicture(channels == 1, channels == 4);
    std::string file = Little({{c.noteBytes, 1},
                               {0, 1},
                               {c.kind, 1},
                               {0, 9},
                               {5, 2},
                               {3, 2},
                               {c.bits, 1},
                               {c.topDown ? 0x20U : 0U, 1}});
    file.resize(file.size() + c.noteBytes, 'n');
    std::vector<std::string> pixels;
    for (std::size_t i = 0; i < 15; ++i) {
      const std::size_t from = c.topDown ? i : (2 - i / 5) * 5 + i % 5;
      pixels.push_back(Stored(image, from, channels));
    }
    // Where they are in runs: one of the two that are alike, which stand at the begin of a row.
    const std::size_t alike = c.topDown ? 0 : 10;
    for (std::size_t i = 0; i < 15; ++i) {
      if (c.kind > 8 && i == 0 && alike > 0) file += '\x09';
      if (c.kind > 8 && i == alike)
        file += '\x81' + pixels[i++] + (alike == 0 ? '\x0C' : '\x02');
      else
        file += pixels[i];
    }
    const auto read = engine::DecodeImage(file);
    ASSERT_TRUE(read) << c.kind << read.Message();
    EXPECT_EQ(read.Value().bytes, image.bytes) << c.kind << " " << c.bits;
    file.pop_back();
    EXPECT_EQ(engine::DecodeImage(file).Message(), "The TGA picture is damaged or cut off.");
    for (const auto& [place, byte] : {std::pair(1, 1), {2, 1}, {16, 16}, {17, 0x40}}) {
      std::string other = file;
      other[static_cast<std::size_t>(place)] = static_cast<char>(byte);
      EXPECT_NE(engine::DecodeImage(other).Message().find("This is no picture"), std::string::npos);
    }
  }
}

// Files may begin anywhere: the pixels are the same.
TEST(ImageFiles, OpenExrBeginsAnywhere) {
  Image light{3, 12, {}, {}};
  for (std::size_t i = 0; i < 36 * 4; ++i)
    light.floats.push_back(i % 4 == 3 ? 0.5F : static_cast<float>(i));
  const std::string whole = engine::EncodeExr(light).Take();
  for (const auto& [left, top] : {std::pair(0, 0), {7, 2000}, {-9, -5}, {2000, -3000}}) {
    std::string file = whole;
    const auto put = [&](std::size_t at, int number) {
      file.replace(at, 4, Little({{static_cast<std::uint32_t>(number), 4}}));
    };
    const std::size_t window =
        file.find("dataWindow") + std::string("dataWindow box2i    ").size() + 1;
    for (const auto& [i, number] : {std::pair(0U, left), {1U, top}, {2U, left + 2}, {3U, top + 11}})
      put(window + i * 4, number);
    // The one place of lines follows its own, and begins with the number of the first line.
    std::size_t table = window;
    while (file.substr(table, 8) != Little({{table + 8, 8}})) ++table;
    put(table + 8, top);
    const auto read = engine::DecodeImage(file);
    ASSERT_TRUE(read) << left << " " << top << read.Message();
    EXPECT_EQ(read.Value().floats, light.floats) << left << " " << top;
  }
}

// Pixels of 8 bits, plain, in both orders of bytes; the last channel is opacity, by which the others
// are multiplied (1) or not (2).
std::string Tiff(bool bigEnd, std::uint64_t opacity, const std::string& pixels) {
  const auto number = [bigEnd](std::uint64_t value, std::size_t size) {
    std::string bytes = Little({{value, size}});
    return bigEnd ? std::string(bytes.rbegin(), bytes.rend()) : bytes;
  };
  const std::vector<std::array<std::uint64_t, 3>> tags = {{256, 1, pixels.size() / 4},
                                                          {257, 1, 1},
                                                          {258, 4, 8 + 2 + 120 + 4},
                                                          {259, 1, 1},
                                                          {262, 1, 2},
                                                          {273, 1, 142},
                                                          {277, 1, 4},
                                                          {278, 1, 1},
                                                          {279, 1, pixels.size()},
                                                          {338, 1, opacity}};
  std::string file = (bigEnd ? "MM" : "II") + number(42, 2) + number(8, 4) + number(10, 2);
  for (const auto& [tag, count, value] : tags) {
    file += number(tag, 2) + number(3, 2) + number(count, 4);
    file += count > 1 ? number(value, 4) : number(value, 2) + std::string(2, '\0');
  }
  file += number(0, 4);
  for (int i = 0; i < 4; ++i) file += number(8, 2);
  return file + pixels;
}

TEST(ImageFiles, TiffIsReadInBothOrdersOfBytes) {
  const std::vector<std::uint8_t> plain = {10, 20, 30, 255, 100, 50, 0, 128,
                                           7,  7,  7,  0,   1,   0,  1, 1};
  const std::string pixels(plain.begin(), plain.end());
  for (const bool bigEnd : {false, true}) {
    const auto multiplied = engine::DecodeImage(Tiff(bigEnd, 1, pixels));
    ASSERT_TRUE(multiplied) << multiplied.Message();
    EXPECT_EQ(
        multiplied.Value().bytes,
        (std::vector<std::uint8_t>{10, 20, 30, 255, 199, 100, 0, 128, 0, 0, 0, 0, 255, 0, 255, 1}));
    const auto apart = engine::DecodeImage(Tiff(bigEnd, 2, pixels));
    ASSERT_TRUE(apart) << apart.Message();
    for (std::size_t i = 0; i < 8; ++i) EXPECT_NEAR(apart.Value().bytes[i], plain[i], 1) << i;
    EXPECT_EQ(apart.Value().bytes[11], 0);
  }
}

}  // namespace
