// VisibleParts: what of a scene can be seen, its meshes and lights, and in which of the states that
// were read each of them shows with which material. A part belongs to an object; an object whose
// mesh differs between states has several. Refers to the materials it was given. Main thread.
#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "engine/publish/GltfMaterials.h"
#include "engine/render/ScenePicture.h"

namespace engine {

// The looks of several pictures, equal ones once, with the textures that they want.
class MergedLooks {
 public:
  // Grows with each picture that is taken in.
  const ScenePicture& All() const { return all_; }
  // The index among all looks for each look of the picture.
  std::vector<std::uint32_t> Add(const ScenePicture& picture);
  // The index of that look without its textures, for a mesh on which none can lie.
  std::uint32_t WithoutTextures(std::uint32_t look);

 private:
  bool AreTexturesEqual(std::uint32_t known, const std::vector<const TextureWish*>& wishes) const;

  ScenePicture all_;
  std::unordered_multimap<std::string, std::uint32_t> byName_;
  std::vector<std::vector<std::size_t>> wishes_;  // of each look, into the textures of all
  std::unordered_map<std::uint32_t, std::uint32_t> plain_;
};

class VisibleParts {
 public:
  static constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();
  static constexpr std::uint32_t kHidden = std::numeric_limits<std::uint32_t>::max();

  struct Part {
    NodeId object = 0;
    std::shared_ptr<const Mesh> mesh;  // null: a light
    std::size_t next = kNone;          // a further part of the object
    std::uint32_t material = kHidden;  // of the first state in which it shows; any if it never does
  };

  // `keepHidden`: meshes and lights that never show are parts, too.
  VisibleParts(GltfMaterials& materials, MergedLooks& looks, bool keepHidden)
      : materials_(materials), looks_(looks), keepHidden_(keepHidden) {}

  // Takes in one more state: a picture of the scene that also has what is hidden.
  void AddState(ScenePicture picture);

  std::size_t States() const { return states_.size(); }
  // Ambient lights are no parts: the format has none.
  bool HasAmbientLights() const { return hasAmbientLights_; }
  const Part& At(std::size_t part) const { return parts_[part]; }
  // The first part of an object, kNone where nothing of it can be seen.
  std::size_t FirstOf(NodeId object) const;
  // The part's material in a state, kHidden where it does not show; 0 for a light that shows.
  std::uint32_t MaterialIn(std::size_t part, std::size_t state) const;
  bool Shows(std::size_t part, std::size_t state) const {
    return MaterialIn(part, state) != kHidden;
  }
  bool AlwaysShows(std::size_t part) const;

 private:
  void Add(Instance& instance, const std::vector<std::uint32_t>& looks);
  std::size_t PartOf(NodeId object, const std::shared_ptr<const Mesh>& mesh);
  void Show(std::size_t part, std::uint32_t material);

  GltfMaterials& materials_;
  MergedLooks& looks_;
  bool keepHidden_;
  bool hasAmbientLights_ = false;
  std::vector<Part> parts_;
  std::unordered_map<NodeId, std::size_t> first_;
  std::vector<std::vector<std::uint32_t>> states_;  // the material of each part
  std::size_t guess_ = 0;  // the part that comes next when all come in the order of last time
};

}  // namespace engine
