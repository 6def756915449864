// AppendedFile: a file that grows line by line, as a protocol of work does. Each line is written
// at once and whole, so that what was appended before a program was killed is there; a line that a
// killed program left without its end is ended first. Several programs of one machine may append to
// one file; over a network each wants a file of its own. Any thread, one at a time for each object.
#pragma once

#include <string>
#include <string_view>

#include "engine/core/Result.h"
#include "engine/outside/FileHandle.h"
#include "engine/outside/FileSystem.h"

namespace engine {

class AppendedFile {
 public:
  // Opens the file or makes it; its folder must be there. `files` knows what a person named of the
  // path: a link behind that, or the file itself being one, is refused.
  static Result<AppendedFile> Open(const FileSystem& files, const std::string& path);

  // Appends a line break, too; the line has none.
  Status Append(std::string_view line);

 private:
  AppendedFile(std::string path, FileHandle file)
      : path_(std::move(path)), file_(std::move(file)) {}
  Status Write(std::string_view line);

  std::string path_;
  FileHandle file_;
};

}  // namespace engine
