#include "engine/render/SmoothNormals.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "engine/render/Four.h"

namespace engine {

namespace {

constexpr float kSmoothCosine = 0.766F;  // of 40 degrees
// Around a point with more faces than this all of them count: looking at each pair would be
// quadratic.
constexpr std::size_t kMostFacesCompared = 48;
constexpr std::uint32_t kNoTriangle = ~std::uint32_t{0};

// The faces around one point, component by component, so that four are looked at together.
class FacesAround {
 public:
  std::size_t Count() const { return count_; }
  bool IsFull() const { return count_ == kMostFacesCompared; }
  std::size_t Corner(std::size_t i) const { return corners_[i]; }

  // `across` is as long as twice the area.
  void Add(std::size_t corner, Vec across) {
    corners_[count_] = corner;
    x_[count_] = across.x;
    y_[count_] = across.y;
    z_[count_] = across.z;
    ++count_;
  }

  // To be called once all are there, before SmoothNormals.
  void FindUnits() {
    for (std::size_t i = count_; i % 4 != 0; ++i) x_[i] = y_[i] = z_[i] = 0;
    for (std::size_t i = 0; i < count_; i += 4) {
      const FourVecs across{FourAt(x_, i), FourAt(y_, i), FourAt(z_, i)};
      const Four perLength = 1 / Root(Squares(across));
      Put(across.x * perLength, i, unitX_);
      Put(across.y * perLength, i, unitY_);
      Put(across.z * perLength, i, unitZ_);
    }
  }

  // For four faces from the first on: the sum of all that are smooth with each, in their order,
  // with length 1; the face's own direction where that is none.
  FourVecs SmoothNormals(std::size_t first) const {
    const FourVecs own{FourAt(unitX_, first), FourAt(unitY_, first), FourAt(unitZ_, first)};
    FourVecs sum{};
    for (std::size_t i = 0; i < count_; ++i) {
      const FourWhole isSmooth = own.Dot({unitX_[i], unitY_[i], unitZ_[i]}) > kSmoothCosine;
      sum.x += Where(isSmooth, x_[i]);
      sum.y += Where(isSmooth, y_[i]);
      sum.z += Where(isSmooth, z_[i]);
    }
    const Four scale = 1 / Root(Squares(sum));
    const FourVecs normal{sum.x * scale, sum.y * scale, sum.z * scale};
    const FourWhole isUsable = Squares(normal) > 0.5F;
    return {isUsable ? normal.x : own.x, isUsable ? normal.y : own.y, isUsable ? normal.z : own.z};
  }

 private:
  using Components = std::array<float, kMostFacesCompared>;

  static Four FourAt(const Components& from, std::size_t first) {
    return Four{from[first], from[first + 1], from[first + 2], from[first + 3]};
  }
  static void Put(Four four, std::size_t first, Components& to) {
    for (std::size_t i = 0; i < 4; ++i) to[first + i] = four[i];
  }
  static Four Squares(const FourVecs& v) { return v.x * v.x + v.y * v.y + v.z * v.z; }
  static Four Where(FourWhole mask, float number) {
    return std::bit_cast<Four>(mask &
                               std::bit_cast<FourWhole>(Four{number, number, number, number}));
  }

  // Filled as far as counted: most points have six faces.
  std::array<std::size_t, kMostFacesCompared> corners_;
  Components x_, y_, z_, unitX_, unitY_, unitZ_;
  std::size_t count_ = 0;
};

}  // namespace

SmoothNormals::SmoothNormals(std::span<const Vec> points, std::span<const Corners> triangles)
    : points_(points),
      triangles_(triangles),
      first_(points.size(), kNoTriangle),
      next_(triangles.size() * 3),
      normals_(triangles.size() * 3),
      isMade_(points.size()) {
  for (std::size_t i = triangles.size(); i-- > 0;) {
    for (std::size_t c = 0; c < 3; ++c) {
      next_[i * 3 + c] = std::exchange(first_[triangles[i][c]], static_cast<std::uint32_t>(i));
    }
  }
}

void SmoothNormals::Make(std::uint32_t point) const {
  FacesAround around;
  std::uint32_t triangle = first_[point];
  while (triangle != kNoTriangle && !around.IsFull()) {
    const std::size_t corner = CornerAt(triangle, point);
    around.Add(corner, Across(triangle));
    triangle = next_[corner];
  }
  if (triangle != kNoTriangle) {
    MakeOne(point);
  } else {
    around.FindUnits();
    for (std::size_t first = 0; first < around.Count(); first += 4) {
      const FourVecs normals = around.SmoothNormals(first);
      const std::size_t end = std::min<std::size_t>(4, around.Count() - first);
      for (std::size_t i = 0; i < end; ++i)
        Write(around.Corner(first + i), {normals.x[i], normals.y[i], normals.z[i]});
    }
  }
  isMade_[point].store(true, std::memory_order_release);
}

void SmoothNormals::MakeOne(std::uint32_t point) const {
  Vec sum;
  for (std::uint32_t i = first_[point]; i != kNoTriangle; i = next_[CornerAt(i, point)])
    sum += Across(i);
  const Vec normal = Normalized(sum);
  const bool isUsable = IsFinite(normal) && Dot(normal, normal) > 0.5F;
  for (std::uint32_t i = first_[point]; i != kNoTriangle; i = next_[CornerAt(i, point)])
    Write(CornerAt(i, point), isUsable ? normal : Normalized(Across(i)));
}

}  // namespace engine
