#include "program/desktop/attributes/TextureFile.h"

#include "engine/scene/Nodes.h"
#include "host/Parameters.h"

namespace desktop {

namespace {

using host::BaseList2D;
using host::BaseShader;

// As the picture takes it: the first bitmap, unless a plain color comes before it.
BaseShader* BitmapBehind(const BaseList2D& material, host::LONG link) {
  const BaseList2D* shader = material.GetDataInstance()->GetLink(link, material.GetDocument());
  if (!shader || engine::KindOf(*shader) != engine::NodeKind::Shader) return nullptr;
  for (const host::GeListNode* node = shader; node; node = engine::NextInTree(node, shader)) {
    if (node->GetType() == host::Xcolor) return nullptr;
    if (node->GetType() == host::Xbitmap)
      return static_cast<BaseShader*>(const_cast<host::GeListNode*>(node));
  }
  return nullptr;
}

BaseShader* NewBitmap(BaseList2D& material, host::LONG link) {
  host::BaseDocument* doc = material.GetDocument();
  doc->AddUndo(host::UNDO_CHANGE, &material);
  BaseShader* shader = BaseShader::Alloc(host::Xbitmap);
  material.InsertShader(shader);
  doc->AddUndo(host::UNDO_NEW, shader);
  material.SetParameter(link, host::GeData(shader), 0);
  return shader;
}

}  // namespace

host::Filename TextureFileOf(const BaseList2D& material, host::LONG link) {
  const BaseShader* shader = BitmapBehind(material, link);
  return shader ? shader->GetDataInstance()->GetFilename(host::BITMAPSHADER_FILENAME)
                : host::Filename();
}

void SetTextureFile(BaseList2D& material, host::LONG link, const host::Filename& file) {
  BaseShader* shader = BitmapBehind(material, link);
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

}  // namespace desktop
