// EmbeddedTextures: puts the files that came inside an imported scene on the disk when the scene is
// saved. Main thread.
#pragma once

#include <string>

#include "engine/core/Result.h"
#include "engine/outside/FileSystem.h"
#include "host/BaseDocument.h"

namespace engine {

// Writes the document's embedded files into the folder "tex" below `folder` (an existing one),
// where bare texture names are looked for. A file that is there already with the same contents is
// left alone, one with other contents is never replaced: the embedded file gets another name then,
// and the shaders that named it follow. Nothing happens for a document without embedded files. On
// failure some files may have been written; the message names the one that failed.
Status WriteEmbeddedTextures(FileSystem& files, host::BaseDocument& doc, const std::string& folder);

}  // namespace engine
