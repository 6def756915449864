#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/keys/CompositingKeys.h"
#include "source/Stagemarks/keys/ElementKeys.h"

namespace stagemarks {

BaseContainer SMDialog::CaptureTag(BaseTag* tag, Capture capture) const {
  switch (capture) {
    case Capture::Texture:
      return GetTtextureSettings(tag);
    case Capture::Compositing:
      return GetTcompositingSettings(tag);
    case Capture::Generic:
      break;
  }
  return GetTgenericSettings(tag);
}

BaseContainer SMDialog::GetTtextureSettings(BaseTag* tag) const {
  BaseContainer settings;
  settings.SetLink(kMaterialLink, static_cast<TextureTag*>(tag)->GetMaterial(FALSE));
  return settings;
}

BaseContainer SMDialog::GetTgenericSettings(BaseTag* tag) const { return tag->GetData(); }

// One value serves all reads through the parameter interface: a parameter that the tag lacks repeats the one before.
BaseContainer SMDialog::GetTcompositingSettings(BaseTag* tag) const {
  BaseContainer settings;
  const BaseContainer data = tag->GetData();
  GeData parameter;
  for (const CompositingRow& row : kCompositing) {
    switch (row.reading) {
      case Reading::Bool:
        settings.SetData(row.key, GeData(LONG{data.GetBool(row.parameter)}));
        break;
      case Reading::Long:
        settings.SetData(row.key, GeData(data.GetLong(row.parameter)));
        break;
      case Reading::Real:
        settings.SetData(row.key, GeData(data.GetReal(row.parameter)));
        break;
      case Reading::Parameter:
        tag->GetParameter(DescID(row.parameter), parameter, 0);
        settings.SetParameter(DescID(row.key), parameter);
        break;
    }
  }
  return settings;
}

}  // namespace stagemarks
