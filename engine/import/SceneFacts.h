// SceneFacts: what the importing library's scene has no place for, loses or gets wrong: cameras,
// lights, states, and what a file says about single nodes and materials. Lengths are in units of
// the file, angles radians, frames in the scene's axes. Lives in the child.
#pragma once

#include <assimp/scene.h>

#include <array>
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "engine/import/FolderFiles.h"
#include "engine/import/Notes.h"
#include "engine/import/SourceCheck.h"
#include "engine/scene/PictureParameters.h"
#include "host/Files.h"
#include "host/Math.h"

namespace engine {

struct SourceCamera {
  bool parallel = false;
  double horizontal = 0;  // angles; 0 where the file does not say
  double vertical = 0;
  double width = 0;  // whole width of a parallel camera's picture
  double nearPlane = 0;
  double farPlane = 0;  // 0: no end
  host::Matrix frame;   // in its node
};

// Numbers as the scene's own (LIGHT_TYPE).
enum class LightKind { Point = 0, Spot = 1, Sun = 2, Area = 3, Ambient = 4 };

struct SourceLight {
  LightKind kind = LightKind::Point;
  host::Vector color{1, 1, 1};
  double brightness = 1;
  double innerAngle = 0;  // full angles
  double outerAngle = 0;
  double range = 0;    // 0: no end
  double unit = 1;     // what a brightness of 1 is in the unit of the file
  double radius = 0;   // of what shines, 0: a point
  host::Matrix frame;  // in its node
};

// How a material uses texture coordinates: the mesh's channel, then u and v (growing downwards)
// become scale[0] * u + offset[0] and scale[1] * v + offset[1].
struct UvUse {
  unsigned channel = 0;
  std::array<double, 2> offset{0, 0};
  std::array<double, 2> scale{1, 1};
  bool fromTop = false;     // the mesh's v grows downwards already
  bool showsColors = true;  // the colors of its corners are meant to be seen
};

// How one picture of a material lies on a surface, as the scene's bitmap shaders have it.
struct PictureFacts {
  std::array<double, 2> offset{0, 0};
  std::array<double, 2> tiles{1, 1};
  double rotation = 0;
  TextureWrap wrapU = TextureWrap::Repeat;
  TextureWrap wrapV = TextureWrap::Repeat;
  bool isSharp = false;
};

struct MaterialFacts {
  std::string name;  // as written, however long
  double emissiveStrength = 1;
  double specular = 0.5;  // of a surface that is no metal, as the scene counts it
  double transmission = 0;
  double normalScale = 1;
  double occlusionStrength = 1;
  UvUse uvs;
  std::map<aiTextureType, PictureFacts> pictures;  // that are shown
  std::string extras;                              // text of a JSON value, empty: none
};

struct NodeFacts {
  std::vector<std::size_t> cameras;  // positions in SceneFacts
  std::vector<std::size_t> lights;
  std::string name;  // as written, however long; empty: that of the library's node
  bool isVisible = true;
  std::string layer;   // empty: none
  std::string extras;  // texts of JSON values, empty: none
  std::string meshExtras;
};

// A state that the file holds: a variant of its materials, with what else it says of it. Nodes by
// their numbers in the file.
struct SourceState {
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  std::string name;
  host::LocalFileTime date;
  std::size_t variant = kNone;
  std::size_t camera = kNone;
  std::vector<std::size_t> hidden;
  host::LONG width = 0;  // of its picture, 0: the file does not say
  host::LONG height = 0;
};

// A variant that shows a mesh with its own material.
inline constexpr unsigned kOwnMaterial = static_cast<unsigned>(-1);

struct SceneFacts {
  double unitsPerFileUnit = 1;
  std::vector<SourceCamera> cameras;
  std::vector<SourceLight> lights;
  std::unordered_map<const aiNode*, NodeFacts> nodes;
  std::vector<MaterialFacts> materials;  // by position in the file, may be fewer
  std::set<unsigned> undefined;          // materials that are named, but described nowhere
  std::string extras;                    // of the scene, text of a JSON value, empty: none
  std::vector<SourceState> states;
  std::vector<const aiNode*> numbered;  // the nodes by their numbers in the file, null: not shown
  // For each mesh the material of each variant, empty where none changes it
  std::vector<std::vector<unsigned>> variants;
};

// Facts of all formats but glTF of version 2. `files`, through which the library has read `path`,
// is asked again where the format's own text says more than the library tells.
SceneFacts GatherFacts(const aiScene& scene, SourceFormat format, const std::string& path,
                       FolderFiles& files, Notes& notes);

// The steps of GatherFacts.
void AddCommonFacts(const aiScene& scene, SourceFormat format, SceneFacts& facts);
void MendColladaCameras(const std::string& xml, SceneFacts& facts, Notes& notes);
// Scales brightnesses so that lights given in physical units look as lights of brightness 0 to 1
// do.
void NormalizeLights(SourceFormat format, std::vector<SourceLight>& lights);

}  // namespace engine
