// The link accessors of values and containers: core holds links as identities, the scene makes and
// resolves them.
#include "engine/core/ContainerBody.h"
#include "engine/core/ContainerContents.h"
#include "engine/scene/DocumentBody.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"

namespace host {

GeData::GeData(const BaseList2D* target)
    : GeData(engine::LinkValue(target ? engine::IdOf(*target) : 0)) {}

BaseList2D* GeData::GetLink(const BaseDocument* doc) const {
  return engine::FindNode(doc, engine::LinkOf(*this));
}

void BaseContainer::SetLink(LONG id, const BaseList2D* target) {
  engine::ContainerAccess::SetNumber(*this, id,
                                     {DA_ALIASLINK, target ? engine::NodeAccess::Id(*target) : 0});
}

BaseList2D* BaseContainer::GetLink(LONG id, const BaseDocument* doc) const {
  return engine::FindNode(doc, engine::LinkOf(*this, id));
}

BaseObject* BaseContainer::GetObjectLink(LONG id, const BaseDocument* doc) const {
  return engine::AsObject(GetLink(id, doc));
}

BaseMaterial* BaseContainer::GetMaterialLink(LONG id, const BaseDocument* doc) const {
  return engine::AsMaterial(GetLink(id, doc));
}

}  // namespace host
