// The look of surfaces, measured: small scenes whose light can be reckoned by hand, with a sheet of
// 2 x 2 m that fills the picture. Colors are linear.
#include <gtest/gtest.h>

#include <cmath>

#include "engine/render/Renderer.h"
#include "engine/scene/EmbeddedFiles.h"
#include "engine/scene/Mesh.h"
#include "engine/scene/PictureParameters.h"
#include "host/Host.h"
#include "tests/support/SceneBuilder.h"
#include "tests/support/ScriptedServices.h"

namespace {

using engine::PictureInProgress;
using engine::TextureWrap;
using host::Vector;
using tests::SceneBuilder;

constexpr std::uint32_t kSide = 48;
using Color = std::array<double, 3>;
using Pixels = std::vector<std::array<int, 4>>;

Color operator*(const Color& a, double b) { return {a[0] * b, a[1] * b, a[2] * b}; }
Color operator+(const Color& a, const Color& b) { return {a[0] + b[0], a[1] + b[1], a[2] + b[2]}; }

// IEC 61966-2-1.
double Linear(double byte) {
  const double s = byte / 255;
  return s <= 0.04045 ? s / 12.92 : std::pow((s + 0.055) / 1.055, 2.4);
}

class Surfaces : public testing::Test {
 protected:
  Surfaces() {
    scene_.Material("Sheet", Vector(0)).Object("Sheet", host::Opolygon).Texture("Sheet", "Sheet");
    SetSheet([](engine::Mesh&) {});
    Look().SetReal(host::MATERIAL_SPECULAR, 0);
    Look().SetReal(host::MATERIAL_ROUGHNESS, 1);
    scene_.Camera("Camera").At("Camera", 0, 0, -500).LookThrough("Camera");
    Data("Camera").SetLong(host::CAMERA_PROJECTION, 1);
    Data("Camera").SetReal(host::CAMERA_WIDTH, 200);
    // So faint that it shows in nothing, but the scene is not without lights.
    scene_.Object("Around", host::Olight);
    Data("Around").SetLong(host::LIGHT_TYPE, 4);
    Data("Around").SetReal(host::LIGHT_BRIGHTNESS, 1e-6);
  }

  template <class Change>
  void SetSheet(const Change& change) {
    engine::Mesh mesh;
    mesh.points = {{-100, -100, 0}, {-100, 100, 0}, {100, 100, 0}, {100, -100, 0}};
    mesh.polygons = {{0, 1, 2, 3}};
    mesh.uvs = {{0, 1}, {0, 0}, {1, 0}, {1, 1}};
    change(mesh);
    engine::SetMesh(*scene_.GetObject("Sheet"), std::make_shared<const engine::Mesh>(mesh));
  }
  host::BaseContainer& Data(const std::string& path) {
    return *scene_.GetObject(path)->GetDataInstance();
  }
  host::BaseContainer& Look() { return *scene_.GetMaterial("Sheet")->GetDataInstance(); }
  void Shine(const Vector& color) { Look().SetVector(host::MATERIAL_LUMINANCE, color); }

  // A picture of these pixels in one row behind a link of the material; its shader.
  host::BaseContainer& Picture(host::LONG link, const Pixels& pixels) {
    engine::Image image{static_cast<std::uint32_t>(pixels.size()), 1, {}, {}};
    for (const auto& pixel : pixels) {
      for (const int part : pixel) image.bytes.push_back(static_cast<std::uint8_t>(part));
    }
    const std::string name =
        engine::AddEmbeddedFile(scene_.Doc(), "picture" + std::to_string(++pictures_) + ".png",
                                engine::EncodePng(image).Take());
    host::BaseShader* shader = scene_.Bitmap(scene_.GetMaterial("Sheet"), name);
    Look().SetLink(link, shader);
    return *shader->GetDataInstance();
  }
  // Lights the sheet from the eye's direction, turned so far to the right and upwards.
  void Sun(double right, double up) {
    if (!sun_) scene_.Object("Sun", host::Olight);
    sun_ = true;
    host::Matrix frame;
    frame.v3 = Vector(-std::sin(right), -std::sin(up), std::cos(right) * std::cos(up));
    scene_.GetObject("Sun")->SetMl(frame);
    Data("Sun").SetLong(host::LIGHT_TYPE, 2);
  }

  std::vector<std::uint8_t> Bytes() {
    engine::RenderCaches caches;
    auto picture = PictureInProgress::Begin(scene_.Doc(), services_.Get().files,
                                            {kSide, kSide, {}, {}, 2, false}, caches)
                       .Take();
    while (!picture->IsFinished()) picture->Refine();
    EXPECT_TRUE(picture->Notes().empty());
    return picture->Current().bytes;
  }
  // The mean over a part of the picture: shares of its width, and its middle rows.
  static Color Mean(const std::vector<std::uint8_t>& bytes, double from = 0.1, double to = 0.9) {
    Color sum{};
    int count = 0;
    for (std::size_t y = kSide / 4; y < kSide * 3 / 4; ++y) {
      for (auto x = static_cast<std::size_t>(from * kSide);
           x < static_cast<std::size_t>(to * kSide); ++x, ++count) {
        for (std::size_t c = 0; c < 3; ++c) sum[c] += Linear(bytes[(y * kSide + x) * 4 + c]);
      }
    }
    return sum * (1.0 / count);
  }
  Color Seen(double from = 0.1, double to = 0.9) { return Mean(Bytes(), from, to); }

  SceneBuilder scene_;
  tests::ScriptedServices services_;
  int pictures_ = 0;
  bool sun_ = false;
};

void ExpectNear(const Color& seen, const Color& meant, double within, const std::string& what) {
  for (std::size_t c = 0; c < 3; ++c) EXPECT_NEAR(seen[c], meant[c], within) << what << " " << c;
}

TEST_F(Surfaces, ShineAsTheirColorTimesTheirPicture) {
  Shine(Vector(0.6, 0.4, 0.2));
  ExpectNear(Seen(), {0.6, 0.4, 0.2}, 0.01, "plain");
  Picture(host::MATERIAL_LUMINANCE_SHADER, {{255, 128, 0, 255}});
  ExpectNear(Seen(), {0.6, 0.4 * Linear(128), 0}, 0.01, "with a picture");
}

// A plain color stands for the picture, and layers show the first of either that is in them.
TEST_F(Surfaces, ShineAsTheFirstOfTheirShaders) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const auto plain = [this](const Vector& color) {
    host::BaseShader* shader = host::BaseShader::Alloc(host::Xcolor);
    scene_.GetMaterial("Sheet")->InsertShader(shader);
    shader->GetDataInstance()->SetVector(host::COLORSHADER_COLOR, color);
    return shader;
  };
  Shine(Vector(0.6, 0.4, 0.2));
  Look().SetLink(host::MATERIAL_LUMINANCE_SHADER, plain(Vector(0.1, 0.5, -3)));
  ExpectNear(Seen(), {0.1, 0.5, 0}, 0.01, "a color");
  Look().SetLink(host::MATERIAL_LUMINANCE_SHADER, plain(Vector(0.1, nan, 0)));
  ExpectNear(Seen(), {0.6, 0.4, 0.2}, 0.01, "what is no color");
  host::BaseShader* layers = host::BaseShader::Alloc(host::Xlayer);
  scene_.GetMaterial("Sheet")->InsertShader(layers);
  Look().SetLink(host::MATERIAL_LUMINANCE_SHADER, layers);
  ExpectNear(Seen(), {0.6, 0.4, 0.2}, 0.01, "layers of nothing");
  for (const Vector& color : {Vector(0.3, 0.1, 0.5), Vector(0.9)}) {
    host::BaseShader* mixture = host::BaseShader::Alloc(host::Xfusion);
    mixture->InsertUnderLast(layers);
    host::BaseShader* shader = host::BaseShader::Alloc(host::Xcolor);
    shader->GetDataInstance()->SetVector(host::COLORSHADER_COLOR, color);
    shader->InsertUnderLast(mixture);
  }
  ExpectNear(Seen(), {0.3, 0.1, 0.5}, 0.01, "the first of several");
}

// A metal in an even white room sends back its color, whatever its roughness: rough ones a little
// more, since more of their facets are seen from the side.
TEST_F(Surfaces, MetalsSendBackTheirColorOfWhatIsAroundThem) {
  scene_.Material("Room", Vector(0)).Object("Room", host::Osphere).Texture("Room", "Room");
  Data("Room").SetReal(host::PRIM_RADIUS, 1000);
  host::BaseContainer& room = *scene_.GetMaterial("Room")->GetDataInstance();
  room.SetVector(host::MATERIAL_LUMINANCE, Vector(0.7));
  room.SetReal(host::MATERIAL_SPECULAR, 0);
  Look().SetVector(host::MATERIAL_COLOR, Vector(0.9, 0.5, 0.2));
  Look().SetReal(host::MATERIAL_METALLIC, 1);
  for (const auto& [roughness, within] :
       {std::pair{0.0, 0.005}, {0.3, 0.01}, {0.6, 0.02}, {1.0, 0.06}}) {
    Look().SetReal(host::MATERIAL_ROUGHNESS, roughness);
    ExpectNear(Seen(), {0.9 * 0.7, 0.5 * 0.7, 0.2 * 0.7}, within, std::to_string(roughness));
  }
}

// Half of the room is lit: a polished sheet shows where its edge is, a rough one a soft change.
TEST_F(Surfaces, RoughMetalsShowWhatIsAroundThemBlurred) {
  scene_.Material("Lamp", Vector(0)).Object("Lamp", host::Oplane).Texture("Lamp", "Lamp");
  scene_.GetMaterial("Lamp")->GetDataInstance()->SetVector(host::MATERIAL_LUMINANCE, Vector(0.7));
  host::Matrix frame;
  frame.off = Vector(500, 0, -600);
  frame.v2 = Vector(0, 0, 1);
  frame.v3 = Vector(0, 1, 0);
  scene_.GetObject("Lamp")->SetMl(frame);
  Data("Lamp").SetReal(host::PRIM_WIDTH, 1000);
  Data("Lamp").SetReal(host::PRIM_HEIGHT, 4000);
  Look().SetVector(host::MATERIAL_COLOR, Vector(1));
  Look().SetReal(host::MATERIAL_METALLIC, 1);
  const auto change = [&](double roughness) {
    Look().SetReal(host::MATERIAL_ROUGHNESS, roughness);
    const auto bytes = Bytes();
    return Mean(bytes, 0.52, 0.6)[0] - Mean(bytes, 0.4, 0.48)[0];
  };
  const double polished = change(0);
  const double satin = change(0.3);
  const double rough = change(0.7);
  EXPECT_GT(polished, 0.4);
  EXPECT_LT(satin, polished * 0.6);
  EXPECT_LT(rough, satin * 0.6);
}

// A picture of roughness and metal is what the factors are: green and blue, times the factors.
TEST_F(Surfaces, PicturesOfRoughnessAndMetalAreTheirFactors) {
  Look().SetVector(host::MATERIAL_COLOR, Vector(0.8, 0.3, 0.2));
  Sun(0.3, 0.2);
  Look().SetReal(host::MATERIAL_ROUGHNESS, 0.5 * 102 / 255);
  Look().SetReal(host::MATERIAL_METALLIC, 51.0 / 255);
  const auto meant = Bytes();
  Look().SetReal(host::MATERIAL_ROUGHNESS, 0.5);
  Look().SetReal(host::MATERIAL_METALLIC, 1);
  EXPECT_NE(Bytes(), meant);
  Picture(engine::kMaterialRoughnessShader, {{255, 102, 51, 255}});
  Picture(engine::kMaterialMetallicShader, {{255, 102, 51, 255}});
  ExpectNear(Mean(Bytes()), Mean(meant), 0.002, "both channels");
}

// A sun along the normal that the map asks for lights the sheet wholly (by the cosine between
// them); what it adds to the light around is looked at.
TEST_F(Surfaces, NormalMapsTurnTheNormal) {
  Look().SetVector(host::MATERIAL_COLOR, Vector(0.6));
  const double angle = 0.4;
  const auto byte = [](double part) { return static_cast<int>(std::lround((part + 1) * 127.5)); };
  host::BaseContainer& shader = Picture(host::MATERIAL_NORMAL_SHADER,
                                        {{byte(std::sin(angle)), 128, byte(std::cos(angle)), 255}});
  struct Case {
    const char* name;
    double rotation, strength, right, up, meant;
  };
  // Coordinates turned by a quarter anticlockwise: what was right in the picture is at the bottom.
  const Case cases[] = {
      {"from the right", 0, 1, angle, 0, 1},
      {"from the left", 0, 1, -angle, 0, std::cos(2 * angle)},
      {"from the eye", 0, 1, 0, 0, std::cos(angle)},
      {"half as strong", 0, 0.5, 0, 0, std::cos(std::atan(0.5 * std::tan(angle)))},
      {"turned, from below", 1.570796, 1, 0, -angle, 1},
      {"turned, from the right", 1.570796, 1, angle, 0, std::cos(angle) * std::cos(angle)}};
  for (const Case& c : cases) {
    shader.SetReal(engine::kBitmapRotation, c.rotation);
    Look().SetReal(engine::kMaterialNormalStrength, c.strength);
    Sun(c.right, c.up);
    Data("Sun").SetReal(host::LIGHT_BRIGHTNESS, 0.8);
    const double with = Seen()[0];
    Data("Sun").SetReal(host::LIGHT_BRIGHTNESS, 1e-6);
    EXPECT_NEAR((with - Seen()[0]) / (0.6 * 0.8), c.meant, 0.02) << c.name;
  }
}

TEST_F(Surfaces, AreCutAndSeenThroughAsTheirPicturesSay) {
  scene_.Material("Wall", Vector(0)).Object("Wall", host::Oplane).Texture("Wall", "Wall");
  host::BaseContainer& wall = *scene_.GetMaterial("Wall")->GetDataInstance();
  wall.SetVector(host::MATERIAL_LUMINANCE, Vector(0, 0.6, 0));
  wall.SetReal(host::MATERIAL_SPECULAR, 0);
  host::Matrix frame;
  frame.off = Vector(0, 0, 100);
  frame.v2 = Vector(0, 0, 1);
  frame.v3 = Vector(0, 1, 0);
  scene_.GetObject("Wall")->SetMl(frame);
  Shine(Vector(0.6, 0, 0));
  const auto halves = [](std::array<int, 4> left, std::array<int, 4> right) {
    return Pixels{left, left, left, left, right, right, right, right};
  };
  const Pixels opacities = halves({255, 255, 255, 51}, {255, 255, 255, 204});
  const Pixels grays = halves({51, 51, 51, 255}, {204, 204, 204, 255});
  struct Case {
    const char* name;
    host::LONG mode;
    host::LONG link;
    Pixels pixels;
    double alpha, left, right;  // what the sheet covers
  };
  const Case cases[] = {{"opaque", 0, host::MATERIAL_COLOR_SHADER, opacities, 0.5, 1, 1},
                        {"cut", 1, host::MATERIAL_COLOR_SHADER, opacities, 1, 0, 1},
                        {"cut, factor", 1, host::MATERIAL_COLOR_SHADER, opacities, 0.5, 0, 0},
                        {"blended", 2, host::MATERIAL_COLOR_SHADER, opacities, 1, 0.2, 0.8},
                        {"factor", 2, host::MATERIAL_COLOR_SHADER, opacities, 0.5, 0.1, 0.4},
                        {"gray", 2, engine::kMaterialOpacityShader, grays, 1, 0.2, 0.8},
                        {"gray, cut", 1, engine::kMaterialOpacityShader, grays, 1, 0, 1},
                        {"above all modes", 9, host::MATERIAL_COLOR_SHADER, opacities, 1, 0.2, 0.8},
                        {"below them", -3, host::MATERIAL_COLOR_SHADER, opacities, 1, 1, 1}};
  for (const Case& c : cases) {
    for (const host::LONG link : {host::MATERIAL_COLOR_SHADER, engine::kMaterialOpacityShader})
      Look().RemoveData(link);
    Picture(c.link, c.pixels);
    Look().SetLong(host::MATERIAL_ALPHA_MODE, c.mode);
    Look().SetReal(host::MATERIAL_ALPHA, c.alpha);
    const auto bytes = Bytes();
    const auto meant = [](double share) { return Color{0.6 * share, 0.6 * (1 - share), 0}; };
    ExpectNear(Mean(bytes, 0.2, 0.3), meant(c.left), 0.015, c.name);
    ExpectNear(Mean(bytes, 0.7, 0.8), meant(c.right), 0.015, c.name);
  }
  for (const host::LONG link : {host::MATERIAL_COLOR_SHADER, engine::kMaterialOpacityShader})
    Look().RemoveData(link);
  SetSheet([](engine::Mesh& mesh) { mesh.colors.assign(4, {1, 1, 1, 0.5F}); });
  Look().SetLong(host::MATERIAL_ALPHA_MODE, 2);
  for (const auto& [alpha, covered] : {std::pair(0.8, 0.4), {7.0, 0.5}, {-1.0, 0.0}}) {
    Look().SetReal(host::MATERIAL_ALPHA, alpha);
    ExpectNear(Seen(), {0.6 * covered, 0.6 * (1 - covered), 0}, 0.015, "corners");
  }
}

// As much light as a sheet whose corners are clear lets through.
TEST_F(Surfaces, ClearCornersCastClearShadows) {
  Look().SetVector(host::MATERIAL_COLOR, Vector(0.8));
  scene_.Material("Veil").Object("Veil", host::Opolygon).At("Veil", 0, 0, -200);
  scene_.Texture("Veil", "Veil").Tag("Veil", host::Tcompositing);
  scene_.GetTag("Veil", host::Tcompositing)
      ->GetDataInstance()
      ->SetBool(host::COMPOSITINGTAG_SEENBYCAMERA, false);
  host::BaseContainer& veil = *scene_.GetMaterial("Veil")->GetDataInstance();
  Sun(0, 0);
  Data("Sun").SetLong(host::LIGHT_SHADOW, 1);
  const auto lit = [&](float alpha, host::LONG mode) {
    engine::Mesh mesh = *engine::MeshOf(*scene_.GetObject("Sheet"));
    mesh.colors.assign(4, {1, 1, 1, alpha});
    engine::SetMesh(*scene_.GetObject("Veil"), std::make_shared<const engine::Mesh>(mesh));
    veil.SetLong(host::MATERIAL_ALPHA_MODE, mode);
    Data("Sun").SetReal(host::LIGHT_BRIGHTNESS, 0.8);
    const double with = Seen()[0];
    Data("Sun").SetReal(host::LIGHT_BRIGHTNESS, 1e-6);
    return with - Seen()[0];
  };
  const double whole = lit(0, 2);
  EXPECT_GT(whole, 0.5);
  EXPECT_NEAR(lit(0.5F, 2) / whole, 0.5, 0.02);
  EXPECT_NEAR(lit(1, 2) / whole, 0, 0.02);
  EXPECT_NEAR(lit(0.4F, 1) / whole, 1, 0.02) << "cut";
  EXPECT_NEAR(lit(0.2F, 0) / whole, 0, 0.02) << "opaque";
}

TEST_F(Surfaces, ColorsOfCornersAreBetweenThem) {
  SetSheet([](engine::Mesh& mesh) {
    mesh.colors = {{1, 0, 0, 1}, {1, 0, 0, 1}, {0, 0, 1, 1}, {0, 0, 1, 1}};
  });
  Look().SetVector(host::MATERIAL_COLOR, Vector(0.8));
  Sun(0, 0);
  Data("Sun").SetReal(host::LIGHT_BRIGHTNESS, 0.7);
  const auto bytes = Bytes();
  const Color left = Mean(bytes, 0.1, 0.2);
  const Color right = Mean(bytes, 0.8, 0.9);
  // Light around has another color than the sun: compared is each channel with itself.
  EXPECT_NEAR(left[2] / right[2], 0.15 / 0.85, 0.02);
  EXPECT_NEAR(right[0] / left[0], 0.15 / 0.85, 0.02);
  EXPECT_LT(left[1], 0.01);
}

TEST_F(Surfaces, OcclusionTakesFromTheLightAroundOnly) {
  Look().SetVector(host::MATERIAL_COLOR, Vector(0.9));
  const Color open = Seen();
  Picture(engine::kMaterialOcclusionShader, {{102, 255, 255, 255}});
  ExpectNear(Seen(), open * 0.4, 0.01, "wholly");
  Look().SetReal(engine::kMaterialOcclusion, 0.5);
  ExpectNear(Seen(), open * 0.7, 0.01, "by half");
  Sun(0, 0);
  Data("Sun").SetReal(host::LIGHT_BRIGHTNESS, 0.4);
  ExpectNear(Seen(), open * 0.7 + Color{0.36, 0.36, 0.36}, 0.015, "a sun is no light around");
}

// Four fields of the sheet show a row of four pixels, scaled, moved and continued over its edges.
TEST_F(Surfaces, PicturesLieAsTheirShadersSay) {
  const Pixels pixels = {
      {255, 0, 0, 255}, {0, 255, 0, 255}, {0, 0, 255, 255}, {255, 255, 255, 255}};
  Shine(Vector(0.6));
  host::BaseContainer& shader = Picture(host::MATERIAL_LUMINANCE_SHADER, pixels);
  struct Case {
    const char* name;
    double offset, tiles, rotation;
    TextureWrap wrap;
    const char* meant;
  };
  constexpr double kHalfTurn = 3.14159265358979;
  const Case cases[] = {{"as it is", 0, 1, 0, TextureWrap::Repeat, "rgbw"},
                        {"moved", 0.25, 1, 0, TextureWrap::Repeat, "gbwr"},
                        {"moved, clamped", 0.25, 1, 0, TextureWrap::Clamp, "gbww"},
                        {"moved, mirrored", 0.25, 1, 0, TextureWrap::Mirror, "gbww"},
                        {"far, mirrored", 1, 1, 0, TextureWrap::Mirror, "wbgr"},
                        {"back, mirrored", -0.5, 1, 0, TextureWrap::Mirror, "grrg"},
                        {"back, clamped", -0.5, 1, 0, TextureWrap::Clamp, "rrrg"},
                        {"scaled", 0, 0.5, 0, TextureWrap::Repeat, "rrgg"},
                        {"scaled, then moved", 0.5, 0.5, 0, TextureWrap::Repeat, "bbww"},
                        {"turned", 0, 1, kHalfTurn, TextureWrap::Repeat, "wbgr"},
                        {"turned, clamped", 0, 1, kHalfTurn, TextureWrap::Clamp, "rrrr"}};
  for (const Case& c : cases) {
    shader.SetVector(engine::kBitmapOffset, Vector(c.offset, 0, 0));
    shader.SetVector(engine::kBitmapTiles, Vector(c.tiles, 1, 0));
    shader.SetReal(engine::kBitmapRotation, c.rotation);
    shader.SetLong(engine::kBitmapWrapU, static_cast<host::LONG>(c.wrap));
    const auto bytes = Bytes();
    std::string shown;
    for (const double middle : {0.125, 0.375, 0.625, 0.875}) {
      const Color color = Mean(bytes, middle - 0.03, middle + 0.03);
      const bool white = color[0] > 0.3 && color[1] > 0.3;
      shown += white ? 'w' : color[0] > 0.3 ? 'r' : color[1] > 0.3 ? 'g' : 'b';
    }
    EXPECT_EQ(shown, c.meant) << c.name;
  }
}

// Between the middles of two pixels there is a mixture of them, or an edge.
TEST_F(Surfaces, PicturesOfFewPixelsAreSharpWhereTheyAreMeantSo) {
  Shine(Vector(0.6));
  host::BaseContainer& shader =
      Picture(host::MATERIAL_LUMINANCE_SHADER, {{255, 0, 0, 255}, {0, 0, 255, 255}});
  const auto redAt = [&](double middle) {
    const auto bytes = Bytes();
    return Mean(bytes, middle - 0.03, middle + 0.03)[0];
  };
  EXPECT_LT(redAt(0.45), 0.5);
  EXPECT_GT(redAt(0.55), 0.1);
  shader.SetBool(engine::kBitmapIsSharp, host::TRUE);
  EXPECT_NEAR(redAt(0.45), 0.6, 0.02);
  EXPECT_LT(redAt(0.55), 0.05);
}

TEST_F(Surfaces, WhatLetsLightThroughIsSeenThrough) {
  Look().SetVector(host::MATERIAL_COLOR, Vector(0));
  Look().SetReal(host::MATERIAL_SPECULAR, 0);
  const auto seen = [&](double transmission, double metallic) {
    Look().SetReal(engine::kMaterialTransmission, transmission);
    Look().SetReal(host::MATERIAL_METALLIC, metallic);
    return Seen()[2];
  };
  const double closed = seen(0, 0);
  const double half = seen(0.5, 0);
  const double open = seen(1, 0);
  EXPECT_GT(half, closed + 0.02);
  EXPECT_GT(open, half + 0.02);
  EXPECT_NEAR(seen(1, 1), closed, 0.02) << "no light goes through metal";
}

TEST_F(Surfaces, ALargeLampHasSoftShadows) {
  Look().SetVector(host::MATERIAL_COLOR, Vector(0.8));
  scene_.Object("Lamp", host::Olight).At("Lamp", 0, 0, -400);
  Data("Lamp").SetLong(host::LIGHT_SHADOW, 1);
  scene_.Cube("Screen").At("Screen", -150, 0, -200);
  scene_.GetObject("Screen")
      ->MakeTag(host::Tcompositing)
      ->GetDataInstance()
      ->SetBool(host::COMPOSITINGTAG_SEENBYCAMERA, false);
  Data("Screen").SetVector(host::PRIM_SIZE, Vector(300, 2000, 1));
  const auto change = [&](double radius) {
    Data("Lamp").SetReal(engine::kLightRadius, radius);
    const auto bytes = Bytes();
    return Mean(bytes, 0.54, 0.58)[0] - Mean(bytes, 0.42, 0.46)[0];
  };
  const double hard = change(0);
  EXPECT_GT(hard, 0.5);
  // Of a disc of radius 1, what lies on one side of a line at 0.24 from its middle, less the rest.
  EXPECT_NEAR(change(50) / hard, 0.303, 0.04) << "the shadow's edge is 1 m wide";
}

// Nothing that a scene says in the new parameters, if it says what was so before, moves a byte.
TEST_F(Surfaces, ScenesWithoutTheseParametersLookAsBefore) {
  Look().SetVector(host::MATERIAL_COLOR, Vector(0.7, 0.5, 0.3));
  Look().SetReal(host::MATERIAL_SPECULAR, 0.8);
  Look().SetReal(host::MATERIAL_ROUGHNESS, 0.2);
  Sun(0.3, 0.5);
  scene_.Object("Ball", host::Osphere).At("Ball", 0, 0, -120).Texture("Ball", "Sheet");
  Data("Ball").SetReal(host::PRIM_RADIUS, 50);
  host::BaseContainer& shader =
      Picture(host::MATERIAL_COLOR_SHADER, {{255, 0, 0, 255}, {40, 255, 0, 255}});
  const auto before = Bytes();
  const Pixels white = {{255, 255, 255, 255}};
  for (const host::LONG link : {engine::kMaterialRoughnessShader, engine::kMaterialMetallicShader,
                                engine::kMaterialOcclusionShader, engine::kMaterialOpacityShader})
    Picture(link, white);
  Look().SetReal(engine::kMaterialOcclusion, 1);
  Look().SetReal(engine::kMaterialNormalStrength, 1);
  shader.SetVector(engine::kBitmapOffset, Vector(0));
  shader.SetVector(engine::kBitmapTiles, Vector(1));
  shader.SetReal(engine::kBitmapRotation, 0);
  SetSheet([](engine::Mesh& mesh) { mesh.colors.assign(4, {1, 1, 1, 1}); });
  EXPECT_EQ(Bytes(), before);
}

}  // namespace
