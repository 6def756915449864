// EmbeddedFiles: files that came inside an imported scene (textures) and have no place on a disk
// yet. The document holds them by name; a bitmap shader whose file name is such a bare name means
// that file. Saving the document writes them into the folder "tex" beside it, where bare names are
// looked for. Copies of a document share the bytes. Main thread.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/BaseDocument.h"

namespace engine {

struct EmbeddedFile {
  std::string name;  // a bare file name that is safe on any disk, unlike all others of the document
  std::shared_ptr<const std::string> bytes;
};
using EmbeddedFiles = std::vector<EmbeddedFile>;

// In the order in which they were added. Valid until one is added or renamed.
const EmbeddedFiles& EmbeddedFilesOf(const host::BaseDocument& doc);
// Its bytes, or null. Linear in the number of embedded files.
const std::string* FindEmbeddedFile(const host::BaseDocument& doc, std::string_view name);
// All at once, in place of those there are: for readers. The names must be safe and unlike.
void SetEmbeddedFiles(host::BaseDocument& doc, EmbeddedFiles files);
// Adds a file under a name made from `wish` (SafeFileName, numbered where it is taken) and returns
// that name.
std::string AddEmbeddedFile(host::BaseDocument& doc, std::string_view wish, std::string bytes);
// False when there is no file `name`, or `to` is taken or not safe.
bool RenameEmbeddedFile(host::BaseDocument& doc, std::string_view name, std::string_view to);

// The last part of a path (either separator) without control and reserved characters, at most 120
// bytes; "texture" where nothing is left.
std::string SafeFileName(std::string_view path);
// "a.png" and 2: "a-2.png".
std::string NumberedFileName(const std::string& name, unsigned number);

}  // namespace engine
