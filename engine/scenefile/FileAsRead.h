// FileAsRead: a file as it was when a document was read from it or written to it, to find out later
// whether somebody has changed it since. A value. Any thread.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "engine/outside/FileSystem.h"

namespace engine {

enum class FileNow { AsRead, Changed, Gone };

struct FileAsRead {
  FileStamp stamp;            // taken before the bytes were read, so that a change in between shows
  std::uint64_t content = 0;  // hash of the bytes
};

std::uint64_t HashOfContent(std::span<const std::string_view> pieces);

// One look at the folder; the file is read only where it has the old size and another stamp, which
// is then taken over if the bytes are the same.
FileNow LookAtFile(FileSystem& files, FileAsRead& file, const std::string& path);

}  // namespace engine
