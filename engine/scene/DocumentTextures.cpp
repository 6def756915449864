// Gathering the texture references of a scene.
#include <unordered_set>

#include "engine/scene/DocumentBody.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/TreeWalk.h"
#include "host/Parameters.h"

namespace host {

namespace {

// Files of the bitmap shaders attached to an element, children of shaders included, at the end of
// `files`.
void GatherShaders(const BaseList2D& owner, BaseContainer& files) {
  for (const BaseShader* shader = owner.GetFirstShader(); shader;
       shader = engine::NextInTree(shader)) {
    if (shader->GetType() != Xbitmap) continue;
    const Filename file = shader->GetDataInstance()->GetFilename(BITMAPSHADER_FILENAME);
    if (file.Content()) files.SetFilename(files.GetCount(), file);
  }
}

void GatherExpressions(const BaseObject& object, BaseContainer& files) {
  for (const BaseTag* tag = object.GetFirstTag(); tag; tag = tag->GetNext()) {
    if (engine::KindOf(*tag) != engine::NodeKind::XPressoTag) continue;
    const GvNode* root = static_cast<const XPressoTag*>(tag)->GetNodeMaster()->GetRoot();
    for (const GvNode* node = root; node; node = engine::NextInTree(node, root))
      GatherShaders(*node, files);
  }
}

// The objects in question, in the order of `chosen` or of the scene.
std::vector<BaseObject*> ObjectsOf(const BaseDocument& doc, const AtomArray* chosen) {
  std::vector<BaseObject*> objects;
  if (!chosen) {
    for (BaseObject* object = doc.GetFirstObject(); object; object = engine::NextInTree(object))
      objects.push_back(object);
    return objects;
  }
  for (LONG i = 0; i < chosen->GetCount(); ++i) {
    if (BaseObject* object = engine::AsObject(chosen->GetIndex(i))) objects.push_back(object);
  }
  return objects;
}

std::unordered_set<const BaseMaterial*> MaterialsOn(const std::vector<BaseObject*>& objects) {
  std::unordered_set<const BaseMaterial*> materials;
  for (const BaseObject* object : objects) {
    for (BaseTag* tag = object->GetFirstTag(); tag; tag = tag->GetNext()) {
      if (const TextureTag* texture = engine::AsTextureTag(tag))
        materials.insert(texture->GetMaterial());
    }
  }
  return materials;
}

}  // namespace

// Files stand under the keys 0, 1, 2 ..., each as often as something names it. With `chosen`, only
// the materials that these objects wear.
BaseContainer BaseDocument::GetAllTextures(const AtomArray* chosen) const {
  BaseContainer files;
  const std::vector<BaseObject*> objects = ObjectsOf(*this, chosen);
  const auto used = chosen ? MaterialsOn(objects) : std::unordered_set<const BaseMaterial*>();
  for (const BaseMaterial* material = GetFirstMaterial(); material;
       material = material->GetNext()) {
    if (!chosen || used.count(material) > 0) GatherShaders(*material, files);
  }
  for (const BaseObject* object : objects) GatherShaders(*object, files);
  for (const BaseObject* object : objects) GatherExpressions(*object, files);
  return files;
}

}  // namespace host
