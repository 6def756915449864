#include "program/desktop/panels/MaterialActs.h"

#include <unordered_set>

#include "engine/undo/Undo.h"
#include "program/desktop/FreeNames.h"

namespace desktop {

using host::BaseDocument;
using host::BaseMaterial;

namespace {

bool HasOneOf(const host::BaseObject& object, const std::unordered_set<engine::NodeId>& materials) {
  for (host::BaseTag* tag = object.GetFirstTag(); tag; tag = tag->GetNext()) {
    const host::TextureTag* texture = engine::AsTextureTag(tag);
    if (texture && materials.contains(engine::MaterialIdOf(*texture))) return true;
  }
  return false;
}

}  // namespace

BaseMaterial* AddMaterial(BaseDocument& doc) {
  BaseMaterial* material = BaseMaterial::Alloc(host::Mmaterial);
  material->SetName("Material");
  engine::MakeNameUnique(*material, doc.GetFirstMaterial());
  {
    const engine::UndoScope scope(doc, "New Material");
    doc.AppendMaterial(material);
    doc.AddUndo(host::UNDO_NEW, material);
  }
  SelectMaterials(doc, {material});
  return material;
}

void DuplicateMaterials(BaseDocument& doc, const MaterialList& materials) {
  MaterialList copies;
  FreeNames names(doc.GetFirstMaterial());
  {
    const engine::UndoScope scope(
        doc, materials.size() == 1 ? "Duplicate Material" : "Duplicate Materials");
    for (BaseMaterial* material : materials) {
      BaseMaterial* copy = engine::AsMaterial(material->GetClone(0, nullptr));
      if (!copy) continue;
      names.Give(*copy);
      doc.InsertMaterial(copy, material);
      doc.AddUndo(host::UNDO_NEW, copy);
      copies.push_back(copy);
    }
  }
  SelectMaterials(doc, copies);
}

void DeleteMaterials(BaseDocument& doc, const MaterialList& materials) {
  {
    const engine::UndoScope scope(doc,
                                  materials.size() == 1 ? "Delete Material" : "Delete Materials");
    for (BaseMaterial* material : materials) {
      doc.AddUndo(host::UNDO_DELETE, material);
      BaseMaterial::Free(material);
    }
  }
  doc.SetChanged();
  host::EventAdd();
}

void RenameMaterial(BaseDocument& doc, BaseMaterial& material, const host::String& name) {
  {
    const engine::UndoScope scope(doc, "Rename Material");
    doc.AddUndo(host::UNDO_CHANGE, &material);
    material.SetName(name);
  }
  host::EventAdd();
}

void SelectMaterials(BaseDocument& doc, const MaterialList& materials) {
  const std::unordered_set<const BaseMaterial*> wanted(materials.begin(), materials.end());
  for (BaseMaterial* material = doc.GetFirstMaterial(); material; material = material->GetNext()) {
    wanted.contains(material) ? material->SetBit(host::BIT_ACTIVE)
                              : material->DelBit(host::BIT_ACTIVE);
  }
  host::EventAdd();
}

void SelectObjectsWith(BaseDocument& doc, const MaterialList& materials) {
  std::unordered_set<engine::NodeId> wanted;
  for (const BaseMaterial* material : materials) wanted.insert(engine::IdOf(*material));
  doc.SetActiveObject(nullptr);
  for (host::BaseObject* object = doc.GetFirstObject(); object;
       object = engine::NextInTree(object)) {
    if (HasOneOf(*object, wanted)) doc.SetActiveObject(object, host::SELECTION_ADD);
  }
  host::EventAdd();
}

}  // namespace desktop
