// SourceCheck: what can be said about a file before any importer sees it: is it there, plain, of a
// sensible size, and does it begin as its suffix promises. Any thread.
#pragma once

#include <string>

#include "engine/core/Result.h"
#include "engine/import/Import.h"

namespace engine {

enum class SourceFormat { None, Gltf, Glb, Obj, Fbx, Collada };

// By the suffix alone, letter case aside.
SourceFormat FormatOf(const std::string& path);
inline bool IsGltf(SourceFormat format) {
  return format == SourceFormat::Gltf || format == SourceFormat::Glb;
}

// The message names the file and what is wrong with it.
Status CheckSource(const std::string& path, const ImportLimits& limits);

}  // namespace engine
