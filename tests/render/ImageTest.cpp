// Image files: what comes out of each kind, what is written, and that damage costs a message only.
#include "engine/render/Codecs.h"
#include "engine/render/Image.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <functional>
#include <map>

#include "tests/support/ScratchFolder.h"

namespace {

using engine::Image;

std::string Picture(const std::string& name) {
  return tests::ReadText(TEST_SOURCE_DIR "/tests/render/pictures/" + name);
}

const std::vector<std::string>& PictureNames() {
  static const std::vector<std::string> names = {
      "alpha.tif", "gray16.tif",  "tiles.tif", "baseline.jpg", "progressive.jpg", "inks.jpg",
      "light.exr", "palette.bmp", "runs.tga",  "alpha.webp",   "gradient.png"};
  return names;
}

// Red grows to the right by 16, green downwards by 20, blue is 128.
Image Gradient(std::uint32_t width, std::uint32_t height, std::uint8_t alpha = 255) {
  Image image{width, height, {}, {}};
  for (std::uint32_t y = 0; y < height; ++y) {
    for (std::uint32_t x = 0; x < width; ++x) {
      for (const std::uint32_t c : {x * 16, y * 20, 128U, std::uint32_t{alpha}})
        image.bytes.push_back(static_cast<std::uint8_t>(c));
    }
  }
  return image;
}

// The file of that name; the PNG picture is made here.
std::string FileBytes(const std::string& name) {
  return name == "gradient.png" ? engine::EncodePng(Gradient(16, 12)).Take() : Picture(name);
}

std::string PixelText(const Image& image, std::uint32_t x, std::uint32_t y) {
  std::string text;
  for (std::size_t c = 0; c < 4; ++c) {
    const std::size_t at = (std::size_t{y} * image.width + x) * 4 + c;
    if (c > 0) text += ' ';
    text += image.IsFloat() ? std::to_string(image.floats[at]).substr(0, 5)
                            : std::to_string(image.bytes[at]);
  }
  return text;
}

TEST(ImageFiles, GiveTheirPixels) {
  struct Case {
    const char* file;
    const char* left;   // the pixel at 2, 3
    const char* right;  // the pixel at 12, 10
  };
  const Case cases[] = {
      {"gradient.png", "32 60 128 255", "192 200 128 255"},
      {"alpha.tif", "32 60 128 255", "190 200 130 51"},
      {"gray16.tif", "32 32 32 255", "192 192 192 255"},
      {"tiles.tif", "32 60 128 255", "192 200 128 255"},
      {"palette.bmp", "32 60 128 255", "192 200 128 255"},
      {"runs.tga", "0 60 128 255", "192 200 128 128"},
      {"alpha.webp", "32 60 128 255", "192 200 128 128"},
      {"light.exr", "0.500 0.375 0.500 0.500", "3.000 1.250 0.500 0.500"},
  };
  for (const Case& c : cases) {
    const auto image = engine::DecodeImage(FileBytes(c.file));
    ASSERT_TRUE(image) << c.file << ": " << image.Message();
    EXPECT_EQ(std::to_string(image.Value().width) + "x" + std::to_string(image.Value().height),
              "16x12")
        << c.file;
    EXPECT_EQ(PixelText(image.Value(), 2, 3), c.left) << c.file;
    EXPECT_EQ(PixelText(image.Value(), 12, 10), c.right) << c.file;
  }
}

TEST(ImageFiles, JpegComesNear) {
  for (const char* name : {"baseline.jpg", "progressive.jpg", "inks.jpg"}) {
    const auto image = engine::DecodeImage(Picture(name));
    ASSERT_TRUE(image) << name << ": " << image.Message();
    const Image wanted = Gradient(16, 12);
    for (std::size_t i = 0; i < wanted.bytes.size(); ++i)
      ASSERT_NEAR(image.Value().bytes[i], wanted.bytes[i], 6) << name << " " << i;
  }
}

TEST(ImageFiles, WhatIsWrittenReadsBackExactly) {
  for (const auto& [width, height] : {std::pair{1U, 1U}, {7U, 3U}, {160U, 120U}, {3000U, 2U}}) {
    const Image image = Gradient(width, height);
    const auto tiff = engine::DecodeImage(engine::EncodeTiff(image).Take());
    const auto png = engine::DecodeImage(engine::EncodePng(image).Take());
    ASSERT_TRUE(tiff && png);
    EXPECT_EQ(tiff.Value().bytes, image.bytes);
    EXPECT_EQ(png.Value().bytes, image.bytes);
  }
  const Image half = Gradient(5, 5, 100);
  EXPECT_EQ(engine::DecodeImage(engine::EncodePng(half).Take()).Value().bytes, half.bytes);
}

TEST(ImageFiles, JpegComesBackNearly) {
  const Image image = Gradient(16, 12);
  const auto file = engine::EncodeJpeg(image, 95);
  const auto read = engine::DecodeImage(file.Value());
  ASSERT_TRUE(read) << read.Message();
  ASSERT_EQ(read.Value().bytes.size(), image.bytes.size());
  for (std::size_t i = 0; i < image.bytes.size(); ++i)
    ASSERT_NEAR(read.Value().bytes[i], image.bytes[i], 16) << i;
  EXPECT_LT(engine::EncodeJpeg(image, 30).Value().size(), file.Value().size());
  EXPECT_FALSE(engine::EncodeJpeg(Image(), 90));
}

// The tags of the first directory of a little-endian TIFF file: number and value, offsets followed
// for short lists.
std::map<int, std::vector<unsigned>> TiffTags(const std::string& file) {
  const auto number = [&](std::size_t at, std::size_t bytes) {
    unsigned value = 0;
    for (std::size_t i = bytes; i-- > 0;)
      value = value << 8U | static_cast<unsigned char>(file.at(at + i));
    return value;
  };
  std::map<int, std::vector<unsigned>> tags;
  const std::size_t directory = number(4, 4);
  for (std::size_t i = 0; i < number(directory, 2); ++i) {
    const std::size_t entry = directory + 2 + i * 12;
    const std::size_t size = number(entry + 2, 2) == 3 ? 2 : 4;
    const std::size_t count = number(entry + 4, 4);
    const std::size_t at = size * count > 4 ? number(entry + 8, 4) : entry + 8;
    for (std::size_t k = 0; k < count; ++k)
      tags[static_cast<int>(number(entry, 2))].push_back(number(at + k * size, size));
  }
  return tags;
}

TEST(ImageFiles, TiffIsOf24BitsWithLzwAndDifferencing) {
  const std::string file = engine::EncodeTiff(Gradient(160, 120, 7)).Take();
  ASSERT_EQ(file.substr(0, 4), std::string("II*\0", 4));
  auto tags = TiffTags(file);
  using List = std::vector<unsigned>;
  EXPECT_EQ(tags[256], List{160}) << "width";
  EXPECT_EQ(tags[257], List{120}) << "height";
  EXPECT_EQ(tags[258], (List{8, 8, 8})) << "bits per sample";
  EXPECT_EQ(tags[259], List{5}) << "LZW";
  EXPECT_EQ(tags[262], List{2}) << "RGB";
  EXPECT_EQ(tags[277], List{3}) << "samples per pixel";
  EXPECT_EQ(tags[284], List{1}) << "one plane";
  EXPECT_EQ(tags[317], List{2}) << "horizontal differencing";
  EXPECT_LT(file.size(), 8000U) << "differencing pays";
}

TEST(ImageFiles, MemoryForAFileGrowsWithIt) {
  constexpr std::uint64_t kMega = 1 << 20;
  EXPECT_EQ(engine::MemoryForImage(0), 256 * kMega);
  EXPECT_EQ(engine::MemoryForImage(512), 258 * kMega);
  EXPECT_EQ(engine::MemoryForImage(kMega / 4), 1024 * kMega);
  EXPECT_EQ(engine::MemoryForImage(~std::size_t{0}), 1024 * kMega);
  EXPECT_TRUE(engine::CheckImageClaim(8192, 8192, 4, 0));
  EXPECT_FALSE(engine::CheckImageClaim(8192, 8193, 4, 0));
  EXPECT_TRUE(engine::CheckImageSize(16384, 16384, 4));
  EXPECT_FALSE(engine::CheckImageSize(16384, 16384, 5));
}

TEST(ImageFiles, ACutFileIsRefused) {
  for (const std::string& name : PictureNames()) {
    const std::string file = FileBytes(name);
    // The last bytes of a file often carry no pixels, and OpenEXR finds its lines without the table
    // of their places.
    const std::size_t carrying = file.size() - file.size() / 8;
    for (std::size_t size = 0; size < file.size(); size += 3) {
      const auto image = engine::DecodeImage(std::string_view(file).substr(0, size));
      EXPECT_FALSE(image && size < carrying) << name << " cut at " << size;
      EXPECT_EQ(image.Ok(), image.Message().empty());
    }
  }
}

TEST(ImageFiles, FlippedBitsNeverDoHarm) {
  unsigned seed = 20;
  const auto next = [&] { return (seed = seed * 1664525U + 1013904223U) >> 8U; };
  for (const std::string& name : PictureNames()) {
    const std::string whole = FileBytes(name);
    for (int round = 0; round < 400; ++round) {
      std::string file = whole;
      for (unsigned flips = 1 + next() % 4; flips > 0; --flips)
        file[next() % file.size()] ^= static_cast<char>(1U << next() % 8);
      const auto image = engine::DecodeImage(file);
      const std::size_t channels =
          image ? image.Value().bytes.size() + image.Value().floats.size() : 0;
      EXPECT_EQ(channels, image ? image.Value().PixelCount() * 4 : 0) << name << round;
      EXPECT_EQ(image.Ok(), image.Message().empty()) << name << round;
    }
  }
}

TEST(ImageFiles, WhatIsNoPictureIsRefused) {
  for (const std::string& bytes :
       {std::string(), std::string("x"), std::string(100000, '\0'), std::string("GIF89a......"),
        std::string("\x89PNG\r\n\x1a\n"), std::string("\xff\xd8\xff"), std::string("II*\0", 4),
        std::string("BM"), std::string("\x76\x2f\x31\x01")}) {
    const auto image = engine::DecodeImage(bytes);
    EXPECT_FALSE(image);
    EXPECT_NE(image.Message(), "");
  }
}

TEST(ImageFiles, SizesOutsideTheBoundsAreRefusedBeforeMemoryIsTaken) {
  std::string bmp = Picture("palette.bmp");
  const auto withSize = [&](std::uint32_t width, std::uint32_t height) {
    for (std::size_t i = 0; i < 4; ++i) {
      bmp[18 + i] = static_cast<char>(width >> 8 * i);
      bmp[22 + i] = static_cast<char>(height >> 8 * i);
    }
    return engine::DecodeImage(bmp).Message();
  };
  EXPECT_EQ(withSize(0, 12), "The picture is empty (0 x 12 pixels).");
  EXPECT_EQ(withSize(16385, 1),
            "The picture is too large: 16385 x 1 pixels, at most 16384 a side are read.");
  EXPECT_EQ(
      withSize(0x80000000U, 0x80000000U),
      "The picture is too large: 2147483648 x 2147483648 pixels, at most 16384 a side are read.");
  EXPECT_NE(withSize(16384, 16384), "") << "the bytes for it are missing";
  EXPECT_FALSE(engine::CheckImageSize(16384, 16384, 16));
  EXPECT_TRUE(engine::CheckImageSize(16384, 16384, 4));
  EXPECT_FALSE(engine::EncodeTiff(Image()));
  EXPECT_FALSE(engine::EncodePng(Image{4, 4, {}, std::vector<float>(64)}));
}

// The most memory that decoding takes, in MiB; of a child, which is a copy of this process.
long MebibytesToDecode(const std::string& file, std::string& message) {
  const auto run = [](const std::function<void()>& work) {
    const pid_t child = ::fork();
    if (child == 0) {
      work();
      ::_exit(0);
    }
    int status = 0;
    rusage used{};
    ::wait4(child, &status, 0, &used);
    EXPECT_EQ(status, 0);
    return used.ru_maxrss;
  };
  message = engine::DecodeImage(file).Message();
  const long nothing = run([] {});
  return (run([&] { (void)engine::DecodeImage(file); }) - nothing) / 1024;
}

// Claims of a file about its contents are held against its size before memory is taken for them.
TEST(ImageFiles, ClaimsThatAFileIsTooShortForCostNothing) {
  const auto patched = [](std::string file, std::size_t at, const std::string& bytes) {
    return file.replace(at, bytes.size(), bytes);
  };
  const std::string exr = Picture("light.exr");
  const std::string jpeg = Picture("baseline.jpg");
  const auto exrWith = [&](const std::string& attribute, std::size_t skipped,
                           const std::string& bytes) {
    const std::size_t at = exr.find(attribute + '\0');
    EXPECT_NE(at, std::string::npos) << attribute;
    return patched(exr, at + attribute.size() + 1 + skipped, bytes);
  };
  // With one attribute more.
  const auto exrAnd = [&](const std::string& name, const std::string& type,
                          const std::string& value) {
    std::string file = exr;
    return file.insert(
        file.find("channels"),
        name + '\0' + type + '\0' + static_cast<char>(value.size()) + std::string(3, '\0') + value);
  };
  const std::string large("\x70\x17\0\0\x70\x17\0\0", 8);  // 6000 twice
  const std::string tga = std::string("\0\0\x0a\0\0\0\0\0\0\0\0\0\xff\x3f\xff\x3f\x18\0", 18);
  // A head is "box2i", four bytes of length, left, top, right, bottom.
  const std::size_t window = std::string("box2i").size() + 1 + 4 + 8;
  std::string wide = engine::EncodeTiff(Gradient(16, 12)).Take();
  for (const auto& [tag, size] : {std::pair(256, 16383U), {257, 16383U}, {278, 16383U}}) {
    for (std::size_t at = 0; at + 12 <= wide.size(); ++at) {
      const bool isTag = wide[at] == static_cast<char>(tag & 0xff) && wide[at + 1] == 1 &&
                         (wide[at + 2] == 3 || wide[at + 2] == 4) && wide[at + 3] == 0 &&
                         wide.substr(at + 4, 4) == std::string("\1\0\0\0", 4);
      if (isTag)
        wide = patched(wide, at + 8, {static_cast<char>(size), static_cast<char>(size >> 8U)});
    }
  }
  struct Case {
    const char* name;
    std::string file;
    const char* message;
  };
  const Case cases[] = {
      {"EXR window", exrWith("dataWindow", window, large), "which a file of"},
      {"EXR length of an attribute", exrWith("dataWindow", 6, std::string("\xff\xff\xff\x7f", 4)),
       "its head is damaged"},
      {"EXR lines without packing",
       patched(exrWith("dataWindow", window, std::string("\0\0\0\0\xb8\x0b\0\0", 8)),
               exr.find("compression") + 2 * std::string("compression").size() + 2 + 4,
               std::string(1, '\0')),
       "claims more than its 461 bytes can hold"},
      {"EXR texts", exrAnd("views", "stringvector", "\xff\xff\xff\x7fname"), "its head is damaged"},
      {"EXR preview", exrAnd("preview", "preview", "\xff\xff\xff\x3f\1\1\1\1rgba"),
       "its head is damaged"},
      {"EXR of very many tiles", exrAnd("tiles", "tiledesc", std::string("\1\0\0\0\1\0\0\0\0", 9)),
       "claims more than its"},
      {"EXR tiles of no size", exrAnd("tiles", "tiledesc", std::string(9, '\0')),
       "its head is damaged"},
      {"JPEG", patched(jpeg, jpeg.find("\xff\xc0") + 5, std::string("\x3f\xff\x3f\xff")),
       "which a file of"},
      {"TIFF", wide, "which a file of"},
      {"TGA", tga + std::string(40, '\x81'), "which a file of"},
      {"TGA of fewer pixels",
       patched(tga, 12, std::string("\x18\x18\x18\x18")) + std::string(80, '\x18'),
       "damaged or cut off"},
      {"WebP",
       std::string("RIFF\x1e\0\0\0WEBPVP8L\x11\0\0\0\x2f\xff\xff\xff\x0f", 25) +
           std::string(12, '\0'),
       ""},
  };
  for (const Case& c : cases) {
    std::string message;
    const long taken = MebibytesToDecode(c.file, message);
    EXPECT_NE(message, "") << c.name;
    EXPECT_NE(message.find(c.message), std::string::npos) << c.name << ": " << message;
    EXPECT_LT(taken, 64) << c.name;
  }
  for (const std::string& file :
       {exrAnd("views", "stringvector", std::string("\4\0\0\0name\0\0\0\0", 12)),
        exrAnd("preview", "preview", std::string("\2\0\0\0\1\0\0\0rgbargba", 16)),
        exrAnd("tiles", "tiledesc", std::string("\x10\0\0\0\x10\0\0\0\0", 9))}) {
    const std::string message = engine::DecodeImage(file).Message();
    // The pixels are no more where the file says; its head is right.
    EXPECT_EQ(message.find("head") + message.find("claims"), 2 * std::string::npos) << message;
  }
  EXPECT_TRUE(engine::DecodeImage(engine::EncodePng(Gradient(4096, 2048)).Take()))
      << "flat, and fine";
}

// Light beyond white is kept, what a half float cannot hold is bounded, and the note is found.
TEST(ImageFiles, OpenExrKeepsTheLight) {
  const Image light{2, 1, {}, {0.25F, 4, 1000, 1, 1e9F, std::nanf(""), -2, 1}};
  const std::string file = engine::EncodeExr(light, "made of nothing").Take();
  EXPECT_NE(file.find("made of nothing"), std::string::npos);
  EXPECT_EQ(file, engine::EncodeExr(light, "made of nothing").Value());
  const auto read = engine::DecodeImage(file + "what others write behind it");
  ASSERT_TRUE(read) << read.Message();
  EXPECT_EQ(read.Value().floats, (std::vector<float>{0.25F, 4, 1000, 1, 65504, 0, -2, 1}));
  const Image clear{1, 1, {}, {0.5F, 1, 2, 0.25F}};
  EXPECT_EQ(engine::DecodeImage(engine::EncodeExr(clear).Take()).Value().floats, clear.floats);
  EXPECT_FALSE(engine::EncodeExr(Gradient(4, 4)));
}

TEST(ImageFiles, ScaledDownIsTheMeanOfTheLight) {
  const auto gray = [](std::vector<std::uint8_t> levels, std::uint32_t width) {
    Image image{width, static_cast<std::uint32_t>(levels.size()) / width, {}, {}};
    for (const std::uint8_t level : levels)
      image.bytes.insert(image.bytes.end(), {level, level, level, 255});
    return image;
  };
  EXPECT_EQ(PixelText(engine::ScaledDown(gray({0, 255, 255, 0}, 2), 1, 1), 0, 0),
            "188 188 188 255");
  const Image uneven = engine::ScaledDown(gray({0, 255, 255}, 3), 2, 1);
  EXPECT_EQ(PixelText(uneven, 0, 0), "156 156 156 255") << "a third of white, two of black";
  EXPECT_EQ(PixelText(uneven, 1, 0), "255 255 255 255");
  Image half = gray({255, 0}, 2);
  half.bytes[7] = 0;
  EXPECT_EQ(PixelText(engine::ScaledDown(half, 1, 1), 0, 0), "255 255 255 128")
      << "what is not there has no color";
  Image veil = gray({188, 188}, 2);
  veil.bytes[3] = veil.bytes[7] = 100;
  EXPECT_EQ(PixelText(engine::ScaledDown(veil, 1, 1), 0, 0), "188 188 188 100");
  const Image same = Gradient(7, 3);
  EXPECT_EQ(engine::ScaledDown(same, 7, 3).bytes, same.bytes);
  EXPECT_EQ(engine::ScaledDown(same, 70, 30).bytes, same.bytes) << "never larger";
  const Image light{2, 1, {}, {4, 0, 0, 1, 0, 0, 0, 1}};
  EXPECT_EQ(engine::ScaledDown(light, 1, 1).floats, (std::vector<float>{2, 0, 0, 1}));
}

TEST(Colors, SrgbAndBackIsExact) {
  for (int i = 0; i < 256; ++i) {
    const auto byte = static_cast<std::uint8_t>(i);
    ASSERT_EQ(engine::LinearToSrgb(engine::SrgbToLinear(byte)), byte);
  }
  // The formula of the standard, rounded to the nearest byte.
  for (int i = 1; i < 100000; ++i) {
    const double linear = i / 100000.0;
    const double srgb =
        255 * (linear <= 0.0031308 ? linear * 12.92 : 1.055 * std::pow(linear, 1 / 2.4) - 0.055);
    ASSERT_NEAR(engine::LinearToSrgb(static_cast<float>(linear)), srgb, 0.501) << linear;
  }
  EXPECT_NEAR(engine::SrgbToLinear(188), 0.5, 0.01);
  EXPECT_EQ(engine::LinearToSrgb(7.0F), 255);
  EXPECT_EQ(engine::LinearToSrgb(-1.0F), 0);
  EXPECT_EQ(engine::LinearToSrgb(std::nanf("")), 0);
  const Image bytes =
      engine::ToBytes(Image{2, 1, {}, {0.5F, 0.0F, 9.0F, 0.5F, 0.0F, 0.5F, 0.5F, 0.25F}});
  EXPECT_EQ(PixelText(bytes, 0, 0), "188 0 255 128");
  EXPECT_EQ(PixelText(bytes, 1, 0), "0 188 188 64");
}

// By the share of the way to the next byte, up where it is above the threshold.
TEST(Colors, AreRoundedByTheirThreshold) {
  for (int byte = 1; byte < 254; ++byte) {
    const float low = engine::SrgbToLinear(static_cast<std::uint8_t>(byte));
    const float step = engine::SrgbToLinear(static_cast<std::uint8_t>(byte + 1)) - low;
    for (const auto& [share, threshold] : {std::pair(0.3F, 0.1F),
                                           {0.3F, 0.5F},
                                           {0.7F, 0.5F},
                                           {0.7F, 0.9F},
                                           {0.1F, 0.3F},
                                           {0.9F, 0.6F}}) {
      EXPECT_EQ(engine::LinearToSrgb(low + share * step, threshold),
                byte + (share > threshold ? 1 : 0))
          << byte << " " << share << " " << threshold;
    }
  }
  for (const float threshold : {0.0F, 1.0F}) {
    EXPECT_EQ(engine::LinearToSrgb(1, threshold), 255);
    EXPECT_EQ(engine::LinearToSrgb(0, threshold), 0);
  }
}

}  // namespace
