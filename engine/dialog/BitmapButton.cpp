#include <memory>

#include "engine/dialog/DialogBody.h"
#include "host/BaseBitmap.h"

namespace host {

namespace {

Bool IsReadableImage(const Filename& file) {
  BaseBitmap* bitmap = BaseBitmap::Alloc();
  const Bool readable = bitmap && bitmap->Init(file) == IMAGERESULT_OK;
  BaseBitmap::Free(bitmap);
  return readable;
}

}  // namespace

Bool BitmapButtonCustomGui::SetImage(const Filename& file) {
  // The former image stays where the new one cannot be read.
  if (!gadget_ || !IsReadableImage(file)) return FALSE;
  gadget_->image = file;
  // Told even for the same path: the file behind it may show another picture now.
  engine::TellChanged(*dialog_, gadget_);
  return TRUE;
}

}  // namespace host
