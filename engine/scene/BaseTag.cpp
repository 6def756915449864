#include "host/BaseTag.h"

#include <cstdint>

#include "engine/scene/DocumentBody.h"
#include "engine/scene/NewNodes.h"
#include "engine/scene/NodeFactory.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"

namespace host {

BaseTag* BaseTag::Alloc(LONG type) {
  return engine::AsTag(engine::MakeNode(engine::TagKind(type), type));
}

void BaseTag::Free(BaseTag*& tag) {
  engine::FreeNode(tag);
  tag = nullptr;
}

namespace {

// Tags made one after the other lie in a row and are mostly asked in it: the memory of one that
// follows, where a walk looks and where `member` is, is fetched while this one is asked.
void FetchTagAhead(const TextureTag& tag, const ULLONG* member) {
  constexpr std::uintptr_t kCacheLine = 64;
  constexpr std::uintptr_t kAhead =
      8 * ((sizeof(TextureTag) + kCacheLine - 1) / kCacheLine * kCacheLine);
  __builtin_prefetch(
      reinterpret_cast<const void*>(reinterpret_cast<std::uintptr_t>(&tag) + kAhead));
  __builtin_prefetch(
      reinterpret_cast<const void*>(reinterpret_cast<std::uintptr_t>(member) + kAhead));
}

}  // namespace

BaseObject* BaseTag::GetObject() const { return static_cast<BaseObject*>(kin_); }

BaseMaterial* TextureTag::GetMaterial(Bool) const {
  FetchTagAhead(*this, &material_);
  return engine::AsMaterial(engine::FindNode(GetDocument(), material_));
}

void TextureTag::SetMaterial(BaseMaterial* material) {
  const ULLONG id = material ? engine::IdOf(*material) : 0;
  if (material_ == id) return;
  material_ = id;
  engine::Touch(*this);
}

}  // namespace host
