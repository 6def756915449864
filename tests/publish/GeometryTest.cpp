// Meshes as files of glTF have them: directions reckoned from what the mesh says, and numbers that
// are none.
#include "engine/publish/GltfGeometry.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

namespace {

using Place = std::array<double, 3>;

std::vector<float> FloatsOf(const std::string& bytes) {
  std::vector<float> floats(bytes.size() / sizeof(float));
  std::memcpy(floats.data(), bytes.data(), bytes.size());
  return floats;
}

Place Unit(const Place& p) {
  const double length = std::sqrt(p[0] * p[0] + p[1] * p[1] + p[2] * p[2]);
  return {p[0] / length, p[1] / length, p[2] / length};
}

Place CrossOf(const Place& a, const Place& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

void ExpectNear(const std::vector<float>& floats, std::size_t at, const Place& meant) {
  for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(floats.at(at + i), meant[i], 1e-5) << i;
}

TEST(PublishedGeometry, ColorsOfCornersAreKeptWithinTheirBounds) {
  engine::Mesh mesh;
  mesh.points = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
  mesh.polygons = {{0, 1, 2, -1}};
  mesh.colors = {{0.5F, 0.25F, 0, 1}, {2, -1, NAN, 0.5F}, {0, 0, 0, 0}, {}};
  const engine::GltfGeometry geometry = engine::MakeGltfGeometry(mesh);
  ASSERT_EQ(geometry.vertices, 3U);
  EXPECT_EQ(FloatsOf(geometry.colors),
            (std::vector<float>{0.5F, 0.25F, 0, 1, 0, 0, 0, 0, 1, 0, 1, 0.5F}));
}

// A triangle that lies askew, with its picture either way round: tangents show where the picture's
// right is, the fourth number which way round it lies. Normals that are none are made.
TEST(PublishedGeometry, TangentsFollowThePicture) {
  const Place right = Unit({0.6, 0.3, -0.5});
  const Place across = Unit(CrossOf(right, {0.2, 1, 0.4}));
  const Place down = CrossOf(across, right);
  const float uvs[3][2] = {{0.1F, 0.2F}, {0.9F, 0.3F}, {0.4F, 0.8F}};
  for (const double turn : {1.0, -1.0}) {
    for (const bool hasNormals : {true, false}) {
      engine::Mesh mesh;
      for (const auto& [u, v] : uvs) {
        mesh.points.emplace_back();
        for (std::size_t i = 0; i < 3; ++i)
          mesh.points.back()[i] = static_cast<float>(100 * (u * right[i] + turn * v * down[i]));
        mesh.uvs.push_back({u, v});
      }
      mesh.uvs.push_back({0, 0});
      mesh.polygons = {{0, 1, 2, -1}};
      // That of the triangle; the file's space is the scene's, mirrored in z.
      const Place normal = {turn * across[0], turn * across[1], turn * across[2]};
      const float part = hasNormals ? 1 : NAN;
      for (int i = 0; i < 4; ++i) {
        mesh.normals.push_back({static_cast<float>(normal[0]) * part,
                                static_cast<float>(normal[1]) * part,
                                static_cast<float>(normal[2]) * part});
      }
      const engine::GltfGeometry geometry = engine::MakeGltfGeometry(mesh);
      const std::vector<float> tangents = FloatsOf(geometry.tangents);
      const std::vector<float> normals = FloatsOf(geometry.normals);
      ASSERT_EQ(tangents.size(), 12U);
      const Place up = {-turn * down[0], -turn * down[1], turn * down[2]};
      for (std::size_t i = 0; i < 3; ++i) {
        const Place tangent = {right[0], right[1], -right[2]};
        ExpectNear(tangents, i * 4, tangent);
        const Place n = {normals[i * 3], normals[i * 3 + 1], normals[i * 3 + 2]};
        EXPECT_NEAR(std::abs(n[0] * normal[0] + n[1] * normal[1] - n[2] * normal[2]), 1, 1e-5);
        const Place side = CrossOf(n, tangent);
        const double upwards = side[0] * up[0] + side[1] * up[1] + side[2] * up[2];
        EXPECT_EQ(tangents[i * 4 + 3], upwards > 0 ? 1 : -1);
      }
    }
  }
}

// A row of triangles with so many points; the largest number of 16 bits is none in the format.
TEST(PublishedGeometry, IndicesAreAsLongAsTheyNeed) {
  for (const std::uint32_t points : {4U, 65535U, 65536U}) {
    engine::Mesh mesh;
    for (std::uint32_t i = 0; i < points; ++i) {
      const auto x = static_cast<float>(i);
      mesh.points.push_back({x, static_cast<float>(i % 2), 0});
    }
    for (std::int32_t i = 0; i + 2 < static_cast<std::int32_t>(points); ++i)
      mesh.polygons.push_back({i, i + 1, i + 2, -1});
    const engine::GltfGeometry geometry = engine::MakeGltfGeometry(mesh);
    EXPECT_EQ(geometry.vertices, points);
    EXPECT_EQ(geometry.hasShortIndices, points <= 65535);
    EXPECT_EQ(geometry.indices.size(), (points - 2) * 3 * (points <= 65535 ? 2U : 4U));
  }
}

}  // namespace
