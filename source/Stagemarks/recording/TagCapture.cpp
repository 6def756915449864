#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/keys/CompositingKeys.h"
#include "source/Stagemarks/keys/ElementKeys.h"
#include "source/Stagemarks/recording/Records.h"

namespace stagemarks {

namespace {

void WriteTexture(BaseContainer& settings, const TextureTag& tag) {
  settings.SetLink(kMaterialLink, tag.GetMaterial(FALSE));
}

BaseContainer Captured(const BaseTag& tag, Capture capture) {
  BaseContainer settings;
  WriteTagSettings(settings, tag, capture);
  return settings;
}

}  // namespace

// One value serves all reads through the parameter interface: a parameter that the tag lacks
// repeats the one before.
Bool WriteCompositing(BaseContainer& settings, const BaseTag& tag) {
  const BaseContainer& data = *tag.GetDataInstance();
  GeData parameter;
  Bool isFlat = TRUE;
  for (const CompositingRow& row : kCompositing) {
    switch (row.reading) {
      case Reading::Bool:
        settings.SetBool(row.key, data.GetBool(row.parameter));
        break;
      case Reading::Long:
        settings.SetLong(row.key, data.GetLong(row.parameter));
        break;
      case Reading::Real:
        settings.SetReal(row.key, data.GetReal(row.parameter));
        break;
      case Reading::Parameter:
        tag.GetParameter(DescID(row.parameter), parameter, 0);
        settings.SetData(row.key, parameter);
        isFlat = isFlat && parameter.GetType() != DA_CONTAINER;
        break;
    }
  }
  return isFlat;
}

void WriteTagSettings(BaseContainer& settings, const BaseTag& tag, Capture capture) {
  switch (capture) {
    case Capture::Texture:
      WriteTexture(settings, static_cast<const TextureTag&>(tag));
      break;
    case Capture::Compositing:
      WriteCompositing(settings, tag);
      break;
    case Capture::Generic:
      settings = tag.GetData();
      break;
  }
}

BaseContainer SMDialog::CaptureTag(BaseTag* tag, Capture capture) const {
  return Captured(*tag, capture);
}
BaseContainer SMDialog::GetTtextureSettings(BaseTag* tag) const {
  return Captured(*tag, Capture::Texture);
}
BaseContainer SMDialog::GetTgenericSettings(BaseTag* tag) const {
  return Captured(*tag, Capture::Generic);
}
BaseContainer SMDialog::GetTcompositingSettings(BaseTag* tag) const {
  return Captured(*tag, Capture::Compositing);
}

}  // namespace stagemarks
