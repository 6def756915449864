#include "engine/update/MaterialUpdate.h"

#include "engine/scene/EmbeddedFiles.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/ShaderWalk.h"
#include "host/BaseMaterial.h"

namespace engine {

using host::BaseMaterial;
using host::BaseShader;

MaterialUpdate::MaterialUpdate(host::BaseDocument& doc, const host::BaseDocument& fresh,
                               const ElementMatch& match, const ImportedElements& before,
                               const ImportedElements& now)
    : doc_(doc), fresh_(fresh), match_(match) {
  for (const ImportedElement& element : before.materials) before_.emplace(element.id, element);
  for (const ImportedElement& element : now.materials) now_.emplace(element.id, element);
}

ElementChanges MaterialUpdate::Run() {
  ElementChanges changes;
  for (const BaseMaterial* fresh = fresh_.GetFirstMaterial(); fresh; fresh = fresh->GetNext()) {
    BaseMaterial* material = match_.MaterialFor(*fresh);
    const auto print = now_.find(IdOf(*fresh));
    const host::LONG said = print == now_.end() ? 0 : print->second.settings;
    if (material == nullptr) {
      material = Add(*fresh);
      changes.added.push_back(material->GetName().ToUtf8());
    } else {
      ++changes.found;
      const auto before = before_.find(IdOf(*material));
      // Where the file says what it said the last time, a person's changes stay; where it says
      // something new that the scene has already, there is nothing to do.
      const bool saysElse = before == before_.end() || before->second.settings != said;
      if (saysElse && FingerprintOf(*material, doc_) != FingerprintOf(*fresh, fresh_)) {
        Replace(*material, *fresh);
        changes.changed.push_back({material->GetName().ToUtf8(), {"settings"}});
      }
    }
    counterparts_.emplace(IdOf(*fresh), IdOf(*material));
    remembered_.push_back({IdOf(*material), 0, said, 0, 0});
  }
  changes.addedCount = changes.added.size();
  for (const BaseMaterial* material : match_.GoneMaterials()) {
    changes.gone.push_back(material->GetName().ToUtf8());
    const auto before = before_.find(IdOf(*material));
    // Remembered on, so that a material that comes back to the file is known again.
    if (before != before_.end()) remembered_.push_back(before->second);
  }
  changes.goneCount = changes.gone.size();
  return changes;
}

NodeId MaterialUpdate::CounterpartOf(NodeId fresh) const {
  const auto found = counterparts_.find(fresh);
  return found == counterparts_.end() ? 0 : found->second;
}

BaseMaterial* MaterialUpdate::Add(const BaseMaterial& fresh) {
  IdMap ids;
  auto* material = static_cast<BaseMaterial*>(CopyTree(fresh, {false, false, &ids}));
  FollowLinks(*material, ids);
  doc_.AppendMaterial(material);
  doc_.AddUndo(host::UNDO_NEW, material);
  BringFiles(*material);
  return material;
}

// Other parameters than the file's, which a plug-in may have put there, stay.
void MaterialUpdate::Replace(BaseMaterial& material, const BaseMaterial& fresh) {
  doc_.AddUndo(host::UNDO_CHANGE, &material);
  while (BaseShader* shader = material.GetFirstShader()) {
    doc_.AddUndo(host::UNDO_DELETE, shader);
    BaseShader::Free(shader);
  }
  material.SetData(*fresh.GetDataInstance(), host::TRUE);
  IdMap ids;
  std::vector<BaseShader*> copies;
  for (const BaseShader* shader = fresh.GetFirstShader(); shader; shader = shader->GetNext()) {
    copies.push_back(static_cast<BaseShader*>(CopyTree(*shader, {false, false, &ids})));
    material.InsertShader(copies.back());
  }
  FollowLinks(material, ids);
  for (BaseShader* copy : copies) doc_.AddUndo(host::UNDO_NEW, copy);
  BringFiles(material);
}

// Pictures that came inside the file.
void MaterialUpdate::BringFiles(BaseMaterial& material) {
  auto bring = [&](BaseShader& shader) {
    const std::string name = BitmapFileOf(shader);
    const std::string* bytes = FindEmbeddedFile(fresh_, name);
    if (bytes == nullptr) return;
    const std::string* there = FindEmbeddedFile(doc_, name);
    // Under another name where the scene has other bytes of that name, which another material may
    // show.
    if (there == nullptr || *there != *bytes)
      SetBitmapFile(shader, AddEmbeddedFile(doc_, name, *bytes));
  };
  ForEachBitmapShaderOf(material, bring);
}

}  // namespace engine
