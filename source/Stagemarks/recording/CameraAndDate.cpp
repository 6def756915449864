#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/keys/ElementKeys.h"

namespace stagemarks {

Bool SMDialog::RecordCameraSettings() {
  if (!IsOn(Option::ActiveCamera)) {
    cameraBc_.SetLink(kCameraLink, nullptr);
    return FALSE;
  }
  const BaseDocument* doc = GetActiveDocument();
  if (!doc) return FALSE;
  cameraBc_.SetLink(kCameraLink, doc->GetRenderBaseDraw()->GetSceneCamera(doc));
  return TRUE;
}

Bool SMDialog::RecordDateTime() {
  LocalFileTime now;
  GeGetCurrentTime(now);
  dateBc_.SetLong(kYear, now.year);
  dateBc_.SetLong(kMonth, now.month);
  dateBc_.SetLong(kDay, now.day);
  dateBc_.SetLong(kHour, now.hour);
  dateBc_.SetLong(kMinute, now.minute);
  dateBc_.SetLong(kSecond, now.second);
  return TRUE;
}

}  // namespace stagemarks
