// FilePlace: where a file or folder stands or is going to stand, as an open folder and a name in
// it, so that whoever swaps folders meanwhile does not lead elsewhere. It owns the folder's handle.
// Any thread.
#pragma once

#include <cstddef>
#include <string>

#include "engine/core/Result.h"
#include "engine/outside/FileHandle.h"

namespace engine {

struct FilePlace {
  FileHandle folder;  // for finding names in it only, unless opened for reading
  std::string name;
};

// The place of a clean absolute path. Links are followed in the first `named` bytes of it; behind
// them a link on the way to the name is a failure that names it. The name itself may be a link, or
// nothing. On failure errno says why, ELOOP for a link. `cannot`: how the message begins, as
// "Cannot write".
Result<FilePlace> FindPlace(const char* cannot, const std::string& path, std::size_t named);

// The absolute path of what is there behind all links; empty where nothing is. By text: the
// standard library's paths end the program where memory fails within them.
std::string RealPath(const std::string& path);

// The plain file at a place, made where nothing is there, for reading and writing; `more`: further
// flags for opening it, as O_APPEND. Refuses a link, and what is no plain file. `path`: of the
// place, for messages.
Result<FileHandle> OpenOrMake(const FilePlace& place, const std::string& path, int more = 0);

// Whether a link has the name.
bool IsLink(const FilePlace& place);

// The refusal where `link` is a symbolic link in the program's own part of `path`.
Status LinkRefusal(const char* cannot, const std::string& path, const std::string& link);

}  // namespace engine
