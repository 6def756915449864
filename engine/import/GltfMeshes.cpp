// glTF 2.0, section 3.7.
#include "engine/import/GltfMeshes.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <string>

#include "engine/import/GltfPrimitive.h"
#include "engine/import/GltfReader.h"
#include "engine/scene/Vectors.h"

namespace engine {

// How a node shows its mesh.
struct GltfMeshes::Pose {
  std::vector<double> weights;  // of the morph targets
  std::vector<host::Matrix> joints;
};

namespace {

constexpr std::uint32_t kUnused = std::numeric_limits<std::uint32_t>::max();

// The points that triangles use: a range of the file's, and within it those that are kept. Numbers
// the corners anew. A mesh may use a few points of an accessor that many meshes share: only the
// range that it uses is read, and only what it uses of that is kept.
struct UsedPoints {
  std::size_t first = 0;
  std::size_t count = 0;
  std::vector<std::uint32_t> kept;  // positions in the range

  UsedPoints(std::vector<std::uint32_t>& corners, std::size_t points) {
    std::uint32_t low = kUnused;
    std::uint32_t high = 0;
    for (const std::uint32_t corner : corners) {
      if (corner >= points) continue;
      low = std::min(low, corner);
      high = std::max(high, corner);
    }
    if (low <= high) {
      first = low;
      count = std::size_t{high} - low + 1;
    }
    Renumber(corners);
  }

 private:
  void Renumber(std::vector<std::uint32_t>& corners) {
    std::vector<std::uint32_t> numbers(count, kUnused);
    for (const std::uint32_t corner : corners) {
      if (corner - first < count) numbers[corner - first] = 0;
    }
    for (std::size_t i = 0; i < count; ++i) {
      if (numbers[i] == kUnused) continue;
      numbers[i] = static_cast<std::uint32_t>(kept.size());
      kept.push_back(static_cast<std::uint32_t>(i));
    }
    for (std::uint32_t& corner : corners)
      corner = corner - first < count ? numbers[corner - first] : kUnused;
  }
};

// Three numbers for each point of the range.
struct Shape {
  std::vector<float> points;
  std::vector<float> normals;  // may be empty
  bool unitNormals = true;     // as the file has them
};

std::vector<float> Floats(const std::optional<GltfNumbers>& numbers, const UsedPoints& used,
                          unsigned width) {
  std::vector<float> floats;
  if (!numbers) return floats;
  floats.resize(used.count * width);
  ReadFloats(*numbers, used.first, used.count, width, floats.data());
  return floats;
}

Shape ShapeOf(GltfPrimitive& primitive, const UsedPoints& used) {
  Shape shape;
  shape.points = Floats(primitive.Attribute("POSITION", 3), used, 3);
  const std::optional<GltfNumbers> normals = primitive.Attribute("NORMAL", 3);
  shape.normals = Floats(normals, used, 3);
  shape.unitNormals = !normals || normals->kind == GltfKind::Float;
  return shape;
}

void AddWeighted(const std::vector<float>& from, double weight, std::vector<float>& to) {
  for (std::size_t i = 0; i < from.size() && i < to.size(); ++i)
    to[i] = static_cast<float>(static_cast<double>(to[i]) + weight * static_cast<double>(from[i]));
}

void Morph(GltfPrimitive& primitive, const UsedPoints& used, const std::vector<double>& weights,
           Shape& shape) {
  const Json& targets = primitive.Targets();
  for (std::size_t i = 0; i < SizeOf(targets) && i < weights.size(); ++i) {
    if (weights[i] == 0) continue;
    AddWeighted(Floats(primitive.Attribute(targets[i], "POSITION", 3), used, 3), weights[i],
                shape.points);
    AddWeighted(Floats(primitive.Attribute(targets[i], "NORMAL", 3), used, 3), weights[i],
                shape.normals);
    shape.unitNormals = false;
  }
}

// The joints of each point of the range, four for each set that the file has, and their weights.
struct Influences {
  std::vector<std::vector<std::uint32_t>> joints;
  std::vector<std::vector<float>> weights;

  Influences(GltfPrimitive& primitive, const UsedPoints& used) {
    for (std::size_t set = 0;; ++set) {
      const auto joint = primitive.Attribute("JOINTS_" + std::to_string(set), 4);
      const auto weight = primitive.Attribute("WEIGHTS_" + std::to_string(set), 4);
      if (!joint || !weight) return;
      joints.emplace_back(used.count * 4);
      ReadWholes(*joint, used.first, used.count, 4, joints.back().data());
      weights.push_back(Floats(weight, used, 4));
    }
  }

  // The joints' frames by their weights, which sum to one; the first joint where none weighs.
  host::Matrix At(std::size_t point, const std::vector<host::Matrix>& frames) const {
    double total = 0;
    host::Matrix sum{{}, {}, {}, {}};
    for (std::size_t i = 0; i < 4 * joints.size(); ++i) {
      const double weight = weights[i / 4][4 * point + i % 4];
      if (weight == 0) continue;
      total += weight;
      Add(FrameOf(joints[i / 4][4 * point + i % 4], frames), weight, sum);
    }
    // Weights are divided by their sum, since normalized integers rarely sum to exactly 1.
    if (total == 0) return FrameOf(joints[0][4 * point], frames);
    host::Matrix mean{{}, {}, {}, {}};
    Add(sum, 1 / total, mean);
    return mean;
  }

 private:
  static void Add(const host::Matrix& frame, double weight, host::Matrix& sum) {
    sum.off = Sum(sum.off, Scaled(frame.off, weight));
    sum.v1 = Sum(sum.v1, Scaled(frame.v1, weight));
    sum.v2 = Sum(sum.v2, Scaled(frame.v2, weight));
    sum.v3 = Sum(sum.v3, Scaled(frame.v3, weight));
  }
  static const host::Matrix& FrameOf(std::size_t joint, const std::vector<host::Matrix>& frames) {
    if (joint >= frames.size())
      throw UnreadableFile("a mesh names joint " + std::to_string(joint) + ", and its skin has " +
                           std::to_string(frames.size()) + ".");
    return frames[joint];
  }
};

host::Vector VectorAt(const std::vector<float>& numbers, std::size_t i) {
  return host::Vector(numbers[3 * i], numbers[3 * i + 1], numbers[3 * i + 2]);
}

void SetVector(const host::Vector& v, std::size_t i, std::vector<float>& numbers) {
  numbers[3 * i] = static_cast<float>(v.x);
  numbers[3 * i + 1] = static_cast<float>(v.y);
  numbers[3 * i + 2] = static_cast<float>(v.z);
}

// False for a mesh without weights, which stays as it is.
bool Bend(GltfPrimitive& primitive, const UsedPoints& used, const std::vector<host::Matrix>& frames,
          Shape& shape) {
  const Influences influences(primitive, used);
  if (frames.empty() || influences.joints.empty()) return false;
  for (const std::uint32_t i : used.kept) {
    const host::Matrix frame = influences.At(i, frames);
    SetVector(PlacedBy(frame, VectorAt(shape.points, i)), i, shape.points);
    if (!shape.normals.empty())
      SetVector(TurnedBy(frame, VectorAt(shape.normals, i)), i, shape.normals);
  }
  shape.unitNormals = false;
  return true;
}

aiVector3D* Kept(const std::vector<float>& numbers, const UsedPoints& used, unsigned width) {
  if (numbers.empty() && used.count > 0) return nullptr;
  auto* result = new aiVector3D[used.kept.size()];
  for (std::size_t i = 0; i < used.kept.size(); ++i) {
    const float* from = numbers.data() + std::size_t{used.kept[i]} * width;
    result[i] = aiVector3D(from[0], from[1], width > 2 ? from[2] : 0);
  }
  return result;
}

void SetShape(Shape& shape, const UsedPoints& used, aiMesh& part) {
  if (!shape.unitNormals && !shape.normals.empty()) {
    for (const std::uint32_t i : used.kept)
      SetVector(UnitOf(VectorAt(shape.normals, i)), i, shape.normals);
  }
  part.mNumVertices = static_cast<unsigned>(used.kept.size());
  part.mVertices = Kept(shape.points, used, 3);
  part.mNormals = Kept(shape.normals, used, 3);
}

// The coordinates that the material uses, the first ones where the mesh lacks them.
void SetUvs(GltfPrimitive& primitive, const UsedPoints& used, unsigned channel, aiMesh& part) {
  std::optional<GltfNumbers> uvs = primitive.Attribute("TEXCOORD_" + std::to_string(channel), 2);
  if (!uvs && channel != 0) uvs = primitive.Attribute("TEXCOORD_0", 2);
  part.mTextureCoords[0] = Kept(Floats(uvs, used, 2), used, 2);
}

void SetFaces(const std::vector<std::uint32_t>& corners, aiMesh& part) {
  part.mPrimitiveTypes = aiPrimitiveType_TRIANGLE;
  if (corners.empty()) return;
  part.mFaces = new aiFace[corners.size() / 3];
  for (std::size_t i = 0; i + 2 < corners.size(); i += 3) {
    aiFace& face = part.mFaces[part.mNumFaces++];
    face.mNumIndices = 3;
    face.mIndices = new unsigned[3]{corners[i], corners[i + 1], corners[i + 2]};
  }
}

void SetColors(GltfPrimitive& primitive, const UsedPoints& used, aiMesh& part) {
  const std::optional<GltfNumbers> colors = primitive.Attribute("COLOR_0", 3);
  if (!colors || used.kept.empty()) return;
  const unsigned width = std::min(colors->components, 4U);
  const std::vector<float> floats = Floats(colors, used, width);
  part.mColors[0] = new aiColor4D[used.kept.size()];
  for (std::size_t i = 0; i < used.kept.size(); ++i) {
    const float* from = floats.data() + std::size_t{used.kept[i]} * width;
    part.mColors[0][i] = aiColor4D(from[0], from[1], from[2], width > 3 ? from[3] : 1);
  }
}

}  // namespace

unsigned GltfMeshes::MaterialOf(const Json& source) const {
  const std::size_t index = Index(source, "material");
  file_.Entry("materials", index);
  // kNowhere becomes the last one, which is for meshes that name none.
  return static_cast<unsigned>(std::min(index, materials_.size() - 1));
}

std::unique_ptr<aiMesh> GltfMeshes::MakePart(const Json& source, const Pose& pose) {
  auto part = std::make_unique<aiMesh>();
  part->mMaterialIndex = MaterialOf(source);
  GltfPrimitive primitive(file_, source, notes_);
  part->mPrimitiveTypes = primitive.Kind();
  if (!primitive.HasTriangles()) return part;
  std::vector<std::uint32_t> corners = primitive.Corners();
  const UsedPoints used(corners, primitive.Points());
  Shape shape = ShapeOf(primitive, used);
  Morph(primitive, used, pose.weights, shape);
  const bool isBent = Bend(primitive, used, pose.joints, shape);
  SetShape(shape, used, *part);
  SetUvs(primitive, used, materials_[part->mMaterialIndex].uvs.channel, *part);
  SetColors(primitive, used, *part);
  SetFaces(corners, *part);
  notes_.Count(kSkinsAtRest, isBent);
  notes_.Count("Morph targets are shown at their default weights", SizeOf(primitive.Targets()));
  return part;
}

std::vector<unsigned> GltfMeshes::MakeParts(const Json& mesh, const Pose& pose) {
  std::vector<unsigned> parts;
  const Json& primitives = List(mesh, "primitives");
  for (std::size_t i = 0; i < SizeOf(primitives); ++i) {
    made_.push_back(MakePart(primitives[i], pose));
    variants_.push_back(VariantsOf(file_, primitives[i]));
    parts.push_back(static_cast<unsigned>(made_.size() - 1));
  }
  return parts;
}

std::vector<unsigned> GltfMeshes::PartsOf(std::size_t node) {
  const Json& source = file_.Entry("nodes", node);
  const std::size_t index = Index(source, "mesh");
  const Json& mesh = file_.Entry("meshes", index);
  if (mesh.is_null()) return {};
  Pose pose;
  const Json& bearer = List(source, "weights").is_null() ? mesh : source;
  for (std::size_t i = 0; i < SizeOf(List(bearer, "weights")); ++i)
    pose.weights.push_back(NumberAt(List(bearer, "weights"), i, "weights"));
  const std::size_t skin = Index(source, "skin");
  if (skin != kNowhere) {
    auto joints = frames_.OfJoints(skin, node);
    notes_.Count("Skins of flattened nodes are left out", !joints);
    if (joints) pose.joints = std::move(*joints);
  }
  // A bent mesh is shaped for the one node that bears it.
  if (!pose.joints.empty()) return MakeParts(mesh, pose);
  const auto [entry, isNew] = shared_.try_emplace({index, pose.weights});
  if (isNew) entry->second = MakeParts(mesh, pose);
  return entry->second;
}

}  // namespace engine
