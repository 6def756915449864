// FilesSection: section FILES, the named files that travel with a scene until it is saved beside
// them. One thread.
#pragma once

#include <string_view>
#include <vector>

#include "engine/scene/EmbeddedFiles.h"
#include "engine/scenefile/Texts.h"

namespace engine::scenefile {

// The section's contents; the names go to `texts`.
std::string FilesContents(const EmbeddedFiles& files, TextWriter& texts);
// Throws Damage, also for names that are no bare file names or occur twice.
EmbeddedFiles ReadFiles(std::string_view contents, const std::vector<host::String>& texts,
                        Budget& budget);

}  // namespace engine::scenefile
