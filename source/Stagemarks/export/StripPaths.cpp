// Cuts texture references of the active document down to bare file names: the bitmap shaders of
// materials, objects and expression nodes. Made for the copy that an export works on; not recorded
// for undo.
#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/recording/Walk.h"

namespace stagemarks {

namespace {

constexpr const CHAR* kBitmapShader = "Bitmap";

}  // namespace

// Only the first file name among the shader's parameters counts as its texture.
String SMDialog::ExtractTexturePath(BaseShader* shader) {
  BaseContainer data = shader->GetData();
  for (LONG i = 0, id = 0; (id = data.GetIndexId(i)) != NOTOK; ++i) {
    if (data.GetType(id) != DA_FILENAME) continue;
    String file = data.GetFilename(id).GetFileString();
    data.SetFilename(id, Filename(file));
    shader->SetData(data, TRUE);
    return file;
  }
  return String();
}

void SMDialog::LoopThroughShader(BaseShader* shader) {
  const BaseShader* above = shader ? shader->GetUp() : nullptr;
  for (; shader; shader = NextInOrder<BaseShader>(shader, above)) {
    if (shader->GetTypeName() == kBitmapShader) ExtractTexturePath(shader);
  }
}

Bool SMDialog::LoopThroughXpresso(GvNode* node) {
  const GvNode* above = node ? node->GetUp() : nullptr;
  for (; node; node = NextInOrder<GvNode>(node, above)) LoopThroughShader(node->GetFirstShader());
  return TRUE;
}

void SMDialog::LoopThroughOMStrip(BaseObject* op) {
  const BaseObject* above = op ? op->GetUp() : nullptr;
  for (; op; op = NextInOrder<BaseObject>(op, above)) {
    LoopThroughShader(op->GetFirstShader());
    for (BaseTag* tag = op->GetFirstTag(); tag; tag = tag->GetNext()) {
      if (tag->GetType() != Texpresso) continue;
      GvNodeMaster* master = static_cast<XPressoTag*>(tag)->GetNodeMaster();
      if (master) LoopThroughXpresso(master->GetRoot());
    }
  }
}

Bool SMDialog::StripObjects() {
  const BaseDocument* doc = GetActiveDocument();
  if (!doc || !doc->GetFirstObject()) return FALSE;
  LoopThroughOMStrip(doc->GetFirstObject());
  return TRUE;
}

Bool SMDialog::StripMaterials() {
  const BaseDocument* doc = GetActiveDocument();
  if (!doc || !doc->GetFirstMaterial()) return FALSE;
  for (BaseMaterial* material = doc->GetFirstMaterial(); material; material = material->GetNext()) {
    LoopThroughShader(material->GetFirstShader());
  }
  return TRUE;
}

Bool SMDialog::StripAllTexturePaths() {
  StripMaterials();
  StripObjects();
  return TRUE;
}

}  // namespace stagemarks
