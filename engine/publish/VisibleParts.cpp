#include "engine/publish/VisibleParts.h"

#include <algorithm>
#include <cmath>

namespace engine {

bool MergedLooks::AreTexturesEqual(std::uint32_t known,
                                   const std::vector<const TextureWish*>& wishes) const {
  const auto& others = wishes_[known];
  return std::equal(wishes.begin(), wishes.end(), others.begin(), others.end(),
                    [&](const TextureWish* wish, std::size_t other) {
                      const TextureWish& kept = all_.textures[other];
                      return wish->place == kept.place && wish->name == kept.name;
                    });
}

std::vector<std::uint32_t> MergedLooks::Add(const ScenePicture& picture) {
  std::vector<std::vector<const TextureWish*>> wishes(picture.looks.size());
  for (const TextureWish& wish : picture.textures) wishes[wish.look].push_back(&wish);
  std::vector<std::uint32_t> places;
  for (std::size_t i = 0; i < picture.looks.size(); ++i) {
    const SurfaceLook& look = picture.looks[i];
    const auto [begin, end] = byName_.equal_range(look.name);
    const auto found = std::find_if(begin, end, [&](const auto& known) {
      return all_.looks[known.second] == look && AreTexturesEqual(known.second, wishes[i]);
    });
    if (found != end) {
      places.push_back(found->second);
      continue;
    }
    const auto place = static_cast<std::uint32_t>(all_.looks.size());
    places.push_back(place);
    byName_.emplace(look.name, place);
    all_.looks.push_back(look);
    wishes_.emplace_back();
    for (const TextureWish* wish : wishes[i]) {
      wishes_.back().push_back(all_.textures.size());
      all_.textures.push_back(*wish);
      all_.textures.back().look = place;
    }
  }
  return places;
}

std::uint32_t MergedLooks::WithoutTextures(std::uint32_t look) {
  if (wishes_[look].empty()) return look;
  const auto [place, isNew] =
      plain_.try_emplace(look, static_cast<std::uint32_t>(all_.looks.size()));
  if (isNew) {
    // A copy first, since growing the list moves what is copied from.
    all_.looks.push_back(SurfaceLook(all_.looks[look]));
    wishes_.emplace_back();
  }
  return place->second;
}

void VisibleParts::AddState(ScenePicture picture) {
  const std::vector<std::uint32_t> looks = looks_.Add(picture);
  states_.emplace_back(parts_.size(), kHidden);
  if (parts_.empty()) {
    parts_.reserve(picture.instances.size() + picture.lights.size());
    first_.reserve(parts_.capacity());
    states_.back().reserve(parts_.capacity());
  }
  // States bring their objects in one order, so that most parts are found without a look into the
  // table.
  guess_ = 0;
  for (Instance& instance : picture.instances) Add(instance, looks);
  for (const LightSource& light : picture.lights) {
    if (light.kind == LightSource::Kind::Ambient) {
      hasAmbientLights_ = true;
      continue;
    }
    if (!light.shown && !keepHidden_) continue;
    const std::size_t part = PartOf(light.object, nullptr);
    if (light.shown) Show(part, 0);
  }
}

void VisibleParts::Add(Instance& instance, const std::vector<std::uint32_t>& looks) {
  const bool shows = instance.shown && instance.seenByCamera;
  if (!shows && !keepHidden_) return;
  for (std::size_t k = 0; k < 2; ++k) {
    if (!std::isfinite(instance.uvOffset[k])) instance.uvOffset[k] = 0;
    if (!std::isfinite(instance.uvTiles[k])) instance.uvTiles[k] = 1;
  }
  instance.look = looks[instance.look];
  const Mesh& mesh = *instance.mesh;
  // The format has no textures on a mesh without coordinates.
  if (mesh.uvs.size() != 4 * mesh.polygons.size() || mesh.uvs.empty())
    instance.look = looks_.WithoutTextures(instance.look);
  const std::size_t part = PartOf(instance.object, instance.mesh);
  const auto material = static_cast<std::uint32_t>(materials_.IndexOf(instance));
  if (shows) {
    Show(part, material);
  } else if (parts_[part].material == kHidden) {
    parts_[part].material = material;
  }
}

// Its own material is that of the first state in which it shows.
void VisibleParts::Show(std::size_t part, std::uint32_t material) {
  bool isFirst = true;
  for (std::size_t state = 0; isFirst && state + 1 < states_.size(); ++state)
    isFirst = !Shows(part, state);
  if (isFirst) parts_[part].material = material;
  states_.back()[part] = material;
}

std::size_t VisibleParts::PartOf(NodeId object, const std::shared_ptr<const Mesh>& mesh) {
  if (guess_ < parts_.size() && parts_[guess_].object == object && parts_[guess_].mesh == mesh)
    return guess_++;
  const auto [place, isNew] = first_.try_emplace(object, parts_.size());
  std::size_t* link = &place->second;
  while (!isNew && *link != kNone) {
    if (parts_[*link].mesh == mesh) {
      guess_ = *link + 1;
      return *link;
    }
    link = &parts_[*link].next;
  }
  if (!isNew) *link = parts_.size();
  parts_.push_back({object, mesh, kNone, kHidden});
  states_.back().push_back(kHidden);
  guess_ = parts_.size();
  return parts_.size() - 1;
}

std::size_t VisibleParts::FirstOf(NodeId object) const {
  const auto found = first_.find(object);
  return found == first_.end() ? kNone : found->second;
}

std::uint32_t VisibleParts::MaterialIn(std::size_t part, std::size_t state) const {
  const std::vector<std::uint32_t>& materials = states_[state];
  return part < materials.size() ? materials[part] : kHidden;
}

bool VisibleParts::AlwaysShows(std::size_t part) const {
  for (std::size_t state = 0; state < states_.size(); ++state) {
    if (!Shows(part, state)) return false;
  }
  return true;
}

}  // namespace engine
