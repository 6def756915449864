// Textures in pictures: where they are found, how they lie on a surface, when they are read, and
// what a bad one costs.
#include <gtest/gtest.h>

#include "engine/render/Renderer.h"
#include "engine/scene/EmbeddedFiles.h"
#include "host/Host.h"
#include "tests/support/SceneBuilder.h"
#include "tests/support/ScratchFolder.h"
#include "tests/support/ScriptedServices.h"

namespace {

using engine::PictureInProgress;
using engine::PictureSetup;
using host::Vector;
using tests::SceneBuilder;

class Textures : public testing::Test {
 protected:
  Textures() {
    scene_.Material("Wall", Vector(1)).Object("Plane", host::Oplane).Texture("Plane", "Wall");
    auto* data = scene_.Last()->GetDataInstance();
    data->SetReal(host::PRIM_WIDTH, 100);
    data->SetReal(host::PRIM_HEIGHT, 100);
    shader_ = scene_.Bitmap(scene_.GetMaterial("Wall"), "left_green.png");
    scene_.GetMaterial("Wall")->GetDataInstance()->SetLink(host::MATERIAL_COLOR_SHADER, shader_);
    scene_.Doc().SetDocumentPath(scratch_.Path().c_str());
    scene_.Object("Light", host::Olight);
    scene_.Last()->GetDataInstance()->SetLong(host::LIGHT_TYPE, 4);
  }

  // Green on the left half, blue on the right.
  static std::string Picture() {
    engine::Image image{8, 8, {}, {}};
    for (int i = 0; i < 64; ++i) {
      const bool left = i % 8 < 4;
      for (const int c : {0, left ? 255 : 0, left ? 0 : 255, 255})
        image.bytes.push_back(static_cast<std::uint8_t>(c));
    }
    return engine::EncodePng(image).Take();
  }

  // "g" or "b" for what dominates at two places left and right in the plane seen from above, "w"
  // for neither.
  std::string Colors(engine::RenderCaches& caches) {
    PictureSetup setup{64, 48, {}, {}, 2, false};
    setup.camera = engine::PictureCamera();
    setup.camera->frame.off = {0, 100, 0};
    setup.camera->frame.v2 = {0, 0, 1};
    setup.camera->frame.v3 = {0, -1, 0};
    auto picture = PictureInProgress::Begin(scene_.Doc(), services_.files, setup, caches).Take();
    picture->Refine();
    notes_ = picture->Notes();
    std::string colors;
    const engine::Image image = picture->Current();
    for (const std::size_t x : {22U, 42U}) {
      const std::uint8_t* p = &image.bytes[(24 * 64 + x) * 4];
      colors += p[1] > p[2] + 50 ? 'g' : p[2] > p[1] + 50 ? 'b' : 'w';
    }
    return colors;
  }
  std::string Colors() {
    engine::RenderCaches caches;
    return Colors(caches);
  }
  host::BaseContainer& TagData() {
    return *scene_.GetTag("Plane", host::Ttexture)->GetDataInstance();
  }
  void Put(const std::string& name) {
    (void)services_.files.MakeFolder(scratch_ / "tex");
    tests::WriteText(scratch_ / name, Picture());
  }

  tests::ScratchFolder scratch_;
  tests::ScriptedServices services_;
  SceneBuilder scene_;
  host::BaseShader* shader_ = nullptr;
  std::vector<std::string> notes_;
};

TEST_F(Textures, AreFoundWhereArtistsPutThem) {
  EXPECT_EQ(Colors(), "ww");
  EXPECT_EQ(notes_, std::vector<std::string>{
                        "The texture \"left_green.png\" is not shown: it was not found."});
  Put("tex/left_green.png");
  EXPECT_EQ(Colors(), "gb");
  EXPECT_TRUE(notes_.empty());
  for (const char* name :
       {"C:\\art\\left_green.png", "/elsewhere/left_green.png", "./tex/left_green.png"}) {
    shader_->GetDataInstance()->SetFilename(host::BITMAPSHADER_FILENAME, name);
    EXPECT_EQ(Colors(), "gb") << name;
  }
}

TEST_F(Textures, AreFoundInTheUsualFoldersAndAfterAMove) {
  const std::pair<const char*, const char*> kRows[] = {
      {"textures/left_green.png", "left_green.png"},
      {"images/left_green.png", "C:\\art\\left_green.png"},
      {"maps/left_green.png", "/old/shot/left_green.png"},
      {"walls/left_green.png", "/old/shot/walls/left_green.png"}};
  for (const auto& [file, name] : kRows) {
    shader_->GetDataInstance()->SetFilename(host::BITMAPSHADER_FILENAME, name);
    EXPECT_EQ(Colors(), "ww") << file;
    (void)services_.files.MakeFolders(scratch_ /
                                      std::string(file).substr(0, std::string(file).find('/')));
    Put(file);
    EXPECT_EQ(Colors(), "gb") << file;
    ASSERT_TRUE(services_.files.RemoveFile(scratch_ / file));
  }
}

// A surface whose texture cannot be shown keeps its color, and the reason is told.
TEST_F(Textures, ThatCannotBeShownCostANote) {
  std::string enormous = engine::EncodePng(engine::Image{1, 1, {1, 2, 3, 255}, {}}).Take();
  enormous.replace(16, 8, std::string("\x7F\xFF\xFF\xFF\x7F\xFF\xFF\xFF", 8));  // width and height
  struct Case {
    std::string bytes;
    const char* note;
  };
  const Case cases[] = {
      {"", "This is no picture"},
      {"\x89PN", "This is no picture"},
      {"no picture", "This is no picture"},
      {Picture().substr(0, 50), ""},
      {enormous, ""},
  };
  for (const Case& c : cases) {
    tests::WriteText(scratch_ / "left_green.png", c.bytes);
    EXPECT_EQ(Colors(), "ww") << c.bytes.size();
    ASSERT_EQ(notes_.size(), 1U) << c.bytes.size();
    EXPECT_NE(notes_[0].find("The texture \"left_green.png\" is not shown: "), std::string::npos)
        << notes_[0];
    EXPECT_NE(notes_[0].find(c.note), std::string::npos) << notes_[0];
  }
  ASSERT_TRUE(services_.files.RemoveFile(scratch_ / "left_green.png"));
  ASSERT_TRUE(services_.files.MakeFolder(scratch_ / "left_green.png"));
  EXPECT_EQ(Colors(), "ww") << "a folder";
  EXPECT_EQ(notes_.size(), 1U);
}

TEST_F(Textures, MayComeInsideTheDocument) {
  engine::AddEmbeddedFile(scene_.Doc(), "left_green.png", Picture());
  engine::RenderCaches caches;
  EXPECT_EQ(Colors(caches), "gb");
  EXPECT_EQ(Colors(caches), "gb");
  EXPECT_EQ(caches.WorkDone().textures, 1U);
}

TEST_F(Textures, FollowOffsetAndTiles) {
  Put("left_green.png");
  EXPECT_EQ(Colors(), "gb");
  TagData().SetVector(host::TEXTURETAG_OFFSET, Vector(0.5, 0, 0));
  EXPECT_EQ(Colors(), "bg");
  TagData().SetVector(host::TEXTURETAG_OFFSET, Vector(0));
  TagData().SetVector(host::TEXTURETAG_TILES, Vector(0));
  EXPECT_EQ(Colors(), "gb") << "once";
  TagData().SetVector(host::TEXTURETAG_TILES, Vector(2, 2, 0));
  EXPECT_EQ(Colors(), "bg") << "the left place lies in the second half of the first repetition";
}

TEST_F(Textures, AreReadAgainOnlyWhenTheirFileChanges) {
  Put("left_green.png");
  engine::RenderCaches caches;
  EXPECT_EQ(Colors(caches), "gb");
  EXPECT_EQ(Colors(caches), "gb");
  EXPECT_EQ(caches.WorkDone().textures, 1U);
  tests::WriteText(scratch_ / "left_green.png", "no picture any more");
  EXPECT_EQ(Colors(caches), "ww");
  EXPECT_EQ(Colors(caches), "ww");
  EXPECT_EQ(caches.WorkDone().textures, 2U);
  EXPECT_EQ(notes_.size(), 1U);
}

TEST_F(Textures, AreWorthReadingAgainWhenTheirFilesHaveChanged) {
  engine::RenderCaches caches;
  const auto changed = [&] { return caches.ForgetChangedFiles(services_.files); };
  EXPECT_EQ(Colors(caches), "ww");
  EXPECT_FALSE(changed());
  Put("left_green.png");
  EXPECT_TRUE(changed());
  EXPECT_EQ(Colors(caches), "gb");
  EXPECT_FALSE(changed());
  tests::WriteText(scratch_ / "left_green.png", "no picture any more");
  EXPECT_TRUE(changed());
  EXPECT_EQ(Colors(caches), "ww");
  EXPECT_FALSE(changed());
  engine::AddEmbeddedFile(scene_.Doc(), "left_green.png", Picture());
  EXPECT_EQ(Colors(caches), "gb");
  EXPECT_FALSE(changed()) << "what is in memory has no file";
}

// A level of a square texture, reckoned the plainest way.
struct PlainLevel {
  int side;
  std::vector<double> pixels;

  double Pixel(int x, int y, engine::Sampling wraps) const {
    const auto inside = [&](int i, engine::TextureWrap wrap) {
      if (wrap == engine::TextureWrap::Clamp) return std::clamp(i, 0, side - 1);
      const int around = ((i % side) + side) % side;
      const bool isTurned = wrap == engine::TextureWrap::Mirror && (i < 0 ? ~i : i) / side % 2;
      const int mirrored = i < 0 && wrap == engine::TextureWrap::Mirror ? ~i % side : around;
      return isTurned ? side - 1 - mirrored : mirrored;
    };
    return pixels[static_cast<std::size_t>(inside(y, wraps.v) * side + inside(x, wraps.u))];
  }
  double At(double u, double v, engine::Sampling wraps) const {
    const double x = u * side - 0.5, y = v * side - 0.5;
    const int left = static_cast<int>(std::floor(x)), top = static_cast<int>(std::floor(y));
    const double across = x - left, down = y - top;
    return (Pixel(left, top, wraps) * (1 - across) + Pixel(left + 1, top, wraps) * across) *
               (1 - down) +
           (Pixel(left, top + 1, wraps) * (1 - across) + Pixel(left + 1, top + 1, wraps) * across) *
               down;
  }
};

TEST(TextureSpots, LieBetweenTheRightPixelsOfTwoLevels) {
  PlainLevel fine{4, {}}, coarse{2, {}};
  engine::Image image{4, 4, {}, {}};
  for (int i = 0; i < 16; ++i) {
    fine.pixels.push_back(i * i % 23);
    image.floats.insert(image.floats.end(), {static_cast<float>(fine.pixels.back()), 0, 0, 1});
  }
  for (int i = 0; i < 4; ++i) {
    const int x = i % 2 * 2, y = i / 2 * 2;
    coarse.pixels.push_back((fine.pixels[y * 4 + x] + fine.pixels[y * 4 + x + 1] +
                             fine.pixels[y * 4 + x + 4] + fine.pixels[y * 4 + x + 5]) /
                            4);
  }
  const engine::Texture texture(image);
  using enum engine::TextureWrap;
  for (const engine::Sampling wraps :
       {engine::Sampling{Repeat, Repeat}, engine::Sampling{Clamp, Mirror},
        engine::Sampling{Mirror, Clamp}, engine::Sampling{Repeat, Clamp}}) {
    for (int i = 0; i < 400; ++i) {
      const float u =
          static_cast<float>(i % 20) * 0.25F - 2.3F + 0.01F * static_cast<float>(i / 20);
      const float v = static_cast<float>(i / 20) * 0.25F - 2.1F;
      const auto at = [&](float detail) {
        return texture.NumbersAt(texture.SpotAt(u, v, detail, wraps)).color.x;
      };
      const double sharp = fine.At(u, v, wraps), blurred = coarse.At(u, v, wraps);
      ASSERT_NEAR(at(0), sharp, 1e-3) << u << ' ' << v;
      ASSERT_NEAR(at(0.5F), blurred, 1e-3) << u << ' ' << v;
      ASSERT_NEAR(at(std::sqrt(0.125F)), (sharp + blurred) / 2, 1e-3) << u << ' ' << v;
    }
  }
  EXPECT_EQ(texture.ColorAt(texture.SpotAt(NAN, 0, 0)).color, engine::Vec{});
  EXPECT_EQ(texture.ColorAt(texture.SpotAt(0, NAN, 0)).color, engine::Vec{});
}

// Each level has half the sides of the one before it, rounded down, and the mean of four pixels.
TEST(TextureLevels, AreHalvesOfPicturesOfAnySize) {
  const struct {
    std::uint32_t width, height;
    std::size_t pixels;  // of all levels
    int firstOfNext, last;
  } kRows[] = {{5, 3, 15 + 2 + 1, (0 + 10 + 50 + 60) / 4, (30 + 50) / 2},
               {1, 4, 4 + 2 + 1, (0 + 10) / 2, (5 + 25) / 2},
               {4, 1, 4 + 2 + 1, (0 + 10) / 2, (5 + 25) / 2},
               {1, 1, 1, 0, 0}};
  for (const auto& row : kRows) {
    engine::Image bytes{row.width, row.height, {}, {}};
    engine::Image floats = bytes;
    for (std::uint32_t i = 0; i < row.width * row.height; ++i) {
      bytes.bytes.insert(bytes.bytes.end(), 4, static_cast<std::uint8_t>(i * 10));
      floats.floats.insert(floats.floats.end(), 4, static_cast<float>(i) * 10 / 255);
    }
    for (const engine::Texture& texture : {engine::Texture(bytes), engine::Texture(floats)}) {
      const auto longest = static_cast<float>(std::max(row.width, row.height));
      const auto at = [&](float detail) {
        const engine::Texel texel = texture.NumbersAt(texture.SpotAt(
            0, 0, detail / longest, {engine::TextureWrap::Clamp, engine::TextureWrap::Clamp}));
        EXPECT_NEAR(texel.color.y, texel.alpha, 1e-5F);
        return texel.color.y * 255;
      };
      EXPECT_NEAR(at(1), 0, 0.01);
      EXPECT_NEAR(at(2), row.firstOfNext, 0.01) << row.width;
      EXPECT_NEAR(at(100), row.last, 0.01) << row.width;
    }
    EXPECT_EQ(engine::Texture(bytes).Bytes(), row.pixels * 4);
    EXPECT_EQ(engine::Texture(floats).Bytes(), row.pixels * 16);
  }
  const auto bytesOf = [](std::uint32_t width) {
    engine::Image image{width, 1, {}, {}};
    image.bytes.resize(std::size_t{width} * 4);
    return engine::Texture(std::move(image)).Bytes() / 4;
  };
  EXPECT_EQ(bytesOf(4096), 8191U);
  EXPECT_EQ(bytesOf(8194), 4095U) << "4097 are too many, too";
}

}  // namespace
