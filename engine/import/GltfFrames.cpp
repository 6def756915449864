// glTF 2.0, sections 3.5.2 (transformations) and 3.7.3 (skins).
#include "engine/import/GltfFrames.h"

#include <cmath>
#include <utility>

#include "engine/import/GltfAccessors.h"
#include "engine/scene/Vectors.h"

namespace engine {
namespace {

using host::Matrix;
using host::Vector;

// Column by column, as the file has them; the last row says nothing here.
template <class List>
Matrix FromColumns(const List& m) {
  Matrix frame;
  frame.v1 = Vector(m[0], m[1], m[2]);
  frame.v2 = Vector(m[4], m[5], m[6]);
  frame.v3 = Vector(m[8], m[9], m[10]);
  frame.off = Vector(m[12], m[13], m[14]);
  return frame;
}

// Quaternions that are nearly of length 1 are made so; one of length 0 turns nothing.
Matrix Rotation(std::array<double, 4> q) {
  const double length = std::sqrt(q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3]);
  if (!(length > 0)) return {};
  for (double& part : q) part /= length;
  const auto [x, y, z, w] = q;
  Matrix turn;
  turn.v1 = Vector(1 - 2 * (y * y + z * z), 2 * (x * y + z * w), 2 * (x * z - y * w));
  turn.v2 = Vector(2 * (x * y - z * w), 1 - 2 * (x * x + z * z), 2 * (y * z + x * w));
  turn.v3 = Vector(2 * (x * z + y * w), 2 * (y * z - x * w), 1 - 2 * (x * x + y * y));
  return turn;
}

}  // namespace

Matrix GltfFrameOf(const Json& node) {
  const Json& matrix = List(node, "matrix");
  if (!matrix.is_null() && SizeOf(matrix) != 16)
    throw UnreadableFile("a node's matrix has " + std::to_string(SizeOf(matrix)) + " numbers.");
  if (!matrix.is_null()) return FromColumns(Numbers<16>(node, "matrix", {}));
  Matrix frame = Rotation(Numbers<4>(node, "rotation", {0, 0, 0, 1}));
  const auto scale = Numbers<3>(node, "scale", {1, 1, 1});
  const auto place = Numbers<3>(node, "translation", {0, 0, 0});
  frame.v1 = Scaled(frame.v1, scale[0]);
  frame.v2 = Scaled(frame.v2, scale[1]);
  frame.v3 = Scaled(frame.v3, scale[2]);
  frame.off = Vector(place[0], place[1], place[2]);
  return frame;
}

// Every node that hangs below one that is nobody's child; what hangs in a ring stays in its own
// space.
void GltfFrames::PlaceNodes() {
  const Json& nodes = List(file_.Top(), "nodes");
  world_.assign(SizeOf(nodes), Matrix());
  std::vector<std::size_t> parents(world_.size(), kNowhere);
  const auto children = [&](std::size_t node, auto visit) {
    const Json& list = List(file_.Entry("nodes", node), "children");
    for (std::size_t i = 0; i < SizeOf(list); ++i) {
      const std::size_t child = IndexAt(list, i, "children");
      if (child < parents.size()) visit(child);
    }
  };
  for (std::size_t node = 0; node < parents.size(); ++node) {
    children(node, [&](std::size_t child) {
      // A node that is named twice has one place: below the first one that names it.
      if (parents[child] == kNowhere) parents[child] = node;
    });
  }
  std::vector<std::size_t> pending;
  for (std::size_t node = 0; node < parents.size(); ++node) {
    if (parents[node] == kNowhere) pending.push_back(node);
  }
  while (!pending.empty()) {
    const std::size_t node = pending.back();
    pending.pop_back();
    const Matrix own = GltfFrameOf(file_.Entry("nodes", node));
    const std::size_t parent = parents[node];
    world_[node] = parent == kNowhere ? own : Combined(world_[parent], own);
    children(node, [&](std::size_t child) {
      if (parents[child] == node) pending.push_back(child);
    });
  }
}

const Matrix& GltfFrames::InWorld(std::size_t node) {
  if (world_.empty()) PlaceNodes();
  // Refuses a node that there is not.
  file_.Entry("nodes", node);
  return world_[node];
}

std::vector<Matrix> GltfFrames::InverseBinds(const Json& skin, std::size_t joints) {
  std::vector<Matrix> binds(joints);
  const std::size_t accessor = Index(skin, "inverseBindMatrices");
  if (accessor == kNowhere) return binds;
  const GltfNumbers numbers = FindNumbers(file_, accessor);
  if (numbers.components != 16 || numbers.count < joints)
    throw UnreadableFile("a skin has fewer bind matrices than joints.");
  std::array<float, 16> columns;
  for (std::size_t i = 0; i < joints; ++i) {
    ReadFloats(numbers, i, 1, 16, columns.data());
    binds[i] = FromColumns(columns);
  }
  return binds;
}

std::optional<std::vector<Matrix>> GltfFrames::OfJoints(std::size_t skin, std::size_t node) {
  const Json& entry = file_.Entry("skins", skin);
  const Json& joints = List(entry, "joints");
  std::vector<Matrix> frames = InverseBinds(entry, SizeOf(joints));
  const Matrix bearer = InWorld(node);
  for (std::size_t i = 0; i < frames.size(); ++i) {
    const Matrix& joint = InWorld(IndexAt(joints, i, "joints"));
    const std::optional<Matrix> placed = FrameInside(bearer, Combined(joint, frames[i]));
    if (!placed) return std::nullopt;
    frames[i] = *placed;
  }
  return frames;
}

}  // namespace engine
