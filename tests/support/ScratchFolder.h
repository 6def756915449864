// ScratchFolder: an empty folder of a test's own, gone with all in it when the test is over.
#pragma once

#include <string>

namespace tests {

class ScratchFolder {
 public:
  ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  ~ScratchFolder();

  const std::string& Path() const { return path_; }
  std::string operator/(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

// Plain ways past the file system under test. Missing files read as "(missing)".
std::string ReadText(const std::string& path);
void WriteText(const std::string& path, const std::string& text);
// Names of all entries below `folder`, hidden ones too, sorted and joined by blanks.
std::string Names(const std::string& folder);

}  // namespace tests
