#include "engine/publish/NodeTexts.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "engine/publish/GltfGeometry.h"
#include "engine/publish/GltfText.h"
#include "engine/scene/Extras.h"
#include "engine/scene/Vectors.h"

namespace engine {

namespace {

using host::Matrix;
using host::Vector;

// Axes whose angles differ by more than this from a right one lean.
constexpr double kUpright = 1e-6;
// Other programs take matrices apart in single precision; with longer axes than this it is done
// here.
constexpr double kLongAxis = 10;

bool IsUsable(const Matrix& m) {
  for (const Vector* v : {&m.off, &m.v1, &m.v2, &m.v3}) {
    if (!std::isfinite(v->x) || !std::isfinite(v->y) || !std::isfinite(v->z)) return false;
  }
  return true;
}

// The frame with z pointing the other way and lengths in meters.
Matrix Mirrored(const Matrix& m) {
  return {{m.off.x * kMetresPerUnit, m.off.y * kMetresPerUnit, 0.0 - m.off.z * kMetresPerUnit},
          {m.v1.x, m.v1.y, 0.0 - m.v1.z},
          {m.v2.x, m.v2.y, 0.0 - m.v2.z},
          {0.0 - m.v3.x, 0.0 - m.v3.y, m.v3.z}};
}

bool Lean(const Vector& a, const Vector& b) {
  return std::abs(DotOf(a, b)) > kUpright * LengthOf(a) * LengthOf(b);
}

// Turns the frame's own axes until none leans, so that frame = upright x turn (one-sided Jacobi);
// the turn goes into `turn`.
Matrix Upright(Matrix frame, Matrix& turn) {
  Matrix turned;
  const std::array<Vector*, 3> axes = {&frame.v1, &frame.v2, &frame.v3};
  const std::array<Vector*, 3> turns = {&turned.v1, &turned.v2, &turned.v3};
  constexpr int kSweeps = 20;  // it is quadratic: five are enough
  for (int sweep = 0; sweep < kSweeps; ++sweep) {
    for (const auto& [p, q] : {std::pair(0U, 1U), {0U, 2U}, {1U, 2U}}) {
      const double across = DotOf(*axes[p], *axes[q]);
      if (across == 0) continue;
      const double zeta = (DotOf(*axes[q], *axes[q]) - DotOf(*axes[p], *axes[p])) / (2 * across);
      const double t = std::copysign(1.0, zeta) / (std::abs(zeta) + std::sqrt(1 + zeta * zeta));
      const double c = 1 / std::sqrt(1 + t * t);
      for (const auto& of : {axes, turns}) {
        const Vector former = *of[p];
        *of[p] = Sum(Scaled(former, c), Scaled(*of[q], -c * t));
        *of[q] = Sum(Scaled(former, c * t), Scaled(*of[q], c));
      }
    }
  }
  turn = {{},
          {turned.v1.x, turned.v2.x, turned.v3.x},
          {turned.v1.y, turned.v2.y, turned.v3.y},
          {turned.v1.z, turned.v2.z, turned.v3.z}};
  return frame;
}

void AppendMatrix(std::string& to, const Matrix& m) {
  AppendNumbers(to, "matrix",
                std::array{m.v1.x, m.v1.y, m.v1.z, 0.0, m.v2.x, m.v2.y, m.v2.z, 0.0, m.v3.x, m.v3.y,
                           m.v3.z, 0.0, m.off.x, m.off.y, m.off.z, 1.0});
}

// The turn as a quaternion (x, y, z, w) of a frame whose axes are upright and have length 1.
std::array<double, 4> QuaternionOf(const Matrix& m) {
  // Squares of the four parts, four times each; the largest one is divided by. Shepperd's method:
  // whichever part is largest, nothing is divided by a small number.
  const std::array<double, 4> squares = {1 + m.v1.x - m.v2.y - m.v3.z, 1 - m.v1.x + m.v2.y - m.v3.z,
                                         1 - m.v1.x - m.v2.y + m.v3.z,
                                         1 + m.v1.x + m.v2.y + m.v3.z};
  const std::array<std::array<double, 4>, 4> products = {{
      {squares[0], m.v1.y + m.v2.x, m.v1.z + m.v3.x, m.v2.z - m.v3.y},
      {m.v1.y + m.v2.x, squares[1], m.v2.z + m.v3.y, m.v3.x - m.v1.z},
      {m.v1.z + m.v3.x, m.v2.z + m.v3.y, squares[2], m.v1.y - m.v2.x},
      {m.v2.z - m.v3.y, m.v3.x - m.v1.z, m.v1.y - m.v2.x, squares[3]},
  }};
  const auto largest =
      static_cast<std::size_t>(std::max_element(squares.begin(), squares.end()) - squares.begin());
  std::array<double, 4> turn = products[largest];
  double length = 0;
  for (const double part : turn) length += part * part;
  for (double& part : turn) part /= std::sqrt(length);
  return turn;
}

// As a move, a turn and a scale; a mirrored frame has all its axes scaled below zero.
void AppendParts(std::string& to, const Matrix& m) {
  const double sign = Determinant(m) < 0 ? -1 : 1;
  const std::array<double, 3> scale = {sign * LengthOf(m.v1), sign * LengthOf(m.v2),
                                       sign * LengthOf(m.v3)};
  AppendNumbers(to, "translation", std::array{m.off.x, m.off.y, m.off.z});
  AppendNumbers(to, "rotation",
                QuaternionOf({{},
                              Scaled(m.v1, 1 / scale[0]),
                              Scaled(m.v2, 1 / scale[1]),
                              Scaled(m.v3, 1 / scale[2])}));
  AppendNumbers(to, "scale", scale);
}

// The frame is upright.
void AppendUpright(std::string& to, const Matrix& m) {
  const double longest = std::max({LengthOf(m.v1), LengthOf(m.v2), LengthOf(m.v3)});
  longest > kLongAxis ? AppendParts(to, m) : AppendMatrix(to, m);
}

// A frame that is flat in a direction shows nothing of what is in it.
void AppendFrame(NodeText& text, const Matrix& m) {
  const bool moves = m.off != Vector();
  const bool turns = m.v1 != Vector(1, 0, 0) || m.v2 != Vector(0, 1, 0) || m.v3 != Vector(0, 0, 1);
  const bool isFlat = !std::isnormal(Determinant(m));
  if (!turns || isFlat) {
    if (moves) AppendNumbers(text.members, "translation", std::array{m.off.x, m.off.y, m.off.z});
    if (isFlat) AppendNumbers(text.members, "scale", std::array{0.0, 0.0, 0.0});
  } else if (Lean(m.v1, m.v2) || Lean(m.v1, m.v3) || Lean(m.v2, m.v3)) {
    Matrix turn;
    AppendUpright(text.members, Upright(m, turn));
    AppendMatrix(text.inner, turn);
  } else {
    AppendUpright(text.members, m);
  }
}

NodeText TextOf(const host::BaseObject& object) {
  NodeText text;
  const std::string name = "\"name\":" + Quoted(NodeNameOf(object));
  text.members = name;
  const Matrix frame = object.GetMl();
  // JSON has no word for what is no number; the node then stands where its parent does.
  text.wasReset = !IsUsable(frame);
  if (!text.wasReset) AppendFrame(text, Mirrored(frame));
  if (!text.inner.empty()) text.inner = name + "," + text.inner;
  AppendExtras(text.members, ExtrasOf(object));
  return text;
}

}  // namespace

std::string NodeNameOf(const host::BaseList2D& element) {
  const std::string name = element.GetName().ToUtf8();
  return name.empty() ? element.GetTypeName().ToUtf8() : name;
}

const NodeText& NodeTexts::Of(const host::BaseObject& object) {
  const auto [place, isNew] = kept_.try_emplace(IdOf(object));
  Kept& kept = place->second;
  host::String name = object.GetName();
  const Matrix frame = object.GetMl();
  if (isNew || !(kept.name == name) || kept.frame != frame)
    kept = {std::move(name), frame, TextOf(object)};
  return kept.text;
}

}  // namespace engine
