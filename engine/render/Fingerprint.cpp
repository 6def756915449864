#include "engine/render/Fingerprint.h"

namespace engine {

void Fingerprint::Add(const Instance& instance) {
  Word(reinterpret_cast<std::uintptr_t>(instance.mesh.get()));
  Word(instance.object);
  Word(instance.look | std::uint64_t{instance.castsShadows} << 32U |
       std::uint64_t{instance.receivesShadows} << 33U |
       std::uint64_t{instance.seenByCamera} << 34U);
  for (const host::Vector* v :
       {&instance.frame.off, &instance.frame.v1, &instance.frame.v2, &instance.frame.v3}) {
    for (const double number : {v->x, v->y, v->z}) Number(number);
  }
  for (const float number :
       {instance.uvOffset[0], instance.uvOffset[1], instance.uvTiles[0], instance.uvTiles[1]})
    Number(number);
}

void Fingerprint::Add(const SurfaceLook& look) {
  Color(look.color);
  Color(look.luminance);
  for (const float number : {look.alpha, look.cutoff, look.specular, look.roughness, look.metallic})
    Number(number);
  Word(static_cast<std::uint64_t>(look.alphaMode) << 1U | std::uint64_t{look.isDoubleSided});
}

void Fingerprint::Add(const TextureWish& wish) {
  Word(wish.look);
  Word(wish.place == &SurfaceLook::colorTexture       ? 0
       : wish.place == &SurfaceLook::luminanceTexture ? 1
                                                      : 2);
  for (const auto& file : wish.files) Word(reinterpret_cast<std::uintptr_t>(file.get()));
}

void Fingerprint::Add(const LightSource& light) {
  Word(static_cast<std::uint64_t>(light.kind) << 1U | std::uint64_t{light.castsShadows});
  for (const Vec v : {light.color, light.position, light.direction}) Color(v);
  for (const float number : {light.innerCosine, light.outerCosine, light.range}) Number(number);
}

}  // namespace engine
