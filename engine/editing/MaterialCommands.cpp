#include "engine/editing/MaterialCommands.h"

#include "engine/editing/FreeNames.h"
#include "engine/scene/NewNodes.h"
#include "engine/scene/TreeWalk.h"
#include "host/Application.h"
#include "host/Parameters.h"

namespace engine {

using host::BaseDocument;
using host::BaseList2D;
using host::BaseMaterial;
using host::BaseObject;
using host::BaseShader;
using host::BaseTag;
using host::TextureTag;

namespace {

void Append(BaseDocument& doc, BaseMaterial* material) {
  doc.AppendMaterial(material);
  doc.AddUndo(host::UNDO_NEW, material);
}

// As the picture takes it: the first bitmap, unless a plain color comes before it.
BaseShader* BitmapBehind(const BaseList2D& material, host::LONG link) {
  const BaseList2D* shader = material.GetDataInstance()->GetLink(link, material.GetDocument());
  if (!shader || KindOf(*shader) != NodeKind::Shader) return nullptr;
  for (const host::GeListNode* node = shader; node; node = NextInTree(node, shader)) {
    if (node->GetType() == host::Xcolor) return nullptr;
    if (node->GetType() == host::Xbitmap)
      return static_cast<BaseShader*>(const_cast<host::GeListNode*>(node));
  }
  return nullptr;
}

BaseShader* NewBitmap(BaseList2D& material, host::LONG link) {
  host::BaseDocument* doc = material.GetDocument();
  // Before its link changes; the shader only once it is in its place.
  doc->AddUndo(host::UNDO_CHANGE, &material);
  BaseShader* shader = BaseShader::Alloc(host::Xbitmap);
  material.InsertShader(shader);
  doc->AddUndo(host::UNDO_NEW, shader);
  material.SetParameter(link, host::GeData(shader), 0);
  return shader;
}

}  // namespace

BaseMaterial* MakeMaterial(BaseDocument& doc, const std::string& name, const host::Vector& color) {
  BaseMaterial* material = BaseMaterial::Alloc(host::Mmaterial);
  material->SetName(host::String(std::string_view(name)));
  material->GetDataInstance()->SetVector(host::MATERIAL_COLOR, color);
  Append(doc, material);
  return material;
}

BaseMaterial* AddMaterial(BaseDocument& doc) {
  BaseMaterial* material = BaseMaterial::Alloc(host::Mmaterial);
  material->SetName("Material");
  MakeNameUnique(*material, doc.GetFirstMaterial());
  {
    const UndoScope scope(doc, "New Material");
    Append(doc, material);
  }
  SelectMaterials(doc, {material});
  return material;
}

void DuplicateMaterials(BaseDocument& doc, const MaterialList& materials) {
  MaterialList copies;
  // One look at all names for all copies.
  FreeNames names(doc.GetFirstMaterial());
  {
    const UndoScope scope(doc,
                          materials.size() == 1 ? "Duplicate Material" : "Duplicate Materials");
    for (BaseMaterial* material : materials) {
      BaseMaterial* copy = AsMaterial(material->GetClone(0, nullptr));
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
    const UndoScope scope(doc, materials.size() == 1 ? "Delete Material" : "Delete Materials");
    for (BaseMaterial* material : materials) {
      doc.AddUndo(host::UNDO_DELETE, material);
      BaseMaterial::Free(material);
    }
  }
  host::EventAdd();
}

void RenameMaterial(BaseDocument& doc, BaseMaterial& material, const host::String& name) {
  {
    const UndoScope scope(doc, "Rename Material");
    doc.AddUndo(host::UNDO_CHANGE, &material);
    material.SetName(name);
  }
  host::EventAdd();
}

// As the renderer does: later tags lie over earlier ones, and one without a material covers
// nothing.
TextureTag* ShownTextureTag(const BaseObject& object) {
  TextureTag* last = nullptr;
  TextureTag* shown = nullptr;
  for (BaseTag* tag = object.GetFirstTag(); tag; tag = tag->GetNext()) {
    TextureTag* texture = AsTextureTag(tag);
    if (!texture) continue;
    last = texture;
    if (texture->GetMaterial()) shown = texture;
  }
  return shown ? shown : last;
}

void GiveMaterial(BaseDocument& doc, BaseObject& object, BaseMaterial* material) {
  TextureTag* tag = ShownTextureTag(object);
  if (tag && tag->GetMaterial() == material) return;
  if (tag) {
    doc.AddUndo(host::UNDO_CHANGE, tag);
  } else {
    tag = AsTextureTag(object.MakeTag(host::Ttexture));
    doc.AddUndo(host::UNDO_NEW, tag);
  }
  tag->SetMaterial(material);
}

StepwiseEdit AssignMaterial(BaseMaterial& material, std::vector<BaseObject*> objects) {
  const std::size_t steps = objects.size();
  return {"Assign Material", steps,
          [&material, objects = std::move(objects)](std::size_t i) {
            GiveMaterial(*material.GetDocument(), *objects[i], &material);
          },
          [] { host::EventAdd(); }};
}

host::Filename TextureFileOf(const BaseList2D& material, host::LONG link) {
  const BaseShader* shader = BitmapBehind(material, link);
  return shader ? shader->GetDataInstance()->GetFilename(host::BITMAPSHADER_FILENAME)
                : host::Filename();
}

void SetTextureFile(BaseList2D& material, host::LONG link, const host::Filename& file) {
  BaseShader* shader = BitmapBehind(material, link);
  // The shader stays: another link may lead to it.
  if (!file.Content()) {
    material.GetDocument()->AddUndo(host::UNDO_CHANGE, &material);
    material.SetParameter(link, host::GeData(static_cast<const BaseList2D*>(nullptr)), 0);
    return;
  }
  if (shader) {
    material.GetDocument()->AddUndo(host::UNDO_CHANGE, shader);
  } else {
    shader = NewBitmap(material, link);
  }
  shader->SetParameter(host::BITMAPSHADER_FILENAME, file, 0);
}

}  // namespace engine
