// Generated forms, measured; and the preparation of a mesh before rays meet it: the quick way to its
// normals gives, to the bit, the results of the plain one, so that no picture changes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <numeric>
#include <random>
#include <thread>

#include "engine/render/Primitives.h"
#include "engine/render/RenderCaches.h"
#include "host/Host.h"

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

constexpr double kPi = 3.14159265358979;

host::BaseContainer Sizes(host::LONG segments) {
  host::BaseContainer data;
  data.SetVector(host::PRIM_SIZE, host::Vector(2, -3, 5));
  data.SetReal(host::PRIM_RADIUS, 4);
  data.SetReal(host::PRIM_RADIUS2, 1.5);
  data.SetReal(host::PRIM_HEIGHT, 6);
  data.SetReal(host::PRIM_WIDTH, 7);
  data.SetLong(host::PRIM_SEGMENTS, segments);
  return data;
}

// Of the faces as their normals turn them: area, volume within, what of the area faces upwards less
// what faces downwards, and area in the picture.
struct Measures {
  engine::Box box;
  double area = 0, volume = 0, up = 0, inPicture = 0;
};

Measures Measured(const Mesh& mesh) {
  Measures all;
  for (const auto& p : mesh.points) all.box.Add({p[0], p[1], p[2]});
  for (std::size_t i = 0; i < mesh.polygons.size() * 2; ++i) {
    std::array<Vec, 3> p, n, uv;
    for (std::size_t c = 0; c < 3; ++c) {
      const std::size_t corner = c == 0 ? 0 : c + i % 2;
      const auto& point = mesh.points[static_cast<std::size_t>(mesh.polygons[i / 2][corner])];
      const auto& normal = mesh.normals[i / 2 * 4 + corner];
      const auto& at = mesh.uvs[i / 2 * 4 + corner];
      p[c] = {point[0], point[1], point[2]};
      n[c] = {normal[0], normal[1], normal[2]};
      uv[c] = {at[0], at[1], 0};
      EXPECT_NEAR(Length(n[c]), 1, 1e-4);
    }
    Vec across = Cross(p[1] - p[0], p[2] - p[0]) * 0.5F;
    if (Dot(across, n[0]) < 0) across = -across;
    const double area = Length(across);
    for (const Vec& normal : n) EXPECT_GE(Dot(across, normal), area * 0.99 - 1e-6) << i;
    all.area += area;
    all.volume += Dot(across, p[0]) / 3;
    all.up += across.y;
    all.inPicture += std::abs(Cross(uv[1] - uv[0], uv[2] - uv[0]).z) / 2;
  }
  return all;
}

TEST(Primitives, HaveTheirSizesAndFaceOutwards) {
  const double slope = std::hypot(4, 6);
  const struct {
    host::LONG type;
    Vec high, low;
    double area, volume, up, pictures;
  } kRows[] = {
      {host::Ocube, {1, 1.5F, 2.5F}, {-1, -1.5F, -2.5F}, 62, 30, 0, 6},
      {host::Osphere, {4, 4, 4}, {-4, -4, -4}, 64 * kPi, 64 * kPi * 4 / 3, 0, 1},
      {host::Ocone, {4, 3, 4}, {-4, -3, -4}, kPi * (16 + 4 * slope), 32 * kPi, 0, 2},
      {host::Ocylinder, {4, 3, 4}, {-4, -3, -4}, kPi * (32 + 48), 96 * kPi, 0, 3},
      {host::Otorus,
       {5.5F, 1.5F, 5.5F},
       {-5.5F, -1.5F, -5.5F},
       24 * kPi * kPi,
       18 * kPi * kPi,
       0,
       1},
      {host::Odisc, {4, 0, 4}, {-4, 0, -4}, 16 * kPi, 0, 16 * kPi, 1},
      {host::Oplane, {3.5F, 0, 3}, {-3.5F, 0, -3}, 42, 0, 42, 1},
  };
  for (const auto& row : kRows) {
    EXPECT_TRUE(engine::IsPrimitive(row.type));
    const Measures seen = Measured(engine::MakePrimitive(row.type, Sizes(120)));
    EXPECT_LT(Length(seen.box.high - row.high) + Length(seen.box.low - row.low), 0.01) << row.type;
    EXPECT_NEAR(seen.area, row.area, row.area * 0.003) << row.type;
    EXPECT_NEAR(seen.volume, row.volume, row.volume * 0.003 + 1e-3) << row.type;
    EXPECT_NEAR(seen.up, row.up, row.up * 0.003 + 1e-3) << row.type;
    EXPECT_NEAR(seen.inPicture, row.pictures, 1e-3) << row.type;
  }
  EXPECT_FALSE(engine::IsPrimitive(host::Onull));
}

TEST(Primitives, AreAsFineAsTheirSegmentsSay) {
  const struct {
    host::LONG segments;
    std::size_t sphere, torus, cylinder;
  } kRows[] = {{1, 6, 9, 9},
               {4, 8, 12, 12},
               {5, 10, 15, 15},
               {36, 36 * 18, 36 * 18, 108},
               {100000, 512 * 256, 512 * 256, 3 * 512}};
  for (const auto& row : kRows) {
    const auto count = [&](host::LONG type) {
      return engine::MakePrimitive(type, Sizes(row.segments)).polygons.size();
    };
    EXPECT_EQ(count(host::Osphere), row.sphere) << row.segments;
    EXPECT_EQ(count(host::Otorus), row.torus) << row.segments;
    EXPECT_EQ(count(host::Ocylinder), row.cylinder) << row.segments;
  }
  host::BaseContainer unsaid = Sizes(5);
  unsaid.RemoveData(host::PRIM_SEGMENTS);
  EXPECT_EQ(engine::MakePrimitive(host::Osphere, unsaid).polygons.size(), 36U * 18);
}

TEST(Primitives, OfNoSensibleSizeAreEmpty) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const struct {
    host::LONG type;
    std::vector<host::LONG> lengths;
  } kRows[] = {{host::Osphere, {host::PRIM_RADIUS}},
               {host::Ocone, {host::PRIM_RADIUS, host::PRIM_HEIGHT}},
               {host::Ocylinder, {host::PRIM_RADIUS, host::PRIM_HEIGHT}},
               {host::Otorus, {host::PRIM_RADIUS, host::PRIM_RADIUS2}},
               {host::Odisc, {host::PRIM_RADIUS}},
               {host::Oplane, {host::PRIM_WIDTH, host::PRIM_HEIGHT}}};
  for (const auto& row : kRows) {
    for (const host::LONG length : row.lengths) {
      for (const double size : {0.0, -1.0, nan, 1e12, 9e11}) {
        host::BaseContainer data = Sizes(8);
        data.SetReal(length, size);
        EXPECT_EQ(engine::MakePrimitive(row.type, data).polygons.empty(), size != 9e11) << length;
      }
    }
  }
  for (const host::Vector& size : {host::Vector(0, 1, 1), host::Vector(1, 0, 1),
                                   host::Vector(1, 1, 0), host::Vector(1, nan, 1)}) {
    host::BaseContainer data = Sizes(8);
    data.SetVector(host::PRIM_SIZE, size);
    EXPECT_TRUE(engine::MakePrimitive(host::Ocube, data).polygons.empty());
  }
}

TEST(Geometry, ReachesAsFarAsItsTriangles) {
  engine::RenderCaches caches;
  Mesh mesh;
  mesh.points = {{-300, 0, 1}, {50, 0, 0}, {0, 70, 0}, {0, 0, 9}, {0, 999, 0}, {-1, -2, 0}};
  mesh.polygons = {{0, 1, 2, 3}, {5, 1, 2, -1}, {1, 1, 4, -1}};
  const auto geometry = engine::MakeGeometry(caches.Device(), mesh);
  EXPECT_EQ(geometry->bounds.low, (Vec{-300, -2, 0}));
  EXPECT_EQ(geometry->bounds.high, (Vec{50, 70, 9}));
  EXPECT_EQ(geometry->triangles.size(), 3U);
  EXPECT_EQ(geometry->dropped, 1U);
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
