#include "source/Stagemarks/SM.h"

#include <new>

#include "source/Stagemarks/keys/FileNames.h"

namespace stagemarks {

SM::~SM() = default;

Bool SM::Execute(BaseDocument*) { return dialog_.Open(DLG_TYPE_ASYNC, kPluginId, -1, -1, 0, 0, 0); }

Bool SM::RestoreLayout(void* secret) { return dialog_.RestoreLayout(kPluginId, 0, secret); }

Bool RegisterSM() {
  const AutoBitmap icon(kIcon);
  return RegisterCommandPlugin(kPluginId, kPluginName, 0, icon, kPluginName, new (std::nothrow) SM);
}

}  // namespace stagemarks
