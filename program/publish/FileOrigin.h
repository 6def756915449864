// FileOrigin: which command made a file, told by a mark in the file, so that a command replaces
// what it made itself and nothing else. The mark holds a hash of the file's other bytes: whoever
// changes the file makes it his own. Main thread.
#pragma once

#include <string>
#include <string_view>

#include "engine/outside/FileSystem.h"

namespace publishing {

// The bytes of a picture (PNG, TIFF) or a page (HTML) with the mark of `maker`, a word.
std::string WithMaker(const std::string& bytes, const std::string& maker);
// The bytes of a picture (PNG, TIFF) with a line of text that says what it was made from; done
// before it gets the mark. Others are left as they are.
std::string WithRecord(const std::string& bytes, const std::string& text);
// The maker of a file with these bytes, a scene or a published one, too; empty where there is none
// or the file was changed since.
std::string MakerOf(std::string_view bytes);
// Whether a file of `maker` may be written at that absolute path without asking: nothing is there,
// or what it made itself. A folder or device is nobody's; writing there says why it cannot be.
bool MayReplace(engine::FileSystem& files, const std::string& path, const std::string& maker);

}  // namespace publishing
