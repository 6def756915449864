// FormerFile: a file as it is before another one takes its place, kept under a name of its own. It
// costs no more than a second name for the bytes where both names are on one disk that knows such
// names; else the bytes are copied. Any thread, one at a time for each file.
#pragma once

#include <string>

#include "engine/core/Result.h"
#include "engine/outside/FileHandle.h"

namespace engine {

class FormerFile {
 public:
  // Both paths are cleaned and absolute; `file` leads through no link.
  FormerFile(std::string file, std::string place)
      : file_(std::move(file)), place_(std::move(place)) {}
  FormerFile(const FormerFile&) = delete;
  FormerFile& operator=(const FormerFile&) = delete;
  // Leaves `place` as it is unless Keep was called.
  ~FormerFile();

  // Takes hold of the file, and makes the folder for it; does nothing where no file is there.
  Status Hold();
  // Puts what was held into `place`, in place of what is there. For when the file has been
  // replaced: however it fails, `place` holds what it held before or the new content, whole.
  Status Keep();

 private:
  bool LinkIt();

  std::string file_;
  std::string place_;
  std::string name_;
  std::string hidden_;  // empty: it has no second name
  FileHandle folder_;
  FileHandle bytes_;
};

}  // namespace engine
