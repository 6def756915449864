// TextureCollection: copies the texture files that a scene links to beside the scene, so that both
// can be moved together. Main thread.
#pragma once

#include <string>
#include <vector>

#include "engine/core/Result.h"
#include "engine/outside/Services.h"
#include "host/BaseDocument.h"

namespace engine {

// Copies each linked file that lies elsewhere into the folder "tex" below `folder` (an existing
// one) and turns the shaders to the copy, without undo. Files of one content are copied once; a
// file that is there already is never replaced, another one of its name gets a number. What lies in
// `folder` or below already, what came inside the file and what is missing is left alone. The
// person hears of the progress and can stop it. The copies' full paths; on failure some may be
// there.
Result<std::vector<std::string>> CollectTextures(const Services& services, host::BaseDocument& doc,
                                                 const std::string& folder);

}  // namespace engine
