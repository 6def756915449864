// The published render call while there is no renderer: it says so by its result and leaves the picture as it is.
#include "engine/outside/Outside.h"
#include "host/Application.h"

namespace host {

LONG RenderDocument(BaseDocument*, const BaseContainer&, ProgressHook*, void*, BaseBitmap*, LONG, BaseThread*) {
  engine::Outside::Current().GetLedger().Add(
      {engine::Operation::Note, "", "", false, "The picture was not rendered: this build has no renderer yet."});
  return RENDERRESULT_FAILED;
}

}  // namespace host
