#include "engine/core/ContainerContents.h"

#include "engine/core/ContainerBody.h"

namespace engine {

NodeId LinkOf(const host::BaseContainer& container, host::LONG id) {
  const std::optional<Entry> entry = FindEntry(ContainerAccess::Body(container), id);
  return entry && entry->type == host::DA_ALIASLINK ? entry->bits : 0;
}

void SetLinkId(host::BaseContainer& container, host::LONG id, NodeId target) {
  ContainerAccess::SetNumber(container, id, {host::DA_ALIASLINK, target});
}

const void* BodyOf(const host::BaseContainer& container) {
  const ContainerBody* body = ContainerAccess::Body(container);
  return SizeOf(body) == 0 && IdOf(body) == 0 ? nullptr : body;
}

void ForEachEntry(const host::BaseContainer& container,
                  const std::function<void(host::LONG, const host::GeData&)>& visit) {
  // A share of its own, so that the visitor may change the container.
  const host::BaseContainer kept = ContainerAccess::Share(ContainerAccess::Body(container));
  std::uint32_t next = 0;
  for (auto some = NextEntries(ContainerAccess::Body(kept), next); !some.empty();
       some = NextEntries(ContainerAccess::Body(kept), next)) {
    for (const Entry& entry : some) visit(entry.key, ValueAccess::Share(entry.Get()));
  }
}

bool Identical(const host::BaseContainer& a, const host::BaseContainer& b) {
  return SameBodies(ContainerAccess::Body(a), ContainerAccess::Body(b), OwnIds::kCompared);
}

}  // namespace engine
