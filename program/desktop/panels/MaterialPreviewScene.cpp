#include "program/desktop/panels/MaterialPreviewScene.h"

#include "engine/scene/EmbeddedFiles.h"
#include "engine/scene/NodeTypes.h"
#include "host/Parameters.h"

namespace desktop {

using host::BaseObject;

namespace {

constexpr double kRadius = 100;
constexpr double kDistance = 400;
constexpr double kPitch = 0.22;
constexpr double kTurn = 0.5;

void AddBall(host::BaseDocument& doc, host::BaseMaterial* material) {
  BaseObject* ball = BaseObject::Alloc(host::Osphere);
  ball->GetDataInstance()->SetReal(host::PRIM_RADIUS, kRadius);
  ball->GetDataInstance()->SetLong(host::PRIM_SEGMENTS, 64);
  auto* tag = static_cast<host::TextureTag*>(ball->MakeTag(host::Ttexture));
  doc.AppendObject(ball);
  tag->SetMaterial(material);
}

}  // namespace

MaterialPreviewScene::MaterialPreviewScene(const host::BaseDocument& doc,
                                           host::BaseMaterial& material)
    : doc_(host::BaseDocument::Alloc()) {
  doc_->SetDocumentPath(doc.GetDocumentPath());
  engine::SetEmbeddedFiles(*doc_, engine::EmbeddedFilesOf(doc));
  host::BaseMaterial* copy = engine::AsMaterial(material.GetClone(0, nullptr));
  if (copy) doc_->AppendMaterial(copy);
  AddBall(*doc_, copy);
}

engine::PictureCamera MaterialPreviewScene::Camera() {
  engine::PictureCamera camera;
  const double up = std::sin(kPitch), flat = std::cos(kPitch);
  const double across = std::sin(kTurn), along = std::cos(kTurn);
  camera.frame.v1 = {along, 0, across};
  camera.frame.v3 = {-across * flat, -up, along * flat};
  camera.frame.v2 = {-across * up, flat, along * up};
  camera.frame.off = {across * flat * kDistance, up * kDistance, -along * flat * kDistance};
  camera.isParallel = true;
  camera.width = 2 * kRadius;
  return camera;
}

}  // namespace desktop
