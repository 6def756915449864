// The picture file behind a material's link to a shader: the first bitmap at or below that shader.
// Main thread.
#pragma once

#include "host/BaseDocument.h"

namespace desktop {

// Empty where the link leads to no bitmap.
host::Filename TextureFileOf(const host::BaseList2D& material, host::LONG link);
// Puts another file there, registering for undo what it changes: into the bitmap shader that is
// used, or a new one. An empty name takes the link away and leaves the shaders.
void SetTextureFile(host::BaseList2D& material, host::LONG link, const host::Filename& file);

}  // namespace desktop
