// Preparation of a mesh before rays meet it: the quick way to its normals gives, to the bit, the
// results of the plain one, so that no picture changes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <numeric>
#include <random>
#include <thread>

#include "engine/render/RenderCaches.h"

namespace {

using engine::Cross;
using engine::Dot;
using engine::Geometry;
using engine::Mesh;
using engine::Normalized;
using engine::Vec;

constexpr float kSmoothCosine = 0.766F;
constexpr std::size_t kMostFacesCompared = 48;

Vec FaceNormal(const Geometry& geometry, std::size_t face) {
  const Geometry::Corners& t = geometry.triangles[face];
  return Cross(geometry.points[t[1]] - geometry.points[t[0]],
               geometry.points[t[2]] - geometry.points[t[0]]);
}

using Normals = std::vector<std::array<Vec, 3>>;

// For each corner all faces at its point, one by one.
Normals PlainNormals(const Geometry& geometry) {
  std::vector<std::vector<std::size_t>> faces(geometry.points.size());
  for (std::size_t i = 0; i < geometry.triangles.size(); ++i) {
    for (const std::uint32_t point : geometry.triangles[i]) faces[point].push_back(i);
  }
  Normals normals(geometry.triangles.size());
  for (std::size_t i = 0; i < normals.size(); ++i) {
    const Vec own = Normalized(FaceNormal(geometry, i));
    for (std::size_t c = 0; c < 3; ++c) {
      const auto& around = faces[geometry.triangles[i][c]];
      Vec sum;
      for (const std::size_t other : around) {
        const Vec normal = FaceNormal(geometry, other);
        if (around.size() > kMostFacesCompared || Dot(own, Normalized(normal)) > kSmoothCosine)
          sum += normal;
      }
      sum = Normalized(sum);
      normals[i][c] = engine::IsFinite(sum) && Dot(sum, sum) > 0.5F ? sum : own;
    }
  }
  return normals;
}

// Asked for in an order of its own for each seed, as rays do.
Normals NormalsOf(const Geometry& geometry, unsigned seed) {
  std::vector<std::size_t> order(geometry.triangles.size());
  std::iota(order.begin(), order.end(), 0U);
  std::ranges::shuffle(order, std::mt19937(seed));
  Normals normals(order.size());
  for (const std::size_t triangle : order) normals[triangle] = geometry.NormalsOf(triangle);
  return normals;
}

// Triangles and quadrangles between points in a box that is so thick; some of them in one point,
// some without an area, some nowhere.
Mesh RandomMesh(unsigned seed, std::size_t points, std::size_t polygons, float thick) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<float> place(-1, 1);
  std::uniform_int_distribution<std::int32_t> corner(0, static_cast<std::int32_t>(points) - 1);
  Mesh mesh;
  for (std::size_t i = 0; i < points; ++i)
    mesh.points.push_back({place(random), thick * place(random), place(random)});
  mesh.points[1] = mesh.points[0];
  mesh.points[2][0] = std::numeric_limits<float>::infinity();
  for (std::size_t i = 0; i < polygons; ++i) {
    const std::int32_t first = i % 3 == 0 ? 3 : corner(random);
    const std::int32_t last = i % 2 == 0 ? -1 : corner(random);
    mesh.polygons.push_back({first, corner(random), corner(random), last});
  }
  return mesh;
}

TEST(Geometry, NormalsAreThoseOfThePlainWayToTheBit) {
  engine::RenderCaches caches;
  ASSERT_TRUE(caches.Device());
  const struct {
    std::size_t points;
    std::size_t polygons;
    float thick;
  } kRows[] = {{8, 6, 1}, {40, 60, 1}, {300, 400, 0.05F}, {60, 400, 0.001F}, {30, 900, 1}};
  unsigned seed = 1;
  for (const auto& row : kRows) {
    const Mesh mesh = RandomMesh(seed++, row.points, row.polygons, row.thick);
    const auto geometry = engine::MakeGeometry(caches.Device(), mesh);
    ASSERT_TRUE(geometry);
    EXPECT_GT(geometry->dropped, 0U);
    EXPECT_EQ(NormalsOf(*geometry, seed), PlainNormals(*geometry)) << "seed " << seed - 1;
  }
}

TEST(Geometry, NormalsAreTheSameForThreadsThatNeedThemTogether) {
  engine::RenderCaches caches;
  const Mesh mesh = RandomMesh(7, 3000, 9000, 0.05F);
  const auto geometry = engine::MakeGeometry(caches.Device(), mesh);
  ASSERT_TRUE(geometry);
  std::array<Normals, 4> found;
  {
    std::vector<std::jthread> threads;
    for (unsigned i = 0; i < found.size(); ++i)
      threads.emplace_back([&, i] { found[i] = NormalsOf(*geometry, i); });
  }
  const Normals plain = PlainNormals(*geometry);
  for (const Normals& normals : found) EXPECT_EQ(normals, plain);
}

TEST(PageAllocator, KeepsWhatIsGivenBackForArraysOfAboutThatSize) {
  constexpr std::size_t kMiB = 1 << 20;
  engine::GivePagesBack(engine::TakePages(8 * kMiB), 8 * kMiB);
  const std::size_t kept = engine::KeptPageBytes();
  EXPECT_GE(kept, 8 * kMiB);
  void* const again = engine::TakePages(8 * kMiB);
  EXPECT_EQ(engine::KeptPageBytes(), kept - 8 * kMiB);
  std::memset(again, 1, 8 * kMiB);
  engine::GivePagesBack(again, 8 * kMiB);
  // Nobody keeps more than the bound, and nothing of it when there is no more memory.
  constexpr std::size_t kLarge = engine::kMostKeptPageBytes / 2 + 1;
  void* const large[] = {engine::TakePages(kLarge), engine::TakePages(kLarge)};
  for (void* const pages : large) engine::GivePagesBack(pages, kLarge);
  EXPECT_LE(engine::KeptPageBytes(), engine::kMostKeptPageBytes);
  EXPECT_THROW(engine::TakePages(std::size_t{1} << 60), std::bad_alloc);
  EXPECT_EQ(engine::KeptPageBytes(), 0U);
  EXPECT_THROW(engine::PagedVector<Vec>().reserve(std::size_t{1} << 58), std::exception);
}

}  // namespace
