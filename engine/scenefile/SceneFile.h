// The native scene file (suffix c4d): a document to bytes and back; see docs/SCENE_FILE.md. Reading
// trusts nothing: a damaged, cut or foreign file gives a message that names what is wrong and
// where, and no document. Main thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "engine/core/Progress.h"
#include "engine/core/Result.h"
#include "engine/outside/Services.h"
#include "engine/scene/Ownership.h"
#include "engine/scenefile/FileAsRead.h"

namespace engine {

// The whole file as pieces to be written in order. Identities, own IDs, empty entries, order, bits,
// selection, active render settings, scene camera and unknown sections that were read are kept;
// undo steps are not saved. Any thread, for a document that no other thread reads or changes.
// Textures and caches in `folder` or below, where one is given, are named relative to it.
Result<std::vector<std::string>> WriteScene(const host::BaseDocument& doc,
                                            const ProgressCallback& progress = {},
                                            const std::string& folder = "");

// A new document without path and name. One that would need more than `memoryLimit` bytes (0: what
// a file of its size may take) is refused. Names relative to the file become absolute where its
// `folder` is given.
Result<OwnedDocument> ReadScene(std::string_view bytes, std::uint64_t memoryLimit = 0,
                                const ProgressCallback& progress = {},
                                const std::string& folder = "");

// WriteScene to a file and ReadScene from one. The person hears of the progress of scenes with many
// elements and may stop it: then nothing is opened, and a file that is there stays as it is. Saving
// leaves the document's path, name and "changed" as they are; opening sets path and name. `now`
// says what the file is, as far as that is known, and learns what it then is: where nothing
// changes, no former version is kept.
Status SaveSceneFile(const Services& services, const host::BaseDocument& doc,
                     const std::string& path, Replacing how = {}, FileAsRead* now = nullptr);
Result<OwnedDocument> OpenSceneFile(const Services& services, const std::string& path,
                                    FileAsRead* now = nullptr);

}  // namespace engine
